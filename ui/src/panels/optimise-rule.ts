// What optimising drops, by the rule that the program has: a move between moves that lies within 10 pixels of the last
// event kept. It must give the program's own count for every macro, so the arithmetic wraps in 32 bits as there.
import { kSliceEvents, type Sliced } from '../slices';
import { type Columns, Kind } from './macro-data';

const kNearSquared = 101;

// How many events an optimisation would drop.
export function* countDropped({ count, kind, a, b }: Columns): Sliced<number> {
  let dropped = 0;
  let kept = 0; // place of the last event kept
  for (let i = 1; i + 1 < count; i++) {
    const between = kind[i] === Kind.AbsMove && kind[i + 1] === Kind.AbsMove && kind[kept] === Kind.AbsMove;
    const dx = ((a[i] as number) - (a[kept] as number)) | 0;
    const dy = ((b[i] as number) - (b[kept] as number)) | 0;
    if (between && ((Math.imul(dx, dx) + Math.imul(dy, dy)) | 0) < kNearSquared) dropped++;
    else kept = i;
    if (i % (kSliceEvents * 5) === 0) yield;
  }
  return dropped;
}
