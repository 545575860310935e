// Import and export as a user does it: the page's buttons, the system's file dialogs, the decision on a pending import.
import assert from 'node:assert/strict';
import { existsSync, readFileSync } from 'node:fs';
import { join } from 'node:path';
import { giveFile, kOpen, kSaveAs, tapUntil, waitForDialog, dialogIsOpen } from './file_dialogs.mjs';
import { kScreenshots, nativePath, onWindows, putFile, test, useFixture } from './harness.mjs';
import { waitUntil } from './processes.mjs';
import { Key, pause } from './xtest_input.mjs';

const kClean = 'Clean\nSETTINGS:\n0,0.5,10,10,0,0,0,0\n3,0.75,0,0,0,65,1,0\n3,1.25,0,0,0,65,0,0\n';
// Win+R is a finding.
const kRisky =
  'Risky\nSETTINGS:\n0,0.25,10,10,0,0,0,0\n3,1.25,0,0,0,91,1,0\n3,1.5,0,0,0,82,1,0\n3,1.75,0,0,0,91,0,0\n' +
  '3,1.8,0,0,0,82,0,0\n';
const kDefaultName = 'Default Tracking Profile';

const fixture = useFixture();
const { input } = fixture;
let program;
let observer;

async function begin(installation, args = []) {
  ({ program, observer } = await fixture.startProgramForDialogs(installation, args));
}

async function importFile(file) {
  await program.press('Import profile');
  await waitForDialog(observer, kOpen);
  await giveFile(input, observer, kOpen, file);
}

const shownProfiles = () => program.profileNames();
const chosenProfile = () => program.profileBox().innerText();
const waitForProfile = (name) =>
  waitUntil(async () => (await chosenProfile()) === name, `"${name}" is chosen`);
const decision = () => program.page.getByRole('alertdialog');
const notice = (text) => program.page.getByRole('status', { name: 'Done' }).getByText(text).waitFor();
const pressable = (button) => button.and(program.page.locator(':not([aria-disabled]):not([disabled])'));
const shownEvents = () => program.eventRows().locator('.event__text').allInnerTexts();
const waitForState = (state) => program.waitForStatus((s) => s.state === state, `the state is ${state}`);

// A button's first state may end before a test can read it: the page keeps it in `disabledAtFirst`.
async function noteDisabledAtFirst(text) {
  await program.page.evaluate((wanted) => {
    new MutationObserver((_, watch) => {
      const button = [...document.querySelectorAll('button')].find((one) => one.innerText.trim() === wanted);
      if (!button) return;
      window.disabledAtFirst = button.getAttribute('aria-disabled');
      watch.disconnect();
    }).observe(document.body, { childList: true, subtree: true });
  }, text);
}

async function assertDecisionTells(name) {
  // The macro's name and contents appear a moment after the findings.
  await decision()
    .getByText(/^5 events, 0:01\.8 long\./)
    .waitFor();
  assert.match(await decision().innerText(), new RegExp(`Import \u201c${name}\u201d\\?`));
  const findings = decision().getByRole('list', { name: 'Findings' }).getByRole('listitem');
  assert.deepEqual(
    (await findings.allInnerTexts()).map((text) => text.replace(/\s+/g, ' ').trim()),
    ['1 Caution at 0:01.5 Uses Windows system shortcuts.'],
  );
  // The picture: one mark for the finding, and only lanes with events have height.
  const picture = decision().locator('figure');
  assert.match(await picture.innerText(), /Activity over time, and the start of each finding\./);
  assert.equal(await picture.locator('.findings-timeline__number').count(), 1);
  const heights = await picture
    .locator('svg path')
    .evaluateAll((paths) => paths.map((path) => path.getBBox().height));
  assert.deepEqual(
    heights.map((height) => height > 0),
    [true, false, true],
    `moves, clicks, keys: ${heights}`,
  );
}

test('a pending import shows its findings, is discarded by No and imported by Yes', async () => {
  const installation = fixture.install();
  const file = putFile(installation, 'a.vrlmacro', kRisky);
  await begin(installation);

  await importFile(file);
  await assertDecisionTells('Risky \\(Imported\\)');
  await program.page.screenshot({ path: join(kScreenshots, 'pending-import.png') });
  await program.press('Don\u2019t import', decision());
  await decision().waitFor({ state: 'detached' });
  await notice('Not imported');
  assert.deepEqual(await program.call('getPendingMacroImport'), { outcome: 'none' });
  assert.deepEqual(await shownProfiles(), [kDefaultName]);
  assert.deepEqual((await program.call('getProfiles')).names, [kDefaultName]);
  assert.deepEqual(await program.call('getMacroEvents'), []);

  const anyway = program.button('Import anyway', decision());
  await noteDisabledAtFirst('Import anyway');
  await importFile(file);
  await pressable(anyway).click();
  assert.equal(
    await program.page.evaluate(() => window.disabledAtFirst),
    'true',
    'disabled in the first moment',
  );
  await decision().waitFor({ state: 'detached' });
  await notice('Imported as Risky (Imported)');
  assert.equal(await chosenProfile(), 'Risky (Imported)');
  assert.deepEqual(await shownProfiles(), [kDefaultName, 'Risky (Imported)']);
  await waitUntil(async () => (await program.eventRows().count()) === 5, 'the page lists its events');
  // Wine takes the names of keys from the X server.
  const { 91: leftWindows } = await program.call('getKeyNames');
  if (!onWindows) assert.equal(leftWindows, 'Left Windows');
  assert.deepEqual(await shownEvents(), [
    'Move to 10, 10',
    `Key ${leftWindows} down`,
    'Key R down',
    `Key ${leftWindows} up`,
    'Key R up',
  ]);
  assert.deepEqual(await program.call('getPendingMacroImport'), { outcome: 'none' });
});

test('a macro without findings is imported at once and exported unchanged', async () => {
  const installation = fixture.install();
  const file = putFile(installation, 'a.vrlmacro', kClean);
  await begin(installation);
  await importFile(file);
  await notice('Imported as Clean (Imported)');
  assert.equal(await chosenProfile(), 'Clean (Imported)');
  assert.equal(await decision().count(), 0);
  await waitUntil(async () => (await program.eventRows().count()) === 3, 'the page lists its events');
  const events = await program.call('getMacroEvents');

  const target = join(installation.files, 'out.vrlmacro');
  await program.press('Export profile');
  await waitForDialog(observer, kSaveAs);
  await giveFile(input, observer, kSaveAs, target);
  await waitUntil(() => existsSync(target), 'the file is there');
  await pressable(program.button('Import profile')).waitFor();
  assert.equal(readFileSync(target, 'latin1').split(/\r?\n/)[0], 'Clean (Imported)');

  await importFile(target);
  await waitForProfile('Clean (Imported) (Imported)');
  assert.deepEqual(await program.call('getMacroEvents'), events);

  // The message about an unreadable file stays until it is dismissed.
  await importFile(putFile(installation, 'OLD.MCR', kClean));
  await program.page
    .getByRole('alert')
    .getByText(/^\.mcr files are no longer supported\./)
    .waitFor();
  await program.press('Dismiss');
  assert.equal((await shownProfiles()).length, 3);
});

test('a cancelled dialog leaves the page as it was', async () => {
  await begin(fixture.install());
  for (const [button, title] of [
    ['Import profile', kOpen],
    ['Export profile', kSaveAs],
  ]) {
    await program.press(button);
    await waitForDialog(observer, title);
    await tapUntil(
      input,
      Key.Escape,
      async () => !(await dialogIsOpen(observer, title)),
      'the dialog is gone',
    );
    await pressable(program.button(button)).waitFor();
  }
  assert.deepEqual(await shownProfiles(), [kDefaultName]);
  assert.equal(await program.page.getByRole('alert').innerText(), '');
});

test('a pending import from the command line is decided on the page, not during a recording', async () => {
  const installation = fixture.install();
  const file = putFile(installation, 'a.vrlmacro', kRisky);
  await begin(installation, [nativePath(file)]);
  await assertDecisionTells('Risky');
  const anyway = program.button('Import anyway', decision());
  await pressable(anyway).waitFor();

  await input.tap(Key.F8);
  await waitForState('Recording');
  await decision().getByText('You can import it when the recording ends.').waitFor();
  assert.equal(await anyway.getAttribute('aria-disabled'), 'true');
  await anyway.click({ force: true });
  await input.tap(Key.F8);
  await waitForState('Idle');
  assert.deepEqual((await program.call('getProfiles')).names, [kDefaultName]);

  await pressable(anyway).click();
  await waitForProfile('Risky');
  await waitUntil(async () => (await program.eventRows().count()) === 5, 'the page lists its events');
  assert.deepEqual(await shownProfiles(), [kDefaultName, 'Risky']);
});

const keysOf = (events) =>
  events
    .filter(({ desc }) => desc.startsWith('Keyboard'))
    .map(({ desc }) => desc.replace('Keyboard VK: ', ''));

test('during a recording a dialog that was open before still imports, and no other opens', async () => {
  const installation = fixture.install();
  const file = putFile(installation, 'a.vrlmacro', kClean);
  await begin(installation);
  await program.press('Import profile');
  await waitForDialog(observer, kOpen);
  await input.tap(Key.F8);
  // The keys of the file's name are recorded too.
  await waitUntil(() => recordsKeys(installation), 'the recording runs');
  await giveFile(input, observer, kOpen, file);
  await waitForProfile('Clean (Imported)');
  await program.page
    .getByRole('alert')
    .getByText(/^The import arrived during a recording\./)
    .waitFor();
  for (const button of [
    'Import profile',
    'Export profile',
    'New profile',
    'Clear profile',
    'Delete profile',
  ]) {
    assert.ok(await program.button(button).isDisabled(), `${button} is disabled`);
  }
  await program.page.getByText('Profiles cannot be changed during a recording.').waitFor();

  // From here on the recording goes into the imported profile.
  await input.tap(Key.Z);
  await program.waitForStatus((s) => s.count >= 5, 'it is recorded');
  await input.tap(Key.F8);
  await waitForState('Idle');
  const imported = await program.call('getMacroEvents');
  assert.deepEqual(
    imported.slice(0, 3).map(({ desc }) => desc),
    ['Abs Move to X:10 Y:10', 'Keyboard VK: 65 (DOWN)', 'Keyboard VK: 65 (UP)'],
  );
  const times = imported.slice(0, 3).map(({ time }) => time - imported[0].time);
  times.forEach((time, i) => assert.ok(Math.abs(time - [0, 0.25, 0.75][i]) < 1e-6, `${times}`));
  assert.deepEqual(keysOf(imported).slice(-2), ['90 (DOWN)', '90 (UP)']);

  // The events before are in the profile that was current then.
  await program.chooseProfile(kDefaultName);
  await waitForProfile(kDefaultName);
  const recorded = keysOf(await program.call('getMacroEvents'));
  assert.ok(recorded.length >= 2 * nativePath(file).length - 2, `${recorded.length} keys of the name`);
});

// Taps a key that types nothing; returns whether the saved session holds a key.
async function recordsKeys(installation) {
  await input.tap(Key.LeftShift);
  await pause(100);
  const session = join(installation.data, 'session.dat');
  return existsSync(session) && /^3,\d/m.test(readFileSync(session, 'latin1'));
}
