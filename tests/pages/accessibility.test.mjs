// By keyboard, by screen reader, by eye: what is computed rather than hoped for.
import assert from 'node:assert/strict';
import { after, before, test } from 'node:test';
import { button, callsOf, expectCall, Pages, picture, settled } from './browser.mjs';
import { axeFinds, contrastOf } from './checks.mjs';

let pages;
before(async () => (pages = await Pages.start()));
after(() => pages.stop());

const states = {
  idle: "host.events = [{ time: 0, desc: 'Autoclicker ON' }];",
  running: "host.status.autoClicking = true; host.status.state = 'Recording';",
  locked: 'host.status.unlocked = false;',
  capturing: "host.status.reassigning = 'keyspamtarget'; host.status.keySpamTargets = ['A', 'B'];",
  macro: `host.events = ['Abs Move to X:0 Y:0', 'Keyboard VK: 65 (DOWN)', 'Mouse Click at X:9 Y:9', 'Rel Move dX:5 dY:5']
    .map((desc, time) => ({ time, desc }));`,
  bad: 'Object.assign(host.settings, { sms: -1, tspd: 0 });',
};

for (const [name, script] of Object.entries(states)) {
  test(`axe finds nothing: ${name}`, async () => {
    const page = await pages.open({ before: script });
    await settled(page);
    if (name === 'idle') await page.locator('#events-0').click();
    if (name === 'macro') await page.locator('#events').press('Control+a');
    assert.deepEqual(await axeFinds(page), []);
    await pages.close(page);
  });
}

for (const [name, script] of Object.entries(states)) {
  test(`contrast, computed: ${name}`, async () => {
    const page = await pages.open({ before: script });
    await settled(page);
    const found = await page.evaluate(contrastOf);
    assert.ok(found.length > 80, `${found.length} places`);
    assert.deepEqual(
      found.filter(([, ratio, least]) => ratio < least),
      [],
    );
    await pages.close(page);
  });
}

test('every target is at least 24 by 24 pixels', async () => {
  const page = await pages.open({ before: states.running });
  await settled(page);
  const small = await page.evaluate(() =>
    [...document.querySelectorAll('button, input, select, [role=option]')]
      .filter((element) => element.checkVisibility())
      .map((element) => [element.ariaLabel ?? element.innerText, element.getBoundingClientRect()])
      .filter(([, box]) => box.width < 24 || box.height < 24)
      .map(([name, box]) => `${name}: ${box.width} x ${box.height}`),
  );
  assert.deepEqual(small, []);
  await pages.close(page);
});

test('by keyboard alone: every control is reached, in order, with a ring to see', async () => {
  const page = await pages.open({
    before: "host.events = [{ time: 0, desc: 'Autoclicker ON' }]; host.profiles.current = 0",
  });
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
    ...['Reset hotkeys', 'Change the clicker hotkey', 'Change the unlock hotkey'],
  ]) {
    assert.ok(reached.includes(name), `${name} in ${reached.join(', ')}`);
  }
  await pages.close(page);
});

test('by keyboard alone: set an interval, choose, start and stop, retime and delete', async () => {
  const page = await pages.open({ before: "host.events = [{ time: 1, desc: 'Autoclicker ON' }]" });
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
  await page.waitForFunction(() => host.calls.filter(([name]) => name === 'updateSpammer').length === 3);
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
  assert.deepEqual(await expectCall(page, 'updateEventTime'), ['0,1.100000']);
  await tabTo('Delete event');
  await page.keyboard.press('Enter');
  assert.deepEqual(await expectCall(page, 'deleteEvent'), ['0']);
  await tabTo('Start clicking');
  await page.keyboard.press('Enter');
  await button(page, 'Stop clicking').waitFor();
  await page.keyboard.press('Enter');
  await expectCall(page, 'stopSpammer');
  await pages.close(page);
});

test('the state is a live region that stays, and a failure is an alert', async () => {
  const page = await pages.open();
  await page.evaluate(() => (window.kept = document.querySelector('[role=status][aria-label=State]')));
  await button(page, 'Start clicking').click();
  await page.waitForFunction(() => window.kept.isConnected && window.kept.innerText.includes('Clicking'));
  assert.equal(await page.locator('[role=alert]').count(), 1, 'there before there is anything to say');
  await pages.close(page);
});

for (const colorScheme of ['dark', 'light']) {
  test(`in the system's high contrast (${colorScheme}) it is still seen what is on and what is chosen`, async () => {
    const page = await pages.open({
      before: `${states.macro} host.appSettings.hotkeyLock = false; host.status.lockOn = false;`,
      context: { forcedColors: 'active', colorScheme },
    });
    await settled(page);
    await page.locator('#events-1').click();
    await page.locator('.filter__chip').last().click();
    const grounds = await page.evaluate(() => {
      const ground = (selector) =>
        getComputedStyle(document.querySelector(selector)).backgroundColor.replace(/^rgba\(.*, 0\)$/, 'none');
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
    await pages.close(page);
  });
}

test('no motion for those who want none', async () => {
  const page = await pages.open({ context: { reducedMotion: 'reduce' } });
  const moving = await page.evaluate(
    () =>
      [...document.querySelectorAll('*')].filter((element) => {
        const style = getComputedStyle(element);
        const longest = Math.max(...style.transitionDuration.split(',').map((text) => parseFloat(text)));
        return longest > 0 || style.animationName !== 'none';
      }).length,
  );
  assert.equal(moving, 0);
  await pages.close(page);
});

test('no browser menu but where text is edited', async () => {
  const page = await pages.open();
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
  await pages.close(page);
});

for (const deviceScaleFactor of [1.25, 1.5, 2]) {
  test(`nothing is cut off and drawings stay sharp at ${deviceScaleFactor * 100} %`, async () => {
    const page = await pages.open({
      before: states.macro,
      viewport: { width: 420, height: 560 },
      context: { deviceScaleFactor },
    });
    await settled(page);
    await page.locator('.pointer-path__canvas').scrollIntoViewIfNeeded();
    assert.ok((await page.evaluate(() => document.documentElement.scrollWidth)) <= 420);
    const clipped = await page.evaluate(() =>
      [...document.querySelectorAll('button, .segmented span, .toggle span:last-child, .group__hint')]
        .filter((element) => element.scrollWidth > element.clientWidth + 1)
        .map((element) => element.innerText),
    );
    assert.deepEqual(clipped, []);
    // The canvases are drawn in the background.
    await page.waitForFunction(
      (scale) =>
        [...document.querySelectorAll('.pointer-path__canvas, .strip__canvas')].every(
          (canvas) => canvas.width >= canvas.clientWidth * scale - 1,
        ),
      deviceScaleFactor,
    );
    await pages.close(page);
  });
}
