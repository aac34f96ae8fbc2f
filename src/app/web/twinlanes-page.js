// Boots the game's WebAssembly module in the page: the resources (one JSON
// bundle, written into the module's file system, its SVGs decoded by the
// browser before the game starts), the query's options, the service worker,
// and window.twinlanes for tests and tools:
//   twinlanes.ready        true once the first frame is drawn
//   twinlanes.dump()       the game's state, as the scenario command `dump`
//   twinlanes.stats()      frames drawn and the time spent in wasm per frame
//   twinlanes.resetStats() starts those counts again
//   twinlanes.autoplay(on) the built-in player steers, or stops steering
'use strict';
(function () {
  const params = new URLSearchParams(window.location.search);
  const status = document.getElementById('status');
  const canvas = document.getElementById('screen');
  const started = performance.now();

  const twinlanes = {
    ready: false,
    firstFrameMs: null,
    error: null,
    dump() {
      return twinlanes.ready ? JSON.parse(Module.ccall('twinlanes_dump', 'string', [], [])) : null;
    },
    stats() {
      return twinlanes.ready ? JSON.parse(Module.ccall('twinlanes_stats', 'string', [], [])) : null;
    },
    resetStats() {
      if (twinlanes.ready) Module.ccall('twinlanes_reset_stats', null, [], []);
    },
    // Lets the built-in player steer (true) or hands the cars back (false).
    autoplay(on) {
      if (twinlanes.ready) Module.ccall('twinlanes_autoplay', null, ['number'], [on ? 1 : 0]);
    },
  };
  window.twinlanes = twinlanes;

  function fail(message) {
    twinlanes.error = message;
    status.textContent = message;
    status.style.display = 'block';
    console.error(message);
  }

  // Nothing but the game reacts to a finger: no long-press menu, no
  // double-tap or pinch zoom, no pull-to-refresh.
  for (const type of ['contextmenu', 'gesturestart', 'gesturechange', 'dblclick', 'selectstart']) {
    document.addEventListener(type, (e) => e.preventDefault(), { passive: false });
  }
  document.addEventListener('touchmove', (e) => e.preventDefault(), { passive: false });

  // The module's command line, from the page's query.
  const args = [];
  for (const [name, flag] of [['seed', '--seed'], ['lang', '--lang'], ['device', '--device']]) {
    if (params.has(name)) args.push(flag, params.get(name));
  }
  if (params.has('autoplay')) args.push('--autoplay');

  async function loadResources() {
    const response = await fetch('resources.json');
    if (!response.ok) throw new Error('resources.json: HTTP ' + response.status);
    const bundle = await response.json();
    const svgs = new Map();
    const decoding = [];
    for (const [name, text] of Object.entries(bundle)) {
      const path = '/resources/' + name;
      FS.mkdirTree(path.substring(0, path.lastIndexOf('/')));
      FS.writeFile(path, text);
      if (name.endsWith('.svg')) {
        const image = new Image();
        image.src = URL.createObjectURL(new Blob([text], { type: 'image/svg+xml' }));
        svgs.set(text, image);
        decoding.push(image.decode().catch(() => console.warn('cannot decode ' + name)));
      }
    }
    await Promise.all(decoding);
    Module.twinlanesSvgs = svgs;
  }

  window.Module = {
    canvas,
    arguments: args,
    print: (text) => console.log(text),
    printErr: (text) => console.warn(text),
    preRun: [() => {
      addRunDependency('twinlanes-resources');
      loadResources()
        .then(() => removeRunDependency('twinlanes-resources'))
        .catch((e) => fail('Twin Lanes cannot load its resources: ' + e.message));
    }],
    onAbort: (what) => fail('Twin Lanes stopped: ' + what),
    // Called by the game once its first frame is on the canvas.
    twinlanesFirstFrame() {
      status.style.display = 'none';
      twinlanes.firstFrameMs = performance.now() - started;
      twinlanes.ready = true;
      canvas.focus();
    },
  };

  if ('serviceWorker' in navigator && !params.has('nosw')) {
    window.addEventListener('load', () => {
      navigator.serviceWorker.register('service-worker.js').catch(() => {});
    });
  }
})();
