import { has } from './bridge';
import { Board } from './components/board';
import { HeldMacroDialog } from './components/held-macro';
import { Notices } from './components/notices';
import { Preferences } from './components/preferences';
import { WarningDialog } from './components/warning-dialog';
import { HotkeysPanel } from './panels/hotkeys';
import { ClickerPanel } from './panels/clicker';
import { MacroPanel } from './panels/macro';
import { PresserPanel } from './panels/presser';
import { ProfilePanel } from './panels/profile';
import { StateLine } from './state-line';

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
      <Preferences />
      <WarningDialog />
      <HeldMacroDialog />
      <Notices />
    </>
  );
}
