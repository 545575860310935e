// What the macro panel shows of the macro: its columns and facts, the rows that the filter shows, and the selection.
// All follow the store's list, in slices if the work is linear in it. After an edit of the page's own they are updated,
// not read again.
import { effect, signal } from '@preact/signals';
import type { MacroEvent } from '../reports';
import { runInSlices, type Sliced } from '../slices';
import { events } from '../store';
import {
  type Columns,
  countBelow,
  editedColumns,
  type Group,
  indexesOfGroups,
  kGroups,
  makeColumns,
  readColumns,
} from './event-columns';
import { type Facts, factsOf } from './macro-facts';

// The list as it is shown.
export interface View {
  list: readonly MacroEvent[];
  rows: Uint32Array | null; // indexes in the list, ascending; null if every event has a row
  moved: (index: number) => number; // from an index in the view before to the same event, or the next one that is left
}

// A macro that has been read.
export interface MacroData {
  list: readonly MacroEvent[];
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

export const view = signal<View>({ list: [], rows: null, moved: unmoved });
export const macroData = signal<MacroData | null>(null);
export const shownGroups = signal<ReadonlySet<Group>>(new Set(kGroups));
export const selection = signal<Selection>(nothingSelected(0));
// Events that the list selects and scrolls to. A new array each time, even for the same events.
export const revealed = signal<readonly number[]>([]);

export function revealEvents(indexes: number[]): void {
  revealed.value = indexes;
}

// The columns of the list `columnsOf`: the store's list, unless that is still being read.
let columns: Columns = makeColumns();
let columnsOf: readonly MacroEvent[] = view.value.list;
let stopReading = () => {};
let stopFacts = () => {};
let stopFilter = () => {};

const allShown = () => shownGroups.peek().size === kGroups.length;

// Returns whether indexes in the view are indexes in the store's list.
export const viewIsCurrent = () => view.value.list === events.value;

// Returns the index of an event in another list of the same macro: the one with the same time and description that is
// nearest to its old index.
function findEvent(list: readonly MacroEvent[], event: MacroEvent | undefined, near: number): number {
  if (!event) return 0;
  const last = list.length - 1;
  const same = (i: number) => list[i]?.time === event.time && list[i]?.description === event.description;
  for (let distance = 0; distance <= last; distance++) {
    if (same(near - distance)) return near - distance;
    if (same(near + distance)) return near + distance;
    if (near - distance < 0 && near + distance > last) break;
  }
  return Math.max(0, Math.min(near, last));
}

function readFacts(list: readonly MacroEvent[]): void {
  stopFacts();
  stopFacts = runInSlices(factsOf(columns), (facts) => (macroData.value = { list, columns, facts }));
}

// Shows the list through the filter, with the given selection.
function showList(list: readonly MacroEvent[], moved: View['moved'], selected: Selection): void {
  stopFilter();
  const update = (rows: Uint32Array | null) => {
    selection.value = selected;
    view.value = { list, rows, moved };
  };
  if (allShown()) {
    update(null);
    return;
  }
  stopFilter = runInSlices(indexesOfGroups(columns, shownGroups.peek()), update);
}

function followList(list: readonly MacroEvent[]): void {
  const before = view.peek().list;
  if (list === before) return;
  stopReading();
  const edit = before === columnsOf ? editedColumns(columns, before, list) : null;
  if (edit) {
    columns = edit.columns;
    columnsOf = list;
    const { removed } = edit;
    const moved = (index: number) => index - countBelow(removed, index);
    showList(list, moved, withoutRemoved(selection.peek(), removed, list.length));
    readFacts(list);
    return;
  }
  stopFacts();
  const moved = (index: number) => findEvent(list, before[index], index);
  if (allShown()) showList(list, moved, nothingSelected(list.length));
  stopReading = runInSlices(readColumns(list), (newColumns) => {
    columns = newColumns;
    columnsOf = list;
    if (view.peek().list !== list) showList(list, moved, nothingSelected(list.length));
    else if (!allShown()) setShownGroups(shownGroups.peek());
    readFacts(list);
  });
}

// Returns the selection in the list without the removed events.
function withoutRemoved(
  { mask, active, anchor }: Selection,
  removed: Uint32Array,
  length: number,
): Selection {
  if (removed.length === 0) return { ...selection.peek() };
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
  if (columnsOf !== list) return; // followList applies the filter when the list has been read
  stopFilter();
  stopFilter = runInSlices(filtered(groups), (rows) => {
    const before = selection.peek();
    const left = nothingSelected(list.length);
    const isVisible = (index: number) => index >= 0 && (!rows || rows[countBelow(rows, index)] === index);
    const count = rows ? rows.length : list.length;
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

function* filtered(groups: ReadonlySet<Group>): Sliced<Uint32Array | null> {
  return groups.size === kGroups.length ? null : yield* indexesOfGroups(columns, groups);
}

// Rows of the view and indexes in its list.
export const rowCount = () => view.value.rows?.length ?? view.value.list.length;
export const indexOfRow = (row: number) => view.value.rows?.[row] ?? row;
// Returns the row of an event, or of the next one that the filter shows.
export function rowOfIndex(index: number): number {
  const { rows, list } = view.value;
  const last = (rows?.length ?? list.length) - 1;
  return Math.min(last, rows ? countBelow(rows, index) : index);
}

// Selection, by rows of the view.
export function selectOnly(row: number): void {
  const index = indexOfRow(row);
  const only = nothingSelected(view.peek().list.length);
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
  const range = nothingSelected(view.peek().list.length);
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
  const all = nothingSelected(view.peek().list.length);
  for (let row = 0; row < rows; row++) all.mask[indexOfRow(row)] = 1;
  const active = Math.max(0, selection.peek().active);
  selection.value = { mask: all.mask, count: rows, active, anchor: active };
}

export function selectIndexes(indexes: readonly number[]): void {
  const { list } = view.peek();
  const some = nothingSelected(list.length);
  for (const index of indexes) if (index < list.length) some.mask[index] = 1;
  const active = indexes[0] ?? -1;
  selection.value = { mask: some.mask, count: indexes.length, active, anchor: active };
}

export function selectNone(): void {
  const { active } = selection.peek();
  selection.value = { ...nothingSelected(view.peek().list.length), active, anchor: active };
}

// Returns the indexes of the selected events, ascending.
export function selectedIndexes(): Uint32Array {
  const { mask, count } = selection.peek();
  const indexes = new Uint32Array(count);
  let at = 0;
  for (let i = 0; i < mask.length && at < count; i++) if (mask[i]) indexes[at++] = i;
  return indexes;
}
