// What can be said of a macro in numbers: counts, length, the place its positions cover, what it leaves held or on.
import { kSliceEvents, type Sliced } from '../slices';
import { type Columns, groupOfKind, Kind, kGroups } from './macro-data';
import { countDropped } from './optimise-rule';

export interface Box {
  left: number;
  top: number;
  right: number;
  bottom: number;
}

export interface Facts {
  counts: number[]; // one for each of kGroups
  length: number; // s, to the latest event
  box: Box | null; // of all positions; null: there are none
  rawMoves: boolean; // some positions are only added up
  heldKeys: { vk: number; index: number }[]; // down at the end, with the event that pressed them
  oddButtons: boolean; // so not every press has its release; the program does not say which event is which
  toolsOn: number[]; // 1 clicker, 2 key presser: switched on and not off again
  dropped: number; // by an optimisation
}

// Where the pointer is after each event, as far as the macro tells: raw moves add up from the last known place, which
// is 0, 0 before there is one.
export class Pointer {
  x = 0;
  y = 0;

  // Whether the event has a place.
  follow({ kind, a, b }: Columns, i: number): boolean {
    switch (kind[i]) {
      case Kind.AbsMove:
      case Kind.Button:
        this.x = a[i] as number;
        this.y = b[i] as number;
        return true;
      case Kind.RelMove:
        this.x += a[i] as number;
        this.y += b[i] as number;
        return true;
      default:
        return false;
    }
  }
}

export function* factsOf(columns: Columns): Sliced<Facts> {
  const { count, kind, time, a, b } = columns;
  const counts = kGroups.map(() => 0);
  const box: Box = { left: Infinity, top: Infinity, right: -Infinity, bottom: -Infinity };
  const pointer = new Pointer();
  const keys = new Map<number, number>();
  const tools = new Set<number>();
  let length = 0;
  let rawMoves = false;
  for (let i = 0; i < count; i++) {
    const group = groupOfKind(kind[i] as number);
    counts[group] = (counts[group] as number) + 1;
    length = Math.max(length, time[i] as number);
    if (kind[i] === Kind.RelMove) rawMoves = true;
    if (pointer.follow(columns, i)) {
      box.left = Math.min(box.left, pointer.x);
      box.right = Math.max(box.right, pointer.x);
      box.top = Math.min(box.top, pointer.y);
      box.bottom = Math.max(box.bottom, pointer.y);
    } else if (kind[i] === Kind.Key) {
      const vk = a[i] as number;
      if (!b[i]) keys.delete(vk);
      else if (!keys.has(vk)) keys.set(vk, i);
    } else if (kind[i] === Kind.Tool) {
      if (b[i]) tools.add(a[i] as number);
      else tools.delete(a[i] as number);
    }
    if ((i + 1) % (kSliceEvents * 2) === 0) yield;
  }
  yield;
  return {
    counts,
    length,
    box: box.left <= box.right ? box : null,
    rawMoves,
    heldKeys: [...keys].map(([vk, index]) => ({ vk, index })),
    oddButtons: (counts[kGroups.indexOf('buttons')] as number) % 2 === 1,
    toolsOn: [...tools].sort(),
    dropped: yield* countDropped(columns),
  };
}
