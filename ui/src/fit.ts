// Fits the height of the window to the page's content. Never enlarges a window that the user has made smaller than its
// content: only empty space below the content is removed there.
import { call } from './bridge';

// The client size of a window that the user has not resized.
const kFirstWidth = 420;
const kFirstHeight = 560;
const kResizeTimeout = 500; // ms after the program's reply in which a new size counts as the requested one

let measuredHeight = 0; // px of the content when it was last measured
let fittedHeight = -1; // px of the window after our last request; -1 after the user has resized it
let requestedHeight = -1; // px of the last request, until the window has its new size
let expectedUntil = -Infinity; // ms; a new size before this time is the requested one
let suspended = false;

const contentHeight = () => Math.ceil(document.getElementById('app')?.getBoundingClientRect().height ?? 0);
// A window as wide as its screen is maximised, or the user has made it so.
const fillsScreen = () => window.innerWidth >= window.screen.availWidth;

const isExpected = () => performance.now() < expectedUntil;
// The height that the window is about to have, within its limits.
const nextHeight = () => (requestedHeight >= 0 && isExpected() ? requestedHeight : window.innerHeight);

function request(height: number): void {
  if (height < 1 || height === nextHeight()) return;
  requestedHeight = height;
  expectedUntil = Infinity;
  const onReply = () => (expectedUntil = performance.now() + kResizeTimeout);
  // Best effort: a window that cannot be fitted scrolls.
  call('resizeWindow', `${window.innerWidth},${height}`).then(onReply, onReply);
}

// Always fits, except during a drag: a panel's own window is as large as the panel. The program calls it.
function resizeHostWindow(): void {
  if (suspended) return;
  measuredHeight = contentHeight();
  request(measuredHeight);
}

// Call after the user has changed the height of the content. A resize meanwhile may have measured it already.
export function fitWindow(): void {
  const before = measuredHeight;
  measuredHeight = contentHeight();
  if (suspended || fillsScreen()) return;
  const next = nextHeight();
  const isAllVisible = next >= before || next === fittedHeight;
  if (isAllVisible || measuredHeight < next) request(measuredHeight);
}

// Call after the first paint.
export function fitFirstWindow(): void {
  measuredHeight = contentHeight();
  const untouched = window.innerWidth === kFirstWidth && window.innerHeight === kFirstHeight;
  if (untouched && !fillsScreen()) request(measuredHeight);
}

// Call at the start and the end of a drag, during which the page has a temporary height.
export function suspendFit(drag: boolean): void {
  suspended = drag;
}

export function installFit(): void {
  Object.assign(window, { resizeHostWindow });
  window.addEventListener('resize', () => {
    fittedHeight = isExpected() ? window.innerHeight : -1;
    requestedHeight = -1;
    measuredHeight = contentHeight();
  });
}
