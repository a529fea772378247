// The drawing of a plan: grid lines, points with their names, residuals, scale bar and arrow.
import { shown } from "./numbers.js";

const kFont = "12px system-ui, sans-serif";
const kGridPixels = 110, kVectorPixels = 56, kArrowRoom = 64, kMarkRadius = 4, kCrossArm = 9;
const kNamedPoints = 250; // that are in view, at most
const kSmallMarks = 3000; // points, from which on they are dots

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

// The multiples of a step between two coordinates, in rising order.
function multiples(step, a, b) {
  const first = Math.ceil(Math.min(a, b) / step), last = Math.floor(Math.max(a, b) / step);
  return Array.from({ length: Math.max(0, last - first + 1) }, (_, i) => (first + i) * step);
}

const overlap = (a, b) => a[0] < b[2] && a[2] > b[0] && a[1] < b[3] && a[3] > b[1];

/** Draws on a context what a plan shows of `content` in a view. `colour(name)` is that of a CSS variable. */
export class Drawing {
  constructor(context, view, content, colour) {
    Object.assign(this, { context, view, content, colour });
  }

  draw() {
    const { context, view } = this;
    context.font = kFont;
    context.fillStyle = this.colour("--plan");
    context.fillRect(0, 0, view.width, view.height);
    if (!this.content) return;
    this.#grid();
    if (this.content.north.length > kSmallMarks) this.#dots();
    else this.#points();
    this.#vectors();
    this.#scaleBar();
    this.#arrow();
  }

  /** Marks the centre. */
  cross() {
    const { context, view: { width, height } } = this;
    context.strokeStyle = this.colour("--accent");
    context.lineWidth = 1.5;
    this.#lines([
      [[width / 2 - kCrossArm, height / 2], [width / 2 + kCrossArm, height / 2]],
      [[width / 2, height / 2 - kCrossArm], [width / 2, height / 2 + kCrossArm]],
    ]);
  }

  #lines(lines) {
    this.context.beginPath();
    for (const [from, ...others] of lines) {
      this.context.moveTo(...from);
      for (const to of others) this.context.lineTo(...to);
    }
    this.context.stroke();
  }

  #grid() {
    const { context, view } = this, { width, height } = view;
    const step = roundLength(kGridPixels / view.scale), decimals = Math.max(0, -Math.floor(Math.log10(step)));
    const [[top, left], [bottom, right]] = [view.at(0, 0), view.at(width, height)];
    const eastings = multiples(step, left, right), northings = multiples(step, top, bottom);
    const x = (east) => Math.round(view.pixel(0, east)[0]) + 0.5; // sharp on the pixels
    const y = (north) => Math.round(view.pixel(north, 0)[1]) + 0.5;
    context.strokeStyle = this.colour("--hairline");
    context.fillStyle = this.colour("--muted");
    context.lineWidth = 1;
    this.#lines(eastings.map((east) => [[x(east), 0], [x(east), height]]));
    this.#lines(northings.map((north) => [[0, y(north)], [width, y(north)]]));
    this.#eastingLabels(view.right > 0 ? eastings : eastings.reverse(), x, decimals);
    for (const north of northings)
      if (y(north) > 34 && y(north) < height - 46) context.fillText(shown(north, decimals), 5, y(north) - 4);
  }

  // Along the upper edge, where there is room.
  #eastingLabels(eastings, x, decimals) {
    let free = 0;
    for (const east of eastings) {
      const text = shown(east, decimals), end = x(east) + 4 + this.context.measureText(text).width;
      if (x(east) < free || end > this.view.width - kArrowRoom) continue;
      this.context.fillText(text, x(east) + 4, 14);
      free = end + 6;
    }
  }

  // A pixel that has a point needs no other.
  #dots() {
    const { view, content: { north, east } } = this, { width, height } = view;
    const taken = new Uint8Array(width * height);
    this.context.fillStyle = this.colour("--mark");
    for (let i = 0; i < north.length; ++i) {
      const [x, y] = view.pixel(north[i], east[i]).map(Math.round);
      if (!(x >= 0 && x < width && y >= 0 && y < height) || taken[y * width + x]) continue;
      taken[y * width + x] = 1;
      this.context.fillRect(x - 1, y - 1, 2, 2);
    }
  }

  #points() {
    const { view, content: { north, east, marks } } = this;
    const visible = [];
    for (let i = 0; i < north.length; ++i) {
      const [x, y] = view.pixel(north[i], east[i]);
      if (!(x > -10 && x < view.width + 10 && y > -10 && y < view.height + 10)) continue;
      this.#mark(x, y, marks?.[i] ?? "--mark");
      visible.push([i, x, y]);
    }
    if (visible.length <= kNamedPoints) this.#names(visible);
  }

  #mark(x, y, mark) {
    const { context } = this, hollow = mark === "--mark-out";
    context.beginPath();
    context.arc(x, y, kMarkRadius, 0, 2 * Math.PI);
    context.fillStyle = this.colour(hollow ? "--plan" : mark);
    context.fill();
    context.strokeStyle = this.colour(mark);
    context.lineWidth = 1.5;
    if (hollow) context.stroke();
  }

  // Names stand on paper, where no other name is.
  #names(points) {
    const { context, content: { names } } = this, taken = [];
    context.fillStyle = this.colour("--ink");
    context.strokeStyle = this.colour("--plan");
    context.lineWidth = 3;
    for (const [i, x, y] of points) {
      const name = names?.[i], box = [x + 7, y + 4, x + 7 + (name ? context.measureText(name).width : 0), y + 18];
      if (!name || taken.some((other) => overlap(box, other))) continue;
      taken.push(box);
      context.strokeText(name, box[0], y + 15);
      context.fillText(name, box[0], y + 15);
    }
  }

  // Residuals, enlarged so that the largest is as long as the others may be.
  #vectors() {
    const { view, content: { north, east, vectors = [], unit } } = this;
    const largest = Math.max(0, ...vectors.map((vector) => (vector ? Math.hypot(...vector) : 0)));
    if (largest < 1e-9) return;
    const enlarged = kVectorPixels / largest, length = roundLength(largest);
    this.context.strokeStyle = this.context.fillStyle = this.colour("--vector");
    this.context.lineWidth = 1.75;
    vectors.forEach((vector, i) => {
      if (!vector) return;
      const [n, e] = vector;
      this.#vector(...view.pixel(north[i], east[i]), e * enlarged * view.right, -n * enlarged * view.up);
    });
    this.#bar(view.width / 2, length * enlarged, `residuals: ${lengthText(length, unit)}`, "--vector");
  }

  #vector(x, y, dx, dy) {
    const length = Math.hypot(dx, dy);
    if (length < 1) return;
    const head = Math.min(7, length), [ux, uy] = [(head * dx) / length, (head * dy) / length];
    this.#lines([[[x, y], [x + dx, y + dy]]]);
    this.context.beginPath();
    this.context.moveTo(x + dx, y + dy);
    this.context.lineTo(x + dx - ux - uy / 2, y + dy - uy + ux / 2);
    this.context.lineTo(x + dx - ux + uy / 2, y + dy - uy - ux / 2);
    this.context.fill();
  }

  #scaleBar() {
    const { view, content: { unit } } = this, length = roundLength((0.3 * view.width) / view.scale);
    this.#bar(14, length * view.scale, lengthText(length, unit), "--ink");
  }

  #bar(x, wide, text, colour) {
    const { context } = this, y = this.view.height - 28;
    context.fillStyle = this.colour("--plan");
    context.globalAlpha = 0.85;
    context.fillRect(x - 6, y - 8, Math.max(wide, context.measureText(text).width) + 12, 34);
    context.globalAlpha = 1;
    context.strokeStyle = context.fillStyle = this.colour(colour);
    context.lineWidth = 1.5;
    this.#lines([[[x, y - 4], [x, y + 4], [x + wide, y + 4], [x + wide, y - 4]]]);
    context.fillText(text, x, y + 20);
  }

  // To true north, which the grid's north departs from by the convergence.
  #arrow() {
    const { context, view } = this, direction = this.content.compass?.(view.north, view.east)?.north;
    if (!direction) return;
    context.save();
    context.translate(view.width - kArrowRoom / 2, 46);
    context.rotate(Math.atan2(direction[1] * view.right, direction[0] * view.up));
    context.fillStyle = context.strokeStyle = this.colour("--ink");
    context.lineWidth = 1.25;
    for (const side of [7, -7]) {
      context.beginPath();
      context.moveTo(0, -24);
      context.lineTo(side, 20);
      context.lineTo(0, 13);
      context.closePath();
      context.stroke();
      if (side > 0) context.fill();
    }
    context.textAlign = "center";
    context.fillText("N", 0, -29);
    context.restore();
  }
}
