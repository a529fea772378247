// Numbers and angles as people write them in files, and as the page shows them.

const kFigure = "(\\d+\\.?\\d*|\\.\\d+)";
const kNumber = new RegExp(`^[+-]?${kFigure}([eE][+-]?\\d+)?$`);
const kWhole = /^\d+$/, kThousands = /^[+-]?\d{1,3},\d{3}$/;
// Degrees; degrees and minutes; degrees, minutes and seconds.
const kAngle = new RegExp(
  `^${kFigure}\\s*[°d]?$` +
  `|^${kFigure}(?:\\s*[°d:]\\s*|\\s+)${kFigure}\\s*['′m]?$` +
  `|^${kFigure}(?:\\s*[°d:]\\s*|\\s+)${kFigure}(?:\\s*['′m:]\\s*|\\s+)${kFigure}\\s*(?:["″s]|'')?$`);
const kAngles = {
  latitude: { largest: 90, sign: { N: 1, S: -1 } },
  longitude: { largest: 360, sign: { E: 1, W: -1 } },
};

/** Whether a text looks like the beginning of a number, or of an angle. */
export const beginsNumber = (text) => /^[\s+\-−]*[NSEW]?\s*[.,]?\d/.test(text);

// The degrees of an angle without letter and sign, NaN for what is none: only the last figure has decimals.
function degreesOf(text) {
  const figures = kAngle.exec(text)?.slice(1).filter((figure) => figure !== undefined);
  if (!figures || !figures.slice(0, -1).every((figure) => kWhole.test(figure))) return NaN;
  const [degrees, minutes = 0, seconds = 0] = figures.map(Number);
  return minutes < 60 && seconds < 60 ? degrees + (minutes + seconds / 60) / 60 : NaN;
}

// A sign before the figures, or the letter of a hemisphere before or behind them.
function angleOf(text, { largest, sign }) {
  const before = sign[text[0]], behind = sign[text.at(-1)];
  if (before && behind) return NaN;
  const rest = before ? text.slice(1).trim() : behind ? text.slice(0, -1).trim() : text;
  const signed = /^[+\-−]/.test(rest);
  if (signed && (before || behind)) return NaN;
  const degrees = degreesOf(signed ? rest.slice(1).trim() : rest);
  return degrees <= largest ? (before ?? behind ?? (/^[-−]/.test(rest) ? -1 : 1)) * degrees : NaN;
}

/**
 * Reads the numbers of one file, which all have a decimal point or all a decimal comma: the first that shows one
 * settles it. "12,345", which may be thousands, settles nothing. What is no number is NaN.
 */
export class NumberReader {
  constructor(mark = "") {
    this.mark = mark;
  }
  number(text) {
    return this.#read(text, kThousands.test(text.trim()), (plain) => (kNumber.test(plain) ? Number(plain) : NaN));
  }
  /** `kind` is "latitude" or "longitude"; degrees, also in minutes and seconds: "52 30 15.5 N". */
  angle(text, kind) {
    return this.#read(text, false, (plain) => angleOf(plain, kAngles[kind]));
  }
  #read(text, mayBeThousands, parse) {
    const plain = text.trim(), comma = plain.includes(","), point = plain.includes(".");
    if (comma && point || comma && this.mark === "." || point && this.mark === ",") return NaN;
    if (comma && this.mark === "" && mayBeThousands) return NaN;
    const value = parse(comma ? plain.replace(",", ".") : plain);
    if (!Number.isNaN(value) && this.mark === "" && (comma || point)) this.mark = comma ? "," : ".";
    return value;
  }
}

/** A number for a file: a point and no groups, or the comma of the file it goes into; empty for none. */
export function fileNumber(value, decimals, mark = ".") {
  if (!Number.isFinite(value)) return "";
  const text = value.toFixed(decimals);
  return mark === "," ? text.replace(".", ",") : text;
}

const formats = new Map();

/** A number for the screen, as the user's language writes it; a dash for none. */
export function shown(value, decimals) {
  if (value === null || value === undefined || !Number.isFinite(value)) return "–";
  const digits = { minimumFractionDigits: decimals, maximumFractionDigits: decimals };
  if (!formats.has(decimals)) formats.set(decimals, new Intl.NumberFormat(undefined, digits));
  return formats.get(decimals).format(value);
}

/** Decimals of a length and of an angle in files, as the program writes them. */
export const kLengthDecimals = 4, kDegreeDecimals = 10;
