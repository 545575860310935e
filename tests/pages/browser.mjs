// Opens the built page in Debian's Chromium on the stand-in host.
import { execFileSync } from 'node:child_process';
import { mkdirSync, mkdtempSync, readFileSync, rmSync } from 'node:fs';
import { tmpdir } from 'node:os';
import { join } from 'node:path';
import { fileURLToPath } from 'node:url';
import { build } from 'esbuild';
import { chromium } from 'playwright-core';

export const root = fileURLToPath(new URL('../../', import.meta.url));
export const pictures = join(root, 'build/pages');
const kDeadline = 120000; // ms that a condition is waited for

export function builtPage() {
  const folder = mkdtempSync(join(tmpdir(), 'varnelle-page-'));
  try {
    execFileSync(process.execPath, [join(root, 'ui/build.mjs'), folder, '--no-check'], { stdio: 'inherit' });
    return readFileSync(join(folder, 'index.html'), 'utf8');
  } finally {
    rmSync(folder, { recursive: true });
  }
}

// A source of the page as a module, for what needs no browser.
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

// The commands that only the main window has, not a panel's own window.
export const mainWindowCommands = [
  ...['pickLocation', 'resetHotkeys', 'openLink', 'markWarningSeen', 'setPanelOrder'],
  ...['getAppSettings', 'setAppSetting', 'getPendingThemeAlert'],
  ...['getProfiles', 'addProfile', 'deleteProfile', 'switchProfile', 'clearProfile'],
  ...['exportProfile', 'importProfile', 'confirmMacroImport', 'cancelMacroImport'],
  ...['getPendingMacroImport', 'getPendingMacroSummary'],
];

const standIn = readFileSync(new URL('stand-in.mjs', import.meta.url), 'utf8');

export class Pages {
  static async start(options = {}) {
    const pages = new Pages();
    pages.html = builtPage();
    pages.idle = [];
    pages.browser = await chromium.launch({
      executablePath: '/usr/bin/chromium',
      args: ['--no-sandbox', '--js-flags=--expose-gc'],
      ...options,
    });
    return pages;
  }

  // `before` runs in the page with the host at hand, before the page's own script. A plain page is one that was used
  // before, with everything of its former life gone: opening a new one costs more than most tests.
  async open({ before = '', absent = [], viewport, context } = {}) {
    const plain = !viewport && !context;
    const page = (plain && this.idle.pop()) || (await this.newPage(viewport, context));
    page.plain = plain;
    page.faults.length = 0;
    await page.goto('about:blank');
    await page.evaluate(`window.absentCommands = ${JSON.stringify(absent)};\n${standIn}\n{ ${before} }`);
    await page.setContent(this.html);
    // The page has asked everything that it asks at first, so that what comes later is the test's own doing.
    await page.waitForFunction(
      () => host.polls > 0 && host.inFlight === 0 && document.querySelector('#app.app--known'),
    );
    return page;
  }

  async newPage(viewport = { width: 420, height: 560 }, context = {}) {
    const owner = await this.browser.newContext({ viewport, ...context });
    const page = await owner.newPage();
    page.setDefaultTimeout(kDeadline);
    page.faults = [];
    page.on('pageerror', (error) => page.faults.push(String(error)));
    return page;
  }

  async close(page) {
    if (page.plain) this.idle.push(page);
    else await page.context().close();
  }

  async stop() {
    await this.browser.close();
  }
}

// Waits until the page has shown what the host holds now.
export async function settled(page) {
  const polls = await page.evaluate(() => host.polls);
  await page.waitForFunction((before) => host.polls >= before + 2 && host.inFlight === 0, polls);
}

// Changes the host's state and waits until the page shows it.
export async function change(page, script) {
  await page.evaluate(script);
  await settled(page);
}

export const allCalls = (page) => page.evaluate(() => host.calls);
export const callsOf = async (page, name) =>
  (await allCalls(page)).filter(([called]) => called === name).map(([, text]) => text);

// The argument texts of all calls of a command, once there is one.
export async function expectCall(page, name) {
  await page.waitForFunction((wanted) => host.calls.some(([called]) => called === wanted), name);
  return callsOf(page, name);
}

export const forgetCalls = (page) => page.evaluate(() => void (host.calls.length = 0));

// From here on nothing is answered until `letGo`: what a page does before an answer is seen however slow the machine is.
export const holdAnswers = (page) => page.evaluate(() => void (host.holding = true));
export const letGo = (page) => page.evaluate(() => host.letGo());

// The page's time stands still until the test lets some pass: page.clock.runFor(milliseconds), page.clock.resume(). Only
// for a page with a viewport of its own, which no later test gets.
export async function stopClock(page) {
  await page.clock.install();
  await settled(page); // what was waited for by the clock of before is over
  await page.clock.pauseAt(Date.now() + 60_000);
}

export const button = (page, name) => page.getByRole('button', { name, exact: true });

export async function picture(page, name, options = {}) {
  mkdirSync(pictures, { recursive: true });
  // The state line sticks to the top of what is in sight, which in a picture of everything is the top.
  if (options.fullPage) await page.evaluate(() => scrollTo(0, 0));
  await page.screenshot({ path: join(pictures, `${name}.png`), ...options });
}
