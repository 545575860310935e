import { useState } from 'preact/hooks';
import {
  changeTracker,
  continueRecording,
  startPlayback,
  startRecording,
  stopPlayback,
  stopRecording,
  undoContinue,
} from '../commands';
import { Button } from '../components/button';
import { NumberField } from '../components/number-field';
import { counted, groupedNumber } from '../components/numbers';
import { Group, Panel } from '../components/panel';
import { RunButton } from '../components/run-button';
import { timeText } from '../rate';
import type { Settings } from '../reports';
import { Toggle } from '../components/toggle';
import { eventCount, macroLength, playing, recording, settings, status } from '../store';
import { EventList } from './events';
import { LeftAtEnd, OptimiseRow } from './macro-notes';
import { MacroPicture } from './macro-picture';
import './macro.css';

export function MacroPanel() {
  const count = eventCount.value;
  const busy = recording.value || playing.value;
  return (
    <Panel id="panel-tracker" title="Macro" summary={macroSummary()} action={<Transport />}>
      <div class="macro__column">
        <div>
          <div class="macro__more">
            <Button icon="plus" disabled={busy} onPress={() => void continueRecording()}>
              Continue
            </Button>
            <Button
              icon="undo"
              disabled={busy || !status.value.canUndoContinue}
              onPress={() => void undoContinue()}
            >
              Undo
            </Button>
          </div>
          <p class="group__hint macro__hint">
            {count === 0
              ? 'Record keeps what you do until you stop it.'
              : 'Record starts over. Continue adds to these events.'}
          </p>
        </div>
        <div class="macro__noted">
          <MacroPicture />
          <LeftAtEnd />
        </div>
      </div>
      <div class="macro__column">
        <PlaybackGroup />
        <RecordGroup />
      </div>
      <div class="macro__noted macro__events">
        <EventList />
        <OptimiseRow />
      </div>
    </Panel>
  );
}

function macroSummary(): string {
  const count = eventCount.value;
  const events = counted(count, 'event');
  if (recording.value || count === 0) return events;
  return `${events}, ${groupedNumber(Number(macroLength.value.toFixed(2)))} s`;
}

// Each of the two turns into Stop while it runs, in its own place.
function Transport() {
  return (
    <div class="macro__transport" role="group" aria-label="Recording and playback">
      <RunButton
        running={recording.value}
        start="Record"
        icon="record"
        kind="plain"
        disabled={playing.value}
        onStart={startRecording}
        onStop={stopRecording}
      />
      <RunButton
        running={playing.value}
        start="Play"
        disabled={recording.value || eventCount.value === 0}
        onStart={startPlayback}
        onStop={stopPlayback}
      />
    </div>
  );
}

function PlaybackGroup() {
  const { tspd, tloop, tloopMs } = settings.value;
  const [speedError, setSpeedError] = useState('');
  const [pauseError, setPauseError] = useState('');
  const hintId = 'playback-hint';
  return (
    <Group title="Playback" hint={playbackHint()} hintId={hintId} error={speedError || pauseError}>
      <div class="macro__playback">
        <NumberField
          label="Playback speed"
          name="Speed"
          unit={'\u00d7'}
          value={tspd}
          min={0.01}
          max={1000}
          decimals={2}
          step={0.25}
          hintId={hintId}
          onChange={(speed) => void changeTracker({ tspd: speed })}
          onError={setSpeedError}
        />
        <Toggle label="Loop" checked={tloop} onChange={(loop) => void changeTracker({ tloop: loop })} />
        <NumberField
          label="Pause between rounds"
          name="Pause between rounds"
          unit="ms"
          value={tloopMs}
          min={0}
          max={0x7fffffff}
          decimals={0}
          step={100}
          disabled={!tloop}
          hintId={hintId}
          onChange={(pause) => void changeTracker({ tloopMs: pause })}
          onError={setPauseError}
        />
      </div>
    </Group>
  );
}

function playbackHint(): string {
  if (recording.value || eventCount.value === 0) return 'A round ends with its last event.';
  const { tspd, tloop, tloopMs } = settings.value;
  const round = macroLength.value / tspd;
  if (!(tspd > 0) || !Number.isFinite(round)) return 'At this speed a round takes no sensible time.';
  if (!tloop) return `One round takes ${spanText(round)}.`;
  const every = round + Math.max(0, tloopMs) / 1000;
  const rounds = every > 0 ? 3600 / every : Infinity;
  const rate =
    rounds >= 1 && rounds <= 3_600_000 ? `, ${groupedNumber(Math.floor(rounds))} rounds an hour` : '';
  return `One round takes ${spanText(round)}, with the pause ${spanText(every)}${rate}.`;
}

// As exact as its length makes sense: to hundredths, seconds, minutes.
function spanText(seconds: number): string {
  const step = seconds < 60 ? 10 : seconds < 3600 ? 1000 : 60000; // ms
  return timeText(Math.round((seconds * 1000) / step) * step);
}

function recordHint({ tmv, tclk, tscr, tkey, trel }: Settings): string {
  if (!tmv && !tclk && !tscr && !tkey) return 'Nothing would be recorded.';
  if (tmv && trel) return 'Raw moves suit games that hide the pointer.';
  return 'Clicks in this window and the hotkeys are left out.';
}

function RecordGroup() {
  const { tmv, tclk, tscr, tkey, trel } = settings.value;
  return (
    <Group title="What is recorded" hint={recordHint(settings.value)} hintId="record-hint">
      <div class="macro__kinds">
        <Toggle label="Moves" checked={tmv} onChange={(on) => void changeTracker({ tmv: on })} />
        <Toggle label="Buttons" checked={tclk} onChange={(on) => void changeTracker({ tclk: on })} />
        <Toggle label="Wheel" checked={tscr} onChange={(on) => void changeTracker({ tscr: on })} />
        <Toggle label="Keys" checked={tkey} onChange={(on) => void changeTracker({ tkey: on })} />
        <Toggle
          label="Raw moves"
          checked={trel}
          disabled={!tmv}
          onChange={(on) => void changeTracker({ trel: on })}
        />
      </div>
    </Group>
  );
}
