// The layout of the first start: the autoclicker is open, the other panels are collapsed.
import { setPanelMinimised } from './commands';
import { kPanelIds, type PanelId } from './reports';
import { appSettings } from './store';
import { markSeen } from './warnings';

// The program keeps it among the warnings that the user has seen.
const kFirstLayout = { id: 'first-layout' };
const kOpenPanel: PanelId = 'panel-spammer';

// Call once, with the preferences that the program has reported. Does nothing at a later start, or if the user has
// arranged the panels already.
export function arrangeFirstStart(): void {
  const { seenWarnings, minimizedPanels, panelOrder } = appSettings.value;
  if (seenWarnings.includes(kFirstLayout.id)) return;
  if (minimizedPanels.length === 0 && panelOrder.length === 0) {
    for (const id of kPanelIds) if (id !== kOpenPanel) void setPanelMinimised(id, true);
  }
  void markSeen(kFirstLayout);
}
