// Edits of the selected events: the time of one, a shift of several, and deleting them.
import { useEffect, useLayoutEffect, useRef, useState } from 'preact/hooks';
import { batch, type BatchEnd, cancelBatch } from '../batch';
import { deleteEvent, deleteEvents, retimeEvent, shiftEvents } from '../commands';
import { Button } from '../components/button';
import { Dialog } from '../components/dialog';
import { NumberField } from '../components/number-field';
import { counted, groupedNumber } from '../format';
import { recording } from '../store';
import { rowOfIndex, selectedIndexes, selection, selectOnly, view, viewIsCurrent } from './macro-model';

const kMaxTime = 1_000_000; // seconds
const kAskFrom = 10; // events deleted at once, which cannot be undone

const countedEvents = (count: number) => counted(count, 'event');

export interface EventEdits {
  allowed: boolean; // the indexes of the selection are those of the program's list
  result: string; // sentence about the last edit of several events, until it is cleared
  clearResult: () => void;
  asking: boolean; // the question before a deletion is open
  requestDelete: () => void; // deletes the selected events, or asks first
  confirmDelete: () => void;
  cancelDelete: () => void;
  shift: (seconds: number) => void;
}

export function useEventEdits(): EventEdits {
  const [result, setResult] = useState('');
  const [asking, setAsking] = useState(false);
  const isEditing = useRef(false);
  const { count } = selection.value;
  const allowed = viewIsCurrent() && !recording.value && !batch.value;
  // Close the question if another macro replaces this one meanwhile.
  useEffect(() => {
    if (count === 0) setAsking(false);
  }, [count]);

  // Afterwards the next event is selected, so that the user can go on from there.
  const remove = async (indexes: Uint32Array) => {
    setAsking(false);
    const first = indexes[0];
    if (first === undefined) return;
    isEditing.current = true;
    const end = indexes.length > 1 ? await deleteEvents(indexes) : await deleteEvent(first);
    isEditing.current = false;
    if (viewIsCurrent() && (!end || end.end === 'done')) {
      const row = rowOfIndex(first);
      if (row >= 0) selectOnly(row);
    }
    if (end) setResult(resultText('Deleted', end, indexes.length));
  };
  const shift = async (seconds: number) => {
    if (isEditing.current) return;
    const indexes = selectedIndexes();
    isEditing.current = true;
    const end = await shiftEvents(indexes, seconds);
    isEditing.current = false;
    setResult(resultText('Shifted', end, indexes.length));
  };
  return {
    allowed,
    result,
    clearResult: () => setResult(''),
    asking,
    requestDelete: () => {
      // Ignore a key that is held or pressed twice: it would delete the events that have moved to these indexes.
      if (!allowed || count === 0 || isEditing.current) return;
      if (count < kAskFrom) void remove(selectedIndexes());
      else setAsking(true);
    },
    confirmDelete: () => void remove(selectedIndexes()),
    cancelDelete: () => setAsking(false),
    shift: (seconds) => void shift(seconds),
  };
}

function resultText(verb: string, { end, done }: { end: BatchEnd; done: number }, all: number): string {
  if (end === 'done') return `${verb} ${countedEvents(done)}.`;
  const part = `${verb} ${groupedNumber(done)} of ${countedEvents(all)}`;
  if (end === 'cancelled') return `Cancelled. ${part}.`;
  return end === 'changed' ? `The macro has changed. ${part}.` : `${part}.`;
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
        disabled={count === 0 || recording.value}
        waiting={!edits.allowed}
        onPress={edits.requestDelete}
      >
        {deleteText}
      </Button>
    </div>
  );
}

function TimeField({ hintId, onError }: Omit<EditProps, 'edits'>) {
  const index = selection.value.count === 1 ? (selectedIndexes()[0] ?? -1) : -1;
  const event = view.value.list[index];
  return (
    <NumberField
      key={index}
      label="Event time"
      caption="Event time"
      noun=""
      unit="s"
      value={event ? event.time : 0}
      min={0}
      max={kMaxTime}
      decimals={6}
      step={0.1}
      disabled={!event || recording.value}
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
  const { list } = view.value;
  let earliest = Infinity;
  for (const index of selectedIndexes()) earliest = Math.min(earliest, list[index]?.time ?? Infinity);
  return Number.isFinite(earliest) ? earliest : 0;
}

export function BatchProgress() {
  const cancel = useRef<HTMLButtonElement>(null);
  useLayoutEffect(() => {
    if (document.activeElement === document.body) cancel.current?.focus();
  }, []);
  const { doing, done, of } = batch.value ?? { doing: '', done: 0, of: 1 };
  return (
    <div class="event__progress">
      <progress aria-label={`${doing} events`} value={done} max={of} />
      <span>{`${doing}: ${groupedNumber(done)} of ${groupedNumber(of)}`}</span>
      <Button buttonRef={cancel} tip="Stops here. What is done stays done." onPress={cancelBatch}>
        Cancel
      </Button>
    </div>
  );
}

export function DeleteDialog({ edits }: { edits: EventEdits }) {
  const events = countedEvents(selection.value.count);
  return (
    <Dialog
      title={`Delete ${events}?`}
      alarming
      onClose={edits.cancelDelete}
      actions={
        <>
          <Button tip="Deletes nothing." onPress={edits.cancelDelete}>
            Cancel
          </Button>
          <Button kind="stop" tip="Deletes the selected events." onPress={edits.confirmDelete}>
            {`Delete ${events}`}
          </Button>
        </>
      }
    >
      <p>This cannot be undone. The other events keep their times.</p>
    </Dialog>
  );
}
