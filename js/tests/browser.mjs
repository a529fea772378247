// Chromium without a window, driven by its DevTools protocol over a pipe.
import { spawn, spawnSync } from "node:child_process";
import { mkdtempSync, rmSync } from "node:fs";
import { tmpdir } from "node:os";
import { join } from "node:path";

const kPatience = 60_000; // milliseconds, on a busy machine

export const chromium = ["chromium", "chromium-browser", "google-chrome"].find((name) => spawnSync("which", [name]).status === 0);

/** A browser with a profile of its own. */
export class Browser {
  #waiting = new Map();
  #next = 0;
  #profile = mkdtempSync(join(tmpdir(), "geomath-browser-"));
  #process;
  #heard = "";
  constructor() {
    this.#process = spawn(chromium, ["--headless=new", "--no-sandbox", "--disable-gpu", "--disable-quic", "--no-first-run",
      "--disable-background-networking", "--disable-component-update", "--disable-sync", "--lang=en-US",
      `--user-data-dir=${this.#profile}`, "--remote-debugging-pipe", "about:blank"],
    { stdio: ["ignore", "ignore", "ignore", "pipe", "pipe"] });
    this.#process.stdio[4].setEncoding("utf8").on("data", (text) => this.#hear(text));
  }
  #hear(text) {
    const messages = (this.#heard + text).split("\0");
    this.#heard = messages.pop();
    for (const { id, result, error } of messages.map((each) => JSON.parse(each))) {
      const waiting = this.#waiting.get(id);
      this.#waiting.delete(id);
      if (error) waiting?.reject(new Error(error.message));
      else waiting?.resolve(result);
    }
  }
  send(method, params = {}, sessionId) {
    const id = ++this.#next;
    this.#process.stdio[3].write(`${JSON.stringify({ id, method, params, sessionId })}\0`);
    return new Promise((resolve, reject) => this.#waiting.set(id, { resolve, reject }));
  }
  async page() {
    const { targetId } = await this.send("Target.createTarget", { url: "about:blank" });
    const { sessionId } = await this.send("Target.attachToTarget", { targetId, flatten: true });
    return new Page((method, params) => this.send(method, params, sessionId));
  }
  async close() {
    const ended = new Promise((resolve) => this.#process.once("exit", resolve));
    this.send("Browser.close").catch(() => {});
    await ended;
    rmSync(this.#profile, { recursive: true, force: true, maxRetries: 5 });
  }
}

class Page {
  constructor(send) {
    this.send = send;
  }
  async open(url) {
    await this.send("Page.enable");
    await this.send("Page.navigate", { url });
  }
  /** The value of an expression, awaited. */
  async value(expression) {
    const { result, exceptionDetails } = await this.send("Runtime.evaluate", { expression, awaitPromise: true, returnByValue: true });
    if (exceptionDetails) throw new Error(`${expression}: ${exceptionDetails.exception?.description ?? exceptionDetails.text}`);
    return result.value;
  }
  /** Waits until an expression is true. */
  async until(expression) {
    for (const end = Date.now() + kPatience; Date.now() < end;) {
      if (await this.value(expression).catch(() => false)) return;
      await new Promise((resolve) => setTimeout(resolve, 50));
    }
    const seen = await this.value("['message', 'status'].map((id) => document.getElementById(id)?.textContent).join(' | ')").catch(String);
    throw new Error(`never true: ${expression}; the page says: ${seen}`);
  }
  /** Files on the page as if a user had dropped them. */
  async drop(files, selector = "body") {
    const given = JSON.stringify(files.map(({ name, text, base64 }) => ({ name, text, base64 })));
    await this.value(`{
      const transfer = new DataTransfer();
      for (const { name, text, base64 } of ${given})
        transfer.items.add(new File([text ?? Uint8Array.from(atob(base64), (c) => c.charCodeAt(0))], name));
      document.querySelector("${selector}").dispatchEvent(new DragEvent("drop", { bubbles: true, cancelable: true, dataTransfer: transfer }));
    }`);
  }
  /** What the page hands over as a file when `press` is evaluated: [name, text]. */
  download(press) {
    return this.value(`new Promise((resolve) => {
      const click = HTMLAnchorElement.prototype.click;
      HTMLAnchorElement.prototype.click = function () {
        HTMLAnchorElement.prototype.click = click;
        resolve(window.handedOver.text().then((text) => [this.download, text]));
      };
      const make = URL.createObjectURL;
      URL.createObjectURL = (blob) => (window.handedOver = blob, URL.createObjectURL = make, make.call(URL, blob));
      ${press};
    })`);
  }
  async key(key) {
    const codes = { Tab: 9, Enter: 13, " ": 32, ArrowLeft: 37, ArrowUp: 38, ArrowRight: 39, ArrowDown: 40 };
    const event = { key, code: key === " " ? "Space" : key, windowsVirtualKeyCode: codes[key], text: { Enter: "\r", " ": " " }[key] };
    await this.send("Input.dispatchKeyEvent", { type: "keyDown", ...event });
    await this.send("Input.dispatchKeyEvent", { type: "keyUp", ...event });
  }
  type(text) {
    return this.send("Input.insertText", { text });
  }
  async mouse(type, x, y, buttons = 0) {
    await this.send("Input.dispatchMouseEvent", { type, x, y, button: type === "mouseMoved" ? "none" : "left", buttons, clickCount: 1 });
  }
  async look({ width = 1280, height = 900, dark = false, mobile = false } = {}) {
    await this.send("Emulation.setDeviceMetricsOverride", { width, height, deviceScaleFactor: 1, mobile });
    await this.send("Emulation.setEmulatedMedia", { features: [{ name: "prefers-color-scheme", value: dark ? "dark" : "light" }] });
  }
  async picture() {
    const { data } = await this.send("Page.captureScreenshot", { format: "png", captureBeyondViewport: true });
    return Buffer.from(data, "base64");
  }
}
