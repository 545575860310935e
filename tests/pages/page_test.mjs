// The shared start of all page tests: opens the built page in Debian's Chromium on the fake host (fake_host.js).
import assert from 'node:assert/strict';
import { mkdirSync, readFileSync } from 'node:fs';
import { join } from 'node:path';
import { after, describe, test } from 'node:test';
import { build } from 'esbuild';
import { chromium } from 'playwright-core';
import { buildPage, kBrowserOptions, root } from './browser.mjs';

export { assert, describe, root, test };
const pictures = join(root, 'build/pages');
const kDeadline = 120000; // ms until a wait for a condition fails
const kViewport = { width: 420, height: 560 };
const fakeHost = readFileSync(new URL('fake_host.js', import.meta.url), 'utf8');

// Imports a source of the page as a module, for tests that need no browser.
export async function importSource(path) {
  const bundle = await build({
    entryPoints: [join(root, 'ui/src', path)],
    bundle: true,
    write: false,
    format: 'esm',
    jsx: 'automatic',
    jsxImportSource: 'preact',
    loader: { '.css': 'empty' },
  });
  const text = Buffer.from(bundle.outputFiles[0].contents).toString('base64');
  return import(`data:text/javascript;base64,${text}`);
}

// run.sh shares one built page and one browser among the files. A file that runs alone makes its own.
const shared = { page: process.env.VARNELLE_TEST_PAGE, browser: process.env.VARNELLE_TEST_BROWSER };
let pageText;
let browserStart;
const idlePages = [];

async function startBrowser() {
  pageText = shared.page ? readFileSync(shared.page, 'utf8') : buildPage();
  return shared.browser ? chromium.connect(shared.browser) : chromium.launch(kBrowserOptions);
}
export const startedBrowser = () => (browserStart ??= startBrowser());
after(async () => {
  if (browserStart) await (await browserStart).close();
});

// The commands that only the main window has, not a panel window.
export const mainWindowCommands = [
  ...['pickLocation', 'resetHotkeys', 'openLink', 'markWarningSeen', 'setPanelOrder'],
  ...['getAppSettings', 'setAppSetting', 'getPendingThemeAlert'],
  ...['getProfiles', 'addProfile', 'deleteProfile', 'switchProfile', 'clearProfile'],
  ...['exportProfile', 'importProfile', 'confirmMacroImport', 'cancelMacroImport'],
  ...['getPendingMacroImport', 'getPendingMacroSummary'],
];

// Opens a page. The options are the names of HostState (fake_host.js), which set the state at the start, and:
//   viewport, context   options of the browser context, which then belongs to this page alone
//   ownContext          true gives the page a context of its own, for a test that stops the clock
//   absentCommands      commands that the host does not bind
//   before              a function that runs in the page before the page's own script
export async function openPage(options = {}) {
  const { viewport, context, ownContext, ...start } = options;
  const browser = await startedBrowser();
  // A used page is loaded again: a new one costs more time than most tests.
  const reusable = !viewport && !context && !ownContext;
  const page = (reusable && idlePages.pop()) || (await newPage(browser, viewport ?? kViewport, context));
  page.reusable = reusable;
  page.faults.length = 0;
  await loadPage(page, start);
  return page;
}

// Loads the built page again in an open page.
export async function loadPage(page, { absentCommands = [], before = () => {}, ...state }) {
  await page.goto('about:blank');
  await page.evaluate(
    `window.absentCommands = ${JSON.stringify(absentCommands)};
    ${fakeHost}
    host.setState(${JSON.stringify(state)});
    (${before})();`,
  );
  await page.setContent(pageText);
  // The page has sent its first calls, so that later calls follow from the test.
  await page.waitForFunction(
    () => host.polls > 0 && host.unanswered === 0 && document.querySelector('#app.app--known'),
  );
}

// Returns one state from several; a later one wins.
export const combine = (...states) =>
  states.reduce((whole, state) => {
    const combined = { ...whole };
    for (const [name, value] of Object.entries(state)) {
      const isRecord = typeof value === 'object' && value !== null && !Array.isArray(value);
      combined[name] = isRecord ? combine(whole[name] ?? {}, value) : value;
    }
    return combined;
  }, {});

async function newPage(browser, viewport, options = {}) {
  const context = await browser.newContext({ viewport, ...options });
  const page = await context.newPage();
  page.setDefaultTimeout(kDeadline);
  page.faults = [];
  page.on('pageerror', (error) => page.faults.push(String(error)));
  page.host = new FakeHost(page);
  return page;
}

export async function closePage(page) {
  if (page.reusable) idlePages.push(page);
  else await page.context().close();
}

// A test on one page, which is opened as openPage() does. Fails also where the page throws.
export function pageTest(name, options, body) {
  test(name, async () => {
    const page = await openPage(options);
    try {
      await body(page);
      assert.deepEqual(page.faults, []);
    } catch (error) {
      page.reusable = false;
      throw error;
    } finally {
      await closePage(page);
    }
  });
}

// Waits until the page has polled twice more, every call is answered, and the result is drawn.
export const settled = (page) => page.evaluate(() => host.settle());

// The test's side of the fake host: page.host. Each setter waits until the page shows the new state. For a setting that
// the page must not show yet, call the setter of the same name in the page.
class FakeHost {
  constructor(page) {
    this.page = page;
  }
  async set(state) {
    await this.page.evaluate((values) => host.setState(values), state);
    await settled(this.page);
  }
  setStatus = (status) => this.set({ status });
  setHotkeys = (hotkeys) => this.set({ hotkeys });
  setSettings = (settings) => this.set({ settings });
  setPreferences = (preferences) => this.set({ preferences });
  setProfiles = (profiles) => this.set({ profiles });
  setEvents = (events) => this.set({ events });

  // These do not wait, because the page shows nothing of them.
  setFailing = (texts) => this.page.evaluate((value) => host.setFailing(value), texts);
  setSilent = (names) => this.page.evaluate((value) => host.setSilent(value), names);
  setAnswerDelay = (milliseconds) => this.page.evaluate((value) => host.setAnswerDelay(value), milliseconds);

  // Queues answers, so that a test sees what the page does before an answer, however slow the machine is.
  holdAnswers = () => this.page.evaluate(() => host.holdAnswers());
  releaseAnswers = () => this.page.evaluate(() => host.releaseAnswers());
}

// All calls since the last forgetCalls(), each [name, argument text], without the polls.
export const allCalls = (page) => page.evaluate(() => host.calls);
export const namesOfCalls = async (page) => (await allCalls(page)).map(([name]) => name);

// The argument texts of all calls of a command.
export const callsOf = async (page, name) =>
  (await allCalls(page)).filter(([called]) => called === name).map(([, text]) => text);

// Waits until a command has been called so many times; returns the argument texts.
export async function expectCall(page, name, times = 1) {
  await page.waitForFunction(
    ([wanted, least]) => host.calls.filter(([called]) => called === wanted).length >= least,
    [name, times],
  );
  return callsOf(page, name);
}

export const forgetCalls = (page) => page.evaluate(() => void (host.calls.length = 0));

// Stops the page's clock: from now on time passes only by page.clock.runFor(milliseconds), until page.clock.resume().
// Needs `ownContext`, because the clock stays in the context.
export async function stopClock(page) {
  assert.ok(!page.reusable, 'a page whose clock stops has a context of its own');
  await page.clock.install();
  await settled(page); // the timers of the former clock have ended
  await page.clock.pauseAt(Date.now() + 60_000);
}

export const button = (page, name) => page.getByRole('button', { name, exact: true });
export const textBox = (page, name) => page.getByRole('textbox', { name, exact: true });
// The list box with the profiles; its text is the chosen one.
export const profileBox = (page) => page.getByRole('combobox', { name: 'Profile', exact: true });
const profileOptions = (page) =>
  page.getByRole('listbox', { name: 'Profile', exact: true }).getByRole('option');

export async function chooseProfile(page, name) {
  await profileBox(page).click();
  await profileOptions(page).filter({ hasText: name }).click();
}

// Opens the list of the profiles, reads their names, and closes it again.
export async function profileNames(page) {
  await profileBox(page).click();
  const names = await profileOptions(page).allInnerTexts();
  await page.keyboard.press('Escape');
  return names;
}

export const eventRow = (page, index) => page.locator(`#events-${index}`);

// The name or text of the element with the focus.
export const focused = (page) =>
  page.evaluate(() => (document.activeElement.ariaLabel ?? document.activeElement.innerText).trim());

// The state line as one line of text.
export const stateText = async (page) =>
  (await page.getByRole('status', { name: 'State' }).innerText()).replace(/\s+/g, ' ').trim();

// Saves a picture for review in build/pages.
export async function picture(page, name, options = {}) {
  mkdirSync(pictures, { recursive: true });
  // The state line sticks to the top of the view, which in a full-page picture is the top of the page.
  if (options.fullPage) await page.evaluate(() => scrollTo(0, 0));
  await page.screenshot({ path: join(pictures, `${name}.png`), ...options });
}

// Events for tests, each with its time in seconds first.
export const moveTo = (time, x, y) => ({ time, type: 'move', x, y });
export const moveBy = (time, x, y) => ({ time, type: 'rawMove', x, y });
export const press = (time, button, x = 0, y = 0) => ({ time, type: 'button', button, down: true, x, y });
export const release = (time, button, x = 0, y = 0) => ({ time, type: 'button', button, down: false, x, y });
export const keyDown = (time, virtualKey) => ({ time, type: 'key', virtualKey, down: true });
export const keyUp = (time, virtualKey) => ({ time, type: 'key', virtualKey, down: false });
export const wheel = (time, delta) => ({ time, type: 'wheel', wheel: delta });
export const tool = (time, name, on) => ({ time, type: 'tool', tool: name, down: on });
export const kOneEvent = [tool(0, 'autoclicker', true)];
export const kKeyMacro = [moveTo(0, 1, 2), keyDown(1.5, 65), keyUp(2, 65)];
