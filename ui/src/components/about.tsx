import { useEffect, useRef, useState } from 'preact/hooks';
import { openDataFolder, openLink } from '../commands';
import { fetchAbout } from '../fetch';
import { about } from '../store';
import { Button } from './button';
import { Section } from './section';
import './about.css';

// The version, the licences, and the folder with the user's data. An older program does not report them.
export function About() {
  useEffect(() => void fetchAbout(), []);
  const { version, platform, licences, dataFolder } = about.value;
  return (
    <Section title="About">
      {version && (
        <p class="about__version">
          Varnelle {version}
          {platform && ` for ${platform === 'windows' ? 'Windows' : 'Linux'}`}
        </p>
      )}
      <div class="row about__links">
        <Button tip="Opens the documentation in your browser." onPress={() => void openLink('docs')}>
          Documentation
        </Button>
        <Button tip="Opens the community page in your browser." onPress={() => void openLink('discord')}>
          Community
        </Button>
      </div>
      {dataFolder && <DataFolder path={dataFolder} />}
      {licences.length > 0 && <Licences />}
    </Section>
  );
}

function Licences() {
  const { licences, licenceFolder } = about.value;
  return (
    <details class="about__licences">
      <summary>Licences</summary>
      <table>
        <thead>
          <tr>
            <th>Part</th>
            <th>Licence</th>
            <th>Text</th>
          </tr>
        </thead>
        <tbody>
          {licences.map(({ part, licence, file }) => (
            <tr key={part}>
              <td>{part}</td>
              <td>{licence}</td>
              <td>{file}</td>
            </tr>
          ))}
        </tbody>
      </table>
      <p class="preferences__hint">
        The texts are in <code>{licenceFolder}</code>.
      </p>
    </details>
  );
}

function DataFolder({ path }: { path: string }) {
  const text = useRef<HTMLElement>(null);
  const [copied, setCopied] = useState<boolean | undefined>(undefined);
  const copy = () => {
    if (!text.current) return;
    // NOTE: a page that is no secure context has no navigator.clipboard.
    window.getSelection()?.selectAllChildren(text.current);
    setCopied(document.execCommand('copy'));
  };
  const result = copied ? 'Copied.' : 'Press Ctrl+C to copy the path.';
  return (
    <div class="about__folder">
      <p class="preferences__hint">Data folder</p>
      <code class="about__path" ref={text}>
        {path}
      </code>
      <div class="row">
        <Button
          label="Open the data folder"
          tip="Opens the folder in the file manager."
          onPress={() => void openDataFolder()}
        >
          Open
        </Button>
        <Button tip="Copies the path of the data folder." onPress={copy}>
          Copy path
        </Button>
        <span class="preferences__hint" role="status" aria-label="Copy">
          {copied === undefined ? '' : result}
        </span>
      </div>
    </div>
  );
}
