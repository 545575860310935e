// Reading what a person typed as a number. The program stores numbers as they come, so what makes no sense is
// explained here and never sent.
export interface NumberRule {
  name: string; // as the explanation begins: "Hours", "Speed"
  min: number;
  max: number;
  decimals: number; // 0: whole numbers
}

export type Reading = { value: number; error: '' } | { value: undefined; error: string };

const grouped = new Intl.NumberFormat('en', { maximumFractionDigits: 6 });
export const groupedNumber = (value: number) => grouped.format(value);
// "1 event", "1,204 events"
export const counted = (count: number, one: string, many = `${one}s`) =>
  `${groupedNumber(count)} ${count === 1 ? one : many}`;
export const sentence = (text: string) => text.charAt(0).toUpperCase() + text.slice(1);

export function readNumber(text: string, rule: NumberRule): Reading {
  const range = `${groupedNumber(rule.min)} to ${groupedNumber(rule.max)}`;
  const refuse = (error: string): Reading => ({ value: undefined, error });
  const typed = text.trim();
  if (typed === '') return refuse(`${rule.name}: enter a number, ${range}.`);
  if (rule.decimals > 0 && typed.includes(',')) return refuse(`${rule.name}: use a point for decimals.`);
  const form = rule.decimals > 0 ? /^[+-]?(\d+\.?\d*|\.\d+)$/ : /^[+-]?\d+$/;
  if (!form.test(typed)) {
    return refuse(`${rule.name}: ${rule.decimals > 0 ? 'a number' : 'a whole number'}, ${range}.`);
  }
  const value = Number(Number(typed).toFixed(rule.decimals));
  if (value < rule.min || value > rule.max) return refuse(`${rule.name}: ${range}.`);
  return { value, error: '' };
}

// The next value of a stepper: onto the grid of the step first, and never out of range.
export function stepped(value: number, step: number, direction: 1 | -1, rule: NumberRule): number {
  const grid = direction > 0 ? Math.floor(value / step + 1e-9) : Math.ceil(value / step - 1e-9);
  const next = (grid + direction) * step;
  return Number(Math.min(rule.max, Math.max(rule.min, next)).toFixed(rule.decimals));
}
