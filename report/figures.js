// Figures: each chart drawn by Vega-Lite in the page's colours, and what one row lights in all of them.
"use strict";

// The chart with its colours replaced by the style sheet's properties, so that light, dark and print need no redrawing.
function themed(value, names) {
  if (typeof value === "string") return value in names ? `var(--${names[value]})` : value;
  if (Array.isArray(value)) return value.map(one => themed(one, names));
  if (value === null || typeof value !== "object") return value;
  return Object.fromEntries(Object.entries(value).map(([key, one]) => [key, themed(one, names)]));
}

function namesOfData(value, names = new Set()) {
  if (value === null || typeof value !== "object") return names;
  if (typeof value.data?.name === "string") names.add(value.data.name);
  for (const one of Object.values(value)) namesOfData(one, names);
  return names;
}

class PageFigure {
  constructor(figure, page) {
    this.figure = figure;
    this.page = page;
    const {name, title, alternative, caption, wide} = figure;
    const save = element("button", {type: "button", title: "Save the figure as SVG"}, "SVG");
    save.addEventListener("click", () => this.save());
    this.controls = element("div", {class: "controls"});
    this.canvas = element("div");  // apart from the plot, whose label Vega would take away
    this.plot = element("div", {class: "plot", role: "img", tabindex: "0", "aria-label": `${title}. ${alternative}`},
                        this.canvas);
    this.node = element("figure", {id: name, class: wide ? "wide" : ""},
                        element("div", {class: "figure-head"}, element("h3", {}, title), save),
                        this.controls, this.plot, element("figcaption", {}, caption));
    this.controls.addEventListener("input", () => this.marks = null);
  }

  // The chart with a copy of the data that it names: Vega writes into what it is given.
  chart() {
    const chart = structuredClone(this.figure.chart);
    chart.datasets = Object.fromEntries(
      [...namesOfData(chart)].map(name => [name, structuredClone(this.page.rows[name])]));
    return chart;
  }

  // Names one below the other take a step each; their number is the param "lines". Panels cannot take the page's width
  // by themselves: as many stand beside each other as have room, in even lines.
  fitted(chart) {
    const {concat: panels, usermeta, height, params} = chart;
    if (height?.step) chart.height = height.step * Math.max(2, params.find(param => param.name === "lines").value);
    if (!panels) return chart;
    const room = this.plot.clientWidth || 560;
    const most = Math.max(1, Math.floor(room / (usermeta.least + usermeta.gap)));
    const lines = Math.ceil(panels.length / most);
    chart.columns = Math.ceil(panels.length / lines);
    for (const panel of panels) panel.width = Math.max(60, Math.floor(room / chart.columns) - usermeta.gap);
    return chart;
  }

  async draw() {
    await this.drawWith({});
    const columns = this.legendColumns();
    if (columns > 0) await this.drawWith({columns});
    this.marks = null;
    this.width = this.plot.clientWidth;
  }

  async drawWith(legend) {
    const {palette, config} = this.page;
    const {datasets, ...look} = this.fitted(this.chart());
    const chart = {...themed(look, palette), datasets};
    const result = await vegaEmbed(this.canvas, chart, {
      mode: "vega-lite", renderer: "svg", actions: false, ast: true, bind: this.controls,
      config: themed({...config, legend: {...config.legend, ...legend}}, palette),
      tooltip: {theme: "custom", disableDefaultStyle: false},
    });
    this.view = result.view;
  }

  // How many entries a line of the legend has room for, when they run out of the figure; else 0.
  legendColumns() {
    const right = this.plot.getBoundingClientRect().right;
    const boxes = [...this.plot.querySelectorAll(".role-legend-label text")].map(text => text.getBoundingClientRect());
    if (!boxes.some(box => box.right > right)) return 0;
    const symbol = 30, room = right - Math.min(...boxes.map(box => box.left));
    return Math.max(1, Math.floor(room / (symbol + Math.max(...boxes.map(box => box.width)))));
  }

  // As it is drawn, with what was chosen in it, in the colours of a light page.
  async save() {
    const colours = Object.fromEntries(Object.entries(this.page.palette).map(([colour, name]) => [name, colour]));
    const svg = (await this.view.toSVG()).replaceAll(/var\(--([\w-]+)\)/g, (_, name) => colours[name]);
    download(this.figure.name + ".svg", "image/svg+xml",
             svg.replace(/<svg [^>]*>/, open => open + `<rect width="100%" height="100%" fill="${colours.paper}"/>`));
  }

  // Marks by the key of what they stand for.
  marksOf(key) {
    if (!this.marks) {
      this.marks = new Map();
      for (const mark of this.plot.querySelectorAll(".role-mark path, .role-mark rect, .role-mark text")) {
        const own = mark.__data__?.datum?.key;
        if (!own || mark.parentNode.classList.contains("mark-line")) continue;
        if (!this.marks.has(own)) this.marks.set(own, []);
        this.marks.get(own).push(mark);
      }
    }
    return this.marks.get(key) ?? [];
  }

  // Copies of the marks, above all others.
  light(key) {
    const svg = this.plot.querySelector("svg");
    if (!svg) return;
    this.over?.remove();
    const marks = key === null ? [] : this.marksOf(key);
    if (marks.length === 0) return;
    this.over = document.createElementNS("http://www.w3.org/2000/svg", "g");
    const toPage = svg.getScreenCTM().inverse();
    for (const mark of marks) {
      const copy = mark.cloneNode(false);
      const place = toPage.multiply(mark.getScreenCTM());
      copy.setAttribute("transform", `matrix(${place.a},${place.b},${place.c},${place.d},${place.e},${place.f})`);
      copy.classList.add("lit-mark");
      this.over.append(copy);
    }
    svg.append(this.over);
  }
}
