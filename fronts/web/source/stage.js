// stage.js: the canvas with the picture: paints what has been drawn, and moves, zooms and compares by pointer and key.

import {Geometry} from './geometry.js';

/** @typedef {import('./studio.js').View} View */
/** @typedef {{view: View, canvas: HTMLCanvasElement}} Layer */

const reach = 14; // of the divider, for a pointer

/** @param {View} view */
const isWhole = ({width, height, part}) => part.width === width && part.height === height;

/** @type {(layer: Layer | null, view: View, pixels: Uint8ClampedArray, colorSpace: PredefinedColorSpace) => Layer} */
function layerOf(layer, view, pixels, colorSpace) {
  const canvas = layer ? layer.canvas : document.createElement('canvas');
  const {width, height} = view.part;
  if (canvas.width !== width) canvas.width = width;
  if (canvas.height !== height) canvas.height = height;
  const context = canvas.getContext('2d', {colorSpace});
  context?.putImageData(new ImageData(pixels, width, height, {colorSpace}), 0, 0);
  return {view, canvas};
}

export class Stage {
  /**
   * @param {HTMLCanvasElement} canvas
   * @param {{moved: () => void, divided: () => void, lost: () => void}} tell moved: another part is to be drawn
   */
  constructor(canvas, tell) {
    this.canvas = canvas;
    this.tell = tell;
    this.geometry = new Geometry();
    this.hasPicture = false;
    this.showsBefore = false;
    /** @type {number | null} of the window's width: before is left of it */
    this.divider = null;
    this.isPlanned = false;
    /** @type {PredefinedColorSpace} */
    this.colorSpace = 'srgb';
    /** whole: the last one with all of it, behind a part that moves @type {{before: Layer | null, after: Layer | null, whole: Layer | null}} */
    this.layers = {before: null, after: null, whole: null};
    this.sizes = new ResizeObserver(() => this.resize());
    this.listen();
  }

  /** @param {PredefinedColorSpace} colorSpace */
  forget(colorSpace) {
    this.colorSpace = colorSpace;
    this.layers = {before: null, after: null, whole: null};
  }

  /** @type {(width: number, height: number, colorSpace: PredefinedColorSpace) => void} */
  show(width, height, colorSpace) {
    if (colorSpace !== this.colorSpace) { // a canvas has one for life
      const fresh = /** @type {HTMLCanvasElement} */ (this.canvas.cloneNode());
      this.canvas.replaceWith(fresh);
      this.canvas = fresh;
      this.listen();
    }
    this.forget(colorSpace);
    this.canvas.hidden = false;
    this.hasPicture = true;
    this.geometry.picture = {width, height};
    this.measure();
    this.geometry.fit();
    this.moved();
  }

  measure() {
    const box = this.canvas.getBoundingClientRect();
    const scale = devicePixelRatio;
    const width = Math.max(1, Math.round(box.width * scale));
    const height = Math.max(1, Math.round(box.height * scale));
    if (this.canvas.width !== width) this.canvas.width = width;
    if (this.canvas.height !== height) this.canvas.height = height;
    this.geometry.density = scale;
    this.geometry.resize({width, height});
  }

  resize() {
    if (!this.hasPicture) return;
    this.measure();
    this.paintNow(); // a canvas is empty after a change of its size
    this.tell.moved();
  }

  moved() {
    this.paint();
    this.tell.moved();
  }

  /** What the worker has drawn. @param {{view: View, before: Uint8ClampedArray | null, after: Uint8ClampedArray}} drawn */
  take({view, before, after}) {
    const {layers, colorSpace} = this;
    if (before) layers.before = layerOf(layers.before, view, before, colorSpace);
    if (isWhole(view)) {
      layers.whole = null;
    } else if (layers.after && isWhole(layers.after.view)) {
      layers.whole = layers.after;
      layers.after = null;
    }
    layers.after = layerOf(layers.after, view, after, colorSpace);
    this.paintNow();
  }

  paint() {
    if (this.isPlanned) return;
    this.isPlanned = true;
    requestAnimationFrame(() => this.paintNow());
  }

  paintNow() {
    this.isPlanned = false;
    const context = this.canvas.getContext('2d', {colorSpace: this.colorSpace, alpha: true});
    if (!context) return;
    const {width, height} = this.canvas;
    context.clearRect(0, 0, width, height);
    context.imageSmoothingQuality = 'high';
    context.imageSmoothingEnabled = this.geometry.zoom < 3;
    const {before, after, whole} = this.layers;
    this.put(context, whole);
    const shown = this.showsBefore ? before : after;
    this.put(context, shown);
    if (this.divider === null || this.showsBefore) return;
    const x = Math.round(this.divider * width);
    context.save();
    context.beginPath();
    context.rect(0, 0, x, height);
    context.clip();
    this.put(context, before);
    context.restore();
    context.fillStyle = '#000';
    context.fillRect(x - 2, 0, 4, height);
    context.fillStyle = '#fff';
    context.fillRect(x - 1, 0, 2, height);
  }

  /** @type {(context: CanvasRenderingContext2D, layer: Layer | null) => void} */
  put(context, layer) {
    if (!layer) return;
    const {x, y, width, height} = this.geometry.place(layer.view);
    context.clearRect(x, y, width, height); // what is transparent shows the surround
    context.drawImage(layer.canvas, x, y, width, height);
  }

  /** @param {number | null} divider */
  divide(divider) {
    this.divider = divider;
    this.paint();
  }

  /** @param {boolean} showsBefore */
  showBefore(showsBefore) {
    this.showsBefore = showsBefore;
    this.paint();
  }

  fit() {
    this.geometry.fit();
    this.moved();
  }

  /** @type {(zoom: number, at?: {x: number, y: number}) => void} */
  zoomTo(zoom, at) {
    this.geometry.zoomTo(zoom, at);
    this.moved();
  }

  /** @type {(dx: number, dy: number) => void} */
  move(dx, dy) {
    this.geometry.move(dx, dy);
    this.moved();
  }

  listen() {
    const {canvas} = this;
    this.sizes.disconnect();
    this.sizes.observe(canvas);
    canvas.addEventListener('contextlost', () => this.tell.lost());
    canvas.addEventListener('contextrestored', () => {
      this.forget(this.colorSpace);
      this.tell.moved();
    });
    /** @type {Map<number, {x: number, y: number}>} */
    const fingers = new Map();
    let divides = false;
    const at = (/** @type {MouseEvent} */ event) => {
      const box = canvas.getBoundingClientRect();
      return {x: (event.clientX - box.left) * devicePixelRatio, y: (event.clientY - box.top) * devicePixelRatio};
    };
    const isOnDivider = (/** @type {{x: number}} */ {x}) =>
      this.divider !== null && Math.abs(x - this.divider * canvas.width) < reach * devicePixelRatio;
    canvas.addEventListener('pointerdown', (event) => {
      if (event.button !== 0) return;
      canvas.setPointerCapture(event.pointerId);
      divides = fingers.size === 0 && isOnDivider(at(event));
      fingers.set(event.pointerId, at(event));
    });
    canvas.addEventListener('pointermove', (event) => {
      const to = at(event);
      const from = fingers.get(event.pointerId);
      canvas.classList.toggle('sliding', divides || isOnDivider(to));
      if (!from) return;
      if (divides) {
        this.divide(Math.min(1, Math.max(0, to.x / canvas.width)));
        this.tell.divided();
      } else if (fingers.size === 1) {
        this.move(to.x - from.x, to.y - from.y);
      } else {
        const other = [...fingers].find(([id]) => id !== event.pointerId)?.[1] ?? from;
        const far = (/** @type {{x: number, y: number}} */ p) => Math.hypot(p.x - other.x, p.y - other.y);
        this.geometry.move((to.x - from.x) / 2, (to.y - from.y) / 2);
        this.zoomTo(this.geometry.zoom * far(to) / Math.max(1, far(from)), {x: (to.x + other.x) / 2, y: (to.y + other.y) / 2});
      }
      fingers.set(event.pointerId, to);
    });
    for (const end of ['pointerup', 'pointercancel']) {
      canvas.addEventListener(end, (event) => {
        fingers.delete(/** @type {PointerEvent} */ (event).pointerId);
        divides = false;
      });
    }
    canvas.addEventListener('wheel', (event) => {
      event.preventDefault();
      const lines = event.deltaMode === 1 ? 16 : 1;
      this.zoomTo(this.geometry.zoom * Math.exp(-event.deltaY * lines * (event.ctrlKey ? 0.01 : 0.002)), at(event));
    }, {passive: false});
    canvas.addEventListener('dblclick', (event) => {
      if (this.geometry.zoom < 1) this.zoomTo(1, at(event));
      else this.fit();
    });
    canvas.addEventListener('keydown', (event) => {
      const step = 64 * devicePixelRatio;
      /** @type {Record<string, [number, number]>} */
      const steps = {ArrowLeft: [step, 0], ArrowRight: [-step, 0], ArrowUp: [0, step], ArrowDown: [0, -step]};
      const by = steps[event.key];
      if (!by) return;
      event.preventDefault();
      this.move(...by);
    });
  }
}
