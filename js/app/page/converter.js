// The page's side of the worker: calls that answer with promises.

// What the worker complains of.
class ConversionError extends Error {
  name = "ConversionError";
}

/** A worker with one file of points. */
export class Converter {
  #worker = new Worker(new URL("worker.js", import.meta.url), { type: "module" });
  #waiting = new Map();
  #next = 0;
  #ready;
  constructor() {
    this.#ready = new Promise((resolve, reject) => {
      this.#worker.onerror = (event) => reject(new ConversionError(event.message || "the converter did not start"));
      this.#worker.onmessage = ({ data }) => (data.ready ? resolve() : this.#answer(data));
    });
  }
  #answer({ id, result, error }) {
    const { resolve, reject } = this.#waiting.get(id);
    this.#waiting.delete(id);
    if (error === undefined) resolve(result);
    else reject(new ConversionError(error));
  }
  /** `call` is "open", "use", "convert", "rows" or "write" with what it needs. */
  async ask(call, given) {
    await this.#ready;
    return new Promise((resolve, reject) => {
      const id = ++this.#next;
      this.#waiting.set(id, { resolve, reject });
      this.#worker.postMessage({ id, call, ...given });
    });
  }
}
