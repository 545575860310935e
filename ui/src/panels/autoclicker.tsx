import { isMainWindow } from '../bridge';
import {
  changeAutoclicker,
  cancelPick,
  changeHoldAutoclicker,
  chooseLocationMode,
  pickLocation,
  startClicking,
  stopClicking,
} from '../commands';
import { Button } from '../components/button';
import { Group, Panel } from '../components/panel';
import { RunButton } from '../components/run-button';
import { Segmented } from '../components/segmented';
import { countdown } from '../countdown';
import { counted } from '../format';
import { type Action, rateText } from '../rate';
import type { AutoclickerSettings } from '../reports';
import { clicking, lacksLocation, picking, settings, status } from '../store';
import { actingKey, tipWithKey } from '../tips';
import { HotkeyModeGroup, IntervalGroup, RepeatGroup } from './tool-groups';

const kClick: Action = { one: 'click', many: 'clicks', length: 0 };
// The engine waits 15 ms between the two clicks of a double click.
const kDoubleClick: Action = { one: 'double click', many: 'double clicks', length: 15 };

export function AutoclickerPanel() {
  const { autoclicker, hotkeys } = settings.value;
  const action = autoclicker.doubleClick ? kDoubleClick : kClick;
  return (
    <Panel
      id="panel-spammer"
      title="Autoclicker"
      summary={rateText(autoclicker, action)}
      action={
        <RunButton
          running={clicking.value || countdown.value?.tool === 'clicking'}
          what="clicking"
          tip={tipWithKey(clicking.value ? 'Stops clicking.' : 'Starts clicking.', 'autoclicker')}
          onStart={startClicking}
          onStop={stopClicking}
        />
      }
    >
      <IntervalGroup
        id="click-interval"
        title="Click interval"
        interval={autoclicker}
        action={action}
        hint="The pause after each click."
        onChange={(interval) => void changeAutoclicker(interval)}
      />
      <Group title="Button">
        <div class="pair pair--wide-left">
          <Segmented
            label="Mouse button"
            value={autoclicker.button}
            options={[
              { value: 0, label: 'Left' },
              { value: 1, label: 'Right' },
              { value: 2, label: 'Middle' },
            ]}
            onChange={(button) => void changeAutoclicker({ button })}
          />
          <Segmented
            label="Click type"
            value={autoclicker.doubleClick}
            options={[
              { value: false, label: 'Single' },
              { value: true, label: 'Double' },
            ]}
            onChange={(doubleClick) => void changeAutoclicker({ doubleClick })}
          />
        </div>
      </Group>
      <RepeatGroup
        id="click-repeat"
        what="clicks"
        mode={autoclicker.repeatMode}
        count={autoclicker.repeatCount}
        hint={repeatHint(autoclicker)}
        onMode={(repeatMode) => void changeAutoclicker({ repeatMode })}
        onCount={(repeatCount) => void changeAutoclicker({ repeatCount })}
      />
      <LocationGroup />
      <HotkeyModeGroup
        label="Autoclicker hotkey"
        hotkey={status.value.hotkeys.autoclicker}
        hold={hotkeys.holdAutoclicker}
        onChange={(hold) => void changeHoldAutoclicker(hold)}
      />
    </Panel>
  );
}

function repeatHint({ repeatMode, repeatCount, doubleClick }: AutoclickerSettings): string {
  if (repeatMode !== 'count') return 'Clicks until you stop it.';
  const ending = `Stops after ${counted(repeatCount, 'click')}.`;
  return doubleClick ? `${ending} A double click counts as one.` : ending;
}

function locationHint({ locationMode, fixedX, fixedY }: AutoclickerSettings): string {
  if (picking.value) return 'Click the location. Esc or a right click cancels.';
  if (lacksLocation.value) return 'No location yet. Pick one.';
  if (locationMode === 'fixed') return `Fixed location: X ${fixedX}, Y ${fixedY}`;
  // A start by the button puts Stop under the pointer.
  const key = actingKey('autoclicker');
  return key ? `Clicks where the pointer is. Start it with ${key}.` : 'Clicks where the pointer is.';
}

function LocationGroup() {
  const { autoclicker } = settings.value;
  return (
    <Group
      title="Location"
      hintId="click-location-hint"
      hint={locationHint(autoclicker)}
      notable={picking.value || lacksLocation.value}
    >
      <div class="pair">
        <Segmented
          label="Click location"
          value={autoclicker.locationMode}
          options={[
            { value: 'pointer', label: 'At pointer' },
            { value: 'fixed', label: 'Fixed' },
          ]}
          onChange={(locationMode) => void chooseLocationMode(locationMode)}
        />
        {isMainWindow() && (
          <Button
            icon={picking.value ? 'cross' : 'target'}
            tip={
              picking.value
                ? 'Keeps the location as it was.'
                : 'Takes the place of your next left click as the location.'
            }
            describedBy="click-location-hint"
            onPress={() => void (picking.value ? cancelPick() : pickLocation())}
          >
            {picking.value ? 'Cancel the pick' : 'Pick location'}
          </Button>
        )}
      </div>
    </Group>
  );
}
