import type { ComponentChildren } from 'preact';
import { useLayoutEffect, useRef, useState } from 'preact/hooks';
import { offsetAt, rowsInSight, scrolledHeight, scrollTopFor, type ScrollRange } from './scroll-range';
import './list.css';

const kRowHeight = 28; // px; list.css has the same

export interface ListProps {
  id: string;
  label: string;
  rows: number;
  selected: number; // -1 none
  onSelect: (row: number) => void;
  onKey?: (key: string) => void; // Enter and Delete on the selected row
  renderRow: (row: number) => ComponentChildren;
  children?: ComponentChildren; // shown in place of the rows when there are none
}

// A list of any length: only the rows in sight are in the document.
export function List(props: ListProps) {
  const { id, label, rows, selected, onSelect, onKey, renderRow, children } = props;
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

  const select = (row: number) => {
    const target = Math.max(0, Math.min(rows - 1, row));
    onSelect(target);
    const element = view.current;
    if (element) element.scrollTop = scrollTopFor(target, element.scrollTop, range);
  };
  const onKeyDown = (event: KeyboardEvent) => {
    const page = Math.max(1, Math.floor(viewHeight / kRowHeight) - 1);
    const moves: Record<string, number> = {
      ArrowDown: selected + 1,
      ArrowUp: selected < 0 ? 0 : selected - 1,
      PageDown: Math.max(0, selected) + page,
      PageUp: selected - page,
      Home: 0,
      End: rows - 1,
    };
    const target = moves[event.key];
    if (target !== undefined && rows > 0) {
      event.preventDefault();
      select(target);
    } else if ((event.key === 'Enter' || event.key === 'Delete') && selected >= 0) {
      event.preventDefault();
      onKey?.(event.key);
    }
  };

  const shown = [];
  for (let row = first; row < end; row++) {
    shown.push(
      <div
        key={row}
        id={`${id}-${row}`}
        class={`list__row${row === selected ? ' list__row--selected' : ''}`}
        role="option"
        aria-selected={row === selected}
        aria-setsize={rows}
        aria-posinset={row + 1}
        onClick={() => onSelect(row)}
      >
        {renderRow(row)}
      </div>,
    );
  }
  const selectedShown = selected >= first && selected < end;
  return (
    <div
      class="list"
      id={id}
      ref={view}
      role={rows > 0 ? 'listbox' : 'group'}
      aria-label={label}
      aria-activedescendant={selectedShown ? `${id}-${selected}` : undefined}
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
