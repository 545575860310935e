// Puts the drawings of a macro on their canvases, in the page's colours.
import { kGroups } from './macro-data';
import type { PathDrawing, StripDrawing } from './macro-raster';

export const kDots = 2; // dots of a drawing to a pixel, on every screen: what is too fine is smoothed

type Colour = [number, number, number];

const colourText = (element: Element, name: string) =>
  getComputedStyle(element).getPropertyValue(`--${name}`).trim();

// A canvas tells any colour as #rrggbb.
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
  const early = channels(pen, colourText(canvas, 'graph-early'));
  const late = channels(pen, colourText(canvas, 'graph-late'));
  pen.putImageData(pathDots(drawing, early, late), 0, 0);

  // The outline of what the positions cover, behind the path.
  const { left, top, right, bottom } = drawing.frame;
  const around = 4 * kDots;
  pen.globalCompositeOperation = 'destination-over';
  pen.strokeStyle = colourText(canvas, 'line-strong');
  pen.lineWidth = kDots;
  pen.strokeRect(left - around, top - around, right - left + 2 * around, bottom - top + 2 * around);
  pen.globalCompositeOperation = 'source-over';

  pen.fillStyle = colourText(canvas, 'graph-buttons');
  for (const { x, y } of drawing.clicks) dot(pen, x, y, 2.5 * kDots);
  const [first, last] = drawing.ends;
  pen.strokeStyle = colourText(canvas, 'text');
  pen.lineWidth = 1.5 * kDots;
  if (first) ring(pen, first.x, first.y, 3.5 * kDots);
  if (last) square(pen, last.x, last.y, 3 * kDots);
}

// A line is two dots wide: each dot of the path also colours its right and lower neighbours, where they are free.
function pathDots({ size, cells }: PathDrawing, early: Colour, late: Colour): ImageData {
  const { width, height } = size;
  const image = new ImageData(width, height);
  const lateness = (x: number, y: number) => (x < 0 || y < 0 ? 0 : (cells[y * width + x] as number));
  for (let y = 0; y < height; y++) {
    for (let x = 0; x < width; x++) {
      const value = lateness(x, y) || lateness(x - 1, y) || lateness(x, y - 1) || lateness(x - 1, y - 1);
      if (value === 0) continue;
      const part = (value - 1) / 254;
      const to = 4 * (y * width + x);
      for (let c = 0; c < 3; c++) {
        image.data[to + c] = (early[c] as number) * (1 - part) + (late[c] as number) * part;
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

export function paintStrip(canvas: HTMLCanvasElement, drawing: StripDrawing, lanes: number): void {
  const { columns, marks, held, running } = drawing;
  const spans = { keys: held, tools: running } as Partial<Record<(typeof kGroups)[number], Int32Array>>;
  const height = canvas.clientHeight * kDots;
  canvas.width = columns * kDots;
  canvas.height = height;
  const pen = canvas.getContext('2d');
  if (!pen) return;
  const lane = height / lanes;
  const room = lane - 3 * kDots;
  pen.fillStyle = colourText(canvas, 'line');
  for (let i = 1; i < lanes; i++) pen.fillRect(0, Math.round(i * lane), columns * kDots, 1);
  kGroups.forEach((group, i) => {
    const counts = marks[i] as Uint32Array;
    const span = spans[group];
    const bottom = (i + 1) * lane - 1.5 * kDots;
    // Columns of moves tell how many there are; of the others each is worth seeing.
    const most = group === 'moves' ? Math.log1p(counts.reduce((a, b) => Math.max(a, b), 1)) : 0;
    pen.fillStyle = colourText(canvas, `graph-${group}`);
    for (let at = 0; at < columns; at++) {
      const count = counts[at] as number;
      if (count > 0) {
        const tall = group === 'moves' ? Math.max(0.25, Math.log1p(count) / most) * room : room;
        pen.fillRect(at * kDots, bottom - tall, kDots, tall);
      } else if (span && (span[at] as number) > 0) {
        pen.fillRect(at * kDots, bottom - room * 0.6, kDots, room * 0.4);
      }
    }
  });
}
