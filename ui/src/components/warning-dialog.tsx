import { question } from '../warnings';
import { Button } from './button';
import { Dialog } from './dialog';

// The one warning in sight. Its safe answer has the focus.
export function WarningDialog() {
  const asked = question.value;
  if (!asked) return null;
  const { warning, answer } = asked;
  return (
    <Dialog
      key={warning.id}
      title={warning.title}
      alarming
      onClose={() => answer(false)}
      actions={
        <>
          <Button onPress={() => answer(false)}>Cancel</Button>
          <Button kind="primary" onPress={() => answer(true)}>
            {warning.verb}
          </Button>
        </>
      }
    >
      <p>{warning.text}</p>
      <p class="group__hint">Shown once. Preferences turn warnings off.</p>
    </Dialog>
  );
}
