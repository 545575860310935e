import { useEffect, useState } from 'preact/hooks';
import { deciding, dropHeld, held, heldReplaced, importHeld } from '../imports';
import type { HeldMacro } from '../pending';
import { recording } from '../store';
import { Button } from './button';
import { Dialog } from './dialog';
import { Icon } from './icon';
import { counted, groupedNumber } from './numbers';
import { clockTime } from './time-marks';
import { FindingSign, TimePicture } from './time-picture';
import './held-macro.css';

// It may come up under a hand that is about to press something else, or with another macro than the one just read.
const kRest = 1000; // ms before it can be let in

export function HeldMacroDialog() {
  const macro = held.value;
  return macro && <Decision key={macro.pendingId} macro={macro} />;
}

function level({ danger, dangers, cautions }: HeldMacro): string {
  const found = [
    dangers > 0 && counted(dangers, 'danger'),
    cautions > 0 && counted(cautions, 'caution'),
  ].filter((text) => text !== false);
  const what = danger ? 'Parts of it can do harm' : 'Parts of it may surprise you';
  return found.length > 0 ? `${what}: ${found.join(', ')}.` : `${what}.`;
}

function facts({ events, seconds }: HeldMacro): string {
  const known = [
    events !== undefined && counted(events, 'event'),
    seconds !== undefined && `${clockTime(seconds)} long`,
  ];
  return known.filter((text) => text !== false).join(', ');
}

function Decision({ macro }: { macro: HeldMacro }) {
  const { pendingId, name, findings, danger, dangers, cautions } = macro;
  const [rested, setRested] = useState(false);
  useEffect(() => {
    const timer = window.setTimeout(() => setRested(true), kRest);
    return () => window.clearTimeout(timer);
  }, []);
  const more = dangers + cautions - findings.length;
  const known = facts(macro);
  return (
    <Dialog
      title={name ? `Import \u201c${name}\u201d?` : 'Import this macro?'}
      alarming
      wide
      bodyLabel="What was found"
      onClose={() => void dropHeld(pendingId)}
      actions={
        <>
          {recording.value && (
            <span class="held__wait">It can be imported when the recording has ended.</span>
          )}
          <Button kind="primary" waiting={deciding.value} onPress={() => void dropHeld(pendingId)}>
            Don&rsquo;t import
          </Button>
          <Button
            kind="danger"
            waiting={!rested || deciding.value || recording.value}
            onPress={() => void importHeld(pendingId)}
          >
            Import anyway
          </Button>
        </>
      }
    >
      {heldReplaced.value && (
        <p class="held__replaced">This macro has come in place of the one before, which was not imported.</p>
      )}
      <p class={`held__level${danger ? ' held__level--danger' : ''}`}>
        <Icon name={danger ? 'danger' : 'caution'} />
        <span>{level(macro)}</span>
      </p>
      <p class="held__facts">
        {known && `${known}. `}
        It is held back: nothing of it is imported yet. Import it only if you know where it comes from and
        expect this.
      </p>
      <TimePicture macro={macro} />
      <ol class="findings" aria-label="Findings">
        {findings.map((finding, index) => (
          <li key={index} class="findings__item">
            <span aria-hidden="true">
              <FindingSign index={index} danger={finding.danger} />
            </span>
            <div>
              <div class="findings__head">
                <span class={`findings__word${finding.danger ? ' findings__word--danger' : ''}`}>
                  <Icon name={finding.danger ? 'danger' : 'caution'} />
                  {finding.danger ? 'Danger' : 'Caution'}
                </span>
                <span class="findings__time">at {clockTime(finding.at)}</span>
              </div>
              <div>{finding.message}</div>
            </div>
          </li>
        ))}
      </ol>
      {more > 0 && <p class="held__facts">{`and ${groupedNumber(more)} more.`}</p>}
    </Dialog>
  );
}
