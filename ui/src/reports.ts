// Decodes everything the program reports into records with spelled-out names. No other file reads the keys of a report.
// Readers accept any value: a missing or ill-typed key gets its default, because a panel without a running program gets
// a shorter status report.

export type MacroState = 'Idle' | 'Recording' | 'Playing';

export type HotkeyId = 'autoclicker' | 'keySpammer' | 'record' | 'play' | 'unlock';

// What the program waits for a key for; empty while it does not wait. `target` is a new key of the key spammer.
export type Capture = '' | HotkeyId | 'target';

export interface Status {
  state: MacroState;
  eventCount: number; // of the current macro
  hotkeys: Record<HotkeyId, string>; // names of the keys
  lockEnabled: boolean; // the unlock hotkey locks and unlocks the others
  unlocked: boolean;
  keySpammer: { targets: string[]; chord: boolean }; // names of the keys; pressed together or in turn
  capture: Capture;
  clicking: boolean;
  pressing: boolean;
  canUndoContinue: boolean;
}

export interface Interval {
  intervalHours: number;
  intervalMinutes: number;
  intervalSeconds: number;
  intervalMilliseconds: number;
}

export type RepeatMode = 'count' | 'untilStopped';

export interface AutoclickerSettings extends Interval {
  button: number; // 0 left, 1 right, 2 middle
  doubleClick: boolean;
  repeatMode: RepeatMode;
  repeatCount: number;
  locationMode: 'pointer' | 'fixed';
  fixedX: number; // screen pixels
  fixedY: number;
}

export interface KeySpammerSettings extends Interval {
  repeatMode: RepeatMode;
  repeatCount: number;
}

export interface MacroSettings {
  recordMoves: boolean;
  recordButtons: boolean;
  recordWheel: boolean;
  recordKeys: boolean;
  recordRawMoves: boolean;
  playbackSpeed: number;
  loop: boolean;
  loopPauseMilliseconds: number;
}

export interface Settings {
  autoclicker: AutoclickerSettings;
  keySpammer: KeySpammerSettings;
  macro: MacroSettings;
  hotkeys: { holdAutoclicker: boolean; holdKeySpammer: boolean }; // the tool runs while its hotkey is held
}

export interface ProfileList {
  current: number; // index
  names: string[];
  defaultName: string;
}

export interface MacroEvent {
  time: number; // seconds from the start of the macro
  description: string; // event-description.ts reads it
}

// The preferences of the program, as opposed to those of a macro or a tool.
export interface AppSettings {
  alwaysOnTop: boolean;
  launchOnStartup: boolean;
  startMinimized: boolean;
  hotkeysEnabled: boolean;
  hotkeyLock: boolean;
  stopToolsWithMacro: boolean;
  disableAnimations: boolean;
  showWarnings: boolean;
  seenWarnings: string[];
  minimizedPanels: string[];
  panelOrder: string[];
}

// The preferences that are switches, by the names that setAppSetting takes.
export type AppSwitch = Exclude<keyof AppSettings, 'seenWarnings' | 'minimizedPanels' | 'panelOrder'>;

// Element ids of the panels in their first order. The program keeps them in its files.
export const kPanelIds = [
  'panel-profile',
  'panel-spammer', // autoclicker
  'panel-keyspam', // key spammer
  'panel-tracker', // macro
  'panel-ui', // hotkeys
] as const;
export type PanelId = (typeof kPanelIds)[number];

type Fields = Record<string, unknown>;
const fieldsOf = (report: unknown): Fields =>
  typeof report === 'object' && report !== null ? (report as Fields) : {};
const numberOr = (value: unknown, otherwise: number) => (typeof value === 'number' ? value : otherwise);
const booleanOr = (value: unknown, otherwise: boolean) => (typeof value === 'boolean' ? value : otherwise);
const stringOr = (value: unknown, otherwise: string) => (typeof value === 'string' ? value : otherwise);
const stringsOf = (value: unknown) => (Array.isArray(value) ? (value as string[]) : []);

// Replaces the defaults by what the report has under the same names.
function readRecord<T extends object>(defaults: T, report: unknown): T {
  const read = { ...defaults };
  const fields = fieldsOf(report);
  for (const key of Object.keys(defaults) as (keyof T & string)[]) {
    const value = fields[key];
    if (typeof value === typeof defaults[key] && Array.isArray(value) === Array.isArray(defaults[key])) {
      read[key] = value as T[typeof key];
    }
  }
  return read;
}

// The program's words for captures, in its reports and in the argument of reassignKey.
export const kCaptureWords: Record<Exclude<Capture, ''>, string> = {
  autoclicker: 'auto',
  keySpammer: 'keyspamhotkey',
  record: 'rec',
  play: 'play',
  unlock: 'unlock',
  target: 'keyspamtarget',
};

function readCapture(word: unknown): Capture {
  const captures = Object.keys(kCaptureWords) as Exclude<Capture, ''>[];
  return captures.find((capture) => kCaptureWords[capture] === word) ?? '';
}

export function readStatus(report: unknown): Status {
  const fields = fieldsOf(report);
  return {
    state: stringOr(fields.state, 'Idle') as MacroState,
    eventCount: numberOr(fields.count, 0),
    hotkeys: {
      autoclicker: stringOr(fields.hkAuto, ''),
      keySpammer: stringOr(fields.hkKeySpam, ''),
      record: stringOr(fields.hkRec, ''),
      play: stringOr(fields.hkPlay, ''),
      unlock: stringOr(fields.hkUnlock, ''),
    },
    lockEnabled: booleanOr(fields.lockOn, false),
    unlocked: booleanOr(fields.unlocked, true),
    keySpammer: {
      targets: stringsOf(fields.keySpamTargets),
      chord: booleanOr(fields.keySpamChord, false),
    },
    capture: readCapture(fields.reassigning),
    clicking: booleanOr(fields.autoClicking, false),
    pressing: booleanOr(fields.keySpamming, false),
    canUndoContinue: booleanOr(fields.canUndoContinue, false),
  };
}

// 0 stops after a count; the program takes every other number for "until stopped".
const readRepeatMode = (value: unknown): RepeatMode => (value === 0 ? 'count' : 'untilStopped');

export function readSettings(report: unknown): Settings {
  const fields = fieldsOf(report);
  return {
    autoclicker: {
      intervalHours: numberOr(fields.sh, 0),
      intervalMinutes: numberOr(fields.sm, 0),
      intervalSeconds: numberOr(fields.ss, 0),
      intervalMilliseconds: numberOr(fields.sms, 5),
      button: numberOr(fields.sbtn, 0),
      doubleClick: fields.stype === 1,
      repeatMode: readRepeatMode(fields.rptMode),
      repeatCount: numberOr(fields.rptTimes, 10),
      locationMode: fields.locMode === 1 ? 'fixed' : 'pointer',
      fixedX: numberOr(fields.fixedX, 0),
      fixedY: numberOr(fields.fixedY, 0),
    },
    keySpammer: {
      intervalHours: numberOr(fields.ksh, 0),
      intervalMinutes: numberOr(fields.ksm, 0),
      intervalSeconds: numberOr(fields.kss, 0),
      intervalMilliseconds: numberOr(fields.ksms, 5),
      repeatMode: readRepeatMode(fields.ksRptMode),
      repeatCount: numberOr(fields.ksRptTimes, 10),
    },
    macro: {
      recordMoves: booleanOr(fields.tmv, true),
      recordButtons: booleanOr(fields.tclk, true),
      recordWheel: booleanOr(fields.tscr, true),
      recordKeys: booleanOr(fields.tkey, true),
      recordRawMoves: booleanOr(fields.trel, false),
      playbackSpeed: numberOr(fields.tspd, 1),
      loop: booleanOr(fields.tloop, false),
      loopPauseMilliseconds: numberOr(fields.tloopMs, 500),
    },
    hotkeys: {
      holdAutoclicker: booleanOr(fields.holdAuto, false),
      holdKeySpammer: booleanOr(fields.holdKeySpam, false),
    },
  };
}

export const readProfiles = (report: unknown): ProfileList =>
  readRecord<ProfileList>({ current: 0, names: [], defaultName: '' }, report);

export const readAppSettings = (report: unknown): AppSettings =>
  readRecord<AppSettings>(
    {
      alwaysOnTop: false,
      launchOnStartup: false,
      startMinimized: false,
      hotkeysEnabled: true,
      hotkeyLock: true,
      stopToolsWithMacro: true,
      disableAnimations: false,
      showWarnings: true,
      seenWarnings: [],
      minimizedPanels: [],
      panelOrder: [],
    },
    report,
  );

// What the program is, and where it keeps its files. Every text is empty if an older program does not report it.
export interface AboutProgram {
  version: string;
  platform: string; // linux, windows
  session: string; // x11, wayland, windows
  dataFolder: string;
  licenceFolder: string;
  licences: { part: string; licence: string; file: string }[]; // each file is in the licence folder
}

export const readAbout = (report: unknown): AboutProgram =>
  readRecord<AboutProgram>(
    { version: '', platform: '', session: '', dataFolder: '', licenceFolder: '', licences: [] },
    report,
  );

export const readEvents = (report: unknown): MacroEvent[] =>
  Array.isArray(report)
    ? (report as { time: number; desc: string }[]).map(({ time, desc }) => ({ time, description: desc }))
    : [];

export interface Finding {
  danger: boolean; // else a caution
  message: string;
  time: number; // seconds into the macro, where it begins
}

// Counts over the macro's length, from its start to its end in equal parts.
export interface SummaryLanes {
  moves: readonly number[];
  clicks: readonly number[];
  keys: readonly number[];
}

// What the program reports of a pending macro itself. Anything may be missing.
export interface MacroSummary {
  name: string; // empty if not reported
  events: number | undefined;
  seconds: number | undefined;
  lanes: SummaryLanes | undefined;
}

// A macro that the program imports only after the user has seen its findings.
export interface PendingImport extends MacroSummary {
  pendingId: string; // goes back to the program with the decision
  danger: boolean; // the level of the whole
  dangers: number;
  cautions: number;
  findings: readonly Finding[]; // at most kShownFindings, the most serious first
}

const kShownFindings = 100;
const kMaxLaneParts = 100;

const finiteOr = (value: unknown, otherwise: number) =>
  typeof value === 'number' && Number.isFinite(value) ? value : otherwise;
const countOf = (value: unknown): number | undefined => {
  const count = finiteOr(value, -1);
  return count >= 0 ? count : undefined;
};
const laneOf = (value: unknown): number[] =>
  Array.isArray(value) ? value.slice(0, kMaxLaneParts).map((count) => countOf(count) ?? 0) : [];

function readSummary(fields: Fields, laneFields: Fields): MacroSummary {
  const lanes = {
    moves: laneOf(laneFields.moves),
    clicks: laneOf(laneFields.clicks),
    keys: laneOf(laneFields.keys),
  };
  const seconds = countOf(fields.seconds);
  const hasLanes = lanes.moves.length + lanes.clicks.length + lanes.keys.length > 0;
  return {
    name: stringOr(fields.name, ''),
    events: countOf(fields.events),
    seconds,
    lanes: hasLanes && seconds !== undefined ? lanes : undefined,
  };
}

// Returns the summary of `pendingId`, or undefined if the report is about another macro or none.
export function readPendingSummary(report: unknown, pendingId: string): MacroSummary | undefined {
  const fields = fieldsOf(report);
  return fields.pendingId === pendingId ? readSummary(fields, fields) : undefined;
}

function readFinding(match: unknown): Finding {
  const { severity, message, atSec } = fieldsOf(match);
  return { danger: severity === 'DANGER', message: stringOr(message, ''), time: finiteOr(atSec, 0) };
}

// Returns null if the document holds no pending import.
export function readPendingImport(report: unknown): PendingImport | null {
  const fields = fieldsOf(report);
  if (fields.outcome !== 'pending' || typeof fields.pendingId !== 'string') return null;
  const matches: unknown[] = Array.isArray(fields.matches) ? fields.matches : [];
  let dangers = 0;
  for (const match of matches) if (fieldsOf(match).severity === 'DANGER') dangers++;
  return {
    pendingId: fields.pendingId,
    danger: fields.level === 'danger' || dangers > 0,
    dangers,
    cautions: matches.length - dangers,
    findings: matches.slice(0, kShownFindings).map(readFinding),
    ...readSummary(fields, fieldsOf(fields.lanes)),
  };
}

// What came of the import dialog.
export type ImportOutcome =
  | { outcome: 'none' } // cancelled
  | { outcome: 'imported' }
  | { outcome: 'pending'; pendingImport: PendingImport | null }
  | { outcome: 'error'; message: string };

export function readImportOutcome(report: unknown): ImportOutcome {
  const { outcome, message } = fieldsOf(report);
  if (outcome === 'imported') return { outcome };
  if (outcome === 'pending') return { outcome, pendingImport: readPendingImport(report) };
  if (outcome === 'error') return { outcome, message: stringOr(message, 'The file was not imported.') };
  return { outcome: 'none' };
}
