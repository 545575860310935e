import { Fragment, type ComponentChildren } from 'preact';
import { stopClicking, stopPlayback, stopPressing, stopRecording } from './commands';
import { Button } from './components/button';
import { PreferencesButton } from './components/preferences';
import { KeyCap } from './components/key-cap';
import type { Capture } from './reports';
import {
  answering,
  clicking,
  locked,
  picking,
  playing,
  pressing,
  reassigning,
  recording,
  settings,
  status,
  unanswered,
} from './store';
import './state-line.css';

interface Running {
  word: string;
  kind: 'recording' | 'playing' | 'tool';
  key: string;
  held: boolean; // the key runs the tool only while it is held
  stop: () => Promise<boolean>;
}

function whatRuns(): Running[] {
  const { hkRec, hkPlay, hkAuto, hkKeySpam } = status.value;
  const { holdAuto, holdKeySpam } = settings.value;
  const all: (Running | false)[] = [
    recording.value && {
      word: 'Recording',
      kind: 'recording',
      key: hkRec,
      held: false,
      stop: stopRecording,
    },
    playing.value && { word: 'Playing', kind: 'playing', key: hkPlay, held: false, stop: stopPlayback },
    clicking.value && { word: 'Clicking', kind: 'tool', key: hkAuto, held: holdAuto, stop: stopClicking },
    pressing.value && {
      word: 'Pressing',
      kind: 'tool',
      key: hkKeySpam,
      held: holdKeySpam,
      stop: stopPressing,
    },
  ];
  return all.filter((entry) => entry !== false);
}

// What runs, and which key stops it. It stays in sight and keeps its height.
export function StateLine() {
  const running = whatRuns();
  const first = running[0];
  const kind = first ? first.kind : locked.value ? 'locked' : 'idle';
  const title = first
    ? running.map((entry, i) => (i ? entry.word.toLowerCase() : entry.word)).join(', ')
    : locked.value
      ? 'Hotkeys locked'
      : 'Idle';
  return (
    <header class={`state-line state-line--${kind}`}>
      <h1 class="state-line__name">Varnelle</h1>
      <div class="state-line__text" role="status" aria-label="State">
        <div class="state-line__title">
          <span class="state-line__lamp" aria-hidden="true" />
          {answering.value ? title : unanswered.value}
        </div>
        <div class="state-line__detail">{detail(running)}</div>
      </div>
      {first && (
        <Button
          kind="stop"
          large
          icon="stop"
          label="Stop everything"
          onPress={() => running.forEach((entry) => void entry.stop())}
        >
          Stop
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
  if (locked.value) {
    return (
      <>
        {running.length > 0 && 'Hotkeys are locked: '}
        <KeyCap name={status.value.hkUnlock} /> unlocks them
      </>
    );
  }
  if (running.length === 0) {
    const { hkAuto, hkKeySpam, hkRec, hkPlay } = status.value;
    const pairs = [
      [hkAuto, 'click'],
      [hkKeySpam, 'press'],
      [hkRec, 'record'],
      [hkPlay, 'play'],
    ] as const;
    return (
      <>
        {pairs.map(([key, word], i) => (
          <Fragment key={word}>
            {i > 0 && ' '}
            <span class="state-line__pair">
              <KeyCap name={key} /> {word}
            </span>
          </Fragment>
        ))}
      </>
    );
  }
  const many = running.length > 1;
  return running.map((entry, i) => (
    <Fragment key={entry.word}>
      {i > 0 && ', '}
      <span class="state-line__pair">
        {entry.held && (i > 0 ? 'releasing ' : 'Releasing ')}
        <KeyCap name={entry.key} /> {i === 0 && 'stops '}
        {many ? entry.word.toLowerCase() : 'it'}
      </span>
    </Fragment>
  ));
}
