import { fillPanel } from './panel.js';
import { readScene } from './sceneData.js';
import style from './style.css';
import { View } from './view.js';

function start() {
  document.head.append(Object.assign(document.createElement('style'), { textContent: style }));
  const panel = document.createElement('aside');
  const stage = document.createElement('main');
  const readout = Object.assign(document.createElement('dl'), { id: 'readout', hidden: true });
  const light = Object.assign(document.createElement('dl'), { id: 'light', hidden: true });
  light.setAttribute('aria-live', 'polite');
  stage.append(readout, light);
  document.body.append(panel, stage);

  const scene = readScene(document);
  let view = null;
  try {
    view = new View(scene, stage, { readout, light });
  } catch (fault) {
    scene.notes.unshift(`This browser cannot draw in three dimensions (WebGL 2 is missing or switched off): ${fault.message}`);
  }
  fillPanel(panel, scene, view ? view.items : [], view);
}

start();
