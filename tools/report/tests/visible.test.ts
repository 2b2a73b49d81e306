// Text from files as the page shows it.
import assert from 'node:assert/strict';
import { readFileSync, readdirSync } from 'node:fs';
import { join } from 'node:path';
import { test } from 'node:test';
import { visible } from '../src/view/visible';

const cases: [string, string][] = [
  ['', ''], ['Hospital 7', 'Hospital 7'], ['Zürich, Müller & Søn — €', 'Zürich, Müller & Søn — €'], ['東京', '東京'],
  ['a\nb\r\tc', 'a\\nb\\r\\tc'], ['\0\x1b[31m\x7f', '\\x00\\x1b[31m\\x7f'], ['\x85\x9b', '\\x85\\x9b'],
  ['\u202Egnp.exe', '\\u202egnp.exe'], ['a\u2066b\u2069c', 'a\\u2066b\\u2069c'], ['\u200E\u200F\u061C', '\\u200e\\u200f\\u061c'],
  ['a\u2028b\u2029', 'a\\u2028b\\u2029'], ['H1\u200B', 'H1\\u200b'], ['H\uFEFF1\u00AD', 'H\\ufeff1\\xad'], ['\u3164', '\\u3164'], ['\u2800', '\\u2800'],
  ['a\u{E0041}', 'a\\u{e0041}'], ['\uD800x', '\\ud800x'], ['\u{1F469}\u200D\u2695\uFE0F', '\u{1F469}\u200D\u2695\uFE0F'],
  [`e${'\u0301'.repeat(4)}`, `e${'\u0301'.repeat(4)}`], [`e${'\u0301'.repeat(50)}x`, `e${'\u0301'.repeat(4)}…x`],
  // Words from right to left stand alone, so that the number behind them stays behind them.
  ['\u05D0\u05D1 \u05D2 (1.5)', '\u2068\u05D0\u05D1 \u05D2\u2069 (1.5)'], ['\u0645 12, \u0646', '\u2068\u0645\u2069 12, \u2068\u0646\u2069'],
];
for (const [text, expected] of cases) {
  test(`${JSON.stringify(text).slice(0, 40)} is shown as ${JSON.stringify(expected).slice(0, 40)}`, () => assert.equal(visible(text), expected));
}

test('a text of a million letters is cut', () => {
  assert.equal(visible('a'.repeat(1e6)), `${'a'.repeat(20_000)}…`);
});

test('nothing but the one file of elements puts text into the page', () => {
  const files = readdirSync('src', { recursive: true }).map(String).filter((name) => name.endsWith('.ts') && name !== join('view', 'dom.ts'));
  const direct = files.filter((name) => /\.(textContent|innerText|innerHTML|outerHTML|nodeValue|placeholder) = |insertAdjacent|createTextNode|document\.write/
    .test(readFileSync(join('src', name), 'utf8')));
  assert.deepEqual(direct, []);
});
