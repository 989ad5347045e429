// What everything is drawn with: two small shaders of our own. Those of the library are long, and software that draws
// without a graphics processor takes seconds to translate them.
import { Color, DoubleSide, GLSL3, LinearSRGBColorSpace, RawShaderMaterial } from 'three';

const PRECISION = 'precision highp float;\n';
const MATRICES = 'uniform mat4 modelViewMatrix;\nuniform mat4 projectionMatrix;\nin vec3 position;\n';

const FLAT_VERTEX = `${PRECISION}${MATRICES}
uniform float size;
void main() {
  gl_Position = projectionMatrix * modelViewMatrix * vec4(position, 1.0);
  gl_PointSize = size;
}`;

// Shape 0 is as the triangle, the line or the point is; 1 a disc, 2 a ring with a dark rim, inside of a point.
const FLAT_FRAGMENT = `${PRECISION}
uniform vec3 colour;
uniform float opacity;
uniform float size;
uniform int shape;
out vec4 result;
void main() {
  result = vec4(colour, opacity);
  if (shape > 0) {
    float distance = length(gl_PointCoord - 0.5) * size;
    float outside = shape == 1 ? distance + 0.5 - 0.5 * size : abs(distance - 0.375 * size) - 0.07 * size;
    if (shape == 2) {
      result.rgb *= step(abs(distance - 0.375 * size), 0.04 * size);
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

// The light stands beside the camera. A triangle without an area has no normal.
const LIT_FRAGMENT = `${PRECISION}
uniform vec3 colour;
uniform float opacity;
in vec3 seen;
in vec3 turned;
out vec4 result;
void main() {
  float lengths = length(seen) * length(turned);
  float facing = lengths > 0.0 ? abs(dot(seen, turned)) / lengths : 0.0;
  result = vec4(colour * (0.55 + 0.4 * facing), opacity);
}`;

// As it stands in the style: the shaders write it as it is.
function shadeOf(colour) {
  return new Color().setStyle(colour, LinearSRGBColorSpace);
}

export function flatMaterial(colour, { opacity = 1, size = 1, shape = 0 } = {}) {
  return new RawShaderMaterial({
    glslVersion: GLSL3,
    vertexShader: FLAT_VERTEX,
    fragmentShader: FLAT_FRAGMENT,
    uniforms: { colour: { value: shadeOf(colour) }, opacity: { value: opacity }, size: { value: size }, shape: { value: shape } },
    transparent: true,
    side: DoubleSide,
    depthTest: false,
    depthWrite: false,
    forceSinglePass: true,
  });
}

export function litMaterial(colour, opacity) {
  return new RawShaderMaterial({
    glslVersion: GLSL3,
    vertexShader: LIT_VERTEX,
    fragmentShader: LIT_FRAGMENT,
    uniforms: { colour: { value: shadeOf(colour) }, opacity: { value: opacity } },
    transparent: true,
    side: DoubleSide,
    depthTest: false,
    depthWrite: false,
    forceSinglePass: true,
  });
}
