// Application settings: commands set them, the file keeps them, the desktop shows their effect.
import assert from 'node:assert/strict';
import { spawnSync } from 'node:child_process';
import { chmodSync, existsSync, mkdirSync, readFileSync, writeFileSync } from 'node:fs';
import { delimiter, join } from 'node:path';
import { kMainTitle, nativePath, onWindows, test, useFixture } from './harness.mjs';
import { waitUntil } from './processes.mjs';
import { Key } from './xtest_input.mjs';

const fixture = useFixture();
const { input } = fixture;

const kDefaults = {
  alwaysOnTop: false,
  launchOnStartup: false,
  startMinimized: false,
  hotkeysEnabled: true,
  hotkeyLock: true,
  stopToolsWithMacro: true,
  disableAnimations: false,
  showWarnings: true,
  seenWarnings: ['first-layout'], // not the first start
  minimizedPanels: [],
  panelOrder: [],
};

// Returns the file's lines as an object.
function settingsFile(program) {
  const lines = program.readData('appsettings.txt').split('\n');
  assert.equal(lines.pop(), '', 'the last line ends with a line break');
  return Object.fromEntries(lines.map((line) => line.split(/=(.*)/s).slice(0, 2)));
}

// Returns the command that starts the program with the session; empty without one.
function startsWithSession(installation) {
  if (onWindows) {
    const key = 'HKCU\\Software\\Microsoft\\Windows\\CurrentVersion\\Run';
    const { status, stdout } = spawnSync('wine', ['reg', 'query', key, '/v', 'Varnelle'], {
      encoding: 'utf8',
      timeout: 30000,
    });
    return status === 0 ? /REG_SZ\s+(.*?)\r?\n/.exec(stdout)[1] : '';
  }
  const entry = join(installation.env.XDG_CONFIG_HOME, 'autostart/varnelle.desktop');
  return existsSync(entry) ? /^Exec=(.*)$/m.exec(readFileSync(entry, 'utf8'))[1] : '';
}

test('a changed setting is saved at once and restored after a restart', async () => {
  const installation = fixture.install();
  let { program, observer } = await fixture.startBesideApplication({ installation });
  assert.deepEqual(await program.call('getAppSettings'), kDefaults);

  const set = (key, value) => program.call('setAppSetting', `${key},${value}`);
  assert.equal(await set('disableAnimations', 1), undefined);
  assert.equal(settingsFile(program).disableAnimations, '1');
  await program.call('setAppSetting', 'showWarnings', 0); // as two arguments
  assert.equal(settingsFile(program).showWarnings, '0');
  await set('stopToolsWithMacro', 0);
  assert.equal(settingsFile(program).stopToolsWithMacro, '0');
  await set('hotkeyLock', 0);
  assert.equal(settingsFile(program).hotkeyLockOn, '0');
  for (const panel of ['panel-tracker', 'panel-ui', 'panel-other']) await set(`min:${panel}`, 1);
  assert.equal(settingsFile(program).minimizedPanels, 'panel-tracker,panel-ui');
  assert.equal(await program.call('setPanelOrder', 'panel-tracker,panel-ui'), undefined);
  await program.call('setPanelOrder', 'panel-ui,panel-ui');
  assert.equal(settingsFile(program).panelOrder, 'panel-tracker,panel-ui');
  assert.equal(await program.call('markWarningSeen', 'zero-interval'), undefined);
  await program.call('markWarningSeen', 'loop');
  assert.equal(settingsFile(program).seenWarnings, 'first-layout,loop,zero-interval');

  const expected = {
    ...kDefaults,
    disableAnimations: true,
    showWarnings: false,
    stopToolsWithMacro: false,
    hotkeyLock: false,
    minimizedPanels: ['panel-tracker', 'panel-ui'],
    panelOrder: ['panel-tracker', 'panel-ui'],
    seenWarnings: ['first-layout', 'loop', 'zero-interval'],
  };
  assert.deepEqual(await program.call('getAppSettings'), expected);
  assert.equal((await program.call('getTrackerStatus')).lockOn, false);
  assert.equal(await program.closeWindow(observer), 0);
  await observer.kill();

  ({ program, observer } = await fixture.startBesideApplication({ installation }));
  assert.deepEqual(await program.call('getAppSettings'), expected);
  assert.equal((await program.call('getTrackerStatus')).lockOn, false);
});

test('hotkeys that are off reach the application', async () => {
  const { program, observer } = await fixture.startBesideApplication();
  await program.call('setAppSetting', 'hotkeysEnabled,0');
  await observer.waitUntilGrabbed(`key ${Key.F6}`, false);
  await observer.waitUntilGrabbed(`key ${Key.F10}`, false);
  await input.tap(Key.F6);
  await input.tap(Key.F10);
  await waitUntil(() => observer.keys().length === 4, 'both keys reach the application');
  assert.equal((await program.call('getTrackerStatus')).unlocked, true);

  await program.call('setAppSetting', 'hotkeysEnabled,1');
  await observer.waitUntilGrabbed(`key ${Key.F10}`);
  observer.clear();
  await input.tap(Key.F10);
  const locked = await program.waitForStatus((s) => !s.unlocked, 'locked');
  await observer.settle();
  assert.deepEqual(observer.keys(), [], 'F10 does not reach the application');
  assert.equal(locked.lockOn, true);
  // Switching the lock, either way, frees the hotkeys.
  await program.call('setAppSetting', 'hotkeyLock,1');
  assert.equal((await program.call('getTrackerStatus')).unlocked, true);
});

test('always on top keeps the window above others', async () => {
  const { program, observer } = await fixture.startBesideApplication();
  const before = await observer.windowAtRest(kMainTitle);
  assert.equal(before.onTop, false);
  for (const [value, onTop] of [
    ['1', true],
    ['0', false],
    ['1', true],
    ['yes', false],
  ]) {
    await program.call('setAppSetting', `alwaysOnTop,${value}`);
    const window = await waitUntil(async () => {
      const now = await observer.window(kMainTitle);
      return now.onTop === onTop && now;
    }, `on top: ${onTop}`);
    assert.deepEqual(
      [window.x, window.y, window.width, window.height],
      [before.x, before.y, before.width, before.height],
    );
    assert.equal(settingsFile(program).alwaysOnTop, onTop ? '1' : '0');
  }
});

test('the autostart entry follows the setting and a moved program', async () => {
  const installation = fixture.install();
  let program = await fixture.startProgram({ installation });
  assert.equal(startsWithSession(installation), '');
  await program.call('setAppSetting', 'launchOnStartup,1');
  assert.equal(startsWithSession(installation), `"${nativePath(installation.program)}"`);
  assert.equal(settingsFile(program).launchOnStartup, '1');
  await program.kill();

  // The program has moved: its settings are in another installation.
  const moved = fixture.install();
  mkdirSync(moved.data);
  writeFileSync(join(moved.data, 'appsettings.txt'), 'launchOnStartup=1\n');
  program = await fixture.startProgram({ installation: moved });
  assert.equal(startsWithSession(moved), `"${nativePath(moved.program)}"`);
  await program.call('setAppSetting', 'launchOnStartup,0');
  assert.equal(startsWithSession(moved), '');
  await program.call('setAppSetting', 'launchOnStartup,0');
  assert.equal(startsWithSession(moved), '');
});

test('a known link opens outside the program, an unknown one does not', async () => {
  const installation = fixture.install();
  // Wine opens addresses with the same program as the Linux backend.
  const told = join(installation.folder, 'opened');
  const opener = join(installation.folder, 'xdg-open');
  writeFileSync(opener, `#!/bin/sh\nprintf '%s\\n' "$*" >>'${told}'\n`);
  chmodSync(opener, 0o755);
  installation.env.PATH = `${installation.folder}${delimiter}${process.env.PATH}`;
  const program = await fixture.startProgram({ installation });
  const opened = () => (existsSync(told) ? readFileSync(told, 'utf8').trim().split('\n') : []);
  assert.equal(await program.call('openLink', 'elsewhere'), undefined);
  assert.equal(await program.call('openLink', 'docs'), undefined);
  await waitUntil(() => opened().length === 1, 'the documentation opens');
  await program.call('openLink', 'discord');
  await waitUntil(() => opened().length === 2, 'the community opens');
  assert.deepEqual(opened(), ['https://docs.varnelle.example/', 'https://community.varnelle.example/']);
});
