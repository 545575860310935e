// What the page writes beside its controls: a caption on every number, a tooltip on every button, one focus ring.
import {
  assert,
  button,
  describe,
  kKeyMacro,
  mainWindowCommands,
  pageTest,
  settled,
  textBox,
} from './page_test.mjs';

// Returns the names of the buttons that have no tooltip of at least one full sentence.
const buttonsWithoutTip = (page) =>
  page.evaluate(() =>
    [...document.querySelectorAll('button')]
      .filter((one) => one.checkVisibility())
      .filter((one) => !/^[A-Z].{6,}\.$/.test(one.title))
      .map((one) => `${one.ariaLabel ?? one.innerText}: ${one.title}`),
  );

describe('every button has a tooltip of full sentences', () => {
  const cases = {
    'at the first start': [{}, () => {}],
    'with a macro': [
      { events: kKeyMacro, preferences: { panelOrder: [] } },
      (page) => page.locator('#events-1').click(),
    ],
    'with several events selected': [
      { events: kKeyMacro },
      async (page) => {
        await page.locator('#events-0').click();
        await page.locator('#events-2').click({ modifiers: ['Shift'] });
      },
    ],
    'with no event shown': [
      { events: kKeyMacro },
      async (page) => {
        for (const kind of ['Moves', 'Keys']) await page.getByRole('button', { name: kind }).first().click();
        await button(page, 'Show all').waitFor();
      },
    ],
    'while everything runs': [
      { status: { state: 'Playing', autoclickerRunning: true, keySpammerRunning: true } },
      () => {},
    ],
    'while hotkeys are off': [{ preferences: { hotkeysEnabled: false } }, () => {}],
    'while a panel is moved': [{}, (page) => button(page, 'Move Macro').click()],
    'with a new profile': [{}, (page) => button(page, 'New profile').click()],
    'with a question': [{}, (page) => button(page, 'Clear profile').click()],
    'with changed keys': [{ hotkeys: { record: 'F1' } }, (page) => button(page, 'Reset hotkeys').click()],
    'with the preferences': [{}, (page) => button(page, 'Preferences').click()],
    'with a notice': [{ failing: { startSpammer: 'no' } }, (page) => button(page, 'Start clicking').click()],
    'in a panel window': [{ absentCommands: mainWindowCommands }, () => {}],
  };
  for (const [name, [state, act]] of Object.entries(cases)) {
    pageTest(name, state, async (page) => {
      await act(page);
      await settled(page);
      assert.deepEqual(await buttonsWithoutTip(page), []);
    });
  }
});

const tipOf = (page, name) => button(page, name).getAttribute('title');

describe('the tooltip of a button that starts something', () => {
  const starting = [
    ['Start clicking', 'Starts clicking. Hotkey: F6.', 'Starts clicking.'],
    ['Start pressing', 'Starts pressing the keys. Hotkey: F9.', 'Starts pressing the keys.'],
    [
      'Record',
      'Replaces the macro by a new recording. Hotkey: F8.',
      'Replaces the macro by a new recording.',
    ],
    ['Play', 'Plays the macro. Hotkey: F7.', 'Plays the macro.'],
  ];
  pageTest('names the hotkey that acts', { events: kKeyMacro }, async (page) => {
    for (const [name, tip] of starting) assert.equal(await tipOf(page, name), tip);
    await page.host.setHotkeys({ autoclicker: 'Pause' });
    assert.equal(await tipOf(page, 'Start clicking'), 'Starts clicking. Hotkey: Pause.');
  });
  for (const [why, state] of [
    ['off', { preferences: { hotkeysEnabled: false } }],
    ['locked', { status: { unlocked: false } }],
  ]) {
    pageTest(`names no hotkey while they are ${why}`, { events: kKeyMacro, ...state }, async (page) => {
      for (const [name, , tip] of starting) assert.equal(await tipOf(page, name), tip);
    });
  }
  pageTest('names no hotkey that starts something else', { hotkeys: { keySpammer: 'F6' } }, async (page) => {
    assert.equal(await tipOf(page, 'Start clicking'), 'Starts clicking. Hotkey: F6.');
    assert.equal(await tipOf(page, 'Start pressing'), 'Starts pressing the keys.');
  });
});

const kCaptions = {
  'Number of clicks': 'Number of clicks',
  'Number of rounds': 'Number of rounds',
  'Playback speed': 'Speed',
  'Pause between rounds': 'Pause between rounds',
  'Event time': 'Event time',
};

for (const width of [360, 420, 1000]) {
  pageTest(
    `every number has a visible caption at ${width}`,
    { viewport: { width, height: 700 }, events: kKeyMacro },
    async (page) => {
      const captions = await page.evaluate(() =>
        [...document.querySelectorAll('.number__input')]
          .map((input) => [input, input.closest('.captioned')?.querySelector('label')])
          .filter(([, label]) => label?.checkVisibility() && label.scrollWidth <= label.clientWidth + 1)
          .map(([input, label]) => [input.ariaLabel, label.control === input && label.innerText]),
      );
      assert.deepEqual(Object.fromEntries(captions), kCaptions);
      // The others have the interval's title above them and their unit beside them.
      const others = await page.evaluate(() =>
        [...document.querySelectorAll('.number')]
          .filter((field) => !field.closest('.captioned'))
          .map((field) => [
            field.closest('fieldset').querySelector('legend').innerText,
            field.querySelector('.number__unit').innerText,
          ]),
      );
      const units = ['h', 'min', 's', 'ms'];
      assert.deepEqual(
        others,
        ['Click interval', 'Press interval'].flatMap((title) => units.map((unit) => [title, unit])),
      );
    },
  );
}

pageTest('a press on a caption moves the focus to its number', {}, async (page) => {
  await page.locator('label', { hasText: 'Speed' }).click();
  assert.ok(await textBox(page, 'Playback speed').evaluate((field) => field === document.activeElement));
});

pageTest('a number with the focus has one ring', {}, async (page) => {
  const field = textBox(page, 'Playback speed');
  await field.focus();
  const outlines = await field.evaluate((input) =>
    [input, input.parentElement].map((element) => getComputedStyle(element).outlineStyle),
  );
  assert.deepEqual(outlines, ['none', 'solid']);
});

pageTest(
  'the list of events has one ring: at its cursor, else around it',
  { events: kKeyMacro },
  async (page) => {
    const outlines = () =>
      page.evaluate(() =>
        ['#events', '#events .list__row--active']
          .map((selector) => document.querySelector(selector))
          .filter((element) => element && getComputedStyle(element).outlineStyle !== 'none')
          .map((element) => element.id),
      );
    await textBox(page, 'Event time').focus();
    await page.locator('#events').focus();
    await page.keyboard.press('Shift');
    assert.deepEqual(await outlines(), ['events']);
    await page.keyboard.press('ArrowDown');
    assert.deepEqual(await outlines(), ['events-0']);
  },
);

pageTest('no ring stays while another window has the keyboard', {}, async (page) => {
  const ring = () =>
    page.evaluate(() => getComputedStyle(document.activeElement.closest('.number, .button')).outlineColor);
  const controls = [textBox(page, 'Playback speed'), button(page, 'Pick location')];
  for (const control of controls) {
    await control.focus();
    await page.keyboard.press('Shift'); // the focus is now by keyboard
    const shown = await ring();
    assert.notEqual(shown, 'rgba(0, 0, 0, 0)');
    await page.evaluate(() => dispatchEvent(new Event('blur')));
    assert.equal(await ring(), 'rgba(0, 0, 0, 0)');
    await page.evaluate(() => dispatchEvent(new Event('focus')));
    assert.equal(await ring(), shown);
  }
});

for (const deviceScaleFactor of [1, 1.5, 2]) {
  pageTest(
    `each separator of the strip is one whole line at ${deviceScaleFactor * 100} %`,
    { events: kKeyMacro, context: { deviceScaleFactor } },
    async (page) => {
      await page.locator('.strip__canvas[data-events="3"]').waitFor();
      const { rows, scale } = await page.evaluate(() => {
        const canvas = document.querySelector('.strip__canvas');
        const { data, width, height } = canvas
          .getContext('2d')
          .getImageData(0, 0, canvas.width, canvas.height);
        const isDrawn = (row) => {
          for (let x = 0; x < width; x++) if (data[(row * width + x) * 4 + 3] === 0) return false;
          return true;
        };
        const box = canvas.getBoundingClientRect();
        return {
          rows: Array.from({ length: height }, (_, row) => row).filter(isDrawn),
          scale: [canvas.width / box.width, canvas.height / box.height],
        };
      });
      assert.deepEqual(scale, [2, 2]);
      // Two dots of the drawing are one pixel of the page.
      assert.deepEqual(rows, [30, 31, 60, 61, 90, 91, 120, 121]);
    },
  );
}
