// The macro's picture as numbers of dots: the pointer's path in a grid, and what happens when in columns of time. The
// work is linear in the events; what is left to paint depends on the size of the picture alone.
import { kSliceEvents, type Sliced } from '../slices';
import { type Box, type Facts, Pointer } from './macro-facts';
import { type Columns, groupOfKind, Kind, kGroups } from './macro-data';

export interface PathSize {
  width: number; // dots
  height: number;
  margin: number; // dots kept free on every side
}

export interface PathDrawing {
  size: PathSize;
  frame: Box; // of the macro's positions, in dots
  // For every dot 0, or from 1 to 255 how late in the macro the path was there last.
  cells: Uint8Array;
  clicks: { x: number; y: number }[]; // in dots, no two within the same few dots
  ends: { x: number; y: number }[]; // first and last place
}

export interface StripDrawing {
  columns: number;
  marks: Uint32Array[]; // for each of kGroups the number of events in each column
  held: Int32Array; // keys held in each column
  running: Int32Array; // tools that the macro has switched on, in each column
  first: Int32Array; // the first event at or after each column, or -1
  x: Float64Array; // the pointer's place at the end of each column; not a number before it is known
  y: Float64Array;
}

const kClickGrid = 6; // dots
const kSliceDots = 400_000; // of path in one slice: far jumps cost more than near ones

interface Scale {
  factor: number;
  offsetX: number;
  offsetY: number;
}

// Fits the box into the picture, keeping its shape, never larger than it is.
function scaleFor(box: Box, { width, height, margin }: PathSize): Scale {
  const wide = Math.max(1, box.right - box.left);
  const high = Math.max(1, box.bottom - box.top);
  const factor = Math.min((width - 2 * margin) / wide, (height - 2 * margin) / high);
  return {
    factor,
    offsetX: (width - (box.right - box.left) * factor) / 2 - box.left * factor,
    offsetY: (height - (box.bottom - box.top) * factor) / 2 - box.top * factor,
  };
}

export function placeIn(drawing: PathDrawing, box: Box, x: number, y: number): { x: number; y: number } {
  const { factor, offsetX, offsetY } = scaleFor(box, drawing.size);
  return { x: x * factor + offsetX, y: y * factor + offsetY };
}

export function* drawPath(columns: Columns, box: Box, size: PathSize): Sliced<PathDrawing> {
  const { width, height } = size;
  const { factor, offsetX, offsetY } = scaleFor(box, size);
  const cells = new Uint8Array(width * height);
  const clicked = new Set<number>();
  const clicks: PathDrawing['clicks'] = [];
  const ends: PathDrawing['ends'] = [];
  const pointer = new Pointer();
  let x = 0;
  let y = 0;
  let dots = 0; // in this slice
  for (let i = 0; i < columns.count; i++) {
    if (pointer.follow(columns, i)) {
      const late = 1 + Math.floor((254 * i) / columns.count);
      const toX = Math.min(width - 1, Math.max(0, Math.round(pointer.x * factor + offsetX)));
      const toY = Math.min(height - 1, Math.max(0, Math.round(pointer.y * factor + offsetY)));
      if (ends.length === 0) {
        ends.push({ x: toX, y: toY });
        [x, y] = [toX, toY];
      }
      const steps = Math.max(Math.abs(toX - x), Math.abs(toY - y), 1);
      const stepX = (toX - x) / steps;
      const stepY = (toY - y) / steps;
      let atX = x + 0.5; // the whole part of these is the nearest dot
      let atY = y + 0.5;
      for (let step = 0; step <= steps; step++) {
        cells[(atY | 0) * width + (atX | 0)] = late;
        atX += stepX;
        atY += stepY;
      }
      dots += steps;
      [x, y] = [toX, toY];
      if (columns.kind[i] === Kind.Button) {
        const cell = Math.floor(x / kClickGrid) * height + Math.floor(y / kClickGrid);
        if (!clicked.has(cell)) {
          clicked.add(cell);
          clicks.push({ x, y });
        }
      }
    }
    if (dots >= kSliceDots || (i + 1) % kSliceEvents === 0) {
      yield;
      dots = 0;
    }
  }
  ends.push({ x, y });
  const frame = {
    left: box.left * factor + offsetX,
    top: box.top * factor + offsetY,
    right: box.right * factor + offsetX,
    bottom: box.bottom * factor + offsetY,
  };
  return { size, frame, cells, clicks, ends };
}

// How many of a kind are down or on in each column.
class Spans {
  private readonly edges: Int32Array; // those that begin less those that have ended
  private readonly from = new Map<number, number>(); // what is on -> the column in which it began

  constructor(private readonly width: number) {
    this.edges = new Int32Array(width + 1);
  }

  turn(what: number, on: boolean, at: number): void {
    const from = this.from.get(what);
    if (on) {
      if (from === undefined) this.from.set(what, at);
      return;
    }
    if (from === undefined) return;
    this.from.delete(what);
    // An event whose time lies before its place in the list is played at once, so nothing is held meanwhile.
    const end = Math.max(from, at) + 1;
    this.edges[from] = (this.edges[from] as number) + 1;
    this.edges[end] = (this.edges[end] as number) - 1;
  }

  // What has not ended lasts to the last column.
  counts(): Int32Array {
    for (const what of [...this.from.keys()]) this.turn(what, false, this.width - 1);
    let now = 0;
    return this.edges.slice(0, this.width).map((edge) => (now += edge));
  }
}

export function* drawStrip(columns: Columns, facts: Facts, width: number): Sliced<StripDrawing> {
  const marks = kGroups.map(() => new Uint32Array(width));
  const keys = new Spans(width);
  const tools = new Spans(width);
  const first = new Int32Array(width).fill(-1);
  const x = new Float64Array(width).fill(NaN);
  const y = new Float64Array(width).fill(NaN);
  const pointer = new Pointer();
  const perSecond = facts.length > 0 ? width / facts.length : 0;
  for (let i = 0; i < columns.count; i++) {
    const at = Math.min(width - 1, Math.max(0, Math.floor((columns.time[i] as number) * perSecond)));
    const lane = marks[groupOfKind(columns.kind[i] as number)] as Uint32Array;
    lane[at] = (lane[at] as number) + 1;
    if (first[at] === -1) first[at] = i;
    if (pointer.follow(columns, i)) {
      x[at] = pointer.x;
      y[at] = pointer.y;
    } else if (columns.kind[i] === Kind.Key || columns.kind[i] === Kind.Tool) {
      const spans = columns.kind[i] === Kind.Key ? keys : tools;
      spans.turn(columns.a[i] as number, columns.b[i] === 1, at);
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
  return { columns: width, marks, held: keys.counts(), running: tools.counts(), first, x, y };
}
