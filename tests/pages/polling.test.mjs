// The status poll: how often it runs, never two at once, and what the page reads after it.
import {
  assert,
  button,
  callsOf,
  forgetCalls,
  kOneEvent,
  mainWindowCommands,
  moveTo,
  pageTest,
  settled,
  stopClock,
  tool,
} from './page_test.mjs';

// Returns the median pause between the next polls, in milliseconds.
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

const addEvent = async (page, added) => {
  await page.evaluate((one) => void host.events.push(one), added);
  await settled(page);
};

const hide = (page, hidden) =>
  page.evaluate((value) => {
    Object.defineProperty(document, 'hidden', { value, configurable: true });
    document.dispatchEvent(new Event('visibilitychange'));
  }, hidden);

pageTest(
  'polls eight times a second, less while hidden, and at once when visible again',
  { ownContext: true },
  async (page) => {
    await stopClock(page);
    const polls = () => page.evaluate(() => host.polls);
    const pollsWithin = async (milliseconds) => {
      const before = await polls();
      await page.clock.runFor(milliseconds);
      return (await polls()) - before;
    };
    const visible = await pollsWithin(10_000);
    assert.ok(visible >= 75 && visible <= 85, `${visible} while visible`);
    await hide(page, true);
    await pollsWithin(1000);
    const hidden = await pollsWithin(10_000);
    assert.ok(hidden >= 9 && hidden <= 11, `${hidden} while hidden`);
    const before = await polls();
    await hide(page, false);
    assert.equal((await polls()) - before, 1, 'at once');
    const again = await pollsWithin(10_000);
    assert.ok(again >= 75 && again <= 85, `${again} when visible again`);
  },
);

pageTest(
  'has one poll in flight, also when the program is slow and buttons are pressed',
  { answerDelay: 200 },
  async (page) => {
    for (let i = 0; i < 4; i++) {
      await button(page, 'Start clicking').click();
      await button(page, 'Stop clicking').click();
    }
    await settled(page);
    assert.equal(await page.evaluate(() => host.mostPollsInFlight), 1);
    // A poll of 200 ms is followed by a pause of 200 ms.
    assert.ok((await medianPause(page, 4)) >= 350);
  },
);

pageTest('says that it waits for a program that stops answering', {}, async (page) => {
  await page.host.setSilent(['getTrackerStatus']);
  await page.getByText('Waiting for Varnelle to answer').waitFor();
  const polls = await page.evaluate(() => host.polls);
  await page.evaluate(() => new Promise((done) => setTimeout(done, 500)));
  assert.equal(await page.evaluate(() => host.polls), polls, 'no further poll while one is out');
});

pageTest('shows no alert for a rejected poll, and recovers with the next one', {}, async (page) => {
  await page.host.setFailing({ getTrackerStatus: 'broken' });
  await page.getByText('Waiting for Varnelle to answer').waitFor();
  assert.equal(await page.getByRole('alert').innerText(), '');
  await page.host.setFailing({});
  await page.getByText('Idle', { exact: true }).waitFor();
});

const kPanelAlone = { shortStatus: true, absentCommands: mainWindowCommands };
pageTest('accepts the shorter report of a panel without a program', kPanelAlone, async (page) => {
  await page.getByText('Idle', { exact: true }).waitFor();
  assert.ok(await page.getByText('The hotkey lock is off.').isVisible());
  assert.ok(await button(page, 'Undo').isDisabled());
});

pageTest(
  'works in a panel window, with the commands that it has',
  { absentCommands: mainWindowCommands },
  async (page) => {
    await settled(page);
    assert.equal(await page.locator('#panel-profile').count(), 0);
    for (const name of ['Pick location', 'Reset hotkeys', 'Preferences']) {
      assert.equal(await button(page, name).count(), 0, name);
    }
    await button(page, 'Start clicking').click();
    await button(page, 'Stop clicking').waitFor();
  },
);

pageTest(
  'ignores malformed reports',
  {
    before: () => {
      host.commands.getTrackerStatus = () => '{"state":7,"keySpamTargets":"x","count":null}';
      host.commands.getSettings = () => '[]';
      host.commands.getProfiles = () => 'null';
      host.commands.getProgress = () => '{"revision":3,"clicks":"x"}';
      host.commands.getMacroRows = () => '{}';
      host.commands.getMacroHistory = () => '[]';
      host.commands.getKeyNames = () => 'null';
    },
  },
  async (page) => {
    await settled(page);
    await page.getByText('Idle', { exact: true }).waitFor();
  },
);

pageTest(
  'reads the events when the revision of the macro has changed, not at every poll',
  { events: kOneEvent },
  async (page) => {
    const rows = page.locator('#events').getByRole('option');
    await rows.first().waitFor();
    const asked = async () => {
      const texts = await callsOf(page, 'getMacroRows');
      await forgetCalls(page);
      return texts;
    };
    assert.deepEqual(await asked(), ['0,50000'], 'at the start');

    await settled(page);
    await settled(page);
    assert.deepEqual(await asked(), [], 'not while nothing changes');

    await page.host.set({ status: { state: 'Recording' }, events: [] });
    for (let i = 0; i < 3; i++) await addEvent(page, moveTo(i, 1, 1));
    assert.deepEqual(await asked(), [], 'not during a recording');
    await page.host.setStatus({ state: 'Idle' });
    assert.equal(await rows.count(), 3);
    assert.deepEqual(await asked(), ['0,50000'], 'when it has ended');

    await addEvent(page, tool(9, 'keySpammer', true));
    assert.equal(await rows.count(), 4);
    assert.deepEqual(await asked(), ['3,50000'], 'only appended events');

    await page.evaluate(() => void (host.events[0] = { time: 0, type: 'key', virtualKey: 65 }));
    await settled(page);
    assert.deepEqual(
      await asked(),
      ['0,50000'],
      'all after another change, also of the same number of events',
    );
    await page.getByText('Key A up').waitFor();
  },
);

pageTest('reads a long macro again from its start if it changes meanwhile', {}, async (page) => {
  await page.evaluate(() => {
    const { getMacroRows } = host.commands;
    host.commands.getMacroRows = (text) => {
      if (text === '50000,50000' && !window.changed) {
        window.changed = true;
        host.events.splice(0, 1);
      }
      return getMacroRows(text);
    };
    host.setManyEvents(120_000);
  });
  await page.getByText('119,999 events').first().waitFor();
  await page.locator('#events-0').getByText('Move to 1, 5').waitFor();
  const asked = await callsOf(page, 'getMacroRows');
  const whole = ['0,50000', '50000,50000', '100000,50000'];
  assert.deepEqual(asked.slice(-5), [...whole.slice(0, 2), ...whole]);
});

pageTest(
  'reads a failed event list again only when the macro changes',
  {
    events: kOneEvent,
    failing: { getMacroRows: 'no' },
  },
  async (page) => {
    await page.getByText('Varnelle could not read the events (no). Please try again.').waitFor();
    await settled(page);
    await settled(page);
    assert.equal((await callsOf(page, 'getMacroRows')).length, 1);
    await page.host.setFailing({});
    await addEvent(page, tool(1, 'autoclicker', false));
    await page.locator('#events').getByRole('option').nth(1).waitFor();
  },
);

pageTest('reports a failed command once and shows the state of the program', {}, async (page) => {
  await page.host.setFailing({ updateSpammer: 'not a number' });
  await page.getByLabel('Right', { exact: true }).click();
  await page.getByText('Varnelle could not change the setting (not a number). Please try again.').waitFor();
  assert.ok(await page.getByLabel('Left', { exact: true }).isChecked());
  await button(page, 'Dismiss').click();
  assert.equal(await page.getByRole('alert').innerText(), '');

  await page.host.setFailing({ setKeySpamChordMode: '' });
  await page.getByLabel('Together').click();
  await page.getByText('Varnelle could not change the key order. Please try again.').waitFor();
  assert.ok(await page.getByLabel('In turn').isChecked());
  // The next command that succeeds removes the message.
  await forgetCalls(page);
  await button(page, 'Start clicking').click();
  await settled(page);
  assert.equal(await page.getByRole('alert').innerText(), '');
});

pageTest(
  'a late settings report does not undo a newer change by the user',
  { answerDelay: 300 },
  async (page) => {
    await page.getByLabel('Right', { exact: true }).click();
    await settled(page);
    assert.ok(await page.getByLabel('Right', { exact: true }).isChecked());
  },
);

pageTest(
  'uses no more memory after a day of polls',
  {
    ownContext: true,
    // While `fast` is set, timers end at once; every hundredth poll lets the browser run its own tasks. The timeout of an
    // answer never ends.
    before: () => {
      const channel = new MessageChannel();
      const due = new Map();
      let lastId = 1e9;
      const later = window.setTimeout.bind(window);
      const forget = window.clearTimeout.bind(window);
      const end = (id) => {
        const run = due.get(id);
        due.delete(id);
        run?.();
      };
      channel.port1.onmessage = ({ data }) => end(data);
      window.fast = false;
      window.setTimeout = (run, pause, ...rest) => {
        if (!window.fast) return later(run, pause, ...rest);
        const id = ++lastId;
        if (pause >= 3000) return id;
        due.set(id, run);
        if (host.polls % 100) queueMicrotask(() => end(id));
        else channel.port2.postMessage(id);
        return id;
      };
      window.clearTimeout = (id) => {
        if (id < 1e9) forget(id);
        else due.delete(id);
      };
      const answer = host.commands.getTrackerStatus;
      // The host compares the events for each report, which takes longer than everything else.
      const reportProgress = host.commands.getProgress;
      let progress = reportProgress();
      host.commands.getProgress = () => progress;
      host.commands.getTrackerStatus = () => {
        // A day of use: tools start and stop, keys are added, macros grow.
        if (host.polls % 200 === 0) {
          const turn = host.polls / 200;
          host.setStatus({
            autoclickerRunning: turn % 2 === 1,
            unlocked: turn % 5 !== 0,
            targets: Array.from({ length: turn % 7 }, (_, i) => `Key ${turn + i}`),
          });
          host.setEvents(Array.from({ length: turn % 40 }, (_, i) => ({ time: i, type: 'move', x: turn })));
          progress = reportProgress();
          host.calls.length = 0;
        }
        return answer();
      };
    },
  },
  async (page) => {
    const kDay = 691_200; // polls, eight a second
    await settled(page);
    const session = await page.context().newCDPSession(page);
    const measure = async (end) => {
      // Intervals keep their normal speed.
      await page.evaluate(async (wanted) => {
        window.fast = true;
        await new Promise((done) => {
          const look = setInterval(() => {
            if (host.polls < wanted) return;
            clearInterval(look);
            window.fast = false;
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
    const measured = JSON.stringify({ early, late });
    // Two bytes for each poll would exceed this.
    assert.ok(late.usedSize - early.usedSize < 1_100_000, measured);
    assert.ok(late.nodes - early.nodes < 400, measured);
    assert.ok(late.jsEventListeners - early.jsEventListeners < 100, measured);
    assert.equal(await page.evaluate(() => Object.keys(host.promises).length), 0);
  },
);
