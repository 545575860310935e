// Every control, and the exact argument text that it sends to the program.
import {
  assert,
  button,
  callsOf,
  chooseProfile,
  describe,
  expectCall,
  focused,
  forgetCalls,
  kKeyMacro,
  moveTo,
  namesOfCalls,
  pageTest,
  picture,
  profileBox,
  profileNames,
  settled,
  stateText,
  stopClock,
  textBox,
} from './page_test.mjs';

const kMacro = { events: kKeyMacro };
const twoProfiles = (current = 0) => ({ profiles: { names: ['Default Tracking Profile', 'Farm'], current } });
const autoclicker = (values) => ({ settings: { autoclicker: values } });
const keySpammer = (values) => ({ settings: { keySpammer: values } });
const panel = (page, id) => page.locator(`#panel-${id}`);

async function fill(page, name, text) {
  const field = page.getByRole('textbox', { name, exact: true });
  await field.fill(text);
  await field.press('Enter');
}

// One row for each control: its name, the action, the only call that follows, the state before.
const rows = [
  ['start clicking', (p) => button(p, 'Start clicking').click(), 'startSpammer', ''],
  ['stop clicking', (p) => button(p, 'Stop clicking').click(), 'stopSpammer', '', { status: { autoclickerRunning: true } }],
  ['click hours', (p) => fill(p, 'Click interval: hours', '2'), 'updateSpammer', '2,0,0,5,0,0,1,10,0'],
  ['click minutes', (p) => fill(p, 'Click interval: minutes', '3'), 'updateSpammer', '0,3,0,5,0,0,1,10,0'],
  ['click seconds', (p) => fill(p, 'Click interval: seconds', '4'), 'updateSpammer', '0,0,4,5,0,0,1,10,0'],
  ['click ms', (p) => fill(p, 'Click interval: milliseconds', '250'), 'updateSpammer', '0,0,0,250,0,0,1,10,0'],
  ['click ms: more', (p) => button(p, 'Click interval: milliseconds: more').click(), 'updateSpammer', '0,0,0,6,0,0,1,10,0'],
  ['click ms: less', (p) => button(p, 'Click interval: milliseconds: less').click(), 'updateSpammer', '0,0,0,4,0,0,1,10,0'],
  ['right button', (p) => p.getByLabel('Right', { exact: true }).click(), 'updateSpammer', '0,0,0,5,1,0,1,10,0'],
  ['middle button', (p) => p.getByLabel('Middle', { exact: true }).click(), 'updateSpammer', '0,0,0,5,2,0,1,10,0'],
  ['left button', (p) => p.getByLabel('Left', { exact: true }).click(), 'updateSpammer', '0,0,0,5,0,0,1,10,0', autoclicker({ button: 1 })],
  ['double', (p) => p.getByLabel('Double').click(), 'updateSpammer', '0,0,0,5,0,1,1,10,0'],
  ['single', (p) => p.getByLabel('Single').click(), 'updateSpammer', '0,0,0,5,0,0,1,10,0', autoclicker({ doubleClick: 1 })],
  ['click count', (p) => panel(p, 'spammer').getByLabel('Count').click(), 'updateSpammer', '0,0,0,5,0,0,0,10,0'],
  ['click until stopped', (p) => panel(p, 'spammer').getByLabel('Until stopped').click(), 'updateSpammer', '0,0,0,5,0,0,1,10,0', autoclicker({ repeatMode: 0 })],
  ['number of clicks', (p) => fill(p, 'Number of clicks', '3'), 'updateSpammer', '0,0,0,5,0,0,0,3,0', autoclicker({ repeatMode: 0 })],
  ['fixed location', (p) => p.getByLabel('Fixed', { exact: true }).click(), 'updateSpammer', '0,0,0,5,0,0,1,10,1'],
  ['at pointer', (p) => p.getByLabel('At pointer').click(), 'updateSpammer', '0,0,0,5,0,0,1,10,0', autoclicker({ locationMode: 1 })],
  ['pick location', (p) => button(p, 'Pick location').click(), 'pickLocation', ''],
  ['hold to click', (p) => panel(p, 'spammer').getByLabel('Hold to run').click(), 'setHoldMode', 'auto,1'],
  ['toggle clicking', (p) => panel(p, 'spammer').getByLabel('Press to start and stop').click(), 'setHoldMode', 'auto,0', { settings: { hotkeys: { holdAutoclicker: true } } }],

  ['start pressing', (p) => button(p, 'Start pressing').click(), 'startKeySpam', ''],
  ['stop pressing', (p) => button(p, 'Stop pressing').click(), 'stopKeySpam', '', { status: { keySpammerRunning: true } }],
  ['press hours', (p) => fill(p, 'Press interval: hours', '1'), 'updateKeySpam', '1,0,0,5,1,10'],
  ['press minutes', (p) => fill(p, 'Press interval: minutes', '59'), 'updateKeySpam', '0,59,0,5,1,10'],
  ['press seconds', (p) => fill(p, 'Press interval: seconds', '90'), 'updateKeySpam', '0,0,90,5,1,10'],
  ['press ms', (p) => fill(p, 'Press interval: milliseconds', '0'), 'updateKeySpam', '0,0,0,0,1,10'],
  ['press count', (p) => panel(p, 'keyspam').getByLabel('Count').click(), 'updateKeySpam', '0,0,0,5,0,10'],
  ['press until stopped', (p) => panel(p, 'keyspam').getByLabel('Until stopped').click(), 'updateKeySpam', '0,0,0,5,1,10', keySpammer({ repeatMode: 0 })],
  ['number of rounds', (p) => fill(p, 'Number of rounds', '40'), 'updateKeySpam', '0,0,0,5,0,40', keySpammer({ repeatMode: 0 })],
  ['add key', (p) => button(p, 'Add key').click(), 'reassignKey', 'keyspamtarget'],
  ['remove key', (p) => button(p, 'Remove B, key 2').click(), 'removeKeySpamTarget', '1', { status: { targets: ['A', 'B', 'C'] } }],
  ['chord', (p) => p.getByLabel('Together').click(), 'setKeySpamChordMode', '1'],
  ['in turn', (p) => p.getByLabel('In turn').click(), 'setKeySpamChordMode', '0', { status: { chord: true } }],
  ['hold to press', (p) => panel(p, 'keyspam').getByLabel('Hold to run').click(), 'setHoldMode', 'keyspam,1'],
  ['toggle pressing', (p) => panel(p, 'keyspam').getByLabel('Press to start and stop').click(), 'setHoldMode', 'keyspam,0', { settings: { hotkeys: { holdKeySpammer: true } } }],

  ['record', (p) => button(p, 'Record').click(), 'startRecording', ''],
  ['stop recording', (p) => button(p, 'Stop').click(), 'stopRecording', '', { status: { state: 'Recording' } }],
  ['continue', (p) => button(p, 'Continue').click(), 'continueRecording', '', kMacro],
  ['undo', (p) => button(p, 'Undo').click(), 'undoContinueRecording', '', { status: { canUndoContinue: true } }],
  ['play', (p) => button(p, 'Play').click(), 'startPlayback', '', kMacro],
  ['stop playing', (p) => button(p, 'Stop').click(), 'stopPlayback', '', { status: { state: 'Playing' } }],
  ['optimise', (p) => button(p, 'Optimise').click(), 'optimizeMacro', '', { events: Array(3).fill(moveTo(0, 1, 1)) }],
  ['moves', (p) => p.getByLabel('Moves', { exact: true }).click(), 'updateTracker', 'false,true,true,true,false,1,false,500'],
  ['buttons', (p) => p.getByLabel('Buttons').click(), 'updateTracker', 'true,false,true,true,false,1,false,500'],
  ['wheel', (p) => p.getByLabel('Wheel').click(), 'updateTracker', 'true,true,false,true,false,1,false,500'],
  ['keys', (p) => p.getByRole('switch', { name: 'Keys', exact: true }).click(), 'updateTracker', 'true,true,true,false,false,1,false,500'],
  ['raw moves', (p) => p.getByLabel('Raw moves').click(), 'updateTracker', 'true,true,true,true,true,1,false,500'],
  ['speed', (p) => fill(p, 'Playback speed', '1.5'), 'updateTracker', 'true,true,true,true,false,1.5,false,500'],
  ['slow', (p) => fill(p, 'Playback speed', '.05'), 'updateTracker', 'true,true,true,true,false,0.05,false,500'],
  ['loop', (p) => p.getByLabel('Loop').click(), 'updateTracker', 'true,true,true,true,false,1,true,500'],
  ['loop pause', (p) => fill(p, 'Pause between rounds', '0'), 'updateTracker', 'true,true,true,true,false,1,true,0', { settings: { macro: { loop: true } } }],

  ['switch profile', (p) => chooseProfile(p, 'Farm'), 'switchProfile', '1', twoProfiles()],
  ['change autoclicker hotkey', (p) => button(p, 'Change the autoclicker hotkey').click(), 'reassignKey', 'auto'],
  ['change key spammer hotkey', (p) => button(p, 'Change the key spammer hotkey').click(), 'reassignKey', 'keyspamhotkey'],
  ['change record hotkey', (p) => button(p, 'Change the record hotkey').click(), 'reassignKey', 'rec'],
  ['change play hotkey', (p) => button(p, 'Change the play hotkey').click(), 'reassignKey', 'play'],
  ['change unlock hotkey', (p) => button(p, 'Change the unlock hotkey').click(), 'reassignKey', 'unlock'],
]; // prettier-ignore

describe('a control sends one command', { concurrency: 6 }, () => {
  for (const [what, act, name, argument, state] of rows) {
    pageTest(what, state ?? {}, async (page) => {
      await act(page);
      await expectCall(page, name);
      await settled(page);
      assert.deepEqual(await callsOf(page, name), [argument]);
    });
  }
});

pageTest(
  'shows every setting of the program',
  {
    settings: {
      autoclicker: {
        intervalHours: 1,
        intervalMinutes: 2,
        intervalSeconds: 3,
        intervalMilliseconds: 4,
        button: 2,
        doubleClick: 1,
        repeatMode: 0,
        repeatCount: 7,
        locationMode: 1,
        fixedX: -640,
        fixedY: 360,
      },
      macro: {
        recordMoves: false,
        recordButtons: false,
        recordWheel: false,
        recordKeys: false,
        recordRawMoves: true,
        playbackSpeed: 1.5,
        loop: true,
        loopPauseMilliseconds: 20,
      },
      keySpammer: {
        intervalHours: 5,
        intervalMinutes: 6,
        intervalSeconds: 7,
        intervalMilliseconds: 8,
        repeatMode: 0,
        repeatCount: 9,
      },
      hotkeys: { holdAutoclicker: true, holdKeySpammer: true },
    },
    status: { chord: true },
  },
  async (page) => {
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
      ...['Raw moves', 'Loop'],
      ...['Hotkeys on', 'Let F10 lock the hotkeys'],
    ]);
    assert.ok(await page.getByText('Fixed location: X -640, Y 360').isVisible());
  },
);

pageTest(
  'sends a typed number once: after a pause, or when the field loses the focus',
  { ownContext: true },
  async (page) => {
    const field = textBox(page, 'Click interval: milliseconds');
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
  },
);

pageTest('sends a typed number before the start that follows', {}, async (page) => {
  await forgetCalls(page);
  await textBox(page, 'Click interval: milliseconds').fill('1000');
  await button(page, 'Start clicking').click();
  await expectCall(page, 'startSpammer');
  const names = await namesOfCalls(page);
  assert.deepEqual(names.slice(0, 2), ['updateSpammer', 'startSpammer']);
});

pageTest(
  'the arrow keys step a number to the next multiple of its step',
  { settings: { macro: { playbackSpeed: 1.1 } } },
  async (page) => {
    const field = textBox(page, 'Playback speed');
    await field.press('ArrowUp');
    assert.equal(await field.inputValue(), '1.25');
    await field.press('ArrowDown');
    await field.press('ArrowDown');
    assert.equal(await field.inputValue(), '0.75');
    assert.deepEqual(
      (await callsOf(page, 'updateTracker')).map((text) => text.split(',')[5]),
      ['1.25', '1', '0.75'],
    );
  },
);

pageTest('adds, switches, clears and deletes profiles', kMacro, async (page) => {
  await button(page, 'New profile').click();
  await textBox(page, 'Profile name').fill('  Farm, east & west ');
  await button(page, 'Add profile').click();
  assert.deepEqual(await expectCall(page, 'addProfile'), ['Farm, east & west']);
  await profileBox(page).filter({ hasText: 'Farm, east & west' }).waitFor();

  await button(page, 'Clear profile').click();
  assert.equal(await focused(page), 'Cancel', 'Cancel has the focus');
  await button(page, 'Cancel').click();
  await button(page, 'Clear profile').click();
  await button(page, 'Clear now').click();
  assert.deepEqual(await expectCall(page, 'clearProfile'), ['']);

  await button(page, 'Delete profile').click();
  await page.keyboard.press('Escape');
  await button(page, 'Delete profile').click();
  await button(page, 'Delete now').click();
  assert.deepEqual(await expectCall(page, 'deleteProfile'), ['']);
  await profileBox(page).filter({ hasText: 'Default Tracking Profile' }).waitFor();
  assert.deepEqual(await profileNames(page), ['Default Tracking Profile']);
  assert.ok(await button(page, 'Delete profile').isDisabled(), 'the default profile stays');
});

pageTest('explains a profile name that the program would change, and does not send it', {}, async (page) => {
  await button(page, 'New profile').click();
  const name = textBox(page, 'Profile name');
  for (const bad of ['a"b', 'a[b', 'a]b', 'a\\b', '', '   ']) {
    await name.fill(bad);
    await name.press('Enter');
    assert.equal(await name.getAttribute('aria-invalid'), 'true', bad);
  }
  assert.deepEqual(await callsOf(page, 'addProfile'), []);
  await name.fill('Default Tracking Profile');
  assert.ok(await page.getByText('Another profile has this name.').isVisible());
  await name.fill('F\u00e4rm\t\u7530');
  assert.equal(await name.inputValue(), 'F\u00e4rm \u7530', 'a tab becomes a space');
  await name.press('Enter');
  assert.deepEqual(await expectCall(page, 'addProfile'), ['F\u00e4rm \u7530']);
});

pageTest(
  'ignores a second press on Delete, Clear and Add until the command returns',
  { profiles: { names: ['Default Tracking Profile', 'Farm', 'Fish'] }, ...kMacro },
  async (page) => {
    await chooseProfile(page, 'Farm');
    await page.waitForFunction(() => host.profiles.current === 1);
    await settled(page);
    for (const [open, verb, command] of [
      ['Delete profile', 'Delete now', 'deleteProfile'],
      ['Clear profile', 'Clear now', 'clearProfile'],
    ]) {
      await button(page, open).click();
      await page.host.holdAnswers();
      for (let i = 0; i < 3; i++) await button(page, verb).click();
      await page.host.releaseAnswers();
      await button(page, open).waitFor();
      await settled(page);
      assert.equal((await callsOf(page, command)).length, 1, command);
    }
    assert.deepEqual(await page.evaluate(() => host.profiles.names), ['Default Tracking Profile', 'Fish']);
    await button(page, 'New profile').click();
    await textBox(page, 'Profile name').fill('Wheat');
    await page.host.holdAnswers();
    for (let i = 0; i < 3; i++) await textBox(page, 'Profile name').press('Enter');
    await button(page, 'Add profile').click();
    await page.host.releaseAnswers();
    await button(page, 'New profile').and(page.locator(':enabled')).waitFor();
    assert.deepEqual(await callsOf(page, 'addProfile'), ['Wheat']);
  },
);

pageTest(
  'closes a question about a profile when an import changes the current profile',
  {
    profiles: { names: ['Default Tracking Profile', 'Farm'], current: 1 },
    ...kMacro,
  },
  async (page) => {
    for (const [open, verb] of [
      ['Clear profile', 'Clear now'],
      ['Delete profile', 'Delete now'],
    ]) {
      await button(page, open).click();
      await button(page, verb).waitFor();
      await page.evaluate(() => {
        host.addImportedProfile();
        window.onProfileImported();
      });
      await button(page, open).waitFor();
      assert.equal(await button(page, verb).count(), 0);
      assert.equal(
        await page.evaluate(() => document.activeElement.tagName),
        'BUTTON',
        'the focus stays in the panel',
      );
    }
    assert.deepEqual(await callsOf(page, 'clearProfile'), []);
    assert.deepEqual(await callsOf(page, 'deleteProfile'), []);
  },
);

pageTest(
  'ignores a second press on a remove button until the command returns',
  { ownContext: true, status: { targets: ['A', 'B', 'C', 'D'] } },
  async (page) => {
    await stopClock(page); // a press without an answer for long counts as rejected
    await page.host.holdAnswers();
    const cross = page.getByRole('button', { name: 'Remove B, key 2' });
    for (let i = 0; i < 3; i++) await cross.click();
    await page.host.releaseAnswers();
    await page.clock.resume();
    await page.getByRole('button', { name: 'Remove C, key 2' }).waitFor();
    assert.deepEqual(await page.evaluate(() => host.status.targets), ['A', 'C', 'D']);
    await page.getByRole('button', { name: 'Remove C, key 2' }).click();
    await page.getByRole('button', { name: 'Remove D, key 2' }).waitFor();
    assert.deepEqual(await callsOf(page, 'removeKeySpamTarget'), ['1', '1']);
  },
);

pageTest(
  'disables the start of the key spammer while it has no keys',
  { status: { targets: [] } },
  async (page) => {
    await page.getByText('Add a key first').waitFor();
    assert.ok(await button(page, 'Start pressing').isDisabled());
  },
);

pageTest(
  'disables the profile buttons during a recording',
  { status: { state: 'Recording' } },
  async (page) => {
    await page.getByText('Profiles cannot be changed during a recording.').waitFor();
    for (const name of ['New profile', 'Clear profile', 'Delete profile', 'Continue', 'Play', 'Optimise']) {
      assert.ok(await button(page, name).isDisabled(), name);
    }
    assert.ok(await profileBox(page).isDisabled());
  },
);

pageTest('closes a question about the profile when a recording starts', kMacro, async (page) => {
  await button(page, 'Clear profile').click();
  await button(page, 'Clear now').waitFor();
  await page.host.setStatus({ state: 'Recording' });
  await page.getByText('Profiles cannot be changed during a recording.').waitFor();
  await page.host.setStatus({ state: 'Idle' });
  assert.equal(await button(page, 'Clear now').count(), 0);
  assert.deepEqual(await callsOf(page, 'clearProfile'), []);
});

pageTest(
  'Stop everything stops only what runs',
  {
    status: { autoclickerRunning: true, keySpammerRunning: true, state: 'Playing' },
  },
  async (page) => {
    await forgetCalls(page);
    await button(page, 'Stop everything').click();
    await settled(page);
    assert.deepEqual(await namesOfCalls(page), ['stopPlayback', 'stopSpammer', 'stopKeySpam']);
    assert.equal(await button(page, 'Stop everything').count(), 0);
  },
);

pageTest('shows which hotkey waits for a key, and disables the others', {}, async (page) => {
  await button(page, 'Change the play hotkey').click();
  const note = page.locator('#panel-ui').getByText('Press a key...');
  await note.waitFor();
  assert.equal(await note.locator('xpath=ancestor::li/span[1]').innerText(), 'Play');
  assert.ok(await button(page, 'Change the record hotkey').isDisabled());
  assert.equal(await focused(page), 'Change the play hotkey', 'the focus stays');
  await button(page, 'Change the record hotkey').click({ force: true });
  assert.deepEqual(await callsOf(page, 'reassignKey'), ['play']);
  await page.host.set({ status: { capture: '' }, hotkeys: { play: 'Num 5' } });
  assert.equal(await note.count(), 0);
  assert.ok(await page.locator('#panel-ui').getByText('Num 5').isVisible());
});

pageTest(
  'scrolls a long key list to the key that is being added',
  {
    status: { targets: Array(255).fill('Right Ctrl') },
  },
  async (page) => {
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
    await page.host.setStatus({ capture: '', targets: [...Array(255).fill('Right Ctrl'), 'A'] });
    assert.equal(await page.getByRole('list', { name: 'Keys to press' }).getByRole('listitem').count(), 256);
    assert.ok(await button(page, 'Add key').isDisabled(), 'the list is full');
  },
);

pageTest(
  'explains the chosen location',
  { settings: { autoclicker: { fixedX: 7, fixedY: 8 } } },
  async (page) => {
    await page.getByText('Clicks where the pointer is. Start it with F6.').waitFor();
    await page.getByLabel('Fixed', { exact: true }).click();
    await page.getByText('Fixed location: X 7, Y 8').waitFor();
  },
);

const kPickHint = 'Click the location. Esc or a right click cancels.';
pageTest('a pick ends with a new location, by Esc, by Cancel or elsewhere', {}, async (page) => {
  const waiting = page.getByText(kPickHint);
  const begin = async () => {
    await button(page, 'Pick location').click();
    await waiting.waitFor();
  };
  const picking = () => page.evaluate(() => JSON.parse(host.commands.getProgress()).picking);
  await begin();
  await page.host.set({
    progress: { picking: false },
    settings: { autoclicker: { locationMode: 1, fixedX: 640, fixedY: 360 } },
  });
  await page.getByText('Fixed location: X 640, Y 360').waitFor();
  assert.ok(await page.getByLabel('Fixed', { exact: true }).isChecked());

  await begin();
  await picture(page, 'picking-cancel');
  await page.keyboard.press('Escape');
  await waiting.waitFor({ state: 'detached' });
  assert.equal(await picking(), false);
  for (const name of ['Cancel picking', 'Cancel the pick']) {
    await begin();
    await button(page, name).click();
    await waiting.waitFor({ state: 'detached' });
    assert.equal(await picking(), false, name);
  }
  assert.equal((await callsOf(page, 'cancelPick')).length, 3);

  // A right click outside ends it in the program.
  await begin();
  await page.host.set({ progress: { picking: false } });
  assert.equal(await waiting.count(), 0);
  assert.match(await stateText(page), /^Idle/);
});

pageTest('choosing Fixed without a location picks one', {}, async (page) => {
  await page.getByLabel('Fixed', { exact: true }).click();
  await page.getByText(kPickHint).waitFor();
  assert.equal((await callsOf(page, 'pickLocation')).length, 1);
  await page.keyboard.press('Escape');
  await page.getByText('No location yet. Pick one.').waitFor();

  // With a location, Fixed takes it.
  await page.getByLabel('At pointer', { exact: true }).click();
  await page.host.setSettings({ autoclicker: { fixedX: 5 } });
  await button(page, 'Pick location').click();
  await page.keyboard.press('Escape');
  await page.getByText(kPickHint).waitFor({ state: 'detached' });
  await settled(page);
  await forgetCalls(page);
  await page.getByLabel('Fixed', { exact: true }).click();
  await page.getByText('Fixed location: X 5, Y 0').waitFor();
  await settled(page);
  assert.deepEqual(await callsOf(page, 'pickLocation'), []);
});

describe('the countdown before a start', () => {
  const kCounted = { ownContext: true, countdownSeconds: 3 };
  const starts = (page) => callsOf(page, 'startSpammer');

  pageTest('counts down and starts, without the focus on the button', kCounted, async (page) => {
    await stopClock(page);
    await button(page, 'Start clicking').click();
    await page.getByText('Starting in 3').waitFor();
    assert.equal(await stateText(page), 'Starting in 3 Move to your target. Esc cancels.');
    assert.equal(await page.evaluate(() => document.activeElement === document.body), true);
    await picture(page, 'countdown');
    await page.clock.runFor(1000);
    await page.getByText('Starting in 2').waitFor();
    await page.keyboard.press('Space');
    await page.clock.runFor(1000);
    await page.getByText('Starting in 1').waitFor();
    assert.deepEqual(await starts(page), []);
    await page.clock.runFor(1000);
    await page.getByText('Clicking, 0 clicks').waitFor();
    assert.deepEqual(await starts(page), ['']);
  });

  pageTest('ends by Esc, by Cancel, by Stop and when the hotkey starts the tool', kCounted, async (page) => {
    await stopClock(page);
    const over = page.getByText('Starting in 3');
    const ends = [
      () => page.keyboard.press('Escape'),
      () => button(page, 'Cancel the start').click(),
      () => button(page, 'Stop pressing').click(),
    ];
    for (const end of ends) {
      await button(page, 'Start pressing').click();
      await over.waitFor();
      await end();
      await over.waitFor({ state: 'detached' });
      await page.clock.runFor(5000);
      await button(page, 'Start pressing').waitFor();
      assert.deepEqual(await callsOf(page, 'startKeySpam'), []);
    }
    await button(page, 'Start pressing').click();
    await over.waitFor();
    await page.host.setStatus({ keySpammerRunning: true });
    await over.waitFor({ state: 'detached' });
    await page.clock.runFor(5000);
    assert.deepEqual(await callsOf(page, 'startKeySpam'), [], 'not started twice');
  });

  pageTest('is left out for a fixed location', { countdownSeconds: 3 }, async (page) => {
    await page.host.setSettings({ autoclicker: { locationMode: 1, fixedX: 9, fixedY: 9 } });
    await page.evaluate(() => host.setProgress({ picking: true }));
    await settled(page);
    await page.host.set({ progress: { picking: false } });
    await page.getByText('Fixed location: X 9, Y 9').waitFor();
    await button(page, 'Start clicking').click();
    assert.deepEqual(await expectCall(page, 'startSpammer'), ['']);
  });

  pageTest('has its length in the preferences', { countdownSeconds: 3 }, async (page) => {
    await button(page, 'Preferences').click();
    const field = textBox(page, 'Countdown before a start');
    assert.equal(await field.inputValue(), '3');
    await field.fill('11');
    await page.getByText('Enter 0 to 10').first().waitFor();
    await field.fill('0');
    await field.press('Enter');
    assert.deepEqual(await expectCall(page, 'setAdditionalSetting'), ['countdownSeconds,0']);
    await picture(page, 'preferences-countdown');
    await button(page, 'Close').click();
    await button(page, 'Start clicking').click();
    assert.deepEqual(await expectCall(page, 'startSpammer'), ['']);
  });
});
