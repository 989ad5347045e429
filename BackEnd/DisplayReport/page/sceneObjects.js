// Makes what is drawn from the scene: one object per thing that can be hidden.
import {
  BufferAttribute,
  BufferGeometry,
  CanvasTexture,
  DoubleSide,
  Group,
  Line,
  LineBasicMaterial,
  LineLoop,
  LineSegments,
  LinearFilter,
  Mesh,
  MeshBasicMaterial,
  MeshLambertMaterial,
  Points,
  PointsMaterial,
  Vector3,
} from 'three';

const SURFACE_COLOURS = { content: '#9db2c8', measured: '#cfc3a8' };
const CLOUD_COLOUR = '#8fd0c0';
const EYE_COLOUR = '#ffffff';
const SCALE_COLOUR = '#7d8894';
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

function disc() {
  const canvas = document.createElement('canvas');
  canvas.width = canvas.height = 32;
  const pen = canvas.getContext('2d');
  pen.fillStyle = '#ffffff';
  pen.beginPath();
  pen.arc(16, 16, 15, 0, 2 * Math.PI);
  pen.fill();
  const texture = new CanvasTexture(canvas);
  // Smaller copies of a disc are too blurred to be round.
  texture.generateMipmaps = false;
  texture.minFilter = LinearFilter;
  return texture;
}

function ring() {
  const canvas = document.createElement('canvas');
  canvas.width = canvas.height = 64;
  const pen = canvas.getContext('2d');
  pen.lineWidth = 8;
  pen.strokeStyle = '#000000';
  pen.arc(32, 32, 24, 0, 2 * Math.PI);
  pen.stroke();
  pen.lineWidth = 4;
  pen.strokeStyle = '#ffffff';
  pen.stroke();
  return new CanvasTexture(canvas);
}

function dots(points, colour, size, texture, order) {
  const material = new PointsMaterial({
    color: colour, size, sizeAttenuation: false, map: texture, alphaTest: 0.5, transparent: true, depthTest: false,
  });
  const object = new Points(geometryOf(points), material);
  object.renderOrder = order;
  object.frustumCulled = false;
  return object;
}

function line(Kind, points, colour, opacity, index) {
  const material = new LineBasicMaterial({ color: colour, transparent: true, opacity, depthTest: false });
  const object = new Kind(geometryOf(points, index), material);
  object.renderOrder = ORDER.line;
  object.frustumCulled = false;
  return object;
}

function sheet(points, index, colour, opacity, order) {
  const material = new MeshBasicMaterial({
    color: colour, transparent: true, opacity, side: DoubleSide, depthWrite: false, depthTest: false,
  });
  const object = new Mesh(geometryOf(points, index), material);
  object.renderOrder = order;
  object.frustumCulled = false;
  return object;
}

// The cells of a grid of which all four corners lie on the screen.
function cellTriangles(channel, rows) {
  const place = new Map();
  for (let i = 0; i < channel.cells.length / 2; ++i) {
    place.set(channel.cells[2 * i] * rows + channel.cells[2 * i + 1], i);
  }
  const triangles = [];
  for (const [key, a] of place) {
    const b = place.get(key + 1);
    const c = place.get(key + rows);
    const d = place.get(key + rows + 1);
    const isLastRow = key % rows === rows - 1;
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
  const material = new MeshLambertMaterial({
    color: SURFACE_COLOURS[surface.name] || SURFACE_COLOURS.content,
    transparent: true, opacity: 0.45, side: DoubleSide, depthWrite: false,
  });
  const mesh = new Mesh(geometryOf(surface.vertices, surface.triangles), material);
  mesh.geometry.computeVertexNormals();
  mesh.renderOrder = ORDER.surface;
  const border = line(LineSegments, surface.vertices, '#dfe5ea', 0.6, surface.border);
  const group = new Group();
  group.add(mesh, border);
  return { name: surface.name, group, material };
}

export function makeCloud(cloud) {
  const object = dots(cloud.points, CLOUD_COLOUR, 1.5, null, ORDER.cloud);
  object.material.alphaTest = 0;
  return object;
}

function makeFrustum(scene, channel) {
  const group = new Group();
  const { frustum, colour } = channel;
  if (!frustum) {
    return group;
  }
  for (const edge of frustum.edges) {
    group.add(line(Line, edge, colour, 0.75));
  }
  group.add(line(LineLoop, frustum.rim, colour, 0.5));
  group.add(dots(new Float32Array(scene.normal(frustum.apex)), colour, 9, scene.disc, ORDER.dot));
  return group;
}

export function makeChannel(scene, channel) {
  const size = Math.min(6, Math.max(2.5, 90 / Math.max(scene.columns, scene.rows)));
  const parts = {
    pictures: sheet(channel.points, cellTriangles(channel, scene.rows), channel.colour, 0.28, ORDER.fill),
    targets: dots(channel.points, channel.colour, size, scene.disc, ORDER.dot),
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
  return dots(new Float32Array(points), EYE_COLOUR, 11, scene.disc, ORDER.dot);
}

// Along edges of the box that it does not hide from where the view begins.
export function makeAxes(scene) {
  const segments = [];
  const labels = [];
  const tick = 0.012 * scene.scale;
  const shifted = (point, direction, length) => point.map((value, axis) => value + direction[axis] * length);
  scene.axes.axes.forEach((axis, number) => {
    segments.push(...scene.normal(axis.start), ...scene.normal(axis.end));
    for (const { value, text } of axis.ticks) {
      const foot = [...axis.start];
      foot[number] = value;
      segments.push(...scene.normal(foot), ...scene.normal(shifted(foot, axis.outwards, tick)));
      labels.push({ text, place: new Vector3(...scene.normal(shifted(foot, axis.outwards, 2 * tick))), kind: 'tick' });
    }
    const middle = axis.start.map((value, i) => (value + axis.end[i]) / 2);
    const place = number === 2 ? shifted(axis.end, [0, 0, 1], 3 * tick) : shifted(middle, axis.outwards, 6 * tick);
    labels.push({ text: axis.title, place: new Vector3(...scene.normal(place)), kind: 'axis' });
  });
  return { object: line(LineSegments, new Float32Array(segments), SCALE_COLOUR, 0.9), labels };
}

export function makeMark() {
  const mark = dots(new Float32Array(3), '#ffffff', 22, ring(), ORDER.mark);
  mark.visible = false;
  return mark;
}

export { disc };
