// photoshop_script.js: settings as a script for Photoshop with the plug-in, the same that the program writes.

import {SettingsError, members, numberText, valuesOf} from './settings.js';

/** @typedef {import('./settings.js').Settings} Settings */

/**
 * The plug-in's keys and names, in the order of its record; a band's number goes to the end of both.
 * @type {[keyof Settings, string, string][]}
 */
const keys = [
  ['gain', 'CON', 'contrast'],
  ['radius', 'RAD', 'radius'],
  ['threshold', 'THR', 'threshold'],
  ['edges', 'EDG', 'keep edges'],
  ['residual', 'FCTR', 'base factor'],
  ['half', 'HALF', 'add half'],
  ['luminance', 'LUMI', 'luminance only'],
  ['overlay', 'WDTH', 'cross width'],
];

const putters = {number: 'putDouble', flag: 'putBoolean', whole: 'putInteger', form: ''};

const scope = '6d1f0f5e-7a0c-4c52-9b43-2f6a86a1c7d4';
const eventId = 'obEq';

/** @type {(settings: Settings) => string} */
function whatThePlugInDoesNotKnow({form, limit, mix}) {
  if (form !== 'pyramid') return 'no wavelets: choose the pyramid, or save the picture from here';
  if (limit) return 'no limit: turn it off, or save the picture from here';
  return mix === 100 ? '' : "no mix: set it to 100, run the script on a copy of the layer, and use the layer's opacity";
}

/**
 * A script that plays the filter with these settings and no dialog on the active document. With a reference edge it
 * scales the radii to the document that it meets. Throws SettingsError for what the plug-in doesn't know: wavelets, a
 * limit, a mix.
 * @param {Settings} settings
 */
export function photoshopScript(settings) {
  const unknown = whatThePlugInDoesNotKnow(settings);
  if (unknown !== '') throw new SettingsError(`the plug-in for Photoshop knows ${unknown}`);
  const edge = settings.referenceEdge;
  const putLines = keys.flatMap(([member, key, name]) => valuesOf(settings, member).map((value, i) => {
    const {kind, bands} = members[member];
    const id = bands ? key + (i + 1) : key;
    const said = (typeof value === 'number' ? numberText(value) : value) +
      (member === 'radius' && edge !== 0 ? ' * scale' : '');
    return `  settings.${putters[kind]}(charIDToTypeID("${id}"), ${said}); // ${name}${bands ? ` ${i + 1}` : ''}`;
  }));
  // In the language of ExtendScript, which is that of 1999.
  return [
    '// Orbel Band Equalizer on the active document. Run it with File > Scripts > Browse.',
    '(function () {',
    ...(edge === 0 ? [] : [
      `  // The radii are meant for a picture with a long edge of ${edge} pixels.`,
      '  var document = app.activeDocument;',
      `  var scale = Math.max(document.width.as("px"), document.height.as("px")) / ${edge};`,
    ]),
    '  var settings = new ActionDescriptor();',
    ...putLines,
    '  try {',
    '    // Photoshop knows a filter with a scope of its own by that scope.',
    `    executeAction(stringIDToTypeID("${scope}"), settings, DialogModes.NO);`,
    '  } catch (error) {',
    '    // Hosts without scopes know it by its event.',
    '    try {',
    `      executeAction(charIDToTypeID("${eventId}"), settings, DialogModes.NO);`,
    '    } catch (ignored) {',
    '      throw error;',
    '    }',
    '  }',
    '})();',
    '',
  ].join('\n');
}
