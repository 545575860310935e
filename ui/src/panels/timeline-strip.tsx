import { useEffect, useRef, useState } from 'preact/hooks';
import { useClientSize } from '../components/client-size';
import { groupedNumber } from '../format';
import { type Drawn, useDrawing } from './canvas';
import { eventText } from './event-text';
import { type MacroData, revealEvents } from './macro-model';
import { drawStrip, paintStrip, type StripDrawing } from './strip-drawing';

const kLaneNames = ['Moves', 'Buttons', 'Wheel', 'Keys', 'Tools'] as const; // in the order of kGroups

interface StripProps {
  data: MacroData | null;
  drawn: Drawn<StripDrawing> | null;
  onDrawn: (drawn: Drawn<StripDrawing> | null) => void;
  cursor: number; // column, -1 none
  playhead: number; // seconds in the macro, -1 none
  onCursor: (column: number) => void;
}

// Lanes of events over time. The pointer and the keyboard move a cursor; a press shows its event in the list.
export function TimelineStrip(props: StripProps) {
  const { data } = props;
  return (
    <div class="strip">
      <div class="strip__names" aria-hidden="true">
        {kLaneNames.map((name) => (
          <span key={name}>{name}</span>
        ))}
      </div>
      <Lanes {...props} />
      <div class="strip__axis" aria-hidden="true">
        <span>{data ? '0 s' : ''}</span>
        <span>{data ? `${groupedNumber(Number(data.facts.length.toFixed(3)))} s` : ''}</span>
      </div>
    </div>
  );
}

function Lanes({ data, drawn, onDrawn, cursor, playhead, onCursor }: StripProps) {
  const lanes = useRef<HTMLDivElement>(null);
  const canvas = useRef<HTMLCanvasElement>(null);
  const { width } = useClientSize(lanes);
  const [kept, setKept] = useState(-1); // the cursor's column after the pointer has left
  const current = data && drawn?.of === data ? drawn : null;
  const columns = current?.drawing.columns ?? 0;
  const clamp = (column: number) => Math.max(0, Math.min(columns - 1, column));

  useEffect(() => setKept(-1), [data, width]);
  useDrawing({
    canvas,
    data,
    width,
    draw: (macro) => drawStrip(macro.columns, macro.facts, width),
    paint: paintStrip,
    onDrawn,
  });

  const columnAt = (event: MouseEvent) => {
    const element = lanes.current;
    if (!element) return -1;
    return clamp(Math.floor(event.clientX - element.getBoundingClientRect().left - element.clientLeft));
  };
  const moveCursor = (column: number) => {
    setKept(column);
    onCursor(column);
  };
  const showInList = (column: number) => {
    const index = current?.drawing.first[column] ?? -1;
    if (index >= 0) revealEvents([index]);
  };
  const onKeyDown = (event: KeyboardEvent) => {
    if (!current) return;
    const from = Math.max(0, cursor);
    const target = keyTarget(event.key, from, columns);
    if (target !== undefined) moveCursor(clamp(target));
    else if (event.key === 'Enter' || event.key === ' ') showInList(from);
    else return;
    event.preventDefault();
  };
  const shownColumn = Math.max(0, cursor);
  return (
    <div
      class="strip__lanes"
      ref={lanes}
      role="slider"
      aria-label="Time in the macro"
      aria-valuemin={0}
      aria-valuemax={data?.facts.length ?? 0}
      aria-valuenow={Number((current ? timeOf(current, shownColumn) : 0).toFixed(3))}
      aria-valuetext={current ? cursorText(current, shownColumn) : 'Nothing recorded'}
      aria-disabled={current ? undefined : true}
      tabIndex={current ? 0 : -1}
      onKeyDown={onKeyDown}
      onMouseMove={(event) => current && onCursor(columnAt(event))}
      onMouseLeave={() => onCursor(kept)}
      onClick={(event) => {
        if (!current) return;
        moveCursor(columnAt(event));
        showInList(columnAt(event));
      }}
    >
      <canvas class="strip__canvas" ref={canvas} aria-hidden="true" />
      {current && playhead >= 0 && (
        <span class="strip__playhead" style={{ transform: `translateX(${columnOf(current, playhead)}px)` }} />
      )}
      {current && cursor >= 0 && <span class="strip__cursor" style={{ left: `${cursor}px` }} />}
    </div>
  );
}

// Returns the column that a key moves the cursor to, or undefined for any other key.
function keyTarget(key: string, from: number, columns: number): number | undefined {
  const targets: Record<string, number> = {
    ArrowRight: from + 1,
    ArrowUp: from + 1,
    ArrowLeft: from - 1,
    ArrowDown: from - 1,
    PageUp: Math.round(from + columns / 10),
    PageDown: Math.round(from - columns / 10),
    Home: 0,
    End: columns - 1,
  };
  return targets[key];
}

const timeOf = ({ of, drawing }: Drawn<StripDrawing>, column: number) =>
  (column * of.facts.length) / Math.max(1, drawing.columns - 1);

// Returns the column of a time, not rounded.
export const columnOf = ({ of, drawing }: Drawn<StripDrawing>, seconds: number) =>
  of.facts.length > 0 ? (seconds / of.facts.length) * (drawing.columns - 1) : 0;

// Returns the time of a column and the first event at or after it.
export function cursorText(drawn: Drawn<StripDrawing>, column: number): string {
  const { of, drawing } = drawn;
  const index = drawing.first[column] ?? -1;
  const time = `${timeOf(drawn, column).toFixed(3)} s`;
  return index >= 0 ? `${time}: event ${groupedNumber(index + 1)}, ${eventText(of.columns, index)}` : time;
}
