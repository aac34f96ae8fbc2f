// The scenario runner under node (build/web/twinlanes-headless.js) against
// the desktop binary: every script of the scenario folders (tests/app's and
// this folder's, whose scripts need the whole host), run by both with the
// same seed on fresh preferences folders, prints the same lines, dump for
// dump.
import assert from 'node:assert/strict';
import { spawnSync } from 'node:child_process';
import { mkdtempSync, readdirSync, rmSync } from 'node:fs';
import { tmpdir } from 'node:os';
import { delimiter, join } from 'node:path';
import { test } from 'node:test';

const desktop = process.env.TWINLANES_DESKTOP_BINARY;
const headless = process.env.TWINLANES_HEADLESS_JS;
const folders = process.env.TWINLANES_SCENARIOS.split(delimiter);

// What one runner prints for a script, with its exit status.
function play(command, args, script) {
  const prefs = mkdtempSync(join(tmpdir(), 'twinlanes-node-runner-'));
  try {
    const run = spawnSync(command,
      [...args, '--headless', '--seed', '3', '--prefs-dir', prefs, '--script', script],
      { encoding: 'utf8', timeout: 120_000, maxBuffer: 64 << 20 });
    assert.equal(run.error, undefined, `${command}: ${run.error}`);
    return { status: run.status, lines: run.stdout.split('\n'), stderr: run.stderr };
  } finally {
    rmSync(prefs, { recursive: true, force: true });
  }
}

const scripts = folders.flatMap((folder) =>
  readdirSync(folder).filter((name) => name.endsWith('.tl')).sort().map((name) => join(folder, name)));

test('there are scripts to compare', () => {
  assert.ok(scripts.length >= 7, `only ${scripts.length} scripts in ${folders}`);
});

for (const script of scripts) {
  const name = script.substring(script.lastIndexOf('/') + 1);
  test(`${name} prints the same under node as on the desktop`, () => {
    const expected = play(desktop, [], script);
    const actual = play(process.execPath, [headless], script);
    assert.equal(expected.status, 0, `desktop: ${expected.stderr}`);
    assert.equal(actual.status, 0, `node: ${actual.stderr}`);
    assert.ok(expected.lines.length > 1, `${name} printed nothing`);
    const n = Math.max(expected.lines.length, actual.lines.length);
    for (let i = 0; i < n; ++i)
      assert.equal(actual.lines[i], expected.lines[i], `${name}, line ${i + 1}`);
  });
}
