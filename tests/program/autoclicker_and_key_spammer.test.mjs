// The autoclicker and the key spammer, started by hotkeys and by the page, as another application receives them.
import assert from 'node:assert/strict';
import { onWindows, test, useFixture } from './harness.mjs';
import { waitUntil } from './processes.mjs';
import { Button, Key } from './xtest_input.mjs';

// Wine turns an absolute move into a pixel one too low on an axis whose size is no power of two.
const kPlaceTolerance = onWindows ? 1 : 0;

const fixture = useFixture();
const { input } = fixture;
let program;
let observer;

async function begin() {
  ({ program, observer } = await fixture.startBesideApplication());
}

const autoclicker = () => program.panel('Autoclicker');
const keySpammer = () => program.panel('Key spammer');

async function setInterval(panel, prefix, milliseconds) {
  await program.enter(`${prefix}: milliseconds`, milliseconds, panel);
  const field = prefix === 'Click interval' ? 'sms' : 'ksms';
  await program.waitForSettings((s) => s[field] === milliseconds, 'the interval');
}

async function setCount(panel, what, count) {
  await program.choose('Repeat', 'Count', panel);
  await program.enter(`Number of ${what}`, count, panel);
  const [mode, times] = what === 'clicks' ? ['rptMode', 'rptTimes'] : ['ksRptMode', 'ksRptTimes'];
  await program.waitForSettings((s) => s[mode] === 0 && s[times] === count, 'the count');
}

// Presses and releases of one button alternate, from a press to a release.
function assertPairs(buttons, button = Button.Left) {
  assert.equal(buttons.length % 2, 0, 'every press has its release');
  buttons.forEach((event, index) => {
    assert.equal(event.button, button);
    assert.equal(event.down, index % 2 === 0, `event ${index} of ${buttons.length}`);
  });
}

// The autoclicker's stop releases all three buttons, also those that are not down. The application receives at most one
// such release of each button.
function withoutStopReleases(events) {
  const down = new Set();
  return events.filter((event) => {
    if (event.down) {
      down.add(event.button);
      return true;
    }
    return down.delete(event.button);
  });
}

test('F6 starts and stops the autoclicker and never reaches the application', async () => {
  await begin();
  await setInterval(autoclicker(), 'Click interval', 20);
  await input.tap(Key.F6);
  await waitUntil(() => observer.presses().length >= 10, 'clicks arrive');
  await program.waitForStatus((status) => status.autoClicking === true, 'status.txt says it clicks');
  await program.waitForStateText(/Clicking[\s\S]*F6[\s\S]*stops/);
  await input.tap(Key.F6);
  await program.waitForStatus((status) => status.autoClicking === false, 'status.txt says it stopped');
  await program.waitForStateText(/^Idle/);
  await observer.settle();
  assertPairs(withoutStopReleases(observer.buttons()));
  assert.deepEqual(observer.keys(), []);
  const count = observer.presses().length;
  await observer.settle();
  assert.equal(observer.presses().length, count, 'no more clicks arrive');

  // An ordinary key reaches the application.
  await input.tap(Key.K);
  await waitUntil(() => observer.keys().length === 2, 'an ordinary key arrives');
});

test('the page starts and stops the autoclicker', async () => {
  await begin();
  await setInterval(autoclicker(), 'Click interval', 20);
  await program.choose('Mouse button', 'Right', autoclicker());
  await program.waitForSettings((s) => s.sbtn === 1, 'the button');
  await program.press('Start clicking');
  await waitUntil(() => observer.presses().length >= 3, 'clicks arrive');
  await program.press('Stop clicking');
  await program.waitForStatus((status) => !status.autoClicking, 'it stops');
  await observer.settle();
  assertPairs(withoutStopReleases(observer.buttons()), Button.Right);
});

test('a real click picks the location and does not reach the application', async () => {
  await begin();
  await setCount(autoclicker(), 'clicks', 3);
  await program.press('Pick location');
  await program.waitForPick(observer);
  await observer.pointAt(-60, 40);
  const place = await input.position();
  await input.click(Button.Left);
  const picked = await program.waitForSettings((s) => s.locMode === 1 && s, 'the place is picked');
  assert.deepEqual({ x: picked.fixedX, y: picked.fixedY }, place);
  await observer.settle();
  assert.deepEqual(observer.presses(), [], 'the pick does not reach the application');

  await observer.pointAt(90, -70);
  await input.tap(Key.F6);
  await waitUntil(() => observer.presses().length === 3, 'three clicks');
  await observer.settle();
  assert.equal(observer.presses().length, 3);
  for (const press of observer.presses()) {
    assert.ok(Math.abs(press.x - place.x) <= kPlaceTolerance, `x ${press.x}, picked ${place.x}`);
    assert.ok(Math.abs(press.y - place.y) <= kPlaceTolerance, `y ${press.y}, picked ${place.y}`);
  }
});

test('a right click cancels a pick', async () => {
  await begin();
  const before = await program.call('getSettings');
  await program.press('Pick location');
  await program.waitForPick(observer);
  await input.click(Button.Right);
  await observer.settle();
  assert.deepEqual(observer.presses(), [], 'the cancelling press does not reach the application');
  await input.click(Button.Left);
  await waitUntil(() => observer.presses().length === 1, 'the next press is an ordinary one');
  assert.deepEqual(await program.call('getSettings'), before);
});

test('a count of three sends exactly three clicks', async () => {
  await begin();
  await setInterval(autoclicker(), 'Click interval', 5);
  await setCount(autoclicker(), 'clicks', 3);
  await input.tap(Key.F6);
  await waitUntil(() => observer.presses().length >= 3, 'three clicks');
  await program.waitForStatus((status) => !status.autoClicking, 'the tool stops after its count');
  await observer.settle();
  assertPairs(observer.buttons());
  assert.equal(observer.presses().length, 3);
});

test('a count of three double clicks sends three pairs', async () => {
  await begin();
  await program.enter('Click interval: seconds', 3, autoclicker());
  await setInterval(autoclicker(), 'Click interval', 0);
  await program.choose('Click type', 'Double', autoclicker());
  await setCount(autoclicker(), 'clicks', 3);
  await input.tap(Key.F6);
  await waitUntil(() => observer.presses().length >= 6, 'six clicks');
  await program.waitForStatus((status) => !status.autoClicking, 'the tool stops after its count');
  await observer.settle();
  assertPairs(observer.buttons());
  assert.equal(observer.presses().length, 6);
  const gaps = observer.presses().map((press, index, all) => (index ? press.t - all[index - 1].t : 0));
  // 15 ms within a double click, three seconds between two: no machine delays a click for half of that.
  for (const pair of [1, 3]) assert.ok(gaps[pair] < gaps[pair + 1], `gaps ${gaps}`);
});

// Chooses the target keys, each captured by a real key press that no application receives.
async function chooseTargets(letters) {
  await program.press(/^Remove .*, key 1$/, keySpammer());
  for (const [index, letter] of [...letters].entries()) {
    await program.press('Add key', keySpammer());
    await program.waitForCapture(observer, (s) => s.reassigning === 'keyspamtarget');
    await input.tap(Key[letter]);
    await program.waitForStatus((s) => s.keySpamTargets.length === index + 1 && s.reassigning === '', letter);
  }
  // On X11 Wine names keys by what they type, some of them wrongly.
  if (!onWindows) assert.deepEqual(program.status().keySpamTargets, [...letters]);
  await observer.settle();
  assert.deepEqual(
    observer.keys().filter((key) => key.down),
    [],
    'captured presses do not reach the application',
  );
  observer.clear();
}

const keyTexts = () => observer.keys().map((key) => `${key.code}${key.down ? ' down' : ' up'}`);

test('four rounds of A, B, C in turn press A, B, C, A', async () => {
  await begin();
  await chooseTargets('ABC');
  await setInterval(keySpammer(), 'Press interval', 20);
  await setCount(keySpammer(), 'rounds', 4);
  await input.tap(Key.F9);
  await waitUntil(() => observer.keys().length >= 8, 'four keys');
  await program.waitForStatus((s) => !s.keySpamming, 'the tool stops after its count');
  await observer.settle();
  const expected = [Key.A, Key.B, Key.C, Key.A].flatMap((code) => [`${code} down`, `${code} up`]);
  // Three releases of keys that are already up follow. X11 delivers none of them, Windows all.
  const ups = [Key.A, Key.B, Key.C].map((code) => `${code} up`);
  const texts = keyTexts();
  assert.deepEqual(texts.slice(0, 8), expected);
  assert.deepEqual(texts.slice(8), texts.length > 8 ? ups : []);
});

test('keys pressed together go down in list order before any is released', async () => {
  await begin();
  await chooseTargets('ABC');
  await program.choose('Key order', 'Together', keySpammer());
  await program.waitForStatus((s) => s.keySpamChord, 'the order');
  await setCount(keySpammer(), 'rounds', 1);
  await program.press('Start pressing');
  await waitUntil(() => observer.keys().length >= 6, 'one round');
  await program.waitForStatus((s) => !s.keySpamming, 'the tool stops after its count');
  await observer.settle();
  assert.deepEqual(
    keyTexts().slice(0, 6),
    [' down', ' up'].flatMap((what) => [Key.A, Key.B, Key.C].map((code) => code + what)),
  );
  assert.deepEqual(
    keyTexts()
      .slice(6)
      .filter((text) => text.endsWith('down')),
    [],
  );
});

test('autoclicker and key spammer run together, and the page stops both', async () => {
  await begin();
  await setInterval(autoclicker(), 'Click interval', 30);
  await setInterval(keySpammer(), 'Press interval', 30);
  await input.tap(Key.F6);
  await input.tap(Key.F9);
  await waitUntil(() => observer.presses().length > 5 && observer.keys().length > 10, 'both work');
  await program.waitForStateText(/Clicking, pressing/);
  await program.press('Stop everything');
  await program.waitForStatus((s) => !s.autoClicking && !s.keySpamming, 'both stop');
  await observer.settle();
  assertPairs(withoutStopReleases(observer.buttons()));
});
