// The state of the page: what the program has reported, and what the page shows. The panels are a view of these
// signals.
import { computed, signal } from '@preact/signals';
import { type Columns, makeColumns } from './event-columns';
import {
  type PanelId,
  readAbout,
  readAdditionalSettings,
  readAppSettings,
  readKeyNames,
  readProfiles,
  readProgress,
  readSettings,
  readStatus,
} from './reports';

// The defaults of the reports, until the first ones arrive.
export const status = signal(readStatus({}));
export const settings = signal(readSettings({}));
export const appSettings = signal(readAppSettings({}));
export const about = signal(readAbout({}));
export const additionalSettings = signal(readAdditionalSettings({}));
export const profiles = signal(readProfiles({}));
export const progress = signal(readProgress({}));
export const keyNames = signal(readKeyNames({}));
export const events = signal<Columns>(makeColumns(-1));

// How the last change of `events` relates the two lists.
export interface ListChange {
  before: Columns;
  after: Columns;
  removed: Uint32Array; // indexes in `before`, ascending; the others keep their order
}
export let listChange: ListChange | null = null;

// Stores a list that differs from the one before only by removed, retimed and appended events.
export function storeChangedEvents(after: Columns, removed: Uint32Array = new Uint32Array(0)): void {
  listChange = { before: events.peek(), after, removed };
  events.value = after;
}

// True once the first reports have arrived or timed out. The page is invisible before, so nothing jumps.
export const known = signal(false);

// The panel that shows its Move buttons; empty for none.
export const arranging = signal<PanelId | ''>('');
// The text for screen readers after a panel has moved.
export const announcement = signal('');
// The sentence about the last command that failed, until it is dismissed or a command works.
export const failure = signal('');
// The file dialog of the program that is open; empty for none.
export const fileDialog = signal<'' | 'import' | 'export'>('');
export const preferencesOpen = signal(false);
export const helpOpen = signal(false);
// The text while the program does not answer. An open file dialog may keep it from answering, which is no fault.
export const unanswered = computed(() =>
  fileDialog.value ? 'A file dialog is open' : 'Waiting for Varnelle to answer',
);
// False while the program has not answered a poll for seconds.
export const answering = signal(true);

export const recording = computed(() => status.value.state === 'Recording');
export const playing = computed(() => status.value.state === 'Playing');
export const clicking = computed(() => status.value.clicking);
export const pressing = computed(() => status.value.pressing);
export const locked = computed(() => status.value.lockEnabled && !status.value.unlocked);
export const hotkeysOff = computed(() => !appSettings.value.hotkeysEnabled);
// What the program waits for a key for.
export const capture = computed(() => status.value.capture);
export const picking = computed(() => progress.value.picking);
// Whether the click location is fixed but has not been picked yet: the defaults of the position stand for none.
export const lacksLocation = computed(() => {
  const { locationMode, fixedX, fixedY } = settings.value.autoclicker;
  return locationMode === 'fixed' && fixedX === 0 && fixedY === 0;
});
export const eventCount = computed(() => status.value.eventCount);
// True while the program has a newer macro than the page.
export const eventsLoading = computed(() => progress.value.revision > events.value.revision);
// The time of the latest event, in seconds. A retimed event keeps its index, so the list may be out of order.
export const macroLength = computed(() => {
  let longest = 0;
  const { time } = events.value;
  for (const seconds of time) if (seconds > longest) longest = seconds;
  return longest;
});
