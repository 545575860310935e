// The commands of the program, with the exact argument texts that it expects. Each resolves to whether it worked; a
// failure is shown as a sentence and never thrown.
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
import { intervalLength } from './rate';
import {
  type AppSettings,
  type AppSwitch,
  type AutoclickerSettings,
  type Capture,
  kCaptureWords,
  type KeySpammerSettings,
  type MacroEvent,
  type MacroSettings,
  type PanelId,
  type RepeatMode,
  type Settings,
} from './reports';
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
import { confirmWarning, kWarnings } from './warnings';

// Commands that change or replace the macro. A batch of edits ends before one of them is sent.
const kMacroCommands = new Set([
  ...['startRecording', 'continueRecording', 'undoContinueRecording', 'optimizeMacro'],
  ...['deleteEvent', 'updateEventTime', 'confirmMacroImport'],
  ...['addProfile', 'switchProfile', 'clearProfile', 'deleteProfile'],
]);

// `what` completes "Varnelle could not ..." if the command fails.
async function runCommand(what: string, name: string, ...args: string[]): Promise<boolean> {
  try {
    if (kMacroCommands.has(name)) await endBatch();
    await call(name, ...args);
    failure.value = '';
    return true;
  } catch (reason) {
    showFailure(what, reason);
    // Draws the controls again: they show the program's state, which may not have changed.
    status.value = { ...status.value };
    return false;
  } finally {
    pollSoon();
  }
}

const flag = (on: boolean) => (on ? '1' : '0');

// Engines. A start that may surprise the user shows its warning first and resolves to false if the user cancels it.
export async function startClicking(): Promise<boolean> {
  const { autoclicker } = settings.value;
  const endless = autoclicker.repeatMode !== 'count' && !appSettings.value.hotkeysEnabled;
  if (endless && !(await confirmWarning(kWarnings.endlessClicking))) return false;
  if (intervalLength(autoclicker) === 0 && !(await confirmWarning(kWarnings.fastestClicking))) return false;
  return runCommand('start clicking', 'startSpammer');
}

export const stopClicking = () => runCommand('stop clicking', 'stopSpammer');

export async function startPressing(): Promise<boolean> {
  const fastest = intervalLength(settings.value.keySpammer) === 0;
  if (fastest && !(await confirmWarning(kWarnings.fastestPressing))) return false;
  return runCommand('start pressing', 'startKeySpam');
}

export const stopPressing = () => runCommand('stop pressing', 'stopKeySpam');

export async function startRecording(): Promise<boolean> {
  if (status.value.eventCount > 0 && !(await confirmWarning(kWarnings.replacing))) return false;
  return runCommand('start the recording', 'startRecording');
}

export const stopRecording = () => runCommand('stop the recording', 'stopRecording');
export const continueRecording = () => runCommand('continue the recording', 'continueRecording');
// The next poll shows that the undo is used up, and fetches the list.
export const undoContinue = () => runCommand('undo the recording', 'undoContinueRecording');

export async function startPlayback(): Promise<boolean> {
  if (settings.value.macro.loop && !(await confirmWarning(kWarnings.looping))) return false;
  return runCommand('start the playback', 'startPlayback');
}

export const stopPlayback = () => runCommand('stop the playback', 'stopPlayback');

export const captureKey = (capture: Exclude<Capture, ''>) =>
  runCommand('wait for a key', 'reassignKey', kCaptureWords[capture]);
export const lockHotkeys = () => runCommand('lock the hotkeys', 'lockHotkeys');
export const resetHotkeys = () => runCommand('reset the hotkeys', 'resetHotkeys');
export const removeTarget = (index: number) =>
  runCommand('remove the key', 'removeKeySpamTarget', String(index));
export const setChordMode = (chord: boolean) =>
  runCommand('change the key order', 'setKeySpamChordMode', flag(chord));

export async function pickLocation(): Promise<void> {
  picking.value = await runCommand('wait for a location', 'pickLocation');
}

// Settings. The page's copy changes at once.
async function changeSettings(changed: Partial<Settings>, name: string, argument: string): Promise<void> {
  noteSettingsEdit();
  settings.value = { ...settings.value, ...changed };
  // The program has taken part of a change that it rejects, so ask for all settings.
  if (!(await runCommand('change the setting', name, argument))) await fetchSettings();
}

const repeatModeNumber = (mode: RepeatMode) => (mode === 'count' ? 0 : 1);

export function changeAutoclicker(changes: Partial<AutoclickerSettings>): Promise<void> {
  const autoclicker = { ...settings.value.autoclicker, ...changes };
  const fields = [
    autoclicker.intervalHours,
    autoclicker.intervalMinutes,
    autoclicker.intervalSeconds,
    autoclicker.intervalMilliseconds,
    autoclicker.button,
    flag(autoclicker.doubleClick),
    repeatModeNumber(autoclicker.repeatMode),
    autoclicker.repeatCount,
    flag(autoclicker.locationMode === 'fixed'),
  ];
  return changeSettings({ autoclicker }, 'updateSpammer', fields.join(','));
}

export function changeKeySpammer(changes: Partial<KeySpammerSettings>): Promise<void> {
  const keySpammer = { ...settings.value.keySpammer, ...changes };
  const fields = [
    keySpammer.intervalHours,
    keySpammer.intervalMinutes,
    keySpammer.intervalSeconds,
    keySpammer.intervalMilliseconds,
    repeatModeNumber(keySpammer.repeatMode),
    keySpammer.repeatCount,
  ];
  return changeSettings({ keySpammer }, 'updateKeySpam', fields.join(','));
}

export function changeMacroSettings(changes: Partial<MacroSettings>): Promise<void> {
  const macro = { ...settings.value.macro, ...changes };
  const fields = [
    macro.recordMoves,
    macro.recordButtons,
    macro.recordWheel,
    macro.recordKeys,
    macro.recordRawMoves,
    macro.playbackSpeed,
    macro.loop,
    macro.loopPauseMilliseconds,
  ];
  return changeSettings({ macro }, 'updateTracker', fields.join(','));
}

export function changeHoldAutoclicker(holdAutoclicker: boolean): Promise<void> {
  const hotkeys = { ...settings.value.hotkeys, holdAutoclicker };
  return changeSettings({ hotkeys }, 'setHoldMode', `auto,${flag(holdAutoclicker)}`);
}

export function changeHoldKeySpammer(holdKeySpammer: boolean): Promise<void> {
  const hotkeys = { ...settings.value.hotkeys, holdKeySpammer };
  return changeSettings({ hotkeys }, 'setHoldMode', `keyspam,${flag(holdKeySpammer)}`);
}

// Returns whether the page's list differs from the program's, as far as the last poll shows. Indexes are meaningless
// then.
const listIsStale = () => recording.value || status.value.eventCount !== events.value.length;

// Stores the list after an edit of the page's own, and its count, which the next poll reports as well.
function storeEdited(list: MacroEvent[]): void {
  events.value = list;
  if (status.value.eventCount !== list.length) status.value = { ...status.value, eventCount: list.length };
}

// Edits of the macro. The page makes a small edit in its own copy as well: a macro may hold a million events, which are
// not fetched again for each.
export async function deleteEvent(index: number): Promise<void> {
  if (listIsStale()) return fetchEvents();
  if (!(await runCommand('delete the event', 'deleteEvent', String(index))) || eventsLoading.value)
    return fetchEvents();
  const left = events.value.slice();
  left.splice(index, 1);
  storeEdited(left);
}

export async function retimeEvent(index: number, seconds: number): Promise<void> {
  if (listIsStale()) return fetchEvents();
  const time = seconds.toFixed(6);
  const worked = await runCommand('change the time', 'updateEventTime', `${index},${time}`);
  const event = events.value[index];
  if (!worked || !event || eventsLoading.value) return fetchEvents();
  const list = events.value.slice();
  list[index] = { ...event, time: Number(time) };
  storeEdited(list);
}

// Resolves to how many events it dropped, by comparing the two lists, or to undefined if it failed.
export async function optimiseMacro(): Promise<number | undefined> {
  const before = events.value.length;
  const worked = await runCommand('optimise the macro', 'optimizeMacro');
  await fetchEvents();
  return worked ? before - events.value.length : undefined;
}

// Sends many edits in a row. They go by indexes, so the program's list must be the page's at the start.
async function runBatch(what: string, work: BatchWork): Promise<{ end: BatchEnd; done: number }> {
  await endBatch();
  await pollNow();
  if (listIsStale() || eventsLoading.value) return { end: 'changed', done: 0 };
  const result = await sendBatch(work);
  if (result.end === 'failed') showFailure(what, result.reason);
  else failure.value = '';
  return result;
}

// After a batch: makes the same edits in the page's copy, or fetches the list if the macro has changed otherwise.
function finishBatch(end: BatchEnd, edited: () => MacroEvent[]): void {
  if (end === 'done' || end === 'cancelled') storeEdited(edited());
  else if (!recording.value) void fetchEvents();
  pollSoon();
}

// `indexes` ascending. The last event is deleted first, so that no index changes before its turn.
export async function deleteEvents(indexes: Uint32Array): Promise<{ end: BatchEnd; done: number }> {
  const result = await runBatch('delete the events', {
    doing: 'Deleting',
    command: 'deleteEvent',
    count: indexes.length,
    argument: (step) => String(indexes[indexes.length - 1 - step]),
    removes: true,
  });
  finishBatch(result.end, () => {
    const deleted = new Set(indexes.subarray(indexes.length - result.done));
    return events.value.filter((_, index) => !deleted.has(index));
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
  finishBatch(result.end, () => {
    const changed = list.slice();
    for (const index of indexes.subarray(0, result.done)) {
      changed[index] = { ...(list[index] as MacroEvent), time: Number(shifted(index)) };
    }
    return changed;
  });
  return result;
}

// Profiles. Each of these commands changes the settings, the macro and the list together.
async function runProfileCommand(what: string, name: string, ...args: string[]): Promise<void> {
  noteSettingsEdit();
  await runCommand(what, name, ...args);
  await Promise.all([fetchProfiles(), fetchSettings(), fetchEvents()]);
}

export const addProfile = (name: string) => runProfileCommand('add the profile', 'addProfile', name);
export const switchProfile = (index: number) =>
  runProfileCommand('switch the profile', 'switchProfile', String(index));
export const clearProfile = () => runProfileCommand('clear the profile', 'clearProfile');
export const deleteProfile = () => runProfileCommand('delete the profile', 'deleteProfile');

// Imports and exports. imports.ts shows what comes of them.
export const confirmImport = (pendingId: string) =>
  runCommand('import the macro', 'confirmMacroImport', pendingId);
export const cancelImport = (pendingId: string) =>
  runCommand('reject the macro', 'cancelMacroImport', pendingId);

// Opens a file dialog of the program. Resolves to the program's report when the dialog is closed, or to undefined if it
// failed or another dialog is open.
export async function openFileDialog(which: 'import' | 'export'): Promise<unknown> {
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

// Preferences. The page's copy changes at once. If the program rejects a change, ask for all preferences.
async function changeAppSettings(
  changes: Partial<AppSettings>,
  name: string,
  argument: string,
): Promise<void> {
  appSettings.value = { ...appSettings.value, ...changes };
  if (!(await runCommand('change the preference', name, argument))) await fetchAppSettings();
}

export const setAppSwitch = (key: AppSwitch, on: boolean) =>
  changeAppSettings({ [key]: on }, 'setAppSetting', `${key},${flag(on)}`);

export function setPanelMinimised(id: PanelId, minimised: boolean): Promise<void> {
  const others = appSettings.value.minimizedPanels.filter((other) => other !== id);
  const changes = { minimizedPanels: minimised ? [...others, id] : others };
  return changeAppSettings(changes, 'setAppSetting', `min:${id},${flag(minimised)}`);
}

export const setPanelOrder = (order: PanelId[]) =>
  changeAppSettings({ panelOrder: order }, 'setPanelOrder', order.join(','));

export const openDataFolder = () => runCommand('open the data folder', 'openDataFolder');
export const openLink = (which: 'docs' | 'discord') => runCommand('open the page', 'openLink', which);
