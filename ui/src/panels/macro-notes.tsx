// What a person should know of the macro before playing it on, and what optimising would do to it.
import { useEffect, useState } from 'preact/hooks';
import { has } from '../bridge';
import { batch } from '../batch';
import { optimiseMacro } from '../commands';
import { Button } from '../components/button';
import { counted, groupedNumber, sentence } from '../components/numbers';
import { appSettings, eventCount, events, recording } from '../store';
import { keyName } from './event-text';
import { reading, setGroupShown, shownGroups, sought } from './macro-model';
import type { Facts } from './macro-facts';

const kKeysNamed = 4;
const kToolNames: Record<number, string> = { 1: 'clicker', 2: 'key presser' };

// "A", "A and B", "A, B and 3 more"
function listed(names: readonly string[]): string {
  const named = names.slice(0, names.length > kKeysNamed ? kKeysNamed - 1 : kKeysNamed);
  const last = names.length > named.length ? `${names.length - named.length} more` : named.pop();
  return named.length > 0 ? `${named.join(', ')} and ${last}` : String(last);
}

// Playback sends what the macro holds and no more: at its end it releases nothing, and a stop lets go of the left and
// the right button only.
function leftText({ heldKeys, oddButtons, toolsOn }: Facts): string {
  const parts = [];
  if (heldKeys.length > 0) {
    parts.push(
      `Still held at the end: ${listed(heldKeys.map(({ vk }) => keyName(vk)))}. Playback releases no key.`,
    );
  }
  if (oddButtons) parts.push('The button events do not pair up: a button may stay pressed.');
  if (toolsOn.length > 0) {
    const tools = sentence(listed(toolsOn.map((tool) => kToolNames[tool] ?? 'tool')));
    const end = appSettings.value.stopToolsWithMacro
      ? 'stopped when playback ends'
      : 'running on after playback';
    parts.push(`${tools} left on: ${end}.`);
  }
  return parts.join(' ');
}

export function LeftAtEnd() {
  const shown = recording.value || eventCount.value === 0 ? null : reading.value;
  const text = shown ? leftText(shown.facts) : '';
  const held = shown?.facts.heldKeys ?? [];
  const select = () => {
    if (!shownGroups.value.has('keys')) setGroupShown('keys', true);
    sought.value = held.map(({ index }) => index);
  };
  return (
    <div class={`macro__note${text ? ' macro__note--alarm' : ''}`} role="status" aria-label="Left at the end">
      <p>
        {text ||
          (shown
            ? 'Every key that goes down comes up again.'
            : 'Keys that a macro leaves held are named here.')}
      </p>
      {held.length > 0 && text && (
        <Button label="Select the held keys in the list" onPress={select}>
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
  if (!has('optimizeMacro')) return null;
  const current = reading.value?.list === events.value ? reading.value : null;
  const facts = recording.value || eventCount.value === 0 ? undefined : current?.facts;
  const optimise = async () => {
    // Once more would drop what nobody was told of.
    setOptimising(true);
    const count = await optimiseMacro();
    setOptimising(false);
    if (count !== undefined) setDropped({ of: events.value, count });
  };
  const would = facts?.dropped ?? 0;
  return (
    <div class="macro__note macro__optimise">
      <Button
        icon="thin"
        describedBy="optimise-hint"
        disabled={recording.value || eventCount.value === 0}
        waiting={would === 0 || batch.value !== null || optimising}
        onPress={() => void optimise()}
      >
        Optimise
      </Button>
      <p id="optimise-hint" aria-live="polite">
        {dropped ? `Dropped ${counted(dropped.count, 'move')}. ` : ''}
        {facts ? wouldText(facts, dropped !== null) : 'Drop moves within 10 px of the last one kept.'}
      </p>
    </div>
  );
}

function wouldText({ dropped, counts }: Facts, again: boolean): string {
  const all = counts[0] ?? 0;
  if (dropped > 0) {
    return `${again ? 'Again: drop' : 'Drop'} ${groupedNumber(dropped)} of ${counted(all, 'move')}, within 10 px of the last one kept.`;
  }
  return again ? 'No more would be.' : 'No move would be dropped.';
}
