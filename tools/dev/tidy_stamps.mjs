// Prints "FILE:STAMP" for each source on the command line: a hash of everything that the file's static analysis depends
// on in this project, which is the file, the headers that it includes (also indirectly) and .clang-tidy. `salt` is
// hashed too, for the version of the tool.
//
//   node tools/dev/tidy_stamps.mjs SALT FILE...
import { createHash } from 'node:crypto';
import { existsSync, readFileSync } from 'node:fs';
import { join } from 'node:path';

const [salt, ...files] = process.argv.slice(2);

const contents = new Map();
const read = (file) => {
  if (!contents.has(file)) contents.set(file, readFileSync(file, 'utf8'));
  return contents.get(file);
};

// Includes are written relative to src; a header that is not there belongs to the system.
const headersOf = (file) =>
  [...read(file).matchAll(/^\s*#\s*include\s*"([^"]+)"/gm)]
    .map((match) => join('src', match[1]))
    .filter((header) => existsSync(header));

function withHeaders(file, seen = new Set()) {
  if (!seen.has(file)) {
    seen.add(file);
    for (const header of headersOf(file)) withHeaders(header, seen);
  }
  return seen;
}

for (const file of files) {
  const hash = createHash('sha256').update(`${salt}\n${read('.clang-tidy')}`);
  for (const each of [...withHeaders(file)].sort()) hash.update(`\n${each}\n${read(each)}`);
  console.log(`${file}:${hash.digest('hex').slice(0, 32)}`);
}
