// Builds the page's files for the folder beside the program: node ui/build.mjs OUTDIR [--no-check]
//
// The program passes the page to the web view as one string. So the page has no base location and can load nothing else:
// this script puts its CSS and its script into index.html. Type errors end the build.
import { execFileSync } from 'node:child_process';
import { createHash } from 'node:crypto';
import { copyFileSync, mkdirSync, readFileSync, writeFileSync } from 'node:fs';
import { createRequire } from 'node:module';
import { dirname, join } from 'node:path';
import { fileURLToPath } from 'node:url';
import { build } from 'esbuild';
import { guidePlugin } from './guide.mjs';

const kPageSizeLimit = 0x200000; // bytes; the most that the web view takes as one string
const here = dirname(fileURLToPath(import.meta.url));
const require = createRequire(import.meta.url);

const [outDir, ...options] = process.argv.slice(2);
if (!outDir) {
  console.error('usage: node ui/build.mjs OUTDIR [--no-check]');
  process.exit(2);
}

if (!options.includes('--no-check')) {
  try {
    execFileSync(process.execPath, [require.resolve('typescript/bin/tsc'), '-p', here], { stdio: 'inherit' });
  } catch {
    process.exit(1);
  }
}

const bundle = await build({
  entryPoints: [join(here, 'src/main.tsx')],
  bundle: true,
  minify: true,
  write: false,
  outdir: 'out',
  format: 'iife',
  target: ['chrome109', 'safari16'],
  charset: 'ascii',
  legalComments: 'none',
  plugins: [guidePlugin(join(here, '../docs/guide.md'))],
});
const textOf = (suffix) => bundle.outputFiles.find((file) => file.path.endsWith(suffix)).text.trim();

// Uses a replacement function, because `$` has a meaning in a replacement string.
const fold = (page, mark, text) => {
  if (page.split(mark).length !== 2) throw new Error(`index.html must hold ${mark} exactly once`);
  return page.replace(mark, () => text);
};
let page = readFileSync(join(here, 'index.html'), 'utf8');
page = fold(page, '<!-- style -->', `<style>${textOf('.css')}</style>`);
const script = textOf('.js');
page = fold(page, '<!-- script -->', `<script>${script}</script>`);
// The page's policy allows this one script. The program adds the hashes of those that it puts in.
page = fold(page, "'sha256-'", `'sha256-${createHash('sha256').update(script).digest('base64')}'`);

// The program inserts the script of a panel's own window before the last </body>, so the page may contain only one.
if (page.split('</body>').length !== 2) throw new Error('the page must hold </body> exactly once');
if (Buffer.byteLength(page) > kPageSizeLimit)
  throw new Error(`the page has ${Buffer.byteLength(page)} bytes`);

mkdirSync(join(outDir, 'vendor'), { recursive: true });
writeFileSync(join(outDir, 'index.html'), page);
copyFileSync(
  join(dirname(require.resolve('sortablejs/package.json')), 'Sortable.min.js'),
  join(outDir, 'vendor/Sortable.min.js'),
);
