import { KeyCap } from '../components/key-cap';
import { Group } from '../components/panel';
import { Segmented } from '../components/segmented';

export function HotkeyModeGroup(props: {
  label: string;
  hotkey: string;
  hold: boolean;
  onChange: (hold: boolean) => void;
}) {
  return (
    <Group
      title={
        <>
          Hotkey <KeyCap name={props.hotkey} />
        </>
      }
    >
      <Segmented
        label={props.label}
        value={props.hold}
        options={[
          { value: false, label: 'Press to start and stop' },
          { value: true, label: 'Hold to run' },
        ]}
        onChange={props.onChange}
      />
    </Group>
  );
}
