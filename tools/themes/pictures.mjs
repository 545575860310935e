// Takes pictures of theme files in Chromium:
//
//   node tools/themes/pictures.mjs THEMES_FOLDER PICTURES_FOLDER
//
// themes.png shows a small window in each theme of the folder, NAME-pieces.png every piece of a skin with its states.
import { mkdirSync, readFileSync, readdirSync } from 'node:fs';
import { basename, join } from 'node:path';
import { chromium } from 'playwright-core';
import { kSliceMargin } from './quiet_ridges.mjs';

const pictureUrl = (base64) => `data:image/png;base64,${base64}`;
const escaped = (text) => text.replaceAll('&', '&amp;').replaceAll('<', '&lt;');

// A piece cut into nine parts, at half its size.
function sliced(pieces, name, slice = kSliceMargin) {
  if (!pieces?.[name]) return '';
  return `border: ${slice / 2}px solid transparent; background: none; padding: 0;
    border-image: url(${pictureUrl(pieces[name])}) ${slice} fill / ${slice / 2}px stretch;`;
}

// A piece shown whole, at half its size.
function whole(pieces, name) {
  return pieces?.[name] ? `background: url(${pictureUrl(pieces[name])}) center / 100% 100%; border: 0;` : '';
}

// Returns black or white, whichever contrasts more with the colour.
function inkOn(hex) {
  const [red, green, blue] = [1, 3, 5].map((at) => (parseInt(hex.slice(at, at + 2), 16) / 255) ** 2.2);
  return 0.2126 * red + 0.7152 * green + 0.0722 * blue > 0.18 ? '#000' : '#fff';
}

function fontFace(id, font) {
  return font
    ? `@font-face { font-family: ${id}; font-weight: 100 900; src: url(data:font/ttf;base64,${font}); }`
    : '';
}

function windowOf(id, theme) {
  const { pieces, font } = theme.skin ?? {};
  const line = `color-mix(in srgb, ${theme.text} 30%, transparent)`;
  const style = `
    ${fontFace(id, font)}
    #${id} { background: ${theme.bgMain}; color: ${theme.text}; font-family: ${font ? `${id},` : ''} ${theme.font};
      ${pieces?.window ? `background: url(${pictureUrl(pieces.window)}) center / cover;` : ''} }
    #${id} .panel { background: ${theme.bgPanel}; border: 1px solid ${line}; ${sliced(pieces, 'panel')} }
    #${id} .head { background: ${theme.bgHeader}; border-bottom: 1px solid ${line}; }
    #${id} .panel { ${pieces ? 'overflow: visible;' : ''} }
    #${id} .panel > .inner { ${pieces ? 'margin: -12px;' : ''} }
    #${id} .head { ${sliced(pieces, 'panel-header')} }
    #${id} .head > div { ${pieces ? 'margin: -12px;' : ''} }
    #${id} .button { background: ${theme.bgHeader}; border: 1px solid ${line}; ${sliced(pieces, 'button')} }
    #${id} .button > span { ${pieces ? 'margin: -12px;' : ''} }
    #${id} .button.on { border-color: ${theme.accent}; ${sliced(pieces, 'button.on')} }
    #${id} .button.accent { background: ${theme.accent}; color: ${inkOn(theme.accent)};
      ${sliced(pieces, 'button-accent')} }
    #${id} .button.danger { ${sliced(pieces, 'button-danger')} }
    #${id} .field { background: ${theme.bgMain}; border: 1px solid ${line}; ${sliced(pieces, 'field')} }
    #${id} .field.on { border-color: ${theme.accent}; ${sliced(pieces, 'field.on')} }
    #${id} .field > span { ${pieces ? 'margin: -12px;' : ''} }
    #${id} .small { background: ${theme.bgHeader}; border: 1px solid ${line}; ${whole(pieces, 'button-small')} }
    #${id} .switch { background: ${theme.bgMain}; border: 1px solid ${line}; ${whole(pieces, 'switch')} }
    #${id} .switch i { background: ${theme.text}; left: 3px; ${whole(pieces, 'switch-knob')} }
    #${id} .switch.on { background: ${theme.accent}; ${whole(pieces, 'switch.on')} }
    #${id} .switch.on i { background: ${inkOn(theme.accent)}; left: 17px; ${whole(pieces, 'switch-knob.on')} }
    #${id} .radio { border: 1px solid ${line}; ${whole(pieces, 'radio')} }
    #${id} .radio.on { background: ${theme.accent}; ${whole(pieces, 'radio.on')} }
    #${id} a { color: ${theme.accent}; }`;
  const button = (kind, text) => `<div class="button ${kind}"><span>${text}</span></div>`;
  return `<style>${style}</style>
    <section id="${id}" class="window">
      <h1>${escaped(theme.name)}</h1>
      <div class="panel"><div class="inner">
        <div class="head"><div><b>Autoclicker</b><br><small>Up to 20 clicks/s</small></div></div>
        <div class="body">
          <p>Click interval</p>
          <div class="row"><div class="field"><span>0 min</span></div><div class="field on"><span>50 ms</span></div>
            <div class="small">+</div></div>
          <p>The pause after each click. <a>At least 1 ms.</a></p>
          <div class="row">${button('accent', 'Start clicking')}${button('', 'Clear')}${button('on', 'Left')}
            ${button('danger', 'Delete')}</div>
          <div class="row"><span class="switch"><i></i></span>Moves <span class="switch on"><i></i></span>Keys
            <span class="radio"></span>Once <span class="radio on"></span>Endless</div>
        </div>
      </div></div>
    </section>`;
}

function windowsPage(themes) {
  return `<!doctype html><style>
    * { box-sizing: border-box; } body { margin: 0; display: flex; width: max-content; font-size: 14px; line-height: 20px; }
    .window { width: 420px; height: 330px; padding: 14px; } h1 { font-size: 16px; margin: 0 0 12px; }
    .panel { border-radius: 10px; overflow: hidden; } .head > div { padding: 8px 14px; } small { font-size: 12px; }
    .head { height: 58px; } .body { padding: 12px 14px 16px; } p { margin: 0 0 8px; font-size: 13px; }
    .row { display: flex; gap: 8px; align-items: center; margin-bottom: 12px; }
    .field, .button { border-radius: 6px; height: 32px; display: flex; align-items: center; }
    .field { flex: 1; } .field > span, .button > span { padding: 0 12px; position: relative; white-space: nowrap; }
    .button { font-weight: 600; justify-content: center; }
    .small { width: 24px; height: 24px; border-radius: 5px; text-align: center; line-height: 22px; }
    .switch { width: 34px; height: 20px; border-radius: 10px; position: relative; }
    .switch i { position: absolute; width: 14px; height: 14px; top: 3px; border-radius: 50%; }
    .radio { width: 26px; height: 26px; border-radius: 50%; }
    </style>${themes.map(({ file, theme }) => windowOf(file.replaceAll(/[^a-z0-9]/g, '-'), theme)).join('')}`;
}

function piecesPage({ theme }) {
  const { pieces, font } = theme.skin;
  // Each control beside its lit form, tall ones last.
  const isTall = (name) => name.startsWith('scroll');
  const plain = Object.keys(pieces).filter((name) => !name.endsWith('.on'));
  const inOrder = [...plain.filter((name) => !isTall(name)), ...plain.filter(isTall)];
  const cells = inOrder
    .flatMap((name) => [name, `${name}.on`])
    .filter((name) => pieces[name])
    .map(
      (name) =>
        `<figure><img src="${pictureUrl(pieces[name])}"><figcaption>${escaped(name)}</figcaption></figure>`,
    );
  return `<!doctype html><style>${fontFace('skin', font)}
    body { margin: 0; width: 1120px; background: ${theme.bgPanel}; color: ${theme.text}; font: 13px/18px skin; }
    main { display: flex; flex-wrap: wrap; gap: 20px 24px; align-items: end; padding: 24px; }
    figure { margin: 0; } img { display: block; max-width: 1232px; } figcaption { margin-top: 6px; }
    </style><main>${cells.join('')}</main>`;
}

async function takePicture(browser, html, deviceScaleFactor, file) {
  const page = await browser.newPage({ viewport: { width: 1280, height: 720 }, deviceScaleFactor });
  await page.setContent(html);
  await page.evaluate(() => document.fonts.ready);
  const size = await page.evaluate(() => {
    const { scrollWidth, scrollHeight } = document.body;
    return { width: scrollWidth, height: scrollHeight };
  });
  await page.setViewportSize(size);
  await page.screenshot({ path: file });
  await page.close();
  console.log(`Picture: ${file}`);
}

const [themesFolder, picturesFolder] = process.argv.slice(2);
if (!picturesFolder) {
  console.error('usage: pictures.mjs THEMES_FOLDER PICTURES_FOLDER');
  process.exit(2);
}
mkdirSync(picturesFolder, { recursive: true });
const themes = readdirSync(themesFolder)
  .filter((file) => file.endsWith('.vrltheme'))
  .sort()
  .map((file) => ({
    file: basename(file, '.vrltheme'),
    theme: JSON.parse(readFileSync(join(themesFolder, file), 'utf8')),
  }));
const browser = await chromium.launch({
  executablePath: process.env.VARNELLE_CHROMIUM ?? '/usr/bin/chromium',
  args: ['--no-sandbox'],
});
try {
  await takePicture(browser, windowsPage(themes), 1.5, join(picturesFolder, 'themes.png'));
  for (const one of themes.filter(({ theme }) => theme.skin)) {
    await takePicture(browser, piecesPage(one), 1, join(picturesFolder, `${one.file}-pieces.png`));
  }
} finally {
  await browser.close();
}
