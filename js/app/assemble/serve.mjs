// A server of one folder for this machine alone.
import { createServer } from "node:http";
import { readFile } from "node:fs/promises";
import { extname, join, normalize } from "node:path";

const kTypes = {
  ".html": "text/html; charset=utf-8", ".js": "text/javascript; charset=utf-8", ".css": "text/css; charset=utf-8",
  ".svg": "image/svg+xml", ".wasm": "application/wasm", ".webmanifest": "application/manifest+json",
  ".gz": "application/octet-stream",
};

async function answer(folder, request, response) {
  try {
    const path = normalize(decodeURIComponent(new URL(request.url, "http://localhost").pathname));
    const name = path.endsWith("/") ? `${path}index.html` : path;
    const bytes = await readFile(join(folder, name));
    response.writeHead(200, { "Content-Type": kTypes[extname(name)] ?? "text/plain", "Cache-Control": "no-cache" });
    response.end(bytes);
  } catch {
    response.writeHead(404).end("not found\n");
  }
}

/** The server, listening; port 0 takes any that is free. */
export function serve(folder, port) {
  const server = createServer((request, response) => answer(folder, request, response));
  return new Promise((resolve, reject) => server.once("error", reject).listen(port, "127.0.0.1", () => resolve(server)));
}
