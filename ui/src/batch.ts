// Many small edits of the macro in a row, one call each, for as long as the macro is the one they were meant for.
import { signal } from '@preact/signals';
import { call } from './bridge';
import { status } from './store';

const kShownAfter = 1000; // ms from which on the progress is shown
const kProgressInterval = 100; // ms between two changes of the progress shown

export interface Batch {
  doing: string; // "Deleting", "Shifting"
  done: number;
  of: number;
  shown: boolean; // it takes so long that people want to know
}

// How it ended: all sent, given up by the person, stopped because the macro is another by now, or refused.
export type BatchEnd = 'done' | 'cancelled' | 'changed' | 'failed';

export interface BatchWork {
  doing: string;
  command: string;
  count: number;
  argument: (step: number) => string;
  removes: boolean; // each step makes the macro one event shorter
}

export interface BatchResult {
  end: BatchEnd;
  done: number;
  reason?: unknown; // where it was refused
}

// The one under way.
export const batch = signal<Batch | null>(null);

let cancelled = false;
let running: Promise<unknown> = Promise.resolve();

export function cancelBatch(): void {
  cancelled = true;
}

// Gives up the batch under way, if there is one; what changes the macro must wait for this.
export async function endBatch(): Promise<void> {
  if (!batch.peek()) return;
  cancelBatch();
  await running;
}

export function sendBatch(work: BatchWork): Promise<BatchResult> {
  cancelled = false;
  batch.value = { doing: work.doing, done: 0, of: work.count, shown: false };
  const result = send(work).finally(() => (batch.value = null));
  running = result;
  return result;
}

async function send({ doing, command, count, argument, removes }: BatchWork): Promise<BatchResult> {
  let done = 0;
  let another = false;
  const before = status.peek().count;
  // Every poll that is answered meanwhile must tell of the macro that the steps so far have made, or of one some steps
  // back, which may be under way.
  const unwatch = status.subscribe(({ state, count: now }) => {
    const least = removes ? before - done - 1 : before;
    if (state === 'Recording' || now > before || now < least) another = true;
  });
  const started = performance.now();
  let told = started;
  try {
    while (done < count && !cancelled && !another) {
      await call(command, argument(done));
      done++;
      const now = performance.now();
      if (now - told < kProgressInterval) continue;
      told = now;
      batch.value = { doing, done, of: count, shown: now - started >= kShownAfter };
    }
  } catch (reason) {
    return { end: 'failed', done, reason };
  } finally {
    unwatch();
  }
  if (another) return { end: 'changed', done };
  return { end: done < count ? 'cancelled' : 'done', done };
}
