// encode.js: the result in the picture's own size, as a file, by the browser's own writers.

import {withMetadata} from './metadata.js';
import {PictureError} from './decode.js';

const rowsAtOnce = 256;

/**
 * @typedef {object} Format
 * @property {string} type as browsers name it
 * @property {string} name for people
 * @property {string} extension
 * @property {boolean} hasQuality
 */

/** @type {Format[]} */
export const formats = [
  {type: 'image/jpeg', name: 'JPEG', extension: 'jpg', hasQuality: true},
  {type: 'image/png', name: 'PNG', extension: 'png', hasQuality: false},
  {type: 'image/webp', name: 'WebP', extension: 'webp', hasQuality: true},
];

/**
 * The engine's look, which is weighed for the picture's own size.
 * @param {import('./engine.js').Engine} engine
 * @param {PredefinedColorSpace} colorSpace
 * @param {{type: string, quality: number}} as
 * @param {(done: number) => void} tell
 * @returns {Promise<Blob>}
 */
export async function encode(engine, colorSpace, {type, quality}, tell) {
  const {width, height} = engine;
  const canvas = new OffscreenCanvas(width, height);
  const context = canvas.getContext('2d', {willReadFrequently: true, colorSpace});
  if (!context) throw new PictureError('this browser can’t write a picture that large; orbel can');
  const stripRows = Math.min(rowsAtOnce, height);
  // Firefox knows colour spaces only where it is given the pixels.
  const strip = new ImageData(new Uint8ClampedArray(width * stripRows * 4), width, stripRows, {colorSpace});
  for (let row = 0; row < height; row += rowsAtOnce) {
    const rows = Math.min(rowsAtOnce, height - row);
    strip.data.set(engine.drawRows(row, rows));
    context.putImageData(strip, 0, row, 0, 0, width, rows);
    tell((row + rows) / height);
  }
  let blob;
  try {
    blob = await canvas.convertToBlob({type, quality});
  } catch {
    throw new PictureError('this browser can’t write a picture that large; orbel can');
  }
  if (blob.type !== type) throw new PictureError(`this browser writes no ${type.replace('image/', '')}`);
  return blob;
}

/**
 * With the original's metadata, and sentences about what of it was left out.
 * @param {Blob} blob a JPEG
 * @param {any} file what readPictureFile says of the original
 * @param {{width: number, height: number, colours: 'srgb' | 'display-p3'}} result
 */
export async function withOriginalsMetadata(blob, file, result) {
  const {jpeg, left} = withMetadata(new Uint8Array(await blob.arrayBuffer()), file, result);
  return {blob: new Blob([jpeg], {type: blob.type}), left};
}
