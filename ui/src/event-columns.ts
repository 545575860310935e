// A macro as columns of numbers, one entry an event, so that work on a million events handles no records.
import { kSliceEvents, type Sliced } from './slices';

export const EventType = {
  AbsoluteMove: 0,
  RelativeMove: 1,
  Button: 2,
  Key: 3,
  Wheel: 4,
  Tool: 5,
  Other: 6, // an event that this page does not know
} as const;

export const Tool = { Autoclicker: 1, KeySpammer: 2 } as const;

export const kWheelNotch = 120; // delta of one notch

export type MouseButton = 'left' | 'right' | 'middle' | 'side';
const kButtonsOfFlags: Record<number, { button: MouseButton; down: boolean }> = {
  2: { button: 'left', down: true },
  4: { button: 'left', down: false },
  8: { button: 'right', down: true },
  16: { button: 'right', down: false },
  32: { button: 'middle', down: true },
  64: { button: 'middle', down: false },
  128: { button: 'side', down: true }, // the program records no release of a side button
};

// Returns what the flags of a button event say, or undefined for flags that this page does not know.
export const buttonOfFlags = (flags: number) => kButtonsOfFlags[flags];

// Never changed once the store has them. A field that an event does not have is 0.
export interface Columns {
  revision: number; // of the program's macro, -1 before the first answer
  count: number;
  time: Float64Array; // s
  type: Uint8Array; // of EventType
  x: Int32Array; // pixels: position of an absolute move or a button, distance of a relative move
  y: Int32Array;
  flags: Uint8Array; // of a button event
  virtualKey: Int32Array; // of a key; of Tool for a tool
  down: Uint8Array; // 1: key down, tool switched on
  wheel: Int32Array; // delta; negative is down
}

// The kinds that the filter of the list distinguishes. Unknown events are with the tools.
export const kGroups = ['moves', 'buttons', 'wheel', 'keys', 'tools'] as const;
export type Group = (typeof kGroups)[number];

const kGroupOfType: Record<number, Group> = {
  [EventType.AbsoluteMove]: 'moves',
  [EventType.RelativeMove]: 'moves',
  [EventType.Button]: 'buttons',
  [EventType.Key]: 'keys',
  [EventType.Wheel]: 'wheel',
  [EventType.Tool]: 'tools',
  [EventType.Other]: 'tools',
};
const kGroupIndexOfType = Object.values(EventType).map((type) =>
  kGroups.indexOf(kGroupOfType[type] as Group),
);

// Returns the index in kGroups.
export const groupIndexOfType = (type: number): number => kGroupIndexOfType[type] as number;

export const makeColumns = (revision: number, count = 0): Columns => ({
  revision,
  count,
  time: new Float64Array(count),
  type: new Uint8Array(count),
  x: new Int32Array(count),
  y: new Int32Array(count),
  flags: new Uint8Array(count),
  virtualKey: new Int32Array(count),
  down: new Uint8Array(count),
  wheel: new Int32Array(count),
});

const kArrays = ['time', 'type', 'x', 'y', 'flags', 'virtualKey', 'down', 'wheel'] as const;

// Returns the first `kept` events, with space for `count` in all.
export function resized(columns: Columns, kept: number, count: number): Columns {
  const changed = makeColumns(columns.revision, count);
  for (const name of kArrays) changed[name].set(columns[name].subarray(0, kept));
  return changed;
}

// Returns the columns without the removed events, whose indexes are ascending.
export function withoutEvents(columns: Columns, removed: Uint32Array, revision: number): Columns {
  const left = makeColumns(revision, columns.count - removed.length);
  for (const name of kArrays) {
    const [from, to] = [columns[name], left[name]];
    let removedCount = 0;
    for (let i = 0; i < columns.count; i++) {
      if (removed[removedCount] === i) removedCount++;
      else to[i - removedCount] = from[i] as number;
    }
  }
  return left;
}

export function withTimes(
  columns: Columns,
  indexes: Uint32Array,
  timeOf: (index: number) => number,
  revision: number,
): Columns {
  const time = columns.time.slice();
  for (const index of indexes) time[index] = timeOf(index);
  return { ...columns, time, revision };
}

// Returns whether two events are equal.
export const isSameEvent = (a: Columns, i: number, b: Columns, j: number): boolean =>
  kArrays.every((name) => a[name][i] === b[name][j]);

// Returns how many events at the start of both lists are equal.
export function equalPrefix(a: Columns, b: Columns): number {
  let equal = Math.min(a.count, b.count);
  for (const name of kArrays) {
    const [one, other] = [a[name], b[name]];
    let i = 0;
    while (i < equal && one[i] === other[i]) i++;
    equal = i;
  }
  return equal;
}

// Returns the indexes of the events of the given groups, ascending.
export function* indexesOfGroups(columns: Columns, shown: ReadonlySet<Group>): Sliced<Uint32Array> {
  const isWanted = kGroups.map((group) => shown.has(group));
  const indexes = new Uint32Array(columns.count);
  let count = 0;
  for (let i = 0; i < columns.count; i++) {
    if (isWanted[groupIndexOfType(columns.type[i] as number)]) indexes[count++] = i;
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
