// Starts and stops other programs, and waits for conditions. Every program started here ends with this process.
import { spawn, spawnSync } from 'node:child_process';
import { pause } from './xtest_input.mjs';

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

// Sets a string in the registry of the Wine prefix, for programs that start from now on.
export function setWineRegistryValue(key, name, text) {
  const args = ['reg', 'add', key, '/v', name, '/d', text, '/f'];
  const { status, signal } = spawnSync('wine', args, { stdio: 'ignore', timeout: 60000 });
  if (status !== 0) throw new Error(`wine ${args.join(' ')} returned ${status ?? signal}`);
}

// Every condition holds long before this, also on a machine that builds at the same time.
export const kPatienceMilliseconds = 60000;

// Checks every few milliseconds until `condition` returns something truthy; returns that.
export async function waitUntil(condition, what, limitMilliseconds = kPatienceMilliseconds) {
  const deadline = Date.now() + limitMilliseconds;
  for (;;) {
    const value = await condition();
    if (value) return value;
    if (Date.now() > deadline) throw new Error(`timed out after ${limitMilliseconds} ms: ${what}`);
    await pause(5);
  }
}

// Something that must not happen has this long to happen.
export const kQuietMilliseconds = 300;
