// Warnings before a step that may surprise. Each is shown until the person goes on from it once; the program keeps
// which, and the preferences can turn them all off.
import { signal } from '@preact/signals';
import { markWarningSeen } from './commands';
import { appSettings } from './store';

export interface Warning {
  id: string; // kept by the program; letters and hyphens only
  title: string;
  text: string;
  verb: string; // on the button that goes on
}

interface Question {
  warning: Warning;
  answer: (goOn: boolean) => void;
}

// The warning in sight, if there is one.
export const question = signal<Question | null>(null);

// Whether to go on. True at once where the warning has been seen or warnings are off; false while another is in sight.
export function goesOn(warning: Warning): Promise<boolean> {
  const { showWarnings, seenWarnings } = appSettings.value;
  if (!showWarnings || seenWarnings.includes(warning.id)) return Promise.resolve(true);
  if (question.value) return Promise.resolve(false);
  return new Promise((resolve) => {
    question.value = {
      warning,
      answer: (goOn) => {
        question.value = null;
        if (goOn) void markWarningSeen(warning.id);
        resolve(goOn);
      },
    };
  });
}
