// settings_file.js: settings as TOML files, which the program takes with -p.
//
//   description = "What it is for, in a sentence."
//   gain = [100, 140, 160, 130, 110]    # one value for each band, finest first, or one for all
//   edges = [false, true, true, true, true]
//   residual = 100
//
// Of TOML 1.0 what settings need: a name and a value a line, comments, texts, numbers, true, false and lists.

import {
  SettingsError, bandCount, defaultSettings, forms, memberNames, members, numberText, valuesOf,
} from './settings.js';

/** @typedef {import('./settings.js').Settings} Settings */
/** @typedef {{number: number, whole: boolean}} Numeral */
/** @typedef {boolean | string | Numeral} Single */
/** @typedef {{line: number, value: Single | Single[]}} Entry */

const longestFile = 16384;  // in bytes, as in the program: a picture that was given by mistake is no settings

const wholeNumber = /^([-+]?(0|[1-9](_?\d)*)|0x[\da-fA-F](_?[\da-fA-F])*|0o[0-7](_?[0-7])*|0b[01](_?[01])*)$/;
const fraction = /^[-+]?((0|[1-9](_?\d)*)(\.\d(_?\d)*)?([eE][-+]?\d(_?\d)*)?|inf|nan)$/;
/** @type {Record<string, string>} */
const escapes = {b: '\b', t: '\t', n: '\n', f: '\f', r: '\r', '"': '"', '\\': '\\'};

class TomlReader {
  /**
   * @param {string} text
   * @param {string} name of the file, for messages
   */
  constructor(text, name) {
    this.text = text;
    this.name = name;
    this.at = 0;
  }

  line() {
    return this.text.slice(0, this.at).split('\n').length;
  }

  /** @type {(reason: string) => never} */
  refuse(reason) {
    throw new SettingsError(`${this.name}:${this.line()}: ${reason}`);
  }

  // What the sticky pattern finds here, which is then passed; null where it finds nothing.
  /** @param {RegExp} pattern */
  take(pattern) {
    pattern.lastIndex = this.at;
    const found = pattern.exec(this.text);
    if (found === null) return null;
    this.at = pattern.lastIndex;
    return found[0];
  }

  /** @returns {Map<string, Entry>} */
  entries() {
    const entries = new Map();
    for (this.passLines(); this.at < this.text.length; this.passLines()) {
      const line = this.line();
      const word = this.key();
      if (entries.has(word)) this.refuse(`'${word}' stands here a second time`);
      if (this.take(/[ \t]*=[ \t]*/y) === null) this.refuse(`after '${word}' there has to be a = and a value`);
      entries.set(word, {line, value: this.take(/\[/y) === null ? this.single() : this.list()});
      if (this.take(/[ \t]*(?=#|\r?\n|$)/y) === null) this.refuse(`the value of '${word}' has to end here`);
    }
    return entries;
  }

  // Over white space, line ends and comments, which hold no control characters but tabs.
  passLines() {
    this.take(/([ \t]|\r?\n|#[^\x00-\x08\x0a-\x1f\x7f]*)*/y);
  }

  key() {
    if (this.take(/\[/y) !== null) this.refuse('settings have no tables');
    const word = this.quoted() ?? this.take(/[\w-]+/y) ?? this.refuse('here has to be the name of a setting');
    if (this.take(/[ \t]*\./y) !== null) this.refuse(`'${word}' goes on after a point; no setting has such a name`);
    return word;
  }

  // A text in either kind of quotes; null where there is none.
  quoted() {
    if (this.take(/"""|'''/y) !== null) this.refuse('settings have no texts of several lines');
    const literal = this.take(/'[^'\x00-\x08\x0a-\x1f\x7f]*'/y);
    if (literal !== null) return literal.slice(1, -1);
    const basic = this.take(/"([^"\\\x00-\x08\x0a-\x1f\x7f]|\\[^\x00-\x1f\x7f])*"/y);
    if (basic === null) {
      return this.take(/['"]/y) && this.refuse('a text has to end on its line, and holds no control characters');
    }
    const escape = /\\(?:u([\da-fA-F]{4})|U([\da-fA-F]{8})|([^]))/gu;
    return basic.slice(1, -1).replace(escape, (all, short, long, letter) => {
      if (letter !== undefined) return escapes[letter] ?? this.refuse(`there is no escape '${all}' in texts`);
      const code = parseInt(short ?? long, 16);
      const isCharacter = code <= 0x10ffff && (code < 0xd800 || code > 0xdfff);
      return isCharacter ? String.fromCodePoint(code) : this.refuse(`'${all}' is no character`);
    });
  }

  /** @returns {Single} */
  single() {
    const text = this.quoted();
    if (text !== null) return text;
    const token = this.take(/[^\s,#\]]+/y) ?? '';
    if (token === 'true' || token === 'false') return token === 'true';
    const number = Number(token.replaceAll('_', ''));
    // A whole number has no -0.
    if (wholeNumber.test(token)) return {number: number + 0, whole: true};
    if (fraction.test(token)) return {number, whole: false};
    return this.refuse(`'${token}' is no value; there are numbers, texts in quotes, true, false, and lists of these`);
  }

  list() {
    const values = [];
    for (this.passLines(); this.take(/\]/y) === null; this.passLines()) {
      if (this.take(/\[/y) !== null) this.refuse('a list of settings has no lists in it');
      values.push(this.single());
      this.passLines();
      if (this.take(/,|(?=\])/y) === null) this.refuse('here a list has to go on or end');
    }
    return values;
  }
}

/** @typedef {keyof typeof wanted} Kind */
const wanted = {
  number: 'a number',
  whole: 'a whole number',
  flag: 'true or false',
  form: 'a text in quotes',
  text: 'a text in quotes',
};

// The value, if it is one of the kind.
/** @type {(value: Single | Single[], kind: Kind) => number | boolean | string | undefined} */
function valueOf(value, kind) {
  if (Array.isArray(value)) return undefined;
  if (typeof value === 'boolean') return kind === 'flag' ? value : undefined;
  if (typeof value === 'string') return kind === 'form' || kind === 'text' ? value : undefined;
  const {number, whole} = value;
  if (kind === 'whole') return whole && (number | 0) === number ? number : undefined;
  const isHeld = whole ? Number.isSafeInteger(number) : Number.isFinite(number);
  return kind === 'number' && isHeld ? number : undefined;
}

// What is wrong with a value of the member's kind; nothing where it is in the range. word: as the file has it.
/** @type {(value: number | boolean | string, name: keyof Settings, word: string) => string | undefined} */
function refusalOf(value, name, word) {
  const {word: known, least, most} = members[name];
  if (typeof value === 'string') {
    return forms.includes(value) ? undefined : `${word}: a form is ${forms.join(' or ')}, not '${value}'`;
  }
  if (typeof value === 'boolean' || (value >= least && value <= most)) return undefined;
  if (name === 'mix') return `${word}: a mix goes from ${least} to ${most}`;
  if (name === 'referenceEdge') return `${word}: an edge goes from ${least} to ${most} pixels`;
  return `${numberText(value)} is out of range; ${known} goes from ${least} to ${most}`;
}

/**
 * What the settings file of this name holds, over the defaults; and in left a sentence for each thing that there isn't
 * here. Throws SettingsError, which names the file and the line, when it is no TOML of settings, and when it holds a
 * word or a value that is no setting.
 * @param {string} text
 * @param {string} name
 */
export function readSettings(text, name) {
  if (new TextEncoder().encode(text).length > longestFile) {
    throw new SettingsError(`${name}: is too large for a file of settings`);
  }
  const settings = defaultSettings();
  let description = '';
  /** @type {string[]} */
  const left = [];
  const entries = new TomlReader(text.replace(/^\ufeff/, ''), name).entries();
  // By word, so that the newer of two words for a setting wins wherever it stands.
  for (const [word, {line, value}] of [...entries].sort(([a], [b]) => (a < b ? -1 : 1))) {
    const refuse = (/** @type {string} */ reason) => {
      throw new SettingsError(`${name}:${line}: ${reason}`);
    };
    const take = (/** @type {Single | Single[]} */ one, /** @type {Kind} */ kind) =>
      valueOf(one, kind) ?? refuse(`'${word}' takes ${wanted[kind]}`);
    const member = memberNames.find((known) => members[known].word === word || members[known].other === word);
    if (word === 'description') {
      description = String(take(value, 'text'));
    } else if (word === 'mask') {
      left.push(`The mask '${take(value, 'text')}' is left out: there are none here, the result shows everywhere.`);
    } else if (member === undefined) {
      refuse(`there is no setting '${word}'`);
    } else {
      const {kind, bands} = members[member];
      const list = bands && Array.isArray(value) ? value : Array(bands ? bandCount : 1).fill(value);
      if (bands && list.length !== bandCount) refuse(`'${word}' takes one value or five`);
      const values = list.map((one) => {
        const taken = take(one, kind);
        const refusal = refusalOf(taken, member, word);
        return refusal === undefined ? taken : refuse(refusal);
      });
      Object.assign(settings, {[member]: bands ? values : values[0]});
    }
  }
  return {settings, description, left};
}

// As a TOML text: in single quotes, where these can hold it. Always on one line, which every reader takes alike.
/** @param {string} text */
function inQuotes(text) {
  if (!/['\x00-\x08\x0a-\x1f\x7f\x85\u2028\u2029]/.test(text)) return `'${text}'`;
  return '"' + text.replace(/["\\\x00-\x08\x0a-\x1f\x7f\x85\u2028\u2029]/g, (character) => {
    const letter = Object.keys(escapes).find((key) => escapes[key] === character);
    return '\\' + (letter ?? 'u' + character.charCodeAt(0).toString(16).toUpperCase().padStart(4, '0'));
  }) + '"';
}

/**
 * All of the settings, as a file that readSettings and the program take. An empty description is left out.
 * @param {Settings} settings
 * @param {string} description
 */
export function settingsText(settings, description) {
  const lines = memberNames.map((name) => {
    const values = valuesOf(settings, name).map((value) =>
      typeof value === 'number' ? numberText(value) : typeof value === 'string' ? `"${value}"` : String(value));
    return `${members[name].word} = ${members[name].bands ? `[${values.join(', ')}]` : values[0]}\n`;
  });
  return (description === '' ? '' : `description = ${inQuotes(description)}\n`) + lines.join('');
}
