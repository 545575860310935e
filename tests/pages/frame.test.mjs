// The panels, which collapse and move, and the window, which fits its content.
import {
  assert,
  button,
  callsOf,
  describe,
  expectCall,
  focused,
  forgetCalls,
  importSource,
  mainWindowCommands,
  pageTest,
  picture,
  settled,
  test,
} from './page_test.mjs';

const kFirstOrder = ['panel-profile', 'panel-spammer', 'panel-keyspam', 'panel-tracker', 'panel-ui'];
const kTitles = ['Profile', 'Autoclicker', 'Key spammer', 'Macro', 'Hotkeys'];
// A screen wider than the window, so that the window does not count as maximised.
const kDesktop = { before: () => Object.defineProperty(screen, 'availWidth', { value: 1920 }) };

const orderOf = (page) =>
  page.evaluate(() => [...document.querySelectorAll('#dashboard > .panel')].map((panel) => panel.id));
const topOf = (page, id) =>
  page.evaluate((panel) => document.getElementById(panel).getBoundingClientRect().top, id);
const contentHeight = (page) =>
  page.evaluate(() => Math.ceil(document.getElementById('app').getBoundingClientRect().height));
const kCollapsed = { preferences: { minimizedPanels: kFirstOrder } };

test('completes a stored panel order, and moves one panel', async () => {
  const { completeOrder, orderAfterMove } = await importSource('panel-order.ts');
  assert.deepEqual(completeOrder([]), kFirstOrder);
  assert.deepEqual(completeOrder(['panel-ui']), [
    'panel-profile',
    'panel-spammer',
    'panel-keyspam',
    'panel-tracker',
    'panel-ui',
  ]);
  assert.deepEqual(completeOrder(['panel-ui', 'panel-tracker', 'panel-profile']), [
    'panel-ui',
    'panel-tracker',
    'panel-profile',
    'panel-spammer',
    'panel-keyspam',
  ]);
  assert.deepEqual(
    completeOrder([
      'panel-tracker',
      'nonsense',
      'panel-tracker',
      'panel-spammer',
      'panel-profile',
      'panel-keyspam',
    ]),
    ['panel-tracker', 'panel-ui', 'panel-spammer', 'panel-profile', 'panel-keyspam'],
  );
  assert.deepEqual(orderAfterMove(kFirstOrder, kFirstOrder, 'panel-ui', 0), [
    'panel-ui',
    ...kFirstOrder.slice(0, 4),
  ]);
  assert.deepEqual(orderAfterMove(kFirstOrder, kFirstOrder, 'panel-profile', 4), [
    ...kFirstOrder.slice(1),
    'panel-profile',
  ]);
  // A hidden panel keeps its neighbours.
  assert.deepEqual(orderAfterMove(kFirstOrder, kFirstOrder.slice(1), 'panel-ui', 1), [
    'panel-profile',
    'panel-spammer',
    'panel-ui',
    'panel-keyspam',
    'panel-tracker',
  ]);
});

pageTest(
  'starts with the panels as they were, and stores each collapse and expansion',
  { preferences: { minimizedPanels: ['panel-keyspam'] } },
  async (page) => {
    await settled(page);
    assert.equal(await button(page, 'Key spammer: show settings').getAttribute('aria-expanded'), 'false');
    await button(page, 'Autoclicker: show settings').click();
    await button(page, 'Key spammer: show settings').click();
    // The title does what the button beside it does.
    await page.locator('#panel-ui .panel__titles').click();
    await expectCall(page, 'setAppSetting', 3);
    assert.deepEqual(await callsOf(page, 'setAppSetting'), [
      'min:panel-spammer,1',
      'min:panel-keyspam,0',
      'min:panel-ui,1',
    ]);
    assert.equal(await button(page, 'Hotkeys: show settings').getAttribute('aria-expanded'), 'false');
  },
);

pageTest(
  'shows nothing before the panel layout is known, and then moves nothing',
  {
    preferences: {
      minimizedPanels: ['panel-profile', 'panel-spammer'],
      panelOrder: ['panel-ui', 'panel-tracker'],
    },
    answerDelay: 250,
    before: () => {
      window.seen = [];
      const look = () => {
        const app = document.getElementById('app');
        if (app && getComputedStyle(app).visibility === 'visible') {
          const layout = [...document.querySelectorAll('.panel')].map((panel) => {
            const box = panel.getBoundingClientRect();
            return [panel.id, box.top, box.height].join(' ');
          });
          window.seen.push(layout.join());
        }
        requestAnimationFrame(look);
      };
      look();
    },
  },
  async (page) => {
    await page.waitForFunction(() => window.seen.length > 20);
    const seen = await page.evaluate(() => [...new Set(window.seen)]);
    assert.equal(seen.length, 1, seen.join('\n'));
    assert.deepEqual(await orderOf(page), [
      'panel-profile',
      'panel-spammer',
      'panel-keyspam',
      'panel-ui',
      'panel-tracker',
    ]);
  },
);

pageTest(
  'shows the page also when a first answer does not come',
  { silent: ['getAppSettings'] },
  async (page) => {
    await page.locator('#panel-spammer').waitFor({ state: 'visible' });
  },
);

for (const [width, height] of [
  [420, 560],
  [360, 560],
  [1200, 900],
]) {
  pageTest(
    `moves a panel that is dragged by its handle, at ${width} by ${height}`,
    { viewport: { width, height }, ...kDesktop },
    async (page) => {
      await settled(page);
      await forgetCalls(page);
      const grip = await button(page, 'Move Autoclicker').boundingBox();
      const x = grip.x + grip.width / 2;
      const y = grip.y + grip.height / 2;
      await page.mouse.move(x, y);
      await page.mouse.down();
      await page.mouse.move(x, y + 8, { steps: 3 });
      const dragged = page.locator('.panel--dragged');
      await dragged.waitFor();
      const box = await dragged.boundingBox();
      assert.ok(box.y <= y + 8 && box.y + box.height >= y + 8, 'the panel is under the pointer');
      assert.ok(box.height < 70, 'only its header is dragged');
      for (let i = 0; i < 20 && (await orderOf(page)).indexOf('panel-spammer') !== 2; i++) {
        await page.mouse.move(x, y + 14 + i * 6);
        // Longer than the pause after which the page looks where the pointer is, by the page's own clock.
        await page.evaluate(() => new Promise((looked) => setTimeout(looked, 60)));
      }
      await picture(page, `dragging-${width}`);
      await page.mouse.up();
      assert.deepEqual(await expectCall(page, 'setPanelOrder'), [
        'panel-profile,panel-keyspam,panel-spammer,panel-tracker,panel-ui',
      ]);
      await dragged.waitFor({ state: 'detached' });
      assert.deepEqual(await orderOf(page), [
        'panel-profile',
        'panel-keyspam',
        'panel-spammer',
        'panel-tracker',
        'panel-ui',
      ]);
      assert.deepEqual(await callsOf(page, 'resizeWindow'), [], 'the window keeps its size');
      assert.equal(await page.locator('.dashboard--arranging').count(), 0);
      assert.equal(await button(page, 'Autoclicker: show settings').getAttribute('aria-expanded'), 'true');
      // The controls still work at their new position.
      await button(page, 'Start clicking').click();
      await button(page, 'Stop clicking').waitFor();
    },
  );
}

pageTest(
  'sends nothing for a panel that is dropped at its old position',
  { ownContext: true, ...kDesktop },
  async (page) => {
    await settled(page);
    const { x, y } = await button(page, 'Move Autoclicker').boundingBox();
    await page.mouse.move(x + 8, y + 10);
    await page.mouse.down();
    await page.mouse.move(x + 8, y + 20, { steps: 4 });
    await page.locator('.panel--dragged').waitFor();
    await page.mouse.move(x + 8, y + 10, { steps: 4 });
    await page.mouse.up();
    await page.locator('.panel--dragged').waitFor({ state: 'detached' });
    await settled(page);
    assert.deepEqual(await orderOf(page), kFirstOrder);
    assert.deepEqual(await callsOf(page, 'setPanelOrder'), []);
  },
);

pageTest(
  'moves a panel by keyboard, keeps the focus and announces the position',
  kCollapsed,
  async (page) => {
    await settled(page);
    const grip = button(page, 'Move Macro');
    await grip.focus();
    const announcement = page.getByRole('status', { name: 'Panel order' });
    for (const [key, place, order] of [
      ['ArrowUp', 3, 'panel-profile,panel-spammer,panel-tracker,panel-keyspam,panel-ui'],
      ['Alt+ArrowUp', 2, 'panel-profile,panel-tracker,panel-spammer,panel-keyspam,panel-ui'],
      ['End', 5, 'panel-profile,panel-spammer,panel-keyspam,panel-ui,panel-tracker'],
      ['Home', 1, 'panel-tracker,panel-profile,panel-spammer,panel-keyspam,panel-ui'],
      ['ArrowDown', 2, 'panel-profile,panel-tracker,panel-spammer,panel-keyspam,panel-ui'],
    ]) {
      await page.keyboard.press(key);
      await page.waitForFunction((text) => host.calls.at(-1)?.[1] === text, order);
      assert.equal(await announcement.innerText(), `Macro: position ${place} of 5`);
      assert.equal((await orderOf(page)).join(), order);
      assert.equal(await focused(page), 'Move Macro', key);
    }
    await page.keyboard.press('Home');
    await forgetCalls(page);
    await page.keyboard.press('ArrowUp');
    await settled(page);
    assert.deepEqual(await callsOf(page, 'setPanelOrder'), [], 'the first panel stays the first');
    // The Tab key follows the order on the page.
    await page.keyboard.press('Shift+Tab');
    await page.keyboard.press('Tab');
    assert.equal(await focused(page), 'Move Macro');
  },
);

pageTest('a press on the handle offers buttons, and the panel stays under the pointer', {}, async (page) => {
  await settled(page);
  await button(page, 'Move Key spammer').click();
  const up = button(page, 'Move Key spammer up');
  await up.waitFor();
  await picture(page, 'panel-place');
  const top = await topOf(page, 'panel-keyspam');
  await up.click();
  assert.deepEqual(await expectCall(page, 'setPanelOrder'), [
    'panel-profile,panel-keyspam,panel-spammer,panel-tracker,panel-ui',
  ]);
  assert.ok(Math.abs((await topOf(page, 'panel-keyspam')) - top) < 2, 'nothing moves under the pointer');
  await up.click();
  await page.waitForFunction(() => document.querySelector('#dashboard > .panel').id === 'panel-keyspam');
  assert.equal(await up.getAttribute('aria-disabled'), 'true');
  await button(page, 'Move Key spammer down').click();
  await page.waitForFunction(
    () => document.querySelectorAll('#dashboard > .panel')[1].id === 'panel-keyspam',
  );
  await button(page, 'Done moving Key spammer').click();
  await button(page, 'Start pressing').waitFor();
  assert.equal(await focused(page), 'Move Key spammer');
});

pageTest('returns to the old order when the program rejects a new one', kCollapsed, async (page) => {
  await settled(page);
  await page.host.setFailing({ setPanelOrder: 'no' });
  await button(page, 'Move Macro').focus();
  await page.keyboard.press('ArrowUp');
  await expectCall(page, 'setPanelOrder');
  await page.waitForFunction(
    (order) =>
      [...document.querySelectorAll('#dashboard > .panel')].map((panel) => panel.id).join() === order,
    kFirstOrder.join(),
  );
});

pageTest('offers no handles in a panel window', { absentCommands: mainWindowCommands }, async (page) => {
  await settled(page);
  assert.equal(await button(page, 'Move Autoclicker').count(), 0);
  await button(page, 'Autoclicker: show settings').click();
  assert.equal(await button(page, 'Autoclicker: show settings').getAttribute('aria-expanded'), 'false');
  assert.equal(await page.getByRole('switch', { name: 'Hotkeys on' }).count(), 0);
});

describe('the window fits its content', () => {
  const desktop = (width, height, state = {}) => ({ viewport: { width, height }, ...kDesktop, ...state });
  // Resizes the window as the program does: to the requested size, but no taller than the work area.
  const answer = async (page, limit) => {
    const text = (await callsOf(page, 'resizeWindow')).at(-1);
    const [width, height] = text.split(',').map(Number);
    await page.setViewportSize({ width, height: Math.min(height, limit) });
    await settled(page);
  };

  pageTest(
    'at the first start, and after each collapse and expansion',
    // Without an answer, the page takes each new size as the requested one, however late it comes.
    desktop(420, 560, { ...kCollapsed, silent: ['resizeWindow'] }),
    async (page) => {
      assert.deepEqual(await expectCall(page, 'resizeWindow'), [`420,${await contentHeight(page)}`]);
      await answer(page, 1040);
      await forgetCalls(page);
      await button(page, 'Autoclicker: show settings').click();
      assert.deepEqual(await expectCall(page, 'resizeWindow'), [`420,${await contentHeight(page)}`]);
      await answer(page, 1040);
      assert.equal(await page.evaluate(() => document.documentElement.scrollHeight - innerHeight), 0);
      await forgetCalls(page);
      // Taller than the work area: the program stops at its limit, and the page asks only once.
      for (const name of ['Key spammer', 'Macro']) {
        await button(page, `${name}: show settings`).click();
        await page.waitForFunction(() => host.calls.some(([called]) => called === 'resizeWindow'));
        await answer(page, 1040);
        assert.equal((await callsOf(page, 'resizeWindow')).length, 1, name);
        await forgetCalls(page);
      }
      await button(page, 'Macro: show settings').click();
      assert.deepEqual(await expectCall(page, 'resizeWindow'), [`420,${await contentHeight(page)}`]);
    },
  );

  pageTest(
    'includes panels that collapse before the first request is answered',
    desktop(420, 560, { silent: ['resizeWindow'] }),
    async (page) => {
      const whole = await contentHeight(page);
      assert.deepEqual(await expectCall(page, 'resizeWindow'), [`420,${whole}`]);
      await button(page, 'Macro: show settings').click();
      await expectCall(page, 'resizeWindow', 2);
      const less = await contentHeight(page);
      assert.ok(less < whole - 500 && less > 560, `${less} of ${whole}`);
      assert.deepEqual(await callsOf(page, 'resizeWindow'), [`420,${whole}`, `420,${less}`]);
      // Both sizes arrive late, one after the other. The next request still fits.
      await page.setViewportSize({ width: 420, height: whole });
      await page.setViewportSize({ width: 420, height: less });
      await settled(page);
      await forgetCalls(page);
      await button(page, 'Macro: show settings').click();
      assert.deepEqual(await expectCall(page, 'resizeWindow'), [`420,${whole}`]);
    },
  );

  pageTest(
    'when the window takes an earlier size while a panel collapses',
    desktop(420, 560),
    async (page) => {
      await expectCall(page, 'resizeWindow');
      await answer(page, 6000); // the whole content is visible
      await forgetCalls(page);
      // The resize event arrives after the panel has collapsed and before the next frame.
      await button(page, 'Macro: show settings').evaluate((header) => {
        const observer = new MutationObserver(() => {
          observer.disconnect();
          window.dispatchEvent(new Event('resize'));
        });
        observer.observe(header, { attributeFilter: ['aria-expanded'] });
      });
      await button(page, 'Macro: show settings').click();
      assert.deepEqual(await expectCall(page, 'resizeWindow'), [`420,${await contentHeight(page)}`]);
    },
  );

  pageTest(
    'never resizes a window that the user has resized, and only removes empty space',
    desktop(500, 640),
    async (page) => {
      await settled(page);
      await page.setViewportSize({ width: 460, height: 500 });
      await page.setViewportSize({ width: 900, height: 600 });
      await page.setViewportSize({ width: 420, height: 560 });
      await settled(page);
      await button(page, 'Profile: show settings').click();
      await settled(page);
      assert.deepEqual(await callsOf(page, 'resizeWindow'), []);
      // Empty space below the content is removed.
      for (const name of kTitles.slice(1)) await button(page, `${name}: show settings`).click();
      const height = await contentHeight(page);
      await page.waitForFunction(
        (wanted) => host.calls.findLast(([name]) => name === 'resizeWindow')?.[1] === wanted,
        `420,${height}`,
      );
    },
  );

  pageTest(
    'not while the window fills the screen',
    {
      viewport: { width: 1280, height: 900 },
      before: () => Object.defineProperty(screen, 'availWidth', { value: 1280 }),
    },
    async (page) => {
      await settled(page);
      await button(page, 'Autoclicker: show settings').click();
      await settled(page);
      assert.deepEqual(await callsOf(page, 'resizeWindow'), []);
    },
  );

  pageTest('a panel window requests the size of its panel', desktop(450, 400), async (page) => {
    await settled(page);
    await page.evaluate(() => {
      for (const panel of document.querySelectorAll('.panel')) panel.style.display = 'none';
      document.getElementById('panel-spammer').style.display = 'block';
      window.resizeHostWindow();
    });
    const height = await contentHeight(page);
    assert.ok(height < 700, `${height}`);
    assert.deepEqual(await expectCall(page, 'resizeWindow'), [`450,${height}`]);
    await page.host.setStatus({ autoclickerRunning: true });
    assert.equal(await page.locator('#panel-keyspam').isVisible(), false, 'a hidden panel stays hidden');
  });

  pageTest(
    'shows no alert when the program rejects the request',
    desktop(420, 560, { ...kCollapsed, failing: { resizeWindow: 'no' } }),
    async (page) => {
      await expectCall(page, 'resizeWindow');
      await settled(page);
      assert.equal(await page.getByRole('alert').innerText(), '');
    },
  );
});
