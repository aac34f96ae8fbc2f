// The browser build's benchmark: the page at phone size (360 x 640 CSS
// pixels, device pixel ratio 3) in headless chromium, the built-in player
// steering. Reports, against the goals and the 60 Hz frame budget:
//   - time to the first frame from navigation,
//   - frames per second and late frames over 5 s of play,
//   - milliseconds per frame spent in wasm (the frame function, as the page
//     measures it),
//   - bytes the first visit loads, gzip-compressed (what a server that
//     compresses sends; fonts come from the system).
//
//   node bench/web/page-bench.mjs        (make bench-web)
import { readFile } from 'node:fs/promises';
import path from 'node:path';
import { gzipSync } from 'node:zlib';
import { canvasBox, launch, openGame, serve, siteDir, until } from '../../tests/web/site.mjs';

const budgetMs = 1000 / 60;
const goals = { wasmMs: 2, gzipBytes: 1.5 * 1024 * 1024, firstFrameMs: 1500 };

const server = await serve();
const chromium = await launch();
try {
  const page = await openGame(chromium.browser, server.url, { query: 'seed=3&autoplay' });
  const box = await canvasBox(page);
  await page.touchscreen.tap(box.x + box.width / 2, box.y + box.height * (284 / 618));
  await until(page, (s) => s.startFlag, 'the run to start');
  await page.evaluate(() => window.twinlanes.resetStats());
  const stamps = await page.evaluate(() => new Promise((resolve) => {
    const times = [];
    const step = (t) => {
      times.push(t);
      if (t - times[0] < 5000) requestAnimationFrame(step); else resolve(times);
    };
    requestAnimationFrame(step);
  }));
  const stats = await page.evaluate(() => window.twinlanes.stats());
  const gaps = stamps.slice(1).map((t, i) => t - stamps[i]);
  const fps = gaps.length / ((stamps.at(-1) - stamps[0]) / 1000);
  const late = gaps.filter((g) => g > 1.5 * budgetMs).length;

  // Everything the first visit fetched from the server, compressed.
  const urls = await page.evaluate(() => [location.href,
    ...performance.getEntriesByType('resource').map((e) => e.name)]);
  let raw = 0, gzip = 0;
  const files = new Set();
  for (const url of urls) {
    const { pathname, origin } = new URL(url);
    if (origin !== new URL(server.url).origin) continue;
    files.add(pathname.endsWith('/') ? pathname + 'index.html' : pathname);
  }
  for (const file of files) {
    const bytes = await readFile(path.join(siteDir, file));
    raw += bytes.length;
    gzip += gzipSync(bytes, { level: 9 }).length;
  }
  const ratio = (value, goal) => (value / goal).toFixed(2);
  console.log(`first frame        ${page.firstFrameMs.toFixed(0)} ms  (${ratio(page.firstFrameMs, goals.firstFrameMs)} of the 1.5 s goal)`);
  console.log(`frames             ${fps.toFixed(1)} per second, ${late} late of ${gaps.length}`);
  console.log(`wasm per frame     ${stats.wasmMsPerFrame.toFixed(3)} ms mean, ${stats.wasmMsMax.toFixed(3)} ms max over ${stats.frames} frames` +
    `  (${ratio(stats.wasmMsPerFrame, goals.wasmMs)} of the 2 ms goal, ${ratio(stats.wasmMsPerFrame, budgetMs)} of the frame budget)`);
  console.log(`first visit        ${files.size} files, ${(raw / 1024).toFixed(0)} KB, ${(gzip / 1024).toFixed(0)} KB gzip` +
    `  (${ratio(gzip, goals.gzipBytes)} of the 1.5 MB goal)`);
  await page.close();
} finally {
  await chromium.close();
  await server.close();
}
