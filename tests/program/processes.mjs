// Starting and ending other programs, waiting for things. Whatever was started here ends with this process.
import { spawn, spawnSync } from 'node:child_process';
import { pause } from './real_hand.mjs';

const running = new Set();

process.on('exit', () => {
  for (const child of running) child.kill('SIGKILL');
});
for (const signal of ['SIGINT', 'SIGTERM']) process.on(signal, () => process.exit(1));

export function start(program, args, options = {}) {
  const child = spawn(program, args, { stdio: ['ignore', 'ignore', 'inherit'], ...options });
  running.add(child);
  child.ended = new Promise((resolve) => {
    child.on('error', (error) => resolve({ error }));
    child.on('exit', (code, signal) => resolve({ code, signal }));
  }).then((result) => {
    running.delete(child);
    child.result = result;
    return result;
  });
  return child;
}

export async function stop(child) {
  if (child && !child.result) {
    child.kill('SIGKILL');
    await child.ended;
  }
}

// A text in the registry of the Wine prefix, for the programs that start from now on.
export function setWineRegistryValue(key, name, text) {
  const args = ['reg', 'add', key, '/v', name, '/d', text, '/f'];
  const { status, signal } = spawnSync('wine', args, { stdio: 'ignore', timeout: 60000 });
  if (status !== 0) throw new Error(`wine ${args.join(' ')} gave ${status ?? signal}`);
}

// Whatever is waited for comes long before, on a machine that builds and tests beside it too.
export const kPatienceMilliseconds = 60000;

// Looks again every few milliseconds until `condition` gives something; gives that.
export async function waitUntil(condition, what, limitMilliseconds = kPatienceMilliseconds) {
  const deadline = Date.now() + limitMilliseconds;
  for (;;) {
    const value = await condition();
    if (value) return value;
    if (Date.now() > deadline) throw new Error(`waited ${limitMilliseconds} ms in vain: ${what}`);
    await pause(5);
  }
}

// What a hand needs from the mouse to a key, and longer than the input thread needs to take hold of it on a busy machine.
export const kHandMilliseconds = 1000;

// What must not happen has had this long to happen.
export const kQuietMilliseconds = 300;
