import type { ComponentChildren } from 'preact';
import { useId, useLayoutEffect, useRef, useState } from 'preact/hooks';
import { Button } from './button';
import './confirm.css';

// A question in the place of the control that asked it. Cancel has the focus. The question can be answered once, even
// if it stays visible until the program has answered. The caller moves the focus afterwards.
export function Confirm(props: {
  children: ComponentChildren; // the question and its consequences
  verb: string;
  tip: string; // of the button with the verb
  onConfirm: () => void;
  onCancel: () => void; // Esc too
}) {
  const { children, verb, tip, onConfirm, onCancel } = props;
  const cancel = useRef<HTMLButtonElement>(null);
  const id = useId();
  const [confirmed, setConfirmed] = useState(false);
  const confirm = () => {
    if (confirmed) return;
    setConfirmed(true);
    onConfirm();
  };
  useLayoutEffect(() => cancel.current?.focus(), []);
  return (
    <div
      class="confirm"
      role="group"
      aria-labelledby={id}
      onKeyDown={(event) => event.key === 'Escape' && onCancel()}
    >
      <div class="confirm__text" id={id}>
        {children}
      </div>
      <div class="row">
        <Button buttonRef={cancel} tip="Changes nothing." onPress={onCancel}>
          Cancel
        </Button>
        <Button kind="stop" tip={tip} pending={confirmed} onPress={confirm}>
          {verb}
        </Button>
      </div>
    </div>
  );
}
