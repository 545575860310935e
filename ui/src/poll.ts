// The status poll and what follows from it. At most one poll is in flight.
import { call } from './bridge';
import { fetchChangedEvents, fetchSettings } from './fetch';
import { readProgress, readStatus } from './reports';
import { answering, picking, progress, recording, status } from './store';

const kInterval = 125; // ms between the starts of two polls
const kHiddenInterval = 1000; // ms, while the page is hidden
const kReplyTimeout = 3000; // ms without a reply after which the page shows that it waits

let timer = 0;
let inFlight = false;
let pollAgain = false;
let lastStatus = '';
let lastProgress = '';
let waiters: (() => void)[] = [];

// Polls now, or right after the poll in flight, whose reply may be older than the command just sent.
export function pollSoon(): void {
  if (inFlight) pollAgain = true;
  else void poll();
}

// Resolves when a poll that started after this call has succeeded or failed.
export function pollNow(): Promise<void> {
  return new Promise((resolve) => {
    waiters.push(resolve);
    pollSoon();
  });
}

async function poll(): Promise<void> {
  window.clearTimeout(timer);
  inFlight = true;
  pollAgain = false;
  const notified = waiters;
  waiters = [];
  const started = performance.now();
  const timeout = window.setInterval(() => (answering.value = false), kReplyTimeout);
  try {
    const reports = await Promise.all([call('getTrackerStatus'), call('getProgress')]);
    accept(...reports);
    answering.value = true;
  } catch {
    answering.value = false;
  }
  window.clearInterval(timeout);
  inFlight = false;
  for (const notify of notified) notify();
  // Pause at least as long as a slow poll took, so that polls do not take all of the program's time.
  const took = performance.now() - started;
  const interval = document.hidden ? kHiddenInterval : kInterval;
  const pause = Math.max(interval - took, Math.min(took, kHiddenInterval));
  timer = window.setTimeout(() => void poll(), pollAgain ? 0 : pause);
}

function accept(statusReport: unknown, progressReport: unknown): void {
  const wasPicking = picking.peek();
  const statusText = JSON.stringify(statusReport);
  const progressText = JSON.stringify(progressReport);
  const now = readStatus(statusReport);
  if (statusText !== lastStatus || now.eventCount !== status.peek().eventCount) status.value = now;
  if (progressText !== lastProgress) progress.value = readProgress(progressReport);
  lastStatus = statusText;
  lastProgress = progressText;
  // The macro changes at every poll of a recording, so the page fetches it at the end.
  if (!recording.peek()) fetchChangedEvents();
  // The end of a pick may have changed the location.
  if (wasPicking && !picking.peek()) void fetchSettings();
}

// Resolves after the first poll.
export function startPolling(): Promise<void> {
  document.addEventListener('visibilitychange', () => {
    if (!document.hidden) pollSoon();
  });
  return poll();
}
