// The frame of the page: panels that collapse and change places, remembered by the program, and the window's fit.
import assert from 'node:assert/strict';
import { after, before, describe, test } from 'node:test';
import {
  button,
  callsOf,
  change,
  expectCall,
  forgetCalls,
  importSource,
  mainWindowCommands,
  Pages,
  picture,
  settled,
} from './browser.mjs';

let pages;
before(async () => (pages = await Pages.start()));
after(() => pages.stop());

const kFirstOrder = ['panel-profile', 'panel-spammer', 'panel-keyspam', 'panel-tracker', 'panel-ui'];
const kTitles = ['Profile', 'Clicker', 'Key presser', 'Macro', 'Hotkeys'];
// A screen larger than the window, which then is no maximised one.
const kDesktop = "Object.defineProperty(screen, 'availWidth', { value: 1920 });";

const orderOf = (page) =>
  page.evaluate(() => [...document.querySelectorAll('#dashboard > .panel')].map((panel) => panel.id));
const topOf = (page, id) =>
  page.evaluate((panel) => document.getElementById(panel).getBoundingClientRect().top, id);
const contentHeight = (page) =>
  page.evaluate(() => Math.ceil(document.getElementById('app').getBoundingClientRect().height));
const collapseAll = `host.appSettings.minimizedPanels = ${JSON.stringify(kFirstOrder)};`;

test('a kept order is made whole, and a move changes one place', async () => {
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
  // A panel that is not shown keeps its neighbours.
  assert.deepEqual(orderAfterMove(kFirstOrder, kFirstOrder.slice(1), 'panel-ui', 1), [
    'panel-profile',
    'panel-spammer',
    'panel-ui',
    'panel-keyspam',
    'panel-tracker',
  ]);
});

test('collapsing is remembered, and the page comes up as it was', async () => {
  const page = await pages.open({ before: "host.appSettings.minimizedPanels = ['panel-keyspam']" });
  await settled(page);
  assert.equal(await button(page, 'Key presser: show settings').getAttribute('aria-expanded'), 'false');
  await button(page, 'Clicker: show settings').click();
  await button(page, 'Key presser: show settings').click();
  // The title does what the button beside it does.
  await page.locator('#panel-ui .panel__titles').click();
  await page.waitForFunction(() => host.calls.filter(([name]) => name === 'setAppSetting').length === 3);
  assert.deepEqual(await callsOf(page, 'setAppSetting'), [
    'min:panel-spammer,1',
    'min:panel-keyspam,0',
    'min:panel-ui,1',
  ]);
  assert.equal(await button(page, 'Hotkeys: show settings').getAttribute('aria-expanded'), 'false');
  assert.deepEqual(page.faults, []);
  await pages.close(page);
});

test('nothing is seen before the program has told how the panels stand, and then nothing moves', async () => {
  const page = await pages.open({
    before: `host.appSettings.minimizedPanels = ['panel-profile', 'panel-spammer'];
      host.appSettings.panelOrder = ['panel-ui', 'panel-tracker']; host.delay = 250;
      window.seen = [];
      const look = () => {
        const app = document.getElementById('app');
        if (app && getComputedStyle(app).visibility === 'visible') {
          window.seen.push([...document.querySelectorAll('.panel')].map((panel) => {
            const box = panel.getBoundingClientRect();
            return [panel.id, box.top, box.height].join(' ');
          }).join());
        }
        requestAnimationFrame(look);
      };
      look();`,
  });
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
  await pages.close(page);
});

test('a program that does not answer is not waited for with an empty window', async () => {
  const shown = await pages.open({ before: 'host.silent.getAppSettings = true' });
  await shown.locator('#panel-spammer').waitFor({ state: 'visible' });
  await pages.close(shown);
});

for (const [width, height] of [
  [420, 560],
  [360, 560],
  [1200, 900],
]) {
  test(`a panel is dragged by its handle, at ${width} by ${height}`, async () => {
    const page = await pages.open({ viewport: { width, height }, before: kDesktop });
    await settled(page);
    await forgetCalls(page);
    const grip = await button(page, 'Move Clicker').boundingBox();
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
    assert.deepEqual(await callsOf(page, 'resizeWindow'), [], 'the window stands still');
    assert.equal(await page.locator('.dashboard--arranging').count(), 0);
    assert.equal(await button(page, 'Clicker: show settings').getAttribute('aria-expanded'), 'true');
    // The controls still work where they are now.
    await button(page, 'Start clicking').click();
    await button(page, 'Stop clicking').waitFor();
    assert.deepEqual(page.faults, []);
    await pages.close(page);
  });
}

test('dropped where it was, a panel has not moved and nothing is sent', async () => {
  const page = await pages.open({ before: kDesktop, viewport: { width: 420, height: 560 } });
  await settled(page);
  const { x, y } = await button(page, 'Move Clicker').boundingBox();
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
  await pages.close(page);
});

test('by keyboard: the handle moves its panel, keeps the focus and says where it is', async () => {
  const page = await pages.open({ before: collapseAll });
  await settled(page);
  const grip = button(page, 'Move Macro');
  await grip.focus();
  const told = page.getByRole('status', { name: 'Panel order' });
  for (const [key, place, order] of [
    ['ArrowUp', 3, 'panel-profile,panel-spammer,panel-tracker,panel-keyspam,panel-ui'],
    ['Alt+ArrowUp', 2, 'panel-profile,panel-tracker,panel-spammer,panel-keyspam,panel-ui'],
    ['End', 5, 'panel-profile,panel-spammer,panel-keyspam,panel-ui,panel-tracker'],
    ['Home', 1, 'panel-tracker,panel-profile,panel-spammer,panel-keyspam,panel-ui'],
    ['ArrowDown', 2, 'panel-profile,panel-tracker,panel-spammer,panel-keyspam,panel-ui'],
  ]) {
    await page.keyboard.press(key);
    await page.waitForFunction((text) => host.calls.at(-1)?.[1] === text, order);
    assert.equal(await told.innerText(), `Macro: place ${place} of 5`);
    assert.equal((await orderOf(page)).join(), order);
    assert.equal(await page.evaluate(() => document.activeElement.ariaLabel), 'Move Macro', key);
  }
  await page.keyboard.press('Home');
  await forgetCalls(page);
  await page.keyboard.press('ArrowUp');
  await settled(page);
  assert.deepEqual(await callsOf(page, 'setPanelOrder'), [], 'the first one stays the first');
  // The Tab key follows the order that is seen.
  await page.keyboard.press('Shift+Tab');
  await page.keyboard.press('Tab');
  assert.equal(await page.evaluate(() => document.activeElement.ariaLabel), 'Move Macro');
  await pages.close(page);
});

test('without dragging: pressed, the handle offers buttons, and the panel stays where it is seen', async () => {
  const page = await pages.open();
  await settled(page);
  await button(page, 'Move Key presser').click();
  const up = button(page, 'Move Key presser up');
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
  await button(page, 'Move Key presser down').click();
  await page.waitForFunction(
    () => document.querySelectorAll('#dashboard > .panel')[1].id === 'panel-keyspam',
  );
  await button(page, 'Done moving Key presser').click();
  await button(page, 'Start pressing').waitFor();
  assert.equal(await page.evaluate(() => document.activeElement.ariaLabel), 'Move Key presser');
  await pages.close(page);
});

test('an order that the program refuses is not shown as if it held', async () => {
  const page = await pages.open({ before: collapseAll });
  await settled(page);
  await page.evaluate(() => (host.failing.setPanelOrder = 'no'));
  await button(page, 'Move Macro').focus();
  await page.keyboard.press('ArrowUp');
  await expectCall(page, 'setPanelOrder');
  await page.waitForFunction(
    (order) =>
      [...document.querySelectorAll('#dashboard > .panel')].map((panel) => panel.id).join() === order,
    kFirstOrder.join(),
  );
  await pages.close(page);
});

test('a page that may not keep an order offers no handles', async () => {
  const page = await pages.open({ absent: mainWindowCommands });
  await settled(page);
  assert.equal(await button(page, 'Move Clicker').count(), 0);
  await button(page, 'Clicker: show settings').click();
  assert.equal(await button(page, 'Clicker: show settings').getAttribute('aria-expanded'), 'false');
  assert.equal(await page.getByRole('switch', { name: 'Hotkeys on' }).count(), 0);
  assert.deepEqual(page.faults, []);
  await pages.close(page);
});

describe('the window fits its content', () => {
  const desktop = (width, height, before = '') => ({
    viewport: { width, height },
    before: kDesktop + before,
  });
  // The program's side: the client size becomes what was asked for, but no taller than the work area allows.
  const answer = async (page, limit) => {
    const text = (await callsOf(page, 'resizeWindow')).at(-1);
    const [width, height] = text.split(',').map(Number);
    await page.setViewportSize({ width, height: Math.min(height, limit) });
    await settled(page);
  };

  test('at the first start, and after each collapse and expansion', async () => {
    const page = await pages.open(desktop(420, 560, collapseAll));
    assert.deepEqual(await expectCall(page, 'resizeWindow'), [`420,${await contentHeight(page)}`]);
    await answer(page, 1040);
    await forgetCalls(page);
    await button(page, 'Clicker: show settings').click();
    assert.deepEqual(await expectCall(page, 'resizeWindow'), [`420,${await contentHeight(page)}`]);
    await answer(page, 1040);
    assert.equal(await page.evaluate(() => document.documentElement.scrollHeight - innerHeight), 0);
    await forgetCalls(page);
    // Taller than the work area: the program stops at its limit, and the page asks once, not again and again.
    for (const name of ['Key presser', 'Macro']) {
      await button(page, `${name}: show settings`).click();
      await page.waitForFunction(() => host.calls.some(([called]) => called === 'resizeWindow'));
      await answer(page, 1040);
      assert.equal((await callsOf(page, 'resizeWindow')).length, 1, name);
      await forgetCalls(page);
    }
    await button(page, 'Macro: show settings').click();
    assert.deepEqual(await expectCall(page, 'resizeWindow'), [`420,${await contentHeight(page)}`]);
    await pages.close(page);
  });

  test('panels that collapse before the first fit is answered are part of it', async () => {
    const page = await pages.open(desktop(420, 560, 'host.silent.resizeWindow = true;'));
    const whole = await contentHeight(page);
    assert.deepEqual(await expectCall(page, 'resizeWindow'), [`420,${whole}`]);
    await button(page, 'Macro: show settings').click();
    await page.waitForFunction(() => host.calls.filter(([name]) => name === 'resizeWindow').length === 2);
    const less = await contentHeight(page);
    assert.ok(less < whole - 500 && less > 560, `${less} of ${whole}`);
    assert.deepEqual(await callsOf(page, 'resizeWindow'), [`420,${whole}`, `420,${less}`]);
    // Both answers come late, one after the other; what follows still fits.
    await page.setViewportSize({ width: 420, height: whole });
    await page.setViewportSize({ width: 420, height: less });
    await settled(page);
    await forgetCalls(page);
    await button(page, 'Macro: show settings').click();
    assert.deepEqual(await expectCall(page, 'resizeWindow'), [`420,${whole}`]);
    await pages.close(page);
  });

  test('also when the window takes an earlier size while a panel collapses', async () => {
    const page = await pages.open(desktop(420, 560));
    await expectCall(page, 'resizeWindow');
    await answer(page, 6000); // all of it in sight
    await forgetCalls(page);
    // The page is told of a size after the panel has gone and before it is painted without it.
    await button(page, 'Macro: show settings').evaluate((header) => {
      const observer = new MutationObserver(() => {
        observer.disconnect();
        window.dispatchEvent(new Event('resize'));
      });
      observer.observe(header, { attributeFilter: ['aria-expanded'] });
    });
    await button(page, 'Macro: show settings').click();
    assert.deepEqual(await expectCall(page, 'resizeWindow'), [`420,${await contentHeight(page)}`]);
    await pages.close(page);
  });

  test("never in answer to the person's own resizing, whose smaller window stays small", async () => {
    const page = await pages.open(desktop(500, 640));
    await settled(page);
    await page.setViewportSize({ width: 460, height: 500 });
    await page.setViewportSize({ width: 900, height: 600 });
    await page.setViewportSize({ width: 420, height: 560 });
    await settled(page);
    await button(page, 'Profile: show settings').click();
    await settled(page);
    assert.deepEqual(await callsOf(page, 'resizeWindow'), []);
    // Only empty room goes away.
    for (const name of kTitles.slice(1)) await button(page, `${name}: show settings`).click();
    const height = await contentHeight(page);
    await page.waitForFunction(
      (wanted) => host.calls.findLast(([name]) => name === 'resizeWindow')?.[1] === wanted,
      `420,${height}`,
    );
    await pages.close(page);
  });

  test('not while it fills the screen', async () => {
    const page = await pages.open({
      viewport: { width: 1280, height: 900 },
      before: "Object.defineProperty(screen, 'availWidth', { value: 1280 });",
    });
    await settled(page);
    await button(page, 'Clicker: show settings').click();
    await settled(page);
    assert.deepEqual(await callsOf(page, 'resizeWindow'), []);
    await pages.close(page);
  });

  test("a panel's own window asks for the size of its panel", async () => {
    const page = await pages.open(desktop(450, 400));
    await settled(page);
    await page.evaluate(() => {
      for (const panel of document.querySelectorAll('.panel')) panel.style.display = 'none';
      document.getElementById('panel-spammer').style.display = 'block';
      window.resizeHostWindow();
    });
    const height = await contentHeight(page);
    assert.ok(height < 700, `${height}`);
    assert.deepEqual(await expectCall(page, 'resizeWindow'), [`450,${height}`]);
    await change(page, 'host.status.autoClicking = true');
    assert.equal(await page.locator('#panel-keyspam').isVisible(), false, 'what is hidden stays hidden');
    await pages.close(page);
  });

  test('a program that cannot do it is no alarm', async () => {
    const page = await pages.open(desktop(420, 560, `${collapseAll} host.failing.resizeWindow = 'no';`));
    await expectCall(page, 'resizeWindow');
    await settled(page);
    assert.equal(await page.getByRole('alert').innerText(), '');
    assert.deepEqual(page.faults, []);
    await pages.close(page);
  });
});
