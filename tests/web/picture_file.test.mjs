// What the page reads of picture files and carries into new ones. exiftool is asked what stands in the files before and
// after; bytes made here stand for files that no program at hand writes.
import assert from 'node:assert';
import {execFileSync} from 'node:child_process';
import {mkdtempSync, readFileSync, rmSync, writeFileSync} from 'node:fs';
import {tmpdir} from 'node:os';
import {join} from 'node:path';
import {after, test} from 'node:test';
import {deflateSync} from 'node:zlib';
import {withMetadata} from '../../fronts/web/source/metadata.js';
import {readPictureFile} from '../../fronts/web/source/picture_file.js';

const folder = mkdtempSync(join(tmpdir(), 'picture_file-'));
after(() => rmSync(folder, {recursive: true}));
const example = new URL('../../examples/coffee.png', import.meta.url).pathname;
const plain = join(folder, 'plain.jpg');
execFileSync(process.env.ORBEL ?? 'orbel', [example, '-o', plain]);
// As a browser encodes it: no metadata.
execFileSync('exiftool', ['-q', '-overwrite_original', '-all=', plain]);

const exiftool = (...options) => execFileSync('exiftool', options, {maxBuffer: 1 << 26});
const put = (name, bytes) => { writeFileSync(join(folder, name), bytes); return join(folder, name); };
const tagsOf = (file) => JSON.parse(exiftool('-j', '-G1', '-a', '-u', '-U', '-s', '-n', '-b', file))[0];
const result = {width: 1234, height: 987, colours: 'display-p3'};

const u16 = (...numbers) => Buffer.from(numbers.flatMap((n) => [n >> 8 & 255, n & 255]));
const u32 = (...numbers) => Buffer.concat(numbers.map((n) => u16(n >>> 16, n & 65535)));
const cat = (...parts) => (
  Buffer.concat(parts.map((part) => typeof part === 'string' ? Buffer.from(part, 'latin1') : part)));
const segment = (marker, ...parts) => cat(Buffer.of(255, marker), u16(cat(...parts).length + 2), ...parts);
const frame = (components = 3) => segment(0xc2, Buffer.of(8), u16(20, 30), Buffer.of(components));
const chunk = (type, ...parts) => cat(u32(cat(...parts).length), type, ...parts, u32(0));
const png = (depth, kind, ...chunks) => (
  cat('\x89PNG\r\n\x1a\n', chunk('IHDR', u32(30, 20), Buffer.of(depth, kind, 0, 0, 0)), ...chunks));
const fixed = (...numbers) => u32(...numbers.map((n) => Math.round(n * 65536)));

// A profile with one curve for all channels; the description as in version 4.
function profile(name, matrix, curve) {
  const text = Buffer.from(name, 'utf16le').swap16();
  const datas = [cat('mluc', u32(0, 1, 12), 'enUS', u32(text.length, 28), text),
    ...[0, 3, 6].map((i) => cat('XYZ ', u32(0), fixed(...matrix.slice(i, i + 3)))), curve, curve, curve];
  let at = 132 + 12 * 7;
  const table = ['desc', 'rXYZ', 'gXYZ', 'bXYZ', 'rTRC', 'gTRC', 'bTRC'].map((tag, i) => {
    at += datas[i].length;
    return cat(tag, u32(at - datas[i].length, datas[i].length));
  });
  return cat(Buffer.alloc(16), 'RGB XYZ ', Buffer.alloc(104), u32(7), ...table, ...datas);
}
const parametric = cat('para', u32(0), u16(3, 0), fixed(2.4, 1 / 1.055, 0.055 / 1.055, 1 / 12.92, 0.04045));
const table = cat('curv', u32(0, 26), u16(...Array.from({length: 26}, (_, i) => (
  Math.round(65535 * (i < 2 ? i / 25 / 12.92 : ((i / 25 + 0.055) / 1.055) ** 2.4))))));
const gamma = cat('curv', u32(0, 1), u16(563));
const srgb = [0.436, 0.2225, 0.0139, 0.3851, 0.7169, 0.0971, 0.1431, 0.0606, 0.7139];
const p3 = [0.5151, 0.2412, -0.0011, 0.292, 0.6922, 0.0419, 0.1571, 0.0666, 0.7841];
const adobe = [0.6097, 0.3111, 0.0195, 0.2053, 0.6257, 0.0609, 0.1492, 0.0632, 0.7446];
const icc = profile('Ünusual P3', p3, parametric);
const piece = (i, of, bytes) => segment(0xe2, 'ICC_PROFILE\0', Buffer.of(i, of), bytes);
const inPng = (bytes) => chunk('iCCP', 'any\0\0', deflateSync(bytes));
const orientation6 = cat('MM\0*', u32(8), u16(1, 0x112, 3), u32(1), u16(6, 0), u32(0));

const files = {
  'jpeg, profile in pieces, last first': [
    cat('\xff\xd8', piece(2, 2, icc.subarray(99)), '\xff', piece(1, 2, icc.subarray(0, 99)), frame()),
    {format: 'jpeg', width: 30, height: 20, colours: 'display-p3', profileName: 'Ünusual P3'}],
  'jpeg, a piece missing': [cat('\xff\xd8', piece(2, 2, icc), frame(4)),
    {colours: 'srgb', model: 'cmyk', profileName: ''}],
  'jpeg, EXIF': [cat('\xff\xd8', segment(0xe1, 'Exif\0\0', orientation6), frame(1)), {orientation: 6, model: 'grey'}],
  'png, table': [png(16, 6, inPng(profile('s', srgb, table))),
    {bits: 16, hasAlpha: true, colours: 'srgb', profileName: 's'}],
  'png, gamma': [png(8, 2, inPng(profile('g', srgb, gamma))), {hasAlpha: false, colours: 'other'}],
  'png, Adobe RGB': [png(8, 2, inPng(profile('Adobe RGB (1998)', adobe, gamma))),
    {colours: 'other', profileName: 'Adobe RGB (1998)'}],
  'png, codes before profile': [png(8, 2, chunk('cICP', Buffer.of(12, 13, 0, 1)), inPng(profile('s', srgb, table))),
    {colours: 'display-p3', profileName: 'Display P3'}],
  'png, HDR': [png(16, 2, chunk('cICP', Buffer.of(9, 16, 0, 1))), {colours: 'other', profileName: 'Rec. 2020, PQ'}],
  'png, linear': [png(8, 0, chunk('gAMA', u32(100000))), {colours: 'other', profileName: 'gamma 1.00', model: 'grey'}],
  'png, animated palette': [png(4, 3, chunk('acTL', u32(7, 0)), chunk('tRNS', 'a'), chunk('eXIf', orientation6)),
    {bits: 8, frames: 7, hasAlpha: true, orientation: 6}],
  'png, packed XMP': [png(8, 2, chunk('iTXt', 'XML:com.adobe.xmp\0\x01\0en\0k\0', deflateSync(Buffer.from('<x/>')))),
    {xmp: new Uint8Array(Buffer.from('<x/>'))}],
  'webp': [cat('RIFF    WEBPVP8X\x0a\0\0\0\x10\0\0\0\x1d\0\0\x13\0\0EXIF\x20\0\0\0Exif\0\0', orientation6),
    {format: 'webp', width: 30, height: 20, hasAlpha: true, orientation: 6}],
  'gif': [cat('GIF89a\x1e\0\x14\0\0\0\0',
    ...Array(3).fill('!\xf9\x04\x01\0\0\0\0,\0\0\0\0\x1e\0\x14\0\0\x02\x01a\0'), ';'),
    {format: 'gif', width: 30, height: 20, hasAlpha: true, frames: 3}],
  'avif': [cat(u32(16), 'ftypavif', u32(0), u32(94), 'meta', u32(0), u32(82), 'iprp', u32(74), 'ipco', u32(20), 'ispe',
    u32(0, 30, 20), u32(19), 'colrnclx', u16(12, 13, 0), 'a', u32(16), 'pixi', u32(0), '\x03\x0a\x0a\x0a',
    u32(11), 'irot\x03\0\0'),
    {format: 'avif', width: 30, height: 20, bits: 10, colours: 'display-p3', orientation: 6}],
};

test('files say what they are', async () => {
  for (const [name, [bytes, expected]] of Object.entries(files)) {
    const found = await readPictureFile(new Uint8Array(bytes));
    const seen = Object.fromEntries(Object.keys(expected).map((key) => [key, found[key]]));
    assert.deepStrictEqual(seen, expected, name);
  }
});

const rich = (order, name) => {
  const file = put(name, readFileSync(plain));
  const xmp = put('in.xmp', `<x:xmpmeta xmlns:x="adobe:ns:meta/">
<rdf:RDF xmlns:rdf="http://www.w3.org/1999/02/22-rdf-syntax-ns#"><rdf:Description rdf:about=""
 xmlns:t="http://ns.adobe.com/tiff/1.0/" xmlns:exif='http://ns.adobe.com/exif/1.0/' t:Orientation = '6'
 xmlns:xap="http://ns.adobe.com/xap/1.0/" xmlns:dc="http://purl.org/dc/elements/1.1/" exif:PixelXDimension="600">
 <exif:PixelYDimension>400</exif:PixelYDimension><t:Make>t:Orientation="6" Ünï</t:Make><!-- <t:Orientation> -->
 <xap:Thumbnails><rdf:Alt><rdf:li rdf:parseType="Resource"><xap:CreatorTool>x</xap:CreatorTool>
 </rdf:li></rdf:Alt></xap:Thumbnails>
 <dc:creator><rdf:Seq><rdf:li t:Orientation="8">someone</rdf:li></rdf:Seq></dc:creator>
 </rdf:Description></rdf:RDF></x:xmpmeta>`);
  const thumbnail = put('thumbnail.jpg', readFileSync(plain).subarray(0, 9000));
  exiftool('-q', '-overwrite_original', `-ExifByteOrder=${order}`, '-Orientation#=6', '-ImageWidth=600',
    '-ImageHeight=400', '-Exif:ExifImageWidth=600', '-Exif:ExifImageHeight=400', '-ColorSpace#=1',
    '-Make=Maker', '-LensModel=L', '-UserComment=Grüße', '-GPSLatitude=3.25', '-GPSLatitudeRef=S', '-InteropIndex=R98',
    `-ThumbnailImage<=${thumbnail}`, `-XMP<=${xmp}`, file);
  return file;
};

test('metadata comes over but for what is no longer true', async () => {
  const thumbnail = readFileSync(plain).subarray(6000, 8000);
  const changes = {
    'IFD0:Orientation': 1, 'IFD0:ImageWidth': 1234, 'IFD0:ImageHeight': 987, 'ExifIFD:ExifImageWidth': 1234,
    'ExifIFD:ExifImageHeight': 987, 'ExifIFD:ColorSpace': 65535, 'XMP-tiff:Orientation': 1,
    'XMP-exif:ExifImageWidth': 1234, 'XMP-exif:ExifImageHeight': 987,
  };
  for (const order of ['II', 'MM']) {
    const original = rich(order, `${order}.jpg`);
    const found = await readPictureFile(readFileSync(original));
    assert.strictEqual(found.orientation, 6);
    assert.ok(readFileSync(original).indexOf(thumbnail) < readFileSync(original).lastIndexOf(thumbnail));
    const {jpeg, left} = withMetadata(readFileSync(plain), found, result);
    assert.deepStrictEqual(left, []);
    assert.strictEqual(Buffer.from(jpeg).indexOf(thumbnail), Buffer.from(jpeg).lastIndexOf(thumbnail));
    const expected = {...tagsOf(original), ...changes};
    const seen = tagsOf(put('fresh.jpg', jpeg));
    const own = /^(IFD1|System|Composite|File|SourceFile|ExifTool|XMP-xmp:Thumb|JFIF)/;
    const shared = (tags) => Object.fromEntries(Object.entries(tags).filter(([key]) => !own.test(key)));
    assert.deepStrictEqual(shared(seen), shared(expected));
    assert.strictEqual(Object.keys(seen).find((key) => /IFD1|Thumbnail/.test(key)), undefined);
    const again = await readPictureFile(jpeg);
    assert.strictEqual(again.exif.length, found.exif.length);
    // Other texts than the properties themselves, and those of others.
    for (const same of ['t:Orientation="6" Ünï', '<!-- <t:Orientation> -->', '<rdf:li t:Orientation="8">']) {
      assert.ok(Buffer.from(found.xmp).includes(same) && Buffer.from(again.xmp).includes(same), same);
    }
  }
});

// Little-endian: a maker note, and a thumbnail that claims its last 8 bytes and all behind them.
const overlapping = cat('II*\0\x08\0\0\0', '\x01\0', '\x69\x87\x04\0\x01\0\0\0\x1a\0\0\0', '\x3a\0\0\0',
  '\x01\0', '\x7c\x92\x07\0\x0e\0\0\0\x2c\0\0\0', '\0\0\0\0', 'maker note 123',
  '\x02\0', '\x01\x02\x04\0\x01\0\0\0\x32\0\0\0', '\x02\x02\x04\0\x01\0\0\0\x2a\0\0\0', '\0\0\0\0', 'jpeg');
const packet = (inner) => cat(
  '<x:xmpmeta xmlns:x="adobe:ns:meta/"><rdf:RDF xmlns:rdf="http://www.w3.org/1999/02/22-rdf-syntax-ns#">',
  `<rdf:Description xmlns:xmp="http://ns.adobe.com/xap/1.0/">${inner}</rdf:Description></rdf:RDF></x:xmpmeta>`);

test('what cannot come over is told, and the rest comes', async () => {
  const none = {exif: null, xmp: null, extendedXmp: []};
  const good = packet('<xmp:Rating>3</xmp:Rating>');
  const cases = [
    [{exif: cat(orientation6, Buffer.alloc(65528 - orientation6.length))}, /EXIF.* 65528 bytes.* 65527/],
    [{exif: orientation6.subarray(0, 17), xmp: good}, /EXIF.*damaged/],
    [{exif: Buffer.from('nothing'), xmp: good}, /EXIF.*damaged/],
    [{exif: orientation6, xmp: good.subarray(0, -12)}, /XMP.*damaged/],
    [{exif: orientation6, xmp: packet(`<xmp:Label>${'x'.repeat(65504)}</xmp:Label>`)}, /XMP.* a JPEG file holds 65504/],
    [{exif: orientation6, xmp: packet(`<xmp:Thumbnails>${'x'.repeat(65504)}</xmp:Thumbnails>`)}, null],
    [{exif: cat(orientation6, Buffer.alloc(65527 - orientation6.length))}, null],
    [{xmp: good, extendedXmp: [Buffer.alloc(39)]}, /long part of the XMP.*damaged/],
  ];
  for (const [metadata, expected] of cases) {
    const {jpeg, left} = withMetadata(readFileSync(plain), {...none, ...metadata}, result);
    const found = await readPictureFile(jpeg);
    assert.strictEqual(left.length, expected ? 1 : 0, `${left}`);
    if (expected) assert.match(left[0], expected);
    const [exif, xmp] = ['EXIF', '(?<!long part of the )XMP'].map((name) => new RegExp(name).test(left.join()));
    assert.strictEqual(found.exif === null, exif || !metadata.exif);
    assert.strictEqual(found.xmp === null, xmp || !metadata.xmp);
    assert.strictEqual(found.orientation, 1);
  }
  const overlap = await readPictureFile(withMetadata(readFileSync(plain), {...none, exif: overlapping}, result).jpeg);
  const kept = cat(overlapping.subarray(0, 22), u32(0), overlapping.subarray(26, 58));
  assert.deepStrictEqual(Buffer.from(overlap.exif), cat(kept, Buffer.alloc(overlapping.length - 58)));
});

test('a thumbnail that lies across segments of long XMP is blanked in place', async () => {
  const filler = 'long '.repeat(20000);
  const whole = packet(`<xmp:Thumbnails>${'t'.repeat(50000)}</xmp:Thumbnails><xmp:Label>${filler}</xmp:Label>`);
  const digest = '0123456789ABCDEF0123456789ABCDEF';
  const cut = 40000;
  const parts = [0, 1, 2, 3].map((i) => whole.subarray(i * cut, (i + 1) * cut)).map((part, i) => (
    cat(digest, u32(whole.length, i * cut), part)));
  const main = packet(`<n:HasExtendedXMP xmlns:n="http://ns.adobe.com/xmp/note/">${digest}</n:HasExtendedXMP>`);
  const original = {exif: null, xmp: main, extendedXmp: [parts[2], parts[0], parts[3], parts[1]]};
  const {jpeg, left} = withMetadata(readFileSync(plain), original, result);
  assert.deepStrictEqual(left, []);
  const {extendedXmp} = await readPictureFile(jpeg);
  const text = cat(...extendedXmp.map((part) => part.subarray(40))).toString();
  const blanked = whole.toString().replace(/<xmp:Thumbnails.*Thumbnails>/, (match) => ' '.repeat(match.length));
  assert.strictEqual(text, blanked);
  assert.strictEqual(tagsOf(put('long.jpg', jpeg))['XMP-xmp:Label'], filler);
});

test('damaged files never fail, and take no time', async () => {
  let state = 1;
  const random = (below) => {
    state = (Math.imul(state, 1103515245) + 12345) >>> 0;
    return Math.floor(state / 2 ** 32 * below);
  };
  const whole = Object.values(files).map(([bytes]) => bytes);
  const samples = [...whole, cat('\xff\xd8', segment(0xe1, 'Exif\0\0', overlapping),
    segment(0xe1, 'http://ns.adobe.com/xap/1.0/\0', packet('<xmp:Thumbnails>t</xmp:Thumbnails>')), frame())];
  let slowest = 0;
  const tryOne = async (bytes) => {
    const start = performance.now();
    const found = await readPictureFile(new Uint8Array(bytes));
    withMetadata(Buffer.from('\xff\xd8\xff\xd9', 'latin1'), found, result);
    slowest = Math.max(slowest, performance.now() - start);
  };
  for (const bytes of samples) {
    for (let length = 0; length < bytes.length; ++length) await tryOne(bytes.subarray(0, length));
    for (let i = 0; i < 300; ++i) {
      const flipped = Buffer.from(bytes);
      for (let n = random(4); n >= 0; --n) flipped[random(bytes.length)] = [0, 255, random(256)][random(3)];
      await tryOne(flipped);
    }
  }
  // Far above what one takes (a few ms), far below what a loop over all of a bad count would.
  assert.ok(slowest < 500, `${slowest} ms`);
});
