// Installs every file of the page, and serves it from there: with a network or without.
importScripts("contents.js"); // { version, policy, files } of this folder

const { version, policy, files } = self.contents;
const kCache = `geomath-${version}`;

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
  headers.set("Content-Security-Policy", policy); // which the worker of the page has from nowhere else
  return new Response(kept.body, { status: kept.status, headers });
}

self.addEventListener("install", (event) => event.waitUntil(install()));
self.addEventListener("activate", (event) => event.waitUntil(removeOlder()));
self.addEventListener("fetch", (event) => {
  if (event.request.method === "GET") event.respondWith(answer(event.request));
});
