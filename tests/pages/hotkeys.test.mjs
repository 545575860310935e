// The hotkeys panel: what each key does, which hotkey acts when two share a key, the switches, the lock, the reset.
import {
  assert,
  button,
  callsOf,
  expectCall,
  focused,
  forgetCalls,
  importSource,
  pageTest,
  picture,
  settled,
  stateText,
  stopClock,
  test,
  tool,
} from './page_test.mjs';
import { axeFinds } from './page_checks.mjs';

const rowOf = (page, what) =>
  page.locator('.hotkeys__row').filter({ has: page.getByText(what, { exact: true }) });

test('of two hotkeys on one key, the one that the program compares first acts', async () => {
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
  // A report without key names decides nothing.
  assert.equal(winnerOf('play', { ...keys, record: '', play: '' }), undefined);
});

pageTest(
  'says which of two hotkeys on one key never acts, also in the state line',
  { hotkeys: { play: 'F8', autoclicker: 'F10' } },
  async (page) => {
    await settled(page);
    assert.match(await rowOf(page, 'Play').innerText(), /F8 already starts recording\. Choose another key\./);
    assert.match(
      await rowOf(page, 'Autoclicker').innerText(),
      /F10 already locks the hotkeys\. Choose another key\./,
    );
    assert.match(await rowOf(page, 'Record').innerText(), /Press to start and stop/);
    assert.equal(await stateText(page), 'Idle F9 press F8 record');
    await picture(page, 'hotkeys-shared', { fullPage: true });
    await page.host.setStatus({ autoclickerRunning: true });
    assert.equal(await stateText(page), 'Clicking, 0 clicks No key stops it. Use the Stop button.');
    await page.host.setStatus({ lockOn: false });
    assert.equal(await stateText(page), 'Clicking, 0 clicks F10 stops it');
    assert.match(await rowOf(page, 'Autoclicker').innerText(), /Press to start and stop/);
    assert.match(await rowOf(page, 'Lock and unlock').innerText(), /Unused while the lock is off/);
  },
);

pageTest(
  'names the mode of a hotkey, and warns when a hotkey takes every click',
  {
    settings: { hotkeys: { holdAutoclicker: true } },
    hotkeys: { record: 'Left Mouse' },
  },
  async (page) => {
    await settled(page);
    assert.match(await rowOf(page, 'Autoclicker').innerText(), /Hold to run/);
    assert.match(await rowOf(page, 'Key spammer').innerText(), /Press to start and stop/);
    assert.match(await rowOf(page, 'Record').innerText(), /Takes every left click, in every window\./);
  },
);

pageTest('turns the hotkeys and the lock on and off', {}, async (page) => {
  await settled(page);
  const on = page.getByRole('switch', { name: 'Hotkeys on' });
  const lock = page.getByRole('switch', { name: 'Let F10 lock the hotkeys' });
  await on.click();
  assert.deepEqual(await expectCall(page, 'setAppSetting'), ['hotkeysEnabled,0']);
  assert.equal(await stateText(page), 'Hotkeys off Start and stop with the buttons.');
  await picture(page, 'hotkeys-off');
  await button(page, 'Start clicking').click();
  await button(page, 'Stop everything').waitFor();
  assert.equal(await stateText(page), 'Clicking, 0 clicks Hotkeys are off. Use the Stop button.');
  await picture(page, 'clicking-hotkeys-off');
  await button(page, 'Stop everything').click();
  await forgetCalls(page);
  await button(page, 'Turn on the hotkeys').click();
  assert.deepEqual(await expectCall(page, 'setAppSetting'), ['hotkeysEnabled,1']);
  assert.ok(await on.isChecked());
  await forgetCalls(page);
  await lock.click();
  assert.deepEqual(await expectCall(page, 'setAppSetting'), ['hotkeyLock,0']);
  await page.getByText('F10 is an ordinary key.').waitFor();
  await lock.click();
  await page.getByText('Unlocked. Locking also stops clicking, pressing and playing.').waitFor();
});

pageTest('the switch of the lock and the state beside it change together', {}, async (page) => {
  const lock = page.getByRole('switch', { name: 'Let F10 lock the hotkeys' });
  const state = page.getByRole('status', { name: 'Hotkey lock' });
  await page.host.holdAnswers();
  await lock.click();
  assert.equal(await lock.isChecked(), false);
  assert.equal(await state.innerText(), 'F10 is an ordinary key.');
  assert.ok(await button(page, 'Lock now').isDisabled());
  await page.host.releaseAnswers();
  await page.host.setFailing({ setAppSetting: 'read only' });
  await lock.click();
  await page.getByRole('alert').getByText('could not change the preference').waitFor();
  assert.equal(await lock.isChecked(), false);
  assert.equal(await state.innerText(), 'F10 is an ordinary key.');
});

pageTest(
  'the lock is named by its key and stands in one place',
  { hotkeys: { unlock: 'Pause' } },
  async (page) => {
    await page.getByRole('switch', { name: 'Let Pause lock the hotkeys' }).waitFor();
    await button(page, 'Preferences').click();
    await page.getByRole('dialog').waitFor();
    assert.equal(
      await page
        .getByRole('dialog')
        .getByRole('switch', { name: /lock|Hotkeys/i })
        .count(),
      0,
    );
  },
);

pageTest('Lock now locks once and says how to unlock', {}, async (page) => {
  await page.host.setStatus({ autoclickerRunning: true });
  await page.host.holdAnswers();
  await button(page, 'Lock now').click();
  assert.equal(await button(page, 'Lock now').getAttribute('aria-busy'), 'true');
  await page.host.releaseAnswers();
  assert.deepEqual(await expectCall(page, 'lockHotkeys'), ['']);
  await page.getByText('Locked. Only F10 works as a hotkey.').waitFor();
  assert.ok(await button(page, 'Lock now').isDisabled());
  assert.match(await stateText(page), /^Hotkeys locked F10 unlocks them/);
  await picture(page, 'hotkeys-locked');
});

pageTest('has no Lock now in an older program', { absentCommands: ['lockHotkeys'] }, async (page) => {
  await page.getByRole('switch', { name: 'Let F10 lock the hotkeys' }).waitFor();
  assert.equal(await button(page, 'Lock now').count(), 0);
});

pageTest(
  'the header of the collapsed panel says whether the hotkeys act',
  { preferences: { minimizedPanels: ['panel-ui'] } },
  async (page) => {
    const summary = page.locator('#panel-ui .panel__summary');
    for (const [status, text] of [
      [{}, 'Work in every window'],
      [{ unlocked: false }, 'Locked'],
      [{ lockOn: false }, 'Work in every window'],
    ]) {
      await page.host.setStatus(status);
      assert.equal(await summary.innerText(), text);
    }
    await button(page, 'Hotkeys: show settings').click();
    await page.getByRole('switch', { name: 'Hotkeys on' }).click();
    await summary.getByText('Off', { exact: true }).waitFor();
  },
);

const kOwnKeys = {
  hotkeys: { autoclicker: 'Num 5', play: 'Mouse 4 (Side)' },
  hotkeyCodes: { autoclicker: 101, play: 5 },
};
pageTest('resets the hotkeys at once and undoes it at once', kOwnKeys, async (page) => {
  await page.getByText('You have changed some keys.').waitFor();
  await button(page, 'Reset hotkeys').click();
  await page.getByText('All hotkeys have their default keys again.').waitFor();
  assert.deepEqual(await callsOf(page, 'setHotkey'), ['auto,117', 'play,118'], 'only changed keys');
  await page.getByText('Default keys.').waitFor();
  assert.ok(await button(page, 'Reset hotkeys').isDisabled());
  await picture(page, 'hotkeys-reset', { fullPage: true });
  await forgetCalls(page);
  await button(page, 'Undo: All hotkeys have their default keys again.').click();
  await expectCall(page, 'setHotkey', 2);
  assert.deepEqual(await callsOf(page, 'setHotkey'), ['auto,101', 'play,5']);
  assert.deepEqual(await callsOf(page, 'reassignKey'), []);
});

pageTest(
  'offers no undo after a failed reset',
  { ...kOwnKeys, failing: { setHotkey: 'no' } },
  async (page) => {
    await button(page, 'Reset hotkeys').and(page.locator(':enabled')).click();
    await page.getByText('Varnelle could not change the hotkey (no)').waitFor();
    await settled(page);
    assert.equal(await page.getByRole('status', { name: 'Done' }).innerText(), '');
  },
);

// Captures a key for the autoclicker, as the program does it.
async function captureAutoclicker(page, code, name) {
  await button(page, 'Change the autoclicker hotkey').click();
  await expectCall(page, 'reassignKey');
  await settled(page);
  await page.host.set({
    hotkeyCodes: { autoclicker: code },
    hotkeys: { autoclicker: name },
    status: { capture: '' },
  });
}
const keepDialog = (page) => page.getByRole('alertdialog', { name: 'Keep the left button?' });

pageTest('asks whether a captured mouse button stays, and restores the key', {}, async (page) => {
  await captureAutoclicker(page, 1, 'Left Mouse');
  await keepDialog(page).waitFor();
  await page
    .getByText('Left button is now the hotkey for Autoclicker: left clicks no longer reach applications.')
    .waitFor();
  assert.equal(await focused(page), 'Restore F6', 'the safe choice has the focus');
  assert.deepEqual(await axeFinds(page), []);
  await picture(page, 'hotkey-left-button');
  await page.keyboard.press('Enter');
  assert.deepEqual(await expectCall(page, 'setHotkey'), ['auto,117']);
  await keepDialog(page).waitFor({ state: 'detached' });
});

pageTest('restores the key without an answer, and not after Keep', { ownContext: true }, async (page) => {
  await captureAutoclicker(page, 1, 'Left Mouse');
  await keepDialog(page).waitFor();
  await stopClock(page);
  await page.clock.runFor(8000);
  assert.deepEqual(await callsOf(page, 'setHotkey'), []);
  await page.clock.runFor(3000);
  await page.clock.resume();
  assert.deepEqual(await expectCall(page, 'setHotkey'), ['auto,117']);
  await keepDialog(page).waitFor({ state: 'detached' });

  await forgetCalls(page);
  await captureAutoclicker(page, 1, 'Left Mouse');
  await page.getByRole('button', { name: 'Keep', exact: true }).click();
  await keepDialog(page).waitFor({ state: 'detached' });
  await stopClock(page);
  await page.clock.runFor(12_000);
  assert.deepEqual(await callsOf(page, 'setHotkey'), []);
});

pageTest('warns of a modifier as hotkey, with Undo', {}, async (page) => {
  await captureAutoclicker(page, 163, 'Right Ctrl');
  const text =
    'Right Ctrl alone is now the hotkey for Autoclicker. It also acts when you type with Right Ctrl.';
  await page.getByText(text).waitFor();
  await picture(page, 'hotkey-modifier');
  await button(page, `Undo: ${text}`).click();
  assert.deepEqual(await expectCall(page, 'setHotkey'), ['auto,117']);
});

pageTest('asks nothing about a key or a cancelled capture', {}, async (page) => {
  await captureAutoclicker(page, 65, 'A');
  await button(page, 'Change the autoclicker hotkey').click();
  await settled(page);
  await page.host.set({ status: { capture: '' } });
  assert.equal(await page.getByRole('alertdialog').count(), 0);
  assert.equal(await page.getByRole('status', { name: 'Done' }).innerText(), '');
});

pageTest('a capture says which keys and buttons count', {}, async (page) => {
  for (const [name, what, text] of [
    ['play', 'Play', /Any key or mouse button, including a click\./],
    ['unlock', 'Lock and unlock', /Any key, or any mouse button except the left\./],
  ]) {
    await button(page, `Change the ${name} hotkey`).click();
    await rowOf(page, what).getByText('Esc cancels').waitFor();
    assert.match(await rowOf(page, what).innerText(), text);
    assert.match(await stateText(page), /^Waiting for a key Press a key or a mouse button\. Esc cancels\.$/);
    await page.host.setStatus({ capture: '' });
    assert.match(await stateText(page), /^Idle/);
  }
});

pageTest(
  'shows a press at once and ignores a second one until the command returns',
  { ownContext: true },
  async (page) => {
    const start = button(page, 'Start clicking');
    await stopClock(page); // a press without an answer for long counts as rejected
    await page.host.holdAnswers();
    await start.click();
    assert.equal(await start.getAttribute('aria-busy'), 'true');
    await start.click();
    await page.host.releaseAnswers();
    await page.clock.resume();
    await button(page, 'Stop clicking').and(page.locator(':not([aria-busy])')).waitFor();
    assert.equal((await callsOf(page, 'startSpammer')).length, 1, 'two presses start it once');
    await page.host.setEvents([tool(0, 'autoclicker', true)]);
    const play = button(page, 'Play').and(page.locator(':enabled'));
    await play.waitFor();
    await stopClock(page);
    await page.host.holdAnswers();
    await play.click();
    assert.equal(await play.getAttribute('aria-busy'), 'true');
    await play.click();
    await page.host.releaseAnswers();
    await page.clock.resume();
    await page.getByText('Playing, clicking').waitFor();
    assert.equal((await callsOf(page, 'startPlayback')).length, 1);
    // A start that the program ignores leaves no button busy.
    await page.evaluate(() => (host.commands.startKeySpam = () => {}));
    await button(page, 'Start pressing').click();
    await page.waitForFunction(() => document.querySelectorAll('[aria-busy]').length === 0);
  },
);
