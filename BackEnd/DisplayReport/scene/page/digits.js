// Numbers as a reader wants them: no more digits than mean something.

// Decimals of coordinates in a picture of that size: a hundred thousandth of it is less than anyone measures.
export function decimalsOf(size) {
  const FINEST = 1e-5;
  return Math.max(0, Math.min(9, -Math.floor(Math.log10(size * FINEST))));
}

export function rounded(value, decimals) {
  const text = value.toFixed(decimals);
  return Number(text) === 0 ? (0).toFixed(decimals) : text;
}

// Three significant digits, never with an exponent.
export function significant(value) {
  if (!(value > 0) || !Number.isFinite(value)) {
    return String(value);
  }
  return value.toFixed(Math.max(0, Math.min(9, 2 - Math.floor(Math.log10(value)))));
}

// A small length: in millimetres where the unit has a length, in the unit of the display else.
export function pixelSize([width, height], scene) {
  const inMillimetres = scene.unitInMillimetres > 0;
  const factor = inMillimetres ? scene.unitInMillimetres : 1;
  const unit = inMillimetres ? 'mm' : scene.unit;
  return `${significant(width * factor)} x ${significant(height * factor)} ${unit}`.trim();
}
