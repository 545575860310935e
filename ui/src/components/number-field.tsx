import { useEffect, useRef, useState } from 'preact/hooks';
import { Icon } from './icon';
import { readNumber, stepped, type NumberRule } from './numbers';
import './number-field.css';

const kTypingPause = 400; // ms after the last key before a typed number counts as meant

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
  const { label, unit, value, step = 1, disabled = false, hintId } = props;
  const [typed, setTyped] = useState<string | undefined>(undefined); // undefined: nothing but the value is shown
  const timer = useRef(0);
  const latest = useRef(props);
  latest.current = props;
  useEffect(() => () => window.clearTimeout(timer.current), []);

  const text = typed ?? String(value);
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
  const stepBy = (direction: 1 | -1) => {
    const from = readNumber(text, props).value ?? value;
    send(String(stepped(from, step, direction, props)));
    setTyped(undefined);
  };
  const onKeyDown = (event: KeyboardEvent) => {
    if (event.key === 'ArrowUp' || event.key === 'ArrowDown') {
      event.preventDefault();
      stepBy(event.key === 'ArrowUp' ? 1 : -1);
    } else if (event.key === 'Enter') {
      settle();
    } else if (event.key === 'Escape') {
      window.clearTimeout(timer.current);
      setTyped(undefined);
    }
  };

  return (
    <div class={`number${error ? ' number--bad' : ''}${disabled ? ' number--disabled' : ''}`}>
      <input
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
      <Step label={`${label}: less`} icon="minus" disabled={disabled} onPress={() => stepBy(-1)} />
      <Step label={`${label}: more`} icon="plus" disabled={disabled} onPress={() => stepBy(1)} />
    </div>
  );
}

// Out of the tab order: in the field, the arrow keys do the same.
function Step(props: { label: string; icon: 'plus' | 'minus'; disabled: boolean; onPress: () => void }) {
  return (
    <button
      type="button"
      class="number__step"
      tabIndex={-1}
      aria-label={props.label}
      disabled={props.disabled}
      onClick={props.onPress}
    >
      <Icon name={props.icon} />
    </button>
  );
}
