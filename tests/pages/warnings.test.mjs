// Warnings: when they appear, their text, only once, and never while they are turned off.
import {
  assert,
  button,
  callsOf,
  combine,
  describe,
  expectCall,
  focused,
  mainWindowCommands,
  pageTest,
  picture,
  settled,
  tool,
} from './page_test.mjs';
import { axeFinds, contrastOf } from './page_checks.mjs';

const kOn = { preferences: { showWarnings: true } };
const kMacro = { events: [tool(0, 'autoclicker', true), tool(1, 'autoclicker', false)] };
const autoclicker = (values) => ({ settings: { autoclicker: values } });
const keySpammer = (values) => ({ settings: { keySpammer: values } });
const macro = (values) => ({ settings: { macro: values } });
const kNoPause = autoclicker({ intervalMilliseconds: 0 });
const dialog = (page) => page.getByRole('alertdialog');

// For each warning: the state that causes it, the button, the command that follows, id, title, verb, and a change after
// which it does not appear.
const rows = [
  {
    state: { preferences: { hotkeysEnabled: false } },
    press: 'Start clicking',
    command: 'startSpammer',
    id: 'endless-clicking',
    title: 'No key stops the autoclicker',
    verb: 'Start clicking',
    not: autoclicker({ repeatMode: 0 }),
  },
  {
    state: kNoPause,
    press: 'Start clicking',
    command: 'startSpammer',
    id: 'fastest-clicking',
    title: 'Fastest clicking',
    verb: 'Start clicking',
    not: autoclicker({ intervalSeconds: 1 }),
  },
  {
    state: keySpammer({ intervalMilliseconds: 0 }),
    press: 'Start pressing',
    command: 'startKeySpam',
    id: 'fastest-pressing',
    title: 'Fastest key presses',
    verb: 'Start pressing',
    not: keySpammer({ intervalHours: 1 }),
  },
  {
    state: combine(kMacro, macro({ loop: true })),
    press: 'Play',
    command: 'startPlayback',
    id: 'looping-playback',
    title: 'Looping playback',
    verb: 'Play in a loop',
    not: macro({ loop: false }),
  },
  {
    state: kMacro,
    press: 'Record',
    command: 'startRecording',
    id: 'replacing-recording',
    title: 'Replace this recording?',
    verb: 'Replace recording',
    not: { events: [] },
  },
];

for (const { state, press, command, id, title, verb, not } of rows) {
  describe(id, () => {
    pageTest(
      'asks first, and Cancel has the focus and changes nothing',
      combine(kOn, state),
      async (page) => {
        await settled(page);
        for (const answer of ['Cancel', 'Esc', 'Enter']) {
          await button(page, press).click();
          await dialog(page).getByRole('heading', { name: title }).waitFor();
          assert.equal(await focused(page), 'Cancel');
          if (answer === 'Cancel') await button(page, 'Cancel').click();
          else await page.keyboard.press(answer === 'Esc' ? 'Escape' : 'Enter');
          await dialog(page).waitFor({ state: 'detached' });
          assert.equal(await focused(page), press, 'the focus is back');
        }
        await settled(page);
        assert.deepEqual(await callsOf(page, command), []);
        assert.deepEqual(await callsOf(page, 'markWarningSeen'), []);
      },
    );

    pageTest('continues by keyboard alone, and does not appear again', combine(kOn, state), async (page) => {
      await settled(page);
      await button(page, press).press('Enter');
      await dialog(page).waitFor();
      await picture(page, `warning-${id}`);
      await page.keyboard.press('Tab');
      assert.equal(await focused(page), verb);
      await page.keyboard.press('Enter');
      assert.deepEqual(await expectCall(page, command), ['']);
      assert.deepEqual(await callsOf(page, 'markWarningSeen'), [id]);
      await dialog(page).waitFor({ state: 'detached' });
      await page.host.set({
        status: { state: 'Idle', autoclickerRunning: false, keySpammerRunning: false },
        events: [tool(0, 'autoclicker', true)],
      });
      await button(page, press).click();
      await expectCall(page, command, 2);
      assert.equal(await dialog(page).count(), 0);
    });

    for (const [what, change] of [
      ['seen before', { preferences: { seenWarnings: ['other', id] } }],
      ['turned off', { preferences: { showWarnings: false } }],
      ['no reason for it', not],
    ]) {
      pageTest(`does not appear: ${what}`, combine(kOn, state, change), async (page) => {
        await settled(page);
        await button(page, press).click();
        assert.deepEqual(await expectCall(page, command), ['']);
        assert.equal(await dialog(page).count(), 0);
      });
    }
  });
}

pageTest(
  'shows two warnings one after the other, before the command',
  {
    preferences: { showWarnings: true, hotkeysEnabled: false },
    ...kNoPause,
  },
  async (page) => {
    await settled(page);
    await button(page, 'Start clicking').click();
    await dialog(page).getByText('No key stops the autoclicker').waitFor();
    await dialog(page).getByRole('button', { name: 'Start clicking' }).click();
    await dialog(page).getByText('Fastest clicking').waitFor();
    assert.deepEqual(await callsOf(page, 'startSpammer'), []);
    await dialog(page).getByRole('button', { name: 'Start clicking' }).click();
    assert.deepEqual(await expectCall(page, 'startSpammer'), ['']);
    assert.deepEqual(await callsOf(page, 'markWarningSeen'), ['endless-clicking', 'fastest-clicking']);
  },
);

pageTest(
  'a stop shows no warning',
  {
    ...kOn,
    ...kMacro,
    settings: { autoclicker: { intervalMilliseconds: 0 }, macro: { loop: true } },
    status: { autoclickerRunning: true, state: 'Playing' },
  },
  async (page) => {
    await settled(page);
    await button(page, 'Stop everything').click();
    await settled(page);
    assert.equal(await dialog(page).count(), 0);
    assert.deepEqual(await callsOf(page, 'stopSpammer'), ['']);
    assert.deepEqual(await callsOf(page, 'stopPlayback'), ['']);
  },
);

describe('clearing and deleting a profile with events', () => {
  const kFarm = { ...kMacro, profiles: { names: ['Default Tracking Profile', 'Farm'], current: 1 } };
  const kExplained = 'Undo works until you quit. Export keeps a copy.';
  for (const [press, now, command] of [
    ['Clear profile', 'Clear now', 'clearProfile'],
    ['Delete profile', 'Delete now', 'deleteProfile'],
  ]) {
    pageTest(
      `${press} asks in its panel every time, and explains once`,
      combine(kOn, kFarm),
      async (page) => {
        await settled(page);
        await button(page, press).click();
        await page.getByText(kExplained).waitFor();
        assert.equal(await dialog(page).count(), 0);
        assert.equal(await focused(page), 'Cancel');
        await picture(page, `warning-${command}`);
        await page.keyboard.press('Escape');
        assert.deepEqual(await callsOf(page, 'markWarningSeen'), []);
        await button(page, press).click();
        await button(page, now).click();
        assert.deepEqual(await expectCall(page, command), ['']);
        assert.deepEqual(await callsOf(page, 'markWarningSeen'), ['losing-events']);
        await page.host.set(kFarm);
        await page.evaluate(() => window.onProfileImported());
        await settled(page);
        await button(page, press).click();
        await page.getByText('Undo works until you quit.', { exact: true }).waitFor();
      },
    );
  }

  for (const [what, change] of [
    ['turned off', { preferences: { showWarnings: false } }],
    ['no events', { events: [] }],
  ]) {
    pageTest(`asks without the explanation: ${what}`, combine(kOn, kFarm, change), async (page) => {
      await settled(page);
      await button(page, 'Clear profile').click();
      await page.getByText('Undo works until you quit.', { exact: true }).waitFor();
      await button(page, 'Clear now').click();
      await expectCall(page, 'clearProfile');
      assert.deepEqual(await callsOf(page, 'markWarningSeen'), []);
    });
  }
});

pageTest(
  'sends the command also when the warning cannot be marked as seen',
  {
    ...kOn,
    settings: { autoclicker: { intervalMilliseconds: 0 } },
    failing: { markWarningSeen: 'disk' },
  },
  async (page) => {
    await settled(page);
    await button(page, 'Start clicking').click();
    await dialog(page).getByRole('button', { name: 'Start clicking' }).click();
    assert.deepEqual(await expectCall(page, 'startSpammer'), ['']);
  },
);

pageTest(
  'shows no warning in a panel window',
  {
    ...kOn,
    settings: { autoclicker: { intervalMilliseconds: 0 } },
    absentCommands: mainWindowCommands,
  },
  async (page) => {
    await settled(page);
    await button(page, 'Start clicking').click();
    assert.deepEqual(await expectCall(page, 'startSpammer'), ['']);
  },
);

pageTest('a warning has no axe finding and enough contrast', combine(kOn, kNoPause), async (page) => {
  await settled(page);
  await button(page, 'Start clicking').click();
  await dialog(page).waitFor();
  assert.deepEqual(await axeFinds(page), []);
  const found = await page.evaluate(contrastOf);
  assert.deepEqual(
    found.filter(([, ratio, least]) => ratio < least),
    [],
  );
});
