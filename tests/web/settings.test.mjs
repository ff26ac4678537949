// settings.test.mjs: the page's settings against the program's, which is at the path in the environment variable ORBEL.

import assert from 'node:assert';
import {spawnSync} from 'node:child_process';
import {mkdirSync, mkdtempSync, readFileSync, readdirSync, rmSync, writeFileSync} from 'node:fs';
import {tmpdir} from 'node:os';
import {join, resolve} from 'node:path';
import {after, test} from 'node:test';

import {commandLine} from '../../fronts/web/source/command_line.js';
import {photoshopScript} from '../../fronts/web/source/photoshop_script.js';
import {
  SettingsError, copyOf, defaultSettings, members, requireSettings, sameSettings,
} from '../../fronts/web/source/settings.js';
import {readSettings, settingsText} from '../../fronts/web/source/settings_file.js';

const program = resolve(process.env.ORBEL ?? '');
const folder = mkdtempSync(join(tmpdir(), 'orbel-settings-'));
const own = join(folder, 'orbel/presets');
mkdirSync(own, {recursive: true});
after(() => rmSync(folder, {recursive: true}));

function run(file, args) {
  const env = {...process.env, XDG_CONFIG_HOME: folder, ORBEL: program};
  return spawnSync(file, args, {cwd: folder, encoding: 'utf8', env});
}

function runWell(file, args) {
  const {status, stdout, stderr} = run(file, args);
  assert.strictEqual(status, 0, stderr);
  return stdout;
}

const changed = (changes) => ({...defaultSettings(), ...changes});

// Numbers on both sides of where exponents begin, beside random ones; a fixed seed.
let state = 20240517;
const random = () => (state = (Math.imul(state, 1664525) + 1013904223) >>> 0) / 2 ** 32;
const oneOf = (list) => list[Math.floor(random() * list.length)];
function randomValue({kind, least, most}) {
  if (kind === 'flag') return random() < 0.5;
  if (kind === 'form') return oneOf(['pyramid', 'wavelets']);
  if (kind === 'whole') return oneOf([least, most, Math.floor(random() * most)]);
  const some = [least, most, 0.1, 1e-7, 5e-324, 9.9999e-5, 1e-4, 100, -0, 12, random() * most, 10 ** (-9 * random())];
  return Math.min(most, Math.max(least, oneOf(some)));
}
function randomSettings() {
  const settings = defaultSettings();
  for (const [name, member] of Object.entries(members)) {
    if (random() < 0.4) continue;
    const one = randomValue(member);
    settings[name] = !member.bands ? one : [0, 1, 2, 3, 4].map((i) => i && random() < 0.5 ? randomValue(member) : one);
  }
  return settings;
}
const table = [
  {}, {gain: [-0, 0, -5, 1e-7, 0.1]}, {gain: [-1, -1, -1, -1, -1], residual: -1000}, {overlay: 32767, half: true},
  {edges: [true, true, true, true, true], luminance: false}, {referenceEdge: 1024, radius: [0, 1e-5, 3, 1.5, 32767]},
  {form: 'wavelets', limit: true, mix: 1e-300},
];
const all = [...table.map(changed), ...Array.from({length: 100}, randomSettings)];

test('text and command line are those of the program, and come back', () => {
  const names = ['a.jpg', "it's 'a' $HOME `x` \\ \"!\" *.png", '-o.png', '--', ' ü;&\n#.tif'];
  const lines = all.map((settings, i) => commandLine(settings, names[i % names.length]));
  assert.strictEqual(lines[0], "orbel apply 'a.jpg'");
  assert.ok(lines.some((line) => line.endsWith(' --gain -1 --residual -1000')));
  const play = 'orbel() { printf "%s\\0" "$2"; "$ORBEL" "$@" --print-settings && printf "\\0"; }\n';
  const said = runWell('sh', ['-c', play + lines.join('\n')]).split('\0');
  assert.strictEqual(said.length, 2 * all.length + 1);
  all.forEach((settings, i) => {
    const name = names[i % names.length];
    assert.strictEqual(said[2 * i], name.startsWith('-') ? './' + name : name);
    assert.strictEqual(said[2 * i + 1], settingsText(settings, ''), lines[i]);
    const back = readSettings(settingsText(settings, ''), 'a').settings;
    assert.ok(sameSettings(back, requireSettings(settings)), lines[i]);
  });
});

test('scripts are those of the program', () => {
  const known = all.map((settings) => ({...settings, form: 'pyramid', limit: false, mix: 100})).slice(0, 40);
  const play = known.map((settings) => commandLine(settings, 'x').replace("orbel apply 'x'", '"$ORBEL" jsx'));
  assert.strictEqual(known.map(photoshopScript).join(''), runWell('sh', ['-ec', play.join('\n')]));
  for (const [changes, wayOut] of [[{form: 'wavelets'}, /pyramid/], [{limit: true}, /off/], [{mix: 99}, /opacity/]]) {
    assert.throws(() => photoshopScript(changed(changes)), (e) => e instanceof SettingsError && wayOut.test(e.message));
  }
});

test('files are read as by the program', () => {
  const presets = new URL('../../tools/presets/', import.meta.url);
  const texts = readdirSync(presets).map((name) => readFileSync(new URL(name, presets), 'utf8'));
  assert.ok(texts.length >= 7);
  texts.push(
    '#'.repeat(16384),
    '\ufeffgain = 0x1_F # half\r\n\r\n\'radius\' = [ 1, # fine\r\n 2.5e+0,\t3,0,\r\n1_0.5 ,] #\r\n"e\\u0064ge" = true',
    'residual=1\nfactor = 2\ncross = 0b1_1\nref-edge = 0o17\noverlay = +3\nmix = 1_0E-0_1\nhalf\t=\tfalse',
    'gain = -0\nresidual = -0.0\nform = \'wavelets\'\nlimit = true\n"threshold" = [0,1,2,3,255]');
  texts.forEach((text, i) => {
    const file = join(folder, `good${i}.toml`);
    writeFileSync(file, text);
    const read = readSettings(text, file);
    const theirs = runWell(program, ['jsx', '-p', file, '--print-settings']);
    assert.strictEqual(settingsText(read.settings, ''), theirs, text);
    assert.deepStrictEqual(read.left, []);
  });
  const masked = readSettings("mask = 'm.png'\ngain = 7", 'a');
  assert.ok(masked.left.length === 1 && masked.left[0].includes("'m.png'") && masked.settings.gain[4] === 7);
});

test('descriptions are written as by the program, and come back from both', () => {
  const one = ["it's", 'a "b" \\', '\'"\\\t\b\f\r\x01\x7f', '\ttab', 'é\u0085\u2028', '\u0080\u00a0😀', "'é\u2029"];
  const several = ['a\nb', "\n'''\n"];  // which the program writes over several lines
  [...one, ...several].forEach((text, i) => {
    const written = settingsText(defaultSettings(), text);
    assert.strictEqual(readSettings(written, 'a').description, text);
    writeFileSync(join(own, `d${i}.toml`), written);
    if (several.includes(text)) return;
    runWell(program, ['presets', 'save', `s${i}`, '--description', text]);
    assert.strictEqual(written, readFileSync(join(own, `s${i}.toml`), 'utf8'));
  });
  const listed = JSON.parse(runWell(program, ['presets', 'list', '--json'])).filter(({name}) => /^d\d$/.test(name));
  assert.deepStrictEqual(listed.map(({description}) => description), [...one, ...several]);
  assert.strictEqual(readSettings('description = "\\U0001F600\\u00e9\\t"', 'a').description, '😀é\t');
});

test('bad files are refused as by the program', () => {
  const alike = [
    '\ncontras = 3', 'contrast = [1, 2]', 'edges = []', 'factor = 1\n\nradius = [1, 2, 3,\n 4, "x"]', 'radius = -inf',
    'half = 1', 'edges = [true, true, true, true, 1]', 'cross = 1.5', 'cross = 3000000000', 'gain = 9007199254740993',
    'half = true\nthreshold = [255, 10, -1, 10, 10]', 'gain = 1e21', 'gain = 1e16', 'gain = 1e15', 'radius = -1e-7',
    'gain = -1234.5', 'mix = 100.5', 'ref-edge = -1', 'mask = 1', 'form = "Wavelets"', 'form = true', 'limit = "true"',
    'zz = 1\nhalf = 2\ngain = 5000', 'half = true\r\nfoo = 1', 'description = 3', 'cross = -1', 'mix = [1]', '"" = 1',
    '#'.repeat(16385), 'é'.repeat(8193)];
  const onTheLine = [
    'half = true\nhalf = true', 'gain = 01', 'gain = 1.', 'gain = .5', 'gain = 1__0', 'gain = 5_', 'gain = 0X10',
    'gain = NaN', 'gain = -0x1', 'gain = [1,2,3,4,,5]', '\ngain = [1,2,3,4,5', 'gain = [1 2]', 'gain = 5 half = true',
    'gain = 5\rhalf = true', 'gain.x = 5', '\n[gain]', 'gain = {x = 1}', 'gain = 2020-01-01', 'gain = [[1],2,3,4,5]',
    'gain', '= 3', 'gain = \nhalf = true', 'half = truex', 'description = "\\ud800"', 'description = "\\U00110000"',
    'description = "\\x41"', 'description = "\\\u2028"', 'description = "\\u12"', '\ndescription = "abc\nhalf = true',
    "description = 'a\x01'", '# a\x01', 'gain = 4\u00a0', 'gäin = 4', '\vgain = 4', 'gain = 1e400', 'gain = 0x'];
  const texts = [...alike, ...onTheLine];
  texts.forEach((text, i) => writeFileSync(join(folder, `bad${i}.toml`), text));
  const {status, stderr} = run(program, ['presets', 'check', ...texts.map((_, i) => `bad${i}.toml`)]);
  assert.strictEqual(status, 2);
  const refusals = stderr.trimEnd().split('\n');
  assert.strictEqual(refusals.length, texts.length, stderr);
  texts.forEach((text, i) => assert.throws(() => readSettings(text, `bad${i}.toml`), (error) => {
    const [ours, theirs] = [`orbel: ${error.message}`, refusals[i]];
    const place = (message) => message.split(': ')[1];
    const shown = (message) => alike.includes(text) ? message : place(message);
    assert.strictEqual(shown(ours), shown(theirs), text);
    return error instanceof SettingsError;
  }));
});

test('what are no settings is refused, and copies are their own', () => {
  const wrong = [
    [{gain: [1, 2, 3, 4, 1000.5]}, 'gain of band 5 is 1000.5; allowed is -1000 to 1000'], [{gain: 5}, /five/],
    [{radius: [1, 2]}, /five/], [{mix: NaN}, /NaN/], [{overlay: 1.5}, /whole/], [{half: 1}, /true or false/],
    [{form: 'x'}, /pyramid or wavelets/], [{mix: [1]}, /one value/], [{edges: [true, , true, true, true]}, /band 2/]];
  for (const [changes, message] of wrong) assert.throws(() => requireSettings(changed(changes)), {message});
  assert.throws(() => requireSettings(null), SettingsError);
  const [a, b] = [defaultSettings(), copyOf(defaultSettings())];
  b.edges[4] = false;
  assert.ok(a.edges[4] && !sameSettings(a, b));
});
