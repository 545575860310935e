// A desktop to test on: Wine with a virtual desktop, as tests/windows/wine_env.sh has started it for the runner. What
// XTEST does on its X server is real input for the programs.
import { spawnSync } from 'node:child_process';
import { setWineRegistryValue } from './processes.mjs';
import { openRealHand } from './real_hand.mjs';

export const kScreen = { width: 1024, height: 768 };

export const windowManagers = ['Wine'];

export async function openDesktop() {
  const display = /^:(\d+)$/.exec(process.env.DISPLAY ?? '')?.[1];
  if (!display || !process.env.WINEPREFIX) {
    throw new Error('no Wine desktop: run these tests by tests/program/run.sh windows BUILD_DIR');
  }
  // Relative moves are exact only without the pointer's acceleration.
  setWineRegistryValue('HKCU\\Control Panel\\Mouse', 'MouseSpeed', '0');
  const hand = await openRealHand(display);
  await hand.moveTo(kScreen.width - 30, kScreen.height - 30);
  return {
    home: 'windows',
    env: { ...process.env },
    hand,
    repeatKeys: () => {}, // there is one server, and on it the hand needs its keys unrepeated
    screenshot: (file) => spawnSync('import', ['-window', 'root', file], { timeout: 10000 }),
    close: async () => hand.close(),
  };
}
