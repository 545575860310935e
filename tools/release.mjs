// Signs updates. See docs/releasing.md.
//
//   node tools/release.mjs key PRIVATE.pem                      makes a key pair; prints the public key for the build
//   node tools/release.mjs sign PRIVATE.pem TIER VERSION URL INSTALLER
//                                                               prints the manifest of an installer
//   node tools/release.mjs vectors OUT.jsonl                    writes cases for --selftest-update=, signed by a key
//                                                               that is made for them and not kept
import { createHash, createPrivateKey, createPublicKey, generateKeyPairSync, sign } from 'node:crypto';
import { readFileSync, writeFileSync } from 'node:fs';
import { fileURLToPath } from 'node:url';

const tiers = ['core', 'plus', 'preview', 'mac-core', 'mac-plus', 'mac-preview'];

const settings = readFileSync(
  fileURLToPath(new URL('../src/base/build_settings.h', import.meta.url)),
  'utf8',
);
function setting(name) {
  const found = settings.match(new RegExp(`\\b${name} = "([^"]*)"`));
  if (!found) throw new Error(`no ${name} in build_settings.h`);
  return found[1];
}
const site = setting('kUpdateSiteHost');
const api = setting('kApiHost');
const testers = setting('kTesterSiteHost');

function publicBlob(key) {
  const { x, y } = createPublicKey(key).export({ format: 'jwk' });
  const number = (text) => Buffer.from(text, 'base64url');
  return Buffer.concat([Buffer.from('ECS1'), Buffer.from([32, 0, 0, 0]), number(x), number(y)]);
}

// In the order in which the manifest lists them; the signed message has the hash before the address.
function signed(key, { tier, version, url, sha256 }) {
  const message = `VRL-UPDATE-1|${tier}|${version}|${sha256}|${url}`;
  const sig = sign('sha256', Buffer.from(message), { key, dsaEncoding: 'ieee-p1363' }).toString('hex');
  return { tier, version, url, sha256, sig };
}

// What the program would refuse is not signed.
function checkManifest({ tier, version, url }) {
  if (!tiers.includes(tier)) throw new Error(`the tier is one of ${tiers.join(', ')}`);
  if (!/^\d{1,5}\.\d{1,5}\.\d{1,5}(-preview\.\d{1,5})?$/.test(version)) {
    throw new Error('the version is A.B.C or A.B.C-preview.N, at most five digits each');
  }
  if (!/^[\x21-\x7b\x7d\x7e]+$/.test(url) || /["\\]/.test(url)) {
    throw new Error('the address holds a byte that the program refuses');
  }
  const host = url.match(/^https:\/\/([^/?#]*)/)?.[1].toLowerCase();
  if (host !== site && host !== api) throw new Error(`the address is https and its host ${site} or ${api}`);
}

function makeKey(path) {
  const { privateKey } = generateKeyPairSync('ec', { namedCurve: 'P-256' });
  writeFileSync(path, privateKey.export({ type: 'pkcs8', format: 'pem' }), { mode: 0o600, flag: 'wx' });
  const bytes = [...publicBlob(privateKey)].map((byte) => `0x${byte.toString(16).padStart(2, '0')},`);
  for (let at = 0; at < bytes.length; at += 12) console.log(`    ${bytes.slice(at, at + 12).join(' ')}`);
}

function signInstaller(keyPath, tier, version, url, installer) {
  const sha256 = createHash('sha256').update(readFileSync(installer)).digest('hex');
  checkManifest({ tier, version, url });
  console.log(
    JSON.stringify(signed(createPrivateKey(readFileSync(keyPath)), { tier, version, url, sha256 })),
  );
}

function writeVectors(path) {
  const { privateKey } = generateKeyPairSync('ec', { namedCurve: 'P-256' });
  const good = {
    tier: 'plus',
    version: '1.0.2',
    url: `https://${site}/download/Setup.exe`,
    sha256: createHash('sha256').update('installer').digest('hex'),
  };
  const lines = [{ line: 'key', hex: publicBlob(privateKey).toString('hex') }];
  // `changed` is signed too, `after` comes over the signed manifest.
  const add = (name, expect, changed = {}, { own = '1.0.1', after = {} } = {}) =>
    lines.push({
      line: 'case',
      name,
      expect,
      expectedTier: 'plus',
      ownVersion: own,
      ...signed(privateKey, { ...good, ...changed }),
      ...after,
    });
  const sig = signed(privateKey, good).sig;

  add('newer patch', true);
  add('same version', false, { version: '1.0.1' });
  add('older version', false, { version: '1.0.0' });
  add('preview of the own version', false, { version: '1.0.1-preview.3' });
  add('preview of a later version', true, { version: '2.0.0-preview.1' });
  add('numbers, not text', true, { version: '1.0.10' }, { own: '1.0.9' });
  add('minor over patch', true, { version: '1.1.0' }, { own: '1.0.99999' });
  add('older major', false, { version: '1.9.9' }, { own: '2.0.0' });
  add('next preview', true, { version: '1.1.0-preview.3' }, { own: '1.1.0-preview.2' });
  add('same preview', false, { version: '1.1.0-preview.2' }, { own: '1.1.0-preview.2' });
  add('earlier preview', false, { version: '1.1.0-preview.1' }, { own: '1.1.0-preview.2' });
  add('stable over preview', true, { version: '1.1.0' }, { own: '1.1.0-preview.2' });
  add('own version unreadable', false, {}, { own: '1.0' });
  add('leading zeros', true, { version: '002.0.1' });
  for (const version of ['1.0', '2.0.1.2', '2.0.1-rc.1', '2.0.100000', 'v2.0.0']) {
    add(`no version: ${version}`, false, { version });
  }
  add('hash in upper case', false, { sha256: good.sha256.toUpperCase() });
  add('hash too short', false, { sha256: good.sha256.slice(1) });
  add('another tier', false, { tier: 'core' });
  add('tier in upper case', false, { tier: 'Plus' });
  add('unknown tier', false, { tier: 'nightly' });
  add('blank in the address', false, { url: `https://${site}/a b` });
  add('separator in the address', false, { url: `https://${site}/a|b` });
  add('byte above ASCII in the address', false, { url: `https://${site}/\u00e9` });
  add('plain http', false, { url: `http://${site}/Setup.exe` });
  add('scheme in upper case', false, { url: `HTTPS://${site}/Setup.exe` });
  add('host in upper case', true, { url: `https://${site.toUpperCase()}/Setup.exe` });
  add('API host', true, { url: `https://${api}/download/plus` });
  add('nothing behind the host', true, { url: `https://${site}` });
  add('tester site', false, { url: `https://${testers}/update/Setup.exe` });
  add('foreign host', false, { url: 'https://elsewhere.example/Setup.exe' });
  add('signature in upper case', true, {}, { after: { sig: sig.toUpperCase() } });
  add('signature of 126 digits', false, {}, { after: { sig: sig.slice(2) } });
  add('signature of 130 digits', false, {}, { after: { sig: `${sig}00` } });
  add('signature of 127 digits', false, {}, { after: { sig: sig.slice(1) } });
  add('signature of zeros', false, {}, { after: { sig: '0'.repeat(128) } });
  add('version changed after signing', false, {}, { after: { version: '1.0.3' } });
  add('address changed after signing', false, {}, { after: { url: `https://${api}/x` } });
  add('hash changed after signing', false, {}, { after: { sha256: 'a'.repeat(64) } });
  add('tier changed after signing', false, { tier: 'core' }, { after: { tier: 'plus' } });
  for (const field of ['tier', 'version', 'url', 'sha256', 'sig']) {
    add(`without ${field}`, false, {}, { after: { [field]: '' } });
  }
  writeFileSync(path, lines.map((line) => `${JSON.stringify(line)}\n`).join(''));
}

const [command, ...rest] = process.argv.slice(2);
const commands = { key: [makeKey, 1], sign: [signInstaller, 5], vectors: [writeVectors, 1] };
const [run, count] = Object.hasOwn(commands, command ?? '') ? commands[command] : [];
if (!run || rest.length !== count) {
  console.error(
    'release.mjs key PRIVATE.pem | sign PRIVATE.pem TIER VERSION URL INSTALLER | vectors OUT.jsonl',
  );
  process.exit(2);
}
try {
  run(...rest);
} catch (error) {
  console.error(error.message);
  process.exit(1);
}
