// Report pages in a real browser: made by the command, opened from disk, looked at, hovered, sorted and searched.
//
// usage: node browser_test.js STUDYSTATS EXAMPLES NODE_MODULES BROWSER
"use strict";

const assert = require("node:assert/strict");
const {execFileSync} = require("node:child_process");
const fs = require("node:fs");
const os = require("node:os");
const path = require("node:path");
const {after, before, test} = require("node:test");
const {pathToFileURL} = require("node:url");

const [command, examples, modules, executablePath] = process.argv.slice(2).map(one => path.resolve(one));
const {chromium} = require(path.join(modules, "playwright-core"));

const kLaptop = {width: 1366, height: 768}, kPhone = {width: 390, height: 844};
const folder = fs.mkdtempSync(path.join(os.tmpdir(), "studystats-report-"));
const example = name => path.join(examples, name);
const read = name => fs.readFileSync(example(name), "utf8").trim().split(/\r?\n/)
  .map(line => line.split(",").map(cell => cell.replaceAll('"', "")));

let browser, context;

before(async () => {
  browser = await chromium.launch({executablePath});
  context = await browser.newContext({viewport: kLaptop, acceptDownloads: true});
  context.setDefaultTimeout(10000);
});

after(async () => {
  await browser?.close();
  fs.rmSync(folder, {recursive: true});
});

function run(name, ...options) {
  const file = path.join(folder, name + ".html");
  execFileSync(command, [...options, "--report", file], {stdio: ["ignore", "ignore", "pipe"]});
  return file;
}

// Opens the page and waits until its figures are drawn. What the console says and what is asked for is collected.
async function open(file) {
  const page = await context.newPage();
  page.said = [];
  page.asked = [];
  page.on("console", message => ["error", "warning"].includes(message.type()) && page.said.push(message.text()));
  page.on("pageerror", error => page.said.push(String(error)));
  page.on("request", request => page.asked.push(request.url()));
  await page.goto(pathToFileURL(file).href);
  await page.waitForSelector("html[data-drawn]", {timeout: 20000});
  return page;
}

async function opened(name, ...options) {
  return open(run(name, ...options));
}

async function close(page, file) {
  const own = page.url().replace(/#.*/, "");
  assert.deepEqual(page.said, [], "nothing in the console");
  assert.deepEqual(page.asked.filter(url => url !== own && !/^(blob|data):/.test(url)), [], "nothing asked for");
  await page.close();
}

// How many marks of each kind a figure has, and how large it is.
const marksOf = (page, figure) => page.evaluate(name => {
  const svg = document.querySelector(`figure#${name} .plot svg`);
  if (!svg) return null;
  const marks = {};
  for (const group of svg.querySelectorAll(".role-mark")) {
    const kind = [...group.classList].find(one => one.startsWith("mark-")).slice(5);
    marks[kind] = (marks[kind] ?? 0) + group.childElementCount;
  }
  const {width, height} = svg.getBoundingClientRect();
  return {width, height, ...marks};
}, figure);

async function expectFigures(page, wanted) {
  for (const [figure, least] of Object.entries(wanted)) {
    const marks = await marksOf(page, figure);
    assert.ok(marks, `there is no figure ${figure}`);
    assert.ok(marks.width > 200 && marks.height > 60, `${figure} is ${marks.width} x ${marks.height}`);
    for (const [kind, count] of Object.entries(least))
      assert.equal(marks[kind], count, `${figure}: ${kind} of ${JSON.stringify(marks)}`);
  }
  const drawn = await page.evaluate(() => [document.querySelectorAll("figure").length,
                                           document.querySelectorAll("figure .plot svg .role-mark > *").length]);
  assert.equal(await page.evaluate(() => Number(document.documentElement.dataset.drawn)), drawn[0]);
}

// Moves the mouse over a row's point and sees it lit in these figures and in the table of rows.
async function expectLit(page, from, figures) {
  await page.locator(`figure#${from}`).scrollIntoViewIfNeeded();
  const at = await page.evaluate(name => {
    for (const mark of document.querySelectorAll(`figure#${name} .mark-symbol.role-mark path`)) {
      const {x, y, width, height} = mark.getBoundingClientRect();
      const here = [x + width / 2, y + height / 2];
      if (mark.__data__?.datum?.key && document.elementFromPoint(...here) === mark) return here;
    }
    return null;
  }, from);
  assert.ok(at, `${from} has no point that the mouse can reach`);
  await page.mouse.move(...at);
  const lit = await page.evaluate(() => ({
    name: document.getElementById("lit").textContent,
    figures: [...document.querySelectorAll("figure")].filter(one => one.querySelector(".lit-mark")).map(one => one.id),
  }));
  assert.match(lit.name, /^\w+ \d+$/);  // "wine 12"
  for (const figure of figures)
    assert.ok(lit.figures.includes(figure), `${lit.name} is lit in ${lit.figures}, not in ${figure}`);
  await page.mouse.move(1, 1);
  assert.equal(await page.locator(".lit-mark").count(), 0, "nothing stays lit");
}

// Text whose colour stands out less from what is behind it than WCAG 2.1 (success criterion 1.4.3) asks for.
const paleText = page => page.evaluate(() => {
  const numbers = colour => colour.match(/[\d.]+/g).map(Number);
  const luminance = ([r, g, b]) => [r, g, b].map(c => c / 255)
    .map(c => c <= 0.03928 ? c / 12.92 : ((c + 0.055) / 1.055) ** 2.4)
    .reduce((sum, c, i) => sum + c * [0.2126, 0.7152, 0.0722][i], 0);
  const behind = node => {
    for (; node; node = node.parentElement) {
      const colour = numbers(getComputedStyle(node).backgroundColor);
      if (colour.length < 4 || colour[3] > 0) return colour;
    }
    return [255, 255, 255];
  };
  const found = new Set();
  for (const node of document.querySelectorAll("body *")) {
    const own = [...node.childNodes].some(child => child.nodeType === 3 && child.data.trim() !== "");
    if (!own || ["SCRIPT", "STYLE", "NOSCRIPT"].includes(node.tagName) || node.getClientRects().length === 0) continue;
    if (node.closest(".skip, .role-mark")) continue;  // text within marks lies over their colours
    const style = getComputedStyle(node);
    const colour = node.ownerSVGElement ? style.fill : style.color;
    const [a, b] = [luminance(numbers(colour)), luminance(behind(node))].sort((x, y) => y - x);
    if ((a + 0.05) / (b + 0.05) < 4.5) found.add(`${node.tagName} "${node.textContent.trim().slice(0, 30)}" ${colour}`);
  }
  return [...found];
});

// What is wider than the screen: parts of the page, figures drawn for another width, text that runs out of its figure.
const tooWide = () => {
  const room = document.documentElement.clientWidth, found = [];
  for (const part of document.querySelectorAll("main *"))
    if (!part.closest(".scroll, svg") && part.getBoundingClientRect().right > room + 1)
      found.push(`${part.tagName} in ${part.closest("[id]").id}`);
  for (const svg of document.querySelectorAll("figure .plot svg")) {
    const figure = svg.closest("figure").id, {width, right} = svg.getBoundingClientRect();
    const drawn = svg.width.baseVal.value;
    if (width < 0.95 * drawn) found.push(`${figure} is shrunk from ${drawn} to ${width}`);
    for (const text of svg.querySelectorAll("text"))
      if (text.getBoundingClientRect().right > right + 2) found.push(`"${text.textContent}" in ${figure}`);
  }
  return found;
};

async function expectPhone(page) {
  await page.setViewportSize(kPhone);
  await page.waitForTimeout(300);
  for (let i = 0; i < 20 && (await page.evaluate(tooWide)).length > 0; ++i) await page.waitForTimeout(200);
  assert.deepEqual(await page.evaluate(tooWide), []);
  await page.setViewportSize(kLaptop);
}

async function expectWholePage(page) {
  const found = await page.evaluate(() => {
    const all = selector => [...document.querySelectorAll(selector)];
    const bottom = selector => document.querySelector(selector).getBoundingClientRect().bottom;
    const nameOf = one => one.textContent + (one.ariaLabel ?? "") + (one.labels?.[0]?.textContent ?? "");
    return {
      language: document.documentElement.lang,
      title: document.title,
      bottom: bottom("#first-figure .plot"),
      frame: bottom(".frame, #first-table"),
      mute: all("figure .plot").filter(one => !(one.ariaLabel?.length > 20)).length,
      astray: all("a[href^='#']").map(one => one.hash.slice(1)).filter(id => !document.getElementById(id)),
      unlinked: all(".warnings li").filter(one => !one.querySelector("a[href^='#']")).length,
      unnamed: all("button, th, input, select").filter(one => one.getClientRects().length > 0 && !nameOf(one).trim())
        .map(one => `${one.closest("[id]").id} ${one.tagName}`),
      twice: all("[id]").map(one => one.id).filter((id, i, ids) => ids.indexOf(id) !== i),
    };
  });
  assert.equal(found.language, "en");
  assert.ok(found.title.length > 5);
  assert.ok(found.frame < kLaptop.height, "the frame lies above the fold");
  assert.ok(found.bottom < kLaptop.height + 40, `the first picture ends at ${found.bottom}`);
  assert.equal(found.mute, 0, "every figure says what it shows");
  assert.deepEqual(found.astray, [], "links lead somewhere");
  assert.equal(found.unlinked, 0, "every warning leads to its cause");
  assert.deepEqual(found.unnamed, [], "headings, buttons and fields have names");
  assert.deepEqual(found.twice, []);
  for (const colorScheme of ["light", "dark"]) {
    await page.emulateMedia({colorScheme});
    assert.deepEqual(await paleText(page), [], `${colorScheme}: text that is hard to read`);
  }
  await page.emulateMedia({colorScheme: "light"});
  const printed = (await page.pdf({format: "A4"})).toString("latin1").match(/\/Type\s*\/Page\b/g).length;
  assert.ok(printed <= 5, `${printed} pages of paper`);
  await expectPhone(page);
}

// Figures of each page with the number of marks that follow from the tables: rows, columns, classes, clusters.
const kPages = [
  {name: "mlr", options: ["mlr", example("bloodbrain.csv"), "--response", "logBBB", "--max-steps", "8"],
   figures: {"observed-predicted": {symbol: 416}, "coefficient-spread": {symbol: 6}, "selection-frequency": {},
             "selection-path": {symbol: 8}, residuals: {symbol: 416}, williams: {symbol: 208}},
   hover: ["observed-predicted", ["residuals", "williams"]]},
  {name: "pls", options: ["pls", example("gasoline.csv"), "--response", "octane", "--test-rows", "51-60"],
   figures: {"components-figure": {}, "observed-predicted": {symbol: 110}, "coefficients-figure": {line: 1, area: 1},
             vip: {line: 1}, scores: {symbol: 60}, distances: {symbol: 60}, residuals: {}},
   hover: ["observed-predicted", ["scores", "distances", "residuals"]]},
  {name: "da", options: ["da", example("wine.csv"), "--class", "cultivar"],
   figures: {confusion: {rect: 18, text: 18}, scores: {symbol: 181}, "steps-figure": {}, "selection-frequency": {},
             distances: {symbol: 178}},
   hover: ["scores", ["distances"]]},
  {name: "pca", options: ["pca", example("wine.csv"), "--class", "cultivar", "--components", "4"],
   figures: {scree: {rect: 13}, scores: {symbol: 178}, "scores-by-column": {symbol: 178}, loadings: {rect: 13},
             biplot: {symbol: 178, text: 13}, "explained-shares": {rect: 52}, distances: {symbol: 178}},
   hover: ["scores", ["biplot", "distances", "scores-by-column"]]},
  {name: "cluster", options: ["cluster", example("iris.csv"), "--clusters", "3"],
   figures: {dendrogram: {}, plane: {symbol: 150}, silhouettes: {rect: 150}, sizes: {rect: 3, text: 3},
             "silhouettes-by-number": {}},
   hover: ["plane", ["silhouettes"]]},
  {name: "describe", options: ["describe", example("airquality.csv")],
   figures: {histograms: {}, histogram: {}, missing: {rect: 2}, correlations: {rect: 36}}},
];

for (const {name, options, figures, hover} of kPages)
  test(`The page of ${name} has its figures, and is readable on a laptop and a phone, light and dark`, async () => {
    const page = await opened(name, ...options);
    await expectFigures(page, figures);
    if (hover) await expectLit(page, ...hover);
    await expectWholePage(page);
    await close(page);
  });

test("An abandoned validation has a banner and no q² anywhere", async () => {
  const table = path.join(folder, "abandoned.csv");  // without the last row, a and b are equal
  fs.writeFileSync(table, "x,a,b,y\n3,1,1,2\n1,4,4,7\n4,2,2,1\n1,8,8,8\n5,5,5,2\n9,7,7,8\n2,1,1,1\n6,3,3,8\n" +
                          "5,2,2,2\n3,6,9,8\n");
  const page = await opened("abandoned", "mlr", table, "--response", "y", "--select", "all", "--folds", "loo",
                            "--corr-limit", "1");
  assert.ok(await page.locator(".banner[role=alert]").isVisible());
  const text = await page.evaluate(() =>
    [...document.querySelectorAll("body *:not(script)")].map(one => one.textContent).join(" "));
  assert.ok(text.includes("Not validated"));
  for (const figure of ["q²", "q2", "PRESS", "held out"]) assert.ok(!text.includes(figure), figure);
  await expectWholePage(page);
  await close(page);
});

test("Charts can be drawn as they lie in their folder, with their sample data", async () => {
  const page = await opened("charts", "mlr", example("cement.csv"), "--response", "y");
  const folder = path.join(__dirname, "../../report/charts");
  for (const name of fs.readdirSync(folder)) {
    const chart = JSON.parse(fs.readFileSync(path.join(folder, name), "utf8"));
    const marks = await page.evaluate(async drawn => {
      const node = document.querySelector("main").appendChild(document.createElement("div"));
      node.style.width = "500px";
      await vegaEmbed(node, drawn, {renderer: "svg", actions: false});
      return node.querySelectorAll(".role-mark > *").length;
    }, {...chart, width: 500});
    assert.ok(marks > 2, `${name} has ${marks} marks`);
    assert.deepEqual(page.said.splice(0), [], name);
  }
  await close(page);
});

test("More than 5,000 rows are sampled, the page says so and still lights each", async () => {
  const table = path.join(folder, "many.csv");
  const lines = Array.from({length: 6000}, (_, i) => `${i % 89},${(i * i) % 97},${(i * 7) % 83},${i % 13}`);
  fs.writeFileSync(table, ["a,b,c,d", ...lines].join("\n") + "\n");
  const page = await opened("many", "pca", table);
  await expectFigures(page, {scores: {symbol: 5000}, distances: {symbol: 5000}});
  assert.match(await page.locator("#data-card").innerText(), /5000 of 6000 rows/);
  await page.locator("figure#scores").scrollIntoViewIfNeeded();
  const lit = await page.evaluate(() => {
    const marks = [...document.querySelectorAll("figure#scores .mark-symbol.role-mark path")].slice(-20);
    return marks.map(mark => {
      mark.dispatchEvent(new PointerEvent("pointerover", {bubbles: true}));
      return document.querySelectorAll("figure#distances .lit-mark").length;
    });
  });
  assert.deepEqual(lit, Array(20).fill(1));
  await close(page);
});

test("The page is the same for the same input and SOURCE_DATE_EPOCH", () => {
  const pages = ["one", "two"].map(name => {
    const file = path.join(folder, name, "page.html");
    fs.mkdirSync(path.dirname(file));
    execFileSync(command, ["mlr", example("cement.csv"), "--response", "y", "--report", "page.html"], {
      stdio: ["ignore", "ignore", "pipe"],
      cwd: path.dirname(file),
      env: {...process.env, SOURCE_DATE_EPOCH: "1234567890"},
    });
    return fs.readFileSync(file, "utf8");
  });
  assert.equal(pages[0], pages[1]);
  assert.ok(pages[0].includes("2009-02-13"));
});

const firstColumn = (page, table) => page.locator(`#${table} tbody th`).allInnerTexts();
const column = (page, table, i) => page.locator(`#${table} tbody tr td:nth-child(${i})`).allInnerTexts();

test("Tables sort by mouse and by keyboard and are searched; keys walk through rows and figures", async () => {
  const page = await opened("tables", "mlr", example("linnerud.csv"), "--response", "Weight", "--select", "all");
  const observed = read("linnerud.csv").slice(1).map(cells => Number(cells[4]));
  const heading = page.locator("#rows thead button", {hasText: /^observed/});
  await page.locator("#rows button", {hasText: "show all"}).click();

  await heading.click();
  assert.deepEqual((await column(page, "rows", 2)).map(Number), [...observed].sort((a, b) => b - a));
  assert.equal(await heading.locator("..").getAttribute("aria-sort"), "descending");

  // From the search field onwards with the tabulator alone.
  await page.locator("#rows input[type=search]").focus();
  const reached = () => heading.evaluate(one => one === document.activeElement);
  for (let i = 0; i < 12 && !await reached(); ++i) await page.keyboard.press("Tab");
  await page.keyboard.press("Enter");
  assert.deepEqual((await column(page, "rows", 2)).map(Number), [...observed].sort((a, b) => a - b));
  assert.equal(await heading.locator("..").getAttribute("aria-sort"), "ascending");

  await page.locator("#rows input[type=search]").fill("person 1");
  const wanted = read("linnerud.csv").map(cells => cells[0]).filter(name => name.startsWith("person 1"));
  assert.deepEqual((await firstColumn(page, "rows")).sort(), wanted.sort());
  await page.locator("#rows input[type=search]").fill("");

  // A row that has the focus is lit, and the arrow keys move on.
  await page.locator("#rows tbody tr").first().focus();
  const before = await page.locator("#lit").innerText();
  await page.keyboard.press("ArrowDown");
  assert.notEqual(await page.locator("#lit").innerText(), before);
  assert.ok(await page.locator("figure#williams .lit-mark").count() > 0);
  await page.keyboard.press("Escape");
  assert.equal(await page.locator(".lit-mark").count(), 0);

  // So do they in a figure that has the focus.
  await page.locator("figure#williams .plot").focus();
  await page.keyboard.press("ArrowRight");
  assert.equal(await page.locator("#lit").innerText(), "person 1");
  assert.ok(await page.locator("figure#residuals .lit-mark").count() > 0);
  await close(page);
});

// Fields of RFC 4180, quoted or not.
function parseCsv(text) {
  const rows = [[]];
  for (const [, quoted, plain, end] of text.matchAll(/(?:"((?:[^"]|"")*)"|([^",\r\n]*))(,|\r\n)/g)) {
    rows.at(-1).push(quoted?.replaceAll('""', '"') ?? plain);
    if (end === "\r\n") rows.push([]);
  }
  return rows.slice(0, -1);
}

async function downloaded(page, button, name) {
  const [download] = await Promise.all([page.waitForEvent("download"), button.click()]);
  assert.equal(download.suggestedFilename(), name);
  return fs.readFileSync(await download.path(), "utf8");
}

test("The CSV button gives the rows at full precision", async () => {
  const table = path.join(folder, "quoted.csv"), output = path.join(folder, "output.csv");
  const [head, ...rows] = read("cement.csv");
  rows[0][0] = '"a ""quoted"", name"';
  fs.writeFileSync(table, [head, ...rows].map(cells => cells.join(",")).join("\n") + "\n");
  const page = await opened("csv", "mlr", table, "--response", "y", "--corr-limit", "1", "--output", output);
  const text = await downloaded(page, page.locator("#rows button", {hasText: "CSV"}), "rows.csv");
  assert.ok(text.includes('\r\n"a ""quoted"", name",'));
  const lines = parseCsv(text);
  assert.equal(lines.length, 14);
  const names = lines.slice(1).map(cells => cells[0]);
  assert.deepEqual(names, ['a "quoted", name', ...rows.slice(1).map(cells => cells[0])]);
  // The same numbers as --output writes, to the last digit.
  const there = parseCsv(fs.readFileSync(output, "utf8").replaceAll(/\r?\n/g, "\r\n"));
  const numbers = ([head, ...cells]) => {
    const at = head.indexOf("fitted");
    assert.ok(at > 0, head.join());
    return cells.map(row => Number(row[at]));
  };
  assert.deepEqual(numbers(lines), numbers(there));
  await close(page);
});

test("The SVG button gives a figure that stands alone", async () => {
  const page = await opened("svg", "da", example("wine.csv"), "--class", "cultivar");
  for (const [figure, marks] of [["confusion", 18], ["scores", 181]]) {
    const svg = await downloaded(page, page.locator(`figure#${figure} .figure-head button`), figure + ".svg");
    assert.match(svg, /^<svg [^>]*xmlns="http:\/\/www.w3.org\/2000\/svg"/);
    assert.ok(!svg.includes("var(--"), "colours of the page's style sheet");
    assert.ok(svg.match(/<path /g).length > marks, figure);
  }
  await close(page);
});

// Texts of a figure's axes, and its points in the order of the rows.
const axisTitles = (page, figure) => page.locator(`figure#${figure} .role-axis-title text`).allTextContents();
const pointsOf = (page, figure) => page.evaluate(name =>
  [...document.querySelectorAll(`figure#${name} .mark-symbol.role-mark path`)]
    .filter(mark => mark.__data__.datum.key)
    .map(mark => ({x: mark.__data__.x, colour: mark.getAttribute("fill"), datum: mark.__data__.datum})), figure);

// Waits until what is asked for answers yes.
async function until(what, ask) {
  for (let i = 0; i < 50; ++i) {
    if (await ask()) return;
    await new Promise(resolve => setTimeout(resolve, 100));
  }
  assert.fail("waited in vain for " + what);
}

test("Components, columns for colour, responses and figures of a path are chosen on the page", async () => {
  let page = await opened("choose-pca", "pca", example("wine.csv"), "--components", "4");
  await page.locator("figure#scores select").first().selectOption({index: 2});
  await until("the third component", async () => (await axisTitles(page, "scores"))[0].startsWith("PC3"));
  const byPixel = (await pointsOf(page, "scores")).sort((a, b) => a.x - b.x).map(point => point.datum.PC3);
  assert.equal(byPixel.length, 178);
  assert.deepEqual(byPixel, [...byPixel].sort((a, b) => a - b), "points lie in the order of the third component");

  const before = (await pointsOf(page, "scores-by-column")).map(point => point.colour);
  await page.locator("figure#scores-by-column select").first().selectOption({label: "proline"});
  await until("other colours", async () => (await pointsOf(page, "scores-by-column"))[0].colour !== before[0]);
  const proline = read("wine.csv").slice(1).map(cells => Number(cells[13]));
  assert.deepEqual((await pointsOf(page, "scores-by-column")).map(point => point.datum.shade), proline);
  await close(page);

  page = await opened("choose-pls", "pls", example("linnerud.csv"), "--response", "Weight,Waist,Pulse");
  await page.locator("figure#observed-predicted select").selectOption({label: "Waist"});
  await until("the other response", async () => (await axisTitles(page, "observed-predicted"))[0].startsWith("Waist"));
  const observed = (await pointsOf(page, "observed-predicted")).slice(0, 20).map(point => point.datum.observed);
  assert.deepEqual(observed, read("linnerud.csv").slice(1).map(cells => Number(cells[5])));
  await close(page);

  page = await opened("choose-mlr", "mlr", example("cement.csv"), "--response", "y", "--corr-limit", "1");
  await page.locator("figure#selection-path input[type=radio]").nth(1).check();
  await until("the axis of s", async () => (await axisTitles(page, "selection-path")).includes("s"));
  await close(page);
});
