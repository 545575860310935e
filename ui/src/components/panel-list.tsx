import type { ComponentChildren } from 'preact';
import { useEffect, useLayoutEffect, useRef } from 'preact/hooks';
import Sortable from 'sortablejs';
import { isMainWindow } from '../bridge';
import { fitWindow, suspendFit } from '../fit';
import { completeOrder, movePanel } from '../panel-order';
import type { PanelId } from '../reports';
import { announcement, appSettings, arranging, known } from '../store';
import './panel-list.css';

// The panels in one column, in the order that the user has chosen. The Tab key and screen readers follow the same
// order. A wide window gives each panel's groups more columns, not the panels.
export function PanelList({ panels }: { panels: Partial<Record<PanelId, () => ComponentChildren>> }) {
  const { panelOrder, minimizedPanels } = appSettings.value;
  const list = useRef<HTMLElement>(null);
  const moving = useRef<{ element: Element; top: number; focus: Element | null } | null>(null);
  const order = completeOrder(panelOrder).filter((id) => panels[id]);
  const orderText = order.join();

  // A panel moved by keys or buttons keeps the focus, and the page scrolls so that it stays where it is in the window.
  if (moving.current === null && list.current && document.activeElement) {
    const element = document.activeElement.closest('#dashboard > .panel');
    if (element) {
      moving.current = { element, top: element.getBoundingClientRect().top, focus: document.activeElement };
    }
  }
  useLayoutEffect(() => {
    const before = moving.current;
    moving.current = null;
    if (!before) return;
    if (before.focus instanceof HTMLElement && document.activeElement !== before.focus) {
      before.focus.focus({ preventScroll: true });
    }
    window.scrollBy(0, before.element.getBoundingClientRect().top - before.top);
  }, [orderText]);
  useLayoutEffect(() => {
    moving.current = null;
  });

  const minimised = minimizedPanels.join();
  useEffect(() => {
    if (known.value) fitWindow();
  }, [minimised]);

  useEffect(() => {
    const element = list.current;
    if (!element || !isMainWindow()) return undefined;
    const sortable = makeSortable(element);
    return () => sortable.destroy();
  }, []);

  return (
    <>
      <main id="dashboard" ref={list}>
        {order.map((id) => {
          const Shown = panels[id] as () => ComponentChildren;
          return <Shown key={id} />;
        })}
      </main>
      <p hidden id="grip-help">
        Drag to move the panel, or press the arrow keys.
      </p>
      <div class="unseen" role="status" aria-label="Panel order">
        {announcement.value}
      </div>
    </>
  );
}

function makeSortable(list: HTMLElement): Sortable {
  let start: { header: Element; top: number } | null = null;
  let next: Element | null = null;
  const keepInPlace = () => {
    if (start) window.scrollBy(0, start.header.getBoundingClientRect().top - start.top);
  };
  return new Sortable(list, {
    draggable: '.panel',
    handle: '.panel__grip, .panel__titles',
    // Sortable's own pointer events, because the browsers' drag and drop differs between the web views.
    forceFallback: true,
    fallbackOnBody: true,
    fallbackTolerance: 5,
    direction: 'vertical',
    ghostClass: 'panel--place',
    dragClass: 'panel--dragged',
    scrollSensitivity: 60,
    onChoose: ({ item }) => (next = item.nextElementSibling),
    // Runs just before Sortable copies the panel for the drag. Panels are taller than the window, so all of them show
    // only their headers during a drag. The dragged panel stays under the pointer.
    onClone: ({ item }) => {
      suspendFit(true);
      arranging.value = '';
      const header = item.querySelector('.panel-header') ?? item;
      start = { header, top: header.getBoundingClientRect().top };
      list.classList.add('dashboard--arranging');
      keepInPlace();
      const missing = start.top - header.getBoundingClientRect().top;
      if (missing > 0) list.style.setProperty('--space-above', `${missing}px`);
    },
    onEnd: ({ item }) => {
      const id = item.id as PanelId;
      const position = [...list.querySelectorAll(':scope > .panel')].indexOf(item);
      start = { header: start?.header ?? item, top: (start?.header ?? item).getBoundingClientRect().top };
      // Preact moves the panel, so it must find the elements in its own order.
      list.insertBefore(item, next);
      list.classList.remove('dashboard--arranging');
      list.style.removeProperty('--space-above');
      movePanel(id, item.querySelector('h2')?.textContent ?? '', position);
      requestAnimationFrame(() => {
        keepInPlace();
        suspendFit(false);
      });
    },
  });
}
