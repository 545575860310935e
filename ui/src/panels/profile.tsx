import { useEffect, useLayoutEffect, useRef, useState } from 'preact/hooks';
import { addProfile, clearProfile, deleteProfile, switchProfile } from '../commands';
import { Button } from '../components/button';
import { Confirm } from '../components/confirm';
import { ListBox } from '../components/list-box';
import { Panel } from '../components/panel';
import { counted } from '../format';
import { changeWithUndo, history, stepWords, undoStep } from '../history';
import { exportProfile, importNote, importProfile, useFileSettings } from '../imports';
import type { HistoryStep } from '../reports';
import { eventCount, fileDialog, profiles, recording } from '../store';
import { isDue, kWarnings, markSeen } from '../warnings';
import './profile.css';

const kMaxNameLength = 60;
const kHintId = 'profile-hint';

// The program does not decode escapes: a pasted tab would arrive as two letters.
const withoutControls = (name: string) => name.replace(/\p{Cc}/gu, ' ');

// The program's decoding of arguments drops these characters.
function nameError(name: string): string {
  if (/["[\]\\]/.test(name)) return 'Do not use these characters: " [ ] \\';
  if (name.trim() === '') return 'Enter a name.';
  return '';
}

interface FocusTarget {
  focus: () => void;
}

type Step = 'choose' | 'add' | 'clear' | 'delete';

// What the lower part of the panel shows, and how it ends.
function useStep(box: { current: FocusTarget | null }, lower: { current: HTMLElement | null }) {
  const [step, setStep] = useState<Step>('choose');
  const { names, current } = profiles.value;
  // Close the step at the start of a recording, during which a profile cannot be changed.
  useEffect(() => {
    if (recording.value) setStep('choose');
  }, [recording.value]);
  const finish = () => {
    setStep('choose');
    box.current?.focus();
  };
  // A question is about one profile. Close it when another one becomes current, for example by an import.
  useEffect(() => {
    if (step !== 'clear' && step !== 'delete') return;
    if (lower.current?.contains(document.activeElement)) finish();
    else setStep('choose');
  }, [current, names[current], names.length]);
  return { step, setStep, finish };
}

// Whether the commands of the panel would be rejected or would interfere.
const isFixed = () => recording.value || fileDialog.value !== '';

export function ProfilePanel() {
  const box = useRef<FocusTarget>(null);
  const lower = useRef<HTMLDivElement>(null);
  const { step, setStep, finish } = useStep(box, lower);
  const { names, current } = profiles.value;
  return (
    <Panel
      id="panel-profile"
      title="Profile"
      action={
        <div class="profile__choice">
          <ListBox
            boxRef={box}
            label="Profile"
            tip="Switches to another macro with its settings."
            options={names}
            value={current}
            disabled={isFixed()}
            onChange={(index) => void switchProfile(index)}
          />
        </div>
      }
    >
      <div class="panel__wide profile__step" ref={lower}>
        {step === 'choose' && <ProfileActions onStep={setStep} />}
        {step === 'add' && <AddProfile names={names} onDone={finish} />}
        {(step === 'clear' || step === 'delete') && <LossQuestion step={step} onDone={finish} />}
      </div>
    </Panel>
  );
}

function ProfileActions({ onStep }: { onStep: (step: Step) => void }) {
  const { names, current, defaultName } = profiles.value;
  const isDefault = (names[current] ?? '') === defaultName;
  return (
    <div class="profile__actions">
      <div class="profile__more">
        <Button
          label="New profile"
          tip="Adds an empty profile with the current settings."
          disabled={isFixed()}
          onPress={() => onStep('add')}
        >
          New
        </Button>
        <FileButton which="import" onPress={importProfile}>
          Import
        </FileButton>
        <FileButton which="export" onPress={exportProfile}>
          Export
        </FileButton>
        <Button
          label="Clear profile"
          tip="Removes the events of this profile and resets its settings. Asks first."
          disabled={isFixed()}
          onPress={() => onStep('clear')}
        >
          Clear
        </Button>
        <Button
          label="Delete profile"
          tip={isDefault ? 'The default profile cannot be deleted.' : 'Deletes this profile. Asks first.'}
          disabled={isFixed() || isDefault}
          onPress={() => onStep('delete')}
        >
          Delete
        </Button>
      </div>
      <Hint isDefault={isDefault} />
    </div>
  );
}

const kFileTips = {
  import: 'Reads a macro file as a new profile.',
  export: 'Writes this profile to a macro file.',
};

// Opens a file dialog of the program. The button keeps the focus until the dialog is closed.
function FileButton(props: { which: 'import' | 'export'; children: string; onPress: () => Promise<void> }) {
  const { which, children, onPress } = props;
  return (
    <Button
      label={`${children} profile`}
      tip={kFileTips[which]}
      describedBy={kHintId}
      busy={fileDialog.value === which}
      disabled={recording.value || (fileDialog.value !== '' && fileDialog.value !== which)}
      onPress={() => void onPress()}
    >
      {children}
    </Button>
  );
}

function hintText(isDefault: boolean): string {
  const note = importNote.value;
  if (recording.value) return 'Profiles cannot be changed during a recording.';
  if (fileDialog.value === 'import') return 'Choose a macro file in the file dialog.';
  if (fileDialog.value === 'export') return 'Choose a name and a folder in the file dialog.';
  const deleted = deletedProfile();
  if (deleted) return stepWords(deleted);
  if (note?.settingsUsable) return 'Settings in the file are not in use yet.';
  if (note && !note.fileSettings) return 'The file has no settings. Both tools use their defaults.';
  return isDefault ? 'The default profile cannot be deleted.' : 'A macro and its settings.';
}

// The step that deleted a profile, while it is the newest of all.
function deletedProfile(): HistoryStep | undefined {
  const [step] = history.value.undo;
  return step?.reason === 'deleteProfile' ? step : undefined;
}

function Hint({ isDefault }: { isDefault: boolean }) {
  const note = importNote.value;
  const deleted = deletedProfile();
  return (
    <div class="profile__hint">
      <p class="group__hint" id={kHintId} aria-live="polite">
        {hintText(isDefault)}
      </p>
      {deleted && !isFixed() ? (
        <Button
          label="Undo the deletion"
          tip="Brings the profile back."
          onPress={() => void undoStep(deleted)}
        >
          Undo
        </Button>
      ) : (
        note?.settingsUsable &&
        !isFixed() && (
          <Button tip="Uses the settings of the file." onPress={() => void useFileSettings()}>
            Use them
          </Button>
        )
      )}
    </div>
  );
}

function lossQuestion(step: 'clear' | 'delete', count: number): string {
  const events = counted(count, 'event');
  if (step === 'clear') return count > 0 ? `Clear ${events} and all settings?` : 'Reset all settings?';
  return count > 0 ? `Delete this profile with ${events}?` : 'Delete this empty profile?';
}

// Asks before the events of the profile are lost. The first time, it explains what Export is for.
function LossQuestion({ step, onDone }: { step: 'clear' | 'delete'; onDone: () => void }) {
  const isExplained = eventCount.value > 0 && isDue(kWarnings.losingEvents);
  const isShown = useRef(true);
  useEffect(() => () => void (isShown.current = false), []);
  const confirm = async () => {
    if (isExplained) void markSeen(kWarnings.losingEvents);
    const name = profiles.peek().names[profiles.peek().current] ?? '';
    const events = counted(eventCount.peek(), 'event');
    await (step === 'clear'
      ? changeWithUndo(clearProfile, () => `Cleared ${events} and all settings.`)
      : changeWithUndo(deleteProfile, () => `Deleted \u201c${name}\u201d with ${events}.`));
    // The new list may have closed the question already, and the user may be at another step.
    if (isShown.current) onDone();
  };
  return (
    <Confirm
      verb={step === 'clear' ? 'Clear now' : 'Delete now'}
      tip={step === 'clear' ? 'Removes the events and resets the settings.' : 'Deletes the profile.'}
      onConfirm={() => void confirm()}
      onCancel={onDone}
    >
      <span>{lossQuestion(step, eventCount.value)}</span>
      <p class="group__hint">{isExplained ? kWarnings.losingEvents.text : 'Undo works until you quit.'}</p>
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
  const isKnown = names.includes(name.trim());
  const add = () => {
    setTried(true);
    if (error || sent) return;
    setSent(true);
    void addProfile(name.trim()).then(onDone);
  };
  const hint = isKnown ? 'Another profile has this name.' : 'Starts with the current settings.';
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
          maxLength={kMaxNameLength}
          value={name}
          onInput={(event) => setName(withoutControls(event.currentTarget.value))}
        />
        <Button tip="Adds no profile." onPress={onDone}>
          Cancel
        </Button>
        <Button kind="primary" tip="Adds the profile and switches to it." pending={sent} onPress={add}>
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
