// A plan: points in a grid with north up, a scale bar, a north arrow, pan and zoom.
import { shown } from "./numbers.js";

const kMargin = 64, kGridPixels = 110, kNamedPoints = 250, kMarkRadius = 4, kArrowRoom = 64, kSmallMark = 3000;
const kZoomStep = 1.5, kPanStep = 60, kPickPixels = 14, kVectorPixels = 56;
const kFont = '12px system-ui, sans-serif';

// The largest of 1, 2, 5 times a power of ten that is not above `value`.
function roundLength(value) {
  const power = 10 ** Math.floor(Math.log10(value));
  return ([5, 2].find((step) => step * power <= value) ?? 1) * power;
}

function lengthText(length, unit) {
  if (unit !== "m") return `${shown(length, length < 1 ? 3 : 0)} ${unit}`;
  if (length >= 1000) return `${shown(length / 1000, 0)} km`;
  return length < 1 ? `${shown(length * 1000, length < 0.001 ? 2 : 0)} mm` : `${shown(length, 0)} m`;
}

function boundsOf(north, east) {
  const bounds = { south: Infinity, north: -Infinity, west: Infinity, east: -Infinity };
  for (let i = 0; i < north.length; ++i) {
    if (!Number.isFinite(north[i]) || !Number.isFinite(east[i])) continue;
    bounds.south = Math.min(bounds.south, north[i]);
    bounds.north = Math.max(bounds.north, north[i]);
    bounds.west = Math.min(bounds.west, east[i]);
    bounds.east = Math.max(bounds.east, east[i]);
  }
  return bounds.south <= bounds.north ? bounds : null;
}

/**
 * A plan on a canvas. What it shows: { north, east, names, marks, vectors, unit, compass }. `marks` are names of CSS
 * colours ("--mark-out") for each point, `vectors` pairs [north, east] drawn enlarged; `compass(north, east)` tells
 * where true north is there, as [north, east].
 */
export class Plan {
  #canvas;
  #context;
  #content = null;
  #view = { north: 0, east: 0, scale: 1 }; // of the centre; pixels a unit
  #senses = [1, 1]; // 1: the coordinate grows up, or to the right
  #pointers = new Map();
  #scheduled = false;
  #grabbed = null;
  #isFitted = false; // no one has moved it since

  /** `hear` has onPoint(north, east), and, where canGrab(), onGrab(index, x, y) and onDrop(index, x, y). */
  constructor(canvas, hear = {}) {
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
    const bounds = this.#content && boundsOf(this.#content.north, this.#content.east);
    if (bounds) {
      const { width, height } = this.#size;
      const extent = [bounds.north - bounds.south, bounds.east - bounds.west];
      const scales = [(height - 2 * kMargin) / extent[0], (width - 2 * kMargin) / extent[1]];
      const scale = Math.min(...scales.filter((each) => Number.isFinite(each) && each > 0), 1e4);
      this.#view = { north: (bounds.north + bounds.south) / 2, east: (bounds.east + bounds.west) / 2, scale: extent[0] || extent[1] ? scale : 1 };
      this.#orient();
      this.#tellCentre();
      this.#isFitted = true;
    }
    this.draw();
  }

  zoom(factor, x = this.#size.width / 2, y = this.#size.height / 2) {
    const [north, east] = this.#at(x, y);
    this.#isFitted = false;
    this.#view.scale *= factor;
    const [movedNorth, movedEast] = this.#at(x, y);
    this.#view.north += north - movedNorth;
    this.#view.east += east - movedEast;
    this.draw();
  }

  pan(dx, dy) {
    this.#isFitted = false;
    this.#view.north += (dy / this.#view.scale) * this.#senses[0];
    this.#view.east -= (dx / this.#view.scale) * this.#senses[1];
    this.draw();
  }

  // The centre of the view stands for the pointer where there is none.
  #tellCentre() {
    if (this.#content) this.hear.onPoint?.(this.#view.north, this.#view.east);
  }

  /** What it shows, as the address of a picture. */
  picture() {
    this.#paint();
    return this.#canvas.toDataURL("image/png");
  }

  draw() {
    if (this.#scheduled) return;
    this.#scheduled = true;
    requestAnimationFrame(() => {
      this.#scheduled = false;
      this.#paint();
    });
  }

  // Grids that count south or west are turned, so that north is up where a turn or a mirror can bring it there.
  #orient() {
    this.#senses = [1, 1];
    const { compass } = this.#content;
    const north = compass?.(this.#view.north, this.#view.east);
    if (!north || Math.abs(north.north[0]) < Math.abs(north.north[1])) return;
    this.#senses = [Math.sign(north.north[0]) || 1, Math.sign(north.east[1]) || 1];
  }

  get #size() {
    return { width: this.#canvas.clientWidth, height: this.#canvas.clientHeight };
  }
  #at(x, y) {
    const { width, height } = this.#size, { north, east, scale } = this.#view;
    return [north - ((y - height / 2) / scale) * this.#senses[0], east + ((x - width / 2) / scale) * this.#senses[1]];
  }
  #pixel(n, e) {
    const { width, height } = this.#size, { north, east, scale } = this.#view;
    return [width / 2 + (e - east) * scale * this.#senses[1], height / 2 - (n - north) * scale * this.#senses[0]];
  }
  #colour(name) {
    return getComputedStyle(this.#canvas).getPropertyValue(name).trim();
  }

  #paint() {
    const { width, height } = this.#size, ratio = devicePixelRatio || 1, context = this.#context;
    if (!width) return;
    this.#canvas.width = Math.round(width * ratio);
    this.#canvas.height = Math.round(height * ratio);
    context.setTransform(ratio, 0, 0, ratio, 0, 0);
    context.font = kFont;
    context.fillStyle = this.#colour("--plan");
    context.fillRect(0, 0, width, height);
    if (!this.#content) return;
    this.#paintGrid();
    this.#paintPoints();
    this.#paintVectors();
    this.#paintScaleBar();
    this.#paintArrow();
    if (document.activeElement === this.#canvas) this.#paintCross();
  }

  #paintGrid() {
    const { width, height } = this.#size, context = this.#context;
    const step = roundLength(kGridPixels / this.#view.scale);
    const [[top, left], [bottom, right]] = [this.#at(0, 0), this.#at(width, height)];
    const decimals = Math.max(0, -Math.floor(Math.log10(step)));
    context.strokeStyle = this.#colour("--hairline");
    context.fillStyle = this.#colour("--muted");
    context.lineWidth = 1;
    const inOrder = (a, b) => [Math.ceil(Math.min(a, b) / step), Math.floor(Math.max(a, b) / step)];
    const [firstEast, lastEast] = inOrder(left, right), [firstNorth, lastNorth] = inOrder(top, bottom);
    context.beginPath();
    for (let k = firstEast; k <= lastEast; ++k) {
      const x = Math.round(this.#pixel(0, k * step)[0]) + 0.5;
      context.moveTo(x, 0);
      context.lineTo(x, height);
    }
    for (let k = firstNorth; k <= lastNorth; ++k) {
      const y = Math.round(this.#pixel(k * step, 0)[1]) + 0.5;
      context.moveTo(0, y);
      context.lineTo(width, y);
    }
    context.stroke();
    this.#labelGrid(step, decimals, [firstEast, lastEast], [firstNorth, lastNorth]);
  }

  // Eastings along the top, northings along the left, each where there is room.
  #labelGrid(step, decimals, [firstEast, lastEast], [firstNorth, lastNorth]) {
    const { width, height } = this.#size, context = this.#context;
    let free = 0;
    const columns = Array.from({ length: lastEast - firstEast + 1 }, (_, i) => (firstEast + i) * step);
    for (const east of this.#senses[1] > 0 ? columns : columns.reverse()) {
      const text = shown(east, decimals), wide = context.measureText(text).width;
      const x = this.#pixel(0, east)[0] + 4;
      if (x < free || x + wide > width - kArrowRoom) continue;
      context.fillText(text, x, 14);
      free = x + wide + 10;
    }
    for (let k = firstNorth; k <= lastNorth; ++k) {
      const y = this.#pixel(k * step, 0)[1] - 4;
      if (y > 30 && y < height - 50) context.fillText(shown(k * step, decimals), 5, y);
    }
  }

  #paintPoints() {
    const { north, east, names, marks } = this.#content, { width, height } = this.#size;
    if (north.length > kSmallMark) return this.#paintMany();
    let visible = 0;
    for (let i = 0; i < north.length; ++i) {
      const [x, y] = this.#pixel(north[i], east[i]);
      if (!(x > -10 && x < width + 10 && y > -10 && y < height + 10)) continue;
      ++visible;
      const mark = marks?.[i] ?? "--mark";
      this.#paintMark(x, y, mark === "--mark-out", this.#colour(mark));
    }
    if (names && visible <= kNamedPoints) this.#paintNames();
  }

  // A pixel that has a point needs no other.
  #paintMany() {
    const { north, east } = this.#content, { width, height } = this.#size;
    const taken = new Uint8Array(width * height), { scale, north: middleNorth, east: middleEast } = this.#view;
    const [up, right] = this.#senses;
    this.#context.fillStyle = this.#colour("--mark");
    for (let i = 0; i < north.length; ++i) {
      const x = Math.round(width / 2 + (east[i] - middleEast) * scale * right);
      const y = Math.round(height / 2 - (north[i] - middleNorth) * scale * up);
      if (!(x >= 0 && x < width && y >= 0 && y < height) || taken[y * width + x]) continue;
      taken[y * width + x] = 1;
      this.#context.fillRect(x - 1, y - 1, 2, 2);
    }
  }

  #paintMark(x, y, hollow, colour) {
    const context = this.#context;
    context.beginPath();
    context.arc(x, y, kMarkRadius, 0, 2 * Math.PI);
    context.fillStyle = colour;
    if (!hollow) return context.fill();
    context.fillStyle = this.#colour("--plan");
    context.fill();
    context.strokeStyle = colour;
    context.lineWidth = 1.5;
    context.stroke();
  }

  // Names go where no other name is.
  #paintNames() {
    const { north, east, names } = this.#content, context = this.#context, taken = [];
    context.fillStyle = this.#colour("--ink");
    context.strokeStyle = this.#colour("--plan");
    context.lineWidth = 3;
    for (let i = 0; i < north.length; ++i) {
      const [x, y] = this.#pixel(north[i], east[i]), wide = context.measureText(names[i] ?? "").width;
      const box = [x + 7, y + 4, x + 7 + wide, y + 18];
      if (!names[i] || taken.some((other) => box[0] < other[2] && box[2] > other[0] && box[1] < other[3] && box[3] > other[1])) continue;
      taken.push(box);
      context.strokeText(names[i], box[0], y + 15); // paper around it
      context.fillText(names[i], box[0], y + 15);
    }
  }

  #paintVectors() {
    const { north, east, vectors } = this.#content, context = this.#context;
    const largest = this.#largestVector();
    if (!largest) return;
    const enlarged = kVectorPixels / largest;
    context.strokeStyle = context.fillStyle = this.#colour("--vector");
    context.lineWidth = 1.75;
    vectors.forEach((vector, i) => {
      if (!vector) return;
      const [x, y] = this.#pixel(north[i], east[i]);
      this.#paintVector(x, y, vector[1] * enlarged * this.#senses[1], -vector[0] * enlarged * this.#senses[0]);
    });
    const length = roundLength(largest);
    this.#paintBar(this.#size.width / 2, length * enlarged, `residuals: ${lengthText(length, this.#content.unit)}`, "--vector");
  }

  #largestVector() {
    const lengths = (this.#content.vectors ?? []).map((vector) => (vector ? Math.hypot(...vector) : 0));
    const largest = Math.max(0, ...lengths);
    return largest > 1e-9 ? largest : 0;
  }

  #paintVector(x, y, dx, dy) {
    const context = this.#context, length = Math.hypot(dx, dy);
    if (length < 1) return;
    const head = Math.min(7, length), [ux, uy] = [dx / length, dy / length];
    context.beginPath();
    context.moveTo(x, y);
    context.lineTo(x + dx, y + dy);
    context.stroke();
    context.beginPath();
    context.moveTo(x + dx, y + dy);
    context.lineTo(x + dx - head * ux - (head / 2) * uy, y + dy - head * uy + (head / 2) * ux);
    context.lineTo(x + dx - head * ux + (head / 2) * uy, y + dy - head * uy - (head / 2) * ux);
    context.fill();
  }

  #paintScaleBar() {
    const length = roundLength((0.3 * this.#size.width) / this.#view.scale);
    this.#paintBar(14, length * this.#view.scale, lengthText(length, this.#content.unit), "--ink");
  }

  #paintBar(x, wide, text, colour) {
    const context = this.#context, y = this.#size.height - 28;
    const label = context.measureText(text).width;
    context.fillStyle = this.#colour("--plan");
    context.globalAlpha = 0.85;
    context.fillRect(x - 6, y - 8, Math.max(wide, label) + 12, 34);
    context.globalAlpha = 1;
    context.strokeStyle = context.fillStyle = this.#colour(colour);
    context.lineWidth = 1.5;
    context.beginPath();
    context.moveTo(x, y - 4);
    context.lineTo(x, y + 4);
    context.lineTo(x + wide, y + 4);
    context.lineTo(x + wide, y - 4);
    context.stroke();
    context.fillText(text, x, y + 20);
  }

  // To true north, which the grid's north departs from by the convergence.
  #paintArrow() {
    const direction = this.#content.compass?.(this.#view.north, this.#view.east)?.north;
    if (!direction) return;
    const context = this.#context, x = this.#size.width - kArrowRoom / 2, y = 46;
    context.save();
    context.translate(x, y);
    context.rotate(Math.atan2(direction[1] * this.#senses[1], direction[0] * this.#senses[0]));
    context.fillStyle = context.strokeStyle = this.#colour("--ink");
    context.lineWidth = 1.25;
    context.beginPath();
    context.moveTo(0, -24);
    context.lineTo(7, 20);
    context.lineTo(0, 13);
    context.closePath();
    context.fill();
    context.beginPath();
    context.moveTo(0, -24);
    context.lineTo(-7, 20);
    context.lineTo(0, 13);
    context.closePath();
    context.stroke();
    context.textAlign = "center";
    context.fillText("N", 0, -29);
    context.restore();
  }

  #paintCross() {
    const { width, height } = this.#size, context = this.#context;
    context.strokeStyle = this.#colour("--accent");
    context.lineWidth = 1.5;
    context.beginPath();
    context.moveTo(width / 2 - 9, height / 2);
    context.lineTo(width / 2 + 9, height / 2);
    context.moveTo(width / 2, height / 2 - 9);
    context.lineTo(width / 2, height / 2 + 9);
    context.stroke();
  }

  // The point nearest to a pixel, −1 where none is near.
  #pick(x, y) {
    if (!this.#content) return -1;
    const { north, east } = this.#content;
    let nearest = -1, least = kPickPixels;
    for (let i = 0; i < north.length; ++i) {
      const [px, py] = this.#pixel(north[i], east[i]), distance = Math.hypot(px - x, py - y);
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
      this.zoom(Math.exp(-event.deltaY / 500), event.offsetX, event.offsetY);
    }, { passive: false });
    canvas.addEventListener("keydown", (event) => this.#key(event));
    for (const type of ["focus", "blur"]) canvas.addEventListener(type, () => this.draw());
    canvas.addEventListener("focus", () => this.#tellCentre());
  }

  #press(event) {
    this.#canvas.setPointerCapture(event.pointerId);
    this.#pointers.set(event.pointerId, [event.offsetX, event.offsetY]);
    const index = this.hear.canGrab?.() ? this.#pick(event.offsetX, event.offsetY) : -1;
    this.#grabbed = index >= 0 && this.#pointers.size === 1 ? { index, moved: false, from: [event.offsetX, event.offsetY] } : null;
  }

  #move(event) {
    const { offsetX: x, offsetY: y } = event, before = this.#pointers.get(event.pointerId);
    if (this.#content) this.hear.onPoint?.(...this.#at(x, y));
    if (!before) return;
    this.#pointers.set(event.pointerId, [x, y]);
    if (this.#grabbed) this.#drag(x, y);
    else if (this.#pointers.size === 1) this.pan(x - before[0], y - before[1]);
    else this.#pinch(event.pointerId, before, [x, y]);
  }

  #drag(x, y) {
    const { index, from } = this.#grabbed;
    this.#grabbed.moved ||= Math.hypot(x - from[0], y - from[1]) > 5;
    if (this.#grabbed.moved) this.hear.onGrab(index, x, y);
  }

  #pinch(id, before, after) {
    const [, other] = [...this.#pointers].find(([each]) => each !== id);
    const length = (point) => Math.hypot(point[0] - other[0], point[1] - other[1]);
    this.zoom(length(after) / Math.max(length(before), 1), (after[0] + other[0]) / 2, (after[1] + other[1]) / 2);
  }

  #release(event) {
    this.#pointers.delete(event.pointerId);
    const grabbed = this.#grabbed;
    this.#grabbed = null;
    if (grabbed?.moved) this.hear.onDrop(grabbed.index, event.offsetX, event.offsetY);
  }

  #key(event) {
    const moves = { ArrowLeft: [kPanStep, 0], ArrowRight: [-kPanStep, 0], ArrowUp: [0, kPanStep], ArrowDown: [0, -kPanStep] };
    if (moves[event.key]) this.pan(...moves[event.key]);
    else if (event.key === "+" || event.key === "=") this.zoom(kZoomStep);
    else if (event.key === "-") this.zoom(1 / kZoomStep);
    else if (event.key === "0") this.fit();
    else return;
    event.preventDefault();
    this.#tellCentre();
  }
}
