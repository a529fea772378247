import assert from "node:assert/strict";
import { execFileSync } from "node:child_process";
import { cpSync, mkdirSync, mkdtempSync, readFileSync, readdirSync, rmSync, statSync, writeFileSync } from "node:fs";
import { tmpdir } from "node:os";
import { join } from "node:path";
import { test } from "node:test";
import { fileURLToPath } from "node:url";
import { brotliCompressSync, gzipSync } from "node:zlib";
import { built, builtPath, read, root, textOf } from "./package.mjs";

const kMostCompressed = 250_000; // bytes, by brotli

const sizeOf = (name) => statSync(new URL(name, built)).size;

test("a page loads little", (t) => {
  const module = readFileSync(new URL("geomath.wasm", built));
  const brotli = brotliCompressSync(module).length;
  t.diagnostic(`geomath.wasm: ${module.length} bytes, gzip ${gzipSync(module, { level: 9 }).length}, brotli ${brotli}`);
  assert.ok(brotli <= kMostCompressed, `${brotli} bytes`);
  assert.ok(sizeOf("index.js") <= 20000);
});

// Pairs of a js block and the text block behind it, if one follows.
function examplesOf(page) {
  return [...page.matchAll(/^```js( norun="[^"]+")?\n(.*?)^```\n(?:```text\n(.*?)^```)?/gms)]
    .filter(([, norun]) => !norun)
    .map(([, , code, expected = ""]) => ({ code, expected }));
}

// As tests/docs/run_examples.py: "..." stands for the rest of a line.
function agrees(actual, expected) {
  const lines = expected.split("\n"), given = actual.split("\n");
  return lines.length === given.length &&
    lines.every((line, i) => (line.endsWith("...") ? given[i].startsWith(line.slice(0, -3)) : line === given[i]));
}

test("npm installs the package into an empty project, and the published examples run there", () => {
  const project = mkdtempSync(join(tmpdir(), "geomath-js-"));
  try {
    const folder = fileURLToPath(new URL("build/wasm/js/", root));
    const [packed] = readdirSync(folder).filter((name) => /^geomath-.*\.tgz$/.test(name));
    writeFileSync(join(project, "package.json"), JSON.stringify({ name: "empty", private: true, type: "module" }));
    execFileSync("npm", ["install", "--offline", "--no-audit", "--no-fund", "--silent", join(folder, packed)], { cwd: project });
    cpSync(fileURLToPath(new URL("examples", root)), join(project, "examples"), { recursive: true });
    let ran = 0;
    for (const page of ["js/package/README.md", "docs/javascript.md"]) {
      // The examples of a page are one program, in their order.
      const examples = examplesOf(textOf(page));
      const kMark = "---8<---";
      const imports = new Set(), bodies = [];
      for (const { code } of examples) {
        bodies.push(code.replace(/^import .*\n/gm, (line) => (imports.add(line), "")) + `console.log("${kMark}");\n`);
      }
      writeFileSync(join(project, "examples.mjs"), [...imports].join("") + bodies.join(""));
      const printed = execFileSync("node", ["examples.mjs"], { cwd: project, encoding: "utf8" }).split(`${kMark}\n`);
      examples.forEach(({ code, expected }, i) => {
        assert.ok(agrees(printed[i], expected), `${page}:\n${code}\nprints\n${printed[i]}\nnot\n${expected}`);
        ++ran;
      });
    }
    assert.ok(ran >= 5);
    const files = readdirSync(join(project, "node_modules/geomath")).sort();
    assert.deepEqual(files, ["LICENSE", "README.md", "geomath-scalar.wasm", "geomath.wasm", "index.d.ts", "index.js", "javascript.md", "package.json"]);
  } finally {
    rmSync(project, { recursive: true });
  }
});

test("it works in a worker", async () => {
  const { Worker } = await import("node:worker_threads");
  const code = `import { parentPort } from "node:worker_threads";
    import { Ellipsoid } from ${JSON.stringify(new URL("index.js", built).href)};
    parentPort.postMessage(new Ellipsoid("WGS84").b);`;
  const worker = new Worker(new URL(`data:text/javascript,${encodeURIComponent(code)}`));
  const b = await new Promise((resolve, reject) => worker.once("message", resolve).once("error", reject));
  assert.ok(Math.abs(b - 6356752.3142) < 5e-5); // NGA.STND.0036
});
