// Points of a file, from its bytes to its columns of coordinates and back into a file.
import { columnsInOrder, freeNames, guessColumns, kDirections, kNoColumn } from "./columns.js";
import { fileNumber, kDegreeDecimals, kLengthDecimals, NumberReader } from "./numbers.js";
import { csvField, fieldsOf, readTable, TableError, valuesOf, writeTable } from "./table.js";

const kMostProblems = 50; // that are told one by one

// What is wrong with single rows; `count` is that of all.
class Problems {
  count = 0;
  told = [];
  add(text) {
    if (++this.count <= kMostProblems) this.told.push(text);
  }
}

// Columns of a conversion: a point that cannot be read is NaN.
function emptyCoordinates(count) {
  const columns = [0, 1, 2].map(() => new Float64Array(count));
  return { columns, hasHeight: new Uint8Array(count), problems: new Problems() };
}

/** Points in the rows of a CSV table. */
export class TablePoints {
  kind = "table";
  constructor(text) {
    this.table = readTable(text);
    this.count = this.table.rows.length;
    const first = fieldsOf(this.table.rows[0].text, this.table.separator);
    this.names = this.table.names ?? first.map((_, i) => `column ${i + 1}`);
    const commasSeparate = this.table.separator === "," && !first.some((field) => field.includes(","));
    this.numbers = new NumberReader(commasSeparate ? "." : "");
  }
  get hasHeader() {
    return this.table.names !== null;
  }
  guess(direction) {
    if (this.hasHeader) return guessColumns(this.names, direction);
    return columnsInOrder(fieldsOf(this.table.rows[0].text, this.table.separator));
  }
  place(i) {
    return `row ${this.table.rows[i].line}`;
  }
  values(i) {
    return fieldsOf(this.table.rows[i].text, this.table.separator).slice(0, this.names.length);
  }
  /** The columns of coordinates with the indices `chosen`. */
  coordinates(direction, chosen) {
    this.#settleMark(chosen);
    const read = emptyCoordinates(this.count);
    for (let i = 0; i < this.count; ++i) this.#readPoint(i, kDirections[direction], chosen, read);
    return read;
  }
  #readPoint(i, { from, angles }, chosen, { columns, hasHeight, problems }) {
    try {
      const values = valuesOf(this.table, this.table.rows[i], this.names.length);
      const point = [0, 1].map((c) => this.#read(i, values[chosen[c]], from[c], angles));
      hasHeight[i] = chosen[2] !== kNoColumn;
      point.push(hasHeight[i] ? this.#read(i, values[chosen[2]], from[2], false) : 0);
      point.forEach((value, c) => (columns[c][i] = value));
    } catch (error) {
      if (!(error instanceof TableError)) throw error;
      problems.add(error.message);
      columns.forEach((column) => (column[i] = NaN));
    }
  }
  #read(i, text, what, isAngle) {
    const value = isAngle ? this.numbers.angle(text, what) : this.numbers.number(text);
    if (!Number.isNaN(value)) return value;
    if (text.trim() === "") throw new TableError(`${this.place(i)}: ${what} is empty`);
    throw new TableError(`${this.place(i)}: ${what} "${text}" is ${isAngle ? "no such angle" : "no number"}`);
  }
  // The decimal mark stands in any row, perhaps not in the first.
  #settleMark(chosen) {
    for (let i = 0; i < this.count && this.numbers.mark === ""; ++i)
      for (const c of chosen) if (c >= 0) this.numbers.number(this.values(i)[c] ?? "");
  }
  /** The rows with the results behind them, as text. */
  csv(direction, results) {
    const names = freeNames(this.hasHeader ? this.names : [], kDirections[direction].results);
    return writeTable(this.table, this.names.length, names, (i) => resultCells(direction, results, i, this.numbers.mark));
  }
  features(direction, results, position) {
    const names = freeNames(this.names, kDirections[direction].results);
    return Array.from({ length: this.count }, (_, i) => {
      const given = Object.fromEntries(this.values(i).map((value, c) => [this.names[c], value]));
      return { type: "Feature", properties: { ...given, ...named(names, results, i) }, geometry: pointAt(position, i) };
    });
  }
}

function resultCells(direction, { columns, hasHeight }, i, mark) {
  const planeDecimals = kDirections[direction].angles ? kLengthDecimals : kDegreeDecimals;
  const [a, b] = columns.slice(0, 2).map((column) => fileNumber(column[i], planeDecimals, mark));
  return [a, b, hasHeight[i] ? fileNumber(columns[2][i], kLengthDecimals, mark) : ""];
}

function named(names, { columns, hasHeight }, i) {
  const numbers = columns.map((column, c) => (Number.isFinite(column[i]) && (c < 2 || hasHeight[i]) ? column[i] : null));
  return Object.fromEntries(names.map((name, c) => [name, numbers[c]]));
}

function vertexAt({ columns: [lat, lon, h], hasHeight }, i) {
  return hasHeight[i] ? [lon[i], lat[i], h[i]] : [lon[i], lat[i]];
}
const pointAt = (position, i) =>
  Number.isFinite(position.columns[0][i]) ? { type: "Point", coordinates: vertexAt(position, i) } : null;

/** Vertices of the features of a GeoJSON text: x is longitude or easting, y latitude or northing. */
export class FeaturePoints {
  kind = "features";
  hasHeader = true;
  constructor(text) {
    this.all = featuresOf(JSON.parse(text));
    this.vertices = [];
    this.all.forEach((feature, f) => collectVertices(feature.geometry, f, this.vertices));
    this.count = this.vertices.length;
    if (!this.count) throw new TableError("there is no geometry in it");
    this.properties = [...new Set(this.all.flatMap((feature) => Object.keys(feature.properties ?? {})))];
    this.names = ["feature", ...this.properties];
  }
  guess() {
    return [1, 0, 2];
  }
  place(i) {
    return `feature ${this.vertices[i].feature + 1}`;
  }
  values(i) {
    const { feature } = this.vertices[i], { properties } = this.all[feature];
    const text = (value) => (typeof value === "object" && value ? JSON.stringify(value) : String(value ?? ""));
    return [String(feature + 1), ...this.properties.map((name) => text(properties?.[name]))];
  }
  coordinates() {
    const read = emptyCoordinates(this.count);
    this.vertices.forEach(({ at: [x, y, z] }, i) => {
      const good = typeof x === "number" && typeof y === "number";
      if (!good) read.problems.add(`${this.place(i)}: a vertex has no two numbers`);
      read.hasHeight[i] = typeof z === "number";
      [good ? y : NaN, good ? x : NaN, z ?? 0].forEach((value, c) => (read.columns[c][i] = value));
    });
    return read;
  }
  csv(direction, results, position) {
    const lines = [[...this.names, ...freeNames(this.names, ["lat", "lon", "h_global", "n", "e", "h_local"])]];
    const [geographic, grid] = direction === "toGrid" ? [position, results] : [results, position.given];
    for (let i = 0; i < this.count; ++i)
      lines.push([...this.values(i), ...resultCells("toGlobal", geographic, i), ...resultCells("toGrid", grid, i)]);
    return lines.map((line) => line.map((cell) => csvField(cell, ",")).join(",")).join("\n") + "\n";
  }
  // Geometries are geographic by definition; a point tells its grid coordinates beside.
  features(direction, results, position) {
    const names = freeNames(this.properties, kDirections[direction].results);
    let next = 0;
    return this.all.map((feature) => {
      const first = next, failed = { any: false };
      const geometry = withVertices(feature.geometry, () => {
        failed.any ||= !Number.isFinite(position.columns[0][next]);
        return vertexAt(position, next++);
      });
      const told = feature.geometry?.type === "Point" && direction === "toGrid" ? named(names, results, first) : {};
      return { ...feature, properties: { ...feature.properties, ...told }, geometry: failed.any ? null : geometry };
    });
  }
}

function featuresOf(document) {
  if (document?.type === "FeatureCollection" && Array.isArray(document.features)) return document.features;
  if (document?.type === "Feature") return [document];
  if (document?.coordinates || document?.geometries) return [{ type: "Feature", properties: {}, geometry: document }];
  throw new TableError("it is no GeoJSON: there are no features in it");
}

const isVertex = (coordinates) => !Array.isArray(coordinates[0]);

// The geometry with each vertex replaced, in the order in which collectVertices meets them.
function withVertices(geometry, vertex) {
  if (!geometry) return geometry;
  if (geometry.geometries)
    return { ...geometry, geometries: geometry.geometries.map((each) => withVertices(each, vertex)) };
  const replaced = (coordinates) =>
    coordinates.length && isVertex(coordinates) ? vertex(coordinates) : coordinates.map(replaced);
  const { bbox: _bounds, ...rest } = geometry;
  return { ...rest, coordinates: replaced(geometry.coordinates) };
}

function collectVertices(geometry, feature, vertices) {
  withVertices(geometry, (at) => vertices.push({ feature, at }));
}
