// presets.js: the presets, as thumbnails of the picture at hand.

import {make, press} from './elements.js';
import {copyOf, sameSettings} from './settings.js';

/** @typedef {import('./settings.js').Settings} Settings */
/** @typedef {{name: string, description: string, settings: Settings}} Preset */

const longest = 176; // pixels of a thumbnail

export class Presets {
  /**
   * @param {HTMLElement} element
   * @param {Preset[]} presets
   * @param {(settings: Settings) => void} choose
   */
  constructor(element, presets, choose) {
    this.round = 0;
    this.entries = presets.map(({name, description, settings}) => {
      const canvas = make('canvas', {width: 3, height: 2, 'aria-hidden': true});
      const chosen = make('button', {title: description, 'aria-pressed': 'false'}, [canvas, name]);
      chosen.addEventListener('click', () => choose(copyOf(settings)));
      element.append(chosen);
      return {canvas, chosen, settings};
    });
  }

  /** @param {Settings} now */
  show(now) {
    for (const {chosen, settings} of this.entries) press(chosen, sameSettings(settings, now));
  }

  /** No thumbnails, till they are drawn. */
  clear() {
    ++this.round;
    for (const {canvas} of this.entries) canvas.getContext('2d')?.clearRect(0, 0, canvas.width, canvas.height);
  }

  /**
   * Draws the thumbnails anew, of the picture that the colleague has.
   * @param {import('./colleague.js').Colleague} colleague
   * @param {{width: number, height: number, colorSpace: PredefinedColorSpace}} picture
   */
  async draw(colleague, {width, height, colorSpace}) {
    const round = ++this.round;
    const scale = Math.min(1, longest / Math.max(width, height));
    const size = {width: Math.max(1, Math.round(width * scale)), height: Math.max(1, Math.round(height * scale))};
    for (const entry of this.entries) {
      const view = {...size, part: {x: 0, y: 0, ...size}};
      const wish = {settings: entry.settings, view, grey: false, clipping: false, needsBefore: false};
      const pixels = await colleague.ask('look', {wish});
      if (round !== this.round) return;
      const fresh = make('canvas', {...size, 'aria-hidden': true});
      entry.canvas.replaceWith(fresh);
      entry.canvas = fresh;
      const context = fresh.getContext('2d', {colorSpace});
      context?.putImageData(new ImageData(pixels, size.width, size.height, {colorSpace}), 0, 0);
    }
  }
}
