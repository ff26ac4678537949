// elements.js: elements of the page, made and found.

/**
 * @template {keyof HTMLElementTagNameMap} Name
 * @param {Name} name
 * @param {Record<string, string | number | boolean>} [attributes] true: there, without a value; false: left out
 * @param {(Node | string)[]} [children]
 * @returns {HTMLElementTagNameMap[Name]}
 */
export function make(name, attributes = {}, children = []) {
  const element = document.createElement(name);
  for (const [key, value] of Object.entries(attributes)) {
    if (value !== false) element.setAttribute(key, value === true ? '' : String(value));
  }
  element.append(...children);
  return element;
}

/**
 * @template {keyof HTMLElementTagNameMap} Name
 * @param {Name} name what kind of element has this id
 * @param {string} id
 * @returns {HTMLElementTagNameMap[Name]}
 */
export function find(name, id) {
  const element = document.getElementById(id);
  if (element?.localName !== name) throw new Error(`the page has no ${name} ${id}`);
  return /** @type {HTMLElementTagNameMap[Name]} */ (element);
}

/** @param {string} id */
export const button = (id) => find('button', id);

/** @type {(element: Element, isPressed: boolean) => void} */
export const press = (element, isPressed) => element.setAttribute('aria-pressed', String(isPressed));

/** Hands a file to the person at the browser. @type {(blob: Blob, name: string) => void} */
export function download(blob, name) {
  const address = URL.createObjectURL(blob);
  make('a', {href: address, download: name}).click();
  setTimeout(() => URL.revokeObjectURL(address), 60000);
}
