// The macro as drawings: where the pointer goes, and what happens when.
import { useEffect, useState } from 'preact/hooks';
import { Button } from '../components/button';
import { Group } from '../components/panel';
import { startRecording } from '../commands';
import { groupedNumber } from '../format';
import { eventCount, events, playing, progress, recording } from '../store';
import { tipWithKey } from '../tips';
import { type Drawn, kDots } from './canvas';
import type { Facts } from './macro-facts';
import { macroData } from './macro-model';
import { PathCanvas } from './path-canvas';
import { dotOf, type PathDrawing } from './path-drawing';
import type { StripDrawing } from './strip-drawing';
import { columnOf, cursorText, TimelineStrip } from './timeline-strip';
import './path-and-timing.css';

export function PathAndTiming() {
  const [path, setPath] = useState<Drawn<PathDrawing> | null>(null);
  const [strip, setStrip] = useState<Drawn<StripDrawing> | null>(null);
  const [cursor, setCursor] = useState(-1); // column of the strip, -1 none
  const data = recording.value || events.value.count === 0 ? null : macroData.value;
  const facts = data?.facts;
  useEffect(() => setCursor(-1), [data]);
  // In the pause between two rounds the playhead stays at the end.
  const playhead = facts && playing.value ? Math.min(progress.value.playSeconds, facts.length) : -1;
  const playedColumn =
    strip && strip.of === data && playhead >= 0 ? Math.round(columnOf(strip, playhead)) : -1;
  const marked = cursor < 0 ? playedColumn : cursor;
  return (
    <>
      <Group
        title="Timing"
        class="panel__wide"
        hint={hintFor(data && strip, cursor)}
        hintId="picture-hint"
        silent
      >
        <TimelineStrip
          data={data}
          drawn={strip}
          onDrawn={setStrip}
          cursor={cursor}
          playhead={playhead}
          onCursor={setCursor}
        />
      </Group>
      <Group title="Path" class="path">
        <div class="pointer-path">
          <PathCanvas data={data} onDrawn={setPath} />
          <PointerMark path={path} strip={strip} cursor={marked} />
          {facts?.box ? <p class="pointer-path__caption">{boxText(facts)}</p> : <NoPath facts={facts} />}
        </div>
      </Group>
    </>
  );
}

function hintFor(strip: Drawn<StripDrawing> | null, cursor: number): string {
  if (!strip) return 'Time runs from left to right.';
  return cursor < 0 ? 'Point to see a time. Click to select its event.' : cursorText(strip, cursor);
}

// Marks where the pointer is at the cursor of the strip.
function PointerMark(props: {
  path: Drawn<PathDrawing> | null;
  strip: Drawn<StripDrawing> | null;
  cursor: number;
}) {
  const { path, strip, cursor } = props;
  if (cursor < 0 || !path || !strip || strip.of !== path.of || !path.of.facts.box) return null;
  const x = strip.drawing.x[cursor] as number;
  const y = strip.drawing.y[cursor] as number;
  if (Number.isNaN(x)) return null;
  const dot = dotOf(path.drawing, path.of.facts.box, x, y);
  return (
    <span class="pointer-path__mark" style={{ left: `${dot.x / kDots}px`, top: `${dot.y / kDots}px` }} />
  );
}

function NoPath({ facts }: { facts: Facts | undefined }) {
  if (recording.value) return <p class="pointer-path__none">Shown when the recording ends.</p>;
  if (facts) return <p class="pointer-path__none">No pointer positions in this macro.</p>;
  if (eventCount.value > 0) return <p class="pointer-path__none">Loading events...</p>;
  return (
    <div class="pointer-path__none">
      <p>The path, clicks and keys of a recording appear here.</p>
      <Button
        kind="primary"
        icon="record"
        tip={tipWithKey('Records what you do.', 'record')}
        disabled={playing.value}
        onPress={() => void startRecording()}
      >
        Start a recording
      </Button>
    </div>
  );
}

function boxText({ box, hasRawMoves }: Facts): string {
  if (!box) return '';
  const range = (from: number, to: number) =>
    from === to ? groupedNumber(from) : `${groupedNumber(from)} to ${groupedNumber(to)}`;
  const area = `X ${range(box.left, box.right)}, Y ${range(box.top, box.bottom)}`;
  return hasRawMoves ? `Sum of raw moves: ${area}` : area;
}
