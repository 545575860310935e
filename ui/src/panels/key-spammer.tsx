import { useEffect, useRef } from 'preact/hooks';
import {
  captureKey,
  changeHoldKeySpammer,
  changeKeySpammer,
  removeTarget,
  setChordMode,
  startPressing,
  stopPressing,
} from '../commands';
import { Button } from '../components/button';
import { Icon } from '../components/icon';
import { CaptureNote, KeyCap } from '../components/key-cap';
import { Group, Panel } from '../components/panel';
import { RunButton, usePending } from '../components/run-button';
import { Segmented } from '../components/segmented';
import { countdown } from '../countdown';
import { counted } from '../format';
import { type Action, rateText } from '../rate';
import type { KeySpammerSettings } from '../reports';
import { capture, pressing, settings, status } from '../store';
import { tipWithKey } from '../tips';
import { HotkeyModeGroup, IntervalGroup, RepeatGroup } from './tool-groups';
import './key-spammer.css';

const kMaxTargets = 256;
const kKey: Action = { one: 'key', many: 'keys', length: 0 };
const kRound: Action = { one: 'round', many: 'rounds', length: 0 };

export function KeySpammerPanel() {
  const { keySpammer, hotkeys } = settings.value;
  const { targets, chord } = status.value.keySpammer;
  const action = chord ? kRound : kKey;
  const isEmpty = targets.length === 0;
  return (
    <Panel
      id="panel-keyspam"
      title="Key spammer"
      summary={isEmpty ? 'Add a key first' : rateText(keySpammer, action)}
      action={
        <RunButton
          running={pressing.value || countdown.value?.tool === 'pressing'}
          what="pressing"
          tip={tipWithKey(pressing.value ? 'Stops pressing.' : 'Starts pressing the keys.', 'keySpammer')}
          disabled={isEmpty}
          onStart={startPressing}
          onStop={stopPressing}
        />
      }
    >
      <TargetsGroup />
      <IntervalGroup
        id="press-interval"
        title="Press interval"
        interval={keySpammer}
        action={action}
        hint="The pause after each round."
        onChange={(interval) => void changeKeySpammer(interval)}
      />
      <RepeatGroup
        id="press-repeat"
        what="rounds"
        mode={keySpammer.repeatMode}
        count={keySpammer.repeatCount}
        hint={repeatHint(keySpammer, chord)}
        onMode={(repeatMode) => void changeKeySpammer({ repeatMode })}
        onCount={(repeatCount) => void changeKeySpammer({ repeatCount })}
      />
      <HotkeyModeGroup
        label="Key spammer hotkey"
        hotkey={status.value.hotkeys.keySpammer}
        hold={hotkeys.holdKeySpammer}
        onChange={(hold) => void changeHoldKeySpammer(hold)}
      />
    </Panel>
  );
}

function repeatHint({ repeatMode, repeatCount }: KeySpammerSettings, chord: boolean): string {
  const round = chord ? 'All keys per round.' : 'One key per round.';
  if (repeatMode !== 'count') return `Presses until you stop it. ${round}`;
  return `Stops after ${counted(repeatCount, 'round')}. ${round}`;
}

// Stands where the new key will, scrolled into view: there may be 256 before it.
function NextKey() {
  const item = useRef<HTMLLIElement>(null);
  useEffect(() => item.current?.scrollIntoView({ block: 'nearest' }), []);
  return (
    <li class="targets__item" ref={item}>
      <CaptureNote what="Press a key..." />
    </li>
  );
}

function TargetsGroup() {
  const { targets, chord } = status.value.keySpammer;
  const waiting = capture.value === 'target';
  const isFull = targets.length >= kMaxTargets;
  // Ignore a second press until the list shows the removal: the next key has the same index then.
  const [removing, setRemoving] = usePending(targets.join());
  const remove = (index: number) => {
    if (removing) return;
    setRemoving(true);
    void removeTarget(index);
  };
  return (
    <Group title="Keys" class="group--targets">
      <ul class="targets" aria-label="Keys to press">
        {targets.map((name, index) => (
          <li key={index} class="targets__item">
            <KeyCap name={name} />
            <button
              type="button"
              class="targets__remove"
              aria-label={`Remove ${name}, key ${index + 1}`}
              title={`Removes ${name} from the keys.`}
              onClick={() => remove(index)}
            >
              <Icon name="cross" />
            </button>
          </li>
        ))}
        {waiting ? <NextKey /> : targets.length === 0 && <li class="targets__empty">No keys yet.</li>}
      </ul>
      <div class="pair">
        <Button
          icon="plus"
          tip={
            isFull ? `The list is full: ${kMaxTargets} keys.` : 'Waits for a key and adds it. Esc cancels.'
          }
          disabled={isFull}
          waiting={capture.value !== ''}
          onPress={() => void captureKey('target')}
        >
          Add key
        </Button>
        <Segmented
          label="Key order"
          value={chord}
          options={[
            { value: false, label: 'In turn' },
            { value: true, label: 'Together' },
          ]}
          onChange={(together) => void setChordMode(together)}
        />
      </div>
    </Group>
  );
}
