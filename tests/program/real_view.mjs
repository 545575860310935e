// The shipped program in the real WebKitGTK view, with the view's inspector open for the test.
import { mkdirSync } from 'node:fs';
import net from 'node:net';
import { join } from 'node:path';
import { Program, buildFolder, testPrograms } from './harness.mjs';
import { waitUntil } from './processes.mjs';
import { openInspector } from './webkit_inspector.mjs';

const kTestView = {
  WEBKIT_DISABLE_SANDBOX_THIS_IS_DANGEROUS: '1',
  WEBKIT_DISABLE_DMABUF_RENDERER: '1',
  GSK_RENDERER: 'cairo',
  LIBGL_ALWAYS_SOFTWARE: '1',
  GTK_A11Y: 'none',
  // Otherwise GTK starts a session bus, which stays for as long as the display.
  DBUS_SESSION_BUS_ADDRESS: 'disabled:',
};

export async function freePort() {
  const server = net.createServer();
  await new Promise((resolve) => server.listen(0, '127.0.0.1', resolve));
  const { port } = server.address();
  await new Promise((resolve) => server.close(resolve));
  return port;
}

// Makes an installation with the real library and an empty data folder.
export function makeRealInstallation(fixture) {
  const installation = fixture.install({ library: join(buildFolder, 'dist/libwebview.so') });
  mkdirSync(installation.data);
  return installation;
}

// Starts the program. The inspector's port has an address in the environment, which the program ignores unless
// `keepInspector` preloads a library that keeps it.
export function startRealProgram(fixture, installation, port, { keepInspector = true } = {}) {
  Object.assign(installation.env, kTestView, { WEBKIT_INSPECTOR_HTTP_SERVER: `127.0.0.1:${port}` });
  if (keepInspector) installation.env.LD_PRELOAD = join(testPrograms, 'libkeep_inspector.so');
  const child = fixture.startBare(installation, [], { stdio: ['ignore', 'ignore', 'ignore'] });
  const program = new Program(fixture, child, installation);
  fixture.opened.push(program);
  return program;
}

// The program with a look into its view, whose page polls.
export async function openRealView(fixture, installation) {
  const port = await freePort();
  const program = startRealProgram(fixture, installation, port);
  await program.waitForStatus(() => true, 'the page has polled');
  const inspector = await waitUntil(() => openInspector(port), 'the inspector finds the page', 60000);
  return { program, inspector };
}

// The pointer on the page's controls. `find` is an expression for an element.
export class PagePointer {
  constructor(fixture, inspector, observer, title) {
    Object.assign(this, { input: fixture.input, inspector, observer, title });
  }

  // Scrolls an element into view; returns its middle on the screen.
  async placeOf(find) {
    await this.inspector.evaluate(`${find}.scrollIntoView({ block: 'center' })`);
    const readRect = () => this.inspector.evaluate(`JSON.stringify(${find}.getBoundingClientRect())`);
    let last = '';
    await waitUntil(async () => last === (last = await readRect()), 'it stays still');
    const rect = JSON.parse(last);
    const window = await this.observer.windowAtRest(this.title);
    const viewHeight = await this.inspector.evaluate('window.innerHeight');
    // The title bar, if the view draws one, is above the page.
    const top = window.y + window.height - viewHeight;
    return {
      x: Math.round(window.x + rect.x + rect.width / 2),
      y: Math.round(top + rect.y + rect.height / 2),
    };
  }

  // Moves the pointer onto an element, again if the page or its window has moved.
  async pointAt(find) {
    await waitUntil(async () => {
      const { x, y } = await this.placeOf(find);
      await this.input.moveTo(x, y);
      const isOn = async () => this.inspector.evaluate(`${find}.matches(':hover')`);
      return waitUntil(isOn, 'the pointer is on it', 2000).catch(() => false);
    }, `the pointer is on ${find}`);
  }
}
