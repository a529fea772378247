// Short names for what the page does with its elements.

export const byId = (id) => document.getElementById(id);

/** An element with properties, `dataset` entries by "data-…", ARIA attributes by their names, and children. */
export function element(tag, properties = {}, ...children) {
  const made = document.createElement(tag);
  for (const [name, value] of Object.entries(properties)) {
    if (name.includes("-") || name === "role") made.setAttribute(name, value);
    else made[name] = value;
  }
  made.append(...children);
  return made;
}

/** A table's rows of texts or elements; `classes(r, c)` names the class of a cell. */
export function fillTable(table, header, rows, { classes = () => "", rowClass = () => "" } = {}) {
  const head = header.map((text, c) => element("th", { scope: "col", className: classes(-1, c) }, text));
  const cells = (row, r) => row.map((cell, c) => element("td", { className: classes(r, c) }, cell));
  const body = rows.map((row, r) => element("tr", { className: rowClass(r) }, ...cells(row, r)));
  table.replaceChildren(element("thead", {}, element("tr", {}, ...head)), element("tbody", {}, ...body));
}

/** The message at the top of the page; an empty text takes it away. */
export function tell(text) {
  byId("message").textContent = text;
  byId("message").hidden = text === "";
}
