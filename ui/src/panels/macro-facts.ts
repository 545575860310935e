// Facts about a macro: counts, length, the area of its positions, what it leaves held or on, and what optimising drops.
import {
  buttonOfFlags,
  type Columns,
  EventType,
  groupIndexOfType,
  kGroups,
  kWheelNotch,
  type MouseButton,
  Tool,
} from '../event-columns';
import { kSliceEvents, type Sliced } from '../slices';

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
  heldButtons: { button: MouseButton; index: number }[]; // the same of mouse buttons
  partners: Int32Array; // for every press the index of its release and the other way round; -1 none
  toolsOn: number[]; // of Tool: switched on and not off again
  longestTurn: number; // notches of the wheel event that turns farthest
  droppedMoves: number; // by an optimisation
}

// Follows the position of the pointer through the events. Relative moves are added to the last known position, which is
// 0, 0 at first.
export class Pointer {
  x = 0;
  y = 0;

  // Returns whether the event has a position.
  follow({ type, x, y }: Columns, i: number): boolean {
    switch (type[i]) {
      case EventType.AbsoluteMove:
      case EventType.Button:
        this.x = x[i] as number;
        this.y = y[i] as number;
        return true;
      case EventType.RelativeMove:
        this.x += x[i] as number;
        this.y += y[i] as number;
        return true;
      default:
        return false;
    }
  }
}

// Pairs every press with the release that follows it. A key that repeats is pressed by its first event.
class Presses<T> {
  readonly held = new Map<T, number>(); // what is down -> the index of its press

  constructor(private readonly partners: Int32Array) {}

  add(what: T, down: boolean, index: number): void {
    const press = this.held.get(what);
    if (down) {
      if (press === undefined) this.held.set(what, index);
    } else if (press !== undefined) {
      this.held.delete(what);
      this.partners[press] = index;
      this.partners[index] = press;
    }
  }
}

export function* factsOf(columns: Columns): Sliced<Facts> {
  const { count, type, time, flags, virtualKey, down, wheel } = columns;
  const counts = kGroups.map(() => 0);
  const box: Box = { left: Infinity, top: Infinity, right: -Infinity, bottom: -Infinity };
  const pointer = new Pointer();
  const partners = new Int32Array(count).fill(-1);
  const keys = new Presses<number>(partners);
  const buttons = new Presses<MouseButton>(partners);
  const tools = new Set<number>();
  let length = 0;
  let hasRawMoves = false;
  let longestDelta = 0;
  for (let i = 0; i < count; i++) {
    const group = groupIndexOfType(type[i] as number);
    counts[group] = (counts[group] as number) + 1;
    length = Math.max(length, time[i] as number);
    if (type[i] === EventType.RelativeMove) hasRawMoves = true;
    if (pointer.follow(columns, i)) {
      box.left = Math.min(box.left, pointer.x);
      box.right = Math.max(box.right, pointer.x);
      box.top = Math.min(box.top, pointer.y);
      box.bottom = Math.max(box.bottom, pointer.y);
    }
    if (type[i] === EventType.Key) {
      keys.add(virtualKey[i] as number, down[i] === 1, i);
    } else if (type[i] === EventType.Button) {
      const press = buttonOfFlags(flags[i] as number);
      if (press && press.button !== 'side') buttons.add(press.button, press.down, i);
    } else if (type[i] === EventType.Tool) {
      if (down[i]) tools.add(virtualKey[i] as number);
      else tools.delete(virtualKey[i] as number);
    } else if (type[i] === EventType.Wheel) {
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
    heldKeys: [...keys.held].map(([key, index]) => ({ virtualKey: key, index })),
    heldButtons: [...buttons.held].map(([button, index]) => ({ button, index })),
    partners,
    longestTurn: Math.round(longestDelta / kWheelNotch),
    toolsOn: Object.values(Tool).filter((one) => tools.has(one)),
    droppedMoves: yield* countDropped(columns),
  };
}

// Square of the distance in pixels from which on a move is kept.
const kKeptDistanceSquared = 101;

// Counts the events that an optimisation drops: a move between moves that lies within 10 pixels of the last event kept.
// The count equals the program's for every macro, so the arithmetic wraps at 32 bits as there.
export function* countDropped({ count, type, x, y }: Columns): Sliced<number> {
  const isMove = (i: number) => type[i] === EventType.AbsoluteMove;
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
