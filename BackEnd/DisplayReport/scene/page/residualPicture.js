// The residuals of one channel in its own picture, upright: from each stated place towards the one that was measured. An
// outlier has a cross and a dashed line, so that it differs without colours.
const SVG = 'http://www.w3.org/2000/svg';
const MARK = 0.006; // of the diagonal of the picture

function shape(tag, attributes, ...children) {
  const made = document.createElementNS(SVG, tag);
  Object.entries(attributes).forEach(([name, value]) => made.setAttribute(name, String(value)));
  made.append(...children);
  return made;
}

function textOf({ lines, flags }, i) {
  const title = shape('title', {});
  title.textContent = `${flags[i].isOutlier ? 'outlier, ' : ''}line ${lines[i]} of the table`;
  return title;
}

function vector(channel, i) {
  const { width, height, residuals } = channel;
  const mark = MARK * Math.hypot(width, height);
  const { isOutlier } = residuals.flags[i];
  const from = [residuals.picture[2 * i] * width, (1 - residuals.picture[2 * i + 1]) * height];
  const way = [residuals.pixels[2 * i], -residuals.pixels[2 * i + 1]];
  const made = shape('g', { class: isOutlier ? 'outlier' : 'inlier' }, textOf(residuals, i));
  if (Number.isFinite(way[0]) && Number.isFinite(way[1])) {
    made.append(shape('line', { x1: from[0], y1: from[1], x2: from[0] + way[0], y2: from[1] + way[1] }));
  }
  made.append(isOutlier
    ? shape('path', { d: `M${from[0] - mark} ${from[1] - mark}l${2 * mark} ${2 * mark}m0 ${-2 * mark}l${-2 * mark} ${2 * mark}` })
    : shape('circle', { cx: from[0], cy: from[1], r: mark / 2 }));
  return made;
}

export function residualPicture(channel) {
  const { width, height, residuals } = channel;
  const picture = shape('svg', {
    id: 'residuals', viewBox: `0 0 ${width} ${height}`, role: 'img', 'aria-label': `Residuals in the picture of ${channel.name}`,
  });
  picture.append(shape('rect', { width, height }), ...Array.from(residuals.lines, (line, i) => vector(channel, i)));
  return picture;
}
