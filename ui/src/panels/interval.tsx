import { useState } from 'preact/hooks';
import { NumberField } from '../components/number-field';
import { Group } from '../components/panel';
import { type Action, type Interval, kParts, milliseconds, rateLimit } from '../rate';
import './interval.css';

// A wait of this many milliseconds or more does not mean what it says any more (2^32 - 1 is "for ever").
const kLimit = 4294967295;

export function IntervalGroup(props: {
  id: string;
  title: string;
  interval: Interval;
  action: Action;
  hint: string; // where there is nothing to say about the rate
  onChange: (interval: Interval) => void;
}) {
  const { id, title, interval, action, hint, onChange } = props;
  const [errors, setErrors] = useState<Record<string, string>>({});
  const hintId = `${id}-hint`;
  const error = kParts.map((part) => errors[part.key]).find((text) => text);
  const limit = rateLimit(interval, action);
  return (
    <Group
      title={title}
      hint={limit.text || hint}
      notable={limit.limited}
      hintId={hintId}
      error={error ?? ''}
      tall
    >
      <div class="interval">
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
