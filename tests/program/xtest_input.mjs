// A real keyboard and mouse for the tests: sends XTEST requests to the outer X server, whose input is real input for
// every program on the inner one. One connection serves all requests, so that pauses are as short as a test wants.
import net from 'node:net';

const kQueryPointer = 38;
const kGetInputFocus = 43;
const kQueryExtension = 98;
const kChangeKeyboardControl = 102;
const kFakeInput = 2;
const kKeyPress = 2;
const kKeyRelease = 3;
const kButtonPress = 4;
const kButtonRelease = 5;
const kMotion = 6;

// The kernel's key codes, which the inner server takes over; an X key code is 8 more.
export const Key = {
  Escape: 1,
  ...Object.fromEntries([...'1234567890'].map((digit, index) => [digit, 2 + index])),
  Tab: 15,
  ...Object.fromEntries([...'QWERTYUIOP'].map((letter, index) => [letter, 16 + index])),
  Minus: 12,
  Enter: 28,
  LeftCtrl: 29,
  ...Object.fromEntries([...'ASDFGHJKL'].map((letter, index) => [letter, 30 + index])),
  Semicolon: 39,
  LeftShift: 42,
  Backslash: 43,
  ...Object.fromEntries([...'ZXCVBNM'].map((letter, index) => [letter, 44 + index])),
  Dot: 52,
  Slash: 53,
  Space: 57,
  ...Object.fromEntries([...Array(10).keys()].map((index) => [`F${index + 1}`, 59 + index])),
  F11: 87,
  F12: 88,
};

// Further characters that `type` knows, on a US keyboard: key, and whether Shift is needed.
const kCharacters = {
  '-': [Key.Minus, false],
  _: [Key.Minus, true],
  ':': [Key.Semicolon, true],
  '\\': [Key.Backslash, false],
  '.': [Key.Dot, false],
  '/': [Key.Slash, false],
  ' ': [Key.Space, false],
};

// X button numbers.
export const Button = { Left: 1, Middle: 2, Right: 3, WheelUp: 4, WheelDown: 5, Back: 8, Forward: 9 };

export const pause = (milliseconds) => new Promise((resolve) => setTimeout(resolve, milliseconds));

export class XtestInput {
  buffer = Buffer.alloc(0);
  replies = []; // waiting readers, in the order of their requests
  setupReader = null;

  // Connects to the outer X server, ":DISPLAY".
  async connect(display) {
    const socket = net.connect(`/tmp/.X11-unix/X${display}`);
    await new Promise((resolve, reject) => socket.once('connect', resolve).once('error', reject));
    this.socket = socket;
    socket.on('data', (data) => this.receive(data));
    socket.on('error', () => {});
    socket.on('close', () => this.replies.splice(0).forEach((reader) => reader(null)));
    await this.setUp();
  }

  receive(data) {
    this.buffer = Buffer.concat([this.buffer, data]);
    if (this.setupReader) {
      if (this.buffer.length < 8) return;
      const length = 8 + 4 * this.buffer.readUInt16LE(6);
      if (this.buffer.length < length) return;
      const reader = this.setupReader;
      this.setupReader = null;
      reader(this.take(length));
    }
    while (this.buffer.length >= 32) {
      const type = this.buffer[0] & 0x7f;
      const length = type === 1 || type === 35 ? 32 + 4 * this.buffer.readUInt32LE(4) : 32;
      if (this.buffer.length < length) return;
      const message = this.take(length);
      if (type === 1) this.replies.shift()?.(message);
    }
  }

  take(length) {
    const taken = this.buffer.subarray(0, length);
    this.buffer = this.buffer.subarray(length);
    return taken;
  }

  ask(request) {
    return new Promise((resolve, reject) => {
      this.replies.push((reply) =>
        reply ? resolve(reply) : reject(new Error('the outer X server is gone')),
      );
      this.socket.write(request);
    });
  }

  async setUp() {
    const hello = Buffer.alloc(12);
    hello.write('l');
    hello.writeUInt16LE(11, 2);
    const answer = await new Promise((resolve) => {
      this.setupReader = resolve;
      this.socket.write(hello);
    });
    if (answer[0] !== 1) throw new Error('the outer X server refuses us');
    const vendorLength = answer.readUInt16LE(24);
    const screen = 40 + Math.ceil(vendorLength / 4) * 4 + 8 * answer[29];
    this.root = answer.readUInt32LE(screen);
    const name = Buffer.from('XTEST');
    const query = Buffer.alloc(8 + 8);
    query[0] = kQueryExtension;
    query.writeUInt16LE(4, 2);
    query.writeUInt16LE(name.length, 4);
    name.copy(query, 8);
    const extension = await this.ask(query);
    if (extension[8] !== 1) throw new Error('the outer X server has no XTEST');
    this.xtest = extension[9];
    // The outer server's key repeat would arrive inside as real releases and presses.
    const control = Buffer.alloc(12);
    control[0] = kChangeKeyboardControl;
    control.writeUInt16LE(3, 2);
    control.writeUInt32LE(0x80, 4);
    this.socket.write(control);
    await this.settle();
  }

  fake(type, detail, x = 0, y = 0) {
    const request = Buffer.alloc(36);
    request[0] = this.xtest;
    request[1] = kFakeInput;
    request.writeUInt16LE(9, 2);
    request[4] = type;
    request[5] = detail;
    request.writeUInt32LE(type === kMotion && detail === 0 ? this.root : 0, 12);
    request.writeInt16LE(x, 24);
    request.writeInt16LE(y, 26);
    this.socket.write(request);
    return this.settle();
  }

  // Resolves when the outer server has processed every request so far.
  async settle() {
    const request = Buffer.alloc(4);
    request[0] = kGetInputFocus;
    request.writeUInt16LE(1, 2);
    await this.ask(request);
  }

  keyDown(key) {
    return this.fake(kKeyPress, key + 8);
  }
  keyUp(key) {
    return this.fake(kKeyRelease, key + 8);
  }
  async tap(key, holdMilliseconds = 20) {
    await this.keyDown(key);
    await pause(holdMilliseconds);
    await this.keyUp(key);
  }
  async type(text) {
    for (const character of text) {
      const capital = /[A-Z]/.test(character);
      const [key, shift] = kCharacters[character] ?? [Key[character.toUpperCase()], capital];
      if (key === undefined) throw new Error(`no key for "${character}"`);
      if (shift) await this.keyDown(Key.LeftShift);
      await this.tap(key, 5);
      if (shift) await this.keyUp(Key.LeftShift);
    }
  }
  buttonDown(button) {
    return this.fake(kButtonPress, button);
  }
  buttonUp(button) {
    return this.fake(kButtonRelease, button);
  }
  async click(button = Button.Left, holdMilliseconds = 20) {
    await this.buttonDown(button);
    await pause(holdMilliseconds);
    await this.buttonUp(button);
  }
  moveTo(x, y) {
    return this.fake(kMotion, 0, x, y);
  }
  moveBy(dx, dy) {
    return this.fake(kMotion, 1, dx, dy);
  }
  async position() {
    const request = Buffer.alloc(8);
    request[0] = kQueryPointer;
    request.writeUInt16LE(2, 2);
    request.writeUInt32LE(this.root, 4);
    const reply = await this.ask(request);
    return { x: reply.readInt16LE(16), y: reply.readInt16LE(18) };
  }

  close() {
    this.socket?.destroy();
  }
}
