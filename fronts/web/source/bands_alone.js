// bands_alone.js: settings that show bands by themselves, around middle grey, stretched so that they can be seen.

import {copyOf} from './settings.js';

/** @typedef {import('./settings.js').Settings} Settings */
/** @typedef {number | 'all' | 'residual'} Alone which band, from 0 for the finest */

const wanted = 24; // levels of 255: a root mean square that is seen well and hardly clips
const mostGain = 1000;

/**
 * strengths: the bands' root mean squares at a gain of 100, in levels. Gives by how much bands are stretched, too.
 * @type {(settings: Settings, alone: Alone, strengths: number[] | null) => {settings: Settings, factor: number}}
 */
export function bandsAlone(settings, alone, strengths) {
  const shown = {...copyOf(settings), half: alone !== 'residual', mix: 100, limit: false, overlay: 0};
  if (alone === 'residual') return {settings: {...shown, gain: [0, 0, 0, 0, 0]}, factor: 1};
  const gain = shown.gain.map((percent, i) => (alone === 'all' || alone === i ? percent : 0));
  const strength = Math.hypot(...gain.map((percent, i) => percent / 100 * (strengths ? strengths[i] : wanted)));
  const room = mostGain / Math.max(1, ...gain.map(Math.abs));
  const factor = Math.max(1, Math.min(room, Math.round(wanted / Math.max(strength, 0.1))));
  return {settings: {...shown, residual: 0, gain: gain.map((percent) => percent * factor)}, factor};
}
