// build.mjs ENGINE.wasm PRESETS PAGE.html: puts the page's parts into one file: the engine packed, the worker's script
// as a text in the page's, and a policy that lets these scripts run and nothing else.
import {execFileSync} from 'node:child_process';
import {createHash} from 'node:crypto';
import {mkdtempSync, readFileSync, readdirSync, rmSync, writeFileSync} from 'node:fs';
import {tmpdir} from 'node:os';
import {join} from 'node:path';
import {gzipSync} from 'node:zlib';

import {readSettings} from './source/settings_file.js';

const [engine, presetFolder, page] = process.argv.slice(2);
const source = new URL('source/', import.meta.url).pathname;
const folder = mkdtempSync(join(tmpdir(), 'orbel-page-'));

/** One classic script of a module and all that it imports. */
function bundled(entry, values) {
  const result = join(folder, 'bundled.js');
  execFileSync('esbuild', [join(source, entry), '--bundle', '--minify', '--format=iife', '--target=es2022',
    '--charset=utf8', '--log-level=warning', `--outfile=${result}`,
    ...Object.entries(values).map(([name, value]) => `--define:${name}=${JSON.stringify(value)}`)], {stdio: 'inherit'});
  return readFileSync(result, 'utf8').trim();
}

function presets() {
  return readdirSync(presetFolder).filter((file) => file.endsWith('.toml')).sort().map((file) => {
    const {settings, description} = readSettings(readFileSync(join(presetFolder, file), 'utf8'), file);
    return {name: file.replace('.toml', '').replaceAll('-', ' '), description, settings};
  });
}

const hash = (text) => `'sha256-${createHash('sha256').update(text).digest('base64')}'`;

try {
  const worker = bundled('worker.js', {});
  // A closing tag in a text would end the script.
  const script = bundled('main.js', {ORBEL_PRESETS: presets(), ORBEL_WORKER: worker}).replaceAll('</', '<\\/');
  const style = readFileSync(join(source, 'page.css'), 'utf8');
  const policy = ["default-src 'none'", `script-src ${hash(script)} 'wasm-unsafe-eval'`, 'worker-src blob:',
    `style-src ${hash(style)}`, 'img-src blob: data:', "connect-src 'none'", "form-action 'none'", "base-uri 'none'"];
  const parts = {
    policy: policy.join('; '), style, script, engine: gzipSync(readFileSync(engine), {level: 9}).toString('base64'),
  };
  const html = readFileSync(join(source, 'page.html'), 'utf8').replace(/{{(\w+)}}/g, (_, name) => parts[name]);
  writeFileSync(page, html);
} finally {
  rmSync(folder, {recursive: true});
}
