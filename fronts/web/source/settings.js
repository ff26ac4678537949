// settings.js: all that a run is set to: what it holds, its defaults and its ranges, which are the engine's.

/**
 * Lists have a value for each band, the finest first.
 * @typedef {object} Settings
 * @property {number[]} gain in percent: 0 removes the band, 100 leaves it, below 0 inverts it
 * @property {number[]} radius of the low-pass, in pixels of the band's level; 0: none
 * @property {number[]} threshold how far samples may differ and still be smoothed together, where edges is true
 * @property {boolean[]} edges true: strong edges are kept out of the band
 * @property {number} residual gain of what is left under the coarsest band, in percent
 * @property {boolean} half true: middle grey is added at the end
 * @property {boolean} luminance true: on luminance, colours are kept; false: on each colour by itself
 * @property {number} overlay width of the cross and the stripe, in whole pixels; 0: none
 * @property {number} mix how much of the result is blended into the original, in percent
 * @property {number} referenceEdge longer side of the picture that radii are meant for, in whole pixels; 0: of any
 * @property {'pyramid' | 'wavelets'} form how a picture is taken apart
 * @property {boolean} limit true: no colour is driven beyond black or white
 */

/**
 * What is known of a member. kind: a number, a whole number, true or false, or one of the forms. least and most: the
 * range that the engine allows, for numbers.
 * @typedef {object} Member
 * @property {string} word by which settings files and the command line know it
 * @property {string} [other] an older word
 * @property {'number' | 'whole' | 'flag' | 'form'} kind
 * @property {boolean} bands true: five values
 * @property {number} least
 * @property {number} most
 */

export const bandCount = 5;
export const forms = ['pyramid', 'wavelets'];

/**
 * The members in the order of settings files.
 * @type {Record<keyof Settings, Member>}
 */
export const members = {
  gain: {word: 'gain', other: 'contrast', kind: 'number', bands: true, least: -1000, most: 1000},
  radius: {word: 'radius', kind: 'number', bands: true, least: 0, most: 32767},
  threshold: {word: 'threshold', kind: 'number', bands: true, least: 0, most: 255},
  edges: {word: 'edges', other: 'edge', kind: 'flag', bands: true, least: 0, most: 1},
  residual: {word: 'residual', other: 'factor', kind: 'number', bands: false, least: -1000, most: 1000},
  half: {word: 'half', kind: 'flag', bands: false, least: 0, most: 1},
  luminance: {word: 'luminance', kind: 'flag', bands: false, least: 0, most: 1},
  overlay: {word: 'overlay', other: 'cross', kind: 'whole', bands: false, least: 0, most: 32767},
  mix: {word: 'mix', kind: 'number', bands: false, least: 0, most: 100},
  referenceEdge: {word: 'reference-edge', other: 'ref-edge', kind: 'whole', bands: false, least: 0, most: 32767},
  form: {word: 'form', kind: 'form', bands: false, least: 0, most: 1},
  limit: {word: 'limit', kind: 'flag', bands: false, least: 0, most: 1},
};

export const memberNames = /** @type {(keyof Settings)[]} */ (Object.keys(members));

/** Settings that can't be understood or can't be said; the message names them, for people. */
export class SettingsError extends Error {}

/** @returns {Settings} */
export function defaultSettings() {
  return {
    gain: [100, 100, 100, 100, 100],
    radius: [3, 3, 3, 3, 3],
    threshold: [255, 10, 10, 10, 10],
    edges: [false, true, true, true, true],
    residual: 100,
    half: false,
    luminance: true,
    overlay: 0,
    mix: 100,
    referenceEdge: 0,
    form: 'pyramid',
    limit: false,
  };
}

/**
 * A copy that shares no list with the settings.
 * @param {Settings} settings
 * @returns {Settings}
 */
export function copyOf(settings) {
  const {gain, radius, threshold, edges} = settings;
  return {...settings, gain: [...gain], radius: [...radius], threshold: [...threshold], edges: [...edges]};
}

/**
 * The member's five values, or its one.
 * @type {(settings: Settings, name: keyof Settings) => (number | boolean | string)[]}
 */
export function valuesOf(settings, name) {
  const value = settings[name];
  return Array.isArray(value) ? [...value] : [value];
}

/** @type {(a: Settings, b: Settings, name: keyof Settings) => boolean} */
export function sameMember(a, b, name) {
  const others = valuesOf(b, name);
  return valuesOf(a, name).every((value, i) => value === others[i]);
}

/** @type {(a: Settings, b: Settings) => boolean} */
export function sameSettings(a, b) {
  return memberNames.every((name) => sameMember(a, b, name));
}

/** @type {(value: unknown, member: Member) => boolean} */
function isAllowed(value, {kind, least, most}) {
  if (kind === 'flag') return typeof value === 'boolean';
  if (kind === 'form') return typeof value === 'string' && forms.includes(value);
  return typeof value === 'number' && value >= least && value <= most && (kind === 'number' || Number.isInteger(value));
}

/**
 * The value, as what it is. Throws SettingsError, which names the member and what is allowed, for what are no settings
 * or are none that the engine takes.
 * @param {unknown} value
 * @returns {Settings}
 */
export function requireSettings(value) {
  if (typeof value !== 'object' || value === null) throw new SettingsError('these are no settings');
  const settings = /** @type {Settings} */ (value);
  for (const name of memberNames) {
    const {word, bands, kind, least, most} = members[name];
    const values = valuesOf(settings, name);
    if (Array.isArray(settings[name]) !== bands || values.length !== (bands ? bandCount : 1)) {
      throw new SettingsError(`${word} takes ${bands ? 'five values' : 'one value'}`);
    }
    const wrong = values.findIndex((one) => !isAllowed(one, members[name]));
    if (wrong < 0) continue;
    const shown = typeof values[wrong] === 'object' ? 'no single value' : String(values[wrong]);
    const range = `${kind === 'whole' ? 'a whole number from ' : ''}${least} to ${most}`;
    const allowed = kind === 'flag' ? 'true or false' : kind === 'form' ? forms.join(' or ') : range;
    throw new SettingsError(`${word}${bands ? ` of band ${wrong + 1}` : ''} is ${shown}; allowed is ${allowed}`);
  }
  return settings;
}

/**
 * A finite number as the program writes it: below 1e-4 and from 1e16 on with an exponent, of two digits at least. Read
 * as a double it is the same number.
 * @param {number} value
 */
export function numberText(value) {
  if (Object.is(value, -0)) return '-0';
  const [digits, exponent] = value.toExponential().split('e');
  const power = Number(exponent);
  if (power >= -4 && power < 16) return String(value);
  return `${digits}e${power < 0 ? '-' : '+'}${String(Math.abs(power)).padStart(2, '0')}`;
}
