import { useEffect, useState } from 'preact/hooks';
import { dismissMessage, doneNotice, messages, type NoticeAction, saveProblem } from '../notices';
import { failure } from '../store';
import { Button } from './button';
import { Icon } from './icon';
import './notices.css';

const kDoneTimeout = 7000; // ms
const kActionTimeout = 20_000; // ms, of a notice with a button

// The notices at the bottom of the window. Both regions exist while they are empty, so that screen readers watch them.
export function Notices() {
  const more = messages.value.length - 1;
  const done = doneNotice.value;
  return (
    <div class="notices">
      <div class="notices__region" role="alert">
        {saveProblem.value && <Notice text={saveProblem.value} />}
        {failure.value && <Notice text={failure.value} onDismiss={() => (failure.value = '')} />}
        {messages.value[0] !== undefined && (
          <Notice text={messages.value[0]} more={more} onDismiss={dismissMessage} />
        )}
      </div>
      <div class="notices__region" role="status" aria-label="Done">
        {done && <DoneNotice notice={done} />}
      </div>
    </div>
  );
}

// A notice without `onDismiss` stays until its reason has gone.
function Notice({ text, more = 0, onDismiss }: { text: string; more?: number; onDismiss?: () => void }) {
  return (
    <div class="notice">
      <span class="notice__icon">
        <Icon name="danger" />
      </span>
      <span class="notice__text">
        {text}
        {more > 0 && <span class="notice__more">{`${more} more after this.`}</span>}
      </span>
      {onDismiss && (
        <Button kind="quiet" tip="Hides this message." onPress={onDismiss}>
          Dismiss
        </Button>
      )}
    </div>
  );
}

// Disappears by itself, except while the pointer is over it, it has the focus or the page is hidden.
function DoneNotice({ notice }: { notice: { text: string; actions: NoticeAction[] } }) {
  const [hovered, setHovered] = useState(false);
  const [focused, setFocused] = useState(false);
  const [hidden, setHidden] = useState(document.hidden);
  useEffect(() => {
    const follow = () => setHidden(document.hidden);
    document.addEventListener('visibilitychange', follow);
    return () => document.removeEventListener('visibilitychange', follow);
  }, []);
  const stays = hovered || focused || hidden;
  useEffect(() => {
    if (stays) return;
    const timeout = notice.actions.length > 0 ? kActionTimeout : kDoneTimeout;
    const timer = window.setTimeout(() => (doneNotice.value = null), timeout);
    return () => window.clearTimeout(timer);
  }, [stays, notice]);
  return (
    <div
      class="notice notice--done"
      onPointerEnter={() => setHovered(true)}
      onPointerLeave={() => setHovered(false)}
      onFocusIn={() => setFocused(true)}
      onFocusOut={() => setFocused(false)}
    >
      <span class="notice__icon">
        <Icon name="done" />
      </span>
      <span class="notice__text">{notice.text}</span>
      {notice.actions.map(({ label, tip, press }) => (
        <Button
          key={label}
          label={`${label}: ${notice.text}`}
          tip={tip}
          onPress={() => {
            doneNotice.value = null;
            press();
          }}
        >
          {label}
        </Button>
      ))}
      <button
        type="button"
        class="notice__close"
        aria-label="Dismiss the notice"
        title="Hides this notice."
        onClick={() => (doneNotice.value = null)}
      >
        <Icon name="cross" />
      </button>
    </div>
  );
}
