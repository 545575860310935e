// Long work in short pieces, so that the page answers in between. The work is a generator that yields after each piece.

// Pieces of about this many events take a few milliseconds.
export const kSliceEvents = 20_000;

export type Sliced<T> = Generator<void, T, void>;

const next: (() => void)[] = [];
let channel: MessageChannel | undefined;

// A message is delivered at once, where a timer of 0 ms would wait for 4 ms.
function soon(step: () => void): void {
  if (!channel) {
    channel = new MessageChannel();
    channel.port1.onmessage = () => next.shift()?.();
  }
  next.push(step);
  channel.port2.postMessage(null);
}

// Runs the work to its end, the first piece at once. Returns a function that gives it up.
export function inSlices<T>(work: Sliced<T>, onDone: (result: T, slices: number) => void): () => void {
  let given = false;
  let slices = 0;
  const step = () => {
    if (given) return;
    slices++;
    const { done, value } = work.next();
    if (done) {
      onDone(value, slices);
    } else {
      soon(step);
    }
  };
  step();
  return () => (given = true);
}
