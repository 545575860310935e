// What the macro panel shows of the macro: its facts, the rows that the filter shows, and the selection. All follow the
// store's list, in slices if the work is linear in it.
import { effect, signal } from '@preact/signals';
import {
  type Columns,
  countBelow,
  type Group,
  indexesOfGroups,
  isSameEvent,
  kGroups,
  makeColumns,
} from '../event-columns';
import { runInSlices, type Sliced } from '../slices';
import { events, listChange } from '../store';
import { type Facts, factsOf } from './macro-facts';

// The list as it is shown.
export interface View {
  list: Columns;
  rows: Uint32Array | null; // indexes in the list, ascending; null if every event has a row
  moved: (index: number) => number; // from an index in the view before to the same event, or the next one that is left
}

// A macro and its facts.
export interface MacroData {
  columns: Columns;
  facts: Facts;
}

// By indexes in the view's list. The mask is changed in place, in a new record, so that the signal reports the change.
export interface Selection {
  mask: Uint8Array;
  count: number;
  active: number; // index at the keyboard cursor, -1 none
  anchor: number; // index where a range begins, -1 none
}

const nothingSelected = (length: number): Selection => ({
  mask: new Uint8Array(length),
  count: 0,
  active: -1,
  anchor: -1,
});
const unmoved = (index: number) => index;

export const view = signal<View>({ list: makeColumns(-1), rows: null, moved: unmoved });
export const macroData = signal<MacroData | null>(null);
export const shownGroups = signal<ReadonlySet<Group>>(new Set(kGroups));
export const selection = signal<Selection>(nothingSelected(0));
// Events that the list selects and scrolls to. A new array each time, even for the same events.
export const revealed = signal<readonly number[]>([]);

export function revealEvents(indexes: number[]): void {
  revealed.value = indexes;
}

let stopFacts = () => {};
let stopFilter = () => {};

const allShown = () => shownGroups.peek().size === kGroups.length;

// Returns whether indexes in the view are indexes in the store's list.
export const viewIsCurrent = () => view.value.list === events.value;

// Returns the index of an event in another list of the same macro: the equal one that is nearest to its old index.
function findEvent(list: Columns, before: Columns, index: number): number {
  const last = list.count - 1;
  const same = (i: number) => i >= 0 && i <= last && isSameEvent(list, i, before, index);
  for (let distance = 0; distance <= last; distance++) {
    if (same(index - distance)) return index - distance;
    if (same(index + distance)) return index + distance;
    if (index - distance < 0 && index + distance > last) break;
  }
  return Math.max(0, Math.min(index, last));
}

// Shows the list through the filter, with the given selection.
function showList(list: Columns, moved: View['moved'], selected: Selection): void {
  stopFilter();
  const update = (rows: Uint32Array | null) => {
    selection.value = selected;
    view.value = { list, rows, moved };
  };
  if (allShown()) {
    update(null);
    return;
  }
  stopFilter = runInSlices(indexesOfGroups(list, shownGroups.peek()), update);
}

function followList(list: Columns): void {
  const before = view.peek().list;
  if (list === before) return;
  if (listChange?.before === before && listChange.after === list) {
    const { removed } = listChange;
    const moved = (index: number) => index - countBelow(removed, index);
    showList(list, moved, movedSelection(selection.peek(), removed, list.count));
  } else {
    const moved = (index: number) => findEvent(list, before, index);
    showList(list, moved, nothingSelected(list.count));
  }
  stopFacts();
  stopFacts = runInSlices(factsOf(list), (facts) => (macroData.value = { columns: list, facts }));
}

// Returns the selection in the list without the removed events.
function movedSelection(
  { mask, active, anchor }: Selection,
  removed: Uint32Array,
  length: number,
): Selection {
  const left = nothingSelected(length);
  let removedCount = 0;
  for (let i = 0; i < mask.length; i++) {
    if (removedCount < removed.length && removed[removedCount] === i) {
      removedCount++;
    } else if (mask[i]) {
      left.mask[i - removedCount] = 1;
      left.count++;
    }
  }
  const at = (index: number) => Math.min(length - 1, index - countBelow(removed, index));
  left.active = active < 0 ? -1 : at(active);
  left.anchor = anchor < 0 ? -1 : at(anchor);
  return left;
}

effect(() => followList(events.value));

// Filter. A hidden event is not selected any more, so that no command changes what the user does not see.
export function setGroupShown(group: Group, shown: boolean): void {
  const groups = new Set(shownGroups.peek());
  if (shown) groups.add(group);
  else groups.delete(group);
  setShownGroups(groups);
}

export const showAllGroups = () => setShownGroups(new Set(kGroups));

function setShownGroups(groups: ReadonlySet<Group>): void {
  shownGroups.value = groups;
  const { list } = view.peek();
  if (list !== events.peek()) {
    followList(events.peek()); // it was still reading the list for the former filter
    return;
  }
  stopFilter();
  stopFilter = runInSlices(filtered(list, groups), (rows) => {
    const before = selection.peek();
    const left = nothingSelected(list.count);
    const isVisible = (index: number) => index >= 0 && (!rows || rows[countBelow(rows, index)] === index);
    const count = rows ? rows.length : list.count;
    for (let row = 0; row < count; row++) {
      const index = rows ? (rows[row] as number) : row;
      if (before.mask[index]) {
        left.mask[index] = 1;
        left.count++;
      }
    }
    if (isVisible(before.active)) left.active = before.active;
    if (isVisible(before.anchor)) left.anchor = before.anchor;
    selection.value = left;
    view.value = { list, rows, moved: unmoved };
  });
}

function* filtered(list: Columns, groups: ReadonlySet<Group>): Sliced<Uint32Array | null> {
  return groups.size === kGroups.length ? null : yield* indexesOfGroups(list, groups);
}

// Rows of the view and indexes in its list.
export const rowCount = () => view.value.rows?.length ?? view.value.list.count;
export const indexOfRow = (row: number) => view.value.rows?.[row] ?? row;
// Returns the row of an event, or of the next one that the filter shows.
export function rowOfIndex(index: number): number {
  const { rows, list } = view.value;
  const last = (rows?.length ?? list.count) - 1;
  return Math.min(last, rows ? countBelow(rows, index) : index);
}

// Selection, by rows of the view.
export function selectOnly(row: number): void {
  const index = indexOfRow(row);
  const only = nothingSelected(view.peek().list.count);
  only.mask[index] = 1;
  selection.value = { ...only, count: 1, active: index, anchor: index };
}

export function toggleRow(row: number): void {
  const { mask, count } = selection.peek();
  const index = indexOfRow(row);
  const on = mask[index] ? 0 : 1;
  mask[index] = on;
  selection.value = { mask, count: count + (on ? 1 : -1), active: index, anchor: index };
}

// Selects only the rows from the anchor to this one.
export function selectTo(row: number): void {
  const { anchor } = selection.peek();
  const index = indexOfRow(row);
  const from = anchor < 0 ? row : rowOfIndex(anchor);
  const range = nothingSelected(view.peek().list.count);
  for (let at = Math.min(from, row); at <= Math.max(from, row); at++) range.mask[indexOfRow(at)] = 1;
  selection.value = {
    mask: range.mask,
    count: Math.abs(row - from) + 1,
    active: index,
    anchor: indexOfRow(from),
  };
}

export function moveActive(row: number): void {
  selection.value = { ...selection.peek(), active: indexOfRow(row) };
}

export function selectAll(): void {
  const rows = rowCount();
  const all = nothingSelected(view.peek().list.count);
  for (let row = 0; row < rows; row++) all.mask[indexOfRow(row)] = 1;
  const active = Math.max(0, selection.peek().active);
  selection.value = { mask: all.mask, count: rows, active, anchor: active };
}

export function selectIndexes(indexes: readonly number[]): void {
  const { list } = view.peek();
  const some = nothingSelected(list.count);
  for (const index of indexes) if (index < list.count) some.mask[index] = 1;
  const active = indexes[0] ?? -1;
  selection.value = { mask: some.mask, count: indexes.length, active, anchor: active };
}

export function selectNone(): void {
  const { active } = selection.peek();
  selection.value = { ...nothingSelected(view.peek().list.count), active, anchor: active };
}

// Returns the indexes of the selected events, ascending.
export function selectedIndexes(): Uint32Array {
  const { mask, count } = selection.peek();
  const indexes = new Uint32Array(count);
  let at = 0;
  for (let i = 0; i < mask.length && at < count; i++) if (mask[i]) indexes[at++] = i;
  return indexes;
}
