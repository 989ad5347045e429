// What everything is drawn with: two small shaders of our own. Those of the library are long, and software that draws
// without a graphics processor takes seconds to translate them.
import {
  Color, DoubleSide, GLSL3, LinearSRGBColorSpace, RawShaderMaterial, Vector3,
} from 'three';

export const MOST_COLOURS = 8; // in stripes beside one another
const STRIPE = '8.0'; // pixels along both edges of the picture
// Channels whose colour is that of an earlier one are hatched, each round more heavily; the last one for all further ones.
const HATCH = '10.0'; // pixels from one dark line to the next
const MOST_ROUNDS = 3;

// Pixels of the drawing per pixel of the page; all materials share it.
export const pixelRatio = { value: 1 };
// Of the size of targets; all of them share it.
export const dotScale = { value: 1 };
const UNSCALED = { value: 1 };

const PRECISION = 'precision highp float;\n';
const MATRICES = 'uniform mat4 modelViewMatrix;\nuniform mat4 projectionMatrix;\nin vec3 position;\n';

const FLAT_VERTEX = `${PRECISION}${MATRICES}
uniform float size;
uniform float scale;
uniform float pixelRatio;
void main() {
  gl_Position = projectionMatrix * modelViewMatrix * vec4(position, 1.0);
  gl_PointSize = size * scale * pixelRatio;
}`;

// Shape 0 is as the triangle, the line or the point is; inside of a point 1 a disc, 2 a ring with a dark rim, 3 a disc with a
// dark middle.
const FLAT_FRAGMENT = `${PRECISION}
uniform vec3 colour;
uniform float opacity;
uniform float size;
uniform float scale;
uniform float pixelRatio;
uniform int shape;
out vec4 result;
void main() {
  result = vec4(colour, opacity);
  if (shape > 0) {
    float width = size * scale * pixelRatio;
    float distance = length(gl_PointCoord - 0.5) * width;
    float outside = shape == 2 ? abs(distance - 0.375 * width) - 0.07 * width : distance + 0.5 - 0.5 * width;
    if (shape == 2) {
      result.rgb *= step(abs(distance - 0.375 * width), 0.04 * width);
    } else if (shape == 3) {
      result.rgb *= step(0.22 * width, distance);
    }
    result.a *= clamp(0.5 - outside, 0.0, 1.0);
    if (result.a == 0.0) {
      discard;
    }
  }
}`;

const LIT_VERTEX = `${PRECISION}${MATRICES}
uniform mat3 normalMatrix;
in vec3 normal;
out vec3 seen;
out vec3 turned;
void main() {
  vec4 place = modelViewMatrix * vec4(position, 1.0);
  seen = place.xyz;
  turned = normalMatrix * normal;
  gl_Position = projectionMatrix * place;
}`;

// The light stands beside the camera. A triangle without an area has no normal. Several colours stand in stripes. What is
// seen from the other side than that of the eye point hardly hides what stands behind it: of a dome, the inside.
const LIT_FRAGMENT = `${PRECISION}
uniform vec3 colours[${MOST_COLOURS}];
uniform int rounds[${MOST_COLOURS}];
uniform int count;
uniform float pixelRatio;
uniform float opacity;
uniform vec3 eye;
uniform bool hasEye;
uniform float behind;
uniform mat4 viewMatrix;
in vec3 seen;
in vec3 turned;
out vec4 result;
void main() {
  float lengths = length(seen) * length(turned);
  float facing = lengths > 0.0 ? abs(dot(seen, turned)) / lengths : 0.0;
  float stripe = (gl_FragCoord.x + gl_FragCoord.y) / (${STRIPE} * pixelRatio);
  int which = int(mod(stripe, float(count)));
  vec3 colour = colours[which];
  float hatch = fract((gl_FragCoord.x - gl_FragCoord.y) / (${HATCH} * pixelRatio));
  if (hatch < 0.2 * float(rounds[which])) {
    colour *= 0.5;
  }
  // Whatever way the corners go round: the sign of the normal cancels.
  vec3 toEye = (viewMatrix * vec4(eye, 1.0)).xyz - seen;
  bool isBehind = hasEye && dot(turned, -seen) * dot(turned, toEye) < 0.0;
  result = vec4(colour * (0.6 + 0.4 * facing), opacity * (isBehind ? behind : 1.0));
}`;

const ADDED_VERTEX = `${PRECISION}${MATRICES}
in vec2 uv;
out vec3 seen;
centroid out vec2 at;
void main() {
  vec4 place = modelViewMatrix * vec4(position, 1.0);
  seen = place.xyz;
  at = uv;
  gl_Position = projectionMatrix * place;
}`;

// The light as it is, side by side: what looks along the normal sees the other side than what looks against it, and a side
// without light of its own, like the one of a sheet that the eye does not see, is as good as clear. Opaque places are drawn
// first, and hide one another by their depth; then those.
const ADDED_FRAGMENT = `${PRECISION}
uniform sampler2D along;
uniform sampler2D against;
uniform bool hasAlong;
uniform bool hasAgainst;
uniform bool isOneForBoth;
uniform float opacity;
uniform vec3 eye;
uniform bool hasEye;
uniform float behind;
uniform bool drawsClear;
uniform mat4 viewMatrix;
in vec3 seen;
centroid in vec2 at;
out vec4 result;
void main() {
  vec3 normal = cross(dFdx(seen), dFdy(seen));
  vec3 toEye = (viewMatrix * vec4(eye, 1.0)).xyz - seen;
  bool isBehind = hasEye && dot(normal, -seen) * dot(normal, toEye) < 0.0;
  bool isAlong = !gl_FrontFacing;
  bool isClear = isOneForBoth ? isBehind : !(isAlong ? hasAlong : hasAgainst);
  if (isClear != drawsClear) {
    discard;
  }
  bool takesAlong = isClear ? hasAlong : isAlong;
  result = vec4((takesAlong ? texture(along, at) : texture(against, at)).rgb, opacity * (isClear ? behind : 1.0));
}`;

// As it stands in the style: the shaders write it as it is.
function shadeOf(colour) {
  return new Color().setStyle(colour, LinearSRGBColorSpace);
}

export function flatMaterial(colour, { opacity = 1, size = 1, scale = UNSCALED, shape = 0 } = {}) {
  return new RawShaderMaterial({
    glslVersion: GLSL3,
    vertexShader: FLAT_VERTEX,
    fragmentShader: FLAT_FRAGMENT,
    uniforms: {
      colour: { value: shadeOf(colour) }, opacity: { value: opacity }, size: { value: size }, scale, pixelRatio, shape: { value: shape },
    },
    transparent: true,
    side: DoubleSide,
    depthTest: false,
    depthWrite: false,
    forceSinglePass: true,
  });
}

// What a surface is drawn with; `setColours` changes it.
export function litMaterial(colour, { opacity, eye, behind }) {
  const material = new RawShaderMaterial({
    glslVersion: GLSL3,
    vertexShader: LIT_VERTEX,
    fragmentShader: LIT_FRAGMENT,
    uniforms: {
      colours: { value: Array.from({ length: MOST_COLOURS }, () => new Color()) },
      rounds: { value: new Int32Array(MOST_COLOURS) }, count: { value: 1 }, pixelRatio, opacity,
      eye: { value: eye || new Vector3() }, hasEye: { value: Boolean(eye) }, behind: { value: behind },
    },
    transparent: true,
    side: DoubleSide,
    depthTest: false,
    depthWrite: false,
    forceSinglePass: true,
  });
  setColours(material, [{ colour, round: 0 }]);
  return material;
}

// What added light is drawn with, its opaque places or those that are clear. `showPictures` sets its pictures.
export function addedMaterial(drawsClear, { opacity, eye, behind }) {
  return new RawShaderMaterial({
    glslVersion: GLSL3,
    vertexShader: ADDED_VERTEX,
    fragmentShader: ADDED_FRAGMENT,
    uniforms: {
      along: { value: null }, against: { value: null }, hasAlong: { value: false }, hasAgainst: { value: false },
      isOneForBoth: { value: false }, opacity, eye: { value: eye || new Vector3() }, hasEye: { value: Boolean(eye) },
      behind: { value: behind }, drawsClear: { value: drawsClear },
    },
    transparent: true,
    side: DoubleSide,
    depthTest: true,
    depthWrite: !drawsClear,
    forceSinglePass: true,
  });
}

// Of each side its texture: 1 seen along the normal, -1 against it, 0 both ways.
export function showPictures(material, textures) {
  const { uniforms } = material;
  const both = textures.get(0) || null;
  const any = both || textures.get(1) || textures.get(-1);
  uniforms.along.value = textures.get(1) || any;
  uniforms.against.value = textures.get(-1) || any;
  uniforms.hasAlong.value = Boolean(both || textures.get(1));
  uniforms.hasAgainst.value = Boolean(both || textures.get(-1));
  uniforms.isOneForBoth.value = Boolean(both);
}

// Of each stripe its colour, and how often all colours were used before.
export function setColours(material, stripes) {
  const shown = stripes.slice(0, MOST_COLOURS);
  shown.forEach(({ colour, round }, i) => {
    material.uniforms.colours.value[i].copy(shadeOf(colour));
    material.uniforms.rounds.value[i] = Math.min(round, MOST_ROUNDS);
  });
  material.uniforms.count.value = shown.length;
}
