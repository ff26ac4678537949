// geometry.js: which part of a picture a window shows, and where on it a part lies. No pixels and no events.

/** @typedef {import('./studio.js').View} View */
/** @typedef {{width: number, height: number}} Size */
/** @typedef {{x: number, y: number}} Point */

export const mostZoom = 32;

/** What the window shows: so many of its pixels for one of the picture's, around a point of the picture. */
export class Geometry {
  constructor() {
    /** @type {Size} */
    this.picture = {width: 1, height: 1};
    /** @type {Size} of the window, in its own pixels */
    this.window = {width: 1, height: 1};
    this.density = 1; // of the screen, by which a picture may be enlarged to fit
    this.zoom = 1;
    /** @type {Point} */
    this.centre = {x: 0.5, y: 0.5};
    this.isFitted = true;
  }

  fittingZoom() {
    return Math.min(this.density, this.window.width / this.picture.width, this.window.height / this.picture.height);
  }

  fit() {
    this.isFitted = true;
    this.zoom = this.fittingZoom();
    this.centre = {x: this.picture.width / 2, y: this.picture.height / 2};
  }

  /** @param {Size} size */
  resize(size) {
    this.window = size;
    if (this.isFitted) this.fit();
    else this.keepInside();
  }

  /** The picture's point under a point of the window stays there. @type {(zoom: number, at?: Point) => void} */
  zoomTo(zoom, at = {x: this.window.width / 2, y: this.window.height / 2}) {
    const under = this.pointAt(at);
    const least = Math.min(this.fittingZoom(), 1);
    this.zoom = Math.min(mostZoom, Math.max(least, zoom));
    this.isFitted = this.zoom === least && least < 1;
    this.centre = {
      x: under.x - (at.x - this.window.width / 2) / this.zoom,
      y: under.y - (at.y - this.window.height / 2) / this.zoom,
    };
    this.keepInside();
  }

  /** By pixels of the window. @type {(dx: number, dy: number) => void} */
  move(dx, dy) {
    this.centre = {x: this.centre.x - dx / this.zoom, y: this.centre.y - dy / this.zoom};
    this.keepInside();
  }

  // No more surround than there must be.
  keepInside() {
    /** @type {(centre: number, length: number, shown: number) => number} */
    const inside = (centre, length, shown) =>
      shown >= length ? length / 2 : Math.min(length - shown / 2, Math.max(shown / 2, centre));
    const {picture, window, zoom} = this;
    this.centre = {
      x: inside(this.centre.x, picture.width, window.width / zoom),
      y: inside(this.centre.y, picture.height, window.height / zoom),
    };
  }

  /** Of the picture. @type {(at: Point) => Point} */
  pointAt(at) {
    return {
      x: this.centre.x + (at.x - this.window.width / 2) / this.zoom,
      y: this.centre.y + (at.y - this.window.height / 2) / this.zoom,
    };
  }

  /** The size in which the whole picture is drawn: enlarging is the canvas's business. @returns {Size} */
  size() {
    const {picture} = this;
    const scale = Math.min(1, this.zoom);
    return {
      width: Math.max(1, Math.round(picture.width * scale)),
      height: Math.max(1, Math.round(picture.height * scale)),
    };
  }

  /** What the window shows of it. @returns {View} */
  view() {
    const {picture, window} = this;
    const size = this.size();
    const from = this.pointAt({x: 0, y: 0});
    const to = this.pointAt({x: window.width, y: window.height});
    /** @type {(value: number, scale: number, most: number, round: (v: number) => number) => number} */
    const at = (value, scale, most, round) => Math.min(most, Math.max(0, round(value * scale)));
    const across = size.width / picture.width;
    const down = size.height / picture.height;
    const x = at(from.x, across, size.width - 1, Math.floor);
    const y = at(from.y, down, size.height - 1, Math.floor);
    return {
      ...size,
      part: {
        x, y,
        width: Math.max(1, at(to.x, across, size.width, Math.ceil) - x),
        height: Math.max(1, at(to.y, down, size.height, Math.ceil) - y),
      },
    };
  }

  /** Where the window shows a view's part; to whole pixels where it is drawn in the window's own. @param {View} view */
  place({width, height, part}) {
    const {picture, window, zoom, centre} = this;
    const size = this.size();
    const isNow = size.width === width && size.height === height;
    const across = isNow ? Math.max(1, zoom) : (picture.width / width) * zoom;
    const down = isNow ? Math.max(1, zoom) : (picture.height / height) * zoom;
    const x = window.width / 2 - (centre.x * width / picture.width - part.x) * across;
    const y = window.height / 2 - (centre.y * height / picture.height - part.y) * down;
    return {
      x: isNow ? Math.round(x) : x, y: isNow ? Math.round(y) : y, width: part.width * across, height: part.height * down,
    };
  }
}
