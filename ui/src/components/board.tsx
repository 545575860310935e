import type { ComponentChildren } from 'preact';
import { useEffect, useLayoutEffect, useRef } from 'preact/hooks';
import Sortable from 'sortablejs';
import { movePanel } from '../arrange';
import { has } from '../bridge';
import { fitWindow, suspendFit } from '../fit';
import { wholeOrder } from '../panel-order';
import type { PanelId } from '../reports';
import { announcement, appSettings, arranging, known } from '../store';
import './board.css';

// The panels, one below the other in the order that the person has chosen, which is the order of reading and of the Tab
// key as well. A wide window gives each panel's groups more columns instead of giving the panels several.
export function Board({ panels }: { panels: Partial<Record<PanelId, () => ComponentChildren>> }) {
  const { panelOrder, minimizedPanels } = appSettings.value;
  const board = useRef<HTMLElement>(null);
  const kept = useRef<{ element: Element; top: number; focus: Element | null } | null>(null);
  const order = wholeOrder(panelOrder).filter((id) => panels[id]);
  const orderText = order.join();

  // A panel that is moved by keys or buttons takes the focus with it, and the page scrolls so that it stays in place.
  if (kept.current === null && board.current && document.activeElement) {
    const element = document.activeElement.closest('#dashboard > .panel');
    if (element) {
      kept.current = { element, top: element.getBoundingClientRect().top, focus: document.activeElement };
    }
  }
  useLayoutEffect(() => {
    const before = kept.current;
    kept.current = null;
    if (!before) return;
    if (before.focus instanceof HTMLElement && document.activeElement !== before.focus) {
      before.focus.focus({ preventScroll: true });
    }
    window.scrollBy(0, before.element.getBoundingClientRect().top - before.top);
  }, [orderText]);
  useLayoutEffect(() => {
    kept.current = null;
  });

  const minimised = minimizedPanels.join();
  useEffect(() => {
    if (known.value) fitWindow();
  }, [minimised]);

  useEffect(() => {
    const element = board.current;
    if (!element || !has('setPanelOrder')) return undefined;
    const sortable = makeSortable(element);
    return () => sortable.destroy();
  }, []);

  return (
    <>
      <main id="dashboard" ref={board}>
        {order.map((id) => {
          const Shown = panels[id] as () => ComponentChildren;
          return <Shown key={id} />;
        })}
      </main>
      <p hidden id="grip-help">
        Drag it, or press the arrow keys.
      </p>
      <div class="unseen" role="status" aria-label="Panel order">
        {announcement.value}
      </div>
    </>
  );
}

function makeSortable(board: HTMLElement): Sortable {
  let scene: { header: Element; top: number } | null = null;
  let next: Element | null = null;
  const keepInPlace = () => {
    if (scene) window.scrollBy(0, scene.header.getBoundingClientRect().top - scene.top);
  };
  return new Sortable(board, {
    draggable: '.panel',
    handle: '.panel__grip, .panel__titles',
    // Pointer events of our own in place of the browser's drag and drop, which differs between the homes' web views.
    forceFallback: true,
    fallbackOnBody: true,
    fallbackTolerance: 5,
    direction: 'vertical',
    ghostClass: 'panel--place',
    dragClass: 'panel--dragged',
    scrollSensitivity: 60,
    onChoose: ({ item }) => (next = item.nextElementSibling),
    // The last moment before the picture that is dragged is taken. Panels are taller than the window, so all show only
    // their headers while one is dragged; the one in hand stays under the pointer.
    onClone: ({ item }) => {
      suspendFit(true);
      arranging.value = '';
      const header = item.querySelector('.panel-header') ?? item;
      scene = { header, top: header.getBoundingClientRect().top };
      board.classList.add('dashboard--arranging');
      keepInPlace();
      const short = scene.top - header.getBoundingClientRect().top;
      if (short > 0) board.style.setProperty('--room-above', `${short}px`);
    },
    onEnd: ({ item }) => {
      const id = item.id as PanelId;
      const place = [...board.querySelectorAll(':scope > .panel')].indexOf(item);
      scene = { header: scene?.header ?? item, top: (scene?.header ?? item).getBoundingClientRect().top };
      // The page's own rendering moves the panel; what it finds has to be as it left it.
      board.insertBefore(item, next);
      board.classList.remove('dashboard--arranging');
      board.style.removeProperty('--room-above');
      movePanel(id, item.querySelector('h2')?.textContent ?? '', place);
      requestAnimationFrame(() => {
        keepInPlace();
        suspendFit(false);
      });
    },
  });
}
