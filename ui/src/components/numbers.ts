// Reads typed numbers. The program stores numbers unchecked, so the page explains an entry that makes no sense and
// never sends it.
import { groupedNumber } from '../format';

export interface NumberRule {
  noun: string; // what a whole number counts: "hours", "clicks"
  min: number;
  max: number;
  decimals: number; // 0: whole numbers
}

export type Reading = { value: number; error: '' } | { value: undefined; error: string };

export function readNumber(text: string, rule: NumberRule): Reading {
  const range = `${groupedNumber(rule.min)} to ${groupedNumber(rule.max)}`;
  const reject = (error: string): Reading => ({ value: undefined, error });
  const typed = text.trim();
  const isWhole = rule.decimals === 0;
  if (!isWhole && typed.includes(',')) return reject('Use a decimal point, not a comma.');
  const form = isWhole ? /^[+-]?\d+$/ : /^[+-]?(\d+\.?\d*|\.\d+)$/;
  const outOfRange = isWhole ? `Enter ${range} ${rule.noun}.` : `Enter a number from ${range}.`;
  if (!form.test(typed)) return reject(isWhole ? `Enter a whole number of ${rule.noun}.` : outOfRange);
  const value = Number(Number(typed).toFixed(rule.decimals));
  if (value < rule.min || value > rule.max) return reject(outOfRange);
  return { value, error: '' };
}

// Returns the next value of a stepper: the nearest multiple of the step in that direction, within the range.
export function stepped(value: number, step: number, direction: 1 | -1, rule: NumberRule): number {
  const grid = direction > 0 ? Math.floor(value / step + 1e-9) : Math.ceil(value / step - 1e-9);
  const next = (grid + direction) * step;
  return Number(Math.min(rule.max, Math.max(rule.min, next)).toFixed(rule.decimals));
}
