// Notices besides the state: what has been done, shown for a while, and messages that stay until they are dismissed.
import { signal } from '@preact/signals';

// A button of a notice.
export interface NoticeAction {
  label: string;
  tip: string; // a sentence
  press: () => void;
  isPossible: () => boolean; // reads signals; the button disappears for good when this is false
}

// A new object each time, so that the same text again counts as a new notice.
export const doneNotice = signal<{ text: string; actions: NoticeAction[] } | null>(null);
// The page shows the first.
export const messages = signal<readonly string[]>([]);
// Why the work cannot be saved; empty while it can. Stays until a save succeeds.
export const saveProblem = signal('');

export function showDone(text: string, actions: NoticeAction[] = []): void {
  doneNotice.value = { text, actions };
}

export function showMessage(text: string): void {
  if (text.trim() !== '' && !messages.value.includes(text)) messages.value = [...messages.value, text];
}

export function dismissMessage(): void {
  messages.value = messages.value.slice(1);
}

declare global {
  interface Window {
    onSaveProblem?: (text: string) => void;
  }
}

// Defines the function by which the program reports failed saves.
export function listenForSaveProblems(): void {
  window.onSaveProblem = (text) => (saveProblem.value = text);
}
