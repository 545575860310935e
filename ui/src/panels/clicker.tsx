import { changeClicker, changeHoldAuto, pickLocation, startClicking, stopClicking } from '../commands';
import { has } from '../bridge';
import { Button } from '../components/button';
import { counted } from '../components/numbers';
import { Group, Panel } from '../components/panel';
import { RunButton } from '../components/run-button';
import { Segmented } from '../components/segmented';
import { type Action, rateText } from '../rate';
import { clicking, picking, settings, status } from '../store';
import { HotkeyModeGroup } from './hotkey-mode';
import { IntervalGroup } from './interval';
import { RepeatGroup } from './repeat';
import './clicker.css';

const kClick: Action = { one: 'click', many: 'clicks', length: 0 };
// Between the two clicks of a double the engine waits for 15 ms.
const kDoubleClick: Action = { one: 'double click', many: 'double clicks', length: 15 };

export function ClickerPanel() {
  const { sh, sm, ss, sms, sbtn, stype, rptMode, rptTimes, holdAuto } = settings.value;
  const interval = { hours: sh, minutes: sm, seconds: ss, milliseconds: sms };
  const action = stype === 1 ? kDoubleClick : kClick;
  return (
    <Panel
      id="panel-spammer"
      title="Clicker"
      summary={rateText(interval, action)}
      action={
        <RunButton running={clicking.value} what="clicking" onStart={startClicking} onStop={stopClicking} />
      }
    >
      <IntervalGroup
        id="click-interval"
        title="Click interval"
        interval={interval}
        action={action}
        hint="The pause after each click."
        onChange={(i) =>
          void changeClicker({ sh: i.hours, sm: i.minutes, ss: i.seconds, sms: i.milliseconds })
        }
      />
      <Group title="Button">
        <div class="pair pair--wide-left">
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
        hint={repeatHint(rptMode, rptTimes, stype === 1)}
        onMode={(mode) => void changeClicker({ rptMode: mode })}
        onTimes={(times) => void changeClicker({ rptTimes: times })}
      />
      <PlaceGroup />
      <HotkeyModeGroup
        label="Clicker hotkey"
        hotkey={status.value.hkAuto}
        hold={holdAuto}
        onChange={(hold) => void changeHoldAuto(hold)}
      />
    </Panel>
  );
}

function repeatHint(mode: number, times: number, double: boolean): string {
  if (mode !== 0) return 'Clicks until you stop it.';
  const ending = `Stops by itself after ${counted(times, 'click')}.`;
  return double ? `${ending} A double click counts as one.` : ending;
}

function PlaceGroup() {
  const { locMode, fixedX, fixedY } = settings.value;
  return (
    <Group
      title="Place"
      hintId="click-place-hint"
      hint={
        picking.value ? (
          <span class="clicker__waiting">Click the place. Right-click cancels.</span>
        ) : locMode === 1 ? (
          `Fixed place: X ${fixedX}, Y ${fixedY}`
        ) : (
          // Started by its button, it would click on what is then Stop.
          'Clicks this window too: start it with its hotkey.'
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
