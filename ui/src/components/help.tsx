import guide from 'guide';
import { useLayoutEffect, useRef, useState } from 'preact/hooks';
import { counted } from '../format';
import { kHotkeys } from '../hotkey-order';
import { helpOpen, status } from '../store';
import { Button } from './button';
import { Dialog } from './dialog';
import { Icon } from './icon';
import { KeyCap } from './key-cap';
import './help.css';

const kKeysTitle = 'Keys';
// The section of the guide that the sheet of all keys includes.
const kKeyboardTitle = 'Keyboard control';

const kEffects = {
  autoclicker: 'starts and stops the autoclicker',
  keySpammer: 'starts and stops the key spammer',
  record: 'starts and stops a recording',
  play: 'starts and stops playback',
  unlock: 'locks and unlocks the other four',
};

export function HelpButton() {
  return (
    <button
      type="button"
      class="preferences-button help-button"
      aria-label="Help"
      title="Opens the guide and the list of all keys. Key: F1."
      aria-haspopup="dialog"
      onClick={() => (helpOpen.value = true)}
    >
      <Icon name="help" />
    </button>
  );
}

interface Topic {
  title: string;
  html: string; // from our own guide
  text: string; // what the search looks at, in lower case
}

const textOf = (html: string) => new DOMParser().parseFromString(html, 'text/html').body.textContent ?? '';

// The sheet of all keys, then the guide.
function makeTopics(): Topic[] {
  const keys = guide.find(({ title }) => title === kKeyboardTitle);
  const sections = [
    { title: kKeysTitle, html: keys?.html ?? '' },
    ...guide.filter(({ title }) => title !== kKeyboardTitle),
  ];
  return sections.map((one) => ({ ...one, text: `${one.title} ${textOf(one.html)}`.toLowerCase() }));
}

const wordsOf = (query: string) => query.toLowerCase().split(/\s+/).filter(Boolean);

export function Help() {
  return helpOpen.value ? <OpenHelp /> : null;
}

function OpenHelp() {
  const [query, setQuery] = useState('');
  const [topics] = useState(makeTopics);
  const text = useRef<HTMLDivElement>(null);
  const words = wordsOf(query);
  const hotkeys = kHotkeys
    .map(({ id }) => `hotkey ${status.value.hotkeys[id]} ${kEffects[id]}`)
    .join(' ')
    .toLowerCase();
  const found = topics.filter((topic) => {
    const searched = topic.title === kKeysTitle ? `${topic.text} ${hotkeys}` : topic.text;
    return words.every((word) => searched.includes(word));
  });
  useLayoutEffect(() => text.current?.scrollTo(0, 0), [query]);
  const close = () => (helpOpen.value = false);
  const show = (title: string) => {
    const section = text.current?.querySelector<HTMLElement>(`[data-topic="${title}"]`);
    if (!section || !text.current) return;
    text.current.scrollTop = section.offsetTop;
    section.querySelector<HTMLElement>('h3')?.focus({ preventScroll: true });
  };
  return (
    <Dialog
      title="Help"
      class="dialog--help"
      onClose={close}
      actions={
        <Button kind="primary" tip="Closes the help. Key: Esc." onPress={close}>
          Close
        </Button>
      }
    >
      <div class="help__search">
        <input
          class="profile__input"
          type="search"
          autoFocus
          autoComplete="off"
          spellcheck={false}
          aria-label="Search the help"
          placeholder="Search"
          value={query}
          onInput={(event) => setQuery(event.currentTarget.value)}
          // The first Esc clears the search, the second one closes the help.
          onKeyDown={(event) => {
            if (event.key !== 'Escape' || query === '') return;
            event.preventDefault();
            event.stopPropagation();
            setQuery('');
          }}
        />
        <p class="help__count" role="status" aria-label="Search result">
          {words.length > 0 && (found.length > 0 ? counted(found.length, 'section') : 'Nothing found.')}
        </p>
      </div>
      <nav class="help__contents" aria-label="Sections">
        {found.map(({ title }) => (
          <button key={title} type="button" title={`Shows the section ${title}.`} onClick={() => show(title)}>
            {title}
          </button>
        ))}
      </nav>
      <div class="help__text" ref={text} role="group" aria-label="Guide" tabIndex={0}>
        {found.map((topic) => (
          <section key={topic.title} data-topic={topic.title}>
            <h3 tabIndex={-1}>{topic.title}</h3>
            {topic.title === kKeysTitle && <HotkeyTable />}
            <TopicText html={topic.html} words={words} />
          </section>
        ))}
      </div>
    </Dialog>
  );
}

// The user's own hotkeys.
function HotkeyTable() {
  return (
    <table>
      <thead>
        <tr>
          <th>Hotkey</th>
          <th>Action</th>
        </tr>
      </thead>
      <tbody>
        {kHotkeys.map(({ id }) => (
          <tr key={id}>
            <td>
              <KeyCap name={status.value.hotkeys[id]} />
            </td>
            <td>{kEffects[id]}</td>
          </tr>
        ))}
      </tbody>
    </table>
  );
}

// The text of a section, with the found words marked.
function TopicText({ html, words }: { html: string; words: readonly string[] }) {
  const element = useRef<HTMLDivElement>(null);
  useLayoutEffect(() => {
    if (!element.current) return;
    element.current.innerHTML = html;
    if (words.length > 0) markWords(element.current, words);
  }, [html, words.join(' ')]);
  return <div ref={element} />;
}

function markWords(element: HTMLElement, words: readonly string[]): void {
  const walker = document.createTreeWalker(element, NodeFilter.SHOW_TEXT);
  const nodes: Text[] = [];
  while (walker.nextNode()) nodes.push(walker.currentNode as Text);
  for (const node of nodes) {
    const text = node.data;
    const lower = text.toLowerCase();
    const parts: (string | HTMLElement)[] = [];
    let done = 0;
    for (;;) {
      const next = nextMatch(lower, words, done);
      if (!next) break;
      const mark = document.createElement('mark');
      mark.textContent = text.slice(next.start, next.end);
      parts.push(text.slice(done, next.start), mark);
      done = next.end;
    }
    if (parts.length > 0) node.replaceWith(...parts, text.slice(done));
  }
}

// Returns the first match of any word from `from` on.
function nextMatch(
  text: string,
  words: readonly string[],
  from: number,
): { start: number; end: number } | null {
  let best: { start: number; end: number } | null = null;
  for (const word of words) {
    const start = text.indexOf(word, from);
    if (start >= 0 && (!best || start < best.start)) best = { start, end: start + word.length };
  }
  return best;
}
