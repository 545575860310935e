import { answerQuestion, buttonQuestion, questionText } from '../hotkey-changes';
import { Button } from './button';
import { Dialog } from './dialog';

// Asks whether a mouse button stays a hotkey. The keyboard answers it, since the button no longer clicks. Without an
// answer the former key comes back.
export function ButtonQuestionDialog() {
  const question = buttonQuestion.value;
  if (!question) return null;
  return (
    <Dialog
      title={`Keep the ${question.button} button?`}
      alarming
      onClose={() => answerQuestion(false)}
      actions={
        <>
          <Button tip="Restores the former key." onPress={() => answerQuestion(false)}>
            {`Restore ${question.formerName}`}
          </Button>
          <Button kind="stop" tip="Takes this button for the hotkey." onPress={() => answerQuestion(true)}>
            Keep
          </Button>
        </>
      }
    >
      <p>{questionText(question)}</p>
      <p class="group__hint" aria-hidden="true">
        {`${question.formerName} comes back in ${question.seconds} s. Tab and Enter choose with the keyboard.`}
      </p>
    </Dialog>
  );
}
