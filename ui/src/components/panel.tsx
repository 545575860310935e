import type { ComponentChildren } from 'preact';
import { movePanel, placeOf } from '../arrange';
import { has } from '../bridge';
import { setPanelMinimised } from '../commands';
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

// NOTE: what stands in an element of class panel-btn does not move the window when the panel is popped out.
export function Panel({ id, title, summary, action, children }: PanelProps) {
  const open = !appSettings.value.minimizedPanels.includes(id);
  const toggle = () => void setPanelMinimised(id, open);
  const moving = arranging.value === id;
  return (
    <section
      class={`panel${open ? '' : ' panel--collapsed'}`}
      id={id}
      data-panel={id}
      aria-labelledby={`${id}-title`}
    >
      <header class="panel-header">
        {has('setPanelOrder') && <Grip id={id} title={title} moving={moving} />}
        <button
          type="button"
          class="panel-btn panel__toggle"
          aria-label={`${title}: show settings`}
          aria-expanded={open}
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
      <div class="panel__body" id={`${id}-body`} hidden={!open}>
        {children}
      </div>
    </section>
  );
}

interface MoverProps {
  id: PanelId;
  title: string;
}

// Drags the panel, moves it by the arrow keys, and pressed shows buttons that do the same.
function Grip({ id, title, moving }: MoverProps & { moving: boolean }) {
  const onKeyDown = (event: KeyboardEvent) => {
    const { place, count } = placeOf(id);
    const targets: Record<string, number> = {
      ArrowUp: place - 1,
      ArrowDown: place + 1,
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
  const { place, count } = placeOf(id);
  const done = () => {
    arranging.value = '';
    document.querySelector<HTMLElement>(`#${id} .panel__grip`)?.focus();
  };
  const mover = (by: 1 | -1, icon: 'up' | 'down') => (
    <button
      type="button"
      class="panel__mover"
      aria-label={`Move ${title} ${icon}`}
      aria-disabled={place + by < 0 || place + by >= count}
      onClick={() => movePanel(id, title, place + by)}
    >
      <Icon name={icon} />
    </button>
  );
  return (
    <div
      class="panel__movers"
      role="group"
      aria-label={`Place of ${title}`}
      onKeyDown={(event) => event.key === 'Escape' && done()}
    >
      {mover(-1, 'up')}
      {mover(1, 'down')}
      <button type="button" class="panel__mover" aria-label={`Done moving ${title}`} onClick={done}>
        <Icon name="done" />
      </button>
    </div>
  );
}

// Controls that belong together, under one name. The line below them is kept free for the hint, and for what is wrong.
export function Group(props: {
  title: ComponentChildren;
  children: ComponentChildren;
  hint?: ComponentChildren;
  hintId?: string;
  error?: string;
  tall?: boolean; // the hint may take two lines
  notable?: boolean; // the hint says what the settings cannot do
  silent?: boolean; // the hint follows the pointer, and what it says is read aloud elsewhere
}) {
  const { title, children, hint, hintId, error, tall = false, notable = false, silent = false } = props;
  const kind = error ? ' group__hint--error' : notable ? ' group__hint--notable' : '';
  return (
    <fieldset class="group">
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
