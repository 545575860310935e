import { useState } from 'preact/hooks';
import { NumberField } from '../components/number-field';
import { groupedNumber } from '../components/numbers';
import { Group } from '../components/panel';

export interface Interval {
  hours: number;
  minutes: number;
  seconds: number;
  milliseconds: number;
}

// A wait of this many milliseconds or more does not mean what it says any more (2^32 - 1 is "for ever").
const kLimit = 4294967295;

const kParts = [
  { key: 'hours', name: 'Hours', unit: 'h', length: 3600000 },
  { key: 'minutes', name: 'Minutes', unit: 'min', length: 60000 },
  { key: 'seconds', name: 'Seconds', unit: 's', length: 1000 },
  { key: 'milliseconds', name: 'Milliseconds', unit: 'ms', length: 1 },
] as const;

export const milliseconds = (interval: Interval) =>
  kParts.reduce((sum, part) => sum + interval[part.key] * part.length, 0);

// What an interval means, as the engines take it: never less than a millisecond, with `extra` milliseconds that the
// action itself takes. Sending the input comes on top, so it is the most that can be reached.
export function rateText(interval: Interval, per: string, extra = 0): string {
  const wait = Math.max(1, milliseconds(interval)) + extra;
  const rate = 1000 / wait;
  if (rate >= 1) return `Up to ${groupedNumber(Number(rate.toPrecision(4)))} ${per}/s`;
  if (wait < 120000) return `One every ${groupedNumber(Number((wait / 1000).toFixed(3)))} s`;
  return `One every ${groupedNumber(Number((wait / 60000).toFixed(2)))} min`;
}

export function IntervalGroup(props: {
  id: string;
  title: string;
  interval: Interval;
  hint: string;
  onChange: (interval: Interval) => void;
}) {
  const { id, title, interval, hint, onChange } = props;
  const [errors, setErrors] = useState<Record<string, string>>({});
  const hintId = `${id}-hint`;
  const error = kParts.map((part) => errors[part.key]).find((text) => text);
  return (
    <Group title={title} hint={hint} hintId={hintId} error={error ?? ''}>
      <div class="pair">
        {kParts.map((part) => (
          <NumberField
            key={part.key}
            label={`${title}: ${part.name.toLowerCase()}`}
            name={part.name}
            unit={part.unit}
            value={interval[part.key]}
            min={0}
            max={roomFor(interval, part)}
            decimals={0}
            hintId={hintId}
            onChange={(value) => onChange({ ...interval, [part.key]: value })}
            onError={(text) => setErrors((all) => ({ ...all, [part.key]: text }))}
          />
        ))}
      </div>
    </Group>
  );
}

// The most that one part may be, given the others.
function roomFor(interval: Interval, part: (typeof kParts)[number]): number {
  const others = milliseconds(interval) - interval[part.key] * part.length;
  const room = Math.floor((kLimit - 1 - Math.max(0, others)) / part.length);
  return Math.max(0, Math.min(0x7fffffff, room));
}
