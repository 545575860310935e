import { useLayoutEffect, useState } from 'preact/hooks';

// Returns the inner size of an element in pixels, kept up to date; 0 before the first layout.
export function useClientSize(element: { current: HTMLElement | null }): { width: number; height: number } {
  const [size, setSize] = useState({ width: 0, height: 0 });
  useLayoutEffect(() => {
    if (!element.current) return;
    const measured = element.current;
    const measure = () => setSize({ width: measured.clientWidth, height: measured.clientHeight });
    measure();
    const observer = new ResizeObserver(measure);
    observer.observe(measured);
    return () => observer.disconnect();
  }, []);
  return size;
}
