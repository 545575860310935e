// Where the panels stand: by keyboard and by buttons. Dragging is in components/board.tsx.
import { setPanelOrder } from './commands';
import { movedTo, wholeOrder } from './panel-order';
import type { PanelId } from './reports';
import { announcement, appSettings } from './store';

const shownPanels = () =>
  [...document.querySelectorAll<HTMLElement>('#dashboard > .panel')].map((panel) => panel.id as PanelId);

export const placeOf = (id: PanelId) => {
  const shown = shownPanels();
  const order = wholeOrder(appSettings.value.panelOrder).filter((one) => shown.includes(one));
  return { place: order.indexOf(id), count: order.length };
};

export function movePanel(id: PanelId, title: string, place: number): void {
  const shown = shownPanels();
  if (place < 0 || place >= shown.length || place === placeOf(id).place) return;
  const order = wholeOrder(appSettings.value.panelOrder);
  const inOrder = order.filter((one) => shown.includes(one));
  announcement.value = `${title}: place ${place + 1} of ${shown.length}`;
  void setPanelOrder(movedTo(order, inOrder, id, place));
}
