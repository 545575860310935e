import type { ComponentChildren } from 'preact';
import { useId, useLayoutEffect, useRef } from 'preact/hooks';
import { runningWords, stopAll, whatRuns } from '../running';
import { failure } from '../store';
import { Button } from './button';
import './dialog.css';

export interface DialogProps {
  title: string;
  children: ComponentChildren;
  actions: ComponentChildren; // buttons; the first gets the focus, unless an element has `autofocus`
  alarming?: boolean; // an alertdialog: the user has to decide
  wide?: boolean;
  class?: string;
  bodyLabel?: string; // name of the body, for a body that scrolls and has no focusable element
  onClose: () => void; // Esc, and a press outside unless the dialog is alarming
}

// A modal dialog. The browser keeps the focus inside and returns it at the end. The page behind cannot be used, so the
// dialog itself shows what runs and what has failed.
export function Dialog(props: DialogProps) {
  const { title, children, actions, alarming = false, wide = false, bodyLabel } = props;
  const element = useRef<HTMLDialogElement>(null);
  const id = useId();
  const pressedOutside = useRef(false);
  const close = useRef<(() => void) | null>(props.onClose);
  if (close.current) close.current = props.onClose;
  useLayoutEffect(() => {
    const opener = document.activeElement;
    const dialog = element.current;
    // The page gets no scrollbar while it cannot scroll, and keeps its width.
    const { style, clientWidth } = document.documentElement;
    style.setProperty('--scrollbar', `${window.innerWidth - clientWidth}px`);
    dialog?.showModal();
    const first =
      dialog?.querySelector<HTMLElement>('[autofocus]') ?? dialog?.querySelector('.dialog__actions button');
    if (first instanceof HTMLElement) first.focus();
    return () => {
      close.current = null;
      dialog?.close();
      if (opener instanceof HTMLElement) opener.focus({ preventScroll: true });
    };
  }, []);
  return (
    <dialog
      ref={element}
      class={`dialog${wide ? ' dialog--wide' : ''}${props.class ? ` ${props.class}` : ''}`}
      role={alarming ? 'alertdialog' : 'dialog'}
      aria-labelledby={`${id}-title`}
      aria-describedby={alarming ? `${id}-body` : undefined}
      // The backdrop belongs to the element. A selection of text that ends there is no press outside.
      onPointerDown={(event) => (pressedOutside.current = event.target === event.currentTarget)}
      onClick={(event) => {
        if (!alarming && pressedOutside.current && event.target === event.currentTarget) close.current?.();
      }}
      onCancel={(event) => {
        event.preventDefault();
        close.current?.();
      }}
      // NOTE: a second Esc closes the element without a cancel event.
      onClose={() => close.current?.()}
    >
      <h2 class="dialog__title" id={`${id}-title`}>
        <span>{title}</span>
      </h2>
      <div
        class="dialog__body"
        id={`${id}-body`}
        role={bodyLabel ? 'group' : undefined}
        aria-label={bodyLabel}
        tabIndex={bodyLabel ? 0 : undefined}
      >
        {children}
      </div>
      <RunningNote />
      <div class="dialog__failure" role="alert">
        {failure.value}
      </div>
      <div class="dialog__actions">{actions}</div>
    </dialog>
  );
}

// Shows what runs behind the dialog, and stops it.
function RunningNote() {
  const running = whatRuns();
  if (running.length === 0) return null;
  return (
    <div class="dialog__running">
      <span>{`Still ${runningWords(running)}.`}</span>
      <Button kind="stop" icon="stop" tip="Stops everything that runs." onPress={() => stopAll(running)}>
        Stop now
      </Button>
    </div>
  );
}
