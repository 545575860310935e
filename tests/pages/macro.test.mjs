// The macro on the page: its picture, its facts, what Optimise would remove, and its timing.
import {
  assert,
  button,
  callsOf,
  describe,
  eventRow,
  expectCall,
  importSource,
  keyDown,
  keyUp,
  moveBy,
  moveTo,
  pageTest,
  picture,
  press,
  release,
  settled,
  test,
  tool,
  wheel,
} from './page_test.mjs';

const [data, reports, facts, path, strips] = await Promise.all(
  [
    'event-columns.ts',
    'reports.ts',
    'panels/macro-facts.ts',
    'panels/path-drawing.ts',
    'panels/strip-drawing.ts',
  ].map(importSource),
);

// Runs sliced work to its end; returns the result and the number of slices.
function finish(work) {
  for (let slices = 1; ; slices++) {
    const { done, value } = work.next();
    if (done) return { result: value, slices };
  }
}
const move = (x, y, time = 0) => moveTo(time, x, y);

// Returns the columns of the events that the builders of page_test.mjs make.
const kTypes = { move: 0, rawMove: 1, button: 2, key: 3, wheel: 4, tool: 5 };
const kFlags = { left: [4, 2], right: [16, 8], middle: [64, 32], side: [128, 128] };
const kTools = { autoclicker: 1, keySpammer: 2 };
function columnsOf(list) {
  const columns = data.makeColumns(0, list.length);
  list.forEach((one, i) => {
    const down = Number(one.down ?? false);
    const flags = one.button ? kFlags[one.button][down] : 0;
    const key = one.tool ? kTools[one.tool] : (one.virtualKey ?? 0);
    const row = [kTypes[one.type], one.time, one.x ?? 0, one.y ?? 0, flags, key, down, one.wheel ?? 0];
    reports.readRow(row, columns, i);
  });
  return columns;
}
const factsOf = (list) => finish(facts.factsOf(columnsOf(list))).result;

// Returns a generator of numbers that are the same in every run.
function randomFrom(seed) {
  let state = seed >>> 0;
  return (below) => {
    state = (Math.imul(state, 1664525) + 1013904223) >>> 0;
    return Math.floor((state / 0x100000000) * below);
  };
}

// Returns a small recording: the pointer moves around, clicks, scrolls, types, and leaves two keys held.
function makeTour() {
  const events = [];
  let t = 0;
  let x = 600;
  let y = 400;
  const put = (make, pause, ...args) => {
    events.push(make(Number(t.toFixed(6)), ...args));
    t += pause;
  };
  for (let k = 0; k < 9; k++) {
    const toX = 200 + ((k * 613) % 1500);
    const toY = 100 + ((k * 389) % 850);
    for (let i = 0; i < 40; i++) {
      const f = i / 39;
      const ease = f * f * (3 - 2 * f);
      const atX = Math.round(x + (toX - x) * ease);
      const atY = Math.round(y + (toY - y) * ease + 60 * Math.sin(f * 3.1));
      put(moveTo, 0.008, atX, atY);
    }
    x = toX;
    y = toY;
    put(press, 0.08, 'left', x, y);
    put(release, 0.1, 'left', x, y);
    if (k % 3 === 1) for (let i = 0; i < 5; i++) put(wheel, 0.06, -120);
    if (k % 3 !== 2) continue;
    for (const key of [72, 69, 89]) {
      put(keyDown, 0.1, key);
      put(keyUp, 0.07, key);
    }
  }
  put(tool, 0.3, 'autoclicker', true);
  put(tool, 0.2, 'autoclicker', false);
  put(keyDown, 0.2, 160);
  put(keyDown, 0.4, 87);
  put(moveTo, 0, 300, 300);
  return events;
}
const kTour = { events: makeTour() };
// Moves within a few pixels.
const closeMoves = (count) => Array.from({ length: count }, (_, i) => moveTo(i / 100, i % 5, 0));

describe('reading', () => {
  test('reads every kind of row, and no malformed one', () => {
    const nothing = { x: 0, y: 0, flags: 0, virtualKey: 0, down: 0, wheel: 0 };
    const rows = [
      [[0, 0.5, -100, 200, 0, 0, 0, 0], 0, { x: -100, y: 200 }],
      [[1, 0.5, 3, -4, 0, 0, 0, 0], 1, { x: 3, y: -4 }],
      [[2, 0.5, 1, -2147483648, 128, 0, 0, 0], 2, { x: 1, y: -2147483648, flags: 128 }],
      [[3, 0.5, 0, 0, 0, 65, 1, 0], 3, { virtualKey: 65, down: 1 }],
      [[4, 0.5, 0, 0, 0, 0, 0, -120], 4, { wheel: -120 }],
      [[5, 0.5, 0, 0, 0, 2, 1, 0], 5, { virtualKey: 2, down: 1 }],
      [[6, 0.5, 0, 0, 0, 0, 0, 0], 6, {}],
      [[-1, 0.5, 0, 0, 0, 0, 0, 0], 6, {}],
      [[255, 0.5], 6, {}],
    ];
    const columns = data.makeColumns(0, rows.length);
    rows.forEach(([row, type, fields], i) => {
      reports.readRow(row, columns, i);
      const read = Object.keys(nothing).map((name) => [name, columns[name][i]]);
      assert.deepEqual(Object.fromEntries(read), { ...nothing, ...fields }, String(row));
      assert.equal(columns.type[i], type, String(row));
      assert.equal(columns.time[i], 0.5);
    });
    for (const row of [null, 'x', [], [0, null, 1, 2, 0, 0, 0, 0]]) {
      reports.readRow(row, columns, 0);
      assert.equal(columns.time[0], 0, 'a time that is not a number');
    }
  });

  test('an edit on the page gives the same columns as a new read', () => {
    const random = randomFrom(7);
    for (let round = 0; round < 200; round++) {
      const list = Array.from({ length: 1 + random(40) }, (_, i) =>
        random(2) ? move(random(99), random(99), i) : keyUp(i, random(200)),
      );
      const removed = [];
      const left = list.filter((_, i) => random(4) > 0 || !removed.push(i));
      const derived = data.withoutEvents(columnsOf(list), Uint32Array.from(removed), 5);
      assert.deepEqual(derived, { ...columnsOf(left), revision: 5 });
      const indexes = Uint32Array.from(removed);
      const retimed = list.map((one, i) => (removed.includes(i) ? { ...one, time: one.time * 2 } : one));
      const changed = data.withTimes(columnsOf(list), indexes, (i) => list[i].time * 2, 5);
      assert.deepEqual(changed, { ...columnsOf(retimed), revision: 5 });
      const kept = random(list.length + 1);
      assert.deepEqual(data.resized(columnsOf(list), kept, kept), columnsOf(list.slice(0, kept)));
    }
  });

  test('finds the first event in which two lists differ', () => {
    const list = [move(1, 1), keyDown(1, 65), move(2, 2)];
    assert.equal(data.equalPrefix(columnsOf(list), columnsOf(list)), 3);
    assert.equal(data.equalPrefix(columnsOf(list), columnsOf([...list, move(3, 3)])), 3);
    assert.equal(data.equalPrefix(columnsOf(list), columnsOf([move(1, 1), keyUp(1, 65), move(2, 2)])), 1);
    assert.equal(data.equalPrefix(columnsOf(list), columnsOf([move(1, 1, 0.5)])), 0);
  });
});

// The rule of the guide, applied to records, with the 32-bit numbers of the platform.
function plainOptimised(list) {
  const kept = [];
  const isMove = (one) => one.type === 'move';
  const place = (one) => [BigInt(one.x), BigInt(one.y)];
  list.forEach((one, i) => {
    const last = kept.at(-1);
    if (i > 0 && i < list.length - 1 && isMove(one) && isMove(list[i + 1]) && isMove(last)) {
      const [[x, y], [lastX, lastY]] = [place(one), place(last)];
      const dx = BigInt.asIntN(32, x - lastX);
      const dy = BigInt.asIntN(32, y - lastY);
      if (BigInt.asIntN(32, dx * dx + dy * dy) < 101n) return;
    }
    kept.push(one);
  });
  return kept;
}

describe('the number of moves that Optimise would remove', () => {
  const cases = [
    ['within ten pixels', [move(0, 0), move(3, 4), move(6, 8), move(100, 100), press(0, 'left', 100, 100)], 2],
    ['ten pixels are near', [move(0, 0), move(10, 0), move(50, 0), move(90, 0)], 1],
    ['a little more is not', [move(0, 0), move(10, 1), move(50, 0), move(90, 0)], 0],
    ['beside another event', [press(0, 'left', 0, 0), move(1, 0), move(2, 0), move(3, 0), tool(0, 'autoclicker', true)], 1],
    ['nothing', [], 0],
    ['one', [move(1, 1)], 0],
    ['two', [move(1, 1), move(1, 1)], 0],
    ['three', [move(1, 1), move(1, 1), move(1, 1)], 1],
    ['raw moves', Array(4).fill(moveBy(0, 0, 0)), 0],
    ['the square wraps to nothing', [move(0, 0), move(65536, 0), move(1, 0)], 1],
    ['the square wraps below nothing', [move(0, 0), move(46341, 0), move(1, 0)], 1],
    ['the square stays', [move(0, 0), move(46340, 0), move(1, 0)], 0],
    ['the difference wraps', [move(-2147483648, 0), move(2147483647, 0), move(0, 0)], 1],
  ]; // prettier-ignore
  for (const [name, list, dropped] of cases) {
    test(name, () => {
      assert.equal(factsOf(list).droppedMoves, dropped);
      assert.equal(list.length - plainOptimised(list).length, dropped);
    });
  }

  test('equals the plain rule for random macros', () => {
    const random = randomFrom(20261121);
    const others = [press(0, 'left', 5, 5), keyDown(0, 65), moveBy(0, 1, 1), tool(0, 'autoclicker', true)];
    let dropped = 0;
    for (let round = 0; round < 3000; round++) {
      const span = [3, 12, 40, 70000, 4294967296][random(5)];
      const list = Array.from({ length: random(30) }, () =>
        random(6) ? move((random(span) - span / 2) | 0, random(12)) : others[random(4)],
      );
      const expected = list.length - plainOptimised(list).length;
      assert.equal(factsOf(list).droppedMoves, expected, JSON.stringify(list));
      dropped += expected;
    }
    assert.ok(dropped > 3000, `${dropped} drops in all`);
  });
});

describe('facts and drawing', () => {
  test('finds counts, length, box, held keys and running tools', () => {
    const read = factsOf([
      move(-5, 10, 0.5),
      keyDown(1, 65),
      keyDown(1.1, 65),
      keyDown(1.2, 66),
      keyUp(1.3, 66),
      keyUp(1.4, 67),
      press(9, 'left', 70, 80),
      wheel(3, 120),
      tool(3.5, 'keySpammer', true),
      tool(3.6, 'autoclicker', true),
      tool(3.7, 'autoclicker', false),
      moveBy(4, 100, -200),
    ]);
    assert.deepEqual(read.counts, [2, 1, 1, 5, 3]);
    assert.equal(read.length, 9, 'the latest time, at any index');
    assert.deepEqual(read.box, { left: -5, top: -120, right: 170, bottom: 80 });
    assert.equal(read.hasRawMoves, true);
    assert.deepEqual(read.heldKeys, [{ virtualKey: 65, index: 1 }], 'held from its first press');
    assert.deepEqual(read.heldButtons, [{ button: 'left', index: 6 }]);
    assert.deepEqual([...read.partners], [-1, -1, -1, 4, 3, -1, -1, -1, -1, -1, -1, -1]);
    assert.deepEqual(read.toolsOn, [2]);
    assert.equal(factsOf([tool(0, 'autoclicker', true)]).box, null);
  });

  test('draws the path at the positions, in proportion', () => {
    const size = { width: 200, height: 100, margin: 10 };
    const list = [move(0, 0), press(0, 'left', 100, 100), move(200, 0)];
    const { result } = finish(path.drawPath(columnsOf(list), factsOf(list).box, size));
    assert.deepEqual(result.frame, { left: 20, top: 10, right: 180, bottom: 90 });
    assert.deepEqual(result.ends, [
      { x: 20, y: 10 },
      { x: 180, y: 10 },
    ]);
    assert.deepEqual(result.clicks, [{ x: 100, y: 90 }]);
    for (let step = 0; step <= 80; step++) {
      assert.ok(result.cells[(10 + step) * 200 + 20 + step] > 0, 'down without a gap');
      assert.ok(result.cells[(90 - step) * 200 + 100 + step] > 0, 'and up');
    }
    assert.ok(result.cells[10 * 200 + 180] > result.cells[10 * 200 + 20], 'later differs from earlier');
    assert.equal(result.cells.filter((late) => late > 0).length, 161, 'and nothing else');
  });

  test('draws a single position, huge distances and unordered times', () => {
    const size = { width: 200, height: 100, margin: 10 };
    for (const list of [
      [move(5, 5)],
      [move(-2147483648, -2147483648), move(2147483647, 2147483647)],
      [move(0, 0, 5), move(9, 9, -3), keyDown(4, 65), keyUp(1, 65)],
    ]) {
      const read = factsOf(list);
      const { result } = finish(path.drawPath(columnsOf(list), read.box, size));
      assert.ok(result.cells.some((late) => late > 0));
      const strip = finish(strips.drawStrip(columnsOf(list), read, 50)).result;
      assert.equal(
        strip.marks.reduce((sum, lane) => sum + lane.reduce((a, b) => a + b, 0), 0),
        list.length,
      );
      assert.ok([...strip.heldKeys, ...strip.toolsOn].every((count) => count >= 0));
    }
  });

  test('the strip has every event in its column, and keys and tools while they are on', () => {
    const list = [
      move(1, 2, 0),
      keyDown(2, 65),
      keyDown(2.5, 65),
      keyUp(4, 65),
      tool(5, 'autoclicker', true),
      wheel(6, 120),
      tool(7, 'autoclicker', false),
      keyDown(8, 66),
      tool(9, 'keySpammer', true),
      move(3, 4, 10),
    ];
    const strip = finish(strips.drawStrip(columnsOf(list), factsOf(list), 10)).result;
    assert.deepEqual([...strip.marks[0]], [1, 0, 0, 0, 0, 0, 0, 0, 0, 1]);
    assert.deepEqual([...strip.marks[2]], [0, 0, 0, 0, 0, 0, 1, 0, 0, 0]);
    assert.deepEqual([...strip.marks[3]], [0, 0, 2, 0, 1, 0, 0, 0, 1, 0]);
    assert.deepEqual([...strip.heldKeys], [0, 0, 1, 1, 1, 0, 0, 0, 1, 1]);
    assert.deepEqual([...strip.marks[4]], [0, 0, 0, 0, 0, 1, 0, 1, 0, 1]);
    assert.deepEqual([...strip.toolsOn], [0, 0, 0, 0, 0, 1, 1, 1, 0, 1]);
    assert.deepEqual([...strip.first], [0, 1, 1, 3, 3, 4, 5, 6, 7, 8]);
    assert.deepEqual([strip.x[5], strip.y[9]], [1, 4]);
  });

  test('reads and draws a million events in bounded slices', () => {
    const random = randomFrom(3);
    const list = Array.from({ length: 1_000_000 }, (_, i) => move(random(1920), random(1080), i / 1000));
    const spent = {};
    const measure = (name, work) => {
      const started = process.cpuUsage();
      const { result, slices } = finish(work);
      const { user, system } = process.cpuUsage(started);
      spent[name] = Math.round((user + system) / 1000);
      assert.ok(slices >= 5, `${name}: ${slices} slices`);
      return result;
    };
    const columns = columnsOf(list);
    const read = measure('facts', facts.factsOf(columns));
    measure('filter', data.indexesOfGroups(columns, new Set(['moves'])));
    measure('path', path.drawPath(columns, read.box, { width: 740, height: 260, margin: 20 }));
    measure('strip', strips.drawStrip(columns, read, 320));
    console.log(`# ms of processor for a million far jumps: ${JSON.stringify(spent)}`);
  });
});

const strip = (page) => page.getByRole('slider', { name: 'Time in the macro' });
const drawn = (page, count) =>
  page.waitForFunction(
    (events) =>
      [...document.querySelectorAll('.pointer-path__canvas, .strip__canvas')].every(
        (canvas) => canvas.dataset.events === String(events),
      ),
    count,
  );
const inkOf = (page, selector) =>
  page.evaluate((where) => {
    const canvas = document.querySelector(where);
    if (canvas.width === 0) return 0;
    const { data: dots } = canvas.getContext('2d').getImageData(0, 0, canvas.width, canvas.height);
    let ink = 0;
    for (let i = 3; i < dots.length; i += 4) if (dots[i] > 0) ink += dots[i - 1] + dots[i - 2] * 3 + 1;
    return ink;
  }, selector);

describe('the panel', () => {
  pageTest('draws the picture, updates it with the macro, and describes it in words', kTour, async (page) => {
    const count = await page.evaluate(() => host.events.length);
    await drawn(page, count);
    const before = [await inkOf(page, '.pointer-path__canvas'), await inkOf(page, '.strip__canvas')];
    assert.ok(
      before.every((ink) => ink > 1000),
      before.join(' '),
    );
    assert.ok(
      await page.getByRole('img', { name: /^Pointer path: 361 moves and 18 button events in / }).isVisible(),
    );
    await page.locator('#panel-tracker').scrollIntoViewIfNeeded();
    await picture(page, 'macro-tour', { fullPage: true });

    await page.evaluate(() => void host.events.splice(100));
    await drawn(page, 100);
    const now = [await inkOf(page, '.pointer-path__canvas'), await inkOf(page, '.strip__canvas')];
    assert.notEqual(now[0], before[0]);
    assert.notEqual(now[1], before[1]);
  });

  pageTest('draws a macro once, not at every poll', kTour, async (page) => {
    await drawn(page, await page.evaluate(() => host.events.length));
    await page.evaluate(() => {
      window.paints = 0;
      const put = CanvasRenderingContext2D.prototype.putImageData;
      CanvasRenderingContext2D.prototype.putImageData = function (...args) {
        window.paints++;
        return put.apply(this, args);
      };
    });
    for (const autoclickerRunning of [true, false, true]) await page.host.setStatus({ autoclickerRunning });
    assert.equal(await page.evaluate(() => window.paints), 0);
  });

  pageTest(
    'the strip shows the time at the pointer or the keyboard, and selects its event',
    kTour,
    async (page) => {
      await drawn(page, await page.evaluate(() => host.events.length));
      await strip(page).evaluate((element) => element.scrollIntoView({ block: 'center' }));
      const box = await strip(page).boundingBox();
      await page.mouse.move(box.x + box.width / 2, box.y + 20);
      await page
        .locator('#picture-hint')
        .getByText(/^\d+\.\d{3} s: event \d+, /)
        .waitFor();
      await page.mouse.click(box.x + box.width * 0.8, box.y + 20);
      const chosen = page.locator('#events [aria-selected=true]');
      await chosen.waitFor();
      const length = await page.evaluate(() => Math.max(...host.events.map((one) => one.time)));
      const time = Number((await chosen.locator('.event__time').innerText()).trim());
      assert.ok(Math.abs(time - length * 0.8) < length * 0.05, `${time} of ${length}`);

      await strip(page).focus();
      await page.keyboard.press('Home');
      assert.match(await strip(page).getAttribute('aria-valuetext'), /^0\.000 s: event 1, Move to 600, 400$/);
      await page.keyboard.press('PageUp');
      const tenth = Number(await strip(page).getAttribute('aria-valuenow'));
      assert.ok(Math.abs(tenth - length / 10) < length * 0.02, `${tenth}`);
      await page.keyboard.press('End');
      assert.equal(Number(await strip(page).getAttribute('aria-valuenow')), Number(length.toFixed(3)));
      await page.keyboard.press('Enter');
      await page.waitForFunction(
        () =>
          document.querySelector('#events [aria-selected=true]')?.ariaPosInSet === String(host.events.length),
      );
      await picture(page, 'macro-strip', { fullPage: true });
    },
  );

  pageTest('names the keys that stay held and selects them in the list', kTour, async (page) => {
    const note = page.getByRole('status', { name: 'After playback' });
    await note.getByText('Left Shift and W stay pressed after playback.').waitFor();
    await button(page, 'Buttons 18').click();
    await button(page, 'Keys 20').click();
    await button(page, 'Select the presses in the list').click();
    await page.waitForFunction(() => document.querySelectorAll('#events [aria-selected=true]').length === 2);
    const texts = await page.locator('#events [aria-selected=true] .event__text').allInnerTexts();
    assert.deepEqual(texts, ['Key Left Shift down', 'Key W down']);

    await page.host.setEvents([keyDown(0, 65), keyUp(1, 65)]);
    await note.getByText('No keys left pressed.').waitFor();
    await page.host.setEvents([press(0, 'left', 1, 1)]);
    await note.getByText('The left button stays pressed after playback.').waitFor();
    await page.host.setEvents([
      tool(0, 'autoclicker', true),
      tool(0, 'keySpammer', true),
      tool(1, 'autoclicker', false),
    ]);
    await note.getByText('Stopped after playback: key spammer.').waitFor();
    await page.host.setEvents([65, 66, 67, 68, 69, 70].map((key) => keyDown(0, key)));
    await note.getByText('A, B, C and 3 more stay pressed after playback.').waitFor();
  });

  pageTest('warns of a wheel event with very many notches', {}, async (page) => {
    const note = page.getByRole('status', { name: 'After playback' });
    await page.host.setEvents([wheel(0, 2147483647)]);
    await note
      .getByText('One wheel event turns 17,895,697 notches. Playing it can take long.', { exact: true })
      .waitFor();
    await page.host.setEvents([wheel(0, -2147483648), keyDown(1, 65)]);
    await note.getByText(/^One wheel event turns 17,895,697 notches\. .* A stays pressed/).waitFor();
    await page.host.setEvents([wheel(0, 1199880)]);
    await note.getByText('No keys left pressed.').waitFor();
  });

  pageTest(
    'says how many moves Optimise would remove and has removed',
    {
      events: closeMoves(1204),
      before: () => {
        host.commands.optimizeMacro = () => host.setEvents([0, 7, 1203].map((index) => host.events[index]));
      },
    },
    async (page) => {
      await page.getByText('Removes 1,202 of 1,204 moves, within 10 px of the last one kept.').waitFor();
      await button(page, 'Optimise').click();
      assert.deepEqual(await expectCall(page, 'optimizeMacro'), ['']);
      await page.getByText('Removed 1,201 moves.').waitFor();
      await page.getByText('Removes 1 of 3 moves').waitFor();
      await picture(page, 'optimised', { fullPage: true });
      await page.host.setEvents([moveTo(0, 1, 1)]);
      await page.getByText('Nothing to optimise.').waitFor();
      await button(page, 'Optimise').click({ force: true });
      await settled(page);
      assert.equal((await callsOf(page, 'optimizeMacro')).length, 1);
    },
  );

  pageTest(
    'says how many moves it removed also when that uses up an undo',
    {
      events: closeMoves(50),
      status: { canUndoContinue: true },
      before: () => {
        host.commands.optimizeMacro = () => {
          host.setEvents([host.events[0], host.events[49]]);
          host.setStatus({ canUndoContinue: false });
        };
      },
    },
    async (page) => {
      await page.getByText('Removes 48 of 50 moves').waitFor();
      await page.host.setAnswerDelay(40);
      await button(page, 'Optimise').click();
      await page.getByText('Removed 48 moves.').waitFor();
    },
  );

  pageTest(
    'ignores a second Optimise until the command returns',
    {
      events: closeMoves(50),
      before: () => {
        host.commands.optimizeMacro = () => void host.events.splice(0, 20);
      },
    },
    async (page) => {
      await page.getByText('Removes 48 of 50 moves').waitFor();
      await page.host.holdAnswers();
      for (let i = 0; i < 3; i++) await button(page, 'Optimise').click({ force: true });
      await page.host.releaseAnswers();
      await page.getByText('Removed 20 moves.').waitFor();
      assert.equal((await callsOf(page, 'optimizeMacro')).length, 1);
    },
  );

  const kFast = { events: [tool(6.2, 'autoclicker', true)], settings: { macro: { playbackSpeed: 2 } } };
  pageTest('says how long one round takes, with and without the pause', kFast, async (page) => {
    await page.getByText('One round takes 3.1 s.').waitFor();
    await page.getByLabel('Loop').click();
    await page.getByText('One round takes 3.1 s, or 3.6 s with the pause (1,000 per hour).').waitFor();
  });

  pageTest(
    'says how long a long round takes',
    { events: [tool(3725, 'autoclicker', true)] },
    async (page) => {
      await page.getByText('One round takes 1 h 2 min.').waitFor();
      for (const [time, text] of [
        [59.999, '1 min'],
        [83.4, '1 min 23 s'],
        [7199.9, '2 h'],
      ]) {
        await page.host.setEvents([]);
        await page.host.setEvents([tool(time, 'autoclicker', true)]);
        await page.getByText(`One round takes ${text}.`).waitFor();
      }
    },
  );

  pageTest('offers to start a recording when there is none', {}, async (page) => {
    await button(page, 'Start a recording').click();
    assert.deepEqual(await expectCall(page, 'startRecording'), ['']);
    await page.getByText('Shown when the recording ends.').waitFor();
    await page.host.set({ status: { state: 'Idle' }, events: [keyUp(0, 65)] });
    await page.getByText('No pointer positions in this macro.').waitFor();
    await page.host.setEvents([moveBy(0, 30, -40), moveBy(1, 5, 5)]);
    await page.getByText('Sum of raw moves: X 30 to 35, Y -40 to -35').waitFor();
    await picture(page, 'raw-moves', { fullPage: true });
  });

  for (const [width, height] of [
    [360, 560],
    [420, 560],
    [1200, 800],
  ]) {
    pageTest(
      `cuts off no text at ${width} by ${height}`,
      { ...kTour, viewport: { width, height } },
      async (page) => {
        await drawn(page, await page.evaluate(() => host.events.length));
        await eventRow(page, 3).click();
        await eventRow(page, 6).click({ modifiers: ['Shift'] });
        const clipped = await page.evaluate(() =>
          [
            ...document.querySelectorAll(
              '#panel-tracker :is(button, p, .filter__chip span:not(.unseen), .strip span)',
            ),
          ]
            .filter((element) => element.scrollWidth > element.clientWidth + 1 && element.clientWidth > 0)
            .map((element) => element.innerText),
        );
        assert.deepEqual(clipped, [], 'no text is cut off');
        assert.ok((await page.evaluate(() => document.documentElement.scrollWidth)) <= width);
        await picture(page, `macro-${width}`, { fullPage: true });
      },
    );
  }

  pageTest('graph colours have a contrast of 3 to 1', {}, async (page) => {
    const ratios = await page.evaluate(() => {
      const probe = document.createElement('i');
      document.body.append(probe);
      const luminance = (name) => {
        probe.style.color = `var(${name})`;
        const [r, g, b] = getComputedStyle(probe)
          .color.match(/[\d.]+/g)
          .map((text) => Number(text) / 255)
          .map((part) => (part <= 0.04045 ? part / 12.92 : ((part + 0.055) / 1.055) ** 2.4));
        return 0.2126 * r + 0.7152 * g + 0.0722 * b;
      };
      const ratio = (a, b) => {
        const [high, low] = [luminance(a), luminance(b)].sort((x, y) => y - x);
        return (high + 0.05) / (low + 0.05);
      };
      const parts = ['early', 'late', 'moves', 'buttons', 'wheel', 'keys', 'tools'].map(
        (name) => `--graph-${name}`,
      );
      return [...parts, '--line-strong', '--focus'].flatMap((part) => [
        [part, ratio(part, '--bg-field')],
        ...(part.includes('graph')
          ? [[`${part} on a chip`, part.match(/early|late/) ? 9 : ratio(part, '--bg-chosen')]]
          : []),
      ]);
    });
    assert.deepEqual(
      ratios.filter(([, ratio]) => ratio < 3),
      [],
    );
  });
});
