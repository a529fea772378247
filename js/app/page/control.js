// Control points of a site, as they stand in a file.
import { columnOf, kControl } from "./columns.js";
import { NumberReader } from "./numbers.js";
import { readTable, TableError, valuesOf } from "./table.js";

export const kUses = ["both", "horizontal", "vertical", "rotation", "none"];
const kUseCodes = ["none", "vertical", "horizontal", "both", "rotation"]; // by number
const kNeeded = ["lat", "lon", "localN", "localE"];
const kAngles = { lat: "latitude", lon: "longitude" };
const written = (key) => key.replace(/[A-Z]/, (letter) => `_${letter.toLowerCase()}`); // localN is local_n in files

function columnsOf(table) {
  if (!table.names) throw new TableError("control points need a header: lat, lon, h, local_n, local_e, local_h");
  const column = ([key, names]) => [key, columnOf(table.names, names, written(key))];
  const found = Object.fromEntries(Object.entries(kControl).map(column));
  const absent = kNeeded.find((key) => found[key] < 0);
  if (absent) throw new TableError(`there is no column "${written(absent)}"; there are ${table.names.join(", ")}`);
  return found;
}

function useOf(text, line) {
  const word = text.trim().toLowerCase(), use = kUseCodes[word] ?? word;
  if (kUses.includes(use)) return use;
  throw new TableError(`row ${line}: use is "${text}"; it is a code from 0 to 4 or one of ${kUseCodes.join(", ")}`);
}

// What a point is used for that does not say: all that it has.
function wholeUse({ lat, lon, h, localN, localE, localH }) {
  const plane = ![lat, lon, localN, localE].includes(null), height = h !== null && localH !== null;
  return plane ? (height ? "both" : "horizontal") : height ? "vertical" : "none";
}

function readPoint(values, columns, numbers, line, index) {
  const point = {};
  for (const key of ["lat", "lon", "h", "localN", "localE", "localH"]) {
    const text = columns[key] < 0 ? "" : values[columns[key]].trim();
    const value = text === "" ? null : kAngles[key] ? numbers.angle(text, kAngles[key]) : numbers.number(text);
    if (Number.isNaN(value)) throw new TableError(`row ${line}: ${written(key)} "${text}" is no ${kAngles[key] ?? "number"}`);
    point[key] = value;
  }
  point.name = (columns.name < 0 ? "" : values[columns.name].trim()) || String(index + 1);
  point.use = columns.use < 0 ? wholeUse(point) : useOf(values[columns.use], line);
  return point;
}

/**
 * The points of a CSV text, { name, lat, lon, h, localN, localE, localH, use }, null for what one does not have; and
 * the names of its columns with accuracies, which are for the program.
 */
export function readControl(text) {
  const table = readTable(text), columns = columnsOf(table);
  const numbers = new NumberReader(table.separator === "," ? "." : "");
  const valuesIn = (row) => valuesOf(table, row, table.names.length);
  const points = table.rows.map((row, i) => readPoint(valuesIn(row), columns, numbers, row.line, i));
  return { points, accuracies: table.names.filter((name) => /^(global_)?(sigma|corr)_/i.test(name)) };
}

/** The points as columns, as a calibration takes them. */
export function columnsOfControl(points) {
  return Object.fromEntries(Object.keys(kControl).map((key) => [key, points.map((point) => point[key])]));
}
