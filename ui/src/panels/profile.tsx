import { useLayoutEffect, useRef, useState } from 'preact/hooks';
import { addProfile, clearProfile, deleteProfile, switchProfile } from '../commands';
import { Button } from '../components/button';
import { Icon } from '../components/icon';
import { groupedNumber } from '../components/numbers';
import { Panel } from '../components/panel';
import { eventCount, profiles, recording } from '../store';
import './profile.css';

const kLongestName = 60;

// The program takes names as they come but drops these signs on the way.
function nameError(name: string): string {
  if (/["[\]\\]/.test(name)) return 'Leave out these signs: " [ ] \\';
  if (name.trim() === '') return 'Enter a name.';
  return '';
}

type Step = 'choose' | 'add' | 'clear' | 'delete';

export function ProfilePanel() {
  const [step, setStep] = useState<Step>('choose');
  const { names, current, defaultName } = profiles.value;
  const name = names[current] ?? '';
  const isDefault = name === defaultName;
  const select = useRef<HTMLSelectElement>(null);
  const done = () => {
    setStep('choose');
    select.current?.focus();
  };
  const events = `${groupedNumber(eventCount.value)} ${eventCount.value === 1 ? 'event' : 'events'}`;
  return (
    <Panel id="panel-profile" title="Profile" summary={name}>
      <div class="profile__choice">
        <select
          ref={select}
          class="profile__select"
          aria-label="Profile"
          value={String(current)}
          disabled={recording.value}
          onChange={(event) => void switchProfile(Number(event.currentTarget.value))}
        >
          {names.map((entry, index) => (
            <option key={index} value={String(index)}>
              {entry}
            </option>
          ))}
        </select>
        <Icon name="open" />
      </div>
      <div class="profile__step">
        {step === 'choose' && (
          <>
            <div class="row">
              <Button
                icon="plus"
                label="New profile"
                disabled={recording.value}
                onPress={() => setStep('add')}
              >
                New
              </Button>
              <Button label="Clear profile" disabled={recording.value} onPress={() => setStep('clear')}>
                Clear
              </Button>
              <Button
                label="Delete profile"
                disabled={recording.value || isDefault}
                onPress={() => setStep('delete')}
              >
                Delete
              </Button>
            </div>
            <p class="group__hint">
              {recording.value
                ? 'The profile stays as it is while a recording runs.'
                : isDefault
                  ? 'This profile can be cleared, not deleted.'
                  : 'A macro with its tool settings.'}
            </p>
          </>
        )}
        {step === 'add' && <AddProfile names={names} onDone={done} />}
        {step === 'clear' && (
          <Confirm
            question={`Clear its ${events} and its settings?`}
            verb="Clear now"
            onConfirm={clearProfile}
            onDone={done}
          />
        )}
        {step === 'delete' && (
          <Confirm
            question={`Delete it with its ${events}?`}
            verb="Delete now"
            onConfirm={deleteProfile}
            onDone={done}
          />
        )}
      </div>
    </Panel>
  );
}

function Confirm(props: {
  question: string;
  verb: string;
  onConfirm: () => Promise<void>;
  onDone: () => void;
}) {
  const cancel = useRef<HTMLButtonElement>(null);
  useLayoutEffect(() => cancel.current?.focus(), []);
  return (
    <div
      class="profile__confirm"
      role="group"
      aria-label={props.question}
      onKeyDown={(event) => event.key === 'Escape' && props.onDone()}
    >
      <span>{props.question}</span>
      <div class="row">
        <Button buttonRef={cancel} onPress={props.onDone}>
          Cancel
        </Button>
        <Button kind="stop" onPress={() => void props.onConfirm().then(props.onDone)}>
          {props.verb}
        </Button>
      </div>
    </div>
  );
}

function AddProfile({ names, onDone }: { names: string[]; onDone: () => void }) {
  const input = useRef<HTMLInputElement>(null);
  const [name, setName] = useState('');
  const [tried, setTried] = useState(false);
  useLayoutEffect(() => input.current?.focus(), []);
  const error = nameError(name);
  const known = names.includes(name.trim());
  const add = () => {
    setTried(true);
    if (!error) void addProfile(name.trim()).then(onDone);
  };
  const hint = known ? 'There is a profile of this name already.' : 'It starts with the present settings.';
  const shownError = tried || name !== '' ? error : '';
  return (
    <form
      class="profile__confirm"
      onSubmit={(event) => {
        event.preventDefault();
        add();
      }}
      onKeyDown={(event) => event.key === 'Escape' && onDone()}
    >
      <div class="profile__name">
        <input
          ref={input}
          class="profile__input"
          type="text"
          aria-label="Profile name"
          aria-invalid={shownError !== ''}
          aria-describedby="profile-name-hint"
          maxLength={kLongestName}
          value={name}
          onInput={(event) => setName(event.currentTarget.value)}
        />
        <Button onPress={onDone}>Cancel</Button>
        <Button kind="primary" onPress={add}>
          Add profile
        </Button>
      </div>
      <p
        id="profile-name-hint"
        class={`group__hint${shownError ? ' group__hint--error' : ''}`}
        aria-live="polite"
      >
        {shownError || hint}
      </p>
    </form>
  );
}
