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

export function* drawStrip(columns: Columns, facts: Facts, width: number): Sliced<StripDrawing> {
  const marks = kGroups.map(() => new Uint32Array(width));
  const edges = new Int32Array(width + 1); // keys going down less keys that have come up
  const first = new Int32Array(width).fill(-1);
  const x = new Float64Array(width).fill(NaN);
  const y = new Float64Array(width).fill(NaN);
  const downAt = new Map<number, number>(); // virtual key -> column
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
    } else if (columns.kind[i] === Kind.Key) {
      holdKey(columns.a[i] as number, columns.b[i] === 1, at);
    }
    if ((i + 1) % kSliceEvents === 0) yield;
  }
  for (const vk of [...downAt.keys()]) holdKey(vk, false, width - 1);

  function holdKey(vk: number, down: boolean, at: number) {
    const from = downAt.get(vk);
    if (down) {
      if (from === undefined) downAt.set(vk, at);
      return;
    }
    if (from === undefined) return;
    downAt.delete(vk);
    // An event whose time lies before its place in the list is played at once, so nothing is held meanwhile.
    edges[from] = (edges[from] as number) + 1;
    edges[Math.max(from, at) + 1] = (edges[Math.max(from, at) + 1] as number) - 1;
  }

  const held = new Int32Array(width);
  let now = 0;
  for (let at = 0; at < width; at++) {
    now += edges[at] as number;
    held[at] = now;
    if (at > 0 && Number.isNaN(x[at])) {
      x[at] = x[at - 1] as number;
      y[at] = y[at - 1] as number;
    }
  }
  for (let at = width - 2; at >= 0; at--) {
    if (first[at] === -1) first[at] = first[at + 1] as number;
  }
  return { columns: width, marks, held, first, x, y };
}
