// A calibration in words and tables, as the report of the program has them; `format(value, decimals)` writes numbers.
import { shown } from "./numbers.js";

/** Rows of the residuals: the header and, for each point, its texts. */
export const kResidualHeader = ["point", "use", "res N", "res E", "res H", "std N", "std E", "std H", "without N", "without E", "without H"];

export function residualCells(result, i, format = shown) {
  return [...result.residuals[i].map((value) => format(value, 4)), ...result.standardised[i].map((value) => format(value, 2)),
    ...result.predicted[i].map((value) => format(value, 4))];
}

const kPpm = 1e6, kSeconds = 3600;
const kParameters = [
  ["Shift N, m", "shiftN", 1, 4], ["Shift E, m", "shiftE", 1, 4], ["Scale", "scale", 1, 10],
  ["Scale − 1, ppm", "scale", kPpm, 3, 1], ["Rotation, deg", "rotation", 1, 9], ["Rotation, arc-seconds", "rotation", kSeconds, 3, 0, 360],
  ["Shift H, m", "shiftH", 1, 4], ["Slope N, mm/km", "slopeN", kPpm, 3], ["Slope E, mm/km", "slopeE", kPpm, 3],
];

/** Parameters with their deviations: [name, value, deviation] as texts. A turn in arc-seconds is the shorter way round. */
export function parameterRows(result, format = shown) {
  const values = result.localization.describe(), { deviations } = result;
  return kParameters.filter(([, key]) => values[key] !== undefined).map(([name, key, factor, decimals, from = 0, turn = 0]) => {
    const value = turn && values[key] > turn / 2 ? values[key] - turn : values[key] - from;
    const deviation = deviations[key] === null ? null : deviations[key] * factor;
    return [name, format(value * factor, decimals), format(deviation, decimals)];
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
