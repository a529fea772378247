import assert from "node:assert/strict";
import { test } from "node:test";
import { engines, read, scalar, simd, textOf } from "./package.mjs";
import * as published from "./published.mjs";

const kRoundTrip = 1e-9; // degrees: 0.1 mm
const kSeriesRoundTrip = 1e-7; // of the Roman-numeral series: 4 mm on St Kilda, 6.6° from its meridian
const near = (actual, expected, within, what) =>
  assert.ok(Math.abs(actual - expected) <= within, `${what}: ${actual}, not ${expected} ± ${within}`);

// Numbers of the unit interval that are the same everywhere (Park and Miller 1988).
function randoms(count, seed = 1) {
  return Float64Array.from({ length: count }, () => (seed = (seed * 48271) % 2147483647) / 2147483647);
}
const between = (low, high, numbers) => numbers.map((x) => low + (high - low) * x);

test("both modules run here", () => {
  assert.equal(simd.engine, "simd");
  assert.equal(scalar.engine, "scalar");
});

for (const g of engines) {
  test(`${g.engine}: published coordinates, one point and many`, () => {
    for (const { name, ellipsoid, parameters, points } of published.projections) {
      const projection = new g.Projection(name, { ...parameters, ellipsoid: new g.Ellipsoid(...ellipsoid) });
      for (const { source, at, grid, within } of points) {
        const one = projection.forward(...at), back = projection.inverse(...grid);
        const many = projection.forward(new Float64Array(1100).fill(at[0]), at[1]); // two blocks
        for (const i of [0, 1]) {
          near(one[i], grid[i], within, source);
          near(many[i][0], grid[i], within, source);
          near(many[i][1099], one[i], 1e-8, source);
          near(back[i], at[i], Math.max((within / 1e5) * 2, kRoundTrip), source);
        }
      }
    }
  });

  test(`${g.engine}: no point depends on how many come with it`, () => {
    const [lat, lon] = [between(44, 50, randoms(1025)), between(5, 13, randoms(1025, 7))];
    for (const [name, parameters] of [["TMERC", { centralMeridian: 9, scale: 0.9996, lat0: 0, east0: 0, north0: 0 }],
      ["LC", { southLat: 44, northLat: 50, lon0: 9, lat0: 46, east0: 0, north0: 0, scale: 1 }]]) {
      const projection = new g.Projection(name, parameters);
      const [north, east] = projection.forward(lat, lon), back = projection.inverse(north, east);
      for (const count of [1, 2, 3, 1023]) {
        const some = projection.forward(lat.slice(0, count), lon.slice(0, count));
        assert.deepEqual(some, [north.slice(0, count), east.slice(0, count)], `${name}, ${count} forward`);
        const inverse = projection.inverse(...some);
        assert.deepEqual(inverse, back.map((column) => column.slice(0, count)), `${name}, ${count} back`);
      }
    }
  });

  test(`${g.engine}: a system file carries the British test points`, () => {
    const chain = g.CoordinateChain.fromSystem(textOf("examples/great_britain/system.json"));
    const [head, ...rows] = textOf("examples/great_britain/points.csv").trim().split(/\r?\n/).map((line) => line.split(","));
    const column = (name) => Float64Array.from(rows, (row) => Number(row[head.indexOf(name)]));
    const [lat, lon, h] = ["lat", "lon", "h"].map(column);
    const [north, east, height] = chain.toLocal(lat, lon, h);
    const misses = rows.map((_, i) => Math.hypot(north[i] - column("northing_m")[i], east[i] - column("easting_m")[i]));
    near(Math.sqrt(misses.reduce((sum, x) => sum + x * x, 0) / rows.length), 2.23, 0.005, "rms"); // seven parameters
    const back = chain.toGlobal(north, east, height);
    lat.forEach((b, i) => near(back[0][i], b, kSeriesRoundTrip, `latitude ${i}`));
    assert.equal(Math.max(...chain.toLocal(lat, lon, h, { steps: true })[3]), 0);
    const refused = chain.toLocal([52, 95], 0, 0, { steps: true });
    assert.deepEqual([...refused[3]].map(g.chainStepText), ["none", "the input"]);
    assert.ok(Number.isNaN(refused[0][1]));
  });

  test(`${g.engine}: seven parameters and geocentric coordinates`, () => {
    // IOGP 373-07-02, coordinate frame rotation: WGS 72 to WGS 84 turned by 0.554 seconds, 0.219 ppm.
    const datum = new g.Datum("WGS72", { dz: 4.5, rz: -0.554, ppm: 0.219 });
    const [x, y, z] = datum.toWgs84(3657660.66, 255768.55, 5201382.11);
    near(x, 3657660.78, 0.006, "X");
    near(y, 255778.43, 0.006, "Y");
    near(z, 5201387.75, 0.006, "Z");
    near(datum.fromWgs84(x, y, z)[0], 3657660.66, 1e-8, "X back");
    // IOGP 373-07-02, geographic to geocentric, WGS 84.
    const wgs84 = new g.Ellipsoid("WGS84");
    const [gx, gy, gz] = wgs84.toGeocentric(53 + 48 / 60 + 33.82 / 3600, 2 + 7 / 60 + 46.38 / 3600, 73);
    near(gx, 3771793.968, 0.16, "X"); // the position is printed to 0.01 seconds
    near(gy, 140253.342, 0.16, "Y");
    near(gz, 5124304.349, 0.16, "Z");
    near(wgs84.toGeodetic(gx, gy, gz)[2], 73, 1e-8, "height");
  });

  test(`${g.engine}: the 4 × 4 spline of a rough surface`, () => {
    const rows = 24, columns = 30, grid = Float32Array.from(randoms(rows * columns, 7), (x) => 40 + 20 * x);
    const geoid = new g.RegionalGeoid({ grid, rows, columns, south: 50, west: 8, latStep: 0.5, lonStep: 0.5, interpolation: "RegGeoidIntrp_Spline4x4SW" });
    const u = between(0.01, rows - 1.01, randoms(3000, 11)), v = between(0.01, columns - 1.01, randoms(3000, 13));
    const heights = geoid.height(u.map((x) => 50 + 0.5 * x), v.map((x) => 8 + 0.5 * x));
    const kCutAngles = 1e-6; // metres: queries cut angles to 1e-12 rad, in slopes of 20 m a node
    for (let i = 0; i < u.length; ++i) near(heights[i], splineAt(grid, rows, columns, u[i], v[i]), kCutAngles, `${u[i]}, ${v[i]}`);
    near(geoid.height(50 + 0.5 * u[0], 8 + 0.5 * v[0]), heights[0], 1e-9, "one point");
  });

  test(`${g.engine}: a harmonic geoid`, () => {
    // EGM96 to degree 36 beside undulations of a 50-digit evaluation.
    const table = (path) => textOf(path).trim().split("\n").slice(1).map((line) => line.split(",").map(Number));
    const terms = table("tests/data/egm96_degree36.csv");
    const [, , cosines, sines, correctionCosines, correctionSines] = [0, 1, 2, 3, 4, 5].map((c) => terms.map((row) => row[c]));
    const geoid = new g.GlobalGeoid({ cosines, sines, correctionCosines, correctionSines });
    assert.equal(geoid.maxDegree, 36);
    const points = table("tests/data/egm96_degree36_points.csv");
    const heights = geoid.height(points.map((p) => p[0]), points.map((p) => p[1]));
    points.forEach((p, i) => near(heights[i], p[2], 1e-8, `${p[0]}, ${p[1]}`));
  });

  test(`${g.engine}: an NTv2 grid in both directions`, () => {
    const bytes = ntv2();
    const grid = g.ShiftGrid.fromNtv2(bytes);
    const kSingle = 2e-6 / 3600; // degrees: shifts stand in single precision
    const [lat, lon, h] = grid.forward(51.4, 11.1, 7);
    near((lat - 51.4) * 3600, 1 + 51.4 / 64, kSingle * 3600, "latitude shift");
    near((lon - 11.1) * 3600, 2, kSingle * 3600, "longitude shift");
    assert.equal(h, 7);
    near(grid.inverse(lat, lon)[0], 51.4, 1e-11, "latitude back");
    assert.ok(Number.isNaN(grid.forward(40, 11)[0]));
    assert.throws(() => g.ShiftGrid.fromNtv2(bytes.slice(0, 200), { name: "cut.gsb" }), /^GeomathError: cut\.gsb, byte 200: ends inside/);
    // The same grid as a step of a system.
    const system = {
      global: { ellipsoid: "GRS80" }, projection: { name: "MERCATOR", lat0: 0, lon0: 0, fEast: 0, fNorth: 0 },
      shifts: [{ place: "before datum", file: "shift.gsb" }],
    };
    const chain = g.CoordinateChain.fromSystem(system, { files: { "shift.gsb": bytes } });
    const plain = g.CoordinateChain.fromSystem({ ...system, shifts: [] });
    near(chain.toLocal(51.4, 11.1)[0], plain.toLocal(lat, lon)[0], 1e-8, "northing");
    assert.throws(() => g.CoordinateChain.fromSystem(system), /shift\.gsb: is not among the "files"/);
  });

  test(`${g.engine}: a frame that moves needs a date`, () => {
    // Budd in 2015.0, ITRF2014 and ETRF2014, of the Nordic Geodetic Commission; geocentric, to 0.1 mm.
    const grs80 = new g.Ellipsoid("GRS80");
    const budd = grs80.toGeodetic(3513638.0964, 778956.547, 5248216.5248);
    const fixed = grs80.toGeodetic(3513638.5233, 778956.1497, 5248216.298);
    const system = { global: { ellipsoid: "GRS80" }, projection: { name: "MERCATOR", lat0: 0, lon0: 0, fEast: 0, fNorth: 0 } };
    const expected = g.CoordinateChain.fromSystem(system).toLocal(...fixed);
    const moving = g.CoordinateChain.fromSystem({ ...system, frame: { from: "ITRF2014", to: "ETRF2014" } });
    assert.ok(moving.needsEpoch);
    assert.throws(() => moving.toLocal(...budd), /needs the date of the positions/);
    const kPrinted = 3e-4; // metres of a map 2.6 times as large as the ground
    const one = moving.toLocal(...budd, { epoch: 2015 });
    const many = moving.toLocal(...budd.map((x) => [x, x]), { epoch: [2015, NaN], steps: true });
    expected.forEach((x, i) => {
      near(one[i], x, kPrinted, `coordinate ${i}`);
      near(many[i][0], one[i], 1e-8, `coordinate ${i} of many`);
    });
    assert.match(g.chainStepText(many[3][1]), /date/);
    near(moving.toGlobal(...one, { epoch: 2015 })[0], budd[0], kRoundTrip, "latitude back");
  });

  test(`${g.engine}: the magnetic field of the technical report`, () => {
    for (const { date, at, field } of published.magnetic) {
      const elements = new g.MagneticField(date, new g.MagneticModel("WMM-2010")).elements(...at);
      for (const [name, value] of Object.entries(field))
        near(elements[name], value, name.endsWith("ation") ? 0.005 : 0.05, `${at}: ${name}`);
    }
    const field = new g.MagneticField(new Date("2026-05-31T12:00:00Z"));
    assert.equal(field.model, "WMM-2025");
    near(field.decimalYear, 2026 + 150 / 365, 1e-9, "year");
    assert.match(new g.MagneticField("1990-01-01").warning, /1990-01-01/);
    const many = field.declination([50, 51], [8, 9], 100);
    near(many[1], field.declination(51, 9, 100), 1e-12, "array");
  });

  test(`${g.engine}: the site of the example`, () => {
    const [head, ...rows] = textOf("examples/site/control.csv").trim().split(/\r?\n/).map((line) => line.split(","));
    const camel = (name) => name.replace(/_(.)/g, (_, letter) => letter.toUpperCase());
    const control = Object.fromEntries(head.map((name, c) => [camel(name), rows.map((row) => (/name|use/.test(name) ? row[c] : Number(row[c])))]));
    const result = new g.Calibration(control).solve();
    near(result.rms, 0.0328, 5e-5, "rms"); // 40-digit arithmetic: 32.8 mm
    assert.equal(result.names[result.worstHorizontal], "30017495");
    assert.deepEqual(result.warnings, []);
    const [north, east, height] = result.chain.toLocal(control.lat, control.lon, control.h);
    result.residuals.forEach(([n, e, h], i) => {
      near(control.localN[i] - north[i], n, 1e-6, "residual N");
      near(control.localE[i] - east[i], e, 1e-6, "residual E");
      near(control.localH[i] - height[i], h, 1e-6, "residual H");
    });
    assert.throws(() => new g.Calibration({ lat: [1], lon: [2], localN: [3] }).solve(), /no column "localE"/);
    assert.throws(() => new g.Calibration({ lat: [1, 2], lon: [2], localN: [3, 4], localE: [5, 6] }).solve(), /"lon" has 1 values/);
  });
}

test("both engines give the same bits", () => {
  const count = 20000, lat = between(44, 56, randoms(count, 3)), lon = between(5, 16, randoms(count, 5));
  const results = engines.map((g) => {
    const bessel = new g.Ellipsoid("Bessel 1841");
    const gauss = new g.Projection("TMERC", { ellipsoid: bessel, centralMeridian: 9, scale: 1, lat0: 0, east0: 3500000, north0: 0 });
    const potsdam = new g.Datum(bessel, { dx: 598.1, dy: 73.7, dz: 418.2, rx: 0.202, ry: 0.045, rz: -2.455, ppm: 6.7 });
    const chain = new g.CoordinateChain({ datum: potsdam, projection: gauss });
    const lambert = new g.Projection("LC", { southLat: 44, northLat: 54, lon0: 10, lat0: 49, east0: 0, north0: 0, scale: 1 });
    const local = chain.toLocal(lat, lon, 100), plane = lambert.forward(lat, lon);
    return [...local, ...chain.toGlobal(...local), ...plane, ...lambert.inverse(...plane), new g.MagneticField(2026).declination(lat, lon)];
  });
  results[0].forEach((column, i) => assert.deepEqual(column, results[1][i]));
});

const { Calibration, CoordinateChain, Datum, Ellipsoid, GridToGround, LocalToGrid, Projection, RegionalGeoid } = simd;
const tm = { centralMeridian: 9, scale: 0.9996, lat0: 0, east0: 500000, north0: 0 };

test("arrays of any kind, in place, beside numbers", () => {
  const utm = new Projection("TMERC", tm);
  const lat = Float64Array.from([48, NaN, 49]), lon = new Float64Array([8, 9, 10]);
  const expected = utm.forward([48, null, 49], new Float32Array([8, 9, 10]));
  assert.deepEqual(utm.forward(lat, lon, { out: [lat, lon] }), [lat, lon]);
  assert.deepEqual([lat, lon], expected);
  assert.ok(Number.isNaN(lat[1]) && Number.isNaN(lon[1]) && lat[2] > lat[0]);
  assert.deepEqual(utm.forward([], 9), [new Float64Array(), new Float64Array()]);
  const radians = utm.forward((48 * Math.PI) / 180, (8 * Math.PI) / 180, { degrees: false });
  near(radians[0], expected[0][0], 1e-8, "radians");
  assert.throws(() => utm.forward([1, 2], [1, 2, 3]), /arrays of 2 and of 3/);
  assert.throws(() => utm.forward("48", 9), TypeError);
  assert.throws(() => utm.forward([1], [2], { out: [new Float32Array(1), new Float32Array(1)] }), TypeError);
  assert.ok(utm.forward(91, 9).every(Number.isNaN) && utm.forward(0, 361).every(Number.isNaN));
});

test("axes turn a pair", () => {
  const plain = new Projection("TMERC", tm), turned = new Projection("TMERC", { ...tm, gridAxes: "ES", geographicAxes: "EN" });
  const [north, east] = plain.forward(48, 11), [first, second] = turned.forward(11, 48);
  near(first, east, 1e-8, "east");
  near(second, -north, 1e-8, "south");
  near(turned.inverse(first, second)[0], 11, kRoundTrip, "longitude");
});

test("site and ground systems", () => {
  const site = new LocalToGrid({ shiftN: 100, rotation: 90 });
  const [n, e, h] = site.toLocal(10, 20, 5);
  near(n, 80, 1e-9, "north"); // cos 90° · 10 − sin 90° · 20 + 100
  near(e, 10, 1e-9, "east");
  assert.equal(h, 5);
  near(site.toGrid(n, e, h)[1], 20, 1e-9, "east back");
  const ground = new GridToGround({ height: 1000, gridScaleFactor: 0.9996, originN: 5300000, originE: 500000 });
  const [north] = ground.toGround(5301000, 500000);
  near(north - 5300000, (1000 / 0.9996) * (1 + 1000 / 6371000), 1e-6, "one kilometre on the ground");
});

test("complaints say what would be right", () => {
  assert.throws(() => new Ellipsoid("WGS48"), /names the unknown ellipsoid "WGS48"; did you mean "WGS84"\?/);
  assert.throws(() => new Projection("TMERC", { ...tm, scale: undefined }), /Projection: "scale" is missing/);
  assert.throws(() => new Projection("TMERC", { ...tm, centralMeridan: 3 }), /did you mean "centralMeridian"\?/);
  assert.throws(() => CoordinateChain.fromSystem("{\"global\": }", { name: "site.json" }), /site\.json: not a JSON file.*line 1, column 12/);
  const airy = new Datum("Airy 1830", { dx: 446 });
  assert.throws(() => new CoordinateChain({ datum: airy, projection: new Projection("TMERC", tm) }), /share one ellipsoid/);
  assert.throws(() => new RegionalGeoid({ grid: [1, 2, 3], rows: 2, columns: 2, south: 0, west: 0, latStep: 1, lonStep: 1 }), /rows times columns/);
  assert.throws(() => new CoordinateChain({ datum: new Ellipsoid("WGS84") }), /object of another class/);
});

test("objects are freed", () => {
  const grid = new Float32Array(1e6);
  for (let i = 0; i < 400; ++i)
    new RegionalGeoid({ grid, rows: 1000, columns: 1000, south: 0, west: 0, latStep: 0.01, lonStep: 0.01 }).dispose(); // 1.6 GB in all
  const chain = new CoordinateChain({ projection: new Projection("TMERC", tm) });
  const before = chain.toLocal(48, 9);
  chain.dispose();
  chain.dispose();
  assert.throws(() => chain.toLocal(48, 9), /disposed/);
  assert.equal(before.length, 3);
});

// The value at t of the natural cubic spline through four values at 0, 1, 2, 3 (de Boor 1978, chapter
// IV): second derivatives from the two inner equations.
function natural(y, t) {
  const d1 = 6 * (y[0] - 2 * y[1] + y[2]), d2 = 6 * (y[1] - 2 * y[2] + y[3]);
  const m = [0, (4 * d1 - d2) / 15, (4 * d2 - d1) / 15, 0];
  const i = Math.min(Math.max(Math.floor(t), 0), 2), a = i + 1 - t, b = t - i;
  return (m[i] * a ** 3 + m[i + 1] * b ** 3) / 6 + (y[i] - m[i] / 6) * a + (y[i + 1] - m[i + 1] / 6) * b;
}

function splineAt(grid, rows, columns, u, v) {
  const r = Math.min(Math.max(Math.floor(u) - 1, 0), rows - 4), c = Math.min(Math.max(Math.floor(v) - 1, 0), columns - 4);
  const along = [0, 1, 2, 3].map((i) => natural([0, 1, 2, 3].map((j) => grid[(r + i) * columns + c + j]), v - c));
  return natural(along, u - r);
}

// A grid of one sub-grid, 50° to 52° N, 10° to 12° E, whose latitude shift grows northwards.
function ntv2() {
  const records = [];
  const record = (key, write) => {
    const bytes = new Uint8Array(16), view = new DataView(bytes.buffer);
    new TextEncoder().encodeInto(key.padEnd(8), bytes);
    write?.(view, bytes.subarray(8));
    records.push(bytes);
  };
  const int = (key, value) => record(key, (view) => view.setInt32(8, value, true));
  const number = (key, value) => record(key, (view) => view.setFloat64(8, value, true));
  const name = (key, value) => record(key, (_view, room) => new TextEncoder().encodeInto(value.padEnd(8), room));
  [["NUM_OREC", 11], ["NUM_SREC", 11], ["NUM_FILE", 1]].forEach(([key, value]) => int(key, value));
  [["GS_TYPE", "SECONDS"], ["VERSION", "TEST"], ["SYSTEM_F", "OLD"], ["SYSTEM_T", "NEW"]].forEach(([key, value]) => name(key, value));
  [["MAJOR_F", 6378137], ["MINOR_F", 6356752.314], ["MAJOR_T", 6378137], ["MINOR_T", 6356752.314]].forEach(([key, value]) => number(key, value));
  [["SUB_NAME", "ONE"], ["PARENT", "NONE"], ["CREATED", ""], ["UPDATED", ""]].forEach(([key, value]) => name(key, value));
  [["S_LAT", 50 * 3600], ["N_LAT", 52 * 3600], ["E_LONG", -12 * 3600], ["W_LONG", -10 * 3600], ["LAT_INC", 1800], ["LONG_INC", 1800]].forEach(([key, value]) => number(key, value));
  int("GS_COUNT", 25);
  for (let row = 0; row < 5; ++row)
    for (let column = 0; column < 5; ++column) {
      const node = new Uint8Array(16), view = new DataView(node.buffer);
      view.setFloat32(0, 1 + (50 + 0.5 * row) / 64, true);
      view.setFloat32(4, -2, true); // longitudes count westwards
      records.push(node);
    }
  record("END");
  return Buffer.concat(records);
}
