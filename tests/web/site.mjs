// What the browser tests share: a static server for the built site that
// lives exactly as long as a test, Debian's chromium started through
// puppeteer-core with a fresh profile, and reading pixels of screenshots.
import { createServer } from 'node:http';
import { mkdtemp, readFile, rm, stat } from 'node:fs/promises';
import { tmpdir } from 'node:os';
import path from 'node:path';
import { crc32, deflateSync, inflateSync } from 'node:zlib';
import puppeteer from 'puppeteer-core';

export const siteDir = process.env.TWINLANES_WEB_SITE ?? path.resolve('build/web');
export const chromium = process.env.TWINLANES_CHROMIUM ?? '/usr/lib/chromium/chromium';
export const shotsDir = process.env.TWINLANES_WEB_SHOTS ?? path.join(siteDir, '..', 'web-shots');

const types = {
  '.html': 'text/html; charset=utf-8', '.js': 'text/javascript', '.mjs': 'text/javascript',
  '.wasm': 'application/wasm', '.json': 'application/json',
  '.webmanifest': 'application/manifest+json', '.svg': 'image/svg+xml', '.png': 'image/png',
};

// Serves `root` on 127.0.0.1 at a free port; close() stops it. `routes`
// answers some paths itself: path -> async (serverURL) => [type, body].
export async function serve(root = siteDir, routes = {}) {
  let base = '';
  const server = createServer(async (req, res) => {
    try {
      const url = new URL(req.url, 'http://localhost');
      if (Object.hasOwn(routes, url.pathname)) {
        const [type, body] = await routes[url.pathname](base);
        res.writeHead(200, { 'content-type': type });
        res.end(body);
        return;
      }
      let file = path.normalize(path.join(root, decodeURIComponent(url.pathname)));
      if (!file.startsWith(path.resolve(root))) throw new Error('outside');
      if ((await stat(file)).isDirectory()) file = path.join(file, 'index.html');
      const body = await readFile(file);
      res.writeHead(200, { 'content-type': types[path.extname(file)] ?? 'application/octet-stream' });
      res.end(body);
    } catch {
      res.writeHead(404);
      res.end();
    }
  });
  await new Promise((resolve) => server.listen(0, '127.0.0.1', resolve));
  const url = `http://127.0.0.1:${server.address().port}/`;
  base = url;
  return {
    url,
    close: () => new Promise((resolve) => { server.closeAllConnections?.(); server.close(resolve); }),
  };
}

// Chromium headless with a profile of its own, removed on close().
export async function launch() {
  const profile = await mkdtemp(path.join(tmpdir(), 'twinlanes-chromium-'));
  const browser = await puppeteer.launch({
    executablePath: chromium,
    headless: true,
    userDataDir: profile,
    args: ['--no-sandbox', '--disable-gpu', '--disable-dev-shm-usage', '--disable-background-networking',
      '--disable-component-update', '--disable-sync', '--no-first-run',
      '--disable-background-timer-throttling', '--disable-renderer-backgrounding'],
  });
  return {
    browser,
    close: async () => {
      await browser.close().catch(() => {});
      await rm(profile, { recursive: true, force: true });
    },
  };
}

export const phone = { width: 360, height: 640, deviceScaleFactor: 3, isMobile: true, hasTouch: true };
export const desktop = { width: 1280, height: 800, deviceScaleFactor: 1 };

// Opens the site in a new page of `browser` with the viewport and the wall
// clock moved by `clockOffsetSeconds`; resolves once the first frame is
// drawn, with the milliseconds that took from navigation.
export async function openGame(browser, url, { viewport = phone, clockOffsetSeconds = 0, query = '' } = {}) {
  const page = await browser.newPage();
  await page.setViewport(viewport);
  const errors = [];
  page.on('pageerror', (e) => errors.push(String(e)));
  page.on('console', (m) => { if (m.type() === 'error') errors.push(m.text()); });
  // Every console line (the game's log goes there), from the start.
  page.log = [];
  page.on('console', (m) => page.log.push(m.text()));
  await page.evaluateOnNewDocument((offset) => {
    // Later launches are "later" for the game: its clock reads Date.now().
    if (offset) {
      const realNow = Date.now.bind(Date);
      Date.now = () => realNow() + offset * 1000;
    }
    // Links open nowhere in tests; the page records what it asked for.
    window.open = () => null;
  }, clockOffsetSeconds);
  page.errors = errors;
  await page.goto(url + (query ? '?' + query : ''), { waitUntil: 'domcontentloaded' });
  await page.waitForFunction(() => window.twinlanes?.ready || window.twinlanes?.error, { timeout: 15000 });
  const failure = await page.evaluate(() => window.twinlanes.error);
  if (failure) throw new Error(failure);
  page.firstFrameMs = await page.evaluate(() => window.twinlanes.firstFrameMs);
  return page;
}

// The site's resources with the publisher config's "adServerUrl" set, as a
// route for serve(): `adServer(serverURL)` gives the manifest's URL.
export function resourcesWithAdServer(adServer) {
  return async (serverURL) => {
    const bundle = JSON.parse(await readFile(path.join(siteDir, 'resources.json'), 'utf8'));
    const publisher = JSON.parse(bundle['publisher.json']);
    publisher.adServerUrl = adServer(serverURL);
    bundle['publisher.json'] = JSON.stringify(publisher);
    return ['application/json', JSON.stringify(bundle)];
  };
}

export const dump = (page) => page.evaluate(() => window.twinlanes.dump());

// Waits until `test(dump)` holds, polling each animation frame.
export async function until(page, test, what, timeout = 15000) {
  const start = Date.now();
  for (;;) {
    const state = await dump(page);
    if (test(state)) return state;
    if (Date.now() - start > timeout) throw new Error(`timed out waiting for ${what}: ${JSON.stringify(state).slice(0, 400)}`);
    await page.evaluate(() => new Promise((r) => requestAnimationFrame(() => r())));
  }
}

// The canvas's rectangle in CSS pixels, and content points to CSS pixels.
export async function canvasBox(page) {
  const box = await page.evaluate(() => {
    const r = document.getElementById('screen').getBoundingClientRect();
    return { x: r.x, y: r.y, width: r.width, height: r.height,
      pixelWidth: document.getElementById('screen').width, pixelHeight: document.getElementById('screen').height };
  });
  return box;
}

// Where scene point (x, y up) lands in CSS pixels, for a window of
// `windowHeight` points whose scene is `sceneHeight` high on top.
export function sceneToPage(box, windowPoints, x, y, sceneHeight) {
  const scale = box.width / windowPoints.width;
  return { x: box.x + x * scale, y: box.y + (sceneHeight - y) * scale };
}

// --- screenshots -------------------------------------------------------------

// Decodes an 8-bit, non-interlaced RGB or RGBA PNG (what Chromium writes).
export function decodePng(buffer) {
  let offset = 8;
  let width = 0, height = 0, channels = 0;
  const data = [];
  while (offset < buffer.length) {
    const length = buffer.readUInt32BE(offset);
    const type = buffer.toString('ascii', offset + 4, offset + 8);
    const body = buffer.subarray(offset + 8, offset + 8 + length);
    if (type === 'IHDR') {
      width = body.readUInt32BE(0);
      height = body.readUInt32BE(4);
      if (body[8] !== 8 || body[12] !== 0) throw new Error('unsupported PNG');
      channels = { 2: 3, 6: 4 }[body[9]];
      if (!channels) throw new Error('unsupported PNG colour type ' + body[9]);
    } else if (type === 'IDAT') {
      data.push(body);
    }
    offset += 12 + length;
  }
  const raw = inflateSync(Buffer.concat(data));
  const stride = width * channels;
  const out = Buffer.alloc(width * height * 4);
  const prev = Buffer.alloc(stride);
  const line = Buffer.alloc(stride);
  for (let y = 0; y < height; ++y) {
    const filter = raw[y * (stride + 1)];
    const src = raw.subarray(y * (stride + 1) + 1, (y + 1) * (stride + 1));
    for (let i = 0; i < stride; ++i) {
      const a = i >= channels ? line[i - channels] : 0;
      const b = prev[i];
      const c = i >= channels ? prev[i - channels] : 0;
      let v = src[i];
      if (filter === 1) v += a;
      else if (filter === 2) v += b;
      else if (filter === 3) v += (a + b) >> 1;
      else if (filter === 4) {
        const p = a + b - c, pa = Math.abs(p - a), pb = Math.abs(p - b), pc = Math.abs(p - c);
        v += pa <= pb && pa <= pc ? a : pb <= pc ? b : c;
      }
      line[i] = v & 255;
    }
    for (let x = 0; x < width; ++x) {
      out[(y * width + x) * 4] = line[x * channels];
      out[(y * width + x) * 4 + 1] = line[x * channels + 1];
      out[(y * width + x) * 4 + 2] = line[x * channels + 2];
      out[(y * width + x) * 4 + 3] = channels === 4 ? line[x * channels + 3] : 255;
    }
    line.copy(prev);
  }
  return { width, height, at(x, y) {
    const i = (Math.floor(y) * width + Math.floor(x)) * 4;
    return { r: out[i], g: out[i + 1], b: out[i + 2], brightness: (out[i] + out[i + 1] + out[i + 2]) / 3 };
  } };
}

// An 8-bit RGB PNG of `width` x `height` pixels all of one [r, g, b] colour.
export function solidPng(width, height, [r, g, b]) {
  const chunk = (type, body) => {
    const head = Buffer.alloc(8);
    head.writeUInt32BE(body.length, 0);
    head.write(type, 4, 'ascii');
    const crc = Buffer.alloc(4);
    crc.writeUInt32BE(crc32(Buffer.concat([head.subarray(4), body])), 0);
    return Buffer.concat([head, body, crc]);
  };
  const header = Buffer.alloc(13);
  header.writeUInt32BE(width, 0);
  header.writeUInt32BE(height, 4);
  header[8] = 8;
  header[9] = 2;
  const row = Buffer.alloc(1 + width * 3);
  for (let x = 0; x < width; ++x) row.set([r, g, b], 1 + x * 3);
  const rows = Buffer.concat(Array.from({ length: height }, () => row));
  return Buffer.concat([Buffer.from([0x89, 0x50, 0x4e, 0x47, 0x0d, 0x0a, 0x1a, 0x0a]),
    chunk('IHDR', header), chunk('IDAT', deflateSync(rows)), chunk('IEND', Buffer.alloc(0))]);
}

// How many pixels in the rectangle (device pixels) pass `test`.
export function count(image, x0, y0, x1, y1, test) {
  let n = 0;
  for (let y = Math.max(0, Math.floor(y0)); y < Math.min(image.height, y1); ++y)
    for (let x = Math.max(0, Math.floor(x0)); x < Math.min(image.width, x1); ++x)
      if (test(image.at(x, y))) ++n;
  return n;
}

// A screenshot of the page (kept under shotsDir for people to look at).
export async function screenshot(page, name) {
  const { mkdir, writeFile } = await import('node:fs/promises');
  const png = Buffer.from(await page.screenshot({ type: 'png' }));
  await mkdir(shotsDir, { recursive: true });
  await writeFile(path.join(shotsDir, name + '.png'), png);
  return decodePng(png);
}
