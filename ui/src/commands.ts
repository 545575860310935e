// The commands of the program, with the exact argument texts that it expects. Each resolves to whether it worked; a
// failure is shown as a sentence and never thrown.
import { call, isMainWindow } from './bridge';
import { cancelCountdown, countDown, countdown } from './countdown';
import { type Columns, withoutEvents, withTimes } from './event-columns';
import {
  fetchAdditionalSettings,
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
  type MacroSettings,
  type PanelId,
  type Done,
  type HotkeyCodes,
  type HotkeyId,
  readHotkeyCodes,
  readResult,
  type Refusal,
  type RepeatMode,
  type Settings,
} from './reports';
import {
  additionalSettings,
  appSettings,
  events,
  failure,
  fileDialog,
  lacksLocation,
  settings,
  status,
  storeChangedEvents,
} from './store';
import { confirmWarning, kWarnings } from './warnings';

// `what` completes "Varnelle could not ..." if the command fails.
async function runCommand(what: string, name: string, ...args: string[]): Promise<boolean> {
  try {
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

const kRefusals: Record<Refusal, string> = {
  recording: 'Stop the recording first.',
  playing: 'Stop the playback first.',
  revision: 'The macro has changed. Please try again.',
  argument: 'Please try again.',
  default: 'The default profile keeps its name.',
  unknown: 'It is no longer possible.',
};

// Sends a command that the program may refuse. Resolves to its result, or to null if it was refused or failed, which
// the page shows.
async function runRefusable(what: string, name: string, argument: string): Promise<Done | null> {
  try {
    const result = readResult(await call(name, argument));
    failure.value = result.done ? '' : `Varnelle could not ${what}. ${kRefusals[result.reason]}`;
    return result.done ? result : null;
  } catch (reason) {
    showFailure(what, reason);
    return null;
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
  // A fixed location is not under the pointer, unless it is in this window.
  if (autoclicker.locationMode === 'pointer' && !(await countDown('clicking'))) return false;
  return runCommand('start clicking', 'startSpammer');
}

// Stops it also before it has started.
export function stopClicking(): Promise<boolean> {
  if (countdown.peek()?.tool === 'clicking') cancelCountdown();
  return runCommand('stop clicking', 'stopSpammer');
}

export async function startPressing(): Promise<boolean> {
  const fastest = intervalLength(settings.value.keySpammer) === 0;
  if (fastest && !(await confirmWarning(kWarnings.fastestPressing))) return false;
  if (!(await countDown('pressing'))) return false;
  return runCommand('start pressing', 'startKeySpam');
}

export function stopPressing(): Promise<boolean> {
  if (countdown.peek()?.tool === 'pressing') cancelCountdown();
  return runCommand('stop pressing', 'stopKeySpam');
}

export async function startRecording(): Promise<boolean> {
  if (status.value.eventCount > 0 && !(await confirmWarning(kWarnings.replacing))) return false;
  return runCommand('start the recording', 'startRecording');
}

export const stopRecording = () => runCommand('stop the recording', 'stopRecording');
export const continueRecording = () => runCommand('continue the recording', 'continueRecording');
export const undoContinue = () => runCommand('undo the recording', 'undoContinueRecording');

export async function startPlayback(): Promise<boolean> {
  if (settings.value.macro.loop && !(await confirmWarning(kWarnings.looping))) return false;
  return runCommand('start the playback', 'startPlayback');
}

export const stopPlayback = () => runCommand('stop the playback', 'stopPlayback');

export const captureKey = (capture: Exclude<Capture, ''>) =>
  runCommand('wait for a key', 'reassignKey', kCaptureWords[capture]);
export const lockHotkeys = () => runCommand('lock the hotkeys', 'lockHotkeys');

// Resolves to undefined if it failed, which is shown.
export async function readHotkeys(): Promise<HotkeyCodes | undefined> {
  try {
    return readHotkeyCodes(await call('getHotkeys'));
  } catch (reason) {
    showFailure('read the hotkeys', reason);
    return undefined;
  }
}

export async function setHotkey(id: HotkeyId, code: number): Promise<boolean> {
  return (await runRefusable('change the hotkey', 'setHotkey', `${kCaptureWords[id]},${code}`)) !== null;
}
export const removeTarget = (index: number) =>
  runCommand('remove the key', 'removeKeySpamTarget', String(index));
export const setChordMode = (chord: boolean) =>
  runCommand('change the key order', 'setKeySpamChordMode', flag(chord));

export const cancelPick = () => runCommand('end the pick', 'cancelPick');
export const pickLocation = () => runCommand('wait for a location', 'pickLocation');

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

// A fixed location that has not been picked yet is picked at once.
export async function chooseLocationMode(locationMode: AutoclickerSettings['locationMode']): Promise<void> {
  await changeAutoclicker({ locationMode });
  if (lacksLocation.peek() && isMainWindow()) await pickLocation();
}

export function changeHoldAutoclicker(holdAutoclicker: boolean): Promise<void> {
  const hotkeys = { ...settings.value.hotkeys, holdAutoclicker };
  return changeSettings({ hotkeys }, 'setHoldMode', `auto,${flag(holdAutoclicker)}`);
}

export function changeHoldKeySpammer(holdKeySpammer: boolean): Promise<void> {
  const hotkeys = { ...settings.value.hotkeys, holdKeySpammer };
  return changeSettings({ hotkeys }, 'setHoldMode', `keyspam,${flag(holdKeySpammer)}`);
}

// Edits of the macro. Each is one command, made at the revision that the page shows. The page makes the same edit in
// its own list: a macro may have a million events, which are not fetched again for each.
function storeEdited(list: Columns, edited: Columns, removed?: Uint32Array): void {
  if (events.peek() !== list) return; // a newer list has arrived meanwhile
  storeChangedEvents(edited, removed);
  if (status.value.eventCount !== edited.count) status.value = { ...status.value, eventCount: edited.count };
}

// "1,3-5,9" for the ascending indexes 1, 3, 4, 5 and 9.
function rangesText(indexes: Uint32Array): string {
  const ranges: string[] = [];
  for (let i = 0; i < indexes.length; ) {
    const first = indexes[i] as number;
    let last = first;
    while (++i < indexes.length && indexes[i] === last + 1) last++;
    ranges.push(last > first ? `${first}-${last}` : String(first));
  }
  return ranges.join(',');
}

// `indexes` ascending, as in the other edits. Each edit resolves to whether it worked.
export async function deleteEvents(indexes: Uint32Array): Promise<boolean> {
  const list = events.peek();
  const what = indexes.length > 1 ? 'delete the events' : 'delete the event';
  const result = await runRefusable(what, 'deleteMacroEvents', `${list.revision},${rangesText(indexes)}`);
  if (result) storeEdited(list, withoutEvents(list, indexes, result.revision), indexes);
  return result !== null;
}

export async function shiftEvents(indexes: Uint32Array, seconds: number): Promise<boolean> {
  const list = events.peek();
  const shift = seconds.toFixed(6);
  const argument = `${list.revision},${shift},${rangesText(indexes)}`;
  const result = await runRefusable('shift the events', 'shiftMacroEvents', argument);
  const shifted = (index: number) =>
    Math.max(0, Number(((list.time[index] as number) + Number(shift)).toFixed(6)));
  if (result) storeEdited(list, withTimes(list, indexes, shifted, result.revision));
  return result !== null;
}

export async function retimeEvent(index: number, seconds: number): Promise<boolean> {
  const list = events.peek();
  const time = seconds.toFixed(6);
  const result = await runRefusable(
    'change the time',
    'retimeMacroEvents',
    `${list.revision},${index},${time}`,
  );
  if (result)
    storeEdited(
      list,
      withTimes(list, Uint32Array.of(index), () => Number(time), result.revision),
    );
  return result !== null;
}

// Resolves to how many releases were added, or to undefined if it failed.
export async function addMissingReleases(): Promise<number | undefined> {
  const result = await runRefusable('add the releases', 'addMissingReleases', String(events.peek().revision));
  if (result) await fetchCurrentEvents();
  return result?.changed;
}

// Resolves to how many events it dropped, by comparing the two lists, or to undefined if it failed.
export async function optimiseMacro(): Promise<number | undefined> {
  const before = events.peek().count;
  const worked = await runCommand('optimise the macro', 'optimizeMacro');
  await fetchCurrentEvents();
  return worked ? before - events.peek().count : undefined;
}

// Resolves when the page has the macro as it is now.
async function fetchCurrentEvents(): Promise<void> {
  await pollNow();
  await fetchEvents();
}

// Brings the macro back as it was before a step of the history, or forwards again. The profile of the step becomes the
// current one.
export async function restoreMacro(id: number): Promise<boolean> {
  noteSettingsEdit();
  const result = await runRefusable('restore the macro', 'restoreMacro', String(id));
  await Promise.all([fetchProfiles(), fetchSettings(), fetchCurrentEvents()]);
  return result !== null;
}

// Profiles. Each of these commands changes the settings, the macro and the list together.
async function runProfileCommand(what: string, name: string, ...args: string[]): Promise<boolean> {
  noteSettingsEdit();
  const worked = await runCommand(what, name, ...args);
  await Promise.all([fetchProfiles(), fetchSettings(), fetchCurrentEvents()]);
  return worked;
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

// Puts the tool settings to use that the file of the last import had.
export async function useImportedSettings(): Promise<boolean> {
  noteSettingsEdit();
  const result = await runRefusable('use the settings of the file', 'useImportedSettings', '');
  await fetchSettings();
  return result !== null;
}

// Opens a file dialog of the program. Resolves to the program's report when the dialog is closed, or to undefined if it
// failed or another dialog is open.
export async function openFileDialog(which: 'import' | 'export'): Promise<unknown> {
  if (fileDialog.value) return undefined;
  fileDialog.value = which;
  try {
    return await call(which === 'import' ? 'importProfile' : 'exportMacro');
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

export async function setCountdown(countdownSeconds: number): Promise<void> {
  additionalSettings.value = { countdownSeconds };
  const argument = `countdownSeconds,${countdownSeconds}`;
  if (!(await runRefusable('change the preference', 'setAdditionalSetting', argument)))
    await fetchAdditionalSettings();
}

export function setPanelMinimised(id: PanelId, minimised: boolean): Promise<void> {
  const others = appSettings.value.minimizedPanels.filter((other) => other !== id);
  const changes = { minimizedPanels: minimised ? [...others, id] : others };
  return changeAppSettings(changes, 'setAppSetting', `min:${id},${flag(minimised)}`);
}

export const setPanelOrder = (order: PanelId[]) =>
  changeAppSettings({ panelOrder: order }, 'setPanelOrder', order.join(','));

export const openDataFolder = () => runCommand('open the data folder', 'openDataFolder');
export const openLink = (which: 'docs' | 'discord') => runCommand('open the page', 'openLink', which);
