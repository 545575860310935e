// What the macro leaves held or on, endless wheel events, what optimising would drop, and which change can be undone.
import { useState } from 'preact/hooks';
import { addMissingReleases, optimiseMacro } from '../commands';
import { Button } from '../components/button';
import { capitalised, counted, groupedNumber } from '../format';
import { Tool } from '../event-columns';
import { changeWithUndo, nextRedo, nextUndo, redoNext, stepWords, undoNewest } from '../history';
import { appSettings, eventCount, events, playing, recording } from '../store';
import { keyName } from './event-text';
import type { Facts } from './macro-facts';
import { macroData, revealEvents, setGroupShown, shownGroups } from './macro-model';

const kMaxNames = 4;
// X11 sends a turn of the wheel notch by notch. This many take seconds.
const kManyNotches = 10000;
const kToolNames: Record<number, string> = {
  [Tool.Autoclicker]: 'autoclicker',
  [Tool.KeySpammer]: 'key spammer',
};

// "A", "A and B", "A, B and 3 more"
function listed(names: readonly string[]): string {
  const named = names.slice(0, names.length > kMaxNames ? kMaxNames - 1 : kMaxNames);
  const last = names.length > named.length ? `${names.length - named.length} more` : named.pop();
  return named.length > 0 ? `${named.join(', ')} and ${last}` : String(last);
}

// NOTE: playback releases nothing at its end, and a stop releases only the left and the right button.
function noteText({ heldKeys, heldButtons, toolsOn, longestTurn }: Facts): string {
  const parts = [];
  if (longestTurn >= kManyNotches) {
    parts.push(`One wheel event turns ${groupedNumber(longestTurn)} notches. Playing it can take long.`);
  }
  const held = [
    ...heldKeys.map(({ virtualKey }) => keyName(virtualKey)),
    ...heldButtons.map(({ button }) => `the ${button} button`),
  ];
  if (held.length > 0) {
    const names = capitalised(listed(held));
    parts.push(`${names} ${held.length === 1 ? 'stays' : 'stay'} pressed after playback.`);
  }
  if (toolsOn.length > 0) {
    const tools = listed(toolsOn.map((tool) => kToolNames[tool] ?? 'tool'));
    const end = appSettings.value.stopToolsWithMacro ? 'Stopped after playback' : 'Still on after playback';
    parts.push(`${end}: ${tools}.`);
  }
  return parts.join(' ');
}

async function addReleases(): Promise<void> {
  let added: number | undefined;
  await changeWithUndo(
    async () => {
      added = await addMissingReleases();
      return added !== undefined;
    },
    () => `Added ${counted(added ?? 0, 'release')}.`,
  );
}

export function LeftAtEnd() {
  const [adding, setAdding] = useState(false);
  const shown = recording.value || eventCount.value === 0 ? null : macroData.value;
  const text = shown ? noteText(shown.facts) : '';
  const { heldKeys = [], heldButtons = [] } = shown?.facts ?? {};
  const held = [...heldKeys, ...heldButtons].map(({ index }) => index).sort((a, b) => a - b);
  const select = () => {
    if (heldKeys.length > 0 && !shownGroups.value.has('keys')) setGroupShown('keys', true);
    if (heldButtons.length > 0 && !shownGroups.value.has('buttons')) setGroupShown('buttons', true);
    revealEvents(held);
  };
  const add = async () => {
    setAdding(true);
    await addReleases();
    setAdding(false);
  };
  return (
    <div class={`macro__note${text ? ' macro__note--alarm' : ''}`} role="status" aria-label="After playback">
      <p>{text || (shown ? 'No keys left pressed.' : 'Shows keys that stay pressed after playback.')}</p>
      {held.length > 0 && (
        <>
          <Button
            label="Select the presses in the list"
            tip="Selects the events that press these keys and buttons."
            onPress={select}
          >
            Select
          </Button>
          <Button
            tip="Adds what is missing at the end of the macro."
            disabled={playing.value}
            waiting={adding}
            onPress={() => void add()}
          >
            {held.length > 1 ? 'Add releases' : 'Add release'}
          </Button>
        </>
      )}
    </div>
  );
}

// The newest change of the macro that can be undone, and the one that can be done again.
export function HistoryRow() {
  const undo = nextUndo();
  const redo = nextRedo();
  const isRunning = recording.value || playing.value;
  return (
    <div class="macro__note macro__history">
      <p id="history-hint">
        {undo
          ? stepWords(undo)
          : redo
            ? `Undone: ${stepWords(redo)}`
            : 'Changes of the events can be undone here.'}
      </p>
      <Button
        icon="undo"
        label="Undo the last change"
        tip="Undoes the last change of the macro. Key in the list: Ctrl+Z."
        describedBy="history-hint"
        disabled={!undo}
        waiting={isRunning}
        onPress={undoNewest}
      >
        Undo
      </Button>
      <Button
        label="Redo the last change"
        tip="Makes the change again. Key in the list: Ctrl+Shift+Z."
        describedBy="history-hint"
        disabled={!redo}
        waiting={isRunning}
        onPress={redoNext}
      >
        Redo
      </Button>
    </div>
  );
}

export function OptimiseRow() {
  const [optimising, setOptimising] = useState(false);
  const current = macroData.value?.columns === events.value ? macroData.value : null;
  const facts = recording.value || eventCount.value === 0 ? undefined : current?.facts;
  const optimise = async () => {
    // Ignore a second press until the command returns: it would drop moves that no hint has announced.
    setOptimising(true);
    let dropped: number | undefined;
    await changeWithUndo(
      async () => {
        dropped = await optimiseMacro();
        return dropped !== undefined;
      },
      () => `Removed ${counted(dropped ?? 0, 'move')}.`,
    );
    setOptimising(false);
  };
  const droppable = facts?.droppedMoves ?? 0;
  return (
    <div class="macro__note macro__optimise">
      <Button
        icon="thin"
        tip="Removes moves within 10 px of the last one kept."
        describedBy="optimise-hint"
        disabled={recording.value || eventCount.value === 0}
        waiting={droppable === 0 || optimising}
        onPress={() => void optimise()}
      >
        Optimise
      </Button>
      <p id="optimise-hint" aria-live="polite">
        {facts ? droppableText(facts) : 'Removes moves within 10 px of the last one kept.'}
      </p>
    </div>
  );
}

function droppableText({ droppedMoves, counts }: Facts): string {
  if (droppedMoves === 0) return 'Nothing to optimise.';
  const all = counted(counts[0] ?? 0, 'move');
  return `Removes ${groupedNumber(droppedMoves)} of ${all}, within 10 px of the last one kept.`;
}
