// The house stays drawable: what each room may include, no operating-system header above the seam, no circle.
//
// Run from the root of the project. Prints each break of a rule with its file and line; exit code 1 if there is one.
import { readdirSync, readFileSync } from 'node:fs';
import { dirname, join, posix } from 'node:path';

// Floors, lowest first: a file may include from its own floor and from lower ones.
const floors = [
  'base',
  'platform',
  'storage',
  'engines',
  'scan',
  'themes',
  'windows',
  'update',
  'imports',
  'frame',
];

// Records and the small headers by which a lower room tells a higher one: standard library and records only, so they
// may be included from anywhere.
const recordHeaders = new Set(['engines/unified_event.h', 'engines/engine_state.h', 'storage/profile.h']);

// Standard headers that this project uses; anything else in <> above the seam is an operating-system header.
const standardHeader = /^[a-z_]+$|^c(math|stdint|stdio|stdlib|string|errno|time|limits)$/;

function* filesBelow(folder) {
  for (const entry of readdirSync(folder, { withFileTypes: true })) {
    const path = join(folder, entry.name);
    if (entry.isDirectory()) yield* filesBelow(path);
    else if (/\.(h|cpp)$/.test(entry.name)) yield path;
  }
}

const problems = [];
const includes = new Map(); // file below src -> own headers it includes

for (const path of filesBelow('src')) {
  const file = posix.relative('src', path.split('\\').join('/'));
  const room = file.split('/')[0];
  const aboveSeam = room !== 'platform';
  const own = [];
  readFileSync(path, 'utf8')
    .split('\n')
    .forEach((line, index) => {
      const where = `src/${file}:${index + 1}`;
      const system = line.match(/^\s*#\s*include\s*<([^>]+)>/);
      if (system && aboveSeam && !standardHeader.test(system[1])) {
        problems.push(`${where}: <${system[1]}> belongs behind the platform seam`);
      }
      if (aboveSeam && /^\s*#.*\b(_WIN32|__linux__|__unix__|WIN32)\b/.test(line)) {
        problems.push(`${where}: a question about the operating system belongs behind the platform seam`);
      }
      const local = line.match(/^\s*#\s*include\s*"([^"]+)"/);
      if (!local) return;
      const target = local[1];
      own.push(target);
      const targetRoom = target.split('/')[0];
      if (!floors.includes(targetRoom)) {
        problems.push(`${where}: "${target}" names no room`);
      } else if (!recordHeaders.has(target) && floors.indexOf(targetRoom) > floors.indexOf(room)) {
        problems.push(`${where}: "${target}" is on a higher floor`);
      }
      if (aboveSeam && targetRoom === 'platform' && dirname(target) !== 'platform') {
        problems.push(`${where}: "${target}" is one home of the platform, not the seam`);
      }
    });
  includes.set(file, own);
}

for (const header of recordHeaders) {
  for (const target of includes.get(header) ?? []) {
    if (!recordHeaders.has(target) && !target.startsWith('base/')) {
      problems.push(`src/${header}: a record header includes "${target}"`);
    }
  }
}

// Circles: depth-first, each reported once by the path that closes it.
const state = new Map();
function visit(file, path) {
  state.set(file, 'open');
  for (const target of includes.get(file) ?? []) {
    if (state.get(target) === 'open') {
      problems.push(`circle: ${[...path.slice(path.indexOf(target)), target].join(' -> ')}`);
    } else if (!state.has(target) && includes.has(target)) {
      visit(target, [...path, target]);
    }
  }
  state.set(file, 'done');
}
for (const file of includes.keys()) if (!state.has(file)) visit(file, [file]);

for (const problem of problems) console.error(problem);
console.log(`${includes.size} files, ${problems.length} problems`);
process.exit(problems.length ? 1 : 0);
