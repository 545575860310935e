// The preferences dialog: each switch with its command and its text, and the dialog by keyboard.
import {
  assert,
  button,
  callsOf,
  describe,
  expectCall,
  focused,
  mainWindowCommands,
  pageTest,
  picture,
  settled,
} from './page_test.mjs';
import { animatedElements, axeFinds, contrastOf } from './page_checks.mjs';

const dialog = (page) => page.getByRole('dialog', { name: 'Preferences' });
async function openDialog(page) {
  await button(page, 'Preferences').click();
  await dialog(page).waitFor();
}
const preferencesTest = (name, options, body) =>
  pageTest(name, options, async (page) => {
    await openDialog(page);
    await body(page);
  });

// Switch, setting, whether the switch is on while the setting is off, first value of the switch.
const switches = [
  ['Always on top', 'alwaysOnTop', false, false],
  ['Start minimised', 'startMinimized', false, false],
  ['Start when I log in', 'launchOnStartup', false, false],
  ['Hotkeys on', 'hotkeysEnabled', false, true],
  ['Hotkey lock', 'hotkeyLock', false, true],
  ['Stop the tools with the macro', 'stopToolsWithMacro', false, true],
  ['Animations', 'disableAnimations', true, true],
  ['Warnings', 'showWarnings', false, true],
];

describe('a switch sends its setting', () => {
  for (const [name, key, inverted, first] of switches) {
    preferencesTest(name, { preferences: { showWarnings: true } }, async (page) => {
      const toggle = dialog(page).getByRole('switch', { name, exact: true });
      assert.equal(await toggle.isChecked(), first);
      const on = (shown) => `${key},${shown === inverted ? '0' : '1'}`;
      await toggle.click();
      await expectCall(page, 'setAppSetting');
      await toggle.press('Space');
      await settled(page);
      assert.deepEqual(await callsOf(page, 'setAppSetting'), [on(!first), on(first)]);
      assert.equal(await toggle.isChecked(), first);
      const explanation = await toggle.evaluate(
        (element) => document.getElementById(element.getAttribute('aria-describedby')).innerText,
      );
      assert.ok(explanation.length > 20, 'explained');
    });
  }
});

preferencesTest(
  'shows every preference of the program',
  {
    preferences: {
      alwaysOnTop: true,
      startMinimized: true,
      launchOnStartup: true,
      hotkeysEnabled: false,
      hotkeyLock: false,
      stopToolsWithMacro: false,
      disableAnimations: true,
      showWarnings: false,
    },
    hotkeys: { unlock: 'Pause' },
  },
  async (page) => {
    for (const [name, , , first] of switches) {
      assert.equal(await dialog(page).getByRole('switch', { name, exact: true }).isChecked(), !first, name);
    }
    const text = await dialog(page).innerText();
    assert.match(text.replace(/\s+/g, ' '), /Pause turns the other hotkeys off for typing, and on again\./);
    assert.match(text, /Stops the autoclicker and the key spammer when a recording or playback ends\./);
  },
);

for (const [name, word] of [
  ['Documentation', 'docs'],
  ['Community', 'discord'],
]) {
  preferencesTest(`opens ${name} in the browser`, {}, async (page) => {
    await button(page, name).click();
    assert.deepEqual(await expectCall(page, 'openLink'), [word]);
  });
}

pageTest('opens by keyboard, holds the focus, and returns it after Esc and Close', {}, async (page) => {
  await button(page, 'Preferences').focus();
  await page.keyboard.press('Enter');
  await dialog(page).waitFor();
  assert.equal(await focused(page), 'Close');
  const reached = [];
  for (let i = 0; i < 14; i++) {
    await page.keyboard.press('Tab');
    const at = await page.evaluate(() => {
      const element = document.activeElement;
      if (element === document.body) return '';
      const ring = (node) => node && getComputedStyle(node).outlineStyle !== 'none';
      if (!element.closest('dialog')) return 'outside';
      return ring(element) || ring(element.nextElementSibling)
        ? (element.closest('label')?.innerText ?? element.innerText)
        : 'no ring';
    });
    reached.push(at);
  }
  for (const [name] of switches) assert.ok(reached.includes(name), `${name} in ${reached.join(', ')}`);
  assert.ok(!reached.includes('outside') && !reached.includes('no ring'), reached.join(', '));
  await page.keyboard.press('Escape');
  await dialog(page).waitFor({ state: 'detached' });
  assert.equal(await focused(page), 'Preferences');
  await page.keyboard.press('Enter');
  await button(page, 'Close').press('Enter');
  await dialog(page).waitFor({ state: 'detached' });
  assert.equal(await focused(page), 'Preferences');
});

preferencesTest(
  'shows a rejected change in the dialog, and sets the switch back',
  { failing: { setAppSetting: 'read only' } },
  async (page) => {
    const toggle = page.getByRole('switch', { name: 'Always on top' });
    await toggle.click();
    await dialog(page)
      .getByText('Varnelle could not change the preference (read only). Please try again.')
      .waitFor();
    await page.waitForFunction(() => !document.querySelector('dialog input').checked);
    await picture(page, 'preferences-failed');
  },
);

preferencesTest('stops running tools from the dialog', {}, async (page) => {
  await page.host.setStatus({ autoclickerRunning: true, keySpammerRunning: true });
  await dialog(page).getByText('Still clicking, pressing.').waitFor();
  await picture(page, 'preferences-running');
  await button(page, 'Stop now').click();
  assert.deepEqual(await expectCall(page, 'stopSpammer'), ['']);
  assert.deepEqual(await expectCall(page, 'stopKeySpam'), ['']);
});

preferencesTest('turns all animations off at once', {}, async (page) => {
  assert.ok((await animatedElements(page)) > 0, 'animations are on');
  await page.getByRole('switch', { name: 'Animations' }).click();
  assert.equal(await animatedElements(page), 0);
});

pageTest('starts without animations', { preferences: { disableAnimations: true } }, async (page) => {
  await page.waitForFunction(() => document.documentElement.classList.contains('still'));
  assert.equal(await animatedElements(page), 0);
});

pageTest(
  'has no Preferences button in a panel window',
  { absentCommands: mainWindowCommands },
  async (page) => {
    assert.equal(await button(page, 'Preferences').count(), 0);
  },
);

for (const width of [420, 360]) {
  preferencesTest(
    `has no axe finding, enough contrast and large controls at ${width}`,
    { viewport: { width, height: 560 } },
    async (page) => {
      await picture(page, `preferences-${width}`);
      assert.deepEqual(await axeFinds(page), []);
      const found = await page.evaluate(contrastOf);
      assert.deepEqual(
        found.filter(([, ratio, least]) => ratio < least),
        [],
      );
      const small = await page.evaluate(() =>
        [...document.querySelectorAll('dialog button, dialog label, .preferences-button')]
          .map((element) => [element.innerText, element.getBoundingClientRect()])
          .filter(([, box]) => box.width < 24 || box.height < 24)
          .map(([name]) => name),
      );
      assert.deepEqual(small, []);
      assert.ok((await page.evaluate(() => document.documentElement.scrollWidth)) <= width);
      await dialog(page)
        .locator('.dialog__body')
        .evaluate((body) => body.scrollTo(0, body.scrollHeight));
      await picture(page, `preferences-end-${width}`);
    },
  );
}
