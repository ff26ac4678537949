// faders.js: the equalizer's face: a fader for each band, finest left, and one for the residual.

import {make, press} from './elements.js';
import {bandCount, copyOf, members} from './settings.js';

/** @typedef {import('./settings.js').Settings} Settings */
/** @typedef {import('./bands_alone.js').Alone} Alone */

const most = 300; // percent; a number field takes what the engine does
const names = ['Finest', 'Fine', 'Middle', 'Coarse', 'Coarsest', 'Rest'];
const page = 25;
const pause = 700; // milliseconds after which a step is another one to undo
const twice = 350; // milliseconds between two taps that are one double tap

/** A share of a fader's height. @param {number} strength root mean square in levels of 255 */
const heightOf = (strength) => Math.min(1, Math.log2(1 + strength) / Math.log2(1 + 32));

/** @type {(settings: Settings, i: number) => number} */
const gainOf = (settings, i) => (i < bandCount ? settings.gain[i] : settings.residual);

/** Within the fader's range, and never the other way. @type {(percent: number, step: number) => number} */
const stepped = (percent, step) => (step > 0 ? Math.max(percent, Math.min(most, percent + step)) :
  Math.min(percent, Math.max(0, percent + step)));

/** @type {(settings: Settings, i: number, percent: number) => Settings} */
function withGain(settings, i, percent) {
  const next = copyOf(settings);
  if (i < bandCount) next.gain[i] = percent;
  else next.residual = percent;
  return next;
}

export class Faders {
  /**
   * @param {HTMLElement} element
   * @param {{get: () => Settings, change: (settings: Settings) => void, commit: (joins?: boolean) => void,
   *   alone: (which: Alone | null) => void, say: (text: string, isBad: boolean) => void}} page
   */
  constructor(element, {get, change, commit, alone, say}) {
    /** @type {Alone | null} */
    this.which = null;
    const toggle = (/** @type {Alone} */ which) => {
      this.which = this.which === which ? null : which;
      this.showAlone();
      alone(this.which);
    };
    const set = (/** @type {number} */ i, /** @type {number} */ percent) => change(withGain(get(), i, percent));
    this.faders = names.map((name, i) => {
      const label = i < bandCount ? `Band ${i + 1}, ${name.toLowerCase()}` : 'Rest, beneath the bands';
      const range = make('input', {type: 'range', min: 0, max: most, step: 1, 'aria-label': label});
      const number = make('input', {
        type: 'number', min: members.gain.least, max: members.gain.most, step: 'any', 'aria-label': `${label}, percent`,
      });
      const only = make('button', {'aria-pressed': 'false', 'aria-label': `Show ${label.toLowerCase()} alone`}, ['Alone']);
      const detail = make('div', {class: 'detail'});
      const mark = make('div', {class: 'mark'});
      mark.style.bottom = `calc(8px + (100% - 16px) * ${100 / most})`;
      let isKeyed = false;
      let last = -Infinity; // when this fader's last step was committed
      const isSoon = () => performance.now() - last < pause;
      const commitStep = () => {
        commit(isKeyed && isSoon());
        last = performance.now();
      };
      const reset = () => {
        set(i, 100);
        commit(isSoon()); // with what its first click set
      };
      range.addEventListener('pointerdown', () => { isKeyed = false; });
      range.addEventListener('input', () => set(i, range.valueAsNumber));
      range.addEventListener('change', commitStep);
      range.addEventListener('dblclick', reset);
      let tapped = 0;
      range.addEventListener('pointerdown', (event) => { // fingers have no double click here
        if (event.pointerType !== 'touch') return;
        if (event.timeStamp - tapped < twice) setTimeout(reset);
        tapped = event.timeStamp;
      });
      range.addEventListener('keydown', (event) => {
        if (!isKeyed) last = -Infinity;
        isKeyed = true;
        const steps = /** @type {Record<string, number>} */ ({PageUp: page, PageDown: -page});
        if (event.key === 'Delete' || event.key === 'Backspace') set(i, 100);
        else if (event.key in steps) set(i, stepped(gainOf(get(), i), steps[event.key]));
        else return;
        event.preventDefault();
        commitStep();
      });
      number.addEventListener('change', () => {
        const percent = number.valueAsNumber;
        const {least, most: highest} = members.gain;
        if (percent >= least && percent <= highest) set(i, percent);
        else say(`${label}: allowed is ${least} to ${highest} percent.`, true);
        commit();
        this.show(get());
      });
      only.addEventListener('click', () => toggle(i < bandCount ? i : 'residual'));
      element.append(make('div', {class: 'fader'}, [
        make('span', {class: 'label', 'aria-hidden': true}, [name]),
        make('div', {class: 'well'}, [detail, mark, range]), number, only,
      ]));
      return {range, number, only, detail};
    });
    this.all = make('button', {'aria-pressed': 'false'}, ['All five bands alone']);
    this.all.addEventListener('click', () => toggle('all'));
    const reset = make('button', {}, ['All to 100 %']);
    reset.addEventListener('click', () => {
      change({...get(), gain: Array(bandCount).fill(100), residual: 100});
      commit();
    });
    element.after(make('div', {class: 'row'}, [this.all, reset]));
  }

  /** @param {Settings} settings */
  show(settings) {
    this.faders.forEach(({range, number}, i) => {
      const percent = gainOf(settings, i);
      range.value = String(percent);
      range.setAttribute('aria-valuetext', `${Math.round(percent)} percent`);
      number.value = String(Math.round(percent * 10) / 10);
    });
  }

  /** How much detail the picture has in each band. @param {number[]} strengths */
  showStrengths(strengths) {
    strengths.forEach((strength, i) => {
      const {detail, range} = this.faders[i];
      detail.style.height = `${100 * heightOf(strength)}%`;
      range.title = `The picture’s detail here: ${strength.toFixed(1)} levels of 255`;
    });
  }

  showAlone() {
    this.faders.forEach(({only}, i) => press(only, this.which === (i < bandCount ? i : 'residual')));
    press(this.all, this.which === 'all');
  }
}
