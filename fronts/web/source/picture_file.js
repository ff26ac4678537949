// What a picture file says of itself: format, size, colours, orientation, and the metadata that goes with it. The
// browser decodes the pixels and tells none of this.
//
// Readers fill in a PictureFile as they go. A number behind the end of the bytes is a RangeError of DataView, which
// ends the reader; what it has found by then stands. All loops go forward in the bytes.

/**
 * @typedef {object} PictureFile
 * @property {'jpeg'|'png'|'webp'|'gif'|'avif'|'bmp'|'tiff'|'heic'|'unknown'} format
 * @property {number} width pixels as stored, before orientation; 0 if unknown
 * @property {number} height
 * @property {number} bits per sample; 8 if unknown
 * @property {'colour'|'grey'|'cmyk'} model
 * @property {boolean} hasAlpha whether pixels may be transparent
 * @property {number} frames more than one: animated
 * @property {number} orientation 1 to 8, as in EXIF
 * @property {'srgb'|'display-p3'|'other'} colours what the samples mean; sRGB where the file doesn't say
 * @property {string} profileName for people; '' for none
 * @property {Uint8Array|null} exif the TIFF block
 * @property {Uint8Array|null} xmp the packet
 * @property {Uint8Array[]} extendedXmp segments of a JPEG file behind their identifier: GUID, length, offset, part
 * @property {boolean} iptc whether a JPEG file has IPTC, which isn't read
 */

/** @typedef {{tag: number, type: number, count: number, data: number, bytes: number}} TiffEntry data: where it lies */

export const xmpName = 'http://ns.adobe.com/xap/1.0/\0';
export const extendedXmpName = 'http://ns.adobe.com/xmp/extension/\0';

// Of what is deflated in a PNG file, in bytes: a small file can hold any number.
const longest = 1 << 24;

/** @param {Uint8Array} bytes */
const viewOf = (bytes) => new DataView(bytes.buffer, bytes.byteOffset, bytes.byteLength);

// One character for each byte.
/** @param {Uint8Array} bytes @param {number} [from] @param {number} [to] */
export function latin1(bytes, from = 0, to = bytes.length) {
  let text = '';
  const step = 8192;
  for (let at = from; at < to; at += step) {
    text += String.fromCharCode(...bytes.subarray(at, Math.min(at + step, to)));
  }
  return text;
}

/** @param {Uint8Array[]} parts */
export function joined(parts) {
  const whole = new Uint8Array(parts.reduce((sum, part) => sum + part.length, 0));
  let at = 0;
  for (const part of parts) {
    whole.set(part, at);
    at += part.length;
  }
  return whole;
}

/** @param {Uint8Array} bytes @param {string} text */
export const beginsWith = (bytes, text) => latin1(bytes, 0, text.length) === text;

/** A TIFF block (TIFF 6.0), as EXIF is: directories of entries. */
export class Tiff {
  /** @param {Uint8Array} block @throws {RangeError} when it isn't one */
  constructor(block) {
    this.view = viewOf(block);
    this.little = beginsWith(block, 'II*\0');
    if (!this.little && !beginsWith(block, 'MM\0*')) throw new RangeError('not a TIFF block');
    this.first = this.view.getUint32(4, this.little);
  }

  /**
   * @param {number} offset
   * @returns {{entries: TiffEntry[], end: number}} end: where the offset of the next directory stands
   * @throws {RangeError} when it isn't wholly in the block
   */
  directory(offset) {
    const {view, little} = this;
    const end = offset + 2 + 12 * view.getUint16(offset, little);
    if (offset < 8 || end > view.byteLength) throw new RangeError('a directory behind the end');
    const entries = [];
    for (let at = offset + 2; at < end; at += 12) {
      const type = view.getUint16(at + 2, little);
      const count = view.getUint32(at + 4, little);
      const bytes = count * ([0, 1, 1, 2, 4, 8, 1, 1, 2, 4, 8, 4, 8, 4][type] ?? 0);
      const data = bytes > 4 ? view.getUint32(at + 8, little) : at + 8;
      entries.push({tag: view.getUint16(at, little), type, count, data, bytes});
    }
    return {entries, end};
  }

  // A whole number, or undefined where the entry holds none.
  /** @param {TiffEntry|undefined} entry @param {number} [index] */
  number(entry, index = 0) {
    if (!entry || index >= entry.count) return undefined;
    const {type, data} = entry;
    if (type === 1) return this.view.getUint8(data + index);
    if (type === 3) return this.view.getUint16(data + 2 * index, this.little);
    return type === 4 || type === 13 ? this.view.getUint32(data + 4 * index, this.little) : undefined;
  }

  /** @param {TiffEntry} entry of one number @param {number} value */
  setNumber({type, count, data}, value) {
    if (count !== 1) return;
    if (type === 1) this.view.setUint8(data, value);
    if (type === 3) this.view.setUint16(data, value, this.little);
    if (type === 4) this.view.setUint32(data, value, this.little);
  }
}

// The matrices of profiles (ICC.1), whose white is D50: red, green and blue, each X, Y and Z.
const primaries = {
  'srgb': [0.4361, 0.2225, 0.0139, 0.3851, 0.7169, 0.0971, 0.1431, 0.0606, 0.7141],
  'display-p3': [0.5151, 0.2412, -0.0011, 0.2919, 0.6922, 0.0419, 0.1572, 0.0666, 0.7841],
};

/** @param {number} linear */
const encoded = (linear) => linear <= 0.0031308 ? 12.92 * linear : 1.055 * linear ** (1 / 2.4) - 0.055;

// The light of a sample by a profile's curve.
/** @param {DataView} view @param {number} at @param {number} x 0 to 1 */
function light(view, at, x) {
  const isParametric = view.getUint32(at) === 0x70617261;
  if (!isParametric) {
    const count = view.getUint32(at + 8);
    if (count === 0) return x;
    if (count === 1) return x ** (view.getUint16(at + 12) / 256);
    const below = Math.min(Math.floor(x * (count - 1)), count - 2);
    const [low, high] = [0, 2].map((next) => view.getUint16(at + 12 + 2 * below + next) / 65535);
    return low + (high - low) * (x * (count - 1) - below);
  }
  const type = view.getUint16(at + 8);
  const [g, a, b, c, d, e, f] = [0, 1, 2, 3, 4, 5, 6].map((i) => (
    i < [1, 3, 4, 5, 7][type] ? view.getInt32(at + 12 + 4 * i) / 65536 : 0));
  if (type === 0) return x ** g;
  if (type < 3) return a * x + b >= 0 ? (a * x + b) ** g + c : c;
  return x >= d ? (a * x + b) ** g + e : c * x + f;
}

// A description: a textDescription (ICC.1:2001) or a multiLocalizedUnicode, in English if it can be.
/** @param {Uint8Array} bytes @param {number} at */
function textAt(bytes, at) {
  const view = viewOf(bytes);
  const isPlain = view.getUint32(at) === 0x64657363;
  if (isPlain) return latin1(bytes, at + 12, at + 12 + view.getUint32(at + 8)).split('\0')[0];
  let record = at + 16;
  for (let i = Math.min(view.getUint32(at + 8), 100) - 1; i > 0; --i) {
    if (latin1(bytes, at + 16 + 12 * i).startsWith('en')) record = at + 16 + 12 * i;
  }
  const from = at + view.getUint32(record + 8);
  return new TextDecoder('utf-16be').decode(bytes.subarray(from, from + view.getUint32(record + 4))).split('\0')[0];
}

/**
 * What a colour profile means, by its primaries and curves: programs name the same colours as they like.
 * @param {Uint8Array} profile @param {PictureFile} found
 */
function readProfile(profile, found) {
  found.colours = 'other';
  const view = viewOf(profile);
  /** @type {Map<string, number>} */
  const tags = new Map();
  for (let i = Math.min(view.getUint32(128), 100) - 1; i >= 0; --i) {
    tags.set(latin1(profile, 132 + 12 * i, 136 + 12 * i), view.getUint32(136 + 12 * i));
  }
  const name = tags.get('desc');
  if (name !== undefined) found.profileName = textAt(profile, name).slice(0, 100).trim();
  const isGrey = latin1(profile, 16, 20) === 'GRAY';
  const curves = (isGrey ? ['kTRC'] : ['rTRC', 'gTRC', 'bTRC']).map((tag) => tags.get(tag) ?? Infinity);
  for (let x = 0; x <= 1; x += 1 / 32) {
    // Closer than the curve of gamma 2.2, farther than the tables with few steps that are in use.
    if (!curves.every((curve) => Math.abs(encoded(light(view, curve, x)) - x) < 0.01)) return;
  }
  const matrix = isGrey ? primaries.srgb : ['rXYZ', 'gXYZ', 'bXYZ'].flatMap((tag) => (
    [8, 12, 16].map((at) => view.getInt32((tags.get(tag) ?? Infinity) + at) / 65536)));
  found.colours = nearest(matrix, primaries, 0.003);
}

/** @param {number[]} numbers @param {{'srgb': number[], 'display-p3': number[]}} known @param {number} tolerance */
function nearest(numbers, known, tolerance) {
  /** @param {number[]} a */
  const isNear = (a) => a.every((value, i) => Math.abs(value - numbers[i]) <= tolerance);
  return isNear(known.srgb) ? 'srgb' : isNear(known['display-p3']) ? 'display-p3' : 'other';
}

// By the numbers of ITU-T H.273.
/** @param {number} primary @param {number} transfer @param {PictureFile} found */
function readCodes(primary, transfer, found) {
  const isLikeSrgb = transfer === 13 || transfer === 2;
  found.colours = isLikeSrgb && primary <= 2 ? 'srgb' : isLikeSrgb && primary === 12 ? 'display-p3' : 'other';
  const space = new Map([[9, 'Rec. 2020'], [12, 'Display P3']]).get(primary) ?? (primary <= 2 ? 'sRGB' : 'other');
  const curve = new Map([[1, 'Rec. 709'], [8, 'linear'], [16, 'PQ'], [18, 'HLG']]).get(transfer);
  found.profileName = curve ? `${space}, ${curve}` : space;
}

/** @param {() => void} reader */
function asFarAsItGoes(reader) {
  try {
    reader();
  } catch (error) {
    if (!(error instanceof RangeError)) throw error;
  }
}

// What a zlib stream holds, or null when it is damaged or too long.
/** @param {Uint8Array} deflated */
async function inflated(deflated) {
  try {
    // The browser's own; older type libraries don't know it.
    const {DecompressionStream} = /** @type {any} */ (globalThis);
    const reader = new Blob([deflated]).stream().pipeThrough(new DecompressionStream('deflate')).getReader();
    const parts = [];
    let length = 0;
    for (let part = await reader.read(); !part.done; part = await reader.read()) {
      parts.push(part.value);
      length += part.value.length;
      if (length > longest) {
        await reader.cancel();
        return null;
      }
    }
    return new Uint8Array(await new Blob(parts).arrayBuffer());
  } catch {
    return null;
  }
}

/** @param {Uint8Array} data with or without the identifier of a JPEG segment @param {PictureFile} found */
function readExif(data, found) {
  const block = new Uint8Array(data.subarray(beginsWith(data, 'Exif\0\0') ? 6 : 0));
  found.exif = block;
  asFarAsItGoes(() => {
    const tiff = new Tiff(block);
    const orientation = tiff.number(tiff.directory(tiff.first).entries.find(({tag}) => tag === 0x112)) ?? 1;
    if (orientation >= 1 && orientation <= 8) found.orientation = orientation;
  });
}

// JPEG (ITU-T T.81) with JFIF's, Exif's, XMP's and ICC's segments.
/** @param {Uint8Array} bytes @param {PictureFile} found */
function readJpeg(bytes, found) {
  const view = viewOf(bytes);
  /** @type {Uint8Array[]} */
  const exif = [];
  /** @type {Uint8Array[]} */
  const profile = [];
  let pieces = 0;
  /** @param {number} marker @param {Uint8Array} data */
  const segment = (marker, data) => {
    const isFrame = marker >= 0xc0 && marker <= 0xcf && ![0xc4, 0xc8, 0xcc].includes(marker);
    if (isFrame && found.width === 0) {
      const frame = viewOf(data);
      found.bits = frame.getUint8(0);
      found.height = frame.getUint16(1);
      found.width = frame.getUint16(3);
      const components = frame.getUint8(5);
      found.model = components === 1 ? 'grey' : components === 4 ? 'cmyk' : 'colour';
    } else if (marker === 0xe1 && beginsWith(data, 'Exif\0\0')) {
      exif.push(exif.length === 0 ? data : data.subarray(6));
    } else if (marker === 0xe1 && beginsWith(data, xmpName)) {
      found.xmp = found.xmp ?? new Uint8Array(data.subarray(xmpName.length));
    } else if (marker === 0xe1 && beginsWith(data, extendedXmpName)) {
      found.extendedXmp.push(new Uint8Array(data.subarray(extendedXmpName.length)));
    } else if (marker === 0xe2 && beginsWith(data, 'ICC_PROFILE\0')) {
      profile[data[12]] = data.subarray(14);
      pieces = data[13];
    } else if (marker === 0xed && latin1(data).includes('8BIM\x04\x04')) {
      found.iptc = true;
    }
  };
  asFarAsItGoes(() => {
    for (let at = 2; ;) {
      // Decoders pass over what stands between segments, and over repeated FFs.
      at = bytes.indexOf(0xff, at);
      if (at < 0) break;
      const marker = view.getUint8(at + 1);
      const endsHere = marker === 0xda || marker === 0xd9;
      if (endsHere) break;
      const isAlone = marker === 0xff || marker <= 1 || (marker >= 0xd0 && marker <= 0xd7);
      const length = isAlone ? 0 : view.getUint16(at + 2);
      if (!isAlone) segment(marker, bytes.subarray(at + 4, at + 2 + length));
      at += (marker === 0xff ? 1 : 2) + length;
    }
  });
  // A long block goes on in further segments.
  if (exif.length > 0) readExif(joined(exif), found);
  const whole = Array.from({length: pieces}, (_, i) => profile[i + 1]);
  if (pieces > 0 && whole.every(Boolean)) asFarAsItGoes(() => readProfile(joined(whole), found));
}

// PNG (W3C, third edition).
/** @param {Uint8Array} bytes @param {PictureFile} found */
async function readPng(bytes, found) {
  const view = viewOf(bytes);
  /** @type {Map<string, Uint8Array>} */
  const chunks = new Map();
  asFarAsItGoes(() => {
    for (let at = 8; at < bytes.length;) {
      const length = view.getUint32(at);
      const type = latin1(bytes, at + 4, at + 8);
      const data = bytes.subarray(at + 8, at + 8 + length);
      const key = type === 'iTXt' && beginsWith(data, 'XML:com.adobe.xmp\0') ? 'xmp' : type;
      if (!chunks.has(key)) chunks.set(key, data);
      at += 12 + length;
    }
  });
  /** @param {string} type @param {(data: Uint8Array, numbers: DataView) => void} reader */
  const chunk = (type, reader) => {
    const data = chunks.get(type);
    if (data) asFarAsItGoes(() => reader(data, viewOf(data)));
    return data !== undefined;
  };
  found.hasAlpha = chunks.has('tRNS');
  chunk('IHDR', (_, header) => {
    found.width = header.getUint32(0);
    found.height = header.getUint32(4);
    const kind = header.getUint8(9);
    const isPalette = kind === 3;
    found.bits = isPalette ? 8 : header.getUint8(8);
    found.model = kind === 0 || kind === 4 ? 'grey' : 'colour';
    found.hasAlpha ||= kind >= 4;
  });
  chunk('acTL', (_, control) => { found.frames = control.getUint32(0); });
  chunk('eXIf', (data) => readExif(data, found));
  const packet = chunks.get('xmp');
  if (packet) {
    // Behind the keyword: two bytes for the compression, the language, the keyword in that language, each with its 0.
    const text = packet.subarray(packet.indexOf(0, packet.indexOf(0, 20) + 1) + 1);
    found.xmp = packet[18] === 1 ? await inflated(text) : new Uint8Array(text);
  }
  const profile = chunks.get('iCCP');
  const unpacked = profile ? await inflated(profile.subarray(profile.indexOf(0) + 2)) : null;
  if (chunk('cICP', (_, codes) => readCodes(codes.getUint8(0), codes.getUint8(1), found))) return;
  if (unpacked) asFarAsItGoes(() => readProfile(unpacked, found));
  if (!unpacked && !chunks.has('sRGB')) chunk('gAMA', (_, gamma) => readGamma(gamma, chunks.get('cHRM'), found));
}

/** @param {DataView} gamma @param {Uint8Array|undefined} chromaticities @param {PictureFile} found */
function readGamma(gamma, chromaticities, found) {
  const srgb = [31270, 32900, 64000, 33000, 30000, 60000, 15000, 6000];
  const displayP3 = [31270, 32900, 68000, 32000, 26500, 69000, 15000, 6000];
  const value = gamma.getUint32(0);
  const numbers = chromaticities ? srgb.map((_, i) => viewOf(chromaticities).getUint32(4 * i)) : srgb;
  const isUsual = Math.abs(value - 45455) <= 500;
  found.colours = isUsual ? nearest(numbers, {srgb, 'display-p3': displayP3}, 200) : 'other';
  if (!isUsual) found.profileName = `gamma ${(100000 / value).toFixed(2)}`;
}

// WebP (RFC 9649).
/** @param {Uint8Array} bytes @param {PictureFile} found */
function readWebp(bytes, found) {
  const view = viewOf(bytes);
  let images = 0;
  for (let at = 12; at + 8 <= bytes.length;) {
    const length = view.getUint32(at + 4, true);
    const type = latin1(bytes, at, at + 4);
    const data = bytes.subarray(at + 8, at + 8 + length);
    if (type === 'VP8X') {
      found.hasAlpha = (data[0] & 16) !== 0;
      found.width = 1 + (viewOf(data).getUint32(4, true) & 0xffffff);
      found.height = 1 + (viewOf(data).getUint32(6, true) >>> 8);
    } else if (type === 'VP8 ' && found.width === 0) {
      found.width = viewOf(data).getUint16(6, true) & 0x3fff;
      found.height = viewOf(data).getUint16(8, true) & 0x3fff;
    } else if (type === 'VP8L' && found.width === 0) {
      const sizes = viewOf(data).getUint32(1, true);
      found.width = 1 + (sizes & 0x3fff);
      found.height = 1 + (sizes >>> 14 & 0x3fff);
      found.hasAlpha = (sizes >>> 28 & 1) === 1;
    } else if (type === 'ICCP') {
      asFarAsItGoes(() => readProfile(data, found));
    } else if (type === 'EXIF') {
      readExif(data, found);
    } else if (type === 'XMP ') {
      found.xmp = new Uint8Array(data);
    } else if (type === 'ANMF') {
      found.frames = Math.max(1, ++images);
    }
    at += 8 + length + length % 2;
  }
}

// GIF 89a.
/** @param {Uint8Array} bytes @param {PictureFile} found */
function readGif(bytes, found) {
  const view = viewOf(bytes);
  found.width = view.getUint16(6, true);
  found.height = view.getUint16(8, true);
  /** @param {number} flags */
  const tableBytes = (flags) => flags & 128 ? 6 << (flags & 7) : 0;
  let images = 0;
  for (let at = 13 + tableBytes(bytes[10]); at < bytes.length;) {
    const isImage = bytes[at] === 0x2c;
    if (!isImage && bytes[at] !== 0x21) break;
    if (isImage) found.frames = Math.max(1, ++images);
    if (!isImage && bytes[at + 1] === 0xf9) found.hasAlpha ||= (bytes[at + 3] & 1) === 1;
    at += isImage ? 11 + tableBytes(bytes[at + 9]) : 2;
    while (bytes[at] > 0) at += 1 + bytes[at];
    ++at;
  }
}

// AVIF and HEIC: boxes of ISO/IEC 14496-12 and 23008-12.
/** @param {Uint8Array} bytes @param {PictureFile} found */
function readBoxes(bytes, found) {
  const view = viewOf(bytes);
  for (let at = 0; at + 8 <= bytes.length;) {
    const size = view.getUint32(at) || bytes.length - at;
    // Boxes of 4 GB and more hold pixels.
    if (size < 8) break;
    const type = latin1(bytes, at + 4, at + 8);
    const data = bytes.subarray(at + 8, at + size);
    if (type === 'meta') readBoxes(data.subarray(4), found);
    if (type === 'iprp' || type === 'ipco') readBoxes(data, found);
    asFarAsItGoes(() => readProperty(type, data, found));
    at += size;
  }
}

/** @param {string} type @param {Uint8Array} data @param {PictureFile} found */
function readProperty(type, data, found) {
  const view = viewOf(data);
  const isLarger = type === 'ispe' && view.getUint32(4) * view.getUint32(8) > found.width * found.height;
  // The parts of the picture, its alpha and its thumbnail have sizes, too.
  if (isLarger) [found.width, found.height] = [view.getUint32(4), view.getUint32(8)];
  if (type === 'pixi') found.bits = view.getUint8(5);
  if (type === 'irot') found.orientation = [1, 8, 3, 6][view.getUint8(0) & 3];
  if (type === 'auxC') found.hasAlpha ||= latin1(data).includes('alpha') || latin1(data).includes('hevc:2015:auxid:1');
  if (type === 'ftyp' && /avis|hevc/.test(latin1(data))) found.frames = 2;
  if (type === 'colr' && beginsWith(data, 'nclx')) readCodes(view.getUint16(4), view.getUint16(6), found);
  if (type === 'colr' && !beginsWith(data, 'nclx')) readProfile(data.subarray(4), found);
}

/** @param {Uint8Array} bytes @param {PictureFile} found */
function readTiff(bytes, found) {
  const tiff = new Tiff(bytes);
  const tags = new Map(tiff.directory(tiff.first).entries.map((entry) => [entry.tag, tiff.number(entry)]));
  found.width = tags.get(256) ?? 0;
  found.height = tags.get(257) ?? 0;
  found.bits = tags.get(258) ?? 1;
  found.orientation = tags.get(274) ?? 1;
}

/** @param {Uint8Array} bytes @param {PictureFile} found */
function readBmp(bytes, found) {
  const view = viewOf(bytes);
  found.width = Math.abs(view.getInt32(18, true));
  found.height = Math.abs(view.getInt32(22, true));
  found.hasAlpha = view.getUint16(28, true) === 32;
}

/** @type {[RegExp, PictureFile['format'], (bytes: Uint8Array, found: PictureFile) => void|Promise<void>][]} */
const kinds = [
  [/^\xff\xd8\xff/, 'jpeg', readJpeg],
  [/^\x89PNG\r\n\x1a\n/, 'png', readPng],
  [/^RIFF[^]{4}WEBP/, 'webp', readWebp],
  [/^GIF8/, 'gif', readGif],
  [/^[^]{4}ftyp(avi[fs]|[^]{8}([^]{4})*avi[fs])/, 'avif', readBoxes],
  [/^[^]{4}ftyp(hei[cxms]|hev[cx]|mif1|msf1)/, 'heic', readBoxes],
  [/^BM/, 'bmp', readBmp],
  [/^(II\*\0|MM\0\*)/, 'tiff', readTiff],
];

/** @type {[null, 'unknown']} */
const unknown = [null, 'unknown'];

/**
 * Never fails: a damaged file gives what could be read of it.
 * @param {Uint8Array} bytes the whole file
 * @returns {Promise<PictureFile>}
 */
export async function readPictureFile(bytes) {
  const beginning = latin1(bytes, 0, 64);
  const [, format, reader] = kinds.find(([pattern]) => pattern.test(beginning)) ?? unknown;
  /** @type {PictureFile} */
  const found = {
    format, width: 0, height: 0, bits: 8, model: 'colour', hasAlpha: false, frames: 1, orientation: 1, colours: 'srgb',
    profileName: '', exif: null, xmp: null, extendedXmp: [], iptc: false,
  };
  /** @type {void|Promise<void>} */
  let rest = undefined;
  asFarAsItGoes(() => { rest = reader?.(bytes, found); });
  await rest;
  return found;
}
