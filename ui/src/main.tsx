import { effect } from '@preact/signals';
import { render } from 'preact';
import { plugPromiseLeak } from './bridge';
import { App } from './app';
import { fitFirstWindow, installFit } from './fit';
import { fetchAppSettings, fetchProfiles, fetchSettings } from './fetch';
import { fetchWaiting, listenForImports } from './imports';
import { startPolling } from './poll';
import { appSettings, clicking, known, picking, playing } from './store';
import './theme.css';
import './app.css';
import './forced-colors.css';

plugPromiseLeak();

// The window is a tool, not a browser page: its menu is only of use where text is edited.
document.addEventListener('contextmenu', (event) => {
  const edited = event.target instanceof HTMLInputElement && event.target.type === 'text';
  if (!edited) event.preventDefault();
});

// A pick swallows the press that decides it, also one that cancels. So a press that reaches the page tells that no pick
// is under way any more, unless it may be one that the program itself makes.
document.addEventListener(
  'pointerdown',
  () => {
    if (!clicking.value && !playing.value) picking.value = false;
  },
  { capture: true },
);

effect(() => {
  document.documentElement.classList.toggle('still', appSettings.value.disableAnimations);
});

// The first answers decide how the page looks, so it is shown when they are in, or when they have taken too long.
const kFirstAnswers = 800; // ms
async function show(root: HTMLElement, answers: Promise<unknown>[]): Promise<void> {
  await Promise.race([
    Promise.all(answers),
    new Promise((resolve) => window.setTimeout(resolve, kFirstAnswers)),
  ]);
  // The answers are drawn before anything is seen.
  await new Promise((resolve) => window.setTimeout(resolve));
  root.classList.add('app--known');
  known.value = true;
  fitFirstWindow();
  // A sheet takes the focus, which only what is seen can have.
  void fetchWaiting();
}

installFit();
listenForImports();
const root = document.getElementById('app');
if (root) {
  render(<App />, root);
  void show(root, [fetchAppSettings(), fetchSettings(), fetchProfiles(), startPolling()]);
}
