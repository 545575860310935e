// Fits the height of the window to the page's content. Never resizes a window that the user has resized: a window that
// is smaller than its content scrolls. Only empty space below the content is removed.
import { call } from './bridge';

// The client size in which the program opens the window where no one has chosen another.
const kFirstWidth = 420;
const kFirstHeight = 560;
const kAnswerTime = 500; // ms after the program's answer in which a new size is taken to be its result

let shownHeight = 0; // px of the content when it was last measured
let fittedHeight = -1; // px of the window after our last request; -1 once the user has resized it
let askedHeight = -1; // px that the last request asked for, while the window has not taken its new size
let expectedUntil = -Infinity; // ms; a new size until then is what we asked for
let suspended = false;

const contentHeight = () => Math.ceil(document.getElementById('app')?.getBoundingClientRect().height ?? 0);
// A window as wide as its screen is maximised or was made so by hand.
const fillsScreen = () => window.innerWidth >= window.screen.availWidth;

const isExpected = () => performance.now() < expectedUntil;
// The height that the window will have, as far as its limits allow.
const comingHeight = () => (askedHeight >= 0 && isExpected() ? askedHeight : window.innerHeight);

function request(height: number): void {
  if (height < 1 || height === comingHeight()) return;
  askedHeight = height;
  expectedUntil = Infinity;
  const answered = () => (expectedUntil = performance.now() + kAnswerTime);
  // Best effort: a window that cannot be fitted scrolls.
  call('resizeWindow', `${window.innerWidth},${height}`).then(answered, answered);
}

// Without conditions but a drag: a panel's own window is as large as the panel.
function resizeHostWindow(): void {
  if (suspended) return;
  shownHeight = contentHeight();
  request(shownHeight);
}

// Call when the user has changed the height of the content. A resize of the window may have measured it already.
export function fitWindow(): void {
  const before = shownHeight;
  shownHeight = contentHeight();
  if (suspended || fillsScreen()) return;
  const coming = comingHeight();
  const allInSight = coming >= before || coming === fittedHeight;
  if (allInSight || shownHeight < coming) request(shownHeight);
}

// The page has been painted for the first time.
export function fitFirstWindow(): void {
  shownHeight = contentHeight();
  const untouched = window.innerWidth === kFirstWidth && window.innerHeight === kFirstHeight;
  if (untouched && !fillsScreen()) request(shownHeight);
}

// While panels are dragged the page has another height than it will keep.
export function suspendFit(drag: boolean): void {
  suspended = drag;
}

export function installFit(): void {
  Object.assign(window, { resizeHostWindow });
  window.addEventListener('resize', () => {
    fittedHeight = isExpected() ? window.innerHeight : -1;
    askedHeight = -1;
    shownHeight = contentHeight();
  });
}
