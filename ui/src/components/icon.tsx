// Icons in the colour of the text. They repeat the text beside them, so screen readers skip them.
const paths = {
  play: 'M5 3.5v9l7.5-4.5z',
  stop: 'M4 4h8v8H4z',
  record: 'M8 3.5a4.5 4.5 0 1 0 0 9 4.5 4.5 0 0 0 0-9z',
  plus: 'M7.25 3h1.5v4.25H13v1.5H8.75V13h-1.5V8.75H3v-1.5h4.25z',
  minus: 'M3 7.25h10v1.5H3z',
  cross:
    'M4.1 3.05 8 6.94l3.9-3.89 1.05 1.06L9.06 8l3.89 3.9-1.05 1.05L8 9.06l-3.9 3.89-1.05-1.05L6.94 8 3.05 4.1z',
  undo: 'M6.5 2.7v2.6H9a4 4 0 0 1 0 8H5v-1.5h4a2.5 2.5 0 0 0 0-5H6.5v2.6L2.6 6.05z',
  target:
    'M7.25 1.5h1.5v2.1a4.5 4.5 0 0 1 3.65 3.65h2.1v1.5h-2.1a4.5 4.5 0 0 1-3.65 3.65v2.1h-1.5v-2.1A4.5 4.5 0 0 1 3.6 8.75H1.5v-1.5h2.1A4.5 4.5 0 0 1 7.25 3.6zM8 5a3 3 0 1 0 0 6 3 3 0 0 0 0-6z',
  open: 'M3.5 5.4 8 9.9l4.5-4.5 1.05 1.05L8 12 2.45 6.45z',
  thin: 'M2 4h12v1.5H2zm2.5 3.25h7v1.5h-7zM7 10.5h2V12H7z',
  danger: 'M5.3 1.5h5.4l3.8 3.8v5.4l-3.8 3.8H5.3l-3.8-3.8V5.3zM7.2 4.2v4.9h1.6V4.2zm0 6.1v1.6h1.6v-1.6z',
  caution: 'M8 1.3 15.4 14.2H.6zM7.25 6v4.2h1.5V6zm0 5.2v1.5h1.5v-1.5z',
  done: 'M6.3 10.1 12.6 3.8l1.1 1.1-7.4 7.4L2.3 8.3l1.1-1.1z',
  gear: 'M6.9 1.4h2.2l.35 1.75 1.1.45 1.5-1 1.55 1.55-1 1.5.45 1.1 1.75.35v2.2l-1.75.35-.45 1.1 1 1.5-1.55 1.55-1.5-1-1.1.45-.35 1.75H6.9l-.35-1.75-1.1-.45-1.5 1L2.4 12.25l1-1.5-.45-1.1L1.2 9.3V7.1l1.75-.35.45-1.1-1-1.5L3.95 2.6l1.5 1 1.1-.45zM8 5.7a2.5 2.5 0 1 0 0 5 2.5 2.5 0 0 0 0-5z',
  grip: 'M5 3h2v2H5zm4 0h2v2H9zM5 7h2v2H5zm4 0h2v2H9zm-4 4h2v2H5zm4 0h2v2H9z',
  up: 'M8 3.5l4.6 4.6-1.05 1.05-2.8-2.8V13h-1.5V6.35l-2.8 2.8L3.4 8.1z',
  down: 'M8 12.5l4.6-4.6-1.05-1.05-2.8 2.8V3h-1.5v6.65l-2.8-2.8L3.4 7.9z',
  lock: 'M5 7V5a3 3 0 0 1 6 0v2h1v6H4V7zm1.5 0h3V5a1.5 1.5 0 0 0-3 0z',
  key: 'M2 4h12v8H2zm1.5 1.5v5h9v-5zM5 6.5h1.5V8H5zm2.25 0h1.5V8h-1.5zm2.25 0H11V8H9.5zM5 8.75h6v1.25H5z',
  off: 'M8 1.8a6.2 6.2 0 1 0 0 12.4A6.2 6.2 0 0 0 8 1.8zm0 1.5a4.7 4.7 0 0 1 2.8.9L4.2 10.8A4.7 4.7 0 0 1 8 3.3zm0 9.4a4.7 4.7 0 0 1-2.8-.9l6.6-6.6A4.7 4.7 0 0 1 8 12.7z',
  pointer: 'M4 2l9 5.2-3.9.9 2.3 3.9-1.5.9-2.3-3.9L4.8 12z',
} as const;

export type IconName = keyof typeof paths;

export function Icon({ name }: { name: IconName }) {
  return (
    <svg class="icon" viewBox="0 0 16 16" width="16" height="16" aria-hidden="true" focusable="false">
      <path d={paths[name]} fill="currentColor" fill-rule="evenodd" />
    </svg>
  );
}
