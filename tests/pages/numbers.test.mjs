// Bad numbers: explained beside the field, never sent.
import assert from 'node:assert/strict';
import { after, before, describe, test } from 'node:test';
import { allCalls, forgetCalls, importSource, Pages, settled } from './browser.mjs';

let pages;
before(async () => (pages = await Pages.start()));
after(() => pages.stop());

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

describe('a bad number is not sent', { concurrency: 4 }, () => {
  for (const [name, texts] of fields) {
    test(name, async () => {
      const page = await pages.open({
        before: 'Object.assign(host.settings, { rptMode: 0, ksRptMode: 0, tloop: true });',
      });
      await settled(page);
      await forgetCalls(page);
      const field = page.getByRole('textbox', { name, exact: true });
      for (const text of texts) {
        await field.fill(text);
        await field.press('Enter');
        assert.equal(await field.getAttribute('aria-invalid'), 'true', `"${text}"`);
        const id = await field.getAttribute('aria-describedby');
        const told = await page.locator(`#${id}`).innerText();
        assert.match(told, /: .*\.$/, `"${text}" is explained`);
        assert.ok(await page.locator(`#${id}.group__hint--error`).isVisible());
      }
      await field.blur();
      // Longer than the pause after which a typed number counts as meant.
      await settled(page);
      await settled(page);
      assert.deepEqual(await allCalls(page), []);
      // A step from there begins at what the program holds.
      await page.getByRole('button', { name: `${name}: more`, exact: true }).click();
      assert.equal(await field.getAttribute('aria-invalid'), 'false');
      assert.deepEqual(page.faults, []);
      await pages.close(page);
    });
  }
});

test('readings', async () => {
  const { readNumber, stepped } = await importSource('components/numbers.ts');
  const whole = { name: 'Hours', min: 0, max: 1193, decimals: 0 };
  const speed = { name: 'Speed', min: 0.01, max: 1000, decimals: 2 };
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
  assert.equal(readNumber('', whole).error, 'Hours: enter a number, 0 to 1,193.');
  assert.equal(readNumber('1.5', whole).error, 'Hours: a whole number, 0 to 1,193.');
  assert.equal(readNumber('1194', whole).error, 'Hours: 0 to 1,193.');
  assert.equal(readNumber('1,5', speed).error, 'Speed: use a point for decimals.');
  assert.equal(readNumber('fast', speed).error, 'Speed: a number, 0.01 to 1,000.');

  assert.equal(stepped(5, 1, 1, whole), 6);
  assert.equal(stepped(0, 1, -1, whole), 0);
  assert.equal(stepped(1193, 1, 1, whole), 1193);
  assert.equal(stepped(1.1, 0.25, 1, speed), 1.25);
  assert.equal(stepped(1.1, 0.25, -1, speed), 1);
  assert.equal(stepped(0.25, 0.25, -1, speed), 0.01);
  assert.equal(stepped(0.3, 0.1, 1, { ...speed, decimals: 6 }), 0.4, 'no step is lost to binary fractions');
  assert.equal(stepped(530, 100, 1, { ...whole, max: 1e9 }), 600);
});

test('the rate that the settings mean', async () => {
  const { rateText, milliseconds } = await importSource('panels/interval.tsx');
  const of = (hours, minutes, seconds, ms) => ({ hours, minutes, seconds, milliseconds: ms });
  assert.equal(milliseconds(of(1, 2, 3, 4)), 3723004);
  assert.equal(rateText(of(0, 0, 0, 5), 'clicks'), 'Up to 200 clicks/s');
  assert.equal(rateText(of(0, 0, 0, 1), 'clicks'), 'Up to 1,000 clicks/s');
  assert.equal(
    rateText(of(0, 0, 0, 0), 'clicks'),
    'Up to 1,000 clicks/s',
    'nothing is faster than a millisecond',
  );
  assert.equal(rateText(of(0, 0, 0, 3), 'clicks'), 'Up to 333.3 clicks/s');
  assert.equal(rateText(of(0, 0, 0, 5), 'double clicks', 15), 'Up to 50 double clicks/s');
  assert.equal(rateText(of(0, 0, 1, 0), 'keys'), 'Up to 1 keys/s');
  assert.equal(rateText(of(0, 0, 1, 500), 'clicks'), 'One every 1.5 s');
  assert.equal(rateText(of(0, 1, 30, 0), 'clicks'), 'One every 90 s');
  assert.equal(rateText(of(2, 0, 0, 0), 'clicks'), 'One every 120 min');
});
