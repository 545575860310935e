// The event list: a million rows, selection, retime, delete.
import assert from 'node:assert/strict';
import { after, before, test } from 'node:test';
import { button, callsOf, change, expectCall, importSource, Pages, picture, settled } from './browser.mjs';

let pages;
before(async () => (pages = await Pages.start()));
after(() => pages.stop());

const kThree = `host.events = [{ time: 0, desc: 'Abs Move to X:1 Y:2' }, { time: 1.5, desc: 'Keyboard VK: 65 (DOWN)' },
  { time: 2.25, desc: 'Keyboard VK: 65 (UP)' }];`;
const list = (page) => page.getByRole('listbox', { name: 'Events' });
const option = (page, row) => page.locator(`#events-${row}`);
const million = (count) => `
  const parts = [];
  for (let i = 0; i < ${count}; i++) parts.push('{"id":' + i + ',"time":' + (i / 1000).toFixed(6) + ',"desc":"Abs Move to X:' + i % 1920 + ' Y:5"}');
  host.eventsText = '[' + parts.join(',') + ']';
  host.events.length = ${count};`;

test('a million events: only the rows in sight are drawn, wherever the list stands', async () => {
  const page = await pages.open({ before: million(1_000_000) });
  await option(page, 0).waitFor();
  const nodes = () => page.evaluate(() => document.getElementById('events').querySelectorAll('*').length);
  const small = await nodes();
  assert.ok(small < 80, `${small} elements`);
  assert.ok(await page.getByText('1,000,000 events').first().isVisible());

  // Every place that the scroll bar can reach shows a full view of rows, in order, without a gap.
  for (const part of [0.1, 0.5, 0.777, 1]) {
    const texts = await page.evaluate(async (where) => {
      const view = document.getElementById('events');
      view.scrollTop = (view.scrollHeight - view.clientHeight) * where;
      await new Promise((done) => requestAnimationFrame(() => requestAnimationFrame(done)));
      const box = view.getBoundingClientRect();
      const shown = [...view.querySelectorAll('[role=option]')];
      return {
        numbers: shown.map((row) => Number(row.ariaPosInSet)),
        covered:
          shown[0].getBoundingClientRect().top <= box.top + 2 &&
          shown[shown.length - 1].getBoundingClientRect().bottom >= box.bottom - 2,
      };
    }, part);
    assert.ok(texts.covered, `rows fill the view at ${part}`);
    texts.numbers.forEach((number, i) => assert.equal(number, texts.numbers[0] + i));
    assert.ok(
      Math.abs(texts.numbers[0] - 1_000_000 * part) < 1_000_000 * 0.001 + 10,
      `row ${texts.numbers[0]} at ${part}`,
    );
    assert.ok((await nodes()) < 80);
  }
  await option(page, 999_999).waitFor();

  // Scrolling through all of it in a thousand frames draws and forgets rows without piling up.
  const frames = await page.evaluate(async () => {
    const view = document.getElementById('events');
    const times = [];
    for (let i = 0; i <= 300; i++) {
      const start = performance.now();
      view.scrollTop = ((view.scrollHeight - view.clientHeight) * i) / 300;
      await new Promise(requestAnimationFrame);
      times.push(performance.now() - start);
    }
    return times.sort((a, b) => a - b)[150];
  });
  console.log(`# median frame while scrolling a million rows: ${frames.toFixed(1)} ms`);
  assert.ok((await nodes()) < 80);
  await picture(page, 'million-events', { fullPage: true });
  assert.deepEqual(page.faults, []);
  await pages.close(page);
});

test('the keyboard reaches every row of a million', async () => {
  const page = await pages.open({ before: million(1_000_000) });
  await option(page, 0).waitFor();
  await list(page).focus();
  const active = () => list(page).getAttribute('aria-activedescendant');
  const steps = [
    ['End', 'events-999999'],
    ['ArrowUp', 'events-999998'],
    ['Home', 'events-0'],
    ['ArrowDown', 'events-1'],
    ['PageDown', 'events-8'],
    ['PageUp', 'events-1'],
  ];
  for (const [key, id] of steps) {
    await page.keyboard.press(key);
    await page.waitForFunction(
      (wanted) => document.getElementById('events').getAttribute('aria-activedescendant') === wanted,
      id,
    );
    const inSight = await page.evaluate((wanted) => {
      const row = document.getElementById(wanted).getBoundingClientRect();
      const view = document.getElementById('events').getBoundingClientRect();
      return row.top >= view.top - 1 && row.bottom <= view.bottom + 1;
    }, id);
    assert.ok(inSight, `${key}: ${await active()} in sight`);
  }
  await pages.close(page);
});

test('one edit of a large macro does not fetch it again', async () => {
  const page = await pages.open({ before: million(200_000) });
  await option(page, 0).waitFor();
  await option(page, 3).click();
  await page.keyboard.press('Delete');
  assert.deepEqual(await expectCall(page, 'deleteEvent'), ['3']);
  await settled(page);
  assert.equal(
    await option(page, 3)
      .innerText()
      .then((text) => text.replace(/\s+/g, ' ')),
    '4 0.004 Move to 4, 5',
  );
  assert.ok(await page.getByText('199,999 events').first().isVisible());
  assert.equal((await callsOf(page, 'getMacroEvents')).length, 1);
  await pages.close(page);
});

test('retime: the selected event, in seconds, to the microsecond', async () => {
  const page = await pages.open({ before: kThree });
  const time = page.getByRole('textbox', { name: 'Time of the event' });
  assert.ok(await time.isDisabled());
  await option(page, 1).click();
  assert.equal(await time.inputValue(), '1.5');
  await time.fill('0.1234567');
  await time.press('Enter');
  assert.deepEqual(await expectCall(page, 'updateEventTime'), ['1,0.123457']);
  await settled(page);
  assert.equal((await option(page, 1).innerText()).replace(/\s+/g, ' '), '2 0.123 Key A down');
  assert.equal((await callsOf(page, 'getMacroEvents')).length, 1);

  // What was typed for one event is never sent for another.
  await time.fill('7');
  await option(page, 2).click();
  await settled(page);
  assert.deepEqual(await callsOf(page, 'updateEventTime'), ['1,0.123457', '1,7.000000']);
  assert.equal(await time.inputValue(), '2.25');

  for (const bad of ['', 'abc', '-1', '1,5', '1000001', '1e3']) {
    await time.fill(bad);
    await time.press('Enter');
    assert.equal(await time.getAttribute('aria-invalid'), 'true', bad);
  }
  await settled(page);
  assert.equal((await callsOf(page, 'updateEventTime')).length, 2);
  await pages.close(page);
});

test('delete: by button and key, and the selection stays where it was', async () => {
  const page = await pages.open({ before: kThree });
  await option(page, 2).click();
  await button(page, 'Delete event').click();
  await settled(page);
  await list(page).press('Delete');
  await settled(page);
  assert.deepEqual(await callsOf(page, 'deleteEvent'), ['2', '1']);
  assert.equal(await page.locator('#events').getByRole('option').count(), 1);
  assert.equal(await option(page, 0).getAttribute('aria-selected'), 'true');
  await list(page).press('Delete');
  await settled(page);
  assert.ok(await page.getByText('What you record is listed here').isVisible());
  assert.ok(await button(page, 'Delete event').isDisabled());
  await pages.close(page);
});

test('a refused edit shows the list as the program holds it', async () => {
  const page = await pages.open({ before: kThree });
  await option(page, 0).click();
  await page.evaluate(() => (host.failing.deleteEvent = 'busy'));
  await button(page, 'Delete event').click();
  await page.getByText('Varnelle could not delete the event (busy).').waitFor();
  assert.equal(await page.locator('#events').getByRole('option').count(), 3);
  await pages.close(page);
});

test('the events of a recording are shown when it has ended', async () => {
  const page = await pages.open({ before: kThree });
  await change(page, "host.status.state = 'Recording'; host.events = []");
  assert.equal(await page.locator('#events').getByRole('option').count(), 0);
  assert.ok(await page.getByText('The events are shown when the recording ends.').isVisible());
  await change(page, "host.events = [{ time: 0, desc: 'Mouse Scroll Delta: -120' }]");
  await change(page, "host.status.state = 'Idle'");
  await page.getByText('Wheel down 120').waitFor();
  await pages.close(page);
});

test('words of the events', async () => {
  const { eventText } = await importSource('panels/event-text.ts');
  const words = {
    'Abs Move to X:-100 Y:200': 'Move to -100, 200',
    'Rel Move dX:3 dY:-4': 'Move by 3, -4',
    'Mouse Click at X:1 Y:2': 'Button at 1, 2',
    'Keyboard VK: 65 (DOWN)': 'Key A down',
    'Keyboard VK: 49 (UP)': 'Key 1 up',
    'Keyboard VK: 119 (DOWN)': 'Key F8 down',
    'Keyboard VK: 100 (DOWN)': 'Key Num 4 down',
    'Keyboard VK: 163 (UP)': 'Key Right Ctrl up',
    'Keyboard VK: 255 (UP)': 'Key 255 up',
    'Mouse Scroll Delta: 240': 'Wheel up 240',
    'Mouse Scroll Delta: -120': 'Wheel down 120',
    'Autoclicker ON': 'Clicker on',
    'Key Spammer OFF': 'Key presser off',
    '': 'Unknown event',
    'Something new': 'Something new',
  };
  for (const [given, expected] of Object.entries(words)) assert.equal(eventText(given), expected);
});

test('rows in sight, also where the list is taller than a browser can hold', async () => {
  const { kMaxRange, offsetAt, rowsInSight, scrolledHeight, scrollTopFor } = await importSource(
    'components/scroll-range.ts',
  );
  const short = { rows: 100, rowHeight: 28, viewHeight: 226 };
  assert.deepEqual(rowsInSight(0, short), { first: 0, end: 9 });
  assert.deepEqual(rowsInSight(28, short), { first: 1, end: 10 });
  assert.equal(offsetAt(1000, short), 1000, 'one pixel is one pixel while the list is short');
  assert.deepEqual(rowsInSight(100 * 28 - 226, short), { first: 91, end: 100 });
  assert.deepEqual(rowsInSight(0, { ...short, rows: 3 }), { first: 0, end: 3 });
  assert.deepEqual(rowsInSight(0, { ...short, rows: 0 }), { first: 0, end: 0 });

  for (const rows of [1_000_000, 20_000_000]) {
    const tall = { rows, rowHeight: 28, viewHeight: 226 };
    assert.equal(scrolledHeight(tall), kMaxRange);
    assert.deepEqual(rowsInSight(0, tall).first, 0);
    assert.equal(rowsInSight(kMaxRange - 226, tall).end, rows);
    for (const row of [0, 1, 12345, rows / 2, rows - 2, rows - 1]) {
      const seen = rowsInSight(scrollTopFor(row, kMaxRange / 3, tall), tall);
      assert.ok(seen.first <= row && row < seen.end, `row ${row} of ${rows}`);
    }
  }
});
