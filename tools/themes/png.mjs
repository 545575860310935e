// Writes and reads PNG files with 8 bits per channel, using only node:zlib. The same pixels produce the same bytes.
import { deflateSync, inflateSync } from 'node:zlib';

const kSignature = Buffer.from([0x89, 0x50, 0x4e, 0x47, 0x0d, 0x0a, 0x1a, 0x0a]);
const kTrueColour = 2;
const kTrueColourWithAlpha = 6;

const kCrcTable = Uint32Array.from({ length: 256 }, (_, byte) => {
  let crc = byte;
  for (let bit = 0; bit < 8; ++bit) crc = crc & 1 ? (crc >>> 1) ^ 0xedb88320 : crc >>> 1;
  return crc >>> 0;
});

function crc32(bytes) {
  let crc = 0xffffffff;
  for (const byte of bytes) crc = (crc >>> 8) ^ kCrcTable[(crc ^ byte) & 0xff];
  return (crc ^ 0xffffffff) >>> 0;
}

function chunk(type, data) {
  const bytes = Buffer.alloc(12 + data.length);
  bytes.writeUInt32BE(data.length, 0);
  bytes.write(type, 4, 'latin1');
  data.copy(bytes, 8);
  bytes.writeUInt32BE(crc32(bytes.subarray(4, 8 + data.length)), 8 + data.length);
  return bytes;
}

function paeth(left, up, corner) {
  const estimate = left + up - corner;
  const byLeft = Math.abs(estimate - left);
  const byUp = Math.abs(estimate - up);
  const byCorner = Math.abs(estimate - corner);
  if (byLeft <= byUp && byLeft <= byCorner) return left;
  return byUp <= byCorner ? up : corner;
}

// What a filter predicts for a byte from the bytes before it, indexed by the filter's number.
const kPredictions = [() => 0, (left) => left, (left, up) => up, (left, up) => (left + up) >> 1, paeth];

// Runs `each(filter, predicted, at)` over the bytes of a row; `at` counts from the start of the picture.
function overRow(row, rowBytes, step, pixels, filter, each) {
  const start = row * rowBytes;
  const predict = kPredictions[filter];
  for (let i = 0; i < rowBytes; ++i) {
    const left = i >= step ? pixels[start + i - step] : 0;
    const up = row > 0 ? pixels[start + i - rowBytes] : 0;
    const corner = row > 0 && i >= step ? pixels[start + i - rowBytes - step] : 0;
    each(predict(left, up, corner), start + i, i);
  }
}

// `choose(row)` returns the filter of a row.
function filtered(height, rowBytes, step, pixels, choose) {
  const out = Buffer.alloc(height * (rowBytes + 1));
  for (let row = 0; row < height; ++row) {
    const filter = choose(row);
    const start = row * (rowBytes + 1);
    out[start] = filter;
    overRow(row, rowBytes, step, pixels, filter, (predicted, at, i) => {
      out[start + 1 + i] = pixels[at] - predicted;
    });
  }
  return out;
}

// Returns the filter with the smallest differences.
function flattest(row, rowBytes, step, pixels) {
  let best = 0;
  let bestSum = Infinity;
  for (let filter = 0; filter < kPredictions.length; ++filter) {
    let sum = 0;
    overRow(row, rowBytes, step, pixels, filter, (predicted, at) => {
      const difference = (pixels[at] - predicted) & 0xff;
      sum += Math.min(difference, 256 - difference);
    });
    if (sum < bestSum) {
      best = filter;
      bestSum = sum;
    }
  }
  return best;
}

// `rgba`: width * height * 4 bytes, row by row, alpha not multiplied in. Alpha is left out if all pixels are opaque.
export function encodePng(width, height, rgba) {
  const opaque = rgba.every((value, at) => at % 4 !== 3 || value === 255);
  const pixels = opaque ? rgba.filter((_, at) => at % 4 !== 3) : rgba;
  const step = opaque ? 3 : 4;
  const rowBytes = width * step;
  const choices = [() => 0, () => 2, (row) => flattest(row, rowBytes, step, pixels)];
  const packed = choices
    .map((choose) => deflateSync(filtered(height, rowBytes, step, pixels, choose), { level: 9 }))
    .reduce((best, one) => (one.length < best.length ? one : best));

  const head = Buffer.alloc(13);
  head.writeUInt32BE(width, 0);
  head.writeUInt32BE(height, 4);
  head[8] = 8;
  head[9] = opaque ? kTrueColour : kTrueColourWithAlpha;
  const chunks = [chunk('IHDR', head), chunk('IDAT', packed), chunk('IEND', Buffer.alloc(0))];
  return Buffer.concat([kSignature, ...chunks]);
}

// Reads what encodePng writes; throws at anything else. Returns { width, height, rgba }.
export function decodePng(bytes) {
  if (!bytes.subarray(0, 8).equals(kSignature)) throw new Error('no PNG signature');
  const parts = {};
  for (let at = 8; at < bytes.length; ) {
    const length = bytes.readUInt32BE(at);
    const type = bytes.toString('latin1', at + 4, at + 8);
    if (bytes.readUInt32BE(at + 8 + length) !== crc32(bytes.subarray(at + 4, at + 8 + length))) {
      throw new Error(`wrong checksum of ${type}`);
    }
    parts[type] = bytes.subarray(at + 8, at + 8 + length);
    at += 12 + length;
  }
  const width = parts.IHDR.readUInt32BE(0);
  const height = parts.IHDR.readUInt32BE(4);
  const step = { [kTrueColour]: 3, [kTrueColourWithAlpha]: 4 }[parts.IHDR[9]];
  if (parts.IHDR[8] !== 8 || !step || parts.IHDR[12] !== 0) throw new Error('unsupported form of PNG');
  const rowBytes = width * step;
  const raw = inflateSync(parts.IDAT);
  if (raw.length !== height * (rowBytes + 1)) throw new Error('not all of the pixels');
  const pixels = Buffer.alloc(height * rowBytes);
  for (let row = 0; row < height; ++row) {
    const start = row * (rowBytes + 1);
    overRow(row, rowBytes, step, pixels, raw[start], (predicted, at, i) => {
      pixels[at] = raw[start + 1 + i] + predicted;
    });
  }
  const rgba = Buffer.alloc(width * height * 4, 255);
  for (let i = 0; i < width * height; ++i) pixels.copy(rgba, i * 4, i * step, (i + 1) * step);
  return { width, height, rgba };
}
