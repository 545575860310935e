// The only module that calls native functions.
//
// NOTE: the page script of the web-view library keeps every settled promise, with its result, for the life of the page.
// At eight polls a second the page's memory grows without limit.
// HACK: plugPromiseLeak replaces `call` and `onReply` on the library's prototype by functions that drop an entry when
// its reply arrives. The bound functions look up `call` on the prototype each time, so they use the replacement too.

interface PageLibrary {
  post(message: string): unknown;
  call(method: string, ...params: unknown[]): Promise<unknown>;
  onReply(id: string, status: number, result?: string): void;
}

interface PendingCall {
  resolve(value: unknown): void;
  reject(reason: unknown): void;
}

declare global {
  interface Window {
    __webview__?: PageLibrary;
  }
}

const pendingCalls = new Map<string, PendingCall>();
// Replies to an earlier page of the same window must not match the calls of this page.
const idPrefix = `${Math.random().toString(36).slice(2)}-`;
let callCount = 0;

export function plugPromiseLeak(): void {
  if (!window.__webview__) return;
  const library = Object.getPrototypeOf(window.__webview__) as PageLibrary;
  const originalOnReply = library.onReply;
  library.call = function (method, ...params) {
    const id = idPrefix + String(++callCount);
    const promise = new Promise((resolve, reject) => pendingCalls.set(id, { resolve, reject }));
    this.post(JSON.stringify({ id, method, params }));
    return promise;
  };
  library.onReply = function (id, status, result) {
    const entry = pendingCalls.get(id);
    if (!entry) {
      originalOnReply.call(this, id, status, result);
      return;
    }
    pendingCalls.delete(id);
    let value: unknown;
    try {
      value = result === undefined ? undefined : JSON.parse(result);
    } catch {
      entry.reject(new Error('The answer could not be read.'));
      return;
    }
    if (status === 0) entry.resolve(value);
    else entry.reject(value);
  };
}

// Returns whether the program offers a command. An older program lacks some.
export const isOffered = (name: string) =>
  typeof (window as unknown as Record<string, unknown>)[name] === 'function';

// Returns whether this is the page of the main window. The page of a panel's own window has fewer commands: no
// profiles, imports and preferences.
export const isMainWindow = () => isOffered('getAppSettings');

// Resolves to undefined if the program does not offer the command, as for a command that returns nothing.
export async function call(name: string, ...args: string[]): Promise<unknown> {
  if (!isOffered(name)) return undefined;
  const bound = (window as unknown as Record<string, (...params: string[]) => Promise<unknown>>)[name];
  return bound?.(...args);
}
