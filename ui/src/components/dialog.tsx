import type { ComponentChildren } from 'preact';
import { useEffect, useId, useLayoutEffect, useRef } from 'preact/hooks';
import './dialog.css';

export interface DialogProps {
  title: string;
  children: ComponentChildren;
  actions: ComponentChildren; // buttons; the one with `data-first` is focused at first, else the first of them
  alarming?: boolean; // an alertdialog: the person has to decide
  onClose: () => void; // Esc
}

// A modal sheet over the page. The element keeps the focus inside and gives it back when it is gone.
export function Dialog({ title, children, actions, alarming = false, onClose }: DialogProps) {
  const element = useRef<HTMLDialogElement>(null);
  const id = useId();
  const opener = useRef(document.activeElement);
  useLayoutEffect(() => {
    const dialog = element.current;
    dialog?.showModal();
    const buttons = '.dialog__actions ';
    const first =
      dialog?.querySelector<HTMLElement>(`${buttons}[data-first] button, ${buttons}button[data-first]`) ??
      dialog?.querySelector<HTMLElement>(`${buttons}button`);
    first?.focus();
  }, []);
  useEffect(
    () => () => {
      if (opener.current instanceof HTMLElement) opener.current.focus();
    },
    [],
  );
  return (
    <dialog
      ref={element}
      class="dialog"
      role={alarming ? 'alertdialog' : 'dialog'}
      aria-labelledby={`${id}-title`}
      onCancel={(event) => {
        event.preventDefault();
        onClose();
      }}
    >
      <h2 class="dialog__title" id={`${id}-title`}>
        {title}
      </h2>
      <div class="dialog__body">{children}</div>
      <div class="dialog__actions">{actions}</div>
    </dialog>
  );
}
