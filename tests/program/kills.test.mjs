// A session survives the death of the program at any moment: at random, aimed into saves, by a crash during a save, and
// a disk that is full at any byte.
//
// SESSION_KILLS=N in the environment multiplies the rounds; ./dev fuzz kill does.
import assert from 'node:assert/strict';
import { mkdtempSync, rmSync } from 'node:fs';
import { tmpdir } from 'node:os';
import { join } from 'node:path';
import { after, before, test } from 'node:test';
import { nativePath, onWindows, startNative, testPrograms } from './harness.mjs';

const rounds = Number(process.env.SESSION_KILLS ?? 1);
const kEvents = 4000;
const limit = { timeout: 120000 + rounds * 300000 };
const writer = join(testPrograms, 'session_writer');

let folder;
before(() => (folder = mkdtempSync(join(tmpdir(), 'varnelle-kills-'))));
after(() => rmSync(folder, { recursive: true, force: true }));

function start(args, moreEnv = {}) {
  const env = { ...process.env, ...moreEnv, LOCALAPPDATA: nativePath(folder) };
  const child = startNative(writer, args, { env, stdio: ['ignore', 'pipe', 'ignore'] });
  child.lines = [];
  child.waiting = [];
  let rest = '';
  child.stdout.on('data', (data) => {
    const parts = (rest + data).split(/\r?\n/);
    rest = parts.pop();
    child.lines.push(...parts);
    for (const look of [...child.waiting]) look();
  });
  child.ended = new Promise((resolve) => child.on('close', resolve));
  return child;
}

// Resolves with the first line that begins with `word`, from now on.
function line(child, word) {
  const from = child.lines.length;
  return new Promise((resolve, reject) => {
    const look = () => {
      const found = child.lines.slice(from).find((each) => each.startsWith(word));
      if (found === undefined) return;
      child.waiting.splice(child.waiting.indexOf(look), 1);
      resolve(found);
    };
    child.waiting.push(look);
    child.ended.then(() => reject(new Error(`the writer ended before "${word}"`)));
    look();
  });
}

function lastSaved(child) {
  const saved = child.lines.filter((each) => each.startsWith('saved '));
  return Number(saved.at(-1)?.split(' ')[1] ?? 0);
}

const delay = (milliseconds) => new Promise((resolve) => setTimeout(resolve, milliseconds));

async function loadedNumber() {
  const child = start(['load']);
  await child.ended;
  const [word, number, events] = (child.lines[0] ?? '').split(' ');
  assert.equal(word, 'loaded', child.lines[0]);
  if (Number(number) > 0) assert.equal(Number(events), kEvents + (Number(number) % 7));
  return Number(number);
}

// One death of the writer, `wait` after its first save or inside a later one; what was saved is there afterwards.
async function killAndCheck(aim, signal) {
  const child = start(['save', String(kEvents)]);
  await line(child, 'saved');
  if (aim) await line(child, 'saving');
  await delay(Math.random() * (aim ? 4 : 40));
  child.kill(signal);
  await child.ended;
  const saved = lastSaved(child);
  const loaded = await loadedNumber();
  assert.ok(loaded >= saved, `saved ${saved}, loaded ${loaded}`);
}

const onLinux = { ...limit, skip: onWindows && 'a signal does not end a program of Wine' };

// One run on a disk that is full at a random byte of a random save. The first failed save ends the run in half of the
// rounds; in the others the program goes on trying.
async function fillDiskAndCheck() {
  const bytes = Math.floor(Math.random() * 1500000);
  const child = start(['save', String(kEvents)], {
    LD_PRELOAD: join(testPrograms, 'libfull_disk.so'),
    FULL_DISK_BYTES: String(bytes),
  });
  const attempts = Math.random() < 0.5 ? 1 : 5;
  while (failedSaves(child) < attempts) await line(child, 'saving');
  child.kill('SIGKILL');
  await child.ended;
  const saved = lastSaved(child);
  const loaded = await loadedNumber();
  assert.ok(loaded >= saved, `disk of ${bytes} bytes: saved ${saved}, loaded ${loaded}`);
}

// The saves that have failed so far: each that another one follows.
function failedSaves(child) {
  const begun = child.lines.filter((each) => each.startsWith('saving ')).length;
  const done = child.lines.filter((each) => each.startsWith('saved ')).length;
  return Math.max(0, begun - done - 1);
}

test('keeps everything saved when killed at random', onLinux, async () => {
  for (let round = 0; round < 25 * rounds; ++round) await killAndCheck(false, 'SIGKILL');
});

test('keeps everything saved when killed inside a save', onLinux, async () => {
  for (let round = 0; round < 10 * rounds; ++round) await killAndCheck(true, 'SIGKILL');
});

test('keeps everything saved when it crashes during a save', onLinux, async () => {
  for (let round = 0; round < 10 * rounds; ++round) await killAndCheck(true, 'SIGSEGV');
});

test('keeps everything saved when the disk is full at any byte', onLinux, async () => {
  for (let round = 0; round < 5 * rounds; ++round) await fillDiskAndCheck();
});
