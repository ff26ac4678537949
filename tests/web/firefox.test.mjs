// The page in Firefox: that it opens, draws and saves. ORBEL_PAGE: orbel.html; ORBEL: the program.
import assert from 'node:assert/strict';
import {execFileSync} from 'node:child_process';
import {existsSync, readFileSync} from 'node:fs';
import {createServer} from 'node:net';
import {join} from 'node:path';
import {test} from 'node:test';

import {launch, waitFor} from './marionette.mjs';

const coffee = new URL('../../examples/coffee.png', import.meta.url).pathname; // 600 x 400 pixels, opaque

// Run in the page. Pixels come as a text.
const decoded = `return createImageBitmap(new Blob([Uint8Array.fromBase64(arguments[0])])).then((bitmap) => {
    const context = new OffscreenCanvas(bitmap.width, bitmap.height).getContext('2d');
    context.drawImage(bitmap, 0, 0);
    return new Uint8Array(context.getImageData(0, 0, bitmap.width, bitmap.height).data).toBase64();
  });`;
const shown = `const canvas = document.querySelector('#picture');
  const [x, y] = [Math.round((canvas.width - 600) / 2), Math.round((canvas.height - 400) / 2)];
  return new Uint8Array(canvas.getContext('2d').getImageData(x, y, 600, 400).data).toBase64();`;
const isTrue = (condition) => `const bad = document.querySelector('#status.bad');
  if (bad) throw new Error(bad.textContent);
  const {ready, asked, drawn} = document.body.dataset;
  return ${condition};`;
const settled = isTrue('asked > 0 && asked === drawn');

test('shows and saves in Firefox what orbel makes, and wants nothing from outside', {timeout: 30000}, async (t) => {
  const requests = [];
  const proxy = createServer((socket) => socket.on('error', () => {})
    .on('data', (text) => { requests.push(`${text}`); socket.destroy(); }));
  await new Promise((resolve) => { proxy.listen(0, '127.0.0.1', resolve); });
  t.after(() => proxy.close());
  const {send, folder, close} = await launch(proxy.address().port);
  t.after(close);

  const run = async (script, ...args) => (await send('WebDriver:ExecuteScript', {script, args})).value;
  const find = async (value) => Object.values((await send('WebDriver:FindElement', {using: 'xpath', value})).value)[0];
  const click = async (path) => send('WebDriver:ElementClick', {id: await find(path)});
  const pixelsOf = (file) => run(decoded, readFileSync(file, 'base64'));

  await send('WebDriver:Navigate', {url: `file://${process.env.ORBEL_PAGE}`});
  await waitFor('the page', () => run(isTrue('ready')));
  await send('WebDriver:ElementSendKeys', {id: await find('//*[@id="file"]'), text: coffee});
  await waitFor('the picture', () => run(settled));
  const flat = await pixelsOf(coffee);
  assert.ok(await run(shown) === flat, 'as it was');
  await click('//*[@id="presets"]/button[.="clarity"]');
  await waitFor('the preset', () => run(settled));
  const theirs = join(folder, 'theirs.png');
  execFileSync(process.env.ORBEL, ['apply', '-f', coffee, '-o', theirs, '-p', 'clarity']);
  const clear = await pixelsOf(theirs);
  assert.ok(clear !== flat && await run(shown) === clear, 'shown');

  for (const id of ['save', 'save-picture']) await click(`//*[@id="${id}"]`);
  const saved = join(folder, 'coffee_orbel.png');
  const said = `return document.querySelector('#save-result').textContent;`;
  assert.match(await waitFor('the saved picture', () => run(said)), /^Saved/);
  await waitFor('its file', () => existsSync(saved) && readFileSync(saved).includes('IEND'));
  assert.ok(await pixelsOf(saved) === clear, 'saved');
  assert.deepEqual(requests, []);
});
