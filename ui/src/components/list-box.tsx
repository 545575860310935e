import type { Ref } from 'preact';
import { useEffect, useId, useImperativeHandle, useLayoutEffect, useRef, useState } from 'preact/hooks';
import { Icon } from './icon';
import './list-box.css';

const kTypingPause = 700; // ms after which a typed letter begins a new search
const kPageOptions = 10; // options that a page key moves over
const kMaxHeight = 320; // px of the open list
const kMargin = 8; // px between the open list and the edge of the window

export interface ListBoxProps {
  label: string;
  tip: string;
  options: readonly string[];
  value: number; // index of the chosen option
  disabled?: boolean;
  onChange: (index: number) => void;
  boxRef?: Ref<{ focus: () => void }>;
}

// A choice of one option of many, which opens below its button, or above it if there is more space. The system's own
// list does not follow the page's colours in every web view.
export function ListBox(props: ListBoxProps) {
  const { label, tip, options, value, disabled = false, boxRef } = props;
  const id = useId();
  const box = useRef<HTMLButtonElement>(null);
  const [active, setActive] = useState(-1); // the option at the keyboard cursor; -1 while the list is closed
  const search = useTypeAhead(options);
  const isOpen = active >= 0 && !disabled;
  const names = options.join('\n');
  useEffect(() => setActive(-1), [disabled, names]);
  useImperativeHandle(boxRef ?? null, () => ({ focus: () => box.current?.focus() }));

  const clamp = (index: number) => Math.max(0, Math.min(options.length - 1, index));
  const choose = (index: number) => {
    setActive(-1);
    if (index !== value) props.onChange(index);
  };
  const onKeyDown = (event: KeyboardEvent) => {
    const from = isOpen ? active : value;
    const found = search(event, from);
    const target = found ?? keyTarget(event, from, isOpen, options.length);
    if (target !== undefined) setActive(clamp(target));
    else if (isOpen && event.key === 'Escape') setActive(-1);
    else if (isOpen && (event.key === 'Enter' || event.key === ' ')) choose(active);
    else if (isOpen && event.key === 'Tab') return choose(active);
    else return;
    event.preventDefault();
    event.stopPropagation();
  };
  return (
    <div
      class="list-box"
      onFocusOut={(event) => {
        if (!event.currentTarget.contains(event.relatedTarget as Node | null)) setActive(-1);
      }}
    >
      <button
        type="button"
        ref={box}
        class="list-box__button"
        role="combobox"
        aria-label={label}
        title={tip}
        aria-haspopup="listbox"
        aria-expanded={isOpen}
        aria-controls={`${id}-list`}
        aria-activedescendant={isOpen ? `${id}-${active}` : undefined}
        disabled={disabled}
        onClick={() => setActive(isOpen ? -1 : clamp(value))}
        onKeyDown={onKeyDown}
      >
        <span class="list-box__value">{options[value] ?? ''}</span>
        <Icon name="open" />
      </button>
      {isOpen && <Options {...props} id={id} active={active} onActive={setActive} onChoose={choose} />}
    </div>
  );
}

interface OptionsProps extends ListBoxProps {
  id: string;
  active: number;
  onActive: (index: number) => void;
  onChoose: (index: number) => void;
}

function Options({ id, label, options, value, active, onActive, onChoose }: OptionsProps) {
  const list = useRef<HTMLDivElement>(null);
  // The row under the pointer must not scroll away from it.
  const byPointer = useRef(false);
  const [place, setPlace] = useState({ isAbove: false, height: kMaxHeight });
  useLayoutEffect(() => {
    const button = list.current?.parentElement?.getBoundingClientRect();
    if (!list.current || !button) return;
    const below = window.innerHeight - button.bottom - kMargin;
    const header = document.querySelector('.state-line')?.getBoundingClientRect().bottom ?? 0;
    const above = button.top - header - kMargin;
    const isAbove = list.current.scrollHeight > below && above > below;
    setPlace({ isAbove, height: Math.min(kMaxHeight, isAbove ? above : below) });
  }, []);
  useLayoutEffect(() => {
    const row = list.current?.children[active];
    if (!byPointer.current && list.current && row instanceof HTMLElement) reveal(list.current, row);
    byPointer.current = false;
  }, [active, place]);
  return (
    <div
      class={`list-box__list${place.isAbove ? ' list-box__list--above' : ''}`}
      style={{ maxHeight: `${place.height}px` }}
      ref={list}
      id={`${id}-list`}
      role="listbox"
      aria-label={label}
      tabIndex={-1}
      // The focus stays at the button.
      onPointerDown={(event) => event.preventDefault()}
      onMouseDown={(event) => event.preventDefault()}
    >
      {options.map((name, index) => (
        <div
          key={index}
          id={`${id}-${index}`}
          class={`list-box__option${index === active ? ' list-box__option--active' : ''}`}
          role="option"
          aria-selected={index === value}
          onPointerMove={() => {
            byPointer.current = index !== active;
            onActive(index);
          }}
          onClick={() => onChoose(index)}
        >
          <span class="list-box__mark">{index === value && <Icon name="done" />}</span>
          <span class="list-box__name">{name}</span>
        </div>
      ))}
    </div>
  );
}

// Scrolls the list alone: scrollIntoView() would scroll the page too.
function reveal(list: HTMLElement, row: HTMLElement): void {
  const bottom = row.offsetTop + row.offsetHeight - list.clientHeight;
  list.scrollTop = Math.max(Math.min(list.scrollTop, row.offsetTop), bottom);
}

// Returns the option that a key moves the cursor to, or undefined for any other key. On a closed list every such key
// opens it.
function keyTarget(event: KeyboardEvent, from: number, isOpen: boolean, count: number): number | undefined {
  const step = isOpen && !event.altKey ? 1 : 0;
  const targets: Record<string, number> = {
    ArrowDown: from + step,
    ArrowUp: from - step,
    Home: 0,
    End: count - 1,
    ...(isOpen ? { PageDown: from + kPageOptions, PageUp: from - kPageOptions } : { Enter: from, ' ': from }),
  };
  return targets[event.key];
}

// Returns a function that gets each key and returns the option that begins with what was typed, or undefined if the key
// types nothing or no option fits. One letter again and again goes through the options that begin with it.
function useTypeAhead(options: readonly string[]) {
  const typed = useRef({ text: '', at: 0 });
  return (event: KeyboardEvent, from: number): number | undefined => {
    const now = event.timeStamp;
    const before = now - typed.current.at < kTypingPause ? typed.current.text : '';
    const isTyped = event.key.length === 1 && !event.ctrlKey && !event.metaKey && !event.altKey;
    if (!isTyped || (event.key === ' ' && before === '')) return undefined;
    const text = before + event.key.toLowerCase();
    typed.current = { text, at: now };
    const isRepeat = text.length > 1 && [...text].every((letter) => letter === text[0]);
    const sought = isRepeat ? (text[0] as string) : text;
    const start = isRepeat || text.length === 1 ? from + 1 : from;
    const order = options.map((_, i) => (start + i) % options.length);
    return order.find((index) => options[index]?.toLowerCase().startsWith(sought));
  };
}
