// page.mjs: the pictures of the README and of page.md that show the page in the browser. Wants a built page and the
// packages of its tests (npm ci in tests/web):
//
//   ORBEL_PAGE=$PWD/build/web/orbel.html node docs/pictures/page.mjs
import {execFileSync} from 'node:child_process';
import {rmSync} from 'node:fs';

import {launch, openFile, opened, settled} from '../../tests/web/browser.mjs';

const root = new URL('../../', import.meta.url).pathname;
const browser = await launch();

async function show(name, options, prepare) {
  const {tab, context} = await opened(browser, options);
  await openFile(tab, `${root}examples/raccoon.png`);
  await prepare(tab);
  await settled(tab);
  await tab.waitForFunction(() => document.querySelectorAll('#presets canvas[width="3"]').length === 0);
  await tab.mouse.move(2, 2);
  await tab.waitForTimeout(300);
  const shot = `${root}docs/pictures/${name}.png`;
  await tab.screenshot({path: shot});
  execFileSync('vips', ['copy', shot, `${root}docs/pictures/${name}.jpg[Q=86]`]);
  rmSync(shot);
  await context.close();
}

const choose = (tab, preset) => tab.click(`#presets button:has-text("${preset}")`);

await show('page', {viewport: {width: 1200, height: 780}}, async (tab) => {
  await choose(tab, 'landscape');
  await tab.click('#compare');
});
await show('page-band', {viewport: {width: 1200, height: 780}}, async (tab) => {
  await tab.click('button[aria-label^="Show band 3"]');
});
await show('page-phone', {viewport: {width: 390, height: 844}, isMobile: true, hasTouch: true}, async (tab) => {
  await choose(tab, 'clarity');
});
await browser.close();
