// A macro as numbers: one column a property, one place an event. Read once from the program's descriptions, so that
// counting, filtering and drawing a million events touch no texts.
import type { MacroEvent } from '../reports';
import { kSliceEvents, type Sliced } from '../slices';

export const Kind = { AbsMove: 0, RelMove: 1, Button: 2, Key: 3, Wheel: 4, Tool: 5, Other: 6 } as const;

export interface Columns {
  count: number;
  kind: Uint8Array; // of Kind
  time: Float64Array; // s
  a: Int32Array; // x, dx, virtual key, wheel delta, or the tool: 1 clicker, 2 key presser
  b: Int32Array; // y, dy; 1 for down and on
}

// What the filter of the list tells apart. Events that the page does not know are with the tools.
export const kGroups = ['moves', 'buttons', 'wheel', 'keys', 'tools'] as const;
export type Group = (typeof kGroups)[number];
const kGroupOfKind = [0, 0, 1, 3, 2, 4, 4];
export const groupOfKind = (kind: number): number => kGroupOfKind[kind] ?? 4;

export const emptyColumns = (count = 0): Columns => ({
  count,
  kind: new Uint8Array(count),
  time: new Float64Array(count),
  a: new Int32Array(count),
  b: new Int32Array(count),
});

// The whole number at `at`, and where it ends; no number: `end` is `at`.
const number = { value: 0, end: 0 };
function readInteger(text: string, at: number): void {
  const negative = text.charCodeAt(at) === 45;
  let place = negative ? at + 1 : at;
  const first = place;
  let value = 0;
  for (; place < text.length; place++) {
    const digit = text.charCodeAt(place) - 48;
    if (digit < 0 || digit > 9) break;
    value = value * 10 + digit;
  }
  number.value = negative ? -value : value;
  number.end = place === first ? at : place;
}

function readPair(text: string, prefix: string, middle: string, columns: Columns, at: number): boolean {
  if (!text.startsWith(prefix)) return false;
  readInteger(text, prefix.length);
  const a = number.value;
  if (number.end === prefix.length || !text.startsWith(middle, number.end)) return false;
  const second = number.end + middle.length;
  readInteger(text, second);
  if (number.end === second || number.end !== text.length) return false;
  columns.a[at] = a;
  columns.b[at] = number.value;
  return true;
}

function readKey(text: string, columns: Columns, at: number): boolean {
  const start = 13; // of the number in "Keyboard VK: "
  if (!text.startsWith('Keyboard VK: ')) return false;
  readInteger(text, start);
  const down = text.endsWith(' (DOWN)');
  const length = down ? 7 : 5;
  if (number.end === start || number.end + length !== text.length || !(down || text.endsWith(' (UP)')))
    return false;
  columns.a[at] = number.value;
  columns.b[at] = down ? 1 : 0;
  return true;
}

function readWheel(text: string, columns: Columns, at: number): boolean {
  const start = 20; // of the number in "Mouse Scroll Delta: "
  if (!text.startsWith('Mouse Scroll Delta: ')) return false;
  readInteger(text, start);
  if (number.end === start || number.end !== text.length) return false;
  columns.a[at] = number.value;
  return true;
}

const kTools: Record<string, readonly [number, number]> = {
  'Autoclicker ON': [1, 1],
  'Autoclicker OFF': [1, 0],
  'Key Spammer ON': [2, 1],
  'Key Spammer OFF': [2, 0],
};

function kindOf(text: string, columns: Columns, at: number): number {
  if (readPair(text, 'Abs Move to X:', ' Y:', columns, at)) return Kind.AbsMove;
  if (readPair(text, 'Mouse Click at X:', ' Y:', columns, at)) return Kind.Button;
  if (readPair(text, 'Rel Move dX:', ' dY:', columns, at)) return Kind.RelMove;
  if (readKey(text, columns, at)) return Kind.Key;
  if (readWheel(text, columns, at)) return Kind.Wheel;
  const tool = kTools[text];
  if (!tool) return Kind.Other;
  [columns.a[at], columns.b[at]] = tool;
  return Kind.Tool;
}

function readEvent(event: MacroEvent, columns: Columns, at: number): void {
  columns.time[at] = Number.isFinite(event.time) ? event.time : 0;
  columns.kind[at] = kindOf(event.desc, columns, at);
}

export function* readColumns(list: readonly MacroEvent[]): Sliced<Columns> {
  const columns = emptyColumns(list.length);
  for (let i = 0; i < list.length; i++) {
    readEvent(list[i] as MacroEvent, columns, i);
    if ((i + 1) % kSliceEvents === 0) yield;
  }
  return columns;
}

// What became of a list: the columns of the new one, and the places in the old one that are gone, in order.
export interface Derived {
  columns: Columns;
  removed: Uint32Array;
}

// The columns of a list that the page made from the one before by deleting or retiming, which keeps the event records.
// Null where the lists have nothing to do with each other.
export function derivedColumns(
  old: Columns,
  before: readonly MacroEvent[],
  after: readonly MacroEvent[],
): Derived | null {
  if (old.count !== before.length || after.length > before.length) return null;
  if (after.length === before.length) return retimedColumns(old, before, after);
  const removed = new Uint32Array(before.length - after.length);
  const columns = emptyColumns(after.length);
  let gone = 0;
  for (let i = 0; i < before.length; i++) {
    const to = i - gone;
    if (to < after.length && after[to] === before[i]) {
      columns.kind[to] = old.kind[i] as number;
      columns.time[to] = old.time[i] as number;
      columns.a[to] = old.a[i] as number;
      columns.b[to] = old.b[i] as number;
    } else {
      if (gone === removed.length) return null;
      removed[gone++] = i;
    }
  }
  return { columns, removed };
}

function retimedColumns(
  old: Columns,
  before: readonly MacroEvent[],
  after: readonly MacroEvent[],
): Derived | null {
  const columns = { ...old, time: old.time.slice() };
  for (let i = 0; i < after.length; i++) {
    const event = after[i] as MacroEvent;
    if (event === before[i]) continue;
    if (event.desc !== before[i]?.desc) return null;
    columns.time[i] = Number.isFinite(event.time) ? event.time : 0;
  }
  return { columns, removed: new Uint32Array(0) };
}

// The places of the events of the chosen groups, in order.
export function* rowsOfGroups(columns: Columns, shown: ReadonlySet<Group>): Sliced<Uint32Array> {
  const wanted = kGroups.map((group) => shown.has(group));
  const rows = new Uint32Array(columns.count);
  let count = 0;
  for (let i = 0; i < columns.count; i++) {
    if (wanted[groupOfKind(columns.kind[i] as number)]) rows[count++] = i;
    if ((i + 1) % (kSliceEvents * 10) === 0) yield;
  }
  return rows.slice(0, count);
}

// How many of the ascending numbers are below `value`.
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
