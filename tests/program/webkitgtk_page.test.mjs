// The shipped program in the real WebKitGTK view, with the real pointer.
import assert from 'node:assert/strict';
import { existsSync, mkdirSync, readFileSync, readdirSync, statSync, writeFileSync } from 'node:fs';
import { join } from 'node:path';
import { after, before } from 'node:test';
import { kMainTitle, kScreenshots, onlyOnLinux, onWindows, test, useFixture } from './harness.mjs';
import { tapUntil } from './file_dialogs.mjs';
import { waitUntil } from './processes.mjs';
import { PagePointer, makeRealInstallation, openRealView } from './real_view.mjs';
import { Button, Key } from './xtest_input.mjs';

const options = onlyOnLinux('WebView2 does not run under Wine');
const kLargeMacro = 5000;
// Clicks every 50 ms at 860,320, where the other application's window will be.
const kSettings =
  'SETTINGS:0,0,0,50,0,0,1,10,1,860,320,1,1,1,1,0,1,0,500,119,118,0,117,0,0,0,5,1,10,120,32,32,0,0,0,121\n';

// Without WebView2 there is nothing to open on Wine.
const fixture = onWindows ? null : useFixture({ keepOpen: true });
let installation;
let program;
let observer;
let inspector;
let pointer;

const elementWith = (selector, text) =>
  `[...document.querySelectorAll('${selector}')].find((e) => e.textContent.includes('${text}'))`;

before(async () => {
  if (onWindows) return;
  await fixture.ready();
  installation = makeRealInstallation(fixture);
  const events = Array.from(
    { length: kLargeMacro },
    (_, i) => `0,${i / 1000},${i % 900},${i % 700},0,0,0,0\n`,
  );
  writeFileSync(
    join(installation.data, 'session.dat'),
    `${kSettings}CURRENT:0\nPROFILE:Large\n${events.join('')}`,
  );
  ({ program, inspector } = await openRealView(fixture, installation));
  await program.waitForStatus((s) => s.count === kLargeMacro, 'the page has polled');
  // Beside the program's window, which is in the middle.
  observer = await fixture.openObserver('Another application', { x: 760, y: 120, width: 200, height: 400 });
  pointer = new PagePointer(fixture, inspector, observer, kMainTitle);
});
after(() => inspector?.close());

test('the window appears, and its page calls the program', options, async () => {
  await waitUntil(async () => (await observer.window(kMainTitle)).found, 'the window is there');
  await waitUntil(
    async () => /Idle/.test(await inspector.evaluate('document.body.innerText')),
    'the page shows it',
  );
  mkdirSync(kScreenshots, { recursive: true });
  const picture = join(kScreenshots, 'webkit.png');
  fixture.desktop.screenshot(picture);
  assert.ok(statSync(picture).size > 5000);
});

test('a real click on the page starts the autoclicker, F6 stops it', options, async () => {
  await pointer.pointAt(elementWith('button', 'Start clicking'));
  await fixture.input.click(Button.Left);
  await program.waitForStatus((s) => s.autoClicking, 'it clicks');
  await waitUntil(() => observer.presses().length >= 3, 'clicks arrive elsewhere');
  await fixture.input.tap(Key.F6);
  await program.waitForStatus((s) => !s.autoClicking, 'it stops');
  await waitUntil(
    async () => /Idle/.test(await inspector.evaluate('document.body.innerText')),
    'the page shows it',
  );
});

test('a right click opens no browser menu', options, async () => {
  await pointer.pointAt(elementWith('h2', 'Autoclicker'));
  await inspector.evaluate(`void window.addEventListener('contextmenu',
    (event) => setTimeout(() => (window.menu = event.defaultPrevented ? 'prevented' : 'open')), { once: true })`);
  await fixture.input.click(Button.Right);
  const menu = await waitUntil(() => inspector.evaluate('window.menu'), 'the click arrives');
  assert.equal(menu, 'prevented');
});

// The library's own promise table would keep every answer while the page lives.
test('the page frees the answers of its calls', options, async () => {
  const freed = await inspector.evaluate(`(async () => {
    let freed = 0;
    const registry = new FinalizationRegistry(() => ++freed);
    for (let i = 0; i < 200; ++i) registry.register(await window.getMacroEvents(), i);
    // The page continues to call until the collector has run.
    for (let i = 0; i < 3000 && freed < 150; ++i) {
      await window.getMacroEvents();
      await new Promise((resolve) => setTimeout(resolve, 10));
    }
    return freed;
  })()`);
  assert.ok(freed >= 150, `${freed} of 200 answers are freed`);
});

async function openFileDialog() {
  await inspector.evaluate(
    'window.importProfile().then((answer) => (window.imported = JSON.stringify(answer))), 0',
  );
  await waitUntil(async () => (await observer.window('Open')).active, 'the file dialog');
}

test('the page works while a file dialog is open', options, async () => {
  await openFileDialog();
  const status = await inspector.evaluate('window.getTrackerStatus().then(JSON.stringify)');
  assert.match(status, /"state":"Idle"/);
  assert.equal(await inspector.evaluate('window.imported'), undefined);
  // A second dialog does not open.
  const second = await inspector.evaluate('window.importProfile().then(JSON.stringify)');
  assert.equal(second, '{"outcome":"cancelled"}');
  await tapUntil(
    fixture.input,
    Key.Escape,
    async () => (await inspector.evaluate('window.imported')) === '{"outcome":"cancelled"}',
    'the answer',
  );
});

test('the view takes the size that its page asks for, limited by the screen', options, async () => {
  const innerSize = () => inspector.evaluate('`${innerWidth}x${innerHeight}`');
  await inspector.evaluate('void window.resizeWindow(440, 500)');
  await waitUntil(async () => (await innerSize()) === '440x500', 'the size');
  const before = await observer.windowAtRest(kMainTitle);
  assert.deepEqual([before.width, before.height], [440, 500]);
  await inspector.evaluate('void window.resizeWindow(430, 900)');
  const bottom = (window) => window.outer.top + window.outer.height;
  await waitUntil(async () => {
    const window = await observer.windowAtRest(kMainTitle);
    const fits = window.width === 430 && window.height > 700 && bottom(window) <= fixture.screen.height;
    return fits && (await innerSize()) === `430x${window.height}`;
  }, 'the page has the largest size that fits on the screen');
});

test('closing the window ends the program, its dialog and every process of the view', options, async () => {
  const session = join(installation.data, 'session.dat');
  const { outer } = await observer.windowAtRest(kMainTitle);
  await openFileDialog();
  assert.equal(await program.closeWindow(observer), 0);
  const settings = readFileSync(join(installation.data, 'appsettings.txt'), 'utf8');
  const place = `windowX=${outer.left}\nwindowY=${outer.top}\nwindowWidth=${outer.width}\nwindowHeight=${outer.height}\n`;
  assert.ok(settings.includes(place), `${place} in ${settings}`);
  assert.ok(existsSync(session));
  assert.match(readFileSync(session, 'utf8'), /PROFILE:Large/);
  const left = () =>
    readdirSync('/proc').flatMap((id) => {
      try {
        const own = readFileSync(`/proc/${id}/environ`, 'utf8').includes(installation.env.LOCALAPPDATA);
        return own ? [readFileSync(`/proc/${id}/comm`, 'utf8').trim()] : [];
      } catch {
        return [];
      }
    });
  await waitUntil(async () => !(await observer.window('Open')).found, 'the dialog is gone');
  await waitUntil(() => left().length === 0, 'every process of the view has ended').catch((error) => {
    throw new Error(`${error.message}: ${left()}`);
  });
});
