// studio.js: what the page's worker does: opens a picture, draws parts of it under settings, and writes it out.
//
// A picture is taken apart once for its radii, thresholds, edges, form and planes; faders weigh anew.

import {decode, readPixels, PictureError} from './decode.js';
import {encode, withOriginalsMetadata} from './encode.js';
import {Engine} from './engine.js';
import {readPictureFile} from './picture_file.js';
import {sameMember, sameSettings} from './settings.js';

/** @typedef {import('./settings.js').Settings} Settings */
/** @typedef {import('./engine.js').Part} Part */

/**
 * A part of the whole picture in a size.
 * @typedef {{width: number, height: number, part: Part}} View
 */

/**
 * What is to be drawn. grey: of luminance alone. clipping: mark what is black or white. needsBefore: whoever wishes
 * doesn't have this part of the original.
 * @typedef {{settings: Settings, view: View, grey: boolean, clipping: boolean, needsBefore: boolean}} Wish
 */

/** @type {(keyof Settings)[]} */
const shape = ['radius', 'threshold', 'edges', 'luminance', 'referenceEdge', 'form'];

const longestSmall = 1024;
const mostPixels = 2 ** 29 - 2 ** 20; // four bytes each, in half of what a module can address

/** @type {(a: View, b: View) => boolean} */
const sameView = (a, b) => a.width === b.width && a.height === b.height && a.part.x === b.part.x &&
  a.part.y === b.part.y && a.part.width === b.part.width && a.part.height === b.part.height;

/** Pixels of grey. @type {(pixels: Uint8ClampedArray) => Uint8ClampedArray} */
function greyOf(pixels) {
  const grey = new Uint8ClampedArray(pixels);
  for (let i = 0; i < grey.length; i += 4) {
    grey[i] = grey[i + 1] = grey[i + 2] = 0.299 * grey[i] + 0.587 * grey[i + 1] + 0.114 * grey[i + 2];
  }
  return grey;
}

/** Marks white in red and black in blue, and gives their parts of the pixels. @param {Uint8ClampedArray} pixels */
function markClipped(pixels) {
  let white = 0;
  let black = 0;
  for (let i = 0; i < pixels.length; i += 4) {
    const r = pixels[i];
    const g = pixels[i + 1];
    const b = pixels[i + 2];
    if (r === 255 || g === 255 || b === 255) {
      pixels[i] = 255;
      pixels[i + 1] = pixels[i + 2] = 0;
      ++white;
    } else if (r === 0 || g === 0 || b === 0) {
      pixels[i] = pixels[i + 1] = 0;
      pixels[i + 2] = 255;
      ++black;
    }
  }
  const all = pixels.length / 4;
  return {white: white / all, black: black / all};
}

export class Studio {
  /** @param {Engine} engine */
  constructor(engine) {
    this.engine = engine;
    /** @type {PredefinedColorSpace} */
    this.colorSpace = 'srgb';
    /** @type {any} */
    this.file = null;
    this.forget();
  }

  forget() {
    /** @type {Settings | null} */
    this.apart = null;
    /** @type {{settings: Settings, width: number, height: number} | null} */
    this.weighed = null;
    /** @type {View | null} */
    this.reduced = null;
  }

  /**
   * Throws, and keeps the picture that it has, where there is none in the file or no room for it.
   * @param {Blob} file
   */
  async open(file) {
    const known = await readPictureFile(new Uint8Array(await file.arrayBuffer()));
    const bitmap = await decode(file, known);
    try {
      const {width, height} = bitmap;
      if (width * height > mostPixels) throw new PictureError('it is too large for a browser; orbel takes it');
      const colorSpace = known.colours === 'display-p3' ? 'display-p3' : 'srgb';
      this.forget(); // of the picture that it has, the pixels are kept till these are there
      let isOpaque = true;
      await this.engine.hold(width, height, async (put) => {
        isOpaque = readPixels(bitmap, colorSpace, put);
        return isOpaque;
      });
      this.file = known;
      this.colorSpace = colorSpace;
      return {width, height, isOpaque, colorSpace, file: known};
    } finally {
      bitmap.close();
    }
  }

  /** Another studio's small picture. @type {(width: number, height: number, pixels: Uint8ClampedArray) => Promise<void>} */
  async take(width, height, pixels) {
    this.forget();
    await this.engine.hold(width, height, async (put) => {
      put(0, pixels);
      return false;
    });
  }

  /** The picture, at most so large that a preset's look at it takes no time. */
  small() {
    const {width, height} = this.engine;
    const scale = Math.min(1, longestSmall / Math.max(width, height));
    const size = {width: Math.max(1, Math.round(width * scale)), height: Math.max(1, Math.round(height * scale))};
    this.reduced = null;
    return {...size, pixels: new Uint8ClampedArray(this.engine.reducePart(size.width, size.height, {x: 0, y: 0, ...size}))};
  }

  /** Without a reference edge, radii are those of this picture: which is its own longer edge for one. @param {Settings} settings */
  meant(settings) {
    const {width, height} = this.engine;
    return {...settings, referenceEdge: settings.referenceEdge || Math.min(32767, Math.max(width, height))};
  }

  /** @param {Settings} asked */
  takeApart(asked) {
    const settings = this.meant(asked);
    const {apart} = this;
    if (apart && shape.every((name) => sameMember(apart, settings, name))) return settings;
    this.apart = this.weighed = null;
    this.engine.takeApart(settings);
    this.apart = settings;
    return settings;
  }

  /** @type {(asked: Settings, width: number, height: number) => void} */
  weigh(asked, width, height) {
    const settings = this.takeApart(asked);
    const {weighed} = this;
    if (weighed && weighed.width === width && weighed.height === height && sameSettings(weighed.settings, settings)) return;
    this.weighed = null;
    this.engine.weigh(settings, width, height);
    this.weighed = {settings, width, height};
  }

  /**
   * The part as it was, where that is new, and as it becomes.
   * @param {Wish} wish
   */
  draw({settings, view, grey, clipping, needsBefore}) {
    const {width, height, part} = view;
    const isNew = needsBefore || !this.reduced || !sameView(this.reduced, view);
    if (isNew) {
      this.reduced = null;
      this.engine.reducePart(width, height, part);
      this.reduced = view;
    }
    this.weigh(settings, width, height);
    const length = part.width * part.height * 4;
    const before = () => this.engine.bytes(this.engine.before.at, length);
    const after = new Uint8ClampedArray(this.engine.drawPart(part, grey ? greyOf(before()) : undefined));
    const clipped = clipping ? markClipped(after) : null;
    return {before: isNew ? new Uint8ClampedArray(before()) : null, after, clipped};
  }

  /** @param {Settings} settings */
  strengths(settings) {
    this.takeApart(settings);
    return this.engine.strengths(settings.luminance);
  }

  /**
   * @param {Settings} settings
   * @param {{type: string, quality: number}} as
   * @param {(done: number) => void} tell
   */
  async save(settings, as, tell) {
    const {width, height} = this.engine;
    this.weigh(settings, width, height);
    const blob = await encode(this.engine, this.colorSpace, as, tell);
    if (as.type !== 'image/jpeg') return {blob, left: []};
    const colours = this.colorSpace === 'display-p3' ? 'display-p3' : 'srgb';
    return withOriginalsMetadata(blob, this.file, {width, height, colours});
  }
}
