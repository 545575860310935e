// The commands of the program, with the exact argument texts it expects. Each resolves to whether it worked; a failure
// is shown as a sentence and never thrown.
import { call } from './bridge';
import {
  fetchAppSettings,
  fetchEvents,
  fetchProfiles,
  fetchSettings,
  noteSettingsEdit,
  showFailure,
} from './fetch';
import { pollSoon } from './poll';
import type { AppSettings, AppSwitch, Capture, PanelId, Settings } from './reports';
import { appSettings, events, eventsLoading, failure, fileDialog, picking, settings, status } from './store';
import { goesOn, kWarnings } from './warnings';

// `what` completes "Varnelle could not ..." where the command fails.
async function run(what: string, name: string, ...args: string[]): Promise<boolean> {
  try {
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

// Edits of the macro. A macro may hold a million events, so a small edit is made in the page's copy as well, instead of
// fetching everything again.
export async function deleteEvent(index: number): Promise<void> {
  if (!(await run('delete the event', 'deleteEvent', String(index))) || eventsLoading.value)
    return fetchEvents();
  const left = events.value.slice();
  left.splice(index, 1);
  events.value = left;
}

export async function retimeEvent(index: number, seconds: number): Promise<void> {
  const time = seconds.toFixed(6);
  const worked = await run('change the time', 'updateEventTime', `${index},${time}`);
  const event = events.value[index];
  if (!worked || !event || eventsLoading.value) return fetchEvents();
  const list = events.value.slice();
  list[index] = { ...event, time: Number(time) };
  events.value = list;
}

export async function optimiseMacro(): Promise<void> {
  await run('optimise the macro', 'optimizeMacro');
  await fetchEvents();
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
