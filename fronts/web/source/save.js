// save.js: the dialog that writes the picture and the settings.

import {commandLine} from './command_line.js';
import {button, download, find, make} from './elements.js';
import {formats} from './encode.js';
import {photoshopScript} from './photoshop_script.js';
import {settingsText} from './settings_file.js';

/** @typedef {import('./settings.js').Settings} Settings */

/** Without its extension. @param {string} name */
const stemOf = (name) => name.replace(/\.[^.]*$/, '') || name;

/**
 * What the page can't keep of a file, in sentences.
 * @param {{isOpaque: boolean, file: import('./picture_file.js').PictureFile}} opened
 */
export function whatIsLost({isOpaque, file}) {
  const {bits, colours, profileName, frames, model, iptc} = file;
  return [
    bits > 8 && `It has ${bits} bits; the page shows and saves 8.`,
    colours === 'other' && `Its colours${profileName ? ` (${profileName})` : ''} become sRGB.`,
    model === 'cmyk' && 'Its four inks become three colours.',
    model === 'grey' && 'Its grey becomes three equal colours.',
    frames > 1 && 'Of its frames the first one is taken.',
    !isOpaque && 'Where it is transparent, colours may come back a little different.',
    iptc && 'Its IPTC block isn’t carried over.',
  ].filter((sentence) => typeof sentence === 'string');
}

export class SaveDialog {
  /**
   * @param {{settings: () => Settings, picture: () => any, write: (as: {type: string, quality: number}) => Promise<any>,
   *   busy: (isBusy: boolean) => void}} page
   */
  constructor(page) {
    this.page = page;
    this.isWriting = false;
    this.dialog = find('dialog', 'save-dialog');
    this.format = find('select', 'format');
    this.quality = find('input', 'quality');
    this.progress = find('progress', 'progress');
    this.result = find('p', 'save-result');
    this.format.append(...formats.map(({type, name}) => make('option', {value: type}, [name])));
    this.format.addEventListener('change', () => this.refresh());
    find('form', 'save-form').addEventListener('submit', (event) => {
      event.preventDefault();
      this.savePicture();
    });
    button('save-close').addEventListener('click', () => this.dialog.close());
    this.dialog.addEventListener('cancel', (event) => this.isWriting && event.preventDefault());
    button('save-toml').addEventListener('click', () => this.saveText('toml', () => settingsText(page.settings(), '')));
    button('save-script').addEventListener('click', () => this.saveText('jsx', () => photoshopScript(page.settings())));
    button('copy-command').addEventListener('click', () => this.copyCommand());
  }

  chosenFormat() {
    return formats.find(({type}) => type === this.format.value) ?? formats[0];
  }

  open() {
    const {file} = this.page.picture();
    this.format.value = (formats.find(({type}) => type === `image/${file.format}`) ?? formats[0]).type;
    this.result.textContent = '';
    this.refresh();
    this.dialog.showModal();
  }

  refresh() {
    const picture = this.page.picture();
    const {type, hasQuality} = this.chosenFormat();
    this.quality.disabled = !hasQuality;
    const {file} = picture;
    const lost = whatIsLost(picture);
    if (type === 'image/jpeg' && !picture.isOpaque) lost.push('A JPEG has no transparency: what is transparent becomes black.');
    if (type !== 'image/jpeg' && (file.exif || file.xmp)) lost.push('EXIF and XMP go into JPEGs alone.');
    const kept = type === 'image/jpeg' && (file.exif || file.xmp) ? 'EXIF and XMP are carried over. ' : '';
    find('p', 'save-notes').textContent = kept + (lost.length > 0 ? `${lost.join(' ')} The program orbel keeps all of it.` : '');
    find('textarea', 'command').value = commandLine(this.page.settings(), picture.name);
  }

  async savePicture() {
    const {type, extension} = this.chosenFormat();
    const quality = Math.min(100, Math.max(1, this.quality.valueAsNumber || 95)) / 100;
    if (this.isWriting) return;
    this.write(true);
    this.result.textContent = '';
    try {
      const name = `${stemOf(this.page.picture().name)}_orbel.${extension}`;
      const {blob, left} = await this.page.write({type, quality});
      download(blob, name);
      const size = (blob.size / 1e6).toFixed(blob.size < 1e7 ? 1 : 0);
      this.result.textContent = [`Saved as ${name}, ${size} MB.`, ...left].join(' ');
    } catch (error) {
      this.result.textContent = `The picture wasn’t saved: ${/** @type {Error} */ (error).message}.`;
    }
    this.write(false);
  }

  /** While a picture is written the dialog stays. @param {boolean} is */
  write(is) {
    this.isWriting = is;
    this.progress.hidden = !is;
    this.progress.removeAttribute('value'); // till it is told
    for (const id of ['save-picture', 'save-close']) button(id).disabled = is;
    this.page.busy(is);
  }

  /** When all lines are there, the browser writes them, for as long as it takes. @param {number} done */
  tell(done) {
    if (done < 1) this.progress.value = done;
    else this.progress.removeAttribute('value');
  }

  /** @param {string} text */
  say(text) {
    this.result.textContent = text;
  }

  /** @type {(extension: string, text: () => string) => void} */
  saveText(extension, text) {
    try {
      const name = `${stemOf(this.page.picture().name)}.${extension}`;
      download(new Blob([text()], {type: 'text/plain'}), name);
      this.result.textContent = `Saved as ${name}.`;
    } catch (error) {
      this.result.textContent = `${/** @type {Error} */ (error).message}.`;
    }
  }

  async copyCommand() {
    const command = find('textarea', 'command');
    try {
      await navigator.clipboard.writeText(command.value);
      this.result.textContent = 'The command is in the clipboard.';
    } catch {
      command.select(); // pages from a file may not write to it
      this.result.textContent = 'The command is selected: copy it.';
    }
  }
}
