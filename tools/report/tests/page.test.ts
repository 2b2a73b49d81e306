// The built page: the same bytes from the same sources, its policy, its colours, its CSV downloads.
import assert from 'node:assert/strict';
import { execFileSync } from 'node:child_process';
import { createHash } from 'node:crypto';
import { mkdtempSync, readFileSync, rmSync } from 'node:fs';
import { tmpdir } from 'node:os';
import { join } from 'node:path';
import { test } from 'node:test';
import { csvText, markFormula } from '../src/view/download';

const kPage = '../../share/hovar/report.html';
const page = readFileSync(kPage, 'utf8');

test('a new build gives the committed page byte for byte', () => {
  const folder = mkdtempSync(join(tmpdir(), 'hovar-report-build-'));
  try {
    execFileSync(process.execPath, ['build.mjs', join(folder, 'report.html')]);
    assert.ok(readFileSync(join(folder, 'report.html')).equals(readFileSync(kPage)),
      'share/hovar/report.html is not what the sources give: run npm run build and commit the page');
  } finally {
    rmSync(folder, { recursive: true, force: true });
  }
});

test('the mark for files stands once, behind the body and before the script', () => {
  const parts = page.split('<!-- hovar:files -->');
  assert.equal(parts.length, 2);
  assert.match(parts[0], /<\/footer>\s*$/);
  assert.match(parts[1], /^\s*<script>/);
});

test('the policy allows the one script by its hash and no address', () => {
  const policy = /http-equiv="Content-Security-Policy" content="([^"]*)"/.exec(page)?.[1] ?? '';
  const scripts = [...page.matchAll(/<script>([^]*?)<\/script>/g)].map((match) => match[1]);
  assert.equal(scripts.length, 1);
  const hash = createHash('sha256').update(scripts[0]).digest('base64');
  assert.ok(policy.includes(`script-src 'sha256-${hash}'`));
  assert.ok(policy.startsWith("default-src 'none'"));
  assert.ok(!/https?:|\*|'unsafe-eval'|script-src[^;]*unsafe/.test(policy), policy);
});

test('nothing in the page names another file', () => {
  const beforeScript = page.slice(0, page.indexOf('<script>'));
  assert.ok(!/\s(src|href)="(?!#)/.test(beforeScript));
  assert.ok(!/url\(|@import/.test(beforeScript));
});

// Relative luminance and contrast by WCAG 2.2.
function luminance(colour: string): number {
  const [r, g, b] = [1, 3, 5].map((at) => parseInt(colour.slice(at, at + 2), 16) / 255)
    .map((part) => (part <= 0.04045 ? part / 12.92 : ((part + 0.055) / 1.055) ** 2.4));
  return 0.2126 * r + 0.7152 * g + 0.0722 * b;
}

function contrast(a: string, b: string): number {
  const [low, high] = [luminance(a), luminance(b)].sort((x, y) => x - y);
  return (high + 0.05) / (low + 0.05);
}

test('black on white has the contrast 21', () => {
  assert.equal(contrast('#000000', '#ffffff'), 21);
});

const css = readFileSync('src/page.css', 'utf8');
const themes = [...css.matchAll(/color-scheme: (light|dark);([^}]*)}/g)].map(([, name, body]) => ({
  name, colours: Object.fromEntries([...body.matchAll(/--([\w-]+): (#[0-9a-f]{6})/g)].map((m) => [m[1], m[2]])),
}));

test('the two dark sets are the same', () => {
  assert.deepEqual(themes.map((theme) => theme.name), ['light', 'dark', 'dark']);
  assert.deepEqual(themes[1].colours, themes[2].colours);
});

for (const { name, colours } of themes.slice(0, 2)) {
  test(`text and lines have enough contrast in ${name}`, () => {
    for (const paper of ['paper', 'raised']) {
      for (const text of ['ink', 'muted', 'accent', 'good', 'warn', 'bad']) {
        assert.ok(contrast(colours[text], colours[paper]) >= 4.5, `${text} on ${paper}: ${contrast(colours[text], colours[paper])}`);
      }
    }
    assert.ok(contrast(colours['on-accent'], colours.accent) >= 4.5);
    for (let i = 1; i <= 8; i++) assert.ok(contrast(colours[`series-${i}`], colours.paper) >= 3, `series ${i}`);
  });
}

const marked: [string, string][] = [
  ['=1+1', "'=1+1"], ['+cmd', "'+cmd"], ['-2+3', "'-2+3"], ['@SUM(A1)', "'@SUM(A1)"], ['\t=1', "'\t=1"], ['\r=1', "'\r=1"],
  ['\uFF1D1', "'\uFF1D1"], ['H0001', 'H0001'], ['a=1', 'a=1'], ['', ''], ["'x", "'x"],
];
for (const [text, expected] of marked) {
  test(`a text cell ${JSON.stringify(text)} is saved as ${JSON.stringify(expected)}`, () => {
    assert.equal(markFormula(text), expected);
  });
}

test('numbers are saved as they are and text is quoted where needed', () => {
  assert.equal(csvText([[{ text: '-0.5', free: false }, { text: '=a,"b"', free: true }, { text: 'c\nd', free: true }]]),
    '-0.5,"\'=a,""b""","c\nd"\n');
});
