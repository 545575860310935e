import { effect } from '@preact/signals';
import { render } from 'preact';
import { plugPromiseLeak } from './bridge';
import { App } from './app';
import { fetchAppSettings, fetchProfiles, fetchSettings } from './fetch';
import { fetchWaiting, listenForImports } from './imports';
import { startPolling } from './poll';
import { appSettings, clicking, picking, playing } from './store';
import './theme.css';
import './app.css';

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

const root = document.getElementById('app');
if (root) render(<App />, root);
void fetchAppSettings();
void fetchSettings();
void fetchProfiles();
listenForImports();
void fetchWaiting();
startPolling();
