// The bridge to the program: it keeps no answered promise, unlike the page script of the web-view library.
import { fileURLToPath } from 'node:url';
import { assert, pageTest, settled, startedBrowser, test } from './page_test.mjs';

async function heapAfterCalls(page, session, calls) {
  await page.evaluate(async (count) => {
    for (let done = 0; done < count; done += 1000) {
      const batch = [];
      for (let i = 0; i < 1000; i++) batch.push(window.getSettings());
      await Promise.all(batch);
      host.calls.length = 0;
    }
  }, calls);
  await session.send('HeapProfiler.collectGarbage');
  return (await session.send('Runtime.getHeapUsage')).usedSize;
}

pageTest('a million calls leave no memory behind', {}, async (page) => {
  await page.evaluate(() => (host.commands.getSettings = () => '{"text":"' + 'x'.repeat(200) + '"}'));
  const session = await page.context().newCDPSession(page);
  const early = await heapAfterCalls(page, session, 100_000);
  const late = await heapAfterCalls(page, session, 900_000);
  // 900,000 kept answers would take about 300 MB.
  assert.ok(late - early < 5_000_000, `the heap grew by ${late - early} bytes`);
  assert.equal(
    await page.evaluate(() => Object.keys(host.promises).length),
    0,
    "the library's table is empty",
  );
});

test('the fake host keeps promises as the library does, so that the test above can fail', async () => {
  const browser = await startedBrowser();
  const page = await browser.newPage();
  await page.addInitScript({ path: fileURLToPath(new URL('fake_host.js', import.meta.url)) });
  await page.goto('about:blank');
  await page.evaluate(async () => {
    for (let i = 0; i < 100; i++) await window.getSettings();
  });
  assert.equal(await page.evaluate(() => Object.keys(host.promises).length), 100);
  await page.close();
});

pageTest('resolves an empty and a JSON answer, rejects an error and broken JSON', {}, async (page) => {
  await settled(page);
  const answers = await page.evaluate(async () => {
    const seen = [];
    const ask = async (answer) => {
      host.commands.getSettings = () => answer;
      await window.getSettings().then(
        (value) => seen.push(['resolved', value]),
        (reason) => seen.push(['rejected', String(reason)]),
      );
    };
    await ask(undefined);
    await ask('{"a":[1,null]}');
    await ask('{broken');
    host.setFailing({ getSettings: 'no' });
    await ask('');
    return seen;
  });
  assert.deepEqual(answers, [
    ['resolved', undefined],
    ['resolved', { a: [1, null] }],
    ['rejected', 'Error: The answer could not be read.'],
    ['rejected', 'no'],
  ]);
});
