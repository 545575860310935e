// Start, second start, end and kill of the program: what is saved is restored, and input is released.
import assert from 'node:assert/strict';
import { existsSync, mkdirSync, readFileSync, readdirSync } from 'node:fs';
import { join } from 'node:path';
import { kMainTitle, onWindows, test, useFixture } from './harness.mjs';
import { stop, waitUntil } from './processes.mjs';
import { Button, Key, pause } from './xtest_input.mjs';

const fixture = useFixture();
const { input } = fixture;

const session = (installation) => {
  const file = join(installation.data, 'session.dat');
  return existsSync(file) ? readFileSync(file, 'latin1').replaceAll('\r\n', '\n') : '';
};

test('everything is restored after closing and starting again', async () => {
  const installation = fixture.install();
  let { program, observer } = await fixture.startBesideApplication({ installation });

  await program.press('New profile');
  await program.enter('Profile name', 'Second one');
  await waitUntil(
    async () => (await program.call('getProfiles')).current === 1,
    'the new profile is current',
  );
  await program.enter('Click interval: milliseconds', 37, program.panel('Autoclicker'));
  await program.choose('Mouse button', 'Middle', program.panel('Autoclicker'));
  await program.choose('Key spammer hotkey', 'Hold to run', program.panel('Key spammer'));
  await program.enter('Playback speed', 2);
  await program.toggle('Wheel', false);
  await program.waitForSettings(
    (s) => s.sms === 37 && s.sbtn === 2 && s.holdKeySpam && s.tspd === 2 && !s.tscr,
    'the settings',
  );
  await program.press('Change the autoclicker hotkey', program.panel('Hotkeys'));
  await program.waitForCapture(observer, (s) => s.reassigning === 'auto');
  await input.click(Button.Middle);
  await program.waitForStatus((s) => s.hkAuto === 'Middle Mouse', 'the hotkey');
  await input.tap(Key.F8);
  await program.waitForStatus((s) => s.state === 'Recording', 'recording');
  await input.tap(Key.A);
  await pause(50);
  await input.click(Button.Left);
  await input.tap(Key.F8);
  await program.waitForStatus((s) => s.state === 'Idle' && s.count === 4, 'recorded');

  const settings = await program.call('getSettings');
  const profiles = await program.call('getProfiles');
  const events = await program.call('getMacroEvents');
  const status = program.status();
  assert.equal(await program.closeWindow(observer), 0);
  await observer.kill();

  ({ program, observer } = await fixture.startBesideApplication({ installation }));
  assert.deepEqual(await program.call('getSettings'), settings);
  assert.deepEqual(await program.call('getProfiles'), profiles);
  const back = await program.call('getMacroEvents');
  assert.deepEqual(
    back.map((event) => event.desc),
    events.map((event) => event.desc),
  );
  back.forEach((event, index) => assert.ok(Math.abs(event.time - events[index].time) < 1e-5));
  // The undo of a continued recording is not part of a session.
  assert.deepEqual({ ...program.status(), canUndoContinue: false }, { ...status, canUndoContinue: false });
  await input.click(Button.Middle);
  await program.waitForStatus((s) => s.autoClicking, 'the new hotkey works');
  await input.click(Button.Middle);
  await program.waitForStatus((s) => !s.autoClicking, 'and stops it');
});

test('after a kill during a recording the last save is loaded', async () => {
  const installation = fixture.install();
  let { program, observer } = await fixture.startBesideApplication({ installation });
  await program.enter('Click interval: milliseconds', 41, program.panel('Autoclicker'));
  await program.waitForSettings((s) => s.sms === 41, 'the interval');
  await input.tap(Key.F8);
  await program.waitForStatus((s) => s.state === 'Recording', 'recording');
  await input.tap(Key.A);
  await input.tap(Key.F8);
  await program.waitForStatus((s) => s.state === 'Idle' && s.count === 2, 'recorded');
  await waitUntil(
    () => /^SETTINGS:0,0,0,41,/m.test(session(installation)) && /^3,.*\n3,/m.test(session(installation)),
    'a save with both key events',
  );
  const saved = (await program.call('getMacroEvents')).map((event) => event.desc);

  // Clicking and recording, with key presses coming in.
  await input.tap(Key.F6);
  await program.press('Continue');
  await program.waitForStatus((s) => s.state === 'Recording' && s.autoClicking, 'both run');
  await input.tap(Key.B);
  program.child.kill('SIGKILL');
  await program.child.ended;
  await observer.kill();

  ({ program, observer } = await fixture.startBesideApplication({ installation }));
  assert.equal((await program.call('getSettings')).sms, 41);
  const back = (await program.call('getMacroEvents')).map((event) => event.desc);
  assert.deepEqual(back.slice(0, 2), saved);
  assert.deepEqual(
    [program.status().state, program.status().autoClicking, program.status().keySpamming],
    ['Idle', false, false],
  );
  // The killed program holds neither keyboard nor mouse.
  await input.tap(Key.K);
  await input.click(Button.Left);
  await waitUntil(
    () => observer.keys().length === 2 && observer.buttons().length === 2,
    'input reaches others',
  );
});

test('a second start brings the first window to the front and ends with code 0', async () => {
  const installation = fixture.install();
  const { program, observer } = await fixture.startBesideApplication({ installation });
  observer.minimiseWindow(kMainTitle);
  await waitUntil(async () => (await observer.window(kMainTitle)).minimised, 'minimised');
  // The file is empty while the program writes it.
  const savedSession = () => waitUntil(() => session(installation), 'a save');
  const before = await savedSession();
  const second = fixture.startBare(installation);
  try {
    const result = await waitUntil(() => second.result, 'the second one ends');
    assert.equal(result.code, 0);
    const window = await waitUntil(async () => {
      const found = await observer.window(kMainTitle);
      return !found.minimised && found;
    }, 'the first one is restored');
    assert.ok(window.found);
    await waitUntil(async () => (await observer.window(kMainTitle)).active, 'and in front');
    assert.equal(await savedSession(), before, 'the second one saves nothing');
    assert.equal(program.child.result, undefined);
  } finally {
    await stop(second);
  }
});

test(
  'another runtime folder starts no second program over the same data',
  { skip: onWindows && 'the log-on session has no folder there' },
  async () => {
    const installation = fixture.install();
    const { program } = await fixture.startBesideApplication({ installation });
    const before = await waitUntil(() => session(installation), 'a save');
    const run = join(installation.folder, 'other run');
    mkdirSync(run, { mode: 0o700 });
    // On its own display, or without one, the second start finds no window that it could bring to the front.
    const env = { ...installation.env, XDG_RUNTIME_DIR: run, DISPLAY: '' };
    const second = fixture.startBare({ ...installation, env }, [], { stdio: ['ignore', 'ignore', 'pipe'] });
    let message = '';
    second.stderr.on('data', (data) => (message += data));
    try {
      assert.equal((await waitUntil(() => second.result, 'the second one ends')).code, 0);
      await waitUntil(() => message.endsWith('\n'), 'its message');
      assert.equal(
        message,
        `Varnelle: Varnelle is already running as process ${program.child.pid}, but it has no window. ` +
          'End that process, then start Varnelle again.\n',
      );
      assert.equal(session(installation), before, 'the second one saves nothing');
      assert.equal(program.child.result, undefined);
    } finally {
      await stop(second);
    }
  },
);

test('closing the window during playback ends everything', async () => {
  const installation = fixture.install();
  const { program, observer } = await fixture.startBesideApplication({ installation });
  await input.tap(Key.F8);
  await program.waitForStatus((s) => s.state === 'Recording', 'recording');
  await input.tap(Key.A);
  await pause(1000);
  await input.tap(Key.B);
  await input.tap(Key.F8);
  await program.waitForStatus((s) => s.state === 'Idle', 'recorded');
  await program.toggle('Loop', true);
  await program.waitForSettings((s) => s.tloop === true, 'the loop');
  await input.tap(Key.F6);
  await input.tap(Key.F7);
  await program.waitForStatus((s) => s.state === 'Playing' && s.autoClicking, 'it plays and clicks');
  if (!onWindows) assert.ok(program.threadCount() >= 7, 'the engines have their threads');
  assert.equal(await program.closeWindow(observer), 0);
  assert.equal(program.view.closed, true);
  if (!onWindows) assert.equal(program.threadCount(), 0);
  assert.match(session(installation), /^3,[^\n]*,66,1,0$/m);
  await observer.settle();
  const count = observer.events.length;
  await input.tap(Key.F6);
  await waitUntil(
    () => observer.keys().filter((key) => key.code === Key.F6).length === 2,
    'F6 is an ordinary key',
  );
  assert.equal(observer.events.length, count + 2, 'no other input arrives');
});

test('after a kill with a hotkey held, input reaches other applications', async () => {
  const installation = fixture.install();
  const { program, observer } = await fixture.startBesideApplication({ installation });
  await program.choose('Autoclicker hotkey', 'Hold to run', program.panel('Autoclicker'));
  await program.waitForSettings((s) => s.holdAuto === true, 'hold mode');
  await input.keyDown(Key.F6);
  await program.waitForStatus((s) => s.autoClicking, 'it clicks');
  program.child.kill('SIGKILL');
  await program.child.ended;
  await input.keyUp(Key.F6);
  await observer.settle();
  observer.clear();
  await input.tap(Key.F6);
  await input.tap(Key.K);
  await waitUntil(
    () => observer.keys().filter((key) => key.code === Key.K).length === 2,
    'keys reach the application',
  );
  assert.equal(observer.keys().filter((key) => key.code === Key.F6).length, 2, 'F6 too');
  await input.click(Button.Left);
  await waitUntil(() => observer.buttons().length === 2, 'and buttons');
  if (!onWindows) {
    // No process runs from the program's folder.
    const left = readdirSync('/proc')
      .filter((name) => /^\d+$/.test(name))
      .filter((id) => {
        try {
          return readFileSync(`/proc/${id}/cmdline`, 'utf8').startsWith(installation.program);
        } catch {
          return false;
        }
      });
    assert.deepEqual(left, []);
  }
});
