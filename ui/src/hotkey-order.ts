// Which hotkey acts where two share a key. The program compares a press with its bindings in a fixed order, and the
// first match wins. It reports bindings by their names only, so names are what is compared.
import type { Status } from './reports';

export interface Hotkey {
  capture: 'auto' | 'keyspamhotkey' | 'rec' | 'play' | 'unlock';
  field: 'hkAuto' | 'hkKeySpam' | 'hkRec' | 'hkPlay' | 'hkUnlock';
  what: string; // as shown
  name: string; // inside a sentence
  first: string; // the name of its key after a reset
}

// As the page lists them.
export const kHotkeys: readonly Hotkey[] = [
  { capture: 'auto', field: 'hkAuto', what: 'Clicker', name: 'clicker', first: 'F6' },
  { capture: 'keyspamhotkey', field: 'hkKeySpam', what: 'Key presser', name: 'key presser', first: 'F9' },
  { capture: 'rec', field: 'hkRec', what: 'Record', name: 'record', first: 'F8' },
  { capture: 'play', field: 'hkPlay', what: 'Play', name: 'play', first: 'F7' },
  { capture: 'unlock', field: 'hkUnlock', what: 'Lock and unlock', name: 'unlock', first: 'F10' },
];

// As the program compares them.
const kMatching: readonly Hotkey['capture'][] = ['unlock', 'rec', 'play', 'auto', 'keyspamhotkey'];

// The hotkey that takes the key of `capture` away from it. While the lock is off its key has no meaning of its own.
export function takenBy(capture: Hotkey['capture'], status: Status): Hotkey | undefined {
  const inUse = (one: Hotkey) => one.capture !== 'unlock' || status.lockOn;
  const own = kHotkeys.find((one) => one.capture === capture);
  if (!own || !inUse(own) || status[own.field] === '') return undefined;
  const earlier = kMatching.slice(0, kMatching.indexOf(capture));
  return earlier
    .map((other) => kHotkeys.find((one) => one.capture === other))
    .find((one): one is Hotkey => !!one && inUse(one) && status[one.field] === status[own.field]);
}
