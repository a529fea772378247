// Where the built package is, and its two engines.

import { readFileSync } from "node:fs";
import { fileURLToPath } from "node:url";

export const root = new URL("../../", import.meta.url);
export const built = new URL("build/wasm/js/package/", root);
export const builtPath = fileURLToPath(built);
export const read = (path) => readFileSync(new URL(path, root));
export const textOf = (path) => read(path).toString("utf8");

export const simd = await import(new URL("index.js", built));
export const scalar = await import(new URL("index.js?scalar", built));
export const engines = [simd, scalar];
