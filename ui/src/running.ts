// What runs, how far it is, and how it is stopped.
import { stopClicking, stopPlayback, stopPressing, stopRecording } from './commands';
import type { IconName } from './components/icon';
import { counted, groupedNumber, shortClock } from './format';
import type { HotkeyId } from './reports';
import { clicking, macroLength, playing, pressing, progress, recording, settings } from './store';

export interface Running {
  word: string; // inside a sentence
  kind: 'recording' | 'playing' | 'tool';
  icon: IconName;
  hotkey: HotkeyId;
  held: boolean; // it runs only while its hotkey is held
  stop: () => Promise<boolean>;
}

export function whatRuns(): Running[] {
  const { holdAutoclicker, holdKeySpammer } = settings.value.hotkeys;
  const recorder: Running = {
    word: 'recording',
    kind: 'recording',
    icon: 'record',
    hotkey: 'record',
    held: false,
    stop: stopRecording,
  };
  const player: Running = {
    word: 'playing',
    kind: 'playing',
    icon: 'play',
    hotkey: 'play',
    held: false,
    stop: stopPlayback,
  };
  const autoclicker: Running = {
    word: 'clicking',
    kind: 'tool',
    icon: 'pointer',
    hotkey: 'autoclicker',
    held: holdAutoclicker,
    stop: stopClicking,
  };
  const keySpammer: Running = {
    word: 'pressing',
    kind: 'tool',
    icon: 'key',
    hotkey: 'keySpammer',
    held: holdKeySpammer,
    stop: stopPressing,
  };
  return [
    ...(recording.value ? [recorder] : []),
    ...(playing.value ? [player] : []),
    ...(clicking.value ? [autoclicker] : []),
    ...(pressing.value ? [keySpammer] : []),
  ];
}

// Returns how far it is: "1,204 clicks", "round 3, 0:04 of 0:09".
export function countText({ hotkey }: Running): string {
  const now = progress.value;
  switch (hotkey) {
    case 'record':
      return `${shortClock(now.recordSeconds)}, ${counted(now.recordEvents, 'event')}`;
    case 'play': {
      const length = macroLength.value;
      const round = settings.value.macro.loop ? `round ${groupedNumber(now.playRound)}, ` : '';
      return `${round}${shortClock(Math.min(now.playSeconds, length))} of ${shortClock(length)}`;
    }
    case 'autoclicker':
      return counted(now.clicks, 'click', 'clicks');
    default:
      return counted(now.presses, 'press', 'presses');
  }
}

export const runningWords = (running: Running[]) => running.map((entry) => entry.word).join(', ');

export const stopAll = (running: Running[]) => running.forEach((entry) => void entry.stop());
