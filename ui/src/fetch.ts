// Asks the program for what the status poll does not carry: settings, events, profiles.
import { call, has } from './bridge';
import { type MacroEvent, readAppSettings, readEvents, readProfiles, readSettings } from './reports';
import {
  appSettings,
  events,
  eventsFailedAt,
  eventsLoading,
  failure,
  profiles,
  settings,
  status,
} from './store';

// `what` completes "Varnelle could not ...".
export function showFailure(what: string, reason: unknown): void {
  const cause = reason instanceof Error ? reason.message : typeof reason === 'string' ? reason : '';
  failure.value = `Varnelle could not ${what}${cause ? ` (${cause})` : ''}. Please try again.`;
}

// The page's own changes stand at once; an answer to a question asked before them must not undo them.
let settingsEdits = 0;
export function noteSettingsEdit(): void {
  settingsEdits++;
}

export async function fetchSettings(): Promise<void> {
  if (!has('getSettings')) return;
  const asked = settingsEdits;
  try {
    const report = readSettings(await call('getSettings'));
    if (asked !== settingsEdits) return;
    if (JSON.stringify(report) !== JSON.stringify(settings.value)) settings.value = report;
  } catch (reason) {
    showFailure('read the settings', reason);
  }
}

// Resolves to whether the list is the program's present one.
export async function fetchProfiles(): Promise<boolean> {
  if (!has('getProfiles')) return false;
  try {
    profiles.value = readProfiles(await call('getProfiles'));
    return true;
  } catch (reason) {
    showFailure('read the profiles', reason);
    return false;
  }
}

export async function fetchAppSettings(): Promise<void> {
  if (!has('getAppSettings')) return;
  try {
    appSettings.value = readAppSettings(await call('getAppSettings'));
  } catch (reason) {
    showFailure('read the preferences', reason);
  }
}

// What is selected in the list stays selected where a new answer says what the page knew.
const isSameMacro = (a: readonly MacroEvent[], b: readonly MacroEvent[]) =>
  a.length === b.length && a.every((event, i) => event.time === b[i]?.time && event.desc === b[i]?.desc);

// Only the answer to the last question counts.
let eventQuestions = 0;
let lastQuestion = Promise.resolve();

// Resolves when the last question is answered, which may be a later one.
export function fetchEvents(): Promise<void> {
  if (has('getMacroEvents')) lastQuestion = askForEvents();
  return lastQuestion;
}

async function askForEvents(): Promise<void> {
  const asked = ++eventQuestions;
  eventsLoading.value = true;
  try {
    const list = readEvents(await call('getMacroEvents'));
    if (asked !== eventQuestions) return await lastQuestion;
    if (!isSameMacro(list, events.value)) events.value = list;
    eventsFailedAt.value = -1;
  } catch (reason) {
    if (asked !== eventQuestions) return await lastQuestion;
    eventsFailedAt.value = status.value.count;
    showFailure('read the events', reason);
  } finally {
    if (asked === eventQuestions) eventsLoading.value = false;
  }
}
