// No document but the program's own gets into the real WebKitGTK view. The page here has no security policy and cancels
// nothing, so that what is refused is refused by the program alone.
import assert from 'node:assert/strict';
import { mkdtempSync, rmSync, writeFileSync } from 'node:fs';
import http from 'node:http';
import { tmpdir } from 'node:os';
import { dirname, join } from 'node:path';
import { createInterface } from 'node:readline';
import { after, before } from 'node:test';
import { pathToFileURL } from 'node:url';
import { kMainTitle, onlyOnLinux, onWindows, test, testPrograms, useFixture } from './harness.mjs';
import { start, stop, waitUntil } from './processes.mjs';
import { Button, pause } from './xtest_input.mjs';
import { PagePointer, freePort, makeRealInstallation, openRealView, startRealProgram } from './real_view.mjs';

const options = onlyOnLinux('WebView2 does not run under Wine');
const kStuckMilliseconds = 20000;

// Without WebView2 there is nothing to open on Wine.
const fixture = onWindows ? null : useFixture({ keepOpen: true });
let installation;
let folder;
let server;
let address; // of the other page
let requests = []; // what was asked of its server
let inspector;
let observer;
let pointer;

// What every document of somebody else would do first.
const foreignPage = () => `<!doctype html><img src="${address}/loaded"><script>
  (window.getTrackerStatus ?? (() => new Promise(() => {})))().then((status) => {
    new Image().src = '${address}/called?' + encodeURIComponent(status);
  });
</script>`;

const barePage = () => `<!doctype html><title>bare</title>
<body style="margin:0;background:#fff;height:500px">
<a id="link" style="display:block;padding:20px" href="${address}/link">link</a>
<script>
  window.own = true;
  // Its poll, as the program's page does it.
  setInterval(() => window.getTrackerStatus(), 100);
</script></body>`;

before(
  async () => {
    if (onWindows) return;
    folder = mkdtempSync(join(tmpdir(), 'varnelle-foreign-'));
    server = http.createServer((request, response) => {
      requests.push(request.url);
      response.setHeader('Content-Type', 'text/html');
      response.end(foreignPage());
    });
    await new Promise((resolve) => server.listen(0, '127.0.0.1', resolve));
    address = `http://127.0.0.1:${server.address().port}`;
    await fixture.ready();
    installation = makeRealInstallation(fixture);
    writeFileSync(join(dirname(installation.program), 'ui/index.html'), barePage());
    ({ inspector } = await openRealView(fixture, installation));
    observer = await fixture.openObserver('Another application', { x: 760, y: 120, width: 200, height: 400 });
    pointer = new PagePointer(fixture, inspector, observer, kMainTitle);
  },
  { timeout: 240000 },
);
after(
  async () => {
    inspector?.close();
    server?.closeAllConnections();
    server?.close();
    if (folder) rmSync(folder, { recursive: true, force: true });
  },
  { timeout: 60000 },
);

async function inPage(expression) {
  const answer = inspector.evaluate(expression);
  const stuck = pause(kStuckMilliseconds).then(() => {
    throw new Error(`no answer to ${expression}; requests: ${requests}`);
  });
  return Promise.race([answer, stuck]);
}

// The page is still the program's own, its commands are answered, and nobody was asked for another. A navigation is
// decided on the way that calls take, so after some calls it is over.
async function expectOnlyOurs() {
  for (let i = 0; i < 30; ++i) {
    assert.match(await inPage('window.getTrackerStatus().then(JSON.stringify)'), /"state":"Idle"/);
  }
  assert.deepEqual(await inPage('JSON.stringify([window.own, location.href])'), '[true,"about:blank"]');
  assert.deepEqual(requests, []);
}

// Each is run in the page; URL is the address of another one.
const attempts = {
  'location set by script': 'location.href = URL',
  'location replaced by script': 'location.replace(URL)',
  'a reload': 'location.reload()',
  'a data address': `location.href = 'data:text/html,<script>new Image().src="' + URL + '"</' + 'script>'`,
  'a new window': `window.open(URL); window.open(URL, '_blank', 'noopener'); window.open(URL, '_self')`,
  'an empty new window': `window.opened = window.open(); if (opened) opened.location = URL`,
  'a form': `{
    const form = document.body.appendChild(document.createElement('form'));
    form.action = URL;
    form.submit();
    form.method = 'post';
    form.target = '_blank';
    form.submit();
  }`,
  'a frame': `for (const name of ['iframe', 'embed', 'object', 'frame']) {
    const frame = document.createElement(name);
    frame.src = frame.data = URL;
    document.body.append(frame);
  }`,
  'a frame of a text that loads another': `{
    const frame = document.createElement('iframe');
    frame.srcdoc = '<iframe src="' + URL + '"></iframe>';
    document.body.append(frame);
  }`,
  'a refresh by the document': `{
    const meta = document.createElement('meta');
    meta.httpEquiv = 'refresh';
    meta.content = '0; url=' + URL;
    document.head.append(meta);
  }`,
  'a download': `{
    const link = document.body.appendChild(document.createElement('a'));
    link.href = URL;
    link.download = 'file.html';
    link.click();
  }`,
  'a link in a new window': `{
    const link = document.body.appendChild(document.createElement('a'));
    link.href = URL;
    link.target = '_blank';
    link.click();
  }`,
};

test('the page has its commands', options, async () => {
  await waitUntil(() => inPage('window.own'), 'the page is there');
  await expectOnlyOurs();
});

for (const [what, script] of Object.entries(attempts)) {
  test(`refuses ${what}`, options, async () => {
    const url = JSON.stringify(`${address}/${what.replaceAll(' ', '-')}`);
    await inPage(`setTimeout(() => { ${script.replaceAll('URL', url)} }), 0`);
    await expectOnlyOurs();
  });
}

for (const button of ['Left', 'Middle']) {
  test(`refuses a click on a link with the button ${button}`, options, async () => {
    await inPage(`void document.getElementById('link').addEventListener('mouseup',
      (event) => (window.clicked = event.button), { once: true })`);
    await pointer.pointAt('document.getElementById("link")');
    await fixture.input.click(Button[button]);
    await waitUntil(async () => (await inPage('window.clicked')) !== undefined, 'the click arrives');
    await inPage('delete window.clicked');
    await expectOnlyOurs();
  });
}

// Drags from a window of its own onto the middle of the page; gives what became of it.
async function drop(text) {
  const source = start(join(testPrograms, 'drag_source'), ['20', '20', text], {
    env: fixture.desktop.env,
    stdio: ['ignore', 'pipe', 'inherit'],
  });
  const lines = [];
  createInterface({ input: source.stdout }).on('line', (line) => lines.push(line));
  try {
    await waitUntil(() => lines.includes('ready'), 'the source shows its window');
    const to = await pointer.placeOf('document.body');
    await fixture.input.moveTo(40, 40);
    await fixture.input.buttonDown(Button.Left);
    for (let step = 1; step <= 10; ++step) {
      await fixture.input.moveTo(
        40 + Math.round(((to.x - 40) * step) / 10),
        40 + Math.round(((to.y - 40) * step) / 10),
      );
      await pause(20);
    }
    await waitUntil(() => inPage('window.draggedOver === true'), 'the page sees the drag');
    await fixture.input.buttonUp(Button.Left);
    return await waitUntil(() => lines.find((line) => line !== 'ready'), 'the drag ends');
  } finally {
    await stop(source);
  }
}

for (const kind of ['link', 'html file']) {
  test(`refuses a dropped ${kind}`, options, async () => {
    const file = join(folder, 'page.html');
    writeFileSync(file, foreignPage());
    await inPage(`window.draggedOver = false,
      addEventListener('dragover', () => (window.draggedOver = true), { once: true })`);
    const result = await drop(kind === 'link' ? `${address}/dropped` : pathToFileURL(file).href);
    assert.notEqual(result, 'nobody');
    await expectOnlyOurs();
  });
}

// Another program could read and press everything through it.
test('opens no inspector for another program', options, async () => {
  const closed = makeRealInstallation(fixture);
  const port = await freePort();
  const program = startRealProgram(fixture, closed, port, { keepInspector: false });
  try {
    await program.waitForStatus(() => true, 'the page has polled');
    await assert.rejects(
      new Promise((resolve, reject) => http.get({ host: '127.0.0.1', port }, resolve).on('error', reject)),
      { code: 'ECONNREFUSED' },
    );
  } finally {
    await program.kill();
    closed.remove();
  }
});

// What takes longer than a call, such as the loading of a dropped file, has had its time.
test('still shows its own page at the end', options, expectOnlyOurs);
