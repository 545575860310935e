import { useState } from 'preact/hooks';
import { isMainWindow, isOffered } from '../bridge';
import { lockHotkeys, setAppSwitch } from '../commands';
import { Button } from '../components/button';
import { Icon } from '../components/icon';
import { CaptureNote, KeyCap } from '../components/key-cap';
import { Panel } from '../components/panel';
import { usePending } from '../components/run-button';
import { Toggle } from '../components/toggle';
import { captureHotkey, resetHotkeys } from '../hotkey-changes';
import { type Hotkey, hotkeyInPlaceOf, kHotkeys } from '../hotkey-order';
import type { HotkeyId, Settings } from '../reports';
import { appSettings, capture, hotkeysOff, locked, settings, status } from '../store';
import { tipWithKey } from '../tips';
import './hotkeys.css';

function lockText(key: string, isEnabled: boolean, unlocked: boolean): string {
  if (hotkeysOff.value) return 'All hotkeys are off.';
  if (!isEnabled) return key ? `${key} is an ordinary key.` : 'The hotkey lock is off.';
  if (!unlocked) return `Locked. Only ${key} works as a hotkey.`;
  return 'Unlocked. Locking also stops clicking, pressing and playing.';
}

const modeText: Record<HotkeyId, (hotkeys: Settings['hotkeys'], lockEnabled: boolean) => string> = {
  autoclicker: ({ holdAutoclicker }) => (holdAutoclicker ? 'Hold to run' : 'Press to start and stop'),
  keySpammer: ({ holdKeySpammer }) => (holdKeySpammer ? 'Hold to run' : 'Press to start and stop'),
  record: () => 'Press to start and stop',
  play: () => 'Press to start and stop',
  unlock: (_, lockEnabled) => (lockEnabled ? 'Press to lock and unlock' : 'Unused while the lock is off'),
};

// What a hotkey does, in the warning of another one with the same key.
const kEffects: Record<HotkeyId, string> = {
  autoclicker: 'starts the autoclicker',
  keySpammer: 'starts the key spammer',
  record: 'starts recording',
  play: 'starts playback',
  unlock: 'locks the hotkeys',
};

// Returns a warning if another hotkey acts in place of this one, or if it takes every click of a mouse button.
function noticeOf(hotkey: Hotkey): string {
  const winner = hotkeyInPlaceOf(hotkey.id, status.value);
  const name = status.value.hotkeys[hotkey.id];
  if (winner) return `${name} already ${kEffects[winner.id]}. Choose another key.`;
  if (name === 'Left Mouse' || name === 'Right Mouse') {
    return `Takes every ${name === 'Left Mouse' ? 'left' : 'right'} click, in every window.`;
  }
  return '';
}

export function HotkeysPanel() {
  const summary = hotkeysOff.value ? 'Off' : locked.value ? 'Locked' : 'Work in every window';
  return (
    <Panel id="panel-ui" title="Hotkeys" summary={summary}>
      {isMainWindow() && (
        <div class="panel__wide">
          <Toggle
            label="Hotkeys on"
            checked={appSettings.value.hotkeysEnabled}
            onChange={(on) => void setAppSwitch('hotkeysEnabled', on)}
          />
        </div>
      )}
      <ul class="panel__wide hotkeys">
        {kHotkeys.map((entry) => (
          <HotkeyRow key={entry.id} hotkey={entry} />
        ))}
      </ul>
      {isMainWindow() && <Reset />}
    </Panel>
  );
}

function HotkeyRow({ hotkey }: { hotkey: Hotkey }) {
  const { id, title, name } = hotkey;
  const waiting = capture.value === id;
  const notice = noticeOf(hotkey);
  const noticeId = `hotkey-${id}-notice`;
  return (
    <li
      class={`hotkeys__row${waiting ? ' hotkeys__row--waiting' : ''}${id === 'unlock' ? ' hotkeys__row--lock' : ''}`}
    >
      <span class="hotkeys__name">{title}</span>
      {waiting ? <CaptureNote what="Press a key..." /> : <KeyCap name={status.value.hotkeys[id]} />}
      <Button
        label={`Change the ${name} hotkey`}
        tip={`Waits for the new key of the ${name} hotkey. Esc cancels.`}
        waiting={capture.value !== ''}
        describedBy={noticeId}
        onPress={() => void captureHotkey(id)}
      >
        Change
      </Button>
      <span class={`hotkeys__mode${notice && !waiting ? ' hotkeys__mode--notice' : ''}`} id={noticeId}>
        {notice && !waiting && <Icon name="caution" />}
        {waiting
          ? id === 'unlock'
            ? 'Any key, or any mouse button except the left.'
            : 'Any key or mouse button, including a click.'
          : notice || modeText[id](settings.value.hotkeys, status.value.lockEnabled)}
      </span>
      {id === 'unlock' && <Lock />}
    </li>
  );
}

// Whether the hotkey locks, and whether it has: one switch and the state beside it.
function Lock() {
  const { unlocked, hotkeys } = status.value;
  // The preference changes at the press, the report at the next poll. The switch and the text show the same one.
  const isEnabled = isMainWindow() ? appSettings.value.hotkeyLock : status.value.lockEnabled;
  const [pending, setPending] = usePending(unlocked);
  const lock = async () => {
    setPending(true);
    if (!(await lockHotkeys())) setPending(false);
  };
  return (
    <div class="hotkeys__lock">
      {isMainWindow() && (
        <Toggle
          label={`Let ${hotkeys.unlock} lock the hotkeys`}
          checked={isEnabled}
          onChange={(on) => void setAppSwitch('hotkeyLock', on)}
        />
      )}
      <p class="group__hint" role="status" aria-label="Hotkey lock">
        {lockText(hotkeys.unlock, isEnabled, unlocked)}
      </p>
      {isOffered('lockHotkeys') && (
        <Button
          icon="lock"
          tip={tipWithKey('Turns the other hotkeys off and stops clicking, pressing and playing.', 'unlock')}
          disabled={!isEnabled || !unlocked || hotkeysOff.value}
          pending={pending}
          onPress={() => void lock()}
        >
          Lock now
        </Button>
      )}
    </div>
  );
}

// It acts at once: the notice of it offers Undo.
function Reset() {
  const [resetting, setResetting] = useState(false);
  const differs = kHotkeys.some(({ id, defaultKey }) => status.value.hotkeys[id] !== defaultKey);
  const reset = async () => {
    setResetting(true);
    await resetHotkeys();
    setResetting(false);
  };
  return (
    <div class="panel__wide hotkeys__reset">
      <p class="group__hint" id="hotkeys-reset-hint">
        {differs ? 'You have changed some keys.' : 'Default keys.'}
      </p>
      <Button
        icon="undo"
        tip="Restores the default keys of all hotkeys."
        describedBy="hotkeys-reset-hint"
        waiting={!differs || capture.value !== '' || resetting}
        onPress={() => void reset()}
      >
        Reset hotkeys
      </Button>
    </div>
  );
}
