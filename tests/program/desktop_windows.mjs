// A desktop to test on: the Wine desktop that tests/windows/wine_env.sh has started. XTEST on its X server is real input
// for the programs.
import { spawnSync } from 'node:child_process';
import { setWineRegistryValue } from './processes.mjs';

export const kScreen = { width: 1024, height: 768 };

export const windowManagers = ['Wine'];

export async function openDesktop() {
  const display = /^:(\d+)$/.exec(process.env.DISPLAY ?? '')?.[1];
  if (!display || !process.env.WINEPREFIX) {
    throw new Error('no Wine desktop: run these tests by tests/program/run.sh windows BUILD_DIR');
  }
  // Relative moves are exact only without pointer acceleration.
  setWineRegistryValue('HKCU\\Control Panel\\Mouse', 'MouseSpeed', '0');
  return {
    env: { ...process.env },
    inputDisplay: display,
    repeatKeys: () => {}, // the only X server here is the outer one, whose keys must not repeat
    screenshot: (file) => spawnSync('import', ['-window', 'root', file], { timeout: 10000 }),
    close: async () => {},
  };
}
