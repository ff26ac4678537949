// built.js: what the build puts in: see build.mjs.

/* global ORBEL_PRESETS, ORBEL_WORKER */

/** @type {import('./presets.js').Preset[]} */
export const presets = ORBEL_PRESETS;

/** @type {string} */
export const workerSource = ORBEL_WORKER;
