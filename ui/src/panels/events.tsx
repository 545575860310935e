import { useEffect, useState } from 'preact/hooks';
import { deleteEvent, retimeEvent } from '../commands';
import { Button } from '../components/button';
import { List } from '../components/list';
import { NumberField } from '../components/number-field';
import { Group } from '../components/panel';
import { events, eventsLoading, recording } from '../store';
import { eventText } from './event-text';
import './events.css';

const kLongestTime = 1_000_000; // seconds

export function EventList() {
  const [selected, setSelected] = useState(-1);
  const [error, setError] = useState('');
  const list = events.value;
  const event = list[selected];
  useEffect(() => {
    if (selected >= list.length) setSelected(list.length - 1);
  }, [list, selected]);
  const hintId = 'events-hint';
  return (
    <Group title="Events" hint={hintFor(selected >= 0)} hintId={hintId} error={error}>
      <List
        id="events"
        label="Events"
        rows={recording.value ? 0 : list.length}
        selected={selected}
        onSelect={setSelected}
        onKey={(key) => key === 'Delete' && event && void deleteEvent(selected)}
        renderRow={(row) => {
          const entry = list[row];
          return (
            entry && (
              <div class="event" data-event={entry.desc}>
                <span class="event__number">{row + 1}</span>
                <span class="event__time">{entry.time.toFixed(3)}</span>
                <span class="event__text">{eventText(entry.desc)}</span>
              </div>
            )
          );
        }}
      >
        <p class="event__none">
          {recording.value
            ? 'The events are shown when the recording ends.'
            : 'What you record is listed here, event by event.'}
        </p>
      </List>
      <div class="pair">
        <NumberField
          key={selected}
          label="Time of the event"
          name="Time"
          unit="s"
          value={event ? event.time : 0}
          min={0}
          max={kLongestTime}
          decimals={6}
          step={0.1}
          disabled={!event}
          hintId={hintId}
          onChange={(seconds) => void retimeEvent(selected, seconds)}
          onError={setError}
        />
        <Button disabled={!event} onPress={() => void deleteEvent(selected)}>
          Delete event
        </Button>
      </div>
    </Group>
  );
}

function hintFor(chosen: boolean): string {
  if (eventsLoading.value) return 'Loading the events';
  return chosen
    ? 'An event keeps its place in the list when its time changes.'
    : 'Choose an event to change it.';
}
