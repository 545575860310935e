import type { ComponentChildren, Ref } from 'preact';
import { Icon, type IconName } from './icon';
import './button.css';

export interface ButtonProps {
  children: ComponentChildren;
  onPress: () => void;
  tip: string; // a full sentence about what a press does
  icon?: IconName;
  kind?: 'plain' | 'primary' | 'stop' | 'quiet' | 'danger';
  label?: string | undefined; // the accessible name if the visible text is not enough; it must contain that text
  disabled?: boolean;
  waiting?: boolean; // ignores presses but keeps the focus
  busy?: boolean; // waiting until what it started has ended
  pending?: boolean; // pressed, until the program reports the result
  large?: boolean;
  describedBy?: string | undefined;
  buttonRef?: Ref<HTMLButtonElement>;
}

export function Button(props: ButtonProps) {
  const { kind = 'plain' } = props;
  return (
    <button
      type="button"
      ref={props.buttonRef ?? null}
      class={[
        `button button--${kind}`,
        props.large && 'button--large',
        props.busy && 'button--busy',
        props.pending && 'button--pending',
      ]
        .filter(Boolean)
        .join(' ')}
      aria-label={props.label}
      title={props.tip}
      aria-describedby={props.describedBy}
      disabled={props.disabled}
      aria-disabled={props.waiting || props.busy || undefined}
      aria-busy={props.busy || props.pending || undefined}
      onClick={() => !props.waiting && !props.busy && props.onPress()}
    >
      {props.icon && <Icon name={props.icon} />}
      <span>{props.children}</span>
    </button>
  );
}
