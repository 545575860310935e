// Every state of the page: the state line, a picture for review, no text cut off, and no element that moves.
import {
  assert,
  button,
  describe,
  eventRow,
  keyDown,
  keyUp,
  loadPage,
  moveTo,
  pageTest,
  picture,
  settled,
  stateText,
  textBox,
} from './page_test.mjs';
import { cutOffTexts } from './page_checks.mjs';

const kMacro = {
  events: Array.from({ length: 240 }, (_, i) =>
    i % 9 ? moveTo(i * 0.0137, 400 + i, 300 + i) : (i % 2 ? keyUp : keyDown)(i * 0.0137, 65),
  ),
  profiles: { names: ['Default Tracking Profile', 'Farm run, east side'] },
};
const kProgress = {
  clicks: 1204,
  presses: 1,
  playRound: 3,
  playSeconds: 2.5,
  playEvent: 180,
  recordSeconds: 12.9,
  recordEvents: 340,
};
const withMacro = (status) => ({ ...kMacro, status, progress: kProgress });
const kIdleText = 'Idle F6 click F9 press F8 record F7 play';

const states = [
  ['idle-empty', {}, kIdleText],
  ['idle', kMacro, kIdleText],
  ['clicking', withMacro({ autoclickerRunning: true }), 'Clicking, 1,204 clicks F6 stops it'],
  [
    'clicking-held',
    { ...withMacro({ autoclickerRunning: true }), settings: { hotkeys: { holdAutoclicker: true } } },
    'Clicking, 1,204 clicks Releasing F6 stops it',
  ],
  ['pressing', withMacro({ keySpammerRunning: true }), 'Pressing, 1 press F9 stops it'],
  ['recording', withMacro({ state: 'Recording' }), 'Recording, 0:12, 340 events F8 stops it'],
  ['playing', withMacro({ state: 'Playing' }), 'Playing, 0:02 of 0:03 F7 stops it'],
  [
    'playing-loop',
    { ...withMacro({ state: 'Playing' }), settings: { macro: { loop: true } } },
    'Playing, round 3, 0:02 of 0:03 F7 stops it',
  ],
  [
    'recording-with-tools',
    withMacro({ state: 'Recording', autoclickerRunning: true, keySpammerRunning: true }),
    'Recording, clicking, pressing, 0:12, 340 events, 1,204 clicks, 1 press F8 stops recording, F6 clicking, F9 pressing',
  ],
  ['locked', withMacro({ unlocked: false }), 'Hotkeys locked F10 unlocks them'],
  [
    'clicking-locked',
    withMacro({ unlocked: false, autoclickerRunning: true }),
    'Clicking, 1,204 clicks Hotkeys are locked: F10 unlocks them',
  ],
  ['lock-off', withMacro({ lockOn: false, unlocked: false }), kIdleText],
  [
    'capture-hotkey',
    withMacro({ capture: 'rec' }),
    'Waiting for a key Press a key or a mouse button. Esc cancels.',
  ],
  ['capture-key', withMacro({ capture: 'keyspamtarget' }), 'Waiting for a key Press a key. Esc cancels.'],
  ['many-keys', { status: { targets: Array.from({ length: 256 }, (_, i) => `Num ${i % 10}`) } }, kIdleText],
  ['no-keys', { status: { targets: [] } }, kIdleText],
  [
    'long-names',
    {
      profiles: { names: ['W'.repeat(60)] },
      hotkeys: Object.fromEntries(
        ['record', 'play', 'autoclicker', 'keySpammer', 'unlock'].map((name) => [name, 'Mouse 4 (Side)']),
      ),
      status: { targets: ['Right Ctrl', 'Scroll Lock', 'Print Screen'] },
    },
    // With one key for all, the unlock hotkey acts and no other.
    'Idle All hotkeys have the same key. Choose other keys.',
  ],
  [
    'out-of-range-settings',
    {
      settings: {
        autoclicker: { intervalMilliseconds: -5, repeatMode: 0, repeatCount: 0 },
        macro: { playbackSpeed: 0, loop: true, loopPauseMilliseconds: -1 },
      },
    },
    kIdleText,
  ],
  ['panel-without-program', { shortStatus: true }, kIdleText],
];

describe('states', { concurrency: 4 }, () => {
  for (const [name, state, text] of states) {
    pageTest(name, state, async (page) => {
      await settled(page);
      assert.equal(await stateText(page), text);
      await picture(page, name);
      await picture(page, `${name}-whole`, { fullPage: true });
      const sideways = await page.evaluate(() => document.documentElement.scrollWidth - innerWidth);
      assert.ok(sideways <= 0, 'no horizontal scroll bar');
      assert.deepEqual(await cutOffTexts(page), [], 'at 420');
    });
  }
});

pageTest('cuts off no text in any state at 360', { viewport: { width: 360, height: 560 } }, async (page) => {
  for (const [name, state] of states) {
    await loadPage(page, state);
    assert.deepEqual(await cutOffTexts(page), [], name);
  }
});

pageTest('explains an invalid number in the line under its group', kMacro, async (page) => {
  await textBox(page, 'Click interval: milliseconds').fill('5.5');
  await page.getByText('Enter a whole number of milliseconds.').waitFor();
  await picture(page, 'bad-number');
});

pageTest('shows the questions of the profile panel, and a failure', kMacro, async (page) => {
  for (const [name, file] of [
    ['New profile', 'profile-new'],
    ['Clear profile', 'profile-clear'],
  ]) {
    await button(page, name).click();
    await picture(page, file);
    await page.keyboard.press('Escape');
  }
  await page.host.setFailing({ clearProfile: '' });
  await button(page, 'Clear profile').click();
  await button(page, 'Clear now').click();
  await page.getByText('Varnelle could not clear the profile.').waitFor();
  await picture(page, 'failure');
});

pageTest('shows that it waits for the picked location', {}, async (page) => {
  await button(page, 'Pick location').click();
  await page.getByText('Click the location. Esc or a right click cancels.').waitFor();
  assert.equal(
    await stateText(page),
    'Picking a location Click a location on the screen. Esc or a right click cancels.',
  );
  await picture(page, 'picking', { fullPage: true });
});

pageTest('shows a selected event', kMacro, async (page) => {
  await eventRow(page, 4).click();
  await picture(page, 'event-selected', { fullPage: true });
});

pageTest('five collapsed panels fit the window', kMacro, async (page) => {
  for (const name of ['Profile', 'Autoclicker', 'Key spammer', 'Macro', 'Hotkeys']) {
    const toggle = button(page, `${name}: show settings`);
    assert.equal(await toggle.getAttribute('aria-expanded'), 'true');
    await toggle.click();
    assert.equal(await toggle.getAttribute('aria-expanded'), 'false');
  }
  const height = await page.evaluate(() => document.documentElement.scrollHeight);
  assert.ok(height <= 560, `${height} px`);
  assert.ok(await button(page, 'Start clicking').isVisible());
  await picture(page, 'collapsed');
});

for (const [width, height] of [
  [360, 560],
  [800, 600],
  [1200, 900],
]) {
  pageTest(
    `cuts off no text at ${width} by ${height}`,
    {
      ...kMacro,
      status: { state: 'Recording', autoclickerRunning: true, targets: ['A', 'Left Shift', 'Num 4'] },
      viewport: { width, height },
    },
    async (page) => {
      await settled(page);
      await picture(page, `width-${width}`, { fullPage: true });
      assert.deepEqual(await cutOffTexts(page), []);
      assert.ok((await page.evaluate(() => document.documentElement.scrollWidth)) <= width);
    },
  );
}

for (const width of [360, 420]) {
  pageTest(
    `cuts off neither the stop keys nor usual numbers at ${width}`,
    {
      settings: {
        macro: { playbackSpeed: 12.75, loop: true, loopPauseMilliseconds: 60000 },
        autoclicker: { intervalMilliseconds: 10000 },
      },
      viewport: { width, height: 560 },
    },
    async (page) => {
      for (const state of [
        {},
        { status: { state: 'Recording', autoclickerRunning: true, keySpammerRunning: true } },
        { status: { unlocked: false } },
        { status: { unlocked: true, capture: 'keyspamhotkey' } },
        { status: { capture: '', state: 'Idle' }, hotkeys: { autoclicker: 'F9', record: 'F9' } },
      ]) {
        await page.host.set(state);
        const cut = await page.evaluate(() => {
          const { scrollHeight, clientHeight } = document.querySelector('.state-line__detail');
          const stop = document.querySelector('.state-line .button');
          return scrollHeight > clientHeight || (stop && stop.scrollWidth > stop.clientWidth);
        });
        assert.ok(!cut, JSON.stringify(state));
      }
      const numbers = await page
        .locator('.number__input')
        .evaluateAll((all) =>
          all.filter((one) => one.scrollWidth > one.clientWidth).map((one) => one.ariaLabel),
        );
      assert.deepEqual(numbers, []);
      await page.getByRole('switch', { name: 'Hotkeys on' }).click();
      await settled(page);
      const { scrollHeight, clientHeight } = await page
        .locator('.state-line__detail')
        .evaluate(({ scrollHeight, clientHeight }) => ({ scrollHeight, clientHeight }));
      assert.equal(scrollHeight, clientHeight, 'hotkeys off');
    },
  );
}

for (const width of [360, 420, 1200]) {
  pageTest(
    `shows the hotkey names beside a capture, and the whole macro length, at ${width}`,
    { ...kMacro, viewport: { width, height: 560 } },
    async (page) => {
      await settled(page);
      const summary = page.locator('#panel-tracker .panel__summary');
      assert.ok(
        await summary.evaluate((line) => line.scrollWidth <= line.clientWidth),
        await summary.innerText(),
      );
      const rows = page.locator('.hotkeys__row');
      for (const [row, capture] of ['auto', 'keyspamhotkey', 'rec', 'play', 'unlock'].entries()) {
        const height = () => rows.nth(row).evaluate((element) => element.offsetHeight);
        const before = await height();
        await page.host.setStatus({ capture });
        const [name, note] = await rows.nth(row).evaluate((element) => {
          const words = document.createRange();
          words.selectNodeContents(element.querySelector('.hotkeys__name'));
          const { left } = element.querySelector('.capture-note').getBoundingClientRect();
          return [words.getBoundingClientRect().right, left];
        });
        assert.ok(name < note, `${capture}: the name ends at ${name}, the note begins at ${note}`);
        assert.equal(await height(), before, capture);
        if (width === 360 && capture === 'unlock') await picture(page, 'capture-narrow', { fullPage: true });
        await page.host.setStatus({ capture: '' });
      }
    },
  );
}

pageTest('moves no element when the state changes', kMacro, async (page) => {
  await settled(page);
  const positions = () =>
    page.evaluate(() =>
      [
        ...document.querySelectorAll(
          '.panel, .panel-header, fieldset, .number, .segmented, #events, .hotkeys__row',
        ),
      ].map((element) => {
        const { x, y, width, height } = element.getBoundingClientRect();
        return [element.id || element.classList[0], x, y + scrollY, width, height].join(' ');
      }),
    );
  const before = await positions();
  const changes = {
    clicking: { status: { autoclickerRunning: true } },
    recording: { status: { state: 'Recording' } },
    everything: { status: { keySpammerRunning: true } },
    locked: { status: { unlocked: false } },
    capturing: { status: { capture: 'auto' } },
    'capturing a key': { status: { capture: 'keyspamtarget' } },
    'more keys': { status: { targets: [...'ABCDEFGHIJKLMN'] } },
    'no keys': { status: { targets: [] } },
    silent: { failing: { getTrackerStatus: 'no' } },
  };
  for (const [what, state] of Object.entries(changes)) {
    await page.host.set(state);
    assert.deepEqual(await positions(), before, what);
  }
  await page.host.set({
    failing: {},
    status: {
      state: 'Idle',
      capture: '',
      autoclickerRunning: false,
      keySpammerRunning: false,
      unlocked: true,
    },
  });
  for (const name of ['Click interval: hours', 'Playback speed']) {
    const field = page.getByRole('textbox', { name });
    await field.fill('x');
    assert.deepEqual(await positions(), before, `${name} explained`);
    await field.press('Escape');
  }
  await button(page, 'Pick location').click();
  await page.getByText('Click the location. Esc or a right click cancels.').waitFor();
  assert.deepEqual(await positions(), before, 'picking');
  await button(page, 'New profile').click();
  assert.deepEqual(await positions(), before, 'new profile');
  await page.keyboard.press('Escape');
  await button(page, 'Clear profile').click();
  assert.deepEqual(await positions(), before, 'clear profile');
});

pageTest(
  'keeps the state line at the top while the page scrolls',
  { status: { autoclickerRunning: true } },
  async (page) => {
    await button(page, 'Stop everything').waitFor();
    await page.evaluate(() => scrollTo(0, document.documentElement.scrollHeight));
    const box = await page.locator('.state-line').boundingBox();
    assert.equal(box.y, 0);
    assert.ok(await button(page, 'Stop everything').isVisible());
    await picture(page, 'scrolled');
  },
);
