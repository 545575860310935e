import { useEffect, useId, useRef, useState } from 'preact/hooks';
import { readNumber, stepped, type NumberRule } from './numbers';
import { Stepper } from './stepper';
import './number-field.css';

const kTypingPause = 400; // ms after the last key before a typed number is sent
const kBigStep = 10; // steps that Shift and the page keys make at once

export interface NumberFieldProps extends NumberRule {
  label: string; // accessible name
  caption?: string; // visible above the field; the label contains its words
  unit: string; // shown beside the number
  value: number;
  step?: number;
  disabled?: boolean;
  hintId: string; // the line that shows the error
  onChange: (value: number) => void;
  onError: (error: string) => void; // empty if the entry is valid
}

export function NumberField(props: NumberFieldProps) {
  const { label, unit, disabled = false, hintId } = props;
  const input = useRef<HTMLInputElement>(null);
  const id = useId();
  const entry = useNumberEntry(props, input);
  const error = disabled ? '' : readNumber(entry.text, props).error;
  useEffect(() => props.onError(error), [error]);

  const onKeyDown = (event: KeyboardEvent) => {
    const isUp = event.key === 'ArrowUp' || event.key === 'PageUp';
    if (isUp || event.key === 'ArrowDown' || event.key === 'PageDown') {
      event.preventDefault();
      entry.step(isUp ? 1 : -1, event.shiftKey || event.key.startsWith('Page'));
    } else if (event.key === 'Enter') {
      entry.finish();
    } else if (event.key === 'Escape') {
      entry.discard();
    }
  };
  const stepper = (direction: 1 | -1) => ({
    tip: `${direction > 0 ? 'Increases' : 'Decreases'} the number. Hold to repeat, Shift for steps of ten.`,
    disabled,
    onStep: (big: boolean) => entry.step(direction, big),
    onRepeat: (big: boolean) => entry.repeatStep(direction, big),
    onRelease: entry.finishRepeat,
  });
  const field = (
    <div class={`number${error ? ' number--bad' : ''}${disabled ? ' number--disabled' : ''}`}>
      <input
        ref={input}
        id={id}
        class="number__input"
        type="text"
        inputMode={props.decimals > 0 ? 'decimal' : 'numeric'}
        autoComplete="off"
        spellcheck={false}
        aria-label={label}
        aria-invalid={error !== ''}
        aria-describedby={hintId}
        disabled={disabled}
        value={entry.text}
        onInput={(event) => entry.type(event.currentTarget.value)}
        onBlur={entry.finish}
        onKeyDown={onKeyDown}
      />
      <span class="number__unit" aria-hidden="true">
        {unit}
      </span>
      <Stepper label={`${label}: less`} icon="minus" {...stepper(-1)} />
      <Stepper label={`${label}: more`} icon="plus" {...stepper(1)} />
    </div>
  );
  if (!props.caption) return field;
  return (
    <div class="captioned">
      <label class="captioned__label" for={id}>
        {props.caption}
      </label>
      {field}
    </div>
  );
}

// The text in the field, and when a number in it is sent.
function useNumberEntry(props: NumberFieldProps, input: { current: HTMLInputElement | null }) {
  const { value, disabled = false } = props;
  const [typed, setTyped] = useState<string | undefined>(undefined); // undefined while the field shows the value
  const timer = useRef(0);
  const latest = useRef(props);
  latest.current = props;
  const text = typed ?? String(value);
  const latestText = useRef(text);
  latestText.current = text;
  useEffect(() => () => window.clearTimeout(timer.current), []);
  // Drop an invalid entry that the user has left when the value changes, and any entry of a disabled field.
  useEffect(() => {
    if (disabled || document.activeElement !== input.current) setTyped(undefined);
  }, [value, disabled]);

  // Returns whether the entry is valid.
  const send = (entry: string): boolean => {
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
  const afterStep = (direction: 1 | -1, big: boolean): string => {
    const { value: current, step = 1 } = latest.current;
    const from = readNumber(latestText.current, latest.current).value ?? current;
    return String(stepped(from, big ? step * kBigStep : step, direction, latest.current));
  };
  return {
    text,
    type,
    // A valid entry is shown as the program reports it; an invalid one stays for the user to correct.
    finish: () => {
      if (typed !== undefined && send(typed)) setTyped(undefined);
    },
    discard: () => {
      window.clearTimeout(timer.current);
      setTyped(undefined);
    },
    step: (direction: 1 | -1, big: boolean) => {
      send(afterStep(direction, big));
      setTyped(undefined);
    },
    // Shows the number at each repeat, and sends it when it stops.
    repeatStep: (direction: 1 | -1, big: boolean) => {
      latestText.current = afterStep(direction, big);
      type(latestText.current);
    },
    finishRepeat: () => {
      send(latestText.current);
      setTyped(undefined);
    },
  };
}
