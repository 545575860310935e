// The kinds of events that the list shows, with their counts.
import { type Group, kGroups } from '../event-columns';
import { groupedNumber } from '../format';
import { recording } from '../store';
import { macroData, setGroupShown, shownGroups, view } from './macro-model';

const kShortFrom = 10_000; // events from which on a count is rounded

const kTitles: Record<Group, string> = {
  moves: 'Moves',
  buttons: 'Buttons',
  wheel: 'Wheel',
  keys: 'Keys',
  tools: 'Tools',
};

export function FilterChips() {
  const counts = recording.value ? undefined : macroData.value?.facts.counts;
  return (
    <div class="filter" role="group" aria-label="Kinds of events shown">
      {kGroups.map((group, i) => {
        const count = counts?.[i];
        const whole = count === undefined ? '' : groupedNumber(count);
        const shown = shownGroups.value.has(group);
        return (
          <button
            key={group}
            type="button"
            class="filter__chip"
            title={tipOf(kTitles[group], whole, shown)}
            aria-pressed={shown}
            disabled={!counts || view.value.list.count === 0}
            onClick={() => setGroupShown(group, !shown)}
          >
            <span class="filter__title">{kTitles[group]}</span>{' '}
            <span class={`filter__mark filter__mark--${group}`} aria-hidden="true" />
            <span class="filter__count" aria-hidden="true">
              {count === undefined ? '\u2013' : shortCount(count)}
            </span>
            <span class="unseen">{whole}</span>
          </button>
        );
      })}
    </div>
  );
}

// "Hides the 12 events of kind Moves."
function tipOf(title: string, count: string, shown: boolean): string {
  const verb = shown ? 'Hides' : 'Shows';
  return `${verb} the events of the kind ${title}${count ? `: ${count}` : ''}.`;
}

// At most four characters, which fit the narrowest window. Screen readers get the whole number.
function shortCount(count: number): string {
  if (count < kShortFrom) return String(count);
  return count < 1_000_000 ? `${Math.floor(count / 1000)}k` : `${Math.floor(count / 100_000) / 10}M`;
}
