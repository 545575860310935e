// The page host alone: messages about missing parts, calls from the page, the end of its loop.
import assert from 'node:assert/strict';
import { spawnSync } from 'node:child_process';
import { copyFileSync, mkdirSync, mkdtempSync, rmSync, writeFileSync } from 'node:fs';
import { tmpdir } from 'node:os';
import { join } from 'node:path';
import { createInterface } from 'node:readline';
import { after, before } from 'node:test';
import { buildFolder, onWindows, startNative, test, testPrograms, useFixture } from './harness.mjs';
import { stop, waitUntil } from './processes.mjs';

const exe = onWindows ? '.exe' : '';
const libraryName = onWindows ? 'libwebview.dll' : 'libwebview.so';
const testLibrary = join(buildFolder, 'tests/webview', libraryName);
const realLibrary = join(buildFolder, 'dist', libraryName);

const fixture = useFixture();
let folder;
let probe;

before(() => (folder = mkdtempSync(join(tmpdir(), 'varnelle-probe-'))));
after(() => rmSync(folder, { recursive: true, force: true }));

// Starts the probe in a folder of its own, with only the files that the test puts there.
function startProbe(name, { library, env = {}, cwd } = {}) {
  const own = join(folder, name);
  mkdirSync(own);
  copyFileSync(join(testPrograms, `page_host_probe${exe}`), join(own, `page_host_probe${exe}`));
  if (library) copyFileSync(library, join(own, libraryName));
  probe = startNative(join(own, `page_host_probe${exe}`), [], {
    cwd: cwd ?? own,
    stdio: ['ignore', 'pipe', 'inherit'],
    env: {
      ...fixture.desktop.env,
      ...fixture.wineEnvironment(),
      VARNELLE_TEST_WEBVIEW_PORT: String(fixture.server.port),
      ...env,
    },
  });
  probe.lines = [];
  createInterface({ input: probe.stdout }).on('line', (line) => probe.lines.push(line.replace('\r', '')));
  return probe;
}

// Returns the message for the user: one sentence that ends with what to do.
async function failureOf(name, options) {
  const child = startProbe(name, options);
  try {
    const result = await waitUntil(() => child.result, 'the probe ends');
    assert.equal(result.code, 1);
    assert.equal(child.lines.length, 1);
    const sentence = child.lines[0].replace(/^failed /, '');
    assert.match(sentence, /^Varnelle cannot show its window because .*; .*\.$/);
    return sentence;
  } finally {
    await stop(child);
  }
}

test('a missing library is reported with its path', async () => {
  assert.match(await failureOf('missing'), /missing.libwebview\.(so|dll) is missing; put it back/);
});

test('a library in the current directory is not loaded', async () => {
  const elsewhere = join(folder, 'elsewhere');
  mkdirSync(elsewhere);
  copyFileSync(testLibrary, join(elsewhere, libraryName));
  assert.match(await failureOf('planted', { cwd: elsewhere }), /is missing; put it back/);
});

test('a corrupt library is reported', async () => {
  const damaged = join(folder, 'damaged.bin');
  writeFileSync(damaged, 'not a library');
  assert.match(await failureOf('damaged', { library: damaged }), /does not load/);
});

test('a library without our functions is reported as wrong', async () => {
  const other = onWindows
    ? join(process.env.WINEPREFIX, 'drive_c/windows/system32/version.dll')
    : spawnSync('sh', ['-c', "ldconfig -p | awk '/libXtst.so.6 .*x86-64/ { print $NF; exit }'"], {
        encoding: 'utf8',
      }).stdout.trim();
  assert.match(await failureOf('other', { library: other }), /lacks webview_create; install Varnelle again/);
});

test('a missing dependency is reported with what to install', async () => {
  if (onWindows) {
    const env = { WINEDLLOVERRIDES: 'mscoree=;mshtml=;msvcp140=;vcruntime140=;vcruntime140_1=' };
    assert.match(
      await failureOf('runtime', { library: realLibrary, env }),
      /Visual C\+\+ runtime \(x64\) is missing; install it from/,
    );
    return;
  }
  const needy = join(folder, 'needy.so');
  copyFileSync(testLibrary, needy);
  assert.equal(spawnSync('patchelf', ['--add-needed', 'libnowhere.so.1', needy]).status, 0);
  assert.match(
    await failureOf('needy', { library: needy }),
    /libnowhere\.so\.1.*; install the packages libwebkitgtk-6\.0-4/,
  );
});

test('a missing display is reported', { skip: onWindows && 'Windows always has one' }, async () => {
  assert.match(
    await failureOf('unset', { library: testLibrary, env: { DISPLAY: '' } }),
    /DISPLAY names no X11 display/,
  );
  assert.match(
    await failureOf('dead', { library: testLibrary, env: { DISPLAY: ':65000' } }),
    /the X11 display :65000 does not answer/,
  );
});

test('a web view that does not start is reported', async () => {
  const sentence = await failureOf('silent', {
    library: testLibrary,
    env: { VARNELLE_TEST_WEBVIEW_PORT: '1' },
  });
  assert.match(sentence, onWindows ? /WebView2 runtime is missing or damaged; install it/ : /did not start/);
});

test(
  'a registered but missing browser runtime is reported',
  { skip: !onWindows && 'a matter of the Windows registry' },
  async () => {
    const key =
      'HKLM\\Software\\WOW6432Node\\Microsoft\\EdgeUpdate\\ClientState\\{F3017226-FE2A-4295-8BDF-00C3A9A7E4C5}';
    const reg = (...args) => spawnSync('wine', ['reg', ...args], { stdio: 'ignore', timeout: 30000 });
    reg('add', key, '/v', 'EBWebView', '/d', 'C:\\nowhere', '/f');
    try {
      assert.match(
        await failureOf('registered', { library: testLibrary }),
        /WebView2 runtime is missing or damaged/,
      );
    } finally {
      reg('delete', key, '/f');
    }
  },
);

test('calls return, queued work keeps its order, and another thread can end the loop', async () => {
  const child = startProbe('working', { library: testLibrary });
  try {
    const view = await fixture.server.next();
    const page = await view.ready;
    await waitUntil(
      () => child.lines.some((line) => line.includes('counted')),
      'the page has reported everything',
    );
    assert.deepEqual(child.lines, [
      'window 1',
      'page ["echo resolved [\\"a \\\\\\"quoted\\\\\\" é\\",5]"]',
      'page ["nothing resolved undefined"]',
      'page ["fail rejected \\"a \\\\\\"bad\\\\\\" number\\""]',
      'page ["failOddly rejected \\"The command failed.\\""]',
      // Windows reads a byte that is no UTF-8 in its own code page.
      `page ["foreign resolved \\"caf${onWindows ? 'é' : '\ufffd'} \u{1f600}\\""]`,
      'page ["counted in order"]',
    ]);
    await page.mouse.click(50, 50);
    assert.equal((await child.ended).code, 0);
    assert.deepEqual(child.lines.slice(-1), ['ended']);
    assert.equal(view.closed, true);
    assert.equal(view.failure, null);
  } finally {
    await stop(child);
  }
});

test('closing the window ends the loop, and later work is dropped', async () => {
  const child = startProbe('closing', { library: testLibrary });
  const observer = await fixture.openObserver('Beside the probe');
  try {
    const view = await fixture.server.next();
    await view.ready;
    await waitUntil(async () => (await observer.window('Page host probe')).found, 'the window is there');
    const place = await observer.window('Page host probe');
    assert.equal(place.width, 500);
    assert.equal(place.height, 300);
    observer.closeWindow('Page host probe');
    assert.equal((await child.ended).code, 0);
    assert.ok(!child.lines.includes('ran after the end'));
    assert.equal(child.lines.at(-1), 'ended');
  } finally {
    await observer.kill();
    await stop(child);
  }
});

test('the shipped library has no library search path', { skip: onWindows && 'an ELF matter' }, () => {
  const dynamic = spawnSync('readelf', ['-d', realLibrary], { encoding: 'utf8' }).stdout;
  assert.match(dynamic, /libwebkitgtk-6\.0\.so\.4/);
  assert.doesNotMatch(dynamic, /RPATH|RUNPATH/);
});

test('the program folder is complete', () => {
  for (const file of ['ui/index.html', 'ui/vendor/Sortable.min.js', 'licenses/webview.txt', libraryName]) {
    assert.ok(spawnSync('test', ['-s', join(buildFolder, 'dist', file)]).status === 0, `${file} is missing`);
  }
});
