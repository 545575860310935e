// How the page tests build the page and start Debian's Chromium.
import { execFileSync } from 'node:child_process';
import { mkdtempSync, readFileSync, rmSync } from 'node:fs';
import { tmpdir } from 'node:os';
import { join } from 'node:path';
import { fileURLToPath } from 'node:url';

export const root = fileURLToPath(new URL('../../', import.meta.url));
export const kBrowserOptions = {
  executablePath: '/usr/bin/chromium',
  args: ['--no-sandbox', '--js-flags=--expose-gc'],
};

// Builds the page and returns its text.
export function buildPage() {
  const folder = mkdtempSync(join(tmpdir(), 'varnelle-page-'));
  try {
    execFileSync(process.execPath, [join(root, 'ui/build.mjs'), folder, '--no-check'], { stdio: 'inherit' });
    return readFileSync(join(folder, 'index.html'), 'utf8');
  } finally {
    rmSync(folder, { recursive: true });
  }
}
