// A macro from outside that the program holds back until the person has seen what was found in it.

export interface Finding {
  danger: boolean; // else a caution
  message: string;
  at: number; // seconds into the macro, where it begins
}

// Counts over the macro's length, from its start to its end in equal parts.
export interface Lanes {
  moves: readonly number[];
  clicks: readonly number[];
  keys: readonly number[];
}

// What is known of the macro itself. Anything may be missing.
export interface Summary {
  name: string; // '' not known
  events: number | undefined;
  seconds: number | undefined;
  lanes: Lanes | undefined;
}

export interface HeldMacro extends Summary {
  pendingId: string; // what the program wants back with the decision
  danger: boolean; // the level of the whole
  dangers: number;
  cautions: number;
  findings: readonly Finding[]; // the first of them, the most serious first
}

const kShownFindings = 100;
const kMostParts = 100;

type Fields = Record<string, unknown>;
const fieldsOf = (report: unknown): Fields =>
  typeof report === 'object' && report !== null ? (report as Fields) : {};
const textOf = (value: unknown): string => (typeof value === 'string' ? value : '');
const countOf = (value: unknown): number | undefined =>
  typeof value === 'number' && Number.isFinite(value) && value >= 0 ? value : undefined;

function laneOf(value: unknown): number[] {
  return Array.isArray(value) ? value.slice(0, kMostParts).map((count) => countOf(count) ?? 0) : [];
}

function readSummary(fields: Fields, lanes: Fields): Summary {
  const read = { moves: laneOf(lanes.moves), clicks: laneOf(lanes.clicks), keys: laneOf(lanes.keys) };
  const seconds = countOf(fields.seconds);
  const drawn = read.moves.length + read.clicks.length + read.keys.length > 0;
  return {
    name: textOf(fields.name),
    events: countOf(fields.events),
    seconds,
    lanes: drawn && seconds !== undefined ? read : undefined,
  };
}

// The summary that belongs to `pendingId`; undefined where the program tells of another macro or of none.
export function readPendingSummary(report: unknown, pendingId: string): Summary | undefined {
  const fields = fieldsOf(report);
  return fields.pendingId === pendingId ? readSummary(fields, fields) : undefined;
}

// null where the document tells that nothing is held.
export function readPending(report: unknown): HeldMacro | null {
  const fields = fieldsOf(report);
  if (fields.outcome !== 'pending' || typeof fields.pendingId !== 'string') return null;
  const matches: unknown[] = Array.isArray(fields.matches) ? fields.matches : [];
  const findings = matches.slice(0, kShownFindings).map((match): Finding => {
    const { severity, message, atSec } = fieldsOf(match);
    return {
      danger: severity === 'DANGER',
      message: textOf(message),
      at: typeof atSec === 'number' && Number.isFinite(atSec) ? atSec : 0,
    };
  });
  let dangers = 0;
  for (const match of matches) if (fieldsOf(match).severity === 'DANGER') dangers++;
  return {
    pendingId: fields.pendingId,
    danger: fields.level === 'danger' || dangers > 0,
    dangers,
    cautions: matches.length - dangers,
    findings,
    ...readSummary(fields, fieldsOf(fields.lanes)),
  };
}
