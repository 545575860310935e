// The state of the page: what the program has reported, and what the page shows. The panels are a view of these
// signals.
import { computed, signal } from '@preact/signals';
import {
  type MacroEvent,
  type PanelId,
  readAbout,
  readAppSettings,
  readProfiles,
  readSettings,
  readStatus,
} from './reports';

// The defaults of the reports, until the first ones arrive.
export const status = signal(readStatus({}));
export const settings = signal(readSettings({}));
export const appSettings = signal(readAppSettings({}));
export const about = signal(readAbout({}));
export const profiles = signal(readProfiles({}));
export const events = signal<readonly MacroEvent[]>([]);
export const eventsLoading = signal(false);
// The event count at which fetching the list failed, so that not every poll tries again; -1 if it did not fail.
export const eventsFailedAt = signal(-1);

// True once the first reports have arrived or timed out. The page is invisible before, so nothing jumps.
export const known = signal(false);

// True while a location pick runs, as far as the page can know: the program does not report it.
export const picking = signal(false);
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
export const eventCount = computed(() => status.value.eventCount);
// The time of the latest event, in seconds. A retimed event keeps its index, so the list may be out of order.
export const macroLength = computed(() => {
  let longest = 0;
  for (const event of events.value) if (event.time > longest) longest = event.time;
  return longest;
});
