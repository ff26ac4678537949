// browser.mjs: Debian's Chromium with the page in it, without a window, and what tests do with it.
import {chromium} from 'playwright-core';

export const page = process.env.ORBEL_PAGE;

export const quiet = ['--no-sandbox', '--disable-gpu', '--disable-quic', '--no-first-run',
  '--disable-background-networking', '--disable-component-update', '--disable-sync', '--force-color-profile=srgb'];

export function launch(options = {}) {
  return chromium.launch({executablePath: '/usr/bin/chromium', args: quiet, ...options});
}

/** The page, opened from its file, with a list of every request that isn't its own. */
export async function opened(browser, options = {}, address = `file://${page}`) {
  const context = await browser.newContext({viewport: {width: 1440, height: 900}, acceptDownloads: true, ...options});
  const tab = await context.newPage();
  const trouble = [];
  tab.on('request', (request) => {
    if (!/^(file|blob|data):/.test(request.url())) trouble.push(`request: ${request.url()}`);
  });
  tab.on('pageerror', (error) => trouble.push(`error: ${error.message}`));
  tab.on('console', (message) => {
    if (message.type() === 'error') trouble.push(`console: ${message.text()}`);
  });
  await tab.addInitScript(() => {
    globalThis.textOf = ({width, height, data}) => {
      let text = '';
      for (let i = 0; i < data.length; i += 4096) text += String.fromCharCode(...data.subarray(i, i + 4096));
      return {width, height, data: btoa(text)};
    };
  });
  await tab.goto(address);
  await tab.waitForFunction(() => document.body.dataset.ready);
  return {tab, trouble, context};
}

/** Waits until what was asked for last is on the screen. */
export async function settled(tab) {
  await tab.waitForFunction(() => document.body.dataset.asked > 0 && document.body.dataset.asked === document.body.dataset.drawn);
}

export async function openFile(tab, file) {
  await tab.evaluate(() => { delete document.body.dataset.drawn; });
  await tab.setInputFiles('#file', file);
  await settled(tab);
}
