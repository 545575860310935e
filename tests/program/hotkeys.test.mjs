// Hotkeys pressed on a real keyboard: hold mode, the lock, capture of a new hotkey.
import assert from 'node:assert/strict';
import { afterEach } from 'node:test';
import { onWindows, test, useFixture } from './harness.mjs';
import { kQuietMilliseconds, waitUntil } from './processes.mjs';
import { Button, Key, pause } from './xtest_input.mjs';

const fixture = useFixture();
const { input } = fixture;
let program;
let observer;

afterEach(() => fixture.desktop.repeatKeys(false));

async function begin() {
  ({ program, observer } = await fixture.startBesideApplication());
  await program.enter('Click interval: milliseconds', 20, program.panel('Autoclicker'));
  await program.waitForSettings((s) => s.sms === 20, 'the interval');
}

const hotkeys = () => program.panel('Hotkeys');
const clicking = (on) => program.waitForStatus((s) => s.autoClicking === on, `clicking is ${on}`);

async function capture(what, press, done) {
  await program.press(`Change the ${what} hotkey`, hotkeys());
  await program.waitForCapture(observer);
  await press();
  await program.waitForStatus((s) => s.reassigning === '' && done(s), 'the capture is over');
}

test('in hold mode the tool runs while the hotkey is held', async () => {
  await begin();
  await program.choose('Autoclicker hotkey', 'Hold to run', program.panel('Autoclicker'));
  await program.waitForSettings((s) => s.holdAuto === true, 'hold mode');
  fixture.desktop.repeatKeys(true);
  await input.keyDown(Key.F6);
  await clicking(true);
  await waitUntil(() => observer.presses().length > 20, 'it clicks while the key is held');
  assert.equal(program.status().autoClicking, true);
  await input.keyUp(Key.F6);
  await clicking(false);
  await observer.settle();
  const count = observer.presses().length;
  assert.deepEqual(observer.keys(), [], 'neither press, repeat nor release reaches the application');
  await observer.settle();
  assert.equal(observer.presses().length, count);
});

test('a held toggle hotkey toggles once', async () => {
  await begin();
  fixture.desktop.repeatKeys(true);
  await input.keyDown(Key.F6);
  await clicking(true);
  // Longer than the delay before a keyboard repeats.
  await waitUntil(() => observer.presses().length > 80, 'it continues clicking');
  assert.equal(program.status().autoClicking, true);
  await input.keyUp(Key.F6);
  await pause(kQuietMilliseconds);
  assert.equal(program.status().autoClicking, true);
  await input.tap(Key.F6);
  await clicking(false);
  assert.deepEqual(observer.keys(), []);
});

test('the lock stops the tools, and the other hotkeys become ordinary keys', async () => {
  await begin();
  await input.tap(Key.F6);
  await clicking(true);
  await input.tap(Key.F10);
  await program.waitForStatus((s) => !s.unlocked && !s.autoClicking, 'locked, and it stops');
  await program.waitForStateText(/locked[\s\S]*F10/i);
  await observer.settle();
  assert.deepEqual(observer.keys(), [], 'the unlock key is consumed');
  await input.tap(Key.F6);
  await waitUntil(() => observer.keys().length === 2, 'F6 is an ordinary key now');
  assert.equal(program.status().autoClicking, false);
  await input.tap(Key.F10);
  await program.waitForUnlocked(observer);
  observer.clear();
  await input.tap(Key.F6);
  await clicking(true);
  await input.tap(Key.F6);
  await clicking(false);
  await observer.settle();
  assert.deepEqual(observer.keys(), []);
});

test('Lock now does what the unlock hotkey does, and that key unlocks', async () => {
  await begin();
  await input.tap(Key.F6);
  await clicking(true);
  await program.press('Lock now');
  await program.waitForStatus((s) => !s.unlocked && !s.autoClicking, 'locked, and it stops');
  await program.waitForStateText(/locked[\s\S]*F10/i);
  await observer.waitUntilGrabbed(`key ${Key.F6}`, false);
  await observer.takeFocus();
  await observer.settle();
  observer.clear();
  await input.tap(Key.F6);
  await waitUntil(() => observer.keys().length === 2, 'F6 is an ordinary key now');
  assert.equal(program.status().autoClicking, false);
  await input.tap(Key.F10);
  await program.waitForUnlocked(observer);
});

test('a captured key becomes the hotkey, and the old one an ordinary key', async () => {
  await begin();
  const before = program.status().hkAuto;
  await capture(
    'autoclicker',
    () => input.tap(Key.F11),
    (s) => s.hkAuto !== before,
  );
  if (!onWindows) assert.equal(program.status().hkAuto, 'F11');
  await observer.settle();
  assert.deepEqual(
    observer.keys().filter((key) => key.down),
    [],
    'the captured press does not reach the application',
  );
  observer.clear();
  await input.tap(Key.F6);
  await waitUntil(() => observer.keys().length === 2, 'F6 is an ordinary key now');
  await input.tap(Key.F11);
  await clicking(true);
  await input.tap(Key.F11);
  await clicking(false);
});

test('a mouse button can be a hotkey', async () => {
  await begin();
  await capture(
    'autoclicker',
    () => input.click(Button.Middle),
    (s) => s.hkAuto === 'Middle Mouse',
  );
  await observer.settle();
  assert.deepEqual(observer.presses(), [], 'the captured press does not reach the application');
  observer.clear();
  await input.click(Button.Middle);
  await clicking(true);
  await waitUntil(() => observer.presses().length > 3, 'it clicks');
  await input.click(Button.Middle);
  await clicking(false);
  await observer.settle();
  assert.ok(observer.presses().every((press) => press.button === Button.Left));
});

test('Escape cancels a capture', async () => {
  await begin();
  const before = program.status();
  await capture(
    'play',
    () => input.tap(Key.Escape),
    () => true,
  );
  for (const field of ['hkRec', 'hkPlay', 'hkAuto', 'hkKeySpam', 'hkUnlock']) {
    assert.equal(program.status()[field], before[field]);
  }
  await observer.settle();
  assert.deepEqual(
    observer.keys().filter((key) => key.down),
    [],
    'the Escape does not reach the application',
  );
});

test('a click during the capture of a key reaches the application, and the capture continues', async () => {
  await begin();
  const count = program.status().keySpamTargets.length;
  await program.press('Add key', program.panel('Key spammer'));
  await program.waitForCapture(observer, (s) => s.reassigning === 'keyspamtarget');
  await input.click(Button.Left);
  await waitUntil(() => observer.buttons().length === 2, 'the click reaches the application');
  assert.equal(program.status().reassigning, 'keyspamtarget');
  await input.tap(Key.G);
  await program.waitForStatus(
    (s) => s.keySpamTargets.length === count + 1 && s.reassigning === '',
    'a key is captured',
  );
});

test('a reset restores the default hotkeys, and Undo the captured one', async () => {
  await begin();
  const before = program.status();
  await capture(
    'autoclicker',
    () => input.tap(Key.F12),
    (s) => s.hkAuto !== before.hkAuto,
  );
  await program.press('Reset hotkeys', hotkeys());
  await program.waitForStatus((s) => s.hkAuto === before.hkAuto, 'back');
  await input.tap(Key.F6);
  await clicking(true);
  await input.tap(Key.F6);
  await clicking(false);

  // Undo sets the key again that the reset removed.
  await program.press('Undo: All hotkeys have their default keys again.');
  await program.waitForStatus((s) => s.hkAuto !== before.hkAuto, 'the captured key again');
  await input.tap(Key.F12);
  await clicking(true);
  await input.tap(Key.F12);
  await clicking(false);
});
