// engine.js: the engine's WebAssembly module, as an object: one picture, taken apart once, and its current look.
//
// engine.c has what the calls do. Pixels are red, green, blue and alpha, a byte each.

import {memberNames, members, forms, valuesOf} from './settings.js';

/** @typedef {import('./settings.js').Settings} Settings */
/** @typedef {{x: number, y: number, width: number, height: number}} Part */

export class EngineError extends Error {}

const tooLarge = 'there is not enough memory for it in this browser';
const noMemory = 5; // ORBEL_NO_MEMORY

// As engine.c reads them.
const order = ['gain', 'radius', 'threshold', 'edges', 'residual', 'mix', 'half', 'luminance', 'overlay',
  'referenceEdge', 'form', 'limit'];
if (order.length !== memberNames.length) throw new Error('engine.c knows other settings');
const valueCount = order.reduce((sum, name) => sum + (members[/** @type {keyof Settings} */ (name)].bands ? 5 : 1), 0);

/** @type {(settings: Settings) => number[]} */
function numbersOf(settings) {
  return order.flatMap((name) => valuesOf(settings, /** @type {keyof Settings} */ (name)))
    .map((value) => (typeof value === 'string' ? forms.indexOf(value) : Number(value)));
}

/** A block of the module's memory, that is asked for again only where it must grow. */
class Block {
  /** @param {any} calls */
  constructor(calls) {
    this.calls = calls;
    this.at = 0;
    this.size = 0;
  }

  /** @param {number} bytes */
  room(bytes) {
    if (bytes > this.size) {
      this.free();
      this.at = this.calls.malloc(bytes) >>> 0;
      if (this.at === 0) throw new EngineError(tooLarge);
      this.size = bytes;
    }
    return this.at;
  }

  free() {
    this.calls.free(this.at);
    this.at = this.size = 0;
  }
}

export class Engine {
  /** @param {BufferSource} code of the module */
  static async start(code) {
    const surroundings = {
      env: {emscripten_notify_memory_growth() {}},
      wasi_snapshot_preview1: {
        proc_exit() {
          throw new EngineError('the engine has stopped');
        },
      },
    };
    const {instance} = await WebAssembly.instantiate(code, surroundings);
    return new Engine(instance);
  }

  /** @param {WebAssembly.Instance} instance */
  constructor(instance) {
    this.calls = /** @type {any} */ (instance.exports);
    this.calls._initialize();
    this.values = this.calls.malloc(valueCount * 8);
    this.width = 0;
    this.height = 0;
    this.before = new Block(this.calls);
    this.after = new Block(this.calls);
    this.pixels = 0;
  }

  /** Of the module's memory: to be used at once, since it moves when memory grows. @type {(at: number, length: number) => Uint8ClampedArray} */
  bytes(at, length) {
    return new Uint8ClampedArray(this.calls.memory.buffer, at, length);
  }

  /** @param {number} status */
  require(status) {
    if (status === 0) return;
    if (status === noMemory) throw new EngineError(tooLarge);
    const memory = new Uint8Array(this.calls.memory.buffer);
    const from = this.calls.engine_message() >>> 0;
    throw new EngineError(new TextDecoder().decode(memory.slice(from, memory.indexOf(0, from))));
  }

  /**
   * Takes a picture in place of the one before, which stays where this fails. write gets a function that puts rows of
   * pixels at a row, and tells whether all of them were opaque.
   * @param {number} width
   * @param {number} height
   * @param {(put: (row: number, pixels: Uint8ClampedArray) => void) => Promise<boolean>} write
   */
  async hold(width, height, write) {
    this.calls.engine_forget();
    this.before.free();
    this.after.free();
    const at = this.calls.malloc(width * height * 4) >>> 0;
    if (at === 0) throw new EngineError(tooLarge);
    let isOpaque;
    try {
      isOpaque = await write((row, pixels) => this.bytes(at + row * width * 4, pixels.length).set(pixels));
    } catch (error) {
      this.calls.free(at);
      throw error;
    }
    this.calls.engine_hold(at, width, height, isOpaque ? 3 : 4);
    this.pixels = at;
    this.width = width;
    this.height = height;
  }

  /** @param {Settings} settings */
  put(settings) {
    new Float64Array(this.calls.memory.buffer, this.values, valueCount).set(numbersOf(settings));
    return this.values;
  }

  /** @param {Settings} settings */
  takeApart(settings) {
    this.require(this.calls.engine_take_apart(this.put(settings)));
  }

  /** The look of the picture in this size. @type {(settings: Settings, width: number, height: number) => void} */
  weigh(settings, width, height) {
    this.require(this.calls.engine_weigh(this.put(settings), width, height));
  }

  /**
   * A part of the picture in this size becomes the source of drawPart.
   * @type {(width: number, height: number, part: Part) => Uint8ClampedArray}
   */
  reducePart(width, height, part) {
    const length = part.width * part.height * 4;
    const to = this.before.room(length);
    this.bytes(to, length).fill(255);
    this.require(this.calls.engine_reduce(width, height, part.x, part.y, to, part.width, part.height));
    return this.bytes(to, length);
  }

  /** Its look. source: other pixels in their place. @type {(part: Part, source?: Uint8ClampedArray) => Uint8ClampedArray} */
  drawPart(part, source) {
    const length = part.width * part.height * 4;
    const to = this.after.room(length);
    if (source) this.bytes(to, length).set(source);
    else this.bytes(to, length).fill(255);
    const from = source ? to : this.before.at;
    this.require(this.calls.engine_draw(part.x, part.y, from, to, part.width, part.height));
    return this.bytes(to, length);
  }

  /** Rows of the look in the picture's own size. @type {(row: number, rows: number) => Uint8ClampedArray} */
  drawRows(row, rows) {
    const length = this.width * rows * 4;
    const to = this.after.room(length);
    this.bytes(to, length).fill(255);
    const from = this.pixels + row * this.width * 4;
    this.require(this.calls.engine_draw(0, row, from, to, this.width, rows));
    return this.bytes(to, length);
  }

  /** Of the five bands, in levels of 255: the root mean square. @type {(luminance: boolean) => number[]} */
  strengths(luminance) {
    const to = this.calls.malloc(5 * 8);
    try {
      this.require(this.calls.engine_strengths(to, luminance ? 1 : 3));
      return [...new Float64Array(this.calls.memory.buffer, to, 5)];
    } finally {
      this.calls.free(to);
    }
  }
}
