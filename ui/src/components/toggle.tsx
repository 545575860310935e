import './toggle.css';

export interface ToggleProps {
  label: string;
  checked: boolean;
  onChange: (checked: boolean) => void;
  disabled?: boolean;
  describedBy?: string | undefined;
}

export function Toggle({ label, checked, onChange, disabled = false, describedBy }: ToggleProps) {
  return (
    <label class={`toggle${disabled ? ' toggle--disabled' : ''}`}>
      <input
        type="checkbox"
        role="switch"
        checked={checked}
        disabled={disabled}
        aria-describedby={describedBy}
        onChange={(event) => onChange(event.currentTarget.checked)}
      />
      <span class="toggle__track" aria-hidden="true">
        <span class="toggle__knob" />
      </span>
      <span>{label}</span>
    </label>
  );
}
