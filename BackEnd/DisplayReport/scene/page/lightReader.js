// Reads off the light at a place of the screen: which channels light it, at which pixel, and how large that is there.
// The lattice of a channel leads from the place back to its picture: through the cell that it lies in, which is as good
// as flat.
import { Raycaster, Vector2, Vector3 } from 'three';

const ray = new Raycaster();
const STEPS = 8; // of Newton's method; it ends after three or four
const OUTSIDE = 0.25; // of a cell that a place may lie beside it: at the edge of the screen cells are incomplete

// False for what is seen from the other side than that of the eye point: it is drawn so pale that the rest shows through.
function isSeenByAudience(hit, camera, eye) {
  const { normal } = hit.face;
  const side = (point) => point.clone().sub(hit.point).dot(normal);
  return !eye || side(camera.position) * side(eye) >= 0;
}

// The place of the surface under the pointer with its region; null beside the surface.
export function placeUnder(surfaces, camera, pointer, eye) {
  ray.setFromCamera(new Vector2(pointer.x, pointer.y), camera);
  const places = surfaces.filter((one) => one.group.visible && one.shading).flatMap((surface) => ray
    .intersectObject(surface.mesh, false)
    .map((hit) => ({ hit, place: hit.point, region: surface.shading.regions[hit.face.materialIndex] })));
  places.sort((a, b) => a.hit.distance - b.hit.distance);
  return places.find(({ hit }) => isSeenByAudience(hit, camera, eye)) || places[0] || null;
}

function nodeAt(lattice, column, row) {
  const i = row * lattice.columns + column;
  return lattice.lands[i] ? new Vector3().fromArray(lattice.places, 3 * i) : null;
}

function nearestNode(lattice, place) {
  let nearest = -1;
  let least = Infinity;
  for (let i = 0; i < lattice.lands.length; ++i) {
    if (lattice.lands[i]) {
      const distance = (lattice.places[3 * i] - place.x) ** 2 + (lattice.places[3 * i + 1] - place.y) ** 2
        + (lattice.places[3 * i + 2] - place.z) ** 2;
      if (distance < least) {
        least = distance;
        nearest = i;
      }
    }
  }
  return nearest;
}

function cornersOf(lattice, column, row) {
  if (column < 0 || row < 0 || column + 1 >= lattice.columns || row + 1 >= lattice.rows) {
    return null;
  }
  const corners = [[0, 0], [1, 0], [0, 1], [1, 1]].map(([right, up]) => nodeAt(lattice, column + right, row + up));
  return corners.every(Boolean) ? corners : null;
}

// The place in a cell, both ways from 0 to 1, whose point comes nearest to a place; and how far from it that is.
function searchCell([a, b, c, d], place) {
  let [s, t] = [0.5, 0.5];
  const point = new Vector3();
  const alongS = new Vector3();
  const alongT = new Vector3();
  const gap = new Vector3();
  const look = () => {
    point.set(0, 0, 0).addScaledVector(a, (1 - s) * (1 - t)).addScaledVector(b, s * (1 - t)).addScaledVector(c, (1 - s) * t)
      .addScaledVector(d, s * t);
    alongS.subVectors(b, a).multiplyScalar(1 - t).addScaledVector(d, t).addScaledVector(c, -t);
    alongT.subVectors(c, a).multiplyScalar(1 - s).addScaledVector(d, s).addScaledVector(b, -s);
    gap.subVectors(place, point);
  };
  for (let step = 0; step < STEPS; ++step) {
    look();
    const [ss, st, tt] = [alongS.dot(alongS), alongS.dot(alongT), alongT.dot(alongT)];
    const determinant = ss * tt - st * st;
    if (!(determinant > 0)) {
      break;
    }
    const [gs, gt] = [gap.dot(alongS), gap.dot(alongT)];
    s = Math.max(-1, Math.min(2, s + (tt * gs - st * gt) / determinant));
    t = Math.max(-1, Math.min(2, t + (ss * gt - st * gs) / determinant));
  }
  look();
  const beside = Math.max(-s, s - 1, -t, t - 1, 0);
  return { s, t, alongS, alongT, beside, distance: gap.length() };
}

// Where in its picture a channel lights a place, and the sides of a pixel there, in the size of the picture of the page;
// null where its lattice does not reach.
export function pictureAt(lattice, place) {
  const nearest = nearestNode(lattice, place);
  if (nearest < 0) {
    return null;
  }
  const column = nearest % lattice.columns;
  const row = Math.floor(nearest / lattice.columns);
  let best = null;
  for (const [left, below] of [[0, 0], [1, 0], [0, 1], [1, 1]]) {
    const corners = cornersOf(lattice, column - left, row - below);
    const found = corners && searchCell(corners, place);
    if (found && (!best || found.beside + found.distance < best.beside + best.distance)) {
      best = { ...found, column: column - left, row: row - below };
    }
  }
  if (!best || best.beside > OUTSIDE + 1) {
    return null;
  }
  const within = (value) => Math.max(0, Math.min(1, value));
  return {
    u: within((best.column + best.s) / (lattice.columns - 1)),
    v: within((best.row + best.t) / (lattice.rows - 1)),
    alongU: best.alongS.length() * (lattice.columns - 1),
    alongV: best.alongT.length() * (lattice.rows - 1),
  };
}

// What a channel does at a place: the pixel counted from the bottom left one, which is 0, 0, and its sides in the unit of
// the display. Without a size of the picture only u and v.
function lightOf(channel, place, scene) {
  const at = pictureAt(channel.lattice, place);
  if (!at) {
    return { channel };
  }
  const { width, height } = channel;
  const light = { channel, picture: [at.u, at.v] };
  if (width > 0 && height > 0) {
    light.pixel = [Math.min(width - 1, Math.floor(at.u * width)), Math.min(height - 1, Math.floor(at.v * height))];
    light.size = [(at.alongU * scene.scale) / width, (at.alongV * scene.scale) / height];
  }
  return light;
}

// Everything of a place: where it is, and the light of those channels that light it and are shown.
export function readLight(found, items, scene) {
  const shown = found.region.channels.filter((channel) => items[channel].group.visible);
  return {
    place: found.place,
    point: scene.world(found.place.toArray()),
    lights: shown.map((channel) => lightOf(items[channel].channel, found.place, scene)),
  };
}
