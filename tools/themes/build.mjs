// Builds the theme files of the program, one from each assets/themes/*.json:
//
//   node tools/themes/build.mjs FOLDER
//
// A source holds the values of a theme file. "skin" adds pieces and a font: "drawings" is a module with drawPieces(),
// "font" a row of kFonts. The same sources produce the same bytes.
import { spawnSync } from 'node:child_process';
import {
  existsSync,
  mkdirSync,
  mkdtempSync,
  readFileSync,
  readdirSync,
  renameSync,
  rmSync,
  writeFileSync,
} from 'node:fs';
import { tmpdir } from 'node:os';
import { basename, dirname, join } from 'node:path';
import { fileURLToPath, pathToFileURL } from 'node:url';
import { encodePng } from './png.mjs';

const root = join(dirname(fileURLToPath(import.meta.url)), '../..');
const kSources = join(root, 'assets/themes');

// Fonts from Debian packages, reduced to the letters of the languages below and the weights that the page uses. A font
// with a reserved name would have to be renamed; "Inter" has no reserved name.
const kFonts = {
  inter: {
    file: '/usr/share/fonts/truetype/inter-vf/Inter-roman.var.ttf',
    weights: 'wght=400:700',
    features: 'kern,mark,mkmk,ccmp,locl,tnum,case',
    unicodes: [
      'U+0020-007E,U+00A0-017F,U+0192,U+0218-021B,U+1E9E', // Latin
      'U+0300-0304,U+0306-0308,U+030A-030C,U+0327,U+0328', // combining accents
      'U+0386-0386,U+0388-038A,U+038C,U+038E-03A1,U+03A3-03CE', // Greek
      'U+0400-045F,U+0490-0491', // Cyrillic
      'U+2010-2015,U+2018-201E,U+2020-2022,U+2026,U+2030,U+2032-2033,U+2039-203A,U+2044', // punctuation
      'U+20AC,U+2116,U+2122,U+2190-2193,U+2212,U+221E,U+2248,U+2260,U+2264-2265', // symbols
    ].join(','),
  },
};

function run(program, args) {
  const result = spawnSync(program, args, { encoding: 'utf8' });
  if (result.error || result.status !== 0) {
    throw new Error(`${program} failed: ${result.error?.message ?? result.stderr}`);
  }
}

// Returns the bytes of a TrueType font.
function subsetFont({ file, weights, features, unicodes }) {
  if (!existsSync(file)) throw new Error(`${file} is missing; ./dev setup installs it`);
  const work = mkdtempSync(join(tmpdir(), 'varnelle-font-'));
  try {
    const some = join(work, 'some.ttf');
    const done = join(work, 'done.ttf');
    const letters = [`--unicodes=${unicodes}`, `--layout-features=${features}`];
    run('pyftsubset', [file, ...letters, '--name-IDs=*', '--no-recalc-timestamp', `--output-file=${some}`]);
    run('fonttools', ['varLib.instancer', some, weights, '--no-recalc-timestamp', '-q', '-o', done]);
    return readFileSync(done);
  } finally {
    rmSync(work, { recursive: true, force: true });
  }
}

async function skinOf({ drawings, font }) {
  const { drawPieces } = await import(pathToFileURL(join(root, drawings)).href);
  const pieces = drawPieces().map(({ name, width, height, rgba }) => [
    name,
    encodePng(width, height, rgba).toString('base64'),
  ]);
  return {
    template: 1,
    pieces: Object.fromEntries(pieces),
    font: subsetFont(kFonts[font]).toString('base64'),
  };
}

// Returns the text of a theme file.
async function themeText(source) {
  const { skin, ...theme } = JSON.parse(readFileSync(source, 'utf8'));
  if (skin) Object.assign(theme, { format: 2, skin: await skinOf(skin) });
  return `${JSON.stringify(theme, null, 2)}\n`;
}

async function buildThemes(folder) {
  mkdirSync(folder, { recursive: true });
  for (const name of readdirSync(kSources).sort()) {
    const target = join(folder, `${basename(name, '.json')}.vrltheme`);
    writeFileSync(`${target}.new`, await themeText(join(kSources, name)));
    renameSync(`${target}.new`, target);
  }
}

const [folder, ...rest] = process.argv.slice(2);
try {
  if (!folder || rest.length > 0) throw new Error('usage: build.mjs FOLDER');
  await buildThemes(folder);
} catch (error) {
  console.error(`build.mjs: ${error.message}`);
  process.exitCode = 1;
}
