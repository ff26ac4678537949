// The page in Chromium, as people use it. ORBEL_PAGE: orbel.html; ORBEL: the program, whose results the page's must be.
import assert from 'node:assert/strict';
import {execFileSync} from 'node:child_process';
import {mkdtempSync, readFileSync, rmSync, writeFileSync} from 'node:fs';
import {createServer} from 'node:http';
import {createRequire} from 'node:module';
import {tmpdir} from 'node:os';
import {join} from 'node:path';
import {after, before, test} from 'node:test';

import {readPictureFile} from '../../fronts/web/source/picture_file.js';
import {launch, openFile, opened, page, settled} from './browser.mjs';

const orbel = process.env.ORBEL;
const examples = new URL('../../examples/', import.meta.url).pathname;
const coffee = join(examples, 'coffee.png'); // 8 bits, opaque, without a profile
const folder = mkdtempSync(join(tmpdir(), 'orbel-page-test-'));
const inFolder = (name) => join(folder, name);

let browser;
before(async () => { browser = await launch(); });
after(async () => {
  await browser.close();
  rmSync(folder, {recursive: true});
});

/** A test with the page open, that ends with no request having left it, and no error. */
function onPage(name, options, body) {
  test(name, async () => {
    const {tab, trouble, context} = await opened(browser, options);
    await body(tab, context);
    assert.deepEqual(trouble, []);
    await context.close();
  });
}

const faders = '.fader input[type=range]';
const gains = (tab) => tab.$$eval(faders, (all) => all.map(({value}) => Number(value)));
const statusOf = (tab) => tab.textContent('#status');

async function saved(tab, button) {
  const [file] = await Promise.all([tab.waitForEvent('download', {timeout: 60000}), tab.click(button)]);
  const to = inFolder(file.suggestedFilename());
  await file.saveAs(to);
  return to;
}

async function savedPicture(tab, type) {
  await tab.click('#save');
  await tab.selectOption('#format', type);
  const file = await saved(tab, '#save-picture');
  await tab.click('#save-close');
  return file;
}

/** Pixels as they come out of the browser, which hands large arrays over slowly. */
const taken = async (text) => {
  const {width, height, data} = await text;
  return {width, height, data: Buffer.from(data, 'base64')};
};
const same = (a, b) => a.width === b.width && a.height === b.height && a.data.equals(b.data);

/** A picture's pixels, or a part's, decoded by the browser. */
const pixelsOf = (tab, file, part = null) => taken(tab.evaluate(async ([data, cut]) => {
  const blob = new Blob([Uint8Array.from(atob(data), (c) => c.charCodeAt(0))]);
  const bitmap = await createImageBitmap(blob);
  const {x, y, width, height} = cut ?? {x: 0, y: 0, width: bitmap.width, height: bitmap.height};
  const context = new OffscreenCanvas(width, height).getContext('2d', {willReadFrequently: true});
  context.drawImage(bitmap, -x, -y);
  return globalThis.textOf(context.getImageData(0, 0, width, height));
}, [readFileSync(file).toString('base64'), part]));

const shown = (tab) => taken(tab.evaluate(() => {
  const canvas = document.querySelector('#picture');
  return globalThis.textOf(canvas.getContext('2d').getImageData(0, 0, canvas.width, canvas.height));
}));

function apply(input, output, ...options) {
  execFileSync(orbel, ['apply', '-f', input, '-o', inFolder(output), ...options]);
  return inFolder(output);
}

/** A picture that the browser makes itself, dropped on the page. */
const drop = (tab, name, type, width, height, colorSpace = 'srgb') => tab.evaluate(async ([n, t, w, h, c]) => {
  delete document.body.dataset.drawn;
  const canvas = new OffscreenCanvas(w, h);
  const context = canvas.getContext('2d', {colorSpace: c});
  for (let i = 0; i < 400; ++i) {
    context.fillStyle = `hsl(${i * 37} 60% ${20 + i * 7 % 60}%)`;
    context.fillRect((i * 733) % w, (i * 389) % h, w / 9, h / 7);
  }
  const data = new DataTransfer();
  data.items.add(new File([await canvas.convertToBlob({type: t})], n));
  document.querySelector('#stage').dispatchEvent(new DragEvent('drop', {dataTransfer: data, bubbles: true, cancelable: true}));
}, [name, type, width, height, colorSpace]);

onPage('saves what orbel makes of an opaque picture, sample for sample', {}, async (tab) => {
  await openFile(tab, coffee);
  for (const preset of ['clarity', 'soft skin', 'detail map', 'neutral']) {
    await tab.click(`#presets button:has-text("${preset}")`);
    const ours = await pixelsOf(tab, await savedPicture(tab, 'image/png'));
    assert.ok(same(ours, await pixelsOf(tab, apply(coffee, 'theirs.png', '-p', preset))), preset);
  }
  // Other gains for the same bands, and settings that orbel reads from the page's file.
  await tab.fill('.fader input[type=number] >> nth=3', '-40');
  await tab.keyboard.press('Enter');
  await tab.click('#save');
  const settings = await saved(tab, '#save-toml');
  await tab.click('#save-close');
  assert.ok(same(await pixelsOf(tab, await savedPicture(tab, 'image/png')),
    await pixelsOf(tab, apply(coffee, 'theirs.png', '-p', settings))));
});

onPage('shows the part of the full result, pixel by pixel', {viewport: {width: 900, height: 600}}, async (tab) => {
  await openFile(tab, coffee);
  await tab.click('#presets button:has-text("landscape")');
  await tab.click('#one-to-one');
  await tab.focus('#picture');
  await tab.keyboard.press('ArrowRight');
  await tab.keyboard.press('ArrowDown');
  await settled(tab);
  const {width, height, data: pixels} = await shown(tab);
  const x = Math.round((600 - width) / 2) + 64; // coffee.png has 600 x 400 pixels
  assert.ok(width < 600 - 64, 'the window shows a part');
  const part = {x: Math.min(x, 600 - width), y: 0, width, height: 400};
  const theirs = await pixelsOf(tab, apply(coffee, 'theirs.png', '-p', 'landscape'), part);
  const top = Math.round((height - 400) / 2) * width * 4;
  assert.ok(pixels.subarray(top, top + 400 * width * 4).equals(theirs.data));
});

onPage('works by mouse and by keys', {}, async (tab) => {
  await openFile(tab, coffee);
  const flat = await shown(tab);
  const box = await tab.locator(faders).nth(2).boundingBox();
  await tab.mouse.move(box.x + box.width / 2, box.y + box.height * 0.64);
  await tab.mouse.down();
  await tab.mouse.move(box.x + box.width / 2, box.y + box.height * 0.2, {steps: 5});
  await tab.mouse.up();
  await settled(tab);
  const [, , dragged] = await gains(tab);
  assert.ok(dragged > 200 && dragged < 280, `dragged to ${dragged}`);
  assert.ok(!same(await shown(tab), flat));

  await tab.locator(faders).nth(1).focus();
  for (const key of ['ArrowUp', 'PageUp', 'ArrowUp', 'ArrowDown']) await tab.keyboard.press(key);
  assert.deepEqual((await gains(tab)).slice(0, 3), [100, 126, dragged]);
  assert.equal(await tab.locator(faders).nth(1).getAttribute('aria-valuetext'), '126 percent');
  for (let i = 0; i < 2; ++i) await tab.keyboard.press('Control+z'); // the keys' steps are one
  assert.deepEqual(await gains(tab), [100, 100, 100, 100, 100, 100]);
  assert.ok(await tab.isDisabled('#undo'));
  await settled(tab);
  assert.ok(same(await shown(tab), flat));
  await tab.keyboard.press('Control+Shift+z');
  assert.deepEqual((await gains(tab))[2], dragged);
  await tab.locator(faders).nth(2).dblclick();
  assert.deepEqual(await gains(tab), [100, 100, 100, 100, 100, 100]);
  await tab.keyboard.press('Control+z'); // what its first click set was no step
  assert.deepEqual((await gains(tab))[2], dragged);
  await tab.keyboard.press('Control+Shift+z');

  // Before, held; a band alone, again for all; the divider.
  await tab.click('#presets button:has-text("crisp")');
  await settled(tab);
  const crisp = await shown(tab);
  await tab.focus('#picture');
  await tab.keyboard.down('b');
  await tab.waitForTimeout(100);
  assert.ok(same(await shown(tab), flat));
  await tab.keyboard.up('b');
  await tab.waitForTimeout(100);
  assert.ok(same(await shown(tab), crisp));
  await tab.click('text=Alone >> nth=1');
  await settled(tab);
  const {data: band} = await shown(tab);
  assert.match(await tab.textContent('#alone'), /times as strong/);
  const middle = band.length / 8 & ~3; // of the canvas
  assert.ok(band.subarray(middle, middle + 4000).every((v, i, all) => i % 4 === 3 || v === all[i - i % 4]), 'it is grey');
  await tab.click('text=Alone >> nth=1');
  await tab.keyboard.press('c');
  await tab.keyboard.press('x');
  await settled(tab);
  assert.match(await tab.textContent('#clipped'), /white, in red/);
});

onPage('zooms by wheel and buttons, and stays sharp', {}, async (tab) => {
  await drop(tab, 'large.jpg', 'image/jpeg', 6000, 4000); // 24 megapixels
  await settled(tab);
  const zoom = async () => Number.parseInt(await tab.textContent('#zoom'), 10);
  const fitted = await zoom();
  assert.ok(fitted < 25);
  await tab.mouse.move(300, 300);
  await tab.mouse.wheel(0, -600);
  await settled(tab);
  assert.ok(await zoom() > fitted * 3);
  await tab.click('#one-to-one');
  await settled(tab);
  const box = await tab.locator('#picture').boundingBox();
  const before = await shown(tab);
  await tab.mouse.move(box.x + 500, box.y + 400);
  await tab.mouse.down();
  await tab.mouse.move(box.x + 450, box.y + 420);
  await tab.mouse.up();
  await settled(tab);
  const {width, data: moved} = await shown(tab);
  const at = (x, y) => (y * width + x) * 4;
  assert.ok(moved.subarray(at(100, 120), at(110, 120)).equals(before.data.subarray(at(150, 100), at(160, 100))));
  await tab.keyboard.press('0');
  assert.equal(await zoom(), fitted);
  const file = await savedPicture(tab, 'image/jpeg');
  const {width: w, height: h} = await readPictureFile(readFileSync(file));
  assert.deepEqual([w, h], [6000, 4000]);
});

test('pinches, and turns with the phone', async () => {
  const {tab, trouble, context} = await opened(browser, {viewport: {width: 390, height: 844}, hasTouch: true, isMobile: true});
  await openFile(tab, coffee);
  const zoom = async () => Number.parseInt(await tab.textContent('#zoom'), 10);
  const fitted = await zoom();
  const touches = await context.newCDPSession(tab);
  const touch = (type, ...points) => touches.send('Input.dispatchTouchEvent',
    {type, touchPoints: points.map(([x, y], id) => ({x, y, id}))});
  await touch('touchStart', [150, 250], [240, 250]);
  for (const apart of [10, 20, 30, 40, 45]) await touch('touchMove', [150 - apart, 250], [240 + apart, 250]);
  await touch('touchEnd');
  await settled(tab);
  assert.ok(Math.abs(await zoom() / fitted - 2) < 0.1, `${fitted} % became ${await zoom()} %`);
  await tab.click('#fit');
  await tab.setViewportSize({width: 844, height: 390});
  await settled(tab);
  assert.deepEqual(await cutOff(tab), []);
  assert.deepEqual(trouble, []);
  await context.close();
});

test('asks a web server for itself alone, and then for nothing', async (t) => {
  const asked = [];
  const server = createServer((request, response) => {
    asked.push(request.url);
    response.setHeader('Content-Type', 'text/html').end(readFileSync(page));
  });
  t.after(() => server.close());
  await new Promise((resolve) => server.listen(0, '127.0.0.1', resolve));
  const {tab, context} = await opened(browser, {}, `http://127.0.0.1:${server.address().port}/orbel.html`);
  await context.setOffline(true);
  await openFile(tab, coffee);
  await tab.click('#presets button:has-text("clarity")');
  await settled(tab);
  await context.close();
  assert.deepEqual(asked, ['/orbel.html']);
});

onPage('keeps orientation, metadata and Display P3', {}, async (tab) => {
  const upright = apply(coffee, 'turned.jpg', '--gain', '100');
  execFileSync('exiftool', ['-q', '-overwrite_original', '-Orientation#=6', '-Artist=A. Nyone', '-XMP-dc:Title=Cup', upright]);
  await openFile(tab, upright);
  const file = await savedPicture(tab, 'image/jpeg');
  assert.equal(file, inFolder('turned_orbel.jpg'));
  const tags = JSON.parse(execFileSync('exiftool', ['-json', '-n', file]))[0];
  assert.deepEqual([tags.Orientation, tags.ImageWidth, tags.ImageHeight, tags.Artist, tags.Title],
    [1, 400, 600, 'A. Nyone', 'Cup']);
  await drop(tab, 'wide.png', 'image/png', 300, 200, 'display-p3');
  await settled(tab);
  const flat = await savedPicture(tab, 'image/png');
  assert.equal((await readPictureFile(readFileSync(flat))).colours, 'display-p3');
});

onPage('holds together while another picture opens, and after its canvas was lost', {}, async (tab) => {
  await drop(tab, 'first.jpg', 'image/jpeg', 3000, 2000);
  await settled(tab);
  await tab.click('#one-to-one');
  await settled(tab);
  const thumbnail = await tab.$('#presets canvas'); // takes another one's place while the button is down
  await thumbnail.hover();
  await tab.mouse.down();
  await drop(tab, 'second.png', 'image/png', 400, 300);
  await tab.locator(faders).nth(3).press('PageUp'); // drawn with a part of the first, it would fail
  await tab.waitForFunction(() => document.querySelector('#name').textContent === 'second.png, 400 × 300');
  await settled(tab);
  assert.doesNotMatch(await tab.getAttribute('#status', 'class') ?? '', /bad/);
  await tab.waitForFunction((gone) => !gone.isConnected, thumbnail);
  await tab.mouse.up();
  assert.equal(await tab.locator('#presets button').first().getAttribute('aria-pressed'), 'true');

  await tab.evaluate(async () => { // half transparent throughout
    const canvas = new OffscreenCanvas(64, 64);
    const context = canvas.getContext('2d');
    context.fillStyle = '#80402080';
    context.fillRect(0, 0, 64, 64);
    const data = new DataTransfer();
    data.items.add(new File([await canvas.convertToBlob()], 'thin.png'));
    document.querySelector('#stage').dispatchEvent(new DragEvent('drop', {dataTransfer: data, bubbles: true, cancelable: true}));
  });
  await tab.waitForFunction(() => document.querySelector('#name').textContent.startsWith('thin.png'));
  await settled(tab);
  await tab.keyboard.press('c'); // nothing shines through the one or the other
  await tab.waitForTimeout(100);
  const {width, height, data} = await shown(tab);
  const middle = ((height >> 1) * width + (width >> 1)) * 4;
  for (const x of [-20, 20]) assert.ok(Math.abs(data[middle + 4 * x + 3] - 128) <= 1, `alpha ${data[middle + 4 * x + 3]}`);
  const compared = await shown(tab);
  await tab.evaluate(() => document.querySelector('#picture').dispatchEvent(new Event('contextrestored')));
  await settled(tab);
  assert.ok(same(await shown(tab), compared));
});

onPage('says what it can’t open, and keeps what it has', {}, async (tab) => {
  await openFile(tab, coffee);
  const flat = await shown(tab);
  const files = {
    'text.jpg': ['no picture', /text\.jpg: this browser reads no picture in it\./],
    'empty.png': ['', /empty\.png: this browser reads no picture/],
    'bad.toml': ['gain = 100\nradios = 3\n', /bad\.toml:2: there is no setting 'radios'/],
    'far.toml': ['gain = 5000\n', /far\.toml:1: .*-1000 to 1000/],
  };
  for (const [name, [text, expected]] of Object.entries(files)) {
    writeFileSync(inFolder(name), text);
    await tab.setInputFiles('#file', inFolder(name));
    await tab.waitForFunction((n) => document.querySelector('#status').textContent.startsWith(n), name);
    assert.match(await statusOf(tab), expected);
    assert.match(await tab.getAttribute('#status', 'class'), /bad/);
  }
  assert.ok(same(await shown(tab), flat));
  assert.deepEqual(await gains(tab), [100, 100, 100, 100, 100, 100]);

  writeFileSync(inFolder('good.toml'), 'gain = [100, 120, 150, 100, 90]\nform = "wavelets"\n');
  await tab.setInputFiles('#file', inFolder('good.toml'));
  await settled(tab);
  assert.deepEqual(await gains(tab), [100, 120, 150, 100, 90, 100]);
  await tab.reload();
  await tab.waitForFunction(() => document.body.dataset.ready);
  assert.deepEqual(await gains(tab), [100, 120, 150, 100, 90, 100], 'settings outlive a reload');
  await openFile(tab, coffee);
});

const axe = readFileSync(createRequire(import.meta.url).resolve('axe-core/axe.min.js'), 'utf8');

/** Controls that the window, or a box that can't be scrolled to them, cuts off at a side. */
const cutOff = (tab) => tab.evaluate(() => [...document.querySelectorAll('button, input, select, textarea, summary, output')]
  .filter((element) => element.checkVisibility() && element.id !== 'file')
  .filter((element) => {
    const {left, right, width, height} = element.getBoundingClientRect();
    return width < 8 || height < 8 || left < 0 || right > innerWidth || element.scrollWidth > element.clientWidth + 1;
  }).map((element) => element.id || element.textContent || element.ariaLabel));

for (const [width, height] of [[1440, 900], [1024, 768], [390, 844], [720, 450]]) { // the last one: 1440 at 200 %
  onPage(`is within reach of everybody at ${width} pixels`, {viewport: {width, height}}, async (tab) => {
    await openFile(tab, coffee);
    await tab.$$eval('details', (all) => all.forEach((element) => { element.open = true; }));
    for (const show of [async () => {}, () => tab.click('#compare'), () => tab.click('#save')]) {
      await show();
      assert.deepEqual(await cutOff(tab), []);
      await tab.evaluate(axe);
      const {violations} = await tab.evaluate(() => globalThis.axe.run());
      assert.deepEqual(violations.map(({id, nodes}) => [id, ...nodes.map(({html}) => html)]), []);
    }
  });
}
