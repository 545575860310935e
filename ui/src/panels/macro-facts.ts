// Facts about a macro: counts, length, the area of its positions, what it leaves held or on, and what optimising drops.
import { EventKind, Tool } from '../event-description';
import { kSliceEvents, type Sliced } from '../slices';
import { type Columns, groupIndexOfKind, kGroups } from './event-columns';

export interface Box {
  left: number;
  top: number;
  right: number;
  bottom: number;
}

export interface Facts {
  counts: number[]; // one for each of kGroups
  length: number; // s, to the latest event
  box: Box | null; // of all positions; null if there are none
  hasRawMoves: boolean; // some positions are sums of relative moves
  heldKeys: { virtualKey: number; index: number }[]; // down at the end, with the event that pressed them
  hasUnpairedButtons: boolean; // the number of button events is odd: the program does not report press or release
  toolsOn: number[]; // of Tool: switched on and not off again
  longestTurn: number; // notches of the wheel event that turns farthest
  droppedMoves: number; // by an optimisation
}

const kNotchDelta = 120;

// Follows the position of the pointer through the events. Relative moves are added to the last known position, which is
// 0, 0 at first.
export class Pointer {
  x = 0;
  y = 0;

  // Returns whether the event has a position.
  follow({ kind, x, y }: Columns, i: number): boolean {
    switch (kind[i]) {
      case EventKind.AbsoluteMove:
      case EventKind.Button:
        this.x = x[i] as number;
        this.y = y[i] as number;
        return true;
      case EventKind.RelativeMove:
        this.x += x[i] as number;
        this.y += y[i] as number;
        return true;
      default:
        return false;
    }
  }
}

export function* factsOf(columns: Columns): Sliced<Facts> {
  const { count, kind, time, virtualKey, on, tool, wheel } = columns;
  const counts = kGroups.map(() => 0);
  const box: Box = { left: Infinity, top: Infinity, right: -Infinity, bottom: -Infinity };
  const pointer = new Pointer();
  const keys = new Map<number, number>();
  const tools = new Set<number>();
  let length = 0;
  let hasRawMoves = false;
  let longestDelta = 0;
  for (let i = 0; i < count; i++) {
    const group = groupIndexOfKind(kind[i] as number);
    counts[group] = (counts[group] as number) + 1;
    length = Math.max(length, time[i] as number);
    if (kind[i] === EventKind.RelativeMove) hasRawMoves = true;
    if (pointer.follow(columns, i)) {
      box.left = Math.min(box.left, pointer.x);
      box.right = Math.max(box.right, pointer.x);
      box.top = Math.min(box.top, pointer.y);
      box.bottom = Math.max(box.bottom, pointer.y);
    } else if (kind[i] === EventKind.Key) {
      const key = virtualKey[i] as number;
      if (!on[i]) keys.delete(key);
      else if (!keys.has(key)) keys.set(key, i);
    } else if (kind[i] === EventKind.Tool) {
      if (on[i]) tools.add(tool[i] as number);
      else tools.delete(tool[i] as number);
    } else if (kind[i] === EventKind.Wheel) {
      longestDelta = Math.max(longestDelta, Math.abs(wheel[i] as number));
    }
    if ((i + 1) % (kSliceEvents * 2) === 0) yield;
  }
  yield;
  return {
    counts,
    length,
    box: box.left <= box.right ? box : null,
    hasRawMoves,
    heldKeys: [...keys].map(([key, index]) => ({ virtualKey: key, index })),
    hasUnpairedButtons: (counts[kGroups.indexOf('buttons')] as number) % 2 === 1,
    longestTurn: Math.round(longestDelta / kNotchDelta),
    toolsOn: Object.values(Tool).filter((one) => tools.has(one)),
    droppedMoves: yield* countDropped(columns),
  };
}

// Square of the distance in pixels from which on a move is kept.
const kKeptDistanceSquared = 101;

// Counts the events that an optimisation drops: a move between moves that lies within 10 pixels of the last event kept.
// The count equals the program's for every macro, so the arithmetic wraps at 32 bits as there.
export function* countDropped({ count, kind, x, y }: Columns): Sliced<number> {
  const isMove = (i: number) => kind[i] === EventKind.AbsoluteMove;
  let dropped = 0;
  let kept = 0; // index of the last event kept
  for (let i = 1; i + 1 < count; i++) {
    const dx = ((x[i] as number) - (x[kept] as number)) | 0;
    const dy = ((y[i] as number) - (y[kept] as number)) | 0;
    const isNear = ((Math.imul(dx, dx) + Math.imul(dy, dy)) | 0) < kKeptDistanceSquared;
    if (isNear && isMove(i) && isMove(i + 1) && isMove(kept)) dropped++;
    else kept = i;
    if (i % (kSliceEvents * 5) === 0) yield;
  }
  return dropped;
}
