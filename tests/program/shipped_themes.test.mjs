// The shipped themes: the program accepts them, text and controls have contrast, and a browser opens their contents.
import assert from 'node:assert/strict';
import { spawnSync } from 'node:child_process';
import { existsSync, mkdtempSync, readFileSync, readdirSync, rmSync } from 'node:fs';
import { tmpdir } from 'node:os';
import { join } from 'node:path';
import { buildFolder, nativePath, onlyOnLinux, onWindows, root, runNative, test } from './harness.mjs';
import { launchBrowser } from './web_view_server.mjs';
import { decodePng } from '../../tools/themes/png.mjs';

const dist = join(buildFolder, 'dist');
const program = join(dist, onWindows ? 'Varnelle.exe' : 'varnelle');
const kShipped = {
  'lighthouse.vrltheme': 'OK colours',
  'morning-linen.vrltheme': 'OK colours',
  'quiet-ridges.vrltheme': 'OK skin 24 pieces +font',
};
const kSkinned = 'quiet-ridges.vrltheme';

const themePath = (file) => join(dist, 'themes', file);
const readTheme = (file) => JSON.parse(readFileSync(themePath(file), 'utf8'));

// Both programs ship the same files.
const sameFiles = onlyOnLinux('the Windows program ships the same files');

// ---- colours; a pixel is [r, g, b, a] from 0 to 255 ----

const pixelOf = (hex) => [1, 3, 5].map((at) => parseInt(hex.slice(at, at + 2), 16)).concat(255);

function over([r, g, b, a], [r0, g0, b0]) {
  const mixed = (top, ground) => (top * a + ground * (255 - a)) / 255;
  return [mixed(r, r0), mixed(g, g0), mixed(b, b0), 255];
}

function luminance(pixel) {
  const [r, g, b] = pixel.slice(0, 3).map((value) => {
    const share = value / 255;
    return share <= 0.04045 ? share / 12.92 : ((share + 0.055) / 1.055) ** 2.4;
  });
  return 0.2126 * r + 0.7152 * g + 0.0722 * b;
}

function contrast(one, other) {
  const [low, high] = [luminance(one), luminance(other)].sort((a, b) => a - b);
  return (high + 0.05) / (low + 0.05);
}

function requireContrast(one, other, atLeast, what) {
  const found = contrast(one, other);
  assert.ok(found >= atLeast, `${what}: ${found.toFixed(2)} is below ${atLeast}`);
}

// ---- the pixels of the skin ----

function piecesOf(theme) {
  return Object.fromEntries(
    Object.entries(theme.skin.pieces).map(([name, base64]) => [
      name,
      decodePng(Buffer.from(base64, 'base64')),
    ]),
  );
}

const pixelAt = ({ width, rgba }, x, y) => [...rgba.subarray((y * width + x) * 4, (y * width + x) * 4 + 4)];

// All pixels that are `margin` and more away from the border.
function* inside(piece, margin) {
  for (let y = margin; y < piece.height - margin; ++y) {
    for (let x = margin; x < piece.width - margin; ++x) yield pixelAt(piece, x, y);
  }
}

// The darkest and the brightest of some pixels: text contrasts at least as well with what lies between.
function extremes(pixels) {
  let darkest = null;
  let brightest = null;
  for (const pixel of pixels) {
    if (!darkest || luminance(pixel) < luminance(darkest)) darkest = pixel;
    if (!brightest || luminance(pixel) > luminance(brightest)) brightest = pixel;
  }
  return [darkest, brightest];
}

test('the program folder has these themes', () => {
  assert.deepEqual(readdirSync(join(dist, 'themes')).sort(), Object.keys(kShipped));
  assert.ok(existsSync(join(dist, 'licenses/inter.txt')), 'the licence of the font');
});

for (const [file, line] of Object.entries(kShipped)) {
  test(`the program accepts ${file}`, () => {
    const result = runNative(program, [`--validate-theme=${nativePath(themePath(file))}`]);
    assert.equal(result.output, line + (onWindows ? '\r\n' : '\n'));
    assert.equal(result.code, 0);
  });

  test(`${file} has text and accents with enough contrast`, () => {
    const theme = readTheme(file);
    const strong = file === 'lighthouse.vrltheme';
    for (const ground of ['bgMain', 'bgPanel', 'bgHeader']) {
      requireContrast(pixelOf(theme.text), pixelOf(theme[ground]), strong ? 15 : 4.5, `text on ${ground}`);
    }
    for (const accent of ['accent', 'accentHover']) {
      requireContrast(pixelOf(theme[accent]), pixelOf(theme.bgPanel), strong ? 7 : 3, `${accent} on bgPanel`);
      requireContrast(pixelOf(theme[accent]), pixelOf(theme.bgMain), strong ? 7 : 3, `${accent} on bgMain`);
    }
  });
}

test('a file that is not a theme is rejected', () => {
  const result = runNative(program, [`--validate-theme=${nativePath(join(dist, 'licenses/inter.txt'))}`]);
  assert.equal(result.output.trim(), 'REJECT invalid or missing name');
  assert.equal(result.code, 1);
});

test('the same sources produce the same bytes', sameFiles, () => {
  const again = mkdtempSync(join(tmpdir(), 'varnelle-themes-'));
  try {
    const built = spawnSync(process.execPath, [join(root, 'tools/themes/build.mjs'), again], {
      encoding: 'utf8',
    });
    assert.equal(built.status, 0, built.stderr);
    for (const file of Object.keys(kShipped)) {
      assert.ok(readFileSync(join(again, file)).equals(readFileSync(themePath(file))), file);
    }
  } finally {
    rmSync(again, { recursive: true, force: true });
  }
});

test('text has contrast on every piece that carries text', () => {
  const theme = readTheme(kSkinned);
  const pieces = piecesOf(theme);
  const text = pixelOf(theme.text);
  const grounds = extremes(inside(pieces.window, 0));
  for (const ground of grounds) requireContrast(text, ground, 4.5, 'text on window');
  const panels = grounds.flatMap((ground) =>
    [...inside(pieces.panel, 0)].map((pixel) => over(pixel, ground)),
  );
  for (const ground of extremes(panels)) requireContrast(text, ground, 4.5, 'text on panel');

  const kBearers = [
    'panel-header',
    'modal',
    'modal-header',
    'button',
    'button-danger',
    'button-small',
    'field',
  ];
  for (const name of kBearers.flatMap((bearer) => [bearer, `${bearer}.on`]).filter((one) => pieces[one])) {
    for (const pixel of extremes(inside(pieces[name], 12))) {
      assert.equal(pixel[3], 255, `${name} hides what is under it`);
      requireContrast(text, pixel, 4.5, `text on ${name}`);
    }
  }
  // Text on an accent is black or white, whichever has more contrast.
  const inks = [pixelOf('#000000'), pixelOf('#ffffff')];
  const ink = contrast(inks[0], pixelOf(theme.accent)) > contrast(inks[1], pixelOf(theme.accent)) ? 0 : 1;
  for (const name of ['button-accent', 'button-accent.on']) {
    for (const pixel of extremes(inside(pieces[name], 8))) requireContrast(inks[ink], pixel, 4.5, name);
  }
});

test('controls contrast with the panel, and their states with each other', () => {
  const pieces = piecesOf(readTheme(kSkinned));
  const panel = over(pixelAt(pieces.panel, 128, 128), pixelAt(pieces.window, 512, 600));
  const middleTop = (name, y = 1) => pixelAt(pieces[name], pieces[name].width / 2, y);
  const centre = (name) => pixelAt(pieces[name], pieces[name].width / 2, pieces[name].height / 2);
  for (const name of ['button.on', 'field', 'field.on', 'switch', 'switch.on']) {
    requireContrast(middleTop(name), panel, 3, `edge of ${name}`);
  }
  // A circle has one free pixel around it.
  for (const name of ['radio', 'radio.on']) requireContrast(middleTop(name, 2), panel, 3, `edge of ${name}`);
  requireContrast(centre('switch-knob'), centre('switch'), 3, 'knob on switch');
  requireContrast(centre('switch-knob.on'), centre('switch.on'), 3, 'knob on switch.on');
  requireContrast(centre('radio.on'), centre('radio'), 3, 'dot of radio.on');
  for (const name of ['scroll-thumb', 'scroll-thumb.on']) {
    requireContrast(centre(name), over(centre('scroll-track'), panel), 3, `${name} on scroll-track`);
  }
});

test('a browser opens every piece and the font', sameFiles, async () => {
  const { skin } = readTheme(kSkinned);
  const browser = await launchBrowser();
  try {
    const page = await browser.newPage();
    const seen = await page.evaluate(async ({ pieces, font }) => {
      const sizes = {};
      for (const [name, base64] of Object.entries(pieces)) {
        const image = new Image();
        image.src = `data:image/png;base64,${base64}`;
        await image.decode();
        sizes[name] = [image.naturalWidth, image.naturalHeight];
      }
      const bytes = Uint8Array.from(atob(font), (letter) => letter.charCodeAt(0));
      const face = new FontFace('Skin', bytes, { weight: '400 700' });
      document.fonts.add(await face.load());
      const widthOf = (text, style) => {
        const context = document.createElement('canvas').getContext('2d');
        context.font = `${style} 100px Skin, monospace`;
        return context.measureText(text).width;
      };
      const letters = 'Ab0éßŁőΩжЯ€…→×';
      const fallback = document.createElement('canvas').getContext('2d');
      fallback.font = '100px monospace';
      return {
        sizes,
        regular: widthOf('Varnelle', '400'),
        bold: widthOf('Varnelle', '700'),
        missing: [...letters].filter(
          (letter) => widthOf(letter, '400') === fallback.measureText(letter).width,
        ),
      };
    }, skin);
    assert.equal(Object.keys(seen.sizes).length, 24);
    assert.deepEqual(seen.sizes.window, [1024, 768]);
    assert.deepEqual(seen.sizes['switch-knob.on'], [28, 28]);
    assert.ok(seen.bold > seen.regular, 'one font, both weights');
    assert.deepEqual(seen.missing, []);
  } finally {
    await browser.close();
  }
});
