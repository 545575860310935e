import type { ComponentChildren, Ref } from 'preact';
import { useImperativeHandle, useRef, useState } from 'preact/hooks';
import { useClientSize } from './client-size';
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

// How a press or a key selects: this row alone, this row added or removed, all rows from the anchor to this one, or
// nothing: only the keyboard cursor moves.
export type Pick = 'only' | 'toggle' | 'range' | 'move';

// A key that the list passes on. Undo is Ctrl+Z, Redo Ctrl+Shift+Z or Ctrl+Y.
export type ListKey = 'Enter' | 'Delete' | 'Escape' | 'Undo' | 'Redo';

export interface ListHandle {
  // Returns the row at the top of the view, and how many pixels of it are above.
  top: () => { row: number; above: number };
  scrollTo: (row: number, above: number) => void;
  reveal: (row: number) => void;
  focus: () => void;
}

export interface ListProps {
  id: string;
  label: string;
  rows: number;
  active: number; // row at the keyboard cursor, -1 none
  marked?: number; // row with a mark at its side, -1 none
  isSelected: (row: number) => boolean;
  onPick: (row: number, how: Pick) => void;
  onPickAll: () => void;
  onKey?: (key: ListKey) => void;
  onUserScroll?: () => void; // before the wheel, the scroll bar, a press or a key may scroll
  renderRow: (row: number) => ComponentChildren;
  children?: ComponentChildren; // shown while there are no rows
  handle?: Ref<ListHandle>;
}

// A list of any length. Only the visible rows are in the document.
export function List(props: ListProps) {
  const { id, label, rows, active, onPick, children, handle } = props;
  const view = useRef<HTMLDivElement>(null);
  const [scrollTop, setScrollTop] = useState(0);
  const { height: viewHeight } = useClientSize(view);
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

  const onKeyDown = (event: KeyboardEvent) => {
    const passedOn = passedKey(event);
    // An empty list can still be undone to a full one.
    if (rows === 0 && passedOn !== 'Undo' && passedOn !== 'Redo') return;
    const pageRows = Math.max(1, Math.floor(viewHeight / kRowHeight) - 1);
    const pick = pickOfKey(event, active, rows, pageRows);
    if (pick) {
      props.onUserScroll?.();
      onPick(pick.row, pick.how);
      reveal(pick.row);
    } else if (isSelectAll(event)) {
      props.onPickAll();
    } else if (passedOn) {
      props.onKey?.(passedOn);
    } else if (event.key !== ' ') {
      return;
    }
    event.preventDefault();
  };
  const activeIsShown = active >= first && active < end;
  return (
    <div
      class="list"
      id={id}
      ref={view}
      role={rows > 0 ? 'listbox' : 'group'}
      aria-label={label}
      aria-multiselectable={rows > 0 ? true : undefined}
      aria-activedescendant={activeIsShown ? `${id}-${active}` : undefined}
      tabIndex={rows > 0 ? 0 : -1}
      onKeyDown={onKeyDown}
      onWheel={props.onUserScroll}
      onPointerDown={props.onUserScroll}
      onScroll={(event) => setScrollTop(event.currentTarget.scrollTop)}
    >
      {rows === 0 ? (
        children
      ) : (
        <div class="list__range" role="presentation" style={{ height: `${scrolledHeight(range)}px` }}>
          <div class="list__window" role="presentation" style={{ height: `${viewHeight}px` }}>
            <div role="presentation" style={{ transform: `translateY(${shift}px)` }}>
              {visibleRows(props, first, end)}
            </div>
          </div>
        </div>
      )}
    </div>
  );
}

function visibleRows(
  { id, rows, active, marked = -1, isSelected, onPick, renderRow }: ListProps,
  first: number,
  end: number,
) {
  const shown = [];
  for (let row = first; row < end; row++) {
    const selected = isSelected(row);
    shown.push(
      <div
        key={row}
        id={`${id}-${row}`}
        class={[
          'list__row',
          selected && 'list__row--selected',
          row === active && 'list__row--active',
          row === marked && 'list__row--marked',
        ]
          .filter(Boolean)
          .join(' ')}
        role="option"
        aria-selected={selected}
        aria-setsize={rows}
        aria-posinset={row + 1}
        onClick={(event) => onPick(row, event.shiftKey ? 'range' : hasCommandKey(event) ? 'toggle' : 'only')}
      >
        {renderRow(row)}
      </div>,
    );
  }
  return shown;
}

const hasCommandKey = (event: KeyboardEvent | MouseEvent) => event.ctrlKey || event.metaKey;

function passedKey(event: KeyboardEvent): ListKey | undefined {
  const { key, shiftKey } = event;
  if (key === 'Enter' || key === 'Delete' || key === 'Escape') return key;
  const letter = hasCommandKey(event) ? key.toLowerCase() : '';
  if (letter === 'z') return shiftKey ? 'Redo' : 'Undo';
  return letter === 'y' ? 'Redo' : undefined;
}

const isSelectAll = (event: KeyboardEvent) => hasCommandKey(event) && event.key.toLowerCase() === 'a';

// Returns the row that a key picks and how, or null for any other key.
function pickOfKey(
  event: KeyboardEvent,
  active: number,
  rows: number,
  pageRows: number,
): { row: number; how: Pick } | null {
  const { key, shiftKey } = event;
  if (key === ' ') {
    if (active < 0) return null;
    return { row: active, how: shiftKey ? 'range' : hasCommandKey(event) ? 'toggle' : 'only' };
  }
  const targets: Record<string, number> = {
    ArrowDown: active + 1,
    ArrowUp: active < 0 ? 0 : active - 1,
    PageDown: Math.max(0, active) + pageRows,
    PageUp: active - pageRows,
    Home: 0,
    End: rows - 1,
  };
  const target = targets[key];
  if (target === undefined) return null;
  const row = Math.max(0, Math.min(rows - 1, target));
  return { row, how: shiftKey ? 'range' : hasCommandKey(event) ? 'move' : 'only' };
}
