// Tables in CSV, as instruments and spreadsheets write them: every row keeps its text.

import { beginsNumber } from "./numbers.js";

const kSeparators = [",", ";", "\t", "|"];

/** What a file has wrong; the message says where. */
export class TableError extends Error {
  name = "TableError";
}

const isRemark = (text) => text.trim() === "" || text.startsWith("#");

// Whether a row goes on in the next line: a quotation mark at the start of a field that is not closed.
function isOpen(text, separator) {
  let open = false, atStart = true;
  for (let i = 0; i < text.length; ++i) {
    if (open) {
      if (text[i] !== '"') continue;
      if (text[i + 1] === '"') ++i;
      else open = false;
    } else if (text[i] === '"' && atStart) {
      open = true;
    }
    atStart = !open && text[i] === separator;
  }
  return open;
}

/** The values of a row. A quotation mark is special only at the start of a field; " " stands for runs of blanks. */
export function fieldsOf(text, separator) {
  if (separator === " ") return text.trim().split(/\s+/);
  if (!text.includes('"')) return text.split(separator);
  const quoted = separator === "\t" ? "\\t" : separator === "|" ? "\\|" : separator;
  const field = new RegExp(`(?:"((?:[^"]|"")*)"([^${quoted}]*)|([^${quoted}]*))(${quoted}|$)`, "gy");
  const fields = [];
  for (let found = field.exec(text); found; found = field.exec(text)) {
    fields.push(found[1] !== undefined ? found[1].replaceAll('""', '"') + found[2] : found[3]);
    if (found[4] === "") break;
  }
  return fields;
}

/** A value as a field of a row. */
export function csvField(value, separator) {
  const text = String(value);
  return text.includes(separator) || /["\r\n]/.test(text) ? `"${text.replaceAll('"', '""')}"` : text;
}

// Whether the commas of a row without header are those of its numbers, and blanks are between these: "52,5 13,4".
// Of one comma alone, "52,5 13", nobody can say; rows of degrees and minutes have more parts.
function hasDecimalCommas(row) {
  const parts = row.trim().split(/\s+/), commas = parts.filter((part) => part.includes(","));
  const mayBe = parts.length >= 2 && parts.length <= 4 && commas.every((part) => /^[+-]?\d+,\d+$/.test(part));
  if (mayBe && commas.length === 1)
    throw new TableError(`"${row.trim()}" can be read in two ways: write ; between the coordinates`);
  return mayBe && commas.length > 1;
}

function separatorOf(row) {
  if (hasDecimalCommas(row)) return " ";
  const counts = kSeparators.map((separator) => row.split(separator).length - 1);
  const most = Math.max(...counts);
  return most > 0 ? kSeparators[counts.indexOf(most)] : /\S\s+\S/.test(row) ? " " : ",";
}

function joinOpenRows(lines, separator) {
  const rows = [];
  for (let i = 0; i < lines.length; ++i) {
    const row = { line: i + 1, text: lines[i] };
    while (row.text.includes('"') && !isRemark(row.text) && isOpen(row.text, separator)) {
      if (++i === lines.length) throw new TableError(`row ${row.line}: a quotation mark is never closed`);
      row.text += `\n${lines[i]}`;
    }
    rows.push(row);
  }
  return rows;
}

// A separator at the end of the header, or of a row that is longer than it, belongs to no field.
const withoutEnd = (text, separator) =>
  separator !== " " && text.endsWith(separator) ? text.slice(0, -separator.length) : text;

/**
 * A table of a text: { separator, lineEnd, names, rows, remarks }. `names` is null where the first row has numbers;
 * a row is { line, text }. Remarks and blank lines stand with the index of the row before which they come.
 */
export function readTable(text) {
  const lineEnd = text.includes("\r\n") ? "\r\n" : "\n";
  const lines = text.replace(/^\uFEFF/, "").split(/\r?\n/);
  if (lines.at(-1) === "") lines.pop();
  const told = /^sep=(.)$/i.exec(lines[0] ?? "")?.[1];
  const first = lines.findIndex((line, i) => !isRemark(line) && !(told && i === 0));
  if (first < 0) throw new TableError("there is no row in it");
  const separator = told ?? separatorOf(lines[first]);
  const table = { separator, lineEnd, names: null, rows: [], remarks: [], header: "" };
  for (const row of joinOpenRows(lines, separator)) {
    const remark = isRemark(row.text) || told && row.line === 1;
    const top = !table.header && !table.rows.length;
    if (remark) table.remarks.push({ before: table.rows.length, text: row.text, top });
    else if (top && isHeader(fieldsOf(row.text, separator))) takeHeader(table, row);
    else table.rows.push({ line: row.line, text: row.text });
  }
  if (!table.rows.length) throw new TableError("there is no row of coordinates in it");
  return table;
}

// Names, and no number among them.
const isHeader = (fields) => !fields.some(beginsNumber);

function takeHeader(table, row) {
  table.header = withoutEnd(row.text, table.separator);
  table.names = fieldsOf(table.header, table.separator).map((name) => name.trim());
}

/** The values of a row; throws where the row has more or fewer of them than `count`. */
export function valuesOf(table, row, count) {
  let values = fieldsOf(row.text, table.separator);
  if (values.length === count + 1 && values.at(-1) === "") values.pop();
  if (values.length !== count)
    throw new TableError(`row ${row.line}: it has ${values.length} fields, not ${count}`);
  return values;
}

/** The table with columns added to its rows; `cells(i)` are those of row i, as text. */
export function writeTable(table, count, names, cells) {
  const { separator } = table;
  const extended = (text, added) => [text, ...added.map((cell) => csvField(cell, separator))].join(separator);
  const lines = table.remarks.filter((remark) => remark.top).map((remark) => remark.text);
  if (table.names) lines.push(extended(table.header, names));
  let remarks = table.remarks.filter((remark) => !remark.top);
  table.rows.forEach((row, i) => {
    while (remarks.length && remarks[0].before <= i) lines.push(remarks.shift().text);
    const fields = fieldsOf(row.text, separator);
    const text = fields.length > count && fields.at(-1) === "" ? withoutEnd(row.text, separator) : row.text;
    lines.push(extended(text + separator.repeat(Math.max(0, count - fields.length)), cells(i)));
  });
  lines.push(...remarks.map((remark) => remark.text));
  return lines.join(table.lineEnd) + table.lineEnd;
}
