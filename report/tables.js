// Tables: cells by kind, sorting, searching, a few rows at first, and the whole as CSV.
"use strict";

const kFirstRows = 12;
const kLittleMore = 4;  // rows over that which are not worth a button
const kLongText = 32;  // letters; a column with a longer cell wraps
const kWideBars = 3;  // of more columns with bars, each has a short one

// `digits` significant digits without an exponent where that is short, as the command prints them.
function significant(value, digits) {
  if (value === 0) return "0";
  const size = Math.floor(Math.log10(Math.abs(value)));
  if (size < -5 || size > 8) return minus(value.toExponential(digits - 1));
  const decimals = Math.max(0, digits - 1 - size);
  return minus(Number(value.toPrecision(digits)).toFixed(Math.min(decimals, 20)));
}

const minus = text => text.replace("-", "−");

function fixed(value, decimals) {
  const text = value.toFixed(decimals);
  return minus(Number(text) === 0 ? text.replace("-", "") : text);
}

function textOf(value, column) {
  if (value === null || value === undefined) return "";
  switch (column.kind) {
    case "value": return minus(String(Number(value.toPrecision(column.digits))));
    case "number": return significant(value, column.digits);
    case "fixed": case "bar": return fixed(value, column.digits);
    case "explained": return fixed(value, value > 0.9995 && value < 1 ? 6 : value > 0.995 && value < 1 ? 4 : 3);
    case "probability": return value < 0.0001 ? "<0.0001" : fixed(value, 4);
    case "share": return fixed(100 * value, 1) + " %";
    case "count": return value + " of " + column.digits;
    default: return String(value);
  }
}

// Long lists break after their commas alone.
const listText = text => text.length > kLongText
  ? text.split(", ").map(part => part.replaceAll(" ", "\u00a0")).join(", ") : text;

// A bar beside the number: from the left for a part of a whole, to both sides of the middle for signed values.
function barFor(value, column, largest) {
  if (!["share", "count", "bar"].includes(column.kind)) return null;
  const bar = element("span", {class: column.kind === "bar" ? "bar sides" : "bar share", "aria-hidden": "true"});
  if (value === null || value === undefined) {
    bar.style.visibility = "hidden";
    return bar;
  }
  const whole = column.kind === "count" ? column.digits : column.kind === "share" ? 1 : 2 * largest;
  const width = whole > 0 ? 100 * Math.abs(value) / whole : 0;
  const fill = element("i", value < 0 ? {class: "below"} : {});
  fill.style.width = width + "%";
  fill.style.left = column.kind !== "bar" ? 0 : value < 0 ? 50 - width + "%" : "50%";
  bar.append(fill);
  return bar;
}

function element(name, attributes = {}, ...children) {
  const made = document.createElement(name);
  for (const [key, value] of Object.entries(attributes)) made.setAttribute(key, value);
  made.append(...children);
  return made;
}

class PageTable {
  constructor(table, rows) {
    this.table = table;
    this.rows = rows;
    this.order = rows.map((_, i) => i);
    this.short = rows.length <= kFirstRows + kLittleMore;
    this.most = this.short ? Infinity : kFirstRows;
    this.largest = Object.fromEntries(table.columns.map(column =>
      [column.field, rows.reduce((most, row) => Math.max(most, Math.abs(row[column.field]) || 0), 0)]));
    this.classes = table.columns.map(column => column.kind !== "text" ? ""
      : rows.some(row => String(row[column.field] ?? "").length > kLongText) ? "text long" : "text");
    this.build();
    this.show();
  }

  build() {
    const {name, title, note, columns} = this.table;
    this.search = element("input", {type: "search", placeholder: "search", "aria-label": "Search in " + title});
    this.search.addEventListener("input", () => this.show());
    this.count = element("span", {class: "count", "aria-live": "polite"});
    this.more = element("button", {type: "button"}, "");
    this.more.addEventListener("click", () => {
      this.most = this.most === kFirstRows ? Infinity : kFirstRows;
      this.show();
    });
    const csv = element("button", {type: "button", title: "Full precision, as CSV"}, "CSV");
    csv.addEventListener("click", () => download(name + ".csv", "text/csv", this.csv()));
    const head = element("div", {class: "table-head"}, element("h3", {}, title));
    if (!this.short) head.append(this.count, this.search, this.more);
    head.append(csv);
    this.headings = columns.map((column, i) => {
      const button = element("button", {type: "button"}, column.heading || " ");
      button.addEventListener("click", () => this.sort(i));
      return element("th", {scope: "col", class: this.classes[i]}, button);
    });
    this.body = element("tbody");
    const bars = columns.filter(column => column.kind === "bar").length;
    const grid = element("table", {"aria-label": title, class: bars > kWideBars ? "slim" : ""},
                         element("thead", {}, element("tr", {}, ...this.headings)), this.body);
    this.node = element("div", {class: "table", id: name}, head);
    if (note) this.node.append(element("p", {class: "note"}, note));
    this.node.append(element("div", {class: "scroll", tabindex: "0", role: "region", "aria-label": title}, grid));
  }

  sort(i) {
    const heading = this.headings[i], {field, kind} = this.table.columns[i];
    const wasUp = heading.getAttribute("aria-sort") === "ascending";
    const down = heading.getAttribute("aria-sort") ? wasUp : kind !== "text";  // numbers: the largest first
    for (const other of this.headings) other.removeAttribute("aria-sort");
    heading.setAttribute("aria-sort", down ? "descending" : "ascending");
    const sign = down ? -1 : 1;
    this.order = this.rows.map((_, k) => k).sort((a, b) => {
      const left = this.rows[a][field], right = this.rows[b][field];
      if (left === null || right === null) return (left === null) - (right === null) || a - b;
      const order = kind === "text" ? String(left).localeCompare(String(right), "en", {numeric: true}) : left - right;
      return sign * order || a - b;
    });
    this.show();
  }

  show() {
    const wanted = this.search.value.trim().toLowerCase();
    const {columns} = this.table;
    const found = this.order.filter(i => !wanted || columns.some(column =>
      textOf(this.rows[i][column.field], column).toLowerCase().includes(wanted)));
    const shown = found.slice(0, this.most);
    this.body.replaceChildren(...shown.map(i => this.line(this.rows[i])));
    this.count.textContent = `${shown.length} of ${this.rows.length}` + (wanted ? `, ${found.length} found` : "");
    this.more.textContent = this.most === kFirstRows ? "show all" : "show fewer";
    this.more.hidden = found.length <= kFirstRows;
    const first = this.body.firstElementChild;
    if (first && first.dataset.key) first.tabIndex = 0;
  }

  line(row) {
    const line = element("tr");
    if (row.key !== undefined) {
      line.dataset.key = row.key;
      line.tabIndex = -1;
    }
    this.table.columns.forEach((column, i) => {
      const value = row[column.field];
      const cell = i === 0 ? element("th", {scope: "row", title: String(value ?? "")}, textOf(value, column))
                           : element("td", {class: this.classes[i]}, listText(textOf(value, column)));
      const bar = barFor(value, column, this.largest[column.field]);
      if (bar) cell.append(bar);
      line.append(cell);
    });
    return line;
  }

  // RFC 4180, numbers as they are.
  csv() {
    const quoted = value => {
      const text = value === null || value === undefined ? "" : String(value);
      return /[",\r\n]/.test(text) ? `"${text.replaceAll('"', '""')}"` : text;
    };
    const {columns} = this.table;
    const head = columns.map(column => quoted(column.field));
    const rows = this.rows.map(row => columns.map(column => quoted(row[column.field])));
    return [head, ...rows].map(cells => cells.join(",") + "\r\n").join("");
  }
}

function download(name, type, content) {
  const link = element("a", {download: name, href: URL.createObjectURL(new Blob([content], {type}))});
  link.click();
  setTimeout(() => URL.revokeObjectURL(link.href), 1000);
}
