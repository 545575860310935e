import { useEffect, useRef } from 'preact/hooks';
import {
  captureKey,
  changeHoldKeySpam,
  changePresser,
  removeTarget,
  setChordMode,
  startPressing,
  stopPressing,
} from '../commands';
import { Button } from '../components/button';
import { CaptureNote } from '../components/capture-note';
import { Icon } from '../components/icon';
import { KeyCap } from '../components/key-cap';
import { counted } from '../components/numbers';
import { Group, Panel } from '../components/panel';
import { RunButton, usePending } from '../components/run-button';
import { Segmented } from '../components/segmented';
import { type Action, rateText } from '../rate';
import { pressing, reassigning, settings, status } from '../store';
import { HotkeyModeGroup } from './hotkey-mode';
import { IntervalGroup } from './interval';
import { RepeatGroup } from './repeat';
import './presser.css';

const kMostTargets = 256;
const kKey: Action = { one: 'key', many: 'keys', length: 0 };
const kRound: Action = { one: 'round', many: 'rounds', length: 0 };

export function PresserPanel() {
  const { ksh, ksm, kss, ksms, ksRptMode, ksRptTimes, holdKeySpam } = settings.value;
  const { keySpamTargets, keySpamChord } = status.value;
  const interval = { hours: ksh, minutes: ksm, seconds: kss, milliseconds: ksms };
  const action = keySpamChord ? kRound : kKey;
  const rate = rateText(interval, action);
  const empty = keySpamTargets.length === 0;
  return (
    <Panel
      id="panel-keyspam"
      title="Key presser"
      summary={empty ? 'Add a key first' : rate}
      action={
        <RunButton
          running={pressing.value}
          what="pressing"
          disabled={empty}
          onStart={startPressing}
          onStop={stopPressing}
        />
      }
    >
      <TargetsGroup />
      <IntervalGroup
        id="press-interval"
        title="Press interval"
        interval={interval}
        action={action}
        hint="The pause after each round."
        onChange={(i) =>
          void changePresser({ ksh: i.hours, ksm: i.minutes, kss: i.seconds, ksms: i.milliseconds })
        }
      />
      <RepeatGroup
        id="press-repeat"
        what="rounds"
        mode={ksRptMode}
        times={ksRptTimes}
        hint={repeatHint(ksRptMode, ksRptTimes, keySpamChord)}
        onMode={(mode) => void changePresser({ ksRptMode: mode })}
        onTimes={(times) => void changePresser({ ksRptTimes: times })}
      />
      <HotkeyModeGroup
        label="Key presser hotkey"
        hotkey={status.value.hkKeySpam}
        hold={holdKeySpam}
        onChange={(hold) => void changeHoldKeySpam(hold)}
      />
    </Panel>
  );
}

function repeatHint(mode: number, times: number, chord: boolean): string {
  const round = chord ? 'A round presses every key.' : 'A round presses one key.';
  if (mode !== 0) return `Presses until you stop it. ${round}`;
  return `Stops by itself after ${counted(times, 'round')}. ${round}`;
}

// Stands where the key will, and is brought in sight: there may be 256 before it.
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
  const { keySpamTargets, keySpamChord } = status.value;
  const waiting = reassigning.value === 'keyspamtarget';
  const full = keySpamTargets.length >= kMostTargets;
  // Until the list shows the removal, a second press would mean the key that has moved to this place.
  const [removing, setRemoving] = usePending(keySpamTargets.join());
  const remove = (index: number) => {
    if (removing) return;
    setRemoving(true);
    void removeTarget(index);
  };
  return (
    <Group title="Keys">
      <ul class="targets" aria-label="Keys to press">
        {keySpamTargets.map((name, index) => (
          <li key={index} class="targets__item">
            <KeyCap name={name} />
            <button
              type="button"
              class="targets__remove"
              aria-label={`Remove ${name}, key ${index + 1}`}
              onClick={() => remove(index)}
            >
              <Icon name="cross" />
            </button>
          </li>
        ))}
        {waiting ? <NextKey /> : keySpamTargets.length === 0 && <li class="targets__empty">No keys yet.</li>}
      </ul>
      <div class="pair">
        <Button
          icon="plus"
          disabled={full}
          waiting={reassigning.value !== ''}
          onPress={() => void captureKey('keyspamtarget')}
        >
          Add key
        </Button>
        <Segmented
          label="Key order"
          value={keySpamChord}
          options={[
            { value: false, label: 'In turn' },
            { value: true, label: 'Together' },
          ]}
          onChange={(chord) => void setChordMode(chord)}
        />
      </div>
    </Group>
  );
}
