// Groups of controls that the autoclicker and the key spammer have in common.
import { useState } from 'preact/hooks';
import { KeyCap } from '../components/key-cap';
import { NumberField } from '../components/number-field';
import { Group } from '../components/panel';
import { Segmented } from '../components/segmented';
import { type Action, intervalLength, kIntervalParts, rateLimit } from '../rate';
import type { Interval, RepeatMode } from '../reports';
import './tool-groups.css';

// From 2^32 - 1 ms on ("for ever"), the program waits for another time than the interval says.
const kIntervalLimit = 4294967295;

export function IntervalGroup(props: {
  id: string;
  title: string;
  interval: Interval;
  action: Action;
  hint: string; // shown unless there is something to explain about the rate
  onChange: (changes: Partial<Interval>) => void;
}) {
  const { id, title, interval, action, hint, onChange } = props;
  const [errors, setErrors] = useState<Record<string, string>>({});
  const hintId = `${id}-hint`;
  const error = kIntervalParts.map((part) => errors[part.key]).find((text) => text);
  const limit = rateLimit(interval, action);
  return (
    <Group
      title={title}
      class="group--interval"
      hint={limit.text || hint}
      notable={limit.limited}
      hintId={hintId}
      error={error ?? ''}
      tall
    >
      <div class="interval">
        {kIntervalParts.map((part) => (
          <NumberField
            key={part.key}
            label={`${title}: ${part.name.toLowerCase()}`}
            noun={part.name.toLowerCase()}
            unit={part.unit}
            value={interval[part.key]}
            min={0}
            max={maxOf(interval, part)}
            decimals={0}
            hintId={hintId}
            onChange={(value) => onChange({ [part.key]: value })}
            onError={(text) => setErrors((all) => ({ ...all, [part.key]: text }))}
          />
        ))}
      </div>
    </Group>
  );
}

// Returns the maximum of one part, given the others.
function maxOf(interval: Interval, part: (typeof kIntervalParts)[number]): number {
  const others = intervalLength(interval) - interval[part.key] * part.milliseconds;
  const max = Math.floor((kIntervalLimit - 1 - Math.max(0, others)) / part.milliseconds);
  return Math.max(0, Math.min(0x7fffffff, max));
}

export function RepeatGroup(props: {
  id: string;
  what: string; // "clicks", "rounds"
  mode: RepeatMode;
  count: number;
  hint: string;
  onMode: (mode: RepeatMode) => void;
  onCount: (count: number) => void;
}) {
  const { id, what, mode, count, hint, onMode, onCount } = props;
  const [error, setError] = useState('');
  const hintId = `${id}-hint`;
  return (
    <Group title="Repeat" hint={hint} hintId={hintId} error={error}>
      <div class="pair pair--wide-left repeat">
        <Segmented
          label="Repeat"
          value={mode}
          options={[
            { value: 'untilStopped', label: 'Until stopped' },
            { value: 'count', label: 'Count' },
          ]}
          onChange={onMode}
        />
        <NumberField
          label={`Number of ${what}`}
          caption={`Number of ${what}`}
          noun={what}
          unit={'\u00d7'}
          value={count}
          min={1}
          max={0x7fffffff}
          decimals={0}
          disabled={mode !== 'count'}
          hintId={hintId}
          onChange={onCount}
          onError={setError}
        />
      </div>
    </Group>
  );
}

export function HotkeyModeGroup(props: {
  label: string;
  hotkey: string;
  hold: boolean;
  onChange: (hold: boolean) => void;
}) {
  return (
    <Group
      title={
        <>
          Hotkey <KeyCap name={props.hotkey} />
        </>
      }
    >
      <Segmented
        label={props.label}
        value={props.hold}
        options={[
          { value: false, label: 'Press to start and stop' },
          { value: true, label: 'Hold to run' },
        ]}
        onChange={props.onChange}
      />
    </Group>
  );
}
