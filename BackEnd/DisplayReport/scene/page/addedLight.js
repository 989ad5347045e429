// The light of an export on the screen: pictures that are spread over triangles of their own.
import {
  BufferAttribute, BufferGeometry, Group, LinearFilter, Mesh, NoColorSpace, Texture,
} from 'three';
import { addedMaterial, showPictures } from './materials.js';

const OPAQUE_ORDER = -2;
const CLEAR_ORDER = -1;

// What can be shown, with its words.
export const ADDED_KINDS = [['shown', 'light added up'], ['shift', 'errors of content'], ['unevenness', 'errors of light']];

function geometryOf(light) {
  const geometry = new BufferGeometry();
  geometry.setAttribute('position', new BufferAttribute(light.vertices, 3));
  geometry.setAttribute('uv', new BufferAttribute(light.coordinates, 2));
  geometry.setIndex(new BufferAttribute(light.triangles, 1));
  return geometry;
}

// A code value is one of the projectors: no colour space, no smaller copies, in which triangles would run into each other.
async function textureOf(address) {
  const image = new Image();
  image.src = address;
  await image.decode();
  const texture = new Texture(image);
  Object.assign(texture, {
    colorSpace: NoColorSpace, flipY: false, generateMipmaps: false, minFilter: LinearFilter, magFilter: LinearFilter, needsUpdate: true,
  });
  return texture;
}

export class AddedLight {
  // `look` is what all surfaces share; `changed` is called whenever there is something new to draw.
  constructor(light, look, changed) {
    this.light = light;
    this.changed = changed;
    this.textures = new Map();
    const geometry = geometryOf(light);
    this.group = new Group();
    this.meshes = [[false, OPAQUE_ORDER], [true, CLEAR_ORDER]].map(([drawsClear, order]) => {
      const mesh = new Mesh(geometry, addedMaterial(drawsClear, look));
      mesh.renderOrder = order;
      mesh.frustumCulled = false;
      this.group.add(mesh);
      return mesh;
    });
    this.group.visible = false;
  }

  // One of the kinds; anything else hides it.
  async show(kind) {
    this.kind = kind;
    this.group.visible = false;
    if (ADDED_KINDS.some(([name]) => name === kind)) {
      if (!this.textures.has(kind)) {
        const made = await Promise.all(this.light.sides.map(async (side) => [side.seen, await textureOf(side[kind])]));
        this.textures.set(kind, new Map(made));
      }
      // Another kind may have been chosen meanwhile.
      if (this.kind === kind) {
        this.meshes.forEach((mesh) => showPictures(mesh.material, this.textures.get(kind)));
        this.group.visible = true;
        document.documentElement.dataset.addedLight = kind;
      }
    }
    this.changed();
  }
}
