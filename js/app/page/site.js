// A site: control points, their calibration, residuals on the plan, and what follows when a point goes in or out.
import { Calibration } from "./geomath/index.js";
import { estimates, kResidualHeader, parameterRows, residualCells } from "./calibration.js";
import { columnsOfControl, kUses, readControl } from "./control.js";
import { byId, element, fillTable, tell } from "./dom.js";
import { download } from "./files.js";
import { siteReport } from "./report.js";
import { compassOf, System } from "./systems.js";

const kSuspicious = 3.3; // standard deviations
const kTrayHeight = 80; // pixels of the plan's upper edge
const kMarks = {
  both: "--mark", horizontal: "--mark", vertical: "--mark-vertical", rotation: "--mark-rotation", none: "--mark-out",
};
const kResidualText = "Given minus computed, metres (res); over their standard deviations (std); misfit to a calibration " +
  "without the point (without). Take a point out by its box, or drag it on the plan to the upper edge.";

/** The panel of sites, with what it shows in the stage. */
export class SitePanel {
  #points = null;
  #accuracies = [];
  #fileName = "site";
  #system = null;
  #result = null;
  #isSolved = false;

  /** `onSite(system)` takes the site's system to convert with, `onChain(chain, units)` hears of every solution. */
  constructor(plan, { onSite, onChain }) {
    Object.assign(this, { plan, onSite, onChain });
    byId("fixed-scale").addEventListener("change", () => this.solve());
    byId("site-use").addEventListener("click", () => this.onSite(this.#siteSystem()));
    byId("site-save").addEventListener("click", () =>
      download("site.json", `${JSON.stringify(this.#siteDocument(), null, 2)}\n`, "application/json"));
    byId("site-report").addEventListener("click", () => this.#saveReport());
  }

  /** The system on whose grid the site lies, when it is drawn next; null for one of its own. */
  use(system) {
    this.#system = system;
    this.#isSolved = false;
  }

  open(text, name) {
    tell("");
    try {
      const { points, accuracies } = readControl(text);
      this.#points = points.map((point) => ({ ...point, whole: point.use === "none" ? "both" : point.use }));
      this.#accuracies = accuracies;
      this.#fileName = name.replace(/\.[^.]*$/, "");
      this.solve(true);
    } catch (error) {
      tell(`${name}: ${error.message}`);
    }
  }

  solve(fit = false) {
    if (!this.#points) return;
    this.#isSolved = true;
    try {
      const options = { fixedScale: byId("fixed-scale").checked };
      this.#result = new Calibration(columnsOfControl(this.#points), this.#system?.chain, options).solve();
      tell("");
    } catch (error) {
      this.#result = null;
      tell(`Not calibrated: ${error.message}`);
    }
    this.#show();
    this.draw(fit);
  }

  /** Draws its points in the local plane, with their residuals. */
  draw(fit = true) {
    byId("plan-empty").hidden = this.#points !== null;
    if (!this.#points) return this.plan.show(null);
    if (!this.#isSolved) return this.solve(fit);
    const chain = this.#result?.chain, units = this.#units;
    this.onChain(chain ?? null, units);
    this.plan.show({
      north: Float64Array.from(this.#points, (point) => point.localN ?? NaN),
      east: Float64Array.from(this.#points, (point) => point.localE ?? NaN),
      names: this.#points.map((point) => point.name),
      marks: this.#points.map((point) => kMarks[point.use]),
      vectors: this.#vectors(),
      unit: units.plane,
      compass: chain && ((north, east) => compassOf(chain, north, east)),
    }, fit);
  }

  // Residuals are metres to north and east, the plan has the units and directions of the coordinates.
  #vectors() {
    const axes = this.#system?.chain.projection.gridAxes ?? "NE", unit = this.#system?.chain.unit ?? 1;
    const north = (axes.includes("S") ? -1 : 1) / unit, east = (axes.includes("W") ? -1 : 1) / unit;
    return this.#result?.residuals.map(([n, e]) => (n === null || e === null ? null : [n * north, e * east]));
  }

  /** While a point is dragged: the upper edge of the plan takes it out, or in again. */
  grab(index, y) {
    const tray = byId("tray"), { name, use } = this.#points[index];
    tray.hidden = false;
    tray.textContent = use === "none" ? `Drop ${name} here to use it` : `Drop ${name} here to leave it out`;
    tray.classList.toggle("over", y < kTrayHeight);
  }
  drop(index, y) {
    byId("tray").hidden = true;
    if (y < kTrayHeight) this.toggle(index);
  }
  toggle(index) {
    const point = this.#points[index];
    this.#setUse(index, point.use === "none" ? point.whole : "none");
  }

  #setUse(index, use) {
    const point = this.#points[index];
    if (use !== "none") point.whole = use;
    point.use = use;
    this.solve();
  }

  get #units() {
    return this.#system?.units ?? { plane: "m", height: "m" };
  }

  #show() {
    byId("site-actions").hidden = !this.#result;
    for (const id of ["site-summary", "site-warnings", "parameters"]) byId(id).replaceChildren();
    if (this.#result) this.#showWorth();
    const weighed = this.#accuracies.length ? ` Every point weighs alike here: ${this.#accuracies.join(", ")} are for the program.` : "";
    byId("residual-text").textContent = kResidualText + weighed;
    this.#showResiduals();
  }

  #showWorth() {
    const items = (texts) => texts.map((text) => element("li", {}, text));
    byId("site-summary").append(element("ul", { className: "summary" }, ...items(estimates(this.#result))));
    byId("site-warnings").append(...items(this.#result.warnings));
    fillTable(byId("parameters"), ["parameter", "value", "deviation"], parameterRows(this.#result));
  }

  #showResiduals() {
    const focused = document.activeElement?.dataset?.control;
    const { worstHorizontal, worstVertical } = this.#result ?? {};
    const numbers = (i) => (this.#result ? this.#markSuspicious(i) : Array(9).fill("–"));
    const rows = this.#points.map((point, i) => [this.#toggleOf(point, i), this.#useOf(point, i), ...numbers(i)]);
    const isWorst = (i) => i === worstHorizontal || i === worstVertical;
    fillTable(byId("residuals"), kResidualHeader, rows, {
      rowClass: (i) => (this.#points[i].use === "none" ? "out" : isWorst(i) ? "worst" : ""),
      classes: (_row, column) => (column < 2 ? "text" : ""),
    });
    if (focused) document.querySelector(`[data-control="${focused}"]`)?.focus();
  }

  #markSuspicious(i) {
    return residualCells(this.#result, i).map((text, c) => {
      const ratio = c >= 3 && c < 6 ? this.#result.standardised[i][c - 3] : null;
      if (ratio === null || Math.abs(ratio) <= kSuspicious) return text;
      return element("strong", { className: "suspicious", title: "suspicious" }, text);
    });
  }

  #toggleOf(point, i) {
    const box = element("input", { type: "checkbox", checked: point.use !== "none", "data-control": `box-${i}` });
    box.addEventListener("change", () => this.toggle(i));
    return element("label", { className: "check" }, box, ` ${point.name}`);
  }

  #useOf(point, i) {
    const select = element("select", { "aria-label": `Use of ${point.name}`, "data-control": `use-${i}` },
      ...kUses.map((use) => element("option", { value: use }, use)));
    select.value = point.use;
    select.addEventListener("change", () => this.#setUse(i, select.value));
    return select;
  }

  // The system with the site at its end, as `geomath calibrate` writes it but for the covariance.
  #siteDocument() {
    const document = structuredClone(this.#system?.document ?? { global: { ellipsoid: "WGS84" } });
    const { projection } = this.#result.chain;
    document.projection ??= { name: projection.name, ...projection.parameters };
    const { rotation, ...rest } = this.#result.localization.describe();
    document.localization = rotation === undefined ? rest : { ...rest, rotationDegrees: rotation };
    return document;
  }
  #siteSystem() {
    return new System(this.#siteDocument(), {
      title: `Site ${this.#fileName}`, grids: this.#system?.grids, place: this.#system?.title,
      notes: ["with the site calibration of this page"], below: { system: this.#system },
    });
  }

  #saveReport() {
    const system = this.#system?.title ?? "a projection of its own", map = this.plan.picture();
    const text = siteReport(this.#result, { title: this.#fileName, system, points: this.#points, map });
    download(`${this.#fileName}_report.html`, text, "text/html");
  }
}
