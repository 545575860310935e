import { openWarning } from '../warnings';
import { Button } from './button';
import { Dialog } from './dialog';

// Cancel has the focus.
export function WarningDialog() {
  if (!openWarning.value) return null;
  const { warning, answer } = openWarning.value;
  return (
    <Dialog
      key={warning.id}
      title={warning.title}
      alarming
      onClose={() => answer(false)}
      actions={
        <>
          <Button tip="Starts nothing." onPress={() => answer(false)}>
            Cancel
          </Button>
          <Button kind="primary" tip="Starts it, and does not explain it again." onPress={() => answer(true)}>
            {warning.verb}
          </Button>
        </>
      }
    >
      <p>{warning.text}</p>
      <p class="group__hint">Shown once. Turn off warnings in the preferences.</p>
    </Dialog>
  );
}
