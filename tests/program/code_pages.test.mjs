// The Windows program where the system's own 8-bit texts are Western, Cyrillic or Japanese: files keep their bytes, and
// the page shows their letters. Wine takes the code page of each program from its locale.
import assert from 'node:assert/strict';
import { spawnSync } from 'node:child_process';
import { mkdirSync, mkdtempSync, readFileSync, rmSync, writeFileSync } from 'node:fs';
import { tmpdir } from 'node:os';
import { join } from 'node:path';
import { after, before } from 'node:test';
import { nativePath, onlyOnWindows, onWindows, test, useFixture } from './harness.mjs';
import { waitUntil } from './processes.mjs';

const kCodePages = [
  { locale: 'de_DE', codePage: 'CP1252', name: 'Jürgen – „größer“ €' },
  { locale: 'ru_RU', codePage: 'CP1251', name: 'Моё «её» Ёж' },
  // The second byte of some of these letters is a backslash.
  { locale: 'ja_JP', codePage: 'CP932', name: 'ソフト 表\\予 ｶﾅ' },
];
const onWine = onlyOnWindows('Linux has no code page of the system');

const fixture = onWindows ? useFixture() : undefined;
let locales;

before(() => {
  if (!onWindows) return;
  locales = mkdtempSync(join(tmpdir(), 'varnelle-locales-'));
  for (const { locale } of kCodePages) {
    const made = spawnSync('localedef', ['-i', locale, '-f', 'UTF-8', join(locales, `${locale}.UTF-8`)]);
    assert.equal(made.status, 0, `the locale ${locale}: ${made.stderr}`);
  }
});
after(() => locales && rmSync(locales, { recursive: true, force: true }));

// Returns the bytes of a text in a code page.
function encode(text, codePage) {
  const made = spawnSync('iconv', ['-f', 'UTF-8', '-t', codePage], { input: text });
  assert.equal(made.status, 0, `iconv: ${made.stderr}`);
  return made.stdout;
}

for (const { locale, codePage, name } of kCodePages) {
  test(`names in ${codePage} are shown with their letters and kept with their bytes`, onWine, async () => {
    const installation = fixture.installWithoutWarnings();
    Object.assign(installation.env, { LOCPATH: locales, LC_ALL: `${locale}.UTF-8` });
    const bytes = encode(name, codePage);
    const utf8 = 'Ω 名前 é'; // typed into the page once
    const events = '0,0.5,10,10,0,0,0,0\n';
    writeFileSync(
      join(installation.data, 'session.dat'),
      Buffer.concat([
        Buffer.from('SETTINGS:\nCURRENT:0\nPROFILE:Default Tracking Profile\nPROFILE:'),
        bytes,
        Buffer.from(`\n${events}PROFILE:${utf8}\n${events}`),
      ]),
    );
    // The path of the second macro comes through the command line, its name from the file.
    const folder = join(installation.files, name.replaceAll('\\', ''));
    mkdirSync(folder);
    const file = join(folder, 'a.vrlmacro');
    writeFileSync(file, Buffer.concat([bytes, Buffer.from(`2\nSETTINGS:\n${events}`)]));

    const program = await fixture.startProgram({ installation, args: [nativePath(file)] });
    const names = async () => (await program.call('getProfiles')).names;
    await waitUntil(async () => (await names()).length === 4, 'the import of the macro on the command line');
    assert.deepEqual(await names(), ['Default Tracking Profile', name, utf8, `${name}2`]);

    const session = () => readFileSync(join(installation.data, 'session.dat'));
    const holds = (...parts) => session().includes(Buffer.concat(parts.map((part) => Buffer.from(part))));
    await waitUntil(() => holds('PROFILE:', bytes, '2\r\n'), 'the next save');
    assert.ok(holds('PROFILE:', bytes, '\r\n') && holds('PROFILE:', utf8, '\r\n'));
  });
}
