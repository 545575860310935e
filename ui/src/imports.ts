// Imports and exports of macros: the file dialogs, the pending import and what the program reports by itself.
import { effect, signal } from '@preact/signals';
import { call, isMainWindow } from './bridge';
import { cancelImport, confirmImport, openFileDialog, switchProfile } from './commands';
import {
  fetchAbout,
  fetchEvents,
  fetchProfiles,
  fetchSettings,
  noteSettingsEdit,
  showFailure,
} from './fetch';
import { showDone, showMessage } from './notices';
import { pollNow } from './poll';
import { type PendingImport, readImportOutcome, readPendingImport, readPendingSummary } from './reports';
import { about, profiles, recording, settings, status } from './store';

// The macro to decide on.
export const pendingImport = signal<PendingImport | null>(null);
// True if it replaced another one that was not decided.
export const pendingReplaced = signal(false);
// True until the program has answered the decision.
export const deciding = signal(false);

// What is left to show after an import, while it holds. An import with tool settings leaves the tools as they are; one
// without resets them to their defaults.
export interface ImportNote {
  reset: boolean; // the import has changed the settings of the tools
  basis: string; // noteBasis() at the time of the import
}
export const importNote = signal<ImportNote | null>(null);

const kWaylandText = 'This is a Wayland session. Varnelle sees and reaches X11 applications only.';

// How many imports the program has reported by itself.
let reportedImports = 0;

const toolSettings = () => JSON.stringify([settings.value.autoclicker, settings.value.keySpammer]);

// The note holds while this stays the same. A change of a tool's settings replaces those that came with the profile.
function noteBasis(reset: boolean): string {
  const { current, names } = profiles.value;
  const profile = [current, names[current]];
  return JSON.stringify(reset ? profile : [profile, toolSettings(), status.value.keySpammer]);
}

// The imported profile is the current one.
async function announceImport(): Promise<void> {
  const before = toolSettings();
  noteSettingsEdit();
  const [fetched] = await Promise.all([fetchProfiles(), fetchSettings(), fetchEvents()]);
  const { names, current } = profiles.value;
  const name = names[current];
  showDone(fetched && name ? `Imported as ${name}` : 'Imported');
  const reset = toolSettings() !== before;
  importNote.value = { reset, basis: noteBasis(reset) };
  await pollNow();
  if (recording.value) {
    showMessage(
      'The import arrived during a recording. The events until then are in the previous profile. ' +
        'New events are added to the imported profile.',
    );
  }
}

export async function useImportedSettings(): Promise<void> {
  importNote.value = null;
  await switchProfile(profiles.value.current);
}

// The program does not report whether it wrote a file.
export async function exportProfile(): Promise<void> {
  await openFileDialog('export');
}

export async function importProfile(): Promise<void> {
  const result = readImportOutcome(await openFileDialog('import'));
  if (result.outcome === 'imported') await announceImport();
  else if (result.outcome === 'pending') showPendingImport(result.pendingImport);
  else if (result.outcome === 'error') showMessage(result.message);
}

function showPendingImport(macro: PendingImport | null, replaced = pendingImport.value !== null): void {
  if (!macro || macro.pendingId === pendingImport.value?.pendingId) return;
  pendingImport.value = macro;
  pendingReplaced.value = replaced;
  void fetchSummary(macro.pendingId);
}

// The user can decide without the summary, so a failure is not shown.
async function fetchSummary(pendingId: string): Promise<void> {
  try {
    const summary = readPendingSummary(await call('getPendingMacroSummary'), pendingId);
    if (summary && pendingImport.value?.pendingId === pendingId)
      pendingImport.value = { ...pendingImport.value, ...summary };
  } catch {
    return;
  }
}

const fetchPendingImport = async () => readPendingImport(await call('getPendingMacroImport'));

// The program takes a decision only with the id of its pending import, and ignores an outdated id silently. So ask
// afterwards what is pending. Resolves to that, or to undefined if the decision failed.
async function decide(
  what: string,
  command: (pendingId: string) => Promise<boolean>,
  pendingId: string,
): Promise<PendingImport | null | undefined> {
  if (deciding.value) return undefined;
  deciding.value = true;
  try {
    if (!(await command(pendingId))) return undefined;
    const now = await fetchPendingImport();
    if (now?.pendingId !== pendingId) return now;
    showFailure(what, '');
  } catch (reason) {
    showFailure(what, reason);
  } finally {
    deciding.value = false;
  }
  return undefined;
}

function closePendingImport(pendingId: string): void {
  if (pendingImport.value?.pendingId === pendingId) pendingImport.value = null;
}

export async function acceptPendingImport(pendingId: string): Promise<void> {
  const reportedBefore = reportedImports;
  const profilesBefore = profiles.value.names.length;
  const now = await decide('import the macro', confirmImport, pendingId);
  if (now === undefined) return;
  let imported = reportedImports !== reportedBefore;
  if (!imported && (await fetchProfiles()) && profiles.value.names.length > profilesBefore) {
    imported = true;
    void announceImport();
  }
  closePendingImport(pendingId);
  if (imported) pendingReplaced.value = false;
  if (now) showPendingImport(now, !imported);
  else if (!imported)
    showMessage('This macro is no longer pending, so it was not imported. Import the file again.');
}

export async function rejectPendingImport(pendingId: string): Promise<void> {
  const now = await decide('reject the macro', cancelImport, pendingId);
  if (now === undefined) return;
  closePendingImport(pendingId);
  pendingReplaced.value = false;
  showDone('Not imported');
  showPendingImport(now);
}

declare global {
  interface Window {
    onProfileImported?: () => void;
    onPendingMacroImport?: (document: unknown) => void;
  }
}

// Defines the functions that the program calls in the page.
export function listenForImports(): void {
  window.onProfileImported = () => {
    reportedImports++;
    void announceImport();
  };
  window.onPendingMacroImport = (document) => showPendingImport(readPendingImport(document));
  window.alert = (text?: unknown) => showMessage(String(text ?? ''));
  effect(() => {
    const note = importNote.value;
    if (note && note.basis !== noteBasis(note.reset)) importNote.value = null;
  });
}

// Shows what the program has kept since before the page was loaded.
export async function fetchPendingNotices(): Promise<void> {
  if (!isMainWindow()) return;
  try {
    showPendingImport(await fetchPendingImport());
    const text = await call('getPendingThemeAlert');
    if (typeof text === 'string') showMessage(text);
    await fetchAbout();
    if (about.value.session === 'wayland') showMessage(kWaylandText);
  } catch (reason) {
    showFailure('read the pending import', reason);
  }
}
