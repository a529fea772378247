// A plan: points in a grid with north up, moved and enlarged by pointers, wheel and keys.
import { Drawing } from "./drawing.js";
import { View } from "./view.js";

const kMargin = 64, kZoomStep = 1.5, kPanStep = 60, kPickPixels = 14, kDragPixels = 5, kWheelPixels = 500;

/**
 * A plan on a canvas. What it shows: { north, east, names, marks, vectors, unit, compass }. `marks` are names of CSS
 * colours ("--mark-out") for each point, `vectors` pairs [north, east] drawn enlarged; `compass(north, east)` tells
 * where true north and east are there: { north, east }, pairs [north, east].
 */
export class Plan {
  #canvas;
  #context;
  #content = null;
  #view = new View();
  #pointers = new Map();
  #scheduled = false;
  #grabbed = null;
  #isFitted = false; // no one has moved it since

  /** `hear` has onPoint(north, east), and, where canGrab(), onGrab(index, y) and onDrop(index, y) of its points. */
  constructor(canvas, hear) {
    this.#canvas = canvas;
    this.#context = canvas.getContext("2d");
    this.hear = hear;
    new ResizeObserver(() => (this.#isFitted ? this.fit() : this.draw())).observe(canvas);
    matchMedia("(prefers-color-scheme: dark)").addEventListener("change", () => this.draw());
    this.#listen();
  }

  /** Shows points; the view stays unless `fit` is true. */
  show(content, fit = true) {
    this.#content = content;
    if (fit) this.fit();
    else this.draw();
  }

  fit() {
    this.#measure();
    const view = this.#view, { north, east, compass } = this.#content ?? {};
    if (this.#content && view.fit(north, east, kMargin)) {
      view.orient(compass?.(view.north, view.east));
      this.#isFitted = true;
      this.#tellCentre();
    }
    this.draw();
  }

  zoomIn() {
    this.#zoomCentre(kZoomStep);
  }
  zoomOut() {
    this.#zoomCentre(1 / kZoomStep);
  }

  /** What it shows, as the address of a picture. */
  picture() {
    this.#paint(false);
    return this.#canvas.toDataURL("image/png");
  }

  draw() {
    if (this.#scheduled) return;
    this.#scheduled = true;
    requestAnimationFrame(() => {
      this.#scheduled = false;
      this.#paint(this.#canvas.matches(":focus-visible")); // of those who come by keyboard
    });
  }

  #measure() {
    this.#view.width = this.#canvas.clientWidth;
    this.#view.height = this.#canvas.clientHeight;
  }

  #paint(withCross) {
    this.#measure();
    const { width, height } = this.#view, ratio = devicePixelRatio || 1;
    if (!width) return;
    this.#canvas.width = Math.round(width * ratio);
    this.#canvas.height = Math.round(height * ratio);
    this.#context.setTransform(ratio, 0, 0, ratio, 0, 0);
    const style = getComputedStyle(this.#canvas), colour = (name) => style.getPropertyValue(name).trim();
    const drawing = new Drawing(this.#context, this.#view, this.#content, colour);
    drawing.draw();
    if (withCross) drawing.cross();
  }

  #zoom(factor, x, y) {
    this.#isFitted = false;
    this.#view.zoom(factor, x, y);
    this.draw();
  }
  #zoomCentre(factor) {
    this.#zoom(factor, this.#view.width / 2, this.#view.height / 2);
  }
  #pan(dx, dy) {
    this.#isFitted = false;
    this.#view.pan(dx, dy);
    this.draw();
  }

  // The centre of the view stands for the pointer where there is none.
  #tellCentre() {
    if (this.#content) this.hear.onPoint(this.#view.north, this.#view.east);
  }

  // The point nearest to a pixel, −1 where none is near.
  #pick(x, y) {
    if (!this.#content) return -1;
    const { north, east } = this.#content;
    let nearest = -1, least = kPickPixels;
    for (let i = 0; i < north.length; ++i) {
      const [px, py] = this.#view.pixel(north[i], east[i]), distance = Math.hypot(px - x, py - y);
      if (distance < least) [nearest, least] = [i, distance];
    }
    return nearest;
  }

  #listen() {
    const canvas = this.#canvas;
    canvas.addEventListener("pointerdown", (event) => this.#press(event));
    canvas.addEventListener("pointermove", (event) => this.#move(event));
    for (const type of ["pointerup", "pointercancel"]) canvas.addEventListener(type, (event) => this.#release(event));
    canvas.addEventListener("wheel", (event) => {
      event.preventDefault();
      this.#zoom(Math.exp(-event.deltaY / kWheelPixels), event.offsetX, event.offsetY);
    }, { passive: false });
    canvas.addEventListener("keydown", (event) => this.#key(event));
    for (const type of ["focus", "blur"]) canvas.addEventListener(type, () => this.draw());
    canvas.addEventListener("focus", () => this.#tellCentre());
  }

  #press({ pointerId, offsetX: x, offsetY: y }) {
    this.#canvas.setPointerCapture(pointerId);
    this.#pointers.set(pointerId, [x, y]);
    const index = this.hear.canGrab() && this.#pointers.size === 1 ? this.#pick(x, y) : -1;
    this.#grabbed = index >= 0 ? { index, from: [x, y], moved: false } : null;
  }

  #move({ pointerId, offsetX: x, offsetY: y }) {
    const before = this.#pointers.get(pointerId);
    if (this.#content) this.hear.onPoint(...this.#view.at(x, y));
    if (!before) return;
    this.#pointers.set(pointerId, [x, y]);
    if (this.#grabbed) this.#drag(x, y);
    else if (this.#pointers.size === 1) this.#pan(x - before[0], y - before[1]);
    else this.#pinch(pointerId, before, [x, y]);
  }

  #drag(x, y) {
    const { index, from } = this.#grabbed;
    this.#grabbed.moved ||= Math.hypot(x - from[0], y - from[1]) > kDragPixels;
    if (this.#grabbed.moved) this.hear.onGrab(index, y);
  }

  #pinch(id, before, after) {
    const [, other] = [...this.#pointers].find(([each]) => each !== id);
    const length = (point) => Math.hypot(point[0] - other[0], point[1] - other[1]);
    const factor = length(after) / Math.max(length(before), 1);
    this.#zoom(factor, (after[0] + other[0]) / 2, (after[1] + other[1]) / 2);
  }

  #release({ type, pointerId, offsetY: y }) {
    this.#pointers.delete(pointerId);
    const grabbed = this.#grabbed;
    this.#grabbed = null;
    if (grabbed?.moved) this.hear.onDrop(grabbed.index, type === "pointerup" ? y : Infinity);
  }

  #key(event) {
    const moves = {
      ArrowLeft: () => this.#pan(kPanStep, 0), ArrowRight: () => this.#pan(-kPanStep, 0),
      ArrowUp: () => this.#pan(0, kPanStep), ArrowDown: () => this.#pan(0, -kPanStep),
      "+": () => this.zoomIn(), "=": () => this.zoomIn(), "-": () => this.zoomOut(), 0: () => this.fit(),
    };
    if (!moves[event.key] || event.ctrlKey || event.metaKey) return;
    moves[event.key]();
    event.preventDefault();
    this.#tellCentre();
  }
}
