// A calibration in words and tables, as the report of the program has them; `format(value, decimals)` writes numbers.
import { shown } from "./numbers.js";

/** Rows of the residuals: the header and, for each point, its texts. */
export const kResidualHeader = ["point", "use", ...["res", "std", "without"].flatMap((what) => ["N", "E", "H"].map((axis) => `${what} ${axis}`))];

export function residualCells({ residuals, standardised, predicted }, i, format = shown) {
  const cells = (table, decimals) => table[i].map((value) => format(value, decimals));
  return [...cells(residuals, 4), ...cells(standardised, 2), ...cells(predicted, 4)];
}

const kPpm = 1e6, kSeconds = 3600;
const shorterWay = (degrees) => (degrees > 180 ? degrees - 360 : degrees);
// What it is called, its key, the factor of its unit, decimals, and from what it is told.
const kParameters = [
  ["Shift N, m", "shiftN", 1, 4],
  ["Shift E, m", "shiftE", 1, 4],
  ["Scale", "scale", 1, 10],
  ["Scale − 1, ppm", "scale", kPpm, 3, (scale) => scale - 1],
  ["Rotation, deg", "rotation", 1, 9],
  ["Rotation, arc-seconds", "rotation", kSeconds, 3, shorterWay],
  ["Shift H, m", "shiftH", 1, 4],
  ["Slope N, mm/km", "slopeN", kPpm, 3],
  ["Slope E, mm/km", "slopeE", kPpm, 3],
];

/** Parameters with their deviations: [name, value, deviation] as texts. */
export function parameterRows(result, format = shown) {
  const values = result.localization.describe(), { deviations } = result;
  const present = kParameters.filter(([, key]) => values[key] !== undefined);
  return present.map(([name, key, factor, decimals, told = (value) => value]) => {
    const deviation = deviations[key] === null ? null : deviations[key] * factor;
    return [name, format(told(values[key]) * factor, decimals), format(deviation, decimals)];
  });
}

/** What the calibration is worth, a sentence each. */
export function estimates(result, format = shown) {
  const worst = (index, components, what) => {
    if (index === null) return null;
    const misfit = Math.hypot(...components.map((c) => result.predicted[index][c] ?? 0));
    return `Fits worst ${what}: ${result.names[index]}, ${format(misfit, 4)} m from what the others predict`;
  };
  const length = (words, value) => (value === null ? null : `${words} ${format(value, 4)} m`);
  return [
    length("Horizontal rms", result.rms),
    length("Standard deviation of a coordinate", result.horizontalSigma),
    length("Standard deviation of a height", result.verticalSigma),
    worst(result.worstHorizontal, [0, 1], "horizontally"),
    worst(result.worstVertical, [2], "in height"),
  ].filter(Boolean);
}
