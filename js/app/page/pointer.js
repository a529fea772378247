// What is under the pointer: grid and geographic position, declination today, geoid height.
import { MagneticField, RegionalGeoid } from "./geomath/index.js";
import { byId } from "./dom.js";
import { shown } from "./numbers.js";

const kGridDecimals = 2, kDegreeDecimals = 7, kDeclinationDecimals = 2, kGeoidDecimals = 3;

/** The line of readouts below the plan. */
export class Pointer {
  #chain = null;
  #units = { plane: "m" };
  #field = new MagneticField(new Date());
  #geoid = null;
  #geoidName = "";
  #last = null;

  constructor() {
    const { model, warning } = this.#field;
    byId("declination-name").textContent = "Declination today";
    byId("declination-name").title = warning || `${model}, at the ellipsoid`;
  }

  /** The conversion by which the plan's coordinates become positions; null for none. */
  use(chain, units) {
    this.#chain = chain;
    this.#units = units;
    this.#last = null;
    for (const id of ["at-north", "at-east", "at-lat", "at-lon", "at-declination"]) byId(id).textContent = "–";
    this.#showGeoid("–");
  }

  /** A grid of geoid heights, in GTX; throws what is wrong with it. */
  takeGeoid(bytes, name) {
    this.#geoid = RegionalGeoid.fromGtx(bytes, { name });
    this.#geoidName = name;
    this.#showGeoid("–");
    if (this.#last) this.show(...this.#last);
  }

  show(north, east) {
    if (!this.#chain) return;
    this.#last = [north, east];
    const epoch = this.#chain.needsEpoch ? { epoch: this.#field.decimalYear } : undefined;
    const [lat, lon] = this.#chain.toGlobal(north, east, 0, epoch);
    const degrees = (value) => (Number.isFinite(value) ? `${shown(value, kDegreeDecimals)}°` : "outside");
    byId("at-north").textContent = `${shown(north, kGridDecimals)} ${this.#units.plane}`;
    byId("at-east").textContent = `${shown(east, kGridDecimals)} ${this.#units.plane}`;
    byId("at-lat").textContent = degrees(lat);
    byId("at-lon").textContent = degrees(lon);
    byId("at-declination").textContent = this.#declination(lat, lon);
    this.#showGeoid(this.#geoidHeight(lat, lon));
  }

  #showGeoid(height) {
    byId("at-geoid").textContent = this.#geoid ? `${height} (${this.#geoidName})` : "drop a grid (.gtx)";
  }

  #declination(lat, lon) {
    const declination = Number.isFinite(lat) ? this.#field.declination(lat, lon) : NaN;
    if (!Number.isFinite(declination)) return "–";
    return `${shown(Math.abs(declination), kDeclinationDecimals)}° ${declination < 0 ? "W" : "E"}`;
  }

  #geoidHeight(lat, lon) {
    const height = this.#geoid && Number.isFinite(lat) ? this.#geoid.height(lat, lon) : NaN;
    return Number.isFinite(height) ? `${shown(height, kGeoidDecimals)} m` : "outside";
  }
}
