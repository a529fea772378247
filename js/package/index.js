// Geodetic mathematics for surveying and mapping: the C++ library geomath as WebAssembly. The types
// and the documentation of every class stand in index.d.ts.

const url = new URL(import.meta.url);
// Needs v128: an engine without SIMD refuses it.
const simdProbe = [0, 97, 115, 109, 1, 0, 0, 0, 1, 5, 1, 96, 0, 1, 123, 3, 2, 1, 0, 10, 8, 1, 6, 0, 65, 0, 253, 15, 11];
const simd = !url.searchParams.has("scalar") && WebAssembly.validate(new Uint8Array(simdProbe));

async function compile(name) {
  const file = new URL(name, url);
  if (file.protocol === "file:" && typeof process === "object") {
    const { readFile } = await import("node:fs/promises");
    return WebAssembly.compile(await readFile(file));
  }
  const response = await fetch(file);
  if (!response.ok) throw new Error(`geomath: ${file} cannot be read (${response.status})`);
  return WebAssembly.compile(await response.arrayBuffer());
}

// What the module wants of its host: the log of the library goes to the console.
const host = {
  fd_close: () => 0,
  fd_seek: () => 8,
  fd_write(_file, parts, count, written) {
    const view = new DataView(wasm.memory.buffer);
    let text = "", size = 0;
    for (let part = parts; part < parts + 8 * count; part += 8) {
      const length = view.getUint32(part + 4, true);
      text += decoder.decode(new Uint8Array(view.buffer, view.getUint32(part, true), length));
      size += length;
    }
    view.setUint32(written, size, true);
    if (text.trim()) console.warn(text.trimEnd());
    return 0;
  },
};

const decoder = new TextDecoder(), encoder = new TextEncoder();
const module = await compile(simd ? "geomath.wasm" : "geomath-scalar.wasm");
const wasm = (await WebAssembly.instantiate(module, { wasi_snapshot_preview1: host })).exports;
wasm._initialize();

/** Which of its two modules the package runs on: "simd" or "scalar". */
export const engine = simd ? "simd" : "scalar";

/** Thrown for what makes no sense; the message says what would be right. */
export class GeomathError extends Error {
  name = "GeomathError";
}

// Points go through the module in blocks: columns of its memory.
const kBlock = 1024, kColumns = 8;
const columnsAt = wasm.columns(), stepsAt = wasm.steps();
let columns, steps, cells;
function refresh() {
  const memory = wasm.memory.buffer;
  cells = new Float64Array(memory, columnsAt, kBlock * kColumns);
  columns = Array.from({ length: kColumns }, (_, c) => cells.subarray(c * kBlock, (c + 1) * kBlock));
  steps = new Uint8Array(memory, stepsAt, kBlock);
}
refresh();

function text() {
  return decoder.decode(new Uint8Array(wasm.memory.buffer, wasm.text(), wasm.textSize()));
}

function copyIn(bytes) {
  const room = wasm.allocate(bytes.length || 1);
  if (!room) throw new GeomathError("there is no memory for it");
  new Uint8Array(wasm.memory.buffer).set(bytes, room);
  return room;
}

function bytesOf(data) {
  if (ArrayBuffer.isView(data)) return new Uint8Array(data.buffer, data.byteOffset, data.byteLength);
  if (data instanceof ArrayBuffer || typeof SharedArrayBuffer === "function" && data instanceof SharedArrayBuffer)
    return new Uint8Array(data);
  if (typeof data === "string") return encoder.encode(data);
  throw new TypeError("geomath: bytes must be an ArrayBuffer or a typed array");
}

// A new object of the module: `given` is described in JSON, with the handles of other objects; what
// Bytes hold is handed over in memory.
class Bytes {
  constructor(data) {
    this.data = bytesOf(data);
  }
}

function make(kind, given) {
  const rooms = [];
  const place = (data) => {
    rooms.push(copyIn(data));
    return [rooms.at(-1), data.length];
  };
  try {
    const written = JSON.stringify({ kind, given }, (_key, value) => {
      if (value instanceof Native) return handleOf(value);
      if (value instanceof Bytes) return place(value.data);
      if (ArrayBuffer.isView(value)) return Array.from(value);
      return value;
    });
    const [at, size] = place(encoder.encode(written));
    const handle = wasm.make(at, size);
    if (!handle) throw new GeomathError(text());
    return handle;
  } finally {
    rooms.forEach((room) => wasm.release(room));
  }
}

function propertiesOf(handle) {
  if (!wasm.describe(handle)) throw new GeomathError(text());
  return JSON.parse(text());
}

const registry = new FinalizationRegistry((handle) => wasm.dispose(handle));
let handleOf;

/** An object of the module, freed with its JavaScript object or by dispose(). */
class Native {
  #handle;
  #properties;
  static {
    handleOf = (object) => {
      if (!object.#handle) throw new GeomathError(`${object.constructor.name}: it was disposed of`);
      return object.#handle;
    };
  }
  constructor(kind, given) {
    this.#handle = make(kind, given);
    registry.register(this, this.#handle, this);
  }
  /** Its properties as the module tells them. */
  describe() {
    return (this.#properties ??= propertiesOf(handleOf(this)));
  }
  dispose() {
    if (!this.#handle) return;
    registry.unregister(this);
    wasm.dispose(this.#handle);
    this.#handle = 0;
  }
  [Symbol.dispose ?? Symbol.for("dispose")]() {
    this.dispose();
  }
}

function getters(type, names) {
  for (const name of names)
    Object.defineProperty(type.prototype, name, { get() { return this.describe()[name]; } });
}

const failed = () => { throw new GeomathError(text()); };

// One point. `results` are the columns of the results; one alone is given plain. Memory that has
// grown leaves views of no length.
function point(object, operation, results, first, second, third, options) {
  const degrees = options === undefined || options.degrees !== false;
  if (!wasm.convertPoint(handleOf(object), operation, degrees, first, second, third)) failed();
  if (cells.length === 0) refresh();
  if (options?.steps) return [cells[0], cells[kBlock], cells[2 * kBlock], steps[0]];
  if (results === kTwo) return [cells[0], cells[kBlock]];
  if (results === kThree) return [cells[0], cells[kBlock], cells[2 * kBlock]];
  if (results.length === 1) return cells[results[0] * kBlock];
  return results.map((column) => cells[column * kBlock]);
}

function lengthOf(values) {
  let length = -1;
  for (const value of values) {
    if (typeof value === "number") continue;
    if (typeof value?.length !== "number" || typeof value === "string")
      throw new TypeError("geomath: coordinates are numbers or arrays of numbers");
    if (length >= 0 && value.length !== length)
      throw new GeomathError(`arrays of ${length} and of ${value.length} coordinates do not go together`);
    length = value.length;
  }
  return length;
}

function resultsFor(out, count, length) {
  if (out === undefined) return Array.from({ length: count }, () => new Float64Array(length));
  const arrays = count === 1 && out instanceof Float64Array ? [out] : out;
  const fit = Array.isArray(arrays) && arrays.length === count &&
    arrays.every((array) => array instanceof Float64Array && array.length === length);
  if (!fit) throw new TypeError(`geomath: "out" must be ${count} Float64Array of ${length} numbers`);
  return arrays;
}

// Points in arrays, block by block: results may be the arrays of the arguments.
function convert(object, operation, results, values, options) {
  const handle = handleOf(object), degrees = options?.degrees !== false;
  const length = lengthOf(values), to = resultsFor(options?.out, results.length, length);
  const stepsTo = options?.steps ? new Uint8Array(length) : null;
  if (cells.length === 0) refresh();
  for (let start = 0; start < length; start += kBlock) {
    const end = Math.min(start + kBlock, length), count = end - start;
    for (let c = 0; c < values.length; ++c) {
      const value = values[c], column = columns[c];
      if (typeof value === "number") column.fill(value, 0, count);
      else if (value instanceof Float64Array) column.set(value.subarray(start, end));
      else for (let i = 0; i < count; ++i) column[i] = value[start + i] ?? NaN;
    }
    if (!wasm.convert(handle, operation, count, degrees, stepsTo !== null)) failed();
    if (cells.length === 0) refresh();
    for (let r = 0; r < to.length; ++r) {
      const column = columns[results[r]];
      to[r].set(count === kBlock ? column : column.subarray(0, count), start);
    }
    stepsTo?.set(steps.subarray(0, count), start);
  }
  if (stepsTo) return [...to, stepsTo];
  return results.length === 1 ? to[0] : to;
}

const kOne = [0], kTwo = [0, 1], kThree = [0, 1, 2];

function pairs(object, operation, first, second, options, results = kTwo) {
  if (typeof first === "number" && typeof second === "number" && options?.out === undefined)
    return point(object, operation, results, first, second, 0, options);
  return convert(object, operation, results, [first, second], options);
}

function triples(object, operation, first, second, third, options, results = kThree) {
  if (typeof first === "number" && typeof second === "number" && typeof third === "number" && options?.out === undefined)
    return point(object, operation, results, first, second, third, options);
  return convert(object, operation, results, [first, second, third], options);
}

function named(names, values) {
  return Object.fromEntries(names.map((name, i) => [name, values[i]]));
}

const lists = propertiesOf(0);
export const projections = () => structuredClone(lists.projections);
export const ellipsoidNames = () => [...lists.ellipsoids];
export const chainStepText = (step) => lists.steps[step];

export class Ellipsoid extends Native {
  constructor(a, invF) {
    super("Ellipsoid", typeof a === "string" ? { ellipsoid: a } : typeof a === "number" ? { a, invF } : a);
  }
  get invF() {
    return this.describe().invF ?? Infinity;
  }
  toGeocentric(lat, lon, h = 0, options) {
    return triples(this, 0, lat, lon, h, options);
  }
  toGeodetic(x, y, z, options) {
    return triples(this, 1, x, y, z, options);
  }
}
getters(Ellipsoid, ["a", "b", "f", "n", "e", "e2", "ep2"]);

const onEllipsoid = (given) => (given === undefined || given instanceof Native ? given : new Ellipsoid(given));

export class Datum extends Native {
  constructor(ellipsoid, parameters = {}) {
    const none = { dx: 0, dy: 0, dz: 0, rx: 0, ry: 0, rz: 0, ppm: 0, rotation: "coordinate-frame" };
    super("Datum", { ...none, ...parameters, ellipsoid: onEllipsoid(ellipsoid) });
  }
  toWgs84(x, y, z, options) {
    return triples(this, 0, x, y, z, options);
  }
  fromWgs84(x, y, z, options) {
    return triples(this, 1, x, y, z, options);
  }
}
getters(Datum, ["shift", "rotation", "ppm"]);

const kDistortion = ["meridianScale", "parallelScale", "arealScale", "convergence", "angularDistortion", "semiMajor", "semiMinor"];

export class Projection extends Native {
  constructor(name, { ellipsoid, ...parameters } = {}) {
    super("Projection", { ...parameters, name, ellipsoid: onEllipsoid(ellipsoid) });
  }
  forward(lat, lon, options) {
    return pairs(this, 0, lat, lon, options);
  }
  inverse(north, east, options) {
    return pairs(this, 1, north, east, options);
  }
  factors(lat, lon, options) {
    return pairs(this, 2, lat, lon, options);
  }
  distortion(lat, lon, options) {
    return named(kDistortion, pairs(this, 3, lat, lon, options, [0, 1, 2, 3, 4, 5, 6]));
  }
}
getters(Projection, ["name", "parameters", "gridAxes", "geographicAxes"]);

export class LocalToGrid extends Native {
  constructor(parameters) {
    super("LocalToGrid", parameters);
  }
  toLocal(north, east, h = 0, options) {
    return triples(this, 0, north, east, h, options);
  }
  toGrid(north, east, h = 0, options) {
    return triples(this, 1, north, east, h, options);
  }
}
getters(LocalToGrid, ["shiftN", "shiftE", "scale", "rotation", "shiftH", "slopeN", "slopeE"]);

export class GridToGround extends Native {
  constructor(parameters) {
    super("GridToGround", parameters);
  }
  toGround(north, east, options) {
    return pairs(this, 0, north, east, options);
  }
  toGrid(north, east, options) {
    return pairs(this, 1, north, east, options);
  }
}
getters(GridToGround, ["scale", "height", "gridScaleFactor", "rotation", "originN", "originE", "offsetN", "offsetE", "enabled"]);

class Geoid extends Native {
  height(lat, lon, options) {
    return pairs(this, 0, lat, lon, options, kOne);
  }
}

export class RegionalGeoid extends Geoid {
  constructor({ grid, ...place }) {
    super("RegionalGeoid", place.file ? place : { ...place, grid: new Bytes(Float32Array.from(grid)) });
  }
  static fromGtx(data, { interpolation = "", name = "geoid.gtx" } = {}) {
    return new RegionalGeoid({ file: name, files: { [name]: new Bytes(data) }, interpolation });
  }
}
getters(RegionalGeoid, ["south", "west", "latStep", "lonStep", "rows", "columns", "interpolation"]);

export class GlobalGeoid extends Geoid {
  constructor(coefficients) {
    const bytes = Object.entries(coefficients).map(([name, column]) => [name, new Bytes(Float64Array.from(column))]);
    super("GlobalGeoid", Object.fromEntries(bytes));
  }
}
getters(GlobalGeoid, ["maxDegree"]);

export class ShiftGrid extends Native {
  constructor(data, { name = "ShiftGrid" } = {}) {
    super("ShiftGrid", { bytes: new Bytes(data), name });
  }
  static fromNtv2(data, options) {
    return new ShiftGrid(data, options);
  }
  forward(lat, lon, h = 0, options) {
    return triples(this, 0, lat, lon, h, options);
  }
  inverse(lat, lon, h = 0, options) {
    return triples(this, 1, lat, lon, h, options);
  }
}

const offered = (files = {}) =>
  Object.fromEntries(Object.entries(files).map(([name, data]) => [name, new Bytes(data)]));

// With a date for all points, or one for each.
function chained(chain, operation, first, second, third, options) {
  if (options?.epoch === undefined) return triples(chain, operation, first, second, third, options);
  const values = [first, second, third, options.epoch];
  const one = values.every((value) => typeof value === "number");
  if (one) values[0] = [first];
  const results = convert(chain, operation + 2, kThree, values, options);
  return one ? results.map((column) => column[0]) : results;
}

export class CoordinateChain extends Native {
  constructor(parts = {}, kind = "CoordinateChain") {
    super(kind, parts);
  }
  static fromSystem(system, { files, name = "system" } = {}) {
    const written = typeof system === "string" ? system : JSON.stringify(system);
    return new CoordinateChain({ text: written, files: offered(files), name }, "SystemChain");
  }
  toLocal(lat, lon, h = 0, options) {
    return chained(this, 0, lat, lon, h, options);
  }
  toGlobal(north, east, h = 0, options) {
    return chained(this, 1, north, east, h, options);
  }
}
getters(CoordinateChain, ["unit", "heightUnit", "projection", "needsEpoch"]);

export class Calibration {
  constructor(control, chain, options = {}) {
    this.control = control;
    this.chain = chain;
    this.options = options;
  }
  solve() {
    return new CalibrationResult(this);
  }
}

class CalibrationResult extends Native {
  constructor({ control, chain, options }) {
    super("Calibration", { ...options, chain, control });
  }
  get chain() {
    return new CoordinateChain({ calibration: this }, "CalibrationChain");
  }
  get localization() {
    return new LocalToGrid(this.describe().localization);
  }
}
getters(CalibrationResult, ["names", "horizontal", "vertical", "residuals", "standardised", "predicted", "rms",
  "horizontalSigma", "verticalSigma", "deviations", "worstHorizontal", "worstVertical", "warnings"]);

export class MagneticModel extends Native {
  constructor(name = "", files = {}) {
    super("MagneticModel", { name, files: offered(files) });
  }
  static fromFile(data, name) {
    return new MagneticModel(name, { [name]: data });
  }
  field(date) {
    return new MagneticField(date, this);
  }
}
getters(MagneticModel, ["name", "epoch", "end"]);

const kElements = ["x", "y", "z", "h", "f", "declination", "inclination", "gridVariation"];
const kAll = [0, 1, 2, 3, 4, 5, 6, 7];

export class MagneticField extends Native {
  constructor(date, model = new MagneticModel()) {
    super("MagneticField", { date: date instanceof Date ? date.toISOString().slice(0, 10) : date, model });
  }
  declination(lat, lon, h = 0, options) {
    return triples(this, 0, lat, lon, h, options, [5]);
  }
  elements(lat, lon, h = 0, options) {
    return named(kElements, triples(this, 0, lat, lon, h, options, kAll));
  }
  yearlyChange(lat, lon, h = 0, options) {
    return named(kElements, triples(this, 1, lat, lon, h, options, kAll));
  }
}
getters(MagneticField, ["model", "decimalYear", "warning"]);
