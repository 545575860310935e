// Checks the layers: which modules each module may include, no operating-system header above the seam, no include
// circle of any length, and that a header's functions are defined in the source of the same name.
//
// Run from the root of the project. Prints each violation with its file and line; exit code 1 if there is one.
import { readdirSync, readFileSync } from 'node:fs';
import { dirname, join, posix } from 'node:path';

// Modules, lowest layer first. A file includes from its own module and from modules that stand before it.
const modules = [
  'base',
  'platform',
  'model',
  'scan',
  'themes',
  'storage',
  'editing',
  'engines',
  'windows',
  'imports',
  'update',
  'app',
];

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

// A header and the source of the same name are one component: a circle that leads through a source is a circle too.
const components = new Map(); // component -> components that it includes
const texts = new Map(); // file -> text
const componentOf = (file) => file.replace(/\.(h|cpp)$/, '');

for (const path of filesBelow('src')) {
  const file = posix.relative('src', path.split('\\').join('/'));
  const module = file.split('/')[0];
  const aboveSeam = module !== 'platform';
  const component = componentOf(file);
  if (!components.has(component)) components.set(component, new Set());
  texts.set(file, readFileSync(path, 'utf8'));
  texts
    .get(file)
    .split('\n')
    .forEach((line, index) => {
      const where = `src/${file}:${index + 1}`;
      const system = line.match(/^\s*#\s*include\s*<([^>]+)>/);
      if (system && aboveSeam && !standardHeader.test(system[1])) {
        problems.push(`${where}: <${system[1]}> belongs behind the platform seam`);
      }
      if (aboveSeam && /^\s*#.*\b(_WIN32|__linux__|__unix__|WIN32)\b/.test(line)) {
        problems.push(`${where}: code for one operating system belongs behind the platform seam`);
      }
      const local = line.match(/^\s*#\s*include\s*"([^"]+)"/);
      if (!local) return;
      const target = local[1];
      const targetModule = target.split('/')[0];
      if (componentOf(target) !== component) components.get(component).add(componentOf(target));
      if (!modules.includes(targetModule)) {
        problems.push(`${where}: "${target}" names no module`);
      } else if (modules.indexOf(targetModule) > modules.indexOf(module)) {
        problems.push(`${where}: "${target}" is in a higher layer`);
      }
      if (aboveSeam && targetModule === 'platform' && dirname(target) !== 'platform') {
        problems.push(`${where}: "${target}" belongs to one backend, not to the seam`);
      }
    });
}

// A function that X.h declares is defined in X.cpp: otherwise a circle of calls hides behind a header without a source
// of its own. Each backend defines the seam's headers (platform/*.h, platform/shared/*.h).
const isSeam = (file) => /^platform\/(shared\/)?[^/]+\.h$/.test(file);
const namesIn = (text, pattern) => new Set([...text.matchAll(pattern)].map((match) => match[1]));
const declaration =
  /^(?!using |typedef |return |friend )[A-Za-z_][\w:<>,&* ]* [&*]*(\w+)\([^;{}]*\)[^;{}()]*(?:\([^;{}()]*\))*;/gm;
const definition = /^(?!using |return )[A-Za-z_][\w:<>,&* ]* [&*]*(\w+)\([^;{}]*\)[^;{}]*\{/gm;
const defined = new Map(); // source -> names of the functions that it defines
for (const [file, text] of texts) if (file.endsWith('.cpp')) defined.set(file, namesIn(text, definition));
for (const [file, text] of texts) {
  if (!file.endsWith('.h') || isSeam(file)) continue;
  const own = defined.get(`${componentOf(file)}.cpp`);
  for (const name of namesIn(text, declaration)) {
    if (own?.has(name)) continue;
    const elsewhere = [...defined].filter(([, names]) => names.has(name)).map(([source]) => source);
    if (elsewhere.length) problems.push(`src/${file}: ${name} is defined in src/${elsewhere.join(', src/')}`);
  }
}

// Circles: depth-first, each reported once by the path that closes it.
const state = new Map();
function visit(component, path) {
  state.set(component, 'open');
  for (const target of components.get(component) ?? []) {
    if (state.get(target) === 'open') {
      problems.push(`circle: ${[...path.slice(path.indexOf(target)), target].join(' -> ')}`);
    } else if (!state.has(target) && components.has(target)) {
      visit(target, [...path, target]);
    }
  }
  state.set(component, 'done');
}
for (const component of components.keys()) if (!state.has(component)) visit(component, [component]);

for (const problem of problems) console.error(problem);
console.log(`${components.size} components, ${problems.length} problems`);
process.exit(problems.length ? 1 : 0);
