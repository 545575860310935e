// The status poll: how often, never two at once, and what it makes the page ask for.
import assert from 'node:assert/strict';
import { after, before, test } from 'node:test';
import {
  button,
  callsOf,
  change,
  forgetCalls,
  mainWindowCommands,
  Pages,
  settled,
  stopClock,
} from './browser.mjs';

let pages;
before(async () => (pages = await Pages.start()));
after(() => pages.stop());

// Median pause between polls in ms, over the next few.
const medianPause = (page, polls) =>
  page.evaluate(async (wanted) => {
    const times = [];
    const original = host.commands.getTrackerStatus;
    await new Promise((done) => {
      host.commands.getTrackerStatus = () => {
        times.push(performance.now());
        if (times.length > wanted) done();
        return original();
      };
    });
    host.commands.getTrackerStatus = original;
    const pauses = times.slice(1).map((time, i) => time - times[i]);
    return pauses.sort((a, b) => a - b)[Math.floor(pauses.length / 2)];
  }, polls);

const hide = (page, hidden) =>
  page.evaluate((value) => {
    Object.defineProperty(document, 'hidden', { value, configurable: true });
    document.dispatchEvent(new Event('visibilitychange'));
  }, hidden);

test('about eight polls a second, fewer when nobody can see the page, at once when it is seen again', async () => {
  const page = await pages.open({ viewport: { width: 420, height: 560 } });
  await stopClock(page);
  const polls = () => page.evaluate(() => host.polls);
  const pollsWithin = async (milliseconds) => {
    const before = await polls();
    await page.clock.runFor(milliseconds);
    return (await polls()) - before;
  };
  const seen = await pollsWithin(10_000);
  assert.ok(seen >= 75 && seen <= 85, `${seen} while it is seen`);
  await hide(page, true);
  await pollsWithin(1000);
  const hidden = await pollsWithin(10_000);
  assert.ok(hidden >= 9 && hidden <= 11, `${hidden} while it is hidden`);
  const before = await polls();
  await hide(page, false);
  assert.equal((await polls()) - before, 1, 'at once');
  const again = await pollsWithin(10_000);
  assert.ok(again >= 75 && again <= 85, `${again} when it is seen again`);
  await pages.close(page);
});

test('one poll in flight, also when the program is slow and buttons are pressed', async () => {
  const page = await pages.open({ before: 'host.delay = 200' });
  for (let i = 0; i < 4; i++) {
    await button(page, 'Start clicking').click();
    await button(page, 'Stop clicking').click();
  }
  await settled(page);
  assert.equal(await page.evaluate(() => host.mostInFlight), 1);
  // A program that needs 200 ms for a poll gets as long a pause after it.
  assert.ok((await medianPause(page, 4)) >= 350);
  await pages.close(page);
});

test('a program that stops answering is said to', async () => {
  const page = await pages.open();
  await page.evaluate(() => (host.silent.getTrackerStatus = true));
  await page.getByText('Waiting for Varnelle to answer').waitFor();
  const polls = await page.evaluate(() => host.polls);
  await page.evaluate(() => new Promise((done) => setTimeout(done, 500)));
  assert.equal(await page.evaluate(() => host.polls), polls, 'no further poll while one is out');
  await pages.close(page);
});

test('a refused poll is no alarm, and the next one mends it', async () => {
  const page = await pages.open();
  await page.evaluate(() => (host.failing.getTrackerStatus = 'broken'));
  await page.getByText('Waiting for Varnelle to answer').waitFor();
  assert.equal(await page.getByRole('alert').innerText(), '');
  await page.evaluate(() => delete host.failing.getTrackerStatus);
  await page.getByText('Idle', { exact: true }).waitFor();
  await pages.close(page);
});

test('the shorter report of a panel without a program is accepted', async () => {
  const page = await pages.open({ before: 'host.shortStatus = true' });
  await page.getByText('Idle', { exact: true }).waitFor();
  assert.ok(await page.getByText('The hotkey lock is off.').isVisible());
  assert.ok(await button(page, 'Undo').isDisabled());
  assert.deepEqual(page.faults, []);
  await pages.close(page);
});

test('a page in the own window of a panel works with the commands that it has', async () => {
  const page = await pages.open({ absent: mainWindowCommands });
  await settled(page);
  assert.equal(await page.locator('#panel-profile').count(), 0);
  for (const name of ['Pick location', 'Reset hotkeys', 'Preferences']) {
    assert.equal(await button(page, name).count(), 0, name);
  }
  await button(page, 'Start clicking').click();
  await button(page, 'Stop clicking').waitFor();
  assert.deepEqual(page.faults, []);
  await pages.close(page);
});

test('reports that are no reports do no harm', async () => {
  const page = await pages.open({
    before: `host.commands.getTrackerStatus = () => '{"state":7,"keySpamTargets":"x","count":null}';
      host.commands.getSettings = () => '[]'; host.commands.getProfiles = () => 'null';
      host.commands.getMacroEvents = () => '{}';`,
  });
  await settled(page);
  await page.getByText('Idle', { exact: true }).waitFor();
  assert.deepEqual(page.faults, []);
  await pages.close(page);
});

test('the events are asked for when the macro has changed, and not at each poll', async () => {
  const page = await pages.open({ before: "host.events = [{ time: 0, desc: 'Autoclicker ON' }]" });
  const rows = page.locator('#events').getByRole('option');
  await rows.first().waitFor();
  const asked = async () => (await callsOf(page, 'getMacroEvents')).length;
  assert.equal(await asked(), 1, 'at the start');

  await settled(page);
  await settled(page);
  assert.equal(await asked(), 1, 'not while nothing changes');

  await change(page, "host.status.state = 'Recording'; host.events = []");
  for (let i = 0; i < 3; i++)
    await change(page, "host.events.push({ time: host.events.length, desc: 'Abs Move to X:1 Y:1' })");
  assert.equal(await asked(), 1, 'not during a recording');
  await change(page, "host.status.state = 'Idle'");
  assert.equal(await rows.count(), 3);
  assert.equal(await asked(), 2, 'when it has ended');

  await change(page, "host.events.push({ time: 9, desc: 'Key Spammer ON' })");
  assert.equal(await rows.count(), 4);
  assert.equal(await asked(), 3, 'when the count differs');

  await change(page, 'host.status.canUndoContinue = true');
  await button(page, 'Undo').click();
  await settled(page);
  assert.equal(await asked(), 5, 'when an undo becomes possible, and when it is used');

  await button(page, 'Optimise').click();
  await settled(page);
  assert.equal(await asked(), 6);

  // Exactly as many events, yet another macro: a recording tells by its end.
  await change(page, "host.status.state = 'Recording'");
  await change(page, "host.status.state = 'Idle'; host.events[0].desc = 'Keyboard VK: 65 (UP)'");
  assert.equal(await asked(), 7);
  await page.getByText('Key A up').waitFor();
  await pages.close(page);
});

test('an event list that cannot be read is asked for again only when the count changes', async () => {
  const page = await pages.open({
    before: "host.events = [{ time: 0, desc: '' }]; host.failing.getMacroEvents = 'no'",
  });
  await page.getByText('Varnelle could not read the events (no). Please try again.').waitFor();
  await settled(page);
  await settled(page);
  assert.equal((await callsOf(page, 'getMacroEvents')).length, 1);
  await page.evaluate(() => delete host.failing.getMacroEvents);
  await change(page, "host.events.push({ time: 1, desc: '' })");
  await page.locator('#events').getByRole('option').nth(1).waitFor();
  await pages.close(page);
});

test('a failed command is said once, calmly, and the page shows what the program holds', async () => {
  const page = await pages.open();
  await page.evaluate(() => (host.failing.updateSpammer = 'not a number'));
  await page.getByLabel('Right', { exact: true }).click();
  await page.getByText('Varnelle could not change the setting (not a number). Please try again.').waitFor();
  assert.ok(await page.getByLabel('Left', { exact: true }).isChecked());
  await button(page, 'Dismiss').click();
  assert.equal(await page.getByRole('alert').innerText(), '');

  await page.evaluate(() => (host.failing.setKeySpamChordMode = ''));
  await page.getByLabel('Together').click();
  await page.getByText('Varnelle could not change the key order. Please try again.').waitFor();
  assert.ok(await page.getByLabel('In turn').isChecked());
  // A command that works again takes the sentence away.
  await forgetCalls(page);
  await button(page, 'Start clicking').click();
  await settled(page);
  assert.equal(await page.getByRole('alert').innerText(), '');
  assert.deepEqual(page.faults, []);
  await pages.close(page);
});

test('a late answer about the settings does not undo what the person has set meanwhile', async () => {
  const page = await pages.open({ before: 'host.delay = 300' });
  await page.getByLabel('Right', { exact: true }).click();
  await settled(page);
  assert.ok(await page.getByLabel('Right', { exact: true }).isChecked());
  await pages.close(page);
});

test('a page left open for a day keeps its memory', async () => {
  const kDay = 691_200; // polls, eight a second; some forty seconds in a hurry
  const page = await pages.open({
    viewport: { width: 420, height: 560 },
    // In a hurry, a pause ends at once, and only now and then the browser gets a turn of its own. The watch over an
    // answer never comes to its end.
    before: `const channel = new MessageChannel();
      const due = new Map();
      let given = 1e9;
      const later = window.setTimeout.bind(window);
      const forget = window.clearTimeout.bind(window);
      const end = (id) => { const run = due.get(id); due.delete(id); run?.(); };
      channel.port1.onmessage = ({ data }) => end(data);
      window.hurry = false;
      window.setTimeout = (run, pause, ...rest) => {
        if (!window.hurry) return later(run, pause, ...rest);
        const id = ++given;
        if (pause >= 3000) return id;
        due.set(id, run);
        if (host.polls % 100) queueMicrotask(() => end(id));
        else channel.port2.postMessage(id);
        return id;
      };
      window.clearTimeout = (id) => { if (id < 1e9) forget(id); else due.delete(id); };
      const answer = host.commands.getTrackerStatus;
      host.commands.getTrackerStatus = () => {
        // What a day holds: tools that start and stop, keys that are added, macros that grow.
        if (host.polls % 200 === 0) {
          const turn = host.polls / 200;
          host.status.autoClicking = turn % 2 === 1;
          host.status.unlocked = turn % 5 !== 0;
          host.status.keySpamTargets = Array.from({ length: turn % 7 }, (_, i) => 'Key ' + (turn + i));
          host.events = Array.from({ length: turn % 40 }, (_, i) => ({ time: i, desc: 'Autoclicker ON' }));
          host.calls.length = 0;
        }
        return answer();
      };`,
  });
  await settled(page);
  const session = await page.context().newCDPSession(page);
  const measure = async (end) => {
    // The waiting is done by an interval, which the hurry leaves alone.
    await page.evaluate(async (wanted) => {
      window.hurry = true;
      await new Promise((done) => {
        const look = setInterval(() => {
          if (host.polls < wanted) return;
          clearInterval(look);
          window.hurry = false;
          done();
        }, 50);
      });
    }, end);
    await settled(page);
    await session.send('HeapProfiler.collectGarbage');
    const { usedSize } = await session.send('Runtime.getHeapUsage');
    const { nodes, jsEventListeners } = await session.send('Memory.getDOMCounters');
    return { usedSize, nodes, jsEventListeners };
  };
  const early = await measure(kDay / 5);
  const late = await measure(kDay);
  const told = JSON.stringify({ early, late });
  // Two bytes a poll would already be more.
  assert.ok(late.usedSize - early.usedSize < 1_100_000, told);
  assert.ok(late.nodes - early.nodes < 400, told);
  assert.ok(late.jsEventListeners - early.jsEventListeners < 100, told);
  assert.equal(await page.evaluate(() => Object.keys(host.promises).length), 0);
  assert.deepEqual(page.faults, []);
  await pages.close(page);
});
