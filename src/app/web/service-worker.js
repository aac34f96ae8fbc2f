// Lets the game start offline after its first visit. Network first, so a new
// build is picked up whenever the server is reachable; the cache answers when
// it is not.
const CACHE = 'twinlanes-v1';
const SITE = [
  './', 'index.html', 'twinlanes-page.js', 'twinlanes.js', 'twinlanes.wasm', 'resources.json',
  'manifest.webmanifest', 'icons/twinlanes.svg', 'icons/twinlanes-256.png',
];

self.addEventListener('install', (event) => {
  event.waitUntil(caches.open(CACHE).then((cache) => cache.addAll(SITE)).then(() => self.skipWaiting()));
});

self.addEventListener('activate', (event) => {
  event.waitUntil(
    caches.keys()
      .then((keys) => Promise.all(keys.filter((key) => key !== CACHE).map((key) => caches.delete(key))))
      .then(() => self.clients.claim()));
});

self.addEventListener('fetch', (event) => {
  const request = event.request;
  if (request.method !== 'GET' || new URL(request.url).origin !== self.location.origin) return;
  event.respondWith(
    fetch(request)
      .then((response) => {
        if (response.ok) {
          const copy = response.clone();
          caches.open(CACHE).then((cache) => cache.put(request, copy));
        }
        return response;
      })
      .catch(() => caches.match(request, { ignoreSearch: true })));
});
