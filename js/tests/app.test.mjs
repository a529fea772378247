import assert from "node:assert/strict";
import { existsSync, mkdtempSync, rmSync } from "node:fs";
import { tmpdir } from "node:os";
import { join } from "node:path";
import { after, before, test } from "node:test";
import { fileURLToPath } from "node:url";
import { assemble, listOf } from "../app/assemble/assemble.mjs";
import { registeredSystems } from "../app/assemble/registry.mjs";
import { serve } from "../app/assemble/serve.mjs";
import { NumberReader } from "../app/page/numbers.js";
import { fieldsOf, readTable, writeTable } from "../app/page/table.js";
import { Browser, chromium } from "./browser.mjs";
import { built, root, simd, textOf } from "./package.mjs";

const system = (code, place, area, parameters) => ({
  code, place, name: `system ${code}`, notes: [],
  file: {
    name: `system ${code}`, area, local: { ellipsoid: "GRS80" },
    projection: { name: "TMERCSPHER", "Central Meridian": 9, Scale: 0.9996, Lat0: 0, East0: 500000, North0: 0, ...parameters },
  },
});
const withFile = (described, sections) => ({ ...described, file: { ...described.file, ...sections } });
const britain = { west: -9, south: 49, east: 3, north: 61 };
const germany = { west: 6, south: 47, east: 12, north: 55 };
const systems = [
  system("25832", "Germany - west", germany),
  system("25833", "Germany - east", { ...germany, west: 12, east: 18 }, { "Central Meridian": 15 }),
  system("7285", "United States (USA) - Indiana - county of Germany", { west: -86, south: 39, east: -85, north: 40 }),
  withFile(system("9999", "Germany - counting south and west", germany), { axes: { grid: "SW" } }),
  withFile({ ...system("27700", "Great Britain", britain), file: JSON.parse(textOf("examples/great_britain/system.json")) }, { area: britain }),
];

test("numbers are read as the program reads them", () => {
  const numbers = new NumberReader();
  assert.ok(Math.abs(numbers.angle("52 30 15.5 N", "latitude") - (52 + 30 / 60 + 15.5 / 3600)) < 1e-13);
  for (const text of ["-0d7m40s", "0°7'40\"W", "W 0:07:40"])
    assert.ok(Math.abs(numbers.angle(text, "longitude") + 460 / 3600) < 1e-13, text);
  for (const text of ["91", "52 60 0", "52.5 30", "52 30 E", "-5 S", "1 2 3 4", ""])
    assert.ok(Number.isNaN(numbers.angle(text, "latitude")), text);
  const commas = new NumberReader();
  assert.ok(Number.isNaN(commas.number("12,345"))); // may be thousands
  assert.equal(commas.number("3500071,5"), 3500071.5);
  assert.equal(commas.number("12,345"), 12.345);
  assert.ok(Number.isNaN(commas.number("1.5")) && Number.isNaN(commas.number("0x10")) && Number.isNaN(commas.number("1e")));
});

test("rows keep their text beside results", () => {
  const text = 'sep=;\r\n# remark\r\nname;n;\r\n"a ""b"";c";1,5;\r\n\r\nd"5;2,5;\r\n# end\r\n';
  const table = readTable(text);
  assert.deepEqual(table.names, ["name", "n"]);
  assert.deepEqual(fieldsOf(table.rows[0].text, ";"), ['a "b";c', "1,5", ""]);
  const written = writeTable(table, 2, ["r"], (i) => [`${i}`]);
  assert.equal(written, 'sep=;\r\n# remark\r\nname;n;r\r\n"a ""b"";c";1,5;0\r\n\r\nd"5;2,5;1\r\n# end\r\n');
  assert.throws(() => readTable('a,b\n1,"2\n3'), /row 2: a quotation mark is never closed/);
  assert.equal(readTable("7 5557061.25 3500071.5\n8 1 2\n").names, null);
  const separators = ["52,5 13,4", "A 52,5 13,4", "52.5,13.4", "52.5, 13.4", "52 30 15,13 20 10", "52,13"].map((row) => readTable(row).separator);
  assert.deepEqual(separators, [" ", " ", ",", ",", ",", ","]);
  assert.throws(() => readTable("52,5 13"), /can be read in two ways/);
});

const kSeriesRoundTrip = 1e-7; // degrees, of the series 6.6° from its meridian
const kSevenParameters = 7; // metres: twice what Ordnance Survey states for 95 % of points
const program = process.env.GEOMATH_PROGRAM ?? fileURLToPath(new URL("build/release/tools/geomath", root));
test("the list has the registry's systems, the library takes them", { skip: !existsSync(program) && `${program} is absent` }, async () => {
  const listed = await registeredSystems(program, { words: "british national" });
  assert.ok(listOf(listed, "").countries.includes("United Kingdom (UK)"));
  const grid = listed.find(({ code }) => code === "27700");
  const chain = simd.CoordinateChain.fromSystem(grid.file);
  const [head, ...rows] = textOf("examples/great_britain/points.csv").trim().split(/\r?\n/).map((line) => line.split(","));
  for (const row of rows) {
    const at = (column) => Number(row[head.indexOf(column)]);
    const [north, east] = chain.toLocal(at("lat"), at("lon"), at("h"));
    assert.ok(Math.hypot(north - at("northing_m"), east - at("easting_m")) < kSevenParameters, row[0]);
  }
  assert.ok(grid.notes.some((note) => note.includes("is better")), "that a grid is more accurate");
});

const british = systems.find(({ code }) => code === "27700");
const skip = chromium ? false : "chromium is absent: the page was not looked at in a browser";
let folder, server, browser, page, url;

before(async () => {
  if (skip) return;
  folder = mkdtempSync(join(tmpdir(), "geomath-app-"));
  assemble(folder, fileURLToPath(built), listOf(systems, "a list of this test"));
  server = await serve(folder, 0);
  url = `http://localhost:${server.address().port}/`;
  browser = new Browser();
  page = await browser.page();
  await page.look();
  await page.open(url);
  await page.until("document.documentElement.dataset.ready === 'yes'");
});
after(async () => {
  if (skip) return;
  await browser.close();
  server.close();
  rmSync(folder, { recursive: true });
});

const statusIs = (text) => page.until(`document.getElementById("status").textContent.includes(${JSON.stringify(text)})`);
const choose = (code) => page.value(`{
  const search = document.getElementById("search");
  search.value = "${code}";
  search.dispatchEvent(new Event("input"));
  document.querySelector("#found li").click();
}`);
const cells = (selector) =>
  page.value(`[...document.querySelectorAll("${selector}")].map((row) => [...row.cells].map((cell) => cell.textContent.trim()))`);

test("it works without a network, and reaches no other host", { skip }, async () => {
  await page.until("document.getElementById('offline').textContent === 'Ready to work offline'");
  const closed = new Promise((resolve) => server.close(resolve));
  server.closeAllConnections();
  await closed;
  await page.open(url);
  await page.until("document.documentElement?.dataset.ready === 'yes'");
  await choose("25832");
  await page.drop([{ name: "p.csv", text: "lat,lon\n50,9\n" }]);
  await statusIs("1 of 1 points converted");
  const policies = await page.value("fetch('index.html').then((answer) => answer.headers.get('content-security-policy'))");
  assert.match(policies, /connect-src 'self'/);
  assert.equal(await page.value("fetch('https://example.org/').then(() => 'sent', () => 'refused')"), "refused");
  const violated = await page.value(`new Promise((resolve) => {
    addEventListener("securitypolicyviolation", ({ violatedDirective }) => resolve(violatedDirective), { once: true });
    fetch("https://example.org/").catch(() => {});
  })`);
  assert.equal(violated, "connect-src");
  server = await serve(folder, 0);
});

test("a CSV file is converted both ways, with the package's own numbers", { skip }, async () => {
  const chain = simd.CoordinateChain.fromSystem(british.file);
  await choose("27700");
  const text = textOf("examples/great_britain/points.csv");
  await page.drop([{ name: "points.csv", text }]);
  const rows = text.trim().split(/\r?\n/).map((line) => line.split(",")), [head, ...given] = rows;
  await statusIs(`${given.length} of ${given.length} points converted`);
  const [name, written] = await page.download("document.getElementById('save-csv').click()");
  assert.equal(name, "points_grid.csv");
  const lines = written.trim().split(/\r?\n/);
  assert.equal(lines[0], `${rows[0].join(",")},n,e,h_local`);
  given.forEach((row, i) => {
    const at = (column) => Number(row[head.indexOf(column)]);
    const expected = chain.toLocal(at("lat"), at("lon"), at("h")).map((value) => value.toFixed(4));
    assert.equal(lines[i + 1], [...row, ...expected].join(","));
  });
  // Back, from the results.
  await page.value("document.querySelector('[value=toGlobal]').click()");
  await page.drop([{ name: "back.csv", text: written }]);
  await statusIs(`${given.length} of ${given.length} points converted`);
  const features = JSON.parse((await page.download("document.getElementById('save-geojson').click()"))[1]).features;
  given.forEach((row, i) => {
    const [lon, lat] = features[i].geometry.coordinates;
    const misses = [lat - Number(row[head.indexOf("lat")]), lon - Number(row[head.indexOf("lon")])];
    assert.ok(misses.every((miss) => Math.abs(miss) < kSeriesRoundTrip), row[0]);
  });
});

test("rows that fail are told by their number and lose nothing", { skip }, async () => {
  await page.value("document.querySelector('[value=toGrid]').click()");
  await choose("25832");
  await page.drop([{ name: "bad.csv", text: "name;lat;lon;h\na;48,5;9;1\nb;95;9;1\nc;x;9;1\nd;48;9\ne;48;9;\n# end\n" }]);
  await statusIs("1 of 5 points converted");
  const told = await page.value("[...document.querySelectorAll('#problem-list li')].map((item) => item.textContent)");
  assert.deepEqual(told, ['row 3: latitude "95" is no such angle', 'row 4: latitude "x" is no such angle', "row 5: it has 3 fields, not 4",
    "row 6: height is empty"]);
  const [, written] = await page.download("document.getElementById('save-csv').click()");
  const lines = written.split("\n");
  assert.match(lines[1], /^a;48,5;9;1;537\d{4},\d{4};500000,0000;1,0000$/);
  assert.deepEqual(lines.slice(2, 7).filter((_, i) => i !== 1), ["b;95;9;1;;;", "d;48;9;;;;", "e;48;9;;;;", "# end"]);
  await page.drop([{ name: "site.csv", text: "x,y\n1,2\n" }]);
  await statusIs("Which column is the latitude?");
  await page.drop([{ name: "site.csv", text: "lat,lon,Height,Ellipsoidal Height\n48,9,1,2\n" }]);
  await statusIs("Which column is the height?");
  await page.drop([{ name: "s.json", text: '{"global": {"ellipsoid": "WGS48"}, "projection": {"name": "TMERC"}}' }]);
  await page.until("document.getElementById('message').textContent.includes('did you mean')");
});

test("a system file waits for the grid that it names", { skip }, async () => {
  await page.drop([{ name: "p.csv", text: "lat,lon,h\n48.5,9.5,100\n" }]);
  await page.drop([{ name: "n.json", text: JSON.stringify({ ...systems[0].file, geoid: { grid: "grids/Flat.gtx" } }) }]);
  await page.until("document.getElementById('message').textContent === 'n.json: the system needs Flat.gtx: drop it here as well'");
  await page.drop([{ name: "flat.gtx", base64: gtx(47, 8, 0.5, 6, 6, 47.5) }]);
  await page.until("document.querySelector('#table tbody').rows[0].cells[6]?.textContent === '52.5000'");
});

test("a frame that moves asks for the date", { skip }, async () => {
  const moving = { ...systems[0].file, frame: { from: "ITRF2014", to: "ETRF2014" } };
  await page.drop([{ name: "m.json", text: JSON.stringify(moving) }]);
  await statusIs("need their date");
  await page.value("document.getElementById('epoch').value = '2015'; document.getElementById('epoch').dispatchEvent(new Event('change'))");
  await statusIs("1 of 1 points converted");
  const [north] = simd.CoordinateChain.fromSystem(moving).toLocal([48.5], [9.5], [100], { epoch: 2015 });
  assert.equal((await cells("#table tbody tr"))[0][4].replaceAll(",", ""), north[0].toFixed(4));
});

test("systems are found by name, place and country", { skip }, async () => {
  await browser.send("Browser.grantPermissions", { permissions: ["geolocation"] });
  await page.send("Emulation.setGeolocationOverride", { latitude: 50, longitude: 14, accuracy: 1 });
  await page.value("document.getElementById('here').click()");
  const found = () => page.value("[...document.querySelectorAll('#found li')].map((option) => option.textContent.slice(0, 5))");
  await page.until("document.getElementById('search').value === '50.0000, 14.0000'");
  assert.deepEqual(await found(), ["25833"]);
  await page.value("document.getElementById('country').value = 'Great Britain'; document.getElementById('country').dispatchEvent(new Event('change'))");
  assert.deepEqual(await found(), ["27700"]);
  await page.value("document.getElementById('country').value = 'Germany'; document.getElementById('country').dispatchEvent(new Event('change'))");
  assert.equal((await found()).indexOf("7285 "), 3); // a county of that name comes last
});

test("lines and polygons are converted vertex by vertex", { skip }, async () => {
  await choose("25833");
  await page.value("document.querySelector('[value=toGlobal]').click()");
  const ring = [[500000, 5500000], [500100, 5500000], [500100, 5500100], [500000, 5500000]];
  const document = { type: "FeatureCollection", features: [
    { type: "Feature", properties: { a: 1 }, geometry: { type: "Polygon", coordinates: [ring] } },
    { type: "Feature", properties: {}, geometry: { type: "LineString", coordinates: [[500000, 5500000, 7], [NaN, 1]] } }] };
  await page.drop([{ name: "f.geojson", text: JSON.stringify(document) }]);
  await statusIs("5 of 6 points converted");
  const { features } = JSON.parse((await page.download("document.getElementById('save-geojson').click()"))[1]);
  const chain = simd.CoordinateChain.fromSystem(systems[1].file);
  const [lat, lon] = chain.toGlobal(5500100, 500100);
  assert.deepEqual(features[0].geometry.coordinates[0][2], [lon, lat]);
  assert.deepEqual([features[0].properties, features[1].geometry], [{ a: 1 }, null]);
});

test("100,000 rows leave the page fluid", { skip }, async (t) => {
  await page.value("document.querySelector('[value=toGrid]').click()");
  await choose("25832");
  await page.value(`{
    const rows = Array.from({ length: 100000 }, (_, i) => (47 + i / 20000).toFixed(6) + "," + (6 + (i % 1000) / 200).toFixed(6) + ",100");
    const transfer = new DataTransfer();
    transfer.items.add(new File(["lat,lon,h\\n" + rows.join("\\n")], "many.csv"));
    window.many = transfer;
    window.longest = 0;
    new PerformanceObserver((list) => list.getEntries().forEach(({ duration }) => (longest = Math.max(longest, duration))))
      .observe({ entryTypes: ["longtask"] });
  }`);
  await new Promise((resolve) => setTimeout(resolve, 100)); // the file is made
  await page.value("longest = 0, document.body.dispatchEvent(new DragEvent('drop', { bubbles: true, cancelable: true, dataTransfer: many }))");
  await statusIs("100,000 of 100,000 points converted");
  await page.until("document.querySelectorAll('#table tbody tr').length === 50");
  const longest = await page.value("longest");
  t.diagnostic(`longest pause ${Math.round(longest)} ms`);
  const kPause = 1000; // milliseconds, on a machine that does other things beside
  assert.ok(longest < kPause, `${longest} ms`);
});

test("north is up where the grid counts south", { skip }, async () => {
  // Of a file whose axes are in another order, columns are found by their names.
  const turned = { ...systems[0].file, axes: { grid: "EN" } };
  await page.drop([{ name: "turned.json", text: JSON.stringify(turned) }, { name: "p.csv", text: "lat,lon\n48,9\n" }]);
  await page.until("document.querySelector('#table tbody')?.rows[0].cells[4]?.textContent === '500,000.0000'");
  await choose("9999");
  await page.drop([{ name: "p.csv", text: "name,lat,lon\nlow,48,9\nhigh,49,9\nright,48,10.5\n" }]);
  await statusIs("3 of 3 points converted");
  await page.value("document.getElementById('plan').focus()");
  const latitude = () => page.value("document.getElementById('at-lat').textContent").then(parseFloat);
  const start = await latitude();
  await page.key("ArrowUp");
  assert.ok(await latitude() > start);
});

test("the pointer tells declination and geoid height", { skip }, async () => {
  await choose("25832");
  await page.drop([{ name: "p.csv", text: "lat,lon\n48.5,9.5\n" }, { name: "flat.gtx", base64: gtx(47, 8, 0.5, 6, 6, 47.5) }]);
  await statusIs("1 of 1 points converted");
  await page.until("document.getElementById('at-geoid').textContent === '47.500 m (flat.gtx)'");
  const expected = new simd.MagneticField(new Date()).declination(48.5, 9.5);
  const shown = `${Math.abs(expected).toFixed(2)}° ${expected < 0 ? "W" : "E"}`;
  await page.until(`document.getElementById("at-declination").textContent === "${shown}"`);
});

// A geoid of one height (NOAA's GTX: south, west, steps, rows and columns, floats; big endian).
function gtx(south, west, step, rows, columns, height) {
  const bytes = Buffer.alloc(40 + 4 * rows * columns);
  [south, west, step, step].forEach((value, i) => bytes.writeDoubleBE(value, 8 * i));
  bytes.writeInt32BE(rows, 32);
  bytes.writeInt32BE(columns, 36);
  for (let i = 0; i < rows * columns; ++i) bytes.writeFloatBE(height, 40 + 4 * i);
  return bytes.toString("base64");
}

const kControl = textOf("examples/site/control.csv");

function expectedSite(without) {
  const [head, ...rows] = kControl.trim().split("\n").map((line) => line.split(","));
  const column = (name) => rows.map((row) => row[head.indexOf(name)]), numbers = (name) => column(name).map(Number);
  return new simd.Calibration({
    name: column("name"), lat: numbers("lat"), lon: numbers("lon"), h: numbers("h"), localN: numbers("local_n"),
    localE: numbers("local_e"), localH: numbers("local_h"), use: column("use").map((use, i) => (i === without ? "none" : use)),
  }).solve();
}
const residuals = (result) => result.residuals.map((row) => row.map((value) => value.toFixed(4)));

test("a site is calibrated; points go out and in by box and by hand", { skip }, async () => {
  await page.value("document.getElementById('tab-site').click(); document.getElementById('system-clear').click()");
  await page.drop([{ name: "control.csv", text: kControl }]);
  const shown = async () => (await cells("#residuals tbody tr")).map((row) => row.slice(2, 5));
  const shows = async (result) => assert.deepEqual(await shown(), residuals(result));
  await page.until("document.querySelectorAll('#residuals tbody tr').length === 12");
  await shows(expectedSite());
  await page.value("document.querySelectorAll('#residuals input')[3].click()");
  await shows(expectedSite(3));
  await page.value("document.querySelectorAll('#residuals input')[3].click()");
  await shows(expectedSite());
  await page.drop([{ name: "bad.csv", text: kControl.replace("517342.5074", "517342.5O74") }]);
  await page.until("document.getElementById('message').textContent === 'bad.csv: row 3: local_n \"517342.5O74\" is no number'");
  await page.drop([{ name: "control.csv", text: kControl }]);
  await page.value("document.getElementById('plan').scrollIntoView()");
  const [left, top] = await page.value("['left', 'top'].map((side) => document.getElementById('plan').getBoundingClientRect()[side])");
  const spot = await findMark(left, top, kControl.split("\n")[4].split(",").slice(4, 6).map(Number));
  await page.mouse("mousePressed", ...spot, 1);
  await page.mouse("mouseMoved", spot[0] + 20, top + 60, 1);
  await page.until("!document.getElementById('tray').hidden");
  await page.mouse("mouseMoved", spot[0] + 20, top + 30, 1);
  await page.mouse("mouseReleased", spot[0] + 20, top + 30);
  await page.until("!document.querySelectorAll('#residuals input')[3].checked");
  await shows(expectedSite(3));
});

// Where the plan has a point: by what the pointer tells of two places.
async function findMark(left, top, [north, east]) {
  const told = async (x, y) => {
    await page.mouse("mouseMoved", left + x, top + y);
    return page.value("['at-north', 'at-east'].map((id) => parseFloat(document.getElementById(id).textContent.replaceAll(',', '')))");
  };
  const [[n0, e0], [n1, e1]] = [await told(100, 100), await told(300, 300)];
  return [left + 100 + (200 * (east - e0)) / (e1 - e0), top + 100 + (200 * (north - n0)) / (n1 - n0)];
}

test("the site goes into a system file and converts", { skip }, async () => {
  const [, written] = await page.download("document.getElementById('site-save').click()");
  const site = simd.CoordinateChain.fromSystem(written), expected = expectedSite(3).chain;
  site.toLocal(52.6, 5.6, 50).forEach((value, c) => assert.ok(Math.abs(value - expected.toLocal(52.6, 5.6, 50)[c]) < 1e-9));
  // A site is calibrated on the grid below one that is opened, not on that site.
  await page.drop([{ name: "site.json", text: written }]);
  await page.until("document.getElementById('system-card').hidden === false");
  const scale = (await cells("#parameters tr")).find(([what]) => what === "Scale")[1];
  assert.ok(Math.abs(scale - expectedSite(3).localization.scale) < 1e-8, scale);
  const [name, report] = await page.download("document.getElementById('site-report').click()");
  assert.equal(name, "control_report.html");
  assert.ok(report.includes("<td>30010487</td><td>none</td>") && report.includes("data:image/png"));
  await page.value("document.getElementById('site-use').click()");
  await page.value("document.getElementById('typed').value = '52.6 5.6 50'; document.getElementById('typed').dispatchEvent(new Event('input'))");
  await page.until("document.querySelector('#table tbody')?.rows[0].cells[1].textContent === '52.6'");
  const [[, , , , n, e]] = await cells("#table tbody tr");
  assert.deepEqual([n, e].map((text) => text.replaceAll(",", "")), expected.toLocal(52.6, 5.6, 50).slice(0, 2).map((value) => value.toFixed(4)));
});

test("the keyboard alone suffices", { skip }, async () => {
  await page.open((url = `http://localhost:${server.address().port}/`));
  await page.until("document.documentElement?.dataset.ready === 'yes'");
  const focus = () => page.value("document.activeElement.id");
  const tabTo = async (id) => {
    for (let i = 0; i < 40 && (await focus()) !== id; ++i) await page.key("Tab");
    assert.equal(await focus(), id);
  };
  await tabTo("search");
  await page.type("germany");
  await page.key("ArrowDown");
  await page.key("ArrowDown");
  await page.key("Enter");
  assert.match(await page.value("document.getElementById('system-name').textContent"), /system (25833|9999)/);
  await tabTo("typed");
  await page.type("Tower, 52°31′15″N, 13°24′34″E, 250");
  await statusIs("1 of 1 points converted");
  await tabTo("plan");
  const before = await page.value("document.getElementById('at-east').textContent");
  await page.key("ArrowRight");
  assert.notEqual(await page.value("document.getElementById('at-east').textContent"), before);
  const outline = await page.value("getComputedStyle(document.activeElement).outlineStyle");
  assert.equal(outline, "solid");
  const nameless = await page.value(`[...document.querySelectorAll("button, input, select, textarea, canvas")]
    .filter((each) => !(each.labels?.length || each.textContent.trim() || each.getAttribute("aria-label") || each.getAttribute("aria-labelledby")))
    .map((each) => each.id)`);
  assert.deepEqual(nameless, []);
});

test("it fits a phone, in light and dark, and speaks the user's numbers", { skip }, async () => {
  await page.look({ width: 360, height: 740, dark: true, mobile: true });
  const [wide, dark] = await page.value("[document.documentElement.scrollWidth, getComputedStyle(document.body).backgroundColor]");
  assert.ok(wide <= 360, `${wide}`);
  await page.look({ width: 360, height: 740, mobile: true });
  const light = await page.value("getComputedStyle(document.body).backgroundColor");
  const brightness = (colour) => colour.match(/\d+/g).slice(0, 3).reduce((sum, part) => sum + Number(part), 0);
  assert.ok(brightness(dark) < 150 && brightness(light) > 600, `${dark}, ${light}`);
  await page.send("Emulation.setLocaleOverride", { locale: "de-DE" });
  await page.open(url);
  await page.until("document.documentElement?.dataset.ready === 'yes'");
  await choose("25832");
  await page.drop([{ name: "p.csv", text: "lat,lon\n48.5,9\n" }]);
  await page.until("/5\\.37\\d\\.\\d{3},\\d{4}/.test(document.getElementById('table').textContent)");
  const [, written] = await page.download("document.getElementById('save-csv').click()");
  assert.match(written, /\n48\.5,9,537\d{4}\.\d{4},500000\.0000,\n/);
});
