// The macro as a picture: where the pointer goes, and what happens when. Drawn once for a macro and a size.
import { useEffect, useLayoutEffect, useRef, useState } from 'preact/hooks';
import { startRecording } from '../commands';
import { Button } from '../components/button';
import { groupedNumber } from '../components/numbers';
import { Group } from '../components/panel';
import { inSlices } from '../slices';
import { eventCount, events, playing, recording } from '../store';
import { eventText } from './event-text';
import type { Facts } from './macro-facts';
import { reading, type Reading, sought } from './macro-model';
import { kDots, paintPath, paintStrip } from './macro-paint';
import { drawPath, drawStrip, type PathDrawing, placeIn, type StripDrawing } from './macro-raster';
import './macro-picture.css';

const kMargin = 10; // px around the path
const kLanes = ['Moves', 'Buttons', 'Wheel', 'Keys', 'Tools'] as const; // as kGroups

const seconds = (time: number) => groupedNumber(Number(time.toFixed(3)));

// What a drawing was made of.
interface Drawn<T> {
  of: Reading;
  drawing: T;
}

export function MacroPicture() {
  const [path, setPath] = useState<Drawn<PathDrawing> | null>(null);
  const [strip, setStrip] = useState<Drawn<StripDrawing> | null>(null);
  const [at, setAt] = useState(-1); // column of the strip that is looked at, -1 none
  const shown = recording.value || events.value.length === 0 ? null : reading.value;
  const facts = shown?.facts;
  const place = at >= 0 && strip && path && strip.of === path.of ? placeAt(path, strip, at) : null;
  useEffect(() => setAt(-1), [shown]);
  return (
    <Group
      title="Path and timing"
      hint={shown && strip ? readout(strip, at) : 'Time runs from left to right.'}
      hintId="picture-hint"
      silent
    >
      <div class="picture">
        <PathCanvas shown={shown} onDrawn={setPath} />
        {place && <span class="picture__place" style={{ left: `${place.x}px`, top: `${place.y}px` }} />}
        {facts?.box ? <p class="picture__caption">{boxText(facts)}</p> : <NoPath facts={facts} />}
      </div>
      <Strip shown={shown} drawn={strip} onDrawn={setStrip} at={at} onAt={setAt} />
    </Group>
  );
}

// Where the pointer is at a column of the strip, in pixels of the picture.
function placeAt({ of, drawing }: Drawn<PathDrawing>, strip: Drawn<StripDrawing>, at: number) {
  const x = strip.drawing.x[at] as number;
  const y = strip.drawing.y[at] as number;
  if (!of.facts.box || Number.isNaN(x)) return null;
  const dots = placeIn(drawing, of.facts.box, x, y);
  return { x: dots.x / kDots, y: dots.y / kDots };
}

function NoPath({ facts }: { facts: Facts | undefined }) {
  if (recording.value) return <p class="picture__none">Drawn when the recording ends.</p>;
  if (facts) return <p class="picture__none">No pointer positions in this macro.</p>;
  if (eventCount.value > 0) return <p class="picture__none">Reading the events</p>;
  return (
    <div class="picture__none">
      <p>What you record is drawn here: the pointer&rsquo;s path, clicks and keys.</p>
      <Button kind="primary" icon="record" disabled={playing.value} onPress={() => void startRecording()}>
        Start a recording
      </Button>
    </div>
  );
}

function boxText({ box, rawMoves }: Facts): string {
  if (!box) return '';
  const range = (from: number, to: number) =>
    from === to ? groupedNumber(from) : `${groupedNumber(from)} to ${groupedNumber(to)}`;
  const place = `X ${range(box.left, box.right)}, Y ${range(box.top, box.bottom)}`;
  return rawMoves ? `Raw moves added up: ${place}` : place;
}

function pathText({ counts, box, rawMoves, length }: Facts): string {
  const [moves, buttons] = counts;
  const raw = rawMoves ? ' Raw moves are added up; the real path depends on the pointer speed.' : '';
  if (!box) return 'Pointer path: no positions.';
  return (
    `Pointer path: ${groupedNumber(moves ?? 0)} moves and ${groupedNumber(buttons ?? 0)} button events in ` +
    `${seconds(length)} s, X ${box.left} to ${box.right}, Y ${box.top} to ${box.bottom}.${raw}`
  );
}

// The pixels of an element, kept up to date.
function useWidth(element: { current: HTMLElement | null }): number {
  const [width, setWidth] = useState(0);
  useLayoutEffect(() => {
    if (!element.current) return;
    const measured = element.current;
    const measure = () => setWidth(measured.clientWidth);
    measure();
    const observer = new ResizeObserver(measure);
    observer.observe(measured);
    return () => observer.disconnect();
  }, []);
  return width;
}

function PathCanvas(props: { shown: Reading | null; onDrawn: (drawn: Drawn<PathDrawing> | null) => void }) {
  const { shown, onDrawn } = props;
  const canvas = useRef<HTMLCanvasElement>(null);
  const width = useWidth(canvas);
  const box = shown?.facts.box;
  useEffect(() => {
    const element = canvas.current;
    if (!element || width === 0) return;
    if (!shown || !box) {
      element.width = 0;
      onDrawn(null);
      return;
    }
    const size = { width: width * kDots, height: element.clientHeight * kDots, margin: kMargin * kDots };
    return inSlices(drawPath(shown.columns, box, size), (drawing, slices) => {
      paintPath(element, drawing);
      element.dataset.events = String(shown.columns.count);
      element.dataset.slices = String(slices);
      onDrawn({ of: shown, drawing });
    });
  }, [shown, width]);
  return (
    <canvas
      class="picture__canvas"
      ref={canvas}
      role={box ? 'img' : undefined}
      aria-label={box && shown ? pathText(shown.facts) : undefined}
      aria-hidden={box ? undefined : true}
    />
  );
}

// Lanes over time. The keyboard and the pointer look along it; a press shows the place in the list.
function Strip(props: {
  shown: Reading | null;
  drawn: Drawn<StripDrawing> | null;
  onDrawn: (drawn: Drawn<StripDrawing> | null) => void;
  at: number;
  onAt: (at: number) => void;
}) {
  const { shown, drawn, onDrawn, at, onAt } = props;
  const lanes = useRef<HTMLDivElement>(null);
  const canvas = useRef<HTMLCanvasElement>(null);
  const width = useWidth(lanes);
  const live = shown && drawn?.of === shown ? drawn : null;
  const columns = live?.drawing.columns ?? 0;
  const [kept, setKept] = useState(-1); // where the keyboard or a press left it, when the pointer is gone

  useEffect(() => {
    const element = canvas.current;
    if (!element || width === 0) return;
    setKept(-1);
    if (!shown) {
      element.width = 0;
      onDrawn(null);
      return;
    }
    return inSlices(drawStrip(shown.columns, shown.facts, width), (drawing, slices) => {
      paintStrip(element, drawing, kLanes.length);
      element.dataset.events = String(shown.columns.count);
      element.dataset.slices = String(slices);
      onDrawn({ of: shown, drawing });
    });
  }, [shown, width]);

  const columnOf = (event: MouseEvent) => {
    const element = lanes.current;
    if (!element) return -1;
    const x = event.clientX - element.getBoundingClientRect().left - element.clientLeft;
    return Math.max(0, Math.min(columns - 1, Math.floor(x)));
  };
  const keep = (column: number) => {
    setKept(column);
    onAt(column);
  };
  const showInList = (column: number) => {
    const index = live?.drawing.first[column] ?? -1;
    if (index >= 0) sought.value = [index];
  };
  const onKeyDown = (event: KeyboardEvent) => {
    if (!live) return;
    const from = Math.max(0, at);
    const moves: Record<string, number> = {
      ArrowRight: from + 1,
      ArrowUp: from + 1,
      ArrowLeft: from - 1,
      ArrowDown: from - 1,
      PageUp: from + columns / 10,
      PageDown: from - columns / 10,
      Home: 0,
      End: columns - 1,
    };
    const target = moves[event.key];
    if (target !== undefined) keep(Math.max(0, Math.min(columns - 1, Math.round(target))));
    else if (event.key === 'Enter' || event.key === ' ') showInList(from);
    else return;
    event.preventDefault();
  };
  const time = live ? timeAt(live, Math.max(0, at)) : 0;
  return (
    <div class="strip">
      <div class="strip__names" aria-hidden="true">
        {kLanes.map((lane) => (
          <span key={lane}>{lane}</span>
        ))}
      </div>
      <div
        class="strip__lanes"
        ref={lanes}
        role="slider"
        aria-label="Time in the macro"
        aria-valuemin={0}
        aria-valuemax={shown?.facts.length ?? 0}
        aria-valuenow={Number(time.toFixed(3))}
        aria-valuetext={live ? readout(live, Math.max(0, at)) : 'Nothing recorded'}
        aria-disabled={live ? undefined : true}
        tabIndex={live ? 0 : -1}
        onKeyDown={onKeyDown}
        onMouseMove={(event) => live && onAt(columnOf(event))}
        onMouseLeave={() => onAt(kept)}
        onClick={(event) => {
          if (!live) return;
          keep(columnOf(event));
          showInList(columnOf(event));
        }}
      >
        <canvas class="strip__canvas" ref={canvas} aria-hidden="true" />
        {live && at >= 0 && <span class="strip__cursor" style={{ left: `${at}px` }} />}
      </div>
      <div class="strip__axis" aria-hidden="true">
        <span>{shown ? '0 s' : ''}</span>
        <span>{shown ? `${seconds(shown.facts.length)} s` : ''}</span>
      </div>
    </div>
  );
}

const timeAt = ({ of, drawing }: Drawn<StripDrawing>, at: number) =>
  (at * of.facts.length) / Math.max(1, drawing.columns - 1);

function readout(drawn: Drawn<StripDrawing>, at: number): string {
  if (at < 0) return 'Point for a time, click to find it in the list.';
  const { of, drawing } = drawn;
  const index = drawing.first[at] ?? -1;
  const event = of.list[index];
  const time = `${timeAt(drawn, at).toFixed(3)} s`;
  return event ? `${time}: event ${groupedNumber(index + 1)}, ${eventText(event.desc)}` : time;
}
