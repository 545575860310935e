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
    title: 'No key stops the autoclicker',
    text: 'Hotkeys are off and no count is set, so it clicks until you press Stop in this window. At a high rate, the pointer may be hard to move here. Turn hotkeys on in the preferences, or set a count.',
    verb: 'Start clicking',
  },
  fastestClicking: {
    id: 'fastest-clicking',
    title: 'Fastest clicking',
    text: 'An interval of 0 counts as 1 ms, the shortest one. Other programs may lag, and may receive clicks for a while after the stop.',
    verb: 'Start clicking',
  },
  fastestPressing: {
    id: 'fastest-pressing',
    title: 'Fastest key presses',
    text: 'An interval of 0 counts as 1 ms, the shortest one. Other programs may lag, and may receive keys for a while after the stop.',
    verb: 'Start pressing',
  },
  looping: {
    id: 'looping-playback',
    title: 'Looping playback',
    text: 'Loop is on, so the macro repeats until you stop it. Press Stop in this window, or the play hotkey while hotkeys are on.',
    verb: 'Play in a loop',
  },
  replacing: {
    id: 'replacing-recording',
    title: 'Replace this recording?',
    text: 'A new recording replaces the events of this profile. Undo brings them back until you quit. Continue adds to the events, and a new profile keeps both. The record hotkey replaces them without asking.',
    verb: 'Replace recording',
  },
  // Shown in the question that is asked each time, not in a dialog of its own.
  losingEvents: {
    id: 'losing-events',
    title: '',
    text: 'Undo works until you quit. Export keeps a copy.',
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

export async function markSeen({ id }: Pick<Warning, 'id'>): Promise<void> {
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
