// Builds the page: one HTML file that holds its styles and its script.
//
//     node build.mjs [FILE]      (default: share/hovar/report.html of the project)
//
// The same sources give the same bytes, so the page can be committed and compared with a new build.
import { build } from 'esbuild';
import { createHash } from 'node:crypto';
import { existsSync, mkdirSync, readFileSync, writeFileSync } from 'node:fs';
import { dirname, join, resolve } from 'node:path';
import { fileURLToPath } from 'node:url';

const here = dirname(fileURLToPath(import.meta.url));
const output = resolve(process.argv[2] ?? join(here, '../../share/hovar/report.html'));
const kFilesMark = '<!-- hovar:files -->';

const common = {
  absWorkingDir: here, bundle: true, write: false, minify: true, charset: 'utf8', legalComments: 'none',
};
const script = await build({
  ...common, entryPoints: ['src/main.ts'], format: 'iife', target: 'es2022', metafile: true,
});
const style = await build({ ...common, entryPoints: ['src/page.css'], target: 'es2022' });

// The licences of the bundled packages ask to be handed on with them.
function licences(metafile) {
  const packages = new Map();
  for (const input of Object.keys(metafile.inputs)) {
    const match = /^(.*node_modules\/(?:@[^/]+\/)?[^/]+)\//.exec(input);
    if (match) packages.set(match[1], join(here, match[1]));
  }
  const byText = new Map();
  for (const [, folder] of [...packages].sort(([a], [b]) => (a < b ? -1 : 1))) {
    const { name, version } = JSON.parse(readFileSync(join(folder, 'package.json'), 'utf8'));
    const file = ['LICENSE', 'LICENSE.md', 'LICENSE.txt', 'license'].map((f) => join(folder, f)).find(existsSync);
    if (!file) throw new Error(`${name} has no licence file`);
    const text = readFileSync(file, 'utf8').trim();
    byText.set(text, [...(byText.get(text) ?? []), `${name} ${version}`]);
  }
  return [...byText].map(([text, names]) => `${names.join(', ')}\n\n${text}`).join(`\n\n${'-'.repeat(72)}\n\n`);
}

const escapeText = (text) => text.replace(/&/g, '&amp;').replace(/</g, '&lt;').replace(/>/g, '&gt;');

const code = script.outputFiles[0].text.trim();
// Either would end the script or change how the browser looks for its end.
if (/<\/script|<!--/i.test(code)) throw new Error('the script holds a sequence that HTML would act on');
const css = style.outputFiles[0].text.trim();
if (/<\/style/i.test(css)) throw new Error('the styles hold their own end tag');

const policy = [
  "default-src 'none'",
  `script-src 'sha256-${createHash('sha256').update(code).digest('base64')}'`,
  "style-src 'unsafe-inline'",
  'img-src data: blob:',
  'worker-src blob:',
  "base-uri 'none'",
  "form-action 'none'",
  'trusted-types hovar-worker',
  "require-trusted-types-for 'script'",
].join('; ');

const parts = { policy, css, code, licences: escapeText(licences(script.metafile)) };
const page = readFileSync(join(here, 'src/page.html'), 'utf8').replace(
  /\{\{(\w+)\}\}/g, (_, name) => parts[name]);
if (page.split(kFilesMark).length !== 2) throw new Error(`${kFilesMark} must occur exactly once`);
mkdirSync(dirname(output), { recursive: true });
writeFileSync(output, page);
console.log(`${output}: ${page.length} characters`);
