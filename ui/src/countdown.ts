// The countdown before a tool starts from the page: the click or key that started it would otherwise hit the page.
import { effect, signal } from '@preact/signals';
import { additionalSettings, capture, clicking, pressing } from './store';

export type CountedTool = 'clicking' | 'pressing';

interface Countdown {
  tool: CountedTool;
  seconds: number; // left, whole
}

export const countdown = signal<Countdown | null>(null);

let timer = 0;
let finish: (completed: boolean) => void = () => {};

function end(completed: boolean): void {
  window.clearInterval(timer);
  countdown.value = null;
  finish(completed);
}

export function cancelCountdown(): void {
  if (countdown.peek()) end(false);
}

// Resolves to whether the tool is to start: to false if the user cancels, or if the hotkey has started it meanwhile.
// Takes the focus from the control that asked, so that a key does not press it again.
export function countDown(tool: CountedTool): Promise<boolean> {
  cancelCountdown();
  const { countdownSeconds } = additionalSettings.peek();
  if (countdownSeconds === 0) return Promise.resolve(true);
  if (document.activeElement instanceof HTMLElement) document.activeElement.blur();
  countdown.value = { tool, seconds: countdownSeconds };
  timer = window.setInterval(() => {
    const seconds = (countdown.peek()?.seconds ?? 0) - 1;
    if (seconds > 0) countdown.value = { tool, seconds };
    else end(true);
  }, 1000);
  return new Promise((resolve) => (finish = resolve));
}

// Ends the countdown of a tool that runs already, and when the program waits for a key.
export function watchCountdown(): void {
  effect(() => {
    const tool = countdown.value?.tool;
    if ((tool === 'clicking' && clicking.value) || (tool === 'pressing' && pressing.value)) cancelCountdown();
    else if (tool && capture.value) cancelCountdown();
  });
}
