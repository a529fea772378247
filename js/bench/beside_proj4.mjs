// The package beside npm's proj4 in one run: npm fetches that into a scratch folder. Ratios of the fastest of
// several turns; more than 1: geomath is faster.

import { execFileSync } from "node:child_process";
import { mkdtempSync, rmSync } from "node:fs";
import { tmpdir } from "node:os";
import { join } from "node:path";
import { pathToFileURL } from "node:url";

const geomath = await import(new URL("../../build/wasm/js/package/index.js", import.meta.url));
const folder = mkdtempSync(join(tmpdir(), "geomath-bench-"));
process.on("exit", () => rmSync(folder, { recursive: true }));
execFileSync("npm", ["install", "--no-audit", "--no-fund", "--silent", "--prefix", folder, "proj4@2"]);
const { default: proj4 } = await import(pathToFileURL(join(folder, "node_modules/proj4/dist/proj4-src.js")));

const kPoints = 200_000, kTurns = 9;
const lat = Float64Array.from({ length: kPoints }, (_, i) => 44 + (8 * ((i * 7919) % kPoints)) / kPoints);
const lon = Float64Array.from({ length: kPoints }, (_, i) => 6 + (6 * ((i * 104729) % kPoints)) / kPoints);
const zero = new Float64Array(kPoints);

const { CoordinateChain, Datum, Ellipsoid, Projection } = geomath;
const bessel = new Ellipsoid("Bessel 1841");
const gauss = new Projection("TMERC", { ellipsoid: bessel, centralMeridian: 9, scale: 1, lat0: 0, east0: 3500000, north0: 0 });
const potsdam = new Datum(bessel, { dx: 598.1, dy: 73.7, dz: 418.2, rx: 0.202, ry: 0.045, rz: -2.455, ppm: 6.7, rotation: "position-vector" });
const planes = {
  "UTM": [new Projection("TMERC", { centralMeridian: 9, scale: 0.9996, lat0: 0, east0: 500000, north0: 0 }),
    "+proj=utm +zone=32 +datum=WGS84"],
  "Lambert": [new Projection("LC", { southLat: 44, northLat: 50, lon0: 9, lat0: 46, east0: 0, north0: 0, scale: 1 }),
    "+proj=lcc +lat_1=44 +lat_2=50 +lat_0=46 +lon_0=9 +datum=WGS84"],
  "seven parameters, Gauss-Krüger": [new CoordinateChain({ datum: potsdam, projection: gauss }),
    "+proj=tmerc +lat_0=0 +lon_0=9 +k=1 +x_0=3500000 +ellps=bessel +towgs84=598.1,73.7,418.2,0.202,0.045,-2.455,6.7"],
};

let sum = 0; // what is computed is used
function nanoseconds(run) {
  const start = performance.now();
  run();
  return ((performance.now() - start) * 1e6) / kPoints;
}

// The two in turn, so that a busy machine slows both.
function compare(name, ours, theirs) {
  const best = [Infinity, Infinity];
  for (let turn = 0; turn < kTurns; ++turn)
    [ours, theirs].forEach((run, i) => (best[i] = Math.min(best[i], nanoseconds(run))));
  console.log(`${name.padEnd(54)} ${best[0].toFixed(0).padStart(7)} ns ${best[1].toFixed(0).padStart(7)} ns ${(best[1] / best[0]).toFixed(1).padStart(6)}`);
}

console.log(`${"".padEnd(54)}    geomath      proj4  ratio   (${geomath.engine}, Node ${process.version})`);
for (const [name, [object, definition]] of Object.entries(planes)) {
  const chain = object instanceof CoordinateChain, peer = proj4(definition);
  const a = new Float64Array(kPoints), b = new Float64Array(kPoints), c = new Float64Array(kPoints);
  const forward = chain ? () => object.toLocal(lat, lon, zero, { out: [a, b, c] }) : () => object.forward(lat, lon, { out: [a, b] });
  forward();
  const north = a.slice(), east = b.slice(), h = c.slice();
  const inverse = chain ? () => object.toGlobal(north, east, h, { out: [a, b, c] }) : () => object.inverse(north, east, { out: [a, b] });
  const oneForward = chain ? (i) => object.toLocal(lat[i], lon[i], 0)[0] : (i) => object.forward(lat[i], lon[i])[0];
  const oneInverse = chain ? (i) => object.toGlobal(north[i], east[i], 0)[0] : (i) => object.inverse(north[i], east[i])[0];
  const peerForward = () => { for (let i = 0; i < kPoints; ++i) sum += peer.forward([lon[i], lat[i]])[0]; };
  const peerInverse = () => { for (let i = 0; i < kPoints; ++i) sum += peer.inverse([east[i], north[i]])[0]; };
  const check = peer.forward([lon[7], lat[7]]);
  if (!(Math.hypot(check[0] - east[7], check[1] - north[7]) < 0.01)) throw new Error(`${name}: another conversion`);
  compare(`${name}, forward, arrays`, forward, peerForward);
  compare(`${name}, inverse, arrays`, inverse, peerInverse);
  compare(`${name}, forward, one point`, () => { for (let i = 0; i < kPoints; ++i) sum += oneForward(i); }, peerForward);
  compare(`${name}, inverse, one point`, () => { for (let i = 0; i < kPoints; ++i) sum += oneInverse(i); }, peerInverse);
}
if (!Number.isFinite(sum)) throw new Error("a point was refused");
