// The event list: a million rows, filter, selection, retime, shift, delete.
import {
  assert,
  button,
  callsOf,
  chooseProfile,
  event,
  eventRow,
  expectCall,
  focused,
  forgetCalls,
  importSource,
  namesOfCalls,
  pageTest,
  picture,
  settled,
  test,
  textBox,
} from './page_test.mjs';

const kThree = {
  events: [
    event(0, 'Abs Move to X:1 Y:2'),
    event(1.5, 'Keyboard VK: 65 (DOWN)'),
    event(2.25, 'Keyboard VK: 65 (UP)'),
  ],
};
const list = (page) => page.getByRole('listbox', { name: 'Events' });

pageTest(
  'draws only the visible rows of a million events, at every scroll position',
  { manyEvents: 1_000_000 },
  async (page) => {
    await eventRow(page, 0).waitFor();
    const nodes = () => page.evaluate(() => document.getElementById('events').querySelectorAll('*').length);
    const small = await nodes();
    assert.ok(small < 80, `${small} elements`);
    assert.ok(await page.getByText('1,000,000 events').first().isVisible());

    // Every scroll position shows a full view of rows, in order, without a gap.
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
    await eventRow(page, 999_999).waitFor();

    // Scrolling through the whole list leaves no rows behind.
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
  },
);

pageTest('the keyboard reaches every row of a million', { manyEvents: 1_000_000 }, async (page) => {
  await eventRow(page, 0).waitFor();
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
});

pageTest('does not fetch a large macro again after one edit', { manyEvents: 200_000 }, async (page) => {
  await eventRow(page, 0).waitFor();
  await eventRow(page, 3).click();
  await page.keyboard.press('Delete');
  assert.deepEqual(await expectCall(page, 'deleteEvent'), ['3']);
  await settled(page);
  assert.equal(
    await eventRow(page, 3)
      .innerText()
      .then((text) => text.replace(/\s+/g, ' ')),
    '4 0.004 Move to 4, 5',
  );
  assert.ok(await page.getByText('199,999 events').first().isVisible());
  assert.equal((await callsOf(page, 'getMacroEvents')).length, 1);
});

pageTest('retimes the selected event in seconds, to the microsecond', kThree, async (page) => {
  const time = textBox(page, 'Event time');
  assert.ok(await time.isDisabled());
  await eventRow(page, 1).click();
  assert.equal(await time.inputValue(), '1.5');
  await time.fill('0.1234567');
  await time.press('Enter');
  assert.deepEqual(await expectCall(page, 'updateEventTime'), ['1,0.123457']);
  await settled(page);
  assert.equal((await eventRow(page, 1).innerText()).replace(/\s+/g, ' '), '2 0.123 Key A down');
  assert.equal((await callsOf(page, 'getMacroEvents')).length, 1);

  // A time typed for one event is never sent for another.
  await time.fill('7');
  await eventRow(page, 2).click();
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
});

pageTest('deletes by button and key, and keeps the position of the selection', kThree, async (page) => {
  await eventRow(page, 2).click();
  await button(page, 'Delete event').click();
  await settled(page);
  await list(page).press('Delete');
  await settled(page);
  assert.deepEqual(await callsOf(page, 'deleteEvent'), ['2', '1']);
  assert.equal(await page.locator('#events').getByRole('option').count(), 1);
  assert.equal(await eventRow(page, 0).getAttribute('aria-selected'), 'true');
  await list(page).press('Delete');
  await settled(page);
  assert.ok(await page.getByText('Recorded events appear here').isVisible());
  assert.ok(await button(page, 'Delete event').isDisabled());
});

pageTest('shows the list of the program again after a rejected edit', kThree, async (page) => {
  await eventRow(page, 0).click();
  await page.host.setFailing({ deleteEvent: 'busy' });
  await button(page, 'Delete event').click();
  await page.getByText('Varnelle could not delete the event (busy).').waitFor();
  assert.equal(await page.locator('#events').getByRole('option').count(), 3);
});

pageTest('shows the events of a recording when it has ended', kThree, async (page) => {
  await page.host.set({ status: { state: 'Recording' }, events: [] });
  assert.equal(await page.locator('#events').getByRole('option').count(), 0);
  assert.ok(await page.getByText('Events appear when the recording ends.').isVisible());
  assert.deepEqual(
    await page.locator('.filter__count').allInnerTexts(),
    Array(5).fill('\u2013'),
    'the counts are unknown',
  );
  await page.host.setEvents([{ time: 0, desc: 'Mouse Scroll Delta: -120' }]);
  await page.host.setStatus({ state: 'Idle' });
  await page.getByText('Wheel down 120').waitFor();
});

// Twelve events: moves with a key, a button event, the wheel and a tool between them.
const kMixed = {
  events: [
    'Abs Move to X:0 Y:0',
    'Keyboard VK: 65 (DOWN)',
    'Abs Move to X:40 Y:0',
    'Mouse Click at X:1 Y:1',
    'Mouse Click at X:1 Y:1',
    'Abs Move to X:80 Y:0',
    'Keyboard VK: 65 (UP)',
    'Mouse Scroll Delta: 120',
    'Abs Move to X:0 Y:90',
    'Autoclicker ON',
    'Autoclicker OFF',
    'Abs Move to X:9 Y:9',
  ].map((desc, time) => ({ time, desc })),
};
const selectedRows = (page) => page.locator('#events [aria-selected=true] .event__number').allInnerTexts();
const rowTexts = async (page) =>
  (await page.locator('#events .event__text').allInnerTexts()).map((text) => text.trim());
const chip = (page, name) => page.getByRole('group', { name: 'Kinds of events shown' }).getByText(name);

pageTest('the filter shows the chosen kinds with their counts', kMixed, async (page) => {
  await button(page, 'Moves 5').waitFor();
  for (const name of ['Buttons 2', 'Wheel 1', 'Keys 2', 'Tools 2']) {
    assert.equal(await button(page, name).getAttribute('aria-pressed'), 'true', name);
  }
  await eventRow(page, 2).click();
  await chip(page, 'Moves').click();
  assert.equal(await button(page, 'Moves 5').getAttribute('aria-pressed'), 'false');
  assert.equal(await page.locator('#events').getByRole('option').count(), 7);
  assert.deepEqual(await selectedRows(page), [], 'a hidden event is not selected');
  assert.ok(await button(page, 'Delete event').isDisabled());
  for (const name of ['Buttons', 'Wheel', 'Tools']) await chip(page, name).click();
  assert.deepEqual(await rowTexts(page), ['Key A down', 'Key A up']);
  await picture(page, 'events-filtered', { fullPage: true });

  // A row counts the events shown; an edit names the index in the macro.
  await eventRow(page, 1).click();
  await list(page).press('Delete');
  assert.deepEqual(await expectCall(page, 'deleteEvent'), ['6']);
  await chip(page, 'Keys').click();
  await page.getByText('No events match the filter.').waitFor();
  await button(page, 'Show all').click();
  await eventRow(page, 7).waitFor();
  assert.equal(await eventRow(page, 7).getAttribute('aria-setsize'), '11');
});

pageTest(
  'selects a range with Shift, one more with Ctrl, all with Ctrl+A, none with Esc',
  kMixed,
  async (page) => {
    await eventRow(page, 2).click();
    await eventRow(page, 4).click({ modifiers: ['Shift'] });
    assert.deepEqual(await selectedRows(page), ['3', '4', '5']);
    await eventRow(page, 1).click({ modifiers: ['Shift'] });
    assert.deepEqual(await selectedRows(page), ['2', '3'], 'a range keeps its first end');
    await eventRow(page, 5).click({ modifiers: ['Control'] });
    await eventRow(page, 2).click({ modifiers: ['Control'] });
    assert.deepEqual(await selectedRows(page), ['2', '6']);
    assert.equal(await list(page).getAttribute('aria-multiselectable'), 'true');
    await page.getByText('2 of 12 events selected.').waitFor();

    await list(page).focus();
    const keys = [
      ['Home', ['1']],
      ['Shift+ArrowDown', ['1', '2']],
      ['Shift+ArrowDown', ['1', '2', '3']],
      ['Shift+ArrowUp', ['1', '2']],
      ['Control+ArrowDown', ['1', '2']],
      ['Control+ArrowDown', ['1', '2']],
      ['Control+Space', ['1', '2', '4']],
      ['ArrowDown', ['5']],
      ['Escape', []],
    ];
    for (const [key, rows] of keys) {
      await page.keyboard.press(key);
      assert.deepEqual(await selectedRows(page), rows, key);
    }
    await page.keyboard.press('Control+a');
    await button(page, 'Delete 12 events').waitFor();
    await chip(page, 'Moves').click();
    await button(page, 'Delete 7 events').waitFor();
    await list(page).focus();
    await page.keyboard.press('Escape');
    await page.keyboard.press('Control+A');
    await page.getByText('7 of 7 events selected.').waitFor();
    await page.keyboard.press('Home');
    await page.keyboard.press('Enter');
    assert.equal(await focused(page), 'Event time');
  },
);

pageTest('deletes several events from the last one on, and removes their rows', kMixed, async (page) => {
  await eventRow(page, 1).click();
  await eventRow(page, 3).click({ modifiers: ['Control'] });
  await eventRow(page, 4).click({ modifiers: ['Control'] });
  await eventRow(page, 6).click({ modifiers: ['Control'] });
  await picture(page, 'events-several', { fullPage: true });
  await forgetCalls(page);
  await button(page, 'Delete 4 events').click();
  await page.getByText('Deleted 4 events.').waitFor();
  const calls = await page.evaluate(() => host.calls);
  assert.deepEqual(
    calls,
    ['6', '4', '3', '1'].map((index) => ['deleteEvent', index]),
    'and no other call',
  );
  assert.equal(await list(page).getByRole('option').count(), 8);
  assert.deepEqual(await selectedRows(page), ['2'], 'the event after the first deleted one');
  await settled(page);
  assert.deepEqual(await callsOf(page, 'getMacroEvents'), [], 'the list is not fetched again');
  assert.deepEqual(await page.evaluate(() => host.events.map((one) => one.time)), [0, 2, 5, 7, 8, 9, 10, 11]);
});

pageTest('ignores a second Delete until the command returns', kMixed, async (page) => {
  await eventRow(page, 1).waitFor();
  for (const name of ['Moves', 'Buttons', 'Wheel', 'Tools']) await chip(page, name).click();
  await page.waitForFunction(() => document.querySelectorAll('#events [role=option]').length === 2);
  await eventRow(page, 0).click();
  await page.host.holdAnswers();
  for (let i = 0; i < 3; i++) await list(page).press('Delete');
  await page.host.releaseAnswers();
  await page.waitForFunction(() => document.querySelectorAll('#events [role=option]').length === 1);
  assert.deepEqual(await callsOf(page, 'deleteEvent'), ['1'], 'not the hidden event that has its index now');

  await button(page, 'Keys 1').click();
  await button(page, 'Show all').click();
  await eventRow(page, 2).click();
  await eventRow(page, 3).click({ modifiers: ['Shift'] });
  await forgetCalls(page);
  await page.host.holdAnswers();
  for (let i = 0; i < 3; i++) await list(page).press('Delete');
  await page.host.releaseAnswers();
  await page.getByText('Deleted 2 events.').waitFor();
  await settled(page);
  assert.deepEqual(await callsOf(page, 'deleteEvent'), ['3', '2']);
  assert.equal(await page.evaluate(() => host.events.length), 9);
});

pageTest('closes the question about events that no longer exist', kMixed, async (page) => {
  await eventRow(page, 0).click();
  await list(page).press('Control+a');
  await list(page).press('Delete');
  await page.getByRole('alertdialog').waitFor();
  await page.host.setEvents([{ time: 0, desc: 'Keyboard VK: 65 (UP)' }]);
  await page.getByRole('alertdialog').waitFor({ state: 'detached' });
  await eventRow(page, 0).click();
  await settled(page);
  assert.equal(await page.getByRole('alertdialog').count(), 0);
  assert.deepEqual(await callsOf(page, 'deleteEvent'), []);
});

pageTest('asks before it deletes many events, with the focus on Cancel', kMixed, async (page) => {
  await eventRow(page, 0).click();
  await list(page).press('Control+a');
  await list(page).press('Delete');
  const dialog = page.getByRole('alertdialog', { name: 'Delete 12 events?' });
  await dialog.waitFor();
  assert.equal(await focused(page), 'Cancel');
  await picture(page, 'events-delete-many');
  await page.keyboard.press('Enter');
  await dialog.waitFor({ state: 'detached' });
  assert.deepEqual(await callsOf(page, 'deleteEvent'), []);
  await list(page).press('Delete');
  await dialog.getByRole('button', { name: 'Delete 12 events' }).click();
  await page.getByText('Recorded events appear here').waitFor();
  assert.deepEqual(
    await callsOf(page, 'deleteEvent'),
    Array.from({ length: 12 }, (_, i) => String(11 - i)),
  );
});

pageTest('shifts the selected events, one call each', kMixed, async (page) => {
  await eventRow(page, 1).click();
  await eventRow(page, 3).click({ modifiers: ['Shift'] });
  const amount = textBox(page, 'Shift times by');
  await amount.fill('-2');
  await page.getByText('Enter -1 or more: no time can be below 0.').waitFor();
  assert.ok(await button(page, 'Shift').isDisabled());
  await amount.fill('-0.2500004');
  await amount.press('Enter');
  await button(page, 'Shift').click();
  await page.getByText('Shifted 3 events.').waitFor();
  assert.deepEqual(await callsOf(page, 'updateEventTime'), ['1,0.750000', '2,1.750000', '3,2.750000']);
  assert.deepEqual(await selectedRows(page), ['2', '3', '4'], 'they stay selected');
  assert.equal((await eventRow(page, 2).locator('.event__time').innerText()).trim(), '1.750');
  await settled(page);
  assert.equal((await callsOf(page, 'getMacroEvents')).length, 1);
});

pageTest('runs either a shift or a delete until the commands return', kMixed, async (page) => {
  await eventRow(page, 1).click();
  await eventRow(page, 2).click({ modifiers: ['Shift'] });
  await textBox(page, 'Shift times by').fill('2');
  await textBox(page, 'Shift times by').press('Enter');
  await page.host.holdAnswers();
  for (let i = 0; i < 2; i++) await button(page, 'Shift').click();
  await list(page).press('Delete');
  await page.host.releaseAnswers();
  await page.getByText('Shifted 2 events.').waitFor();
  await settled(page);
  assert.deepEqual(await callsOf(page, 'updateEventTime'), ['1,3.000000', '2,4.000000']);
  assert.deepEqual(await callsOf(page, 'deleteEvent'), []);

  await forgetCalls(page);
  await page.host.holdAnswers();
  await list(page).press('Delete');
  await button(page, 'Shift').click();
  await page.host.releaseAnswers();
  await page.getByText('Deleted 2 events.').waitFor();
  await settled(page);
  assert.deepEqual(await callsOf(page, 'deleteEvent'), ['2', '1']);
  assert.deepEqual(await callsOf(page, 'updateEventTime'), []);
});

const kThousand = {
  events: Array.from({ length: 1000 }, (_, i) => event(i / 10, `Abs Move to X:${i * 20} Y:0`)),
};
async function startDeletingAll(page, count) {
  await eventRow(page, 0).click();
  await list(page).press('Control+a');
  await button(page, `Delete ${count} events`).click();
  await page
    .getByRole('alertdialog')
    .getByRole('button', { name: /^Delete/ })
    .click();
}

// Holds the answers once `count` of the thousand events are deleted, so that a test meets a batch half done.
async function holdAfterDeleting(page, count) {
  await page.evaluate((left) => {
    const { deleteEvent } = host.commands;
    host.commands.deleteEvent = (text) => {
      deleteEvent(text);
      if (host.events.length === left) host.holdAnswers();
    };
  }, 1000 - count);
}
const held = (page) => page.waitForFunction(() => host.isHolding);

pageTest('a long batch shows its progress and can be cancelled', kThousand, async (page) => {
  await page.host.setAnswerDelay(5);
  await holdAfterDeleting(page, 400); // takes two seconds; the progress shows after one
  await startDeletingAll(page, '1,000');
  await page.getByRole('progressbar', { name: 'Deleting events' }).waitFor();
  await page.getByText(/^Deleting: \d+ of 1,000$/).waitFor();
  await held(page);
  await picture(page, 'events-progress', { fullPage: true });
  await button(page, 'Cancel').click();
  await page.host.releaseAnswers();
  await page.getByText(/^Cancelled\. Deleted \d+ of 1,000 events\.$/).waitFor();
  const sent = (await callsOf(page, 'deleteEvent')).length;
  assert.ok(sent > 0 && sent < 1000, `${sent} sent`);
  await settled(page);
  assert.equal((await callsOf(page, 'deleteEvent')).length, sent);
  assert.equal(
    await list(page).getByRole('option').first().getAttribute('aria-setsize'),
    String(1000 - sent),
  );
  assert.equal((await callsOf(page, 'getMacroEvents')).length, 1);
});

pageTest('stops a batch when the macro changes', kThousand, async (page) => {
  await page.host.setAnswerDelay(3);
  await holdAfterDeleting(page, 20);
  await startDeletingAll(page, '1,000');
  await held(page);
  await page.evaluate(() => {
    host.setState({ status: { state: 'Recording' }, events: [] });
  });
  await page.host.releaseAnswers();
  await page.getByText('Events appear when the recording ends.').waitFor();
  await page.getByText(/^The macro has changed\. Deleted \d+ of 1,000 events\.$/).waitFor();
  const sent = (await callsOf(page, 'deleteEvent')).length;
  await settled(page);
  assert.equal((await callsOf(page, 'deleteEvent')).length, sent);
});

pageTest(
  'stops a batch before it sends another command on the macro',
  {
    ...kThousand,
    profiles: { names: ['Default Tracking Profile', 'Farm'] },
  },
  async (page) => {
    await page.host.setAnswerDelay(3);
    await holdAfterDeleting(page, 5);
    await startDeletingAll(page, '1,000');
    await held(page);
    await chooseProfile(page, 'Farm');
    await page.host.releaseAnswers();
    await expectCall(page, 'switchProfile');
    await settled(page);
    const names = await namesOfCalls(page);
    assert.ok(
      names.lastIndexOf('deleteEvent') < names.indexOf('switchProfile'),
      'nothing is deleted after it',
    );
    assert.ok(names.filter((name) => name === 'deleteEvent').length < 1000);
  },
);

pageTest('does not send an edit of an outdated list', kMixed, async (page) => {
  await eventRow(page, 1).click();
  await eventRow(page, 2).click({ modifiers: ['Shift'] });
  await page.evaluate(() => {
    host.setSilent(['getMacroEvents']); // the page cannot get the new list
    host.events.push({ time: 99, desc: 'Autoclicker ON' });
  });
  await button(page, 'Delete 2 events').click();
  await page.getByText('The macro has changed. Deleted 0 of 2 events.').waitFor();
  assert.deepEqual(await callsOf(page, 'deleteEvent'), []);
});

pageTest('a rejected edit stops its batch and shows the list of the program', kMixed, async (page) => {
  await eventRow(page, 1).click();
  await eventRow(page, 3).click({ modifiers: ['Shift'] });
  await page.host.setFailing({ deleteEvent: 'busy' });
  await button(page, 'Delete 3 events').click();
  await page.getByText('Varnelle could not delete the events (busy).').waitFor();
  assert.deepEqual(await callsOf(page, 'deleteEvent'), ['3']);
  assert.equal(await list(page).getByRole('option').first().getAttribute('aria-setsize'), '12');
});

pageTest(
  'keeps the scroll position and the selection when the macro changes elsewhere',
  kThousand,
  async (page) => {
    await eventRow(page, 0).waitFor();
    const top = () =>
      page.evaluate(() => {
        const box = document.getElementById('events').getBoundingClientRect();
        const row = [...document.querySelectorAll('#events [role=option]')].find(
          (one) => one.getBoundingClientRect().bottom > box.top + 2,
        );
        return [
          row.querySelector('.event__time').innerText,
          Math.round(row.getBoundingClientRect().top - box.top),
        ];
      });
    await page.evaluate(() => (document.getElementById('events').scrollTop = 500 * 28 + 11));
    await eventRow(page, 500).waitFor();
    const before = await top();
    await page.evaluate(() => void host.events.splice(100, 50));
    await page.waitForFunction(() => document.querySelector('#events [role=option]').ariaSetSize === '950');
    assert.deepEqual(await top(), before);

    // A used undo makes the page read the list again. The list is the same, so the selection stays.
    await eventRow(page, 455).click();
    await page.host.setStatus({ canUndoContinue: true });
    assert.deepEqual(await selectedRows(page), ['456']);
  },
);

pageTest(
  'filters and selects a million events without drawing more rows',
  { manyEvents: 1_000_000 },
  async (page) => {
    await button(page, 'Moves 1,000,000').waitFor();
    const slices = await page.evaluate(async () => {
      const canvas = document.querySelector('.strip__canvas');
      while (canvas.dataset.events !== '1000000') await new Promise((done) => setTimeout(done, 50));
      return Number(canvas.dataset.slices);
    });
    assert.ok(slices >= 50, `drawn in ${slices} slices`);
    await eventRow(page, 0).click();
    await list(page).press('Control+a');
    await button(page, 'Delete 1,000,000 events').waitFor();
    await chip(page, 'Keys').click();
    await button(page, 'Delete 1,000,000 events').waitFor();
    const nodes = await page.evaluate(() => document.getElementById('events').querySelectorAll('*').length);
    assert.ok(nodes < 80, `${nodes} elements`);
    await picture(page, 'million-selected', { fullPage: true });
  },
);

test('names every kind of event', async () => {
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
    'Autoclicker ON': 'Autoclicker on',
    'Key Spammer OFF': 'Key spammer off',
    '': 'Unknown event',
    'Something new': 'Something new',
  };
  for (const [given, expected] of Object.entries(words)) assert.equal(eventText(given), expected);
});

test('finds the visible rows, also in a list taller than a browser allows', async () => {
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
