import './key-cap.css';

// The name of a key or mouse button, as the program reports it.
export function KeyCap({ name }: { name: string }) {
  return <kbd class="key-cap">{name || '\u2013'}</kbd>;
}

// Stands in the place of a key while the program waits for it. Only Esc cancels the waiting.
export function CaptureNote({ what }: { what: string }) {
  return (
    <span class="capture-note">
      {what}
      <span class="capture-note__cancel">Esc cancels</span>
    </span>
  );
}
