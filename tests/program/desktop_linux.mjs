// A desktop to test on: an X server, a second X server as a window in it, and a window manager in the second one. XTEST
// on the outer server is real input for every program on the inner one.
import { spawnSync } from 'node:child_process';
import { mkdirSync, writeFileSync } from 'node:fs';
import { join } from 'node:path';
import { fileURLToPath } from 'node:url';
import { start, stop, waitUntil } from './processes.mjs';

const kAwaitWindowManager = fileURLToPath(
  new URL('../../tools/dev/await_window_manager.sh', import.meta.url),
);

export const kScreen = { width: 1024, height: 768 };

// The settings of the user who runs the tests must not matter.
const kWindowManagerSettings = `<?xml version="1.0"?>
<openbox_config xmlns="http://openbox.org/3.4/rc">
  <focus><focusNew>yes</focusNew><followMouse>no</followMouse><raiseOnFocus>yes</raiseOnFocus></focus>
  <placement><policy>Smart</policy></placement>
  <desktops><number>1</number></desktops>
  <keyboard></keyboard>
  <mouse>
    <context name="Client">
      <mousebind button="Left" action="Press"><action name="Focus"/><action name="Raise"/></mousebind>
    </context>
    <context name="Titlebar">
      <mousebind button="Left" action="Drag"><action name="Move"/></mousebind>
    </context>
    <context name="BRCorner">
      <mousebind button="Left" action="Drag"><action name="Resize"/></mousebind>
    </context>
  </mouse>
</openbox_config>
`;

// The command of each window manager; `folder` holds everything that it reads and writes.
const kWindowManagers = {
  openbox: (folder) => ['openbox', ['--sm-disable', '--config-file', join(folder, 'rc.xml')]],
  xfwm4: () => ['xfwm4', ['--compositor=off', '--sm-client-disable'], true],
};
export const windowManagers = Object.keys(kWindowManagers);

// Starts a session bus, on which xfwm4 finds its settings daemon.
async function startBus(env) {
  const child = start('dbus-daemon', ['--session', '--nofork', '--nopidfile', '--print-address=3'], {
    stdio: ['ignore', 'ignore', 'ignore', 'pipe'],
    env,
  });
  let text = '';
  child.stdio[3].on('data', (data) => (text += data));
  await waitUntil(() => text.includes('\n') || child.result, 'the session bus starts');
  child.address = text.trim();
  return child;
}

async function startServer(program, args, env) {
  const child = start(program, [...args, '-nolisten', 'tcp', '-noreset', '-ac', '-displayfd', '3'], {
    stdio: ['ignore', 'ignore', 'ignore', 'pipe'],
    env,
  });
  let text = '';
  child.stdio[3].on('data', (data) => (text += data));
  await waitUntil(() => text.includes('\n') || child.result, `${program} starts`);
  if (!text.includes('\n')) throw new Error(`${program} did not start`);
  child.display = text.trim();
  return child;
}

export async function openDesktop(folder, { windowManager = 'openbox' } = {}) {
  const children = [];
  // Without a bus address GTK starts a session bus that lives as long as the display.
  const base = { ...process.env, WAYLAND_DISPLAY: '', DISPLAY: '', DBUS_SESSION_BUS_ADDRESS: 'disabled:' };
  const size = `${kScreen.width}x${kScreen.height}`;
  try {
    const outer = await startServer('Xvfb', ['-screen', '0', `${size}x24`], base);
    children.push(outer);
    const inner = await startServer('Xephyr', ['-screen', size, '-no-host-grab'], {
      ...base,
      DISPLAY: `:${outer.display}`,
    });
    children.push(inner);
    const env = { ...base, DISPLAY: `:${inner.display}` };
    mkdirSync(folder, { recursive: true });
    writeFileSync(join(folder, 'rc.xml'), kWindowManagerSettings);
    const own = { HOME: folder, XDG_CONFIG_HOME: folder, XDG_CACHE_HOME: folder, XDG_RUNTIME_DIR: folder };
    const managerEnv = { ...env, ...own, NO_AT_BRIDGE: '1' };
    const [program, args, needsBus] = kWindowManagers[windowManager](folder);
    if (needsBus) {
      const bus = await startBus(managerEnv);
      children.push(bus);
      managerEnv.DBUS_SESSION_BUS_ADDRESS = bus.address;
    }
    children.push(start(program, args, { env: managerEnv, stdio: 'ignore' }));
    const taken = spawnSync(kAwaitWindowManager, { env, stdio: 'inherit' });
    if (taken.status !== 0) throw new Error(`${windowManager} did not start`);
    // On a busy machine a late release would make one key press repeat.
    const repeatKeys = (on) => spawnSync('xset', ['r', on ? 'on' : 'off'], { env });
    if (repeatKeys(false).status !== 0) throw new Error('xset does not end the key repeat');
    return {
      env,
      inputDisplay: outer.display,
      repeatKeys, // as desktops do by default
      killServer: () => stop(inner),
      screenshot: (file) => spawnSync('import', ['-window', 'root', file], { env, timeout: 10000 }),
      close: async () => {
        for (const child of children.reverse()) await stop(child);
      },
    };
  } catch (error) {
    for (const child of children.reverse()) await stop(child);
    throw error;
  }
}
