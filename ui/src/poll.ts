// The status poll and what follows from it. At most one poll is in flight.
import { effect } from '@preact/signals';
import { batch } from './batch';
import { call } from './bridge';
import { fetchEvents, fetchSettings } from './fetch';
import { readStatus, type Status } from './reports';
import { answering, events, eventsFailedAt, eventsLoading, picking, settings, status } from './store';

const kInterval = 125; // ms between the starts of two polls
const kHiddenInterval = 1000; // ms, while the page is hidden
const kReplyTimeout = 3000; // ms without a reply after which the page shows that it waits

let timer = 0;
let inFlight = false;
let pollAgain = false;
let lastReport = '';
let eventsFetchDue = true;
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
    accept(await call('getTrackerStatus'));
    if (picking.value) await followPick();
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

function accept(report: unknown): void {
  const text = JSON.stringify(report);
  const before = status.value;
  const now = readStatus(report);
  if (text !== lastReport || now.eventCount !== before.eventCount) {
    lastReport = text;
    status.value = now;
  }
  if (eventsAreStale(before, status.value)) void fetchEvents();
}

// The program does not report a pick. The pick is over when the fixed location has changed.
async function followPick(): Promise<void> {
  const { locationMode, fixedX, fixedY } = settings.value.autoclicker;
  await fetchSettings();
  const now = settings.value.autoclicker;
  if (now.locationMode !== locationMode || now.fixedX !== fixedX || now.fixedY !== fixedY)
    picking.value = false;
}

// A recording changes the list at every poll, so the page fetches it at the end of the recording. It waits one poll
// more: the state turns idle a moment before the program adjusts the times of the new events.
function eventsAreStale(before: Status, now: Status): boolean {
  if (now.state === 'Recording' || before.state === 'Recording') {
    eventsFetchDue = true;
    return false;
  }
  if (batch.value) return false; // the page makes the same edits in its own copy
  const due = eventsFetchDue;
  eventsFetchDue = false;
  if (due || before.canUndoContinue !== now.canUndoContinue) return true;
  return (
    now.eventCount !== events.value.length && now.eventCount !== eventsFailedAt.value && !eventsLoading.value
  );
}

// Resolves after the first poll.
export function startPolling(): Promise<void> {
  document.addEventListener('visibilitychange', () => {
    if (!document.hidden) pollSoon();
  });
  effect(() => {
    if (picking.value) pollSoon();
  });
  return poll();
}
