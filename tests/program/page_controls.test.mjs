// The page's controls in the whole program: preferences, panels, warnings, the event list, the state line.
import assert from 'node:assert/strict';
import { existsSync, mkdirSync, writeFileSync } from 'node:fs';
import { join } from 'node:path';
import { kMainTitle, test, useFixture } from './harness.mjs';
import { kQuietMilliseconds, waitUntil } from './processes.mjs';
import { Key, pause } from './xtest_input.mjs';

const fixture = useFixture();
const { input } = fixture;
let program;
let observer;

// `macros` are the profiles of its session by name, each a list of event lines; the first is current.
function install({ settings = {}, macros } = {}) {
  const installation = fixture.install();
  mkdirSync(installation.data);
  const lines = Object.entries(settings).map(([key, value]) => `${key}=${value}\n`);
  if (lines.length > 0) writeFileSync(join(installation.data, 'appsettings.txt'), lines.join(''));
  if (macros) {
    const profiles = Object.entries(macros).map(
      ([name, events]) => `PROFILE:${name}\n${events.map((line) => `${line}\n`).join('')}`,
    );
    writeFileSync(join(installation.data, 'session.dat'), `${kSettings}\nCURRENT:0\n${profiles.join('')}`);
  }
  return installation;
}

// A click each 200 ms, until stopped, at the pointer; the hotkeys of a first start.
const kSettings =
  'SETTINGS:0,0,0,200,0,0,1,1,0,0,0,1,1,1,1,0,1.0,0,0,119,118,0,117,0,0,0,200,1,1,120,65,65,0,0,0,121';

async function begin(installation) {
  ({ program, observer } = await fixture.startBesideApplication({ installation }));
}

async function restart(installation) {
  assert.equal(await program.closeWindow(observer), 0);
  await observer.kill();
  await begin(installation);
}

function settingsFile() {
  if (!existsSync(join(program.installation.data, 'appsettings.txt'))) return {};
  const lines = program.readData('appsettings.txt').trim().split('\n');
  return Object.fromEntries(lines.map((line) => line.split(/=(.*)/s).slice(0, 2)));
}
const waitForSetting = (key, value) =>
  waitUntil(() => settingsFile()[key] === value, `the file has ${key}=${value}`);

const clicking = (on) => program.waitForStatus((s) => s.autoClicking === on, `clicking: ${on}`);

const isClicking = async () => (await program.call('getTrackerStatus')).autoClicking;

async function prefer(label, on) {
  await program.press('Preferences');
  const sheet = program.page.getByRole('dialog', { name: 'Preferences' });
  await program.toggle(label, on, sheet);
  await program.press('Close', sheet);
  await sheet.waitFor({ state: 'detached' });
}

test('a changed preference is saved and takes effect at once', async () => {
  const installation = install();
  await begin(installation);
  await program.waitForStateText(/^Idle/);
  await program.toggle('Hotkeys on', false);
  await program.waitForStateText(/^Hotkeys off\s+Start and stop with the buttons\.$/);
  await waitForSetting('hotkeysEnabled', '0');
  await observer.waitUntilGrabbed(`key ${Key.F6}`, false);
  await input.tap(Key.F6);
  await waitUntil(() => observer.keys().length === 2, 'F6 reaches the application');
  await pause(kQuietMilliseconds);
  assert.equal(await isClicking(), false);
  assert.equal(observer.buttons().length, 0);

  await program.press('Turn on the hotkeys');
  await program.waitForStateText(/^Idle/);
  await waitForSetting('hotkeysEnabled', '1');
  await observer.waitUntilGrabbed(`key ${Key.F6}`);
  await input.tap(Key.F6);
  await clicking(true);
  await program.waitForStateText(/^Clicking, [\d,]+ clicks?\s+F6 stops it$/);
  await waitUntil(() => observer.presses().length > 0, 'it clicks');
  await program.press('Stop everything');
  await clicking(false);

  await prefer('Stop the tools with the macro', false);
  await waitForSetting('stopToolsWithMacro', '0');
  await prefer('Animations', false);
  await waitForSetting('disableAnimations', '1');
  await prefer('Always on top', true);
  await waitForSetting('alwaysOnTop', '1');
  await waitUntil(async () => (await observer.window(kMainTitle)).onTop, 'the window is on top');
});

const kTitles = ['Profile', 'Autoclicker', 'Key spammer', 'Macro', 'Hotkeys'];
const shownTitles = () => program.page.locator('#dashboard > .panel h2').allInnerTexts();
const isOpen = async (title) =>
  (await program.button(`${title}: show settings`).getAttribute('aria-expanded')) === 'true';

// Waits until the window has the height of the page's content; returns that height.
async function fits() {
  let seen;
  await waitUntil(async () => {
    const content = await program.page.evaluate(() =>
      Math.ceil(document.getElementById('app').getBoundingClientRect().height),
    );
    const window = await observer.window(kMainTitle);
    const viewport = program.page.viewportSize();
    seen = { content, window: [window.width, window.height], viewport };
    return window.height === content && viewport.height === content && window.width === viewport.width;
  }, 'the window fits').catch((error) => {
    throw new Error(`${error.message}: ${JSON.stringify(seen)}`);
  });
  return seen.content;
}

test('collapsed and moved panels resize the window and are restored after a restart', async () => {
  const installation = install();
  await begin(installation);
  const first = await shownTitles();
  assert.deepEqual([...first].sort(), [...kTitles].sort());
  // The page asks for its whole height, which is more than the screen has.
  await waitUntil(() => program.page.viewportSize().height > 600, 'the window has grown');
  for (const title of ['Macro', 'Autoclicker', 'Key spammer', 'Hotkeys']) {
    await program.press(`${title}: show settings`);
    assert.equal(await isOpen(title), false);
  }
  const few = await fits();
  await program.press('Profile: show settings');
  const none = await fits();
  assert.ok(none < few - 60, `${few} px, then ${none} px`);
  await program.press('Profile: show settings');
  assert.equal(await fits(), few);

  const grip = program.button('Move Macro');
  await grip.focus();
  await grip.press('Home');
  await waitUntil(async () => (await shownTitles())[0] === 'Macro', 'the panel is the first');
  await program.press('Move Hotkeys');
  await program.press('Move Hotkeys up');
  await program.press('Done moving Hotkeys');
  const order = ['Macro', ...first.filter((title) => title !== 'Macro')];
  const place = order.indexOf('Hotkeys');
  order.splice(place - 1, 0, ...order.splice(place, 1));
  assert.deepEqual(await shownTitles(), order);
  await waitForSetting(
    'panelOrder',
    (await program.page.locator('#dashboard > .panel').evaluateAll((all) => all.map(({ id }) => id))).join(),
  );
  assert.deepEqual(settingsFile().minimizedPanels.split(',').sort(), [
    'panel-keyspam',
    'panel-spammer',
    'panel-tracker',
    'panel-ui',
  ]);
  assert.equal(await fits(), few);

  await restart(installation);
  assert.deepEqual(await shownTitles(), order);
  for (const title of kTitles) {
    const open = title === 'Profile';
    assert.equal(await isOpen(title), open, title);
    assert.equal(await program.panel(title).locator('.panel__body').isVisible(), open, title);
  }
  assert.equal(await fits(), few);
});

test('the first start opens the autoclicker alone; a later start keeps what the user has opened', async () => {
  const installation = fixture.install();
  ({ program, observer } = await fixture.startBesideApplication({ installation, firstStart: true }));
  for (const title of kTitles) assert.equal(await isOpen(title), title === 'Autoclicker', title);
  await waitForSetting('minimizedPanels', 'panel-keyspam,panel-profile,panel-tracker,panel-ui');
  await waitForSetting('seenWarnings', 'first-layout');
  for (const title of kTitles) if (title !== 'Autoclicker') await program.press(`${title}: show settings`);
  await waitForSetting('minimizedPanels', '');
  await restart(installation);
  for (const title of kTitles) assert.ok(await isOpen(title), title);
});

test('a start from the page counts down; Cancel ends that, and the hotkey starts at once', async () => {
  const installation = install({ settings: { countdownSeconds: 10, showWarnings: 0 } });
  await begin(installation);
  await program.press('Start clicking', program.panel('Autoclicker'));
  await program.waitForStateText(/^Starting in/);
  await program.press('Cancel the start');
  await program.waitForStateText(/^Idle/);
  assert.equal(await isClicking(), false);
  await program.press('Start clicking', program.panel('Autoclicker'));
  await program.waitForStateText(/^Starting in/);
  await input.tap(Key.F6);
  await clicking(true);
  await program.waitForStateText(/^Clicking/);
  await input.tap(Key.F6);
  await clicking(false);
});

test('a warning is shown until it is accepted once', async () => {
  const installation = install({ settings: { hotkeysEnabled: 0 }, macros: { Empty: [] } });
  await begin(installation);
  const warning = program.page.getByRole('alertdialog', { name: 'No key stops the autoclicker' });
  await program.press('Start clicking', program.panel('Autoclicker'));
  await warning.waitFor();
  await program.press('Cancel', warning);
  await warning.waitFor({ state: 'detached' });
  await pause(kQuietMilliseconds);
  assert.equal((await program.call('getTrackerStatus')).autoClicking, false);
  assert.equal(observer.buttons().length, 0);
  assert.deepEqual((await program.call('getAppSettings')).seenWarnings, ['first-layout']);

  await program.press('Start clicking', program.panel('Autoclicker'));
  await program.press('Start clicking', warning);
  await clicking(true);
  await waitUntil(() => observer.presses().length > 0, 'it clicks');
  await waitForSetting('seenWarnings', 'endless-clicking,first-layout');
  await program.press('Stop everything');
  await clicking(false);

  await restart(installation);
  const again = program.page.getByRole('alertdialog');
  await program.press('Start clicking', program.panel('Autoclicker'));
  await clicking(true);
  assert.equal(await again.count(), 0);
  await program.press('Stop clicking', program.panel('Autoclicker'));
  await clicking(false);
});

// Ten keys, each down and up, with a move in front of each.
const kTyped = [...Array(10).keys()].flatMap((i) => [
  `0,${i},${20 * i},50,0,0,0,0`,
  `3,${i}.25,0,0,0,${65 + i},1,0`,
  `3,${i}.5,0,0,0,${65 + i},0,0`,
]);
const list = () => program.page.getByRole('listbox', { name: 'Events', exact: true });
const macro = () => program.call('getMacroEvents');
const brief = (events) => events.map(({ time, desc }) => `${time} ${desc}`);
const waitForRows = (count) =>
  waitUntil(
    async () => (await list().getByRole('option').first().getAttribute('aria-setsize')) === String(count),
    `${count} rows`,
  );

test('selected events are shifted and deleted as the page shows', async () => {
  await begin(install({ macros: { Typed: kTyped } }));
  await waitForRows(30);
  const before = await macro();
  assert.equal(before.length, 30);

  // The key events at places 2 to 6 without the move between them.
  await program.page
    .getByRole('group', { name: 'Kinds of events shown' })
    .getByRole('button', { name: /^Moves/ })
    .click();
  await waitForRows(20);
  const rows = program.eventRows();
  await rows.nth(0).click();
  await rows.nth(3).click({ modifiers: ['Shift'] });
  await program.enter('Shift times by', 0.125);
  await program.press('Shift');
  await program.page.getByText('Shifted 4 events.').waitFor();
  const shifted = before.map((event, i) =>
    [1, 2, 4, 5].includes(i) ? { ...event, time: event.time + 0.125 } : event,
  );
  assert.deepEqual(brief(await macro()), brief(shifted));
  assert.match(await rows.nth(3).innerText(), /6\s+1\.625\s+Key B up/);

  await program.press('Delete 4 events');
  await program.page.getByText('Deleted 4 events.').waitFor();
  await waitForRows(16);
  const left = shifted.filter((_, i) => ![1, 2, 4, 5].includes(i));
  assert.deepEqual(brief(await macro()), brief(left));
  await program.waitForStatus((s) => s.count === 26, 'the status has the new count');

  await rows.first().click();
  await list().press('Control+a');
  await program.press('Delete 16 events');
  await program.page.getByText('Deleted 16 events.').waitFor();
  const moves = left.filter(({ desc }) => desc.startsWith('Abs Move'));
  assert.equal(moves.length, 10);
  assert.deepEqual(brief(await macro()), brief(moves));
  await waitUntil(
    () => program.readMirror('macroevents.txt')?.length === 10,
    'the mirror has the new count too',
  );
});

// Returns the same random numbers on every run.
function makeRandom(seed) {
  let value = seed;
  return (below) => {
    value = (Math.imul(value, 1103515245) + 12345) >>> 0;
    return (value >>> 8) % below;
  };
}

// Makes a path in random steps, with random other events between the moves; `between` is their share in percent.
function walk(seed, count, largestStep, between) {
  const random = makeRandom(seed);
  let [x, y] = [400, 300];
  return Array.from({ length: count }, (_, i) => {
    x += random(2 * largestStep + 1) - largestStep;
    y += random(2 * largestStep + 1) - largestStep;
    const time = (i * 0.008).toFixed(3);
    if (random(100) >= between) return `0,${time},${x},${y},0,0,0,0`;
    const others = [
      `1,${time},1,1,0,0,0,0`,
      `2,${time},${x},${y},2,0,0,0`,
      `3,${time},0,0,0,65,1,0`,
      `4,${time},0,0,0,0,0,120`,
    ];
    return others[random(others.length)];
  });
}

const kPaths = {
  Slow: walk(1, 400, 3, 0),
  Hand: walk(2, 600, 8, 3),
  Fast: walk(3, 300, 60, 5),
  Busy: walk(4, 500, 5, 40),
  // The squared distance of these does not fit 32 bits.
  Far: [0, 65536, 131072, 46341, -2147483648, 2147483647, 5, 65541].map((x, i) => `0,${i},${x},0,0,0,0,0`),
  Short: ['0,0,5,5,0,0,0,0', '0,1,6,6,0,0,0,0'],
};

test('the page forecasts how many moves optimising drops', async () => {
  await begin(install({ macros: kPaths }));
  const forecast = program.page.locator('#optimise-hint');
  const button = program.button('Optimise');
  const counts = {};
  for (const [name, lines] of Object.entries(kPaths)) {
    await program.chooseProfile(name);
    await waitForRows(lines.length);
    const before = await macro();
    assert.equal(before.length, lines.length);
    const moves = before.filter(({ desc }) => /^(Abs|Rel) Move/.test(desc)).length;
    const pattern = /^Removes ([\d,]+) of ([\d,]+) moves?, within|^Nothing to optimise\.$/;
    const [, would = '0', of] = await waitUntil(
      async () => pattern.exec(await forecast.innerText()),
      'the forecast',
    );
    const expected = Number(would.replaceAll(',', ''));
    counts[name] = expected;
    if (expected === 0) {
      assert.equal(await button.getAttribute('aria-disabled'), 'true');
      await program.call('optimizeMacro');
      assert.equal((await macro()).length, before.length, name);
      continue;
    }
    assert.equal(Number(of.replaceAll(',', '')), moves, name);
    await button.click();
    await program.page
      .getByRole('status')
      .getByText(`Removed ${would} ${expected === 1 ? 'move' : 'moves'}.`)
      .waitFor();
    assert.equal((await macro()).length, before.length - expected, name);
    await forecast.getByText('Nothing to optimise.').waitFor();
  }
  assert.ok(counts.Slow > 200 && counts.Hand > 100 && counts.Busy > 20, JSON.stringify(counts));
  assert.ok(counts.Far > 0 && counts.Fast < 60 && counts.Short === 0, JSON.stringify(counts));
});

// Watches the page's polls. Returns a growing list of [value, state line, whether "Stop everything" is shown]: an entry for
// each status for which `pick` returns a new value. A poll ends with its second answer, the progress.
function watchAnswers(pick) {
  const seen = [];
  const carryOut = program.view.carryOut;
  let picked;
  program.view.carryOut = async (message) => {
    await carryOut.call(program.view, message);
    if (message.type !== 'return') return;
    picked = pick(message.result) ?? picked;
    if (!message.result.startsWith('{"revision":') || picked === undefined || picked === seen.at(-1)?.[0])
      return;
    const shown = await program.page.evaluate(async () => {
      for (let frame = 0; frame < 2; ++frame) await new Promise((resolve) => requestAnimationFrame(resolve));
      const title = document.querySelector('[role=status][aria-label=State] > :first-child').firstChild
        .textContent;
      return [title, document.querySelector('[aria-label="Stop everything"]') !== null];
    });
    seen.push([picked, ...shown]);
  };
  return seen;
}

test('the page shows a start or stop with the first poll that reports it', async () => {
  await begin(install({ settings: { showWarnings: 0 }, macros: { Typed: kTyped } }));
  await program.waitForStateText(/^Idle/);
  const seen = watchAnswers((result) => {
    const answer = /^\{"state":/.test(result) ? JSON.parse(result) : {};
    return answer.state && [answer.state, answer.autoClicking ? 'clicking' : ''].join(' ').trim();
  });
  await waitUntil(() => seen.length === 1, 'a first poll');
  const next = async (picked) =>
    waitUntil(() => seen.at(-1)[0] === picked, `the program reports "${picked}"`);

  await input.tap(Key.F8);
  await next('Recording');
  await input.tap(Key.A);
  await input.tap(Key.F6);
  await next('Recording clicking');
  await input.tap(Key.F6);
  await next('Recording');
  await program.press('Stop everything');
  await next('Idle');
  await program.press('Start clicking', program.panel('Autoclicker'));
  await next('Idle clicking');
  await program.press('Stop everything');
  await next('Idle');
  await input.tap(Key.F8);
  await next('Recording');
  await input.tap(Key.A);
  await pause(4000); // so that a poll happens during the playback
  await input.tap(Key.B);
  await input.tap(Key.F8);
  await next('Idle');
  await program.press('Play');
  await next('Playing');
  await next('Idle');
  assert.deepEqual(seen, [
    ['Idle', 'Idle', false],
    ['Recording', 'Recording', true],
    ['Recording clicking', 'Recording, clicking', true],
    ['Recording', 'Recording', true],
    ['Idle', 'Idle', false],
    ['Idle clicking', 'Clicking', true],
    ['Idle', 'Idle', false],
    ['Recording', 'Recording', true],
    ['Idle', 'Idle', false],
    ['Playing', 'Playing', true],
    ['Idle', 'Idle', false],
  ]);
});
