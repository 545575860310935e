// A small painter: shapes are signed distances in pixels (negative inside), so that every edge is smooth at any radius.
// Colours are { r, g, b, a } with r, g and b from 0 to 255 and a from 0 to 1.

export function colour(hex, a = 1) {
  const value = parseInt(hex.slice(1), 16);
  return { r: value >> 16, g: (value >> 8) & 255, b: value & 255, a };
}

export const white = (a) => ({ r: 255, g: 255, b: 255, a });
export const black = (a) => ({ r: 0, g: 0, b: 0, a });

export function mix(from, to, share) {
  const between = (key) => from[key] + (to[key] - from[key]) * share;
  return { r: between('r'), g: between('g'), b: between('b'), a: between('a') };
}

const clamp = (value, low, high) => Math.min(high, Math.max(low, value));

// 0 below `from`, 1 above `to`, smooth between.
export function smooth(from, to, value) {
  const share = clamp((value - from) / (to - from), 0, 1);
  return share * share * (3 - 2 * share);
}

// ---- shapes: (x, y) to distance; `bounds` may limit the painted area ----

const bounded = (shape, left, top, right, bottom) =>
  Object.assign(shape, { bounds: { left, top, right, bottom } });

// `radius` is one for all corners or { top, bottom }.
export function roundRect(left, top, width, height, radius) {
  const radii = typeof radius === 'number' ? { top: radius, bottom: radius } : radius;
  const centreX = left + width / 2;
  const centreY = top + height / 2;
  return (x, y) => {
    const corner = y < centreY ? radii.top : radii.bottom;
    const outX = Math.abs(x - centreX) - width / 2 + corner;
    const outY = Math.abs(y - centreY) - height / 2 + corner;
    const outside = Math.hypot(Math.max(outX, 0), Math.max(outY, 0));
    return outside + Math.min(Math.max(outX, outY), 0) - corner;
  };
}

export const circle = (x0, y0, radius) =>
  bounded((x, y) => Math.hypot(x - x0, y - y0) - radius, x0 - radius, y0 - radius, x0 + radius, y0 + radius);

// A line along the inside of an edge, `width` wide, `inset` away from it.
export const insideLine =
  (shape, width, inset = 0) =>
  (x, y) =>
    Math.abs(shape(x, y) + inset + width / 2) - width / 2;

// Everything below the height that `edge` returns for an x.
export const below = (edge) => (x, y) => edge(x) - y;

// ---- fills: (x, y) to colour ----

export const vertical = (top, bottom, from, to) => (_x, y) =>
  mix(top, bottom, clamp((y - from) / (to - from), 0, 1));

// ---- painting ----

export function makeCanvas(width, height) {
  return { width, height, pixels: new Float64Array(width * height * 4) };
}

// `fill` is a colour or a function that returns one. `within` may be a second shape that limits the first.
export function paint(canvas, shape, fill, within = null) {
  const { width, height, pixels } = canvas;
  const { left = 0, top = 0, right = width, bottom = height } = shape.bounds ?? {};
  const endRow = Math.min(height, Math.ceil(bottom + 1));
  const endColumn = Math.min(width, Math.ceil(right + 1));
  for (let row = Math.max(0, Math.floor(top - 1)); row < endRow; ++row) {
    for (let column = Math.max(0, Math.floor(left - 1)); column < endColumn; ++column) {
      const x = column + 0.5;
      const y = row + 0.5;
      let cover = clamp(0.5 - shape(x, y), 0, 1);
      if (cover > 0 && within) cover *= clamp(0.5 - within(x, y), 0, 1);
      if (cover <= 0) continue;
      const ink = typeof fill === 'function' ? fill(x, y) : fill;
      const alpha = ink.a * cover;
      const at = (row * width + column) * 4;
      pixels[at] = ink.r * alpha + pixels[at] * (1 - alpha);
      pixels[at + 1] = ink.g * alpha + pixels[at + 1] * (1 - alpha);
      pixels[at + 2] = ink.b * alpha + pixels[at + 2] * (1 - alpha);
      pixels[at + 3] = alpha + pixels[at + 3] * (1 - alpha);
    }
  }
}

// A soft shade along the inside of an edge: full at the edge, gone `depth` pixels inside. `strength(x, y)` may weaken it.
export function shadeInside(canvas, shape, depth, ink, strength = () => 1) {
  paint(canvas, shape, (x, y) => {
    const share = clamp(1 + shape(x, y) / depth, 0, 1);
    return { ...ink, a: ink.a * share * share * strength(x, y) };
  });
}

// Thresholds of an 8 by 8 ordered dither: a slow gradient gets no visible steps, and the pattern still packs well.
const kThresholds = Float64Array.from({ length: 64 }, (_, at) => {
  let x = at % 8;
  let y = at >> 3;
  let value = 0;
  for (let bit = 0; bit < 3; ++bit) {
    value = (value << 2) | ((((x ^ y) & 1) << 1) | (y & 1));
    x >>= 1;
    y >>= 1;
  }
  return (value + 0.5) / 64;
});

// Returns the pixels as bytes, alpha not multiplied in.
export function toBytes({ width, height, pixels }) {
  const bytes = Buffer.alloc(width * height * 4);
  for (let i = 0; i < width * height; ++i) {
    const alpha = pixels[i * 4 + 3];
    if (alpha <= 0) continue;
    const threshold = kThresholds[((Math.floor(i / width) & 7) << 3) | (i % width & 7)];
    for (let part = 0; part < 3; ++part) {
      bytes[i * 4 + part] = clamp(Math.floor(pixels[i * 4 + part] / alpha + threshold), 0, 255);
    }
    bytes[i * 4 + 3] = Math.round(alpha * 255);
  }
  return bytes;
}
