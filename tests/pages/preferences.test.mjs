// The preferences: each switch with what it sends and what it shows, and the sheet by keyboard.
import assert from 'node:assert/strict';
import { after, before, describe, test } from 'node:test';
import {
  button,
  callsOf,
  change,
  expectCall,
  mainWindowCommands,
  Pages,
  picture,
  settled,
} from './browser.mjs';
import { axeFinds, contrastOf } from './checks.mjs';

let pages;
before(async () => (pages = await Pages.start()));
after(() => pages.stop());

const sheet = (page) => page.getByRole('dialog', { name: 'Preferences' });
const focused = (page) =>
  page.evaluate(() => document.activeElement.ariaLabel ?? document.activeElement.innerText);
async function open(options) {
  const page = await pages.open(options);
  await button(page, 'Preferences').click();
  await sheet(page).waitFor();
  return page;
}

// The switch; the setting; whether the switch is on while the setting is off; what it is at first.
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

describe('what a switch sends', () => {
  for (const [name, key, inverted, first] of switches) {
    test(name, async () => {
      const page = await open({ before: 'host.appSettings.showWarnings = true' });
      const toggle = sheet(page).getByRole('switch', { name, exact: true });
      assert.equal(await toggle.isChecked(), first);
      const on = (shown) => `${key},${shown === inverted ? '0' : '1'}`;
      await toggle.click();
      await page.waitForFunction(() => host.calls.some(([called]) => called === 'setAppSetting'));
      await toggle.press('Space');
      await settled(page);
      assert.deepEqual(await callsOf(page, 'setAppSetting'), [on(!first), on(first)]);
      assert.equal(await toggle.isChecked(), first);
      const told = await toggle.evaluate(
        (element) => document.getElementById(element.getAttribute('aria-describedby')).innerText,
      );
      assert.ok(told.length > 20, 'explained');
      assert.deepEqual(page.faults, []);
      await pages.close(page);
    });
  }
});

test('what the program holds is shown, each in words', async () => {
  const page = await open({
    before: `Object.assign(host.appSettings, { alwaysOnTop: true, startMinimized: true, launchOnStartup: true,
      hotkeysEnabled: false, hotkeyLock: false, stopToolsWithMacro: false, disableAnimations: true, showWarnings: false });
      host.status.hkUnlock = 'Pause';`,
  });
  for (const [name, , , first] of switches) {
    assert.equal(await sheet(page).getByRole('switch', { name, exact: true }).isChecked(), !first, name);
  }
  const text = await sheet(page).innerText();
  assert.match(text.replace(/\s+/g, ' '), /Pause turns the other hotkeys into ordinary keys/);
  assert.match(text, /When a recording or a playback ends, the clicker and the key presser stop as well\./);
  await pages.close(page);
});

for (const [name, word] of [
  ['Documentation', 'docs'],
  ['Community', 'discord'],
]) {
  test(`${name} opens in the browser`, async () => {
    const page = await open();
    await button(page, name).click();
    assert.deepEqual(await expectCall(page, 'openLink'), [word]);
    await pages.close(page);
  });
}

test('by keyboard: opened, walked through, closed by Esc and by Close, and the focus is back', async () => {
  const page = await pages.open();
  await button(page, 'Preferences').focus();
  await page.keyboard.press('Enter');
  await sheet(page).waitFor();
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
  await sheet(page).waitFor({ state: 'detached' });
  assert.equal(await focused(page), 'Preferences');
  await page.keyboard.press('Enter');
  await button(page, 'Close').press('Enter');
  await sheet(page).waitFor({ state: 'detached' });
  assert.equal(await focused(page), 'Preferences');
  await pages.close(page);
});

test('a refused change is said in the sheet, and the switch shows what the program holds', async () => {
  const page = await open({ before: "host.failing.setAppSetting = 'read only'" });
  const toggle = page.getByRole('switch', { name: 'Always on top' });
  await toggle.click();
  await sheet(page)
    .getByText('Varnelle could not change the preference (read only). Please try again.')
    .waitFor();
  await page.waitForFunction(() => !document.querySelector('dialog input').checked);
  await picture(page, 'preferences-failed');
  await pages.close(page);
});

test('what runs behind the sheet can be stopped from it', async () => {
  const page = await open();
  await change(page, 'host.status.autoClicking = true; host.status.keySpamming = true');
  await sheet(page).getByText('Still clicking, pressing.').waitFor();
  await picture(page, 'preferences-running');
  await button(page, 'Stop now').click();
  assert.deepEqual(await expectCall(page, 'stopSpammer'), ['']);
  assert.deepEqual(await expectCall(page, 'stopKeySpam'), ['']);
  await pages.close(page);
});

test('animations off: nothing moves, at once and from the start', async () => {
  const moving = (page) =>
    page.evaluate(
      () =>
        [...document.querySelectorAll('*')].filter((element) => {
          const style = getComputedStyle(element);
          const longest = Math.max(...style.transitionDuration.split(',').map((text) => parseFloat(text)));
          return longest > 0 || style.animationName !== 'none';
        }).length,
    );
  const page = await open();
  assert.ok((await moving(page)) > 0, 'otherwise there is nothing to turn off');
  await page.getByRole('switch', { name: 'Animations' }).click();
  assert.equal(await moving(page), 0);
  await pages.close(page);
  const next = await pages.open({ before: 'host.appSettings.disableAnimations = true' });
  await next.waitForFunction(() => document.documentElement.classList.contains('still'));
  assert.equal(await moving(next), 0);
  await pages.close(next);
});

test('a page whose program has no preferences has no button for them', async () => {
  const page = await pages.open({ absent: mainWindowCommands });
  assert.equal(await button(page, 'Preferences').count(), 0);
  await pages.close(page);
});

for (const width of [420, 360]) {
  test(`axe, contrast and sizes at ${width}`, async () => {
    const page = await open({ viewport: { width, height: 560 } });
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
    await sheet(page)
      .locator('.dialog__body')
      .evaluate((body) => body.scrollTo(0, body.scrollHeight));
    await picture(page, `preferences-end-${width}`);
    await pages.close(page);
  });
}
