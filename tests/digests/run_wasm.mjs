// run_wasm.mjs PROGRAM ARGUMENT...: runs a program for WASI.
import { readFileSync } from "node:fs";
import { WASI } from "node:wasi";

const args = process.argv.slice(2);
const wasi = new WASI({ version: "preview1", args });
const { instance } = await WebAssembly.instantiate(readFileSync(args[0]), {
  wasi_snapshot_preview1: wasi.wasiImport,
});
wasi.start(instance);
