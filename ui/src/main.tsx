import { effect } from '@preact/signals';
import { render } from 'preact';
import { plugPromiseLeak } from './bridge';
import { cancelPick } from './commands';
import { cancelCountdown, watchCountdown } from './countdown';
import { refuseDrops } from './drops';
import { App } from './app';
import { arrangeFirstStart } from './first-start';
import { fitFirstWindow, installFit } from './fit';
import {
  fetchAdditionalSettings,
  fetchAppSettings,
  fetchKeyNames,
  fetchProfiles,
  fetchSettings,
} from './fetch';
import { followHistory } from './history';
import { watchHotkeys } from './hotkey-changes';
import { fetchPendingNotices, listenForImports } from './imports';
import { listenForSaveProblems } from './notices';
import { startPolling } from './poll';
import { appSettings, capture, helpOpen, known, picking } from './store';
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

// Esc ends what waits for the user, also where no control has the focus.
document.addEventListener('keydown', (event) => {
  if (event.key !== 'Escape') return;
  cancelCountdown();
  if (picking.value) void cancelPick();
});

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
followHistory();
watchCountdown();
watchHotkeys();
const root = document.getElementById('app');
if (root) {
  render(<App />, root);
  const preferences = fetchAppSettings().then((worked) => worked && arrangeFirstStart());
  const others = [fetchSettings(), fetchProfiles(), fetchKeyNames(), fetchAdditionalSettings()];
  void show(root, [preferences, ...others, startPolling()]);
}
