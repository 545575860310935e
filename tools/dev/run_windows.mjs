// Runs Varnelle.exe under Wine for a user. Wine has no WebView2, so that a Chromium window shows the page.
// Started by run_windows.sh; ends with the program or its page's window.
import { spawnSync } from 'node:child_process';
import { mkdirSync } from 'node:fs';
import { kMainTitle, makeInstallation, startNative } from '../../tests/program/harness.mjs';
import { launchBrowser, startWebViewServer } from '../../tests/program/web_view_server.mjs';

const browser = await launchBrowser({ headless: false });
const server = await startWebViewServer(browser);
const installation = makeInstallation();
const program = startNative(installation.program, [], {
  env: { ...process.env, VARNELLE_TEST_WEBVIEW_PORT: String(server.port) },
  cwd: installation.folder,
});
const view = await Promise.race([server.next(), program.ended.then(() => null)]);
if (view) {
  const page = await view.ready;
  await page.getByRole('status', { name: 'State' }).waitFor();
  console.log(`Running: ${kMainTitle}, its page in a Chromium window.`);
  mkdirSync('build/run', { recursive: true });
  spawnSync('import', ['-window', 'root', 'build/run/screenshot-windows.png']);
  console.log('Screenshot: build/run/screenshot-windows.png. Press Ctrl+C to end it.');
  await Promise.race([program.ended, new Promise((done) => page.once('close', done))]);
}
await server.close();
await browser.close();
installation.remove();
process.exit(program.result?.code ?? 0);
