// Fetches what the status poll does not carry: settings, preferences, profiles, events.
import { call, isMainWindow } from './bridge';
import { type Columns, equalPrefix, resized } from './event-columns';
import {
  readAbout,
  readAdditionalSettings,
  readAppSettings,
  readKeyNames,
  readMacroRows,
  readProfiles,
  readRow,
  readSettings,
} from './reports';
import {
  about,
  additionalSettings,
  appSettings,
  events,
  eventsLoading,
  failure,
  keyNames,
  profiles,
  progress,
  settings,
  storeChangedEvents,
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

export async function fetchAdditionalSettings(): Promise<void> {
  try {
    additionalSettings.value = readAdditionalSettings(await call('getAdditionalSettings'));
  } catch (reason) {
    showFailure('read the preferences', reason);
  }
}

const kRowsAtOnce = 50_000; // so that neither the program nor the page is busy for long

let fetching: Promise<void> | null = null;
// The revision at which the last fetch failed, so that not every poll tries again.
let failedRevision = -1;

// Fetches the events that the page does not have yet. Resolves when the page has the macro of the last poll, or if
// fetching fails.
export function fetchEvents(): Promise<void> {
  fetching ??= fetchNewEvents().finally(() => (fetching = null));
  return fetching;
}

// Fetches the events if the last poll has shown a newer macro.
export function fetchChangedEvents(): void {
  if (eventsLoading.peek() && progress.peek().revision !== failedRevision) void fetchEvents();
}

async function fetchNewEvents(): Promise<void> {
  const before = events.peek();
  try {
    const list = await fetchRows(before);
    failedRevision = -1;
    // An edit of the page's own may have stored a newer list meanwhile.
    if (list.revision <= events.peek().revision) return;
    if (events.peek() === before && equalPrefix(before, list) === before.count) storeChangedEvents(list);
    else events.value = list;
  } catch (reason) {
    failedRevision = progress.peek().revision;
    showFailure('read the events', reason);
  }
}

// An append keeps the events that the page has.
async function fetchRows(before: Columns): Promise<Columns> {
  let kept = before.revision >= progress.peek().rewritten ? before.count : 0;
  let list = before;
  for (;;) {
    const part = readMacroRows(await call('getMacroRows', `${kept},${kRowsAtOnce}`));
    if (kept > 0 && part.rewritten > list.revision) {
      kept = 0;
      continue;
    }
    const end = Math.min(part.total, kept + part.rows.length);
    // The columns that the store has must not change.
    if (list === before || list.count < part.total) list = resized(list, kept, part.total);
    for (let i = kept; i < end; i++) readRow(part.rows[i - kept], list, i);
    list.revision = part.revision;
    kept = end;
    if (end === part.total || part.rows.length === 0)
      return end === list.count ? list : resized(list, end, end);
  }
}

export async function fetchKeyNames(): Promise<void> {
  try {
    keyNames.value = readKeyNames(await call('getKeyNames'));
  } catch (reason) {
    showFailure('read the names of the keys', reason);
  }
}
