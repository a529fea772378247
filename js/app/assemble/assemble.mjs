// Puts the page together: its own files, the package, the list of systems, and the list of all of these by which
// the service worker installs them.
import { createHash } from "node:crypto";
import { cpSync, mkdirSync, readdirSync, readFileSync, rmSync, statSync, writeFileSync } from "node:fs";
import { join } from "node:path";
import { fileURLToPath } from "node:url";
import { gzipSync } from "node:zlib";

const page = fileURLToPath(new URL("../page", import.meta.url));
const kPackage = ["index.js", "geomath.wasm", "geomath-scalar.wasm", "LICENSE"];

// The names before what restricts an area: "Germany - onshore between …", "Austria; Germany".
function namesIn(place) {
  return place.split(/ - | onshore| offshore|\. /)[0].split(/;|, /).map((name) => name.trim().replace(/\.$/, ""))
    .filter((name) => /^[A-Z][^0-9°()]{2,30}( \([^()]+\))?$/.test(name) && !/ of | between /.test(name));
}

// Pairs of names, "Latvia and Lithuania", have their countries in the list, "Bosnia and Herzegovina" has not.
function countriesOf(systems) {
  const names = new Set(systems.flatMap(({ place }) => namesIn(place)));
  const isPair = (name) => name.split(" and ").some((part) => part !== name && names.has(part));
  return new Set([...names].filter((name) => !isPair(name)));
}

/** The list that the page reads, of systems { code, name, place, file, notes }; each learns its countries. */
export function listOf(systems, version) {
  const known = countriesOf(systems);
  const countriesIn = (place) => namesIn(place).flatMap((name) => (known.has(name) ? [name] : name.split(" and ")));
  const placed = systems.map((system) => ({ ...system, countries: countriesIn(system.place) }));
  return { version, countries: [...known].sort((a, b) => a.localeCompare(b, "en")), systems: placed };
}

function filesIn(folder) {
  const names = readdirSync(folder, { recursive: true }).filter((name) => statSync(join(folder, name)).isFile());
  return names.map((name) => name.replaceAll("\\", "/")).sort();
}

/** Writes the page's folder anew, from the folder of the npm package and a list of systems. */
export function assemble(folder, packageFolder, list) {
  rmSync(folder, { recursive: true, force: true });
  cpSync(page, folder, { recursive: true });
  mkdirSync(join(folder, "geomath"));
  for (const name of kPackage) cpSync(join(packageFolder, name), join(folder, "geomath", name));
  writeFileSync(join(folder, "systems.json.gz"), gzipSync(JSON.stringify(list), { level: 9 }));
  const files = filesIn(folder).filter((name) => name !== "service_worker.js");
  const hash = createHash("sha256");
  for (const name of files) hash.update(name).update(readFileSync(join(folder, name)));
  const [, policy] = /Security-Policy" content="([^"]+)"/.exec(readFileSync(join(folder, "index.html"), "utf8"));
  const contents = { policy, version: hash.digest("hex").slice(0, 16), files: ["./", ...files] };
  writeFileSync(join(folder, "contents.js"), `self.contents = ${JSON.stringify(contents)};\n`);
}
