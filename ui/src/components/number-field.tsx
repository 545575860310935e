import { useEffect, useRef, useState } from 'preact/hooks';
import { Icon } from './icon';
import { readNumber, stepped, type NumberRule } from './numbers';
import './number-field.css';

const kTypingPause = 400; // ms after the last key before a typed number counts as meant
const kHoldPause = 400; // ms before a stepper that is held repeats
const kHoldInterval = 60; // ms between its steps then
const kBigStep = 10; // steps that Shift and the page keys make at once

export interface NumberFieldProps extends NumberRule {
  label: string; // accessible name
  unit: string; // shown beside the number
  value: number;
  step?: number;
  disabled?: boolean;
  hintId: string; // the line where the explanation is shown
  onChange: (value: number) => void;
  onError: (error: string) => void; // empty when the entry is good
}

export function NumberField(props: NumberFieldProps) {
  const { label, unit, value, disabled = false, hintId } = props;
  const [typed, setTyped] = useState<string | undefined>(undefined); // undefined: nothing but the value is shown
  const timer = useRef(0);
  const latest = useRef(props);
  latest.current = props;
  useEffect(() => () => window.clearTimeout(timer.current), []);

  const text = typed ?? String(value);
  const shown = useRef(text);
  shown.current = text;
  const input = useRef<HTMLInputElement>(null);
  // A bad entry that was left is not kept over another value, nor in a field that cannot be mended.
  useEffect(() => {
    if (disabled || document.activeElement !== input.current) setTyped(undefined);
  }, [value, disabled]);
  const error = disabled ? '' : readNumber(text, props).error;
  useEffect(() => props.onError(error), [error]);

  const send = (entry: string) => {
    window.clearTimeout(timer.current);
    const reading = readNumber(entry, latest.current);
    if (reading.value !== undefined && reading.value !== latest.current.value) {
      latest.current.onChange(reading.value);
    }
    return reading.value !== undefined;
  };
  const type = (entry: string) => {
    setTyped(entry);
    window.clearTimeout(timer.current);
    timer.current = window.setTimeout(() => send(entry), kTypingPause);
  };
  // A good entry is shown as the program holds it; a bad one stays for the person to mend.
  const settle = () => {
    if (typed !== undefined && send(typed)) setTyped(undefined);
  };
  const settleRun = () => {
    send(shown.current);
    setTyped(undefined);
  };
  const stepBy = (direction: 1 | -1, big: boolean) => {
    const { value: held, step: size = 1 } = latest.current;
    const from = readNumber(shown.current, latest.current).value ?? held;
    return String(stepped(from, big ? size * kBigStep : size, direction, latest.current));
  };
  const stepOnce = (direction: 1 | -1, big: boolean) => {
    send(stepBy(direction, big));
    setTyped(undefined);
  };
  const onKeyDown = (event: KeyboardEvent) => {
    const up = event.key === 'ArrowUp' || event.key === 'PageUp';
    if (up || event.key === 'ArrowDown' || event.key === 'PageDown') {
      event.preventDefault();
      stepOnce(up ? 1 : -1, event.shiftKey || event.key.startsWith('Page'));
    } else if (event.key === 'Enter') {
      settle();
    } else if (event.key === 'Escape') {
      window.clearTimeout(timer.current);
      setTyped(undefined);
    }
  };
  const stepper = (direction: 1 | -1) => ({
    disabled,
    onStep: (big: boolean) => stepOnce(direction, big),
    // While it is held, the number runs in sight and is sent when it stands still.
    onRepeat: (big: boolean) => {
      shown.current = stepBy(direction, big);
      type(shown.current);
    },
    onRelease: () => settleRun(),
  });

  return (
    <div class={`number${error ? ' number--bad' : ''}${disabled ? ' number--disabled' : ''}`}>
      <input
        ref={input}
        class="number__input"
        type="text"
        inputMode={props.decimals > 0 ? 'decimal' : 'numeric'}
        autoComplete="off"
        spellcheck={false}
        aria-label={label}
        aria-invalid={error !== ''}
        aria-describedby={hintId}
        disabled={disabled}
        value={text}
        onInput={(event) => type(event.currentTarget.value)}
        onBlur={settle}
        onKeyDown={onKeyDown}
      />
      <span class="number__unit" aria-hidden="true">
        {unit}
      </span>
      <Step label={`${label}: less`} icon="minus" {...stepper(-1)} />
      <Step label={`${label}: more`} icon="plus" {...stepper(1)} />
    </div>
  );
}

// Out of the tab order: in the field, the arrow keys do the same.
function Step(props: {
  label: string;
  icon: 'plus' | 'minus';
  disabled: boolean;
  onStep: (big: boolean) => void;
  onRepeat: (big: boolean) => void;
  onRelease: () => void;
}) {
  const timer = useRef(0);
  const byPointer = useRef(false);
  const repeated = useRef(false);
  const latest = useRef(props);
  latest.current = props;
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
  useEffect(() => () => window.clearTimeout(timer.current), []);
  const press = (event: PointerEvent) => {
    if (event.button !== 0 || props.disabled) return;
    byPointer.current = true;
    props.onStep(event.shiftKey);
    const repeat = () => {
      repeated.current = true;
      latest.current.onRepeat(event.shiftKey);
      timer.current = window.setTimeout(repeat, kHoldInterval);
    };
    window.clearTimeout(timer.current);
    timer.current = window.setTimeout(repeat, kHoldPause);
  };
  return (
    <button
      type="button"
      class="number__step"
      tabIndex={-1}
      aria-label={props.label}
      disabled={props.disabled}
      onPointerDown={press}
      onPointerUp={release}
      onPointerLeave={leave}
      onPointerCancel={leave}
      onClick={(event) => {
        // A press that came without a pointer: from a screen reader.
        if (!byPointer.current) props.onStep(event.shiftKey);
        byPointer.current = false;
      }}
    >
      <Icon name={props.icon} />
    </button>
  );
}
