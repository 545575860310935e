import { useEffect, useLayoutEffect, useRef, useState } from 'preact/hooks';
import { addProfile, clearProfile, deleteProfile, switchProfile } from '../commands';
import { Button } from '../components/button';
import { Confirm } from '../components/confirm';
import { Icon } from '../components/icon';
import { Panel } from '../components/panel';
import { counted } from '../format';
import { exportProfile, importNote, importProfile, useImportedSettings } from '../imports';
import { eventCount, fileDialog, profiles, recording } from '../store';
import { isDue, kWarnings, markSeen } from '../warnings';
import './profile.css';

const kLongestName = 60;
const kHintId = 'profile-hint';

// A pasted tab would arrive as two letters.
const withoutTabs = (name: string) => name.replace(/\p{Cc}/gu, ' ');

// The program takes names as they come but drops these signs on the way.
function nameError(name: string): string {
  if (/["[\]\\]/.test(name)) return 'Do not use these characters: " [ ] \\';
  if (name.trim() === '') return 'Enter a name.';
  return '';
}

type Step = 'choose' | 'add' | 'clear' | 'delete';

export function ProfilePanel() {
  const [step, setStep] = useState<Step>('choose');
  const { names, current, defaultName } = profiles.value;
  const name = names[current] ?? '';
  const isDefault = name === defaultName;
  const fixed = recording.value || fileDialog.value !== '';
  const select = useRef<HTMLSelectElement>(null);
  // A step that a recording would make useless does not wait for its end.
  useEffect(() => {
    if (recording.value) setStep('choose');
  }, [recording.value]);
  const done = () => {
    setStep('choose');
    select.current?.focus();
  };
  // A question is about the profile that it was asked for, not about one that an import makes current behind it.
  const inPlace = useRef<HTMLDivElement>(null);
  useEffect(() => {
    if (step !== 'clear' && step !== 'delete') return;
    if (inPlace.current?.contains(document.activeElement)) done();
    else setStep('choose');
  }, [current, name, names.length]);
  // What is asked each time is explained the first time.
  const explained = eventCount.value > 0 && isDue(kWarnings.losingEvents);
  const events = counted(eventCount.value, 'event');
  return (
    <Panel id="panel-profile" title="Profile" summary={name}>
      <div class="profile__first">
        <div class="profile__choice">
          <select
            ref={select}
            class="profile__select"
            aria-label="Profile"
            value={String(current)}
            disabled={fixed}
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
        <Button
          icon="plus"
          label="New profile"
          disabled={fixed || step === 'add'}
          onPress={() => setStep('add')}
        >
          New
        </Button>
      </div>
      <div class="profile__step" ref={inPlace}>
        {step === 'choose' && (
          <>
            <div class="profile__more">
              <FileButton which="import" onPress={importProfile}>
                Import
              </FileButton>
              <FileButton which="export" onPress={exportProfile}>
                Export
              </FileButton>
              <Button label="Clear profile" disabled={fixed} onPress={() => setStep('clear')}>
                Clear
              </Button>
              <Button label="Delete profile" disabled={fixed || isDefault} onPress={() => setStep('delete')}>
                Delete
              </Button>
            </div>
            <Hint isDefault={isDefault} />
          </>
        )}
        {step === 'add' && <AddProfile names={names} onDone={done} />}
        {step === 'clear' && (
          <Ask
            question={`Clear ${events} and all settings?`}
            verb="Clear now"
            explained={explained}
            onConfirm={clearProfile}
            onDone={done}
          />
        )}
        {step === 'delete' && (
          <Ask
            question={`Delete this profile with ${events}?`}
            verb="Delete now"
            explained={explained}
            onConfirm={deleteProfile}
            onDone={done}
          />
        )}
      </div>
    </Panel>
  );
}

// The program's dialog is open until the command answers. The button keeps the focus for that time.
function FileButton(props: { which: 'import' | 'export'; children: string; onPress: () => Promise<void> }) {
  const { which, children, onPress } = props;
  return (
    <Button
      label={`${children} profile`}
      describedBy={kHintId}
      busy={fileDialog.value === which}
      disabled={recording.value || (fileDialog.value !== '' && fileDialog.value !== which)}
      onPress={() => void onPress()}
    >
      {children}
    </Button>
  );
}

function Hint({ isDefault }: { isDefault: boolean }) {
  const note = importNote.value;
  const text = recording.value
    ? 'Profiles cannot be changed during a recording.'
    : fileDialog.value === 'import'
      ? 'Choose a macro file in the file dialog.'
      : fileDialog.value === 'export'
        ? 'Choose a name and a folder in the file dialog.'
        : note
          ? note.reset
            ? 'The file has no settings. Both tools use their defaults.'
            : 'Settings in the file are not in use yet.'
          : isDefault
            ? 'The default profile cannot be deleted.'
            : 'A macro and its settings.';
  return (
    <div class="profile__hint">
      <p class="group__hint" id={kHintId} aria-live="polite">
        {text}
      </p>
      {note && !note.reset && !recording.value && fileDialog.value === '' && (
        <Button onPress={() => void useImportedSettings()}>Use them</Button>
      )}
    </div>
  );
}

function Ask(props: {
  question: string;
  verb: string;
  explained: boolean;
  onConfirm: () => Promise<void>;
  onDone: () => void;
}) {
  const { question, verb, explained, onConfirm, onDone } = props;
  const inSight = useRef(true);
  useEffect(() => () => void (inSight.current = false), []);
  const confirm = () => {
    if (explained) void markSeen(kWarnings.losingEvents);
    // The list may have told it already, and the person may be at another step.
    void onConfirm().then(() => inSight.current && onDone());
  };
  return (
    <Confirm verb={verb} onConfirm={confirm} onCancel={onDone}>
      <span>{question}</span>
      <p class="group__hint">{explained ? kWarnings.losingEvents.text : 'This cannot be undone.'}</p>
    </Confirm>
  );
}

function AddProfile({ names, onDone }: { names: string[]; onDone: () => void }) {
  const input = useRef<HTMLInputElement>(null);
  const [name, setName] = useState('');
  const [tried, setTried] = useState(false);
  const [sent, setSent] = useState(false);
  useLayoutEffect(() => input.current?.focus(), []);
  const error = nameError(name);
  const known = names.includes(name.trim());
  const add = () => {
    setTried(true);
    if (error || sent) return;
    setSent(true);
    void addProfile(name.trim()).then(onDone);
  };
  const hint = known ? 'Another profile has this name.' : 'Starts with the current settings.';
  const shownError = tried || name !== '' ? error : '';
  return (
    <form
      class="profile__new"
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
          onInput={(event) => setName(withoutTabs(event.currentTarget.value))}
        />
        <Button onPress={onDone}>Cancel</Button>
        <Button kind="primary" pending={sent} onPress={add}>
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
