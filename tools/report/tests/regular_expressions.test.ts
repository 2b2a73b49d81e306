// No regular expression of the page takes more than linear time, whatever it is run over: each one in the
// built script, those of its libraries included, is proved so by recheck (its analysis of automata, not its
// fuzzer), or is listed here with the reason why no text from a file reaches it.
import assert from 'node:assert/strict';
import { test } from 'node:test';
import { parse, type Node } from 'acorn';
import { simple } from 'acorn-walk';
import { build } from 'esbuild';

process.env.RECHECK_BACKEND = 'pure';
process.env.RECHECK_SYNC_BACKEND = 'pure';
const { checkSync } = await import('recheck');

/** Of libraries: these see the constants that the page passes, never text from a file. */
const kOverConstants: [string, string][] = [
  ['^-?([_a-z]|[\\240-\\377]|\\\\[0-9a-f]{1,6}', 'Plot: the option className'],
  ['^[+-]?\\d*\\.?\\d+(e[+-]?\\d+)?(\\w*|%)$', 'Plot: a constant symbol size or font size'],
  ['(\\d+)px', 'uPlot: fonts of axes'],
  ['[0-9.]+px', 'uPlot: fonts of axes'],
  ['\\.\\d*?(?=9{6,}|0{6,})', 'uPlot: a number as JavaScript writes it, of 25 characters at most'],
];
/** Expressions that libraries put together from constants: formats of colours (d3-color) and of time (d3-time-format, uPlot). */
const kMostPutTogether = 8;

const bundle = await build({
  entryPoints: ['src/main.ts'], bundle: true, write: false, format: 'iife', target: 'es2022', legalComments: 'none',
});
const script = bundle.outputFiles[0].text;

interface Found {
  literals: Map<string, { source: string; flags: string }>;
  made: string[];
}

function regularExpressions(code: string): Found {
  const found: Found = { literals: new Map(), made: [] };
  const made = (node: Node & { callee: Node }): void => {
    if ((node.callee as Node & { name?: string }).name === 'RegExp') found.made.push(code.slice(node.start, node.end));
  };
  simple(parse(code, { ecmaVersion: 2022, sourceType: 'module' }), {
    Literal(node) {
      if (node.regex) found.literals.set(node.raw ?? '', { source: node.regex.pattern, flags: node.regex.flags });
    },
    NewExpression: made, CallExpression: made,
  });
  return found;
}

const isLinear = (source: string, flags: string): boolean => {
  const result = checkSync(source, flags, { checker: 'automaton', timeout: 20_000 });
  return result.status === 'safe' && ['safe', 'linear'].includes(result.complexity.type);
};

test('the proof knows exponential and quadratic expressions', () => {
  assert.ok(!isLinear('^(?:a|a)*$', '') && !isLinear('<!-[^]*?->', 'g') && !isLinear('a*b', ''));
  assert.ok(isLinear('^a*b', '') && isLinear('[=+]', 'g'));
});

test('every regular expression of the page is linear, or never sees text from a file', () => {
  const { literals } = regularExpressions(script);
  assert.ok(literals.size > 40);
  const other = [...literals.values()].filter(({ source, flags }) => !isLinear(source, flags)).map(({ source }) => source);
  const unexplained = other.filter((source) => !kOverConstants.some(([begin]) => source.startsWith(begin)));
  assert.deepEqual(unexplained, []);
  assert.equal(other.length, kOverConstants.length, 'an entry of kOverConstants is no longer needed');
});

test('the page itself puts no regular expression together', async () => {
  assert.ok(regularExpressions(script).made.length <= 2 * kMostPutTogether);
  const own = await build({
    entryPoints: ['src/main.ts'], bundle: true, write: false, format: 'esm', target: 'es2022', packages: 'external',
  });
  assert.deepEqual(regularExpressions(own.outputFiles[0].text).made, []);
});
