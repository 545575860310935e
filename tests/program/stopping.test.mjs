// Stop means stop: whatever a macro sends, F7, the Stop command, closing the window and SIGTERM end it. And whatever
// happens to the program, the keyboard and the saved work stay.
import assert from 'node:assert/strict';
import { describe } from 'node:test';
import { readFileSync, writeFileSync } from 'node:fs';
import { join } from 'node:path';
import { kMainTitle, onlyOnLinux, onlyOnWindows, test, testPrograms, useFixture } from './harness.mjs';
import { kQuietMilliseconds, waitUntil } from './processes.mjs';
import { Key, pause } from './xtest_input.mjs';

const fixture = useFixture();
const { input } = fixture;

// Event lines of a session, for the middle of the observer's window. The window manager takes no part in middle clicks.
const kClicks = Array.from({ length: 40000 }, (_, i) => `2,0,770,330,${i % 2 === 0 ? 32 : 64},0,0,0`);
const kEndlessWheel = ['0,0,770,330,0,0,0,0', '4,0,0,0,0,0,0,2147483647'];

// Starts the program with a macro and plays it in a loop.
async function startPlaying(events) {
  const installation = fixture.installWithoutWarnings();
  const session = ['SETTINGS:', 'CURRENT:0', 'PROFILE:Default Tracking Profile', ...events, ''].join('\n');
  writeFileSync(join(installation.data, 'session.dat'), session);
  const { program, observer } = await fixture.startBesideApplication({ installation });
  await program.toggle('Loop', true);
  await program.waitForSettings((s) => s.tloop === true, 'the loop');
  await observer.mute();
  await input.tap(Key.F7);
  await program.waitForStatus((s) => s.state === 'Playing', 'it plays');
  await pause(kQuietMilliseconds);
  return { program, observer };
}

// An application that opens now receives no input.
async function assertNothingArrives() {
  const observer = await fixture.openApplication();
  await pause(kQuietMilliseconds);
  await observer.settle();
  assert.deepEqual(
    observer.events.filter((event) => event.type !== 'move'),
    [],
  );
  return observer;
}

const kWays = [
  ['F7', () => input.tap(Key.F7)],
  ['the Stop command', (program) => program.call('stopPlayback')],
];

for (const [what, events] of [
  ['an endless wheel event', kEndlessWheel],
  ['a loop of clicks at one time', kClicks],
]) {
  for (const [way, stopBy] of kWays) {
    test(`${way} stops ${what}`, async () => {
      const { program, observer } = await startPlaying(events);
      await stopBy(program);
      await program.waitForStatus((s) => s.state === 'Idle', 'it has stopped');
      await observer.kill();
      await assertNothingArrives();
    });
  }

  test(`closing the window stops ${what}`, async () => {
    const { program, observer } = await startPlaying(events);
    assert.equal(await program.closeWindow(observer), 0);
    await observer.kill();
    await assertNothingArrives();
  });

  test(`SIGTERM stops ${what}`, onlyOnLinux('Windows has no such signal'), async () => {
    const { program, observer } = await startPlaying(events);
    program.child.kill('SIGTERM');
    assert.equal((await waitUntil(() => program.child.result, 'the program ends')).code, 0);
    await observer.kill();
    await assertNothingArrives();
  });
}

test('the end of the session saves and ends', onlyOnWindows('SIGTERM ends it on Linux'), async () => {
  const { program, observer } = await fixture.startBesideApplication();
  await program.call('updateSpammer', 0, 0, 0, 63, 0, 0, 1, 10, 0);
  observer.endSession(kMainTitle);
  assert.equal((await waitUntil(() => program.child.result, 'the program ends')).code, 0);
  assert.match(program.readData('session.dat'), /^SETTINGS:0,0,0,63,/);
});

const onLinux = onlyOnLinux('on Windows no signal stops a process, and hooks that do not answer are skipped');

test('a stop from the terminal is ignored', onLinux, async () => {
  const { program } = await fixture.startBesideApplication();
  const ignored = /^SigIgn:\s*([0-9a-f]+)$/m.exec(readFileSync(`/proc/${program.child.pid}/status`, 'utf8'));
  const kSigTstp = 20n;
  assert.ok((BigInt(`0x${ignored[1]}`) >> (kSigTstp - 1n)) & 1n, 'SIGTSTP is ignored');
  program.child.kill('SIGTSTP');
  await input.tap(Key.F6);
  await program.waitForStatus((s) => s.autoClicking, 'the hotkey works');
});

test('a stopped program does not keep the keyboard, and its hotkeys come back', onLinux, async () => {
  const { program, observer } = await fixture.startBesideApplication();
  program.child.kill('SIGSTOP');
  await input.tap(Key.F6);
  await input.tap(Key.K);
  await waitUntil(() => observer.keys().some((key) => key.code === Key.K && !key.down), 'K arrives');
  observer.clear();
  await input.tap(Key.F6);
  await waitUntil(() => observer.keys().length === 2, 'F6 is an ordinary key');
  program.child.kill('SIGCONT');
  await observer.waitUntilGrabbed(`key ${Key.F6}`);
  const { autoClicking } = program.status();
  await input.tap(Key.F6);
  await program.waitForStatus((s) => s.autoClicking !== autoClicking, 'F6 is a hotkey again');
});

test('a disk that does not answer keeps neither the program nor the keyboard', onLinux, async () => {
  const installation = fixture.installWithoutWarnings();
  const mark = join(installation.folder, 'hang');
  installation.env.LD_PRELOAD = join(testPrograms, 'libhang_saves.so');
  installation.env.VARNELLE_TEST_HANG = mark;
  const { program, observer } = await fixture.startBesideApplication({ installation });
  writeFileSync(mark, '');
  await program.enter('Click interval: milliseconds', 47, program.panel('Autoclicker'));
  await waitUntil(() => readFileSync(mark, 'utf8') === 'hangs', 'a save hangs');
  observer.closeWindow(kMainTitle);
  await observer.waitUntilGrabbed(`key ${Key.F8}`, false);
  assert.equal((await waitUntil(() => program.child.result, 'the program ends')).code, 0);
});

describe('with the X server gone', onLinux, () => {
  const own = useFixture();

  test('the last change is saved', onLinux, async () => {
    const program = await own.startProgram();
    const saved = (interval) =>
      waitUntil(() => {
        try {
          return new RegExp(`^SETTINGS:0,0,0,${interval},`).test(program.readData('session.dat'));
        } catch {
          return false; // not yet saved
        }
      }, `an interval of ${interval} is saved`);
    await program.call('updateSpammer', 0, 0, 0, 61, 0, 0, 1, 10, 0);
    await saved(61);
    // The next save would come seconds later.
    await program.call('updateSpammer', 0, 0, 0, 62, 0, 0, 1, 10, 0);
    await own.desktop.killServer();
    await waitUntil(() => program.child.result, 'the program ends');
    await saved(62);
  });
});
