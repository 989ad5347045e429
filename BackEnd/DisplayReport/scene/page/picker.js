// Finds the target under the pointer, and tells where it is in the numbers that were computed, not in those that are
// drawn.
import { Vector3 } from 'three';

const REACH = 10; // pixels

function nearest(points, camera, size, pointer, best, found) {
  const place = new Vector3();
  for (let i = 0; i < points.length / 3; ++i) {
    place.set(points[3 * i], points[3 * i + 1], points[3 * i + 2]).project(camera);
    if (place.z < -1 || place.z > 1) {
      continue;
    }
    const across = ((place.x + 1) / 2) * size.width - pointer.x;
    const down = ((1 - place.y) / 2) * size.height - pointer.y;
    const distance = Math.hypot(across, down);
    // Of two at the same pixel, the one in front.
    if (distance < best.distance - 0.5 || (distance < best.distance + 0.5 && place.z < best.depth)) {
      best.distance = distance;
      best.depth = place.z;
      best.answer = found(i);
    }
  }
}

function targetOf(item, i) {
  const { channel } = item;
  return {
    channel: channel.name,
    projector: channel.projector,
    column: channel.cells[2 * i],
    row: channel.cells[2 * i + 1],
    picture: [channel.picture[2 * i], channel.picture[2 * i + 1]],
    point: [...channel.exactPoints.slice(3 * i, 3 * i + 3)],
    place: channel.points.slice(3 * i, 3 * i + 3),
  };
}

function sampleOf(item, i) {
  const { channel } = item;
  return {
    channel: channel.name,
    projector: channel.projector,
    sample: i * channel.outlineStep,
    isBeyond: Boolean(channel.beyond[i]),
    point: [...channel.exactBoundary.slice(3 * i, 3 * i + 3)],
    place: channel.boundary.slice(3 * i, 3 * i + 3),
  };
}

export function pick(items, camera, size, pointer) {
  const best = { distance: REACH, depth: Infinity, answer: null };
  for (const item of items) {
    if (!item.group.visible) {
      continue;
    }
    if (item.parts.targets.visible) {
      nearest(item.channel.points, camera, size, pointer, best, (i) => targetOf(item, i));
    }
  }
  if (best.answer) {
    return best.answer;
  }
  for (const item of items) {
    if (item.group.visible && item.parts.outlines.visible) {
      nearest(item.channel.boundary, camera, size, pointer, best, (i) => sampleOf(item, i));
    }
  }
  return best.answer;
}
