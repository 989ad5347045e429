// Makes what is drawn from the scene: one object per thing that can be hidden.
import {
  BufferAttribute, BufferGeometry, Group, LineLoop, LineSegments, Mesh, Points, Vector3,
} from 'three';
import {
  dotScale, flatMaterial, litMaterial, setColours,
} from './materials.js';

const SURFACE_COLOURS = { content: '#8494a6', measured: '#b0a690' };
const CLOUD_COLOUR = '#8fd0c0';
const EYE_COLOUR = '#ffffff';
const INLIER_COLOUR = '#ffffff';
const OUTLIER_COLOUR = '#ff6a5a';
const SCALE_COLOUR = '#7d8894';
// How a piece of a rim is drawn.
const DASHED_PIECE = 1;
const NO_PIECE = 2;
const DISC = 1;
const RING = 2;
const HOLLOW_DISC = 3;
// Later ones are drawn over earlier ones: nothing here hides what stands behind it.
const ORDER = { surface: 0, mirror: 1, fill: 2, cloud: 3, line: 4, dot: 5, mark: 6 };

function geometryOf(points, index) {
  const geometry = new BufferGeometry();
  geometry.setAttribute('position', new BufferAttribute(points, 3));
  if (index) {
    geometry.setIndex(new BufferAttribute(index, 1));
  }
  return geometry;
}

function drawn(object, order) {
  object.renderOrder = order;
  object.frustumCulled = false;
  return object;
}

function dots(points, colour, size, shape, order, scale) {
  return drawn(new Points(geometryOf(points), flatMaterial(colour, { size, shape, scale })), order);
}

function line(Kind, points, colour, opacity, index) {
  return drawn(new Kind(geometryOf(points, index), flatMaterial(colour, { opacity })), ORDER.line);
}

function sheet(points, index, colour, opacity, order) {
  return drawn(new Mesh(geometryOf(points, index), flatMaterial(colour, { opacity })), order);
}

function middleOf(points) {
  const middle = new Vector3();
  const count = points.length / 3;
  for (let i = 0; i < count; ++i) {
    middle.x += points[3 * i] / count;
    middle.y += points[3 * i + 1] / count;
    middle.z += points[3 * i + 2] / count;
  }
  return middle;
}

// The point of the set that is nearest to its middle: on a curved screen the middle itself hangs in the air.
function nearestToMiddle(points) {
  const middle = middleOf(points);
  let nearest = new Vector3();
  let least = Infinity;
  for (let i = 0; i < points.length; i += 3) {
    const point = new Vector3(points[i], points[i + 1], points[i + 2]);
    const distance = point.distanceToSquared(middle);
    if (distance < least) {
      least = distance;
      nearest = point;
    }
  }
  return nearest;
}

// At the foot of the arrow towards the top; elsewhere on the picture where it has none.
function labelPlace(channel) {
  if (channel.upMark.length) {
    return new Vector3(...channel.upMark[0].slice(0, 3));
  }
  if (channel.points.length) {
    return nearestToMiddle(channel.points);
  }
  const points = [channel.boundary, channel.frustum ? channel.frustum.rim : []].find((p) => p.length);
  return points ? middleOf(points) : null;
}

// One mesh for all regions of the light, each with a material of its own; its triangles know their region by that.
function makeShaded(shading, look) {
  const triangles = new Uint32Array(shading.regions.reduce((sum, region) => sum + region.triangles.length, 0));
  const geometry = geometryOf(shading.vertices, triangles);
  let start = 0;
  shading.regions.forEach((region, i) => {
    triangles.set(region.triangles, start);
    geometry.addGroup(start, region.triangles.length, i);
    start += region.triangles.length;
  });
  geometry.computeVertexNormals();
  return drawn(new Mesh(geometry, shading.regions.map(() => litMaterial('#000000', look))), ORDER.surface);
}

function makePlain(surface, look) {
  const geometry = geometryOf(surface.vertices, surface.triangles);
  geometry.computeVertexNormals();
  return drawn(new Mesh(geometry, litMaterial(SURFACE_COLOURS[surface.name] || SURFACE_COLOURS.content, look)), ORDER.surface);
}

// `look` is what all surfaces share: their opacity, and the eye point where there is one.
export function makeSurface(surface, look) {
  const mesh = surface.shading ? makeShaded(surface.shading, look) : makePlain(surface, look);
  const group = new Group();
  group.add(mesh, line(LineSegments, surface.vertices, '#dfe5ea', 0.6, surface.border));
  return { name: surface.name, group, mesh, shading: surface.shading };
}

// What a region is drawn in, a colour and its round each: by the number of those channels that are shown, or by which they are.
function coloursOf(region, kind, items, palette) {
  const shown = region.channels.filter((channel) => items[channel].group.visible);
  if (kind === 'channel' && shown.length) {
    return shown.map((channel) => items[channel].channel);
  }
  return [{ colour: palette[Math.min(shown.length, palette.length - 1)], round: 0 }];
}

export function shadeSurface(surface, kind, items, palette) {
  if (!surface.shading) {
    return;
  }
  surface.shading.regions.forEach((region, i) => {
    const colours = kind === 'none' ? [{ colour: SURFACE_COLOURS[surface.name], round: 0 }] : coloursOf(region, kind, items, palette);
    setColours(surface.mesh.material[i], colours);
  });
}

export function makeCloud(scene) {
  return dots(scene.cloud.points, CLOUD_COLOUR, 1.5, 0, ORDER.cloud);
}

// The edges and the rim as one set of pieces; how those of the rim are drawn comes with the scene.
function piecesOf({ frustum, rimPieces }) {
  const pieces = [];
  const add = (way, i, k) => pieces.push(...way.subarray(3 * i, 3 * i + 3), ...way.subarray(3 * k, 3 * k + 3));
  for (const edge of frustum.edges) {
    for (let i = 1; i < edge.length / 3; ++i) {
      add(edge, i - 1, i);
    }
  }
  const count = frustum.rim.length / 3;
  const at = (i) => new Vector3(...frustum.rim.subarray(3 * i, 3 * i + 3));
  for (let i = 0; i < count; ++i) {
    const next = (i + 1) % count;
    if (rimPieces[i] === DASHED_PIECE) {
      pieces.push(...dashes(at(i), at(next), DASH));
    } else if (rimPieces[i] !== NO_PIECE) {
      add(frustum.rim, i, next);
    }
  }
  return new Float32Array(pieces);
}

function makeFrustum(scene, channel) {
  const group = new Group();
  const { frustum, colour } = channel;
  if (frustum) {
    group.add(line(LineSegments, piecesOf(channel), colour, 0.7));
    group.add(dots(new Float32Array(scene.normal(frustum.apex)), colour, 9, DISC, ORDER.dot));
  }
  return group;
}

// Pieces of a line of a length that is seen as a dash, and the gaps between them.
function dashes(from, to, length) {
  const way = new Vector3().subVectors(to, from);
  const count = Math.max(1, Math.round(way.length() / length));
  const pieces = [];
  for (let i = 0; i < count; ++i) {
    const start = from.clone().addScaledVector(way, i / count);
    const end = from.clone().addScaledVector(way, (i + 0.5) / count);
    pieces.push(...start.toArray(), ...end.toArray());
  }
  return pieces;
}

const DASH = 0.012; // of the size of the picture

// Past the edge of the screen an outline is dashed: no light arrives there.
function outlinePieces(channel) {
  const { boundary, beyond } = channel;
  const count = boundary.length / 3;
  const pieces = [];
  const at = (i) => new Vector3(boundary[3 * i], boundary[3 * i + 1], boundary[3 * i + 2]);
  for (let i = 0; i < count; ++i) {
    const next = (i + 1) % count;
    if (beyond[i] || beyond[next]) {
      pieces.push(...dashes(at(i), at(next), DASH));
    } else {
      pieces.push(...at(i).toArray(), ...at(next).toArray());
    }
  }
  return new Float32Array(pieces);
}

// An arrow on the screen towards the top of the picture.
function makeUpMark(channel) {
  const group = new Group();
  if (channel.upMark.length) {
    const [shaft, head] = channel.upMark;
    const pieces = [];
    for (let i = 3; i < shaft.length; i += 3) {
      pieces.push(...shaft.slice(i - 3, i + 3));
    }
    group.add(line(LineSegments, new Float32Array(pieces), '#ffffff', 0.95));
    group.add(sheet(head, new Uint32Array([0, 1, 2]), '#ffffff', 0.95, ORDER.line));
  }
  return group;
}

// From each measured point towards where the light of its place lands. Those of outliers are dashed and begin in rings.
function makeResiduals({ residuals }) {
  const group = new Group();
  if (!residuals) {
    return group;
  }
  const pieces = { inliers: [], outliers: [] };
  const marks = { inliers: [], outliers: [] };
  residuals.flags.forEach(({ isOutlier }, i) => {
    const kind = isOutlier ? 'outliers' : 'inliers';
    const from = new Vector3(...residuals.points.subarray(3 * i, 3 * i + 3));
    const way = new Vector3(...residuals.offsets.subarray(3 * i, 3 * i + 3));
    marks[kind].push(...from.toArray());
    if (Number.isFinite(way.x)) {
      const to = from.clone().add(way);
      pieces[kind].push(...(isOutlier ? dashes(from, to, DASH) : [...from.toArray(), ...to.toArray()]));
    }
  });
  for (const [kind, colour, size, look] of [['inliers', INLIER_COLOUR, 5, DISC], ['outliers', OUTLIER_COLOUR, 13, RING]]) {
    group.add(line(LineSegments, new Float32Array(pieces[kind]), colour, 1));
    group.add(dots(new Float32Array(marks[kind]), colour, size, look, ORDER.dot));
  }
  return group;
}

export function makeChannel(scene, channel) {
  // Dense grids and many channels get smaller dots, so that what stands behind them stays in sight.
  const dense = (90 * scene.targetStep) / Math.max(scene.columns, scene.rows);
  const size = Math.min(6, Math.max(2.5, dense * Math.min(1, 3 / Math.sqrt(scene.channels.length))));
  const parts = {
    targets: dots(channel.points, channel.colour, size, channel.round ? HOLLOW_DISC : DISC, ORDER.dot, dotScale),
    outlines: line(LineSegments, outlinePieces(channel), channel.colour, 1),
    frusta: makeFrustum(scene, channel),
    labels: makeUpMark(channel),
    mirror: new Group(),
    residuals: makeResiduals(channel),
  };
  if (channel.frustum && channel.frustum.mirrorTriangles.length) {
    const { mirrorVertices, mirrorTriangles } = channel.frustum;
    parts.mirror.add(sheet(mirrorVertices, mirrorTriangles, channel.colour, 0.18, ORDER.mirror));
  }
  const group = new Group();
  group.add(...Object.values(parts));
  return { channel, group, parts, label: labelPlace(channel) };
}

// Three great circles: where the whole sphere of the mirror lies.
export function makeMirror(scene) {
  const group = new Group();
  const STEPS = 96;
  for (let axis = 0; axis < 3; ++axis) {
    const points = [];
    for (let i = 0; i < STEPS; ++i) {
      const angle = (2 * Math.PI * i) / STEPS;
      const place = [...scene.mirror.centre];
      place[(axis + 1) % 3] += scene.mirror.radius * Math.cos(angle);
      place[(axis + 2) % 3] += scene.mirror.radius * Math.sin(angle);
      points.push(...scene.normal(place));
    }
    group.add(line(LineLoop, new Float32Array(points), '#c9d4df', 0.25));
  }
  return group;
}

export function makeEyes(scene) {
  const points = scene.eyes.flatMap((eye) => scene.normal(eye.point));
  return dots(new Float32Array(points), EYE_COLOUR, 11, DISC, ORDER.dot);
}

// Along edges of the box that it does not hide from where the view begins.
export function makeAxes(scene) {
  const segments = [];
  const axes = [];
  const tick = 0.012 * scene.scale;
  const shifted = (point, direction, length) => point.map((value, axis) => value + direction[axis] * length);
  const place = (point) => new Vector3(...scene.normal(point));
  scene.axes.axes.forEach((axis, number) => {
    segments.push(...scene.normal(axis.start), ...scene.normal(axis.end));
    const ticks = axis.ticks.map(({ value, text }) => {
      const foot = [...axis.start];
      foot[number] = value;
      segments.push(...scene.normal(foot), ...scene.normal(shifted(foot, axis.outwards, tick)));
      return { text, place: place(foot) };
    });
    axes.push({
      title: axis.title, ticks, start: place(axis.start), end: place(axis.end),
      beside: place(shifted(axis.start, axis.outwards, tick)), isUpright: number === 2,
    });
  });
  return { object: line(LineSegments, new Float32Array(segments), SCALE_COLOUR, 0.9), axes };
}

export function makeMark(scene) {
  const mark = dots(new Float32Array(3), '#ffffff', 22, RING, ORDER.mark);
  mark.visible = false;
  return mark;
}
