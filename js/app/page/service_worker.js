// Installs every file of the page, and serves it from there: with a network or without.
importScripts("contents.js"); // { version, files } of this folder

const { version, files } = self.contents;
const kCache = `geomath-${version}`;
// The page has its own policy; what it starts, such as its worker, gets the same with its answer.
const kPolicy = "default-src 'none'; script-src 'self' 'wasm-unsafe-eval'; style-src 'self'; img-src 'self' data: blob:; " +
  "connect-src 'self'; worker-src 'self'; manifest-src 'self'; base-uri 'none'; form-action 'none'";

async function install() {
  const cache = await caches.open(kCache);
  await cache.addAll(files.map((file) => new Request(file, { cache: "no-cache" })));
}

async function removeOlder() {
  const names = (await caches.keys()).filter((name) => name.startsWith("geomath-") && name !== kCache);
  await Promise.all(names.map((name) => caches.delete(name)));
  await self.clients.claim();
}

async function answer(request) {
  if (new URL(request.url).origin !== self.location.origin) return Response.error();
  const cache = await caches.open(kCache);
  const kept = await cache.match(request, { ignoreSearch: true });
  if (!kept) return fetch(request);
  const headers = new Headers(kept.headers);
  headers.set("Content-Security-Policy", kPolicy);
  return new Response(kept.body, { status: kept.status, headers });
}

self.addEventListener("install", (event) => event.waitUntil(install()));
self.addEventListener("activate", (event) => event.waitUntil(removeOlder()));
self.addEventListener("fetch", (event) => {
  if (event.request.method === "GET") event.respondWith(answer(event.request));
});
self.addEventListener("message", ({ data }) => data === "take over" && self.skipWaiting());
