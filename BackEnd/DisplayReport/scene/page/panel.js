// The panel beside the picture. Every text of the display is set as text, never as HTML.
import { ADDED_KINDS } from './addedLight.js';
import { decimalsOf, pixelSize, rounded } from './digits.js';
import { KEYS } from './keyboard.js';
import { residualPicture } from './residualPicture.js';

function element(tag, properties = {}, ...children) {
  const made = Object.assign(document.createElement(tag), properties);
  made.append(...children);
  return made;
}

function section(title, ...children) {
  return element('section', {}, element('h2', { textContent: title }), ...children);
}

function swatch(colour) {
  return element('i', { className: 'swatch', style: `background: ${colour}` });
}

// Channels have a number in their colour: where there are more of them than colours, it keeps them apart, and so does the
// hatching of the later ones.
function swatchOf(channel) {
  const made = swatch(channel.colour);
  made.dataset.number = channel.number;
  made.classList.toggle('hatched', channel.round > 0);
  return made;
}

function check(text, isOn, changed, kind = 'checkbox', group = '') {
  const box = element('input', { type: kind, checked: isOn, name: group });
  box.addEventListener('change', () => changed(box.checked));
  return element('label', {}, box, element('span', { textContent: text }));
}

function counts(channel) {
  const { placed } = channel;
  const targets = placed || channel.gridMissed ? `${placed} of ${placed + channel.gridMissed} targets` : 'no grid';
  const outline = `outline ${channel.samples} of ${channel.samples + channel.boundaryMissed}`;
  return `${targets}; ${outline}; ${channel.width} x ${channel.height} pixels`;
}

function channelRow(item, view) {
  const { channel } = item;
  const label = check(channel.name, true, (on) => view.showChannel(item, on));
  label.children[0].after(swatchOf(channel));
  const only = element('button', { type: 'button', textContent: 'only', title: 'Show this channel alone' });
  only.addEventListener('click', () => view.showOnly(item));
  item.box = label.children[0];
  const row = element('li', {}, element('div', { className: 'row' }, label, only),
    element('small', { textContent: counts(channel) }));
  if (!channel.frustum) {
    row.append(element('small', { textContent: 'no frustum is drawn' }));
  }
  for (const text of [channel.remark, channel.fault]) {
    if (text) {
      row.append(element('small', { className: text === channel.fault ? 'fault' : '', textContent: text }));
    }
  }
  return row;
}

function screens(scene, view) {
  const names = scene.surfaces.map((surface) => surface.name);
  const choices = names.length > 1 ? [...names, 'both', 'none'] : [...names, 'none'];
  const shown = names[names.length - 1];
  const radios = choices.map((name) => check(name, name === shown, () => view.showScreen(name), 'radio', 'screen'));
  const opacity = element('input', { type: 'range', min: 0, max: 100, value: Math.round(100 * view.opacity.value) });
  opacity.addEventListener('input', () => view.setOpacity(opacity.value / 100));
  const texts = scene.surfaces.map((s) => element('small', { textContent: `${s.name}: ${s.text}` }));
  return section('Screen', element('div', { className: 'wrap' }, ...radios),
    element('label', {}, element('span', { textContent: 'opacity' }), opacity), ...texts);
}

// What the colours of added light mean.
const ADDED_LEGENDS = {
  shown: [],
  shift: [['#000000', 'where it belongs'], ['#ff0000', 'a third of a pixel off'], ['#ffff00', 'two thirds of a pixel off'],
    ['#ffffff', 'a pixel off or more, or without content'], ['#0a3016', 'not lit']],
  unevenness: [['#0000ff', 'a tenth too dark, or more'], ['#808080', 'even'], ['#ff0000', 'a tenth too bright, or more'],
    ['#0a3016', 'not lit']],
};

function addedLegend(scene, kind) {
  return [...ADDED_LEGENDS[kind].map(([colour, text]) => element('li', {}, swatch(colour), element('span', { textContent: text }))),
    ...scene.light.facts.map((fact) => element('li', {}, element('small', { textContent: fact })))];
}

// What the colours of the screen mean, by how many channels light a place or by which.
function light(scene, view) {
  const shaded = scene.surfaces.find((surface) => surface.shading);
  if (!shaded && !scene.light) {
    return [];
  }
  const legend = element('ul', { id: 'legend' });
  const shade = (kind) => {
    if (ADDED_LEGENDS[kind]) {
      legend.replaceChildren(...addedLegend(scene, kind));
      view.shadeBy(kind);
      return;
    }
    const entries = kind === 'none' ? [] : { count: shaded.shading.byCount, channel: shaded.shading.byChannel }[kind];
    legend.replaceChildren(...entries.map(({ text, colours, channel }) => element('li', {},
      channel === null ? swatch(colours[0]) : swatchOf(scene.channels[channel]), element('span', { textContent: text }))));
    if (kind === 'channel' && shaded.shading.regions.some((region) => region.channels.length > 1)) {
      legend.append(element('li', { textContent: 'Stripes: several channels.' }));
    }
    if (kind === 'channel' && scene.channels.some((channel) => channel.round > 0)) {
      legend.append(element('li', { textContent: `Dark lines, and targets with a dark middle: channels from number ${
        scene.channelColours + 1} on.` }));
    }
    view.shadeBy(kind);
  };
  const kinds = [...(scene.light ? ADDED_KINDS : []), ...(shaded ? [['count', 'by number'], ['channel', 'by channel']] : []),
    ['none', 'plain']];
  const radios = kinds.map(([kind, text]) => check(text, kind === view.shadeKind, () => shade(kind), 'radio', 'shading'));
  shade(view.shadeKind);
  return [section('Light on the screen', element('div', { className: 'wrap' }, ...radios), legend)];
}

function layers(scene, view) {
  const offered = [
    ['targets', 'targets', scene.channels.length],
    ['outlines', 'outlines', scene.channels.length],
    ['frusta', 'frusta', scene.channels.some((channel) => channel.frustum)],
    ['labels', 'names and up marks', scene.channels.length],
    ['cloud', 'model cloud', scene.cloud],
    ['eyes', 'eye point', scene.eyes.length],
    ['mirror', 'mirror', scene.mirror],
    ['residuals', 'residuals', scene.residuals],
    ['axes', 'axes', true],
  ];
  // Targets would hide the points that were measured; of an export the audience sees nothing but its light.
  const hidden = [...(scene.residuals || scene.light ? ['targets'] : []), ...(scene.light ? ['outlines', 'frusta', 'labels', 'cloud', 'mirror'] : [])];
  const isShown = (name) => !hidden.includes(name);
  hidden.forEach((name) => view.showLayer(name, false));
  const boxes = offered.filter(([, , isThere]) => isThere)
    .map(([name, text]) => check(text, isShown(name), (on) => view.showLayer(name, on)));
  return section('Show', element('div', { className: 'wrap' }, ...boxes));
}

// What a fit left of its measured points, in words and in the picture of the channel that is chosen.
function residuals(scene) {
  const channels = scene.channels.filter((channel) => channel.residuals);
  if (!scene.residuals || !channels.length) {
    return [];
  }
  const { onScreen, inPicture } = scene.residuals;
  const choice = element('select', { ariaLabel: 'Channel of the residuals' },
    ...channels.map((channel, i) => element('option', { value: i, textContent: channel.name })));
  const place = element('div', {});
  const show = () => {
    const channel = channels[Number(choice.value)];
    place.replaceChildren(residualPicture(channel),
      ...channel.residuals.facts.map((fact) => element('small', { textContent: fact })));
  };
  choice.addEventListener('change', show);
  show();
  return [section('Residuals after the fit',
    element('small', { textContent: `On the screen: from measured to fitted place, ${onScreen} times as long. `
      + `In the picture: from stated to measured place, ${inPicture} times as long. `
      + 'Outliers are dashed, with a ring or a cross; long vectors are cut.' }), choice, place)];
}

function views(scene, view) {
  const names = ['home', 'front', 'side', 'top', ...(scene.eyes.length ? ['eye'] : [])];
  const buttons = names.map((name) => {
    const button = element('button', { type: 'button', textContent: name });
    button.addEventListener('click', () => view.lookFrom(name));
    return button;
  });
  return section('View', element('div', { className: 'wrap' }, ...buttons));
}

function channelList(items, view) {
  const all = element('button', { type: 'button', textContent: 'all' });
  const none = element('button', { type: 'button', textContent: 'none' });
  all.addEventListener('click', () => view.showAll(true));
  none.addEventListener('click', () => view.showAll(false));
  return section('Channels', element('div', { className: 'wrap' }, all, none),
    element('ul', { id: 'channels' }, ...items.map((item) => channelRow(item, view))));
}

function notes(scene) {
  return section('Notes', element('ul', { id: 'notes' }, ...scene.notes.map((note) => element('li', { textContent: note }))));
}

// The head folds the rest away where there is little room.
function headOf(panel, scene) {
  const fold = element('button', { type: 'button', id: 'fold' });
  const setFolded = (isFolded) => {
    panel.classList.toggle('folded', isFolded);
    fold.textContent = isFolded ? 'Show panel' : 'Hide panel';
    fold.setAttribute('aria-expanded', String(!isFolded));
  };
  fold.addEventListener('click', () => setFolded(!panel.classList.contains('folded')));
  setFolded(window.matchMedia('(max-width: 700px)').matches);
  return element('header', {}, element('h1', { textContent: scene.title }), fold);
}

export function fillPanel(panel, scene, items, view) {
  const unit = scene.unit || 'native units';
  const body = element('div', { id: 'body' });
  body.append(element('p', { textContent: `Lengths in ${unit}. Drag to turn, right-drag or two fingers to move, scroll to zoom; `
    + 'point at the screen for the light there, click a target.' }),
  element('p', { textContent: `Keys, once the picture is chosen with Tab: ${KEYS}` }));
  if (scene.notes.length) {
    body.append(notes(scene));
  }
  if (view) {
    body.append(views(scene, view), ...light(scene, view), screens(scene, view), layers(scene, view), ...residuals(scene),
      channelList(items, view));
  }
  panel.append(headOf(panel, scene), body);
}

function fillRows(list, rows) {
  list.replaceChildren(...rows.flatMap(([name, value]) => [element('dt', { textContent: name }),
    element('dd', { textContent: String(value) })]));
  list.hidden = !rows.length;
}

function placeRows(point, scene) {
  const decimals = decimalsOf(scene.scale);
  return ['x', 'y', 'z'].map((axis, i) => [axis, `${rounded(point[i], decimals)} ${scene.unit}`.trim()]);
}

// Of the target that was clicked; (u, v) is (0, 0) at the bottom left.
export function fillReadout(readout, answer, scene) {
  if (!answer) {
    fillRows(readout, []);
    return;
  }
  const rows = [['channel', answer.channel], ['projector', answer.projector]];
  if (answer.sample === undefined) {
    const [u, v] = answer.picture;
    rows.push(['column', answer.column], ['row', answer.row], ['u, v', `${rounded(u, 4)}, ${rounded(v, 4)}`]);
  } else {
    rows.push(['outline sample', answer.sample + (answer.isBeyond ? ', past the edge of the screen' : '')]);
  }
  fillRows(readout, [...rows, ...placeRows(answer.point, scene)]);
}

function lightText({ picture, pixel, size }, scene) {
  if (pixel) {
    return `pixel ${pixel.join(', ')}; ${pixelSize(size, scene)}`;
  }
  return picture ? `u, v ${picture.map((value) => rounded(value, 4)).join(', ')}` : 'lit';
}

// Of the place of the screen that is pointed at.
export function fillLight(list, reading, scene) {
  if (!reading) {
    fillRows(list, []);
    return;
  }
  const count = reading.lights.length;
  const rows = [['lit by', count === 0 ? 'no projector' : `${count} ${count === 1 ? 'projector' : 'projectors'}`]];
  reading.lights.forEach((one) => rows.push([one.channel.name, lightText(one, scene)]));
  fillRows(list, [...rows, ...placeRows(reading.point, scene)]);
}
