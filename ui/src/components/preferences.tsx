import type { ComponentChildren } from 'preact';
import { useId } from 'preact/hooks';
import { isMainWindow } from '../bridge';
import { setAppSwitch } from '../commands';
import type { AppSwitch } from '../reports';
import { appSettings, preferencesOpen } from '../store';
import { About } from './about';
import { Button } from './button';
import { CountdownPreference } from './countdown-preference';
import { Dialog } from './dialog';
import { Icon } from './icon';
import { Section } from './section';
import { Toggle } from './toggle';
import './preferences.css';

export function PreferencesButton() {
  if (!isMainWindow()) return null;
  return (
    <button
      type="button"
      class="preferences-button"
      aria-label="Preferences"
      title="Opens the preferences."
      aria-haspopup="dialog"
      onClick={() => (preferencesOpen.value = true)}
    >
      <Icon name="gear" />
    </button>
  );
}

// Each switch takes effect at once.
export function Preferences() {
  if (!preferencesOpen.value) return null;
  const close = () => (preferencesOpen.value = false);
  return (
    <Dialog
      title="Preferences"
      onClose={close}
      actions={
        <Button kind="primary" tip="Closes the preferences. Each change is in use already." onPress={close}>
          Close
        </Button>
      }
    >
      <Section title="Window">
        <Switch of="alwaysOnTop" label="Always on top">
          Keeps this window above all others.
        </Switch>
        <Switch of="startMinimized" label="Start minimised">
          Minimises the window at each start.
        </Switch>
        <Switch of="launchOnStartup" label="Start when I log in">
          Starts Varnelle when you log in to this computer.
        </Switch>
      </Section>
      <Section title="Macro">
        <Switch of="stopToolsWithMacro" label="Stop the tools with the macro">
          Stops the autoclicker and the key spammer when a recording or playback ends.
        </Switch>
        <CountdownPreference />
      </Section>
      <Section title="Appearance">
        <Switch of="disableAnimations" inverted label="Animations">
          When off, nothing slides or fades.
        </Switch>
        <Switch of="showWarnings" label="Warnings">
          Explains a risky action the first time you press its button. Hotkeys never ask.
        </Switch>
      </Section>
      <About />
    </Dialog>
  );
}

function Switch(props: {
  of: AppSwitch;
  label: string;
  inverted?: boolean; // the switch is on while the setting is off
  children: ComponentChildren;
}) {
  const { of, label, inverted = false, children } = props;
  const id = useId();
  return (
    <div class="preferences__switch">
      <Toggle
        label={label}
        describedBy={id}
        checked={appSettings.value[of] !== inverted}
        onChange={(on) => void setAppSwitch(of, on !== inverted)}
      />
      <p class="preferences__hint" id={id}>
        {children}
      </p>
    </div>
  );
}
