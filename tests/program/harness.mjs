// The shared part of the tests that run the built program on a desktop with real input. The test web-view library
// replaces the real one, the page runs in Chromium, and observer windows report the input that reaches them.
//
// VARNELLE_BACKEND is linux or windows, VARNELLE_BUILD the build folder; tests/program/run.sh sets both.
import { spawnSync } from 'node:child_process';
import {
  appendFileSync,
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
import { after, afterEach, before, test as nodeTest } from 'node:test';
import { isDeepStrictEqual } from 'node:util';
import {
  kPatienceMilliseconds,
  kQuietMilliseconds,
  setWineRegistryValue,
  start,
  stop,
  waitUntil,
} from './processes.mjs';
import { launchBrowser, startWebViewServer } from './web_view_server.mjs';
import { Button, Key, XtestInput, pause } from './xtest_input.mjs';

export const backend = process.env.VARNELLE_BACKEND ?? 'linux';
export const onWindows = backend === 'windows';
export const root = join(dirname(fileURLToPath(import.meta.url)), '../..');
export const buildFolder = resolve(process.env.VARNELLE_BUILD ?? join(root, 'build', backend));
export const kMainTitle = 'Varnelle (Plus Version 1.0.1)';
// The shipped page calls these as it starts: application settings, settings, profiles, status.
const kFirstCalls = 4;
export const kScreenshots = join(buildFolder, 'tests/program');

const exe = onWindows ? '.exe' : '';
const programName = onWindows ? 'Varnelle.exe' : 'varnelle';
const libraryName = onWindows ? 'libwebview.dll' : 'libwebview.so';
export const testPrograms = join(buildFolder, 'tests/program');

// Only a test that hangs reaches this limit.
const kTestLimitMilliseconds = 300000;
const limit = { timeout: kTestLimitMilliseconds };

// node:test's `test` with that limit: test(name, body) or test(name, options, body).
export function test(name, ...rest) {
  const body = rest.pop();
  return nodeTest(name, { ...limit, ...rest[0] }, body);
}
// Options for a test of one backend; `reason` says why the other one has nothing to test.
export const onlyOnLinux = (reason) => ({ skip: onWindows && reason });
export const onlyOnWindows = (reason) => ({ skip: !onWindows && reason });

// Converts a path to the form that programs of this backend read.
export const nativePath = (path) => (onWindows ? `Z:${path.replaceAll('/', '\\')}` : path);

// The preferences by which the page leaves all panels open and starts the tools at once.
const kPlainPage = ['seenWarnings=first-layout', 'countdownSeconds=0'];
function makePagePlain(installation) {
  const file = join(installation.data, 'appsettings.txt');
  const text = existsSync(file) ? readFileSync(file, 'latin1') : '';
  const added = kPlainPage.filter((line) => !new RegExp(`^${line.replace(/=.*/, '=')}`, 'm').test(text));
  if (added.length === 0) return;
  mkdirSync(installation.data, { recursive: true, mode: 0o700 });
  appendFileSync(file, `${text === '' || text.endsWith('\n') ? '' : '\n'}${added.join('\n')}\n`);
}

// Returns when a file was last written; 0 if it does not exist.
const timeOfChange = (file) => statSync(file, { throwIfNoEntry: false })?.mtimeMs ?? 0;

// Writes a file into the user's own folder; returns its path.
export function putFile(installation, name, text) {
  const file = join(installation.files, name);
  writeFileSync(file, text);
  return file;
}

// Starts a program of this backend.
export function startNative(program, args, options) {
  return onWindows ? start('wine', [program, ...args], options) : start(program, args, options);
}

// Runs a program to its end; returns { code, output, errors }.
export function runNative(program, args, options = {}) {
  const [command, list] = onWindows ? ['wine', [program, ...args]] : [program, args];
  const result = spawnSync(command, list, { encoding: 'utf8', timeout: 60000, ...options });
  return { code: result.status, output: result.stdout, errors: result.stderr };
}

// Makes a folder with the shipped program, another web-view library, and everything that the program reads and writes.
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
    files: join(folder, 'home'), // the user's own; a file dialog starts here on Linux
    env: {
      LOCALAPPDATA: nativePath(join(folder, 'data')),
      XDG_RUNTIME_DIR: join(folder, 'run'),
      HOME: join(folder, 'home'),
      XDG_CONFIG_HOME: join(folder, 'config'),
    },
    remove: () => rmSync(folder, { recursive: true, force: true, maxRetries: 5 }),
  };
}

// Programs started from now on use the installation's data folder. On Linux the environment sets it.
export function useDataFolder(installation) {
  if (!onWindows) return;
  // Wine sets this variable of every program from its registry and ignores the environment.
  setWineRegistryValue('HKCU\\Volatile Environment', 'LOCALAPPDATA', installation.env.LOCALAPPDATA);
}

// A desktop with real input, a browser and the server of the test web-view library, for the tests of one file or of one
// `describe` block. Opens before the first test and closes after the last. What a test opened closes after the test,
// unless `keepOpen` is set. `desktop` holds the options of openDesktop, `page` those of a browser context.
export function useFixture({ desktop, page, keepOpen = false } = {}) {
  const fixture = new Fixture();
  before(() => fixture.ready(desktop, page), limit);
  if (!keepOpen) afterEach(() => fixture.closeOpened(), limit);
  after(() => fixture.close(), limit);
  return fixture;
}

// Opens the same outside of a test file. The caller closes it.
export async function openFixture({ desktop, page } = {}) {
  const fixture = new Fixture();
  await fixture.open(desktop, page);
  return fixture;
}

class Fixture {
  input = new XtestInput(); // the real keyboard and mouse
  opened = [];
  installations = [];

  // Opens the fixture once. Hooks of one file may run side by side, so each that needs the fixture waits for it.
  ready(desktopOptions, pageOptions) {
    return (this.opening ??= this.open(desktopOptions, pageOptions));
  }

  async open(desktopOptions = {}, pageOptions = {}) {
    const { openDesktop, kScreen } = await import(`./desktop_${backend}.mjs`);
    this.screen = kScreen;
    this.scratch = mkdtempSync(join(tmpdir(), 'varnelle-desktop-'));
    this.desktop = await openDesktop(this.scratch, desktopOptions);
    await this.input.connect(this.desktop.inputDisplay);
    await this.input.moveTo(kScreen.width - 30, kScreen.height - 30);
    this.browser = await launchBrowser();
    this.server = await startWebViewServer(this.browser, pageOptions);
  }

  // Starts the program; returns it once its page accepts clicks. A given `installation` keeps its data for a later start.
  // All panels are open and no countdown runs, unless the installation is at its `firstStart`.
  async startProgram({ installation = this.installWithoutWarnings(), args = [], firstStart = false } = {}) {
    if (!firstStart) makePagePlain(installation);
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
    // The page runs once its first poll has an answer.
    await waitUntil(() => timeOfChange(mirror) !== leftBehind, 'the first poll').catch(async (error) => {
      throw new Error(`${error.message}; ${await program.situation()}`);
    });
    // The shipped page then shows its panels and fits the window.
    if ((await program.page.locator('#app').count()) > 0) {
      await program.page.locator('#app.app--known').waitFor();
      await waitUntil(() => view.answered >= kFirstCalls, 'the answers to the first calls');
      await program.page.evaluate(() => new Promise((drawn) => setTimeout(drawn)));
    }
    return program;
  }

  // Makes an installation that is removed after the test.
  install(options) {
    const installation = makeInstallation(options);
    this.installations.push(installation);
    return installation;
  }

  // Makes one whose page shows no warning dialogs.
  installWithoutWarnings() {
    const installation = this.install();
    mkdirSync(installation.data);
    writeFileSync(join(installation.data, 'appsettings.txt'), `showWarnings=0\n${kPlainPage.join('\n')}\n`);
    return installation;
  }

  // Starts the program beside another application whose window has the keyboard and the pointer; returns both.
  async startBesideApplication(options) {
    const program = await this.startProgram(options);
    const observer = await this.openApplication();
    await program.waitForInputThread(observer);
    return { program, observer };
  }

  // Starts a program whose file dialogs the test types into. The observer opens first, since it must not take the
  // keyboard from a dialog.
  async startProgramForDialogs(installation, args = []) {
    const observer = await this.openObserver('Another application');
    const program = await this.startProgram({ installation, args });
    await waitUntil(async () => (await observer.window(kMainTitle)).found, 'the window is there');
    return { program, observer };
  }

  // Starts the program without waiting for a page, for example a second instance.
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
    const observer = new Observer(child, this.input);
    this.opened.push(observer);
    await waitUntil(() => observer.place, 'the observer shows its window');
    await observer.takeFocus();
    return observer;
  }

  // Opens an application in front, with the keyboard and the pointer, and clears its events.
  async openApplication() {
    const observer = await this.openObserver('Another application');
    await observer.pointAt();
    // A program that is starting may take the keyboard once more.
    do {
      await observer.takeFocus();
      await observer.settle();
    } while (!observer.focused);
    observer.clear();
    return observer;
  }

  // Ends everything that was started; its installations stay for another start.
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

  // Also closes a fixture that opened only partly.
  async close() {
    await this.closeOpened();
    await this.server?.close();
    await this.browser?.close();
    this.input.close();
    await this.desktop?.close();
    if (this.scratch) rmSync(this.scratch, { recursive: true, force: true });
  }
}

// A window of another application that reports the input that reaches it.
export class Observer {
  events = []; // keys, buttons, wheel, moves, in the order of their arrival
  focused = false;
  place = null;

  constructor(child, input) {
    this.child = child;
    this.input = input;
    this.answerReaders = []; // resolve the questions asked, in order
    createInterface({ input: child.stdout }).on('line', (line) => this.receive(JSON.parse(line)));
    child.stdin.on('error', () => {});
  }

  receive(message) {
    if (message.type === 'place') this.place = message;
    else if (message.type === 'focus') this.focused = message.in;
    else if (message.type === 'window' || message.type === 'grabbed') this.answerReaders.shift()?.(message);
    else this.events.push(message);
  }

  send(line) {
    this.child.stdin.write(`${line}\n`);
  }
  // Sends a question; resolves with its answer.
  ask(line) {
    return new Promise((resolve, reject) => {
      this.answerReaders.push(resolve);
      this.child.ended.then(() => reject(new Error('the observer has ended')));
      this.send(line);
    });
  }
  // Asks several times: a program that is starting takes the keyboard for its own window.
  async takeFocus() {
    let asked = 0;
    await waitUntil(() => {
      if (!this.focused && Date.now() - asked > 500) {
        this.send('focus');
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
    await this.input.moveTo(Math.round(x + dx), Math.round(y + dy));
  }

  // Whether another program has reserved this input: "keyboard" (all of it), "key CODE" or "button NUMBER". Windows has
  // no reservations: its hooks see everything.
  async isGrabbed(input) {
    return (await this.ask(`grabbed ${input}`)).value;
  }
  waitUntilGrabbed(input, grabbed = true) {
    return waitUntil(
      async () => onWindows || (await this.isGrabbed(input)) === grabbed,
      `${input} is reserved: ${grabbed}`,
    );
  }

  // Describes another program's window.
  window(title) {
    return this.ask(`window ${title}`);
  }
  // Describes it once it has not changed for a while.
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
  // Waits until the window stays at these outer bounds.
  async waitForPlace(title, outer) {
    let last;
    await waitUntil(async () => {
      last = (await this.windowAtRest(title)).outer;
      return isDeepStrictEqual(last, outer);
    }, 'the window stays still').catch((error) => {
      throw new Error(`${error.message} at ${JSON.stringify(outer)}; it is at ${JSON.stringify(last)}`);
    });
  }
  closeWindow(title) {
    this.send(`close ${title}`);
  }
  // From now on it reads its input as fast as it can and reports none of it.
  async mute() {
    this.send('mute');
    await this.window('');
  }
  // Windows: what the system does when the user logs off.
  endSession(title) {
    this.send(`endsession ${title}`);
  }
  minimiseWindow(title) {
    this.send(`minimise ${title}`);
  }
  maximiseWindow(title, on = true) {
    this.send(`${on ? 'maximise' : 'unmaximise'} ${title}`);
  }

  // Waits until no input has arrived for a while.
  async settle() {
    let count = -1;
    await waitUntil(async () => {
      if (count === this.events.length) return true;
      count = this.events.length;
      await pause(kQuietMilliseconds);
      await this.window(''); // its answer follows all events so far
      return false;
    }, 'no more input arrives');
  }

  async kill() {
    await stop(this.child);
  }
}

export class Program {
  constructor(fixture, child, installation) {
    this.fixture = fixture;
    this.child = child;
    this.installation = installation;
  }

  // Returns the mirror of the last poll, as other programs read it; null before the first poll.
  status() {
    return this.readMirror('status.txt');
  }
  // Reads the mirror again while the program writes it.
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
  // Waits until the input thread has reserved the hotkeys. F8 records in every session of these tests.
  async waitForInputThread(observer) {
    const { hotkeysEnabled } = await this.call('getAppSettings');
    if (hotkeysEnabled) await observer.waitUntilGrabbed(`key ${Key.F8}`);
  }
  // Wait until the program takes the next key or button: the page shows it, and the input thread has reserved it.
  async waitForCapture(observer, condition = (s) => s.reassigning !== '') {
    await this.waitForStatus(condition, 'the capture waits for a key');
    await observer.waitUntilGrabbed('keyboard');
  }
  async waitForPick(observer) {
    await this.waitForStateText(/right click cancels/);
    await observer.waitUntilGrabbed(`button ${Button.Left}`);
    await observer.waitUntilGrabbed(`button ${Button.Right}`);
  }
  async waitForUnlocked(observer) {
    await this.waitForStatus((s) => s.unlocked, 'unlocked');
    await observer.waitUntilGrabbed(`key ${Key.F6}`);
  }
  readData(name) {
    return readFileSync(join(this.installation.data, name), 'latin1').replaceAll('\r\n', '\n');
  }
  dataFiles() {
    return readdirSync(this.installation.data);
  }

  // Calls a command of the program as the page does.
  call(name, ...args) {
    return this.page.evaluate(([command, list]) => window[command](...list), [name, args]);
  }

  button(name, within = this.page) {
    return within.getByRole('button', { name, exact: true });
  }
  eventRows() {
    return this.page.getByRole('listbox', { name: 'Events', exact: true }).getByRole('option');
  }

  // Presses a control of the page as a user does.
  panel(name) {
    return this.page.getByRole('region', { name, exact: true });
  }
  async press(name, within = this.page) {
    await this.button(name, within).click();
  }
  async choose(group, option, within = this.page) {
    // A user clicks the label; the accessible role is on the radio button inside.
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
  // The list box with the profiles.
  profileBox() {
    return this.page.getByRole('combobox', { name: 'Profile', exact: true });
  }
  profileOptions() {
    return this.page.getByRole('listbox', { name: 'Profile', exact: true }).getByRole('option');
  }
  async chooseProfile(name) {
    await this.profileBox().click();
    await this.profileOptions().getByText(name, { exact: true }).click();
  }
  // Opens the list, reads the names, and closes it again.
  async profileNames() {
    await this.profileBox().click();
    const names = await this.profileOptions().allInnerTexts();
    await this.profileBox().press('Escape');
    return names;
  }
  async toggle(label, on, within = this.page) {
    await within.getByRole('switch', { name: label, exact: true }).setChecked(on, { force: true });
  }
  stateText() {
    return this.page.getByRole('status', { name: 'State' }).innerText();
  }
  waitForStateText(pattern) {
    return waitUntil(async () => pattern.test(await this.stateText()), `the page shows ${pattern}`);
  }
  // Waits until the program has settings that meet the condition.
  waitForSettings(condition, what) {
    return waitUntil(async () => condition(await this.call('getSettings')), what);
  }

  // Describes the program for the message of a failure.
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

  // Returns the number of the process's threads; 0 after its end.
  threadCount() {
    try {
      return readdirSync(`/proc/${this.child.pid}/task`).length;
    } catch {
      return 0;
    }
  }

  // Closes the window as a user does; returns the exit code.
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
