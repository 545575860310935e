import { useId } from 'preact/hooks';
import './segmented.css';

export interface SegmentedProps<T> {
  label: string;
  value: T;
  options: readonly { value: NoInfer<T>; label: string }[];
  onChange: (value: T) => void;
  disabled?: boolean;
}

// A choice of a few visible options. None of them is checked if the value is not one of them.
export function Segmented<T>({ label, value, options, onChange, disabled = false }: SegmentedProps<T>) {
  const name = useId();
  return (
    <div class="segmented" role="radiogroup" aria-label={label}>
      {options.map((option) => (
        <label key={option.label} class="segmented__option">
          <input
            type="radio"
            name={name}
            checked={option.value === value}
            disabled={disabled}
            onChange={() => onChange(option.value)}
          />
          <span>{option.label}</span>
        </label>
      ))}
    </div>
  );
}
