// Import and export commands with the system's file dialogs and a real keyboard.
import assert from 'node:assert/strict';
import { existsSync, readFileSync, readdirSync } from 'node:fs';
import { join } from 'node:path';
import {
  dialogIsOpen,
  giveFile,
  kOpen,
  kSaveAs,
  tapUntil,
  typeFileName,
  waitForDialog,
} from './file_dialogs.mjs';
import {
  kMainTitle,
  nativePath,
  onlyOnLinux,
  onWindows,
  putFile,
  runNative,
  test,
  useFixture,
} from './harness.mjs';
import { kQuietMilliseconds, waitUntil } from './processes.mjs';
import { Key, pause } from './xtest_input.mjs';

const kClean = 'Clean\nSETTINGS:\n0,0.5,10,10,0,0,0,0\n3,0.75,0,0,0,65,1,0\n3,1.25,0,0,0,65,0,0\n';
// Win+R is a finding.
const kRisky =
  'Risky\nSETTINGS:\n3,1.25,0,0,0,91,1,0\n3,1.5,0,0,0,82,1,0\n3,1.75,0,0,0,91,0,0\n3,1.8,0,0,0,82,0,0\n';
const kNoDialog =
  'Varnelle cannot ask for a file because this desktop offers no file dialog; install the package zenity, ' +
  'or xdg-desktop-portal with its part for your desktop, and try again.';
const kUnreadable =
  "That macro file could not be imported - it may be corrupted or from a version this build doesn't recognize. " +
  "Since this is recorded work, it's worth checking the original file is intact before trying again.";

const fixture = useFixture();
const { input } = fixture;
let observer;

async function startProgram(installation, args = []) {
  const started = await fixture.startProgramForDialogs(installation, args);
  observer = started.observer;
  return started.program;
}

// Calls a command that opens a dialog. Resolves with the promise of its answer once the dialog has the keyboard.
async function callForDialog(program, name, title) {
  const answer = program.call(name);
  answer.catch(() => {});
  await waitForDialog(observer, title);
  return { answer };
}

async function importByDialog(program, file) {
  const { answer } = await callForDialog(program, 'importProfile', kOpen);
  await giveFile(input, observer, kOpen, file);
  return answer;
}

async function typeNameToSave(program, file) {
  const { answer } = await callForDialog(program, 'exportProfile', kSaveAs);
  await typeFileName(input, kSaveAs, file);
  return { answer };
}

async function exportByDialog(program, file) {
  const { answer } = await callForDialog(program, 'exportProfile', kSaveAs);
  await giveFile(input, observer, kSaveAs, file);
  return answer;
}

async function profiles(program) {
  const { current, names } = await program.call('getProfiles');
  return { current: names[current], names };
}

const descriptions = async (program) => (await program.call('getMacroEvents')).map((event) => event.desc);

test('a macro without findings is imported and becomes current', async () => {
  const installation = fixture.install();
  const file = putFile(installation, 'a.vrlmacro', kClean);
  const program = await startProgram(installation);
  assert.deepEqual(await importByDialog(program, file), { outcome: 'imported' });
  assert.equal((await profiles(program)).current, 'Clean (Imported)');
  await program.waitForStatus((s) => s.count === 3, 'the status counts its events');
  await waitUntil(
    () => program.readMirror('macroevents.txt')?.some(({ desc }) => /VK: 65/.test(desc)),
    'and the mirror lists them',
  );
  assert.deepEqual(await importByDialog(program, file), { outcome: 'imported' });
  assert.deepEqual((await profiles(program)).names.slice(1), ['Clean (Imported)', 'Clean (Imported) (2)']);
  assert.equal(existsSync(file), true);
});

test('a macro with findings is pending until the page confirms it', async () => {
  const installation = fixture.install();
  const file = putFile(installation, 'a.vrlmacro', kRisky);
  const program = await startProgram(installation);
  await program.page.evaluate(() => {
    window.notified = 0;
    window.onProfileImported = () => ++window.notified;
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
  assert.equal(await program.page.evaluate(() => window.notified), 0);

  const second = await importByDialog(program, file);
  assert.notEqual(second.pendingId, first.pendingId);
  await program.call('confirmMacroImport', first.pendingId);
  assert.equal((await profiles(program)).names.length, 1);
  await program.call('confirmMacroImport', second.pendingId);
  await waitUntil(() => program.page.evaluate(() => window.notified === 1), 'the page is notified');
  await program.call('confirmMacroImport', second.pendingId);
  assert.deepEqual(await profiles(program), {
    current: 'Risky (Imported)',
    names: ['Default Tracking Profile', 'Risky (Imported)'],
  });
  await program.waitForStatus((s) => s.count === 4, 'the status counts its events');
  assert.equal(await program.page.evaluate(() => window.notified), 1);
});

test('a cancelled dialog changes nothing', async () => {
  const installation = fixture.install();
  const program = await startProgram(installation);
  const before = await profiles(program);
  const dismiss = (title) =>
    tapUntil(input, Key.Escape, async () => !(await dialogIsOpen(observer, title)), 'the dialog is gone');
  const open = await callForDialog(program, 'importProfile', kOpen);
  await dismiss(kOpen);
  assert.deepEqual(await open.answer, { outcome: 'cancelled' });
  const save = await callForDialog(program, 'exportProfile', kSaveAs);
  await dismiss(kSaveAs);
  assert.equal(await save.answer, undefined);
  assert.deepEqual(await profiles(program), before);
  // The dialog writes files of its own there.
  assert.deepEqual(
    readdirSync(installation.files).filter((name) => !name.startsWith('.')),
    [],
  );
});

test('an old recording is rejected with a message', async () => {
  const installation = fixture.install();
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

test('an exported macro is imported with the same events', async () => {
  const installation = fixture.install();
  const program = await startProgram(installation);
  await importByDialog(program, putFile(installation, 'a.vrlmacro', kClean));
  const events = await program.call('getMacroEvents');
  // The program adds the extension to the dialog's answer.
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

test('a file is overwritten only after the question is confirmed', async () => {
  const installation = fixture.install();
  const target = putFile(installation, 'out.vrlmacro', 'precious');
  const program = await startProgram(installation);
  let answered;
  // Leaves the dialog open behind its question.
  const askToOverwrite = async (name) => {
    const { answer } = await typeNameToSave(program, join(installation.files, name));
    answered = false;
    answer.finally(() => (answered = true));
    await input.tap(Key.Enter);
    await pause(2 * kQuietMilliseconds);
    assert.equal(answered, false);
    assert.equal(readFileSync(target, 'latin1'), 'precious');
  };
  const decline = async () => {
    if (onWindows) await input.tap(Key.N); // its question accepts only yes and no
    await tapUntil(input, Key.Escape, () => answered, 'the dialog closes');
  };
  for (const name of ['out.vrlmacro', 'out']) {
    await askToOverwrite(name);
    await decline();
    assert.equal(readFileSync(target, 'latin1'), 'precious');
  }
  // If the dialog lost a key of the name, it asks something else: start again.
  await waitUntil(async () => {
    await askToOverwrite('out.vrlmacro');
    const yes = onWindows ? Key.Y : Key.Enter;
    await tapUntil(input, yes, () => answered, 'the answer', 6000).catch(decline);
    return readFileSync(target, 'latin1') !== 'precious';
  }, 'the file is overwritten');
  assert.match(readFileSync(target, 'latin1'), /^Default Tracking Profile\r?\nSETTINGS:/);
});

test('engines and hotkeys work while a dialog is open', async () => {
  const installation = fixture.install();
  const program = await startProgram(installation);
  const { answer } = await callForDialog(program, 'importProfile', kOpen);
  await input.tap(Key.F8);
  // The session is saved every five seconds, with the events recorded so far.
  const session = join(installation.data, 'session.dat');
  let x = 0;
  await waitUntil(async () => {
    x = (x + 5) % 400;
    await input.moveTo(300 + x, 400);
    await pause(20);
    return existsSync(session) && /^[01],\d/m.test(readFileSync(session, 'latin1'));
  }, 'moves are recorded and saved');
  await input.tap(Key.F8);
  await tapUntil(input, Key.Escape, async () => !(await dialogIsOpen(observer, kOpen)), 'the dialog is gone');
  assert.deepEqual(await answer, { outcome: 'cancelled' });
  const status = await program.waitForStatus((s) => s.state === 'Idle' && s.count > 0, 'it was recorded');
  assert.ok(status.count >= 2, `${status.count} events`);
  await waitUntil(async () => (await descriptions(program)).some((text) => /Move/.test(text)), 'the moves');
});

test('closing the window closes its dialog', async () => {
  const installation = fixture.install();
  const program = await startProgram(installation);
  await callForDialog(program, 'importProfile', kOpen);
  if (onWindows) observer.closeWindow(kMainTitle);
  else program.child.kill('SIGTERM'); // a page without GTK learns of its window only after the dialog
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
  'a dialog whose process dies is reported, and the next one opens',
  onlyOnLinux('the dialog is no process of its own there'),
  async () => {
    const installation = fixture.install();
    const file = putFile(installation, 'a.vrlmacro', kClean);
    const program = await startProgram(installation);
    const others = childrenOf(program.child.pid); // the process that watches its grabs
    const { answer } = await callForDialog(program, 'importProfile', kOpen);
    const helpers = childrenOf(program.child.pid).filter((id) => !others.includes(id));
    assert.equal(helpers.length, 1);
    process.kill(helpers[0], 'SIGKILL');
    assert.deepEqual(await answer, {
      outcome: 'error',
      message: 'The file dialog (zenity) broke off. Please try again.',
    });
    assert.deepEqual(childrenOf(program.child.pid), others);
    assert.deepEqual(await importByDialog(program, file), { outcome: 'imported' });
    // A killed program leaves no dialog open.
    await callForDialog(program, 'importProfile', kOpen);
    program.child.kill('SIGKILL');
    await waitUntil(async () => !(await dialogIsOpen(observer, kOpen)), 'the dialog is gone');
  },
);

test(
  'without a file dialog the page shows what to install',
  onlyOnLinux('Windows always has its dialogs'),
  async () => {
    const installation = fixture.install();
    installation.env.PATH = installation.files;
    const program = await startProgram(installation);
    const alert = program.page.getByRole('alert');
    assert.deepEqual(await program.call('importProfile'), { outcome: 'error', message: kNoDialog });
    assert.equal(await alert.innerText(), '');
    assert.equal(await program.call('exportProfile'), undefined);
    await alert.getByText(kNoDialog).waitFor();
  },
);

test('the import self-test passes beside a running program', async () => {
  const installation = fixture.install();
  await startProgram(installation);
  const result = runNative(installation.program, ['--selftest'], {
    env: { ...fixture.desktop.env, ...fixture.wineEnvironment(), ...(onWindows ? {} : installation.env) },
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

test('a macro on the command line is imported before the page loads', async () => {
  const installation = fixture.install();
  const file = putFile(installation, 'my file.VRLMACRO', kClean);
  const program = await startProgram(installation, [nativePath(file)]);
  assert.equal((await profiles(program)).current, 'Clean');
  assert.deepEqual(await program.call('getPendingMacroImport'), { outcome: 'none' });
  assert.equal(existsSync(file), true);
});

test('a pending macro from the command line ends with the program', async () => {
  const installation = fixture.install();
  const file = putFile(installation, 'a.vrlmacro', kRisky);
  let program = await startProgram(installation, [nativePath(file)]);
  const pending = await program.call('getPendingMacroImport');
  assert.equal(pending.outcome, 'pending');
  assert.equal((await profiles(program)).names.length, 1);
  assert.equal(await program.closeWindow(observer), 0);
  await fixture.closePrograms();

  program = await startProgram(installation);
  assert.deepEqual(await program.call('getPendingMacroImport'), { outcome: 'none' });
  await program.call('confirmMacroImport', pending.pendingId);
  assert.equal((await profiles(program)).names.length, 1);
  assert.equal(await program.closeWindow(observer), 0);
  await fixture.closePrograms();

  program = await startProgram(installation, [nativePath(file)]);
  const { pendingId } = await program.call('getPendingMacroImport');
  await program.call('confirmMacroImport', pendingId);
  assert.equal((await profiles(program)).current, 'Risky');
});

test('the page reports a missing macro from the command line', async () => {
  const installation = fixture.install();
  const program = await startProgram(installation, [nativePath(join(installation.files, 'none.vrlmacro'))]);
  // The shipped page fetches the message by itself and may already show it.
  const message = await program.call('getPendingThemeAlert');
  if (message === '') await program.page.getByText('The file “none.vrlmacro” was not found.').waitFor();
  else assert.equal(message, kUnreadable);
  assert.equal(await program.call('getPendingThemeAlert'), '');
  assert.equal((await profiles(program)).names.length, 1);
});
