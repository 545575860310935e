import { useEffect, useRef } from 'preact/hooks';
import { Icon } from './icon';

const kRepeatDelay = 400; // ms before a held button repeats
const kRepeatInterval = 60; // ms between two repeats

export interface StepperProps {
  label: string;
  tip: string;
  icon: 'plus' | 'minus';
  disabled: boolean;
  onStep: (big: boolean) => void; // with Shift
  onRepeat: (big: boolean) => void;
  onRelease: () => void; // after the last repeat
}

// A button beside a number field that repeats while it is held. Not in the tab order: the arrow keys do the same in the
// field.
export function Stepper(props: StepperProps) {
  const timer = useRef(0);
  const byPointer = useRef(false);
  const repeated = useRef(false);
  const latest = useRef(props);
  latest.current = props;
  useEffect(() => () => window.clearTimeout(timer.current), []);

  const release = () => {
    window.clearTimeout(timer.current);
    if (repeated.current) latest.current.onRelease();
    repeated.current = false;
  };
  // No click follows.
  const leave = () => {
    release();
    byPointer.current = false;
  };
  const press = (event: PointerEvent) => {
    if (event.button !== 0 || props.disabled) return;
    byPointer.current = true;
    props.onStep(event.shiftKey);
    const repeat = () => {
      repeated.current = true;
      latest.current.onRepeat(event.shiftKey);
      timer.current = window.setTimeout(repeat, kRepeatInterval);
    };
    window.clearTimeout(timer.current);
    timer.current = window.setTimeout(repeat, kRepeatDelay);
  };
  return (
    <button
      type="button"
      class="number__step"
      tabIndex={-1}
      aria-label={props.label}
      title={props.tip}
      disabled={props.disabled}
      onPointerDown={press}
      onPointerUp={release}
      onPointerLeave={leave}
      onPointerCancel={leave}
      onClick={(event) => {
        // A click without a press of the pointer comes from a screen reader.
        if (!byPointer.current) props.onStep(event.shiftKey);
        byPointer.current = false;
      }}
    >
      <Icon name={props.icon} />
    </button>
  );
}
