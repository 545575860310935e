// A session survives the death of the program at any moment: at random, aimed into saves, and by a crash during a save.
//
// SESSION_KILLS=N in the environment multiplies the rounds.
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

function start(args) {
  const env = { ...process.env, LOCALAPPDATA: nativePath(folder) };
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

test('keeps everything saved when killed at random', onLinux, async () => {
  for (let round = 0; round < 25 * rounds; ++round) await killAndCheck(false, 'SIGKILL');
});

test('keeps everything saved when killed inside a save', onLinux, async () => {
  for (let round = 0; round < 10 * rounds; ++round) await killAndCheck(true, 'SIGKILL');
});

test('keeps everything saved when it crashes during a save', onLinux, async () => {
  for (let round = 0; round < 10 * rounds; ++round) await killAndCheck(true, 'SIGSEGV');
});
