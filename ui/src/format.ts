// Numbers and times as the page writes them.

const grouped = new Intl.NumberFormat('en', { maximumFractionDigits: 6 });
// "1,204"
export const groupedNumber = (value: number) => grouped.format(value);

// "1 event", "1,204 events"
export const counted = (count: number, one: string, many = `${one}s`) =>
  `${groupedNumber(count)} ${count === 1 ? one : many}`;

export const capitalised = (text: string) => text.charAt(0).toUpperCase() + text.slice(1);

// "2 min 5 s"
export function timeText(milliseconds: number): string {
  const hours = Math.floor(milliseconds / 3600000);
  const minutes = Math.floor((milliseconds % 3600000) / 60000);
  const seconds = (milliseconds % 60000) / 1000;
  const parts = [
    hours > 0 && `${groupedNumber(hours)} h`,
    minutes > 0 && `${minutes} min`,
    (seconds > 0 || milliseconds < 60000) && `${groupedNumber(Number(seconds.toFixed(3)))} s`,
  ];
  return parts.filter(Boolean).join(' ');
}

// Hours, minutes and whole seconds: "0:04", "1:00:09"
export function shortClock(seconds: number): string {
  const whole = Math.floor(Math.max(0, seconds));
  const twoDigits = (value: number) => String(value).padStart(2, '0');
  const minutes = Math.floor(whole / 60);
  const inHour = `${minutes % 60}:${twoDigits(whole % 60)}`;
  return minutes < 60 ? inHour : `${Math.floor(minutes / 60)}:${inHour.padStart(5, '0')}`;
}

// Minutes, seconds and tenths: "1:05.2"
export function clockTime(seconds: number): string {
  const tenths = Math.round(Math.abs(seconds) * 10);
  const minutes = Math.floor(tenths / 600);
  const rest = ((tenths % 600) / 10).toFixed(1).padStart(4, '0');
  return `${seconds < 0 && tenths > 0 ? '-' : ''}${minutes}:${rest}`;
}
