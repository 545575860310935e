// The commands of the program, with the exact argument texts it expects. Each resolves to whether it worked; a failure
// is shown as a sentence and never thrown.
import { type BatchEnd, type BatchWork, endBatch, sendBatch } from './batch';
import { call } from './bridge';
import {
  fetchAppSettings,
  fetchEvents,
  fetchProfiles,
  fetchSettings,
  noteSettingsEdit,
  showFailure,
} from './fetch';
import { pollNow, pollSoon } from './poll';
import type { AppSettings, AppSwitch, Capture, MacroEvent, PanelId, Settings } from './reports';
import {
  appSettings,
  events,
  eventsLoading,
  failure,
  fileDialog,
  picking,
  recording,
  settings,
  status,
} from './store';
import { goesOn, kWarnings } from './warnings';

// Those that make another macro of the present one: a batch of edits must have come to rest before.
const kChangesMacro = new Set([
  ...['startRecording', 'continueRecording', 'undoContinueRecording', 'optimizeMacro'],
  ...['deleteEvent', 'updateEventTime', 'confirmMacroImport'],
  ...['addProfile', 'switchProfile', 'clearProfile', 'deleteProfile'],
]);

// `what` completes "Varnelle could not ..." where the command fails.
async function run(what: string, name: string, ...args: string[]): Promise<boolean> {
  try {
    if (kChangesMacro.has(name)) await endBatch();
    await call(name, ...args);
    failure.value = '';
    return true;
  } catch (reason) {
    showFailure(what, reason);
    // The controls follow the program again, which may not have changed.
    status.value = { ...status.value };
    return false;
  } finally {
    pollSoon();
  }
}

// Engines. What starts one asks first where the person may be surprised; false if they would rather not.
export async function startClicking(): Promise<boolean> {
  const { sh, sm, ss, sms, rptMode } = settings.value;
  const endless = rptMode !== 0 && !appSettings.value.hotkeysEnabled;
  if (endless && !(await goesOn(kWarnings.endlessClicking))) return false;
  if (sh + sm + ss + sms === 0 && !(await goesOn(kWarnings.fastestClicking))) return false;
  return run('start clicking', 'startSpammer');
}
export const stopClicking = () => run('stop clicking', 'stopSpammer');
export async function startPressing(): Promise<boolean> {
  const { ksh, ksm, kss, ksms } = settings.value;
  if (ksh + ksm + kss + ksms === 0 && !(await goesOn(kWarnings.fastestPressing))) return false;
  return run('start pressing', 'startKeySpam');
}
export const stopPressing = () => run('stop pressing', 'stopKeySpam');
export async function startRecording(): Promise<boolean> {
  if (status.value.count > 0 && !(await goesOn(kWarnings.replacing))) return false;
  return run('start the recording', 'startRecording');
}
export const stopRecording = () => run('stop the recording', 'stopRecording');
export const continueRecording = () => run('continue the recording', 'continueRecording');
// The list follows from the status, which tells when the undo is used up.
export const undoContinue = () => run('undo the recording', 'undoContinueRecording');
export async function startPlayback(): Promise<boolean> {
  if (settings.value.tloop && !(await goesOn(kWarnings.looping))) return false;
  return run('start the playback', 'startPlayback');
}
export const stopPlayback = () => run('stop the playback', 'stopPlayback');
export const captureKey = (capture: Exclude<Capture, ''>) => run('wait for a key', 'reassignKey', capture);
export const resetHotkeys = () => run('reset the hotkeys', 'resetHotkeys');
export const removeTarget = (index: number) => run('remove the key', 'removeKeySpamTarget', String(index));
export const setChordMode = (chord: boolean) =>
  run('change the key order', 'setKeySpamChordMode', chord ? '1' : '0');

export async function pickLocation(): Promise<void> {
  picking.value = await run('wait for a place', 'pickLocation');
}

// Settings.
async function change(changes: Partial<Settings>, name: string, argument: (s: Settings) => string) {
  noteSettingsEdit();
  settings.value = { ...settings.value, ...changes };
  // A refused change leaves the program with part of it, so ask what it holds now.
  if (!(await run('change the setting', name, argument(settings.value)))) await fetchSettings();
}

export const changeClicker = (changes: Partial<Settings>) =>
  change(changes, 'updateSpammer', (s) =>
    [s.sh, s.sm, s.ss, s.sms, s.sbtn, s.stype, s.rptMode, s.rptTimes, s.locMode].join(','),
  );
export const changePresser = (changes: Partial<Settings>) =>
  change(changes, 'updateKeySpam', (s) => [s.ksh, s.ksm, s.kss, s.ksms, s.ksRptMode, s.ksRptTimes].join(','));
export const changeTracker = (changes: Partial<Settings>) =>
  change(changes, 'updateTracker', (s) =>
    [s.tmv, s.tclk, s.tscr, s.tkey, s.trel, s.tspd, s.tloop, s.tloopMs].join(','),
  );
export const changeHoldAuto = (hold: boolean) =>
  change({ holdAuto: hold }, 'setHoldMode', () => `auto,${hold ? '1' : '0'}`);
export const changeHoldKeySpam = (hold: boolean) =>
  change({ holdKeySpam: hold }, 'setHoldMode', () => `keyspam,${hold ? '1' : '0'}`);

// Whether the page's list is not the program's any more, as far as the last poll tells: places in it mean nothing then.
const macroIsAnother = () => recording.value || status.value.count !== events.value.length;

// The list after an edit of the page's own, and its count, which the next poll will tell as well.
function keepEdited(list: MacroEvent[]): void {
  events.value = list;
  if (status.value.count !== list.length) status.value = { ...status.value, count: list.length };
}

// Edits of the macro. A macro may hold a million events, so a small edit is made in the page's copy as well, instead of
// fetching everything again.
export async function deleteEvent(index: number): Promise<void> {
  if (macroIsAnother()) return fetchEvents();
  if (!(await run('delete the event', 'deleteEvent', String(index))) || eventsLoading.value)
    return fetchEvents();
  const left = events.value.slice();
  left.splice(index, 1);
  keepEdited(left);
}

export async function retimeEvent(index: number, seconds: number): Promise<void> {
  if (macroIsAnother()) return fetchEvents();
  const time = seconds.toFixed(6);
  const worked = await run('change the time', 'updateEventTime', `${index},${time}`);
  const event = events.value[index];
  if (!worked || !event || eventsLoading.value) return fetchEvents();
  const list = events.value.slice();
  list[index] = { ...event, time: Number(time) };
  keepEdited(list);
}

// How many events it dropped, as far as the two lists tell; undefined where it failed.
export async function optimiseMacro(): Promise<number | undefined> {
  const before = events.value.length;
  const worked = await run('optimise the macro', 'optimizeMacro');
  await fetchEvents();
  return worked ? before - events.value.length : undefined;
}

// Many edits in a row. They go by the places in the list, so the program's list must be the page's at the start.
async function runBatch(what: string, work: BatchWork): Promise<{ end: BatchEnd; done: number }> {
  await endBatch();
  await pollNow();
  const { state, count } = status.value;
  if (state === 'Recording' || count !== events.value.length || eventsLoading.value) {
    return { end: 'changed', done: 0 };
  }
  const result = await sendBatch(work);
  if (result.end === 'failed') showFailure(what, result.reason);
  else failure.value = '';
  return result;
}

// After a batch: the page's copy is edited in the same way, unless the macro is another by now.
function afterBatch(end: BatchEnd, edited: () => MacroEvent[]): void {
  if (end === 'done' || end === 'cancelled') keepEdited(edited());
  else if (!recording.value) void fetchEvents();
  pollSoon();
}

// `indexes` ascending. They are deleted from the last one on, so that none moves before its turn.
export async function deleteEvents(indexes: Uint32Array): Promise<{ end: BatchEnd; done: number }> {
  const result = await runBatch('delete the events', {
    doing: 'Deleting',
    command: 'deleteEvent',
    count: indexes.length,
    argument: (step) => String(indexes[indexes.length - 1 - step]),
    removes: true,
  });
  afterBatch(result.end, () => {
    const gone = new Set(indexes.subarray(indexes.length - result.done));
    return events.value.filter((_, index) => !gone.has(index));
  });
  return result;
}

export async function shiftEvents(
  indexes: Uint32Array,
  seconds: number,
): Promise<{ end: BatchEnd; done: number }> {
  const list = events.value;
  const shifted = (index: number) => ((list[index]?.time ?? 0) + seconds).toFixed(6);
  const result = await runBatch('shift the events', {
    doing: 'Shifting',
    command: 'updateEventTime',
    count: indexes.length,
    argument: (step) => `${indexes[step]},${shifted(indexes[step] as number)}`,
    removes: false,
  });
  afterBatch(result.end, () => {
    const changed = list.slice();
    for (const index of indexes.subarray(0, result.done)) {
      changed[index] = { ...(list[index] as MacroEvent), time: Number(shifted(index)) };
    }
    return changed;
  });
  return result;
}

// Profiles. Each of these changes the settings, the macro and the list together.
async function runOnProfiles(what: string, name: string, ...args: string[]): Promise<void> {
  noteSettingsEdit();
  await run(what, name, ...args);
  await Promise.all([fetchProfiles(), fetchSettings(), fetchEvents()]);
}

export const addProfile = (name: string) => runOnProfiles('add the profile', 'addProfile', name);
export const switchProfile = (index: number) =>
  runOnProfiles('switch the profile', 'switchProfile', String(index));
export const clearProfile = () => runOnProfiles('clear the profile', 'clearProfile');
export const deleteProfile = () => runOnProfiles('delete the profile', 'deleteProfile');

// Macros from outside; imports.ts tells what comes of them. The file dialogs answer when they are closed.
export const confirmImport = (pendingId: string) => run('import the macro', 'confirmMacroImport', pendingId);
export const cancelImport = (pendingId: string) => run('drop the macro', 'cancelMacroImport', pendingId);

export async function withFileDialog(which: 'import' | 'export'): Promise<unknown> {
  if (fileDialog.value) return undefined;
  fileDialog.value = which;
  try {
    if (which === 'import') await endBatch();
    return await call(which === 'import' ? 'importProfile' : 'exportProfile');
  } catch (reason) {
    showFailure(which === 'import' ? 'import the macro' : 'export the profile', reason);
    return undefined;
  } finally {
    fileDialog.value = '';
    pollSoon();
  }
}

// Preferences. The page's copy changes at once; a refused change asks what the program holds.
async function prefer(changes: Partial<AppSettings>, name: string, argument: string): Promise<void> {
  appSettings.value = { ...appSettings.value, ...changes };
  if (!(await run('change the preference', name, argument))) await fetchAppSettings();
}

export const setAppSwitch = (key: AppSwitch, on: boolean) =>
  prefer({ [key]: on }, 'setAppSetting', `${key},${on ? '1' : '0'}`);

export function setPanelMinimised(id: PanelId, minimised: boolean): Promise<void> {
  const others = appSettings.value.minimizedPanels.filter((other) => other !== id);
  const changes = { minimizedPanels: minimised ? [...others, id] : others };
  return prefer(changes, 'setAppSetting', `min:${id},${minimised ? '1' : '0'}`);
}

export const setPanelOrder = (order: PanelId[]) =>
  prefer({ panelOrder: order }, 'setPanelOrder', order.join(','));

export const openLink = (which: 'docs' | 'discord') => run('open the page', 'openLink', which);
