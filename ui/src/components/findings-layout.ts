// The geometry of the findings timeline: finding numbers that do not overlap, and the outlines of its lanes.

const kMarkWidth = 0.075; // part of the line that one number takes
const kMaxRows = 3;

export interface FindingMark {
  index: number; // of the finding
  position: number; // 0 the start, 1 the end
  row: number; // 0 is the lowest
}

// Leaves out a mark that has no space in any row. The list names all findings.
export function placeMarks(times: readonly number[], span: number): FindingMark[] {
  const ends: number[] = []; // of the last mark in each row
  const marks: FindingMark[] = [];
  const order = times.map((time, index) => ({ time, index })).sort((a, b) => a.time - b.time);
  for (const { time, index } of order) {
    const position = span > 0 ? Math.min(1, Math.max(0, time / span)) : 0;
    let row = ends.findIndex((end) => position >= end);
    if (row < 0) row = ends.length;
    if (row >= kMaxRows) continue;
    ends[row] = position + kMarkWidth;
    marks.push({ index, position, row });
  }
  return marks;
}

// Returns the SVG path of counts in equal parts of the time, 100 wide and 20 high. Heights follow the square root, so a
// part with one event is visible beside a part with thousands.
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
