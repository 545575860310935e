// Warnings before a button does something that may surprise the user. Hotkeys act at once. Each warning is shown until
// the user has confirmed it once; the program keeps which. A preference turns all of them off.
import { signal } from '@preact/signals';
import { call, isMainWindow } from './bridge';
import { fetchAppSettings, showFailure } from './fetch';
import { appSettings } from './store';

export interface Warning {
  id: string; // kept by the program; letters and hyphens only
  title: string;
  text: string;
  verb: string; // on the button that confirms
}

export const kWarnings = {
  endlessClicking: {
    id: 'endless-clicking',
    title: 'No key will stop the clicker',
    text: 'Hotkeys are off and the clicker has no count, so it clicks until you press Stop in this window. At a high rate the pointer may be hard to bring here. Turn hotkeys on in the preferences, or set a count.',
    verb: 'Start clicking',
  },
  fastestClicking: {
    id: 'fastest-clicking',
    title: 'As fast as it can click',
    text: 'An interval of zero counts as 1 ms: clicks as fast as the timer goes. Other programs may fall behind and go on clicking for a while after the stop.',
    verb: 'Start clicking',
  },
  fastestPressing: {
    id: 'fastest-pressing',
    title: 'As fast as it can press',
    text: 'An interval of zero counts as 1 ms: keys as fast as the timer goes. Other programs may fall behind and go on typing for a while after the stop.',
    verb: 'Start pressing',
  },
  looping: {
    id: 'looping-playback',
    title: 'This macro starts over by itself',
    text: 'Loop is on, so the macro plays again and again until you stop it: with Stop in this window, or with the play hotkey while hotkeys are on.',
    verb: 'Play in a loop',
  },
  replacing: {
    id: 'replacing-recording',
    title: 'A new recording replaces this one',
    text: 'The events of this profile are cleared first, and that cannot be undone. Continue adds to them instead; recorded in a new profile, both are kept. The record hotkey starts over without asking.',
    verb: 'Record anew',
  },
  // Shown in the question that is asked each time, not in a dialog of its own.
  losingEvents: {
    id: 'losing-events',
    title: '',
    text: 'This cannot be undone. Export keeps a copy.',
    verb: '',
  },
} as const satisfies Record<string, Warning>;

interface OpenWarning {
  warning: Warning;
  answer: (confirmed: boolean) => void;
}

// The warning whose dialog is open.
export const openWarning = signal<OpenWarning | null>(null);

// False in a panel's own window: its page does not know which warnings have been seen.
export function isDue({ id }: Warning): boolean {
  const { showWarnings, seenWarnings } = appSettings.value;
  return isMainWindow() && showWarnings && !seenWarnings.includes(id);
}

export async function markSeen({ id }: Warning): Promise<void> {
  const seen = appSettings.value.seenWarnings;
  if (seen.includes(id)) return;
  appSettings.value = { ...appSettings.value, seenWarnings: [...seen, id] };
  try {
    await call('markWarningSeen', id);
  } catch (reason) {
    showFailure('remember that you have seen this', reason);
    await fetchAppSettings();
  }
}

// Resolves to whether the user confirms, at once to true if the warning is not due. False if another warning is open.
export function confirmWarning(warning: Warning): Promise<boolean> {
  if (!isDue(warning)) return Promise.resolve(true);
  if (openWarning.value) return Promise.resolve(false);
  return new Promise((resolve) => {
    openWarning.value = {
      warning,
      answer: (confirmed) => {
        openWarning.value = null;
        if (confirmed) void markSeen(warning);
        resolve(confirmed);
      },
    };
  });
}
