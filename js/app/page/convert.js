// Points through the system: read, converted, shown on the plan and in the table, saved.
import { kControl, kDirections, kNoColumn, kToChoose } from "./columns.js";
import { Converter } from "./converter.js";
import { byId, element, fillTable, tell } from "./dom.js";
import { download } from "./files.js";
import { NumberReader, shown } from "./numbers.js";

const kPageRows = 50, kTypingPause = 250, kMostNames = 250;

/** The panel of points, with what it shows in the stage. */
export class ConvertPanel {
  #converter = new Converter();
  #system = null;
  #opened = null; // what the worker told of the points
  #result = null;
  #page = 0;
  #turn = 0; // the last request: answers to earlier ones are too late
  #fileName = "points";

  constructor(plan) {
    this.plan = plan;
    let typing;
    byId("typed").addEventListener("input", () => {
      clearTimeout(typing);
      typing = setTimeout(() => this.open(byId("typed").value, "typed", "table"), kTypingPause);
    });
    for (const radio of document.querySelectorAll("[name=direction]"))
      radio.addEventListener("change", () => this.#offerColumns().then(() => this.convert()));
    for (const c of [0, 1, 2]) byId(`column-${c}`).addEventListener("change", () => this.convert());
    byId("epoch").addEventListener("change", () => this.convert());
    byId("save-csv").addEventListener("click", () => this.#save("csv"));
    byId("save-geojson").addEventListener("click", () => this.#save("geojson"));
    byId("page-before").addEventListener("click", () => this.#showPage(this.#page - 1));
    byId("page-next").addEventListener("click", () => this.#showPage(this.#page + 1));
  }

  get direction() {
    return document.querySelector("[name=direction]:checked").value;
  }

  /** Converts by a system; null for none. */
  async use(system) {
    this.#system = system;
    byId("epoch-row").hidden = !system?.chain.needsEpoch;
    this.#result = null;
    if (system) await this.#converter.ask("use", { system: system.parts });
    await this.convert();
  }

  /** Takes the points of a text: `kind` is "table" or "features". */
  async open(text, name, kind) {
    const turn = ++this.#turn;
    this.#opened = this.#result = null;
    this.#fileName = name.replace(/\.[^.]*$/, "");
    tell("");
    if (text.trim() === "") return this.#showNothing("");
    try {
      const opened = await this.#converter.ask("open", { text, kind });
      if (turn !== this.#turn) return;
      this.#opened = opened;
      await this.#offerColumns();
      await this.convert();
    } catch (error) {
      if (turn === this.#turn) this.#showNothing(`${name}: ${error.message}`);
    }
  }

  async convert() {
    if (!this.#opened) return;
    const columns = [0, 1, 2].map((c) => Number(byId(`column-${c}`).value)), epoch = this.#epoch();
    const obstacle = this.#obstacle(columns, epoch);
    if (obstacle) return this.#showUnconverted(obstacle);
    await this.#run({ direction: this.direction, columns, epoch });
  }

  // What has to be told before anything is converted; empty where nothing is missing.
  #obstacle(columns, epoch) {
    if (!this.#system) return `${shown(this.#opened.count, 0)} points. Choose a system to convert them.`;
    const missing = this.#opened.kind === "table" ? columns.indexOf(kToChoose) : -1;
    if (missing >= 0) return `Which column is the ${kDirections[this.direction].from[missing]}? Choose it under Columns.`;
    if (!Number.isNaN(epoch)) return "";
    return "The positions need their date, because the frame of this system moves: type a decimal year, such as 2026.9.";
  }

  async #run(wish) {
    const turn = ++this.#turn;
    byId("status").textContent = "Converting …";
    try {
      const result = await this.#converter.ask("convert", wish);
      if (turn !== this.#turn) return;
      this.#result = { ...result, direction: wish.direction };
      await this.#show(turn);
    } catch (error) {
      if (turn === this.#turn) this.#showUnconverted(error.message);
    }
  }

  // null where the system has no need of a date, NaN where it is missing.
  #epoch() {
    if (!this.#system?.chain.needsEpoch || (this.#system.document.frame?.date ?? null) !== null) return null;
    return new NumberReader().number(byId("epoch").value);
  }

  async #offerColumns() {
    if (!this.#opened) return;
    const { names, guesses, kind } = this.#opened, { from } = kDirections[this.direction];
    byId("columns").hidden = kind !== "table";
    from.forEach((what, c) => {
      const choices = names.map((name, i) => element("option", { value: i }, name));
      if (c === 2) choices.unshift(element("option", { value: kNoColumn }, "none"));
      if (guesses[this.direction][c] === kToChoose) choices.unshift(element("option", { value: kToChoose }, "choose …"));
      byId(`column-${c}-name`).textContent = what;
      byId(`column-${c}`).replaceChildren(...choices);
      byId(`column-${c}`).value = guesses[this.direction][c];
    });
  }

  #showNothing(problem) {
    this.#showUnconverted("");
    byId("columns").hidden = true;
    byId("table").replaceChildren();
    byId("pages").hidden = true;
    tell(problem);
  }

  #showUnconverted(status) {
    ++this.#turn;
    this.#result = null;
    byId("status").textContent = status;
    byId("problems").hidden = true;
    byId("save-csv").disabled = byId("save-geojson").disabled = true;
    this.draw();
    if (this.#opened) this.#showPage(0);
  }

  async #show(turn) {
    const { count, converted, problems, problemCount, mark, heights, outside } = this.#result;
    const notes = [
      `${shown(converted, 0)} of ${shown(count, 0)} points converted.`,
      mark === "," ? "Numbers are read with a decimal comma, and written so." : "",
      this.#opened.hasHeader ? "" : "The file has no header: see whether the columns are right.",
      this.#unitNote(),
      heights ? "" : "Without heights, points are taken at height 0.",
      outside ? `${shown(outside, 0)} of them lie outside the area of the system.` : "",
    ];
    byId("problems").hidden = problemCount === 0;
    byId("problem-count").textContent = `${shown(problemCount, 0)} not converted`;
    const more = problemCount > problems.length ? [`… and ${shown(problemCount - problems.length, 0)} more`] : [];
    byId("problem-list").replaceChildren(...[...problems, ...more].map((text) => element("li", {}, text)));
    byId("save-csv").disabled = byId("save-geojson").disabled = false;
    await this.#showPage(0);
    if (turn !== this.#turn) return;
    await this.draw();
    byId("status").textContent = notes.filter(Boolean).join(" ");
  }

  #unitNote() {
    const { plane, height } = this.#system.units;
    return plane === "m" && height === "m" ? "" : `Grid coordinates are in ${plane}, heights beside them in ${height}.`;
  }

  /** Draws its points, as far as there are any. */
  async draw() {
    byId("plan-empty").hidden = this.#result !== null;
    if (!this.#result) return this.plan.show(null);
    const { north, east, count } = this.#result;
    const names = count <= kMostNames ? await this.#names(count) : null;
    const system = this.#system;
    this.plan.show({ north, east, names, unit: system.units.plane, compass: (n, e) => system.compass(n, e) });
  }

  // A column that is called so, or the first that holds no coordinate.
  async #names(count) {
    const { names, kind } = this.#opened, rows = await this.#converter.ask("rows", { start: 0, count });
    const used = kind === "table" ? [0, 1, 2].map((c) => Number(byId(`column-${c}`).value)) : [];
    const called = names.findIndex((name) => kControl.name.own.concat(kControl.name.others).includes(name.toLowerCase()));
    const column = called >= 0 ? called : names.findIndex((_, i) => !used.includes(i));
    return rows.map((row) => row.values[column] ?? "");
  }

  async #showPage(page) {
    const pages = Math.ceil(this.#opened.count / kPageRows);
    this.#page = Math.min(Math.max(page, 0), pages - 1);
    const start = this.#page * kPageRows;
    const rows = await this.#converter.ask("rows", { start, count: kPageRows });
    if (!this.#opened) return;
    this.#fillRows(rows);
    byId("pages").hidden = pages <= 1;
    byId("page-before").disabled = this.#page === 0;
    byId("page-next").disabled = this.#page === pages - 1;
    const [first, last, all] = [start + 1, start + rows.length, this.#opened.count].map((count) => shown(count, 0));
    byId("page-place").textContent = `${first} to ${last} of ${all}`;
  }

  #fillRows(rows) {
    const given = this.#opened.names, { results, angles } = kDirections[this.#result?.direction ?? this.direction];
    const decimals = angles ? [4, 4, 4] : [9, 9, 4];
    const header = ["", ...given, ...(this.#result ? results : [])];
    const cells = rows.map((row) => [row.place, ...given.map((_, i) => row.values[i] ?? ""),
      ...(this.#result ? row.results.map((value, c) => shown(value, decimals[c])) : [])]);
    const isText = given.map((_, i) => rows.some((row) => !/^\s*[+-]?[\d.,]*\s*$/.test(row.values[i] ?? "")));
    const classes = (_row, c) => (c > given.length ? "result" : isText[c - 1] ? "text" : "");
    fillTable(byId("table"), header, cells, { classes });
  }

  async #save(format) {
    const text = await this.#converter.ask("write", { format });
    const kind = format === "csv" ? "text/csv" : "application/geo+json";
    download(`${this.#fileName}_${this.#result.direction === "toGrid" ? "grid" : "global"}.${format}`, text, kind);
  }
}
