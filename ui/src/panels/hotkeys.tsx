import { signal } from '@preact/signals';
import { useLayoutEffect, useRef, useState } from 'preact/hooks';
import { has } from '../bridge';
import { captureKey, resetHotkeys, setAppSwitch } from '../commands';
import { Button } from '../components/button';
import { CaptureNote } from '../components/capture-note';
import { Confirm } from '../components/confirm';
import { Icon } from '../components/icon';
import { KeyCap } from '../components/key-cap';
import { Panel } from '../components/panel';
import { Toggle } from '../components/toggle';
import { type Hotkey, kHotkeys, takenBy } from '../hotkey-order';
import type { Settings, Status } from '../reports';
import { appSettings, hotkeysOff, locked, reassigning, settings, status } from '../store';
import './hotkeys.css';

function lockText({ lockOn, hkUnlock }: Status, isLocked: boolean): string {
  if (!lockOn) return 'The hotkey lock is off.';
  if (isLocked) return `Locked: all hotkeys but ${hkUnlock} are ordinary keys now.`;
  return `Unlocked. ${hkUnlock} locks the hotkeys and stops clicking, pressing and playing.`;
}

const modeText: Record<Hotkey['capture'], (s: Settings, lockOn: boolean) => string> = {
  auto: ({ holdAuto }) => (holdAuto ? 'Hold to run' : 'Press to start and stop'),
  keyspamhotkey: ({ holdKeySpam }) => (holdKeySpam ? 'Hold to run' : 'Press to start and stop'),
  rec: () => 'Press to start and stop',
  play: () => 'Press to start and stop',
  unlock: (_, lockOn) => (lockOn ? 'Press to lock and unlock' : 'Of no use while the lock is off'),
};

// What a person should know about a binding: that another takes its key, or that a click is lost to it.
function noticeOf(hotkey: Hotkey): string {
  const winner = takenBy(hotkey.capture, status.value);
  if (winner)
    return `${status.value[hotkey.field]} is taken: ${winner.what} comes first, so this never acts.`;
  const name = status.value[hotkey.field];
  if (name === 'Left Mouse' || name === 'Right Mouse') {
    return `Every ${name === 'Left Mouse' ? 'left' : 'right'} click goes to this, in every window.`;
  }
  return '';
}

export function HotkeysPanel() {
  const summary = hotkeysOff.value ? 'Off' : locked.value ? 'Locked' : 'Work in every window';
  return (
    <Panel id="panel-ui" title="Hotkeys" summary={summary}>
      <div class="panel__wide">
        {has('setAppSetting') && (
          <div class="row hotkeys__row-of-switches">
            <Toggle
              label="Hotkeys on"
              checked={appSettings.value.hotkeysEnabled}
              onChange={(on) => void setAppSwitch('hotkeysEnabled', on)}
            />
            <Toggle
              label="Hotkey lock"
              checked={appSettings.value.hotkeyLock}
              onChange={(on) => void setAppSwitch('hotkeyLock', on)}
            />
          </div>
        )}
        <p class="hotkeys__lock" role="status" aria-label="Hotkey lock">
          {hotkeysOff.value
            ? 'Off: every key is an ordinary key, also those that stop a tool.'
            : lockText(status.value, locked.value)}
        </p>
      </div>
      <ul class="panel__wide hotkeys">
        {kHotkeys.map((entry) => (
          <HotkeyRow key={entry.capture} hotkey={entry} />
        ))}
      </ul>
      {has('resetHotkeys') && <Reset />}
    </Panel>
  );
}

function HotkeyRow({ hotkey }: { hotkey: Hotkey }) {
  const { capture, field, what, name } = hotkey;
  const waiting = reassigning.value === capture;
  const notice = noticeOf(hotkey);
  const former = lostKeys().find((lost) => lost.hotkey === hotkey);
  const noticeId = `hotkey-${capture}-notice`;
  return (
    <li class={`hotkeys__row${waiting ? ' hotkeys__row--waiting' : ''}`}>
      <span class="hotkeys__name">{what}</span>
      {waiting ? <CaptureNote what="Press a key..." /> : <KeyCap name={status.value[field]} />}
      <Button
        label={`Change the ${name} hotkey`}
        waiting={reassigning.value !== ''}
        describedBy={noticeId}
        onPress={() => void captureKey(capture)}
      >
        Change
      </Button>
      <span class={`hotkeys__mode${notice && !waiting ? ' hotkeys__mode--notice' : ''}`} id={noticeId}>
        {notice && !waiting && <Icon name="caution" />}
        {waiting
          ? former
            ? `It was ${former.key}: press that to have it back.`
            : capture === 'unlock'
              ? 'Any key, or a mouse button but the left.'
              : 'Any key or mouse button: a click counts too.'
          : notice || modeText[capture](settings.value, status.value.lockOn)}
      </span>
    </li>
  );
}

// The person's own keys of before a reset, by name.
const formerKeys = signal<Partial<Record<Hotkey['capture'], string>>>({});

// Those that a reset has taken and that nothing else has replaced since.
function lostKeys(): { hotkey: Hotkey; key: string }[] {
  return kHotkeys.flatMap((hotkey) => {
    const key = formerKeys.value[hotkey.capture];
    return key !== undefined && status.value[hotkey.field] === hotkey.first ? [{ hotkey, key }] : [];
  });
}

function resetHint(lost: ReturnType<typeof lostKeys>, differs: boolean): string {
  const [first] = lost;
  if (first) {
    const more = lost.length > 1 ? `, and for ${lost.length - 1} more after that` : '';
    return `The ${first.hotkey.name} hotkey was ${first.key}. Undo waits for that key${more}.`;
  }
  return differs ? 'Your own keys take the place of some.' : 'These are the keys of a first start.';
}

// The program takes a binding only from a key that is really pressed. So the page remembers which keys a reset has
// taken, and its undo asks for one of them at a time: a key that is still held would be taken for the next one too.
function Reset() {
  const [asking, setAsking] = useState(false);
  const opener = useRef<HTMLButtonElement>(null);
  const returns = useRef(false);
  const undid = useRef(false);
  const lost = lostKeys();
  useLayoutEffect(() => {
    if (!asking && returns.current) opener.current?.focus();
    returns.current = asking;
  }, [asking]);
  // The focus does not stay on an Undo that is gone.
  useLayoutEffect(() => {
    if (lost.length === 0 && undid.current && document.activeElement === document.body)
      opener.current?.focus();
    undid.current = false;
  }, [lost.length === 0]);
  const differs = kHotkeys.some(({ field, first }) => status.value[field] !== first);
  const keys = kHotkeys.map(({ first }) => first);
  const question = `Back to ${keys.slice(0, -1).join(', ')} and ${keys.at(-1)}? Undo then asks for your own keys.`;
  const reset = async () => {
    setAsking(false);
    const own = kHotkeys
      .map(({ capture, field, first }) => [capture, status.value[field], first] as const)
      .filter(([, key, first]) => key !== '' && key !== first);
    if (await resetHotkeys()) formerKeys.value = { ...formerKeys.value, ...Object.fromEntries(own) };
  };
  const undo = () => {
    undid.current = true;
    if (lost[0]) void captureKey(lost[0].hotkey.capture);
  };
  if (!asking) {
    return (
      <div class="panel__wide hotkeys__reset">
        <p class="group__hint" id="hotkeys-reset-hint" aria-live="polite">
          {resetHint(lost, differs)}
        </p>
        {lost.length > 0 && (
          <Button
            icon="undo"
            label="Undo the reset"
            describedBy="hotkeys-reset-hint"
            waiting={reassigning.value !== ''}
            onPress={undo}
          >
            Undo
          </Button>
        )}
        <Button
          buttonRef={opener}
          {...(lost.length === 0 && { icon: 'undo' as const })}
          waiting={reassigning.value !== ''}
          onPress={() => (differs ? setAsking(true) : void reset())}
        >
          Reset hotkeys
        </Button>
      </div>
    );
  }
  return (
    <div class="panel__wide hotkeys__ask">
      <Confirm verb="Reset now" onConfirm={() => void reset()} onCancel={() => setAsking(false)}>
        <p class="group__hint group__hint--notable">{question}</p>
      </Confirm>
    </div>
  );
}
