// The order of the panels: what the program has kept, made whole, and what a move makes of it.
import { kPanelIds, type PanelId } from './reports';

const isPanelId = (text: string): text is PanelId => (kPanelIds as readonly string[]).includes(text);

// The kept order may leave out panels, and a file written by hand may hold anything. A panel that is left out stands
// behind the one that it follows at first.
export function wholeOrder(kept: readonly string[]): PanelId[] {
  const order = [...new Set(kept.filter(isPanelId))];
  kPanelIds.forEach((id, place) => {
    if (order.includes(id)) return;
    const before = kPanelIds[place - 1];
    order.splice(before === undefined ? 0 : order.indexOf(before) + 1, 0, id);
  });
  return order;
}

// The order after `id` has gone to `place` among the panels in `shown`. Those that are not shown keep their neighbours.
export function movedTo(order: PanelId[], shown: PanelId[], id: PanelId, place: number): PanelId[] {
  const others = shown.filter((other) => other !== id);
  const before = others[Math.min(place, others.length) - 1];
  const moved = order.filter((other) => other !== id);
  moved.splice(before === undefined ? 0 : moved.indexOf(before) + 1, 0, id);
  return moved;
}
