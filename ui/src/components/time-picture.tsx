import type { HeldMacro } from '../pending';
import { clockTime, laneOutline, placeMarks } from './time-marks';
import './time-picture.css';

const kLanes = [
  { key: 'moves', name: 'Moves' },
  { key: 'clicks', name: 'Clicks' },
  { key: 'keys', name: 'Keys' },
] as const;

// The number of a finding in its sign: filled with corners for a danger, an outline for a caution.
export function FindingSign({ index, danger }: { index: number; danger: boolean }) {
  return <span class={`sign${danger ? ' sign--danger' : ' sign--caution'}`}>{index + 1}</span>;
}

// The findings above the macro's time, and what it does in it as far as that is known. The list beside it says the same
// in words.
export function TimePicture({ macro }: { macro: HeldMacro }) {
  const { findings, lanes, seconds } = macro;
  const last = findings.reduce((latest, finding) => Math.max(latest, finding.at), 0);
  const span = seconds ?? last;
  const marks = placeMarks(
    findings.map((finding) => finding.at),
    span,
  );
  const rows = marks.reduce((most, mark) => Math.max(most, mark.row + 1), 1);
  const left = (place: number) => `calc(10px + ${place.toFixed(4)} * (100% - 20px))`;
  return (
    <figure class="time-picture">
      <div class={`time-picture__drawing${lanes ? '' : ' time-picture__drawing--bare'}`} aria-hidden="true">
        <div class="time-picture__signs" style={{ height: `${rows * 23}px` }}>
          {marks.map(({ index, place, row }) => (
            <span
              key={index}
              class="time-picture__sign"
              style={{ left: left(place), bottom: `${row * 23}px` }}
            >
              <FindingSign index={index} danger={findings[index]?.danger ?? false} />
            </span>
          ))}
        </div>
        <div class="time-picture__time">
          {lanes ? (
            kLanes.map(({ key, name }) => (
              <div key={key} class={`time-picture__lane time-picture__lane--${key}`}>
                <span class="time-picture__name">{name}</span>
                <svg viewBox="0 0 100 20" preserveAspectRatio="none">
                  <path d={laneOutline(lanes[key])} fill="currentColor" />
                </svg>
              </div>
            ))
          ) : (
            <div class="time-picture__line" />
          )}
          <div class="time-picture__stems">
            {marks.map(({ index, place }) => (
              <span key={index} class="time-picture__stem" style={{ left: left(place) }} />
            ))}
          </div>
        </div>
        <div class="time-picture__ends">
          <span>{clockTime(0)}</span>
          {span > 0 && <span>{clockTime(span)}</span>}
        </div>
      </div>
      <figcaption>
        {lanes
          ? 'What it does over time, and where each finding begins.'
          : seconds === undefined
            ? 'Where each finding begins. The macro may go on after the last.'
            : 'Where each finding begins.'}
      </figcaption>
    </figure>
  );
}
