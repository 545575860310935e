// Every control, and the exact argument text that the program gets from it.
import assert from 'node:assert/strict';
import { after, before, describe, test } from 'node:test';
import {
  button,
  callsOf,
  change,
  expectCall,
  forgetCalls,
  holdAnswers,
  letGo,
  Pages,
  settled,
  stopClock,
} from './browser.mjs';

let pages;
before(async () => (pages = await Pages.start()));
after(() => pages.stop());

const kMacro = `host.events = [{ time: 0, desc: 'Abs Move to X:1 Y:2' }, { time: 1.5, desc: 'Keyboard VK: 65 (DOWN)' },
  { time: 2, desc: 'Keyboard VK: 65 (UP)' }];`;
const panel = (page, id) => page.locator(`#panel-${id}`);

async function fill(page, name, text) {
  const field = page.getByRole('textbox', { name, exact: true });
  await field.fill(text);
  await field.press('Enter');
}

// One row a control: what is done, and the one call that follows.
const rows = [
  ['start clicking', (p) => button(p, 'Start clicking').click(), 'startSpammer', ''],
  ['stop clicking', (p) => button(p, 'Stop clicking').click(), 'stopSpammer', '', 'host.status.autoClicking = true'],
  ['click hours', (p) => fill(p, 'Click interval: hours', '2'), 'updateSpammer', '2,0,0,5,0,0,1,10,0'],
  ['click minutes', (p) => fill(p, 'Click interval: minutes', '3'), 'updateSpammer', '0,3,0,5,0,0,1,10,0'],
  ['click seconds', (p) => fill(p, 'Click interval: seconds', '4'), 'updateSpammer', '0,0,4,5,0,0,1,10,0'],
  ['click ms', (p) => fill(p, 'Click interval: milliseconds', '250'), 'updateSpammer', '0,0,0,250,0,0,1,10,0'],
  ['click ms: more', (p) => button(p, 'Click interval: milliseconds: more').click(), 'updateSpammer', '0,0,0,6,0,0,1,10,0'],
  ['click ms: less', (p) => button(p, 'Click interval: milliseconds: less').click(), 'updateSpammer', '0,0,0,4,0,0,1,10,0'],
  ['right button', (p) => p.getByLabel('Right', { exact: true }).click(), 'updateSpammer', '0,0,0,5,1,0,1,10,0'],
  ['middle button', (p) => p.getByLabel('Middle', { exact: true }).click(), 'updateSpammer', '0,0,0,5,2,0,1,10,0'],
  ['left button', (p) => p.getByLabel('Left', { exact: true }).click(), 'updateSpammer', '0,0,0,5,0,0,1,10,0', 'host.settings.sbtn = 1'],
  ['double', (p) => p.getByLabel('Double').click(), 'updateSpammer', '0,0,0,5,0,1,1,10,0'],
  ['single', (p) => p.getByLabel('Single').click(), 'updateSpammer', '0,0,0,5,0,0,1,10,0', 'host.settings.stype = 1'],
  ['click count', (p) => panel(p, 'spammer').getByLabel('Count').click(), 'updateSpammer', '0,0,0,5,0,0,0,10,0'],
  ['click until stopped', (p) => panel(p, 'spammer').getByLabel('Until stopped').click(), 'updateSpammer', '0,0,0,5,0,0,1,10,0', 'host.settings.rptMode = 0'],
  ['number of clicks', (p) => fill(p, 'Number of clicks', '3'), 'updateSpammer', '0,0,0,5,0,0,0,3,0', 'host.settings.rptMode = 0'],
  ['fixed place', (p) => p.getByLabel('Fixed', { exact: true }).click(), 'updateSpammer', '0,0,0,5,0,0,1,10,1'],
  ['at pointer', (p) => p.getByLabel('At pointer').click(), 'updateSpammer', '0,0,0,5,0,0,1,10,0', 'host.settings.locMode = 1'],
  ['pick location', (p) => button(p, 'Pick location').click(), 'pickLocation', ''],
  ['hold to click', (p) => panel(p, 'spammer').getByLabel('Hold to run').click(), 'setHoldMode', 'auto,1'],
  ['toggle clicking', (p) => panel(p, 'spammer').getByLabel('Press to start and stop').click(), 'setHoldMode', 'auto,0', 'host.settings.holdAuto = true'],

  ['start pressing', (p) => button(p, 'Start pressing').click(), 'startKeySpam', ''],
  ['stop pressing', (p) => button(p, 'Stop pressing').click(), 'stopKeySpam', '', 'host.status.keySpamming = true'],
  ['press hours', (p) => fill(p, 'Press interval: hours', '1'), 'updateKeySpam', '1,0,0,5,1,10'],
  ['press minutes', (p) => fill(p, 'Press interval: minutes', '59'), 'updateKeySpam', '0,59,0,5,1,10'],
  ['press seconds', (p) => fill(p, 'Press interval: seconds', '90'), 'updateKeySpam', '0,0,90,5,1,10'],
  ['press ms', (p) => fill(p, 'Press interval: milliseconds', '0'), 'updateKeySpam', '0,0,0,0,1,10'],
  ['press count', (p) => panel(p, 'keyspam').getByLabel('Count').click(), 'updateKeySpam', '0,0,0,5,0,10'],
  ['press until stopped', (p) => panel(p, 'keyspam').getByLabel('Until stopped').click(), 'updateKeySpam', '0,0,0,5,1,10', 'host.settings.ksRptMode = 0'],
  ['number of rounds', (p) => fill(p, 'Number of rounds', '40'), 'updateKeySpam', '0,0,0,5,0,40', 'host.settings.ksRptMode = 0'],
  ['add key', (p) => button(p, 'Add key').click(), 'reassignKey', 'keyspamtarget'],
  ['remove key', (p) => button(p, 'Remove B, key 2').click(), 'removeKeySpamTarget', '1', "host.status.keySpamTargets = ['A', 'B', 'C']"],
  ['chord', (p) => p.getByLabel('Together').click(), 'setKeySpamChordMode', '1'],
  ['in turn', (p) => p.getByLabel('In turn').click(), 'setKeySpamChordMode', '0', 'host.status.keySpamChord = true'],
  ['hold to press', (p) => panel(p, 'keyspam').getByLabel('Hold to run').click(), 'setHoldMode', 'keyspam,1'],
  ['toggle pressing', (p) => panel(p, 'keyspam').getByLabel('Press to start and stop').click(), 'setHoldMode', 'keyspam,0', 'host.settings.holdKeySpam = true'],

  ['record', (p) => button(p, 'Record').click(), 'startRecording', ''],
  ['stop recording', (p) => button(p, 'Stop').click(), 'stopRecording', '', "host.status.state = 'Recording'"],
  ['continue', (p) => button(p, 'Continue').click(), 'continueRecording', '', kMacro],
  ['undo', (p) => button(p, 'Undo').click(), 'undoContinueRecording', '', 'host.status.canUndoContinue = true'],
  ['play', (p) => button(p, 'Play').click(), 'startPlayback', '', kMacro],
  ['stop playing', (p) => button(p, 'Stop').click(), 'stopPlayback', '', "host.status.state = 'Playing'"],
  ['optimise', (p) => button(p, 'Optimise').click(), 'optimizeMacro', '', "host.events = Array(3).fill({ time: 0, desc: 'Abs Move to X:1 Y:1' })"],
  ['moves', (p) => p.getByLabel('Moves', { exact: true }).click(), 'updateTracker', 'false,true,true,true,false,1,false,500'],
  ['buttons', (p) => p.getByLabel('Buttons').click(), 'updateTracker', 'true,false,true,true,false,1,false,500'],
  ['wheel', (p) => p.getByLabel('Wheel').click(), 'updateTracker', 'true,true,false,true,false,1,false,500'],
  ['keys', (p) => p.getByRole('switch', { name: 'Keys', exact: true }).click(), 'updateTracker', 'true,true,true,false,false,1,false,500'],
  ['raw moves', (p) => p.getByLabel('Raw moves').click(), 'updateTracker', 'true,true,true,true,true,1,false,500'],
  ['speed', (p) => fill(p, 'Playback speed', '1.5'), 'updateTracker', 'true,true,true,true,false,1.5,false,500'],
  ['slow', (p) => fill(p, 'Playback speed', '.05'), 'updateTracker', 'true,true,true,true,false,0.05,false,500'],
  ['loop', (p) => p.getByLabel('Loop').click(), 'updateTracker', 'true,true,true,true,false,1,true,500'],
  ['loop pause', (p) => fill(p, 'Pause between rounds', '0'), 'updateTracker', 'true,true,true,true,false,1,true,0', 'host.settings.tloop = true'],

  ['switch profile', (p) => p.getByRole('combobox').selectOption('Farm'), 'switchProfile', '1', "host.profiles.names = ['Default Tracking Profile', 'Farm']"],
  ['change clicker hotkey', (p) => button(p, 'Change the clicker hotkey').click(), 'reassignKey', 'auto'],
  ['change key presser hotkey', (p) => button(p, 'Change the key presser hotkey').click(), 'reassignKey', 'keyspamhotkey'],
  ['change record hotkey', (p) => button(p, 'Change the record hotkey').click(), 'reassignKey', 'rec'],
  ['change play hotkey', (p) => button(p, 'Change the play hotkey').click(), 'reassignKey', 'play'],
  ['change unlock hotkey', (p) => button(p, 'Change the unlock hotkey').click(), 'reassignKey', 'unlock'],
  ['reset hotkeys', (p) => button(p, 'Reset hotkeys').click(), 'resetHotkeys', ''],
]; // prettier-ignore

describe('what a control sends', { concurrency: 6 }, () => {
  for (const [what, act, name, argument, state] of rows) {
    test(what, async () => {
      const page = await pages.open({ before: state ?? '' });
      await act(page);
      await expectCall(page, name);
      await settled(page);
      assert.deepEqual(await callsOf(page, name), [argument]);
      assert.deepEqual(page.faults, []);
      await pages.close(page);
    });
  }
});

test('the settings of the program are shown', async () => {
  const page = await pages.open({
    before: `Object.assign(host.settings, { sh: 1, sm: 2, ss: 3, sms: 4, sbtn: 2, stype: 1, rptMode: 0, rptTimes: 7, locMode: 1,
      fixedX: -640, fixedY: 360, tmv: false, tclk: false, tscr: false, tkey: false, trel: true, tspd: 1.5, tloop: true,
      tloopMs: 20, ksh: 5, ksm: 6, kss: 7, ksms: 8, ksRptMode: 0, ksRptTimes: 9, holdAuto: true, holdKeySpam: true });
      host.status.keySpamChord = true;`,
  });
  await settled(page);
  const fields = {
    'Click interval: hours': '1',
    'Click interval: minutes': '2',
    'Click interval: seconds': '3',
    'Click interval: milliseconds': '4',
    'Number of clicks': '7',
    'Press interval: hours': '5',
    'Press interval: minutes': '6',
    'Press interval: seconds': '7',
    'Press interval: milliseconds': '8',
    'Number of rounds': '9',
    'Playback speed': '1.5',
    'Pause between rounds': '20',
  };
  for (const [name, value] of Object.entries(fields)) {
    assert.equal(await page.getByRole('textbox', { name, exact: true }).inputValue(), value, name);
  }
  const chosen = await page
    .locator('input:checked')
    .evaluateAll((all) => all.map((one) => one.parentElement.innerText));
  assert.deepEqual(chosen, [
    ...['Middle', 'Double', 'Count', 'Fixed', 'Hold to run'],
    ...['Together', 'Count', 'Hold to run'],
    ...['Loop', 'Raw moves'],
    ...['Hotkeys on', 'Hotkey lock'],
  ]);
  assert.ok(await page.getByText('Fixed place: X -640, Y 360').isVisible());
  await pages.close(page);
});

test('a number is sent when typing rests, when the field is left, and once', async () => {
  const page = await pages.open({ viewport: { width: 420, height: 560 } });
  const field = page.getByRole('textbox', { name: 'Click interval: milliseconds' });
  await field.fill('70');
  assert.deepEqual(await expectCall(page, 'updateSpammer'), ['0,0,0,70,0,0,1,10,0']);
  await field.fill('80');
  await field.blur();
  await settled(page);
  assert.deepEqual(await callsOf(page, 'updateSpammer'), ['0,0,0,70,0,0,1,10,0', '0,0,0,80,0,0,1,10,0']);
  await stopClock(page);
  await field.fill('90');
  await field.press('Escape');
  assert.equal(await field.inputValue(), '80');
  await page.clock.resume();
  await button(page, 'Start clicking').click();
  await settled(page);
  assert.equal((await callsOf(page, 'updateSpammer')).length, 2);
  await pages.close(page);
});

test('a number typed just before a start is sent before it', async () => {
  const page = await pages.open();
  await forgetCalls(page);
  await page.getByRole('textbox', { name: 'Click interval: milliseconds' }).fill('1000');
  await button(page, 'Start clicking').click();
  await expectCall(page, 'startSpammer');
  const names = await page.evaluate(() => host.calls.map(([name]) => name));
  assert.deepEqual(names.slice(0, 2), ['updateSpammer', 'startSpammer']);
  await pages.close(page);
});

test('the arrow keys step a number, onto the grid of the step', async () => {
  const page = await pages.open({ before: 'host.settings.tspd = 1.1' });
  const field = page.getByRole('textbox', { name: 'Playback speed' });
  await field.press('ArrowUp');
  assert.equal(await field.inputValue(), '1.25');
  await field.press('ArrowDown');
  await field.press('ArrowDown');
  assert.equal(await field.inputValue(), '0.75');
  assert.deepEqual(
    (await callsOf(page, 'updateTracker')).map((text) => text.split(',')[5]),
    ['1.25', '1', '0.75'],
  );
  await pages.close(page);
});

test('profiles: add, switch, clear, delete', async () => {
  const page = await pages.open({ before: kMacro });
  await button(page, 'New profile').click();
  await page.getByRole('textbox', { name: 'Profile name' }).fill('  Farm, east & west ');
  await button(page, 'Add profile').click();
  assert.deepEqual(await expectCall(page, 'addProfile'), ['Farm, east & west']);
  const select = page.getByRole('combobox', { name: 'Profile' });
  await page.waitForFunction(() => document.querySelector('select').value === '1');

  await button(page, 'Clear profile').click();
  assert.equal(
    await page.evaluate(() => document.activeElement.innerText),
    'Cancel',
    'the safe choice has the focus',
  );
  await button(page, 'Cancel').click();
  await button(page, 'Clear profile').click();
  await button(page, 'Clear now').click();
  assert.deepEqual(await expectCall(page, 'clearProfile'), ['']);

  await button(page, 'Delete profile').click();
  await page.keyboard.press('Escape');
  await button(page, 'Delete profile').click();
  await button(page, 'Delete now').click();
  assert.deepEqual(await expectCall(page, 'deleteProfile'), ['']);
  await page.waitForFunction(() => document.querySelector('select').value === '0');
  assert.equal(await select.locator('option').count(), 1);
  assert.ok(await button(page, 'Delete profile').isDisabled(), 'the default profile stays');
  assert.deepEqual(page.faults, []);
  await pages.close(page);
});

test('names that the program would change are explained and not sent', async () => {
  const page = await pages.open();
  await button(page, 'New profile').click();
  const name = page.getByRole('textbox', { name: 'Profile name' });
  for (const bad of ['a"b', 'a[b', 'a]b', 'a\\b', '', '   ']) {
    await name.fill(bad);
    await name.press('Enter');
    assert.equal(await name.getAttribute('aria-invalid'), 'true', bad);
  }
  assert.deepEqual(await callsOf(page, 'addProfile'), []);
  await name.fill('Default Tracking Profile');
  assert.ok(await page.getByText('There is a profile of this name already.').isVisible());
  await name.fill('F\u00e4rm\t\u7530');
  assert.equal(await name.inputValue(), 'F\u00e4rm \u7530', 'a tab is a blank');
  await name.press('Enter');
  assert.deepEqual(await expectCall(page, 'addProfile'), ['F\u00e4rm \u7530']);
  await pages.close(page);
});

test('a step on the profile that is pressed twice is taken once', async () => {
  const page = await pages.open({ before: `host.profiles.names.push('Farm', 'Fish'); ${kMacro}` });
  await page.getByRole('combobox', { name: 'Profile' }).selectOption('Farm');
  await page.waitForFunction(() => host.profiles.current === 1);
  await settled(page);
  for (const [open, verb, command] of [
    ['Delete profile', 'Delete now', 'deleteProfile'],
    ['Clear profile', 'Clear now', 'clearProfile'],
  ]) {
    await button(page, open).click();
    await holdAnswers(page);
    for (let i = 0; i < 3; i++) await button(page, verb).click();
    await letGo(page);
    await button(page, open).waitFor();
    await settled(page);
    assert.equal((await callsOf(page, command)).length, 1, command);
  }
  assert.deepEqual(await page.evaluate(() => host.profiles.names), ['Default Tracking Profile', 'Fish']);
  await button(page, 'New profile').click();
  await page.getByRole('textbox', { name: 'Profile name' }).fill('Wheat');
  await holdAnswers(page);
  for (let i = 0; i < 3; i++) await page.getByRole('textbox', { name: 'Profile name' }).press('Enter');
  await button(page, 'Add profile').click();
  await letGo(page);
  await button(page, 'New profile').and(page.locator(':enabled')).waitFor();
  assert.deepEqual(await callsOf(page, 'addProfile'), ['Wheat']);
  await pages.close(page);
});

test('a question about a profile goes away when an import makes another one current', async () => {
  const page = await pages.open({
    before: `host.profiles.names.push('Farm'); host.profiles.current = 1; ${kMacro}`,
  });
  for (const [open, verb] of [
    ['Clear profile', 'Clear now'],
    ['Delete profile', 'Delete now'],
  ]) {
    await button(page, open).click();
    await button(page, verb).waitFor();
    await page.evaluate(() => {
      host.import();
      window.onProfileImported();
    });
    await button(page, open).waitFor();
    assert.equal(await button(page, verb).count(), 0);
    assert.equal(
      await page.evaluate(() => document.activeElement.tagName),
      'SELECT',
      'the focus is not lost',
    );
  }
  assert.deepEqual(await callsOf(page, 'clearProfile'), []);
  assert.deepEqual(await callsOf(page, 'deleteProfile'), []);
  await pages.close(page);
});

test('a key is removed once, however often its cross is pressed before it is gone', async () => {
  const page = await pages.open({ before: "host.status.keySpamTargets = ['A', 'B', 'C', 'D']" });
  await settled(page);
  await holdAnswers(page);
  const cross = page.getByRole('button', { name: 'Remove B, key 2' });
  for (let i = 0; i < 3; i++) await cross.click();
  await letGo(page);
  await page.getByRole('button', { name: 'Remove C, key 2' }).waitFor();
  assert.deepEqual(await page.evaluate(() => host.status.keySpamTargets), ['A', 'C', 'D']);
  await page.getByRole('button', { name: 'Remove C, key 2' }).click();
  await page.getByRole('button', { name: 'Remove D, key 2' }).waitFor();
  assert.deepEqual(await callsOf(page, 'removeKeySpamTarget'), ['1', '1']);
  await pages.close(page);
});

test('with no key to press, the presser says so and does not start', async () => {
  const page = await pages.open({ before: 'host.status.keySpamTargets = []' });
  await page.getByText('Add a key first').waitFor();
  assert.ok(await button(page, 'Start pressing').isDisabled());
  await pages.close(page);
});

test('while a recording runs, profiles stay as they are', async () => {
  const page = await pages.open({ before: "host.status.state = 'Recording'" });
  await page.getByText('The profile stays as it is while a recording runs.').waitFor();
  for (const name of ['New profile', 'Clear profile', 'Delete profile', 'Continue', 'Play', 'Optimise']) {
    assert.ok(await button(page, name).isDisabled(), name);
  }
  assert.ok(await page.getByRole('combobox').isDisabled());
  await pages.close(page);
});

test('a step on the profile that a recording makes useless is given up', async () => {
  const page = await pages.open({ before: kMacro });
  await button(page, 'Clear profile').click();
  await button(page, 'Clear now').waitFor();
  await change(page, "host.status.state = 'Recording'");
  await page.getByText('The profile stays as it is while a recording runs.').waitFor();
  await change(page, "host.status.state = 'Idle'");
  assert.equal(await button(page, 'Clear now').count(), 0);
  assert.deepEqual(await callsOf(page, 'clearProfile'), []);
  await pages.close(page);
});

test('the large Stop stops what runs and nothing else', async () => {
  const page = await pages.open({
    before: "host.status.autoClicking = true; host.status.keySpamming = true; host.status.state = 'Playing';",
  });
  await forgetCalls(page);
  await button(page, 'Stop everything').click();
  await settled(page);
  assert.deepEqual(await page.evaluate(() => host.calls.map(([name]) => name)), [
    'stopPlayback',
    'stopSpammer',
    'stopKeySpam',
  ]);
  assert.equal(await button(page, 'Stop everything').count(), 0);
  await pages.close(page);
});

test('a capture shows where the key goes, and keeps the other buttons still', async () => {
  const page = await pages.open();
  await button(page, 'Change the play hotkey').click();
  const note = page.locator('#panel-ui').getByText('Press a key...');
  await note.waitFor();
  assert.equal(await note.locator('xpath=ancestor::li/span[1]').innerText(), 'Play');
  assert.ok(await button(page, 'Change the record hotkey').isDisabled());
  assert.equal(
    await page.evaluate(() => document.activeElement.ariaLabel),
    'Change the play hotkey',
    'the focus stays',
  );
  await button(page, 'Change the record hotkey').click({ force: true });
  assert.deepEqual(await callsOf(page, 'reassignKey'), ['play']);
  await change(page, "host.status.reassigning = ''; host.status.hkPlay = 'Num 5'");
  assert.equal(await note.count(), 0);
  assert.ok(await page.locator('#panel-ui').getByText('Num 5').isVisible());
  await pages.close(page);
});

test('the next key is waited for where it will stand, also behind many', async () => {
  const page = await pages.open({
    before: "host.status.keySpamTargets = Array.from({ length: 255 }, () => 'Right Ctrl')",
  });
  await button(page, 'Add key').click();
  const note = page.locator('#panel-keyspam').getByText('Press a key...');
  await note.waitFor();
  await page.waitForFunction(
    (element) => {
      const box = element.getBoundingClientRect();
      const list = element.closest('ul').getBoundingClientRect();
      return box.top >= list.top && box.bottom <= list.bottom;
    },
    await note.elementHandle(),
  );
  await change(page, "host.status.reassigning = ''; host.status.keySpamTargets.push('A')");
  assert.equal(await page.getByRole('list', { name: 'Keys to press' }).getByRole('listitem').count(), 256);
  assert.ok(await button(page, 'Add key').isDisabled(), 'the list is full');
  await pages.close(page);
});

test('what a place means is told', async () => {
  const page = await pages.open({ before: 'Object.assign(host.settings, { fixedX: 7, fixedY: 8 })' });
  await page.getByText('Clicks this window too: start it with its hotkey.').waitFor();
  await page.getByLabel('Fixed', { exact: true }).click();
  await page.getByText('Fixed place: X 7, Y 8').waitFor();
  await pages.close(page);
});

test('a pick ends with the new place, or with a press that reaches the page', async () => {
  const page = await pages.open();
  const waiting = page.getByText('Click the place. Right-click cancels.');
  await button(page, 'Pick location').click();
  await waiting.waitFor();
  await page.evaluate(() => Object.assign(host.settings, { locMode: 1, fixedX: 640, fixedY: 360 }));
  await page.getByText('Fixed place: X 640, Y 360').waitFor();
  assert.ok(await page.getByLabel('Fixed', { exact: true }).isChecked());

  await button(page, 'Pick location').click();
  await waiting.waitFor();
  await page.locator('#panel-spammer h2').click();
  await waiting.waitFor({ state: 'detached' });
  const asked = (await callsOf(page, 'getSettings')).length;
  await settled(page);
  assert.equal((await callsOf(page, 'getSettings')).length, asked, 'the settings are not asked for any more');
  await pages.close(page);
});
