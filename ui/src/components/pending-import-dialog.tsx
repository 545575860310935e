import { useEffect, useState } from 'preact/hooks';
import { clockTime, counted, groupedNumber } from '../format';
import {
  acceptPendingImport,
  deciding,
  pendingImport,
  pendingReplaced,
  rejectPendingImport,
} from '../imports';
import type { PendingImport } from '../reports';
import { recording } from '../store';
import { Button } from './button';
import { Dialog } from './dialog';
import { FindingNumber, FindingsTimeline } from './findings-timeline';
import { Icon } from './icon';
import './pending-import-dialog.css';

// The dialog may open just as the user presses something else, or replace a macro that the user has just read about.
const kAcceptDelay = 1000; // ms before it can be accepted

export function PendingImportDialog() {
  const macro = pendingImport.value;
  return macro && <Decision key={macro.pendingId} macro={macro} />;
}

function levelText({ danger, dangers, cautions }: PendingImport): string {
  const found = [
    dangers > 0 && counted(dangers, 'danger'),
    cautions > 0 && counted(cautions, 'caution'),
  ].filter((text) => text !== false);
  const what = danger ? 'This macro may do harm' : 'This macro may surprise you';
  return found.length > 0 ? `${what}: ${found.join(', ')}.` : `${what}.`;
}

function factsText({ events, seconds }: PendingImport): string {
  const known = [
    events !== undefined && counted(events, 'event'),
    seconds !== undefined && `${clockTime(seconds)} long`,
  ];
  return known.filter((text) => text !== false).join(', ');
}

function Decision({ macro }: { macro: PendingImport }) {
  const { pendingId, name, findings, danger, dangers, cautions } = macro;
  const [canAccept, setCanAccept] = useState(false);
  useEffect(() => {
    const timer = window.setTimeout(() => setCanAccept(true), kAcceptDelay);
    return () => window.clearTimeout(timer);
  }, []);
  const more = dangers + cautions - findings.length;
  const known = factsText(macro);
  return (
    <Dialog
      title={name ? `Import \u201c${name}\u201d?` : 'Import this macro?'}
      alarming
      wide
      bodyLabel="Scan result"
      onClose={() => void rejectPendingImport(pendingId)}
      actions={
        <>
          {recording.value && (
            <span class="pending-import__wait">You can import it when the recording ends.</span>
          )}
          <Button
            kind="primary"
            tip="Drops this macro."
            waiting={deciding.value}
            onPress={() => void rejectPendingImport(pendingId)}
          >
            Don&rsquo;t import
          </Button>
          <Button
            kind="danger"
            tip="Adds this macro as a new profile. Nothing plays until you start it."
            waiting={!canAccept || deciding.value || recording.value}
            onPress={() => void acceptPendingImport(pendingId)}
          >
            Import anyway
          </Button>
        </>
      }
    >
      {pendingReplaced.value && (
        <p class="pending-import__replaced">This macro replaces the previous one, which was not imported.</p>
      )}
      <p class={`pending-import__level${danger ? ' pending-import__level--danger' : ''}`}>
        <Icon name={danger ? 'danger' : 'caution'} />
        <span>{levelText(macro)}</span>
      </p>
      <p class="pending-import__facts">
        {known && `${known}. `}
        Nothing is imported yet. Import it only if you trust its source and expect this.
      </p>
      <FindingsTimeline macro={macro} />
      <ol class="findings" aria-label="Findings">
        {findings.map((finding, index) => (
          <li key={index} class="findings__item">
            <span aria-hidden="true">
              <FindingNumber index={index} danger={finding.danger} />
            </span>
            <div>
              <div class="findings__head">
                <span class={`findings__word${finding.danger ? ' findings__word--danger' : ''}`}>
                  <Icon name={finding.danger ? 'danger' : 'caution'} />
                  {finding.danger ? 'Danger' : 'Caution'}
                </span>
                <span class="findings__time">at {clockTime(finding.time)}</span>
              </div>
              <div>{finding.message}</div>
            </div>
          </li>
        ))}
      </ol>
      {more > 0 && <p class="pending-import__facts">{`and ${groupedNumber(more)} more.`}</p>}
    </Dialog>
  );
}
