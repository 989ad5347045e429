// Makes what is drawn from the scene: one object per thing that can be hidden.
import {
  BufferAttribute, BufferGeometry, Group, LineLoop, LineSegments, Mesh, Points, Vector3,
} from 'three';
import { flatMaterial, litMaterial } from './materials.js';

const SURFACE_COLOURS = { content: '#8494a6', measured: '#b0a690' };
const CLOUD_COLOUR = '#8fd0c0';
const EYE_COLOUR = '#ffffff';
const SCALE_COLOUR = '#7d8894';
const DISC = 1;
const RING = 2;
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

function dots(scene, points, colour, size, shape, order) {
  const material = flatMaterial(colour, { size: size * scene.pixelRatio, shape });
  return drawn(new Points(geometryOf(points), material), order);
}

function line(Kind, points, colour, opacity, index) {
  return drawn(new Kind(geometryOf(points, index), flatMaterial(colour, { opacity })), ORDER.line);
}

function sheet(points, index, colour, opacity, order) {
  return drawn(new Mesh(geometryOf(points, index), flatMaterial(colour, { opacity })), order);
}

// The cells of a grid of which all four corners lie on the screen.
function cellTriangles(channel, rows, step) {
  const place = new Map();
  for (let i = 0; i < channel.cells.length / 2; ++i) {
    place.set(channel.cells[2 * i] * rows + channel.cells[2 * i + 1], i);
  }
  const triangles = [];
  for (const [key, a] of place) {
    const b = place.get(key + step);
    const c = place.get(key + step * rows);
    const d = place.get(key + step * rows + step);
    const isLastRow = key % rows + step >= rows;
    if (!isLastRow && b !== undefined && c !== undefined && d !== undefined) {
      triangles.push(a, b, d, a, d, c);
    }
  }
  return new Uint32Array(triangles);
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
function labelPlace(channel) {
  const points = [channel.points, channel.boundary, channel.frustum ? channel.frustum.rim : []].find((p) => p.length);
  if (!points) {
    return null;
  }
  const middle = middleOf(points);
  if (points !== channel.points) {
    return middle;
  }
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

export function makeSurface(surface) {
  const material = litMaterial(SURFACE_COLOURS[surface.name] || SURFACE_COLOURS.content, 0.45);
  const mesh = drawn(new Mesh(geometryOf(surface.vertices, surface.triangles), material), ORDER.surface);
  mesh.geometry.computeVertexNormals();
  const border = line(LineSegments, surface.vertices, '#dfe5ea', 0.6, surface.border);
  const group = new Group();
  group.add(mesh, border);
  return { name: surface.name, group, material };
}

export function makeCloud(scene) {
  return dots(scene, scene.cloud.points, CLOUD_COLOUR, 1.5, 0, ORDER.cloud);
}

// The edges and the rim as one set of pieces.
function piecesOf(frustum) {
  const pieces = [];
  const add = (way, i, k) => pieces.push(...way.subarray(3 * i, 3 * i + 3), ...way.subarray(3 * k, 3 * k + 3));
  for (const edge of frustum.edges) {
    for (let i = 1; i < edge.length / 3; ++i) {
      add(edge, i - 1, i);
    }
  }
  const count = frustum.rim.length / 3;
  for (let i = 0; i < count; ++i) {
    add(frustum.rim, i, (i + 1) % count);
  }
  return new Float32Array(pieces);
}

function makeFrustum(scene, channel) {
  const group = new Group();
  const { frustum, colour } = channel;
  if (frustum) {
    group.add(line(LineSegments, piecesOf(frustum), colour, 0.7));
    group.add(dots(scene, new Float32Array(scene.normal(frustum.apex)), colour, 9, DISC, ORDER.dot));
  }
  return group;
}

export function makeChannel(scene, channel) {
  const size = Math.min(6, Math.max(2.5, 90 * scene.targetStep / Math.max(scene.columns, scene.rows)));
  const parts = {
    pictures: sheet(channel.points, cellTriangles(channel, scene.rows, scene.targetStep), channel.colour, 0.28, ORDER.fill),
    targets: dots(scene, channel.points, channel.colour, size, DISC, ORDER.dot),
    outlines: line(LineLoop, channel.boundary, channel.colour, 1),
    frusta: makeFrustum(scene, channel),
    mirror: new Group(),
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
  return dots(scene, new Float32Array(points), EYE_COLOUR, 11, DISC, ORDER.dot);
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
  const mark = dots(scene, new Float32Array(3), '#ffffff', 22, RING, ORDER.mark);
  mark.visible = false;
  return mark;
}
