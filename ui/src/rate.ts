// The rate that an interval means, as the engines take it: clicks or keys a second.
import { groupedNumber, timeText } from './format';
import type { Interval } from './reports';

export const kIntervalParts = [
  { key: 'intervalHours', name: 'Hours', unit: 'h', milliseconds: 3600000 },
  { key: 'intervalMinutes', name: 'Minutes', unit: 'min', milliseconds: 60000 },
  { key: 'intervalSeconds', name: 'Seconds', unit: 's', milliseconds: 1000 },
  { key: 'intervalMilliseconds', name: 'Milliseconds', unit: 'ms', milliseconds: 1 },
] as const;

// What is repeated.
export interface Action {
  one: string; // "click", "double click"
  many: string;
  length: number; // ms that it takes by itself
}

// A pause is never shorter than a tick of the timer, and ends up to a tick late.
const kTick = 1; // ms
// The shortest turn for which a late tick makes no visible difference.
const kSlowTurn = 20; // ms

// In milliseconds.
export const intervalLength = (interval: Interval) =>
  kIntervalParts.reduce((sum, part) => sum + interval[part.key] * part.milliseconds, 0);

const rounded = (value: number) => groupedNumber(Number(value.toPrecision(value >= 1000 ? 4 : 3)));

// Milliseconds from one action to the next.
const turnLength = (interval: Interval, action: Action) =>
  Math.max(kTick, intervalLength(interval)) + action.length;

// Sending the input takes time on top of the pause, so a quick rate is an upper limit.
export function rateText(interval: Interval, action: Action): string {
  const turn = turnLength(interval, action);
  if (turn > 1000) return `1 ${action.one} every ${timeText(turn)}`;
  const rate = `${rounded(1000 / turn)} ${turn === 1000 ? action.one : action.many}/s`;
  return turn < kSlowTurn ? `Up to ${rate}` : rate;
}

// Explains what the timer makes of a quick rate. The text is empty if the rate is what the interval says. `limited`:
// the settings ask for more than the timer can do.
export function rateLimit(interval: Interval, action: Action): { text: string; limited: boolean } {
  const pause = intervalLength(interval);
  const turn = turnLength(interval, action);
  if (action.length > 0 && pause < action.length) {
    const rate = `${rounded(1000 / turn)} per second`;
    return { text: `A ${action.one} takes ${action.length} ms: at most ${rate}.`, limited: true };
  }
  if (turn >= kSlowTurn) return { text: '', limited: false };
  const range = `${rounded(1000 / (turn + kTick))} to ${rounded(1000 / turn)} ${action.many} per second`;
  if (pause < kTick) return { text: `The shortest interval is ${kTick} ms: ${range}.`, limited: true };
  return { text: `About ${range}.`, limited: false };
}
