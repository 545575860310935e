// Edits of the selected events: the time of one, a shift of several, and deleting them. All can be undone.
import { useEffect, useRef, useState } from 'preact/hooks';
import { deleteEvents, retimeEvent, shiftEvents } from '../commands';
import { Button } from '../components/button';
import { NumberField } from '../components/number-field';
import { countBelow } from '../event-columns';
import { counted, groupedNumber } from '../format';
import { changeWithUndo } from '../history';
import type { NoticeAction } from '../notices';
import { events, playing, recording } from '../store';
import {
  macroData,
  rowOfIndex,
  selectedIndexes,
  selection,
  selectOnly,
  view,
  viewIsCurrent,
} from './macro-model';

const kMaxTime = 1_000_000; // seconds

const countedEvents = (count: number) => counted(count, 'event');

export interface EventEdits {
  allowed: boolean; // the indexes of the selection are those of the program's list, which may be edited
  deleteSelected: () => void;
  shift: (seconds: number) => void;
}

export function useEventEdits(): EventEdits {
  const isEditing = useRef(false);
  const allowed = viewIsCurrent() && !recording.value && !playing.value;
  // Ignore a key that is held or pressed twice: it would edit the events that have moved to these indexes.
  const edit = async (work: (indexes: Uint32Array) => Promise<unknown>) => {
    if (!allowed || selection.peek().count === 0 || isEditing.current) return;
    isEditing.current = true;
    await work(selectedIndexes());
    isEditing.current = false;
  };
  return {
    allowed,
    deleteSelected: () => void edit(deleteWithUndo),
    shift: (seconds) =>
      void edit((indexes) =>
        changeWithUndo(
          () => shiftEvents(indexes, seconds),
          () => `Shifted ${countedEvents(indexes.length)}.`,
        ),
      ),
  };
}

// Afterwards the next event is selected, so that the user can go on from there.
async function deleteWithUndo(indexes: Uint32Array): Promise<void> {
  const halves = otherHalves(indexes);
  const remove = async () => {
    if (!(await deleteEvents(indexes))) return false;
    const row = viewIsCurrent() ? rowOfIndex(indexes[0] as number) : -1;
    if (row >= 0) selectOnly(row);
    return true;
  };
  await changeWithUndo(
    remove,
    () => `Deleted ${countedEvents(indexes.length)}${halves ? `, but not ${halves.name}` : ''}.`,
    () => (halves ? [deleteHalves(halves)] : []),
  );
}

interface Halves {
  indexes: Uint32Array; // after the deletion, ascending
  name: string; // "its release", "3 presses"
}

// Returns the releases and presses of the given events that are not among these, or undefined if there are none.
function otherHalves(deleted: Uint32Array): Halves | undefined {
  const data = macroData.peek();
  if (data?.columns !== events.peek()) return undefined;
  const isDeleted = (index: number) => deleted[countBelow(deleted, index)] === index;
  const left: number[] = [];
  let releases = 0;
  for (const index of deleted) {
    const partner = data.facts.partners[index] as number;
    if (partner < 0 || isDeleted(partner)) continue;
    left.push(partner - countBelow(deleted, partner));
    if (partner > index) releases++;
  }
  if (left.length === 0) return undefined;
  const kind = releases === left.length ? 'release' : releases === 0 ? 'press' : 'other half';
  const kinds = { release: 'releases', press: 'presses', 'other half': 'other halves' };
  return {
    indexes: Uint32Array.from(left).sort(),
    name: deleted.length === 1 ? `its ${kind}` : counted(left.length, kind, kinds[kind]),
  };
}

// Possible until the macro changes.
function deleteHalves({ indexes }: Halves): NoticeAction {
  const list = events.peek();
  return {
    label: indexes.length > 1 ? 'Delete them too' : 'Delete it too',
    tip: 'Deletes the other halves as well.',
    isPossible: () => events.value === list && !recording.value && !playing.value,
    press: () =>
      void changeWithUndo(
        () => deleteEvents(indexes),
        () => `Deleted ${countedEvents(indexes.length)}.`,
      ),
  };
}

interface EditProps {
  edits: EventEdits;
  hintId: string;
  onError: (error: string) => void;
}

// The time of one event or the shift of several, in the same position.
export function EditRow({ edits, hintId, onError }: EditProps) {
  const { count } = selection.value;
  const deleteText = count > 1 ? `Delete ${groupedNumber(count)}` : 'Delete event';
  return (
    <div class={count > 1 ? 'event__several' : 'pair'} id="event-edit">
      {count > 1 ? (
        <ShiftField edits={edits} hintId={hintId} onError={onError} />
      ) : (
        <TimeField hintId={hintId} onError={onError} />
      )}
      <Button
        label={count > 1 ? `Delete ${countedEvents(count)}` : 'Delete event'}
        tip={
          count > 1 ? 'Deletes the selected events. Key: Delete.' : 'Deletes the selected event. Key: Delete.'
        }
        disabled={count === 0 || recording.value || playing.value}
        waiting={!edits.allowed}
        onPress={edits.deleteSelected}
      >
        {deleteText}
      </Button>
    </div>
  );
}

function TimeField({ hintId, onError }: Omit<EditProps, 'edits'>) {
  const index = selection.value.count === 1 ? (selectedIndexes()[0] ?? -1) : -1;
  const time = view.value.list.time[index];
  return (
    <NumberField
      key={index}
      label="Event time"
      caption="Event time"
      noun=""
      unit="s"
      value={time ?? 0}
      min={0}
      max={kMaxTime}
      decimals={6}
      step={0.1}
      disabled={time === undefined || recording.value || playing.value}
      hintId={hintId}
      onChange={(seconds) => void retimeEvent(index, seconds)}
      onError={onError}
    />
  );
}

function ShiftField({ edits, hintId, onError }: EditProps) {
  const [seconds, setSeconds] = useState(0);
  const latest = useRef(0);
  const earliest = earliestSelected();
  const isTooEarly = earliest + seconds < -1e-9;
  useEffect(
    () => onError(isTooEarly ? `Enter -${groupedNumber(earliest)} or more: no time can be below 0.` : ''),
    [isTooEarly, earliest],
  );
  useEffect(() => () => onError(''), []);
  return (
    <>
      <NumberField
        label="Shift times by"
        caption="Shift times by"
        noun=""
        unit="s"
        value={seconds}
        min={-kMaxTime}
        max={kMaxTime}
        decimals={6}
        step={0.1}
        hintId={hintId}
        onChange={(value) => {
          latest.current = value;
          setSeconds(value);
        }}
        onError={onError}
      />
      <Button
        tip="Adds this number to the times of the selected events."
        disabled={isTooEarly || seconds === 0}
        waiting={!edits.allowed}
        onPress={() => edits.shift(latest.current)}
      >
        Shift
      </Button>
    </>
  );
}

function earliestSelected(): number {
  const { time } = view.value.list;
  let earliest = Infinity;
  for (const index of selectedIndexes()) earliest = Math.min(earliest, time[index] ?? Infinity);
  return Number.isFinite(earliest) ? earliest : 0;
}
