// page.mjs PICTURE: how quick the page is in headless Chromium, and how much memory its renderers take at most.
//
//   ORBEL_PAGE=build/web/orbel.html node bench/page.mjs PICTURE.jpg
//
// Wants the tests' packages: npm ci in tests/web.
import {execFileSync} from 'node:child_process';
import {readFileSync} from 'node:fs';

import {launch, openFile, opened, settled} from '../tests/web/browser.mjs';

const picture = process.argv[2];
const moves = 60;
const seconds = (from) => ((performance.now() - from) / 1000).toFixed(2);
const median = (numbers) => numbers.sort((a, b) => a - b)[numbers.length >> 1];

function mostMemory() {
  const renderers = execFileSync('pgrep', ['-f', 'chromium.*--type=renderer']).toString().trim().split('\n');
  const peaks = renderers.map((pid) => {
    try {
      return Number(/VmHWM:\s+(\d+)/.exec(readFileSync(`/proc/${pid}/status`, 'utf8'))?.[1] ?? 0) / 1024;
    } catch {
      return 0;
    }
  });
  return Math.round(Math.max(...peaks));
}

const browser = await launch();
const {tab, trouble} = await opened(browser);
let from = performance.now();
await openFile(tab, picture);
console.log(`first view ${seconds(from)} s`);
await tab.waitForTimeout(5000); // the thumbnails
console.log(`renderer's peak after opening ${mostMemory()} MB`);

/** From a fader's move to the frame after its pixels were painted. */
const timeOf = (fader, value) => tab.evaluate(([i, v]) => new Promise((resolve) => {
  const range = document.querySelectorAll('.fader input[type=range]')[i];
  const start = performance.now();
  range.value = v;
  range.dispatchEvent(new Event('input'));
  const wanted = document.body.dataset.asked;
  const look = () => (document.body.dataset.drawn === wanted ?
    requestAnimationFrame(() => setTimeout(() => resolve(performance.now() - start))) : setTimeout(look));
  look();
}), [fader, value]);

for (const [name, prepare] of [
  ['fitted', async () => {}],
  ['1:1', () => tab.click('#one-to-one')],
  ['fitted, pyramid', async () => {
    await tab.click('#fit');
    await tab.evaluate(() => { document.querySelector('#details').open = true; });
    await tab.selectOption('#details select >> nth=0', 'pyramid');
  }],
]) {
  await prepare();
  await settled(tab);
  const times = [];
  for (let i = 0; i < moves; ++i) times.push(await timeOf(1 + i % 4, 60 + i * 3));
  times.sort((a, b) => a - b);
  console.log(`${name}: move to pixels, median ${median(times).toFixed(1)} ms, most ${times[moves - 1].toFixed(1)} ms`);
}
await tab.click('#save');
await tab.selectOption('#format', 'image/jpeg');
from = performance.now();
const [file] = await Promise.all([tab.waitForEvent('download', {timeout: 60000}), tab.click('#save-picture')]);
await file.path();
console.log(`JPEG written in ${seconds(from)} s`);
console.log(`renderer's peak ${mostMemory()} MB`);
if (trouble.length > 0) console.log(trouble);
await browser.close();
