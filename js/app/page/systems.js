// The systems that the user can choose: those of the registry, and system files with their grids.
import { CoordinateChain } from "./geomath/index.js";
import { contains, extent } from "./area.js";
import { baseName } from "./files.js";
import { NumberReader } from "./numbers.js";

const kList = "systems.json.gz";
const kGzip = 0x1f;
const kSigns = { foot: "ft", "US survey foot": "US ft" };
const kWholeEarth = 360 * 180; // square degrees

/** { version, countries, systems }, a system { code, name, place, countries, file, notes }: the file is a system file. */
export async function loadSystems() {
  const response = await fetch(kList);
  if (!response.ok) throw new Error(`the list of systems cannot be read (${response.status})`);
  const bytes = new Uint8Array(await response.arrayBuffer());
  // Some servers unpack it on the way.
  if (bytes[0] !== kGzip) return JSON.parse(new TextDecoder().decode(bytes));
  return new Response(new Blob([bytes]).stream().pipeThrough(new DecompressionStream("gzip"))).json();
}

// The position that a text is, as [lat, lon]; null for any other text.
function placeIn(text) {
  const parts = text.split(/[,;]\s*|\s+/).filter(Boolean);
  if (parts.length !== 2) return null;
  const numbers = new NumberReader(".");
  const place = [numbers.angle(parts[0], "latitude"), numbers.angle(parts[1], "longitude")];
  return place.some(Number.isNaN) ? null : place;
}

/**
 * The systems with all words of a text in code, name and area, or at its place: those first whose code or country it
 * is, and that of the smallest area.
 */
export function findSystems(systems, text) {
  const place = placeIn(text);
  const words = text.toLowerCase().replace(/^epsg:/, "").split(/\s+/).filter(Boolean);
  const fits = place
    ? (system) => contains(system.file.area, ...place)
    : (system) => words.every((word) => `${system.code} ${system.name} ${system.place}`.toLowerCase().includes(word));
  const isMeant = ({ code, countries }) => [code, ...countries].some((name) => name.toLowerCase() === text.toLowerCase());
  const rank = (system) => extent(system.file.area) - (isMeant(system) ? kWholeEarth : 0);
  return systems.filter(fits).sort((a, b) => rank(a) - rank(b));
}

// The files that a system names, as it names them.
function filesNamedBy(document) {
  const geoid = ["grid", "model", "correction"].map((key) => document.geoid?.[key]);
  const shifts = (document.shifts ?? []).map((entry) => entry.file);
  return [...geoid, ...shifts, document.frame?.motion?.file].filter((name) => typeof name === "string");
}

const kCompassStep = 1e-4; // degrees

/** Where a chain has true north and east: { north, east }, pairs [north, east]; null where it has nothing. */
export function compassOf(chain, north, east) {
  const epoch = chain.needsEpoch ? { epoch: new Date().getFullYear() } : undefined;
  const [lat, lon] = chain.toGlobal(north, east, 0, epoch);
  const away = (dLat, dLon) => chain.toLocal(lat + dLat, lon + dLon, 0, epoch);
  const [here, up, right] = [away(0, 0), away(kCompassStep, 0), away(0, kCompassStep)];
  const step = (to) => [to[0] - here[0], to[1] - here[1]];
  return [...up, ...right].slice(0, 2).every(Number.isFinite) ? { north: step(up), east: step(right) } : null;
}

// Columns are found by their names, so that only the directions of axes matter: north or south comes first here.
function withNorthFirst(document) {
  const inOrder = ([key, axes]) => [key, /^[EW][NS]$/i.test(axes) ? axes[1] + axes[0] : axes];
  const axes = Object.fromEntries(Object.entries(document.axes ?? {}).map(inOrder));
  return JSON.stringify(axes) === JSON.stringify(document.axes) || !document.axes ? null : { ...document, axes };
}

/**
 * A system to convert with. `given` has its `text` as it stands in a file, its `grids`, bytes by base name, and what
 * the page tells of it. Throws what is wrong with it, which begins with `source` where the library says it.
 */
export class System {
  constructor(document, given = {}) {
    const { title = document.name ?? "system file", source = title, text = JSON.stringify(document) } = given;
    const { grids = new Map(), code = "", place = "", notes = [], below = null } = given;
    Object.assign(this, { document, title, code, place, notes, grids });
    const turned = withNorthFirst(document);
    this.text = turned ? JSON.stringify(turned) : text;
    this.files = filesFrom(grids, document);
    this.chain = CoordinateChain.fromSystem(this.text, { files: this.files, name: source });
    this.#below = below;
  }
  #below;
  /** The system on whose grid its site lies; itself where there is none, null for a site with a projection of its own. */
  get below() {
    if (!this.document.localization) return this;
    if (this.#below) return this.#below.system;
    const { localization: _, ...document } = this.document;
    return new System(document, { title: this.title, grids: this.grids, place: this.place });
  }
  get description() {
    return this.document.description ?? "";
  }
  /** Where true north and east are at a point of the grid: { north, east }, pairs [north, east] in its units. */
  compass(north, east) {
    return compassOf(this.chain, north, east);
  }
  /** What its worker needs. */
  get parts() {
    return { text: this.text, files: this.files, name: this.title, area: this.document.area };
  }
  /** The signs of its units: of the plane and of heights. */
  get units() {
    const sign = (key, metres) => {
      const given = this.document.units?.[key];
      if (metres === 1) return "m";
      const name = typeof given === "string" ? given : given?.name ?? `× ${metres} m`;
      return kSigns[name] ?? name;
    };
    return { plane: sign("grid", this.chain.unit), height: sign("height", this.chain.heightUnit) };
  }
}

function filesFrom(grids, document) {
  const names = filesNamedBy(document), missing = names.filter((name) => !grids.has(baseName(name)));
  if (missing.length) throw new MissingGrids(missing);
  return Object.fromEntries(names.map((name) => [name, grids.get(baseName(name))]));
}

/** The files of a system are not all there yet. */
export class MissingGrids extends Error {
  name = "MissingGrids";
  constructor(names) {
    const files = names.map((name) => name.split(/[\\/]/).at(-1)).join(", ");
    super(`the system needs ${files}: drop ${names.length > 1 ? "them" : "it"} here as well`);
  }
}
