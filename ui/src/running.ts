// What runs, and how it is stopped.
import { stopClicking, stopPlayback, stopPressing, stopRecording } from './commands';
import type { IconName } from './components/icon';
import type { Hotkey } from './hotkey-order';
import { clicking, playing, pressing, recording, settings } from './store';

export interface Running {
  word: string; // inside a sentence
  kind: 'recording' | 'playing' | 'tool';
  sign: IconName;
  hotkey: Hotkey['capture'];
  held: boolean; // the key runs the tool only while it is held
  stop: () => Promise<boolean>;
}

export function whatRuns(): Running[] {
  const { holdAuto, holdKeySpam } = settings.value;
  const recorder: Running = {
    word: 'recording',
    kind: 'recording',
    sign: 'record',
    hotkey: 'rec',
    held: false,
    stop: stopRecording,
  };
  const player: Running = {
    word: 'playing',
    kind: 'playing',
    sign: 'play',
    hotkey: 'play',
    held: false,
    stop: stopPlayback,
  };
  const clicker: Running = {
    word: 'clicking',
    kind: 'tool',
    sign: 'pointer',
    hotkey: 'auto',
    held: holdAuto,
    stop: stopClicking,
  };
  const presser: Running = {
    word: 'pressing',
    kind: 'tool',
    sign: 'key',
    hotkey: 'keyspamhotkey',
    held: holdKeySpam,
    stop: stopPressing,
  };
  return [
    ...(recording.value ? [recorder] : []),
    ...(playing.value ? [player] : []),
    ...(clicking.value ? [clicker] : []),
    ...(pressing.value ? [presser] : []),
  ];
}

// Names of what runs, as the words of a sentence.
export const runningWords = (running: Running[]) => running.map((entry) => entry.word).join(', ');

export const stopAll = (running: Running[]) => running.forEach((entry) => void entry.stop());
