// The program's description of an event, in the words of the page.

const kNamedKeys: Record<number, string> = {
  8: 'Backspace',
  9: 'Tab',
  13: 'Enter',
  16: 'Shift',
  17: 'Ctrl',
  18: 'Alt',
  19: 'Pause',
  20: 'Caps Lock',
  27: 'Esc',
  32: 'Space',
  33: 'Page Up',
  34: 'Page Down',
  35: 'End',
  36: 'Home',
  37: 'Left',
  38: 'Up',
  39: 'Right',
  40: 'Down',
  44: 'Print Screen',
  45: 'Insert',
  46: 'Delete',
  91: 'Left Windows',
  92: 'Right Windows',
  93: 'Menu',
  106: 'Num *',
  107: 'Num +',
  109: 'Num -',
  110: 'Num .',
  111: 'Num /',
  144: 'Num Lock',
  145: 'Scroll Lock',
  160: 'Left Shift',
  161: 'Right Shift',
  162: 'Left Ctrl',
  163: 'Right Ctrl',
  164: 'Left Alt',
  165: 'Right Alt',
};

// Keys whose sign depends on the keyboard's layout keep their number.
export function keyName(vk: number): string {
  if ((vk >= 48 && vk <= 57) || (vk >= 65 && vk <= 90)) return String.fromCharCode(vk);
  if (vk >= 96 && vk <= 105) return `Num ${vk - 96}`;
  if (vk >= 112 && vk <= 135) return `F${vk - 111}`;
  return kNamedKeys[vk] ?? String(vk);
}

const kForms: readonly [RegExp, (parts: string[]) => string][] = [
  [/^Abs Move to X:(-?\d+) Y:(-?\d+)$/, ([, x, y]) => `Move to ${x}, ${y}`],
  [/^Rel Move dX:(-?\d+) dY:(-?\d+)$/, ([, x, y]) => `Move by ${x}, ${y}`],
  [/^Mouse Click at X:(-?\d+) Y:(-?\d+)$/, ([, x, y]) => `Button at ${x}, ${y}`],
  [/^Keyboard VK: (\d+) \((DOWN|UP)\)$/, ([, vk, way]) => `Key ${keyName(Number(vk))} ${way?.toLowerCase()}`],
  [
    /^Mouse Scroll Delta: (-?\d+)$/,
    ([, delta]) => `Wheel ${Number(delta) < 0 ? 'down' : 'up'} ${Math.abs(Number(delta))}`,
  ],
  [/^Autoclicker (ON|OFF)$/, ([, way]) => `Clicker ${way?.toLowerCase()}`],
  [/^Key Spammer (ON|OFF)$/, ([, way]) => `Key presser ${way?.toLowerCase()}`],
];

export function eventText(description: string): string {
  for (const [form, words] of kForms) {
    const parts = form.exec(description);
    if (parts) return words(parts);
  }
  return description || 'Unknown event';
}
