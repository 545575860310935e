// Accessibility: keyboard, screen reader, contrast, sizes, motion. All of it is computed.
import {
  assert,
  button,
  callsOf,
  eventRow,
  expectCall,
  keyDown,
  kOneEvent,
  moveBy,
  moveTo,
  pageTest,
  picture,
  press,
  settled,
  tool,
} from './page_test.mjs';
import { animatedElements, axeFinds, contrastOf, cutOffTexts } from './page_checks.mjs';

const states = {
  idle: { events: kOneEvent },
  running: { status: { autoclickerRunning: true, state: 'Recording' } },
  locked: { status: { unlocked: false } },
  capturing: { status: { capture: 'keyspamtarget', targets: ['A', 'B'] } },
  macro: {
    events: [moveTo(0, 0, 0), keyDown(1, 65), press(2, 'left', 9, 9), moveBy(3, 5, 5)],
  },
  'invalid settings': {
    settings: { autoclicker: { intervalMilliseconds: -1 }, macro: { playbackSpeed: 0 } },
  },
};

for (const [name, state] of Object.entries(states)) {
  pageTest(`axe finds no problem: ${name}`, state, async (page) => {
    await settled(page);
    if (name === 'idle') await eventRow(page, 0).click();
    if (name === 'macro') await page.locator('#events').press('Control+a');
    assert.deepEqual(await axeFinds(page), []);
  });
}

for (const [name, state] of Object.entries(states)) {
  pageTest(`every text and control has enough contrast: ${name}`, state, async (page) => {
    await settled(page);
    const found = await page.evaluate(contrastOf);
    assert.ok(found.length > 80, `${found.length} elements`);
    assert.deepEqual(
      found.filter(([, ratio, least]) => ratio < least),
      [],
    );
  });
}

pageTest('every control is at least 24 by 24 pixels', states.running, async (page) => {
  await settled(page);
  const small = await page.evaluate(() =>
    [...document.querySelectorAll('button, input, [role=option]')]
      .filter((element) => element.checkVisibility())
      .map((element) => [element.ariaLabel ?? element.innerText, element.getBoundingClientRect()])
      .filter(([, box]) => box.width < 24 || box.height < 24)
      .map(([name, box]) => `${name}: ${box.width} x ${box.height}`),
  );
  assert.deepEqual(small, []);
});

pageTest(
  'Tab reaches every control and shows a focus ring',
  {
    events: [tool(0, 'autoclicker', true)],
    profiles: { current: 0 },
  },
  async (page) => {
    await settled(page);
    const reached = [];
    for (let i = 0; i < 100; i++) {
      await page.keyboard.press('Tab');
      const at = await page.evaluate(() => {
        const element = document.activeElement;
        if (element === document.body) return null;
        const ring = (node) => node && getComputedStyle(node).outlineStyle !== 'none';
        const box = element.getBoundingClientRect();
        const head = document.querySelector('.state-line').getBoundingClientRect();
        return {
          name: element.ariaLabel ?? element.innerText ?? '',
          type: element.type ?? element.getAttribute('role'),
          label: element.closest('label')?.innerText ?? '',
          ring: ring(element) || ring(element.nextElementSibling) || ring(element.closest('.number')),
          hidden: box.top < head.bottom - 1 && !element.closest('.state-line'),
        };
      });
      if (!at) break;
      assert.ok(at.ring, `${at.name || at.label} shows its focus`);
      assert.ok(!at.hidden, `${at.name || at.label} is not under the state line`);
      reached.push(at.name || at.label);
    }
    for (const name of [
      ...[
        'Profile: show settings',
        'Profile',
        'New profile',
        'Clear profile',
        'Start clicking',
        'Click interval: hours',
      ],
      ...[
        'Left',
        'Single',
        'Until stopped',
        'At pointer',
        'Pick location',
        'Press to start and stop',
        'Start pressing',
      ],
      ...[
        'Remove Space, key 1',
        'Add key',
        'In turn',
        'Press interval: milliseconds',
        'Record',
        'Continue',
        'Play',
      ],
      ...['Optimise', 'Playback speed', 'Loop', 'Moves', 'Buttons', 'Wheel', 'Keys', 'Raw moves', 'Events'],
      ...['Reset hotkeys', 'Change the autoclicker hotkey', 'Change the unlock hotkey'],
    ]) {
      assert.ok(reached.includes(name), `${name} in ${reached.join(', ')}`);
    }
  },
);

pageTest(
  'the keyboard alone sets an interval, chooses, starts, stops, retimes and deletes',
  { events: [tool(1, 'autoclicker', true)] },
  async (page) => {
    await settled(page);
    const tabTo = async (name) => {
      for (let i = 0; i < 120; i++) {
        const at = await page.evaluate(() => {
          const element = document.activeElement;
          return element.ariaLabel ?? element.closest('label')?.innerText ?? element.innerText;
        });
        if (at === name) return;
        await page.keyboard.press('Tab');
      }
      assert.fail(`${name} not reached`);
    };
    await tabTo('Click interval: milliseconds');
    await page.keyboard.press('Control+A');
    await page.keyboard.type('20');
    await page.keyboard.press('Enter');
    await tabTo('Left');
    await page.keyboard.press('ArrowRight');
    await tabTo('Until stopped');
    await page.keyboard.press('ArrowRight');
    await expectCall(page, 'updateSpammer', 3);
    assert.deepEqual(await callsOf(page, 'updateSpammer'), [
      '0,0,0,20,0,0,1,10,0',
      '0,0,0,20,1,0,1,10,0',
      '0,0,0,20,1,0,0,10,0',
    ]);
    await tabTo('Loop');
    await page.keyboard.press('Space');
    assert.deepEqual(await expectCall(page, 'updateTracker'), ['true,true,true,true,false,1,true,500']);
    await tabTo('Events');
    await page.keyboard.press('ArrowDown');
    await page.keyboard.press('Tab');
    await page.keyboard.press('ArrowUp');
    const [retimed] = await expectCall(page, 'retimeMacroEvents');
    assert.match(retimed, /^\d+,0,1\.100000$/);
    await tabTo('Delete event');
    await page.keyboard.press('Enter');
    const [deleted] = await expectCall(page, 'deleteMacroEvents');
    assert.match(deleted, /^\d+,0$/);
    await tabTo('Start clicking');
    await page.keyboard.press('Enter');
    await button(page, 'Stop clicking').waitFor();
    await page.keyboard.press('Enter');
    await expectCall(page, 'stopSpammer');
  },
);

pageTest('the state line is one lasting live region, and failures have an alert region', {}, async (page) => {
  await page.evaluate(() => (window.kept = document.querySelector('[role=status][aria-label=State]')));
  await button(page, 'Start clicking').click();
  await page.waitForFunction(() => window.kept.isConnected && window.kept.innerText.includes('Clicking'));
  assert.equal(await page.locator('[role=alert]').count(), 1, 'present before the first message');
});

for (const colorScheme of ['dark', 'light']) {
  pageTest(
    `shows what is on and what is chosen in high contrast (${colorScheme})`,
    {
      ...states.macro,
      preferences: { hotkeyLock: false },
      status: { lockOn: false },
      context: { forcedColors: 'active', colorScheme },
    },
    async (page) => {
      await settled(page);
      await eventRow(page, 1).click();
      await page.locator('.filter__chip').last().click();
      const grounds = await page.evaluate(() => {
        const ground = (selector) =>
          getComputedStyle(document.querySelector(selector)).backgroundColor.replace(
            /^rgba\(.*, 0\)$/,
            'none',
          );
        return {
          'switch on': [
            ground('#panel-ui .toggle :checked + span'),
            ground('#panel-ui .toggle :checked + span span'),
          ],
          'switch off': [
            ground('#panel-ui .toggle :not(:checked) + span'),
            ground('#panel-ui .toggle :not(:checked) + span span'),
          ],
          switches: [
            ground('#panel-ui .toggle :checked + span'),
            ground('#panel-ui .toggle :not(:checked) + span'),
          ],
          choice: [ground('.segmented :checked + span'), ground('.segmented :not(:checked) + span')],
          row: [ground('[role=option][aria-selected=true]'), ground('[role=option][aria-selected=false]')],
          chip: [ground('.filter__chip[aria-pressed=true]'), ground('.filter__chip[aria-pressed=false]')],
          lamp: [ground('.state-line__lamp'), ground('.state-line')],
        };
      });
      for (const [what, [one, other]] of Object.entries(grounds)) assert.notEqual(one, other, what);
      await picture(page, `high-contrast-${colorScheme}`, { fullPage: true });
    },
  );
}

pageTest(
  'nothing moves when the system asks for reduced motion',
  { context: { reducedMotion: 'reduce' } },
  async (page) => {
    assert.equal(await animatedElements(page), 0);
  },
);

pageTest('shows the browser menu only in text fields', {}, async (page) => {
  const prevented = (selector) =>
    page.evaluate((where) => {
      const event = new MouseEvent('contextmenu', { bubbles: true, cancelable: true });
      document.querySelector(where).dispatchEvent(event);
      return event.defaultPrevented;
    }, selector);
  assert.equal(await prevented('h2'), true);
  assert.equal(await prevented('.button'), true);
  assert.equal(await prevented('.toggle input'), true);
  assert.equal(await prevented('input[type=text]'), false);
});

for (const deviceScaleFactor of [1.25, 1.5, 2]) {
  pageTest(
    `cuts off no text and draws sharply at ${deviceScaleFactor * 100} %`,
    {
      ...states.macro,
      viewport: { width: 420, height: 560 },
      context: { deviceScaleFactor },
    },
    async (page) => {
      await settled(page);
      await page.locator('.pointer-path__canvas').scrollIntoViewIfNeeded();
      assert.ok((await page.evaluate(() => document.documentElement.scrollWidth)) <= 420);
      assert.deepEqual(await cutOffTexts(page), []);
      // The page draws the canvases in the background.
      await page.waitForFunction(
        (scale) =>
          [...document.querySelectorAll('.pointer-path__canvas, .strip__canvas')].every(
            (canvas) => canvas.width >= canvas.clientWidth * scale - 1,
          ),
        deviceScaleFactor,
      );
    },
  );
}
