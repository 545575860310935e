// The event list: a million rows, filter, selection, retime, shift, delete.
import {
  assert,
  button,
  callsOf,
  eventRow,
  expectCall,
  focused,
  forgetCalls,
  importSource,
  keyDown,
  keyUp,
  moveBy,
  moveTo,
  pageTest,
  picture,
  press,
  profileBox,
  release,
  settled,
  test,
  textBox,
  tool,
  wheel,
} from './page_test.mjs';

const kThree = {
  events: [moveTo(0, 1, 2), keyDown(1.5, 65), keyUp(2.25, 65)],
};
// The arguments of all calls of an edit, without the revision that each begins with.
const editsOf = async (page, name) =>
  (await callsOf(page, name)).map((text) => {
    assert.match(text, /^\d+,/);
    return text.replace(/^\d+,/, '');
  });
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
  await expectCall(page, 'deleteMacroEvents');
  assert.deepEqual(await editsOf(page, 'deleteMacroEvents'), ['3']);
  await settled(page);
  assert.equal(
    await eventRow(page, 3)
      .innerText()
      .then((text) => text.replace(/\s+/g, ' ')),
    '4 0.004 Move to 4, 5',
  );
  assert.ok(await page.getByText('199,999 events').first().isVisible());
  assert.deepEqual(await callsOf(page, 'getMacroRows'), [
    ...['0,50000', '50000,50000', '100000,50000', '150000,50000'],
  ]);
});

pageTest('retimes the selected event in seconds, to the microsecond', kThree, async (page) => {
  const time = textBox(page, 'Event time');
  assert.ok(await time.isDisabled());
  await eventRow(page, 1).click();
  assert.equal(await time.inputValue(), '1.5');
  await time.fill('0.1234567');
  await time.press('Enter');
  await expectCall(page, 'retimeMacroEvents');
  assert.deepEqual(await editsOf(page, 'retimeMacroEvents'), ['1,0.123457']);
  await settled(page);
  assert.equal((await eventRow(page, 1).innerText()).replace(/\s+/g, ' '), '2 0.123 Key A down');
  assert.equal((await callsOf(page, 'getMacroRows')).length, 1);

  // A time typed for one event is never sent for another.
  await time.fill('7');
  await eventRow(page, 2).click();
  await settled(page);
  assert.deepEqual(await editsOf(page, 'retimeMacroEvents'), ['1,0.123457', '1,7.000000']);
  assert.equal(await time.inputValue(), '2.25');

  for (const bad of ['', 'abc', '-1', '1,5', '1000001', '1e3']) {
    await time.fill(bad);
    await time.press('Enter');
    assert.equal(await time.getAttribute('aria-invalid'), 'true', bad);
  }
  await settled(page);
  assert.equal((await callsOf(page, 'retimeMacroEvents')).length, 2);
});

pageTest('deletes by button and key, and keeps the position of the selection', kThree, async (page) => {
  await eventRow(page, 2).click();
  await button(page, 'Delete event').click();
  await settled(page);
  await list(page).press('Delete');
  await settled(page);
  assert.deepEqual(await editsOf(page, 'deleteMacroEvents'), ['2', '1']);
  assert.equal(await page.locator('#events').getByRole('option').count(), 1);
  assert.equal(await eventRow(page, 0).getAttribute('aria-selected'), 'true');
  await list(page).press('Delete');
  await settled(page);
  assert.ok(await page.getByText('Recorded events appear here').isVisible());
  assert.ok(await button(page, 'Delete event').isDisabled());
});

pageTest('shows the list of the program again after a rejected edit', kThree, async (page) => {
  await eventRow(page, 0).click();
  await page.host.setFailing({ deleteMacroEvents: 'busy' });
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
  await page.host.setEvents([wheel(0, -120)]);
  await page.host.setStatus({ state: 'Idle' });
  await page.getByText('Wheel 1 notch down').waitFor();
});

// Twelve events: moves with a key, a button event, the wheel and a tool between them.
const kMixed = {
  events: [
    moveTo(0, 0, 0),
    keyDown(1, 65),
    moveTo(2, 40, 0),
    press(3, 'left', 1, 1),
    release(4, 'left', 1, 1),
    moveTo(5, 80, 0),
    keyUp(6, 65),
    wheel(7, 120),
    moveTo(8, 0, 90),
    tool(9, 'autoclicker', true),
    tool(10, 'autoclicker', false),
    moveTo(11, 9, 9),
  ],
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
  await expectCall(page, 'deleteMacroEvents');
  assert.deepEqual(await editsOf(page, 'deleteMacroEvents'), ['6']);
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

pageTest('deletes several events in one edit, and removes their rows', kMixed, async (page) => {
  await eventRow(page, 1).click();
  await eventRow(page, 3).click({ modifiers: ['Control'] });
  await eventRow(page, 4).click({ modifiers: ['Control'] });
  await eventRow(page, 6).click({ modifiers: ['Control'] });
  await picture(page, 'events-several', { fullPage: true });
  await forgetCalls(page);
  await button(page, 'Delete 4 events').click();
  await page.getByText('Deleted 4 events.').first().waitFor();
  assert.deepEqual(await editsOf(page, 'deleteMacroEvents'), ['1,3-4,6']);
  assert.equal(await list(page).getByRole('option').count(), 8);
  assert.deepEqual(await selectedRows(page), ['2'], 'the event after the first deleted one');
  await settled(page);
  assert.deepEqual(await callsOf(page, 'getMacroRows'), [], 'the list is not fetched again');
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
  const sent = await editsOf(page, 'deleteMacroEvents');
  assert.deepEqual(sent, ['1'], 'not the hidden event that has its index now');
});

pageTest('deletes all events at once, and undoes it', kMixed, async (page) => {
  await eventRow(page, 0).click();
  await list(page).press('Control+a');
  await list(page).press('Delete');
  await page.getByText('Recorded events appear here').waitFor();
  assert.deepEqual(await editsOf(page, 'deleteMacroEvents'), ['0-11']);
  assert.equal(await page.getByRole('alertdialog').count(), 0, 'no question, because it can be undone');
  await button(page, 'Undo: Deleted 12 events.').click();
  await eventRow(page, 5).waitFor();
  assert.equal(await page.evaluate(() => host.events.length), 12);
});

pageTest('shifts the selected events in one edit', kMixed, async (page) => {
  await eventRow(page, 1).click();
  await eventRow(page, 3).click({ modifiers: ['Shift'] });
  const amount = textBox(page, 'Shift times by');
  await amount.fill('-2');
  await page.getByText('Enter -1 or more: no time can be below 0.').waitFor();
  assert.ok(await button(page, 'Shift').isDisabled());
  await amount.fill('-0.2500004');
  await amount.press('Enter');
  await button(page, 'Shift').click();
  await page.getByText('Shifted 3 events.').first().waitFor();
  assert.deepEqual(await editsOf(page, 'shiftMacroEvents'), ['-0.250000,1-3']);
  assert.deepEqual(await selectedRows(page), ['2', '3', '4'], 'they stay selected');
  assert.equal((await eventRow(page, 2).locator('.event__time').innerText()).trim(), '1.750');
  await settled(page);
  assert.equal((await callsOf(page, 'getMacroRows')).length, 1);
});

pageTest('runs either a shift or a delete until the command returns', kMixed, async (page) => {
  await eventRow(page, 1).click();
  await eventRow(page, 2).click({ modifiers: ['Shift'] });
  await textBox(page, 'Shift times by').fill('2');
  await textBox(page, 'Shift times by').press('Enter');
  await page.host.holdAnswers();
  for (let i = 0; i < 2; i++) await button(page, 'Shift').click();
  await list(page).press('Delete');
  await page.host.releaseAnswers();
  await page.getByText('Shifted 2 events.').first().waitFor();
  await settled(page);
  assert.deepEqual(await editsOf(page, 'shiftMacroEvents'), ['2.000000,1-2']);
  assert.deepEqual(await editsOf(page, 'deleteMacroEvents'), []);
});

pageTest('says why an edit is refused, and shows the macro of the program', kMixed, async (page) => {
  await eventRow(page, 1).click();
  await page.evaluate(() => {
    const { deleteMacroEvents } = host.commands;
    host.commands.deleteMacroEvents = (text) => {
      host.events.push({ time: 99, type: 'tool', tool: 'autoclicker', down: true });
      return deleteMacroEvents(text);
    };
  });
  await button(page, 'Delete event').click();
  await page
    .getByText('Varnelle could not delete the event. The macro has changed. Please try again.')
    .waitFor();
  await page.waitForFunction(() => document.querySelector('#events [role=option]').ariaSetSize === '13');
  assert.equal(await page.evaluate(() => host.events.length), 13);
});

pageTest('does not edit a macro that plays or is recorded', kMixed, async (page) => {
  await eventRow(page, 1).click();
  await page.host.setStatus({ state: 'Playing' });
  await page.getByText('Stop the playback to edit events.').waitFor();
  assert.ok(await textBox(page, 'Event time').isDisabled());
  assert.ok(await button(page, 'Delete event').isDisabled());
  await list(page).press('Delete');
  await settled(page);
  assert.deepEqual(await callsOf(page, 'deleteMacroEvents'), []);
});

pageTest('says that half of a press was deleted, and deletes the other half', kMixed, async (page) => {
  await eventRow(page, 3).click();
  await list(page).press('Delete');
  await page.getByText('Deleted 1 event, but not its release.').first().waitFor();
  await picture(page, 'events-half-deleted');
  await button(page, 'Delete it too: Deleted 1 event, but not its release.').click();
  await page.waitForFunction(() => host.events.length === 10);
  assert.deepEqual(await editsOf(page, 'deleteMacroEvents'), ['3', '3']);
  assert.ok(await page.evaluate(() => host.events.every((one) => one.type !== 'button')));

  // Both halves of a key, and one of a button.
  await list(page).press('Control+z');
  await page.waitForFunction(() => host.events.length === 11);
  await list(page).press('Control+z');
  await page.waitForFunction(() => host.events.length === 12);
  await eventRow(page, 1).click();
  await eventRow(page, 4).click({ modifiers: ['Control'] });
  await eventRow(page, 6).click({ modifiers: ['Control'] });
  await list(page).press('Delete');
  await page.getByText('Deleted 3 events, but not 1 press.').first().waitFor();
  await button(page, 'Delete it too: Deleted 3 events, but not 1 press.').waitFor();

  // The offer ends with the next change of the macro.
  await page.evaluate(() => void host.events.pop());
  await button(page, 'Delete it too: Deleted 3 events, but not 1 press.').waitFor({ state: 'detached' });
});

pageTest('undoes and redoes with the keys of the list and with the buttons', kMixed, async (page) => {
  const times = () => page.evaluate(() => host.events.map((one) => one.time).join());
  const before = await times();
  await eventRow(page, 0).click();
  await list(page).press('Delete');
  await page.getByText('Deleted 1 event.').first().waitFor();
  const after = await times();
  const steps = [
    ['Control+z', before],
    ['Control+Shift+z', after],
    ['Control+Z', before],
    ['Control+y', after],
  ];
  for (const [key, expected] of steps) {
    await list(page).press(key);
    await page.waitForFunction((wanted) => host.events.map((one) => one.time).join() === wanted, expected);
    await settled(page);
  }
  await button(page, 'Undo the last change').click();
  await page.getByText('Undone: Deleted 1 event.').first().waitFor();
  assert.equal(await times(), before);
  assert.ok(await button(page, 'Undo the last change').isDisabled());
  await button(page, 'Redo the last change').click();
  await page.getByText('Redone: Deleted 1 event.').first().waitFor();
  assert.equal(await times(), after);
  await settled(page);
  assert.equal(await list(page).getByRole('option').count(), 8, 'as many rows as fit');
  await picture(page, 'events-history', { fullPage: true });
});

pageTest('offers to undo a recording over a macro, also one that a hotkey started', kMixed, async (page) => {
  await eventRow(page, 0).waitFor();
  await page.evaluate(() => host.commands.startRecording());
  await settled(page);
  await page.host.set({ status: { state: 'Idle' }, events: [keyUp(0, 65)] });
  const undo = button(page, 'Undo: Replaced 12 events.');
  await undo.waitFor();
  await picture(page, 'replaced');
  await undo.click();
  await page.getByText('Undone: Replaced 12 events.').first().waitFor();
  await page.waitForFunction(() => host.events.length === 12);
  await eventRow(page, 5).waitFor();
  await button(page, 'Redo: Undone: Replaced 12 events.').click();
  await page.waitForFunction(() => host.events.length === 1);
});

pageTest('shows what can be undone also after a reload, and no notice of it', kMixed, async (page) => {
  await eventRow(page, 0).click();
  await list(page).press('Delete');
  await page.getByText('Deleted 1 event.').first().waitFor();
  assert.equal(await page.locator('#history-hint').innerText(), 'Deleted 1 event.');
  await button(page, 'Dismiss the notice').click();
  await page.evaluate(() => host.commands.startRecording());
  await settled(page);
  assert.equal(await button(page, 'Undo the last change').getAttribute('aria-disabled'), 'true');
});

const kTwoProfiles = { ...kMixed, profiles: { names: ['Default Tracking Profile', 'Farm'], current: 1 } };
pageTest('offers to undo the deletion and the clearing of a profile', kTwoProfiles, async (page) => {
  await eventRow(page, 0).waitFor();
  await button(page, 'Clear profile').click();
  await button(page, 'Clear now').click();
  await button(page, 'Undo: Cleared 12 events and all settings.').click();
  await eventRow(page, 5).waitFor();
  await button(page, 'Delete profile').click();
  await button(page, 'Delete now').click();
  await button(page, 'Undo: Deleted \u201cFarm\u201d with 12 events.').waitFor();
  await page.locator('#profile-hint').getByText('Deleted \u201cFarm\u201d with 12 events.').waitFor();
  await picture(page, 'profile-deleted', { fullPage: true });
  await button(page, 'Dismiss the notice').click();
  await button(page, 'Undo the deletion').click();
  await eventRow(page, 5).waitFor();
  assert.equal(await profileBox(page).innerText(), 'Farm');
});

pageTest(
  'adds the missing releases as one step',
  { events: [keyDown(0, 65), press(1, 'right', 5, 5), moveTo(2, 9, 9)] },
  async (page) => {
    const note = page.getByRole('status', { name: 'After playback' });
    await note.getByText('A and the right button stay pressed after playback.').waitFor();
    await picture(page, 'missing-releases', { fullPage: true });
    await button(page, 'Add releases').click();
    await note.getByText('No keys left pressed.').waitFor();
    assert.equal(await page.evaluate(() => host.events.length), 5);
    await button(page, 'Undo: Added 2 releases.').click();
    await note.getByText('A and the right button stay pressed after playback.').waitFor();
    assert.equal(await page.evaluate(() => host.events.length), 3);
  },
);

const kThousand = { events: Array.from({ length: 1000 }, (_, i) => moveTo(i / 10, i * 20, 0)) };

pageTest('follows the playback in the list until the user scrolls', kThousand, async (page) => {
  const marked = page.locator('#events .list__row--marked .event__number');
  const play = (playEvent) =>
    page.host.set({ status: { state: 'Playing' }, progress: { playEvent, playSeconds: playEvent / 10 } });
  await eventRow(page, 0).waitFor();
  await play(400);
  assert.equal((await marked.innerText()).trim(), '400');
  await picture(page, 'playing-list', { fullPage: true });
  await play(700);
  assert.equal((await marked.innerText()).trim(), '700');
  await eventRow(page, 699).hover();
  await page.mouse.wheel(0, -3000);
  const top = () => page.evaluate(() => document.getElementById('events').scrollTop);
  await page.waitForFunction(() => document.getElementById('events').scrollTop < 699 * 28 - 2900);
  const scrolled = await top();
  await play(900);
  assert.equal(await top(), scrolled);
  // The next playback is followed again.
  await page.host.set({ status: { state: 'Idle' }, progress: { playEvent: 0, playSeconds: 0 } });
  assert.equal(await page.locator('.list__row--marked').count(), 0);
  await play(100);
  assert.equal((await marked.innerText()).trim(), '100');
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

    // Appended events keep the selection, and only they are fetched.
    await eventRow(page, 455).click();
    await forgetCalls(page);
    await page.evaluate(() => void host.events.push({ time: 200, type: 'move', x: 1, y: 1 }));
    await settled(page);
    assert.deepEqual(await selectedRows(page), ['456']);
    assert.deepEqual(await callsOf(page, 'getMacroRows'), ['950,50000']);
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

const kNamed = {
  events: [
    moveTo(0, -100, 200),
    moveBy(0, 3, -4),
    press(0, 'left', 300, 200),
    release(0, 'right', 1, 2),
    press(0, 'middle', 1, 2),
    press(0, 'side', 1, 2),
    press(0, 'other', 1, 2),
    keyDown(0, 65),
    keyUp(0, 49),
    keyDown(0, 119),
    keyUp(0, 163),
    keyUp(0, 255),
    wheel(0, 240),
    wheel(0, -120),
    wheel(0, 30),
    tool(0, 'autoclicker', true),
    tool(0, 'keySpammer', false),
    { time: null, type: 'unknown' },
  ],
  viewport: { width: 420, height: 900 },
};
pageTest('names every kind of event', kNamed, async (page) => {
  await page.addStyleTag({ content: '#events { height: 700px }' });
  await eventRow(page, 17).waitFor();
  assert.deepEqual(await rowTexts(page), [
    ...['Move to -100, 200', 'Move by 3, -4'],
    ...['Left button down at 300, 200', 'Right button up at 1, 2', 'Middle button down at 1, 2'],
    ...['Side button down at 1, 2', 'Button at 1, 2'],
    ...['Key A down', 'Key 1 up', 'Key F8 down', 'Key Right Ctrl up', 'Key 255 up'],
    ...['Wheel 2 notches up', 'Wheel 1 notch down', 'Wheel 0.25 notches up'],
    ...['Autoclicker on', 'Key spammer off', 'Unknown event'],
  ]);
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
