// The one status poll, and what follows from it. There is never more than one in flight.
import { effect } from '@preact/signals';
import { batch } from './batch';
import { call } from './bridge';
import { fetchEvents, fetchSettings } from './fetch';
import { readStatus, type Status } from './reports';
import { answering, events, eventsFailedAt, eventsLoading, picking, settings, status } from './store';

const kInterval = 125; // ms between the starts of two polls
const kHiddenInterval = 1000; // ms, while nobody can see the page
const kSilence = 3000; // ms without an answer after which the page says so

let timer = 0;
let inFlight = false;
let askAgain = false;
let shown = '';
let eventsOwed = true;
let waiting: (() => void)[] = [];

// Polls now, or right after the poll that is in flight, whose answer may be older than the command just sent.
export function pollSoon(): void {
  if (inFlight) askAgain = true;
  else void poll();
}

// Resolves when a poll that was asked after this call has been answered or has failed.
export function pollNow(): Promise<void> {
  return new Promise((resolve) => {
    waiting.push(resolve);
    pollSoon();
  });
}

async function poll(): Promise<void> {
  window.clearTimeout(timer);
  inFlight = true;
  askAgain = false;
  const told = waiting;
  waiting = [];
  const started = performance.now();
  const silence = window.setInterval(() => (answering.value = false), kSilence);
  try {
    accept(await call('getTrackerStatus'));
    if (picking.value) await followPick();
    answering.value = true;
  } catch {
    answering.value = false;
  }
  window.clearInterval(silence);
  inFlight = false;
  for (const tell of told) tell();
  // A poll that takes long must not fill all the program's time: leave it at least as long a pause.
  const took = performance.now() - started;
  const interval = document.hidden ? kHiddenInterval : kInterval;
  const pause = Math.max(interval - took, Math.min(took, kHiddenInterval));
  timer = window.setTimeout(() => void poll(), askAgain ? 0 : pause);
}

function accept(report: unknown): void {
  const text = JSON.stringify(report);
  const before = status.value;
  const now = readStatus(report);
  if (text !== shown || now.count !== before.count) {
    shown = text;
    status.value = now;
  }
  if (eventsAreStale(before, status.value)) void fetchEvents();
}

// The program does not report a pick; that the fixed place has changed tells that it is over.
async function followPick(): Promise<void> {
  const { locMode, fixedX, fixedY } = settings.value;
  await fetchSettings();
  const now = settings.value;
  if (now.locMode !== locMode || now.fixedX !== fixedX || now.fixedY !== fixedY) picking.value = false;
}

// While a recording runs the list grows with every poll, so it is fetched when the recording has ended, and then one
// poll later: the state turns idle a moment before the take's times are moved to their place.
function eventsAreStale(before: Status, now: Status): boolean {
  if (now.state === 'Recording' || before.state === 'Recording') {
    eventsOwed = true;
    return false;
  }
  if (batch.value) return false; // the page makes the same edits in its own copy
  const owed = eventsOwed;
  eventsOwed = false;
  if (owed || before.canUndoContinue !== now.canUndoContinue) return true;
  return now.count !== events.value.length && now.count !== eventsFailedAt.value && !eventsLoading.value;
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
