// What the page says besides the state: what is done, in passing, and messages that stay until they are read.
import { signal } from '@preact/signals';

// Each is a new object, so that the same words said again count as said again.
export const toast = signal<{ text: string } | null>(null);
// The first is in sight.
export const messages = signal<readonly string[]>([]);

export function say(text: string): void {
  toast.value = { text };
}

export function tell(text: string): void {
  if (text.trim() !== '' && !messages.value.includes(text)) messages.value = [...messages.value, text];
}

export function dismissMessage(): void {
  messages.value = messages.value.slice(1);
}
