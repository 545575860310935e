import { useEffect, useState } from 'preact/hooks';
import { dismissMessage, messages, toast } from '../notices';
import { failure } from '../store';
import { Button } from './button';
import { Icon } from './icon';
import './notices.css';

const kToastStay = 7000; // ms

// At the foot of the window. Both regions are there before there is anything to say, so that readers follow them.
export function Notices() {
  const more = messages.value.length - 1;
  const said = toast.value;
  return (
    <div class="notices">
      <div class="notices__region" role="alert">
        {failure.value && <Notice text={failure.value} onDismiss={() => (failure.value = '')} />}
        {messages.value[0] !== undefined && (
          <Notice text={messages.value[0]} more={more} onDismiss={dismissMessage} />
        )}
      </div>
      <div class="notices__region" role="status" aria-label="Done">
        {said && <Toast text={said.text} said={said} />}
      </div>
    </div>
  );
}

function Notice({ text, more = 0, onDismiss }: { text: string; more?: number; onDismiss: () => void }) {
  return (
    <div class="notice">
      <span class="notice__sign">
        <Icon name="danger" />
      </span>
      <span class="notice__text">
        {text}
        {more > 0 && <span class="notice__more">{`${more} more after this.`}</span>}
      </span>
      <Button kind="quiet" onPress={onDismiss}>
        Dismiss
      </Button>
    </div>
  );
}

// It goes by itself, but not while it is pointed at, has the focus, or nobody can see the page.
function Toast({ text, said }: { text: string; said: object }) {
  const [pointed, setPointed] = useState(false);
  const [focused, setFocused] = useState(false);
  const [hidden, setHidden] = useState(document.hidden);
  useEffect(() => {
    const follow = () => setHidden(document.hidden);
    document.addEventListener('visibilitychange', follow);
    return () => document.removeEventListener('visibilitychange', follow);
  }, []);
  const stays = pointed || focused || hidden;
  useEffect(() => {
    if (stays) return;
    const timer = window.setTimeout(() => (toast.value = null), kToastStay);
    return () => window.clearTimeout(timer);
  }, [stays, said]);
  return (
    <div
      class="notice notice--done"
      onPointerEnter={() => setPointed(true)}
      onPointerLeave={() => setPointed(false)}
      onFocusIn={() => setFocused(true)}
      onFocusOut={() => setFocused(false)}
    >
      <span class="notice__sign">
        <Icon name="done" />
      </span>
      <span class="notice__text">{text}</span>
      <button
        type="button"
        class="notice__close"
        aria-label="Dismiss the notice"
        onClick={() => (toast.value = null)}
      >
        <Icon name="cross" />
      </button>
    </div>
  );
}
