// history.js: settings as they were, for undo and redo.

import {copyOf, sameSettings} from './settings.js';

/** @typedef {import('./settings.js').Settings} Settings */

const most = 200;

export class History {
  /** @param {Settings} settings */
  constructor(settings) {
    this.past = [copyOf(settings)];
    /** @type {Settings[]} */
    this.future = [];
  }

  /** Remembers settings that are new. joins: in place of the last ones. @type {(settings: Settings, joins?: boolean) => void} */
  commit(settings, joins = false) {
    const isLast = () => sameSettings(settings, this.past[this.past.length - 1]);
    if (isLast()) return;
    if (joins && this.canUndo) this.past.pop();
    if (!isLast()) this.past = [...this.past.slice(1 - most), copyOf(settings)];
    this.future = [];
  }

  get canUndo() {
    return this.past.length > 1;
  }

  get canRedo() {
    return this.future.length > 0;
  }

  /** @returns {Settings} */
  undo() {
    if (this.canUndo) this.future.push(/** @type {Settings} */ (this.past.pop()));
    return copyOf(this.past[this.past.length - 1]);
  }

  /** @returns {Settings} */
  redo() {
    const next = this.future.pop();
    if (next) this.past.push(next);
    return copyOf(this.past[this.past.length - 1]);
  }
}
