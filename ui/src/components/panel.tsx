import type { ComponentChildren } from 'preact';
import { isMainWindow } from '../bridge';
import { setPanelMinimised } from '../commands';
import { movePanel, panelPosition } from '../panel-order';
import type { PanelId } from '../reports';
import { appSettings, arranging } from '../store';
import { Icon } from './icon';
import './panel.css';

export interface PanelProps {
  id: PanelId;
  title: string;
  summary?: ComponentChildren; // one short line beside the title
  action?: ComponentChildren; // the panel's main button
  children: ComponentChildren;
}

// NOTE: in a panel's own window, a press in the header drags the window, except inside an element of class panel-btn.
export function Panel({ id, title, summary, action, children }: PanelProps) {
  const isOpen = !appSettings.value.minimizedPanels.includes(id);
  const toggle = () => void setPanelMinimised(id, isOpen);
  const moving = arranging.value === id;
  return (
    <section
      class={`panel${isOpen ? '' : ' panel--collapsed'}`}
      id={id}
      data-panel={id}
      aria-labelledby={`${id}-title`}
    >
      <header class="panel-header">
        {isMainWindow() && <Grip id={id} title={title} moving={moving} />}
        <button
          type="button"
          class="panel-btn panel__toggle"
          aria-label={`${title}: show settings`}
          title={isOpen ? `Collapses the panel ${title}.` : `Expands the panel ${title}.`}
          aria-expanded={isOpen}
          aria-controls={`${id}-body`}
          onClick={toggle}
        >
          <Icon name="open" />
        </button>
        <div class="panel__titles" onClick={toggle}>
          <h2 id={`${id}-title`}>{title}</h2>
          {summary !== undefined && <div class="panel__summary">{summary}</div>}
        </div>
        <div class="panel-btn panel__action">{moving ? <Movers id={id} title={title} /> : action}</div>
      </header>
      <div class="panel__body" id={`${id}-body`} hidden={!isOpen}>
        {children}
      </div>
    </section>
  );
}

interface MoverProps {
  id: PanelId;
  title: string;
}

// Drags the panel and moves it by the arrow keys. A press shows buttons that move it.
function Grip({ id, title, moving }: MoverProps & { moving: boolean }) {
  const onKeyDown = (event: KeyboardEvent) => {
    const { position, count } = panelPosition(id);
    const targets: Record<string, number> = {
      ArrowUp: position - 1,
      ArrowDown: position + 1,
      Home: 0,
      End: count - 1,
    };
    const target = targets[event.key];
    if (target !== undefined) {
      event.preventDefault();
      movePanel(id, title, target);
    } else if (event.key === 'Escape') {
      arranging.value = '';
    }
  };
  return (
    <button
      type="button"
      class="panel-btn panel__grip"
      aria-label={`Move ${title}`}
      title="Moves the panel: drag it, or press the arrow keys."
      aria-expanded={moving}
      aria-describedby="grip-help"
      onKeyDown={onKeyDown}
      onClick={() => (arranging.value = moving ? '' : id)}
    >
      <Icon name="grip" />
    </button>
  );
}

function Movers({ id, title }: MoverProps) {
  const { position, count } = panelPosition(id);
  const done = () => {
    arranging.value = '';
    document.querySelector<HTMLElement>(`#${id} .panel__grip`)?.focus();
  };
  const mover = (by: 1 | -1, icon: 'up' | 'down') => (
    <button
      type="button"
      class="panel__mover"
      aria-label={`Move ${title} ${icon}`}
      title={`Moves the panel ${icon}.`}
      aria-disabled={position + by < 0 || position + by >= count}
      onClick={() => movePanel(id, title, position + by)}
    >
      <Icon name={icon} />
    </button>
  );
  return (
    <div
      class="panel__movers"
      role="group"
      aria-label={`Position of ${title}`}
      onKeyDown={(event) => event.key === 'Escape' && done()}
    >
      {mover(-1, 'up')}
      {mover(1, 'down')}
      <button
        type="button"
        class="panel__mover"
        aria-label={`Done moving ${title}`}
        title="Keeps the panel here."
        onClick={done}
      >
        <Icon name="done" />
      </button>
    </div>
  );
}

// Controls that belong together, under one title. The line below them shows the hint or the error.
export function Group(props: {
  title: ComponentChildren;
  children: ComponentChildren;
  class?: string;
  hint?: ComponentChildren;
  hintId?: string;
  error?: string;
  tall?: boolean; // the hint may take two lines
  notable?: boolean; // the hint is a warning
  silent?: boolean; // the hint follows the pointer; another element reports the same to screen readers
}) {
  const { title, children, hint, hintId, error, tall = false, notable = false, silent = false } = props;
  const kind = error ? ' group__hint--error' : notable ? ' group__hint--notable' : '';
  return (
    <fieldset class={`group${props.class ? ` ${props.class}` : ''}`}>
      <legend>{title}</legend>
      {children}
      {(hint !== undefined || hintId !== undefined) && (
        <p
          class={`group__hint${tall ? ' group__hint--tall' : ''}${kind}`}
          id={hintId}
          aria-live={silent ? 'off' : 'polite'}
        >
          {error || hint}
        </p>
      )}
    </fieldset>
  );
}
