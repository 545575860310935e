// Events in the words of the page.
import { buttonOfFlags, type Columns, EventType, kWheelNotch, Tool } from '../event-columns';
import { capitalised, counted } from '../format';
import { keyNames } from '../store';

// A key that the program has no name for is named by its number.
export const keyName = (virtualKey: number) => keyNames.value[virtualKey] ?? String(virtualKey);

function buttonText(flags: number): string {
  const press = buttonOfFlags(flags);
  return press ? `${capitalised(press.button)} button ${press.down ? 'down' : 'up'}` : 'Button';
}

function wheelText(delta: number): string {
  const notches = Number((Math.abs(delta) / kWheelNotch).toFixed(2));
  return `Wheel ${counted(notches, 'notch', 'notches')} ${delta < 0 ? 'down' : 'up'}`;
}

export function eventText({ type, x, y, flags, virtualKey, down, wheel }: Columns, i: number): string {
  switch (type[i]) {
    case EventType.AbsoluteMove:
      return `Move to ${x[i]}, ${y[i]}`;
    case EventType.RelativeMove:
      return `Move by ${x[i]}, ${y[i]}`;
    case EventType.Button:
      return `${buttonText(flags[i] as number)} at ${x[i]}, ${y[i]}`;
    case EventType.Key:
      return `Key ${keyName(virtualKey[i] as number)} ${down[i] ? 'down' : 'up'}`;
    case EventType.Wheel:
      return wheelText(wheel[i] as number);
    case EventType.Tool:
      return `${virtualKey[i] === Tool.Autoclicker ? 'Autoclicker' : 'Key spammer'} ${down[i] ? 'on' : 'off'}`;
    default:
      return 'Unknown event';
  }
}
