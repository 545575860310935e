// The only module that talks to the native program. Everything else calls commands.ts, which calls this.
//
// NOTE: the web-view library's page script keeps every answered promise, with its result, for as long as the page
// lives; at eight polls a second that is a leak without end.
// HACK: `call` and `onReply` on the library's prototype are replaced by ones that drop an entry when it is answered.
// The bound functions reach `call` through the prototype at each call, so they are covered too.

interface PageLibrary {
  post(message: string): unknown;
  call(method: string, ...params: unknown[]): Promise<unknown>;
  onReply(id: string, status: number, result?: string): void;
}

interface Waiting {
  resolve(value: unknown): void;
  reject(reason: unknown): void;
}

declare global {
  interface Window {
    __webview__?: PageLibrary;
  }
}

const waiting = new Map<string, Waiting>();
// Replies to an earlier page of the same window must not match calls of this one.
const idPrefix = `${Math.random().toString(36).slice(2)}-`;
let callCount = 0;

export function plugPromiseLeak(): void {
  if (!window.__webview__) return;
  const library = Object.getPrototypeOf(window.__webview__) as PageLibrary;
  const originalOnReply = library.onReply;
  library.call = function (method, ...params) {
    const id = idPrefix + String(++callCount);
    const promise = new Promise((resolve, reject) => waiting.set(id, { resolve, reject }));
    this.post(JSON.stringify({ id, method, params }));
    return promise;
  };
  library.onReply = function (id, status, result) {
    const entry = waiting.get(id);
    if (!entry) {
      originalOnReply.call(this, id, status, result);
      return;
    }
    waiting.delete(id);
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

// Whether the program offers a command: panels have fewer, and later versions more.
export function has(name: string): boolean {
  return typeof (window as unknown as Record<string, unknown>)[name] === 'function';
}

// A command that the program does not offer resolves to undefined, as one that returns nothing does.
export async function call(name: string, ...args: string[]): Promise<unknown> {
  if (!has(name)) return undefined;
  const bound = (window as unknown as Record<string, (...params: string[]) => Promise<unknown>>)[name];
  return bound?.(...args);
}
