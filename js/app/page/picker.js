// The choice of a system: by code, name or place from the list, or from a system file.
import { byId, element, tell } from "./dom.js";
import { baseName, download, textOf } from "./files.js";
import { findSystems, loadSystems, MissingGrids, System } from "./systems.js";

const kMostShown = 60;

/** The panel of systems. */
export class Picker {
  #list = { systems: [] };
  #found = [];
  #active = -1;
  #waiting = null; // a system file whose grids are not there yet
  grids = new Map();

  /** `onSystem(system)` hears of every choice, null for none. */
  constructor(onSystem) {
    this.onSystem = onSystem;
    this.system = null;
    byId("search").addEventListener("input", () => this.#search());
    byId("search").addEventListener("keydown", (event) => this.#key(event));
    byId("search").addEventListener("blur", () => this.#close());
    byId("found").addEventListener("mousedown", (event) => event.preventDefault()); // the focus stays
    byId("country").addEventListener("change", (event) => this.search(event.target.value));
    byId("search").addEventListener("focus", () => this.#search());
    byId("here").addEventListener("click", () => this.#here());
    byId("system-save").addEventListener("click", () => this.#save());
    byId("system-clear").addEventListener("click", () => this.choose(null));
  }

  async load() {
    this.#list = await loadSystems();
    byId("country").append(...this.#list.countries.map((name) => element("option", { value: name }, name)));
    byId("list-version").textContent = `${this.#list.systems.length} systems of ${this.#list.version}.`;
  }

  search(text) {
    byId("search").value = text;
    this.#search();
  }

  /** Takes system files, and grids for them; tells what is wrong. */
  async takeFiles(files) {
    const grids = files.filter((each) => /\.(gsb|gtx)$/i.test(each.name));
    for (const file of grids) this.grids.set(baseName(file.name), await file.arrayBuffer());
    const described = files.find((file) => /\.json$/i.test(file.name));
    if (described) this.openText(await textOf(described), described.name);
    else if (this.#waiting) this.openText(this.#waiting.text, this.#waiting.name);
    else byId("found-count").textContent = `${grids.map((file) => file.name).join(", ")}: kept for a system file that names it.`;
  }

  openText(text, name) {
    this.#waiting = null;
    try {
      const document = JSON.parse(text);
      this.choose(new System(document, { title: document.name ?? name, source: name, text, grids: this.grids }));
    } catch (error) {
      if (error instanceof MissingGrids) this.#waiting = { text, name };
      tell(error.message.startsWith(name) ? error.message : `${name}: ${error.message}`);
    }
  }

  choose(system) {
    this.system = system;
    tell("");
    this.#showCard();
    this.#close();
    this.onSystem(system);
  }

  #search() {
    const text = byId("search").value.trim();
    this.#found = text ? findSystems(this.#list.systems, text) : [];
    this.#active = -1;
    byId("found-count").textContent = text ? this.#countText() : "";
    byId("found").replaceChildren(...this.#found.slice(0, kMostShown).map((system, i) => this.#option(system, i)));
    this.#show(this.#found.length > 0);
  }

  #countText() {
    const count = this.#found.length;
    if (count === 0) return "No system has all of this in its code, name or area.";
    return count > kMostShown ? `${count} systems, the first ${kMostShown} of them shown` : `${count} found`;
  }

  #option(system, i) {
    const option = element("li", { role: "option", id: `found-${i}`, "aria-selected": "false" },
      `${system.code}  ${system.name}`, element("small", {}, system.place));
    option.addEventListener("click", () => this.#take(system));
    return option;
  }

  #take({ file, ...system }) {
    try {
      this.choose(new System(file, { title: `EPSG:${system.code} ${system.name}`, ...system }));
    } catch (error) {
      tell(`EPSG:${system.code}: ${error.message}`);
    }
  }

  #key(event) {
    const count = Math.min(this.#found.length, kMostShown);
    if (event.key === "Escape") this.#close();
    else if (event.key === "ArrowDown" && count) this.#activate((this.#active + 1) % count);
    else if (event.key === "ArrowUp" && count) this.#activate((this.#active + count - 1) % count);
    else if (event.key === "Enter" && count) this.#take(this.#found[Math.max(this.#active, 0)]);
    else return;
    event.preventDefault();
  }

  #activate(index) {
    byId(`found-${this.#active}`)?.setAttribute("aria-selected", "false");
    this.#active = index;
    const option = byId(`found-${index}`);
    option.setAttribute("aria-selected", "true");
    option.scrollIntoView({ block: "nearest" });
    byId("search").setAttribute("aria-activedescendant", option.id);
  }

  #show(open) {
    byId("found").hidden = !open;
    byId("search").setAttribute("aria-expanded", String(open));
    byId("search").removeAttribute("aria-activedescendant");
  }

  #close() {
    this.#show(false);
    byId("found-count").textContent = "";
  }

  #here() {
    if (!navigator.geolocation) return tell("This browser does not tell where it is: type latitude and longitude.");
    navigator.geolocation.getCurrentPosition(
      ({ coords }) => this.search(`${coords.latitude.toFixed(4)}, ${coords.longitude.toFixed(4)}`),
      (error) => tell(`The place of this device is not known (${error.message}): type latitude and longitude.`));
  }

  #showCard() {
    const { system } = this;
    byId("system-card").hidden = !system;
    if (!system) return;
    byId("system-name").textContent = system.title;
    byId("system-place").textContent = system.place;
    const told = [...system.description.split("; "), ...system.notes].filter(Boolean);
    byId("system-notes").replaceChildren(...told.map((note) => element("li", {}, note)));
  }

  #save() {
    const name = this.system.code ? `epsg_${this.system.code}.json` : "system.json";
    download(name, `${JSON.stringify(this.system.document, null, 2)}\n`, "application/json");
  }
}
