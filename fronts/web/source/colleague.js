// colleague.js: a worker with an engine of its own, as the page sees it.

/** What a worker couldn't do; the message is for people. */
export class Refused extends Error {}

export class Colleague {
  /**
   * @param {string} source of the worker
   * @param {ArrayBuffer} code of the engine
   * @param {(message: any) => void} hear what it says beside its answers
   */
  constructor(source, code, hear) {
    this.worker = new Worker(URL.createObjectURL(new Blob([source], {type: 'text/javascript'})));
    /** @type {Map<number, {resolve: (result: any) => void, reject: (error: Error) => void}>} */
    this.waiting = new Map();
    this.count = 0;
    this.worker.onmessage = ({data}) => {
      if (data.type !== 'answer') return hear(data);
      const asked = this.waiting.get(data.id);
      this.waiting.delete(data.id);
      if (data.reason === undefined) asked?.resolve(data.result);
      else asked?.reject(new Refused(data.reason));
    };
    this.worker.onerror = (event) => {
      const error = new Refused(`the engine can’t run here${event.message ? `: ${event.message}` : ''}`);
      for (const asked of this.waiting.values()) asked.reject(error);
      this.waiting.clear();
      hear({type: 'failed', id: -1, reason: error.message});
    };
    this.started = this.ask('start', {code});
    this.started.catch(() => {}); // whoever asks next is told
  }

  /** @type {(type: string, request: object, transfer?: Transferable[]) => Promise<any>} */
  ask(type, request, transfer = []) {
    const id = ++this.count;
    return new Promise((resolve, reject) => {
      this.waiting.set(id, {resolve, reject});
      this.worker.postMessage({type, id, ...request}, transfer);
    });
  }

  /** Wishes have no answer: of several, the last one is drawn. @type {(id: number, wish: object) => void} */
  draw(id, wish) {
    this.worker.postMessage({type: 'draw', id, wish});
  }
}
