// The pictures of the guide, from the running Linux program:
//
//   node tools/pictures/take.mjs PICTURES_FOLDER [NAME...]
//
// The program runs on a desktop of its own with real input, as in tests/program; its page is in Chromium, as it is on
// Windows. Each picture brings the page into its state as a user would. VARNELLE_BUILD is the build folder with
// the targets dist, observer and test_webview.
import { mkdirSync, writeFileSync } from 'node:fs';
import { join } from 'node:path';
import { makeInstallation, openFixture } from '../../tests/program/harness.mjs';
import { waitUntil } from '../../tests/program/processes.mjs';
import { Key, pause } from '../../tests/program/xtest_input.mjs';
import { harmfulMacro, harmlessMacro, kNoWarnings, session } from './material.mjs';

const kSharpness = 2; // pixels of a picture for one of the page
const kWidth = 420; // of the window at a first start
const kGap = 10; // around what is shown

let folder;
let fixture;
let program;
let installation;

// `opened` is the text of a macro file that the program is started with.
async function startProgram({ warns = false, opened = '' } = {}) {
  installation = makeInstallation();
  mkdirSync(installation.data);
  writeFileSync(join(installation.data, 'session.dat'), session);
  if (!warns) writeFileSync(join(installation.data, 'appsettings.txt'), kNoWarnings);
  program = await fixture.startProgram({ installation, args: opened ? [putMacro(opened)] : [] });
  await program.waitForStateText(/Idle/);
  await program.page.evaluate(() => document.fonts.ready);
}

async function endProgram() {
  await fixture.closeOpened();
  installation?.remove();
  installation = undefined;
}

const save = (name, options = {}) =>
  program.page.screenshot({ path: join(folder, `${name}.png`), animations: 'disabled', ...options });

const size = (height, width = kWidth) => program.page.setViewportSize({ width, height: Math.ceil(height) });
const boxOf = (locator) => locator.boundingBox();
const panel = (name) => program.panel(name);
const pointAway = () => program.page.mouse.move(1, 1);

// Of the page's height between two things that are in sight.
async function saveBetween(name, first, last, { below = kGap } = {}) {
  const [top, bottom] = [await boxOf(first), await boxOf(last)];
  const y = Math.max(0, top.y - kGap);
  const { width } = program.page.viewportSize();
  await save(name, { clip: { x: 0, y, width, height: bottom.y + bottom.height + below - y } });
}

// Brings something right under the state line, in a window that ends `height` pixels further down.
async function showUnderState(what, height) {
  const header = await boxOf(program.page.locator('.state-line'));
  const whole = await boxOf(what);
  const { width } = program.page.viewportSize();
  await size(header.height + kGap + (height ?? whole.height + kGap), width);
  await what.evaluate((element, top) => {
    window.scrollTo({ top: element.getBoundingClientRect().top + window.scrollY - top, behavior: 'instant' });
  }, header.height + kGap);
  await pointAway();
}

// The drawings are made in pieces, beside everything else.
const showMacroDrawn = () =>
  waitUntil(
    () =>
      program.page.evaluate(() =>
        ['.pointer-path__canvas', '.strip__canvas'].every(
          (name) => Number(document.querySelector(name)?.dataset.events) > 100,
        ),
      ),
    'the macro is drawn',
  );

// The dialog alone, a little of what it lies over around it.
async function saveDialog(name, role) {
  const dialog = program.page.getByRole(role);
  await dialog.waitFor();
  await pointAway();
  const { y, height } = await boxOf(dialog);
  const { width } = program.page.viewportSize();
  await save(name, { clip: { x: 0, y: Math.max(0, y - kGap), width, height: height + 2 * kGap } });
}

// The whole screen but its edge: what is played and clicked lands here.
const openField = () => fixture.openObserver('The field', { x: 40, y: 40, width: 940, height: 680 });

// In the folder in which file dialogs begin.
function putMacro(text) {
  const file = join(installation.env.HOME, 'given.vrlmacro');
  writeFileSync(file, text);
  return file;
}

const pictures = {
  async main() {
    await startProgram();
    await size(700);
    await pointAway();
    await save('main');
  },

  async wide() {
    await startProgram();
    await size(760, 1180);
    await showMacroDrawn();
    await showUnderState(panel('Macro'));
    await save('wide');
  },

  async panels() {
    await startProgram();
    for (const name of ['Profile', 'Key spammer', 'Autoclicker', 'Macro', 'Hotkeys'])
      await program.press(`${name}: show settings`);
    await program.press('Move Autoclicker');
    await program.page.evaluate(() => document.activeElement.blur());
    const board = await boxOf(program.page.locator('#dashboard'));
    await size(board.y + board.height);
    await pointAway();
    await save('panels');
  },

  async clicking() {
    await startProgram();
    await openField();
    await program.choose('Click location', 'Fixed', panel('Autoclicker'));
    await showUnderState(panel('Autoclicker'));
    await program.press('Start clicking');
    await program.waitForStateText(/Clicking/);
    await pointAway();
    await save('clicking');
    await program.press('Stop everything');
    await program.waitForStateText(/Idle/);
  },

  async pressing() {
    await startProgram();
    await size(1200);
    const body = panel('Key spammer');
    await body.scrollIntoViewIfNeeded();
    await pointAway();
    await saveBetween('pressing', body, body);
  },

  async recording() {
    await startProgram();
    const field = await openField();
    await showUnderState(panel('Macro'), 130);
    await program.press('Record');
    await program.waitForStateText(/Recording/);
    await field.pointAt(-200, 0);
    for (let i = 0; i < 300; i++) {
      await field.pointAt(-200 + i, Math.round(90 * Math.sin(i / 30)));
      await pause(4);
    }
    await fixture.input.click();
    await program.page
      .getByText(/^[12]\d\d events$/)
      .first()
      .waitFor();
    await pointAway();
    await save('recording');
    await program.press('Stop everything');
    await program.waitForStateText(/Idle/);
  },

  async macro() {
    await startProgram();
    await size(1400);
    await showMacroDrawn();
    await panel('Macro').scrollIntoViewIfNeeded();
    const time = program.page.getByRole('slider', { name: 'Time in the macro' });
    const lanes = await boxOf(time);
    await program.page.mouse.move(lanes.x + lanes.width * 0.52, lanes.y + lanes.height / 2);
    const title = panel('Macro').getByText('Timing', { exact: true });
    await saveBetween('macro', title, program.page.locator('.pointer-path'));
  },

  async looping() {
    await startProgram();
    await openField();
    await showMacroDrawn();
    await showUnderState(panel('Macro').getByText('Playback', { exact: true }), 520);
    await fixture.input.tap(Key.F7);
    await program.waitForStateText(/Playing, clicking/);
    await pointAway();
    await save('looping');
    await program.press('Stop everything');
    await program.waitForStateText(/Idle/);
  },

  async list() {
    await startProgram();
    await size(1600);
    await showMacroDrawn();
    const kinds = program.page.getByRole('group', { name: 'Kinds of events shown' });
    await kinds.getByRole('button', { name: /^Moves/ }).click();
    const rows = program.eventRows();
    await rows.nth(4).click();
    await rows.nth(7).click({ modifiers: ['Shift'] });
    await program.enter('Shift times by', '0.5');
    await program.page.evaluate(() => document.activeElement.blur());
    await panel('Macro').evaluate((element) => element.scrollIntoView({ block: 'end' }));
    await pointAway();
    const title = panel('Macro').getByText('Events', { exact: true });
    await saveBetween('list', title, program.button('Optimise'), { below: 2 * kGap });
  },

  async left() {
    await startProgram();
    await size(1600);
    await showMacroDrawn();
    const kinds = program.page.getByRole('group', { name: 'Kinds of events shown' });
    await kinds.getByRole('button', { name: /^Moves/ }).click();
    const list = program.page.getByRole('listbox', { name: 'Events', exact: true });
    await list.focus();
    await list.press('End');
    await program.eventRows().filter({ hasText: 'Key Left Shift up' }).click();
    await program.press('Delete event');
    const note = program.page.getByLabel('After playback');
    await note.getByText(/pressed after playback/).waitFor();
    await pointAway();
    await saveBetween('left', note, note);
  },

  async hotkeys() {
    await startProgram();
    await size(1200);
    await program.press('Change the key spammer hotkey');
    await program.waitForStateText(/Waiting for a key/);
    await fixture.input.tap(Key.F6);
    await program.page.getByText(/Choose another key/).waitFor();
    await program.page.evaluate(() => document.activeElement.blur());
    await panel('Hotkeys').scrollIntoViewIfNeeded();
    await pointAway();
    await saveBetween('hotkeys', panel('Hotkeys'), panel('Hotkeys'));
  },

  async preferences() {
    await startProgram({ warns: true });
    await size(880);
    await program.press('Preferences');
    // The folder of this run would be another one in each picture.
    const folderOfRun = program.page.locator('.about__path');
    await folderOfRun.evaluate((element) => (element.textContent = '/home/me/.local/share/Varnelle'));
    await saveDialog('preferences', 'dialog');
  },

  async warning() {
    await startProgram({ warns: true });
    await program.press('Play');
    await saveDialog('warning', 'alertdialog');
  },

  async held() {
    await startProgram({ opened: harmfulMacro });
    await size(860);
    await waitUntil(
      () => program.button('Import anyway').evaluate((button) => button.ariaDisabled !== 'true'),
      'it can be let in',
    );
    await program.page.getByRole('alertdialog').evaluate(() => document.activeElement.blur());
    await saveDialog('held', 'alertdialog');
  },

  async imported() {
    await startProgram();
    const field = await openField();
    await size(428);
    putMacro(harmlessMacro);
    await program.press('Import profile');
    await waitUntil(async () => (await field.window('Open')).active, 'the dialog has the keyboard');
    await fixture.input.type(join(installation.env.HOME, 'given.vrlmacro'));
    await fixture.input.tap(Key.Enter);
    await program.page.getByText(/^Imported as/).waitFor();
    await pointAway();
    await save('imported');
  },
};

async function main() {
  const [target, ...names] = process.argv.slice(2);
  if (!target) {
    console.error('usage: take.mjs PICTURES_FOLDER [NAME...]');
    process.exit(2);
  }
  folder = target;
  mkdirSync(folder, { recursive: true });
  fixture = await openFixture({ page: { deviceScaleFactor: kSharpness } });
  try {
    for (const [name, take] of Object.entries(pictures)) {
      if (names.length > 0 && !names.includes(name)) continue;
      await take();
      await endProgram();
      console.log(`Picture: ${join(folder, `${name}.png`)}`);
    }
  } finally {
    await endProgram();
    await fixture.close();
  }
}

await main();
