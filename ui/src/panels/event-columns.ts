// A macro as columns of numbers, one entry an event. They are read once from the program's descriptions, so that
// counting, filtering and drawing a million events handle no strings.
import { emptyFields, EventKind, readDescription } from '../event-description';
import type { MacroEvent } from '../reports';
import { kSliceEvents, type Sliced } from '../slices';

// The fields of EventFields that something is computed from.
export interface Columns {
  count: number;
  time: Float64Array; // s
  kind: Uint8Array; // of EventKind
  x: Int32Array;
  y: Int32Array;
  virtualKey: Int32Array;
  on: Uint8Array; // 0, 1
  tool: Uint8Array; // of Tool
  wheel: Int32Array; // delta
}

// The kinds that the filter of the list distinguishes. Unknown events are with the tools.
export const kGroups = ['moves', 'buttons', 'wheel', 'keys', 'tools'] as const;
export type Group = (typeof kGroups)[number];

const kGroupOfKind: Record<number, Group> = {
  [EventKind.AbsoluteMove]: 'moves',
  [EventKind.RelativeMove]: 'moves',
  [EventKind.Button]: 'buttons',
  [EventKind.Key]: 'keys',
  [EventKind.Wheel]: 'wheel',
  [EventKind.Tool]: 'tools',
  [EventKind.Other]: 'tools',
};
const kGroupIndexOfKind = Object.values(EventKind).map((kind) =>
  kGroups.indexOf(kGroupOfKind[kind] as Group),
);

// Returns the index in kGroups.
export const groupIndexOfKind = (kind: number): number => kGroupIndexOfKind[kind] as number;

export const makeColumns = (count = 0): Columns => ({
  count,
  time: new Float64Array(count),
  kind: new Uint8Array(count),
  x: new Int32Array(count),
  y: new Int32Array(count),
  virtualKey: new Int32Array(count),
  on: new Uint8Array(count),
  tool: new Uint8Array(count),
  wheel: new Int32Array(count),
});

const timeOf = (event: MacroEvent) => (Number.isFinite(event.time) ? event.time : 0);

const fields = emptyFields();
function setEvent(columns: Columns, i: number, event: MacroEvent): void {
  readDescription(event.description, fields);
  columns.time[i] = timeOf(event);
  columns.kind[i] = fields.kind;
  columns.x[i] = fields.x;
  columns.y[i] = fields.y;
  columns.virtualKey[i] = fields.virtualKey;
  columns.on[i] = fields.on ? 1 : 0;
  columns.tool[i] = fields.tool;
  columns.wheel[i] = fields.wheel;
}

function copyEvent(from: Columns, i: number, to: Columns, j: number): void {
  to.time[j] = from.time[i] as number;
  to.kind[j] = from.kind[i] as number;
  to.x[j] = from.x[i] as number;
  to.y[j] = from.y[i] as number;
  to.virtualKey[j] = from.virtualKey[i] as number;
  to.on[j] = from.on[i] as number;
  to.tool[j] = from.tool[i] as number;
  to.wheel[j] = from.wheel[i] as number;
}

export function* readColumns(list: readonly MacroEvent[]): Sliced<Columns> {
  const columns = makeColumns(list.length);
  for (let i = 0; i < list.length; i++) {
    setEvent(columns, i, list[i] as MacroEvent);
    if ((i + 1) % kSliceEvents === 0) yield;
  }
  return columns;
}

// An edit of a list: the columns of the new one, and the indexes of the deleted events in the old one, ascending.
export interface Edit {
  columns: Columns;
  removed: Uint32Array;
}

// Returns the columns of a list that the page made from the one before by deleting or retiming events. Such an edit
// keeps the records of the other events. Returns null if the lists are not related in this way.
export function editedColumns(
  old: Columns,
  before: readonly MacroEvent[],
  after: readonly MacroEvent[],
): Edit | null {
  if (old.count !== before.length || after.length > before.length) return null;
  if (after.length === before.length) return retimedColumns(old, before, after);
  const removed = new Uint32Array(before.length - after.length);
  const columns = makeColumns(after.length);
  let removedCount = 0;
  for (let i = 0; i < before.length; i++) {
    const to = i - removedCount;
    if (to < after.length && after[to] === before[i]) {
      copyEvent(old, i, columns, to);
    } else {
      if (removedCount === removed.length) return null;
      removed[removedCount++] = i;
    }
  }
  return { columns, removed };
}

function retimedColumns(
  old: Columns,
  before: readonly MacroEvent[],
  after: readonly MacroEvent[],
): Edit | null {
  const columns = { ...old, time: old.time.slice() };
  for (let i = 0; i < after.length; i++) {
    const event = after[i] as MacroEvent;
    if (event === before[i]) continue;
    if (event.description !== before[i]?.description) return null;
    columns.time[i] = timeOf(event);
  }
  return { columns, removed: new Uint32Array(0) };
}

// Returns the indexes of the events of the given groups, ascending.
export function* indexesOfGroups(columns: Columns, shown: ReadonlySet<Group>): Sliced<Uint32Array> {
  const isWanted = kGroups.map((group) => shown.has(group));
  const indexes = new Uint32Array(columns.count);
  let count = 0;
  for (let i = 0; i < columns.count; i++) {
    if (isWanted[groupIndexOfKind(columns.kind[i] as number)]) indexes[count++] = i;
    if ((i + 1) % (kSliceEvents * 10) === 0) yield;
  }
  return indexes.slice(0, count);
}

// Returns how many of the ascending numbers are below `value`.
export function countBelow(sorted: Uint32Array, value: number): number {
  let low = 0;
  let high = sorted.length;
  while (low < high) {
    const middle = (low + high) >> 1;
    if ((sorted[middle] as number) < value) low = middle + 1;
    else high = middle;
  }
  return low;
}
