import { useState } from 'preact/hooks';
import {
  changeMacroSettings,
  continueRecording,
  startPlayback,
  startRecording,
  stopPlayback,
  stopRecording,
  undoContinue,
} from '../commands';
import { Button } from '../components/button';
import { NumberField } from '../components/number-field';
import { Group, Panel } from '../components/panel';
import { RunButton } from '../components/run-button';
import { Toggle } from '../components/toggle';
import { counted, groupedNumber, timeText } from '../format';
import type { MacroSettings } from '../reports';
import { eventCount, macroLength, playing, recording, settings, status } from '../store';
import { tipWithKey } from '../tips';
import { EventList } from './event-list';
import { HistoryRow, LeftAtEnd, OptimiseRow } from './macro-notes';
import { PathAndTiming } from './path-and-timing';
import './macro.css';

export function MacroPanel() {
  return (
    <Panel id="panel-tracker" title="Macro" summary={macroSummary()} action={<Transport />}>
      <div class="macro__column">
        <Extending />
        <RecordGroup />
      </div>
      <div class="macro__column">
        <PlaybackGroup />
        <LeftAtEnd />
      </div>
      <PathAndTiming />
      <div class="macro__noted macro__events">
        <EventList />
        <OptimiseRow />
        <HistoryRow />
      </div>
    </Panel>
  );
}

// Adds to the macro, and undoes that.
function Extending() {
  const busy = recording.value || playing.value;
  return (
    <div class="macro__extending">
      <div class="macro__more">
        <Button
          icon="plus"
          tip="Records more events at the end of the macro."
          disabled={busy}
          onPress={() => void continueRecording()}
        >
          Continue
        </Button>
        <Button
          icon="undo"
          tip="Removes the events that Continue has added last."
          disabled={busy || !status.value.canUndoContinue}
          onPress={() => void undoContinue()}
        >
          Undo
        </Button>
      </div>
      <p class="group__hint">
        {eventCount.value === 0
          ? 'Records what you do until you stop it.'
          : 'Record starts over. Continue adds events.'}
      </p>
    </div>
  );
}

function macroSummary(): string {
  const count = eventCount.value;
  const events = counted(count, 'event');
  if (recording.value || count === 0) return events;
  return `${events}, ${groupedNumber(Number(macroLength.value.toFixed(2)))} s`;
}

// Each of the two buttons becomes Stop while it runs.
function Transport() {
  return (
    <div class="macro__transport" role="group" aria-label="Recording and playback">
      <RunButton
        running={recording.value}
        start="Record"
        tip={recordTip()}
        icon="record"
        kind="plain"
        disabled={playing.value}
        onStart={startRecording}
        onStop={stopRecording}
      />
      <RunButton
        running={playing.value}
        start="Play"
        tip={tipWithKey(playing.value ? 'Stops the playback.' : 'Plays the macro.', 'play')}
        disabled={recording.value || eventCount.value === 0}
        onStart={startPlayback}
        onStop={stopPlayback}
      />
    </div>
  );
}

function recordTip(): string {
  if (recording.value) return tipWithKey('Stops the recording.', 'record');
  const sentence = eventCount.value > 0 ? 'Replaces the macro by a new recording.' : 'Records what you do.';
  return tipWithKey(sentence, 'record');
}

function PlaybackGroup() {
  const { playbackSpeed, loop, loopPauseMilliseconds } = settings.value.macro;
  const [speedError, setSpeedError] = useState('');
  const [pauseError, setPauseError] = useState('');
  const hintId = 'playback-hint';
  return (
    <Group title="Playback" hint={playbackHint()} hintId={hintId} error={speedError || pauseError}>
      <div class="macro__playback">
        <NumberField
          label="Playback speed"
          caption="Speed"
          noun=""
          unit={'\u00d7'}
          value={playbackSpeed}
          min={0.01}
          max={1000}
          decimals={2}
          step={0.25}
          hintId={hintId}
          onChange={(speed) => void changeMacroSettings({ playbackSpeed: speed })}
          onError={setSpeedError}
        />
        <Toggle label="Loop" checked={loop} onChange={(on) => void changeMacroSettings({ loop: on })} />
        <NumberField
          label="Pause between rounds"
          caption="Pause between rounds"
          noun="milliseconds"
          unit="ms"
          value={loopPauseMilliseconds}
          min={0}
          max={0x7fffffff}
          decimals={0}
          step={100}
          disabled={!loop}
          hintId={hintId}
          onChange={(pause) => void changeMacroSettings({ loopPauseMilliseconds: pause })}
          onError={setPauseError}
        />
      </div>
    </Group>
  );
}

function playbackHint(): string {
  const { playbackSpeed, loop, loopPauseMilliseconds } = settings.value.macro;
  if (recording.value || eventCount.value === 0) return loop ? 'Plays until you stop it.' : 'Plays once.';
  const round = macroLength.value / playbackSpeed;
  if (!(playbackSpeed > 0) || !Number.isFinite(round)) return 'Set a speed above 0.';
  if (!loop) return `One round takes ${spanText(round)}.`;
  const every = round + Math.max(0, loopPauseMilliseconds) / 1000;
  const rounds = every > 0 ? 3600 / every : Infinity;
  const rate = rounds >= 1 && rounds <= 3_600_000 ? ` (${groupedNumber(Math.floor(rounds))} per hour)` : '';
  return `One round takes ${spanText(round)}, or ${spanText(every)} with the pause${rate}.`;
}

// Rounds to hundredths of a second, seconds or minutes, depending on the length.
function spanText(seconds: number): string {
  const step = seconds < 60 ? 10 : seconds < 3600 ? 1000 : 60000; // ms
  return timeText(Math.round((seconds * 1000) / step) * step);
}

function recordHint(macro: MacroSettings): string {
  const { recordMoves, recordButtons, recordWheel, recordKeys, recordRawMoves } = macro;
  if (!recordMoves && !recordButtons && !recordWheel && !recordKeys)
    return 'Choose at least one kind of input.';
  if (recordMoves && recordRawMoves) return 'Raw moves are for games that hide the pointer.';
  return 'Hotkeys and clicks in this window are not recorded.';
}

type RecordSwitch = 'recordMoves' | 'recordButtons' | 'recordWheel' | 'recordKeys' | 'recordRawMoves';

function RecordGroup() {
  const { macro } = settings.value;
  const toggle = (label: string, key: RecordSwitch, disabled = false) => (
    <Toggle
      label={label}
      checked={macro[key]}
      disabled={disabled}
      onChange={(on) => void changeMacroSettings({ [key]: on })}
    />
  );
  return (
    <Group title="Recorded input" hint={recordHint(macro)} hintId="record-hint">
      <div class="macro__kinds">
        {toggle('Moves', 'recordMoves')}
        {toggle('Buttons', 'recordButtons')}
        {toggle('Wheel', 'recordWheel')}
        {toggle('Keys', 'recordKeys')}
        {toggle('Raw moves', 'recordRawMoves', !macro.recordMoves)}
      </div>
    </Group>
  );
}
