import { has } from './bridge';
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
      <Preferences />
      <WarningDialog />
      <HeldMacroDialog />
      <Notices />
    </>
  );
}
