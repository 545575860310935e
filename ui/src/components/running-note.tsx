import { stopClicking, stopPlayback, stopPressing, stopRecording } from '../commands';
import { clicking, playing, pressing, recording } from '../store';
import { Button } from './button';

// What runs behind a sheet, and the way to stop it from there.
export function RunningNote() {
  const running = [
    { on: recording.value, word: 'recording', stop: stopRecording },
    { on: playing.value, word: 'playing', stop: stopPlayback },
    { on: clicking.value, word: 'clicking', stop: stopClicking },
    { on: pressing.value, word: 'pressing', stop: stopPressing },
  ].filter((entry) => entry.on);
  if (running.length === 0) return null;
  return (
    <div class="dialog__running">
      <span>{`Still ${running.map((entry) => entry.word).join(', ')}.`}</span>
      <Button kind="stop" icon="stop" onPress={() => running.forEach((entry) => void entry.stop())}>
        Stop now
      </Button>
    </div>
  );
}
