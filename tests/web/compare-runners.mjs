// Plays one scenario script through the desktop binary and through the
// browser build's runner under node, and compares what they print, line for
// line: dumps and preferences as JSON (numbers equal to 1e-9, relative),
// anything else as text.
//
//   node compare-runners.mjs DESKTOP_BINARY HEADLESS_JS SCRIPT
import { spawnSync } from 'node:child_process';
import { mkdtempSync, rmSync } from 'node:fs';
import { tmpdir } from 'node:os';
import path from 'node:path';

const [desktop, headless, script] = process.argv.slice(2);
if (!script) {
  console.error('usage: compare-runners.mjs DESKTOP_BINARY HEADLESS_JS SCRIPT');
  process.exit(2);
}

// A seed on the command line also starts both clocks at the same fixed time.
function play(command, args) {
  const prefs = mkdtempSync(path.join(tmpdir(), 'twinlanes-compare-'));
  try {
    const run = spawnSync(command, [...args, '--headless', '--seed', '1', '--prefs-dir', prefs,
      '--script', script], { encoding: 'utf8', timeout: 240000, maxBuffer: 64 << 20 });
    if (run.error) throw run.error;
    return { status: run.status, lines: run.stdout.split('\n').filter((l) => l.length), err: run.stderr };
  } finally {
    rmSync(prefs, { recursive: true, force: true });
  }
}

function parse(line) {
  try { return { json: JSON.parse(line) }; } catch { return { text: line }; }
}

// The first place where a and b differ, or null.
function difference(a, b, where = '') {
  if (typeof a === 'number' && typeof b === 'number') {
    const scale = Math.max(1, Math.abs(a), Math.abs(b));
    return Math.abs(a - b) <= 1e-9 * scale ? null : `${where}: ${a} vs ${b}`;
  }
  if (Array.isArray(a) && Array.isArray(b)) {
    if (a.length !== b.length) return `${where}: ${a.length} vs ${b.length} elements`;
    for (let i = 0; i < a.length; ++i) {
      const d = difference(a[i], b[i], `${where}[${i}]`);
      if (d) return d;
    }
    return null;
  }
  if (a && b && typeof a === 'object' && typeof b === 'object') {
    const keys = new Set([...Object.keys(a), ...Object.keys(b)]);
    for (const key of keys) {
      if (!(key in a) || !(key in b)) return `${where}.${key}: only in the ${key in a ? 'desktop' : 'node'} dump`;
      const d = difference(a[key], b[key], `${where}.${key}`);
      if (d) return d;
    }
    return null;
  }
  return a === b ? null : `${where}: ${JSON.stringify(a)} vs ${JSON.stringify(b)}`;
}

const native = play(desktop, []);
const wasm = play(process.execPath, ['--no-experimental-fetch', headless]);
let failed = false;
if (native.status !== wasm.status) {
  console.error(`exit status: desktop ${native.status}, node ${wasm.status}\n${native.err}\n${wasm.err}`);
  failed = true;
}
if (native.lines.length !== wasm.lines.length) {
  console.error(`lines printed: desktop ${native.lines.length}, node ${wasm.lines.length}`);
  failed = true;
}
for (let i = 0; i < Math.min(native.lines.length, wasm.lines.length); ++i) {
  const a = parse(native.lines[i]), b = parse(wasm.lines[i]);
  const d = a.json !== undefined && b.json !== undefined ? difference(a.json, b.json)
    : a.text === b.text ? null : `"${native.lines[i]}" vs "${wasm.lines[i]}"`;
  if (d) {
    console.error(`line ${i + 1} differs at ${d || '(top)'}`);
    failed = true;
  }
}
console.log(`${path.basename(script)}: ${native.lines.length} lines, ${failed ? 'DIFFERENT' : 'the same'}`);
process.exit(failed ? 1 : 0);
