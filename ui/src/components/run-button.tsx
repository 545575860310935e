import { useEffect, useState } from 'preact/hooks';
import { Button } from './button';

const kPatience = 1000; // ms after which a press counts as refused: the program refuses in silence

// Between a press and the poll that shows what came of it. `shown` is what the poll would change.
export function usePending(shown: unknown): [boolean, (pressed: boolean) => void] {
  const [pending, setPending] = useState(false);
  useEffect(() => setPending(false), [shown]);
  useEffect(() => {
    if (!pending) return undefined;
    const timer = window.setTimeout(() => setPending(false), kPatience);
    return () => window.clearTimeout(timer);
  }, [pending]);
  return [pending, setPending];
}

// Starts a tool, and stops it while it runs.
export function RunButton(props: {
  running: boolean;
  what: string; // "clicking": left out of what is seen where the window is narrow
  disabled?: boolean;
  onStart: () => Promise<boolean>; // false: nothing was started, by the person's own choice or a failure
  onStop: () => Promise<boolean>;
}) {
  const { running, disabled = false } = props;
  const [pending, setPending] = usePending(running);
  const run = async () => {
    setPending(true);
    if (!(await (running ? props.onStop() : props.onStart()))) setPending(false);
  };
  return (
    <Button
      kind={running ? 'stop' : 'primary'}
      icon={running ? 'stop' : 'play'}
      label={`${running ? 'Stop' : 'Start'} ${props.what}`}
      disabled={disabled && !running}
      pending={pending}
      onPress={() => (running || !pending) && void run()}
    >
      {running ? 'Stop' : 'Start'}
      <span class="button__more"> {props.what}</span>
    </Button>
  );
}
