import { effect } from '@preact/signals';
import { render } from 'preact';
import { plugPromiseLeak } from './bridge';
import { refuseDrops } from './drops';
import { App } from './app';
import { arrangeFirstStart } from './first-start';
import { fitFirstWindow, installFit } from './fit';
import { fetchAppSettings, fetchProfiles, fetchSettings } from './fetch';
import { fetchPendingNotices, listenForImports } from './imports';
import { listenForSaveProblems } from './notices';
import { startPolling } from './poll';
import { appSettings, capture, clicking, helpOpen, known, picking, playing } from './store';
import './theme.css';
import './app.css';
import './forced-colors.css';

plugPromiseLeak();
refuseDrops();

// The web view's context menu is useful only in text fields.
document.addEventListener('contextmenu', (event) => {
  const edited = event.target instanceof HTMLInputElement && event.target.type === 'text';
  if (!edited) event.preventDefault();
});

// The program swallows the press that ends a pick. So a press that reaches the page shows that the pick is over, unless
// the autoclicker or the playback may have made it.
document.addEventListener(
  'pointerdown',
  () => {
    if (!clicking.value && !playing.value) picking.value = false;
  },
  { capture: true },
);

document.addEventListener('keydown', (event) => {
  if (event.key !== 'F1' || capture.value) return;
  event.preventDefault();
  if (!document.querySelector('dialog[open]')) helpOpen.value = true;
});

// A ring in a window without the keyboard would show a second focus on the screen.
for (const [event, inactive] of [
  ['blur', true],
  ['focus', false],
] as const) {
  window.addEventListener(event, () => document.documentElement.classList.toggle('inactive', inactive));
}

effect(() => {
  document.documentElement.classList.toggle('still', appSettings.value.disableAnimations);
});

// Shows the page when the first reports have arrived or time out, so that nothing moves afterwards.
const kFirstReportsTimeout = 800; // ms
async function show(root: HTMLElement, reports: Promise<unknown>[]): Promise<void> {
  await Promise.race([
    Promise.all(reports),
    new Promise((resolve) => window.setTimeout(resolve, kFirstReportsTimeout)),
  ]);
  // Lets the page render the reports first.
  await new Promise((resolve) => window.setTimeout(resolve));
  root.classList.add('app--known');
  known.value = true;
  fitFirstWindow();
  // A dialog takes the focus, so it must not open before the page is visible.
  void fetchPendingNotices();
}

installFit();
listenForImports();
listenForSaveProblems();
const root = document.getElementById('app');
if (root) {
  render(<App />, root);
  const preferences = fetchAppSettings().then((worked) => worked && arrangeFirstStart());
  void show(root, [preferences, fetchSettings(), fetchProfiles(), startPolling()]);
}
