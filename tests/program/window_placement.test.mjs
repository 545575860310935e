// The placement of the program's window: restored after a restart, fitted to the page, kept on the screen. On Linux
// under each window manager.
import assert from 'node:assert/strict';
import { spawnSync } from 'node:child_process';
import { existsSync, mkdirSync, readFileSync, writeFileSync } from 'node:fs';
import { dirname, join } from 'node:path';
import { describe } from 'node:test';
import { isDeepStrictEqual } from 'node:util';
import { backend, kMainTitle, kScreenshots, onlyOnLinux, onWindows, test, useFixture } from './harness.mjs';
import { stop, waitUntil } from './processes.mjs';
import { Button, pause } from './xtest_input.mjs';

const { windowManagers, kScreen } = await import(`./desktop_${backend}.mjs`);

// A page that polls and does nothing else.
const kPage = '<!doctype html><title>page</title><script>setInterval(() => getTrackerStatus(), 100)</script>';
const kDefault = { width: 420, height: 560 };

for (const windowManager of windowManagers)
  describe(`under ${windowManager}`, () => windowTests(windowManager));

function windowTests(windowManager) {
  const fixture = useFixture({ desktop: { windowManager } });
  const { input } = fixture;
  let installation;

  // Makes an installation with these saved settings and otherwise as at a first start.
  function install(saved = {}) {
    installation = fixture.install();
    writeFileSync(join(dirname(installation.program), 'ui/index.html'), kPage);
    mkdirSync(installation.data, { recursive: true });
    const lines = Object.entries(saved).map(([key, value]) => `${key}=${value}\n`);
    if (lines.length > 0) writeFileSync(join(installation.data, 'appsettings.txt'), lines.join(''));
  }

  async function startWithObserver(place) {
    const program = await fixture.startProgram({ installation });
    const observer = await fixture.openObserver('Another application', place);
    return { program, observer };
  }

  // Returns the saved placement; null if there is none.
  function saved() {
    const file = join(installation.data, 'appsettings.txt');
    if (!existsSync(file)) return null;
    const values = Object.fromEntries(
      readFileSync(file, 'latin1')
        .split(/\r?\n/)
        .map((line) => line.split('=')),
    );
    if (values.windowMaximized === undefined) return null;
    return {
      left: Number(values.windowX),
      top: Number(values.windowY),
      width: Number(values.windowWidth),
      height: Number(values.windowHeight),
      maximised: values.windowMaximized === '1',
    };
  }

  const look = (observer) => observer.window(kMainTitle);

  const atRest = (observer) => observer.windowAtRest(kMainTitle);

  const isSaved = (outer, maximised = false) =>
    waitUntil(
      () => {
        const now = saved();
        return now && JSON.stringify(now) === JSON.stringify({ ...outer, maximised });
      },
      `saved as ${JSON.stringify(outer)}`,
    ).catch((error) => {
      throw new Error(`${error.message}; it is ${JSON.stringify(saved())}`);
    });

  // Drags with the real pointer in small steps.
  async function drag(from, dx, dy) {
    await input.moveTo(from.x - 1, from.y);
    await input.moveTo(from.x, from.y);
    await pause(50);
    await input.buttonDown(Button.Left);
    await pause(50);
    const steps = 8;
    for (let step = 1; step <= steps; ++step) {
      await input.moveTo(Math.round(from.x + (dx * step) / steps), Math.round(from.y + (dy * step) / steps));
      await pause(15);
    }
    await pause(50);
    await input.buttonUp(Button.Left);
    await input.moveTo(kScreen.width - 5, 5);
  }
  const titleBar = (w) => ({
    x: w.outer.left + Math.round(w.outer.width / 2),
    y: w.outer.top + Math.round((w.y - w.outer.top) / 2),
  });
  const corner = (w) => ({
    x: w.outer.left + w.outer.width - 2,
    y: w.outer.top + w.outer.height - 2,
  });
  // Drags a window; returns it once it stays still again.
  async function dragFrom(observer, from, point, dx, dy) {
    await drag(point, dx, dy);
    await waitUntil(
      async () => !isDeepStrictEqual((await look(observer)).outer, from.outer),
      'the window follows the pointer',
    );
    return atRest(observer);
  }
  // Moves the window until its outer corner is there; returns it once it stays still.
  async function dragTo(observer, left, top) {
    const from = await atRest(observer);
    return dragFrom(observer, from, titleBar(from), left - from.outer.left, top - from.outer.top);
  }

  test('a moved and resized window is restored at every start', async () => {
    install();
    let { program, observer } = await startWithObserver();
    const first = await atRest(observer);
    assert.deepEqual([first.width, first.height], [kDefault.width, kDefault.height]);
    const moved = await dragTo(observer, 150, 70);
    assert.ok(Math.abs(moved.outer.left - 150) <= 10 && Math.abs(moved.outer.top - 70) <= 10);
    await isSaved(moved.outer);
    const resized = await dragFrom(observer, moved, corner(moved), 70, -60);
    assert.ok(resized.outer.width > moved.outer.width + 40, 'it is wider');
    assert.ok(resized.outer.height < moved.outer.height - 30, 'and less high');
    assert.deepEqual([resized.outer.left, resized.outer.top], [moved.outer.left, moved.outer.top]);
    await isSaved(resized.outer);
    assert.equal(await program.closeWindow(observer), 0);
    await observer.kill();
    for (let start = 0; start < 3; ++start) {
      ({ program, observer } = await startWithObserver());
      await observer.waitForPlace(kMainTitle, resized.outer);
      assert.equal(await program.closeWindow(observer), 0);
      await observer.kill();
      await isSaved(resized.outer);
    }
  });

  test('a maximised window is restored maximised and keeps its normal placement', async () => {
    install();
    let { program, observer } = await startWithObserver();
    const moved = await dragTo(observer, 120, 60);
    await isSaved(moved.outer);
    observer.maximiseWindow(kMainTitle);
    await waitUntil(async () => (await look(observer)).maximised, 'maximised');
    await atRest(observer);
    assert.equal(await program.closeWindow(observer), 0);
    await observer.kill();
    await isSaved(moved.outer, true);
    ({ program, observer } = await startWithObserver());
    await waitUntil(async () => {
      const window = await atRest(observer);
      return window.maximised && window.width >= kScreen.width - 10;
    }, 'it starts maximised');
    assert.equal(await program.closeWindow(observer), 0);
    await observer.kill();
    await isSaved(moved.outer, true);
    ({ program, observer } = await startWithObserver());
    await waitUntil(async () => (await look(observer)).maximised, 'and again');
    await atRest(observer);
    observer.maximiseWindow(kMainTitle, false);
    await waitUntil(async () => !(await look(observer)).maximised, 'no longer');
    await observer.waitForPlace(kMainTitle, moved.outer);
  });

  test('after a kill the moved window is restored where it was', async () => {
    install();
    let { program, observer } = await startWithObserver();
    const moved = await dragTo(observer, 200, 90);
    await isSaved(moved.outer);
    program.child.kill('SIGKILL');
    await program.child.ended;
    await observer.kill();
    ({ program, observer } = await startWithObserver());
    await observer.waitForPlace(kMainTitle, moved.outer);
  });

  test('a placement on a missing monitor is ignored', async () => {
    install({ windowX: 5000, windowY: 40, windowWidth: 600, windowHeight: 300, windowMaximized: 0 });
    const { observer } = await startWithObserver();
    const window = await atRest(observer);
    assert.deepEqual([window.width, window.height], [kDefault.width, kDefault.height]);
    assert.ok(window.outer.left >= 0 && window.outer.left < kScreen.width);
  });

  test('a saved size larger than the work area is reduced, and the corner stays', async () => {
    install({ windowX: 40, windowY: 30, windowWidth: 3000, windowHeight: 2000, windowMaximized: 0 });
    const { observer } = await startWithObserver();
    const outer = { left: 40, top: 30, width: kScreen.width, height: kScreen.height };
    await observer.waitForPlace(kMainTitle, outer);
  });

  test('a page that asks for more than the work area receives what fits', async () => {
    install({ windowX: 100, windowY: 150, windowWidth: 400, windowHeight: 400 });
    const { program, observer } = await startWithObserver();
    const before = await waitUntil(async () => {
      const window = await atRest(observer);
      return window.outer.left === 100 && window.outer.top === 150 && window;
    }, 'it is at its saved place');
    const frameHeight = before.outer.height - before.height;
    await program.call('resizeWindow', 420, 900);
    const window = await waitUntil(async () => {
      const now = await atRest(observer);
      const isOnScreen = now.outer.top + now.outer.height <= kScreen.height;
      return isOnScreen && program.view.sizes.at(-1) === `${now.width}x${now.height}` && now;
    }, 'the page has the last size');
    const expected = Math.trunc(((kScreen.height - 20) / (900 + frameHeight)) * 900);
    const asked = program.view.sizes.slice(program.view.sizes.indexOf('420x900'));
    // Windows limits a window's height to about the screen's, so that fitting takes more steps there.
    if (!onWindows) assert.deepEqual(asked, ['420x900', `420x${expected}`]);
    assert.ok(asked.length >= 2);
    assert.equal(asked.at(-1), `420x${window.height}`);
    assert.equal(window.width, 420);
    assert.ok(window.outer.height > kScreen.height / 2);
    assert.ok(window.outer.top >= 0);
    assert.ok(window.outer.top + window.outer.height <= kScreen.height);
    assert.equal(window.outer.left, before.outer.left);
    mkdirSync(kScreenshots, { recursive: true });
    fixture.desktop.screenshot(join(kScreenshots, `window-fitted-${windowManager}.png`));
    // One string works too; a size that makes no sense changes nothing.
    await program.call('resizeWindow', '500,300');
    await waitUntil(async () => (await look(observer)).height === 300, 'the next size');
    const count = program.view.sizes.length;
    for (const size of ['0,300', '300,0', '-5,300', 'wide,300', '300,', '300', ''])
      await program.call('resizeWindow', size);
    assert.equal(program.view.sizes.length, count);
    const last = await atRest(observer);
    assert.deepEqual([last.width, last.height], [500, 300]);
  });

  test('a window partly below the screen moves up when it is resized', async () => {
    install({ windowX: 100, windowY: 60, windowWidth: 400, windowHeight: 400 });
    const { program, observer } = await startWithObserver();
    const low = await dragTo(observer, 100, 500);
    assert.ok(low.outer.top + low.outer.height > kScreen.height, 'it reaches below the screen');
    await program.call('resizeWindow', 400, 300);
    const window = await waitUntil(async () => {
      const now = await atRest(observer);
      return now.height === 300 && now.outer.top + now.outer.height === kScreen.height && now;
    }, 'the new size, down to the lower edge of the screen');
    assert.equal(window.outer.left, low.outer.left);
  });

  test('a window started minimised is not in front, and a second start raises it', async () => {
    const place = { windowX: 90, windowY: 80, windowWidth: 430, windowHeight: 410 };
    install({ startMinimized: 1, ...place, windowMaximized: 1 });
    const { observer } = await startWithObserver();
    const window = await waitUntil(async () => {
      const now = await look(observer);
      return now.minimised && now;
    }, 'it is minimised');
    assert.equal(window.maximised, false);
    assert.equal(window.active, false);
    const second = fixture.startBare(installation);
    try {
      assert.equal((await waitUntil(() => second.result, 'the second one ends')).code, 0);
    } finally {
      await stop(second);
    }
    await waitUntil(async () => !(await look(observer)).minimised, 'it is restored');
    await waitUntil(async () => (await look(observer)).active, 'and in front');
    await observer.waitForPlace(kMainTitle, { left: 90, top: 80, width: 430, height: 410 });
    assert.equal((await look(observer)).maximised, false);
  });

  test('always on top applies from the start', async () => {
    install({ alwaysOnTop: 1 });
    const { program, observer } = await startWithObserver();
    await waitUntil(async () => (await look(observer)).onTop, 'on top');
    await program.call('setAppSetting', 'alwaysOnTop,0');
    await waitUntil(async () => !(await look(observer)).onTop, 'no longer');
  });

  const twoMonitors = onlyOnLinux('Wine on this X server has one monitor');
  test(
    'a window on a second monitor is restored there only if the monitor is present',
    twoMonitors,
    async () => {
      const xrandr = (...args) => spawnSync('xrandr', args, { env: fixture.desktop.env }).status;
      const half = kScreen.width / 2;
      const monitor = (x) => `${half}/200x${kScreen.height}/200+${x}+0`;
      assert.equal(xrandr('--setmonitor', 'left', monitor(0), 'default'), 0);
      assert.equal(xrandr('--setmonitor', 'right', monitor(half), 'none'), 0);
      try {
        install({ windowX: half + 30, windowY: 40, windowWidth: 600, windowHeight: 300 });
        let { program, observer } = await startWithObserver();
        const outer = { left: half + 30, top: 40, width: half, height: 300 }; // its width is cut
        await observer.waitForPlace(kMainTitle, outer);
        assert.equal(await program.closeWindow(observer), 0);
        await observer.kill();
        await isSaved(outer);
        xrandr('--delmonitor', 'right');
        ({ program, observer } = await startWithObserver());
        const window = await atRest(observer);
        assert.deepEqual([window.width, window.height], [kDefault.width, kDefault.height]);
      } finally {
        xrandr('--delmonitor', 'right');
        xrandr('--delmonitor', 'left');
      }
    },
  );
}
