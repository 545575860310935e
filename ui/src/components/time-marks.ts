// Where the signs of findings stand above a line of time, so that none covers another.

const kWidth = 0.075; // of the line, that one sign takes
const kMostRows = 3;

export interface TimeMark {
  index: number; // of the finding
  place: number; // 0 the start, 1 the end
  row: number; // 0 is the lowest
}

// Signs that find no room are left out; the list names all of them.
export function placeMarks(times: readonly number[], span: number): TimeMark[] {
  const ends: number[] = []; // of the last sign in each row
  const marks: TimeMark[] = [];
  const order = times.map((at, index) => ({ at, index })).sort((a, b) => a.at - b.at);
  for (const { at, index } of order) {
    const place = span > 0 ? Math.min(1, Math.max(0, at / span)) : 0;
    let row = ends.findIndex((end) => place >= end);
    if (row < 0) row = ends.length;
    if (row >= kMostRows) continue;
    ends[row] = place + kWidth;
    marks.push({ index, place, row });
  }
  return marks;
}

// Minutes, seconds and tenths: "1:05.2".
export function clockTime(seconds: number): string {
  const tenths = Math.round(Math.abs(seconds) * 10);
  const minutes = Math.floor(tenths / 600);
  const rest = ((tenths % 600) / 10).toFixed(1).padStart(4, '0');
  return `${seconds < 0 && tenths > 0 ? '-' : ''}${minutes}:${rest}`;
}

// The outline of counts in equal parts of the time, 100 wide and 20 high, as the path of an SVG. A part with anything in
// it is seen even beside one with thousands, so the heights follow the square root.
export function laneOutline(counts: readonly number[]): string {
  const most = Math.max(...counts, 1);
  const width = 100 / Math.max(1, counts.length);
  return counts
    .map((count, i) => {
      if (count === 0) return '';
      const height = Math.max(3, 20 * Math.sqrt(count / most));
      const [left, right] = [i * width, (i + 1) * width].map((at) => Number(at.toFixed(2)));
      return `M${left} 20V${Number((20 - height).toFixed(2))}H${right}V20z`;
    })
    .join('');
}
