// The calibration as one page that needs no other file. Its numbers have a decimal point whatever the language.
import { estimates, kResidualHeader, parameterRows, residualCells } from "./calibration.js";
import { fileNumber } from "./numbers.js";

const kStyle = "body{font:15px/1.5 sans-serif;margin:2em auto;max-width:64em;padding:0 1em;color:#222}" +
  "table{border-collapse:collapse;margin:1em 0}" +
  "td,th{padding:.2em .7em;text-align:right;border-bottom:1px solid #ddd}td:first-child,th:first-child{text-align:left}" +
  "img{max-width:100%;border:1px solid #ddd}.warning{background:#fff3cd;border-left:4px solid #c90;padding:.5em 1em}";
const kCoordinates = [["lat", 10], ["lon", 10], ["h", 4], ["localN", 4], ["localE", 4], ["localH", 4]];
const kEscapes = { "&": "&amp;", "<": "&lt;", ">": "&gt;", '"': "&quot;" };

const escaped = (text) => String(text).replace(/[&<>"]/g, (character) => kEscapes[character]);
const number = (value, decimals) => (value === null ? "" : fileNumber(value, decimals));

function table(header, rows) {
  const line = (cells, tag) => `<tr>${cells.map((cell) => `<${tag}>${escaped(cell)}</${tag}>`).join("")}</tr>\n`;
  return `<table>\n${line(header, "th")}${rows.map((row) => line(row, "td")).join("")}</table>\n`;
}

/** `map` is the address of a picture; `points` are the control points in the order of the result. */
export function siteReport(result, { title, system, points, map }) {
  const residuals = points.map((point, i) => [point.name, point.use, ...residualCells(result, i, number)]);
  const given = (point) => kCoordinates.map(([key, decimals]) => number(point[key], decimals));
  const coordinates = points.map((point) => [point.name, ...given(point)]);
  const made = new Date().toISOString().slice(0, 16).replace("T", " ");
  return `<!DOCTYPE html>\n<html lang="en"><head><meta charset="utf-8"><title>Site calibration: ${escaped(title)}</title>` +
    `<style>${kStyle}</style></head><body>\n<h1>Site calibration: ${escaped(title)}</h1>\n` +
    result.warnings.map((warning) => `<p class="warning">${escaped(warning)}</p>\n`).join("") +
    `<ul>${estimates(result, number).map((text) => `<li>${escaped(text)}</li>`).join("")}</ul>\n` +
    `<img src="${map}" alt="Plan of the control points with residual vectors">\n` +
    `<h2>Parameters</h2>\n${table(["parameter", "value", "deviation"], parameterRows(result, number))}` +
    `<h2>Residuals</h2>\n<p>Given minus computed, metres (res); the same over their standard deviations (std); ` +
    `misfit to a calibration without the point (without).</p>\n${table(kResidualHeader, residuals)}` +
    `<h2>Coordinates</h2>\n${table(["point", "lat", "lon", "h", "local_n", "local_e", "local_h"], coordinates)}` +
    `<h2>Origin</h2>\n<p>Made ${made} UTC on the system ${escaped(system)}.</p>\n</body></html>\n`;
}
