import { useEffect, useLayoutEffect, useRef, useState } from 'preact/hooks';
import { batch, type BatchEnd, cancelBatch } from '../batch';
import { deleteEvent, deleteEvents, retimeEvent, shiftEvents } from '../commands';
import { Button } from '../components/button';
import { Dialog } from '../components/dialog';
import { List, type ListHandle, type Pick } from '../components/list';
import { NumberField } from '../components/number-field';
import { Group } from '../components/panel';
import { counted, groupedNumber } from '../format';
import { eventsLoading, playing, recording } from '../store';
import { eventText } from './event-text';
import { FilterChips } from './event-filter';
import {
  indexOfRow,
  moveActive,
  revealed,
  rowCount,
  rowOfIndex,
  selectAll,
  selectedIndexes,
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

const kLongestTime = 1_000_000; // seconds
const kAskFrom = 10; // events at once, which cannot be brought back
const kPicks: Record<Pick, (row: number) => void> = {
  only: selectOnly,
  toggle: toggleRow,
  range: selectTo,
  move: moveActive,
};

const countedEvents = (count: number) => counted(count, 'event');

export function EventList() {
  const handle = useRef<ListHandle>(null);
  const [error, setError] = useState('');
  const [told, setTold] = useState('');
  const [asking, setAsking] = useState(false);
  const editing = useRef(false);
  const { list } = view.value;
  const { mask, count, active } = selection.value;
  const current = viewIsCurrent() && !recording.value && !batch.value;
  const rows = recording.value ? 0 : rowCount();
  const hintId = 'events-hint';

  useKeptPlace(handle);
  useEffect(() => {
    const [first] = revealed.value;
    if (first === undefined) return;
    const row = rowOfIndex(first);
    if (row < 0) return;
    if (revealed.value.length > 1) selectIndexes(revealed.value);
    else selectOnly(row);
    setTold('');
    handle.current?.reveal(rowOfIndex(revealed.value.at(-1) ?? first));
    handle.current?.reveal(row);
  }, [revealed.value]);
  // A macro that took this one's place behind the question leaves nothing to ask for.
  useEffect(() => {
    if (count === 0) setAsking(false);
  }, [count]);
  // The focus does not stay on a button that is gone.
  useEffect(() => {
    if (!batch.value?.shown && document.activeElement === document.body && told) handle.current?.focus();
  }, [batch.value?.shown]);

  // What was next to the deleted ones is selected after, so that one can go on from there.
  const remove = async (indexes: Uint32Array) => {
    setAsking(false);
    const next = indexes[0];
    if (next === undefined) return;
    editing.current = true;
    const result = indexes.length > 1 ? await deleteEvents(indexes) : await deleteEvent(next);
    editing.current = false;
    if (viewIsCurrent() && (!result || result.end === 'done')) {
      const row = rowOfIndex(next);
      if (row >= 0) selectOnly(row);
    }
    if (result) setTold(endText('Deleted', result, indexes.length));
  };
  const askOrRemove = () => {
    // A key that is held, or pressed twice, must not reach what has moved to the places of the deleted ones.
    if (!current || count === 0 || editing.current) return;
    if (count < kAskFrom) void remove(selectedIndexes());
    else setAsking(true);
  };
  const shift = async (seconds: number) => {
    if (editing.current) return;
    const indexes = selectedIndexes();
    editing.current = true;
    const result = await shiftEvents(indexes, seconds);
    editing.current = false;
    setTold(endText('Shifted', result, indexes.length));
  };
  const onKey = (key: string) => {
    if (key === 'Delete') askOrRemove();
    else if (key === 'Escape') selectNone();
    else document.querySelector<HTMLInputElement>('#event-edit input')?.select();
  };

  return (
    <Group title="Events" hint={told || hintFor(count, rows)} hintId={hintId} error={error}>
      <FilterChips />
      <List
        id="events"
        label="Events"
        handle={handle}
        rows={rows}
        active={active < 0 ? -1 : rowOfActive(active)}
        isSelected={(row) => mask[indexOfRow(row)] === 1}
        onPick={(row, how) => {
          setTold('');
          kPicks[how](row);
        }}
        onPickAll={selectAll}
        onKey={onKey}
        renderRow={(row) => {
          const index = indexOfRow(row);
          const entry = list[index];
          return (
            entry && (
              <div class="event" data-event={entry.description}>
                <span class="event__number">{index + 1}</span>
                <span class="event__time">{entry.time.toFixed(3)}</span>
                <span class="event__text">{eventText(entry.description)}</span>
              </div>
            )
          );
        }}
      >
        <NoRows />
      </List>
      {batch.value?.shown ? (
        <Progress />
      ) : (
        <EditRow
          current={current}
          hintId={hintId}
          onError={setError}
          onShift={(seconds) => void shift(seconds)}
          onDelete={askOrRemove}
        />
      )}
      {asking && (
        <DeleteDialog
          count={count}
          onCancel={() => setAsking(false)}
          onDelete={() => void remove(selectedIndexes())}
        />
      )}
    </Group>
  );
}

// The row of the event that the keyboard is at, if the filter leaves it.
function rowOfActive(index: number): number {
  const row = rowOfIndex(index);
  return indexOfRow(row) === index ? row : -1;
}

// When the macro or the filter changes, the event at the top of the list stays there.
function useKeptPlace(handle: { current: ListHandle | null }) {
  const before = useRef({ view: view.value, index: -1, above: 0 });
  const changed = before.current.view !== view.value;
  if (changed) {
    // Read while the list still stands as it was. At its very top it stays at the top.
    const { row, above } = handle.current?.top() ?? { row: 0, above: 0 };
    const index = row === 0 ? -1 : (before.current.view.rows?.[row] ?? row);
    before.current = { view: view.value, index, above };
  }
  useLayoutEffect(() => {
    const { index, above } = before.current;
    if (!changed || index < 0) return;
    const row = rowOfIndex(view.value.moved(index));
    if (row >= 0) handle.current?.scrollTo(row, above);
  }, [view.value]);
}

function NoRows() {
  if (recording.value) return <p class="event__none">Events appear when the recording ends.</p>;
  if (view.value.list.length === 0) return <p class="event__none">Recorded events appear here.</p>;
  return (
    <div class="event__none">
      <p>No events match the filter.</p>
      <Button onPress={showAllGroups}>Show all</Button>
    </div>
  );
}

// One event has a time, several have a shift; in the same place, so that nothing moves.
function EditRow(props: {
  current: boolean;
  hintId: string;
  onError: (error: string) => void;
  onShift: (seconds: number) => void;
  onDelete: () => void;
}) {
  const { current, hintId, onError } = props;
  const { list } = view.value;
  const { count } = selection.value;
  const index = count === 1 ? (selectedIndexes()[0] ?? -1) : -1;
  const event = list[index];
  return (
    <div class={count > 1 ? 'event__several' : 'pair'} id="event-edit">
      {count > 1 ? (
        <ShiftField {...props} />
      ) : (
        <NumberField
          key={index}
          label="Event time"
          noun=""
          unit="s"
          value={event ? event.time : 0}
          min={0}
          max={kLongestTime}
          decimals={6}
          step={0.1}
          disabled={!event || recording.value}
          hintId={hintId}
          onChange={(seconds) => void retimeEvent(index, seconds)}
          onError={onError}
        />
      )}
      <Button
        label={count > 1 ? `Delete ${countedEvents(count)}` : 'Delete event'}
        disabled={count === 0 || recording.value}
        waiting={!current}
        onPress={props.onDelete}
      >
        {count > 1 ? `Delete ${groupedNumber(count)}` : 'Delete event'}
      </Button>
    </div>
  );
}

function ShiftField({
  current,
  hintId,
  onError,
  onShift,
}: {
  current: boolean;
  hintId: string;
  onError: (error: string) => void;
  onShift: (seconds: number) => void;
}) {
  const [seconds, setSeconds] = useState(0);
  const latest = useRef(0);
  const earliest = earliestSelected();
  const early = earliest + seconds < -1e-9;
  useEffect(
    () => onError(early ? `Enter -${groupedNumber(earliest)} or more: no time can be below 0.` : ''),
    [early, earliest],
  );
  useEffect(() => () => onError(''), []);
  return (
    <>
      <NumberField
        label="Shift times by"
        noun=""
        unit="s"
        value={seconds}
        min={-kLongestTime}
        max={kLongestTime}
        decimals={6}
        step={0.1}
        hintId={hintId}
        onChange={(value) => {
          latest.current = value;
          setSeconds(value);
        }}
        onError={onError}
      />
      <Button disabled={early || seconds === 0} waiting={!current} onPress={() => onShift(latest.current)}>
        Shift
      </Button>
    </>
  );
}

function earliestSelected(): number {
  const { list } = view.value;
  let earliest = Infinity;
  for (const index of selectedIndexes()) earliest = Math.min(earliest, list[index]?.time ?? Infinity);
  return Number.isFinite(earliest) ? earliest : 0;
}

function Progress() {
  const cancel = useRef<HTMLButtonElement>(null);
  useLayoutEffect(() => {
    if (document.activeElement === document.body) cancel.current?.focus();
  }, []);
  const { doing, done, of } = batch.value ?? { doing: '', done: 0, of: 1 };
  return (
    <div class="event__progress">
      <progress aria-label={`${doing} events`} value={done} max={of} />
      <span>{`${doing}: ${groupedNumber(done)} of ${groupedNumber(of)}`}</span>
      <Button buttonRef={cancel} onPress={cancelBatch}>
        Cancel
      </Button>
    </div>
  );
}

function DeleteDialog(props: { count: number; onCancel: () => void; onDelete: () => void }) {
  return (
    <Dialog
      title={`Delete ${countedEvents(props.count)}?`}
      alarming
      onClose={props.onCancel}
      actions={
        <>
          <Button onPress={props.onCancel}>Cancel</Button>
          <Button kind="stop" onPress={props.onDelete}>
            {`Delete ${countedEvents(props.count)}`}
          </Button>
        </>
      }
    >
      <p>This cannot be undone. The other events keep their times.</p>
    </Dialog>
  );
}

function endText(verb: string, { end, done }: { end: BatchEnd; done: number }, all: number): string {
  if (end === 'done') return `${verb} ${countedEvents(done)}.`;
  const part = `${verb} ${groupedNumber(done)} of ${countedEvents(all)}`;
  if (end === 'cancelled') return `Cancelled. ${part}.`;
  return end === 'changed' ? `The macro has changed. ${part}.` : `${part}.`;
}

function hintFor(selected: number, rows: number): string {
  if (eventsLoading.value || !viewIsCurrent()) return 'Loading events...';
  if (recording.value || rows === 0) return 'Filter, select, retime and delete events.';
  if (playing.value && selected > 0) return 'Playback uses your changes from the next round.';
  if (selected > 1) return `${groupedNumber(selected)} of ${countedEvents(rows)} selected.`;
  if (selected === 1) return 'A new time does not change the order of the list.';
  return 'Shift or Ctrl selects several, Ctrl+A all.';
}
