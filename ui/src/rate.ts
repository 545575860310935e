// What an interval means in clicks or keys a second, as the engines take it.
import { groupedNumber } from './components/numbers';

export interface Interval {
  hours: number;
  minutes: number;
  seconds: number;
  milliseconds: number;
}

export const kParts = [
  { key: 'hours', name: 'Hours', unit: 'h', length: 3600000 },
  { key: 'minutes', name: 'Minutes', unit: 'min', length: 60000 },
  { key: 'seconds', name: 'Seconds', unit: 's', length: 1000 },
  { key: 'milliseconds', name: 'Milliseconds', unit: 'ms', length: 1 },
] as const;

// What is repeated: "click", "double click", and the milliseconds that it takes by itself.
export interface Action {
  one: string;
  many: string;
  length: number;
}

// A pause is never shorter, and ends with a tick of the timer: up to as much later than it should.
const kTick = 1; // ms
// From here on a tick makes no difference that anyone would see.
const kSlow = 20; // ms

export const milliseconds = (interval: Interval) =>
  kParts.reduce((sum, part) => sum + interval[part.key] * part.length, 0);

const asRead = (value: number) => groupedNumber(Number(value.toPrecision(value >= 1000 ? 4 : 3)));
const turns = (interval: Interval, action: Action) => Math.max(kTick, milliseconds(interval)) + action.length;

// A time in words: "2 min 5 s".
export function timeText(time: number): string {
  const hours = Math.floor(time / 3600000);
  const minutes = Math.floor((time % 3600000) / 60000);
  const seconds = (time % 60000) / 1000;
  const parts = [
    hours > 0 && `${groupedNumber(hours)} h`,
    minutes > 0 && `${minutes} min`,
    (seconds > 0 || time < 60000) && `${groupedNumber(Number(seconds.toFixed(3)))} s`,
  ];
  return parts.filter(Boolean).join(' ');
}

// Sending the input comes on top of the pause, so a quick rate is the most that can be reached.
export function rateText(interval: Interval, action: Action): string {
  const turn = turns(interval, action);
  if (turn > 1000) return `1 ${action.one} every ${timeText(turn)}`;
  const rate = `${asRead(1000 / turn)} ${turn === 1000 ? action.one : action.many}/s`;
  return turn < kSlow ? `Up to ${rate}` : rate;
}

// What the timer makes of a quick rate; empty where the rate is what the interval says. `limited`: the settings ask for
// more than there is.
export function rateLimit(interval: Interval, action: Action): { text: string; limited: boolean } {
  const pause = milliseconds(interval);
  const turn = turns(interval, action);
  if (action.length > 0 && pause < action.length) {
    const rate = `${asRead(1000 / turn)} a second`;
    return { text: `A ${action.one} takes ${action.length} ms by itself: at most ${rate}.`, limited: true };
  }
  if (turn >= kSlow) return { text: '', limited: false };
  const range = `${asRead(1000 / (turn + kTick))} to ${asRead(1000 / turn)} ${action.many}/s`;
  if (pause < kTick) return { text: `The timer cannot go below ${kTick} ms: ${range}.`, limited: true };
  return { text: `The timer ticks every ms: expect ${range}.`, limited: false };
}
