// main.js: the page. Holds the settings; every control changes them here, and what they give is asked of the worker.

import {bandsAlone} from './bands_alone.js';
import {Colleague} from './colleague.js';
import {Details} from './details.js';
import {button, find, press} from './elements.js';
import {Faders} from './faders.js';
import {History} from './history.js';
import {Presets} from './presets.js';
import {SaveDialog, whatIsLost} from './save.js';
import {copyOf, requireSettings, sameMember} from './settings.js';
import {readSettings} from './settings_file.js';
import {Stage} from './stage.js';
import {presets, workerSource} from './built.js';

/** @typedef {import('./settings.js').Settings} Settings */

const storage = 'orbel-settings';
/** @type {(keyof Settings)[]} */
const shape = ['radius', 'threshold', 'edges', 'luminance', 'referenceEdge', 'form'];

const status = find('p', 'status');

/** @type {(text: string, isBad?: boolean) => void} */
function say(text, isBad = false) {
  status.textContent = text;
  status.classList.toggle('bad', isBad);
}

/** @param {unknown} error */
const reasonOf = (error) => /** @type {Error} */ (error).message;

/** Where nothing has been chosen yet: a picture as it is, in the form that is good for far faders. */
function startingSettings() {
  const clarity = presets.find(({name}) => name === 'clarity') ?? presets[0];
  const flat = {...copyOf(clarity.settings), gain: [100, 100, 100, 100, 100]};
  try {
    return requireSettings(JSON.parse(localStorage.getItem(storage) ?? '') ?? flat);
  } catch {
    return flat; // none there, none allowed, or of another version
  }
}

async function engineCode() {
  const packed = Uint8Array.from(atob(find('script', 'engine').textContent ?? ''), (c) => c.charCodeAt(0));
  const stream = new Blob([packed]).stream().pipeThrough(new DecompressionStream('gzip'));
  return new Response(stream).arrayBuffer();
}

async function start() {
  let settings = startingSettings();
  const history = new History(settings);
  /** @type {any} */
  let picture = null;
  /** @type {import('./bands_alone.js').Alone | null} */
  let alone = null;
  /** @type {number[] | null} */
  let strengths = null;
  let clipping = false;
  let isBusy = false; // a picture is opened or written
  let asked = 0;
  /** @type {ReturnType<typeof setTimeout> | 0} */
  let slowly = 0; // the timer that says so

  const code = await engineCode();
  const worker = new Colleague(workerSource, code, hear);
  const helper = new Colleague(workerSource, code, () => {}); // thumbnails and bands, so that nobody waits for them

  const stage = new Stage(find('canvas', 'picture'), {
    moved, divided, lost: () => say('The browser has taken the picture’s canvas away. It is drawn again as soon as it is back.', true),
  });
  const page = {get: () => settings, change, commit, say};
  const faders = new Faders(find('div', 'faders'), {...page, alone: showAlone});
  const details = new Details(find('details', 'details'), page);
  const strip = new Presets(find('div', 'presets'), presets, choose);
  const saving = new SaveDialog({
    settings: page.get, picture: () => picture, write: (as) => worker.ask('save', {settings, as}), busy: setBusy,
  });

  /** @param {any} message */
  function hear(message) {
    if (message.type === 'progress') saving.tell(message.done);
    if (message.type === 'failed') {
      drawing.clear();
      drawing.say(`This couldn’t be drawn: ${message.reason}.`, true);
    }
    if (message.type !== 'drawn') return;
    stage.take(message);
    if (message.id === asked) drawing.clear();
    const percent = (/** @type {number} */ part) => `${(100 * part).toFixed(part < 0.1 ? 2 : 0)} %`;
    find('p', 'clipped').textContent = message.clipped ?
      `${percent(message.clipped.white)} white, in red; ${percent(message.clipped.black)} black, in blue` : '';
    document.body.dataset.drawn = String(message.id); // for whoever waits for it, tests among them
  }

  // What is said of drawing goes when it is done; other messages stay.
  const drawing = {
    text: '',
    say(/** @type {string} */ text, isBad = false) {
      this.text = text;
      say(text, isBad);
    },
    clear() {
      clearTimeout(slowly);
      slowly = 0;
      if (this.text !== '' && status.textContent === this.text) say('');
      this.text = '';
    },
  };

  function ask() {
    if (!picture || isBusy) return;
    slowly ||= setTimeout(() => drawing.say('Drawing…'), 400);
    const view = stage.geometry.view();
    const shown = alone === null ? {settings, factor: 1} : bandsAlone(settings, alone, strengths);
    find('p', 'alone').textContent = alone === null ? '' :
      `${alone === 'residual' ? 'The rest beneath the bands.' : `Around middle grey, ${shown.factor === 1 ? 'as it is' : `${shown.factor} times as strong`}.`}`;
    document.body.dataset.asked = String(++asked);
    const grey = alone !== null && alone !== 'residual' && settings.luminance;
    worker.draw(asked, {
      settings: shown.settings, view, grey, clipping, needsBefore: stage.layers.before === null,
    });
  }

  function moved() {
    find('output', 'zoom').textContent = `${Math.round(100 * stage.geometry.zoom)} %`;
    ask();
  }

  function divided() {
    find('input', 'divider').value = String(100 * (stage.divider ?? 0));
  }

  /** @param {boolean} is */
  function setBusy(is) {
    isBusy = is;
    show();
    if (!is) ask();
  }

  function show() {
    faders.show(settings);
    details.show(settings);
    strip.show(settings);
    button('undo').disabled = !history.canUndo;
    button('redo').disabled = !history.canRedo;
    for (const id of ['fit', 'one-to-one', 'zoom-in', 'zoom-out', 'compare', 'before', 'clipping', 'save']) {
      button(id).disabled = !picture || (isBusy && id === 'save');
    }
  }

  /** @param {Settings} next */
  function change(next) {
    const isReshaped = !shape.every((name) => sameMember(settings, next, name));
    settings = next;
    show();
    ask();
    if (isReshaped) measure();
  }

  /** joins: with what was committed before, as steps of a key are. @param {boolean} [joins] */
  function commit(joins) {
    history.commit(settings, joins);
    show();
    store();
  }

  function store() {
    try {
      localStorage.setItem(storage, JSON.stringify(settings));
    } catch { /* a browser that keeps nothing */ }
  }

  /** @param {Settings} next */
  function choose(next) {
    change(next);
    commit();
  }

  /** What is being changed is committed first. @param {'undo' | 'redo'} which */
  function goBack(which) {
    history.commit(settings);
    change(history[which]());
    store();
  }

  /** @param {import('./bands_alone.js').Alone | null} which */
  function showAlone(which) {
    alone = which;
    ask();
  }

  // The newest shape alone: while the helper measures one, others come and go.
  let isMeasuring = false;
  let isMeasureStale = false;
  async function measure() {
    isMeasureStale = true;
    if (isMeasuring || !picture) return;
    isMeasuring = true;
    try {
      while (isMeasureStale) {
        isMeasureStale = false;
        strengths = await helper.ask('strengths', {settings});
      }
      faders.showStrengths(strengths ?? []);
      if (alone !== null) ask();
    } catch (error) {
      say(`The bands couldn’t be measured: ${reasonOf(error)}.`, true);
    }
    isMeasuring = false;
  }

  /** Bands and thumbnails of a new picture. @param {PredefinedColorSpace} colorSpace */
  async function prepare(colorSpace) {
    try {
      const small = await worker.ask('small', {});
      await helper.ask('take', small, [small.pixels.buffer]);
      await measure();
      await strip.draw(helper, {...small, colorSpace});
    } catch (error) {
      say(`The presets couldn’t be drawn: ${reasonOf(error)}.`, true);
    }
  }

  /** @type {(file: Blob, name: string) => Promise<void>} */
  async function openPicture(file, name) {
    say(`Opening ${name}…`);
    setBusy(true); // what is asked for meanwhile would be of the other picture
    try {
      const opened = await worker.ask('open', {file});
      picture = {...opened, name};
      isBusy = false;
      strip.clear();
      find('div', 'empty').hidden = true;
      find('span', 'name').textContent = `${name}, ${opened.width} × ${opened.height}`;
      find('span', 'name').title = name;
      stage.canvas.setAttribute('aria-label', `${name}, ${opened.width} by ${opened.height} pixels`);
      strengths = null;
      show();
      stage.show(opened.width, opened.height, opened.colorSpace);
      const lost = whatIsLost(picture);
      say(lost.length > 0 ? `${lost.join(' ')} The program orbel keeps all of it.` : '');
      prepare(opened.colorSpace);
    } catch (error) {
      say(`${name}: ${reasonOf(error)}.`, true);
      setBusy(false);
    }
  }

  /** @type {(file: Blob, name: string) => Promise<void>} */
  async function openSettings(file, name) {
    try {
      const text = new TextDecoder('utf-8', {fatal: true}).decode(await file.arrayBuffer());
      const read = readSettings(text, name);
      choose(read.settings);
      say([`These are the settings of ${name}.`, ...read.left].join(' '));
    } catch (error) {
      say(error instanceof TypeError ? `${name} is no text.` : reasonOf(error), true);
    }
  }

  // One after another; of several pictures the last one.
  let opening = Promise.resolve();
  /** @param {FileList | undefined | null} files */
  function open(files) {
    if (saving.dialog.open) return saving.say('Close this first: nothing was opened.');
    const isSettings = (/** @type {File} */ file) => /\.toml$/i.test(file.name);
    const all = [...files ?? []];
    const pictures = all.filter((file) => !isSettings(file));
    const last = pictures.pop();
    if (last) {
      opening = opening.then(() => openPicture(last, last.name || 'pasted.png')).then(() => {
        if (pictures.length > 0) say('One picture at a time: the last of them was opened.');
      });
    }
    for (const file of all.filter(isSettings)) opening = opening.then(() => openSettings(file, file.name));
  }

  const chooser = find('input', 'file');
  chooser.addEventListener('change', () => {
    open(chooser.files);
    chooser.value = ''; // the same file once more is a change
  });
  const pick = () => chooser.click();
  const save = () => picture && !isBusy && saving.open();
  const zoomBy = (/** @type {number} */ factor) => stage.zoomTo(stage.geometry.zoom * factor);

  const toggles = {
    compare() {
      const isOn = stage.divider === null;
      press(button('compare'), isOn);
      find('div', 'divider-bar').hidden = !isOn;
      stage.divide(isOn ? 0.5 : null);
      divided();
    },
    clipping() {
      clipping = !clipping;
      press(button('clipping'), clipping);
      ask();
    },
  };
  const showBefore = (/** @type {boolean} */ is) => {
    press(button('before'), is);
    stage.showBefore(is);
  };

  /** @type {Record<string, () => void>} */
  const clicks = {
    'open': pick, 'open-first': pick, save, 'undo': () => goBack('undo'), 'redo': () => goBack('redo'),
    'fit': () => stage.fit(), 'one-to-one': () => stage.zoomTo(1), 'zoom-in': () => zoomBy(1.25), 'zoom-out': () => zoomBy(0.8),
    ...toggles,
  };
  for (const [id, act] of Object.entries(clicks)) button(id).addEventListener('click', act);
  find('input', 'divider').addEventListener('input', () => stage.divide(find('input', 'divider').valueAsNumber / 100));

  const held = button('before');
  held.addEventListener('pointerdown', (event) => event.button === 0 && showBefore(true));
  held.addEventListener('contextmenu', (event) => event.preventDefault());
  addEventListener('blur', () => showBefore(false));
  for (const end of ['pointerup', 'pointerleave', 'pointercancel', 'blur']) {
    held.addEventListener(end, () => showBefore(false));
  }
  held.addEventListener('keydown', ({key}) => (key === ' ' || key === 'Enter') && showBefore(true));
  held.addEventListener('keyup', () => showBefore(false));

  /** @type {Record<string, () => void>} */
  const keys = {
    'b': () => showBefore(true), 'c': toggles.compare, 'x': toggles.clipping, '0': () => stage.fit(),
    '1': () => stage.zoomTo(1), '+': () => zoomBy(1.25), '=': () => zoomBy(1.25), '-': () => zoomBy(0.8),
  };
  /** @type {Record<string, () => void>} */
  const commands = {'z': clicks.undo, 'shift z': clicks.redo, 'y': clicks.redo, 'o': pick, 's': save};
  addEventListener('keydown', (event) => {
    const isTyping = event.target instanceof HTMLElement && event.target.matches('input[type=number], textarea, select');
    const isCommand = event.ctrlKey || event.metaKey;
    const key = event.key.toLowerCase();
    const isFile = isCommand && (key === 's' || key === 'o');
    if (isFile) event.preventDefault(); // the browser's own are of no use here
    if (saving.dialog.open || (isTyping && !isFile)) return;
    if (isTyping) /** @type {HTMLElement} */ (event.target).blur(); // its value counts
    const act = isCommand ? commands[event.shiftKey ? `shift ${key}` : key] : event.altKey ? undefined : keys[key];
    if (!act || (event.repeat && !'+=-zy'.includes(key))) return;
    if (!picture && !isCommand) return;
    event.preventDefault();
    act();
  });
  addEventListener('keyup', ({key}) => key.toLowerCase() === 'b' && showBefore(false));

  addEventListener('dragover', (event) => {
    event.preventDefault();
    find('section', 'stage').classList.add('over');
  });
  addEventListener('dragleave', () => find('section', 'stage').classList.remove('over'));
  addEventListener('drop', (event) => {
    event.preventDefault();
    find('section', 'stage').classList.remove('over');
    open(event.dataTransfer?.files);
  });
  addEventListener('paste', (event) => open(event.clipboardData?.files));

  show();
  document.body.dataset.ready = 'true';
  await worker.started;
}

const needed = ['DecompressionStream', 'OffscreenCanvas', 'WebAssembly'];
const missing = needed.filter((name) => !(name in globalThis));
if (missing.length > 0) say(`This browser is too old for the page: it has no ${missing.join(' and no ')}.`, true);
else start().catch((error) => say(`The page can’t run here: ${reasonOf(error)}.`, true));
