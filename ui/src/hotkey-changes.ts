// What follows a new hotkey: a question or a warning if the key is one that applications need, and the reset of all
// hotkeys with its undo.
import { effect, signal } from '@preact/signals';
import { captureKey, readHotkeys, setHotkey } from './commands';
import { capitalised } from './format';
import { kHotkeys } from './hotkey-order';
import { showDone } from './notices';
import { pollNow } from './poll';
import type { Capture, HotkeyCodes, HotkeyId } from './reports';
import { capture, status } from './store';

const kAnswerSeconds = 10;
const kTakenButtons: Record<number, string> = { 1: 'left', 2: 'right' };
// Shift, Ctrl, Alt and Windows, without and with their side.
const kModifiers = new Set([16, 17, 18, 160, 161, 162, 163, 164, 165, 91, 92]);

// A mouse button that has just become a hotkey, until the user has decided.
export interface ButtonQuestion {
  id: HotkeyId;
  button: string; // "left"
  former: number; // code
  formerName: string;
  seconds: number; // left before the former key comes back
}
export const buttonQuestion = signal<ButtonQuestion | null>(null);

const titleOf = (id: HotkeyId) => kHotkeys.find((hotkey) => hotkey.id === id)?.title ?? '';

// The hotkeys before the capture that this page has started.
let started: { id: HotkeyId; codes: HotkeyCodes; names: Record<HotkeyId, string> } | null = null;

export async function captureHotkey(id: HotkeyId): Promise<void> {
  const codes = await readHotkeys();
  if (codes && (await captureKey(id))) started = { id, codes, names: status.peek().hotkeys };
}

// Restores a key without a question.
async function restoreKey(id: HotkeyId, code: number): Promise<void> {
  if (await setHotkey(id, code)) await pollNow();
}

async function inspectCaptured({ id, codes, names }: NonNullable<typeof started>): Promise<void> {
  const former = codes[id];
  const now = (await readHotkeys())?.[id];
  if (now === undefined || former === undefined || now === former) return;
  const button = kTakenButtons[now];
  if (button) {
    buttonQuestion.value = { id, button, former, formerName: names[id], seconds: kAnswerSeconds };
  } else if (kModifiers.has(now)) {
    const name = status.peek().hotkeys[id];
    showDone(`${name} alone is now the hotkey for ${titleOf(id)}. It also acts when you type with ${name}.`, [
      {
        label: 'Undo',
        tip: 'Restores the former key.',
        press: () => void restoreKey(id, former),
        isPossible: () => status.value.hotkeys[id] === name,
      },
    ]);
  }
}

export function questionText({ id, button }: ButtonQuestion): string {
  return (
    `${capitalised(button)} button is now the hotkey for ${titleOf(id)}: ` +
    `${button} clicks no longer reach applications.`
  );
}

export function answerQuestion(keep: boolean): void {
  const question = buttonQuestion.peek();
  if (!question) return;
  buttonQuestion.value = null;
  if (!keep) void restoreKey(question.id, question.former);
}

// Follows the captures that this page starts, and counts the question down.
export function watchHotkeys(): void {
  let before: Capture = '';
  effect(() => {
    const now = capture.value;
    const hasEnded = now === '' && before !== '' && before === started?.id;
    before = now;
    if (!hasEnded || !started) return;
    const captured = started;
    started = null;
    void inspectCaptured(captured);
  });
  let timer = 0;
  effect(() => {
    const isOpen = buttonQuestion.value !== null;
    if (isOpen && timer === 0) timer = window.setInterval(countQuestion, 1000);
    if (!isOpen) window.clearInterval(timer);
    if (!isOpen) timer = 0;
  });
}

function countQuestion(): void {
  const question = buttonQuestion.peek();
  if (!question) return;
  if (question.seconds > 1) buttonQuestion.value = { ...question, seconds: question.seconds - 1 };
  else answerQuestion(false);
}

// Sets the given hotkeys. Resolves to whether all worked.
async function setHotkeys(codes: HotkeyCodes): Promise<boolean> {
  for (const { id } of kHotkeys) {
    const code = codes[id];
    if (code !== undefined && !(await setHotkey(id, code))) return false;
  }
  await pollNow();
  return true;
}

// Sets all hotkeys to their defaults, and offers the user's own keys again.
export async function resetHotkeys(): Promise<void> {
  const own = await readHotkeys();
  if (!own) return;
  const changed = kHotkeys.filter(({ id, defaultCode }) => own[id] !== defaultCode);
  const defaults = Object.fromEntries(changed.map(({ id, defaultCode }) => [id, defaultCode])) as HotkeyCodes;
  if (!(await setHotkeys(defaults))) return;
  const former = Object.fromEntries(changed.map(({ id }) => [id, own[id]])) as HotkeyCodes;
  const names = status.peek().hotkeys;
  showDone('All hotkeys have their default keys again.', [
    {
      label: 'Undo',
      tip: 'Restores your own keys.',
      press: () => void setHotkeys(former),
      isPossible: () => kHotkeys.every(({ id }) => status.value.hotkeys[id] === names[id]),
    },
  ]);
}
