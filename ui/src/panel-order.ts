// The order of the panels: what the program has kept, completed, and moves by keyboard and by buttons. Dragging is in
// components/panel-list.tsx.
import { setPanelOrder } from './commands';
import { kPanelIds, type PanelId } from './reports';
import { announcement, appSettings } from './store';

const isPanelId = (text: string): text is PanelId => (kPanelIds as readonly string[]).includes(text);

// Returns all panels in the kept order. A panel that is missing there comes after the one that it follows at first. A
// file edited by hand may hold anything.
export function completeOrder(kept: readonly string[]): PanelId[] {
  const order = [...new Set(kept.filter(isPanelId))];
  kPanelIds.forEach((id, index) => {
    if (order.includes(id)) return;
    const before = kPanelIds[index - 1];
    order.splice(before === undefined ? 0 : order.indexOf(before) + 1, 0, id);
  });
  return order;
}

// Returns the order after `id` has moved to `position` among the panels in `shown`. Panels that are not shown keep
// their neighbours.
export function orderAfterMove(order: PanelId[], shown: PanelId[], id: PanelId, position: number): PanelId[] {
  const others = shown.filter((other) => other !== id);
  const before = others[Math.min(position, others.length) - 1];
  const moved = order.filter((other) => other !== id);
  moved.splice(before === undefined ? 0 : moved.indexOf(before) + 1, 0, id);
  return moved;
}

// The panels in the document, in their order.
function shownPanels(): PanelId[] {
  const elements = document.querySelectorAll<HTMLElement>('#dashboard > .panel');
  const shown = [...elements].map((panel) => panel.id as PanelId);
  return completeOrder(appSettings.value.panelOrder).filter((id) => shown.includes(id));
}

export function panelPosition(id: PanelId): { position: number; count: number } {
  const shown = shownPanels();
  return { position: shown.indexOf(id), count: shown.length };
}

// Does nothing if the panel is there already or the position does not exist.
export function movePanel(id: PanelId, title: string, position: number): void {
  const shown = shownPanels();
  if (position < 0 || position >= shown.length || position === shown.indexOf(id)) return;
  announcement.value = `${title}: position ${position + 1} of ${shown.length}`;
  void setPanelOrder(orderAfterMove(completeOrder(appSettings.value.panelOrder), shown, id, position));
}
