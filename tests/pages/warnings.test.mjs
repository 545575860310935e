// Warnings before a step that may surprise: when, in which words, once, and never where they are turned off.
import assert from 'node:assert/strict';
import { after, before, describe, test } from 'node:test';
import { button, callsOf, expectCall, mainWindowCommands, Pages, picture, settled } from './browser.mjs';
import { axeFinds, contrastOf } from './checks.mjs';

let pages;
before(async () => (pages = await Pages.start()));
after(() => pages.stop());

const kOn = 'host.appSettings.showWarnings = true;';
const kMacro = "host.events = [{ time: 0, desc: 'Autoclicker ON' }, { time: 1, desc: 'Autoclicker OFF' }];";
const sheet = (page) => page.getByRole('alertdialog');
const focused = (page) =>
  page.evaluate(() => document.activeElement.ariaLabel ?? document.activeElement.innerText);

// What brings the warning about; the button; the command that follows; the warning's id and title; the verb.
const rows = [
  {
    state: 'host.appSettings.hotkeysEnabled = false;',
    press: 'Start clicking',
    command: 'startSpammer',
    id: 'endless-clicking',
    title: 'No key will stop the clicker',
    verb: 'Start clicking',
    not: 'host.settings.rptMode = 0;',
  },
  {
    state: 'host.settings.sms = 0;',
    press: 'Start clicking',
    command: 'startSpammer',
    id: 'fastest-clicking',
    title: 'As fast as it can click',
    verb: 'Start clicking',
    not: 'host.settings.ss = 1;',
  },
  {
    state: 'host.settings.ksms = 0;',
    press: 'Start pressing',
    command: 'startKeySpam',
    id: 'fastest-pressing',
    title: 'As fast as it can press',
    verb: 'Start pressing',
    not: 'host.settings.ksh = 1;',
  },
  {
    state: `${kMacro} host.settings.tloop = true;`,
    press: 'Play',
    command: 'startPlayback',
    id: 'looping-playback',
    title: 'This macro starts over by itself',
    verb: 'Play in a loop',
    not: 'host.settings.tloop = false;',
  },
  {
    state: kMacro,
    press: 'Record',
    command: 'startRecording',
    id: 'replacing-recording',
    title: 'A new recording replaces this one',
    verb: 'Record anew',
    not: 'host.events = [];',
  },
];

for (const { state, press, command, id, title, verb, not } of rows) {
  describe(id, () => {
    test('asks first; the safe answer has the focus and changes nothing', async () => {
      const page = await pages.open({ before: kOn + state });
      await settled(page);
      for (const answer of ['Cancel', 'Esc', 'Enter']) {
        await button(page, press).click();
        await sheet(page).getByRole('heading', { name: title }).waitFor();
        assert.equal(await focused(page), 'Cancel');
        if (answer === 'Cancel') await button(page, 'Cancel').click();
        else await page.keyboard.press(answer === 'Esc' ? 'Escape' : 'Enter');
        await sheet(page).waitFor({ state: 'detached' });
        assert.equal(await focused(page), press, 'the focus is back');
      }
      await settled(page);
      assert.deepEqual(await callsOf(page, command), []);
      assert.deepEqual(await callsOf(page, 'markWarningSeen'), []);
      await pages.close(page);
    });

    test('goes on by keyboard alone, and is not shown again', async () => {
      const page = await pages.open({ before: kOn + state });
      await settled(page);
      await button(page, press).press('Enter');
      await sheet(page).waitFor();
      await picture(page, `warning-${id}`);
      await page.keyboard.press('Tab');
      assert.equal(await focused(page), verb);
      await page.keyboard.press('Enter');
      assert.deepEqual(await expectCall(page, command), ['']);
      assert.deepEqual(await callsOf(page, 'markWarningSeen'), [id]);
      await sheet(page).waitFor({ state: 'detached' });
      await page.evaluate(() => {
        Object.assign(host.status, { state: 'Idle', autoClicking: false, keySpamming: false });
        host.events = [{ time: 0, desc: '' }];
      });
      await settled(page);
      await button(page, press).click();
      await page.waitForFunction(
        (name) => host.calls.filter(([called]) => called === name).length === 2,
        command,
      );
      assert.equal(await sheet(page).count(), 0);
      await pages.close(page);
    });

    for (const [what, script] of [
      ['seen before', `host.appSettings.seenWarnings = ['other', '${id}'];`],
      ['turned off', 'host.appSettings.showWarnings = false;'],
      ['no reason for it', not],
    ]) {
      test(`is not shown: ${what}`, async () => {
        const page = await pages.open({ before: kOn + state + script });
        await settled(page);
        await button(page, press).click();
        assert.deepEqual(await expectCall(page, command), ['']);
        assert.equal(await sheet(page).count(), 0);
        await pages.close(page);
      });
    }
  });
}

test('two reasons are told one after the other, before the command', async () => {
  const page = await pages.open({
    before: `${kOn} host.appSettings.hotkeysEnabled = false; host.settings.sms = 0;`,
  });
  await settled(page);
  await button(page, 'Start clicking').click();
  await sheet(page).getByText('No key will stop the clicker').waitFor();
  await sheet(page).getByRole('button', { name: 'Start clicking' }).click();
  await sheet(page).getByText('As fast as it can click').waitFor();
  assert.deepEqual(await callsOf(page, 'startSpammer'), []);
  await sheet(page).getByRole('button', { name: 'Start clicking' }).click();
  assert.deepEqual(await expectCall(page, 'startSpammer'), ['']);
  assert.deepEqual(await callsOf(page, 'markWarningSeen'), ['endless-clicking', 'fastest-clicking']);
  await pages.close(page);
});

test('a stop never asks', async () => {
  const page = await pages.open({
    before: `${kOn} ${kMacro} host.settings.sms = 0; host.settings.tloop = true; host.status.autoClicking = true;
      host.status.state = 'Playing'`,
  });
  await settled(page);
  await button(page, 'Stop everything').click();
  await settled(page);
  assert.equal(await sheet(page).count(), 0);
  assert.deepEqual(await callsOf(page, 'stopSpammer'), ['']);
  assert.deepEqual(await callsOf(page, 'stopPlayback'), ['']);
  await pages.close(page);
});

describe('clearing and deleting a profile with events', () => {
  const kFarm = `${kMacro} host.profiles.names.push('Farm'); host.profiles.current = 1;`;
  const kTold = 'This cannot be undone. Export keeps a copy.';
  for (const [press, now, command] of [
    ['Clear profile', 'Clear now', 'clearProfile'],
    ['Delete profile', 'Delete now', 'deleteProfile'],
  ]) {
    test(`${press}: asked each time in its place, explained once, never in two steps`, async () => {
      const page = await pages.open({ before: kOn + kFarm });
      await settled(page);
      await button(page, press).click();
      await page.getByText(kTold).waitFor();
      assert.equal(await sheet(page).count(), 0);
      assert.equal(await focused(page), 'Cancel');
      await picture(page, `warning-${command}`);
      await page.keyboard.press('Escape');
      assert.deepEqual(await callsOf(page, 'markWarningSeen'), []);
      await button(page, press).click();
      await button(page, now).click();
      assert.deepEqual(await expectCall(page, command), ['']);
      assert.deepEqual(await callsOf(page, 'markWarningSeen'), ['losing-events']);
      await page.evaluate(
        `${kMacro} host.profiles.names = ['Default Tracking Profile', 'Farm']; host.profiles.current = 1`,
      );
      await page.evaluate(() => window.onProfileImported());
      await settled(page);
      await button(page, press).click();
      await page.getByText('This cannot be undone.', { exact: true }).waitFor();
      await pages.close(page);
    });
  }

  for (const [what, script] of [
    ['turned off', 'host.appSettings.showWarnings = false;'],
    ['no events', 'host.events = [];'],
  ]) {
    test(`asked, not explained: ${what}`, async () => {
      const page = await pages.open({ before: kOn + kFarm + script });
      await settled(page);
      await button(page, 'Clear profile').click();
      await page.getByText('This cannot be undone.', { exact: true }).waitFor();
      await button(page, 'Clear now').click();
      await expectCall(page, 'clearProfile');
      assert.deepEqual(await callsOf(page, 'markWarningSeen'), []);
      await pages.close(page);
    });
  }
});

test('a warning that cannot be marked as seen is a failure, and the step is taken all the same', async () => {
  const page = await pages.open({
    before: `${kOn} host.settings.sms = 0; host.failing.markWarningSeen = 'disk'`,
  });
  await settled(page);
  await button(page, 'Start clicking').click();
  await sheet(page).getByRole('button', { name: 'Start clicking' }).click();
  assert.deepEqual(await expectCall(page, 'startSpammer'), ['']);
  await pages.close(page);
});

test('a page whose program keeps no warnings shows none', async () => {
  const page = await pages.open({
    before: `${kOn} host.settings.sms = 0`,
    absent: mainWindowCommands,
  });
  await settled(page);
  await button(page, 'Start clicking').click();
  assert.deepEqual(await expectCall(page, 'startSpammer'), ['']);
  await pages.close(page);
});

test('axe and contrast of a warning', async () => {
  const page = await pages.open({ before: `${kOn} host.settings.sms = 0` });
  await settled(page);
  await button(page, 'Start clicking').click();
  await sheet(page).waitFor();
  assert.deepEqual(await axeFinds(page), []);
  const found = await page.evaluate(contrastOf);
  assert.deepEqual(
    found.filter(([, ratio, least]) => ratio < least),
    [],
  );
  await pages.close(page);
});
