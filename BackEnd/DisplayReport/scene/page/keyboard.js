// The picture by keyboard: whatever the pointer does has a key.
import { Vector3 } from 'three';

const TURN = (5 * Math.PI) / 180;
const ZOOM = 1.15;
const MOVE = 0.04; // of the distance to what is looked at
const STEEPEST = 0.02; // radians that the view stays off the vertical

const TURNS = { ArrowLeft: [TURN, 0], ArrowRight: [-TURN, 0], ArrowUp: [0, TURN], ArrowDown: [0, -TURN] };
const ZOOMS = { '+': 1 / ZOOM, '=': 1 / ZOOM, '-': ZOOM, _: ZOOM };

export const KEYS = 'Arrows turn, with Shift they move, + and - zoom, Home goes back, Enter reads the middle, Escape clears.';

function turn(camera, target, [around, upwards]) {
  const offset = camera.position.clone().sub(target);
  const up = camera.up;
  offset.applyAxisAngle(up, around);
  const angle = Math.max(STEEPEST, Math.min(Math.PI - STEEPEST, offset.angleTo(up) - upwards));
  const right = new Vector3().crossVectors(up, offset).normalize();
  if (right.length() > 0) {
    offset.applyAxisAngle(right, angle - offset.angleTo(up));
  }
  camera.position.copy(target).add(offset);
}

function move(camera, target, [across, upwards]) {
  const length = MOVE * camera.position.distanceTo(target);
  const right = new Vector3().setFromMatrixColumn(camera.matrixWorld, 0).multiplyScalar((-across / TURN) * length);
  const up = new Vector3().setFromMatrixColumn(camera.matrixWorld, 1).multiplyScalar((upwards / TURN) * length);
  for (const point of [camera.position, target]) {
    point.add(right).add(up);
  }
}

// Does what a key stands for; false for one that stands for nothing.
export function pressed(event, view) {
  const { camera, controls } = view;
  if (event.ctrlKey || event.altKey || event.metaKey) {
    return false;
  }
  if (TURNS[event.key]) {
    view.viewName = null;
    (event.shiftKey ? move : turn)(camera, controls.target, TURNS[event.key]);
  } else if (ZOOMS[event.key]) {
    view.viewName = null;
    camera.position.sub(controls.target).multiplyScalar(ZOOMS[event.key]).add(controls.target);
  } else if (event.key === 'Home') {
    view.lookFrom('home');
  } else if (event.key === 'Enter' || event.key === ' ') {
    view.pickMiddle();
  } else {
    return false;
  }
  controls.update();
  view.draw();
  return true;
}
