// Reads, converts and writes files of points away from the page, which stays fluid with any number of rows.
// A message is { id, call, … }; its answer { id, result } or { id, error }.
import { chainStepText, CoordinateChain } from "./geomath/index.js";
import { contains } from "./area.js";
import { kDirections } from "./columns.js";
import { FeaturePoints, TablePoints } from "./points.js";

let points = null, results = null, position = null, direction = "toGrid";
let chain = null, area = null;

function open({ text, kind }) {
  points = kind === "features" ? new FeaturePoints(text) : new TablePoints(text);
  results = position = null;
  const guesses = Object.fromEntries(Object.keys(kDirections).map((each) => [each, points.guess(each)]));
  return { kind: points.kind, count: points.count, names: points.names, hasHeader: points.hasHeader, guesses };
}

function use({ system }) {
  chain?.dispose();
  chain = null;
  chain = CoordinateChain.fromSystem(system.text, { files: system.files, name: system.name });
  area = system.area;
}

function convert({ columns, epoch, ...wish }) {
  direction = wish.direction;
  const read = points.coordinates(direction, columns);
  const run = direction === "toGrid" ? "toLocal" : "toGlobal";
  const [a, b, c, steps] = chain[run](...read.columns, { steps: true, ...(epoch === null ? {} : { epoch }) });
  results = { columns: [a, b, c], hasHeight: read.hasHeight };
  tellRefused(steps, read);
  const given = { columns: read.columns, hasHeight: read.hasHeight };
  position = direction === "toGrid" ? given : { ...results, given };
  const [north, east] = direction === "toGrid" ? results.columns : read.columns;
  return {
    count: points.count, converted: countFinite(results.columns[0]), north: north.slice(), east: east.slice(),
    problems: read.problems.told, problemCount: read.problems.count, mark: points.numbers?.mark ?? ".",
    heights: read.hasHeight.includes(1), outside: countOutside(),
  };
}

// Steps of a chain that refused a point which could be read.
function tellRefused(steps, { columns, problems }) {
  steps.forEach((step, i) => {
    if (!step || !Number.isFinite(columns[0][i])) return;
    problems.add(`${points.place(i)}: not converted: refused by ${chainStepText(step)}`);
  });
}

// Converted positions beyond the area that a system is for.
function countOutside() {
  if (!area) return 0;
  const [lat, lon] = position.columns;
  let count = 0;
  for (let i = 0; i < points.count; ++i)
    if (Number.isFinite(results.columns[0][i]) && !contains(area, lat[i], lon[i])) ++count;
  return count;
}

const countFinite = (column) => column.reduce((count, value) => count + Number.isFinite(value), 0);

function rows({ start, count }) {
  const end = Math.min(start + count, points.count), shown = [];
  const resultsOf = (i) => results?.columns.map((column, c) => (c < 2 || results.hasHeight[i] ? column[i] : null));
  for (let i = start; i < end; ++i)
    shown.push({ place: points.place(i), values: points.values(i), results: resultsOf(i) });
  return shown;
}

function write({ format }) {
  if (format === "csv") return points.csv(direction, results, position);
  return JSON.stringify({ type: "FeatureCollection", features: points.features(direction, results, position) });
}

const kCalls = { open, use, convert, rows, write };

addEventListener("message", ({ data: { id, call, ...given } }) => {
  try {
    postMessage({ id, result: kCalls[call](given) });
  } catch (error) {
    postMessage({ id, error: error.message });
  }
});
postMessage({ ready: true });
