// Sends many small edits of the macro in a row, one call each. Stops if the macro changes otherwise.
import { signal } from '@preact/signals';
import { call } from './bridge';
import { status } from './store';

const kShownAfter = 1000; // ms after which the progress is shown
const kProgressInterval = 100; // ms between two updates of the progress

export interface Batch {
  doing: string; // "Deleting", "Shifting"
  done: number;
  of: number;
  shown: boolean; // it has run for kShownAfter
}

// Why it ended: all edits sent, cancelled by the user, stopped because the macro has changed, or an edit rejected.
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
  reason?: unknown; // of a rejected edit
}

// The batch that is running.
export const batch = signal<Batch | null>(null);

let cancelled = false;
let running: Promise<unknown> = Promise.resolve();

export function cancelBatch(): void {
  cancelled = true;
}

// Cancels the running batch and waits for its end. Other changes of the macro wait for this.
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
  let macroChanged = false;
  const before = status.peek().eventCount;
  // Each poll meanwhile must report the macro as the steps so far have left it, or one of the states before, as its
  // reply may be older.
  const unwatch = status.subscribe(({ state, eventCount: now }) => {
    const least = removes ? before - done - 1 : before;
    if (state === 'Recording' || now > before || now < least) macroChanged = true;
  });
  const started = performance.now();
  let updated = started;
  try {
    while (done < count && !cancelled && !macroChanged) {
      await call(command, argument(done));
      done++;
      const now = performance.now();
      if (now - updated < kProgressInterval) continue;
      updated = now;
      batch.value = { doing, done, of: count, shown: now - started >= kShownAfter };
    }
  } catch (reason) {
    return { end: 'failed', done, reason };
  } finally {
    unwatch();
  }
  if (macroChanged) return { end: 'changed', done };
  return { end: done < count ? 'cancelled' : 'done', done };
}
