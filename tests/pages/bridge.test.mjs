// The library's page script keeps every answered promise; the page's bridge must not.
import assert from 'node:assert/strict';
import { after, before, test } from 'node:test';
import { Pages, settled } from './browser.mjs';

let pages;
before(async () => (pages = await Pages.start()));
after(() => pages.stop());

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

test('a million calls leave nothing behind', async () => {
  const page = await pages.open();
  await page.evaluate(() => (host.commands.getSettings = () => '{"text":"' + 'x'.repeat(200) + '"}'));
  const session = await page.context().newCDPSession(page);
  const early = await heapAfterCalls(page, session, 100_000);
  const late = await heapAfterCalls(page, session, 900_000);
  // Nine hundred thousand kept answers would be some 300 MB.
  assert.ok(late - early < 5_000_000, `the heap grew by ${late - early} bytes`);
  assert.equal(
    await page.evaluate(() => Object.keys(host.promises).length),
    0,
    "the library's table stays empty",
  );
  await pages.close(page);
});

test('the stand-in host keeps promises as the library does, so the test above can fail', async () => {
  const page = await pages.browser.newPage();
  const { readFileSync } = await import('node:fs');
  await page.addInitScript(readFileSync(new URL('stand-in.mjs', import.meta.url), 'utf8'));
  await page.goto('about:blank');
  await page.evaluate(async () => {
    for (let i = 0; i < 100; i++) await window.getSettings();
  });
  assert.equal(await page.evaluate(() => Object.keys(host.promises).length), 100);
  await page.close();
});

test('answers: nothing, JSON, a refusal, a text that is no JSON, an unknown call', async () => {
  const page = await pages.open();
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
    host.failing.getSettings = 'no';
    await ask('');
    return seen;
  });
  assert.deepEqual(answers, [
    ['resolved', undefined],
    ['resolved', { a: [1, null] }],
    ['rejected', 'Error: The answer could not be read.'],
    ['rejected', 'no'],
  ]);
  await pages.close(page);
});
