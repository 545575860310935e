import { isMainWindow } from './bridge';
import { ButtonQuestionDialog } from './components/button-question';
import { Help } from './components/help';
import { Notices } from './components/notices';
import { PanelList } from './components/panel-list';
import { PendingImportDialog } from './components/pending-import-dialog';
import { Preferences } from './components/preferences';
import { WarningDialog } from './components/warning-dialog';
import { AutoclickerPanel } from './panels/autoclicker';
import { HotkeysPanel } from './panels/hotkeys';
import { KeySpammerPanel } from './panels/key-spammer';
import { MacroPanel } from './panels/macro';
import { ProfilePanel } from './panels/profile';
import { StateLine } from './state-line';

const panels = {
  ...(isMainWindow() && { 'panel-profile': ProfilePanel }),
  'panel-spammer': AutoclickerPanel,
  'panel-keyspam': KeySpammerPanel,
  'panel-tracker': MacroPanel,
  'panel-ui': HotkeysPanel,
};

export function App() {
  return (
    <>
      <StateLine />
      <PanelList panels={panels} />
      <Preferences />
      <Help />
      <WarningDialog />
      <ButtonQuestionDialog />
      <PendingImportDialog />
      <Notices />
    </>
  );
}
