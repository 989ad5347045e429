// The numbers and titles of the scales: beside their axis, numbers nearer, the title beyond the widest of them, so that
// none covers another wherever the picture is seen from. Places in pixels.
import { Vector3 } from 'three';

const GAP = 9; // pixels between an axis and its numbers: a tick stands there
const SPACE = 4; // pixels between numbers and title
const SHORTEST = 12; // pixels of an axis for each number: shorter ones are seen end on
const END_ON = 0.985; // cosine of the angle within which an axis is seen end on

export class AxisLabels {
  constructor(axes, addLabel) {
    this.axes = axes.map((axis) => ({
      ...axis,
      ticks: axis.ticks.map((tick) => ({ ...tick, label: addLabel(tick.text, 'tick') })),
      label: addLabel(axis.title, 'axis'),
    }));
  }

  // Lays all of them out; `project` answers where a place is in the picture, null for one that is not ahead; `ahead` is
  // where the camera looks, `width` that of the picture.
  place(project, ahead, width, isVisible) {
    const way = new Vector3();
    for (const axis of this.axes) {
      const isEndOn = Math.abs(way.subVectors(axis.end, axis.start).normalize().dot(ahead)) > END_ON;
      this.placeAxis(axis, project, width, isVisible && !isEndOn);
    }
  }

  placeAxis(axis, project, width, isVisible) {
    const [start, end, beside] = [axis.start, axis.end, axis.beside].map(project);
    const isSeen = isVisible && start && end && beside;
    const length = isSeen ? Math.hypot(end.x - start.x, end.y - start.y) : 0;
    const isLong = length > 0 && length >= SHORTEST * axis.ticks.length;
    if (!isLong) {
      axis.ticks.forEach(({ label }) => label.hide());
      axis.label.hide();
      return;
    }
    const along = { x: (end.x - start.x) / length, y: (end.y - start.y) / length };
    // Across the axis, on the side that is outside of the box.
    const side = Math.sign((beside.x - start.x) * -along.y + (beside.y - start.y) * along.x) || 1;
    const across = { x: -along.y * side, y: along.x * side };
    const half = (label, way) => (Math.abs(way.x) * label.width + Math.abs(way.y) * label.height) / 2;
    const put = (label, from, way, gap) => {
      const reach = gap + half(label, way);
      label.showWithin(width, from.x + way.x * reach, from.y + way.y * reach);
    };
    for (const tick of axis.ticks) {
      const foot = project(tick.place);
      foot ? put(tick.label, foot, across, GAP) : tick.label.hide();
    }
    if (axis.isUpright) {
      put(axis.label, end, along, GAP);
    } else {
      const widest = Math.max(0, ...axis.ticks.map(({ label }) => 2 * half(label, across)));
      put(axis.label, { x: (start.x + end.x) / 2, y: (start.y + end.y) / 2 }, across, GAP + widest + SPACE);
    }
  }
}

// A text over the picture, placed by its middle.
export class Label {
  constructor(stage, text, kind) {
    this.element = Object.assign(document.createElement('span'), { className: `label ${kind}`, textContent: text });
    stage.append(this.element);
  }

  // Asked for once, when it is first shown: each question makes the browser lay out the page.
  measure() {
    this.width = this.element.offsetWidth;
    this.height = this.element.offsetHeight;
    this.shorten(true);
    this.shortWidth = this.element.offsetWidth;
    this.shorten(false);
  }

  hide() {
    this.element.hidden = true;
  }

  // To its number alone, where its words would cover those of another one.
  shorten(isShort) {
    this.element.classList.toggle('short', isShort);
  }

  // Moved to the right or left until all of it is in a picture of that width.
  showWithin(width, x, y) {
    this.show(Math.max(this.width / 2, Math.min(width - this.width / 2, x)), y);
  }

  show(x, y) {
    this.element.hidden = false;
    this.element.style.transform = `translate(-50%, -50%) translate(${x}px, ${y}px)`;
  }
}

// From a place in the world to one in a picture of that size; null for what is not ahead.
export function projector(camera, width, height) {
  const place = new Vector3();
  return (point) => {
    place.copy(point).project(camera);
    return place.z > -1 && place.z < 1 ? { x: ((place.x + 1) / 2) * width, y: ((1 - place.y) / 2) * height } : null;
  };
}
