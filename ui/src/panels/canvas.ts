// What the drawings of a macro have in common: their resolution, their colours, and when they are drawn.
import { useEffect } from 'preact/hooks';
import { runInSlices, type Sliced } from '../slices';
import type { MacroData } from './macro-model';

export const kDots = 2; // dots of a drawing to a pixel, on every screen: finer lines are smoothed

// A drawing and what it was made from.
export interface Drawn<T> {
  of: MacroData;
  drawing: T;
}

// Returns the value of a custom property of the theme.
export const colourOf = (element: Element, name: string) =>
  getComputedStyle(element).getPropertyValue(`--${name}`).trim();

// Draws the macro on the canvas, once for each macro and size. `onDrawn` gets null when the canvas is empty.
export function useDrawing<T>(options: {
  canvas: { current: HTMLCanvasElement | null };
  data: MacroData | null; // nothing is drawn without
  width: number;
  height?: number; // if the drawing depends on it
  draw: (data: MacroData) => Sliced<T>;
  paint: (canvas: HTMLCanvasElement, drawing: T) => void;
  onDrawn: (drawn: Drawn<T> | null) => void;
}): void {
  const { canvas, data, width, height = 1, draw, paint, onDrawn } = options;
  useEffect(() => {
    const element = canvas.current;
    if (!element || width === 0 || height === 0) return;
    if (!data) {
      element.width = 0;
      onDrawn(null);
      return;
    }
    return runInSlices(draw(data), (drawing, slices) => {
      paint(element, drawing);
      element.dataset.events = String(data.columns.count);
      element.dataset.slices = String(slices);
      onDrawn({ of: data, drawing });
    });
  }, [data, width, height]);
}
