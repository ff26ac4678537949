// decode.js: a picture file's pixels, by the browser's own readers, upright and in sRGB or Display P3.

const rowsAtOnce = 256;
const large = 1e8; // pixels that a sound file may fail with

export class PictureError extends Error {}

/**
 * A bitmap of the file. Throws PictureError for what the browser can't read.
 * @param {Blob} file
 * @param {{format: string, width: number, height: number}} known what it says of itself
 */
export async function decode(file, {format, width, height}) {
  try {
    return await createImageBitmap(file, {premultiplyAlpha: 'none'});
  } catch {
    if (format === 'tiff' || format === 'heic') throw new PictureError(`this browser reads no ${format.toUpperCase()}; orbel does`);
    if (width * height > large) throw new PictureError(`its ${width} × ${height} pixels are too many for this browser; orbel takes them`);
    throw new PictureError('this browser reads no picture in it');
  }
}

/**
 * Hands the bitmap's pixels over, some rows at a time, and tells whether all of them were opaque: canvases keep colours
 * multiplied by alpha, so that elsewhere colours may lose a level or more.
 * @param {ImageBitmap} bitmap
 * @param {PredefinedColorSpace} colorSpace
 * @param {(row: number, pixels: Uint8ClampedArray) => void} put
 */
export function readPixels(bitmap, colorSpace, put) {
  const {width, height} = bitmap;
  const canvas = new OffscreenCanvas(width, Math.min(rowsAtOnce, height));
  const context = canvas.getContext('2d', {willReadFrequently: true, colorSpace});
  if (!context) throw new PictureError('this browser has no canvas for it');
  context.globalCompositeOperation = 'copy';
  let isOpaque = true;
  for (let row = 0; row < height; row += rowsAtOnce) {
    const rows = Math.min(rowsAtOnce, height - row);
    context.drawImage(bitmap, 0, row, width, rows, 0, 0, width, rows);
    const {data} = context.getImageData(0, 0, width, rows, {colorSpace});
    for (let i = 3; isOpaque && i < data.length; i += 4) isOpaque = data[i] === 255;
    put(row, data);
  }
  return isOpaque;
}
