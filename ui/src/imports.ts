// Macros from outside and to it: the program's file dialogs, the macro that it holds back, and what it tells of
// imports by itself.
import { effect, signal } from '@preact/signals';
import { call, has } from './bridge';
import { cancelImport, confirmImport, switchProfile, withFileDialog } from './commands';
import { fetchEvents, fetchProfiles, fetchSettings, noteSettingsEdit, showFailure } from './fetch';
import { say, tell } from './notices';
import { type HeldMacro, readPending, readPendingSummary } from './pending';
import { pollNow } from './poll';
import { profiles, recording, settings, status } from './store';

// The macro to decide on.
export const held = signal<HeldMacro | null>(null);
// True where it has taken the place of one that was not decided.
export const heldReplaced = signal(false);
// True while the program has not yet answered the decision.
export const deciding = signal(false);

// What is left to know after an import, for as long as it holds. An import with tool settings leaves the tools as they
// are; one without puts them back to their defaults.
export interface ImportNote {
  reset: boolean; // the tools' settings have changed with the import
  holds: string; // as whatItHoldsFor, at the time of the import
}
export const importNote = signal<ImportNote | null>(null);

// How often the program has told of an import by itself.
let importsTold = 0;

function toolSettings(): string {
  const { sh, sm, ss, sms, sbtn, stype, rptMode, rptTimes, locMode, fixedX, fixedY } = settings.value;
  const { ksh, ksm, kss, ksms, ksRptMode, ksRptTimes } = settings.value;
  const clicker = [sh, sm, ss, sms, sbtn, stype, rptMode, rptTimes, locMode, fixedX, fixedY];
  return [...clicker, ksh, ksm, kss, ksms, ksRptMode, ksRptTimes].join();
}

// While this stays the same there is something to say of the import. A change of a tool's settings replaces those that
// came with the current profile.
function whatItHoldsFor(reset: boolean): string {
  const { current, names } = profiles.value;
  const { keySpamTargets, keySpamChord } = status.value;
  const profile = [current, names[current]];
  return JSON.stringify(reset ? profile : [profile, toolSettings(), keySpamTargets, keySpamChord]);
}

// The new profile is the current one.
async function announceImport(): Promise<void> {
  const before = toolSettings();
  noteSettingsEdit();
  const [listed] = await Promise.all([fetchProfiles(), fetchSettings(), fetchEvents()]);
  const { names, current } = profiles.value;
  const name = names[current];
  say(listed && name ? `Imported as ${name}` : 'Imported');
  const reset = toolSettings() !== before;
  importNote.value = { reset, holds: whatItHoldsFor(reset) };
  await pollNow();
  if (recording.value) {
    tell(
      'This import came in while a recording ran. What was recorded so far is in the profile of before; ' +
        'what is recorded from now on goes into the imported one, behind its own events.',
    );
  }
}

export async function useImportedSettings(): Promise<void> {
  importNote.value = null;
  await switchProfile(profiles.value.current);
}

// The program does not tell whether a file was written.
export async function exportProfile(): Promise<void> {
  await withFileDialog('export');
}

export async function importProfile(): Promise<void> {
  const answer = await withFileDialog('import');
  if (typeof answer !== 'object' || answer === null) return;
  const { outcome, message } = answer as Record<string, unknown>;
  if (outcome === 'imported') await announceImport();
  else if (outcome === 'pending') hold(readPending(answer));
  else if (outcome === 'error') tell(typeof message === 'string' ? message : 'The file was not imported.');
}

function hold(macro: HeldMacro | null, replaced = held.value !== null): void {
  if (!macro || macro.pendingId === held.value?.pendingId) return;
  held.value = macro;
  heldReplaced.value = replaced;
  void fetchSummary(macro.pendingId);
}

// The decision can be made without it, so a failure is not said.
async function fetchSummary(pendingId: string): Promise<void> {
  if (!has('getPendingMacroSummary')) return;
  try {
    const summary = readPendingSummary(await call('getPendingMacroSummary'), pendingId);
    if (summary && held.value?.pendingId === pendingId) held.value = { ...held.value, ...summary };
  } catch {
    return;
  }
}

async function fetchHeld(): Promise<HeldMacro | null> {
  return has('getPendingMacroImport') ? readPending(await call('getPendingMacroImport')) : null;
}

// The program takes a decision only with the id of what it holds, and says nothing where the id is an old one. So it is
// asked afterwards what it holds now; resolves to that.
async function decide(
  what: string,
  command: (pendingId: string) => Promise<boolean>,
  pendingId: string,
): Promise<HeldMacro | null | undefined> {
  if (deciding.value) return undefined;
  deciding.value = true;
  try {
    if (!(await command(pendingId))) return undefined;
    const now = await fetchHeld();
    if (now?.pendingId !== pendingId) return now;
    showFailure(what, '');
  } catch (reason) {
    showFailure(what, reason);
  } finally {
    deciding.value = false;
  }
  return undefined;
}

const letGo = (pendingId: string) => {
  if (held.value?.pendingId === pendingId) held.value = null;
};

export async function importHeld(pendingId: string): Promise<void> {
  const told = importsTold;
  const known = profiles.value.names.length;
  const now = await decide('import the macro', confirmImport, pendingId);
  if (now === undefined) return;
  let imported = importsTold !== told;
  if (!imported && (await fetchProfiles()) && profiles.value.names.length > known) {
    imported = true;
    void announceImport();
  }
  letGo(pendingId);
  if (imported) heldReplaced.value = false;
  if (now) hold(now, !imported);
  else if (!imported) tell('This macro was no longer held, so it was not imported. Import its file again.');
}

export async function dropHeld(pendingId: string): Promise<void> {
  const now = await decide('drop the macro', cancelImport, pendingId);
  if (now === undefined) return;
  letGo(pendingId);
  heldReplaced.value = false;
  say('Not imported');
  hold(now);
}

declare global {
  interface Window {
    onProfileImported?: () => void;
    onPendingMacroImport?: (document: unknown) => void;
  }
}

// What the program calls in the page.
export function listenForImports(): void {
  window.onProfileImported = () => {
    importsTold++;
    void announceImport();
  };
  window.onPendingMacroImport = (document) => hold(readPending(document));
  window.alert = (text?: unknown) => tell(String(text ?? ''));
  effect(() => {
    const note = importNote.value;
    if (note && note.holds !== whatItHoldsFor(note.reset)) importNote.value = null;
  });
}

// What the program has kept from before the page was there.
export async function fetchWaiting(): Promise<void> {
  try {
    hold(await fetchHeld());
    if (!has('getPendingThemeAlert')) return;
    const text = await call('getPendingThemeAlert');
    if (typeof text === 'string') tell(text);
  } catch (reason) {
    showFailure('read what is waiting', reason);
  }
}
