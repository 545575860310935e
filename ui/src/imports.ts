// Imports and exports of macros: the file dialogs, the pending import and what the program reports by itself.
import { effect, signal } from '@preact/signals';
import { call, isMainWindow } from './bridge';
import { cancelImport, confirmImport, openFileDialog, useImportedSettings } from './commands';
import { fetchAbout, fetchProfiles, fetchSettings, noteSettingsEdit, showFailure } from './fetch';
import { counted, shortClock } from './format';
import { type NoticeAction, showDone, showMessage } from './notices';
import { pollNow } from './poll';
import {
  type LastImport,
  type PendingImport,
  readExportOutcome,
  readImportOutcome,
  readLastImport,
  readPendingImport,
  readPendingSummary,
} from './reports';
import { about, profiles, recording } from './store';

// The macro to decide on.
export const pendingImport = signal<PendingImport | null>(null);
// True if it replaced another one that was not decided.
export const pendingReplaced = signal(false);
// True until the program has answered the decision.
export const deciding = signal(false);

// The last import that made a profile, while that profile is the current one.
export const importNote = signal<LastImport | null>(null);

const kWaylandText = 'This is a Wayland session. Varnelle sees and reaches X11 applications only.';

// How many imports the program has reported by itself.
let reportedImports = 0;
// The newest import that the page has shown.
let shownImport = 0;

// Resolves to the last import if the page has not shown it yet.
async function fetchNewImport(): Promise<LastImport | undefined> {
  try {
    const last = readLastImport(await call('getLastImport'));
    if (last.id <= shownImport) return undefined;
    shownImport = last.id;
    return last;
  } catch (reason) {
    showFailure('read what was imported', reason);
    return undefined;
  }
}

const noteStillHolds = ({ profile }: LastImport) => profiles.value.names[profiles.value.current] === profile;

// "340 events, 0:12. 2 lines could not be read."
function importedText({ events, seconds, skippedLines }: LastImport): string {
  const skipped = skippedLines > 0 ? ` ${counted(skippedLines, 'line')} could not be read.` : '';
  return `${counted(events, 'event')}, ${shortClock(seconds)}.${skipped}`;
}

const kUseSettings: NoticeAction = {
  label: 'Use the file\u2019s tool settings',
  tip: 'Sets both tools as the file says.',
  press: () => void useFileSettings(),
  isPossible: () => importNote.value?.settingsUsable === true,
};

// The imported profile is the current one.
async function announceImport(): Promise<void> {
  noteSettingsEdit();
  const last = await fetchNewImport();
  await Promise.all([fetchProfiles(), fetchSettings(), pollNow()]);
  if (last?.outcome === 'imported') {
    importNote.value = last;
    if (last.events === 0) {
      showMessage(`Imported \u201c${last.profile}\u201d: no events could be read from this file.`);
    } else {
      const text = `Imported as ${last.profile}: ${importedText(last)}`;
      showDone(text, last.settingsUsable ? [kUseSettings] : []);
    }
  } else {
    showDone('Imported');
  }
  if (recording.value) {
    showMessage(
      'The import arrived during a recording. The events until then are in the previous profile. ' +
        'New events are added to the imported profile.',
    );
  }
}

export async function useFileSettings(): Promise<void> {
  if (!(await useImportedSettings())) return;
  if (importNote.peek()) importNote.value = { ...(importNote.peek() as LastImport), settingsUsable: false };
  showDone('The tool settings of the file are in use.');
}

export async function exportProfile(): Promise<void> {
  const { outcome, file, message } = readExportOutcome(await openFileDialog('export'));
  if (outcome === 'written') showDone(`Exported as ${file}`);
  else if (outcome !== 'cancelled') showMessage(message);
}

export async function importProfile(): Promise<void> {
  const result = readImportOutcome(await openFileDialog('import'));
  if (result.outcome === 'imported') await announceImport();
  else if (result.outcome === 'pending') showPendingImport(result.pendingImport);
  else if (result.outcome === 'error') await showImportProblem(result.message);
}

// Shows a message of the program. The program calls a missing file corrupt as well, so the page says which it is.
async function showImportProblem(message: string): Promise<void> {
  const last = await fetchNewImport();
  const isMissing = last?.outcome === 'failed' && last.problem === 'notFound';
  showMessage(isMissing ? `The file \u201c${last.file}\u201d was not found.` : message);
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
  window.alert = (text?: unknown) => void showImportProblem(String(text ?? ''));
  effect(() => {
    const note = importNote.value;
    if (note && !noteStillHolds(note)) importNote.value = null;
  });
}

// Shows what the program has kept since before the page was loaded.
export async function fetchPendingNotices(): Promise<void> {
  if (!isMainWindow()) return;
  try {
    showPendingImport(await fetchPendingImport());
    const text = await call('getPendingThemeAlert');
    if (typeof text === 'string' && text !== '') await showImportProblem(text);
    await fetchAbout();
    if (about.value.session === 'wayland') showMessage(kWaylandText);
  } catch (reason) {
    showFailure('read the pending import', reason);
  }
}
