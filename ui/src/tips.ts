// The texts of tooltips that name a hotkey.
import { hotkeyInPlaceOf } from './hotkey-order';
import type { HotkeyId } from './reports';
import { hotkeysOff, locked, status } from './store';

// Returns the key that a press of this hotkey needs now, or an empty string if no key does it: the hotkeys are off or
// locked, or another hotkey acts in its place.
export function actingKey(id: HotkeyId): string {
  const { hotkeys, lockEnabled } = status.value;
  const isUsed = id === 'unlock' ? lockEnabled : !locked.value;
  if (hotkeysOff.value || !isUsed || hotkeyInPlaceOf(id, status.value)) return '';
  return hotkeys[id];
}

// Returns the sentence, followed by the hotkey that does the same.
export function tipWithKey(sentence: string, id: HotkeyId): string {
  const key = actingKey(id);
  return key ? `${sentence} Hotkey: ${key}.` : sentence;
}
