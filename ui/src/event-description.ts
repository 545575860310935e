// Reads the program's descriptions of events, the text that the events report has for each.

export const EventKind = {
  AbsoluteMove: 0,
  RelativeMove: 1,
  Button: 2,
  Key: 3,
  Wheel: 4,
  Tool: 5,
  Other: 6, // a description that this page does not know
} as const;

export const Tool = { Autoclicker: 1, KeySpammer: 2 } as const;

// A field that the kind does not have is 0 or false.
export interface EventFields {
  kind: number; // of EventKind
  x: number; // pixels: position of an absolute move or a button, distance of a relative move
  y: number;
  virtualKey: number;
  on: boolean; // key down, tool switched on
  wheel: number; // delta; negative is down
  tool: number; // of Tool
}

export const emptyFields = (): EventFields => ({
  kind: EventKind.Other,
  x: 0,
  y: 0,
  virtualKey: 0,
  on: false,
  wheel: 0,
  tool: 0,
});

// The last integer that readInteger has read, and the index behind it. One record for all, because a macro may have a
// million events.
const integer = { value: 0, end: 0 };

// Returns whether there is an integer at the index.
function readInteger(text: string, start: number): boolean {
  const isNegative = text.charCodeAt(start) === 45;
  const first = isNegative ? start + 1 : start;
  let index = first;
  let value = 0;
  for (; index < text.length; index++) {
    const digit = text.charCodeAt(index) - 48;
    if (digit < 0 || digit > 9) break;
    value = value * 10 + digit;
  }
  integer.value = isNegative ? -value : value;
  integer.end = index;
  return index > first;
}

// Each of these returns whether the text has its form, and sets the fields only then.
function readPair(text: string, prefix: string, separator: string, fields: EventFields): boolean {
  if (!text.startsWith(prefix) || !readInteger(text, prefix.length)) return false;
  const x = integer.value;
  if (!text.startsWith(separator, integer.end)) return false;
  if (!readInteger(text, integer.end + separator.length) || integer.end !== text.length) return false;
  fields.x = x;
  fields.y = integer.value;
  return true;
}

const kKeyPrefix = 'Keyboard VK: ';
function readKey(text: string, fields: EventFields): boolean {
  if (!text.startsWith(kKeyPrefix) || !readInteger(text, kKeyPrefix.length)) return false;
  const on = text.endsWith(' (DOWN)');
  const ending = on ? ' (DOWN)' : ' (UP)';
  if (integer.end + ending.length !== text.length || !text.endsWith(ending)) return false;
  fields.virtualKey = integer.value;
  fields.on = on;
  return true;
}

const kWheelPrefix = 'Mouse Scroll Delta: ';
function readWheel(text: string, fields: EventFields): boolean {
  if (!text.startsWith(kWheelPrefix) || !readInteger(text, kWheelPrefix.length)) return false;
  if (integer.end !== text.length) return false;
  fields.wheel = integer.value;
  return true;
}

const kToolDescriptions: Record<string, Pick<EventFields, 'tool' | 'on'>> = {
  'Autoclicker ON': { tool: Tool.Autoclicker, on: true },
  'Autoclicker OFF': { tool: Tool.Autoclicker, on: false },
  'Key Spammer ON': { tool: Tool.KeySpammer, on: true },
  'Key Spammer OFF': { tool: Tool.KeySpammer, on: false },
};

function readKind(text: string, fields: EventFields): number {
  if (readPair(text, 'Abs Move to X:', ' Y:', fields)) return EventKind.AbsoluteMove;
  if (readPair(text, 'Mouse Click at X:', ' Y:', fields)) return EventKind.Button;
  if (readPair(text, 'Rel Move dX:', ' dY:', fields)) return EventKind.RelativeMove;
  if (readKey(text, fields)) return EventKind.Key;
  if (readWheel(text, fields)) return EventKind.Wheel;
  const tool = kToolDescriptions[text];
  if (!tool) return EventKind.Other;
  fields.tool = tool.tool;
  fields.on = tool.on;
  return EventKind.Tool;
}

// Reads a description into `fields` and returns them. Pass the same record again when reading many.
export function readDescription(description: string, fields = emptyFields()): EventFields {
  fields.x = 0;
  fields.y = 0;
  fields.virtualKey = 0;
  fields.on = false;
  fields.wheel = 0;
  fields.tool = 0;
  fields.kind = readKind(description, fields);
  return fields;
}
