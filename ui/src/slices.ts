// Runs long work in short slices, so that the page stays responsive. The work is a generator that yields after each
// slice.

// A slice of this many events takes a few milliseconds.
export const kSliceEvents = 20_000;

export type Sliced<T> = Generator<void, T, void>;

const steps: (() => void)[] = [];
let channel: MessageChannel | undefined;

// A message arrives at once, while a timer of 0 ms waits for 4 ms.
function runSoon(step: () => void): void {
  if (!channel) {
    channel = new MessageChannel();
    channel.port1.onmessage = () => steps.shift()?.();
  }
  steps.push(step);
  channel.port2.postMessage(null);
}

// Runs the work to its end, the first slice at once. Returns a function that cancels it.
export function runInSlices<T>(work: Sliced<T>, onDone: (result: T, slices: number) => void): () => void {
  let cancelled = false;
  let slices = 0;
  const step = () => {
    if (cancelled) return;
    slices++;
    const { done, value } = work.next();
    if (done) {
      onDone(value, slices);
    } else {
      runSoon(step);
    }
  };
  step();
  return () => (cancelled = true);
}
