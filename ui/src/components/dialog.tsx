import type { ComponentChildren } from 'preact';
import { useId, useLayoutEffect, useRef } from 'preact/hooks';
import { failure } from '../store';
import { RunningNote } from './running-note';
import './dialog.css';

export interface DialogProps {
  title: string;
  children: ComponentChildren;
  actions: ComponentChildren; // buttons; the first of them has the focus at first
  alarming?: boolean; // an alertdialog: the person has to decide
  wide?: boolean;
  bodyLabel?: string; // names the part that scrolls, where it holds nothing to tab to
  onClose: () => void; // Esc
}

// A modal sheet over the page. The element keeps the focus inside and gives it back when it is gone. What is behind it
// cannot be pressed, so it shows what runs, and failures, itself.
export function Dialog(props: DialogProps) {
  const { title, children, actions, alarming = false, wide = false, bodyLabel } = props;
  const element = useRef<HTMLDialogElement>(null);
  const id = useId();
  const close = useRef<(() => void) | null>(props.onClose);
  if (close.current) close.current = props.onClose;
  useLayoutEffect(() => {
    const opener = document.activeElement;
    const dialog = element.current;
    dialog?.showModal();
    dialog?.querySelector<HTMLElement>('.dialog__actions button')?.focus();
    return () => {
      close.current = null;
      dialog?.close();
      if (opener instanceof HTMLElement) opener.focus({ preventScroll: true });
    };
  }, []);
  return (
    <dialog
      ref={element}
      class={`dialog${wide ? ' dialog--wide' : ''}`}
      role={alarming ? 'alertdialog' : 'dialog'}
      aria-labelledby={`${id}-title`}
      aria-describedby={alarming ? `${id}-body` : undefined}
      onCancel={(event) => {
        event.preventDefault();
        close.current?.();
      }}
      // NOTE: a second Esc closes the element without asking.
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
