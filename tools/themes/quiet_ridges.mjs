// The 24 pieces of the theme "Quiet Ridges": hills at dusk, and controls of dark glass with warm light.
//
// Two pixels of a piece are one pixel of the page. Every corner and every edge line of a stretched piece lies within
// `kSliceMargin` pixels of its border, so that a piece cut in nine keeps its corners at any size.
import {
  below,
  black,
  circle,
  colour,
  insideLine,
  makeCanvas,
  mix,
  paint,
  roundRect,
  shadeInside,
  smooth,
  toBytes,
  vertical,
  white,
} from './raster.mjs';

export const kSliceMargin = 24;

const kPanelRadius = 20;
const kButtonRadius = 14;
const kEdge = 2; // width of an edge line

const kApricot = colour('#f0b184');
const kEmber = colour('#b8652f');
const kBrick = colour('#8a3b3a');
const kLine = colour('#75849d');
const kWell = colour('#111722');
const everywhere = () => -1;

// ---- the window ----

// Returns a repeatable pseudo-random number from 0 to 1 for an integer.
function hash(value) {
  let bits = Math.imul(value ^ 0x9e3779b9, 0x85ebca6b);
  bits = Math.imul(bits ^ (bits >>> 13), 0xc2b2ae35);
  return ((bits ^ (bits >>> 16)) >>> 0) / 0x100000000;
}

// Returns rolling heights from -1 to 1 with a longest wave of `length` pixels.
function rolling(x, length, seed, octaves) {
  let sum = 0;
  let strength = 1;
  let total = 0;
  for (let octave = 0; octave < octaves; ++octave) {
    const place = (x * 2 ** octave) / length;
    const cell = Math.floor(place);
    const from = hash(seed + octave * 1009 + cell * 31);
    const to = hash(seed + octave * 1009 + (cell + 1) * 31);
    sum += strength * (from + (to - from) * smooth(0, 1, place - cell));
    total += strength;
    strength *= 0.46;
  }
  return (2 * sum) / total - 1;
}

// Returns the top edges of firs along `ground`, about `spacing` pixels apart.
function firs(ground, spacing, seed) {
  return (x) => {
    let top = ground(x);
    const near = Math.floor(x / spacing);
    for (let tree = near - 2; tree <= near + 2; ++tree) {
      if (hash(seed + tree * 7) < 0.28) continue;
      const foot = (tree + 0.2 + 0.6 * hash(seed + tree * 13)) * spacing;
      const height = spacing * (1.3 + 1.5 * hash(seed + tree * 17));
      const away = Math.abs(x - foot) / (height * 0.26);
      if (away >= 1) continue;
      // Three tiers of branches, each a little wider than the one above.
      const tier = away * 3;
      const drop = (Math.floor(tier) + 0.45 + 0.55 * (tier - Math.floor(tier))) / 3;
      top = Math.min(top, ground(foot) - height * (1 - (away < 0.06 ? away : drop)));
    }
    return top;
  };
}

function drawWindow(canvas) {
  const skyStops = [
    [0, colour('#10151f')],
    [190, colour('#1a2333')],
    [310, colour('#2f3a4c')],
    [400, colour('#55505f')],
    [470, colour('#6d5b5b')],
  ];
  paint(canvas, everywhere, (_x, y) => {
    const next = skyStops.findIndex(([at]) => at > y);
    if (next < 0) return skyStops[skyStops.length - 1][1];
    const [from, ink] = skyStops[next - 1];
    return mix(ink, skyStops[next][1], (y - from) / (skyStops[next][0] - from));
  });
  for (let star = 0; star < 60; ++star) {
    const height = 260 * hash(star * 3 + 1) ** 1.4;
    const dot = circle(1024 * hash(star * 3), height, 0.5 + 0.5 * hash(star * 3 + 2));
    paint(canvas, dot, white(0.3 * (1 - height / 300)));
  }
  const moon = circle(742, 236, 34);
  paint(canvas, circle(742, 236, 260), (x, y) => ({
    ...colour('#a08a80'),
    a: 0.15 * smooth(260, 0, Math.hypot(x - 742, y - 236)) ** 1.5,
  }));
  paint(canvas, moon, vertical(colour('#736967'), colour('#6a5f5e'), 202, 270));

  const ridges = [
    { at: 396, rise: 84, length: 250, seed: 11, octaves: 5, top: '#454a5a', foot: '#5c5660' },
    { at: 452, rise: 74, length: 230, seed: 23, octaves: 5, top: '#343c4c', foot: '#4a4b58' },
    { at: 512, rise: 52, length: 300, seed: 37, octaves: 4, top: '#27303f', foot: '#383f4d' },
    { at: 578, rise: 44, length: 240, seed: 51, octaves: 4, top: '#1d2532', foot: '#29313f', trees: 11 },
    { at: 650, rise: 34, length: 280, seed: 67, octaves: 3, top: '#141a25', foot: '#1a212d', trees: 19 },
  ];
  for (const { at, rise, length, seed, octaves, top, foot, trees } of ridges) {
    const ground = (x) => at - rise * rolling(x, length, seed, octaves);
    const heights = Float64Array.from({ length: canvas.width }, (_, column) =>
      (trees ? firs(ground, trees, seed) : ground)(column + 0.5),
    );
    // Mist gathers at the foot of each ridge.
    const fill = vertical(colour(top), colour(foot), at - rise, at + 1.5 * rise);
    paint(
      canvas,
      below((x) => heights[Math.floor(x)]),
      fill,
    );
  }
  paint(canvas, everywhere, (_x, y) => black(0.35 * smooth(640, 768, y)));
}

// ---- panels ----

const atTop = (height, edge) => (_x, y) => smooth(edge + height, edge, y);

function drawSlab(canvas, { top, bottom, edge, radius }) {
  const { width, height } = canvas;
  const slab = roundRect(0, 0, width, height, radius);
  paint(canvas, slab, vertical(top, bottom, 0, height));
  paint(canvas, insideLine(slab, kEdge), edge);
  const light = atTop(6, kEdge);
  paint(canvas, insideLine(slab, kEdge, kEdge), (x, y) => white(0.07 * light(x, y)));
}

// A header lies on its panel: the same upper corners, a line at its foot.
function drawHeader(canvas, { top, bottom, edge }) {
  const { width, height } = canvas;
  const slab = roundRect(0, 0, width, height, { top: kPanelRadius, bottom: 0 });
  paint(canvas, slab, vertical(top, bottom, 0, height));
  const beyond = roundRect(0, 0, width, height + kPanelRadius, kPanelRadius);
  paint(canvas, insideLine(beyond, kEdge), edge, slab);
  const light = atTop(6, kEdge);
  paint(canvas, insideLine(beyond, kEdge, kEdge), (x, y) => white(0.1 * light(x, y)), slab);
  paint(
    canvas,
    below(() => height - kEdge),
    black(0.4),
  );
}

const kPanel = { top: colour('#202938', 0.94), bottom: colour('#1a2230', 0.94), edge: colour('#3b4860') };
const kModal = { top: colour('#263042'), bottom: colour('#1f2838'), edge: colour('#56657f') };
const kPanelHeader = { top: colour('#2b374b'), bottom: colour('#242f41'), edge: colour('#43516a') };
const kModalHeader = { top: colour('#334056'), bottom: colour('#2b374b'), edge: colour('#5d6c87') };

// ---- controls ----

// A raised face: light from above, a dark foot.
function drawButton(canvas, { top, bottom, edge, radius = kButtonRadius }) {
  const { width, height } = canvas;
  const outline = roundRect(0, 0, width, height, radius);
  paint(canvas, outline, edge);
  const face = roundRect(kEdge, kEdge, width - 2 * kEdge, height - 2 * kEdge, radius - kEdge);
  paint(canvas, face, vertical(top, bottom, kEdge, height - kEdge));
  const light = atTop(radius, kEdge);
  paint(canvas, insideLine(face, kEdge), (x, y) => white(0.16 * light(x, y)));
  shadeInside(canvas, face, 5, black(0.16), (_x, y) => smooth(height - radius, height - kEdge, y));
}

// The same face lit from within, with a warm edge.
function drawButtonOn(canvas, { top, bottom, edge, radius = kButtonRadius }) {
  drawButton(canvas, { top, bottom, edge, radius });
  const { width, height } = canvas;
  const face = roundRect(kEdge, kEdge, width - 2 * kEdge, height - 2 * kEdge, radius - kEdge);
  shadeInside(canvas, face, 9, { ...kApricot, a: 0.2 });
}

const kButton = { top: colour('#3a4760'), bottom: colour('#2f3a50'), edge: colour('#5c6b86') };
const kButtonOn = { top: colour('#445370'), bottom: colour('#39465f'), edge: kApricot };
const kAccent = { top: colour('#f6c49f'), bottom: colour('#eba877'), edge: colour('#ffdcc0') };
const kAccentOn = { top: colour('#fbd7bb'), bottom: colour('#f4bd95'), edge: colour('#fff0e2') };
const kDanger = { top: colour('#954341'), bottom: colour('#7e3434'), edge: colour('#c07a74') };
const kDangerOn = { top: mix(kBrick, white(1), 0.1), bottom: kBrick, edge: colour('#f0a69c') };
const kSmall = { ...kButton, radius: 12 };
const kSmallOn = { ...kButtonOn, radius: 12 };

// A hollow: dark, with the shade of its upper edge in it.
function drawWell(canvas, outline, edge, edgeWidth = kEdge) {
  paint(canvas, outline, kWell);
  shadeInside(canvas, outline, 10, black(0.45), (_x, y) => smooth(canvas.height / 2, 0, y));
  paint(canvas, insideLine(outline, edgeWidth), edge);
}

function drawField(canvas) {
  drawWell(canvas, roundRect(0, 0, canvas.width, canvas.height, 12), kLine);
}

function drawFieldOn(canvas) {
  const outline = roundRect(0, 0, canvas.width, canvas.height, 12);
  drawWell(canvas, outline, kApricot, 4);
  shadeInside(canvas, outline, 14, { ...kApricot, a: 0.12 });
}

function drawSwitch(canvas) {
  drawWell(canvas, roundRect(0, 0, canvas.width, canvas.height, canvas.height / 2), kLine);
}

function drawSwitchOn(canvas) {
  const { width, height } = canvas;
  const track = roundRect(0, 0, width, height, height / 2);
  paint(canvas, track, vertical(mix(kEmber, black(1), 0.12), kEmber, 0, height));
  shadeInside(canvas, track, 8, black(0.25), (_x, y) => smooth(height / 2, 0, y));
  paint(canvas, insideLine(track, kEdge), kApricot);
}

function drawKnob(canvas, top, bottom) {
  const middle = canvas.width / 2;
  paint(canvas, circle(middle, middle, middle - 0.5), black(0.35));
  const knob = circle(middle, middle, middle - 1.5);
  paint(canvas, knob, vertical(colour(top), colour(bottom), 2, canvas.height - 2));
  const light = atTop(middle, 1.5);
  paint(canvas, insideLine(knob, 1.5), (x, y) => white(0.6 * light(x, y)));
}

function drawRadio(canvas) {
  const middle = canvas.width / 2;
  drawWell(canvas, circle(middle, middle, middle - 1), kLine, 3);
}

function drawRadioOn(canvas) {
  const middle = canvas.width / 2;
  drawWell(canvas, circle(middle, middle, middle - 1), kApricot, 4);
  paint(canvas, circle(middle, middle, 17), { ...kApricot, a: 0.16 });
  const dot = circle(middle, middle, 12);
  paint(canvas, dot, vertical(kAccent.top, kAccent.bottom, 14, 38));
}

function drawScrollTrack(canvas) {
  const { width, height } = canvas;
  paint(canvas, roundRect(3, 2, width - 6, height - 4, (width - 6) / 2), { ...kWell, a: 0.7 });
}

function drawScrollThumb(canvas, left, right) {
  const { width, height } = canvas;
  const thumb = roundRect(3, 2, width - 6, height - 4, (width - 6) / 2);
  const across = (x) => mix(left, right, (x - 3) / (width - 6));
  paint(canvas, thumb, across);
}

// ---- all pieces ----

const kSizes = {
  window: [1024, 768],
  panel: [256, 256],
  header: [256, 78],
  button: [192, 64],
  small: [48, 48],
  field: [128, 64],
  switch: [68, 40],
  knob: [28, 28],
  radio: [52, 52],
  track: [16, 256],
  thumb: [16, 128],
};

const kDrawings = [
  ['window', kSizes.window, drawWindow],
  ['panel', kSizes.panel, (canvas) => drawSlab(canvas, { ...kPanel, radius: kPanelRadius })],
  ['panel-header', kSizes.header, (canvas) => drawHeader(canvas, kPanelHeader)],
  ['modal', kSizes.panel, (canvas) => drawSlab(canvas, { ...kModal, radius: kPanelRadius })],
  ['modal-header', kSizes.header, (canvas) => drawHeader(canvas, kModalHeader)],
  ['button', kSizes.button, (canvas) => drawButton(canvas, kButton)],
  ['button-accent', kSizes.button, (canvas) => drawButton(canvas, kAccent)],
  ['button-danger', kSizes.button, (canvas) => drawButton(canvas, kDanger)],
  ['button-small', kSizes.small, (canvas) => drawButton(canvas, kSmall)],
  ['field', kSizes.field, drawField],
  ['switch', kSizes.switch, drawSwitch],
  ['switch-knob', kSizes.knob, (canvas) => drawKnob(canvas, '#d5dce6', '#a9b5c6')],
  ['radio', kSizes.radio, drawRadio],
  ['scroll-track', kSizes.track, drawScrollTrack],
  ['scroll-thumb', kSizes.thumb, (canvas) => drawScrollThumb(canvas, colour('#75849d'), colour('#66758e'))],
  ['button.on', kSizes.button, (canvas) => drawButtonOn(canvas, kButtonOn)],
  ['button-accent.on', kSizes.button, (canvas) => drawButton(canvas, kAccentOn)],
  ['button-danger.on', kSizes.button, (canvas) => drawButton(canvas, kDangerOn)],
  ['button-small.on', kSizes.small, (canvas) => drawButtonOn(canvas, kSmallOn)],
  ['field.on', kSizes.field, drawFieldOn],
  ['switch.on', kSizes.switch, drawSwitchOn],
  ['switch-knob.on', kSizes.knob, (canvas) => drawKnob(canvas, '#fffaf4', '#fbe6d4')],
  ['radio.on', kSizes.radio, drawRadioOn],
  ['scroll-thumb.on', kSizes.thumb, (canvas) => drawScrollThumb(canvas, kAccent.top, kAccent.bottom)],
];

// Returns [{ name, width, height, rgba }] in the order of the format's table.
export function drawPieces() {
  return kDrawings.map(([name, [width, height], draw]) => {
    const canvas = makeCanvas(width, height);
    draw(canvas);
    return { name, width, height, rgba: toBytes(canvas) };
  });
}
