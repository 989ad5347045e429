// Reads the scene that stands in the page. Places are given from the middle of the picture, in its size: graphics
// processors count in single precision.

function bytesOf(base64) {
  if (Uint8Array.fromBase64) {
    return Uint8Array.fromBase64(base64).buffer;
  }
  const text = atob(base64);
  const bytes = new Uint8Array(text.length);
  for (let i = 0; i < text.length; ++i) {
    bytes[i] = text.charCodeAt(i);
  }
  return bytes.buffer;
}

const floats = (text) => new Float32Array(bytesOf(text));
const doubles = (text) => new Float64Array(bytesOf(text));
const indices = (text) => new Uint32Array(bytesOf(text));
const integers = (text) => new Int32Array(bytesOf(text));
const flags = (text) => new Uint8Array(bytesOf(text));

function decodeFrustum(frustum) {
  return frustum && {
    apex: frustum.apex,
    edges: frustum.edges.map(floats),
    rim: floats(frustum.rim),
    mirrorVertices: floats(frustum.mirrorVertices),
    mirrorTriangles: indices(frustum.mirrorTriangles),
  };
}

function decodeShading(shading) {
  return shading && {
    ...shading,
    vertices: floats(shading.vertices),
    regions: shading.regions.map((region) => ({ ...region, triangles: indices(region.triangles) })),
  };
}

function decodeLattice(lattice) {
  return { ...lattice, places: floats(lattice.places), lands: flags(lattice.lands) };
}

// Vectors as they are drawn: exaggerated, and cut where they would cover everything else. NaN where there is none.
function decodeResiduals(residuals) {
  return residuals && {
    ...residuals,
    points: floats(residuals.points),
    offsets: floats(residuals.offsets),
    picture: doubles(residuals.picture),
    pixels: floats(residuals.pixels),
    lines: indices(residuals.lines),
    flags: Array.from(flags(residuals.outliers), (isOutlier) => ({ isOutlier: Boolean(isOutlier) })),
  };
}

// Pictures stay texts, which the browser reads by itself.
function decodeLight(light) {
  const picture = (text) => `data:image/png;base64,${text}`;
  return light && {
    ...light,
    vertices: floats(light.vertices),
    coordinates: floats(light.coordinates),
    triangles: indices(light.triangles),
    sides: light.sides.map((side) => ({
      seen: side.seen, shown: picture(side.shown), shift: picture(side.shift), unevenness: picture(side.unevenness),
    })),
  };
}

// `colours` is the number of channels after which their colours begin again; each further round has a pattern.
function decodeChannel(channel, number, colours) {
  return {
    ...channel,
    number: number + 1,
    round: Math.floor(number / colours),
    points: floats(channel.points),
    exactPoints: doubles(channel.exactPoints),
    cells: integers(channel.cells),
    picture: doubles(channel.picture),
    boundary: floats(channel.boundary),
    exactBoundary: doubles(channel.exactBoundary),
    beyond: flags(channel.beyond),
    rimPieces: flags(channel.rimPieces),
    upMark: channel.upMark.map(floats),
    lattice: decodeLattice(channel.lattice),
    frustum: decodeFrustum(channel.frustum),
    residuals: decodeResiduals(channel.residuals),
  };
}

export function readScene(document) {
  const scene = JSON.parse(document.getElementById('scene').textContent);
  return {
    ...scene,
    surfaces: scene.surfaces.map((surface) => ({
      ...surface,
      vertices: floats(surface.vertices),
      triangles: indices(surface.triangles),
      border: indices(surface.border),
      shading: decodeShading(surface.shading),
    })),
    light: decodeLight(scene.light),
    cloud: scene.cloud && { points: floats(scene.cloud.points) },
    channels: scene.channels.map((channel, i) => decodeChannel(channel, i, scene.channelColours)),
    // From a place in the world to a place in the picture, and back.
    normal: (point) => point.map((value, axis) => (value - scene.centre[axis]) / scene.scale),
    world: (place) => place.map((value, axis) => value * scene.scale + scene.centre[axis]),
  };
}
