// The path of the pointer: computed as a grid of dots, then painted on its canvas. Computing is linear in the events;
// painting depends only on the size of the drawing.
import { type Columns, EventType } from '../event-columns';
import { kSliceEvents, type Sliced } from '../slices';
import { colourOf, kDots } from './canvas';
import { type Box, Pointer } from './macro-facts';

export interface PathSize {
  width: number; // dots
  height: number;
  margin: number; // dots kept free on every side
}

export interface PathDrawing {
  size: PathSize;
  frame: Box; // of the macro's positions, in dots
  // For every dot 0, or 1 to 255: how late in the macro the path was last there.
  cells: Uint8Array;
  clicks: { x: number; y: number }[]; // in dots, one for each cell of kClickGrid
  ends: { x: number; y: number }[]; // first and last position
}

const kClickGrid = 6; // dots: width and height of a cell
const kSliceDots = 400_000; // dots of path in one slice: a long jump costs more than a short one

interface Scale {
  factor: number;
  offsetX: number;
  offsetY: number;
}

// Fits the box into the drawing and keeps its aspect ratio.
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

export function dotOf(drawing: PathDrawing, box: Box, x: number, y: number): { x: number; y: number } {
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
      let atX = x + 0.5; // the integer part of these is the nearest dot
      let atY = y + 0.5;
      for (let step = 0; step <= steps; step++) {
        cells[(atY | 0) * width + (atX | 0)] = late;
        atX += stepX;
        atY += stepY;
      }
      dots += steps;
      [x, y] = [toX, toY];
      if (columns.type[i] === EventType.Button) {
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

type Colour = [number, number, number];

// A canvas returns any colour as #rrggbb.
function channels(pen: CanvasRenderingContext2D, text: string): Colour {
  pen.fillStyle = '#000000';
  pen.fillStyle = text;
  const hex = String(pen.fillStyle);
  return [1, 3, 5].map((at) => parseInt(hex.slice(at, at + 2), 16)) as Colour;
}

export function paintPath(canvas: HTMLCanvasElement, drawing: PathDrawing): void {
  const { width, height } = drawing.size;
  canvas.width = width;
  canvas.height = height;
  const pen = canvas.getContext('2d');
  if (!pen) return;
  const early = channels(pen, colourOf(canvas, 'graph-early'));
  const late = channels(pen, colourOf(canvas, 'graph-late'));
  pen.putImageData(pathImage(drawing, early, late), 0, 0);

  // The outline of the covered area, behind the path.
  const { left, top, right, bottom } = drawing.frame;
  const around = 4 * kDots;
  pen.globalCompositeOperation = 'destination-over';
  pen.strokeStyle = colourOf(canvas, 'line-strong');
  pen.lineWidth = kDots;
  pen.strokeRect(left - around, top - around, right - left + 2 * around, bottom - top + 2 * around);
  pen.globalCompositeOperation = 'source-over';

  pen.fillStyle = colourOf(canvas, 'graph-buttons');
  for (const { x, y } of drawing.clicks) dot(pen, x, y, 2.5 * kDots);
  const [first, last] = drawing.ends;
  pen.strokeStyle = colourOf(canvas, 'text');
  pen.lineWidth = 1.5 * kDots;
  if (first) ring(pen, first.x, first.y, 3.5 * kDots);
  if (last) square(pen, last.x, last.y, 3 * kDots);
}

// Lines are two dots wide: each dot of the path also colours its right and lower neighbours, unless they have a colour.
function pathImage({ size, cells }: PathDrawing, early: Colour, late: Colour): ImageData {
  const { width, height } = size;
  const image = new ImageData(width, height);
  const lateAt = (x: number, y: number) => (x < 0 || y < 0 ? 0 : (cells[y * width + x] as number));
  for (let y = 0; y < height; y++) {
    for (let x = 0; x < width; x++) {
      const value = lateAt(x, y) || lateAt(x - 1, y) || lateAt(x, y - 1) || lateAt(x - 1, y - 1);
      if (value === 0) continue;
      const lateShare = (value - 1) / 254;
      const to = 4 * (y * width + x);
      for (let c = 0; c < 3; c++) {
        image.data[to + c] = (early[c] as number) * (1 - lateShare) + (late[c] as number) * lateShare;
      }
      image.data[to + 3] = 255;
    }
  }
  return image;
}

function dot(pen: CanvasRenderingContext2D, x: number, y: number, radius: number): void {
  pen.beginPath();
  pen.arc(x, y, radius, 0, 2 * Math.PI);
  pen.fill();
}

function ring(pen: CanvasRenderingContext2D, x: number, y: number, radius: number): void {
  pen.beginPath();
  pen.arc(x, y, radius, 0, 2 * Math.PI);
  pen.stroke();
}

function square(pen: CanvasRenderingContext2D, x: number, y: number, half: number): void {
  pen.strokeRect(x - half, y - half, 2 * half, 2 * half);
}
