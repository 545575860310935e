// Fetches what the status poll does not carry: settings, preferences, profiles, events.
import { call, isMainWindow } from './bridge';
import {
  type MacroEvent,
  readAbout,
  readAppSettings,
  readEvents,
  readProfiles,
  readSettings,
} from './reports';
import {
  about,
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

// The page shows its own changes at once. A reply to a request from before a change must not undo it.
let settingsEdits = 0;
export function noteSettingsEdit(): void {
  settingsEdits++;
}

export async function fetchSettings(): Promise<void> {
  const editsBefore = settingsEdits;
  try {
    const report = readSettings(await call('getSettings'));
    if (editsBefore !== settingsEdits) return;
    if (JSON.stringify(report) !== JSON.stringify(settings.value)) settings.value = report;
  } catch (reason) {
    showFailure('read the settings', reason);
  }
}

// Resolves to whether it worked.
export async function fetchProfiles(): Promise<boolean> {
  if (!isMainWindow()) return false;
  try {
    profiles.value = readProfiles(await call('getProfiles'));
    return true;
  } catch (reason) {
    showFailure('read the profiles', reason);
    return false;
  }
}

// Resolves to whether it worked.
export async function fetchAppSettings(): Promise<boolean> {
  if (!isMainWindow()) return false;
  try {
    appSettings.value = readAppSettings(await call('getAppSettings'));
    return true;
  } catch (reason) {
    showFailure('read the preferences', reason);
    return false;
  }
}

export async function fetchAbout(): Promise<void> {
  try {
    about.value = readAbout(await call('getAbout'));
  } catch (reason) {
    showFailure('read its version', reason);
  }
}

// An unchanged list keeps its records, so that the selection in it stays.
const isSameMacro = (a: readonly MacroEvent[], b: readonly MacroEvent[]) =>
  a.length === b.length &&
  a.every((event, i) => event.time === b[i]?.time && event.description === b[i]?.description);

// Only the reply to the last request counts.
let eventRequests = 0;
let lastRequest = Promise.resolve();

// Resolves when the last request is answered, which may be a later one.
export function fetchEvents(): Promise<void> {
  lastRequest = requestEvents();
  return lastRequest;
}

async function requestEvents(): Promise<void> {
  const request = ++eventRequests;
  eventsLoading.value = true;
  try {
    const list = readEvents(await call('getMacroEvents'));
    if (request !== eventRequests) return await lastRequest;
    if (!isSameMacro(list, events.value)) events.value = list;
    eventsFailedAt.value = -1;
  } catch (reason) {
    if (request !== eventRequests) return await lastRequest;
    eventsFailedAt.value = status.value.eventCount;
    showFailure('read the events', reason);
  } finally {
    if (request === eventRequests) eventsLoading.value = false;
  }
}
