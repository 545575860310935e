// Decodes everything the program reports into records with spelled-out names. No other file reads the keys of a report.
// Readers accept any value: a missing or ill-typed key gets its default, because a panel without a running program gets
// a shorter status report.
import { type Columns, EventType } from './event-columns';

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

// What the program counts while something runs. Zero while it does not run.
export interface Progress {
  revision: number; // grows with every change of the macro and with every other macro; -1 if it is unknown
  rewritten: number; // the newest revision with a change other than an append at the end
  clicks: number; // of this run; a double click is one
  presses: number; // of this run; all keys together are one
  playRound: number; // from 1
  playSeconds: number; // position in the macro's own time; passes the end in the pause between two rounds
  playEvent: number; // events of this round already played
  recordSeconds: number;
  recordEvents: number;
  picking: boolean; // the program waits for a location
}

// A part of the macro's events.
export interface MacroRows {
  revision: number;
  rewritten: number; // as in Progress
  total: number; // events of the whole macro
  rows: readonly unknown[]; // readRow reads them
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

// The preferences that the program keeps beside those of AppSettings.
export interface AdditionalSettings {
  countdownSeconds: number; // before a tool starts from the page; 0 for none
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

export const readAdditionalSettings = (report: unknown): AdditionalSettings =>
  readRecord<AdditionalSettings>({ countdownSeconds: 3 }, report);

export const readProgress = (report: unknown): Progress =>
  readRecord<Progress>(
    {
      revision: -1,
      rewritten: -1,
      clicks: 0,
      presses: 0,
      playRound: 0,
      playSeconds: 0,
      playEvent: 0,
      recordSeconds: 0,
      recordEvents: 0,
      picking: false,
    },
    report,
  );

export function readMacroRows(report: unknown): MacroRows {
  const { revision, rewritten, total, rows } = fieldsOf(report);
  return {
    revision: numberOr(revision, 0),
    rewritten: numberOr(rewritten, 0),
    total: numberOr(total, 0),
    rows: Array.isArray(rows) ? rows : [],
  };
}

// Reads one of the rows into the columns. A time that is not a number in the macro's file arrives as null.
export function readRow(row: unknown, columns: Columns, i: number): void {
  const [type, time, x, y, flags, virtualKey, down, wheel] = Array.isArray(row) ? (row as number[]) : [];
  columns.time[i] = time ?? 0;
  columns.type[i] =
    type !== undefined && type >= EventType.AbsoluteMove && type < EventType.Other ? type : EventType.Other;
  columns.x[i] = x ?? 0;
  columns.y[i] = y ?? 0;
  columns.flags[i] = flags ?? 0;
  columns.virtualKey[i] = virtualKey ?? 0;
  columns.down[i] = down ?? 0;
  columns.wheel[i] = wheel ?? 0;
}

// Why the program refused a command.
export type Refusal = 'recording' | 'playing' | 'revision' | 'argument' | 'default' | 'unknown';
const kRefusals: readonly Refusal[] = ['recording', 'playing', 'revision', 'argument', 'default', 'unknown'];

// What came of a command that the program may refuse.
export interface Done {
  done: true;
  revision: number; // of the macro after a change of it
  changed: number; // events
}

export function readResult(report: unknown): Done | { done: false; reason: Refusal } {
  const { done, reason, revision, changed } = fieldsOf(report);
  if (done === true) return { done, revision: numberOr(revision, 0), changed: numberOr(changed, 0) };
  return { done: false, reason: kRefusals.find((word) => word === reason) ?? 'argument' };
}

// A change of a macro that the program can undo or redo.
export interface HistoryStep {
  id: number;
  reason: 'recording' | 'undoContinue' | 'clear' | 'deleteProfile' | 'optimise' | 'edit' | 'addReleases';
  profile: string;
  current: boolean; // it belongs to the current profile
  events: number; // that come back
}

export interface MacroHistory {
  undo: HistoryStep[]; // newest first
  redo: HistoryStep[]; // the next one first
}

const readSteps = (value: unknown): HistoryStep[] =>
  Array.isArray(value)
    ? value.map((step) =>
        readRecord<HistoryStep>({ id: 0, reason: 'edit', profile: '', current: false, events: 0 }, step),
      )
    : [];

export function readMacroHistory(report: unknown): MacroHistory {
  const { undo, redo } = fieldsOf(report);
  return { undo: readSteps(undo), redo: readSteps(redo) };
}

// The key codes of the hotkeys. A hotkey without a key, or one that the report does not have, is missing.
export type HotkeyCodes = Partial<Record<HotkeyId, number>>;

export function readHotkeyCodes(report: unknown): HotkeyCodes {
  const fields = fieldsOf(report);
  const codes: HotkeyCodes = {};
  for (const id of ['autoclicker', 'keySpammer', 'record', 'play', 'unlock'] as const) {
    const code = numberOr(fields[kCaptureWords[id]], 0);
    if (code > 0) codes[id] = code;
  }
  return codes;
}

// The names of the keys by their virtual key code.
export function readKeyNames(report: unknown): Record<number, string> {
  const names: Record<number, string> = {};
  for (const [code, name] of Object.entries(fieldsOf(report)))
    if (typeof name === 'string') names[Number(code)] = name;
  return names;
}

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

// The last import of this session, from the dialog, the command line or a second instance.
export interface LastImport {
  id: number; // grows with every import
  outcome: 'none' | 'imported' | 'pending' | 'failed';
  problem: '' | 'notFound' | 'unreadable' | 'oldFormat' | 'noName' | 'tooLarge';
  file: string; // name without its folder
  profile: string;
  events: number;
  skippedLines: number; // that could not be read
  seconds: number;
  fileSettings: boolean; // the file had tool settings
  settingsUsable: boolean; // these can be put to use
}

export const readLastImport = (report: unknown): LastImport =>
  readRecord<LastImport>(
    {
      id: 0,
      outcome: 'none',
      problem: '',
      file: '',
      profile: '',
      events: 0,
      skippedLines: 0,
      seconds: 0,
      fileSettings: false,
      settingsUsable: false,
    },
    report,
  );

// What came of the export dialog.
export interface ExportOutcome {
  outcome: 'written' | 'cancelled' | 'failed' | 'unavailable';
  file: string;
  message: string;
}

export const readExportOutcome = (report: unknown): ExportOutcome =>
  readRecord<ExportOutcome>({ outcome: 'cancelled', file: '', message: '' }, report);
