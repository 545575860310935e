// What the program reports, as the page keeps it. Every reader tolerates missing keys, because a panel without a
// running program gets a shorter status report.

export type MacroState = 'Idle' | 'Recording' | 'Playing';
export type Capture = '' | 'rec' | 'play' | 'auto' | 'keyspamhotkey' | 'keyspamtarget' | 'unlock';

export interface Status {
  state: MacroState;
  count: number;
  restore: string[];
  hkRec: string;
  hkPlay: string;
  hkAuto: string;
  hkKeySpam: string;
  hkUnlock: string;
  lockOn: boolean;
  unlocked: boolean;
  keySpamTargets: string[];
  keySpamChord: boolean;
  ksCap: number;
  reassigning: Capture;
  panelHover: boolean;
  autoClicking: boolean;
  keySpamming: boolean;
  canUndoContinue: boolean;
}

export interface Settings {
  sh: number;
  sm: number;
  ss: number;
  sms: number;
  sbtn: number;
  stype: number;
  rptMode: number;
  rptTimes: number;
  locMode: number;
  fixedX: number;
  fixedY: number;
  tmv: boolean;
  tclk: boolean;
  tscr: boolean;
  tkey: boolean;
  trel: boolean;
  tspd: number;
  tloop: boolean;
  tloopMs: number;
  ksh: number;
  ksm: number;
  kss: number;
  ksms: number;
  ksRptMode: number;
  ksRptTimes: number;
  holdAuto: boolean;
  holdKeySpam: boolean;
}

export interface ProfileList {
  current: number;
  names: string[];
  defaultName: string;
}

export interface MacroEvent {
  id: number;
  time: number; // seconds from the start of the macro
  desc: string;
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
// Those that are switches, by the names that setAppSetting takes.
export type AppSwitch = Exclude<keyof AppSettings, 'seenWarnings' | 'minimizedPanels' | 'panelOrder'>;

export const kPanelIds = [
  'panel-profile',
  'panel-spammer',
  'panel-keyspam',
  'panel-tracker',
  'panel-ui',
] as const;
export type PanelId = (typeof kPanelIds)[number];

export const idleStatus: Status = {
  state: 'Idle',
  count: 0,
  restore: [],
  hkRec: '',
  hkPlay: '',
  hkAuto: '',
  hkKeySpam: '',
  hkUnlock: '',
  lockOn: false,
  unlocked: true,
  keySpamTargets: [],
  keySpamChord: false,
  ksCap: -1,
  reassigning: '',
  panelHover: false,
  autoClicking: false,
  keySpamming: false,
  canUndoContinue: false,
};

export const firstSettings: Settings = {
  sh: 0,
  sm: 0,
  ss: 0,
  sms: 5,
  sbtn: 0,
  stype: 0,
  rptMode: 1,
  rptTimes: 10,
  locMode: 0,
  fixedX: 0,
  fixedY: 0,
  tmv: true,
  tclk: true,
  tscr: true,
  tkey: true,
  trel: false,
  tspd: 1,
  tloop: false,
  tloopMs: 500,
  ksh: 0,
  ksm: 0,
  kss: 0,
  ksms: 5,
  ksRptMode: 1,
  ksRptTimes: 10,
  holdAuto: false,
  holdKeySpam: false,
};

export const firstAppSettings: AppSettings = {
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
};

function readRecord<T extends object>(defaults: T, report: unknown): T {
  const read = { ...defaults };
  if (typeof report !== 'object' || report === null) return read;
  const given = report as Record<string, unknown>;
  for (const key of Object.keys(defaults) as (keyof T & string)[]) {
    const value = given[key];
    if (typeof value === typeof defaults[key] && Array.isArray(value) === Array.isArray(defaults[key])) {
      read[key] = value as T[typeof key];
    }
  }
  return read;
}

export const readStatus = (report: unknown): Status => readRecord(idleStatus, report);
export const readSettings = (report: unknown): Settings => readRecord(firstSettings, report);
export const readAppSettings = (report: unknown): AppSettings => readRecord(firstAppSettings, report);
export const readProfiles = (report: unknown): ProfileList =>
  readRecord<ProfileList>({ current: 0, names: [], defaultName: '' }, report);
export const readEvents = (report: unknown): MacroEvent[] =>
  Array.isArray(report) ? (report as MacroEvent[]) : [];
