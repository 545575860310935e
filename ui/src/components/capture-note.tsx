import './capture-note.css';

// What is shown while the program waits for the next key. The program has no way to cancel but Escape.
export function CaptureNote({ what }: { what: string }) {
  return (
    <span class="capture-note">
      {what}
      <span class="capture-note__cancel">Esc cancels</span>
    </span>
  );
}
