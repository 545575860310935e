// Imported macros: the file dialogs, the message after an import, and the decision on a pending import.
import { axeFinds, contrastOf } from './page_checks.mjs';
import {
  allCalls,
  assert,
  button,
  callsOf,
  chooseProfile,
  closePage,
  describe,
  expectCall,
  focused,
  forgetCalls,
  importSource,
  mainWindowCommands,
  openPage,
  pageTest,
  picture,
  profileBox,
  profileNames,
  settled,
  stopClock,
  test,
  textBox,
  tool,
} from './page_test.mjs';

const kRun =
  'Opens the Windows Run box, types something and presses Enter. This can start programs or run commands on your PC.';
const kSwitch = 'Switches between your open windows, so its keys and clicks may land somewhere unexpected.';
const pendingImport = (id, more = {}) => ({
  outcome: 'pending',
  pendingId: id,
  level: 'danger',
  matches: [
    { severity: 'DANGER', message: kRun, atSec: 1.25 },
    { severity: 'DANGER', message: 'Selects everything and deletes it.', atSec: 64.08 },
    { severity: 'CAUTION', message: kSwitch, atSec: 65 },
  ],
  ...more,
});
const kPending = { pendingImport: pendingImport('aa') };
const kSummary = {
  pendingSummary: {
    pendingId: 'aa',
    name: 'Farm run',
    events: 48210,
    seconds: 90.5,
    moves: Array.from({ length: 100 }, (_, i) => Math.round(400 + 380 * Math.sin(i / 7))),
    clicks: Array.from({ length: 100 }, (_, i) => (i % 11 ? 0 : 3)),
    keys: Array.from({ length: 100 }, (_, i) => ((i > 2 && i < 9) || (i > 70 && i < 76) ? (i % 5) + 1 : 0)),
  },
};
const dialog = (page) => page.getByRole('alertdialog');
// Shows a pending import as native code does: by a call in the page.
const showPending = (page, pending) =>
  page.evaluate((document) => {
    host.setPendingImport(document);
    eval(`if (window.onPendingMacroImport) window.onPendingMacroImport(${JSON.stringify(document)});`);
  }, pending);
const done = (page) => page.getByRole('status', { name: 'Done' });

describe('the file dialogs', () => {
  test('export sends one command, waits, and names the file', async () => {
    const page = await openPage({ silent: ['exportMacro'] });
    await button(page, 'Export profile').click();
    await page.getByText('Choose a name and a folder in the file dialog.').waitFor();
    const pressed = button(page, 'Export profile');
    assert.equal(await pressed.getAttribute('aria-busy'), 'true');
    assert.equal(await focused(page), 'Export profile', 'the focus stays');
    await page.keyboard.press('Enter');
    await pressed.click({ force: true });
    assert.deepEqual(await callsOf(page, 'exportMacro'), ['']);
    for (const name of ['Import profile', 'New profile', 'Clear profile', 'Delete profile']) {
      assert.ok(await button(page, name).isDisabled(), name);
    }
    assert.ok(await profileBox(page).isDisabled());
    await picture(page, 'export-open');
    await closePage(page);

    const again = await openPage();
    await button(again, 'Export profile').click();
    assert.deepEqual(await expectCall(again, 'exportMacro'), ['']);
    await settled(again);
    assert.equal(await done(again).innerText(), '', 'a cancelled dialog shows nothing');
    assert.equal(await again.getByRole('alert').innerText(), '');
    assert.equal(await button(again, 'Export profile').getAttribute('aria-busy'), null);
    await again.host.set({ exportOutcome: { outcome: 'written', file: 'Farm.vrlmacro' } });
    await button(again, 'Export profile').click();
    await done(again).getByText('Exported as Farm.vrlmacro').waitFor();
    await again.host.set({ exportOutcome: { outcome: 'failed', message: 'The disk is full.' } });
    await button(again, 'Export profile').click();
    await again.getByRole('alert').getByText('The disk is full.').waitFor();
    await closePage(again);
  });

  pageTest('blames no silent program while its file dialog is open', {}, async (page) => {
    const state = page.getByRole('status', { name: 'State' });
    await page.host.setSilent(['importProfile', 'getTrackerStatus']);
    await button(page, 'Import profile').click();
    await state.getByText('A file dialog is open').waitFor();
    assert.ok(!(await state.innerText()).includes('Waiting'));
    await picture(page, 'import-open-silent');
  });

  pageTest('says that it waits for a program that stays silent after its file dialog', {}, async (page) => {
    const state = page.getByRole('status', { name: 'State' });
    await page.evaluate(() => {
      host.commands.importProfile = () => '{"outcome":"cancelled"}';
      host.setAnswerDelay(500);
    });
    await button(page, 'Import profile').click();
    await page.host.setSilent(['getTrackerStatus']);
    await button(page, 'Import profile').and(page.locator(':not([aria-busy])')).waitFor();
    await state.getByText('Waiting for Varnelle to answer').waitFor();
  });

  pageTest('a cancelled import changes nothing and shows no message', {}, async (page) => {
    await button(page, 'Import profile').click();
    assert.deepEqual(await expectCall(page, 'importProfile'), ['']);
    await settled(page);
    assert.equal(await done(page).innerText(), '');
    assert.equal(await page.getByRole('alert').innerText(), '');
    assert.equal(await dialog(page).count(), 0);
  });

  pageTest(
    'disables import and export during a recording, and says why',
    { status: { state: 'Recording' } },
    async (page) => {
      await page.getByText('Profiles cannot be changed during a recording.').waitFor();
      assert.ok(await button(page, 'Import profile').isDisabled());
      assert.ok(await button(page, 'Export profile').isDisabled());
    },
  );

  pageTest(
    'shows an alert when the file dialog fails',
    { failing: { importProfile: 'no dialog' } },
    async (page) => {
      await button(page, 'Import profile').click();
      await page.getByText('Varnelle could not import the macro (no dialog). Please try again.').waitFor();
      assert.equal(await button(page, 'Import profile').getAttribute('aria-busy'), null);
    },
  );

  pageTest(
    'has no import and export buttons in a panel window',
    { absentCommands: mainWindowCommands },
    async (page) => {
      await settled(page);
      assert.equal(await button(page, 'Import profile').count(), 0);
      assert.equal(await button(page, 'Export profile').count(), 0);
    },
  );
});

describe('after an import', () => {
  pageTest(
    'announces and selects the new profile, and offers its settings',
    {
      settings: { autoclicker: { intervalMilliseconds: 70 } },
      importOutcome: { outcome: 'imported' },
    },
    async (page) => {
      await button(page, 'Import profile').click();
      await done(page).getByText('Imported as Farm (Imported): 1 event, 0:00.').waitFor();
      assert.equal(await profileBox(page).innerText(), 'Farm (Imported)');
      await page.locator('#events').getByRole('option').first().waitFor();
      assert.ok(await page.getByText('Settings in the file are not in use yet.').isVisible());
      await picture(page, 'imported');
      await forgetCalls(page);
      await button(page, 'Use them').click();
      assert.deepEqual(await expectCall(page, 'useImportedSettings'), ['']);
      await done(page).getByText('The tool settings of the file are in use.').waitFor();
      await button(page, 'Use them').waitFor({ state: 'detached' });
    },
  );

  pageTest(
    'keeps the offer of settings after a change of settings, until another profile is current',
    { importOutcome: { outcome: 'imported' } },
    async (page) => {
      await button(page, 'Import profile').click();
      await button(page, 'Use them').waitFor();
      await page.getByLabel('Right', { exact: true }).click();
      await page.host.setStatus({ targets: ['A'] });
      await button(
        page,
        'Use the file\u2019s tool settings: Imported as Farm (Imported): 1 event, 0:00.',
      ).click();
      await expectCall(page, 'useImportedSettings');
      await page.waitForFunction(
        () => document.querySelector('[aria-label="Click interval: milliseconds"]').value === '33',
      );
      await button(page, 'Import profile').click();
      await button(page, 'Use them').waitFor();
      await chooseProfile(page, 'Default Tracking Profile');
      await button(page, 'Use them').waitFor({ state: 'detached' });
    },
  );

  pageTest(
    'says what came in, and what did not',
    { importOutcome: { outcome: 'imported' }, importedProfile: { events: 340, skippedLines: 2 } },
    async (page) => {
      await button(page, 'Import profile').click();
      await done(page)
        .getByText('Imported as Farm (Imported): 340 events, 0:33. 2 lines could not be read.')
        .waitFor();
      await picture(page, 'imported-skipped');
    },
  );

  pageTest(
    'says that a file had no events',
    { importOutcome: { outcome: 'imported' }, importedProfile: { events: 0 } },
    async (page) => {
      await button(page, 'Import profile').click();
      await page
        .getByRole('alert')
        .getByText('Imported \u201cFarm (Imported)\u201d: no events could be read from this file.')
        .waitFor();
    },
  );

  pageTest('says that a file was not found, not that it is corrupt', {}, async (page) => {
    const corrupt = 'The file is corrupted.';
    await page.evaluate((text) => {
      host.commands.importProfile = () => {
        host.setLastImport({ outcome: 'failed', problem: 'notFound', file: 'farm.vrlmacro' });
        return JSON.stringify({ outcome: 'error', message: text });
      };
    }, corrupt);
    await button(page, 'Import profile').click();
    await page.getByRole('alert').getByText('The file \u201cfarm.vrlmacro\u201d was not found.').waitFor();
    await button(page, 'Dismiss').click();
    // The same by the program itself, and for another reason.
    await page.evaluate((text) => {
      host.setLastImport({ outcome: 'failed', problem: 'unreadable', file: 'farm.vrlmacro' });
      window.alert(text);
    }, corrupt);
    await page.getByRole('alert').getByText(corrupt).waitFor();
    assert.equal(await page.getByText('was not found').count(), 0);
  });

  pageTest(
    'says that a file without settings sets the tools to their defaults',
    {
      settings: { autoclicker: { intervalMilliseconds: 70 } },
      importedProfile: { hasSettings: false },
      importOutcome: { outcome: 'imported' },
    },
    async (page) => {
      const field = textBox(page, 'Click interval: milliseconds');
      await page.waitForFunction(
        () => document.querySelector('[aria-label="Click interval: milliseconds"]').value === '70',
      );
      await button(page, 'Import profile').click();
      await page.getByText('The file has no settings. Both tools use their defaults.').waitFor();
      assert.equal(await field.inputValue(), '5');
      assert.equal(await button(page, 'Use them').count(), 0);
      await settled(page);
      assert.ok(await page.getByText('The file has no settings.').isVisible());
    },
  );

  const message =
    '.mcr files are no longer supported. Re-export that profile as .vrlmacro, then import that.';
  const kRejected = { importOutcome: { outcome: 'error', message } };
  pageTest('shows the reason for a rejected file until it is dismissed', kRejected, async (page) => {
    await button(page, 'Import profile').click();
    await page.getByRole('alert').getByText(message).waitFor();
    await picture(page, 'import-refused');
    await button(page, 'Start clicking').click();
    await settled(page);
    assert.ok(await page.getByRole('alert').getByText(message).isVisible(), 'another command keeps it');
    await button(page, 'Dismiss').click();
    assert.equal(await page.getByRole('alert').innerText(), '');
  });

  pageTest('shows why the work cannot be saved until it can', {}, async (page) => {
    const problem = 'Your work cannot be saved: the disk is full.';
    for (let save = 0; save < 2; save++) await page.evaluate((text) => window.onSaveProblem(text), problem);
    await page.getByRole('alert').getByText(problem).waitFor();
    assert.equal(await page.getByRole('alert').getByText(problem).count(), 1);
    assert.equal(await button(page, 'Dismiss').count(), 0);
    assert.deepEqual(await axeFinds(page), []);
    await picture(page, 'save-problem');
    await page.evaluate(() => window.onSaveProblem(''));
    await page.getByText(problem).waitFor({ state: 'detached' });
  });

  pageTest('shows an import that the program reports by itself', {}, async (page) => {
    await forgetCalls(page);
    await page.evaluate(() => {
      host.addImportedProfile();
      eval('if (window.onProfileImported) window.onProfileImported();');
    });
    await done(page).getByText('Imported as Farm (Imported)').waitFor();
    const asked = (await allCalls(page)).map(([name]) => name);
    for (const name of ['getProfiles', 'getSettings', 'getMacroRows']) assert.ok(asked.includes(name), name);
    assert.equal(await profileBox(page).innerText(), 'Farm (Imported)');
  });

  pageTest('names the profile also when the list cannot be read', {}, async (page) => {
    await page.evaluate(() => {
      host.addImportedProfile();
      host.setFailing({ getProfiles: 'no' });
      window.onProfileImported();
    });
    await done(page).getByText('Imported as Farm (Imported): 1 event, 0:00.').waitFor();
  });
});

test('moves nothing while a profile is imported, exported, cleared or deleted', async () => {
  for (const width of [420, 360]) {
    const page = await openPage({
      preferences: { showWarnings: true },
      profiles: { names: ['Default Tracking Profile', 'Farm'], current: 1 },
      events: [tool(1, 'autoclicker', true)],
      viewport: { width, height: 560 },
    });
    const positions = () =>
      page.evaluate(() =>
        [...document.querySelectorAll('.panel, .profile__first, .profile__step')].map((element) => {
          const { x, y, height } = element.getBoundingClientRect();
          return [element.id || element.className, x, y + scrollY, height].join(' ');
        }),
      );
    const before = await positions();
    for (const name of ['Delete profile', 'Clear profile', 'New profile']) {
      await button(page, name).click();
      assert.deepEqual(await positions(), before, `${name} at ${width}`);
      await picture(page, `profile-${name.split(' ')[0].toLowerCase()}-${width}`);
      await page.keyboard.press('Escape');
    }
    await page.host.setSilent(['importProfile']);
    await button(page, 'Import profile').click();
    await page.getByText('Choose a macro file').waitFor();
    assert.deepEqual(await positions(), before, `importing at ${width}`);
    await page.evaluate(() => (host.addImportedProfile(), window.onProfileImported()));
    await done(page).getByText('Imported as').waitFor();
    assert.deepEqual(await positions(), before, `imported at ${width}`);
    await closePage(page);
  }
});

describe('a pending import', () => {
  pageTest('shows the findings, their times and the timeline', { ...kPending, ...kSummary }, async (page) => {
    await dialog(page).waitFor();
    assert.equal(await focused(page), 'Don\u2019t import', 'the safe choice has the focus');
    await dialog(page).getByText('48,210 events, 1:30.5 long').waitFor();
    assert.match(await dialog(page).innerText(), /Import \u201cFarm run\u201d\?/);
    assert.ok(await dialog(page).getByText('This macro may do harm: 2 dangers, 1 caution.').isVisible());
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
    const positions = await page.locator('.findings-timeline__number').evaluateAll((all) =>
      all.map((mark) => {
        const line = mark.closest('.findings-timeline__drawing').querySelector('svg').getBoundingClientRect();
        const box = mark.getBoundingClientRect();
        return [mark.innerText, (box.x + box.width / 2 - line.x) / line.width, box.y];
      }),
    );
    for (const [name, at] of [
      ['1', 1.25],
      ['2', 64.08],
      ['3', 65],
    ]) {
      const [, position] = positions.find(([number]) => number === name);
      assert.ok(Math.abs(position - at / 90.5) < 0.01, `${name} at ${position}`);
    }
    assert.ok(positions[2][2] < positions[1][2] - 18, 'signs close together do not cover each other');
    await picture(page, 'held');
    await page.locator('.dialog__body').evaluate((body) => body.scrollTo(0, body.scrollHeight));
    await picture(page, 'held-end');
  });

  pageTest(
    'the timeline shows only the findings without a summary',
    {
      ...kPending,
      absentCommands: ['getPendingMacroSummary'],
    },
    async (page) => {
      await dialog(page).getByText('The macro may be longer.').waitFor();
      assert.equal(await page.locator('.findings-timeline__lane').count(), 0);
      assert.equal(await page.locator('.findings-timeline__number').count(), 3);
      assert.match(await dialog(page).innerText(), /Import this macro\?/);
      await picture(page, 'held-findings-only');
    },
  );

  pageTest(
    'ignores the summary of another macro',
    {
      pendingImport: pendingImport('bb'),
      ...kSummary,
    },
    async (page) => {
      await expectCall(page, 'getPendingMacroSummary');
      await settled(page);
      assert.equal(await page.locator('.findings-timeline__lane').count(), 0);
      assert.ok(!(await dialog(page).innerText()).includes('Farm run'));
    },
  );

  const kDocument = pendingImport('aa', {
    name: 'Own',
    events: 3,
    seconds: 70,
    lanes: { moves: [1, 0], clicks: [0, 1], keys: [2, 2] },
  });
  pageTest(
    'shows name, length and lanes from the document itself',
    { pendingImport: kDocument },
    async (page) => {
      await dialog(page).getByText('3 events, 1:10.0 long').waitFor();
      assert.equal(await page.locator('.findings-timeline__lane path').count(), 3);
    },
  );

  for (const [what, act] of [
    ['the button', (page) => button(page, 'Don\u2019t import').click()],
    ['Esc', (page) => page.keyboard.press('Escape')],
    ['Enter on the focused button', (page) => page.keyboard.press('Enter')],
  ]) {
    pageTest(`${what} rejects it`, {}, async (page) => {
      await page.host.set({ importOutcome: pendingImport('aa') });
      await button(page, 'Import profile').click();
      await dialog(page).waitFor();
      await act(page);
      await dialog(page).waitFor({ state: 'detached' });
      assert.deepEqual(await callsOf(page, 'cancelMacroImport'), ['aa']);
      assert.deepEqual(await callsOf(page, 'confirmMacroImport'), []);
      await done(page).getByText('Not imported').waitFor();
      assert.equal(await focused(page), 'Import profile', 'the focus is back');
      assert.equal((await profileNames(page)).length, 1);
    });
  }

  pageTest('the keyboard alone accepts it, after a short delay', { ownContext: true }, async (page) => {
    await stopClock(page);
    await showPending(page, pendingImport('aa'));
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
    assert.equal(await profileBox(page).innerText(), 'Farm (Imported)');
    assert.equal(await page.getByRole('alert').innerText(), '');
  });

  pageTest(
    'announces the import also when the program does not call back',
    {
      ...kPending,
      before: () => {
        host.commands.confirmMacroImport = () => {
          host.setPendingImport(null);
          host.addImportedProfile();
        };
      },
    },
    async (page) => {
      await button(page, 'Import anyway').click();
      await done(page).getByText('Imported as Farm (Imported)').waitFor();
    },
  );

  pageTest('the Tab key stays in the dialog', kPending, async (page) => {
    await dialog(page).waitFor();
    for (let i = 0; i < 8; i++) {
      await page.keyboard.press('Tab');
      const where = await page.evaluate(
        () => document.activeElement === document.body || document.activeElement.closest('dialog') !== null,
      );
      assert.ok(where);
    }
  });

  pageTest(
    'a second pending import visibly replaces the first',
    { ...kPending, ownContext: true },
    async (page) => {
      const anyway = button(page, 'Import anyway');
      await anyway.and(page.locator(':not([aria-disabled])')).waitFor();
      await anyway.focus();
      await stopClock(page);
      const second = pendingImport('bb');
      second.matches.shift();
      await showPending(page, second);
      await dialog(page).getByText('replaces the previous one, which was not imported').waitFor();
      assert.equal(await dialog(page).count(), 1);
      assert.equal(await focused(page), 'Don\u2019t import');
      assert.equal(await anyway.getAttribute('aria-disabled'), 'true', 'ignores a press meant for the first');
      await page.clock.resume();
      await picture(page, 'held-replaced');
      await anyway.click();
      await dialog(page).waitFor({ state: 'detached' });
      assert.deepEqual(await callsOf(page, 'confirmMacroImport'), ['bb']);
    },
  );

  pageTest('shows an import once that is reported twice', kPending, async (page) => {
    await dialog(page).waitFor();
    await showPending(page, kPending.pendingImport);
    await settled(page);
    assert.equal(await dialog(page).getByText('replaces the previous one').count(), 0);
  });

  pageTest('shows the new import when the decided one was replaced', kPending, async (page) => {
    await dialog(page).waitFor();
    await page.host.set({ pendingImport: pendingImport('bb') });
    await button(page, 'Import anyway').click();
    await dialog(page).getByText('replaces the previous one, which was not imported').waitFor();
    // An imported profile would be the current one.
    assert.equal(await page.locator('.list-box__value').innerText(), 'Default Tracking Profile');
  });

  pageTest('says that a decided import is no longer pending', kPending, async (page) => {
    await dialog(page).waitFor();
    await page.host.set({ pendingImport: null });
    await button(page, 'Import anyway').click();
    await page.getByRole('alert').getByText('no longer pending, so it was not imported').waitFor();
    assert.equal(await dialog(page).count(), 0);
  });

  pageTest(
    'shows a failed decision in the dialog, which stays open',
    {
      ...kPending,
      failing: { cancelMacroImport: 'no' },
    },
    async (page) => {
      await button(page, 'Don\u2019t import').click();
      await dialog(page).getByText('Varnelle could not reject the macro (no). Please try again.').waitFor();
      await picture(page, 'held-failed');
      await page.host.setFailing({});
      await page.keyboard.press('Escape');
      await page.keyboard.press('Escape');
      await dialog(page).waitFor({ state: 'detached' });
      assert.deepEqual(await callsOf(page, 'cancelMacroImport'), ['aa', 'aa']);
    },
  );

  pageTest(
    'waits during a recording, which the dialog can stop',
    {
      ...kPending,
      status: { state: 'Recording' },
    },
    async (page) => {
      await dialog(page).getByText('You can import it when the recording ends.').waitFor();
      await dialog(page).getByText('Still recording.').waitFor();
      await picture(page, 'held-recording');
      assert.equal(await button(page, 'Import anyway').getAttribute('aria-disabled'), 'true');
      await button(page, 'Stop now').click();
      assert.deepEqual(await expectCall(page, 'stopRecording'), ['']);
      await button(page, 'Import anyway').click();
      assert.deepEqual(await expectCall(page, 'confirmMacroImport'), ['aa']);
    },
  );

  pageTest('lists a hundred of a million findings and counts the rest', {}, async (page) => {
    await page.evaluate(() => {
      const matches = Array.from({ length: 1_000_000 }, (_, i) => ({
        severity: i % 3 ? 'CAUTION' : 'DANGER',
        message: `Finding ${i}`,
        atSec: i / 10,
      }));
      host.setPendingSummary({
        pendingId: 'aa', name: 'W'.repeat(5000), events: 1_000_000, seconds: 100_000,
        moves: Array(100).fill(1e6), clicks: Array(100).fill(0), keys: Array(100).fill(1),
      }); // prettier-ignore
      window.onPendingMacroImport({ outcome: 'pending', pendingId: 'aa', level: 'danger', matches });
    });
    await dialog(page).getByRole('listitem').first().waitFor();
    assert.equal(await dialog(page).getByRole('listitem').count(), 100);
    assert.ok(await dialog(page).getByText('and 999,900 more.').isVisible());
    assert.ok(await dialog(page).getByText('333,334 dangers, 666,666 cautions').isVisible());
    await dialog(page).getByText('1,000,000 events').waitFor();
    const box = await button(page, 'Don\u2019t import').boundingBox();
    assert.ok(box.y + box.height <= 560, 'a long name leaves space for the buttons');
    await picture(page, 'held-million');
  });

  for (const [name, options] of [
    ['lanes', { ...kPending, ...kSummary }],
    ['findings', { ...kPending, status: { autoclickerRunning: true } }],
    ['at-360', { ...kPending, ...kSummary, viewport: { width: 360, height: 560 } }],
  ]) {
    pageTest(`has no axe finding and enough contrast: ${name}`, options, async (page) => {
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
    });
  }
});

describe('the functions that native code calls', () => {
  pageTest('alert() shows a notice until it is dismissed, one at a time', {}, async (page) => {
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
  });

  pageTest(
    'shows a message from before the page once',
    { earlyAlert: 'That macro file could not be imported.' },
    async (page) => {
      await page.getByRole('alert').getByText('That macro file could not be imported.').waitFor();
      assert.deepEqual(await callsOf(page, 'getPendingThemeAlert'), ['']);
    },
  );

  pageTest('calls for missing parts of the page do nothing', {}, async (page) => {
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
    assert.equal(await dialog(page).count(), 0);
  });
});

describe('the notice of an import', () => {
  const shown = (page) => done(page).getByText('Imported as Farm (Imported)');
  const announce = (page) => page.evaluate(() => (host.addImportedProfile(), window.onProfileImported()));

  pageTest(
    'stays 5 seconds, longer under the pointer or with the focus, and then closes',
    { ownContext: true, importedProfile: { hasSettings: false } }, // one with a button stays longer
    async (page) => {
      await stopClock(page);
      await announce(page);
      await shown(page).waitFor();
      await page.clock.runFor(5000);
      assert.ok(await shown(page).isVisible());
      await shown(page).hover();
      await page.clock.runFor(60000);
      assert.ok(await shown(page).isVisible(), 'under the pointer');
      await button(page, 'Dismiss the notice').focus();
      await page.mouse.move(5, 5);
      await page.clock.runFor(60000);
      assert.ok(await shown(page).isVisible(), 'focused');
      await button(page, 'Start clicking').focus();
      await page.clock.runFor(5000);
      assert.ok(await shown(page).isVisible());
      await page.clock.runFor(4000);
      await shown(page).waitFor({ state: 'detached' });
    },
  );

  pageTest('is replaced by the next one, and can be dismissed', {}, async (page) => {
    await announce(page);
    await shown(page).waitFor();
    await page.evaluate(() => host.setImportedProfile({ name: 'Second' }));
    await announce(page);
    await done(page).getByText('Imported as Second').waitFor();
    assert.equal(await shown(page).count(), 0);
    await button(page, 'Dismiss the notice').click();
    assert.equal(await done(page).innerText(), '');
  });

  pageTest('stays while the page is hidden', { ownContext: true }, async (page) => {
    await stopClock(page);
    await page.evaluate(() => {
      Object.defineProperty(document, 'hidden', { value: true, configurable: true });
      document.dispatchEvent(new Event('visibilitychange'));
    });
    await announce(page);
    await page.clock.runFor(60000);
    assert.ok(await shown(page).isVisible());
  });
});

test('formats times, draws lanes and positions marks', async () => {
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
  assert.equal(placeMarks(Array(10).fill(1), 10).length, 3, 'no more marks than there is space for');
  assert.deepEqual(placeMarks([0], 0), [{ index: 0, position: 0, row: 0 }]);
});
