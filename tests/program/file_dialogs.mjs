// Types into the system's file dialogs. An observer finds a dialog by its title.
import { basename } from 'node:path';
import { nativePath, onWindows } from './harness.mjs';
import { kPatienceMilliseconds, waitUntil } from './processes.mjs';
import { Key } from './xtest_input.mjs';

export const kOpen = 'Open';
export const kSaveAs = 'Save As';

export const dialogIsOpen = async (observer, title) => (await observer.window(title)).found;

// Resolves once the dialog has the keyboard.
export const waitForDialog = (observer, title) =>
  waitUntil(async () => (await observer.window(title)).active, `the dialog "${title}"`);

// Taps a key until `condition` holds: a question in front of the dialog takes one of the taps.
export async function tapUntil(input, key, condition, what, limitMilliseconds = kPatienceMilliseconds) {
  let tapped = 0;
  await waitUntil(
    async () => {
      if (await condition()) return true;
      if (Date.now() - tapped > 700) {
        await input.tap(key);
        tapped = Date.now();
      }
      return false;
    },
    what,
    limitMilliseconds,
  );
}

async function selectAll(input) {
  await input.keyDown(Key.LeftCtrl);
  await input.tap(Key.A);
  await input.keyUp(Key.LeftCtrl);
}

// Types the name of `file` as a user does, in place of a proposed one. On Linux a save dialog is in the right folder
// already.
export async function typeFileName(input, title, file) {
  await selectAll(input);
  await input.type(title === kSaveAs && !onWindows ? basename(file) : nativePath(file));
}

// Types the file's name into the dialog that has the keyboard, and waits until the dialog has accepted it. On a busy
// machine a dialog may lose a key: a name that it does not accept within some seconds is typed once more.
export async function giveFile(input, observer, title, file) {
  const isTaken = async () => !(await dialogIsOpen(observer, title));
  await typeFileName(input, title, file);
  try {
    await tapUntil(input, Key.Enter, isTaken, 'the dialog has accepted the name', 6000);
  } catch {
    await typeFileName(input, title, file);
    await tapUntil(input, Key.Enter, isTaken, 'the dialog has accepted the name');
  }
}
