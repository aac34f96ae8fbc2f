// The page as players meet it, in Debian's chromium: a phone (touch, device
// pixel ratio 3) and a desktop window (mouse and keys). One server and one
// browser for the file; each test opens its own pages.
import assert from 'node:assert/strict';
import { after, before, describe, test } from 'node:test';
import {
  canvasBox, count, desktop, dump, launch, openGame, phone, resourcesWithAdServer, screenshot, serve,
  solidPng, until,
} from './site.mjs';

// The phone profile: a 320 x 568 point scene over a 50 point banner strip.
const W = 320, H = 568, STRIP = 50;

let server, chromium;
before(async () => {
  server = await serve();
  chromium = await launch();
});
after(async () => {
  await chromium?.close();
  await server?.close();
});

// A browser context of its own (storage, service worker), closed with the
// browser.
const fresh = () => chromium.browser.createBrowserContext();

// Scene point (y up) to page CSS pixels.
async function pagePoint(page, x, y) {
  const box = await canvasBox(page);
  const scale = box.width / W;
  return { x: box.x + x * scale, y: box.y + (H - y) * scale, scale, box };
}

// Device pixels of a scene point, in a screenshot.
async function shotPoint(page, x, y, ratio) {
  const p = await pagePoint(page, x, y);
  return { x: p.x * ratio, y: p.y * ratio, scale: p.scale * ratio };
}

async function tapScene(page, x, y) {
  const p = await pagePoint(page, x, y);
  await page.touchscreen.tap(p.x, p.y);
}

// Several fingers landing together, as one touch event.
async function tapTogether(page, points) {
  const session = await page.createCDPSession();
  const touchPoints = [];
  for (const [x, y] of points) touchPoints.push(await pagePoint(page, x, y));
  await session.send('Input.dispatchTouchEvent', { type: 'touchStart', touchPoints: touchPoints.map(({ x, y }, id) => ({ x, y, id })) });
  await session.send('Input.dispatchTouchEvent', { type: 'touchEnd', touchPoints: [] });
  await session.detach();
}

const frames = (page, n) => page.evaluate((n) => new Promise((resolve) => {
  const step = () => (--n <= 0 ? resolve() : requestAnimationFrame(step));
  requestAnimationFrame(step);
}), n);

const teal = (p) => p.g > p.r + 60 && p.b > p.r + 50;
const amber = (p) => p.r > 220 && p.g > 150 && p.g < 225 && p.b < 110;
const bright = (p) => p.r > 215 && p.g > 215 && p.b > 215;
const dashWhite = (p) => p.r > 180 && p.g > 180 && p.b > 180;

describe('on a phone', () => {
  test('the home screen is drawn at the full device resolution, the banner under it', async () => {
    const page = await openGame(await fresh(), server.url, { query: 'seed=5' });
    const box = await canvasBox(page);
    // Letterboxed: the window's aspect, the whole height, centred.
    assert.equal(Math.round(box.height), phone.height);
    assert.ok(Math.abs(box.width / box.height - W / (H + STRIP)) < 0.01);
    assert.ok(Math.abs(box.x * 2 + box.width - phone.width) < 1);
    assert.equal(box.pixelWidth, Math.round(box.width * phone.deviceScaleFactor));
    // The banner's creative arrives half a second after launch.
    const state = await until(page, (s) => s.ads.banner.loaded, 'the banner');
    assert.equal(state.layers.home, 1);
    assert.equal(state.startFlag, false);
    await frames(page, 30);
    const home = await screenshot(page, 'phone-home');
    assert.equal(home.width, phone.width * phone.deviceScaleFactor);
    // The play button: white arrow in a teal disc, in the middle.
    const mid = await shotPoint(page, W / 2, H / 2, phone.deviceScaleFactor);
    assert.ok(home.at(mid.x, mid.y).brightness > 230);
    assert.ok(teal(home.at(mid.x - (W / 3) * 0.3 * mid.scale, mid.y)));
    // The banner under the scene: amber lettering in the strip.
    const strip = await shotPoint(page, 0, 0, phone.deviceScaleFactor);
    assert.ok(count(home, strip.x, strip.y, strip.x + W * strip.scale, strip.y + STRIP * strip.scale, amber) > 600 * 9,
      'no banner in the strip');
    assert.equal(state.ads.banner.shown, true);
    assert.deepEqual(page.errors, []);
    await page.close();
  });

  test('touches and keys steer both cars, and a run ends in game over with the best kept', async () => {
    const page = await openGame(await fresh(), server.url, { query: 'seed=5' });
    await tapScene(page, W / 2, H / 2);
    await until(page, (s) => s.startFlag, 'the run to start');
    let state = await dump(page);
    assert.equal(state.leftCar.carpos, 0);
    assert.equal(state.rightCar.carpos, 1);
    // A finger on each half moves both cars at once.
    await tapTogether(page, [[W * 0.25, 200], [W * 0.75, 200]]);
    state = await until(page, (s) => s.leftCar.carpos === 1 && s.rightCar.carpos === 0, 'two-finger steering');
    // One finger moves one car.
    await tapScene(page, 40, 200);
    state = await until(page, (s) => s.leftCar.carpos === 0, 'the left car back');
    assert.equal(state.rightCar.carpos, 0);
    await page.screenshot();  // settle
    const playing = await screenshot(page, 'phone-play');
    const lane = await shotPoint(page, W / 4, H, phone.deviceScaleFactor);
    assert.ok(count(playing, lane.x - 3, lane.y, lane.x + 6, lane.y + H * lane.scale, dashWhite) > 60 * 9,
      'the lane lines should be bright in play');
    // Keys: A or Left for the left car, D, L or Right for the right one.
    await page.keyboard.press('KeyA');
    await until(page, (s) => s.leftCar.carpos === 1, 'A to move the left car');
    await page.keyboard.press('ArrowRight');
    await until(page, (s) => s.rightCar.carpos === 1, 'Right to move the right car');
    // Left alone, the run ends.
    state = await until(page, (s) => s.overFlag && s.layers.over === 1, 'game over', 20000);
    const over = await screenshot(page, 'phone-over');
    const title = await shotPoint(page, W / 2, H - 0.65 * W / 4.5 * 1.5, phone.deviceScaleFactor);
    assert.ok(count(over, 0, title.y - 20 * title.scale, phone.width * 3, title.y + 20 * title.scale,
      (p) => p.r > 200 && p.g > 120 && p.b < 110) > 200, 'the game-over title');
    const stored = () => page.evaluate(() => JSON.parse(localStorage.getItem('twinlanes.preferences')));
    const best = Number((await stored()).best);
    assert.ok(best >= state.score);
    if (state.labels.overBest !== '新记录') assert.match(state.labels.overBest, new RegExp(`${best}$`));
    // The best score survives a reload: the game reads it back and keeps it.
    await page.reload({ waitUntil: 'domcontentloaded' });
    await page.waitForFunction(() => window.twinlanes.ready);
    await frames(page, 30);
    assert.equal(Number((await stored()).best), best);
    assert.deepEqual(page.errors, []);
    await page.close();
  });

  test('a hidden page pauses the run, and it goes on when shown again', async () => {
    const page = await openGame(await fresh(), server.url, { query: 'seed=3&autoplay' });
    await tapScene(page, W / 2, H / 2);
    await until(page, (s) => s.startFlag && s.obstacles.length > 0, 'obstacles on the road');
    const hide = (hidden) => page.evaluate((hidden) => {
      Object.defineProperty(document, 'hidden', { configurable: true, get: () => hidden });
      Object.defineProperty(document, 'visibilityState', { configurable: true,
        get: () => (hidden ? 'hidden' : 'visible') });
      document.dispatchEvent(new Event('visibilitychange'));
    }, hidden);
    const road = async () => JSON.stringify((await dump(page)).obstacles.map((o) => o.y));
    await hide(true);
    const before = await road();
    await frames(page, 30);
    assert.equal(await road(), before, 'nothing moves while hidden');
    await hide(false);
    await frames(page, 30);
    assert.notEqual(await road(), before, 'the run goes on');
    await page.close();
  });

  test('every second game over shows an interstitial that closes', async () => {
    const page = await openGame(await fresh(), server.url, { query: 'seed=7' });
    await tapScene(page, W / 2, H / 2);
    await until(page, (s) => s.overFlag, 'the first game over', 20000);
    assert.equal((await dump(page)).ads.interstitial.showing, false);
    await frames(page, 90);
    // Play again: the round button under the title.
    const again = (await dump(page)).buttons?.again ?? [W / 2, H / 2 - 0.4 * (W / 3.5)];
    await tapScene(page, again[0], again[1]);
    await until(page, (s) => !s.overFlag, 'the second run');
    const state = await until(page, (s) => s.ads.interstitial.showing, 'the interstitial', 20000);
    assert.equal(state.ads.interstitial.shows, 1);
    await frames(page, 60);  // it slides in
    const shown = await screenshot(page, 'phone-interstitial');
    const close = await shotPoint(page, 290, H - 30, phone.deviceScaleFactor);
    assert.ok(count(shown, close.x - 10 * close.scale, close.y - 15 * close.scale, close.x + 10 * close.scale,
      close.y + 15 * close.scale, bright) > 20 * 9, 'the close button');
    await tapScene(page, 290, H - 30);
    await until(page, (s) => !s.ads.interstitial.showing, 'the interstitial to close');
    assert.deepEqual(page.errors, []);
    await page.close();
  });
});

describe('ads from an ad server', () => {
  // Banners no bundled ad has, served next to the site: an SVG and a PNG
  // (which the page decodes as it downloads it; the browser decodes PNG only
  // asynchronously).
  const served = [
    { kind: 'SVG', name: 'served-magenta', file: 'magenta-320x50.svg', type: 'image/svg+xml',
      body: '<svg xmlns="http://www.w3.org/2000/svg" width="320" height="50">' +
        '<rect width="320" height="50" fill="#ff00ff"/></svg>',
      colour: (p) => p.r > 220 && p.g < 40 && p.b > 220 },
    { kind: 'PNG', name: 'served-green', file: 'green-160x25.png', type: 'image/png',
      body: solidPng(160, 25, [0, 200, 60]),
      colour: (p) => p.r < 40 && p.g > 170 && p.g < 230 && p.b > 30 && p.b < 90 },
  ];

  for (const banner of served) {
    test(`a served ${banner.kind} banner is downloaded with fetch() and shown in the strip`, async () => {
      const manifest = JSON.stringify({
        banners: [{ name: banner.name, url: 'https://www.twinlanes.example/served',
          images: [{ file: banner.file, width: 320, height: 50 }] }],
      });
      const adServer = await serve(undefined, {
        '/resources.json': resourcesWithAdServer((url) => url + 'adserver/manifest.json'),
        '/adserver/manifest.json': async () => ['application/json', manifest],
        ['/adserver/' + banner.file]: async () => [banner.type, banner.body],
      });
      try {
        const page = await openGame(await fresh(), adServer.url, { query: 'seed=5&nosw' });
        const state = await until(page, (s) => s.ads.banner?.loaded, 'the served banner');
        assert.equal(state.ads.banner.creative, banner.name);
        await frames(page, 30);
        const shot = await screenshot(page, `phone-served-${banner.kind.toLowerCase()}-banner`);
        const strip = await shotPoint(page, 0, 0, phone.deviceScaleFactor);
        const area = W * strip.scale * STRIP * strip.scale;
        assert.ok(count(shot, strip.x, strip.y, strip.x + W * strip.scale, strip.y + STRIP * strip.scale,
          banner.colour) > area * 0.9, 'the served picture fills the strip');
        assert.deepEqual(page.errors, []);
        await page.close();
      } finally {
        await adServer.close();
      }
    });
  }

  test('a dead ad server leaves the strip empty, says why in the log, and the game plays on', async () => {
    const gone = await serve();
    const deadURL = gone.url + 'adserver/manifest.json';
    await gone.close();
    const site = await serve(undefined, { '/resources.json': resourcesWithAdServer(() => deadURL) });
    try {
      const page = await openGame(await fresh(), site.url, { query: 'seed=5&nosw' });
      const failed = () => page.log.find((line) => line.startsWith('Failed to receive banner'));
      await until(page, failed, 'the failure in the log');
      assert.match(failed(), new RegExp(`the ad server failed for ${deadURL}: `));
      assert.equal((await dump(page)).ads.banner.loaded, false);
      await tapScene(page, W / 2, H / 2);
      await until(page, (s) => s.startFlag && s.obstacles.length > 0, 'the run to go on');
      // The browser's own note on the refused connection is all that went wrong.
      assert.deepEqual(page.errors.filter((e) => !e.startsWith('Failed to load resource')), []);
      await page.close();
    } finally {
      await site.close();
    }
  });
});

describe('installed', () => {
  test('starts offline once the first visit has cached the site', async () => {
    const page = await openGame(await fresh(), server.url);
    await page.waitForFunction(async () => {
      const registration = await navigator.serviceWorker.getRegistration();
      const keys = await caches.keys();
      return registration?.active && keys.length > 0 &&
        (await (await caches.open(keys[0])).keys()).length >= 9;
    }, { timeout: 15000 });
    const manifest = await page.evaluate(async () =>
      (await fetch(document.querySelector('link[rel=manifest]').href)).json());
    assert.equal(manifest.orientation, 'portrait');
    await page.setOfflineMode(true);
    await page.reload({ waitUntil: 'domcontentloaded' });
    await page.waitForFunction(() => window.twinlanes?.ready, { timeout: 15000 });
    assert.equal((await dump(page)).layers.home, 1);
    await page.setOfflineMode(false);
    await page.close();
  });
});

describe('the rating prompt', () => {
  // A first launch, then one an hour later, where the prompt comes; `row` is
  // the button's distance below the scene's top, in points.
  async function answerPrompt(row, shot) {
    const context = await chromium.browser.createBrowserContext();
    const first = await openGame(context, server.url);
    await frames(first, 30);
    assert.equal((await dump(first)).alert, null);
    await first.close();
    const second = await openGame(context, server.url, { clockOffsetSeconds: 3600 });
    const state = await until(second, (s) => s.alert !== null, 'the rating prompt');
    assert.deepEqual(state.alert.buttons, ['Not now', 'Rate it now', 'No, send feedback']);
    await frames(second, 60);  // the prompt takes taps once it is in place
    if (shot) {
      const image = await screenshot(second, shot);
      const centre = await shotPoint(second, W / 2, H / 2, phone.deviceScaleFactor);
      assert.ok(image.at(centre.x, centre.y).brightness > 200, 'a light panel in the middle');
      const corner = await shotPoint(second, 10, H - 60, phone.deviceScaleFactor);
      assert.ok(image.at(corner.x, corner.y).brightness < 90, 'the game dimmed around it');
      // The highlighted "Not now" at the bottom kept inside the panel's
      // rounded corners (its fill ran past them): down the panel's left side
      // to its last row, whose first point is the dimmed game.
      const side = await shotPoint(second, (W - 270) / 2 + 15, H / 2, phone.deviceScaleFactor);
      let bottom = side.y;
      while (image.at(side.x, bottom + 1).brightness > 150) ++bottom;
      const edge = await shotPoint(second, (W - 270) / 2 + 1, 0, phone.deviceScaleFactor);
      assert.ok(image.at(side.x, bottom).brightness > 200, 'the highlight at the bottom');
      assert.ok(image.at(edge.x, bottom).brightness < 90, 'a rounded bottom corner');
    }
    await tapScene(second, W / 2, H - row);
    await until(second, (s) => s.alert === null, 'the prompt to go');
    // The answer's effect follows the prompt's fade.
    await second.waitForFunction(() => (Module.twinlanesOpened ?? []).length > 0, { timeout: 5000 })
      .catch(() => {});
    const opened = await second.evaluate(() => Module.twinlanesOpened ?? []);
    const saved = await second.evaluate(() => JSON.parse(localStorage.getItem('twinlanes.preferences')));
    await context.close();
    return { opened, saved };
  }

  test('comes on a later launch; rating opens the store\'s web page', async () => {
    const { opened, saved } = await answerPrompt(310, 'phone-rating');
    assert.deepEqual(opened, ['https://apps.twinlanes.example/app/id1234567890']);
    assert.equal(saved.cz_rated, true);
  });

  test('feedback goes to the mail program as a mailto: link', async () => {
    const { opened, saved } = await answerPrompt(353);
    assert.equal(opened.length, 1);
    assert.match(opened[0], /^mailto:support%40twinlanes\.example\?subject=Twin%20Lanes%20Feedback&body=Hello/);
    assert.match(opened[0], /%0D%0AApp%3ATwin%20Lanes%0D%0A/);
    assert.equal(saved.cz_rated, true);
  });
});

describe('on a desktop', () => {
  test('the mouse plays and the keys steer; the window is letterboxed', async () => {
    const page = await openGame(await fresh(), server.url, { viewport: desktop, query: 'seed=5' });
    const box = await canvasBox(page);
    assert.equal(Math.round(box.height), desktop.height);
    assert.ok(box.x > 300, 'bars on both sides');
    const play = await pagePoint(page, W / 2, H / 2);
    await page.mouse.click(play.x, play.y);
    await until(page, (s) => s.startFlag, 'the run to start');
    await page.keyboard.press('KeyD');
    await until(page, (s) => s.rightCar.carpos === 0, 'D to move the right car');
    await page.mouse.click(play.x - 100, play.y);
    await until(page, (s) => s.leftCar.carpos === 1, 'a click on the left half');
    await screenshot(page, 'desktop-play');
    assert.deepEqual(page.errors, []);
    await page.close();
  });
});
