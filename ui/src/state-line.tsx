import { Fragment, type ComponentChildren } from 'preact';
import { isMainWindow } from './bridge';
import { cancelPick, setAppSwitch } from './commands';
import { Button } from './components/button';
import { HelpButton } from './components/help';
import { Icon, type IconName } from './components/icon';
import { KeyCap } from './components/key-cap';
import { PreferencesButton } from './components/preferences';
import { usePending } from './components/run-button';
import { cancelCountdown, countdown } from './countdown';
import { capitalised } from './format';
import { countText, type Running, runningWords, stopAll, whatRuns } from './running';
import { answering, capture, hotkeysOff, locked, picking, status, unanswered } from './store';
import { actingKey } from './tips';
import './state-line.css';

interface Look {
  kind: Running['kind'] | 'idle' | 'waiting' | 'locked' | 'off';
  icon: IconName | '';
  title: string;
}

function look(running: Running[]): Look {
  const first = running[0];
  if (!answering.value) return { kind: 'off', icon: '', title: unanswered.value };
  if (countdown.value) return { kind: 'waiting', icon: '', title: `Starting in ${countdown.value.seconds}` };
  if (first) {
    return { kind: first.kind, icon: first.icon, title: capitalised(runningWords(running)) };
  }
  if (capture.value) return { kind: 'waiting', icon: 'key', title: 'Waiting for a key' };
  if (picking.value) return { kind: 'waiting', icon: 'target', title: 'Picking a location' };
  if (hotkeysOff.value) return { kind: 'off', icon: 'off', title: 'Hotkeys off' };
  if (locked.value) return { kind: 'locked', icon: 'lock', title: 'Hotkeys locked' };
  return { kind: 'idle', icon: '', title: 'Idle' };
}

// Shows what runs and which key stops it. Stays at the top while the page scrolls, and never changes its height.
export function StateLine() {
  const running = whatRuns();
  const { kind, icon, title } = look(running);
  const counts = answering.value && !countdown.value ? running.map(countText).join(', ') : '';
  const [stopping, setStopping] = usePending(running.length);
  const isWaiting = countdown.value !== null || picking.value || capture.value !== '';
  const offers = running.length === 0 && hotkeysOff.value && !isWaiting && isMainWindow();
  return (
    <header class={`state-line state-line--${kind}`}>
      <h1 class="unseen">Varnelle</h1>
      <span class="state-line__icon" aria-hidden="true">
        {icon ? <Icon name={icon} /> : <span class="state-line__lamp" />}
      </span>
      <div class="state-line__text">
        <div role="status" aria-label="State">
          <div class={`state-line__title${running.length > 1 ? ' state-line__title--several' : ''}`}>
            {title}
            {/* Hidden, because screen readers read the status aloud at each change. */}
            {counts && (
              <span aria-hidden="true">
                {', '}
                <span class="state-line__count">{counts}</span>
              </span>
            )}
          </div>
          <div class="state-line__detail">{detail(running)}</div>
        </div>
        {counts && <p class="unseen">{counts}</p>}
      </div>
      {(countdown.value || picking.value) && (
        <Button
          label={countdown.value ? 'Cancel the start' : 'Cancel picking'}
          tip={countdown.value ? 'Starts nothing.' : 'Keeps the location as it was.'}
          onPress={() => (countdown.value ? cancelCountdown() : void cancelPick())}
        >
          Cancel
        </Button>
      )}
      {running.length > 0 && (
        <Button
          kind="stop"
          large
          icon="stop"
          label="Stop everything"
          tip="Stops everything that runs."
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
        <Button
          label="Turn on the hotkeys"
          tip="Turns the hotkeys on."
          onPress={() => void setAppSwitch('hotkeysEnabled', true)}
        >
          Turn on
        </Button>
      )}
      <HelpButton />
      <PreferencesButton />
    </header>
  );
}

function detail(running: Running[]): ComponentChildren {
  if (capture.value === 'target') return 'Press a key. Esc cancels.';
  if (capture.value) return 'Press a key or a mouse button. Esc cancels.';
  if (countdown.value) return 'Move to your target. Esc cancels.';
  if (picking.value) return 'Click a location on the screen. Esc or a right click cancels.';
  if (hotkeysOff.value) {
    return running.length > 0 ? 'Hotkeys are off. Use the Stop button.' : 'Start and stop with the buttons.';
  }
  if (locked.value) {
    return (
      <>
        {running.length > 0 && 'Hotkeys are locked: '}
        <KeyCap name={status.value.hotkeys.unlock} /> unlocks them
      </>
    );
  }
  return running.length > 0 ? stoppingKeys(running) : startingKeys();
}

function startingKeys(): ComponentChildren {
  const words = { autoclicker: 'click', keySpammer: 'press', record: 'record', play: 'play' } as const;
  const ids = Object.keys(words) as (keyof typeof words)[];
  const acting = ids.filter((id) => actingKey(id) !== '');
  if (acting.length === 0 && status.value.hotkeys.unlock !== '') {
    return 'All hotkeys have the same key. Choose other keys.';
  }
  return acting.map((id, i) => (
    <Fragment key={id}>
      {i > 0 && ' '}
      <span class="state-line__pair">
        <KeyCap name={actingKey(id)} /> {words[id]}
      </span>
    </Fragment>
  ));
}

function stoppingKeys(running: Running[]): ComponentChildren {
  const many = running.length > 1;
  const withKeys = running.filter((entry) => actingKey(entry.hotkey) !== '');
  if (withKeys.length === 0) return 'No key stops it. Use the Stop button.';
  return withKeys.map((entry, i) => (
    <Fragment key={entry.word}>
      {i > 0 && ', '}
      <span class="state-line__pair">
        {entry.held && (i > 0 ? 'releasing ' : 'Releasing ')}
        <KeyCap name={actingKey(entry.hotkey)} /> {i === 0 && 'stops '}
        {many ? entry.word : 'it'}
      </span>
    </Fragment>
  ));
}
