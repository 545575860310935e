// What the macro panel shows of the macro: its columns and facts, the rows that the filter leaves, and which are
// selected. All follow from the store's list, in slices where they are linear in it; an edit of the page's own is carried
// over instead of read again.
import { effect, signal } from '@preact/signals';
import { inSlices, type Sliced } from '../slices';
import type { MacroEvent } from '../reports';
import { events } from '../store';
import {
  type Columns,
  countBelow,
  derivedColumns,
  emptyColumns,
  type Group,
  kGroups,
  readColumns,
  rowsOfGroups,
} from './macro-data';
import { type Facts, factsOf } from './macro-facts';

// The list as it is shown. Rows are places in it, in order; null: every event has one.
export interface View {
  list: readonly MacroEvent[];
  rows: Uint32Array | null;
  // Where the event at a place of the view before is now, or the next one that is left.
  moved: (index: number) => number;
}

// What the facts and the picture are made from.
export interface Reading {
  list: readonly MacroEvent[];
  columns: Columns;
  facts: Facts;
}

// By places in the view's list. The mask is changed in place; a change is told by a new record around it.
export interface Selection {
  mask: Uint8Array;
  count: number;
  active: number; // where the keyboard is; -1 nowhere
  anchor: number; // where a range begins; -1 nowhere
}

const nothingSelected = (length: number): Selection => ({
  mask: new Uint8Array(length),
  count: 0,
  active: -1,
  anchor: -1,
});
const stay = (index: number) => index;

export const view = signal<View>({ list: [], rows: null, moved: stay });
export const reading = signal<Reading | null>(null);
export const shownGroups = signal<ReadonlySet<Group>>(new Set(kGroups));
export const selection = signal<Selection>(nothingSelected(0));
// Events that the list is to select, the first of them in sight; a new record even for the same events.
export const sought = signal<readonly number[]>([]);

// The columns of `columnsOf`, which is the store's list unless that is still being read.
let columns: Columns = emptyColumns();
let columnsOf: readonly MacroEvent[] = view.value.list;
let stopReading = () => {};
let stopFacts = () => {};
let stopFilter = () => {};

const allShown = () => shownGroups.peek().size === kGroups.length;

// Whether places in the view are places in the program's list.
export const viewIsCurrent = () => view.value.list === events.value;

// The place of an event in another list of the same macro, found by its time and words, as near as possible to where it was.
function findIn(list: readonly MacroEvent[], event: MacroEvent | undefined, near: number): number {
  if (!event) return 0;
  const last = list.length - 1;
  const same = (i: number) => list[i]?.time === event.time && list[i]?.desc === event.desc;
  for (let away = 0; away <= last; away++) {
    if (same(near - away)) return near - away;
    if (same(near + away)) return near + away;
    if (near - away < 0 && near + away > last) break;
  }
  return Math.max(0, Math.min(near, last));
}

function readFacts(list: readonly MacroEvent[]): void {
  stopFacts();
  stopFacts = inSlices(factsOf(columns), (facts) => (reading.value = { list, columns, facts }));
}

// Shows the list through the filter, with the selection as it is to be.
function show(list: readonly MacroEvent[], moved: View['moved'], selected: Selection): void {
  stopFilter();
  const put = (rows: Uint32Array | null) => {
    selection.value = selected;
    view.value = { list, rows, moved };
  };
  if (allShown()) {
    put(null);
    return;
  }
  stopFilter = inSlices(rowsOfGroups(columns, shownGroups.peek()), put);
}

function follow(list: readonly MacroEvent[]): void {
  const before = view.peek().list;
  if (list === before) return;
  stopReading();
  const derived = before === columnsOf ? derivedColumns(columns, before, list) : null;
  if (derived) {
    columns = derived.columns;
    columnsOf = list;
    const { removed } = derived;
    const moved = (index: number) => index - countBelow(removed, index);
    show(list, moved, carried(selection.peek(), removed, list.length));
    readFacts(list);
    return;
  }
  stopFacts();
  const moved = (index: number) => findIn(list, before[index], index);
  if (allShown()) show(list, moved, nothingSelected(list.length));
  stopReading = inSlices(readColumns(list), (read) => {
    columns = read;
    columnsOf = list;
    if (view.peek().list !== list) show(list, moved, nothingSelected(list.length));
    else if (!allShown()) setShownGroups(shownGroups.peek());
    readFacts(list);
  });
}

// The selection without the places that are gone.
function carried({ mask, active, anchor }: Selection, removed: Uint32Array, length: number): Selection {
  if (removed.length === 0) return { ...selection.peek() };
  const left = nothingSelected(length);
  let gone = 0;
  for (let i = 0; i < mask.length; i++) {
    if (gone < removed.length && removed[gone] === i) {
      gone++;
    } else if (mask[i]) {
      left.mask[i - gone] = 1;
      left.count++;
    }
  }
  const at = (index: number) => Math.min(length - 1, index - countBelow(removed, index));
  left.active = active < 0 ? -1 : at(active);
  left.anchor = anchor < 0 ? -1 : at(anchor);
  return left;
}

effect(() => follow(events.value));

// Filter. What is hidden is not selected any more, so that no command touches what nobody sees.
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
  if (columnsOf !== list) return; // it is shown through the filter when it has been read
  stopFilter();
  stopFilter = inSlices(filtered(groups), (rows) => {
    const before = selection.peek();
    const left = nothingSelected(list.length);
    const visible = (index: number) => index >= 0 && (!rows || rows[countBelow(rows, index)] === index);
    const count = rows ? rows.length : list.length;
    for (let row = 0; row < count; row++) {
      const index = rows ? (rows[row] as number) : row;
      if (before.mask[index]) {
        left.mask[index] = 1;
        left.count++;
      }
    }
    if (visible(before.active)) left.active = before.active;
    if (visible(before.anchor)) left.anchor = before.anchor;
    selection.value = left;
    view.value = { list, rows, moved: stay };
  });
}

function* filtered(groups: ReadonlySet<Group>): Sliced<Uint32Array | null> {
  return groups.size === kGroups.length ? null : yield* rowsOfGroups(columns, groups);
}

// Rows and places.
export const rowCount = () => view.value.rows?.length ?? view.value.list.length;
export const indexOfRow = (row: number) => view.value.rows?.[row] ?? row;
// The row of an event, or of the next one that the filter leaves.
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

// From where the last range began to the row, and nothing else.
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

// The places of the selected events, in order.
export function selectedIndexes(): Uint32Array {
  const { mask, count } = selection.peek();
  const indexes = new Uint32Array(count);
  let at = 0;
  for (let i = 0; i < mask.length && at < count; i++) if (mask[i]) indexes[at++] = i;
  return indexes;
}
