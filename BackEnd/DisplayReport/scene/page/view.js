// The picture: camera, light, what is visible, and when it is drawn.
import {
  Color, Group, PerspectiveCamera, Scene, Vector3, WebGLRenderer,
} from 'three';
import { OrbitControls } from 'three/addons/controls/OrbitControls.js';
import { ADDED_KINDS, AddedLight } from './addedLight.js';
import { AxisLabels, Label, projector } from './axisLabels.js';
import { pressed } from './keyboard.js';
import { placeUnder, readLight } from './lightReader.js';
import { dotScale, pixelRatio } from './materials.js';
import { fillLight, fillReadout } from './panel.js';
import { pick } from './picker.js';
import {
  makeAxes, makeChannel, makeCloud, makeEyes, makeMark, makeMirror, makeSurface, shadeSurface,
} from './sceneObjects.js';

const FIELD_OF_VIEW = 32; // degrees
const MARGIN = 1.16;
// Pixels of the shorter side of a picture in which targets have their usual size, and how small they become in smaller ones,
// so that the light between them stays in sight.
const ROOMY = 700;
const LEAST_DOT_SCALE = 0.45;
const CLICK = 4; // pixels that a pointer may move and still click
// Of the opacity of a screen: where it is seen from the other side than that of the eye point. By way of a mirror light
// may arrive on either side.
const BEHIND = 0.14;
const BEHIND_WITH_MIRROR = 0.7;
// Pixels of the drawing at the most: with a graphics processor, without one, and without one while the picture moves.
const PIXELS = { fast: 8e6, slow: 1.5e6, moving: 3e5 };

// Edges are smoothed by a graphics processor alone: software would take as long for them as for all the rest.
// Light that is added up is opaque: of that alone near places hide far ones.
function drawingSurface(depth) {
  const canvas = document.createElement('canvas');
  const wishes = { alpha: false, depth, stencil: false };
  const fast = canvas.getContext('webgl2', { ...wishes, antialias: true, failIfMajorPerformanceCaveat: true });
  const context = fast || canvas.getContext('webgl2', { ...wishes, antialias: false });
  return { isSlow: !fast, options: context ? { canvas, context } : {} };
}

// Labels are shown with their words as long as these cover no other label, be it a number alone.
function shortenLabels(shown) {
  const widthOf = (one) => (one.isShort ? one.label.shortWidth : one.label.width);
  for (const one of shown) {
    const isCovered = shown.some((other) => other !== one
      && Math.abs(other.at.x - one.at.x) < (widthOf(other) + one.label.width) / 2
      && Math.abs(other.at.y - one.at.y) < (other.label.height + one.label.height) / 2);
    one.isShort = isCovered;
    one.label.shorten(isCovered);
  }
}

export class View {
  // Throws when the browser has no WebGL.
  constructor(scene, stage, { readout, light }) {
    this.scene = scene;
    this.stage = stage;
    this.readout = readout;
    this.light = light;
    this.opacity = { value: scene.light ? 1 : 0.75 };
    this.shadeKind = scene.light ? ADDED_KINDS[0][0] : 'count';
    this.eye = scene.eyes.length ? new Vector3(...scene.normal(scene.eyes[0].point)) : null;
    const { isSlow, options } = drawingSurface(Boolean(scene.light));
    this.isSlow = isSlow;
    this.renderer = new WebGLRenderer(options);
    const canvas = this.renderer.domElement;
    canvas.tabIndex = 0;
    canvas.setAttribute('role', 'application');
    canvas.setAttribute('aria-label', 'The display in three dimensions');
    stage.append(canvas);
    this.camera = new PerspectiveCamera(FIELD_OF_VIEW, 1, 0.001, 100);
    this.camera.up.set(0, 0, 1);
    this.controls = new OrbitControls(this.camera, this.renderer.domElement);
    this.controls.addEventListener('change', () => this.draw());
    this.makeObjects();
    this.listen();
    this.resize();
    this.lookFrom('home');
  }

  makeObjects() {
    const { scene } = this;
    this.world = new Scene();
    this.world.background = new Color('#20252b');
    const look = { opacity: this.opacity, eye: this.eye, behind: scene.mirror ? BEHIND_WITH_MIRROR : BEHIND };
    this.surfaces = scene.surfaces.map((surface) => makeSurface(surface, look));
    this.surfaces.forEach((surface) => this.world.add(surface.group));
    this.added = scene.light && new AddedLight(scene.light, look, () => this.draw());
    if (this.added) {
      this.surfaces[this.surfaces.length - 1].group.add(this.added.group);
    }
    this.items = scene.channels.map((channel) => makeChannel(scene, channel));
    this.items.forEach((item) => this.world.add(item.group));
    this.shade();
    const axes = makeAxes(scene);
    this.layers = { axes: axes.object, labels: new Group(), cloud: new Group(), eyes: makeEyes(scene), mirror: new Group() };
    if (scene.cloud) {
      this.layers.cloud.add(makeCloud(scene));
    }
    if (scene.mirror) {
      this.layers.mirror.add(makeMirror(scene));
    }
    this.mark = makeMark(scene);
    this.world.add(...Object.values(this.layers), this.mark);
    this.makeLabels(axes.axes);
    this.showScreen(scene.surfaces.length ? scene.surfaces[scene.surfaces.length - 1].name : 'none');
  }

  makeLabels(axes) {
    this.labels = [];
    const all = [];
    const addLabel = (text, kind) => {
      all.push(new Label(this.stage, text, kind));
      return all[all.length - 1];
    };
    this.axisLabels = new AxisLabels(axes, addLabel);
    for (const eye of this.scene.eyes) {
      const place = new Vector3(...this.scene.normal(eye.point));
      this.labels.push({ label: addLabel(eye.name, 'eye'), place, isVisible: () => this.layers.eyes.visible });
    }
    for (const item of this.items.filter((one) => one.label)) {
      const isVisible = () => this.layers.labels.visible && item.group.visible;
      const label = addLabel(item.channel.name, 'channel');
      label.element.dataset.number = item.channel.number;
      this.labels.push({ label, place: item.label, isVisible });
    }
    all.forEach((label) => label.measure());
  }

  listen() {
    new ResizeObserver(() => {
      this.resize();
      // A view that nobody has changed shows the display whole, whatever room there is.
      this.viewName ? this.lookFrom(this.viewName) : this.draw();
    }).observe(this.stage);
    const canvas = this.renderer.domElement;
    let down = null;
    canvas.addEventListener('pointerdown', (event) => { down = [event.clientX, event.clientY]; });
    canvas.addEventListener('pointerup', (event) => {
      if (down && Math.hypot(event.clientX - down[0], event.clientY - down[1]) <= CLICK) {
        this.pickAt(event.clientX, event.clientY);
      }
      down = null;
    });
    canvas.addEventListener('pointermove', (event) => {
      if (event.buttons === 0) {
        this.readSoon(event.clientX, event.clientY);
      }
    });
    canvas.addEventListener('pointerleave', (event) => {
      if (event.pointerType === 'mouse') {
        this.showLight(null);
      }
    });
    canvas.addEventListener('keydown', (event) => {
      if (pressed(event, this)) {
        event.preventDefault();
      }
    });
    window.addEventListener('keydown', (event) => {
      if (event.key === 'Escape') {
        this.choose(null);
        this.showLight(null);
      }
    });
    this.listenToMoves();
    this.listenToLosses(canvas);
  }

  // Without a graphics processor a picture that moves is drawn more coarsely, and again as it should be once it rests.
  listenToMoves() {
    const setMoving = (isMoving) => {
      this.isMoving = this.isSlow && isMoving;
      this.resize();
      this.draw();
    };
    this.controls.addEventListener('start', () => {
      this.isHeld = true;
      this.viewName = null;
    });
    this.controls.addEventListener('change', () => {
      if (this.isHeld && !this.isMoving && this.isSlow) {
        setMoving(true);
      }
    });
    this.controls.addEventListener('end', () => {
      this.isHeld = false;
      if (this.isMoving) {
        setMoving(false);
      }
    });
  }

  // The browser may take the drawing away, and give it back.
  listenToLosses(canvas) {
    const notice = Object.assign(document.createElement('div'), { id: 'loss', hidden: true });
    notice.setAttribute('role', 'alert');
    const reload = Object.assign(document.createElement('button'), { type: 'button', textContent: 'Reload the page' });
    reload.addEventListener('click', () => window.location.reload());
    notice.append('The browser has taken the memory of this picture away, perhaps because other pages need it. It is drawn again '
      + 'as soon as the browser gives it back. Should that not happen, close other pages and reload this one. ', reload);
    this.stage.append(notice);
    canvas.addEventListener('webglcontextlost', (event) => {
      event.preventDefault();
      notice.hidden = false;
    });
    canvas.addEventListener('webglcontextrestored', () => {
      notice.hidden = true;
      this.draw();
    });
  }

  pickAt(clientX, clientY) {
    const box = this.renderer.domElement.getBoundingClientRect();
    this.choose(pick(this.items, this.camera, box, { x: clientX - box.left, y: clientY - box.top }));
    this.readAt(clientX, clientY);
  }

  pickMiddle() {
    const box = this.renderer.domElement.getBoundingClientRect();
    this.pickAt(box.left + box.width / 2, box.top + box.height / 2);
  }

  // Once a frame, however often the pointer moves.
  readSoon(clientX, clientY) {
    const isDue = Boolean(this.pointer);
    this.pointer = [clientX, clientY];
    if (!isDue) {
      requestAnimationFrame(() => {
        const at = this.pointer;
        this.pointer = null;
        this.readAt(...at);
      });
    }
  }

  readAt(clientX, clientY) {
    const box = this.renderer.domElement.getBoundingClientRect();
    const pointer = { x: (2 * (clientX - box.left)) / box.width - 1, y: 1 - (2 * (clientY - box.top)) / box.height };
    const found = placeUnder(this.surfaces, this.camera, pointer, this.eye);
    this.showLight(found && readLight(found, this.items, this.scene));
  }

  showLight(reading) {
    fillLight(this.light, reading, this.scene);
  }

  choose(answer) {
    fillReadout(this.readout, answer, this.scene);
    this.mark.visible = Boolean(answer);
    if (answer) {
      this.mark.geometry.attributes.position.array.set(answer.place);
      this.mark.geometry.attributes.position.needsUpdate = true;
    }
    this.draw();
  }

  resize() {
    const width = Math.max(1, this.stage.clientWidth);
    const height = Math.max(1, this.stage.clientHeight);
    const most = this.isMoving ? PIXELS.moving : this.isSlow ? PIXELS.slow : PIXELS.fast;
    dotScale.value = Math.min(1, Math.max(LEAST_DOT_SCALE, Math.min(width, height) / ROOMY));
    pixelRatio.value = Math.min(window.devicePixelRatio || 1, this.isSlow ? 1 : 2, Math.sqrt(most / (width * height)));
    this.renderer.setPixelRatio(pixelRatio.value);
    this.renderer.setSize(width, height);
    this.camera.aspect = width / height;
    this.camera.updateProjectionMatrix();
  }

  // The corners of the box that is framed, from its middle.
  corners() {
    const { minimum, maximum } = this.scene.axes;
    const corners = [];
    for (let i = 0; i < 8; ++i) {
      corners.push(new Vector3(...this.scene.normal([0, 1, 2].map((axis) => ((i >> axis) & 1 ? maximum : minimum)[axis]))));
    }
    return corners;
  }

  // So far off that every corner is in the picture.
  distanceAlong(direction) {
    const forward = direction.clone().negate();
    const right = new Vector3().crossVectors(forward, this.camera.up).normalize();
    const up = new Vector3().crossVectors(right, forward);
    const high = Math.tan((FIELD_OF_VIEW * Math.PI) / 360) / MARGIN;
    const wide = high * this.camera.aspect;
    return Math.max(...this.corners().map((corner) => Math.max(
      Math.abs(corner.dot(right)) / wide - corner.dot(forward),
      Math.abs(corner.dot(up)) / high - corner.dot(forward),
    )), 0.05);
  }

  lookFrom(name) {
    const directions = { home: this.scene.home, front: [0, -1, 0], side: [1, 0, 0], top: [0, -0.0001, 1] };
    if (name === 'eye') {
      const eye = new Vector3(...this.scene.normal(this.scene.eyes[0].point));
      const towards = new Vector3(...this.scene.normal(this.scene.middle)).sub(eye);
      const direction = towards.length() > 0.02 ? towards.normalize() : new Vector3(0, 1, 0);
      this.camera.position.copy(eye);
      this.controls.target.copy(eye).addScaledVector(direction, 0.05);
    } else {
      const direction = new Vector3(...directions[name]).normalize();
      this.controls.target.set(0, 0, 0);
      this.camera.position.copy(direction).multiplyScalar(this.distanceAlong(direction));
    }
    this.viewName = name;
    this.controls.update();
    this.draw();
  }

  showScreen(name) {
    for (const surface of this.surfaces) {
      surface.group.visible = name === 'both' || name === surface.name;
    }
    this.draw();
  }

  setOpacity(opacity) {
    this.opacity.value = opacity;
    this.draw();
  }

  // 'count', 'channel', 'none', or a kind of added light.
  shadeBy(kind) {
    this.shadeKind = kind;
    this.shade();
    this.draw();
    if (this.added) {
      this.surfaces[this.surfaces.length - 1].mesh.visible = !ADDED_KINDS.some(([name]) => name === kind);
      this.added.show(kind);
    }
  }

  // By the channels that are shown.
  shade() {
    this.surfaces.forEach((surface) => shadeSurface(surface, this.shadeKind, this.items, this.scene.countColours));
  }

  showLayer(name, isOn) {
    if (this.layers[name]) {
      this.layers[name].visible = isOn;
    }
    for (const item of this.items.filter((one) => one.parts[name])) {
      item.parts[name].visible = isOn;
    }
    this.draw();
  }

  showChannel(item, isOn) {
    item.group.visible = isOn;
    item.box.checked = isOn;
    this.shade();
    this.draw();
  }

  showAll(isOn) {
    this.items.forEach((item) => this.showChannel(item, isOn));
  }

  showOnly(wanted) {
    this.items.forEach((item) => this.showChannel(item, item === wanted));
  }

  // Soon, and once however often it is asked for.
  draw() {
    if (!this.isDue) {
      this.isDue = true;
      requestAnimationFrame(() => { this.isDue = false; this.drawNow(); });
    }
  }

  drawNow() {
    if (this.renderer.getContext().isContextLost()) {
      return;
    }
    this.renderer.render(this.world, this.camera);
    this.placeLabels();
    if (!this.isShown) {
      this.isShown = true;
      this.noteFirstPicture();
    }
  }

  // For whoever measures: milliseconds from the request of the page until its first picture was drawn, not only asked for.
  noteFirstPicture() {
    const context = this.renderer.getContext();
    context.readPixels(0, 0, 1, 1, context.RGBA, context.UNSIGNED_BYTE, new Uint8Array(4));
    performance.mark('first picture');
    document.documentElement.dataset.firstPicture = String(Math.round(performance.now()));
  }

  placeLabels() {
    const { clientWidth: width, clientHeight: height } = this.stage;
    const project = projector(this.camera, width, height);
    const ahead = this.camera.getWorldDirection(new Vector3());
    this.axisLabels.place(project, ahead, width, this.layers.axes.visible);
    const shown = [];
    for (const { label, place, isVisible } of this.labels) {
      const at = isVisible() ? project(place) : null;
      const isInside = at && at.x > 0 && at.x < width && at.y > 0 && at.y < height;
      isInside ? label.show(at.x, at.y) : label.hide();
      if (isInside) {
        shown.push({ label, at, isShort: true });
      }
    }
    shortenLabels(shown);
  }
}
