// The list of the macro's events, with its filter and the edits of the selected events.
import { useEffect, useLayoutEffect, useRef, useState } from 'preact/hooks';
import { Button } from '../components/button';
import { List, type ListHandle, type ListKey, type Pick } from '../components/list';
import { Group } from '../components/panel';
import { counted, groupedNumber } from '../format';
import { redoNext, undoNewest } from '../history';
import { eventsLoading, playing, progress, recording } from '../store';
import { EditRow, useEventEdits } from './event-edits';
import { FilterChips } from './event-filter';
import { eventText } from './event-text';
import {
  indexOfRow,
  moveActive,
  revealed,
  rowCount,
  rowOfIndex,
  selectAll,
  selectIndexes,
  selection,
  selectNone,
  selectOnly,
  selectTo,
  showAllGroups,
  toggleRow,
  view,
  viewIsCurrent,
} from './macro-model';
import './event-list.css';

const kHintId = 'events-hint';
const kPicks: Record<Pick, (row: number) => void> = {
  only: selectOnly,
  toggle: toggleRow,
  range: selectTo,
  move: moveActive,
};

export function EventList() {
  const handle = useRef<ListHandle>(null);
  const [error, setError] = useState('');
  const edits = useEventEdits();
  const { mask, count, active } = selection.value;
  const rows = recording.value ? 0 : rowCount();
  useScrollAnchor(handle);
  useRevealedEvents(handle);
  const { played, onUserScroll } = useFollowedPlayback(handle);

  const onKey = (key: ListKey) => {
    if (key === 'Delete') edits.deleteSelected();
    else if (key === 'Escape') selectNone();
    else if (key === 'Undo') undoNewest();
    else if (key === 'Redo') redoNext();
    else document.querySelector<HTMLInputElement>('#event-edit input')?.select();
  };
  return (
    <Group title="Events" hint={hintFor(count, rows)} hintId={kHintId} error={error}>
      <FilterChips />
      <List
        id="events"
        label="Events"
        handle={handle}
        rows={rows}
        active={active < 0 ? -1 : rowIfShown(active)}
        isSelected={(row) => mask[indexOfRow(row)] === 1}
        marked={played < 0 ? -1 : rowIfShown(played)}
        onUserScroll={onUserScroll}
        onPick={(row, how) => kPicks[how](row)}
        onPickAll={selectAll}
        onKey={onKey}
        renderRow={(row) => <EventRow index={indexOfRow(row)} />}
      >
        <NoRows />
      </List>
      <EditRow edits={edits} hintId={kHintId} onError={setError} />
    </Group>
  );
}

function EventRow({ index }: { index: number }) {
  const { list } = view.value;
  return (
    <div class="event" style={{ '--digits': String(list.count).length }}>
      <span class="event__number">{index + 1}</span>
      <span class="event__time">{(list.time[index] ?? 0).toFixed(3)}</span>
      <span class="event__text">{eventText(list, index)}</span>
    </div>
  );
}

function NoRows() {
  if (recording.value) return <p class="event__none">Events appear when the recording ends.</p>;
  if (view.value.list.count === 0) return <p class="event__none">Recorded events appear here.</p>;
  return (
    <div class="event__none">
      <p>No events match the filter.</p>
      <Button tip="Shows the events of all kinds." onPress={showAllGroups}>
        Show all
      </Button>
    </div>
  );
}

function hintFor(selected: number, rows: number): string {
  if (eventsLoading.value || !viewIsCurrent()) return 'Loading events...';
  if (recording.value || rows === 0) return 'Filter, select, retime and delete events.';
  if (playing.value && selected > 0) return 'Stop the playback to edit events.';
  if (selected > 1) return `${groupedNumber(selected)} of ${counted(rows, 'event')} selected.`;
  if (selected === 1) return 'A new time does not change the order of the list.';
  return 'Shift or Ctrl selects several, Ctrl+A all.';
}

// Returns the row of an event, or -1 if the filter hides it.
function rowIfShown(index: number): number {
  const row = rowOfIndex(index);
  return indexOfRow(row) === index ? row : -1;
}

// Keeps the event at the top of the list there when the macro or the filter changes.
function useScrollAnchor(handle: { current: ListHandle | null }): void {
  const anchor = useRef({ view: view.value, index: -1, above: 0 });
  const hasChanged = anchor.current.view !== view.value;
  if (hasChanged) {
    // The list is still scrolled as before. A list at its very top stays at the top.
    const { row, above } = handle.current?.top() ?? { row: 0, above: 0 };
    const index = row === 0 ? -1 : (anchor.current.view.rows?.[row] ?? row);
    anchor.current = { view: view.value, index, above };
  }
  useLayoutEffect(() => {
    const { index, above } = anchor.current;
    if (!hasChanged || index < 0) return;
    const row = rowOfIndex(view.value.moved(index));
    if (row >= 0) handle.current?.scrollTo(row, above);
  }, [view.value]);
}

// Selects the events that another part of the panel reveals, and scrolls so that the first is visible.
function useRevealedEvents(handle: { current: ListHandle | null }): void {
  useEffect(() => {
    const [first] = revealed.value;
    if (first === undefined) return;
    const row = rowOfIndex(first);
    if (row < 0) return;
    if (revealed.value.length > 1) selectIndexes(revealed.value);
    else selectOnly(row);
    handle.current?.reveal(rowOfIndex(revealed.value.at(-1) ?? first));
    handle.current?.reveal(row);
  }, [revealed.value]);
}

// Keeps the event that is being played in view, until the user scrolls. The next playback is followed again.
function useFollowedPlayback(handle: { current: ListHandle | null }): {
  played: number; // index of the last event played, -1 none
  onUserScroll: () => void;
} {
  const isFollowing = useRef(true);
  const played = playing.value && viewIsCurrent() ? progress.value.playEvent - 1 : -1;
  useEffect(() => void (isFollowing.current = true), [playing.value]);
  useEffect(() => {
    if (played >= 0 && isFollowing.current) handle.current?.reveal(rowOfIndex(played));
  }, [played]);
  return { played, onUserScroll: () => (isFollowing.current = false) };
}
