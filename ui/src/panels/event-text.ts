// Events in the words of the page.
import { EventKind, readDescription, Tool } from '../event-description';

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

// A key whose character depends on the keyboard layout is named by its number.
export function keyName(virtualKey: number): string {
  if ((virtualKey >= 48 && virtualKey <= 57) || (virtualKey >= 65 && virtualKey <= 90))
    return String.fromCharCode(virtualKey);
  if (virtualKey >= 96 && virtualKey <= 105) return `Num ${virtualKey - 96}`;
  if (virtualKey >= 112 && virtualKey <= 135) return `F${virtualKey - 111}`;
  return kNamedKeys[virtualKey] ?? String(virtualKey);
}

export function eventText(description: string): string {
  const { kind, x, y, virtualKey, on, wheel, tool } = readDescription(description);
  switch (kind) {
    case EventKind.AbsoluteMove:
      return `Move to ${x}, ${y}`;
    case EventKind.RelativeMove:
      return `Move by ${x}, ${y}`;
    case EventKind.Button:
      return `Button at ${x}, ${y}`;
    case EventKind.Key:
      return `Key ${keyName(virtualKey)} ${on ? 'down' : 'up'}`;
    case EventKind.Wheel:
      return `Wheel ${wheel < 0 ? 'down' : 'up'} ${Math.abs(wheel)}`;
    case EventKind.Tool:
      return `${tool === Tool.Autoclicker ? 'Autoclicker' : 'Key spammer'} ${on ? 'on' : 'off'}`;
    default:
      return description || 'Unknown event';
  }
}
