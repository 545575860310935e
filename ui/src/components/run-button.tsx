import { useEffect, useState } from 'preact/hooks';
import { Button } from './button';
import type { IconName } from './icon';

const kPendingTimeout = 1000; // ms after which a press counts as rejected: the program does not report a rejection

// Returns whether a press waits for the poll that shows its result, and how to set that. `shown` is what the poll
// changes.
export function usePending(shown: unknown): [boolean, (pressed: boolean) => void] {
  const [pending, setPending] = useState(false);
  useEffect(() => setPending(false), [shown]);
  useEffect(() => {
    if (!pending) return undefined;
    const timer = window.setTimeout(() => setPending(false), kPendingTimeout);
    return () => window.clearTimeout(timer);
  }, [pending]);
  return [pending, setPending];
}

// Starts something, and stops it while it runs.
export function RunButton(props: {
  running: boolean;
  start?: string;
  what?: string; // "clicking"; a narrow window hides it
  icon?: IconName;
  kind?: 'plain' | 'primary';
  disabled?: boolean;
  tip: string;
  onStart: () => Promise<boolean>; // false: the user has cancelled or it failed
  onStop: () => Promise<boolean>;
}) {
  const { running, start = 'Start', what, icon = 'play', kind = 'primary', disabled = false } = props;
  const [pending, setPending] = usePending(running);
  const run = async () => {
    setPending(true);
    if (!(await (running ? props.onStop() : props.onStart()))) setPending(false);
  };
  const verb = running ? 'Stop' : start;
  return (
    <Button
      kind={running ? 'stop' : kind}
      icon={running ? 'stop' : icon}
      label={what && `${verb} ${what}`}
      tip={props.tip}
      disabled={disabled && !running}
      pending={pending}
      onPress={() => (running || !pending) && void run()}
    >
      {verb}
      {what && <span class="button__more"> {what}</span>}
    </Button>
  );
}
