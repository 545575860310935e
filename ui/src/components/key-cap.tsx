import './key-cap.css';

// The name of a key or mouse button, as the program tells it.
export function KeyCap({ name }: { name: string }) {
  return <kbd class="key-cap">{name || '\u2013'}</kbd>;
}
