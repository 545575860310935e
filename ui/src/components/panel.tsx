import type { ComponentChildren } from 'preact';
import { useState } from 'preact/hooks';
import { Icon } from './icon';
import './panel.css';

export interface PanelProps {
  id: 'panel-profile' | 'panel-spammer' | 'panel-keyspam' | 'panel-tracker' | 'panel-ui';
  title: string;
  summary?: ComponentChildren; // one short line beside the title
  action?: ComponentChildren; // the panel's main button
  children: ComponentChildren;
}

export function Panel({ id, title, summary, action, children }: PanelProps) {
  const [open, setOpen] = useState(true);
  return (
    <section class={`panel${open ? '' : ' panel--collapsed'}`} id={id} aria-labelledby={`${id}-title`}>
      <header class="panel-header">
        <button
          type="button"
          class="panel-btn"
          aria-label={`${title}: show settings`}
          aria-expanded={open}
          aria-controls={`${id}-body`}
          onClick={() => setOpen(!open)}
        >
          <Icon name="open" />
        </button>
        <div class="panel__titles">
          <h2 id={`${id}-title`}>{title}</h2>
          {summary !== undefined && <div class="panel__summary">{summary}</div>}
        </div>
        {action}
      </header>
      <div class="panel__body" id={`${id}-body`} hidden={!open}>
        {children}
      </div>
    </section>
  );
}

// Controls that belong together, under one name. The line below them is kept free for the hint, and for what is wrong.
export function Group(props: {
  title: ComponentChildren;
  children: ComponentChildren;
  hint?: ComponentChildren;
  hintId?: string;
  error?: string;
}) {
  const { title, children, hint, hintId, error } = props;
  return (
    <fieldset class="group">
      <legend>{title}</legend>
      {children}
      {(hint !== undefined || hintId !== undefined) && (
        <p class={`group__hint${error ? ' group__hint--error' : ''}`} id={hintId} aria-live="polite">
          {error || hint}
        </p>
      )}
    </fieldset>
  );
}
