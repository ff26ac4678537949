// details.js: the settings behind the faders: each band's low-pass, and those of the whole picture.

import {make} from './elements.js';
import {bandCount, copyOf, members} from './settings.js';

/** @typedef {import('./settings.js').Settings} Settings */
/**
 * @typedef {{get: () => Settings, change: (settings: Settings) => void, commit: () => void,
 *   say: (text: string, isBad: boolean) => void}} Page
 */

export class Details {
  /** @param {HTMLElement} element @param {Page} page */
  constructor(element, page) {
    this.page = page;
    /** @type {((settings: Settings) => void)[]} */
    this.shows = [];
    const heads = ['Band', 'Radius', 'Threshold', 'Keep edges'].map((text) => make('th', {scope: 'col'}, [text]));
    const rows = Array.from({length: bandCount}, (_, band) => make('tr', {}, [
      make('th', {scope: 'row'}, [String(band + 1)]),
      make('td', {}, [this.number('radius', `Radius of band ${band + 1}, pixels`, 0.5, band)]),
      make('td', {}, [this.number('threshold', `Threshold of band ${band + 1}, 0 to 255`, 1, band)]),
      make('td', {}, [this.flag('edges', `Keep edges out of band ${band + 1}`, band)]),
    ]));
    element.append(make('table', {}, [make('thead', {}, [make('tr', {}, heads)]), make('tbody', {}, rows)]));
    const form = this.choice('form', [['wavelets', 'Wavelets, no halos'], ['pyramid', 'Pyramid, as the plug-in']]);
    const planes = this.choice('luminance', [['true', 'Luminance'], ['false', 'Each colour']]);
    element.append(
      make('div', {class: 'row'}, [make('label', {}, ['Form', form]), make('label', {}, ['Work on', planes])]),
      make('div', {class: 'row'}, [
        make('label', {}, ['Mix, %', this.number('mix', '', 1)]),
        make('label', {}, ['Meant for a long edge of, pixels (0: this picture’s)', this.number('referenceEdge', '', 1)]),
        make('label', {}, ['Cross over the picture, pixels', this.number('overlay', '', 1)]),
      ]),
      make('div', {class: 'row'}, [
        make('label', {}, [this.flag('limit', ''), 'Drive nothing beyond black or white']),
        make('label', {}, [this.flag('half', ''), 'Add middle grey at the end']),
      ]));
  }

  /** @type {(name: keyof Settings, band: number, value: number | boolean | string) => void} */
  set(name, band, value) {
    const next = copyOf(this.page.get());
    const values = /** @type {any} */ (next);
    if (band < 0) values[name] = value;
    else values[name][band] = value;
    this.page.change(next);
    this.page.commit();
  }

  /** @type {(settings: Settings, name: keyof Settings, band: number) => any} */
  value(settings, name, band) {
    const value = /** @type {any} */ (settings)[name];
    return band < 0 ? value : value[band];
  }

  /** @type {(name: keyof Settings, label: string, step: number, band?: number) => HTMLInputElement} */
  number(name, label, step, band = -1) {
    const {least, most, kind} = members[name];
    const input = make('input', {type: 'number', min: least, max: most, step, ...(label && {'aria-label': label})});
    const show = (/** @type {Settings} */ settings) => {
      input.value = String(this.value(settings, name, band));
    };
    this.shows.push(show);
    input.addEventListener('change', () => {
      const value = kind === 'whole' ? Math.round(input.valueAsNumber) : input.valueAsNumber;
      if (value >= least && value <= most) this.set(name, band, value);
      else this.page.say(`${members[name].word}: allowed is ${least} to ${most}.`, true);
      show(this.page.get());
    });
    return input;
  }

  /** @type {(name: keyof Settings, label: string, band?: number) => HTMLInputElement} */
  flag(name, label, band = -1) {
    const input = make('input', {type: 'checkbox', ...(label && {'aria-label': label})});
    this.shows.push((settings) => {
      input.checked = this.value(settings, name, band);
    });
    input.addEventListener('change', () => this.set(name, band, input.checked));
    return input;
  }

  /** @type {(name: 'form' | 'luminance', options: [string, string][]) => HTMLSelectElement} */
  choice(name, options) {
    const select = make('select', {}, options.map(([value, text]) => make('option', {value}, [text])));
    this.shows.push((settings) => {
      select.value = String(settings[name]);
    });
    select.addEventListener('change', () => this.set(name, -1, name === 'form' ? select.value : select.value === 'true'));
    return select;
  }

  /** @param {Settings} settings */
  show(settings) {
    for (const show of this.shows) show(settings);
  }
}
