import { useState } from 'preact/hooks';
import { setCountdown } from '../commands';
import { additionalSettings } from '../store';
import { NumberField } from './number-field';

const kHintId = 'countdown-hint';

// The length of the countdown before a tool starts from the page.
export function CountdownPreference() {
  const [error, setError] = useState('');
  return (
    <div class="preferences__number">
      <span aria-hidden="true">Countdown</span>
      <NumberField
        label="Countdown before a start"
        noun="seconds"
        unit="s"
        value={additionalSettings.value.countdownSeconds}
        min={0}
        max={10}
        decimals={0}
        hintId={kHintId}
        onChange={(seconds) => void setCountdown(seconds)}
        onError={setError}
      />
      <p class={`preferences__hint${error ? ' group__hint--error' : ''}`} id={kHintId}>
        {error || 'Time to move to your target after Start clicking or Start pressing. 0 turns it off.'}
      </p>
    </div>
  );
}
