// Number fields: invalid entries, steps, and the rate that the settings give.
import {
  allCalls,
  assert,
  button,
  chooseProfile,
  describe,
  forgetCalls,
  importSource,
  pageTest,
  settled,
  stopClock,
  test,
  textBox,
} from './page_test.mjs';

const kWhole = ['', ' ', 'abc', '1.5', '-1', '5,3', '1e3', '0x10', '--', '99999999999', '5 ms', 'Infinity'];
const fields = [
  ['Click interval: hours', [...kWhole, '1194']],
  ['Click interval: minutes', [...kWhole, '71583']],
  ['Click interval: seconds', [...kWhole, '4294968']],
  ['Click interval: milliseconds', [...kWhole, '2147483648']],
  ['Number of clicks', [...kWhole, '0', '2147483648']],
  ['Press interval: hours', kWhole],
  ['Press interval: minutes', kWhole],
  ['Press interval: seconds', kWhole],
  ['Press interval: milliseconds', kWhole],
  ['Number of rounds', [...kWhole, '0']],
  ['Playback speed', ['', 'abc', '0', '-1', '1,5', '1e1', '.', '1001', 'NaN', '0.001']],
  ['Pause between rounds', [...kWhole, '2147483648']],
];

describe('an invalid number is explained and not sent', { concurrency: 4 }, () => {
  for (const [name, texts] of fields) {
    pageTest(
      name,
      {
        ownContext: true,
        settings: { autoclicker: { repeatMode: 0 }, keySpammer: { repeatMode: 0 }, macro: { loop: true } },
      },
      async (page) => {
        await page.clock.install();
        await settled(page);
        await forgetCalls(page);
        const field = textBox(page, name);
        for (const text of texts) {
          await field.fill(text);
          await field.press('Enter');
          assert.equal(await field.getAttribute('aria-invalid'), 'true', `"${text}"`);
          const id = await field.getAttribute('aria-describedby');
          const explanation = page.locator(`#${id}.group__hint--error`);
          await explanation.waitFor();
          assert.match(await explanation.innerText(), /^Enter .*\.$|^Use .*\.$/, `"${text}" is explained`);
        }
        await field.blur();
        await page.clock.runFor(1000); // longer than the typing pause after which a number is sent
        assert.deepEqual(await allCalls(page), []);
        // A step starts at the value of the program.
        await button(page, `${name}: more`).click();
        assert.equal(await field.getAttribute('aria-invalid'), 'false');
      },
    );
  }
});

pageTest(
  'replaces an invalid entry when the value changes or the field is disabled',
  { profiles: { names: ['Default Tracking Profile', 'Farm'] }, settings: { autoclicker: { repeatMode: 0 } } },
  async (page) => {
    await settled(page);
    const pause = textBox(page, 'Click interval: milliseconds');
    await pause.fill('abc');
    const times = textBox(page, 'Number of clicks');
    await times.fill('0');
    await times.blur();
    assert.equal(await pause.inputValue(), 'abc', 'the entry stays, so that it can be corrected');
    await page.evaluate(() => host.setSettings({ autoclicker: { intervalMilliseconds: 40 } }));
    await chooseProfile(page, 'Farm');
    await page.waitForFunction(
      () => document.querySelector('[aria-label="Click interval: milliseconds"]').value === '40',
    );
    assert.equal(await pause.getAttribute('aria-invalid'), 'false');
    assert.equal(await times.inputValue(), '0', 'its value is the same');
    await page.locator('#panel-spammer').getByLabel('Until stopped').click();
    await page.waitForFunction(
      () => document.querySelector('[aria-label="Number of clicks"]').value === '10',
    );
  },
);

test('reads and steps numbers', async () => {
  const { readNumber, stepped } = await importSource('components/numbers.ts');
  const whole = { noun: 'hours', min: 0, max: 1193, decimals: 0 };
  const speed = { noun: '', min: 0.01, max: 1000, decimals: 2 };
  for (const [text, value] of [
    ['0', 0],
    ['007', 7],
    [' 12 ', 12],
    ['+3', 3],
    ['1193', 1193],
  ]) {
    assert.deepEqual(readNumber(text, whole), { value, error: '' });
  }
  for (const [text, value] of [
    ['1', 1],
    ['.5', 0.5],
    ['2.', 2],
    ['0.014', 0.01],
    ['1.999', 2],
  ]) {
    assert.deepEqual(readNumber(text, speed), { value, error: '' });
  }
  assert.equal(readNumber('', whole).error, 'Enter a whole number of hours.');
  assert.equal(readNumber('1.5', whole).error, 'Enter a whole number of hours.');
  assert.equal(readNumber('1194', whole).error, 'Enter 0 to 1,193 hours.');
  assert.equal(readNumber('1,5', speed).error, 'Use a decimal point, not a comma.');
  assert.equal(readNumber('fast', speed).error, 'Enter a number from 0.01 to 1,000.');

  assert.equal(stepped(5, 1, 1, whole), 6);
  assert.equal(stepped(0, 1, -1, whole), 0);
  assert.equal(stepped(1193, 1, 1, whole), 1193);
  assert.equal(stepped(1.1, 0.25, 1, speed), 1.25);
  assert.equal(stepped(1.1, 0.25, -1, speed), 1);
  assert.equal(stepped(0.25, 0.25, -1, speed), 0.01);
  assert.equal(stepped(0.3, 0.1, 1, { ...speed, decimals: 6 }), 0.4, 'no step is lost to binary fractions');
  assert.equal(stepped(530, 100, 1, { ...whole, max: 1e9 }), 600);
});

test('computes the rate of the settings, and its limit by the timer', async () => {
  const { timeText } = await importSource('format.ts');
  const { intervalLength, rateLimit, rateText } = await importSource('rate.ts');
  const of = (intervalHours, intervalMinutes, intervalSeconds, intervalMilliseconds) => ({
    intervalHours,
    intervalMinutes,
    intervalSeconds,
    intervalMilliseconds,
  });
  const click = { one: 'click', many: 'clicks', length: 0 };
  const double = { one: 'double click', many: 'double clicks', length: 15 };
  assert.equal(intervalLength(of(1, 2, 3, 4)), 3723004);
  for (const [interval, rate, limit, limited] of [
    [of(0, 0, 0, 50), '20 clicks/s', ''],
    [of(0, 0, 0, 20), '50 clicks/s', ''],
    [of(0, 0, 0, 5), 'Up to 200 clicks/s', 'About 167 to 200 clicks per second.'],
    [of(0, 0, 0, 3), 'Up to 333 clicks/s', 'About 250 to 333 clicks per second.'],
    [of(0, 0, 0, 1), 'Up to 1,000 clicks/s', 'About 500 to 1,000 clicks per second.'],
    [
      of(0, 0, 0, 0),
      'Up to 1,000 clicks/s',
      'The shortest interval is 1 ms: 500 to 1,000 clicks per second.',
      true,
    ],
    [
      of(0, 0, 0, -9),
      'Up to 1,000 clicks/s',
      'The shortest interval is 1 ms: 500 to 1,000 clicks per second.',
      true,
    ],
    [of(0, 0, 1, 0), '1 click/s', ''],
    [of(0, 0, 1, 500), '1 click every 1.5 s', ''],
    [of(0, 2, 5, 0), '1 click every 2 min 5 s', ''],
    [of(2, 0, 0, 0), '1 click every 2 h', ''],
    [of(1, 0, 0, 7), '1 click every 1 h 0.007 s', ''],
  ]) {
    assert.equal(rateText(interval, click), rate);
    assert.deepEqual(rateLimit(interval, click), { text: limit, limited: limited ?? false }, rate);
  }
  assert.equal(rateText(of(0, 0, 0, 1), double), 'Up to 62.5 double clicks/s');
  assert.deepEqual(rateLimit(of(0, 0, 0, 0), double), {
    text: 'A double click takes 15 ms: at most 62.5 per second.',
    limited: true,
  });
  assert.deepEqual(rateLimit(of(0, 0, 0, 15), double), { text: '', limited: false });
  assert.equal(timeText(0), '0 s');
  assert.equal(timeText(3600000), '1 h');
});

pageTest('shows the rate beside the fields, and a limit that the settings exceed', {}, async (page) => {
  const autoclicker = page.locator('#panel-spammer');
  const field = textBox(page, 'Click interval: milliseconds');
  await field.fill('50');
  await autoclicker.getByText('20 clicks/s', { exact: true }).waitFor();
  await autoclicker.getByText('The pause after each click.').waitFor();
  await field.fill('0');
  await autoclicker.getByText('The shortest interval is 1 ms: 500 to 1,000 clicks per second.').waitFor();
  assert.equal(await autoclicker.locator('.group__hint--notable').count(), 1);
  await page.getByLabel('Double').click();
  await autoclicker.getByText('Up to 62.5 double clicks/s').waitFor();
  const keySpammer = page.locator('#panel-keyspam');
  await textBox(page, 'Press interval: minutes').fill('2');
  await keySpammer.getByText('1 key every 2 min 0.005 s').waitFor();
  await page.getByLabel('Together').click();
  await keySpammer.getByText('1 round every 2 min 0.005 s').waitFor();
});

pageTest('Shift and the page keys step ten times as far, and the wheel changes nothing', {}, async (page) => {
  const field = textBox(page, 'Click interval: milliseconds');
  for (const [key, value] of [
    ['Shift+ArrowUp', '10'],
    ['PageUp', '20'],
    ['ArrowUp', '21'],
    ['Shift+ArrowDown', '20'],
    ['PageDown', '10'],
  ]) {
    await field.press(key);
    assert.equal(await field.inputValue(), value, key);
  }
  await field.focus();
  const { x, y } = await field.boundingBox();
  await page.mouse.move(x + 5, y + 5);
  await page.mouse.wheel(0, 120);
  await page.mouse.wheel(0, -360);
  await settled(page);
  assert.equal(await field.inputValue(), '10');
  const more = button(page, 'Click interval: milliseconds: more');
  await more.click({ modifiers: ['Shift'] });
  assert.equal(await field.inputValue(), '20');
});

pageTest(
  'a held stepper repeats, and sends the number where it stops',
  { ownContext: true },
  async (page) => {
    await forgetCalls(page);
    const field = textBox(page, 'Click interval: milliseconds');
    const more = button(page, 'Click interval: milliseconds: more');
    await more.hover();
    await page.mouse.down();
    await page.waitForFunction(() => document.querySelectorAll('#panel-spammer input')[3].value > 9);
    await page.mouse.up();
    await settled(page);
    const shown = await field.inputValue();
    const sent = (await page.evaluate(() => host.calls.map(([, text]) => text))).map(
      (text) => text.split(',')[3],
    );
    assert.equal(sent[0], '6', 'the first step at once');
    assert.equal(sent.at(-1), shown);
    assert.ok(sent.length <= 3, `not every step: ${sent}`);
    await settled(page);
    assert.equal(await field.inputValue(), shown, 'it has ended');
    // A pointer that leaves the held stepper ends it too.
    await more.hover();
    await page.mouse.down();
    await page.mouse.move(5, 5);
    await stopClock(page);
    const left = await field.inputValue();
    await page.clock.runFor(2000);
    assert.equal(await field.inputValue(), left);
    await page.mouse.up();
    // A screen reader presses without a pointer.
    await more.evaluate((element) => element.click());
    assert.equal(await field.inputValue(), String(Number(left) + 1));
  },
);
