// Every state, as a person sees it: what the state line says, a picture for review, and that nothing jumps.
import assert from 'node:assert/strict';
import { after, before, describe, test } from 'node:test';
import { button, change, Pages, picture, settled } from './browser.mjs';

let pages;
before(async () => (pages = await Pages.start()));
after(() => pages.stop());

const kMacro = `host.events = Array.from({ length: 240 }, (_, i) => ({ time: i * 0.0137,
  desc: i % 9 ? 'Abs Move to X:' + (400 + i) + ' Y:' + (300 + i) : 'Keyboard VK: 65 (' + (i % 2 ? 'UP' : 'DOWN') + ')' }));
  host.profiles.names = ['Default Tracking Profile', 'Farm run, east side'];`;

const stateText = async (page) =>
  (await page.getByRole('status', { name: 'State' }).innerText()).replace(/\s+/g, ' ').trim();

// The words that have less room than they need.
const cutOff = (page) =>
  page.evaluate(() =>
    [...document.querySelectorAll('button, .segmented span, .toggle span:last-child, .group__hint, .key-cap')]
      .filter((element) => element.scrollWidth > element.clientWidth + 1)
      .map((element) => element.innerText),
  );

const states = [
  ['idle-empty', '', 'Idle F6 click F9 press F8 record F7 play'],
  ['idle', kMacro, 'Idle F6 click F9 press F8 record F7 play'],
  ['clicking', `${kMacro} host.status.autoClicking = true;`, 'Clicking F6 stops it'],
  [
    'clicking-held',
    `${kMacro} host.status.autoClicking = true; host.settings.holdAuto = true;`,
    'Clicking Releasing F6 stops it',
  ],
  ['pressing', `${kMacro} host.status.keySpamming = true;`, 'Pressing F9 stops it'],
  ['recording', `${kMacro} host.status.state = 'Recording';`, 'Recording F8 stops it'],
  ['playing', `${kMacro} host.status.state = 'Playing';`, 'Playing F7 stops it'],
  [
    'recording-with-tools',
    `${kMacro} host.status.state = 'Recording'; host.status.autoClicking = true; host.status.keySpamming = true;`,
    'Recording, clicking, pressing F8 stops recording, F6 clicking, F9 pressing',
  ],
  ['locked', `${kMacro} host.status.unlocked = false;`, 'Hotkeys locked F10 unlocks them'],
  [
    'clicking-locked',
    `${kMacro} host.status.unlocked = false; host.status.autoClicking = true;`,
    'Clicking Hotkeys are locked: F10 unlocks them',
  ],
  [
    'lock-off',
    `${kMacro} host.status.lockOn = false; host.status.unlocked = false;`,
    'Idle F6 click F9 press F8 record F7 play',
  ],
  [
    'capture-hotkey',
    `${kMacro} host.status.reassigning = 'rec';`,
    'Waiting for a key Press the new record hotkey. Esc cancels.',
  ],
  [
    'capture-key',
    `${kMacro} host.status.reassigning = 'keyspamtarget';`,
    'Waiting for a key Press the key to add. Esc cancels.',
  ],
  [
    'many-keys',
    "host.status.keySpamTargets = Array.from({ length: 256 }, (_, i) => 'Num ' + (i % 10));",
    'Idle F6 click F9 press F8 record F7 play',
  ],
  ['no-keys', 'host.status.keySpamTargets = [];', 'Idle F6 click F9 press F8 record F7 play'],
  [
    'long-names',
    `host.profiles.names = ['W'.repeat(60)]; for (const key of ['hkRec', 'hkPlay', 'hkAuto', 'hkKeySpam', 'hkUnlock'])
      host.status[key] = 'Mouse 4 (Side)'; host.status.keySpamTargets = ['Right Ctrl', 'Scroll Lock', 'Print Screen'];`,
    // One key for all: the unlock hotkey comes first, and no other acts.
    'Idle Every hotkey has the key that locks and unlocks.',
  ],
  [
    'out-of-range-settings',
    'Object.assign(host.settings, { sms: -5, rptMode: 0, rptTimes: 0, tspd: 0, tloop: true, tloopMs: -1 });',
    'Idle F6 click F9 press F8 record F7 play',
  ],
  ['panel-without-program', 'host.shortStatus = true;', 'Idle F6 click F9 press F8 record F7 play'],
];

describe('states', { concurrency: 4 }, () => {
  for (const [name, script, text] of states) {
    test(name, async () => {
      const page = await pages.open({ before: script });
      await settled(page);
      assert.equal(await stateText(page), text);
      await picture(page, name);
      await picture(page, `${name}-whole`, { fullPage: true });
      const sideways = await page.evaluate(() => document.documentElement.scrollWidth - innerWidth);
      assert.ok(sideways <= 0, 'nothing reaches over the side');
      assert.deepEqual(await cutOff(page), [], 'at 420');
      assert.deepEqual(page.faults, []);
      await pages.close(page);
    });
  }
});

test('no words reach out of their control in any state, at 360', async () => {
  for (const [name, script] of states) {
    const page = await pages.open({ before: script, viewport: { width: 360, height: 560 } });
    await settled(page);
    assert.deepEqual(await cutOff(page), [], name);
    await pages.close(page);
  }
});

test('a bad number is explained in the line under its group', async () => {
  const page = await pages.open({ before: kMacro });
  await page.getByRole('textbox', { name: 'Click interval: milliseconds' }).fill('5.5');
  await page.getByText('Milliseconds: a whole number, 0 to 2,147,483,647.').waitFor();
  await picture(page, 'bad-number');
  await pages.close(page);
});

test('steps of the profile panel', async () => {
  const page = await pages.open({ before: kMacro });
  for (const [name, file] of [
    ['New profile', 'profile-new'],
    ['Clear profile', 'profile-clear'],
  ]) {
    await button(page, name).click();
    await picture(page, file);
    await page.keyboard.press('Escape');
  }
  await page.evaluate(() => (host.failing.clearProfile = ''));
  await button(page, 'Clear profile').click();
  await button(page, 'Clear now').click();
  await page.getByText('Varnelle could not clear the profile.').waitFor();
  await picture(page, 'failure');
  await pages.close(page);
});

test('the picked place is waited for in sight', async () => {
  const page = await pages.open();
  await button(page, 'Pick location').click();
  await page.getByText('Click the place. Right-click cancels.').waitFor();
  assert.equal(await stateText(page), 'Picking a place Click the place on the screen. Right-click cancels.');
  await picture(page, 'picking', { fullPage: true });
  await pages.close(page);
});

test('an event is selected', async () => {
  const page = await pages.open({ before: kMacro });
  await page.locator('#events-4').click();
  await picture(page, 'event-selected', { fullPage: true });
  await pages.close(page);
});

test('collapsed, all five panels fit the window', async () => {
  const page = await pages.open({ before: kMacro });
  for (const name of ['Profile', 'Clicker', 'Key presser', 'Macro', 'Hotkeys']) {
    const toggle = button(page, `${name}: show settings`);
    assert.equal(await toggle.getAttribute('aria-expanded'), 'true');
    await toggle.click();
    assert.equal(await toggle.getAttribute('aria-expanded'), 'false');
  }
  const height = await page.evaluate(() => document.documentElement.scrollHeight);
  assert.ok(height <= 560, `${height} px`);
  assert.ok(await button(page, 'Start clicking').isVisible());
  await picture(page, 'collapsed');
  await pages.close(page);
});

for (const [width, height] of [
  [360, 560],
  [800, 600],
  [1200, 900],
]) {
  test(`at ${width} by ${height}`, async () => {
    const page = await pages.open({
      before: `${kMacro} host.status.state = 'Recording'; host.status.autoClicking = true;
        host.status.keySpamTargets = ['A', 'Left Shift', 'Num 4'];`,
      viewport: { width, height },
    });
    await settled(page);
    await picture(page, `width-${width}`, { fullPage: true });
    const clipped = await page.evaluate(() =>
      [...document.querySelectorAll('button, .segmented span, .toggle span:last-child, .group__hint')]
        .filter((element) => element.scrollWidth > element.clientWidth + 1)
        .map((element) => element.innerText),
    );
    assert.deepEqual(clipped, [], 'no words are cut off');
    assert.ok((await page.evaluate(() => document.documentElement.scrollWidth)) <= width);
    await pages.close(page);
  });
}

for (const width of [360, 420]) {
  test(`which key stops what is never cut off, nor a usual number, at ${width}`, async () => {
    const page = await pages.open({
      before: 'Object.assign(host.settings, { tspd: 12.75, tloop: true, tloopMs: 60000, sms: 10000 });',
      viewport: { width, height: 560 },
    });
    for (const script of [
      '',
      "Object.assign(host.status, { state: 'Recording', autoClicking: true, keySpamming: true })",
      'host.status.unlocked = false',
      "host.status.unlocked = true; host.status.reassigning = 'keyspamhotkey'",
      "host.status.reassigning = ''; host.status.state = 'Idle'; host.status.hkAuto = 'F9'; host.status.hkRec = 'F9'",
    ]) {
      await change(page, script);
      const cut = await page.evaluate(() => {
        const { scrollHeight, clientHeight } = document.querySelector('.state-line__detail');
        const stop = document.querySelector('.state-line .button');
        return scrollHeight > clientHeight || (stop && stop.scrollWidth > stop.clientWidth);
      });
      assert.ok(!cut, script);
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
    await pages.close(page);
  });
}

for (const width of [360, 420, 1200]) {
  test(`names of the hotkeys stay beside what waits, and the length of a macro is whole, at ${width}`, async () => {
    const page = await pages.open({ before: kMacro, viewport: { width, height: 560 } });
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
      await change(page, `host.status.reassigning = '${capture}'`);
      const [name, note] = await rows.nth(row).evaluate((element) => {
        const words = document.createRange();
        words.selectNodeContents(element.querySelector('.hotkeys__name'));
        const { left } = element.querySelector('.capture-note').getBoundingClientRect();
        return [words.getBoundingClientRect().right, left];
      });
      assert.ok(name < note, `${capture}: the name ends at ${name}, the note begins at ${note}`);
      assert.equal(await height(), before, capture);
      if (width === 360 && capture === 'unlock') await picture(page, 'capture-narrow', { fullPage: true });
      await change(page, "host.status.reassigning = ''");
    }
    await pages.close(page);
  });
}

test('nothing moves when the state changes', async () => {
  const page = await pages.open({ before: kMacro });
  await settled(page);
  const places = () =>
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
  const still = await places();
  const changes = {
    clicking: 'host.status.autoClicking = true',
    recording: "host.status.state = 'Recording'",
    everything: 'host.status.keySpamming = true',
    locked: 'host.status.unlocked = false',
    capturing: "host.status.reassigning = 'auto'",
    'capturing a key': "host.status.reassigning = 'keyspamtarget'",
    'more keys':
      "host.status.keySpamTargets = ['A', 'B', 'C', 'D', 'E', 'F', 'G', 'H', 'I', 'J', 'K', 'L', 'M', 'N']",
    'no keys': 'host.status.keySpamTargets = []',
    silent: "host.failing.getTrackerStatus = 'no'",
  };
  for (const [what, script] of Object.entries(changes)) {
    await change(page, script);
    assert.deepEqual(await places(), still, what);
  }
  await page.evaluate(() => {
    delete host.failing.getTrackerStatus;
    Object.assign(host.status, {
      state: 'Idle',
      reassigning: '',
      autoClicking: false,
      keySpamming: false,
      unlocked: true,
    });
  });
  await settled(page);
  for (const name of ['Click interval: hours', 'Playback speed']) {
    const field = page.getByRole('textbox', { name });
    await field.fill('x');
    assert.deepEqual(await places(), still, `${name} explained`);
    await field.press('Escape');
  }
  await button(page, 'Pick location').click();
  await page.getByText('Click the place. Right-click cancels.').waitFor();
  assert.deepEqual(await places(), still, 'picking');
  await button(page, 'New profile').click();
  assert.deepEqual(await places(), still, 'new profile');
  await page.keyboard.press('Escape');
  await button(page, 'Clear profile').click();
  assert.deepEqual(await places(), still, 'clear profile');
  await pages.close(page);
});

test('the state line stays at the top while the page scrolls', async () => {
  const page = await pages.open({ before: 'host.status.autoClicking = true' });
  await button(page, 'Stop everything').waitFor();
  await page.evaluate(() => scrollTo(0, document.documentElement.scrollHeight));
  const box = await page.locator('.state-line').boundingBox();
  assert.equal(box.y, 0);
  assert.ok(await button(page, 'Stop everything').isVisible());
  await picture(page, 'scrolled');
  await pages.close(page);
});
