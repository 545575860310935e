import { changeClicker, changeHoldAuto, pickLocation, startClicking, stopClicking } from '../commands';
import { has } from '../bridge';
import { Button } from '../components/button';
import { Group, Panel } from '../components/panel';
import { Segmented } from '../components/segmented';
import { clicking, picking, settings } from '../store';
import { HotkeyModeGroup } from './hotkey-mode';
import { IntervalGroup, rateText } from './interval';
import { RepeatGroup } from './repeat';
import './clicker.css';

export function ClickerPanel() {
  const { sh, sm, ss, sms, sbtn, stype, rptMode, rptTimes, holdAuto } = settings.value;
  const interval = { hours: sh, minutes: sm, seconds: ss, milliseconds: sms };
  const rate = rateText(interval, stype === 1 ? 'double clicks' : 'clicks');
  return (
    <Panel
      id="panel-spammer"
      title="Clicker"
      summary={rate}
      action={
        clicking.value ? (
          <Button kind="stop" icon="stop" onPress={() => void stopClicking()}>
            Stop clicking
          </Button>
        ) : (
          <Button kind="primary" icon="play" onPress={() => void startClicking()}>
            Start clicking
          </Button>
        )
      }
    >
      <IntervalGroup
        id="click-interval"
        title="Click interval"
        interval={interval}
        hint={`${rate}. The interval is the pause after each click.`}
        onChange={(i) =>
          void changeClicker({ sh: i.hours, sm: i.minutes, ss: i.seconds, sms: i.milliseconds })
        }
      />
      <Group title="Button">
        <div class="pair clicker__click">
          <Segmented
            label="Mouse button"
            value={sbtn}
            options={[
              { value: 0, label: 'Left' },
              { value: 1, label: 'Right' },
              { value: 2, label: 'Middle' },
            ]}
            onChange={(button) => void changeClicker({ sbtn: button })}
          />
          <Segmented
            label="Click type"
            value={stype === 1}
            options={[
              { value: false, label: 'Single' },
              { value: true, label: 'Double' },
            ]}
            onChange={(double) => void changeClicker({ stype: double ? 1 : 0 })}
          />
        </div>
      </Group>
      <RepeatGroup
        id="click-repeat"
        what="clicks"
        mode={rptMode}
        times={rptTimes}
        hint={stype === 1 ? 'A double click counts as one.' : ''}
        onMode={(mode) => void changeClicker({ rptMode: mode })}
        onTimes={(times) => void changeClicker({ rptTimes: times })}
      />
      <PlaceGroup />
      <HotkeyModeGroup
        label="Clicker hotkey"
        hold={holdAuto}
        onChange={(hold) => void changeHoldAuto(hold)}
      />
    </Panel>
  );
}

function PlaceGroup() {
  const { locMode, fixedX, fixedY } = settings.value;
  return (
    <Group
      title="Place"
      hintId="click-place-hint"
      hint={
        picking.value ? (
          <span class="clicker__waiting">
            Click anywhere on the screen to set the place. Right-click cancels.
          </span>
        ) : (
          `Fixed place: X ${fixedX}, Y ${fixedY}`
        )
      }
    >
      <div class="pair">
        <Segmented
          label="Click place"
          value={locMode === 1}
          options={[
            { value: false, label: 'At pointer' },
            { value: true, label: 'Fixed' },
          ]}
          onChange={(fixed) => void changeClicker({ locMode: fixed ? 1 : 0 })}
        />
        {has('pickLocation') && (
          <Button icon="target" onPress={() => void pickLocation()} describedBy="click-place-hint">
            Pick location
          </Button>
        )}
      </div>
    </Group>
  );
}
