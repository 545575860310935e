// Adds to a program folder what ships beside the program:
//
//   node tools/build_dist.mjs libraries linux|windows FOLDER   the web-view library and the licence texts
//   node tools/build_dist.mjs pages FOLDER                     the pages, in FOLDER/ui
//
// The library comes from the pinned npm package, whose integrity `npm ci` has checked against package-lock.json.
import { spawnSync } from 'node:child_process';
import { copyFileSync, existsSync, mkdirSync, renameSync, rmSync } from 'node:fs';
import { dirname, join } from 'node:path';
import { fileURLToPath } from 'node:url';

const root = join(dirname(fileURLToPath(import.meta.url)), '..');

const kLibraries = {
  linux: { from: 'libwebview-x64.so', to: 'libwebview.so' },
  windows: { from: 'libwebview.dll', to: 'libwebview.dll' },
};

// The licence texts of the parts in the folder; see THIRD-PARTY.md.
const kLicences = [
  { from: 'node_modules/webview-bun/LICENSE', to: 'webview.txt' },
  { from: 'node_modules/preact/LICENSE', to: 'preact.txt' },
  { from: 'node_modules/@preact/signals/LICENSE', to: 'preact-signals.txt' },
  { from: 'node_modules/sortablejs/LICENSE', to: 'sortable.txt' },
  { from: '/usr/share/doc/fonts-inter-variable/copyright', to: 'inter.txt' },
];
// The compiler's run-time libraries are linked into the Windows program.
const kWindowsLicences = [
  { from: '/usr/share/doc/mingw-w64-common/copyright', to: 'mingw-w64.txt' },
  { from: '/usr/share/doc/gcc-mingw-w64-x86-64-posix-runtime/copyright', to: 'gcc-runtime.txt' },
];

function run(program, args) {
  const result = spawnSync(program, args, { stdio: 'inherit' });
  if (result.error || result.status !== 0) {
    throw new Error(`${program} failed: ${result.error?.message ?? `exit code ${result.status}`}`);
  }
}

// Copies through a temporary name, so that a program that runs from the folder keeps the file it has mapped.
function replaceFile(from, to, change = () => {}) {
  const temporary = `${to}.new`;
  copyFileSync(from, temporary);
  change(temporary);
  renameSync(temporary, to);
}

function copyLibraries(system, folder) {
  const library = kLibraries[system];
  const licences = join(folder, 'licenses');
  mkdirSync(licences, { recursive: true });
  replaceFile(
    join(root, 'node_modules/webview-bun/build', library.from),
    join(folder, library.to),
    (file) => {
      if (system === 'linux') {
        // Its search path has empty entries, which would load dependencies from the current directory.
        run('patchelf', ['--remove-rpath', file]);
      }
    },
  );
  for (const licence of [...kLicences, ...(system === 'windows' ? kWindowsLicences : [])]) {
    const from = join(licence.from.startsWith('/') ? '/' : root, licence.from);
    if (!existsSync(from)) {
      throw new Error(`${licence.from} is missing; ./dev setup installs it`);
    }
    replaceFile(from, join(licences, licence.to));
  }
}

function buildPages(folder) {
  const pages = join(folder, 'ui');
  rmSync(pages, { recursive: true, force: true });
  mkdirSync(pages, { recursive: true });
  run(process.execPath, [join(root, 'ui/build.mjs'), pages]);
}

const [step, ...rest] = process.argv.slice(2);
try {
  if (step === 'libraries' && rest.length === 2 && kLibraries[rest[0]]) {
    copyLibraries(rest[0], rest[1]);
  } else if (step === 'pages' && rest.length === 1) {
    buildPages(rest[0]);
  } else {
    throw new Error('usage: build_dist.mjs libraries linux|windows FOLDER, or build_dist.mjs pages FOLDER');
  }
} catch (error) {
  console.error(`build_dist: ${error.message}`);
  process.exitCode = 1;
}
