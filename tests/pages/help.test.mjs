// The help: the guide and the sheet of keys without a network, its search, and the dialog by keyboard.
import { readFileSync } from 'node:fs';
import { join } from 'node:path';
import {
  assert,
  button,
  describe,
  focused,
  mainWindowCommands,
  pageTest,
  picture,
  root,
  settled,
  test,
} from './page_test.mjs';
import { axeFinds, contrastOf } from './page_checks.mjs';
import { readGuide } from '../../ui/guide.mjs';

const guidePath = join(root, 'docs/guide.md');
const guideText = readFileSync(guidePath, 'utf8');
const guideTitles = [...guideText.matchAll(/^## (.*)$/gm)].map(([, title]) => title);
// The sheet of keys takes the place of this section.
const kShownTitles = ['Keys', ...guideTitles.filter((title) => title !== 'Keyboard control')];

const dialog = (page) => page.getByRole('dialog', { name: 'Help' });
const search = (page) => page.getByRole('searchbox', { name: 'Search the help' });
const titles = (page) => dialog(page).getByRole('heading', { level: 3 }).allInnerTexts();
const result = (page) => page.getByRole('status', { name: 'Search result' }).innerText();
const helpTest = (name, options, body) =>
  pageTest(name, options, async (page) => {
    await button(page, 'Help').click();
    await dialog(page).waitFor();
    await body(page);
  });

test('the guide becomes sections without pictures and links', () => {
  const sections = readGuide(guidePath);
  assert.deepEqual(
    sections.map(({ title }) => title),
    guideTitles,
  );
  const html = sections.map((section) => section.html).join('\n');
  assert.ok(!/<img|<a |\]\(/.test(html), html.match(/.*(<img|<a |\]\().*/)?.[0]);
  assert.match(html, /<td>F6<\/td>/);
  assert.match(html, /<strong>Start clicking<\/strong>/);
  assert.match(html, /<code>file-formats\.md<\/code>/);
});

helpTest('shows the keys and every section of the guide', {}, async (page) => {
  assert.deepEqual(await titles(page), kShownTitles);
  const sections = page.getByRole('navigation', { name: 'Sections' });
  assert.deepEqual(await sections.getByRole('button').allInnerTexts(), kShownTitles);
  assert.equal(await result(page), '');
  await picture(page, 'help');
});

helpTest(
  'the sheet shows the keys in use and those of the page',
  { hotkeys: { play: 'Num 5' } },
  async (page) => {
    const sheet = dialog(page).locator('[data-topic=Keys]');
    const text = (await sheet.innerText()).replace(/\s+/g, ' ');
    assert.match(text, /F6 starts and stops the autoclicker/);
    assert.match(text, /Num 5 starts and stops playback/);
    for (const where of [
      'everywhere',
      'number field',
      'grip of a panel',
      'event list',
      'strip of the macro',
    ]) {
      assert.ok(text.includes(where), where);
    }
  },
);

describe('the search', () => {
  helpTest('keeps the sections that have all words, and marks them', {}, async (page) => {
    await search(page).fill('Wayland');
    assert.deepEqual(await titles(page), ['Troubleshooting']);
    assert.equal(await result(page), '1 section');
    const marked = await dialog(page).locator('mark').allInnerTexts();
    assert.ok(marked.length >= 2 && marked.every((text) => /^wayland$/i.test(text)), marked.join());
    // The marks change no text.
    const text = await dialog(page).locator('[data-topic=Troubleshooting]').innerText();
    await search(page).fill('');
    assert.equal(await dialog(page).locator('mark').count(), 0);
    assert.equal(await dialog(page).locator('[data-topic=Troubleshooting]').innerText(), text);
    assert.deepEqual(await titles(page), kShownTitles);
    await search(page).fill('raw   GAME');
    assert.deepEqual(await titles(page), ['Recording and playing', 'Troubleshooting']);
    await picture(page, 'help-search');
  });

  helpTest('finds a key of the user', { hotkeys: { record: 'Pause' } }, async (page) => {
    await search(page).fill('pause recording');
    assert.ok((await titles(page)).includes('Keys'));
  });

  helpTest('says that nothing is found', {}, async (page) => {
    await search(page).fill('<b>zebra</b>');
    assert.deepEqual(await titles(page), []);
    assert.equal(await result(page), 'Nothing found.');
  });

  helpTest('Esc clears the search first, then closes the help', {}, async (page) => {
    await search(page).fill('macro');
    await page.keyboard.press('Escape');
    assert.equal(await search(page).inputValue(), '');
    assert.ok(await dialog(page).isVisible());
    await page.keyboard.press('Escape');
    await dialog(page).waitFor({ state: 'detached' });
    assert.equal(await focused(page), 'Help');
  });
});

helpTest('a section in the list scrolls to it and gets the focus', {}, async (page) => {
  await button(page, 'Troubleshooting').click();
  const top = () =>
    page.evaluate(() => {
      const text = document.querySelector('.help__text').getBoundingClientRect();
      const heading = document.querySelector('[data-topic=Troubleshooting] h3').getBoundingClientRect();
      return [heading.top - text.top, text.height];
    });
  const [offset, height] = await top();
  assert.ok(offset >= 0 && offset < height, `${offset} of ${height}`);
  assert.equal(await focused(page), 'Troubleshooting');
});

pageTest('F1 opens it with the focus in the search', {}, async (page) => {
  await page.keyboard.press('F1');
  await dialog(page).waitFor();
  assert.ok(await search(page).evaluate((field) => field === document.activeElement));
  await button(page, 'Close').click();
  await dialog(page).waitFor({ state: 'detached' });
});

pageTest('F1 opens nothing during a capture or over a dialog', {}, async (page) => {
  await page.host.setStatus({ capture: 'rec' });
  await page.keyboard.press('F1');
  assert.equal(await page.getByRole('dialog').count(), 0);
  await page.host.setStatus({ capture: '' });
  await button(page, 'Preferences').click();
  await page.getByRole('dialog', { name: 'Preferences' }).waitFor();
  await page.keyboard.press('F1');
  await settled(page);
  assert.equal(await page.getByRole('dialog').count(), 1);
});

pageTest('a panel window has it too', { absentCommands: mainWindowCommands }, async (page) => {
  await page.keyboard.press('F1');
  await dialog(page).waitFor();
  assert.deepEqual(await titles(page), kShownTitles);
});

for (const [width, height] of [
  [360, 560],
  [420, 560],
  [1000, 700],
]) {
  helpTest(
    `has no axe finding, enough contrast and nothing cut off at ${width}`,
    { viewport: { width, height } },
    async (page) => {
      await picture(page, `help-${width}`);
      assert.deepEqual(await axeFinds(page), []);
      const found = await page.evaluate(contrastOf);
      assert.deepEqual(
        found.filter(([, ratio, least]) => ratio < least),
        [],
      );
      const wide = await page.evaluate(() =>
        [...document.querySelectorAll('.help__text, .help__contents, .dialog__body')]
          .filter((element) => element.scrollWidth > element.clientWidth)
          .map((element) => element.className),
      );
      assert.deepEqual(wide, []);
    },
  );
}
