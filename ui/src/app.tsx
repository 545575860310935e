import { has } from './bridge';
import { Button } from './components/button';
import { WarningDialog } from './components/warning-dialog';
import { HotkeysPanel } from './panels/hotkeys';
import { ClickerPanel } from './panels/clicker';
import { MacroPanel } from './panels/macro';
import { PresserPanel } from './panels/presser';
import { ProfilePanel } from './panels/profile';
import { StateLine } from './state-line';
import { failure } from './store';

export function App() {
  return (
    <>
      <StateLine />
      <main id="dashboard">
        {has('getProfiles') && <ProfilePanel />}
        <ClickerPanel />
        <PresserPanel />
        <MacroPanel />
        <HotkeysPanel />
      </main>
      <WarningDialog />
      <Failure />
    </>
  );
}

function Failure() {
  return (
    <div role="alert">
      {failure.value && (
        <div class="notice">
          <span>{failure.value}</span>
          <Button kind="quiet" onPress={() => (failure.value = '')}>
            Dismiss
          </Button>
        </div>
      )}
    </div>
  );
}
