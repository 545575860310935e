// The system's own file dialogs, typed into by a real hand. An observer finds them by their titles.
import { basename } from 'node:path';
import { nativePath, onWindows } from './harness.mjs';
import { kPatienceMilliseconds, waitUntil } from './processes.mjs';
import { Key } from './real_hand.mjs';

export const kOpen = 'Open';
export const kSaveAs = 'Save As';

export const dialogIsOpen = async (observer, title) => (await observer.window(title)).found;

// Resolves once the dialog has the keyboard.
export const waitForDialog = (observer, title) =>
  waitUntil(async () => (await observer.window(title)).active, `the dialog "${title}"`);

// Taps a key again and again until `condition` holds: a question in front of the dialog takes one of them.
export async function tapUntil(hand, key, condition, what, limitMilliseconds = kPatienceMilliseconds) {
  let tapped = 0;
  await waitUntil(
    async () => {
      if (await condition()) return true;
      if (Date.now() - tapped > 700) {
        await hand.tap(key);
        tapped = Date.now();
      }
      return false;
    },
    what,
    limitMilliseconds,
  );
}

// The name of `file` as a person types it. On Linux a dialog to save is in the right folder already.
export async function typeFileName(hand, title, file) {
  await hand.type(title === kSaveAs && !onWindows ? basename(file) : nativePath(file));
}

// Types the file's name into the dialog that has the keyboard, and waits until it has taken it. On a busy machine a
// dialog may lose a key; a name that it does not take within some seconds is typed once more.
export async function giveFile(hand, observer, title, file) {
  const isTaken = async () => !(await dialogIsOpen(observer, title));
  await typeFileName(hand, title, file);
  try {
    await tapUntil(hand, Key.Enter, isTaken, 'the dialog has taken the name', 6000);
  } catch {
    await hand.keyDown(Key.LeftCtrl);
    await hand.tap(Key.A);
    await hand.keyUp(Key.LeftCtrl);
    await typeFileName(hand, title, file);
    await tapUntil(hand, Key.Enter, isTaken, 'the dialog has taken the name');
  }
}
