// The panel beside the picture. Every text of the display is set as text, never as HTML.

function element(tag, properties = {}, ...children) {
  const made = Object.assign(document.createElement(tag), properties);
  made.append(...children);
  return made;
}

function section(title, ...children) {
  return element('section', {}, element('h2', { textContent: title }), ...children);
}

function check(text, isOn, changed, kind = 'checkbox', group = '') {
  const box = element('input', { type: kind, checked: isOn, name: group });
  box.addEventListener('change', () => changed(box.checked));
  return element('label', {}, box, element('span', { textContent: text }));
}

function counts(channel) {
  const { placed } = channel;
  const targets = placed || channel.gridMissed ? `${placed} targets, ${channel.gridMissed} missed` : 'no grid';
  const outline = `outline ${channel.samples} of ${channel.samples + channel.boundaryMissed}`;
  return `${targets}; ${outline}; ${channel.width} x ${channel.height} pixels`;
}

function channelRow(item, view) {
  const { channel } = item;
  const label = check(channel.name, true, (on) => view.showChannel(item, on));
  label.children[0].after(element('i', { className: 'swatch', style: `background: ${channel.colour}` }));
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
  const opacity = element('input', { type: 'range', min: 0, max: 100, value: 45 });
  opacity.addEventListener('input', () => view.setOpacity(opacity.value / 100));
  const texts = scene.surfaces.map((s) => element('small', { textContent: `${s.name}: ${s.text}` }));
  return section('Screen', element('div', { className: 'wrap' }, ...radios),
    element('label', {}, element('span', { textContent: 'opacity' }), opacity), ...texts);
}

function layers(scene, view) {
  const offered = [
    ['targets', 'targets', scene.channels.length],
    ['pictures', 'pictures', scene.channels.length],
    ['outlines', 'outlines', scene.channels.length],
    ['frusta', 'frusta', scene.channels.some((channel) => channel.frustum)],
    ['labels', 'names', scene.channels.length],
    ['cloud', 'model cloud', scene.cloud],
    ['eyes', 'eye point', scene.eyes.length],
    ['mirror', 'mirror', scene.mirror],
    ['axes', 'axes', true],
  ];
  const boxes = offered.filter(([, , isThere]) => isThere)
    .map(([name, text]) => check(text, true, (on) => view.showLayer(name, on)));
  return section('Show', element('div', { className: 'wrap' }, ...boxes));
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

export function fillPanel(panel, scene, items, view) {
  const unit = scene.unit || 'native units';
  panel.append(element('h1', { textContent: scene.title }),
    element('p', { textContent: `Lengths in ${unit}. Drag to turn, right-drag to move, scroll to zoom, click a target.` }));
  if (scene.notes.length) {
    panel.append(notes(scene));
  }
  if (view) {
    panel.append(views(scene, view), screens(scene, view), layers(scene, view), channelList(items, view));
  }
}

export function fillReadout(readout, answer, unit) {
  readout.replaceChildren();
  readout.hidden = !answer;
  if (!answer) {
    return;
  }
  const rows = [['channel', answer.channel], ['projector', answer.projector]];
  if (answer.sample === undefined) {
    rows.push(['column', answer.column], ['row', answer.row], ['u, v', answer.picture.join(', ')]);
  } else {
    rows.push(['outline sample', answer.sample]);
  }
  ['x', 'y', 'z'].forEach((axis, i) => rows.push([axis, `${answer.point[i]} ${unit}`.trim()]));
  for (const [name, value] of rows) {
    readout.append(element('dt', { textContent: name }), element('dd', { textContent: String(value) }));
  }
}
