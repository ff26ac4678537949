// command_line.js: settings as a line for a shell, with which the program does the same.

import {defaultSettings, memberNames, members, numberText, sameMember, valuesOf} from './settings.js';

/** @typedef {import('./settings.js').Settings} Settings */

/**
 * What says the other of a flag's two values than the default.
 * @type {Partial<Record<keyof Settings, string>>}
 */
const flags = {half: '--half', luminance: '--planes', limit: '--limit'};

// A name as a word for a POSIX shell, and not as an option.
/** @param {string} name */
function fileWord(name) {
  return "'" + (name.startsWith('-') ? './' : '') + name.replaceAll("'", "'\\''") + "'";
}

/** @type {(settings: Settings, name: keyof Settings) => string} */
function option(settings, name) {
  const values = valuesOf(settings, name).map((value) =>
    typeof value === 'number' ? numberText(value) : typeof value === 'boolean' ? (value ? 'on' : 'off') : value);
  const said = values.every((value) => value === values[0]) ? values[0] : values.join(',');
  return flags[name] ?? `--${members[name].word} ${said}`;
}

/**
 * "orbel apply 'IN.jpg' --gain 150 --limit": what isn't as in the defaults.
 * @param {Settings} settings
 * @param {string} pictureName without a folder
 */
export function commandLine(settings, pictureName) {
  const defaults = defaultSettings();
  const different = memberNames.filter((name) => !sameMember(settings, defaults, name));
  return ['orbel apply', fileWord(pictureName), ...different.map((name) => option(settings, name))].join(' ');
}
