// The hotkeys, and which one acts if two share a key. The program compares a press with its bindings in a fixed order,
// and the first match wins. It reports a binding only by the name of its key, so the page compares names.
import type { HotkeyId, Status } from './reports';

export interface Hotkey {
  id: HotkeyId;
  title: string;
  name: string; // inside a sentence
  defaultKey: string; // name of its key after a reset
  defaultCode: number; // virtual key code of that
}

// In the order of the page.
export const kHotkeys: readonly Hotkey[] = [
  { id: 'autoclicker', title: 'Autoclicker', name: 'autoclicker', defaultKey: 'F6', defaultCode: 117 },
  { id: 'keySpammer', title: 'Key spammer', name: 'key spammer', defaultKey: 'F9', defaultCode: 120 },
  { id: 'record', title: 'Record', name: 'record', defaultKey: 'F8', defaultCode: 119 },
  { id: 'play', title: 'Play', name: 'play', defaultKey: 'F7', defaultCode: 118 },
  { id: 'unlock', title: 'Lock and unlock', name: 'unlock', defaultKey: 'F10', defaultCode: 121 },
];

// The order in which the program compares a press with them.
const kMatchOrder: readonly HotkeyId[] = ['unlock', 'record', 'play', 'autoclicker', 'keySpammer'];

// Returns the hotkey that acts in place of `id`, because it has the same key and is compared first. The unlock hotkey
// takes part only while the lock is enabled.
export function hotkeyInPlaceOf(id: HotkeyId, { hotkeys, lockEnabled }: Status): Hotkey | undefined {
  const isUsed = (one: HotkeyId) => one !== 'unlock' || lockEnabled;
  if (!isUsed(id) || hotkeys[id] === '') return undefined;
  const earlier = kMatchOrder.slice(0, kMatchOrder.indexOf(id));
  const winner = earlier.find((one) => isUsed(one) && hotkeys[one] === hotkeys[id]);
  return kHotkeys.find((one) => one.id === winner);
}
