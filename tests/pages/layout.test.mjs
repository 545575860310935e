// The layout: the first start, and how the panels use the width and the height of the window.
import { allCalls, assert, button, describe, moveTo, pageTest, picture, settled } from './page_test.mjs';
import { axeFinds } from './page_checks.mjs';

const kPanels = ['panel-profile', 'panel-spammer', 'panel-keyspam', 'panel-tracker', 'panel-ui'];
const kFirstStart = { preferences: { seenWarnings: [] } };
// A screen wider than the window, so that the window does not count as maximised.
const kDesktop = { before: () => Object.defineProperty(screen, 'availWidth', { value: 1920 }) };
const kMacro = {
  events: Array.from({ length: 200 }, (_, i) => moveTo(i / 10, i * 7, (i * i) % 500)),
};
const openPanels = (page) =>
  page.evaluate(() =>
    [...document.querySelectorAll('.panel:not(.panel--collapsed)')].map((panel) => panel.id),
  );
// The changes of preferences that the page has sent, without the first questions.
const changesOf = async (page) =>
  (await allCalls(page)).filter(([name]) => /^(setAppSetting|markWarningSeen|setPanelOrder)$/.test(name));

describe('the first start', () => {
  pageTest('shows the autoclicker and collapses the others, once', kFirstStart, async (page) => {
    assert.deepEqual(await openPanels(page), ['panel-spammer']);
    await settled(page);
    assert.deepEqual(await changesOf(page), [
      ...kPanels.filter((id) => id !== 'panel-spammer').map((id) => ['setAppSetting', `min:${id},1`]),
      ['markWarningSeen', 'first-layout'],
    ]);
    await picture(page, 'first-start', { fullPage: true });
    assert.deepEqual(await axeFinds(page), []);
  });

  pageTest('needs no other panel open to choose a profile, record or play', kFirstStart, async (page) => {
    for (const name of ['Start clicking', 'Start pressing', 'Record', 'Play']) {
      assert.ok(await button(page, name).isVisible(), name);
    }
    assert.ok(await page.getByRole('combobox', { name: 'Profile' }).isVisible());
  });

  pageTest(
    'makes the window no taller than the panels',
    { viewport: { width: 420, height: 560 }, ...kFirstStart, ...kDesktop },
    async (page) => {
      await settled(page);
      const height = await page.evaluate(() => Math.ceil(document.getElementById('app').offsetHeight));
      const sizes = (await allCalls(page)).filter(([name]) => name === 'resizeWindow');
      assert.deepEqual(sizes, [['resizeWindow', `420,${height}`]]);
      assert.ok(height < 920, `${height} px`);
    },
  );

  for (const [why, preferences] of [
    ['a later start, even with all panels open', { seenWarnings: ['first-layout'] }],
    ['panels that the user has collapsed', { seenWarnings: [], minimizedPanels: ['panel-ui'] }],
    ['panels that the user has ordered', { seenWarnings: [], panelOrder: [...kPanels].reverse() }],
  ]) {
    pageTest(`leaves ${why}`, { preferences }, async (page) => {
      await settled(page);
      const collapsed = preferences.minimizedPanels ?? [];
      assert.equal((await openPanels(page)).length, kPanels.length - collapsed.length);
      const sent = await changesOf(page);
      const isMarked = preferences.seenWarnings.length > 0;
      assert.deepEqual(sent, isMarked ? [] : [['markWarningSeen', 'first-layout']]);
    });
  }

  pageTest(
    'changes nothing if the preferences cannot be read',
    { failing: { getAppSettings: 'no file' } },
    async (page) => {
      await settled(page);
      assert.deepEqual(await changesOf(page), []);
      assert.equal((await openPanels(page)).length, kPanels.length);
    },
  );
});

for (const width of [720, 1000, 1280, 1600]) {
  describe(`at ${width} px`, () => {
    const wide = (name, options, body) =>
      pageTest(name, { viewport: { width, height: 900 }, ...kMacro, ...options }, async (page) => {
        await page.locator('.strip__canvas[data-events="200"]').waitFor();
        await body(page);
      });

    wide('no panel has a hole in its grid', {}, async (page) => {
      await picture(page, `layout-${width}`, { fullPage: true });
      const holes = await page.evaluate(() =>
        [
          ...document.querySelectorAll('#panel-spammer, #panel-keyspam, #panel-tracker, #panel-ui ul'),
        ].flatMap((panel) => {
          const grid = panel.querySelector('.panel__body') ?? panel;
          const columns = getComputedStyle(grid).gridTemplateColumns.split(' ').length;
          const { left, width: whole } = grid.getBoundingClientRect();
          // The lowest point of the content in each column.
          const bottoms = Array.from({ length: columns }, () => 0);
          for (const item of grid.children) {
            const box = item.getBoundingClientRect();
            const first = Math.floor(((box.left - left) / whole) * columns + 0.2);
            const last = Math.floor(((box.right - left) / whole) * columns - 0.2);
            for (let i = Math.max(0, first); i <= Math.min(columns - 1, last); i++)
              bottoms[i] = Math.max(bottoms[i], box.bottom);
          }
          // One row has groups of different heights and cannot have a hole.
          const rows = getComputedStyle(grid).gridTemplateRows.split(' ').length;
          const gap = rows > 1 ? Math.max(...bottoms) - Math.min(...bottoms) : 0;
          return gap > 60 ? [`${panel.id || 'hotkeys'}: ${gap} px in ${bottoms}`] : [];
        }),
      );
      assert.deepEqual(holes, []);
    });

    wide('the strip has the width of the panel, and the path the height of the list', {}, async (page) => {
      const boxOf = (selector) => page.locator(selector).boundingBox();
      const body = await boxOf('#panel-tracker .panel__body');
      const strip = await boxOf('.strip');
      assert.ok(strip.width > body.width - 40, `${strip.width} of ${body.width}`);
      const [path, events] = [await boxOf('.pointer-path'), await boxOf('.macro__events')];
      assert.ok(Math.abs(path.y + path.height - (events.y + events.height)) <= 2);
      assert.ok(path.height >= 300, `${path.height}`);
      // The drawing is as large as its element.
      const canvas = await page.evaluate(() => {
        const drawn = document.querySelector('.pointer-path__canvas');
        return [drawn.width / drawn.clientWidth, drawn.height / drawn.clientHeight];
      });
      assert.deepEqual(canvas, [2, 2]);
    });

    wide('the state line is in line with the panels', {}, async (page) => {
      const edges = await page.evaluate(() => {
        const box = (selector) => document.querySelector(selector).getBoundingClientRect();
        return [
          [box('.state-line__icon').left, box('.panel').left],
          [box('.preferences-button:last-child').right, box('.panel').right],
        ];
      });
      for (const [one, other] of edges) assert.ok(Math.abs(one - other) <= 2, `${one} and ${other}`);
    });

    wide('nothing is wider than the window', {}, async (page) => {
      assert.ok((await page.evaluate(() => document.documentElement.scrollWidth)) <= width);
    });
  });
}

pageTest(
  'more height shows more events',
  { viewport: { width: 1000, height: 700 }, ...kMacro },
  async (page) => {
    const rows = async () => {
      await settled(page);
      return page.locator('#events').getByRole('option').count();
    };
    const few = await rows();
    await page.setViewportSize({ width: 1000, height: 1100 });
    assert.ok((await rows()) > few + 8, `${few} rows and ${await rows()}`);
  },
);

pageTest(
  'the list passes the wheel on at its ends',
  { viewport: { width: 420, height: 560 }, ...kMacro },
  async (page) => {
    const list = page.locator('#events');
    await list.scrollIntoViewIfNeeded();
    const state = () => page.evaluate(() => [scrollY, document.querySelector('#events').scrollTop]);
    const wheel = async (amount) => {
      await list.hover();
      await page.mouse.wheel(0, amount);
    };
    const [pageTop] = await state();
    await wheel(100);
    await page.waitForFunction(() => document.querySelector('#events').scrollTop === 100);
    assert.equal((await state())[0], pageTop, 'the page stays while the list scrolls');
    await list.evaluate((element) => (element.scrollTop = element.scrollHeight));
    await settled(page);
    // The browser gives the wheel to the list until it counts the turn as a new one.
    await page.mouse.move(5, 5);
    for (let turn = 0; (await state())[0] === pageTop; turn++) {
      assert.ok(turn < 100, 'the page scrolls');
      await wheel(60);
      await settled(page);
    }
  },
);
