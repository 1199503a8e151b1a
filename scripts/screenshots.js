// Pictures of report pages: one an analysis, of the example tables, as a laptop shows them.
//
// usage: node screenshots.js BUILD FOLDER
"use strict";

const {execFileSync} = require("node:child_process");
const fs = require("node:fs");
const os = require("node:os");
const path = require("node:path");
const {pathToFileURL} = require("node:url");

const top = path.dirname(__dirname);
const [build, images] = process.argv.slice(2).map(folder => path.resolve(folder));
const modules = path.join(build, "tests/report/browser/node_modules");
const cache = fs.readFileSync(path.join(build, "CMakeCache.txt"), "utf8");
const executablePath = cache.match(/^STUDYSTATS_BROWSER:.*=(.*)$/m)?.[1];
const {chromium} = require(path.join(modules, "playwright-core"));

const kPages = {
  describe: ["airquality.csv"],
  pca: ["wine.csv", "--class", "cultivar", "--components", "3"],
  mlr: ["bloodbrain.csv", "--response", "logBBB", "--max-steps", "12"],
  pls: ["gasoline.csv", "--response", "octane", "--test-rows", "51-60"],
  da: ["wine.csv", "--class", "cultivar"],
  cluster: ["iris.csv", "--clusters", "3"],
};

async function main() {
  const folder = fs.mkdtempSync(path.join(os.tmpdir(), "studystats-screenshots-"));
  fs.mkdirSync(images, {recursive: true});
  const browser = await chromium.launch({executablePath});
  // 1280 x 720 points in 1024 x 576 pixels: small files, and text that is still read.
  const context = await browser.newContext({viewport: {width: 1280, height: 720}, deviceScaleFactor: 0.8});
  for (const [analysis, options] of Object.entries(kPages)) {
    const file = path.join(folder, analysis + ".html");
    execFileSync(path.join(build, "bin/studystats"), [analysis, ...options, "--report", file],
                 {cwd: path.join(top, "examples"), stdio: "ignore"});
    const page = await context.newPage();
    await page.goto(pathToFileURL(file).href);
    await page.waitForSelector("html[data-drawn]");
    await page.screenshot({path: path.join(images, `report-${analysis}.png`)});
    await page.close();
  }
  await browser.close();
  fs.rmSync(folder, {recursive: true});
}

main();
