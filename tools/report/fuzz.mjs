// Runs the fuzz target of the readers for a while with new seeds.
//
//     npm run fuzz -- [SECONDS]      (default: 60 for each property)
import { spawnSync } from 'node:child_process';

const seconds = process.argv[2] ?? '60';
const run = spawnSync(process.execPath, ['test.mjs', 'fuzz'], { stdio: 'inherit', env: { ...process.env, FUZZ_SECONDS: seconds } });
process.exit(run.status ?? 1);
