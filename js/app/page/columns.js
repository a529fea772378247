// Which columns of a table hold coordinates: the names that instruments write.

import { beginsNumber } from "./numbers.js";

const kGeographic = [
  { own: ["lat"], others: ["latitude", "breite"] },
  { own: ["lon"], others: ["long", "lng", "longitude", "länge", "laenge"] },
  { own: ["hglobal"], others: ["h", "height", "höhe", "hoehe", "ellipsoidalheight"] },
];
const kGrid = [
  { own: ["n"], others: ["north", "northing", "nord", "hochwert"] },
  { own: ["e"], others: ["east", "easting", "ost", "rechtswert"] },
  { own: ["hlocal"], others: ["h", "height", "höhe", "hoehe", "elevation", "z"] },
];

/** What the three coordinates of a direction are, and how its results are called. */
export const kDirections = {
  toGrid: {
    from: ["latitude", "longitude", "height"], usual: kGeographic, results: ["n", "e", "h_local"], angles: true,
  },
  toGlobal: {
    from: ["northing", "easting", "height"], usual: kGrid, results: ["lat", "lon", "h_global"], angles: false,
  },
};

const called = (usual) => ({ own: [], others: [...usual.own, ...usual.others] });

/** The columns of control points, by the names that a calibration gives them. */
export const kControl = {
  lat: called(kGeographic[0]),
  lon: called(kGeographic[1]),
  h: { own: ["h"], others: ["hglobal", "ellipsoidalheight"] },
  localN: { own: ["localn"], others: called(kGrid[0]).others },
  localE: { own: ["locale"], others: called(kGrid[1]).others },
  localH: { own: ["localh"], others: ["hlocal", "elevation", "z"] },
  use: { own: ["use"], others: [] },
  name: { own: ["name"], others: ["point", "pointname", "punkt"] },
};

const folded = (name) => name.toLowerCase().replace(/[\s_]/g, "");

/** The index of the column that can be meant: kNoColumn where there is none; throws where there are several. */
export function columnOf(names, { own, others }, what) {
  for (const usual of [own, others]) {
    const found = names.flatMap((name, i) => (usual.includes(folded(name)) ? [i] : []));
    if (found.length > 1)
      throw new Error(`columns ${found.map((i) => `"${names[i]}"`).join(" and ")} could both be the ${what}`);
    if (found.length === 1) return found[0];
  }
  return kNoColumn;
}

/** In the place of a column: there is none (of heights), or the user has to choose. */
export const kNoColumn = -1, kToChoose = -2;

/** The columns of a direction. */
export function guessColumns(names, direction) {
  const { from, usual } = kDirections[direction];
  return usual.map((each, i) => {
    try {
      const found = columnOf(names, each, from[i]);
      return found < 0 && i < 2 ? kToChoose : found;
    } catch {
      return kToChoose;
    }
  });
}

/** Without a header: a name, where there are four fields or the first is no number, then coordinates in their order. */
export function columnsInOrder(values) {
  const isNamed = values.length > 2 && !(values.length === 3 && beginsNumber(values[0]));
  const start = isNamed ? 1 : 0;
  const absent = [kToChoose, kToChoose, kNoColumn];
  return absent.map((none, i) => (start + i < values.length ? start + i : none));
}

/** Names for results beside columns that may have them: all three with the same number behind. */
export function freeNames(names, wanted) {
  const taken = new Set(names.map((name) => name.toLowerCase()));
  for (let number = 1; ; ++number) {
    const candidates = wanted.map((name) => (number === 1 ? name : `${name}_${number}`));
    if (!candidates.some((name) => taken.has(name))) return candidates;
  }
}
