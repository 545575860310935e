// The session of the program in the pictures, and the macro files that it imports. Generated rather than recorded, so
// that the pictures stay the same.

const kStep = 0.012; // seconds between two moves
const kLeftDown = 2;
const kLeftUp = 4;
const kAutoclicker = 1;
const kKey = { Enter: 13, Shift: 160, Ctrl: 162, Windows: 91 };

// Collects event lines with a clock of its own.
class MacroLines {
  lines = [];
  time = 0;
  x = 0;
  y = 0;

  add(type, { x = 0, y = 0, flags = 0, vk = 0, down = 0, wheel = 0 }) {
    this.lines.push([type, Number(this.time.toFixed(3)), x, y, flags, vk, down, wheel].join());
    return this;
  }
  wait(seconds) {
    this.time += seconds;
    return this;
  }
  // In an arc, slow at both ends, as a hand moves. `arc` is its height in pixels.
  moveTo(x, y, seconds, arc) {
    const from = { x: this.x, y: this.y };
    const steps = Math.round(seconds / kStep);
    for (let step = 1; step <= steps; step++) {
      const part = step / steps;
      const along = part * part * (3 - 2 * part);
      const aside = arc * Math.sin(Math.PI * part);
      const length = Math.hypot(x - from.x, y - from.y) || 1;
      this.x = Math.round(from.x + (x - from.x) * along - ((y - from.y) / length) * aside);
      this.y = Math.round(from.y + (y - from.y) * along + ((x - from.x) / length) * aside);
      this.wait(kStep).add(0, { x: this.x, y: this.y });
    }
    return this;
  }
  startAt(x, y) {
    Object.assign(this, { x, y });
    return this.add(0, { x, y });
  }
  click() {
    const { x, y } = this;
    this.wait(0.09).add(2, { x, y, flags: kLeftDown });
    return this.wait(0.07).add(2, { x, y, flags: kLeftUp });
  }
  down(key) {
    return this.wait(0.06).add(3, { vk: typeof key === 'string' ? key.charCodeAt(0) : key, down: 1 });
  }
  up(key) {
    return this.wait(0.06).add(3, { vk: typeof key === 'string' ? key.charCodeAt(0) : key });
  }
  tap(key) {
    return this.down(key).up(key);
  }
  type(text) {
    for (const letter of text) this.tap(letter);
    return this;
  }
  turn(notches) {
    for (let i = 0; i < Math.abs(notches); i++) this.wait(0.05).add(4, { wheel: 120 * Math.sign(notches) });
    return this;
  }
  autoclicker(on) {
    return this.add(5, { vk: kAutoclicker, down: on ? 1 : 0 });
  }
}

// A round through a field: four beds, the barn where the autoclicker unloads, and back to the start.
function harvest() {
  const macro = new MacroLines().startAt(220, 520);
  macro.wait(0.2).moveTo(300, 300, 0.5, 40).click().wait(0.15).tap('E');
  macro.wait(0.2).moveTo(470, 210, 0.4, -30).click().wait(0.15).tap('E');
  macro.wait(0.2).moveTo(650, 260, 0.45, -40).click().wait(0.15).tap('E');
  macro.wait(0.2).turn(-3).wait(0.2).moveTo(740, 430, 0.45, -30).click().wait(0.15).tap('E');
  macro.wait(0.3).down(kKey.Shift).moveTo(520, 560, 0.6, -60).up(kKey.Shift);
  macro.wait(0.1).autoclicker(true).wait(2).autoclicker(false);
  macro.wait(0.3).moveTo(220, 520, 0.55, -50).wait(0.1).tap('1');
  return macro.lines;
}

// Clicks every 50 ms at 640,360, ten times when counted; presses 1, 2 and E in turn every 250 ms. The hotkeys are the
// defaults.
const kSettings =
  '0,0,0,50,0,0,1,10,0,640,360,1,1,1,1,0,1,1,500,119,118,0,117,0,0,0,250,1,10,120,49,49|50|69,0,0,0,121';
const kProfileSettings = '0,0,0,50,0,0,1,10,0,640,360,0,0,0,250,1,10,49,49|50|69,0';

export const session = [
  `SETTINGS:${kSettings}`,
  'CURRENT:1',
  'PROFILE:Default Tracking Profile',
  'PROFILE:Collect the harvest',
  `PROFILESETTINGS:${kProfileSettings}`,
  ...harvest(),
  '',
].join('\n');

// No warning appears between two pictures.
export const kNoWarnings = 'showWarnings=0\n';

const macroFile = (name, macro) => [name, `SETTINGS:${kSettings}`, ...macro.lines, ''].join('\n');

const kHarmless = 'Water the beds';
export const harmlessMacro = macroFile(
  kHarmless,
  new MacroLines()
    .startAt(300, 300)
    .moveTo(700, 320, 0.8, 60)
    .click()
    .wait(0.4)
    .moveTo(300, 300, 0.8, 60)
    .click(),
);

// Opens the Run box and types a program's name into it; later copies something and pastes it elsewhere.
const kHarmful = 'Free coins';
export const harmfulMacro = macroFile(
  kHarmful,
  (() => {
    const macro = new MacroLines().startAt(400, 300).moveTo(640, 420, 0.6, 40).click().wait(0.8);
    macro
      .down(kKey.Windows)
      .tap('R')
      .up(kKey.Windows)
      .wait(0.5)
      .type('CMD')
      .wait(0.3)
      .tap(kKey.Enter)
      .wait(1.2);
    macro.moveTo(300, 240, 0.7, -50).click().wait(0.5);
    macro.down(kKey.Ctrl).tap('C').up(kKey.Ctrl).wait(0.6).moveTo(700, 500, 0.6, 30).click();
    return macro.down(kKey.Ctrl).tap('V').up(kKey.Ctrl).wait(0.4);
  })(),
);
