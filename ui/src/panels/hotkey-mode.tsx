import { Group } from '../components/panel';
import { Segmented } from '../components/segmented';

export function HotkeyModeGroup(props: { label: string; hold: boolean; onChange: (hold: boolean) => void }) {
  return (
    <Group title="Its hotkey">
      <Segmented
        label={props.label}
        value={props.hold}
        options={[
          { value: false, label: 'Starts and stops' },
          { value: true, label: 'Runs while held' },
        ]}
        onChange={props.onChange}
      />
    </Group>
  );
}
