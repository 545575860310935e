// The hotkeys panel: what each key does, which one acts where two share one, the switches, the lock and the reset.
import assert from 'node:assert/strict';
import { after, before, test } from 'node:test';
import {
  button,
  callsOf,
  change,
  expectCall,
  forgetCalls,
  holdAnswers,
  importSource,
  letGo,
  Pages,
  picture,
  settled,
  stopClock,
} from './browser.mjs';

let pages;
before(async () => (pages = await Pages.start()));
after(() => pages.stop());

const rowOf = (page, what) =>
  page.locator('.hotkeys__row').filter({ has: page.getByText(what, { exact: true }) });
const stateText = async (page) =>
  (await page.getByRole('status', { name: 'State' }).innerText()).replace(/\s+/g, ' ').trim();

test('the first match wins, in the order in which the program compares', async () => {
  const { hotkeyInPlaceOf } = await importSource('hotkey-order.ts');
  const ids = ['unlock', 'record', 'play', 'autoclicker', 'keySpammer'];
  const keys = { unlock: 'F1', record: 'F2', play: 'F3', autoclicker: 'F4', keySpammer: 'F5' };
  const winnerOf = (id, hotkeys, lockEnabled = true) => hotkeyInPlaceOf(id, { hotkeys, lockEnabled })?.id;
  for (const id of ids) assert.equal(winnerOf(id, keys), undefined);
  for (let winner = 0; winner < 5; winner++) {
    for (let loser = winner + 1; loser < 5; loser++) {
      const shared = { ...keys, [ids[loser]]: keys[ids[winner]] };
      assert.equal(winnerOf(ids[loser], shared), ids[winner]);
      assert.equal(winnerOf(ids[winner], shared), undefined);
      const unlocked = winnerOf(ids[loser], shared, false);
      assert.equal(unlocked, winner === 0 ? undefined : ids[winner], 'without the lock');
    }
  }
  const all = Object.fromEntries(ids.map((id) => [id, 'A']));
  assert.equal(winnerOf('keySpammer', all), 'unlock');
  assert.equal(winnerOf('keySpammer', all, false), 'record');
  // A report without names tells nothing.
  assert.equal(winnerOf('play', { ...keys, record: '', play: '' }), undefined);
});

test('two hotkeys on one key: the one that never acts says so, also in the state line', async () => {
  const page = await pages.open({ before: "Object.assign(host.status, { hkPlay: 'F8', hkAuto: 'F10' })" });
  await settled(page);
  assert.match(
    await rowOf(page, 'Play').innerText(),
    /F8 is taken: Record comes first, so this never acts\./,
  );
  assert.match(await rowOf(page, 'Clicker').innerText(), /F10 is taken: Lock and unlock comes first/);
  assert.match(await rowOf(page, 'Record').innerText(), /Press to start and stop/);
  assert.equal(await stateText(page), 'Idle F9 press F8 record');
  await picture(page, 'hotkeys-shared', { fullPage: true });
  await change(page, 'host.status.autoClicking = true');
  assert.equal(await stateText(page), 'Clicking No key stops it. The Stop button does.');
  await change(page, 'host.status.lockOn = false');
  assert.equal(await stateText(page), 'Clicking F10 stops it');
  assert.match(await rowOf(page, 'Clicker').innerText(), /Press to start and stop/);
  assert.match(await rowOf(page, 'Lock and unlock').innerText(), /Of no use while the lock is off/);
  await pages.close(page);
});

test('hold and toggle are named, and a click that is lost to a hotkey is told', async () => {
  const page = await pages.open({
    before: "Object.assign(host.settings, { holdAuto: true }); host.status.hkRec = 'Left Mouse';",
  });
  await settled(page);
  assert.match(await rowOf(page, 'Clicker').innerText(), /Hold to run/);
  assert.match(await rowOf(page, 'Key presser').innerText(), /Press to start and stop/);
  assert.match(await rowOf(page, 'Record').innerText(), /Every left click goes to this, in every window\./);
  await pages.close(page);
});

test('the switches: hotkeys on, and the lock', async () => {
  const page = await pages.open();
  await settled(page);
  const on = page.getByRole('switch', { name: 'Hotkeys on' });
  const lock = page.getByRole('switch', { name: 'Hotkey lock' });
  await on.click();
  assert.deepEqual(await expectCall(page, 'setAppSetting'), ['hotkeysEnabled,0']);
  assert.equal(await stateText(page), 'Hotkeys off No key starts or stops anything.');
  await picture(page, 'hotkeys-off');
  await button(page, 'Start clicking').click();
  await button(page, 'Stop everything').waitFor();
  assert.equal(await stateText(page), 'Clicking Hotkeys are off, so no key stops it. The Stop button does.');
  await picture(page, 'clicking-hotkeys-off');
  await button(page, 'Stop everything').click();
  await forgetCalls(page);
  await button(page, 'Turn on the hotkeys').click();
  assert.deepEqual(await expectCall(page, 'setAppSetting'), ['hotkeysEnabled,1']);
  assert.ok(await on.isChecked());
  await forgetCalls(page);
  await lock.click();
  assert.deepEqual(await expectCall(page, 'setAppSetting'), ['hotkeyLock,0']);
  await page.getByText('The hotkey lock is off.').waitFor();
  await lock.click();
  await page.getByText('Unlocked. F10 locks the hotkeys and stops clicking, pressing and playing.').waitFor();
  await pages.close(page);
});

test('the header of the closed panel says whether the hotkeys act', async () => {
  const page = await pages.open({ before: "host.appSettings.minimizedPanels = ['panel-ui']" });
  const summary = page.locator('#panel-ui .panel__summary');
  for (const [script, text] of [
    ['', 'Work in every window'],
    ['host.status.unlocked = false', 'Locked'],
    ['host.status.lockOn = false', 'Work in every window'],
  ]) {
    await change(page, script);
    assert.equal(await summary.innerText(), text);
  }
  await button(page, 'Preferences').click();
  await page.getByRole('switch', { name: 'Hotkeys on' }).click();
  await summary.getByText('Off', { exact: true }).waitFor();
  await pages.close(page);
});

test('the reset asks where keys of the person would go, and not where none would', async () => {
  const page = await pages.open({ before: "host.status.hkAuto = 'Num 5'" });
  await settled(page);
  const height = () => page.evaluate(() => document.documentElement.scrollHeight);
  const before = await height();
  await button(page, 'Reset hotkeys').click();
  await page.getByText('Back to F6, F9, F8, F7 and F10? Undo then asks for your own keys.').waitFor();
  assert.equal(await height(), before, 'the question takes no further room');
  assert.equal(await page.evaluate(() => document.activeElement.innerText), 'Cancel', 'the safe choice');
  await picture(page, 'hotkeys-reset');
  await page.keyboard.press('Escape');
  await button(page, 'Reset hotkeys').waitFor();
  assert.equal(await page.evaluate(() => document.activeElement.innerText.trim()), 'Reset hotkeys');
  assert.deepEqual(await callsOf(page, 'resetHotkeys'), []);
  await button(page, 'Reset hotkeys').click();
  await button(page, 'Reset now').click();
  assert.deepEqual(await expectCall(page, 'resetHotkeys'), ['']);
  await button(page, 'Undo the reset').waitFor();
  await button(page, 'Reset hotkeys').click();
  await page.waitForFunction(() => host.calls.filter(([name]) => name === 'resetHotkeys').length === 2);
  await pages.close(page);
});

test('a reset is undone key by key, as the program takes none that is not pressed', async () => {
  const page = await pages.open({
    before: "Object.assign(host.status, { hkAuto: 'Num 5', hkPlay: 'Mouse 4 (Side)' })",
  });
  await settled(page);
  const undo = button(page, 'Undo the reset');
  assert.equal(await undo.count(), 0, 'nothing to undo before');
  const height = () => page.evaluate(() => document.documentElement.scrollHeight);
  const before = await height();
  await button(page, 'Reset hotkeys').click();
  await button(page, 'Reset now').click();
  await page
    .getByText('The clicker hotkey was Num 5. Undo waits for that key, and for 1 more after that.')
    .waitFor();
  assert.equal(await height(), before, 'it takes no further room');
  await picture(page, 'hotkeys-undo', { fullPage: true });

  await undo.press('Enter');
  assert.deepEqual(await expectCall(page, 'reassignKey'), ['auto']);
  const note = rowOf(page, 'Clicker').getByText('It was Num 5: press that to have it back.');
  await note.waitFor();
  await change(page, "host.status.reassigning = ''"); // by Esc
  await undo.press('Enter');
  await note.waitFor();
  await change(page, "Object.assign(host.status, { hkAuto: 'Num 5', reassigning: '' })");
  await page.getByText('The play hotkey was Mouse 4 (Side). Undo waits for that key.').waitFor();
  assert.deepEqual(await callsOf(page, 'reassignKey'), ['auto', 'auto'], 'a held key is not taken twice');

  await undo.press('Enter');
  await rowOf(page, 'Play').getByText('It was Mouse 4 (Side): press that to have it back.').waitFor();
  assert.deepEqual((await callsOf(page, 'reassignKey')).slice(2), ['play']);
  await change(page, "Object.assign(host.status, { hkPlay: 'Mouse 4 (Side)', reassigning: '' })");
  await page.getByText('Your own keys take the place of some.').waitFor();
  assert.equal(await undo.count(), 0);
  assert.equal(await page.evaluate(() => document.activeElement.innerText.trim()), 'Reset hotkeys');
  await pages.close(page);
});

test('a reset that failed or took nothing has nothing to undo', async () => {
  const page = await pages.open({ before: "host.failing.resetHotkeys = 'no'; host.status.hkAuto = 'Num 5'" });
  await settled(page);
  await button(page, 'Reset hotkeys').click();
  await button(page, 'Reset now').click();
  await page.getByText('Varnelle could not reset the hotkeys').waitFor();
  await settled(page);
  assert.equal(await button(page, 'Undo the reset').count(), 0);
  await pages.close(page);
});

test('a capture says what counts', async () => {
  const page = await pages.open();
  for (const [name, what, text] of [
    ['play', 'Play', /Any key or mouse button: a click counts too\./],
    ['unlock', 'Lock and unlock', /Any key, or a mouse button but the left\./],
  ]) {
    await button(page, `Change the ${name} hotkey`).click();
    await rowOf(page, what).getByText('Esc cancels').waitFor();
    assert.match(await rowOf(page, what).innerText(), text);
    assert.match(await stateText(page), /^Waiting for a key Press the new .* hotkey\. Esc cancels\.$/);
    await change(page, "host.status.reassigning = ''");
    assert.match(await stateText(page), /^Idle/);
  }
  await pages.close(page);
});

test('a press shows at once, before the program has answered', async () => {
  const page = await pages.open({ viewport: { width: 420, height: 560 } });
  const start = button(page, 'Start clicking');
  await stopClock(page); // a press that is not answered for long counts as refused
  await holdAnswers(page);
  await start.click();
  assert.equal(await start.getAttribute('aria-busy'), 'true');
  await start.click();
  await letGo(page);
  await page.clock.resume();
  await button(page, 'Stop clicking').and(page.locator(':not([aria-busy])')).waitFor();
  assert.equal((await callsOf(page, 'startSpammer')).length, 1, 'pressed twice, started once');
  await change(page, "host.events = [{ time: 0, desc: 'Autoclicker ON' }]");
  const play = button(page, 'Play').and(page.locator(':enabled'));
  await play.waitFor();
  await stopClock(page);
  await holdAnswers(page);
  await play.click();
  assert.equal(await play.getAttribute('aria-busy'), 'true');
  await play.click();
  await letGo(page);
  await page.clock.resume();
  await page.getByText('Playing, clicking').waitFor();
  assert.equal((await callsOf(page, 'startPlayback')).length, 1);
  // A program that refuses in silence leaves no button waiting.
  await page.evaluate(() => (host.commands.startKeySpam = () => {}));
  await button(page, 'Start pressing').click();
  await page.waitForFunction(() => document.querySelectorAll('[aria-busy]').length === 0);
  await pages.close(page);
});
