// node js/app/build.mjs FOLDER PACKAGE PROGRAM [PORT]: puts the page together in FOLDER from the folder of the npm
// package and the systems that the program knows; with a port it serves the page on this machine.
import { existsSync, mkdirSync, readFileSync, statSync, writeFileSync } from "node:fs";
import { dirname, join } from "node:path";
import { execFileSync } from "node:child_process";
import { assemble, listOf } from "./assemble/assemble.mjs";
import { registeredSystems } from "./assemble/registry.mjs";
import { serve } from "./assemble/serve.mjs";

const [folder, packageFolder, program, port] = process.argv.slice(2);

// Reading them takes minutes: they are kept beside the page until the program is newer.
async function systemsKept(kept) {
  const isNew = existsSync(kept) && statSync(kept).mtimeMs > statSync(program).mtimeMs;
  if (isNew) return JSON.parse(readFileSync(kept, "utf8"));
  console.log("Reading the systems of the EPSG registry, which takes some minutes …");
  const all = await registeredSystems(program, { tell: (done, count) => console.log(`  ${done} of ${count}`) });
  const systems = all.filter((system) => system.file);
  mkdirSync(dirname(kept), { recursive: true });
  writeFileSync(kept, JSON.stringify(systems));
  console.log(`${systems.length} of ${all.length} systems can be held by a system file`);
  return systems;
}

const systems = await systemsKept(join(dirname(folder), "app_systems.json"));
const [, version] = /of (EPSG v[\d.]+)/.exec(systems[0].file.description);
assemble(folder, packageFolder, listOf(systems, version));
console.log(`The page is in ${folder}: ${execFileSync("du", ["-sh", folder], { encoding: "utf8" }).split("\t")[0]}`);
if (port !== undefined) {
  await serve(folder, Number(port));
  console.log(`It is served at http://localhost:${port}/ until you press Ctrl+C`);
}
