// Macros in and out through the system's own file dialogs, typed into by a real hand; what the page's commands answer.
import assert from 'node:assert/strict';
import { existsSync, readFileSync, readdirSync } from 'node:fs';
import { join } from 'node:path';
import { after, afterEach, before, test } from 'node:test';
import {
  dialogIsOpen,
  giveFile,
  kOpen,
  kSaveAs,
  tapUntil,
  typeFileName,
  waitForDialog,
} from './file_dialogs.mjs';
import { kMainTitle, nativePath, onWindows, openWorld, putFile, runNative } from './harness.mjs';
import { kQuietMilliseconds, waitUntil } from './processes.mjs';
import { Key, pause } from './real_hand.mjs';

const limit = { timeout: 240000 };
const onLinux = (reason) => ({ ...limit, skip: onWindows && reason });

const kClean = 'Clean\nSETTINGS:\n0,0.5,10,10,0,0,0,0\n3,0.75,0,0,0,65,1,0\n3,1.25,0,0,0,65,0,0\n';
// Win+R is worth a look before it is let in.
const kHeld =
  'Held\nSETTINGS:\n3,1.25,0,0,0,91,1,0\n3,1.5,0,0,0,82,1,0\n3,1.75,0,0,0,91,0,0\n3,1.8,0,0,0,82,0,0\n';
const kNoDialog =
  'Varnelle cannot ask for a file because this desktop offers no file dialog; install the package zenity, ' +
  'or xdg-desktop-portal with its part for your desktop, and try again.';
const kUnreadable =
  "That macro file could not be imported - it may be corrupted or from a version this build doesn't recognize. " +
  "Since this is recorded work, it's worth checking the original file is intact before trying again.";

let world;
let hand;
let observer;

before(async () => {
  world = await openWorld();
  hand = world.hand;
}, limit);
afterEach(() => world.closeOpened(), limit);
after(() => world?.close(), limit);

async function startProgram(installation, args = []) {
  const started = await world.startProgramForDialogs(installation, args);
  observer = started.observer;
  return started.program;
}

// A page's call that waits for a dialog. Resolves with the promise of its answer once the dialog has the keyboard.
async function callForDialog(program, name, title) {
  const answer = program.call(name);
  answer.catch(() => {});
  await waitForDialog(observer, title);
  return { answer };
}

async function importByDialog(program, file) {
  const { answer } = await callForDialog(program, 'importProfile', kOpen);
  await giveFile(hand, observer, kOpen, file);
  return answer;
}

async function typeNameToSave(program, file) {
  const { answer } = await callForDialog(program, 'exportProfile', kSaveAs);
  await typeFileName(hand, kSaveAs, file);
  return { answer };
}

async function exportByDialog(program, file) {
  const { answer } = await callForDialog(program, 'exportProfile', kSaveAs);
  await giveFile(hand, observer, kSaveAs, file);
  return answer;
}

async function profiles(program) {
  const { current, names } = await program.call('getProfiles');
  return { current: names[current], names };
}

const descriptions = async (program) => (await program.call('getMacroEvents')).map((event) => event.desc);

test('a macro without findings comes in by the dialog and is current', limit, async () => {
  const installation = world.install();
  const file = putFile(installation, 'a.vrlmacro', kClean);
  const program = await startProgram(installation);
  assert.deepEqual(await importByDialog(program, file), { outcome: 'imported' });
  assert.equal((await profiles(program)).current, 'Clean (Imported)');
  await program.waitForStatus((s) => s.count === 3, 'the status tells its events');
  await waitUntil(
    () => program.readMirror('macroevents.txt')?.some(({ desc }) => /VK: 65/.test(desc)),
    'and so does the mirror',
  );
  assert.deepEqual(await importByDialog(program, file), { outcome: 'imported' });
  assert.deepEqual((await profiles(program)).names.slice(1), ['Clean (Imported)', 'Clean (Imported) (2)']);
  assert.equal(existsSync(file), true);
});

test('a macro with findings is held until the page says yes', limit, async () => {
  const installation = world.install();
  const file = putFile(installation, 'a.vrlmacro', kHeld);
  const program = await startProgram(installation);
  await program.page.evaluate(() => {
    window.told = 0;
    window.onProfileImported = () => ++window.told;
  });
  const first = await importByDialog(program, file);
  assert.equal(first.outcome, 'pending');
  assert.match(first.pendingId, /^[0-9a-f]{32}$/);
  assert.equal(first.level, 'caution');
  assert.deepEqual(first.matches, [
    { severity: 'CAUTION', message: 'Uses Windows system shortcuts.', atSec: 1.5 },
  ]);
  assert.deepEqual(await program.call('getPendingMacroImport'), first);
  assert.deepEqual((await profiles(program)).names.length, 1);

  await program.call('cancelMacroImport', first.pendingId);
  assert.deepEqual(await program.call('getPendingMacroImport'), { outcome: 'none' });
  assert.equal(await program.page.evaluate(() => window.told), 0);

  const second = await importByDialog(program, file);
  assert.notEqual(second.pendingId, first.pendingId);
  await program.call('confirmMacroImport', first.pendingId);
  assert.equal((await profiles(program)).names.length, 1);
  await program.call('confirmMacroImport', second.pendingId);
  await waitUntil(() => program.page.evaluate(() => window.told === 1), 'the page is told');
  await program.call('confirmMacroImport', second.pendingId);
  assert.deepEqual(await profiles(program), {
    current: 'Held (Imported)',
    names: ['Default Tracking Profile', 'Held (Imported)'],
  });
  await program.waitForStatus((s) => s.count === 4, 'the status tells its events');
  assert.equal(await program.page.evaluate(() => window.told), 1);
});

test('closed dialogs change nothing', limit, async () => {
  const installation = world.install();
  const program = await startProgram(installation);
  const before = await profiles(program);
  const dismiss = (title) =>
    tapUntil(hand, Key.Escape, async () => !(await dialogIsOpen(observer, title)), 'the dialog is gone');
  const open = await callForDialog(program, 'importProfile', kOpen);
  await dismiss(kOpen);
  assert.deepEqual(await open.answer, { outcome: 'cancelled' });
  const save = await callForDialog(program, 'exportProfile', kSaveAs);
  await dismiss(kSaveAs);
  assert.equal(await save.answer, undefined);
  assert.deepEqual(await profiles(program), before);
  // (The dialog keeps notes of its own there.)
  assert.deepEqual(
    readdirSync(installation.files).filter((name) => !name.startsWith('.')),
    [],
  );
});

test('old recordings are refused in words', limit, async () => {
  const installation = world.install();
  const file = putFile(installation, 'OLD.MCR', kClean);
  const program = await startProgram(installation);
  assert.deepEqual(await importByDialog(program, file), {
    outcome: 'error',
    message:
      '.mcr files are no longer supported. Re-export that profile as .vrlmacro from whatever version of Varnelle ' +
      'created it, then import that instead.',
  });
  const empty = putFile(installation, 'a.vrlmacro', '');
  assert.deepEqual(await importByDialog(program, empty), {
    outcome: 'error',
    message: 'That macro file is missing its profile name.',
  });
  assert.equal((await profiles(program)).names.length, 1);
});

test('what is exported comes back with the same events', limit, async () => {
  const installation = world.install();
  const program = await startProgram(installation);
  await importByDialog(program, putFile(installation, 'a.vrlmacro', kClean));
  const events = await program.call('getMacroEvents');
  // Without an extension: the dialog's answer gets it.
  assert.equal(await exportByDialog(program, join(installation.files, 'out')), undefined);
  const target = join(installation.files, 'out.vrlmacro');
  await waitUntil(() => existsSync(target), 'the file is there');
  const lineEnd = onWindows ? '\r\n' : '\n';
  assert.equal(readFileSync(target, 'latin1').split(lineEnd)[0], 'Clean (Imported)');
  assert.match(readFileSync(target, 'latin1').split(lineEnd)[1], /^SETTINGS:(\d[^,]*,){35}\d+$/);
  assert.deepEqual(await importByDialog(program, target), { outcome: 'imported' });
  assert.equal((await profiles(program)).current, 'Clean (Imported) (Imported)');
  assert.deepEqual(await program.call('getMacroEvents'), events);
});

test('a file is overwritten only by a second yes', limit, async () => {
  const installation = world.install();
  const target = putFile(installation, 'out.vrlmacro', 'precious');
  const program = await startProgram(installation);
  let answered;
  // Leaves the dialog with the question in front of it.
  const askToOverwrite = async (name) => {
    const { answer } = await typeNameToSave(program, join(installation.files, name));
    answered = false;
    answer.finally(() => (answered = true));
    await hand.tap(Key.Enter);
    await pause(2 * kQuietMilliseconds);
    assert.equal(answered, false);
    assert.equal(readFileSync(target, 'latin1'), 'precious');
  };
  const sayNo = async () => {
    if (onWindows) await hand.tap(Key.N); // its question has no way out but yes and no
    await tapUntil(hand, Key.Escape, () => answered, 'no, and away');
  };
  for (const name of ['out.vrlmacro', 'out']) {
    await askToOverwrite(name);
    await sayNo();
    assert.equal(readFileSync(target, 'latin1'), 'precious');
  }
  // Where the dialog has lost a key of the name, the question is another one, and everything begins again.
  await waitUntil(async () => {
    await askToOverwrite('out.vrlmacro');
    const yes = onWindows ? Key.Y : Key.Enter;
    await tapUntil(hand, yes, () => answered, 'yes', 6000).catch(sayNo);
    return readFileSync(target, 'latin1') !== 'precious';
  }, 'the file is overwritten');
  assert.match(readFileSync(target, 'latin1'), /^Default Tracking Profile\r?\nSETTINGS:/);
});

test('engines and hotkeys serve on while a dialog is open', limit, async () => {
  const installation = world.install();
  const program = await startProgram(installation);
  const { answer } = await callForDialog(program, 'importProfile', kOpen);
  await hand.tap(Key.F8);
  // The session is saved every five seconds, what has been recorded so far included.
  const session = join(installation.data, 'session.dat');
  let x = 0;
  await waitUntil(async () => {
    x = (x + 5) % 400;
    await hand.moveTo(300 + x, 400);
    await pause(20);
    return existsSync(session) && /^[01],\d/m.test(readFileSync(session, 'latin1'));
  }, 'moves are recorded and saved');
  await hand.tap(Key.F8);
  await tapUntil(hand, Key.Escape, async () => !(await dialogIsOpen(observer, kOpen)), 'the dialog is gone');
  assert.deepEqual(await answer, { outcome: 'cancelled' });
  const status = await program.waitForStatus((s) => s.state === 'Idle' && s.count > 0, 'it was recorded');
  assert.ok(status.count >= 2, `${status.count} events`);
  await waitUntil(async () => (await descriptions(program)).some((text) => /Move/.test(text)), 'the moves');
});

test('a window that is closed takes its dialog along', limit, async () => {
  const installation = world.install();
  const program = await startProgram(installation);
  await callForDialog(program, 'importProfile', kOpen);
  if (onWindows) observer.closeWindow(kMainTitle);
  else program.child.kill('SIGTERM'); // a page without GTK hears of its window only behind the dialog
  const result = await waitUntil(() => program.child.result, 'the program ends');
  assert.equal(result.code, 0);
  await waitUntil(async () => !(await dialogIsOpen(observer, kOpen)), 'the dialog is gone');
  assert.match(readFileSync(join(installation.data, 'session.dat'), 'latin1'), /PROFILE:Default/);
});

function childrenOf(processId) {
  return readdirSync(`/proc/${processId}/task`).flatMap((task) =>
    readFileSync(`/proc/${processId}/task/${task}/children`, 'utf8')
      .trim()
      .split(' ')
      .filter(Boolean)
      .map(Number),
  );
}

test(
  'a dialog whose process dies is said, and the next one opens',
  onLinux('the dialog is no process of its own there'),
  async () => {
    const installation = world.install();
    const file = putFile(installation, 'a.vrlmacro', kClean);
    const program = await startProgram(installation);
    const { answer } = await callForDialog(program, 'importProfile', kOpen);
    const helpers = childrenOf(program.child.pid);
    assert.equal(helpers.length, 1);
    process.kill(helpers[0], 'SIGKILL');
    assert.deepEqual(await answer, {
      outcome: 'error',
      message: 'The file dialog (zenity) broke off. Please try again.',
    });
    assert.deepEqual(childrenOf(program.child.pid), []);
    assert.deepEqual(await importByDialog(program, file), { outcome: 'imported' });
    // The other way round: no dialog is left standing by a program that was killed.
    await callForDialog(program, 'importProfile', kOpen);
    program.child.kill('SIGKILL');
    await waitUntil(async () => !(await dialogIsOpen(observer, kOpen)), 'the dialog is gone');
  },
);

test(
  'without any dialog the person reads what to install',
  onLinux('Windows always has its dialogs'),
  async () => {
    const installation = world.install();
    installation.env.PATH = installation.files;
    const program = await startProgram(installation);
    const alert = program.page.getByRole('alert');
    assert.deepEqual(await program.call('importProfile'), { outcome: 'error', message: kNoDialog });
    assert.equal(await alert.innerText(), '');
    assert.equal(await program.call('exportProfile'), undefined);
    await alert.getByText(kNoDialog).waitFor();
  },
);

test('the self-check passes, beside a running program too', limit, async () => {
  const installation = world.install();
  await startProgram(installation);
  const result = runNative(installation.program, ['--selftest'], {
    env: { ...world.desktop.env, ...world.wineEnvironment(), ...(onWindows ? {} : installation.env) },
  });
  assert.equal(result.code, 0);
  assert.deepEqual(result.output.replaceAll('\r\n', '\n').split('\n'), [
    'PASS import: current-format macro parses',
    'PASS import: hotkeys, Hold, Tracker and live setup unchanged',
    "PASS import: profile gets the file's Spammer + Key Spammer setup",
    'PASS import: 23-field macro parses, globals unchanged',
    "PASS import: 23-field macro keeps the importer's Key Spammer setup",
    'PASS import: macro with no SETTINGS line still imports',
    'SELFTEST: ALL PASS',
    '',
  ]);
});

test('a macro on the command line is there when the page comes', limit, async () => {
  const installation = world.install();
  const file = putFile(installation, 'my file.VRLMACRO', kClean);
  const program = await startProgram(installation, [nativePath(file)]);
  assert.equal((await profiles(program)).current, 'Clean');
  assert.deepEqual(await program.call('getPendingMacroImport'), { outcome: 'none' });
  assert.equal(existsSync(file), true);
});

test('a held macro on the command line waits for the page, and for no other start', limit, async () => {
  const installation = world.install();
  const file = putFile(installation, 'a.vrlmacro', kHeld);
  let program = await startProgram(installation, [nativePath(file)]);
  const held = await program.call('getPendingMacroImport');
  assert.equal(held.outcome, 'pending');
  assert.equal((await profiles(program)).names.length, 1);
  assert.equal(await program.closeWindow(observer), 0);
  await world.closePrograms();

  program = await startProgram(installation);
  assert.deepEqual(await program.call('getPendingMacroImport'), { outcome: 'none' });
  await program.call('confirmMacroImport', held.pendingId);
  assert.equal((await profiles(program)).names.length, 1);
  assert.equal(await program.closeWindow(observer), 0);
  await world.closePrograms();

  program = await startProgram(installation, [nativePath(file)]);
  const { pendingId } = await program.call('getPendingMacroImport');
  await program.call('confirmMacroImport', pendingId);
  assert.equal((await profiles(program)).current, 'Held');
});

test('a bad macro on the command line is said by the page', limit, async () => {
  const installation = world.install();
  const program = await startProgram(installation, [nativePath(join(installation.files, 'none.vrlmacro'))]);
  // A page that fetches the message by itself has shown it already.
  const told = await program.call('getPendingThemeAlert');
  if (told === '') await program.page.getByText(kUnreadable).waitFor();
  else assert.equal(told, kUnreadable);
  assert.equal(await program.call('getPendingThemeAlert'), '');
  assert.equal((await profiles(program)).names.length, 1);
});
