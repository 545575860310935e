// The changes of macros that the program can undo and redo, and the notices that offer it.
import { effect, signal } from '@preact/signals';
import { call } from './bridge';
import { restoreMacro } from './commands';
import { showFailure } from './fetch';
import { counted } from './format';
import { doneNotice, type NoticeAction, showDone } from './notices';
import { type MacroHistory, readMacroHistory, type HistoryStep } from './reports';
import { progress, recording } from './store';

export const history = signal<MacroHistory>({ undo: [], redo: [] });

// The page's own words for the steps that it has made itself.
const ownWords = new Map<number, string>();
let isFetched = false;

const allSteps = () => [...history.peek().undo, ...history.peek().redo];
const newestId = () => Math.max(0, ...allSteps().map(({ id }) => id));

const kWords: Record<HistoryStep['reason'], (events: string, profile: string) => string> = {
  recording: (events) => `Replaced ${events}.`,
  undoContinue: () => 'Removed the continued recording.',
  clear: (events) => `Cleared ${events}.`,
  deleteProfile: (events, profile) => `Deleted \u201c${profile}\u201d with ${events}.`,
  optimise: () => 'Optimised the macro.',
  edit: () => 'Edited the macro.',
  addReleases: () => 'Added releases.',
};

// What a step has done, as a sentence.
export const stepWords = ({ id, reason, events, profile }: HistoryStep): string =>
  ownWords.get(id) ?? (kWords[reason] ?? kWords.edit)(counted(events, 'event'), profile);

// The steps that Undo and Redo take: those of the current profile.
export const nextUndo = () => history.value.undo.find(({ current }) => current);
export const nextRedo = () => history.value.redo.find(({ current }) => current);

async function restore(step: HistoryStep, verb: string): Promise<void> {
  const words = stepWords(step);
  if (!(await restoreMacro(step.id))) return;
  await fetchHistory();
  const back = verb === 'Undone' ? 'redo' : 'undo';
  const isKept = history.peek()[back].some(({ id }) => id === step.id);
  showDone(`${verb}: ${words}`, isKept ? [back === 'redo' ? redoAction(step) : undoAction(step)] : []);
}
export const undoStep = (step: HistoryStep) => restore(step, 'Undone');
const redoStep = (step: HistoryStep) => restore(step, 'Redone');

export function undoNewest(): void {
  const step = nextUndo();
  if (step) void undoStep(step);
}

export function redoNext(): void {
  const step = nextRedo();
  if (step) void redoStep(step);
}

const undoAction = (step: HistoryStep): NoticeAction => ({
  label: 'Undo',
  tip: 'Undoes this change of the macro.',
  press: () => void undoStep(step),
  isPossible: () => history.value.undo.some(({ id }) => id === step.id),
});
const redoAction = (step: HistoryStep): NoticeAction => ({
  label: 'Redo',
  tip: 'Makes this change again.',
  press: () => void redoStep(step),
  isPossible: () => history.value.redo.some(({ id }) => id === step.id),
});

// Makes a change of the macro and shows a notice of it that offers Undo. `words` is asked after the change. `actions`
// are offered as well. Resolves to whether the change worked.
export async function changeWithUndo(
  change: () => Promise<boolean>,
  words: () => string,
  actions: () => NoticeAction[] = () => [],
): Promise<boolean> {
  const newestBefore = newestId();
  if (!(await change())) return false;
  await fetchHistory();
  const [step] = history.peek().undo;
  const isKept = step !== undefined && step.id > newestBefore;
  if (isKept) ownWords.set(step.id, words());
  showDone(words(), [...actions(), ...(isKept ? [undoAction(step)] : [])]);
  return true;
}

// Only the reply to the last request counts.
let requests = 0;

export async function fetchHistory(): Promise<void> {
  const request = ++requests;
  try {
    const newestBefore = newestId();
    const report = readMacroHistory(await call('getMacroHistory'));
    if (request !== requests) return;
    history.value = report;
    const ids = new Set(allSteps().map(({ id }) => id));
    for (const id of ownWords.keys()) if (!ids.has(id)) ownWords.delete(id);
    // A recording may have been started by its hotkey, so its notice does not follow from a button.
    const [step] = report.undo;
    if (isFetched && step && step.id > newestBefore && step.reason === 'recording') {
      showDone(stepWords(step), [undoAction(step)]);
    }
    isFetched = true;
  } catch (reason) {
    showFailure('read the history of the macro', reason);
  }
}

// Follows the macro: every change of it may add a step. A recording is followed at its end.
export function followHistory(): void {
  let fetchedAt = NaN;
  effect(() => {
    const { revision } = progress.value;
    if (recording.value || revision === fetchedAt) return;
    fetchedAt = revision;
    void fetchHistory();
  });
  // A notice does not offer what the history no longer has.
  effect(() => {
    const notice = doneNotice.value;
    const possible = notice?.actions.filter((action) => action.isPossible());
    if (notice && possible && possible.length < notice.actions.length)
      doneNotice.value = { ...notice, actions: possible };
  });
}
