// Macros from outside: the file dialogs, what a person is told after an import, and the decision on a macro that the
// program holds back.
import assert from 'node:assert/strict';
import { after, before, describe, test } from 'node:test';
import { axeFinds, contrastOf } from './checks.mjs';
import {
  allCalls,
  button,
  callsOf,
  expectCall,
  forgetCalls,
  importSource,
  mainWindowCommands,
  Pages,
  picture,
  settled,
  stopClock,
} from './browser.mjs';

let pages;
before(async () => (pages = await Pages.start()));
after(() => pages.stop());

const kRun =
  'Opens the Windows Run box, types something and presses Enter. This can start programs or run commands on your PC.';
const kSwitch = 'Switches between your open windows, so its keys and clicks may land somewhere unexpected.';
const held = (id, more = '') => `{ outcome: 'pending', pendingId: '${id}', level: 'danger', matches: [
  { severity: 'DANGER', message: '${kRun}', atSec: 1.25 },
  { severity: 'DANGER', message: 'Selects everything and deletes it.', atSec: 64.08 },
  { severity: 'CAUTION', message: '${kSwitch}', atSec: 65 } ] ${more} }`;
const kSummary = `host.pendingSummary = { pendingId: 'aa', name: 'Farm run', events: 48210, seconds: 90.5,
  moves: Array.from({ length: 100 }, (_, i) => Math.round(400 + 380 * Math.sin(i / 7))),
  clicks: Array.from({ length: 100 }, (_, i) => (i % 11 ? 0 : 3)),
  keys: Array.from({ length: 100 }, (_, i) => ((i > 2 && i < 9) || (i > 70 && i < 76) ? (i % 5) + 1 : 0)) };`;
const kWindow = { width: 420, height: 560 };
const dialog = (page) => page.getByRole('alertdialog');
const focused = (page) =>
  page.evaluate(() => document.activeElement.ariaLabel ?? document.activeElement.innerText);
const done = (page) => page.getByRole('status', { name: 'Done' });

describe('the file dialogs', () => {
  test('export: the command goes once, the page waits, and claims nothing of the file', async () => {
    const page = await pages.open({ before: 'host.silent.exportProfile = true' });
    await button(page, 'Export profile').click();
    await page.getByText('Choose where to save it in the dialog that has opened.').waitFor();
    const pressed = button(page, 'Export profile');
    assert.equal(await pressed.getAttribute('aria-busy'), 'true');
    assert.equal(await focused(page), 'Export profile', 'the focus stays');
    await page.keyboard.press('Enter');
    await pressed.click({ force: true });
    assert.deepEqual(await callsOf(page, 'exportProfile'), ['']);
    for (const name of ['Import profile', 'New profile', 'Clear profile', 'Delete profile']) {
      assert.ok(await button(page, name).isDisabled(), name);
    }
    assert.ok(await page.getByRole('combobox').isDisabled());
    await picture(page, 'export-open');
    await pages.close(page);

    const again = await pages.open();
    await button(again, 'Export profile').click();
    assert.deepEqual(await expectCall(again, 'exportProfile'), ['']);
    await settled(again);
    assert.equal(await done(again).innerText(), '');
    assert.equal(await again.getByRole('alert').innerText(), '');
    assert.equal(await button(again, 'Export profile').getAttribute('aria-busy'), null);
    await pages.close(again);
  });

  test('a program that answers nothing while its dialog is open is not said to be at fault', async () => {
    const page = await pages.open();
    const state = page.getByRole('status', { name: 'State' });
    await page.evaluate(() => {
      host.silent.importProfile = true;
      host.silent.getTrackerStatus = true;
    });
    await button(page, 'Import profile').click();
    await state.getByText('A file dialog is open').waitFor();
    assert.ok(!(await state.innerText()).includes('Waiting'));
    await picture(page, 'import-open-silent');
    await pages.close(page);
  });

  test('a program that stays silent after its dialog is said to be', async () => {
    const page = await pages.open();
    const state = page.getByRole('status', { name: 'State' });
    await page.evaluate(() => {
      host.commands.importProfile = () => '{"outcome":"cancelled"}';
      host.delay = 500;
    });
    await button(page, 'Import profile').click();
    await page.evaluate(() => (host.silent.getTrackerStatus = true));
    await button(page, 'Import profile').and(page.locator(':not([aria-busy])')).waitFor();
    await state.getByText('Waiting for Varnelle to answer').waitFor();
    await pages.close(page);
  });

  test('closed without a choice: nothing is said and nothing changes', async () => {
    const page = await pages.open();
    await button(page, 'Import profile').click();
    assert.deepEqual(await expectCall(page, 'importProfile'), ['']);
    await settled(page);
    assert.equal(await done(page).innerText(), '');
    assert.equal(await page.getByRole('alert').innerText(), '');
    assert.equal(await dialog(page).count(), 0);
    await pages.close(page);
  });

  test('while a recording runs there is no import and no export, and the page says why', async () => {
    const page = await pages.open({ before: "host.status.state = 'Recording'" });
    await page.getByText('The profile stays as it is while a recording runs.').waitFor();
    assert.ok(await button(page, 'Import profile').isDisabled());
    assert.ok(await button(page, 'Export profile').isDisabled());
    await pages.close(page);
  });

  test('a failing dialog is an alert', async () => {
    const page = await pages.open({ before: "host.failing.importProfile = 'no dialog'" });
    await button(page, 'Import profile').click();
    await page.getByText('Varnelle could not import the macro (no dialog). Please try again.').waitFor();
    assert.equal(await button(page, 'Import profile').getAttribute('aria-busy'), null);
    await pages.close(page);
  });

  test('a page in the own window of a panel has no buttons for them', async () => {
    const page = await pages.open({ absent: mainWindowCommands });
    await settled(page);
    assert.equal(await button(page, 'Import profile').count(), 0);
    assert.equal(await button(page, 'Export profile').count(), 0);
    assert.deepEqual(page.faults, []);
    await pages.close(page);
  });
});

describe('after an import', () => {
  test('the profile is in the list and said, and its settings wait until they are asked for', async () => {
    const page = await pages.open({
      before: "host.settings.sms = 70; host.importOutcome = { outcome: 'imported' }",
    });
    await button(page, 'Import profile').click();
    await done(page).getByText('Imported as Farm (Imported)').waitFor();
    const select = page.getByRole('combobox', { name: 'Profile' });
    assert.equal(await select.locator('option:checked').innerText(), 'Farm (Imported)');
    await page.locator('#events').getByRole('option').first().waitFor();
    assert.ok(await page.getByText('If the file held tool settings, they are not in use yet.').isVisible());
    await picture(page, 'imported');
    await forgetCalls(page);
    await button(page, 'Use them').click();
    assert.deepEqual(await expectCall(page, 'switchProfile'), ['1']);
    await button(page, 'Use them').waitFor({ state: 'detached' });
    await pages.close(page);
  });

  test('settings that a change has replaced are not offered any more', async () => {
    const page = await pages.open({ before: "host.importOutcome = { outcome: 'imported' }" });
    await button(page, 'Import profile').click();
    await button(page, 'Use them').waitFor();
    await page.getByLabel('Right', { exact: true }).click();
    await button(page, 'Use them').waitFor({ state: 'detached' });

    await button(page, 'Import profile').click();
    await button(page, 'Use them').waitFor();
    await page.evaluate(() => host.status.keySpamTargets.push('A'));
    await button(page, 'Use them').waitFor({ state: 'detached' });
    await pages.close(page);
  });

  test('a file without settings puts the tools back, and the page says so', async () => {
    const page = await pages.open({
      before: `host.settings.sms = 70; host.importHasSettings = false; host.importOutcome = { outcome: 'imported' }`,
    });
    const field = page.getByRole('textbox', { name: 'Click interval: milliseconds' });
    await page.waitForFunction(
      () => document.querySelector('[aria-label="Click interval: milliseconds"]').value === '70',
    );
    await button(page, 'Import profile').click();
    await page.getByText('The file held no tool settings, so both tools are at their defaults.').waitFor();
    assert.equal(await field.inputValue(), '5');
    assert.equal(await button(page, 'Use them').count(), 0);
    await settled(page);
    assert.ok(await page.getByText('The file held no tool settings').isVisible());
    await pages.close(page);
  });

  test('a refused file is told in its own sentence until it is dismissed', async () => {
    const message =
      '.mcr files are no longer supported. Re-export that profile as .vrlmacro, then import that.';
    const page = await pages.open({
      before: `host.importOutcome = { outcome: 'error', message: ${JSON.stringify(message)} }`,
    });
    await button(page, 'Import profile').click();
    await page.getByRole('alert').getByText(message).waitFor();
    await picture(page, 'import-refused');
    await button(page, 'Start clicking').click();
    await settled(page);
    assert.ok(await page.getByRole('alert').getByText(message).isVisible(), 'another command leaves it');
    await button(page, 'Dismiss').click();
    assert.equal(await page.getByRole('alert').innerText(), '');
    await pages.close(page);
  });

  test('an import that the program tells of by itself', async () => {
    const page = await pages.open();
    await forgetCalls(page);
    await page.evaluate(() => {
      host.import();
      eval('if (window.onProfileImported) window.onProfileImported();');
    });
    await done(page).getByText('Imported as Farm (Imported)').waitFor();
    const asked = (await allCalls(page)).map(([name]) => name);
    for (const name of ['getProfiles', 'getSettings', 'getMacroEvents'])
      assert.ok(asked.includes(name), name);
    assert.equal(await page.getByRole('combobox').locator('option:checked').innerText(), 'Farm (Imported)');
    await pages.close(page);
  });

  test('a list that cannot be read gives no wrong name', async () => {
    const page = await pages.open();
    await page.evaluate(() => {
      host.import();
      host.failing.getProfiles = 'no';
      window.onProfileImported();
    });
    await done(page).getByText('Imported', { exact: true }).waitFor();
    await pages.close(page);
  });
});

test('nothing moves in the page while a profile is imported, exported, cleared or deleted', async () => {
  for (const width of [420, 360]) {
    const page = await pages.open({
      before:
        "host.appSettings.showWarnings = true; host.profiles.names.push('Farm'); host.profiles.current = 1",
      viewport: { width, height: 560 },
    });
    await page.evaluate(() => (host.events = [{ time: 1, desc: 'Autoclicker ON' }]));
    await settled(page);
    const places = () =>
      page.evaluate(() =>
        [...document.querySelectorAll('.panel, .profile__first, .profile__step')].map((element) => {
          const { x, y, height } = element.getBoundingClientRect();
          return [element.id || element.className, x, y + scrollY, height].join(' ');
        }),
      );
    const still = await places();
    for (const name of ['Delete profile', 'Clear profile', 'New profile']) {
      await button(page, name).click();
      assert.deepEqual(await places(), still, `${name} at ${width}`);
      await picture(page, `profile-${name.split(' ')[0].toLowerCase()}-${width}`);
      await page.keyboard.press('Escape');
    }
    await page.evaluate(() => (host.silent.importProfile = true));
    await button(page, 'Import profile').click();
    await page.getByText('Choose a macro file').waitFor();
    assert.deepEqual(await places(), still, `importing at ${width}`);
    await page.evaluate(() => (host.import(), window.onProfileImported()));
    await done(page).getByText('Imported as').waitFor();
    assert.deepEqual(await places(), still, `imported at ${width}`);
    await pages.close(page);
  }
});

describe('the held macro', () => {
  test('what is found, when, and the picture in time', async () => {
    const page = await pages.open({ before: `host.pending = ${held('aa')}; ${kSummary}` });
    await dialog(page).waitFor();
    assert.equal(await focused(page), 'Don\u2019t import', 'the safe choice has the focus');
    await dialog(page).getByText('48,210 events, 1:30.5 long').waitFor();
    assert.match(await dialog(page).innerText(), /Import \u201cFarm run\u201d\?/);
    assert.ok(await dialog(page).getByText('Parts of it can do harm: 2 dangers, 1 caution.').isVisible());
    const rows = await dialog(page).getByRole('listitem').allInnerTexts();
    assert.deepEqual(
      rows.map((row) => row.split('\n').filter((line) => line.trim() !== '')),
      [
        ['1', 'Danger', 'at 0:01.3', kRun],
        ['2', 'Danger', 'at 1:04.1', 'Selects everything and deletes it.'],
        ['3', 'Caution', 'at 1:05.0', kSwitch],
      ],
    );
    assert.equal(await page.locator('.findings-timeline__lane path').count(), 3);
    const places = await page.locator('.findings-timeline__number').evaluateAll((all) =>
      all.map((sign) => {
        const line = sign.closest('.findings-timeline__drawing').querySelector('svg').getBoundingClientRect();
        const box = sign.getBoundingClientRect();
        return [sign.innerText, (box.x + box.width / 2 - line.x) / line.width, box.y];
      }),
    );
    for (const [name, at] of [
      ['1', 1.25],
      ['2', 64.08],
      ['3', 65],
    ]) {
      const [, place] = places.find(([sign]) => sign === name);
      assert.ok(Math.abs(place - at / 90.5) < 0.01, `${name} at ${place}`);
    }
    assert.ok(places[2][2] < places[1][2] - 18, 'signs close together do not cover each other');
    await picture(page, 'held');
    await page.locator('.dialog__body').evaluate((body) => body.scrollTo(0, body.scrollHeight));
    await picture(page, 'held-end');
    await pages.close(page);
  });

  test('where the program tells no more, the picture shows the findings alone', async () => {
    const page = await pages.open({
      before: `host.pending = ${held('aa')}`,
      absent: ['getPendingMacroSummary'],
    });
    await dialog(page).getByText('The macro may go on after the last.').waitFor();
    assert.equal(await page.locator('.findings-timeline__lane').count(), 0);
    assert.equal(await page.locator('.findings-timeline__number').count(), 3);
    assert.match(await dialog(page).innerText(), /Import this macro\?/);
    await picture(page, 'held-findings-only');
    await pages.close(page);
  });

  test('a summary of another macro, or of none, is not shown', async () => {
    const page = await pages.open({
      before: `host.pending = ${held('bb')}; ${kSummary}`,
    });
    await expectCall(page, 'getPendingMacroSummary');
    await settled(page);
    assert.equal(await page.locator('.findings-timeline__lane').count(), 0);
    assert.ok(!(await dialog(page).innerText()).includes('Farm run'));
    await pages.close(page);
  });

  test('the document may bring name, length and lanes itself', async () => {
    const more = `, name: 'Own', events: 3, seconds: 70, lanes: { moves: [1, 0], clicks: [0, 1], keys: [2, 2] }`;
    const page = await pages.open({ before: `host.pending = ${held('aa', more)}` });
    await dialog(page).getByText('3 events, 1:10.0 long').waitFor();
    assert.equal(await page.locator('.findings-timeline__lane path').count(), 3);
    await pages.close(page);
  });

  for (const [what, act] of [
    ['the button', (page) => button(page, 'Don\u2019t import').click()],
    ['Esc', (page) => page.keyboard.press('Escape')],
    ['Enter on the focused button', (page) => page.keyboard.press('Enter')],
  ]) {
    test(`it is kept out by ${what}`, async () => {
      const page = await pages.open();
      await page.evaluate(`host.importOutcome = ${held('aa')}`);
      await button(page, 'Import profile').click();
      await dialog(page).waitFor();
      await act(page);
      await dialog(page).waitFor({ state: 'detached' });
      assert.deepEqual(await callsOf(page, 'cancelMacroImport'), ['aa']);
      assert.deepEqual(await callsOf(page, 'confirmMacroImport'), []);
      await done(page).getByText('Not imported').waitFor();
      assert.equal(await focused(page), 'Import profile', 'the focus is back');
      assert.equal(await page.getByRole('combobox').locator('option').count(), 1);
      await pages.close(page);
    });
  }

  test('it is let in, by keyboard alone, and not before a moment has passed', async () => {
    const page = await pages.open({ viewport: kWindow });
    await stopClock(page);
    await page.evaluate(`host.pending = ${held('aa')}; window.onPendingMacroImport(host.pending)`);
    await dialog(page).waitFor();
    const anyway = button(page, 'Import anyway');
    assert.equal(await anyway.getAttribute('aria-disabled'), 'true');
    await page.keyboard.press('Tab');
    assert.equal(await focused(page), 'Import anyway');
    await page.keyboard.press('Enter');
    assert.deepEqual(await callsOf(page, 'confirmMacroImport'), []);
    await page.clock.resume();
    await anyway.and(page.locator(':not([aria-disabled])')).waitFor();
    await page.keyboard.press('Enter');
    await dialog(page).waitFor({ state: 'detached' });
    assert.deepEqual(await callsOf(page, 'confirmMacroImport'), ['aa']);
    await done(page).getByText('Imported as Farm (Imported)').waitFor();
    assert.equal(await page.getByRole('combobox').locator('option:checked').innerText(), 'Farm (Imported)');
    assert.equal(await page.getByRole('alert').innerText(), '');
    await pages.close(page);
  });

  test('it is let in also where the program does not call back', async () => {
    const page = await pages.open({
      before: `host.pending = ${held('aa')}; host.commands.confirmMacroImport = () => { host.pending = { outcome: 'none' }; host.import(); }`,
    });
    await button(page, 'Import anyway').click();
    await done(page).getByText('Imported as Farm (Imported)').waitFor();
    await pages.close(page);
  });

  test('the Tab key stays in the sheet', async () => {
    const page = await pages.open({ before: `host.pending = ${held('aa')}` });
    await dialog(page).waitFor();
    for (let i = 0; i < 8; i++) {
      await page.keyboard.press('Tab');
      const where = await page.evaluate(
        () => document.activeElement === document.body || document.activeElement.closest('dialog') !== null,
      );
      assert.ok(where);
    }
    await pages.close(page);
  });

  test('one that comes while another is in sight takes its place, visibly', async () => {
    const page = await pages.open({ before: `host.pending = ${held('aa')}`, viewport: kWindow });
    const anyway = button(page, 'Import anyway');
    await anyway.and(page.locator(':not([aria-disabled])')).waitFor();
    await anyway.focus();
    await stopClock(page);
    await page.evaluate(`host.pending = ${held('bb')}; host.pending.matches.shift();
      eval('if (window.onPendingMacroImport) window.onPendingMacroImport(' + JSON.stringify(host.pending) + ');')`);
    await dialog(page).getByText('in place of the one before, which was not imported').waitFor();
    assert.equal(await dialog(page).count(), 1);
    assert.equal(await focused(page), 'Don\u2019t import');
    assert.equal(
      await anyway.getAttribute('aria-disabled'),
      'true',
      'a press meant for the other is not taken',
    );
    await page.clock.resume();
    await picture(page, 'held-replaced');
    await anyway.click();
    await dialog(page).waitFor({ state: 'detached' });
    assert.deepEqual(await callsOf(page, 'confirmMacroImport'), ['bb']);
    await pages.close(page);
  });

  test('told twice, it is shown once', async () => {
    const page = await pages.open({ before: `host.pending = ${held('aa')}` });
    await dialog(page).waitFor();
    await page.evaluate(() => window.onPendingMacroImport(host.pending));
    await settled(page);
    assert.equal(await dialog(page).getByText('in place of the one before').count(), 0);
    await pages.close(page);
  });

  test('a decision on a macro that was replaced unseen: the new one is shown', async () => {
    const page = await pages.open({ before: `host.pending = ${held('aa')}` });
    await dialog(page).waitFor();
    await page.evaluate(`host.pending = ${held('bb')}`);
    await button(page, 'Import anyway').click();
    await dialog(page).getByText('in place of the one before, which was not imported').waitFor();
    assert.equal(await page.getByRole('combobox', { includeHidden: true }).locator('option').count(), 1);
    await pages.close(page);
  });

  test('a decision on a macro that is gone: told as it is', async () => {
    const page = await pages.open({ before: `host.pending = ${held('aa')}` });
    await dialog(page).waitFor();
    await page.evaluate(() => (host.pending = { outcome: 'none' }));
    await button(page, 'Import anyway').click();
    await page.getByRole('alert').getByText('no longer held, so it was not imported').waitFor();
    assert.equal(await dialog(page).count(), 0);
    await pages.close(page);
  });

  test('a decision that fails is said in the sheet, which stays', async () => {
    const page = await pages.open({
      before: `host.pending = ${held('aa')}; host.failing.cancelMacroImport = 'no'`,
    });
    await button(page, 'Don\u2019t import').click();
    await dialog(page).getByText('Varnelle could not drop the macro (no). Please try again.').waitFor();
    await picture(page, 'held-failed');
    await page.evaluate(() => delete host.failing.cancelMacroImport);
    await page.keyboard.press('Escape');
    await page.keyboard.press('Escape');
    await dialog(page).waitFor({ state: 'detached' });
    assert.deepEqual(await callsOf(page, 'cancelMacroImport'), ['aa', 'aa']);
    await pages.close(page);
  });

  test('while a recording runs it waits, and what runs can be stopped from the sheet', async () => {
    const page = await pages.open({
      before: `host.pending = ${held('aa')}; host.status.state = 'Recording'`,
    });
    await dialog(page).getByText('It can be imported when the recording has ended.').waitFor();
    await dialog(page).getByText('Still recording.').waitFor();
    await picture(page, 'held-recording');
    assert.equal(await button(page, 'Import anyway').getAttribute('aria-disabled'), 'true');
    await button(page, 'Stop now').click();
    assert.deepEqual(await expectCall(page, 'stopRecording'), ['']);
    await button(page, 'Import anyway').click();
    assert.deepEqual(await expectCall(page, 'confirmMacroImport'), ['aa']);
    await pages.close(page);
  });

  test('a million findings and events: no more than a hundred are laid out, and the rest is counted', async () => {
    const page = await pages.open();
    await page.evaluate(() => {
      const matches = Array.from({ length: 1_000_000 }, (_, i) => ({
        severity: i % 3 ? 'CAUTION' : 'DANGER',
        message: `Finding ${i}`,
        atSec: i / 10,
      }));
      host.pendingSummary = {
        pendingId: 'aa', name: 'W'.repeat(5000), events: 1_000_000, seconds: 100_000,
        moves: Array(100).fill(1e6), clicks: Array(100).fill(0), keys: Array(100).fill(1),
      }; // prettier-ignore
      window.onPendingMacroImport({ outcome: 'pending', pendingId: 'aa', level: 'danger', matches });
    });
    await dialog(page).getByRole('listitem').first().waitFor();
    assert.equal(await dialog(page).getByRole('listitem').count(), 100);
    assert.ok(await dialog(page).getByText('and 999,900 more.').isVisible());
    assert.ok(await dialog(page).getByText('333,334 dangers, 666,666 cautions').isVisible());
    await dialog(page).getByText('1,000,000 events').waitFor();
    const box = await button(page, 'Don\u2019t import').boundingBox();
    assert.ok(box.y + box.height <= 560, 'a long name leaves room for the rest');
    await picture(page, 'held-million');
    await pages.close(page);
  });

  for (const [name, options] of [
    ['lanes', { before: `host.pending = ${held('aa')}; ${kSummary}` }],
    ['findings', { before: `host.pending = ${held('aa')}; host.status.autoClicking = true` }],
    [
      'at-360',
      { before: `host.pending = ${held('aa')}; ${kSummary}`, viewport: { width: 360, height: 560 } },
    ],
  ]) {
    test(`axe and contrast: ${name}`, async () => {
      const page = await pages.open(options);
      await button(page, 'Import anyway').and(page.locator(':not([aria-disabled])')).waitFor();
      await settled(page);
      assert.deepEqual(await axeFinds(page), []);
      const found = await page.evaluate(contrastOf);
      assert.deepEqual(
        found.filter(([, ratio, least]) => ratio < least),
        [],
      );
      assert.ok(found.some(([what]) => what.startsWith('findings-timeline__lane')) === (name !== 'findings'));
      assert.ok(
        (await page.evaluate(() => document.documentElement.scrollWidth)) <= page.viewportSize().width,
      );
      await picture(page, `held-axe-${name}`);
      await pages.close(page);
    });
  }
});

describe('what native code calls', () => {
  test('alert is a notice of the page that stays until it is dismissed, and several wait in a row', async () => {
    const page = await pages.open();
    let native = false;
    page.on('dialog', (one) => ((native = true), one.dismiss()));
    await page.evaluate(() => {
      eval('alert("That macro file could not be imported.")');
      eval('alert("That macro file could not be imported.")');
      eval('alert("Second \\u201cfile\\u201d")');
    });
    const alert = page.getByRole('alert');
    await alert.getByText('That macro file could not be imported.').waitFor();
    assert.ok(await alert.getByText('1 more after this.').isVisible());
    await picture(page, 'alert');
    await button(page, 'Dismiss').click();
    await alert.getByText('Second \u201cfile\u201d').waitFor();
    await button(page, 'Dismiss').click();
    assert.equal(await alert.innerText(), '');
    assert.equal(native, false);
    await pages.close(page);
  });

  test('a message kept from before the page is told once', async () => {
    const page = await pages.open({ before: "host.pendingAlert = 'That macro file could not be imported.'" });
    await page.getByRole('alert').getByText('That macro file could not be imported.').waitFor();
    assert.deepEqual(await callsOf(page, 'getPendingThemeAlert'), ['']);
    await pages.close(page);
  });

  test('calls for parts that the page does not have do nothing', async () => {
    const page = await pages.open();
    await page.evaluate(() => {
      eval('if (window.onUpdateAvailable) window.onUpdateAvailable("1.2","1.0");');
      eval('if (window.onUpdateProgress) onUpdateProgress(1,2);');
      eval('if (window.onUpdateInstalling) onUpdateInstalling();');
      eval('if (window.onThemeFolderChanged) window.onThemeFolderChanged();');
      eval('if (window.onThemeDropInstalled) window.onThemeDropInstalled({"appliedKey":"x"});');
      for (const odd of [undefined, null, 7, 'x', {}, { outcome: 'none' }, { outcome: 'pending' }]) {
        window.onPendingMacroImport(odd);
      }
    });
    await settled(page);
    assert.deepEqual(page.faults, []);
    assert.equal(await dialog(page).count(), 0);
    await pages.close(page);
  });
});

describe('the notice of what is done', () => {
  const shown = (page) => done(page).getByText('Imported as Farm (Imported)');
  const open = async () => {
    const page = await pages.open({ viewport: kWindow });
    await stopClock(page);
    return page;
  };
  const announce = (page) => page.evaluate(() => (host.import(), window.onProfileImported()));

  test('stays at least 5 seconds, longer while it is pointed at or has the focus, and then goes', async () => {
    const page = await open();
    await announce(page);
    await shown(page).waitFor();
    await page.clock.runFor(5000);
    assert.ok(await shown(page).isVisible());
    await shown(page).hover();
    await page.clock.runFor(60000);
    assert.ok(await shown(page).isVisible(), 'pointed at');
    await button(page, 'Dismiss the notice').focus();
    await page.mouse.move(5, 5);
    await page.clock.runFor(60000);
    assert.ok(await shown(page).isVisible(), 'focused');
    await button(page, 'Start clicking').focus();
    await page.clock.runFor(5000);
    assert.ok(await shown(page).isVisible());
    await page.clock.runFor(4000);
    await shown(page).waitFor({ state: 'detached' });
    await pages.close(page);
  });

  test('is one at a time, and can be dismissed', async () => {
    const page = await pages.open();
    await announce(page);
    await shown(page).waitFor();
    await page.evaluate(() => (host.importName = 'Second'));
    await announce(page);
    await done(page).getByText('Imported as Second').waitFor();
    assert.equal(await shown(page).count(), 0);
    await button(page, 'Dismiss the notice').click();
    assert.equal(await done(page).innerText(), '');
    await pages.close(page);
  });

  test('waits for somebody who can see it', async () => {
    const page = await open();
    await page.evaluate(() => {
      Object.defineProperty(document, 'hidden', { value: true, configurable: true });
      document.dispatchEvent(new Event('visibilitychange'));
    });
    await announce(page);
    await page.clock.runFor(60000);
    assert.ok(await shown(page).isVisible());
    await pages.close(page);
  });
});

test('times and places', async () => {
  const { clockTime } = await importSource('format.ts');
  const { laneOutline, placeMarks } = await importSource('components/findings-layout.ts');
  for (const [seconds, text] of [
    [0, '0:00.0'],
    [0.04, '0:00.0'],
    [9.95, '0:10.0'],
    [59.96, '1:00.0'],
    [3725.14, '62:05.1'],
    [-1.5, '-0:01.5'],
    [-0.01, '0:00.0'],
  ]) {
    assert.equal(clockTime(seconds), text);
  }
  assert.equal(laneOutline([]), '');
  assert.equal(laneOutline([0, 0]), '');
  assert.equal(laneOutline([4, 0, 1, 0]), 'M0 20V0H25V20zM50 20V10H75V20z');
  assert.deepEqual(placeMarks([5, 0, 10, 20, -3], 10), [
    { index: 4, position: 0, row: 0 },
    { index: 1, position: 0, row: 1 },
    { index: 0, position: 0.5, row: 0 },
    { index: 2, position: 1, row: 0 },
    { index: 3, position: 1, row: 1 },
  ]);
  assert.equal(placeMarks(Array(10).fill(1), 10).length, 3, 'no more than there is room for');
  assert.deepEqual(placeMarks([0], 0), [{ index: 0, position: 0, row: 0 }]);
});
