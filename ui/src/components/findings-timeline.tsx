import { clockTime } from '../format';
import type { PendingImport } from '../reports';
import { laneOutline, placeMarks } from './findings-layout';
import './findings-timeline.css';

const kLanes = [
  { key: 'moves', name: 'Moves' },
  { key: 'clicks', name: 'Clicks' },
  { key: 'keys', name: 'Keys' },
] as const;

// The number of a finding: a filled box with corners for a danger, a round outline for a caution.
export function FindingNumber({ index, danger }: { index: number; danger: boolean }) {
  return (
    <span class={`finding-number${danger ? ' finding-number--danger' : ' finding-number--caution'}`}>
      {index + 1}
    </span>
  );
}

// The findings along the time of the macro, above lanes of its moves, clicks and keys if the program reports them. The
// list below it has the same findings as text.
export function FindingsTimeline({ macro }: { macro: PendingImport }) {
  const { findings, lanes, seconds } = macro;
  const last = findings.reduce((latest, finding) => Math.max(latest, finding.time), 0);
  const span = seconds ?? last;
  const marks = placeMarks(
    findings.map((finding) => finding.time),
    span,
  );
  const rows = marks.reduce((most, mark) => Math.max(most, mark.row + 1), 1);
  const left = (position: number) => `calc(10px + ${position.toFixed(4)} * (100% - 20px))`;
  return (
    <figure class="findings-timeline">
      <div
        class={`findings-timeline__drawing${lanes ? '' : ' findings-timeline__drawing--bare'}`}
        aria-hidden="true"
      >
        <div class="findings-timeline__numbers" style={{ height: `${rows * 23}px` }}>
          {marks.map(({ index, position, row }) => (
            <span
              key={index}
              class="findings-timeline__number"
              style={{ left: left(position), bottom: `${row * 23}px` }}
            >
              <FindingNumber index={index} danger={findings[index]?.danger ?? false} />
            </span>
          ))}
        </div>
        <div class="findings-timeline__time">
          {lanes ? (
            kLanes.map(({ key, name }) => (
              <div key={key} class={`findings-timeline__lane findings-timeline__lane--${key}`}>
                <span class="findings-timeline__name">{name}</span>
                <svg viewBox="0 0 100 20" preserveAspectRatio="none">
                  <path d={laneOutline(lanes[key])} fill="currentColor" />
                </svg>
              </div>
            ))
          ) : (
            <div class="findings-timeline__line" />
          )}
          <div class="findings-timeline__stems">
            {marks.map(({ index, position }) => (
              <span key={index} class="findings-timeline__stem" style={{ left: left(position) }} />
            ))}
          </div>
        </div>
        <div class="findings-timeline__ends">
          <span>{clockTime(0)}</span>
          {span > 0 && <span>{clockTime(span)}</span>}
        </div>
      </div>
      <figcaption>
        {lanes
          ? 'Activity over time, and the start of each finding.'
          : seconds === undefined
            ? 'The start of each finding. The macro may be longer.'
            : 'The start of each finding.'}
      </figcaption>
    </figure>
  );
}
