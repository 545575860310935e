// The console modes as a script uses them: many files in a loop, redirected and piped output, unusual names and folders,
// lost output. They have no display here, and they must leave nothing behind.
import assert from 'node:assert/strict';
import { spawn, spawnSync } from 'node:child_process';
import {
  chmodSync,
  closeSync,
  copyFileSync,
  mkdirSync,
  openSync,
  readFileSync,
  readdirSync,
  readlinkSync,
  statSync,
  symlinkSync,
  writeFileSync,
} from 'node:fs';
import { basename, join } from 'node:path';
import { after, before } from 'node:test';
import {
  makeInstallation,
  nativePath,
  onlyOnLinux,
  onlyOnWindows,
  onWindows,
  root,
  test,
  useDataFolder,
} from './harness.mjs';

const onLinux = onlyOnLinux('a matter of Linux shells');
const onWine = onlyOnWindows('a matter of Windows paths');
const asRoot = { skip: (onWindows || process.getuid() !== 0) && 'needs to become another user' };

const kNoMacro = "REJECT Couldn't open that macro file.\n";
const kNoName = 'REJECT That macro file is missing its profile name.\n';
const kNoTheme = 'REJECT could not open file\n';
const kRisky = 'Farm\n3,1.25,0,0,0,91,1,0\n3,1.5,0,0,0,82,1,0\n3,1.75,0,0,0,91,0,0\n';
const kRiskyReport =
  '{"level":"caution","matches":[{"id":"system-keys","severity":"CAUTION","atSec":1.5}]}\n';
const kHarmlessReport = '{"level":"none","matches":[]}\n';
const kVectors = join(root, 'tests/fixtures/update/vectors.jsonl');
const kTheme = join(root, 'tests/fixtures/themes/colours.vrltheme');

const macroOf = (count) => `Macro of ${count}\n${'0,0.5,10,10,0,0,0,0\n'.repeat(count)}`;

let installation;
let files; // a folder for the modes' input; the rest of the installation must not change
let kept;

before(() => {
  installation = makeInstallation({ library: null });
  files = join(installation.folder, 'files');
  mkdirSync(files);
  useDataFolder(installation);
  // Another user may read it too.
  for (const folder of [installation.folder, files]) chmodSync(folder, 0o755);
  kept = everythingBut(files);
});
after(() => installation?.remove());

// Lists the installation's files outside of `left` with sizes and times of change.
function everythingBut(left, folder = installation.folder) {
  return readdirSync(folder, { withFileTypes: true }).flatMap((entry) => {
    const path = join(folder, entry.name);
    if (path === left) return [];
    const { size, mtimeMs } = statSync(path);
    return [`${path} ${size} ${mtimeMs}`, ...(entry.isDirectory() ? everythingBut(left, path) : [])];
  });
}

function environment() {
  const rest = { ...process.env };
  delete rest.DISPLAY;
  delete rest.WAYLAND_DISPLAY;
  return { ...rest, ...installation.env, ...(onWindows ? { HOME: process.env.HOME } : {}) };
}

// Runs the program to its end; returns { code, printed, errors } with plain line ends. Windows prints CR LF.
function run(args, options = {}) {
  const [command, list] = onWindows ? ['wine', [installation.program]] : [installation.program, []];
  const result = spawnSync(command, [...list, ...[args].flat()], {
    env: environment(),
    cwd: files,
    encoding: 'latin1',
    timeout: 60000,
    stdio: ['ignore', 'pipe', 'pipe'],
    maxBuffer: 1 << 26,
    ...options,
  });
  assert.equal(result.error, undefined);
  assert.equal(result.signal, null, 'it ends without a signal');
  return { code: result.status, printed: plain(result.stdout ?? ''), errors: result.stderr ?? '' };
}

function plain(text) {
  if (!onWindows) return text;
  assert.doesNotMatch(text, /(?<!\r)\n/);
  return text.replaceAll('\r\n', '\n');
}

// Runs a shell script in which "$P" is the program and "$1", "$2"... are the arguments; returns the same.
function shell(script, args = [], options = {}) {
  const result = spawnSync('sh', ['-c', script, 'sh', ...args], {
    env: { ...environment(), P: installation.program, LC_ALL: 'C' },
    cwd: files,
    encoding: 'latin1',
    timeout: 280000,
    maxBuffer: 1 << 26,
    ...options,
  });
  assert.equal(result.error, undefined);
  return { code: result.status, printed: result.stdout, errors: result.stderr };
}

function put(name, content) {
  const path = join(files, name);
  writeFileSync(path, content);
  return path;
}

function expect(args, printed, code, options) {
  assert.deepEqual(run(args, options), { code, printed, errors: '' }, String(args));
}

test('each mode prints its lines and returns its exit code', () => {
  const risky = nativePath(put('risky.vrlmacro', kRisky));
  const harmless = nativePath(put('harmless.vrlmacro', macroOf(3)));
  const nameless = nativePath(put('nameless.vrlmacro', '\n0,0.5,10,10,0,0,0,0\n'));
  const none = nativePath(join(files, 'none'));
  const folder = nativePath(files);
  expect(`--validate-macro=${risky}`, 'OK 3 events\n', 0);
  expect(`--validate-macro=${nameless}`, kNoName, 1);
  expect(`--scan-macro=${risky}`, kRiskyReport, 0);
  expect(`--scan-macro=${harmless}`, kHarmlessReport, 0);
  expect(`--scan-macro=${nameless}`, kNoName, 1);
  expect(`--validate-theme=${nativePath(kTheme)}`, 'OK colours\n', 0);
  for (const mode of ['--validate-macro', '--scan-macro', '--validate-theme']) {
    const refusal = mode === '--validate-theme' ? kNoTheme : kNoMacro;
    for (const path of ['', none, `${none}/below`, folder, 'x'.repeat(300)]) {
      expect(`${mode}=${path}`, refusal, 1);
    }
  }
  const proof = run(`--selftest-update=${nativePath(kVectors)}`);
  assert.match(proof.printed, /^(PASS [^\n]+\n){50,}SELFTEST-UPDATE: ALL PASS\n$/);
  assert.equal(proof.code, 0);
  for (const path of ['', none, folder]) {
    const open = `FAIL could not open vectors file: ${path}\nSELFTEST-UPDATE: FAILURES ABOVE\n`;
    expect(`--selftest-update=${path}`, open, 1);
  }
});

test('each fixture is validated with its exact line and exit code', () => {
  const folder = join(root, 'tests/fixtures/macros');
  const rows = readFileSync(join(folder, 'expected.txt'), 'utf8').trim().split('\n');
  assert.ok(rows.length >= 20);
  for (const row of rows) {
    const [, name, line] = /^(.*?): (.*)$/.exec(row);
    expect(`--validate-macro=${nativePath(join(folder, name))}`, `${line}\n`, line.startsWith('OK') ? 0 : 1);
  }
});

test('the import self-test passes and leaves no sample behind', () => {
  const temporary = join(files, 'temporary');
  mkdirSync(temporary);
  const here = { env: { ...environment(), TMPDIR: temporary } };
  const good = run('--selftest', here);
  assert.match(good.printed, /^(PASS import: [^\n]+\n){6}SELFTEST: ALL PASS\n$/);
  assert.equal(good.code, 0);
  const places = onWindows ? join(process.env.WINEPREFIX, 'drive_c/users') : temporary;
  const found = spawnSync('find', [places, '-name', 'vrl-selftest-import*'], { encoding: 'utf8' });
  assert.deepEqual([found.status, found.stdout], [0, '']);
  if (onWindows) return; // Wine takes the folder from its registry
  const nowhere = run('--selftest', { env: { ...environment(), TMPDIR: join(files, 'none') } });
  assert.match(nowhere.printed, /^((PASS|FAIL) import: [^\n]+\n){6}SELFTEST: FAILURES ABOVE\n$/);
  assert.equal(nowhere.code, 1);
});

test('of several modes one runs, with the last value given for it', () => {
  const macro = nativePath(put('one of them.vrlmacro', macroOf(2)));
  const theme = nativePath(kTheme);
  expect([`--validate-macro=${macro}`, `--validate-theme=${theme}`], 'OK colours\n', 0);
  expect(['--validate-macro=none', `--validate-macro=${macro}`], 'OK 2 events\n', 0);
  expect([`--validate-macro=${macro}`, '--validate-macro='], kNoMacro, 1);
  expect([`--scan-macro=${macro}`, '--unknown', `--validate-macro=${macro}`], 'OK 2 events\n', 0);
  expect(['--update-manifest=x', 'word', `--scan-macro=${macro}`], kHarmlessReport, 0);
  expect(['--selftest', '--child x', `--validate-macro=${macro}`], 'OK 2 events\n', 0);
  const proof = run([`--scan-macro=${macro}`, `--validate-theme=${theme}`, '--selftest-update=none']);
  assert.equal(proof.printed.split('\n')[0], 'FAIL could not open vectors file: none');
});

test('a file of any name is found from any folder', () => {
  mkdirSync(join(files, 'a folder/deeper'), { recursive: true });
  const names = [
    'with spaces  in it.vrlmacro',
    '-dash --child --selftest.vrlmacro',
    'a=b;c&d%PATH%$HOME(1)[2]!.vrlmacro',
    "it's.vrlmacro",
    'no ending',
    'Gr\u00fc\u00dfe \u00e9.vrlmacro',
  ];
  if (!onWindows) {
    names.push('\u65e5\u672c\u8a9e \u{1f600}.vrlmacro', 'a "quoted" one', 'two\nlines', 'back\\slash', '*');
  }
  names.forEach((name, index) => {
    put(name, macroOf(index));
    const line = `OK ${index} events\n`;
    expect(`--validate-macro=${nativePath(join(files, name))}`, line, 0);
    if (!onWindows) expect(`--validate-macro=${name}`, line, 0);
    expect(`--scan-macro=../${name}`, kHarmlessReport, 0, { cwd: join(files, 'a folder') });
    if (onWindows)
      expect(`--validate-macro=..\\..\\${name}`, line, 0, { cwd: join(files, 'a folder/deeper') });
  });
  copyFileSync(kTheme, join(files, 'a folder/my colours \u00e9.vrltheme'));
  copyFileSync(kVectors, join(files, 'a folder/my vectors \u00e9'));
  expect('--validate-theme=a folder/my colours \u00e9.vrltheme', 'OK colours\n', 0);
  assert.equal(run('--selftest-update=a folder/my vectors \u00e9').code, 0);
});

// The program uses no code page: it keeps the low byte of each character.
test('a character above 255 becomes its low byte in a file name', onWine, () => {
  put('AB.vrlmacro', macroOf(4));
  expect('--validate-macro=\u0141\u0142.vrlmacro', 'OK 4 events\n', 0);
  put('\u0141\u0142 2.vrlmacro', macroOf(5));
  expect('--validate-macro=\u0141\u0142 2.vrlmacro', kNoMacro, 1);
});

test('names of any bytes, links and a search path work', onLinux, () => {
  put('linked.vrlmacro', macroOf(6));
  symlinkSync('linked.vrlmacro', join(files, 'a link'));
  symlinkSync('nowhere', join(files, 'a broken link'));
  symlinkSync(installation.program, join(files, 'program link'));
  expect('--validate-macro=a link', 'OK 6 events\n', 0);
  expect('--validate-macro=a broken link', kNoMacro, 1);
  const odd = String.raw`n=$(printf 'b\377\200 \001.vrlmacro'); printf 'N\n' >"$n"; "$P" --validate-macro="$n"`;
  assert.deepEqual(shell(odd), { code: 0, printed: 'OK 0 events\n', errors: '' });
  const linked = shell('PATH=.:$PATH; "program link" --validate-macro=linked.vrlmacro');
  assert.deepEqual(linked, { code: 0, printed: 'OK 6 events\n', errors: '' });
  const piped = shell('cat linked.vrlmacro | "$P" --scan-macro=/dev/stdin; "$P" --validate-macro=/dev/null');
  assert.deepEqual(piped, { code: 1, printed: kHarmlessReport + kNoName, errors: '' });
});

test('a file that the user may not read is rejected like a missing one', asRoot, () => {
  const macro = put('secret', macroOf(1));
  chmodSync(macro, 0);
  const nobody = { uid: 65534, gid: 65534, env: { ...environment(), HOME: '/nowhere', LOCALAPPDATA: '' } };
  expect(`--validate-macro=${macro}`, kNoMacro, 1, nobody);
  expect(`--scan-macro=${macro}`, kNoMacro, 1, nobody);
  expect(`--validate-theme=${macro}`, kNoTheme, 1, nobody);
  assert.equal(run(`--selftest-update=${macro}`, nobody).code, 1);
  chmodSync(macro, 0o444);
  expect(`--validate-macro=${macro}`, 'OK 1 events\n', 0, nobody);
});

test('a file and a pipe receive the same bytes', () => {
  put('same.vrlmacro', kRisky);
  copyFileSync(kVectors, join(files, 'same vectors'));
  for (const args of [
    '--scan-macro=same.vrlmacro',
    '--validate-macro=same.vrlmacro',
    '--selftest-update=same vectors',
    '--validate-theme=none',
  ]) {
    const redirected = join(files, 'redirected');
    const output = openSync(redirected, 'w');
    const toFile = run(args, { stdio: ['ignore', output, 'pipe'] });
    closeSync(output);
    const toPipe = run(args);
    toFile.printed = plain(readFileSync(redirected, 'latin1'));
    assert.deepEqual(toFile, toPipe);
    assert.ok(toPipe.printed.length > 0);
  }
});

test('lost output does not change the exit code', onLinux, () => {
  put('good', macroOf(1));
  copyFileSync(kVectors, join(files, 'good vectors'));
  for (const [args, code] of [
    ['--validate-macro=good', 0],
    ['--scan-macro=good', 0],
    ['--validate-macro=none', 1],
    ['--validate-theme=none', 1],
    ['--selftest-update=good vectors', 0],
    ['--selftest-update=none', 1],
  ]) {
    for (const where of [
      '>&-',
      '>/dev/full',
      '>&- 2>&-',
      '<&- >&- 2>&-',
      '<&-',
      '>/dev/full 2>/dev/full',
      '</dev/null >/dev/null',
    ]) {
      const result = shell(`"$P" "$1" ${where}`, [args]);
      assert.equal(result.code, code, `${args} ${where}`);
      assert.equal(result.errors, '', `${args} ${where}`);
    }
    // A file that must not grow.
    const limited = shell('ulimit -f 0; "$P" "$1" >limited', [args]);
    assert.deepEqual([limited.code, limited.errors], [code, ''], args);
    // The reader ends before the first byte.
    const gone = shell('{ sleep 0.05; "$P" "$1"; echo $? >&2; } | :', [args]);
    assert.equal(gone.errors, `${code}\n`, args);
  }
  assert.equal(readFileSync(join(files, 'good'), 'latin1'), macroOf(1));
});

// Output to a closed stream must not go into a file that was opened instead.
test('an opened file never replaces a closed stream', onLinux, () => {
  const script = String.raw`mkfifo fifo
    "$P" --validate-macro=fifo <&- >&- 2>&- &
    exec 3>fifo
    for number in 0 1 2 3; do readlink /proc/$!/fd/$number; done
    printf 'Name
' >&3; exec 3>&-; wait $!; echo $?`;
  const printed = `${'/dev/null\n'.repeat(3)}${join(files, 'fifo')}\n0\n`;
  assert.deepEqual(shell(script), { code: 0, printed, errors: '' });
});

// A program that starts in a window of its own inherits no output.
test('without an output the exit code is right', onWine, () => {
  const good = nativePath(put('good', macroOf(1)));
  for (const [args, code] of [
    [`--validate-macro=${good}`, 0],
    [`--scan-macro=${good}`, 0],
    [`--scan-macro=${good}.none`, 1],
    [`--validate-theme=${good}`, 1],
  ]) {
    const result = shell('wine start /wait /unix "$P" "$1"', [args]);
    assert.deepEqual([result.code, result.printed], [code, ''], args);
  }
  // A disk that is full.
  assert.equal(shell('wine "$P" "$1" >/dev/full', [`--validate-macro=${good}`]).code, 0);
  assert.equal(shell('wine "$P" "$1" >/dev/full', [`--validate-macro=${good}.none`]).code, 1);
});

// Three modes for each file, as in a script, with all answers appended to one file.
test('a shell loop over hundreds of files prints every answer', onLinux, (context) => {
  const folder = join(files, 'many files');
  mkdirSync(folder);
  const expected = [];
  for (let i = 0; i < 250; ++i) {
    const name = `${String(i).padStart(4, '0')} ${['plain', 'gr\u00fcn', '\u65e5\u672c', "it's"][i % 4]}.vrlmacro`;
    const good = i % 7 !== 3;
    const risky = good && i % 5 === 0;
    writeFileSync(join(folder, name), good ? (risky ? kRisky : macroOf(i % 50)) : '\n');
    const macroCode = good ? 0 : 1;
    expected.push(good ? `OK ${risky ? 3 : i % 50} events\n${macroCode}\n` : `${kNoName}${macroCode}\n`);
    expected.push(
      good ? `${risky ? kRiskyReport : kHarmlessReport}${macroCode}\n` : `${kNoName}${macroCode}\n`,
    );
    expected.push('REJECT ');
  }
  const begin = Date.now();
  const script = `for f in "$1"/*; do
      for mode in validate-macro scan-macro validate-theme; do
        "$P" --$mode="$f" >>"$2"; echo $? >>"$2"
      done
    done`;
  const answers = join(files, 'answers');
  assert.deepEqual(shell(script, [folder, answers]), { code: 0, printed: '', errors: '' });
  const runs = expected.length;
  context.diagnostic(`${runs} runs, ${((Date.now() - begin) / runs).toFixed(1)} ms each`);
  const printed = readFileSync(answers, 'latin1');
  const lines = printed.split('\n');
  assert.equal(lines.length, runs * 2 + 1);
  expected.forEach((answer, index) => {
    const got = `${lines[index * 2]}\n${lines[index * 2 + 1]}\n`;
    if (answer === 'REJECT ') assert.match(got, /^REJECT [^\n]+\n1\n$/);
    else assert.equal(got, answer, `run ${index}`);
  });
});

test('a batch file over dozens of files prints every answer', onWine, (context) => {
  const folder = join(files, 'many files');
  mkdirSync(folder);
  const expected = [];
  for (let i = 10; i < 30; ++i) {
    const good = i % 7 !== 3;
    writeFileSync(join(folder, `${i} some file \u00e9.vrlmacro`), good ? macroOf(i) : '\n');
    expected.push(good ? `OK ${i} events\n0\n` : `${kNoName}1\n`);
    expected.push(good ? `${kHarmlessReport}0\n` : `${kNoName}1\n`);
  }
  // Wine's cmd now and then reports 9009, not found, for a program that exists: then the batch file tries again.
  const batch = [
    '@echo off',
    'cd "many files"',
    'for %%f in (*.vrlmacro) do call :one "%%f"',
    'goto :eof',
    ':one',
    ...['validate', 'scan'].flatMap((mode) => [
      `:${mode}`,
      `"${nativePath(installation.program)}" "--${mode}-macro=%~1" >>..\\answers`,
      `if %errorlevel%==9009 goto ${mode}`,
      // The redirection comes first: a digit right before the arrows would name a stream.
      '>>..\\answers echo %errorlevel%',
    ]),
    'goto :eof',
  ];
  put('each.bat', `${batch.join('\r\n')}\r\n`);
  const begin = Date.now();
  const result = spawnSync('wine', ['cmd', '/c', 'each.bat'], {
    env: environment(),
    cwd: files,
    encoding: 'latin1',
    timeout: 240000,
    stdio: ['ignore', 'pipe', 'pipe'],
  });
  assert.equal(result.status, 0, result.stderr);
  const runs = expected.length;
  context.diagnostic(`${runs} runs, ${((Date.now() - begin) / runs).toFixed(0)} ms each`);
  assert.equal(plain(readFileSync(join(files, 'answers'), 'latin1')), expected.join(''));
});

test('many runs at once and few open files work', onLinux, async () => {
  put('shared', macroOf(9));
  const runs = Array.from({ length: 40 }, () => {
    const child = spawn(installation.program, ['--validate-macro=shared'], {
      env: environment(),
      cwd: files,
      stdio: ['ignore', 'pipe', 'inherit'],
    });
    let printed = '';
    child.stdout.on('data', (data) => (printed += data));
    return new Promise((resolve) => child.on('close', (code) => resolve(`${code} ${printed}`)));
  });
  for (const answer of await Promise.all(runs)) assert.equal(answer, '0 OK 9 events\n');
  // Standard input, output and error, and one file at a time.
  const few = shell('ulimit -n 4; exec "$P" --validate-macro=shared');
  assert.deepEqual(few, { code: 0, printed: 'OK 9 events\n', errors: '' });
  const none = shell('ulimit -v 400000; exec "$P" --validate-macro=/dev/zero');
  assert.deepEqual(none, { code: 1, printed: kNoMacro, errors: '' });
});

test('a macro of 300000 events is accepted', () => {
  put('large', macroOf(300000));
  expect('--validate-macro=large', 'OK 300000 events\n', 0);
  expect('--scan-macro=large', kHarmlessReport, 0);
  expect('--validate-theme=large', 'REJECT invalid or missing name\n', 1);
});

// The last test: it checks what all others left behind.
test('no mode writes a file or leaves a process running', () => {
  assert.deepEqual(everythingBut(files), kept);
  const name = basename(installation.folder);
  const left = readdirSync('/proc').filter((entry) => {
    if (!/^\d+$/.test(entry)) return false;
    try {
      return (
        readlinkSync(`/proc/${entry}/exe`) === installation.program ||
        readFileSync(`/proc/${entry}/cmdline`, 'latin1').includes(name)
      );
    } catch {
      return false; // the process has ended
    }
  });
  assert.deepEqual(left, []);
});
