// The server of the test web-view library: one connection for each program, whose page runs in a Chromium that the tests
// drive. Messages of the program take effect in their order.
import { readFileSync } from 'node:fs';
import net from 'node:net';
import { dirname, join } from 'node:path';
import { fileURLToPath } from 'node:url';
import { chromium } from 'playwright-core';
import { kPatienceMilliseconds } from './processes.mjs';

const kScreenOfPages = { width: 1024, height: 768, availWidth: 1024, availHeight: 768 }; // as the desktops have it
const pageScript = readFileSync(join(dirname(fileURLToPath(import.meta.url)), 'library_script.js'), 'utf8');

export async function launchBrowser(options = {}) {
  return chromium.launch({
    executablePath: process.env.VARNELLE_CHROMIUM ?? '/usr/bin/chromium',
    args: ['--no-sandbox', '--disable-gpu', '--disable-dev-shm-usage'],
    ...options,
  });
}

// A program's web view. `page` is the Playwright page; `ready` resolves with it when the first content is there.
class WebView {
  constructor(socket, browser, pageOptions) {
    this.browser = browser;
    this.pageOptions = pageOptions;
    this.socket = socket;
    this.boundNames = [];
    this.initScripts = [];
    this.messageCounts = {};
    this.answered = 0; // calls of the page whose answers have reached it
    this.sizes = []; // every size that the program gave its page, as "420x560"
    this.title = '';
    this.closed = false; // the program's loop has ended
    this.failure = null;
    this.ready = new Promise((resolve, reject) => {
      this.resolveReady = resolve;
      this.rejectReady = reject;
    });
    this.ready.catch(() => {});
    this.queue = Promise.resolve();
    this.ended = new Promise((resolve) => (this.resolveEnded = resolve));
    let rest = '';
    socket.setNoDelay(true);
    socket.setEncoding('utf8');
    socket.on('data', (text) => {
      const lines = (rest + text).split('\n');
      rest = lines.pop();
      for (const line of lines) this.receive(JSON.parse(line));
    });
    socket.on('error', () => {});
    socket.on('close', () => {
      this.rejectReady(new Error('the program is gone'));
      this.queue = this.queue.then(() => this.context?.close().catch(() => {}));
      this.resolveEnded();
    });
  }

  receive(message) {
    this.messageCounts[message.type] = (this.messageCounts[message.type] ?? 0) + 1;
    if (message.type === 'title') this.title = message.text;
    if (message.type === 'size') this.sizes.push(`${message.width}x${message.height}`);
    if (message.type === 'closed') this.closed = true;
    if (message.type === 'create') this.processId = message.pid;
    this.queue = this.queue
      .then(() => this.carryOut(message))
      .catch((error) => {
        // A page that went away takes the rest of the traffic with it; anything else is a fault of the test.
        if (!this.socket.destroyed && !/closed|detached/i.test(error.message)) this.failure ??= error;
      });
  }

  async openPage() {
    const viewport = this.size ?? { width: 420, height: 560 };
    this.context = await this.browser.newContext({ viewport, ...this.pageOptions });
    this.page = await this.context.newPage();
    this.page.setDefaultTimeout(kPatienceMilliseconds);
    this.pageErrors = [];
    this.page.on('pageerror', (error) => this.pageErrors.push(error.message));
    this.page.on('dialog', (dialog) => dialog.accept().catch(() => {}));
    this.devTools = await this.context.newCDPSession(this.page);
    await this.devTools.send('Runtime.enable');
    await this.devTools.send('Runtime.addBinding', { name: '__postToProgram' });
    this.devTools.on('Runtime.bindingCalled', (event) => this.passOn(event.payload));
    await this.page.goto('about:blank');
    // Without a window of its own the page would take its own size for the screen's.
    await this.evaluate(`for (const [name, value] of Object.entries(${JSON.stringify(kScreenOfPages)}))
      Object.defineProperty(screen, name, { get: () => value });`);
  }

  async carryOut(message) {
    switch (message.type) {
      case 'size':
        this.size = { width: message.width, height: message.height };
        await this.page?.setViewportSize(this.size);
        return;
      case 'bind':
        this.boundNames.push(message.text);
        await this.evaluate(`__webview__.onBind(${JSON.stringify(message.text)})`);
        return;
      case 'unbind':
        this.boundNames = this.boundNames.filter((name) => name !== message.text);
        await this.evaluate(`__webview__.onUnbind(${JSON.stringify(message.text)})`);
        return;
      case 'init':
        this.initScripts.push(message.text);
        return;
      case 'html': {
        if (!this.page) await this.openPage();
        // The scripts that run before a page's own stay in the window while its content is replaced.
        await this.evaluate(pageScript);
        for (const name of this.boundNames)
          await this.evaluate(`__webview__.onBind(${JSON.stringify(name)})`);
        for (const script of this.initScripts) await this.evaluate(script);
        await this.page.setContent(message.text, { waitUntil: 'commit' });
        this.resolveReady(this.page);
        return;
      }
      case 'eval':
        await this.evaluate(message.text);
        return;
      case 'return': {
        const result = message.result === '' ? 'undefined' : JSON.stringify(message.result);
        await this.evaluate(
          `__webview__.onReply(${JSON.stringify(message.id)}, ${message.status}, ${result})`,
        );
        ++this.answered;
        return;
      }
    }
  }

  // Without a page a script is dropped, as the real library does.
  async evaluate(script) {
    if (this.page) await this.devTools.send('Runtime.evaluate', { expression: script, silent: true });
  }

  passOn(payload) {
    const { id, method, params } = JSON.parse(payload);
    if (this.boundNames.includes(method)) {
      this.socket.write(`call\t${id}\t${method}\t${JSON.stringify(params)}\n`);
    }
  }
}

// Listens for programs. `next()` gives the web view of the next one that connects; it stops waiting when `ended`,
// a promise, rejects.
export async function startWebViewServer(browser, pageOptions = {}) {
  const waiting = [];
  const arrived = [];
  const views = new Set();
  const server = net.createServer((socket) => {
    const view = new WebView(socket, browser, pageOptions);
    views.add(view);
    view.ended.then(() => views.delete(view));
    const taker = waiting.shift();
    if (taker) taker(view);
    else arrived.push(view);
  });
  await new Promise((resolve) => server.listen(0, '127.0.0.1', resolve));
  return {
    port: server.address().port,
    next: async (ended) => {
      if (arrived.length > 0) return arrived.shift();
      let taker;
      const taken = new Promise((done) => waiting.push((taker = done)));
      try {
        return await (ended ? Promise.race([taken, ended]) : taken);
      } catch (error) {
        // The next program is not this one's.
        if (waiting.includes(taker)) waiting.splice(waiting.indexOf(taker), 1);
        throw error;
      }
    },
    close: async () => {
      for (const view of views) view.socket.destroy();
      await new Promise((resolve) => server.close(resolve));
    },
  };
}
