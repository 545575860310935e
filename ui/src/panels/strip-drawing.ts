// The timeline strip: what happens when, computed in columns of time and painted as lanes on its canvas. Computing is
// linear in the events; painting depends only on the size of the drawing.
import {
  buttonOfFlags,
  type Columns,
  EventType,
  type Group,
  groupIndexOfType,
  kGroups,
} from '../event-columns';
import { kSliceEvents, type Sliced } from '../slices';
import { colourOf, kDots } from './canvas';
import { type Facts, Pointer } from './macro-facts';

export interface StripDrawing {
  columns: number;
  marks: Uint32Array[]; // for each of kGroups the number of events in each column
  heldKeys: Int32Array; // keys held in each column
  heldButtons: Int32Array; // mouse buttons held in each column
  toolsOn: Int32Array; // tools that the macro has switched on, in each column
  first: Int32Array; // the first event at or after each column, or -1
  x: Float64Array; // the pointer's position at the end of each column; NaN until it is known
  y: Float64Array;
}

// Counts the keys or buttons that are down, or the tools that are on, in each column.
class Spans<T> {
  private readonly edges: Int32Array; // starts minus ends
  private readonly starts = new Map<T, number>(); // what is on -> the column of its start

  constructor(private readonly width: number) {
    this.edges = new Int32Array(width + 1);
  }

  set(what: T, on: boolean, at: number): void {
    const start = this.starts.get(what);
    if (on) {
      if (start === undefined) this.starts.set(what, at);
      return;
    }
    if (start === undefined) return;
    this.starts.delete(what);
    // An event whose time is earlier than that of the event before is played at once, so nothing is held meanwhile.
    const end = Math.max(start, at) + 1;
    this.edges[start] = (this.edges[start] as number) + 1;
    this.edges[end] = (this.edges[end] as number) - 1;
  }

  // What is still on lasts until the last column.
  counts(): Int32Array {
    for (const what of [...this.starts.keys()]) this.set(what, false, this.width - 1);
    let now = 0;
    return this.edges.slice(0, this.width).map((edge) => (now += edge));
  }
}

export function* drawStrip(columns: Columns, facts: Facts, width: number): Sliced<StripDrawing> {
  const marks = kGroups.map(() => new Uint32Array(width));
  const keys = new Spans<number>(width);
  const buttons = new Spans<string>(width);
  const tools = new Spans<number>(width);
  const first = new Int32Array(width).fill(-1);
  const x = new Float64Array(width).fill(NaN);
  const y = new Float64Array(width).fill(NaN);
  const pointer = new Pointer();
  const perSecond = facts.length > 0 ? width / facts.length : 0;
  for (let i = 0; i < columns.count; i++) {
    const at = Math.min(width - 1, Math.max(0, Math.floor((columns.time[i] as number) * perSecond)));
    const type = columns.type[i] as number;
    const lane = marks[groupIndexOfType(type)] as Uint32Array;
    lane[at] = (lane[at] as number) + 1;
    if (first[at] === -1) first[at] = i;
    if (pointer.follow(columns, i)) {
      x[at] = pointer.x;
      y[at] = pointer.y;
    }
    const down = columns.down[i] === 1;
    if (type === EventType.Key) keys.set(columns.virtualKey[i] as number, down, at);
    else if (type === EventType.Tool) tools.set(columns.virtualKey[i] as number, down, at);
    else if (type === EventType.Button) {
      const press = buttonOfFlags(columns.flags[i] as number);
      if (press && press.button !== 'side') buttons.set(press.button, press.down, at);
    }
    if ((i + 1) % kSliceEvents === 0) yield;
  }
  for (let at = 0; at < width; at++) {
    if (at > 0 && Number.isNaN(x[at])) {
      x[at] = x[at - 1] as number;
      y[at] = y[at - 1] as number;
    }
  }
  for (let at = width - 2; at >= 0; at--) {
    if (first[at] === -1) first[at] = first[at + 1] as number;
  }
  return {
    columns: width,
    marks,
    heldKeys: keys.counts(),
    heldButtons: buttons.counts(),
    toolsOn: tools.counts(),
    first,
    x,
    y,
  };
}

export function paintStrip(canvas: HTMLCanvasElement, drawing: StripDrawing): void {
  const { columns, marks, heldKeys, heldButtons, toolsOn } = drawing;
  const spans: Partial<Record<Group, Int32Array>> = { buttons: heldButtons, keys: heldKeys, tools: toolsOn };
  const height = canvas.clientHeight * kDots;
  canvas.width = columns * kDots;
  canvas.style.width = `${columns}px`;
  canvas.height = height;
  const pen = canvas.getContext('2d');
  if (!pen) return;
  const laneHeight = height / kGroups.length;
  const markHeight = laneHeight - 3 * kDots;
  pen.fillStyle = colourOf(canvas, 'line');
  // Whole pixels of the page: a part of one is smoothed into steps.
  for (let i = 1; i < kGroups.length; i++) {
    pen.fillRect(0, Math.round((i * laneHeight) / kDots) * kDots, columns * kDots, kDots);
  }
  kGroups.forEach((group, i) => {
    const counts = marks[i] as Uint32Array;
    const span = spans[group];
    const bottom = (i + 1) * laneHeight - 1.5 * kDots;
    // The height of a mark shows the number of moves. In the other lanes every mark has the full height.
    const most = group === 'moves' ? Math.log1p(counts.reduce((a, b) => Math.max(a, b), 1)) : 0;
    pen.fillStyle = colourOf(canvas, `graph-${group}`);
    for (let at = 0; at < columns; at++) {
      const count = counts[at] as number;
      if (count > 0) {
        const tall = group === 'moves' ? Math.max(0.25, Math.log1p(count) / most) * markHeight : markHeight;
        pen.fillRect(at * kDots, bottom - tall, kDots, tall);
      } else if (span && (span[at] as number) > 0) {
        pen.fillRect(at * kDots, bottom - markHeight * 0.6, kDots, markHeight * 0.4);
      }
    }
  });
}
