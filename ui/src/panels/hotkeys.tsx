import { has } from '../bridge';
import { captureKey, resetHotkeys } from '../commands';
import { Button } from '../components/button';
import { CaptureNote } from '../components/capture-note';
import { KeyCap } from '../components/key-cap';
import { Panel } from '../components/panel';
import type { Capture, Status } from '../reports';
import { locked, reassigning, status } from '../store';
import './hotkeys.css';

const kHotkeys: readonly {
  capture: Exclude<Capture, '' | 'keyspamtarget'>;
  field: 'hkAuto' | 'hkKeySpam' | 'hkRec' | 'hkPlay' | 'hkUnlock';
  what: string;
  name: string;
}[] = [
  { capture: 'auto', field: 'hkAuto', what: 'Clicker', name: 'clicker' },
  { capture: 'keyspamhotkey', field: 'hkKeySpam', what: 'Key presser', name: 'key presser' },
  { capture: 'rec', field: 'hkRec', what: 'Record', name: 'record' },
  { capture: 'play', field: 'hkPlay', what: 'Play', name: 'play' },
  { capture: 'unlock', field: 'hkUnlock', what: 'Lock and unlock', name: 'unlock' },
];

function lockText({ lockOn, hkUnlock }: Status, isLocked: boolean): string {
  if (!lockOn) return 'The hotkey lock is off.';
  if (isLocked) return `Locked: all hotkeys but ${hkUnlock} are ordinary keys now.`;
  return `Unlocked. ${hkUnlock} locks the hotkeys and stops clicking, pressing and playing.`;
}

export function HotkeysPanel() {
  return (
    <Panel
      id="panel-ui"
      title="Hotkeys"
      summary="Work in every window"
      action={
        has('resetHotkeys') && (
          <Button kind="quiet" waiting={reassigning.value !== ''} onPress={() => void resetHotkeys()}>
            Reset hotkeys
          </Button>
        )
      }
    >
      <ul class="hotkeys">
        {kHotkeys.map((entry) => (
          <Hotkey key={entry.capture} {...entry} />
        ))}
      </ul>
      <p class="hotkeys__lock" role="status" aria-label="Hotkey lock">
        {lockText(status.value, locked.value)}
      </p>
    </Panel>
  );
}

function Hotkey({ capture, field, what, name }: (typeof kHotkeys)[number]) {
  const waiting = reassigning.value === capture;
  return (
    <li class="hotkeys__row">
      <span>{what}</span>
      {waiting ? <CaptureNote what="Press a key..." /> : <KeyCap name={status.value[field]} />}
      <Button
        label={`Change the ${name} hotkey`}
        waiting={reassigning.value !== ''}
        onPress={() => void captureKey(capture)}
      >
        Change
      </Button>
    </li>
  );
}
