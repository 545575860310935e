import { useRef } from 'preact/hooks';
import { useClientSize } from '../components/client-size';
import { groupedNumber } from '../format';
import { type Drawn, kDots, useDrawing } from './canvas';
import type { Box, Facts } from './macro-facts';
import type { MacroData } from './macro-model';
import { drawPath, paintPath, type PathDrawing } from './path-drawing';

const kMargin = 10; // px around the path

// The path of the pointer. Empty unless the macro has positions.
export function PathCanvas(props: {
  data: MacroData | null;
  onDrawn: (drawn: Drawn<PathDrawing> | null) => void;
}) {
  const { data, onDrawn } = props;
  const canvas = useRef<HTMLCanvasElement>(null);
  const { width, height } = useClientSize(canvas);
  const box = data?.facts.box ?? null;
  useDrawing({
    canvas,
    data: box && data,
    width,
    height,
    draw: ({ columns }) =>
      drawPath(columns, box as Box, {
        width: width * kDots,
        height: height * kDots,
        margin: kMargin * kDots,
      }),
    paint: paintPath,
    onDrawn,
  });
  return (
    <canvas
      class="pointer-path__canvas"
      ref={canvas}
      role={box ? 'img' : undefined}
      aria-label={box && data ? pathText(data.facts) : undefined}
      aria-hidden={box ? undefined : true}
    />
  );
}

function pathText({ counts, box, hasRawMoves, length }: Facts): string {
  const [moves, buttons] = counts;
  const raw = hasRawMoves ? ' Raw moves are added up; the real path depends on the pointer speed.' : '';
  if (!box) return 'Pointer path: no positions.';
  return (
    `Pointer path: ${groupedNumber(moves ?? 0)} moves and ${groupedNumber(buttons ?? 0)} button events in ` +
    `${groupedNumber(Number(length.toFixed(3)))} s, ` +
    `X ${box.left} to ${box.right}, Y ${box.top} to ${box.bottom}.${raw}`
  );
}
