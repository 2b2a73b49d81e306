// Runs the tests: bundles each tests/**/*.test.ts and hands the bundles to Node's test runner.
//
//     node test.mjs [PART OF A FILE NAME...]
import { build } from 'esbuild';
import { spawnSync } from 'node:child_process';
import { readdirSync, rmSync } from 'node:fs';
import { dirname, join } from 'node:path';
import { fileURLToPath } from 'node:url';

process.chdir(dirname(fileURLToPath(import.meta.url)));
const wanted = process.argv.slice(2);
const tests = readdirSync('tests', { recursive: true }).filter((name) => name.endsWith('.test.ts'))
  .filter((name) => wanted.length === 0 || wanted.some((part) => name.includes(part))).sort();
const output = 'node_modules/.cache/tests';
rmSync(output, { recursive: true, force: true });
await build({
  entryPoints: tests.map((name) => join('tests', name)), outdir: output, outbase: 'tests', bundle: true,
  platform: 'node', format: 'esm', target: 'node20', packages: 'external', outExtension: { '.js': '.mjs' },
  sourcemap: 'inline', logLevel: 'warning',
});
const bundles = tests.map((name) => join(output, name.replace(/\.ts$/, '.mjs')));
const run = spawnSync(process.execPath,
  ['--enable-source-maps', '--test', '--test-concurrency=2', ...bundles], { stdio: 'inherit' });
process.exit(run.status ?? 1);
