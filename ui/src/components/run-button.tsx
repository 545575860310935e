import { useEffect, useState } from 'preact/hooks';
import { Button } from './button';

const kPatience = 1000; // ms after which a press counts as refused: the program refuses in silence

// Between a press and the poll that shows what came of it. `shown` is what the poll would change.
export function usePending(shown: unknown): [boolean, () => void] {
  const [pending, setPending] = useState(false);
  useEffect(() => setPending(false), [shown]);
  useEffect(() => {
    if (!pending) return undefined;
    const timer = window.setTimeout(() => setPending(false), kPatience);
    return () => window.clearTimeout(timer);
  }, [pending]);
  return [pending, () => setPending(true)];
}

// Starts a tool, and stops it while it runs.
export function RunButton(props: {
  running: boolean;
  what: string; // "clicking": left out of what is seen where the window is narrow
  disabled?: boolean;
  onStart: () => unknown;
  onStop: () => unknown;
}) {
  const { running, disabled = false } = props;
  const [pending, press] = usePending(running);
  const run = () => {
    press();
    void (running ? props.onStop() : props.onStart());
  };
  return (
    <Button
      kind={running ? 'stop' : 'primary'}
      icon={running ? 'stop' : 'play'}
      label={`${running ? 'Stop' : 'Start'} ${props.what}`}
      disabled={disabled && !running}
      pending={pending}
      onPress={() => (running || !pending) && run()}
    >
      {running ? 'Stop' : 'Start'}
      <span class="button__more"> {props.what}</span>
    </Button>
  );
}
