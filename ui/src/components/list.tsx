import type { ComponentChildren, Ref } from 'preact';
import { useImperativeHandle, useLayoutEffect, useRef, useState } from 'preact/hooks';
import {
  offsetAt,
  rowsInSight,
  scrolledHeight,
  scrollTopAt,
  scrollTopFor,
  type ScrollRange,
} from './scroll-range';
import './list.css';

const kRowHeight = 28; // px; list.css has the same

// How a press or a key selects: this row alone, this one as well or not any more, all from the last one to here, or not
// at all, only the keyboard goes there.
export type Pick = 'only' | 'toggle' | 'range' | 'move';

export interface ListHandle {
  // The row at the top of the view, and how many pixels of it are above.
  top: () => { row: number; above: number };
  scrollTo: (row: number, above: number) => void;
  reveal: (row: number) => void;
  focus: () => void;
}

export interface ListProps {
  id: string;
  label: string;
  rows: number;
  active: number; // the row that the keyboard is at, -1 none
  isSelected: (row: number) => boolean;
  onPick: (row: number, how: Pick) => void;
  onPickAll: () => void;
  onKey?: (key: string) => void; // Enter, Delete and Escape
  renderRow: (row: number) => ComponentChildren;
  children?: ComponentChildren; // shown in place of the rows when there are none
  handle?: Ref<ListHandle>;
}

// A list of any length: only the rows in sight are in the document.
export function List(props: ListProps) {
  const { id, label, rows, active, isSelected, onPick, onPickAll, onKey, renderRow, children, handle } =
    props;
  const view = useRef<HTMLDivElement>(null);
  const [scrollTop, setScrollTop] = useState(0);
  const [viewHeight, setViewHeight] = useState(0);

  useLayoutEffect(() => {
    const element = view.current;
    if (!element) return;
    const measure = () => setViewHeight(element.clientHeight);
    measure();
    const observer = new ResizeObserver(measure);
    observer.observe(element);
    return () => observer.disconnect();
  }, []);

  const range: ScrollRange = { rows, rowHeight: kRowHeight, viewHeight };
  const { first, end } = rowsInSight(scrollTop, range);
  const shift = -(offsetAt(scrollTop, range) - first * kRowHeight);

  const scrollTo = (top: number) => {
    const element = view.current;
    if (!element || element.scrollTop === top) return;
    element.scrollTop = top;
    setScrollTop(element.scrollTop);
  };
  const reveal = (row: number) => {
    if (view.current) scrollTo(scrollTopFor(row, view.current.scrollTop, range));
  };
  useImperativeHandle(handle ?? null, () => ({
    top: () => ({ row: first, above: -shift }),
    scrollTo: (row, above) => scrollTo(scrollTopAt(row, above, range)),
    reveal,
    focus: () => view.current?.focus(),
  }));

  const pick = (row: number, how: Pick) => {
    const target = Math.max(0, Math.min(rows - 1, row));
    onPick(target, how);
    reveal(target);
  };
  const onKeyDown = (event: KeyboardEvent) => {
    const command = event.ctrlKey || event.metaKey;
    const page = Math.max(1, Math.floor(viewHeight / kRowHeight) - 1);
    const moves: Record<string, number> = {
      ArrowDown: active + 1,
      ArrowUp: active < 0 ? 0 : active - 1,
      PageDown: Math.max(0, active) + page,
      PageUp: active - page,
      Home: 0,
      End: rows - 1,
    };
    const target = moves[event.key];
    if (rows === 0) return;
    if (target !== undefined) {
      event.preventDefault();
      pick(target, event.shiftKey ? 'range' : command ? 'move' : 'only');
    } else if (event.key === ' ') {
      event.preventDefault();
      if (active >= 0) pick(active, event.shiftKey ? 'range' : command ? 'toggle' : 'only');
    } else if (command && event.key.toLowerCase() === 'a') {
      event.preventDefault();
      onPickAll();
    } else if (['Enter', 'Delete', 'Escape'].includes(event.key)) {
      event.preventDefault();
      onKey?.(event.key);
    }
  };

  const shown = [];
  for (let row = first; row < end; row++) {
    const selected = isSelected(row);
    shown.push(
      <div
        key={row}
        id={`${id}-${row}`}
        class={`list__row${selected ? ' list__row--selected' : ''}${row === active ? ' list__row--active' : ''}`}
        role="option"
        aria-selected={selected}
        aria-setsize={rows}
        aria-posinset={row + 1}
        onClick={(event) =>
          onPick(row, event.shiftKey ? 'range' : event.ctrlKey || event.metaKey ? 'toggle' : 'only')
        }
      >
        {renderRow(row)}
      </div>,
    );
  }
  const activeShown = active >= first && active < end;
  return (
    <div
      class="list"
      id={id}
      ref={view}
      role={rows > 0 ? 'listbox' : 'group'}
      aria-label={label}
      aria-multiselectable={rows > 0 ? true : undefined}
      aria-activedescendant={activeShown ? `${id}-${active}` : undefined}
      tabIndex={rows > 0 ? 0 : -1}
      onKeyDown={onKeyDown}
      onScroll={(event) => setScrollTop(event.currentTarget.scrollTop)}
    >
      {rows === 0 ? (
        children
      ) : (
        <div class="list__range" role="presentation" style={{ height: `${scrolledHeight(range)}px` }}>
          <div class="list__window" role="presentation" style={{ height: `${viewHeight}px` }}>
            <div role="presentation" style={{ transform: `translateY(${shift}px)` }}>
              {shown}
            </div>
          </div>
        </div>
      )}
    </div>
  );
}
