// What the page's own policy refuses, beside what the program refuses: other scripts, connections, frames, forms, drops.
import http from 'node:http';
import { after, before } from 'node:test';
import { assert, closePage, openPage, pageTest, settled, test } from './page_test.mjs';

let page;
let tools; // acts as a script that got into the page, and drags
let server;
let address;
const requests = [];

before(async () => {
  server = http.createServer((request, response) => {
    requests.push(request.url);
    response.setHeader('Access-Control-Allow-Origin', '*');
    response.end('<p>other</p>');
  });
  await new Promise((resolve) => server.listen(0, '127.0.0.1', resolve));
  address = `http://127.0.0.1:${server.address().port}`;
  page = await openPage({ ownContext: true });
  tools = await page.context().newCDPSession(page);
  await page.evaluate(() => {
    window.own = true;
    window.refusals = [];
    document.addEventListener('securitypolicyviolation', (event) => refusals.push(event.effectiveDirective));
  });
});
after(async () => {
  await closePage(page);
  server?.closeAllConnections();
  server?.close();
});

// Each is run in the page, where `url` is the address of another one, and the directive that refuses it.
const attempts = {
  'a script in an element': ['script-src-elem', "add('script').textContent = 'window.ran = true'"],
  'a script from elsewhere': ['script-src-elem', "add('script').src = url"],
  'a script in an attribute': ['script-src-attr', "add('p').setAttribute('onclick', 'window.ran = true')"],
  'a script in an address': [
    'script-src-elem',
    "{ const link = add('a'); link.href = 'javascript:window.ran = true'; link.click(); }",
  ],
  'a text run as a script': ['script-src', "setTimeout('window.ran = true')"],
  'a module': ['script-src-elem', 'import(url).catch(() => {})'],
  'a worker': ['worker-src', "new Worker(URL.createObjectURL(new Blob(['postMessage(1)'])))"],
  'a request': ['connect-src', 'fetch(url).catch(() => {})'],
  'a request in parting': ['connect-src', 'navigator.sendBeacon(url)'],
  'a socket': ['connect-src', "new WebSocket(url.replace('http', 'ws'))"],
  'a picture from elsewhere': ['img-src', 'new Image().src = url'],
  'a style sheet from elsewhere': [
    'style-src-elem',
    "{ const sheet = add('link'); sheet.rel = 'stylesheet'; sheet.href = url; }",
  ],
  'a frame': ['frame-src', "add('iframe').src = url"],
  'an object': ['object-src', "add('object').data = url"],
  'a base address': [
    'base-uri',
    "document.head.append(Object.assign(document.createElement('base'), { href: url }))",
  ],
  'a form': ['form-action', "{ const form = add('form'); form.action = url; form.submit(); }"],
};

for (const [what, [directive, script]] of Object.entries(attempts)) {
  test(`the policy refuses ${what}`, async () => {
    await page.evaluate(() => void (refusals.length = 0));
    const run = `{ const url = ${JSON.stringify(`${address}/${what.replaceAll(' ', '-')}`)};
      const add = (name) => document.body.appendChild(document.createElement(name)); ${script} }`;
    await tools.send('Runtime.evaluate', { expression: run, allowUnsafeEvalBlockedByCSP: false });
    await page.waitForFunction((wanted) => refusals.includes(wanted), directive);
    assert.equal(await page.evaluate(() => window.ran), undefined);
    assert.deepEqual(requests, []);
  });
}

const dragged = {
  'a link': { mimeType: 'text/uri-list', data: 'http://127.0.0.1/' },
  'a text': { mimeType: 'text/plain', data: 'text' },
};

for (const [what, item] of Object.entries(dragged)) {
  pageTest(`the page takes no drop of ${what}`, { ownContext: true }, async (fresh) => {
    const drag = await fresh.context().newCDPSession(fresh);
    await fresh.evaluate(() => {
      window.own = true;
      window.drags = [];
      for (const type of ['dragenter', 'dragover', 'drop'])
        window.addEventListener(type, (event) =>
          drags.push([type, event.defaultPrevented, event.dataTransfer.dropEffect].join(' ')),
        );
    });
    // Over a field, which takes a text by itself.
    const { x, y } = await fresh.locator('input[type=text]:visible').first().boundingBox();
    const data = { items: [item], files: [], dragOperationsMask: 1 };
    for (const type of ['dragEnter', 'dragOver', 'drop'])
      await drag.send('Input.dispatchDragEvent', { type, x: x + 3, y: y + 3, data });
    await fresh.waitForFunction(() => drags.some((each) => each.startsWith('dragover')));
    await settled(fresh);
    const drags = await fresh.evaluate(() => drags);
    assert.ok(drags.includes('dragover true none'), drags.join());
    assert.ok(
      drags.every((each) => each.includes(' true ')),
      drags.join(),
    );
    assert.equal(await fresh.evaluate(() => window.own && location.href), 'about:blank');
  });
}

const watchRefusals = () =>
  document.addEventListener('securitypolicyviolation', (event) => (host.refused = event.violatedDirective));
pageTest('the policy refuses nothing of the page itself', { before: watchRefusals }, async (fresh) => {
  assert.equal(await fresh.evaluate(() => host.refused), undefined);
});
