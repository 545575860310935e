import { runningWords, stopAll, whatRuns } from '../running';
import { Button } from './button';

// What runs behind a sheet, and the way to stop it from there.
export function RunningNote() {
  const running = whatRuns();
  if (running.length === 0) return null;
  return (
    <div class="dialog__running">
      <span>{`Still ${runningWords(running)}.`}</span>
      <Button kind="stop" icon="stop" onPress={() => stopAll(running)}>
        Stop now
      </Button>
    </div>
  );
}
