// The additional commands of the built program, on real input.
import assert from 'node:assert/strict';
import { chmodSync, existsSync, readFileSync, writeFileSync } from 'node:fs';
import { delimiter, join } from 'node:path';
import { giveFile, kOpen, kSaveAs, tapUntil, dialogIsOpen, waitForDialog } from './file_dialogs.mjs';
import { onWindows, putFile, test, useFixture } from './harness.mjs';
import { waitUntil } from './processes.mjs';
import { Button, Key } from './xtest_input.mjs';

const kDone = { done: true };
const refused = (reason) => ({ done: false, reason });

const fixture = useFixture();
const { input } = fixture;

const progress = (program) => program.call('getProgress');
const state = (program, name) => program.waitForStatus((s) => s.state === name, `the state is ${name}`);
const names = async (program) => (await program.call('getProfiles')).names;

test('a recording is counted, read as rows, undone and redone', async () => {
  const { program, observer } = await fixture.startBesideApplication();
  const idle = await progress(program);
  assert.equal(idle.recordEvents, 0);
  await input.tap(Key.F8);
  await state(program, 'Recording');
  await input.tap(Key.A);
  const running = await waitUntil(async () => {
    const now = await progress(program);
    return now.recordEvents >= 2 && now;
  }, 'the key is counted');
  assert.ok(running.recordSeconds > 0);
  assert.notEqual(running.revision, idle.revision);
  assert.deepEqual(await program.call('restoreMacro', '1'), refused('recording'));
  await input.click(Button.Left);
  await input.tap(Key.F8);
  await state(program, 'Idle');
  await observer.settle();

  const { revision, total, rows } = await program.call('getMacroRows');
  assert.equal(revision, (await progress(program)).revision);
  assert.equal(total, rows.length);
  assert.deepEqual(
    rows.filter(([type]) => type === 3).map(([, , , , , key, down]) => [key, down]),
    [
      [65, 1],
      [65, 0],
    ],
  );
  assert.deepEqual(
    rows.filter(([type]) => type === 2).map(([, , , , flags]) => flags),
    [2, 4],
  );
  assert.equal(rows.length, (await program.call('getMacroEvents')).length);
  assert.deepEqual((await program.call('getMacroRows', '1,1')).rows, [rows[1]]);

  const deleted = await program.call('deleteMacroEvents', `${revision},0-${total - 1}`);
  assert.deepEqual(deleted, { done: true, revision: deleted.revision, changed: total });
  assert.deepEqual(await program.call('deleteMacroEvents', `${revision},0`), refused('revision'));
  const { undo } = await program.call('getMacroHistory');
  assert.deepEqual(
    undo.map(({ reason, current, events }) => ({ reason, current, events })),
    [{ reason: 'edit', current: true, events: total }],
  );
  assert.deepEqual(await program.call('restoreMacro', undo[0].id), kDone);
  assert.deepEqual((await program.call('getMacroRows')).rows, rows);
  assert.equal((await program.call('getMacroHistory')).redo.length, 1);
  assert.deepEqual(await program.call('restoreMacro', undo[0].id), kDone);
  assert.equal((await program.call('getMacroRows')).total, 0);
});

test('the releases that a macro lacks are added and reach the application', async () => {
  const { program, observer } = await fixture.startBesideApplication();
  // F8 ends the recording while A is held.
  await input.tap(Key.F8);
  await state(program, 'Recording');
  await input.keyDown(Key.A);
  await waitUntil(async () => (await progress(program)).recordEvents >= 1, 'A is recorded');
  await input.tap(Key.F8);
  await state(program, 'Idle');
  await input.keyUp(Key.A);
  await observer.settle();
  const { revision, total } = await program.call('getMacroRows');
  const added = await program.call('addMissingReleases', revision);
  assert.equal(added.changed, 1);
  const { rows } = await program.call('getMacroRows', total);
  assert.deepEqual(
    rows.map(([type, , , , , key, down]) => [type, key, down]),
    [[3, 65, 0]],
  );
  observer.clear();
  await input.tap(Key.F7);
  await waitUntil(() => observer.keys().some((key) => !key.down), 'A comes up');
});

test('a set hotkey acts, a cancelled pick leaves the click to the application', async () => {
  const { program, observer } = await fixture.startBesideApplication();
  assert.deepEqual(await program.call('getHotkeys'), {
    rec: 119,
    play: 118,
    auto: 117,
    keyspamhotkey: 120,
    unlock: 121,
  });
  for (const code of ['0', '27', '256', 'x'])
    assert.deepEqual(await program.call('setHotkey', `auto,${code}`), refused('argument'));
  await program.call('pickLocation');
  await waitUntil(async () => (await progress(program)).picking, 'it waits for a place');
  assert.deepEqual(await program.call('cancelPick'), kDone);
  assert.equal((await progress(program)).picking, false);
  await input.click(Button.Left);
  await waitUntil(() => observer.presses().length === 1, 'the click arrives');
  assert.equal((await program.call('getSettings')).locMode, 0);

  await program.call('updateSpammer', '0,0,0,50,0,0,1,10,0');
  assert.deepEqual(await program.call('setHotkey', 'auto,66'), kDone);
  await observer.waitUntilGrabbed(`key ${Key.B}`);
  await input.tap(Key.B);
  await waitUntil(async () => (await progress(program)).clicks >= 2, 'the clicks are counted');
  await input.tap(Key.B);
  await program.waitForStatus((s) => !s.autoClicking, 'it stops');
  await waitUntil(async () => (await progress(program)).clicks === 0, 'the run has ended');
});

test('profiles are renamed, copied and moved, and kept', async () => {
  const installation = fixture.install();
  let { program, observer } = await fixture.startBesideApplication({ installation });
  await program.call('addProfile', 'Farm');
  assert.deepEqual(await program.call('renameProfile', '1,Farm, east'), kDone);
  assert.deepEqual(await program.call('renameProfile', '0,Other'), refused('default'));
  assert.deepEqual(await program.call('duplicateProfile', '1'), kDone);
  assert.deepEqual(await program.call('moveProfile', '2,0'), kDone);
  assert.deepEqual(await program.call('moveProfile', '3,0'), refused('argument'));
  const expected = ['Farm, east (2)', 'Default Tracking Profile', 'Farm, east'];
  assert.deepEqual(await names(program), expected);
  await program.call('deleteProfile');
  assert.deepEqual(await names(program), expected.slice(1));
  const [step] = (await program.call('getMacroHistory')).undo;
  assert.equal(step.reason, 'deleteProfile');
  assert.deepEqual(await program.call('restoreMacro', step.id), kDone);
  assert.deepEqual(await names(program), expected);
  assert.equal(await program.closeWindow(observer), 0);
  await observer.kill();
  ({ program, observer } = await fixture.startBesideApplication({ installation }));
  assert.deepEqual(await names(program), expected);
});

test('an additional setting is in the file only if it differs', async () => {
  const installation = fixture.install();
  let { program, observer } = await fixture.startBesideApplication({ installation, firstStart: true });
  assert.deepEqual(await program.call('getAdditionalSettings'), { countdownSeconds: 3 });
  await program.call('setAppSetting', 'showWarnings,1');
  assert.doesNotMatch(program.readData('appsettings.txt'), /countdown/);
  assert.deepEqual(await program.call('setAdditionalSetting', 'countdownSeconds,5'), kDone);
  assert.match(program.readData('appsettings.txt'), /^countdownSeconds=5$/m);
  assert.deepEqual(await program.call('setAdditionalSetting', 'countdownSeconds,99'), refused('argument'));
  assert.equal(await program.closeWindow(observer), 0);
  await observer.kill();
  ({ program, observer } = await fixture.startBesideApplication({ installation }));
  assert.deepEqual(await program.call('getAdditionalSettings'), { countdownSeconds: 5 });
  await program.call('setAdditionalSetting', 'countdownSeconds,3');
  assert.doesNotMatch(program.readData('appsettings.txt'), /countdown/);
});

test('the program says what it is and shows its data folder', async () => {
  const installation = fixture.install();
  // Wine opens folders with a program of its own.
  const opened = join(installation.folder, 'opened');
  const opener = join(installation.folder, 'xdg-open');
  writeFileSync(opener, `#!/bin/sh\nprintf '%s\\n' "$*" >>'${opened}'\n`);
  chmodSync(opener, 0o755);
  installation.env.PATH = `${installation.folder}${delimiter}${process.env.PATH}`;
  const program = await fixture.startProgram({ installation });
  const about = await program.call('getAbout');
  assert.equal(about.version, '1.0.1');
  assert.equal(about.platform, onWindows ? 'windows' : 'linux');
  assert.equal(about.session, onWindows ? 'windows' : 'x11');
  assert.ok(about.dataFolder.length > 3);
  assert.equal(
    about.licences.some(({ file }) => file === 'mingw-w64.txt'),
    onWindows,
  );
  assert.deepEqual(await program.call('openDataFolder'), kDone);
  if (!onWindows) {
    await waitUntil(() => existsSync(opened), 'the file manager opens');
    assert.equal(readFileSync(opened, 'utf8').trim(), about.dataFolder);
  }
});

test('an import says what came in, an export proposes the name of the profile', async () => {
  const installation = fixture.install();
  const file = putFile(installation, 'a.vrlmacro', 'Clean\n0,0.5,10,10,0,0,0,0\n3,0.75,0,0,0,65,1,0\nx\n');
  const { program, observer } = await fixture.startProgramForDialogs(installation);
  assert.equal((await program.call('getLastImport')).id, 0);
  const imported = program.call('importProfile');
  imported.catch(() => {});
  await waitForDialog(observer, kOpen);
  await giveFile(input, observer, kOpen, file);
  assert.deepEqual(await imported, { outcome: 'imported' });
  assert.deepEqual(await program.call('getLastImport'), {
    id: 1,
    outcome: 'imported',
    problem: '',
    file: 'a.vrlmacro',
    profile: 'Clean (Imported)',
    events: 2,
    skippedLines: 1,
    seconds: 0.75,
    fileSettings: false,
    settingsUsable: false,
  });
  const exported = program.call('exportMacro');
  exported.catch(() => {});
  await waitForDialog(observer, kSaveAs);
  const isGone = async () => !(await dialogIsOpen(observer, kSaveAs));
  await tapUntil(input, Key.Enter, isGone, 'the dialog has accepted the proposed name');
  assert.deepEqual(await exported, {
    outcome: 'written',
    file: 'Clean (Imported).vrlmacro',
    message: '',
  });
});
