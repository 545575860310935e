// Hotkeys by a hand on the keyboard: hold mode, the lock, capture of a new binding.
import assert from 'node:assert/strict';
import { after, afterEach, before, test } from 'node:test';
import { onWindows, openWorld } from './harness.mjs';
import { kQuietMilliseconds, waitUntil } from './processes.mjs';
import { Button, Key, pause } from './real_hand.mjs';

const limit = { timeout: 240000 };

let world;
let hand;
let program;
let observer;

before(async () => {
  world = await openWorld();
  hand = world.hand;
}, limit);
afterEach(async () => {
  world.desktop.repeatKeys(false);
  await world.closeOpened();
}, limit);
after(() => world?.close(), limit);

async function begin() {
  program = await world.startProgram();
  observer = await world.openApplication();
  await program.enter('Click interval: milliseconds', 20, program.panel('Autoclicker'));
  await program.waitForSettings((s) => s.sms === 20, 'the interval');
}

const hotkeys = () => program.panel('Hotkeys');
const clicking = (on) => program.waitForStatus((s) => s.autoClicking === on, `clicking is ${on}`);

async function capture(what, press, done) {
  await program.press(`Change the ${what} hotkey`, hotkeys());
  await program.waitForCapture();
  await press();
  await program.waitForStatus((s) => s.reassigning === '' && done(s), 'the capture is over');
}

test('in hold mode the tool runs while the hotkey is held', limit, async () => {
  await begin();
  await program.choose('Autoclicker hotkey', 'Hold to run', program.panel('Autoclicker'));
  await program.waitForSettings((s) => s.holdAuto === true, 'hold mode');
  world.desktop.repeatKeys(true);
  await hand.keyDown(Key.F6);
  await clicking(true);
  await waitUntil(() => observer.presses().length > 20, 'it clicks on while the key is held');
  assert.equal(program.status().autoClicking, true);
  await hand.keyUp(Key.F6);
  await clicking(false);
  await observer.settle();
  const count = observer.presses().length;
  assert.deepEqual(observer.keys(), [], 'neither press, repeat nor release reaches the application');
  await observer.settle();
  assert.equal(observer.presses().length, count);
});

test('holding a toggle hotkey does not flip it again', limit, async () => {
  await begin();
  world.desktop.repeatKeys(true);
  await hand.keyDown(Key.F6);
  await clicking(true);
  // Longer than a keyboard takes to begin repeating.
  await waitUntil(() => observer.presses().length > 80, 'it clicks on');
  assert.equal(program.status().autoClicking, true);
  await hand.keyUp(Key.F6);
  await pause(kQuietMilliseconds);
  assert.equal(program.status().autoClicking, true);
  await hand.tap(Key.F6);
  await clicking(false);
  assert.deepEqual(observer.keys(), []);
});

test('the lock stops the tools and lets the other hotkeys through as ordinary keys', limit, async () => {
  await begin();
  await hand.tap(Key.F6);
  await clicking(true);
  await hand.tap(Key.F10);
  await program.waitForStatus((s) => !s.unlocked && !s.autoClicking, 'locked, and it stops');
  await program.waitForStateText(/locked[\s\S]*F10/i);
  await observer.settle();
  assert.deepEqual(observer.keys(), [], 'the unlock key is consumed');
  await hand.tap(Key.F6);
  await waitUntil(() => observer.keys().length === 2, 'F6 is an ordinary key now');
  assert.equal(program.status().autoClicking, false);
  await hand.tap(Key.F10);
  await program.waitForUnlocked();
  observer.clear();
  await hand.tap(Key.F6);
  await clicking(true);
  await hand.tap(Key.F6);
  await clicking(false);
  await observer.settle();
  assert.deepEqual(observer.keys(), []);
});

test('a hotkey is captured from the keyboard, and the old key is free', limit, async () => {
  await begin();
  const before = program.status().hkAuto;
  await capture(
    'autoclicker',
    () => hand.tap(Key.F11),
    (s) => s.hkAuto !== before,
  );
  if (!onWindows) assert.equal(program.status().hkAuto, 'F11');
  await observer.settle();
  assert.deepEqual(
    observer.keys().filter((key) => key.down),
    [],
    'the captured press reaches nothing',
  );
  observer.clear();
  await hand.tap(Key.F6);
  await waitUntil(() => observer.keys().length === 2, 'F6 is an ordinary key now');
  await hand.tap(Key.F11);
  await clicking(true);
  await hand.tap(Key.F11);
  await clicking(false);
});

test('a mouse button can be a hotkey', limit, async () => {
  await begin();
  await capture(
    'autoclicker',
    () => hand.click(Button.Middle),
    (s) => s.hkAuto === 'Middle Mouse',
  );
  await observer.settle();
  assert.deepEqual(observer.presses(), [], 'the captured press reaches nothing');
  observer.clear();
  await hand.click(Button.Middle);
  await clicking(true);
  await waitUntil(() => observer.presses().length > 3, 'it clicks');
  await hand.click(Button.Middle);
  await clicking(false);
  await observer.settle();
  assert.ok(observer.presses().every((press) => press.button === Button.Left));
});

test('Escape ends a capture and changes nothing', limit, async () => {
  await begin();
  const before = program.status();
  await capture(
    'play',
    () => hand.tap(Key.Escape),
    () => true,
  );
  for (const field of ['hkRec', 'hkPlay', 'hkAuto', 'hkKeySpam', 'hkUnlock']) {
    assert.equal(program.status()[field], before[field]);
  }
  await observer.settle();
  assert.deepEqual(
    observer.keys().filter((key) => key.down),
    [],
    'the Escape reaches nothing',
  );
});

test(
  'a click does not become a key to press: it reaches the application and the capture waits on',
  limit,
  async () => {
    await begin();
    const count = program.status().keySpamTargets.length;
    await program.press('Add key', program.panel('Key spammer'));
    await program.waitForCapture((s) => s.reassigning === 'keyspamtarget');
    await hand.click(Button.Left);
    await waitUntil(() => observer.buttons().length === 2, 'the click reaches the application');
    assert.equal(program.status().reassigning, 'keyspamtarget');
    await hand.tap(Key.G);
    await program.waitForStatus(
      (s) => s.keySpamTargets.length === count + 1 && s.reassigning === '',
      'a key does',
    );
  },
);

test('resetting brings the hotkeys back', limit, async () => {
  await begin();
  const before = program.status();
  await capture(
    'autoclicker',
    () => hand.tap(Key.F12),
    (s) => s.hkAuto !== before.hkAuto,
  );
  await program.press('Reset hotkeys', hotkeys());
  await program.press('Reset now', hotkeys());
  await program.waitForStatus((s) => s.hkAuto === before.hkAuto, 'back');
  await hand.tap(Key.F6);
  await clicking(true);
  await hand.tap(Key.F6);
  await clicking(false);

  // And undone: the page asks for the key that the reset has taken.
  await program.press('Undo the reset', hotkeys());
  await program.waitForCapture();
  await hand.tap(Key.F12);
  await program.waitForStatus((s) => s.reassigning === '' && s.hkAuto !== before.hkAuto, 'the own key again');
  await program.button('Undo the reset').waitFor({ state: 'detached' });
  await hand.tap(Key.F12);
  await clicking(true);
  await hand.tap(Key.F12);
  await clicking(false);
});
