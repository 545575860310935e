import { Fragment, type ComponentChildren } from 'preact';
import { has } from './bridge';
import { setAppSwitch } from './commands';
import { Button } from './components/button';
import { Icon, type IconName } from './components/icon';
import { KeyCap } from './components/key-cap';
import { counted, sentence } from './components/numbers';
import { PreferencesButton } from './components/preferences';
import { usePending } from './components/run-button';
import { type Hotkey, kHotkeys, takenBy } from './hotkey-order';
import type { Capture } from './reports';
import { type Running, runningWords, stopAll, whatRuns } from './running';
import {
  answering,
  eventCount,
  hotkeysOff,
  locked,
  picking,
  reassigning,
  recording,
  status,
  unanswered,
} from './store';
import './state-line.css';

// The name of the key that acts for a hotkey; empty where another hotkey takes it.
function keyOf(capture: Hotkey['capture']): string {
  if (takenBy(capture, status.value)) return '';
  const field = kHotkeys.find((one) => one.capture === capture)?.field;
  return field ? status.value[field] : '';
}

interface Look {
  kind: Running['kind'] | 'idle' | 'waiting' | 'locked' | 'off';
  sign: IconName | '';
  title: string;
}

function look(running: Running[]): Look {
  const first = running[0];
  if (!answering.value) return { kind: 'off', sign: '', title: unanswered.value };
  if (first) {
    return { kind: first.kind, sign: first.sign, title: sentence(runningWords(running)) };
  }
  if (reassigning.value) return { kind: 'waiting', sign: 'key', title: 'Waiting for a key' };
  if (picking.value) return { kind: 'waiting', sign: 'target', title: 'Picking a place' };
  if (hotkeysOff.value) return { kind: 'off', sign: 'off', title: 'Hotkeys off' };
  if (locked.value) return { kind: 'locked', sign: 'lock', title: 'Hotkeys locked' };
  return { kind: 'idle', sign: '', title: 'Idle' };
}

// What runs, and which key stops it. It stays in sight and keeps its height.
export function StateLine() {
  const running = whatRuns();
  const { kind, sign, title } = look(running);
  const [stopping, setStopping] = usePending(running.length);
  const offers = running.length === 0 && hotkeysOff.value && !reassigning.value && has('setAppSetting');
  return (
    <header class={`state-line state-line--${kind}`}>
      <h1 class="unseen">Varnelle</h1>
      <span class="state-line__sign" aria-hidden="true">
        {sign ? <Icon name={sign} /> : <span class="state-line__lamp" />}
      </span>
      <div class="state-line__text">
        <div role="status" aria-label="State">
          <div class="state-line__title">{title}</div>
          <div class="state-line__detail">{detail(running)}</div>
        </div>
        {/* Outside of what is read aloud at each change. */}
        {recording.value && running.length === 1 && (
          <div class="state-line__count">{counted(eventCount.value, 'event')}</div>
        )}
      </div>
      {running.length > 0 && (
        <Button
          kind="stop"
          large
          icon="stop"
          label="Stop everything"
          pending={stopping}
          onPress={() => {
            setStopping(true);
            stopAll(running);
          }}
        >
          Stop
        </Button>
      )}
      {offers && (
        <Button label="Turn on the hotkeys" onPress={() => void setAppSwitch('hotkeysEnabled', true)}>
          Turn on
        </Button>
      )}
      <PreferencesButton />
    </header>
  );
}

const kCaptures: Record<Capture, string> = {
  '': '',
  auto: 'the new clicker hotkey',
  keyspamhotkey: 'the new key presser hotkey',
  rec: 'the new record hotkey',
  play: 'the new play hotkey',
  unlock: 'the new unlock hotkey',
  keyspamtarget: 'the key to add',
};

function detail(running: Running[]): ComponentChildren {
  if (reassigning.value) return `Press ${kCaptures[reassigning.value]}. Esc cancels.`;
  if (picking.value) return 'Click the place on the screen. Right-click cancels.';
  if (hotkeysOff.value) {
    return running.length > 0
      ? 'Hotkeys are off, so no key stops it. The Stop button does.'
      : 'No key starts or stops anything.';
  }
  if (locked.value) {
    return (
      <>
        {running.length > 0 && 'Hotkeys are locked: '}
        <KeyCap name={status.value.hkUnlock} /> unlocks them
      </>
    );
  }
  return running.length > 0 ? stoppingKeys(running) : startingKeys();
}

function startingKeys(): ComponentChildren {
  const words = { auto: 'click', keyspamhotkey: 'press', rec: 'record', play: 'play' } as const;
  const captures = Object.keys(words) as (keyof typeof words)[];
  const acting = captures.filter((capture) => keyOf(capture) !== '');
  if (acting.length === 0 && status.value.hkUnlock !== '') {
    return 'Every hotkey has the key that locks and unlocks.';
  }
  return acting.map((capture, i) => (
    <Fragment key={capture}>
      {i > 0 && ' '}
      <span class="state-line__pair">
        <KeyCap name={keyOf(capture)} /> {words[capture]}
      </span>
    </Fragment>
  ));
}

function stoppingKeys(running: Running[]): ComponentChildren {
  const many = running.length > 1;
  const withKeys = running.filter((entry) => keyOf(entry.hotkey) !== '');
  if (withKeys.length === 0) return 'No key stops it. The Stop button does.';
  return withKeys.map((entry, i) => (
    <Fragment key={entry.word}>
      {i > 0 && ', '}
      <span class="state-line__pair">
        {entry.held && (i > 0 ? 'releasing ' : 'Releasing ')}
        <KeyCap name={keyOf(entry.hotkey)} /> {i === 0 && 'stops '}
        {many ? entry.word : 'it'}
      </span>
    </Fragment>
  ));
}
