// Puts the EXIF and XMP of the original into a new JPEG file, changed only where the new picture makes them untrue.
//
// Bytes of EXIF are changed in place: maker notes point at others by offsets that only their makers know. Sources of
// the formats: Exif (CIPA DC-008), TIFF 6.0, XMP (ISO 16684-1, and part 3 of Adobe's: storage in files).
import {Tiff, beginsWith, extendedXmpName, joined, latin1, xmpName} from './picture_file.js';

/** @typedef {{exif: Uint8Array|null, xmp: Uint8Array|null, extendedXmp: Uint8Array[]}} Metadata see PictureFile */
/** @typedef {{width: number, height: number, colours: 'srgb'|'display-p3'|'other'}} Result the new picture, upright */
/** @typedef {{begin: number, end: number, text: string}} Edit text in the place of what stands there */

const exifName = 'Exif\0\0';
const longestSegment = 65533;

/** @param {string} text of characters to 255 */
const bytesOf = (text) => Uint8Array.from(text, (character) => character.charCodeAt(0));

/** @param {Tiff} tiff @param {number|undefined} offset */
const entriesAt = (tiff, offset) => offset === undefined ? [] : tiff.directory(offset).entries;

// Marks what the directories hold but the thumbnail's, so that a thumbnail said to lie there blanks none of it.
/** @param {Tiff} tiff @returns {Uint8Array} 1 for each byte that is taken */
function takenBytes(tiff) {
  const taken = new Uint8Array(tiff.view.byteLength).fill(1, 0, 8);
  const offsets = [tiff.first];
  const most = 32;
  for (let i = 0; i < Math.min(offsets.length, most); ++i) {
    try {
      const {entries, end} = tiff.directory(offsets[i]);
      taken.fill(1, offsets[i], end + 4);
      for (const entry of entries) {
        taken.fill(1, entry.data, entry.data + entry.bytes);
        const isDirectory = [0x8769, 0x8825, 0xa005, 0x14a].includes(entry.tag);
        for (let n = 0; isDirectory && n < Math.min(entry.count, most); ++n) offsets.push(tiff.number(entry, n) ?? 0);
      }
    } catch (error) {
      if (!(error instanceof RangeError)) throw error;
    }
  }
  return taken;
}

// Unlinks the directories behind the first and blanks them and their pictures.
/** @param {Uint8Array} block @param {Tiff} tiff */
function dropThumbnail(block, tiff) {
  const taken = takenBytes(tiff);
  let budget = block.length;
  /** @param {number} begin @param {number} length */
  const blank = (begin, length) => {
    const end = Math.min(begin + length, block.length, begin + budget);
    for (let at = begin; at < end; ++at) {
      if (!taken[at]) block[at] = 0;
    }
    budget -= Math.max(0, end - begin);
  };
  const {end: linkAt} = tiff.directory(tiff.first);
  if (linkAt + 4 > block.length) return;
  let link = tiff.view.getUint32(linkAt, tiff.little);
  tiff.view.setUint32(linkAt, 0);
  while (link !== 0 && budget > 0) {
    const {entries, end} = tiff.directory(link);
    const next = end + 4 <= block.length ? tiff.view.getUint32(end, tiff.little) : 0;
    const numbers = entries.map((entry) => Array.from({length: Math.min(entry.count, 4096)}, (_, n) => (
      [0x111, 0x117, 0x201, 0x202].includes(entry.tag) ? tiff.number(entry, n) ?? 0 : 0)));
    /** @param {number} tag */
    const listOf = (tag) => numbers[entries.findIndex((entry) => entry.tag === tag)] ?? [];
    for (const [offsets, lengths] of [[0x201, 0x202], [0x111, 0x117]]) {
      listOf(offsets).forEach((offset, n) => blank(offset, listOf(lengths)[n] ?? 0));
    }
    for (const {data, bytes} of entries) blank(data, bytes);
    blank(link, end + 4 - link);
    link = next;
  }
}

/** @param {Uint8Array} original @param {Result} result @throws {RangeError} when it is damaged */
function freshExif(original, {width, height, colours}) {
  const block = new Uint8Array(original);
  const tiff = new Tiff(block);
  const main = entriesAt(tiff, tiff.first);
  const exif = entriesAt(tiff, tiff.number(main.find(({tag}) => tag === 0x8769)));
  const inMain = new Map([[0x112, 1], [0x100, width], [0x101, height]]);
  const inExif = new Map([[0xa002, width], [0xa003, height], [0xa001, colours === 'srgb' ? 1 : 65535]]);
  for (const [entries, values] of /** @type {const} */ ([[main, inMain], [exif, inExif]])) {
    for (const entry of entries) {
      const value = values.get(entry.tag);
      if (value !== undefined) tiff.setNumber(entry, value);
    }
  }
  try {
    dropThumbnail(block, tiff);
  } catch (error) {
    // Unlinked it is, and what can't be found can't be shown.
    if (!(error instanceof RangeError)) throw error;
  }
  return block;
}

/**
 * The tags of an XML text in turn, attributes as [name, where the value begins, where it ends].
 * @param {string} text
 * @throws {SyntaxError} where it isn't XML
 */
function* tagsOf(text) {
  const tag = /<(\/?)([^\s<>/="'!?]+)((?:\s+[^\s<>/="']+\s*=\s*(?:"[^"<]*"|'[^'<]*'))*)\s*(\/?)>/y;
  const attribute = /([^\s=]+)\s*=\s*("[^"]*"|'[^']*')/g;
  const others = [['<!--', '-->'], ['<![CDATA[', ']]>'], ['<?', '?>'], ['<!', '>']];
  for (let begin = text.indexOf('<'), end = 0; begin >= 0; begin = text.indexOf('<', end)) {
    const other = others.find(([opening]) => text.startsWith(opening, begin));
    tag.lastIndex = begin;
    const match = other ? null : tag.exec(text);
    const ending = other ? text.indexOf(other[1], begin + other[0].length) : -1;
    if (!match && ending < 0) throw new SyntaxError('not XML');
    end = match ? tag.lastIndex : ending + /** @type {string[]} */ (other)[1].length;
    if (!match) continue;
    const from = begin + 1 + match[1].length + match[2].length;
    const attributes = Array.from(match[3].matchAll(attribute), (found) => {
      const at = from + /** @type {number} */ (found.index);
      return {name: found[1], begin: at, end: at + found[0].length, value: found[2].slice(1, -1)};
    });
    yield {begin, end, name: match[2], closes: match[1] === '/', isEmpty: match[4] === '/', attributes};
  }
}

const rdfName = 'http://www.w3.org/1999/02/22-rdf-syntax-ns#RDF';

/**
 * What to change in a packet. Only properties of the picture itself, not those of others that it tells of (its history,
 * its ingredients), in each of the forms of RDF.
 * @param {string} packet @param {Result} result
 * @returns {Edit[]}
 * @throws {SyntaxError} when it is damaged
 */
function xmpEdits(packet, {width, height}) {
  const [tiff, exif, xmp] = ['tiff', 'exif', 'xap'].map((name) => `http://ns.adobe.com/${name}/1.0/`);
  const values = new Map(/** @type {[string, number|''][]} */ ([
    [`${tiff}Orientation`, 1], [`${tiff}ImageWidth`, width], [`${tiff}ImageLength`, height],
    [`${exif}PixelXDimension`, width], [`${exif}PixelYDimension`, height], [`${xmp}Thumbnails`, ''],
  ]));
  /** @type {Map<string, string>} */
  const spaces = new Map();
  /** @param {string} name */
  const meaning = (name) => name.replace(/^(.*?):/, (_, prefix) => spaces.get(prefix) ?? `${prefix}:`);
  /** @type {Edit[]} */
  const edits = [];
  /** @type {{name: string, full: string, begin: number, end: number}[]} */
  const open = [];
  let hasRdf = false;
  for (const {begin, end, name, closes, isEmpty, attributes} of tagsOf(packet)) {
    for (const {name: declared, value} of attributes) {
      if (declared.startsWith('xmlns:')) spaces.set(declared.slice(6), value);
    }
    const own = {name, full: meaning(name), begin, end};
    const element = closes ? open.pop() : own;
    if (element?.name !== name) throw new SyntaxError('not XML');
    const isNode = open.length > 0 && open[open.length - 1].full === rdfName;
    const isProperty = open.length > 1 && open[open.length - 2].full === rdfName;
    hasRdf ||= own.full === rdfName;
    for (const attribute of isNode ? attributes : []) {
      const value = values.get(meaning(attribute.name));
      const text = value === '' ? '' : `${attribute.name}="${value}"`;
      if (value !== undefined) edits.push({begin: attribute.begin, end: attribute.end, text});
    }
    const value = isProperty && (closes || isEmpty) ? values.get(element.full) : undefined;
    const isPlain = closes && packet.indexOf('<', element.end) === begin;
    if (value === '') edits.push({begin: element.begin, end, text: ''});
    else if (value !== undefined && isPlain) edits.push({begin: element.end, end: begin, text: `${value}`});
    if (!closes && !isEmpty) open.push(own);
  }
  if (open.length > 0 || !hasRdf) throw new SyntaxError('not RDF');
  return edits;
}

/** @param {Uint8Array} packet @param {Result} result @throws {SyntaxError} when it is damaged */
function freshXmp(packet, result) {
  const text = latin1(packet);
  let at = 0;
  let fresh = '';
  for (const edit of xmpEdits(text, result)) {
    fresh += text.slice(at, edit.begin) + edit.text;
    at = edit.end;
  }
  return bytesOf(fresh + text.slice(at));
}

/**
 * Thumbnails turn into blanks, as the places of the parts are counted. The digest that parts are known by stays: the
 * packet names it, and no more is known to be made of it.
 * @param {Uint8Array[]} segments @param {Result} result
 * @throws {SyntaxError} when they are damaged
 */
function freshExtendedXmp(segments, result) {
  const header = 40;
  const digest = 32;
  /** @param {Uint8Array} segment */
  const offsetOf = (segment) => new DataView(segment.buffer, segment.byteOffset).getUint32(digest + 4);
  /** @type {Map<string, Uint8Array[]>} */
  const packets = new Map();
  for (const segment of segments.map((original) => new Uint8Array(original))) {
    if (segment.length < header) throw new SyntaxError('too short');
    const key = latin1(segment, 0, digest);
    packets.set(key, [...packets.get(key) ?? [], segment]);
  }
  for (const parts of packets.values()) {
    parts.sort((a, b) => offsetOf(a) - offsetOf(b));
    const edits = xmpEdits(latin1(joined(parts.map((part) => part.subarray(header)))), result);
    for (const {begin, end} of edits.filter(({text}) => text === '')) {
      for (const part of parts) {
        const shift = header - offsetOf(part);
        if (end + shift > header) part.fill(0x20, Math.max(header, begin + shift), end + shift);
      }
    }
  }
  return Array.from(packets.values()).flat();
}

// Behind the beginning of the file and its JFIF segments.
/** @param {Uint8Array} jpeg */
function placeIn(jpeg) {
  let at = 2;
  while (jpeg[at] === 0xff && jpeg[at + 1] === 0xe0) at += 2 + jpeg[at + 2] * 256 + jpeg[at + 3];
  return at;
}

/**
 * @param {Uint8Array} jpeg a JPEG file as the browser encodes it, without EXIF and XMP; its colour profile stays
 * @param {Metadata} metadata the original's
 * @param {Result} result
 * @returns {{jpeg: Uint8Array, left: string[]}} left: what was left out, and why, in sentences for people
 */
export function withMetadata(jpeg, {exif, xmp, extendedXmp}, result) {
  if (!beginsWith(jpeg, '\xff\xd8')) throw new Error('metadata can only be put into a JPEG file');
  /** @type {Uint8Array[]} */
  const segments = [];
  /** @type {string[]} */
  const left = [];
  /** @param {string} what @param {string} name @param {() => Uint8Array[]} fresh */
  const add = (what, name, fresh) => {
    try {
      const blocks = fresh();
      const most = longestSegment - name.length;
      const tooLong = blocks.find((block) => block.length > most);
      if (tooLong) {
        left.push(`The ${what} was left out: it has ${tooLong.length} bytes, and a JPEG file holds ${most}.`);
        return;
      }
      for (const block of blocks) {
        const length = 2 + name.length + block.length;
        segments.push(Uint8Array.of(0xff, 0xe1, length >> 8, length & 255), bytesOf(name), block);
      }
    } catch (error) {
      if (!(error instanceof RangeError || error instanceof SyntaxError)) throw error;
      left.push(`The ${what} was left out: it is damaged.`);
    }
  };
  if (exif) add('EXIF (camera, date, place)', exifName, () => [freshExif(exif, result)]);
  if (xmp) add('XMP (title, rating, edits)', xmpName, () => [freshXmp(xmp, result)]);
  if (extendedXmp.length > 0) add('long part of the XMP', extendedXmpName, () => freshExtendedXmp(extendedXmp, result));
  const place = placeIn(jpeg);
  return {jpeg: joined([jpeg.subarray(0, place), ...segments, jpeg.subarray(place)]), left};
}
