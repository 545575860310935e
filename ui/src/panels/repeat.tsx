import { useState } from 'preact/hooks';
import { NumberField } from '../components/number-field';
import { Group } from '../components/panel';
import { Segmented } from '../components/segmented';

// Until stopped, or a number of times. The program takes 0 for "a number of times" and everything else for the former.
export function RepeatGroup(props: {
  id: string;
  what: string; // "clicks", "rounds"
  mode: number;
  times: number;
  hint: string;
  onMode: (mode: number) => void;
  onTimes: (times: number) => void;
}) {
  const { id, what, mode, times, hint, onMode, onTimes } = props;
  const [error, setError] = useState('');
  const hintId = `${id}-hint`;
  return (
    <Group title="Repeat" hint={hint} hintId={hintId} error={error}>
      <div class="pair pair--wide-left">
        <Segmented
          label="Repeat"
          value={mode === 0}
          options={[
            { value: false, label: 'Until stopped' },
            { value: true, label: 'Count' },
          ]}
          onChange={(counted) => onMode(counted ? 0 : 1)}
        />
        <NumberField
          label={`Number of ${what}`}
          name={`Number of ${what}`}
          unit={'\u00d7'}
          value={times}
          min={1}
          max={0x7fffffff}
          decimals={0}
          disabled={mode !== 0}
          hintId={hintId}
          onChange={onTimes}
          onError={setError}
        />
      </div>
    </Group>
  );
}
