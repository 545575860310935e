import { has } from './bridge';
import { Board } from './components/board';
import { Button } from './components/button';
import { WarningDialog } from './components/warning-dialog';
import { HotkeysPanel } from './panels/hotkeys';
import { ClickerPanel } from './panels/clicker';
import { MacroPanel } from './panels/macro';
import { PresserPanel } from './panels/presser';
import { ProfilePanel } from './panels/profile';
import { StateLine } from './state-line';
import { failure } from './store';

const panels = {
  ...(has('getProfiles') && { 'panel-profile': ProfilePanel }),
  'panel-spammer': ClickerPanel,
  'panel-keyspam': PresserPanel,
  'panel-tracker': MacroPanel,
  'panel-ui': HotkeysPanel,
};

export function App() {
  return (
    <>
      <StateLine />
      <Board panels={panels} />
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
