// What the headers of the built program promise: the system's protections against memory faults, and which libraries it
// loads before its own first instruction.
import assert from 'node:assert/strict';
import { spawnSync } from 'node:child_process';
import { join } from 'node:path';
import { buildFolder, onlyOnLinux, onlyOnWindows, test } from './harness.mjs';

const onLinux = onlyOnLinux('a program in the form of Linux');
const onWine = onlyOnWindows('a program in the form of Windows');
const file = (name) => join(buildFolder, 'dist', name);

function read(tool, options, path) {
  const result = spawnSync(tool, [...options, path], {
    encoding: 'latin1',
    env: { ...process.env, LC_ALL: 'C' },
    maxBuffer: 1 << 27,
  });
  assert.equal(result.status, 0, `${tool}: ${result.error ?? result.stderr}`);
  return result.stdout;
}

test(
  'the Linux program is position independent, with read-only relocations and no executable stack',
  onLinux,
  () => {
    const headers = read('readelf', ['-hlW'], file('varnelle'));
    assert.match(headers, /Type: +DYN/);
    assert.match(headers, /GNU_RELRO/);
    assert.match(headers, /GNU_STACK .* RW /);
    const dynamic = read('readelf', ['-dW'], file('varnelle'));
    assert.match(dynamic, /BIND_NOW/);
    assert.match(dynamic, /Flags: NOW PIE/);
    assert.doesNotMatch(dynamic, /\(R(UN)?PATH\)|\(TEXTREL\)/);
  },
);

test('the Linux program checks its stack, its buffers and its containers', onLinux, () => {
  const symbols = read('readelf', ['--dyn-syms', '-W'], file('varnelle'));
  assert.match(symbols, /__stack_chk_fail/);
  assert.match(symbols, /__\w+_chk@GLIBC/);
  assert.match(symbols, /__glibcxx_assert_fail/);
});

// Windows takes these from its own folder whatever lies in the program's, and with them what they need (KnownDLLs).
const kKnownLibraries = 'advapi32 comdlg32 gdi32 kernel32 msvcrt ole32 shell32 user32'
  .split(' ')
  .map((name) => `${name}.dll`);

test('the Windows program imports only libraries that Windows takes from its own folder', onWine, () => {
  const headers = read('x86_64-w64-mingw32-objdump', ['-p'], file('Varnelle.exe'));
  const names = [...headers.matchAll(/DLL Name: (\S+)/g)].map(([, name]) => name.toLowerCase());
  assert.ok(names.includes('kernel32.dll'));
  assert.deepEqual(
    names.filter((name) => !kKnownLibraries.includes(name)),
    [],
  );
  // It loads further libraries by their bare names. The compiler's own stack protector calls it before our first line.
  assert.doesNotMatch(headers, /CryptAcquireContext/);
});

test('the Windows program lies at random addresses, without executable data', onWine, () => {
  const headers = read('x86_64-w64-mingw32-objdump', ['-p'], file('Varnelle.exe'));
  for (const flag of ['HIGH_ENTROPY_VA', 'DYNAMIC_BASE', 'NX_COMPAT'])
    assert.match(headers, new RegExp(flag));
  assert.match(headers, /ImageBase\s+0*14[0-9a-f]{7}\b/, 'above 4 GiB, where high entropy applies');
  assert.doesNotMatch(headers, /relocations stripped/);
  assert.match(headers, /Entry 5 [0-9a-f]+ 0*[1-9a-f][0-9a-f]* Base Relocation/);
});

test('the Windows program checks its stack and its containers', onWine, () => {
  const symbols = read('x86_64-w64-mingw32-nm', [], file('Varnelle.exe'));
  assert.match(symbols, /__stack_chk_fail/);
  assert.match(symbols, /__glibcxx_assert_fail/);
});
