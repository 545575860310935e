// Whole programs on a desktop with real input: the built program with the test web-view library in place of the real
// one, its page in Chromium, and windows that tell what reaches them.
//
// VARNELLE_HOME is linux or windows, VARNELLE_BUILD the build folder; tests/program/run.sh sets both.
import { spawnSync } from 'node:child_process';
import {
  copyFileSync,
  cpSync,
  existsSync,
  mkdirSync,
  mkdtempSync,
  readFileSync,
  readdirSync,
  rmSync,
  statSync,
  writeFileSync,
} from 'node:fs';
import { tmpdir } from 'node:os';
import { dirname, join, resolve } from 'node:path';
import { createInterface } from 'node:readline';
import { fileURLToPath } from 'node:url';
import { isDeepStrictEqual } from 'node:util';
import { pause } from './real_hand.mjs';
import {
  kHandMilliseconds,
  kPatienceMilliseconds,
  kQuietMilliseconds,
  setWineRegistryValue,
  start,
  stop,
  waitUntil,
} from './processes.mjs';
import { launchBrowser, startWebViewServer } from './web_view_server.mjs';

export const home = process.env.VARNELLE_HOME ?? 'linux';
export const onWindows = home === 'windows';
export const root = join(dirname(fileURLToPath(import.meta.url)), '../..');
export const buildFolder = resolve(process.env.VARNELLE_BUILD ?? join(root, 'build', home));
export const kMainTitle = 'Varnelle (Plus Version 1.0.1)';
// What the shipped page asks as it starts: application settings, settings, profiles, status.
const kFirstQuestions = 4;
export const kScreenshots = join(buildFolder, 'tests/program');

const exe = onWindows ? '.exe' : '';
const programName = onWindows ? 'Varnelle.exe' : 'varnelle';
const libraryName = onWindows ? 'libwebview.dll' : 'libwebview.so';
export const testPrograms = join(buildFolder, 'tests/program');

// A path as the programs of this home read it.
export const nativePath = (path) => (onWindows ? `Z:${path.replaceAll('/', '\\')}` : path);

// When a file was last written; 0 while there is none.
const timeOfChange = (file) => statSync(file, { throwIfNoEntry: false })?.mtimeMs ?? 0;

// Gives the path of a file among the person's own.
export function putFile(installation, name, text) {
  const file = join(installation.files, name);
  writeFileSync(file, text);
  return file;
}

// How a program of this home is started.
export function startNative(program, args, options) {
  return onWindows ? start('wine', [program, ...args], options) : start(program, args, options);
}

// Runs to its end; gives { code, output }.
export function runNative(program, args, options = {}) {
  const [command, list] = onWindows ? ['wine', [program, ...args]] : [program, args];
  const result = spawnSync(command, list, { encoding: 'utf8', timeout: 60000, ...options });
  return { code: result.status, output: result.stdout, errors: result.stderr };
}

// A folder with the program as shipped, but for its web-view library, and everything it reads and writes.
export function makeInstallation({ library = join(buildFolder, 'tests/webview', libraryName) } = {}) {
  const folder = mkdtempSync(join(tmpdir(), 'varnelle-program-'));
  const dist = join(folder, 'program');
  mkdirSync(dist);
  copyFileSync(join(buildFolder, 'dist', programName), join(dist, programName));
  cpSync(join(buildFolder, 'dist/ui'), join(dist, 'ui'), { recursive: true });
  if (library) copyFileSync(library, join(dist, libraryName));
  for (const name of ['data', 'run', 'home']) mkdirSync(join(folder, name), { mode: 0o700 });
  return {
    folder,
    program: join(dist, programName),
    data: join(folder, 'data/Varnelle'),
    files: join(folder, 'home'), // the person's own; where a file dialog begins on Linux
    env: {
      LOCALAPPDATA: nativePath(join(folder, 'data')),
      XDG_RUNTIME_DIR: join(folder, 'run'),
      HOME: join(folder, 'home'),
      XDG_CONFIG_HOME: join(folder, 'config'),
    },
    remove: () => rmSync(folder, { recursive: true, force: true, maxRetries: 5 }),
  };
}

// Programs started from now on have the installation's data folder. Elsewhere the environment says it.
export function useDataFolder(installation) {
  if (!onWindows) return;
  // Wine gives every program it starts this variable from its registry, whatever the environment says.
  setWineRegistryValue('HKCU\\Volatile Environment', 'LOCALAPPDATA', installation.env.LOCALAPPDATA);
}

// Everything that a test file needs, in one place. Close it at the end. `pageOptions` are those of a browser context.
export async function openWorld(desktopOptions = {}, pageOptions = {}) {
  const { openDesktop, kScreen } = await import(`./desktop_${home}.mjs`);
  const scratch = mkdtempSync(join(tmpdir(), 'varnelle-desktop-'));
  const desktop = await openDesktop(scratch, desktopOptions);
  const browser = await launchBrowser();
  const server = await startWebViewServer(browser, pageOptions);
  const world = new World();
  Object.assign(world, { desktop, browser, server, scratch, screen: kScreen, hand: desktop.hand });
  return world;
}

class World {
  opened = [];
  installations = [];

  // Starts the program and gives it with its page ready to press. `installation` keeps its data for a later start.
  async startProgram({ installation = this.installWithoutWarnings(), args = [] } = {}) {
    const mirror = join(installation.data, 'status.txt');
    const leftBehind = timeOfChange(mirror);
    const child = this.startBare(installation, args);
    const program = new Program(this, child, installation);
    this.opened.push(program);
    const ended = child.ended.then((result) => {
      throw new Error(`the program ended before its window: ${JSON.stringify(result)}`);
    });
    ended.catch(() => {});
    const view = await this.server.next(ended);
    program.view = view;
    program.page = await view.ready;
    // The page is alive once its first poll was answered.
    await waitUntil(() => timeOfChange(mirror) !== leftBehind, 'the first poll').catch(async (error) => {
      throw new Error(`${error.message}; ${await program.situation()}`);
    });
    // The shipped page then shows itself and fits the window. It does not wait long for what it asks first.
    if ((await program.page.locator('#app').count()) > 0) {
      await program.page.locator('#app.app--known').waitFor();
      await waitUntil(() => view.answered >= kFirstQuestions, 'the first answers');
      await program.page.evaluate(() => new Promise((drawn) => setTimeout(drawn)));
    }
    return program;
  }

  // An installation that goes away with what was opened.
  install(options) {
    const installation = makeInstallation(options);
    this.installations.push(installation);
    return installation;
  }

  // One whose page asks nothing before it starts something.
  installWithoutWarnings() {
    const installation = this.install();
    mkdirSync(installation.data);
    writeFileSync(join(installation.data, 'appsettings.txt'), 'showWarnings=0\n');
    return installation;
  }

  // A program whose file dialogs can be typed into. The observer comes first: it must not have the keyboard when a
  // dialog opens.
  async startProgramForDialogs(installation, args = []) {
    const observer = await this.openObserver('Another application');
    const program = await this.startProgram({ installation, args });
    await waitUntil(async () => (await observer.window(kMainTitle)).found, 'the window is there');
    return { program, observer };
  }

  // Starts the program without waiting for a page: a second instance, a console mode.
  startBare(installation, args = [], options = {}) {
    useDataFolder(installation);
    return startNative(installation.program, args, {
      env: {
        ...this.desktop.env,
        ...this.wineEnvironment(),
        ...installation.env,
        ...(onWindows ? { HOME: this.desktop.env.HOME } : {}),
        VARNELLE_TEST_WEBVIEW_PORT: String(this.server.port),
      },
      cwd: installation.folder,
      ...options,
    });
  }

  wineEnvironment() {
    return onWindows
      ? { WINEDEBUG: '-all', WINEDLLOVERRIDES: 'mscoree=;mshtml=;winemenubuilder.exe=;winedbg.exe=' }
      : {};
  }

  async openObserver(title, place = { x: 560, y: 120, width: 420, height: 420 }) {
    const child = startNative(
      join(testPrograms, `observer${exe}`),
      [title, place.x, place.y, place.width, place.height].map(String),
      { env: { ...this.desktop.env, ...this.wineEnvironment() }, stdio: ['pipe', 'pipe', 'inherit'] },
    );
    const observer = new Observer(child, this.hand);
    this.opened.push(observer);
    await waitUntil(() => observer.place, 'the observer shows its window');
    await observer.takeFocus();
    return observer;
  }

  // An application in front, the pointer over it, with nothing told yet.
  async openApplication() {
    const observer = await this.openObserver('Another application');
    await observer.pointAt();
    // A program that is just starting may take the keyboard once more.
    do {
      await observer.takeFocus();
      await observer.settle();
    } while (!observer.focused);
    observer.clear();
    return observer;
  }

  // Ends what was started; its installations stay for another start.
  async closePrograms() {
    let failure;
    for (const entry of this.opened.splice(0).reverse())
      await entry.kill().catch((error) => (failure ??= error));
    if (failure) throw failure;
  }

  async closeOpened() {
    try {
      await this.closePrograms();
    } finally {
      for (const installation of this.installations.splice(0)) installation.remove();
    }
  }

  async close() {
    await this.closeOpened();
    await this.server.close();
    await this.browser.close();
    await this.desktop.close();
    rmSync(this.scratch, { recursive: true, force: true });
  }
}

// A window that tells what reaches it.
export class Observer {
  events = []; // keys, buttons, wheel, moves, in the order of their arrival
  focused = false;
  place = null;

  constructor(child, hand) {
    this.child = child;
    this.hand = hand;
    this.windowReaders = [];
    createInterface({ input: child.stdout }).on('line', (line) => this.receive(JSON.parse(line)));
    child.stdin.on('error', () => {});
  }

  receive(message) {
    if (message.type === 'place') this.place = message;
    else if (message.type === 'focus') this.focused = message.in;
    else if (message.type === 'window') this.windowReaders.shift()?.(message);
    else this.events.push(message);
  }

  say(line) {
    this.child.stdin.write(`${line}\n`);
  }
  // Asked for again and again: a program that is just starting takes the keyboard for its own window.
  async takeFocus() {
    let asked = 0;
    await waitUntil(() => {
      if (!this.focused && Date.now() - asked > 500) {
        this.say('focus');
        asked = Date.now();
      }
      return this.focused;
    }, 'the observer gets the keyboard');
  }
  clear() {
    this.events = [];
  }
  keys() {
    return this.events.filter((event) => event.type === 'key');
  }
  buttons() {
    return this.events.filter((event) => event.type === 'button');
  }
  presses() {
    return this.buttons().filter((event) => event.down);
  }
  center() {
    return { x: this.place.x + this.place.width / 2, y: this.place.y + this.place.height / 2 };
  }
  async pointAt(dx = 0, dy = 0) {
    const { x, y } = this.center();
    await this.hand.moveTo(Math.round(x + dx), Math.round(y + dy));
  }

  // About another program's window.
  window(title) {
    return new Promise((resolve, reject) => {
      this.windowReaders.push(resolve);
      this.child.ended.then(() => reject(new Error('the observer has ended')));
      this.say(`window ${title}`);
    });
  }
  // The same, once it has not changed for a while.
  async windowAtRest(title) {
    let window = await this.window(title);
    for (let since = Date.now(); !window.found || Date.now() - since < kQuietMilliseconds; ) {
      await pause(20);
      const next = await this.window(title);
      if (JSON.stringify(next) !== JSON.stringify(window)) since = Date.now();
      window = next;
    }
    return window;
  }
  // Waits until it rests at an outer place.
  async waitForPlace(title, outer) {
    let last;
    await waitUntil(async () => {
      last = (await this.windowAtRest(title)).outer;
      return isDeepStrictEqual(last, outer);
    }, 'the window rests').catch((error) => {
      throw new Error(`${error.message} at ${JSON.stringify(outer)}; it is at ${JSON.stringify(last)}`);
    });
  }
  closeWindow(title) {
    this.say(`close ${title}`);
  }
  minimiseWindow(title) {
    this.say(`minimise ${title}`);
  }
  maximiseWindow(title, on = true) {
    this.say(`${on ? 'maximise' : 'unmaximise'} ${title}`);
  }

  // Waits until nothing has come for a while.
  async settle() {
    let count = -1;
    await waitUntil(async () => {
      if (count === this.events.length) return true;
      count = this.events.length;
      await pause(kQuietMilliseconds);
      await this.window(''); // an answer comes behind everything that it had to tell
      return false;
    }, 'nothing more comes');
  }

  async kill() {
    await stop(this.child);
  }
}

export class Program {
  constructor(world, child, installation) {
    this.world = world;
    this.child = child;
    this.installation = installation;
  }

  // The mirror of the last poll, as other programs see it; null before there is one.
  status() {
    return this.readMirror('status.txt');
  }
  // While it is being written it is read again, for a time in which every writing ends.
  readMirror(name) {
    const deadline = Date.now() + kPatienceMilliseconds / 10;
    for (;;) {
      try {
        return JSON.parse(readFileSync(join(this.installation.data, name), 'utf8'));
      } catch (error) {
        if (error.code === 'ENOENT' || Date.now() > deadline) return null;
        Atomics.wait(new Int32Array(new SharedArrayBuffer(4)), 0, 0, 1); // a millisecond for the writer
      }
    }
  }
  waitForStatus(condition, what) {
    return waitUntil(() => {
      const status = this.status();
      return status && condition(status) ? status : null;
    }, what).catch(async (error) => {
      const status = JSON.stringify(this.status());
      throw new Error(`${error.message}; the status is ${status}; ${await this.situation()}`);
    });
  }
  // Each of these says that keys or buttons are the program's from now on. The input thread takes hold of them a moment
  // after it was asked to: no hand goes from the mouse to a key as fast as that.
  async waitForCapture(condition = (s) => s.reassigning !== '') {
    await this.waitForStatus(condition, 'the capture waits');
    await pause(kHandMilliseconds);
  }
  async waitForPick() {
    await this.waitForStateText(/Right-click cancels/);
    await pause(kHandMilliseconds);
  }
  async waitForUnlocked() {
    await this.waitForStatus((s) => s.unlocked, 'unlocked');
    await pause(kHandMilliseconds);
  }
  readData(name) {
    return readFileSync(join(this.installation.data, name), 'latin1').replaceAll('\r\n', '\n');
  }
  dataFiles() {
    return readdirSync(this.installation.data);
  }

  // What the page knows, by the page's own commands.
  call(name, ...args) {
    return this.page.evaluate(([command, list]) => window[command](...list), [name, args]);
  }

  button(name, within = this.page) {
    return within.getByRole('button', { name, exact: true });
  }
  eventRows() {
    return this.page.getByRole('listbox', { name: 'Events', exact: true }).getByRole('option');
  }

  // Pressing the page, as a person would.
  panel(name) {
    return this.page.getByRole('region', { name, exact: true });
  }
  async press(name, within = this.page) {
    await this.button(name, within).click();
  }
  async choose(group, option, within = this.page) {
    // The label is what a person clicks; the radio button in it is what a reader finds.
    const radio = within.getByRole('radiogroup', { name: group, exact: true }).getByRole('radio', {
      name: option,
      exact: true,
    });
    await radio.check({ force: true });
  }
  async enter(label, value, within = this.page) {
    const field = within.getByLabel(label, { exact: true });
    await field.fill(String(value));
    await field.press('Enter');
  }
  async toggle(label, on, within = this.page) {
    await within.getByRole('switch', { name: label, exact: true }).setChecked(on, { force: true });
  }
  stateText() {
    return this.page.getByRole('status', { name: 'State' }).innerText();
  }
  waitForStateText(pattern) {
    return waitUntil(async () => pattern.test(await this.stateText()), `the page says ${pattern}`);
  }
  // The settings have arrived in the program.
  waitForSettings(condition, what) {
    return waitUntil(async () => condition(await this.call('getSettings')), what);
  }

  // For the report of a failure that nobody was there to see.
  async situation() {
    const { messageCounts, pageErrors, failure } = this.view;
    const body = await this.page.evaluate(() => document.body?.innerText.slice(0, 200)).catch(String);
    const facts = { ended: this.child.result, threads: this.threadCount(), messageCounts, pageErrors, body };
    return JSON.stringify({
      ...facts,
      failure: failure?.message,
      data: existsSync(this.installation.data) && this.dataFiles(),
    });
  }

  // Threads of the process; 0 when it is gone.
  threadCount() {
    try {
      return readdirSync(`/proc/${this.child.pid}/task`).length;
    } catch {
      return 0;
    }
  }

  // As a person closes a window; gives the exit code.
  async closeWindow(observer) {
    observer.closeWindow(kMainTitle);
    const result = await waitUntil(() => this.child.result, 'the program ends with its window');
    return result.code;
  }

  async kill() {
    await stop(this.child);
    if (this.view?.failure) throw this.view.failure;
  }
}
