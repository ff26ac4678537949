// worker.js: the thread beside the page, on which the engine works. Of wishes to draw only the last one counts.

import {Engine} from './engine.js';
import {Studio} from './studio.js';

const scope = /** @type {any} */ (self);

/** @type {Studio} */
let studio;
/** @type {any} */
let wanted = null;

/** @type {(message: any, transfer?: Transferable[]) => void} */
const say = (message, transfer = []) => scope.postMessage(message, transfer);

/** @type {Record<string, (request: any) => any>} what each request gives; buffers beside it go over without a copy */
const answers = {
  async start({code}) {
    studio = new Studio(await Engine.start(code));
    return {};
  },
  open: async ({file}) => ({result: await studio.open(file)}),
  take: async ({width, height, pixels}) => ({result: await studio.take(width, height, pixels)}),
  small() {
    const result = studio.small();
    return {result, transfer: [result.pixels.buffer]};
  },
  look({wish}) {
    const {after} = studio.draw(wish);
    return {result: after, transfer: [after.buffer]};
  },
  strengths: ({settings}) => ({result: studio.strengths(settings)}),
  save: async ({settings, as}) => ({result: await studio.save(settings, as, (done) => say({type: 'progress', done}))}),
};

function draw() {
  const {wish, id} = wanted;
  wanted = null;
  try {
    const drawn = studio.draw(wish);
    const transfer = drawn.before ? [drawn.before.buffer, drawn.after.buffer] : [drawn.after.buffer];
    say({type: 'drawn', id, view: wish.view, ...drawn}, transfer);
  } catch (error) {
    say({type: 'failed', id, reason: String(/** @type {Error} */ (error).message)});
  }
}

// One after another: what is asked for while a file opens waits.
let last = Promise.resolve();

scope.onmessage = (/** @type {MessageEvent} */ {data}) => {
  if (data.type === 'draw') {
    const isFirst = !wanted;
    wanted = data;
    // After the messages that have come meanwhile.
    if (isFirst) last = last.then(() => new Promise((resolve) => setTimeout(resolve))).then(draw);
    return;
  }
  last = last.then(async () => {
    try {
      const {result, transfer} = await answers[data.type](data);
      say({type: 'answer', id: data.id, result}, transfer);
    } catch (error) {
      say({type: 'answer', id: data.id, reason: String(/** @type {Error} */ (error).message)});
    }
  });
};
