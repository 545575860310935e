// Signs updates. See docs/releasing.md.
//
//   node tools/release.mjs key PRIVATE.pem                      makes a key pair; prints the public key for the build
//   node tools/release.mjs sign PRIVATE.pem TIER VERSION URL INSTALLER
//                                                               prints the manifest of an installer
//   node tools/release.mjs check MANIFEST INSTALLER             checks whether programs of this tree accept the two
//   node tools/release.mjs vectors OUT.jsonl                    writes cases for --selftest-update=, signed by a key
//                                                               that is made for them and not kept
import {
  createHash,
  createPrivateKey,
  createPublicKey,
  generateKeyPairSync,
  sign,
  verify,
} from 'node:crypto';
import { readFileSync, realpathSync, writeFileSync } from 'node:fs';
import { basename, dirname, join, relative, resolve, sep } from 'node:path';
import { fileURLToPath } from 'node:url';

const tiers = ['core', 'plus', 'preview', 'mac-core', 'mac-plus', 'mac-preview'];
const mostManifestBytes = 16384;

const tree = realpathSync(fileURLToPath(new URL('..', import.meta.url)));
const settings = readFileSync(join(tree, 'src/base/build_settings.h'), 'utf8');
function setting(name) {
  const found = settings.match(new RegExp(`\\b${name} = "([^"]*)"`));
  if (!found) throw new Error(`no ${name} in build_settings.h`);
  return found[1];
}
const site = setting('kUpdateSiteHost');
const api = setting('kApiHost');
const testers = setting('kTesterSiteHost');

// Returns the key that programs of this tree accept, from their settings.
function acceptedBlob() {
  const body = settings.match(/kUpdatePublicKey\[72\] = \{([^}]*)\}/)?.[1] ?? '';
  return Buffer.from((body.match(/0x[0-9a-f]{2}/gi) ?? []).map(Number));
}

function publicKey(blob) {
  const number = (from) => blob.subarray(from, from + 32).toString('base64url');
  try {
    return createPublicKey({
      key: { kty: 'EC', crv: 'P-256', x: number(8), y: number(40) },
      format: 'jwk',
    });
  } catch {
    throw new Error('kUpdatePublicKey in build_settings.h is no P-256 key');
  }
}

// Reads a file, or throws an error with the system's code.
function readRequired(path, what) {
  try {
    return readFileSync(path);
  } catch (error) {
    throw new Error(`${what} ${path} cannot be read (${error.code})`);
  }
}

function readKey(path) {
  const text = readRequired(path, 'the key file');
  let key;
  try {
    key = createPrivateKey(text);
  } catch {
    throw new Error(`${path} holds no private key`);
  }
  if (key.asymmetricKeyDetails?.namedCurve !== 'prime256v1') {
    throw new Error(`${path} holds no P-256 key`);
  }
  return key;
}

function publicBlob(key) {
  const { x, y } = createPublicKey(key).export({ format: 'jwk' });
  const number = (text) => Buffer.from(text, 'base64url');
  return Buffer.concat([Buffer.from('ECS1'), Buffer.from([32, 0, 0, 0]), number(x), number(y)]);
}

// Returns the members in the order of the manifest. The signed message has the hash before the URL.
function signed(key, { tier, version, url, sha256 }) {
  const message = `VRL-UPDATE-1|${tier}|${version}|${sha256}|${url}`;
  const sig = sign('sha256', Buffer.from(message), { key, dsaEncoding: 'ieee-p1363' }).toString('hex');
  return { tier, version, url, sha256, sig };
}

// Throws if the program would reject the manifest, apart from the comparison with its own version and tier.
function checkManifest({ tier, version, url, sha256, sig }) {
  if (!tiers.includes(tier)) throw new Error(`the tier is one of ${tiers.join(', ')}`);
  if (!/^\d{1,5}\.\d{1,5}\.\d{1,5}(-preview\.\d{1,5})?$/.test(version)) {
    throw new Error('the version is A.B.C or A.B.C-preview.N, at most five digits each');
  }
  if (!/^[0-9a-f]{64}$/.test(sha256)) throw new Error('the hash is 64 lower-case hexadecimal digits');
  if (!/^[\x21-\x7b\x7d\x7e]+$/.test(url) || /["\\]/.test(url)) {
    throw new Error('the address holds a byte that the program refuses');
  }
  const host = url.match(/^https:\/\/([^/?#]*)/)?.[1].toLowerCase();
  if (host !== site && host !== api) throw new Error(`the address is https and its host ${site} or ${api}`);
  const message = Buffer.from(`VRL-UPDATE-1|${tier}|${version}|${sha256}|${url}`);
  const key = { key: publicKey(acceptedBlob()), dsaEncoding: 'ieee-p1363' };
  if (!/^[0-9a-f]{128}$/i.test(sig) || !verify('sha256', message, key, Buffer.from(sig, 'hex'))) {
    throw new Error('the signature is not by the key in build_settings.h');
  }
}

function makeKey(path) {
  const folder = dirname(resolve(path));
  let target;
  try {
    target = join(realpathSync(folder), basename(path));
  } catch {
    throw new Error(`there is no folder ${folder}`);
  }
  const inTree = relative(tree, target);
  if (inTree !== '..' && !inTree.startsWith(`..${sep}`)) {
    throw new Error('a private key is kept outside of the source tree');
  }
  const { privateKey } = generateKeyPairSync('ec', { namedCurve: 'P-256' });
  try {
    writeFileSync(target, privateKey.export({ type: 'pkcs8', format: 'pem' }), { mode: 0o600, flag: 'wx' });
  } catch (error) {
    throw new Error(
      error.code === 'EEXIST'
        ? `${path} is there already; a key is never written over`
        : `${path} cannot be written (${error.code})`,
    );
  }
  const bytes = [...publicBlob(privateKey)].map((byte) => `0x${byte.toString(16).padStart(2, '0')},`);
  for (let at = 0; at < bytes.length; at += 12) console.log(`    ${bytes.slice(at, at + 12).join(' ')}`);
}

const hashOf = (installer) =>
  createHash('sha256').update(readRequired(installer, 'the installer')).digest('hex');

// Prints a manifest only after it has passed the check.
function signInstaller(keyPath, tier, version, url, installer) {
  const manifest = signed(readKey(keyPath), { tier, version, url, sha256: hashOf(installer) });
  checkManifest(manifest);
  const text = JSON.stringify(manifest);
  if (text.length > mostManifestBytes)
    throw new Error(`the manifest has more than ${mostManifestBytes} bytes`);
  console.log(text);
}

function checkRelease(manifestPath, installer) {
  const bytes = readRequired(manifestPath, 'the manifest');
  if (bytes.length > mostManifestBytes)
    throw new Error(`the manifest has more than ${mostManifestBytes} bytes`);
  const text = bytes.toString('utf8').trimEnd();
  let manifest = null;
  try {
    const { tier, version, url, sha256, sig } = JSON.parse(text);
    manifest = { tier, version, url, sha256, sig };
  } catch {
    // Reported below.
  }
  // The program reads the members without parsing: only the plain form is sure to mean the same to both.
  const texts = Object.values(manifest ?? { none: null }).every((value) => typeof value === 'string');
  if (!texts || JSON.stringify(manifest) !== text) throw new Error('the manifest is not as it was printed');
  checkManifest(manifest);
  if (hashOf(installer) !== manifest.sha256) throw new Error('the installer is not the one that was signed');
  console.log(`good: ${manifest.tier} ${manifest.version}`);
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
  // `changed` is signed; `after` replaces members of the signed manifest.
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
  add('space in the address', false, { url: `https://${site}/a b` });
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
  const text = lines.map((line) => `${JSON.stringify(line)}\n`).join('');
  try {
    writeFileSync(path, text);
  } catch (error) {
    throw new Error(`${path} cannot be written (${error.code})`);
  }
}

const [command, ...rest] = process.argv.slice(2);
const commands = {
  key: [makeKey, 1],
  sign: [signInstaller, 5],
  check: [checkRelease, 2],
  vectors: [writeVectors, 1],
};
const [run, count] = Object.hasOwn(commands, command ?? '') ? commands[command] : [];
if (!run || rest.length !== count) {
  console.error(
    'release.mjs key PRIVATE.pem | sign PRIVATE.pem TIER VERSION URL INSTALLER | ' +
      'check MANIFEST INSTALLER | vectors OUT.jsonl',
  );
  process.exit(2);
}
try {
  run(...rest);
} catch (error) {
  console.error(error.message);
  process.exit(1);
}
