// Missing parts and bad arguments are reported in one sentence, nothing hangs, and the user's work is kept.
import assert from 'node:assert/strict';
import { spawnSync } from 'node:child_process';
import {
  existsSync,
  mkdirSync,
  readFileSync,
  readdirSync,
  rmSync,
  statSync,
  truncateSync,
  writeFileSync,
} from 'node:fs';
import { join } from 'node:path';
import { buildFolder, kMainTitle, nativePath, onWindows, putFile, test, useFixture } from './harness.mjs';
import { stop, waitUntil } from './processes.mjs';
import { Key, pause } from './xtest_input.mjs';

const kSession =
  'SETTINGS:0,0,0,77,0,0,1,10,0,0,0,1,1,1,1,0,1,0,500,119,118,0,117,0,0,0,5,1,10,120,32,32,0,0,0,121\n' +
  'CURRENT:0\nPROFILE:Default Tracking Profile\n3,0,0,0,0,65,1,0\n3,0.5,0,0,0,65,0,0\n';

const kTwoGibibytes = 2 ** 31;

const fixture = useFixture();
const { input } = fixture;

function install(options) {
  const installation = fixture.install(options);
  mkdirSync(installation.data);
  writeFileSync(join(installation.data, 'session.dat'), kSession);
  return installation;
}

function assertSessionKept(installation) {
  const lines = readFileSync(join(installation.data, 'session.dat'), 'latin1').split(/\r?\n/);
  assert.match(lines[0], /^SETTINGS:0,0,0,77,/);
  for (const line of ['3,0,0,0,0,65,1,0', '3,0.5,0,0,0,65,0,0']) assert.ok(lines.includes(line), line);
}

// Starts a program that reports a fault; collects standard error, where Linux reports it.
function startReporting(installation) {
  const child = fixture.startBare(installation, [], { stdio: ['ignore', 'ignore', 'pipe'] });
  child.message = '';
  child.stderr.on('data', (data) => (child.message += data));
  return child;
}

// On Windows a message box waits for the user: closes it.
async function answerMessage(observer, title) {
  if (!onWindows) return;
  await waitUntil(async () => (await observer.window(title)).found, `the message "${title}"`);
  observer.closeWindow(title);
  await waitUntil(async () => !(await observer.window(title)).found, 'the message is gone');
}

test('without its web-view library the program reports it, ends and keeps the session', async () => {
  const installation = install({ library: null });
  const observer = await fixture.openObserver('Another application');
  const child = startReporting(installation);
  try {
    await answerMessage(observer, 'Varnelle');
    const result = await waitUntil(() => child.result, 'the program ends');
    assert.equal(result.code, 1);
    if (!onWindows) assert.match(child.message, /libwebview\.so is missing; put it back beside the program/);
    assertSessionKept(installation);
  } finally {
    await stop(child);
  }
});

test(
  'without a display the program reports it and ends',
  { skip: onWindows && 'Windows always has one' },
  async () => {
    const installation = install();
    installation.env.DISPLAY = '';
    const child = startReporting(installation);
    try {
      const result = await waitUntil(() => child.result, 'the program ends');
      assert.equal(result.code, 1);
      assert.match(child.message, /DISPLAY names no X11 display; start it from a desktop session/);
      assertSessionKept(installation);
    } finally {
      await stop(child);
    }
  },
);

test(
  'without a browser runtime the program reports it and keeps the session',
  { skip: !onWindows && 'a matter of WebView2' },
  async () => {
    const installation = install({ library: join(buildFolder, 'dist/libwebview.dll') });
    const observer = await fixture.openObserver('Another application');
    const child = startReporting(installation);
    try {
      await answerMessage(observer, 'Varnelle');
      assert.equal((await waitUntil(() => child.result, 'the program ends')).code, 1);
      assertSessionKept(installation);
    } finally {
      await stop(child);
    }
  },
);

test('without its page the window stays empty and the hotkeys work', async () => {
  const installation = install();
  rmSync(join(installation.program, '../ui/index.html'));
  const observer = await fixture.openObserver('Another application');
  await observer.pointAt();
  const child = startReporting(installation);
  try {
    await fixture.server.next();
    await answerMessage(observer, 'UI Error');
    if (!onWindows)
      await waitUntil(() => /Failed to read:\n.*index\.html/.test(child.message), 'the message');
    await waitUntil(async () => (await observer.window(kMainTitle)).found, 'the window is there');
    await observer.takeFocus();
    observer.clear();
    await input.tap(Key.F6);
    await waitUntil(() => observer.presses().length >= 5, 'F6 starts clicking');
    await input.tap(Key.F6);
    await observer.settle();
    assert.deepEqual(observer.keys(), []);
    observer.closeWindow(kMainTitle);
    assert.equal((await waitUntil(() => child.result, 'the program ends')).code, 0);
    assertSessionKept(installation);
  } finally {
    await stop(child);
  }
});

test('a malformed number rejects the call and keeps the fields before it', async () => {
  const installation = install();
  const program = await fixture.startProgram({ installation });
  const rejected = (name, ...args) =>
    program.page.evaluate(
      ([command, list]) =>
        window[command](...list).then(
          () => 'resolved',
          (reason) => `rejected ${typeof reason}`,
        ),
      [name, args],
    );
  assert.equal(await rejected('updateSpammer', '0,0,3,many,2,1,0,10,0'), 'rejected string');
  let settings = await program.call('getSettings');
  assert.deepEqual([settings.ss, settings.sms, settings.sbtn], [3, 77, 0]);
  assert.equal(await rejected('updateKeySpam', '1,x,0,5,1,10'), 'rejected string');
  assert.equal(await rejected('updateTracker', '1,1,1,1,0,fast,0,500'), 'rejected string');
  assert.equal(await rejected('deleteEvent', 'first'), 'rejected string');
  assert.equal(await rejected('updateEventTime', '0,soon'), 'rejected string');
  assert.equal(await rejected('removeKeySpamTarget', 'x'), 'resolved');
  // Numbers and strings mean the same.
  assert.equal(await program.call('updateSpammer', 0, 0, 0, 5, 0, 0, 1, 10, 0), undefined);
  settings = await program.call('getSettings');
  assert.equal(settings.sms, 5);
  assert.equal(await program.call('updateSpammer', '0,0,0,6,0,0,1,10,0'), undefined);
  assert.equal((await program.call('getSettings')).sms, 6);
  assert.equal(program.child.result, undefined);
});

test('a profile name of any bytes reaches the page and the session unchanged', async () => {
  const installation = install();
  const session = kSession.replace('PROFILE:Default', 'PROFILE:caf\xe9 <b>bold</b> \\n\nPROFILE:Default');
  writeFileSync(join(installation.data, 'session.dat'), session, 'latin1');
  let program = await fixture.startProgram({ installation });
  const { names } = await program.call('getProfiles');
  // Windows reads the byte in its own code page.
  assert.deepEqual(names, [`caf${onWindows ? 'é' : '\ufffd'} <b>bold</b> \\n`, 'Default Tracking Profile']);
  await waitUntil(
    async () => (await program.profileNames())[0]?.includes('<b>bold</b>'),
    'the page shows the name as text',
  );
  const observer = await fixture.openObserver('Another application');
  assert.equal(await program.closeWindow(observer), 0);
  const saved = readFileSync(join(installation.data, 'session.dat'), 'latin1');
  assert.ok(saved.includes('PROFILE:caf\xe9 <b>bold</b> \\n'), 'every byte is kept');
});

test('SIGTERM ends the program as closing its window does', { skip: onWindows && 'signals' }, async () => {
  const installation = install();
  const program = await fixture.startProgram({ installation });
  program.child.kill('SIGTERM');
  const result = await waitUntil(() => program.child.result, 'the program ends');
  assert.deepEqual(result, { code: 0, signal: null });
  assertSessionKept(installation);
  assert.ok(existsSync(join(installation.data, 'status.txt')));
});

// The one file in the data folder under which a damaged session is kept.
function keptSession(installation) {
  const names = readdirSync(installation.data).filter((name) => name.startsWith('session-damaged-'));
  assert.equal(names.length, 1, names.join());
  return names[0];
}

test('a damaged session is kept, and the page says under which name', async () => {
  const installation = install();
  const damaged = kSession + '3,0.7,\0\0\0';
  writeFileSync(join(installation.data, 'session.dat'), damaged);
  const program = await fixture.startProgram({ installation });
  const kept = keptSession(installation);
  const message = program.page.getByText('The last session could not be read completely.');
  await message.waitFor();
  const text = await message.innerText();
  assert.ok(text.includes('Everything that could be read is here.'), text);
  assert.ok(text.includes(kept), text);
  assert.equal(readFileSync(join(installation.data, kept), 'latin1'), damaged);
  assert.equal((await program.call('getTrackerStatus')).count, 2);
  const observer = await fixture.openObserver('Another application');
  assert.equal(await program.closeWindow(observer), 0);
  assertSessionKept(installation);
  assert.equal(readFileSync(join(installation.data, kept), 'latin1'), damaged);
});

test('a session and a macro of 2 GiB are refused with a sentence each', async () => {
  const installation = install();
  const session = join(installation.data, 'session.dat');
  truncateSync(session, kTwoGibibytes);
  const macro = putFile(installation, 'huge.vrlmacro', 'Huge\n');
  truncateSync(macro, kTwoGibibytes);
  const program = await fixture.startProgram({ installation, args: [nativePath(macro)] });
  const message = program.page.getByText('The last session could not be read completely.');
  await message.waitFor();
  const text = await message.innerText();
  assert.ok(text.includes('Nothing could be read.'), text);
  assert.ok(text.includes('That macro file could not be imported'), text);
  assert.equal(statSync(join(installation.data, keptSession(installation))).size, kTwoGibibytes);
  assert.deepEqual((await program.call('getProfiles')).names, ['Default Tracking Profile']);
});

// The data folder is a disk of 64 KiB. The program saves every five seconds.
test(
  'a read-only disk and a full disk lose no work',
  { skip: (onWindows || process.getuid() !== 0) && 'needs a small disk' },
  async (context) => {
    const installation = install();
    const mount = (...args) => spawnSync('mount', [...args, installation.data]).status === 0;
    if (!mount('-t', 'tmpfs', '-o', 'size=64k', 'tmpfs'))
      return context.skip('this machine cannot mount a disk');
    try {
      const file = join(installation.data, 'session.dat');
      const session = () => readFileSync(file, 'latin1');
      writeFileSync(file, kSession);
      const program = await fixture.startProgram({ installation });

      // The system refuses this while the program writes a file.
      await waitUntil(() => mount('-o', 'remount,ro'), 'the disk is read-only');
      const kept = session();
      await program.call('addProfile', 'Made meanwhile');
      await pause(6000);
      assert.equal(session(), kept);
      assert.ok(mount('-o', 'remount,rw'));
      await waitUntil(() => session().includes('PROFILE:Made meanwhile'), 'the save');
      assertSessionKept(installation);

      await program.call('addProfile', 'x'.repeat(100000));
      const problem = program.page.getByText('Your work cannot be saved: the disk is full.');
      await problem.waitFor();
      assertSessionKept(installation);
      assert.ok(session().includes('PROFILE:Made meanwhile'));
      assert.equal((await program.call('getProfiles')).names.length, 3);
      await program.call('deleteProfile');
      await problem.waitFor({ state: 'detached' });
      assert.ok(session().length < 1000 && session().includes('PROFILE:Made meanwhile'));

      program.child.kill('SIGTERM');
      assert.deepEqual(await waitUntil(() => program.child.result, 'the end'), { code: 0, signal: null });
      assertSessionKept(installation);
    } finally {
      await fixture.closePrograms();
      spawnSync('umount', [installation.data]);
    }
  },
);
