// The projected systems of the EPSG registry as system files, by the program, which reads the database of PROJ.
import { execFile } from "node:child_process";
import { copyFileSync, existsSync, mkdtempSync, rmSync } from "node:fs";
import { availableParallelism, tmpdir } from "node:os";
import { join } from "node:path";
import { promisify } from "node:util";

const run = promisify(execFile);
const kFolders = [process.env.PROJ_DATA, "/usr/share/proj", "/usr/local/share/proj"];

// PROJ's database alone: a page carries no grids, so that none may be found.
function folderWithoutGrids() {
  const from = kFolders.find((folder) => folder && existsSync(join(folder, "proj.db")));
  if (!from) throw new Error("PROJ's database proj.db is not found; PROJ_DATA names its folder");
  const folder = mkdtempSync(join(tmpdir(), "geomath-proj-"));
  copyFileSync(join(from, "proj.db"), join(folder, "proj.db"));
  return folder;
}

const lines = (text) => text.split("\n").filter((line) => line.trim());

// "EPSG:2581 name", and in the next line the name of its area.
function listed(text) {
  const all = lines(text), systems = [];
  for (let i = 0; i + 1 < all.length; i += 2) {
    const [, code, name] = /^EPSG:(\d+) (.*)$/.exec(all[i]);
    systems.push({ code, name, place: all[i + 1].trim() });
  }
  return systems;
}

// What the program tells beside the description, which stands in the file.
const notesOf = (text) => lines(text).slice(1).map((line) => line.replace(/^geomath: /, ""))
  .filter((note) => !note.startsWith("other transformations"));

// Why there is no transformation, of a message of the program.
const reasonOf = (refusal) =>
  refusal ? [refusal.replace(/^geomath: EPSG:\d+ .*?: /, "").replace(/; --list-operations.*/, "")] : [];

// The system file with the best transformation that needs no grid; where there is none, with positions on the
// system's own datum; nothing for a projection that the library does not have.
async function systemFile(geomath, code) {
  let refusal;
  for (const wish of [[], ["--no-datum"]]) {
    try {
      const { stdout, stderr } = await geomath("system", "--epsg", code, "-o", "-", ...wish);
      return { file: JSON.parse(stdout), notes: [...reasonOf(refusal), ...notesOf(stderr)] };
    } catch (error) {
      if (error.code !== 2) throw error;
      refusal = error.stderr.trim();
    }
  }
  return { refusal };
}

/**
 * The systems with `words` in name and area, all of them with none: { code, name, place, file, notes }, or with the
 * reason, `refusal`, where a system file cannot hold one. `tell(done, count)` hears how far it is.
 */
export async function registeredSystems(program, { words = " ", tell = () => {} } = {}) {
  const folder = folderWithoutGrids();
  const env = { ...process.env, PROJ_DATA: folder, GEOMATH_GRIDS: "" };
  const geomath = (...words) => run(program, words, { env, cwd: folder, maxBuffer: 1 << 26 });
  try {
    const systems = listed((await geomath("system", "--find", words)).stdout);
    let next = 0;
    const worker = async () => {
      while (next < systems.length) {
        const system = systems[next++];
        Object.assign(system, await systemFile(geomath, system.code));
        if (next % 100 === 0) tell(next, systems.length);
      }
    };
    await Promise.all(Array.from({ length: availableParallelism() }, worker));
    return systems;
  } finally {
    rmSync(folder, { recursive: true });
  }
}
