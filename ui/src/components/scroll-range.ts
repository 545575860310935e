// The visible rows of a long list. Browsers lose precision above 2^24 pixels, so a taller list scrolls through a
// shorter range, and its scroll position is stretched to the rows.
export const kMaxRange = 16_000_000; // px

export interface ScrollRange {
  rows: number;
  rowHeight: number; // px
  viewHeight: number; // px
}

const fullHeight = (range: ScrollRange) => range.rows * range.rowHeight;
export const scrolledHeight = (range: ScrollRange) => Math.min(fullHeight(range), kMaxRange);

// Returns how many pixels of rows one pixel of scrolling means; 1 unless the list is too tall.
function stretch(range: ScrollRange): number {
  const travel = scrolledHeight(range) - range.viewHeight;
  return travel > 0 ? (fullHeight(range) - range.viewHeight) / travel : 1;
}

// Returns the pixel offset in the rows at the top of the view.
export const offsetAt = (scrollTop: number, range: ScrollRange) =>
  Math.max(0, Math.min(scrollTop * stretch(range), fullHeight(range) - range.viewHeight));

// Returns the first visible row and the row after the last.
export function rowsInSight(scrollTop: number, range: ScrollRange): { first: number; end: number } {
  const offset = offsetAt(scrollTop, range);
  const first = Math.floor(offset / range.rowHeight);
  const end = Math.min(range.rows, Math.ceil((offset + range.viewHeight) / range.rowHeight));
  return { first, end };
}

// Returns the scroll position that shows the whole row, nearest to the present one.
export function scrollTopFor(row: number, scrollTop: number, range: ScrollRange): number {
  const top = row * range.rowHeight;
  const bottom = top + range.rowHeight;
  const offset = offsetAt(scrollTop, range);
  if (top < offset) return top / stretch(range);
  if (bottom > offset + range.viewHeight) return (bottom - range.viewHeight) / stretch(range);
  return scrollTop;
}

// Returns the scroll position that has the row at the top of the view, with `above` pixels of it hidden. The browser
// stops before that if too few rows follow.
export const scrollTopAt = (row: number, above: number, range: ScrollRange) =>
  (row * range.rowHeight + above) / stretch(range);
