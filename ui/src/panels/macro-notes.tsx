// Warnings about what the macro leaves held or on and about endless wheel events, and what optimising would drop.
import { useEffect, useState } from 'preact/hooks';
import { batch } from '../batch';
import { optimiseMacro } from '../commands';
import { Button } from '../components/button';
import { counted, groupedNumber } from '../format';
import { Tool } from '../event-description';
import { appSettings, eventCount, events, recording } from '../store';
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
function noteText({ heldKeys, hasUnpairedButtons, toolsOn, longestTurn }: Facts): string {
  const parts = [];
  if (longestTurn >= kManyNotches) {
    parts.push(`One wheel event turns ${groupedNumber(longestTurn)} notches. Playing it can take long.`);
  }
  if (heldKeys.length > 0) {
    const names = listed(heldKeys.map(({ virtualKey }) => keyName(virtualKey)));
    parts.push(`${names} ${heldKeys.length === 1 ? 'stays' : 'stay'} pressed after playback.`);
  }
  if (hasUnpairedButtons) parts.push('A mouse button may stay pressed after playback.');
  if (toolsOn.length > 0) {
    const tools = listed(toolsOn.map((tool) => kToolNames[tool] ?? 'tool'));
    const end = appSettings.value.stopToolsWithMacro ? 'Stopped after playback' : 'Still on after playback';
    parts.push(`${end}: ${tools}.`);
  }
  return parts.join(' ');
}

export function LeftAtEnd() {
  const shown = recording.value || eventCount.value === 0 ? null : macroData.value;
  const text = shown ? noteText(shown.facts) : '';
  const held = shown?.facts.heldKeys ?? [];
  const select = () => {
    if (!shownGroups.value.has('keys')) setGroupShown('keys', true);
    revealEvents(held.map(({ index }) => index));
  };
  return (
    <div class={`macro__note${text ? ' macro__note--alarm' : ''}`} role="status" aria-label="After playback">
      <p>{text || (shown ? 'No keys left pressed.' : 'Shows keys that stay pressed after playback.')}</p>
      {held.length > 0 && text && (
        <Button
          label="Select the pressed keys in the list"
          tip="Selects the events that press these keys."
          onPress={select}
        >
          Select
        </Button>
      )}
    </div>
  );
}

export function OptimiseRow() {
  const [dropped, setDropped] = useState<{ of: unknown; count: number } | null>(null);
  const [optimising, setOptimising] = useState(false);
  useEffect(() => {
    if (dropped && dropped.of !== events.value) setDropped(null);
  }, [events.value]);
  const current = macroData.value?.list === events.value ? macroData.value : null;
  const facts = recording.value || eventCount.value === 0 ? undefined : current?.facts;
  const optimise = async () => {
    // Ignore a second press until the command returns: it would drop moves that no hint has announced.
    setOptimising(true);
    const count = await optimiseMacro();
    setOptimising(false);
    if (count !== undefined) setDropped({ of: events.value, count });
  };
  const droppable = facts?.droppedMoves ?? 0;
  return (
    <div class="macro__note macro__optimise">
      <Button
        icon="thin"
        tip="Removes moves within 10 px of the last one kept."
        describedBy="optimise-hint"
        disabled={recording.value || eventCount.value === 0}
        waiting={droppable === 0 || batch.value !== null || optimising}
        onPress={() => void optimise()}
      >
        Optimise
      </Button>
      <p id="optimise-hint" aria-live="polite">
        {dropped ? `Removed ${counted(dropped.count, 'move')}. ` : ''}
        {facts ? droppableText(facts, dropped !== null) : 'Removes moves within 10 px of the last one kept.'}
      </p>
    </div>
  );
}

function droppableText({ droppedMoves, counts }: Facts, again: boolean): string {
  const all = counts[0] ?? 0;
  if (droppedMoves > 0) {
    return `${again ? 'Again: removes' : 'Removes'} ${groupedNumber(droppedMoves)} of ${counted(all, 'move')}, within 10 px of the last one kept.`;
  }
  return again ? 'Nothing left to optimise.' : 'Nothing to optimise.';
}
