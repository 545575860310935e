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
      stopToolsWithMacro: false,
      disableAnimations: true,
      showWarnings: false,
    },
  },
  async (page) => {
    for (const [name, , , first] of switches) {
      assert.equal(await dialog(page).getByRole('switch', { name, exact: true }).isChecked(), !first, name);
    }
    const text = await dialog(page).innerText();
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

for (const [how, act] of [
  ['Esc', (page) => page.keyboard.press('Escape')],
  ['Close', (page) => button(page, 'Close').click()],
  ['a press outside', (page) => page.mouse.click(4, 300)],
]) {
  preferencesTest(`closes by ${how}`, {}, async (page) => {
    await act(page);
    await dialog(page).waitFor({ state: 'detached' });
    assert.equal(await focused(page), 'Preferences');
  });
}

preferencesTest('stays open when a press inside ends outside', {}, async (page) => {
  await dialog(page).getByText('Keeps this window above all others.').hover();
  await page.mouse.down();
  await page.mouse.move(4, 300);
  await page.mouse.up();
  await settled(page);
  assert.ok(await dialog(page).isVisible());
});

pageTest(
  'a question stays open after a press outside',
  { preferences: { showWarnings: true }, settings: { autoclicker: { intervalMilliseconds: 0 } } },
  async (page) => {
    await button(page, 'Start clicking').click();
    await page.getByRole('alertdialog').waitFor();
    await page.mouse.click(4, 300);
    await settled(page);
    assert.ok(await page.getByRole('alertdialog').isVisible());
  },
);

preferencesTest('the page behind does not scroll and keeps its width', {}, async (page) => {
  const behind = () => page.evaluate(() => [scrollY, document.getElementById('dashboard').offsetWidth]);
  await button(page, 'Close').click();
  await dialog(page).waitFor({ state: 'detached' });
  await page.mouse.move(200, 400);
  await page.mouse.wheel(0, 200);
  await page.waitForFunction(() => scrollY === 200);
  const before = await behind();
  await openDialog(page);
  for (const [x, y] of [
    [200, 300], // in the dialog
    [4, 300], // beside it
  ]) {
    await page.mouse.move(x, y);
    for (const step of [3000, -3000]) {
      await page.mouse.wheel(0, step);
      await page.evaluate(
        () => new Promise((done) => requestAnimationFrame(() => requestAnimationFrame(done))),
      );
      assert.deepEqual(await behind(), before);
    }
  }
  await button(page, 'Close').click();
  await page.mouse.move(200, 400);
  await page.mouse.wheel(0, 100);
  await page.waitForFunction(() => scrollY === 300);
});

describe('About', () => {
  preferencesTest('shows the version, the licences and the data folder', {}, async (page) => {
    const about = dialog(page).getByRole('region', { name: 'About' });
    await about.getByText('Varnelle 1.0.1 for Linux').waitFor();
    assert.ok(await about.getByText('/home/user/.local/share/Varnelle').isVisible());
    const licences = about.getByRole('table');
    assert.ok(!(await licences.isVisible()));
    await about.getByText('Licences', { exact: true }).click();
    assert.match(await licences.innerText(), /Preact\s+MIT\s+preact\.txt\s+Inter\s+OFL 1\.1\s+inter\.txt/);
    assert.ok(await about.getByText('/opt/varnelle/licenses').isVisible());
    await picture(page, 'preferences-about');
    assert.deepEqual(await axeFinds(page), []);
  });

  preferencesTest('opens the data folder', {}, async (page) => {
    await button(page, 'Open the data folder').click();
    assert.deepEqual(await expectCall(page, 'openDataFolder'), ['']);
  });

  preferencesTest('copies the path of the data folder', {}, async (page) => {
    // The page reads what it has copied from its own event.
    await page.evaluate(() => {
      document.addEventListener('copy', () => (window.copied = String(getSelection())), { once: true });
    });
    await button(page, 'Copy path').click();
    await page.getByRole('status', { name: 'Copy' }).getByText('Copied.').waitFor();
    assert.equal(await page.evaluate('copied'), '/home/user/.local/share/Varnelle');
  });

  preferencesTest('says how to copy if the web view refuses', {}, async (page) => {
    await page.evaluate(() => (document.execCommand = () => false));
    await button(page, 'Copy path').click();
    await page.getByRole('status', { name: 'Copy' }).getByText('Press Ctrl+C to copy the path.').waitFor();
    assert.equal(await page.evaluate(() => String(getSelection())), '/home/user/.local/share/Varnelle');
  });

  preferencesTest(
    'shows what an older program offers',
    { absentCommands: ['getAbout', 'openDataFolder'] },
    async (page) => {
      await button(page, 'Documentation').waitFor();
      await settled(page);
      assert.equal(await button(page, 'Copy path').count(), 0);
    },
  );
});

pageTest(
  'says at the start of a Wayland session what it can reach',
  { about: { session: 'wayland' } },
  async (page) => {
    const notice = page.getByRole('alert').getByText('This is a Wayland session.');
    await notice.waitFor();
    assert.match(await notice.innerText(), /Varnelle sees and reaches X11 applications only\./);
    await button(page, 'Dismiss').click();
    await notice.waitFor({ state: 'detached' });
  },
);

pageTest('says nothing of the session elsewhere', {}, async (page) => {
  await settled(page);
  assert.equal(await page.getByRole('alert').innerText(), '');
});

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
      // The ring of a number field is around the whole field.
      return ring(element) || ring(element.nextElementSibling) || ring(element.closest('.number'))
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
