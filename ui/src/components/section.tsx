import type { ComponentChildren } from 'preact';
import { useId } from 'preact/hooks';

// A part of a dialog with a heading.
export function Section({ title, children }: { title: string; children: ComponentChildren }) {
  const id = useId();
  return (
    <section class="preferences__section" aria-labelledby={id}>
      <h3 id={id}>{title}</h3>
      {children}
    </section>
  );
}
