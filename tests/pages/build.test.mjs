// The built page: type-checked, one self-contained text, within the size limit.
import assert from 'node:assert/strict';
import { execFileSync, spawnSync } from 'node:child_process';
import { mkdtempSync, readdirSync, readFileSync, rmSync } from 'node:fs';
import { tmpdir } from 'node:os';
import { join } from 'node:path';
import { after, before, test } from 'node:test';
import { root } from './browser.mjs';

let folder;
before(() => (folder = mkdtempSync(join(tmpdir(), 'varnelle-build-'))));
after(() => rmSync(folder, { recursive: true }));

test('builds one self-contained ASCII page', () => {
  execFileSync(process.execPath, [join(root, 'ui/build.mjs'), folder], { stdio: 'inherit' });
  assert.deepEqual(readdirSync(folder).sort(), ['index.html', 'vendor']);
  assert.ok(readFileSync(join(folder, 'vendor/Sortable.min.js'), 'utf8').includes('Sortable'));
  const page = readFileSync(join(folder, 'index.html'), 'utf8');
  assert.ok(Buffer.byteLength(page) < 0x200000);
  assert.ok(/^[\x00-\x7f]*$/.test(page), 'plain ASCII, so that no backend reads it in another encoding');
  assert.equal(page.split('</body>').length, 2);
  assert.equal(page.split('<script>').length, 2);
  assert.equal(/(src|href)\s*=\s*["'][^"'#]/.exec(page.replace(/<script>.*<\/script>/s, '')), null);
  assert.equal(/@import|url\((?!data:)/.exec(page), null);
  assert.ok(!page.includes('localStorage'));
});

test('prints its usage without a folder', () => {
  const run = spawnSync(process.execPath, [join(root, 'ui/build.mjs')], { encoding: 'utf8' });
  assert.equal(run.status, 2);
  assert.match(run.stderr, /^usage: /);
});
