// The page: what stands where, and the one row that is lit everywhere.
"use strict";

function startPage() {
  const page = JSON.parse(document.getElementById("page-data").textContent);
  page.rows = {};
  for (const {name, columns} of page.data) {
    const length = columns.length > 0 ? columns[0].values.length : 0;
    page.rows[name] = Array.from({length}, (_, i) => Object.fromEntries(columns.map(c => [c.field, c.values[i]])));
  }

  const figures = page.figures.map(figure => new PageFigure(figure, page));
  const tables = page.tables.map(table => new PageTable(table, page.rows[table.data]));
  place(figures, "first-figure", "more-figures", "figures");
  place(tables, "first-table", "more-tables", "tables");
  linkRows(page, figures);
  chooseTheme();
  if (location.hash) document.getElementById(location.hash.slice(1))?.scrollIntoView();
  return drawAll(figures);
}

function place(parts, first, others, section) {
  parts.forEach((part, i) => document.getElementById(i === 0 ? first : others).append(part.node));
  if (parts.length < 2) document.getElementById(section).hidden = true;
}

// One after the other, so that the first is seen at once.
async function drawAll(figures) {
  for (const figure of figures) {
    await figure.draw();
    await new Promise(resolve => setTimeout(resolve));
  }
  let waiting = 0;
  new ResizeObserver(() => {
    clearTimeout(waiting);
    waiting = setTimeout(() => {
      for (const figure of figures)
        if (Math.abs(figure.plot.clientWidth - figure.width) > 4) figure.draw();
    }, 150);
  }).observe(document.body);
  document.documentElement.dataset.drawn = figures.length;
}

// Hover, focus and the arrow keys light a row in every figure and table.
function linkRows(page, figures) {
  const named = new Map();
  for (const rows of Object.values(page.rows))
    for (const {key, name, descriptor, term, column} of rows)
      if (key && !named.has(key)) named.set(key, name ?? descriptor ?? term ?? column);
  const status = document.getElementById("lit");
  let lit = null;

  function light(key) {
    if (key === lit) return;
    lit = key;
    for (const figure of figures) figure.light(key);
    for (const line of document.querySelectorAll("tr.lit")) line.classList.remove("lit");
    if (key !== null)
      for (const line of document.querySelectorAll(`tr[data-key="${CSS.escape(key)}"]`)) line.classList.add("lit");
    status.hidden = key === null;
    status.textContent = key === null ? "" : named.get(key) ?? key;
  }

  const keyOf = target => target.closest?.("tr[data-key]")?.dataset.key ?? (target.__data__?.datum?.key || null);
  // While keys scroll the page, what comes to lie below a pointer at rest is not pointed at.
  let byKeys = false;
  document.addEventListener("pointerover", event => byKeys || light(keyOf(event.target)));
  document.addEventListener("pointermove", event => {
    if (byKeys) light(keyOf(event.target));
    byKeys = false;
  });
  document.addEventListener("focusin", event => light(keyOf(event.target)));
  document.addEventListener("keydown", event => {
    byKeys = true;
    if (event.key === "Escape") light(null);
    const line = event.target.closest?.("tr[data-key]");
    const plot = event.target.closest?.(".plot");
    const step = {ArrowDown: 1, ArrowRight: 1, ArrowUp: -1, ArrowLeft: -1}[event.key];
    if (!step) return;
    if (line) {
      (step > 0 ? line.nextElementSibling : line.previousElementSibling)?.focus();
      event.preventDefault();
    } else if (plot) {
      const figure = figures.find(one => one.plot === plot);
      figure.marksOf(null);
      const keys = [...figure.marks.keys()];
      if (keys.length === 0) return;
      const at = keys.indexOf(lit);
      light(keys[at < 0 ? (step > 0 ? 0 : keys.length - 1) : (at + step + keys.length) % keys.length]);
      event.preventDefault();
    }
  });
}

function chooseTheme() {
  const button = document.getElementById("theme"), root = document.documentElement;
  const dark = () => root.dataset.theme ? root.dataset.theme === "dark"
                                        : matchMedia("(prefers-color-scheme: dark)").matches;
  const name = () => button.textContent = dark() ? "Light" : "Dark";
  button.addEventListener("click", () => {
    root.dataset.theme = dark() ? "light" : "dark";
    name();
  });
  name();
}

startPage();
