// Recording real input and playing it back, as another application feels it.
import assert from 'node:assert/strict';
import { after, afterEach, before, test } from 'node:test';
import { isDeepStrictEqual } from 'node:util';
import { kMainTitle, onWindows, openWorld } from './harness.mjs';
import { waitUntil } from './processes.mjs';
import { Button, Key, pause } from './real_hand.mjs';

const limit = { timeout: 240000 };
const kPlaceTolerance = onWindows ? 1 : 0;
// How far apart two things may be that took the same path at different times. A busy machine may hold one of them back
// for longer, but not in each of some playbacks. Order is exact in all of them.
const kTimeTolerance = 0.25; // s
const kPlaybacks = 5;
const kVirtualKey = { A: 65, B: 66, F6: 117, F7: 118, F8: 119 };

let world;
let hand;
let program;
let observer;

before(async () => {
  world = await openWorld();
  hand = world.hand;
}, limit);
afterEach(() => world.closeOpened(), limit);
after(() => world?.close(), limit);

async function begin() {
  program = await world.startProgram();
  observer = await world.openApplication();
}

const state = (name) => program.waitForStatus((s) => s.state === name, `the state is ${name}`);

async function record(work, { continued = false } = {}) {
  if (continued) await program.press('Continue');
  else await hand.tap(Key.F8);
  await state('Recording');
  await work();
  await hand.tap(Key.F8);
  await state('Idle');
  await observer.settle();
}

// Plays until `isOver` sees in what is felt that all was played. A short playback may pass between two polls.
async function play(isOver) {
  await hand.tap(Key.F7);
  await waitUntil(isOver, 'all is played');
  await waitUntil(
    async () => (await program.call('getTrackerStatus')).state === 'Idle',
    'the playback ends by itself',
  );
  await observer.settle();
}

const events = () => program.call('getMacroEvents');
const ofKind = (list, start) => list.filter((event) => event.desc.startsWith(start));
const keysOf = (list) => ofKind(list, 'Keyboard').map((event) => event.desc.replace('Keyboard VK: ', ''));

// The event lines of the current profile in the session file, as numbers.
function savedEvents(session) {
  return session
    .split('\n')
    .filter((line) => /^\d+,[^,]*(,-?\d+){6}$/.test(line))
    .map((line) => line.split(',').map(Number));
}

test('what is recorded is in the list and in the file, and plays back in order and time', limit, async () => {
  await begin();
  const center = observer.center();
  await record(async () => {
    await hand.tap(Key.A);
    await pause(150);
    await hand.moveTo(center.x + 50, center.y);
    // A move that is not read yet becomes one with the next.
    await program.waitForStatus((s) => s.count === 3, 'the first move is recorded');
    await pause(100);
    await hand.moveTo(center.x + 50, center.y + 60);
    await pause(120);
    await hand.click(Button.Left);
    await pause(200);
    await hand.click(Button.Right);
    await pause(150);
    await hand.click(Button.WheelUp, 0);
    await pause(80);
    await hand.click(Button.WheelDown, 0);
    await pause(100);
    await hand.tap(Key.B);
    await pause(100);
  });
  const felt = observer.events.filter((event) => event.type !== 'move');
  observer.clear();

  const list = await events();
  assert.deepEqual(keysOf(list), ['65 (DOWN)', '65 (UP)', '66 (DOWN)', '66 (UP)']);
  assert.equal(list[0].time, 0, 'the silence before the first event is cut');
  assert.deepEqual(
    ofKind(list, 'Mouse Click').map((event) => event.desc),
    Array(4).fill(`Mouse Click at X:${center.x + 50} Y:${center.y + 60}`),
  );
  assert.deepEqual(
    ofKind(list, 'Mouse Scroll').map((event) => event.desc),
    ['Mouse Scroll Delta: 120', 'Mouse Scroll Delta: -120'],
  );
  assert.deepEqual(
    ofKind(list, 'Abs Move').map((event) => event.desc),
    [`Abs Move to X:${center.x + 50} Y:${center.y}`, `Abs Move to X:${center.x + 50} Y:${center.y + 60}`],
  );
  // Longer than the pauses that were made, and in order.
  list.reduce((previous, event) => {
    assert.ok(event.time >= previous.time, `${event.desc} comes after ${previous.desc}`);
    return event;
  });
  assert.ok(list.at(-1).time >= 0.15 + 0.1 + 0.12 + 0.2 + 0.15 + 0.08 + 0.1);
  await waitUntil(async () => (await program.eventRows().count()) > 0, 'the page lists the events');
  assert.match(await program.eventRows().first().innerText(), /0\.000\s+Key A down/);

  // The session is saved every five seconds.
  const saved = await waitUntil(() => {
    const lines = program.dataFiles().includes('session.dat')
      ? savedEvents(program.readData('session.dat'))
      : [];
    return lines.length === list.length && lines;
  }, 'the session file has the events');
  saved.forEach((line, index) => assert.ok(Math.abs(line[1] - list[index].time) < 1e-3));
  assert.deepEqual(
    saved.filter((line) => line[0] === 3).map((line) => [line[5], line[6]]),
    [
      [kVirtualKey.A, 1],
      [kVirtualKey.A, 0],
      [kVirtualKey.B, 1],
      [kVirtualKey.B, 0],
    ],
  );
  assert.deepEqual(
    saved.filter((line) => line[0] === 2).map((line) => line[4]),
    [2, 4, 8, 16],
  );

  const fixed = list.filter((event) => !event.desc.startsWith('Abs Move'));
  const shape = (event) => [event.type, event.code ?? event.button, event.down].join(' ');
  const replayed = () => observer.events.filter((event) => event.type !== 'move');
  // Those that were not at their recorded distance from the first key.
  const untimely = () =>
    replayed()
      .map((event) => ({ what: shape(event), played: (event.t - replayed()[0].t) / 1e6 }))
      .filter(({ played }, index) => Math.abs(played - fixed[index].time) >= kTimeTolerance);
  for (let playback = 1; playback === 1 || untimely().length > 0; ++playback) {
    assert.ok(playback <= kPlaybacks, JSON.stringify(untimely()));
    observer.clear();
    await play(() => replayed().length >= felt.length);
    assert.deepEqual(replayed().map(shape), felt.map(shape));
    for (const press of observer.presses()) {
      assert.ok(Math.abs(press.x - (center.x + 50)) <= kPlaceTolerance);
      assert.ok(Math.abs(press.y - (center.y + 60)) <= kPlaceTolerance);
    }
    assert.deepEqual(
      replayed().filter((event) => [Key.F7, Key.F8].includes(event.code)),
      [],
      'the hotkeys are not in it',
    );
  }
});

test('clicks on the own window are not recorded, the wheel there is', limit, async () => {
  await begin();
  const own = await observer.windowAtRest(kMainTitle);
  // A key press in between tells, by being counted, that everything before it has been looked at.
  const mark = async () => {
    const { count } = await program.call('getTrackerStatus');
    await hand.tap(Key.K, 0);
    await waitUntil(
      async () => (await program.call('getTrackerStatus')).count >= count + 2,
      'the key is recorded',
    );
  };
  const step = async (action) => {
    await action;
    await mark();
  };
  const press = async (button) => {
    await step(hand.buttonDown(button));
    await step(hand.buttonUp(button));
  };
  await record(async () => {
    await step(hand.moveTo(own.x + 100, own.y + 100));
    await press(Button.Left);
    await step(hand.click(Button.WheelUp, 0));
    // The release of a press on the own window goes with its press, wherever it happens.
    await step(hand.buttonDown(Button.Left));
    await step(observer.pointAt());
    await step(hand.buttonUp(Button.Left));
    await press(Button.Left);
    // And the other way round.
    await step(hand.buttonDown(Button.Right));
    await step(hand.moveTo(own.x + 100, own.y + 100));
    await step(hand.buttonUp(Button.Right));
  });
  const list = await events();
  const { x, y } = observer.center();
  assert.deepEqual(
    ofKind(list, 'Mouse Click').map((event) => event.desc),
    [
      `Mouse Click at X:${x} Y:${y}`,
      `Mouse Click at X:${x} Y:${y}`,
      `Mouse Click at X:${x} Y:${y}`,
      `Mouse Click at X:${own.x + 100} Y:${own.y + 100}`,
    ],
  );
  assert.equal(ofKind(list, 'Mouse Scroll').length, 1);
});

test('a playback is stopped in the middle by F7', limit, async () => {
  await begin();
  await record(async () => {
    for (let i = 0; i < 4; ++i) {
      await hand.tap(Key.A);
      await pause(500);
    }
    await hand.tap(Key.B);
  });
  // So late that no machine comes to it before the stop.
  const times = (await events()).map(({ time }) => time);
  assert.equal(times.length, 10);
  for (const index of [9, 8]) await program.call('updateEventTime', `${index},${times[index] + 200}`);
  observer.clear();
  await hand.tap(Key.F7);
  await waitUntil(() => observer.keys().length >= 2, 'it plays');
  await program.waitForStateText(/Playing[\s\S]*F7[\s\S]*stops/);
  await hand.tap(Key.F7);
  await state('Idle');
  await observer.settle();
  const count = observer.keys().length;
  assert.ok(count < 10, `${count} of 10 key events`);
  assert.ok(!observer.keys().some((key) => key.code === Key.B));
  await observer.settle();
  assert.equal(observer.keys().length, count, 'nothing more comes');
});

test('own clicks are not recorded, the tool is, and playback drives it', limit, async () => {
  await begin();
  await program.enter('Click interval: milliseconds', 25, program.panel('Autoclicker'));
  await program.waitForSettings((s) => s.sms === 25, 'the interval');
  await record(async () => {
    await hand.tap(Key.A);
    await pause(100);
    await hand.tap(Key.F6);
    await waitUntil(() => observer.presses().length >= 10, 'it clicks');
    await hand.tap(Key.F6);
    await program.waitForStatus((s) => !s.autoClicking, 'it stops');
    await pause(1000); // so that the last click of the playback comes before the key
    await hand.tap(Key.B);
  });
  const list = await events();
  assert.deepEqual(
    list.map((event) => event.desc.replace(/^Keyboard VK: /, '')),
    ['65 (DOWN)', '65 (UP)', 'Autoclicker ON', 'Autoclicker OFF', '66 (DOWN)', '66 (UP)'],
  );
  observer.clear();
  await play(() => observer.keys().length >= 4);
  const shape = observer.events
    .filter((event) => event.type === 'key' || (event.type === 'button' && event.down))
    .map((event) => (event.type === 'key' ? `${event.code} ${event.down}` : 'click'));
  assert.deepEqual(
    shape.filter((text, index) => text !== 'click' || shape[index - 1] !== 'click'),
    [`${Key.A} true`, `${Key.A} false`, 'click', `${Key.B} true`, `${Key.B} false`],
  );
  assert.ok(shape.filter((text) => text === 'click').length >= 3);
});

test('a continued recording joins a tenth of a second later, and undo takes it back', limit, async () => {
  await begin();
  await record(async () => {
    await hand.tap(Key.A);
  });
  const before = await events();
  await record(
    async () => {
      await pause(300);
      await hand.tap(Key.B);
    },
    { continued: true },
  );
  const joined = await events();
  assert.deepEqual(joined.slice(0, 2), before);
  assert.deepEqual(keysOf(joined), ['65 (DOWN)', '65 (UP)', '66 (DOWN)', '66 (UP)']);
  assert.ok(Math.abs(joined[2].time - (before[1].time + 0.1)) < 2e-6, `${joined[2].time}`);

  await program.waitForStatus((s) => s.canUndoContinue, 'it can be undone');
  await program.press('Undo');
  await program.waitForStatus((s) => s.count === 2 && !s.canUndoContinue, 'it was undone');
  assert.deepEqual(await events(), before);
});

test('a continued recording keeps two clicks of one button apart', limit, async () => {
  await begin();
  await record(() => hand.click(Button.Left));
  const before = await events();
  await record(() => hand.click(Button.Left), { continued: true });
  const left = await events();
  const gap = left[2].time - before[0].time;
  // The system's double-click time and 50 ms; 500 ms is what both homes have without a setting. A busy machine may have
  // held the button for so long that the gap of every continuation asks for more.
  const asked = Math.max(0.55, before[1].time - before[0].time + 0.1);
  assert.ok(Math.abs(gap - asked) < 2e-6, `${gap}, not ${asked}`);

  await program.press('Undo');
  await program.waitForStatus((s) => s.count === 2, 'it was undone');
  await record(() => hand.click(Button.Right), { continued: true });
  const right = await events();
  assert.ok(Math.abs(right[2].time - (before[1].time + 0.1)) < 2e-6, 'another button needs no gap');
});

test('an edit ends the undo', limit, async () => {
  await begin();
  await record(() => hand.tap(Key.A));
  await record(() => hand.tap(Key.B), { continued: true });
  await program.waitForStatus((s) => s.canUndoContinue && s.count === 4, 'it can be undone');
  await program.eventRows().nth(3).click();
  await program.press('Delete event');
  await program.waitForStatus((s) => s.count === 3 && !s.canUndoContinue, 'it can not be undone any more');
  await waitUntil(() => program.button('Undo').isDisabled(), 'the page says so');
});

test('raw movement is recorded in device counts and played as such', limit, async () => {
  await begin();
  await program.toggle('Raw moves', true);
  await program.waitForSettings((s) => s.trel === true, 'raw moves');
  await observer.pointAt(-100, -100);
  await observer.settle();
  const start = await hand.position();
  await record(async () => {
    const steps = [
      [7, 0],
      [0, 9],
      [5, 5],
      [-3, 2],
    ];
    for (const [index, [dx, dy]] of steps.entries()) {
      await hand.moveBy(dx, dy);
      // A move that is not read yet becomes one with the next.
      await program.waitForStatus((s) => s.count > index, 'the move is recorded');
    }
  });
  const list = await events();
  const counts = ofKind(list, 'Rel Move').map((event) =>
    /dX:(-?\d+) dY:(-?\d+)/.exec(event.desc).slice(1).map(Number),
  );
  assert.equal(ofKind(list, 'Abs Move').length, 0);
  const sum = counts.reduce(([x, y], [dx, dy]) => [x + dx, y + dy], [0, 0]);
  assert.ok(counts.length >= 4 && counts.every(([dx, dy]) => dx !== 0 || dy !== 0));
  const end = await hand.position();
  assert.deepEqual(sum, [end.x - start.x, end.y - start.y]);

  await observer.pointAt(-50, -50);
  await observer.settle();
  observer.clear();
  const { x, y } = observer.center();
  const moved = () => {
    const last = observer.events.findLast((event) => event.type === 'move');
    return last && [last.x - (x - 50), last.y - (y - 50)];
  };
  await play(() => isDeepStrictEqual(moved(), sum));
  assert.deepEqual(moved(), sum);
});

test('looping plays round after round until it is stopped', limit, async () => {
  await begin();
  // A wheel step has no end that a stop could come before: a key would stay down, and repeat.
  await record(() => hand.click(Button.WheelUp, 0));
  await program.toggle('Loop', true);
  await program.enter('Pause between rounds', 50);
  await program.waitForSettings((s) => s.tloop === true && s.tloopMs === 50, 'the loop');
  observer.clear();
  await program.press('Play');
  const steps = () => observer.events.filter((event) => event.type === 'wheel').length;
  await waitUntil(() => steps() >= 3, 'three rounds');
  await program.press('Stop', program.page.getByRole('group', { name: 'Recording and playback' }));
  await state('Idle');
  await observer.settle();
  const count = steps();
  await observer.settle();
  assert.equal(steps(), count);
});
