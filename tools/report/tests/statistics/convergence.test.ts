// Against the R package posterior (tests/reference/convergence.R), and by properties.
import assert from 'node:assert/strict';
import { test } from 'node:test';
import {
  autocorrelation, essBulk, essTail, mcseMean, runningMean, splitRhatRank, summarise,
} from '../../src/statistics/convergence';
import { density } from '../../src/statistics/density';
import reference from '../reference/convergence.json';
import { assertClose, assertRelative, stored, storedArray } from './close';
import type { Stored } from './close';

interface Case {
  name: string;
  chains: Stored[][];
  mean: Stored;
  sd: Stored;
  q025: Stored;
  median: Stored;
  q975: Stored;
  rhat: Stored;
  essBulk: Stored;
  essTail: Stored;
  mcseMean: Stored;
  autocorrelation: Stored[];
  densityX?: Stored[];
  densityY?: Stored[];
}

const kFigures = ['mean', 'sd', 'q025', 'median', 'q975', 'rhat', 'essBulk', 'essTail', 'mcseMean'] as const;

for (const one of reference as Case[]) {
  const chains = one.chains.map(storedArray);

  test(`${one.name}: all figures are those of posterior`, () => {
    const summary = summarise(chains);
    for (const figure of kFigures) assertRelative(summary[figure], stored(one[figure]), figure);
    assertRelative(splitRhatRank(chains), stored(one.rhat), 'splitRhatRank');
    assertRelative(essBulk(chains), stored(one.essBulk), 'essBulk');
    assertRelative(essTail(chains), stored(one.essTail), 'essTail');
    assertRelative(mcseMean(chains), stored(one.mcseMean), 'mcseMean');
  });

  test(`${one.name}: autocorrelations are those of posterior`, () => {
    const actual = autocorrelation(chains[0], 40);
    assert.equal(actual.length, one.autocorrelation.length);
    one.autocorrelation.forEach((value, lag) => assertClose(actual[lag], stored(value), `lag ${lag}`));
  });

  if (one.densityX && one.densityY) {
    const [expectedX, expectedY] = [storedArray(one.densityX), storedArray(one.densityY)];
    test(`${one.name}: the density is that of kernels summed one by one`, () => {
      const { x, y } = density(Float64Array.from(chains.flatMap((chain) => [...chain])), 512);
      const highest = Math.max(...y);
      expectedX.forEach((value, i) => assertClose(x[37 * i], value, `point ${i}`, 1e-12));
      expectedY.forEach((value, i) =>
        assertClose(y[37 * i] / highest, value / highest, `density at point ${i}`, 1e-12));
    });
  }
}

test('No draws give no figures', () => {
  for (const chains of [[], [new Float64Array(0)], [new Float64Array(0), new Float64Array(0)]]) {
    const summary = summarise(chains);
    for (const figure of kFigures) assert.ok(Number.isNaN(summary[figure]), figure);
  }
  assert.equal(autocorrelation(new Float64Array(0), 10).length, 0);
  assert.equal(runningMean(new Float64Array(0)).length, 0);
  assert.equal(density(new Float64Array(0)).x.length, 0);
  assert.equal(density(Float64Array.of(NaN, Infinity)).x.length, 0);
});

test('Halves of one draw have no variance, hence no R-hat', () => {
  assert.ok(Number.isNaN(splitRhatRank([Float64Array.of(1, 2), Float64Array.of(4, 3)])));
  assert.ok(Number.isNaN(splitRhatRank([Float64Array.of(1, 2, 5), Float64Array.of(4, 3, 6)])));
});

test('Chains of different lengths are refused', () => {
  assert.throws(() => summarise([new Float64Array(5), new Float64Array(6)]), RangeError);
});

test('The chains are left as they were', () => {
  const chain = Float64Array.of(3, 1, 2, 5, 4, 9, 7, 8);
  const copy = chain.slice();
  summarise([chain]);
  autocorrelation(chain, 3);
  density(chain);
  assert.deepEqual(chain, copy);
});

test('R-hat and the bulk effective sample size do not change under a monotone map', () => {
  // R-hat of the folded draws does, so only a map that keeps distances in order is used for it.
  const chains = (reference as Case[])[0].chains.map(storedArray);
  const shifted = chains.map((chain) => chain.map((draw) => 8 * draw));
  assert.equal(splitRhatRank(shifted), splitRhatRank(chains));
  const cubed = chains.map((chain) => chain.map((draw) => draw ** 3));
  assert.equal(essBulk(cubed), essBulk(chains));
});

test('Autocorrelation has no more lags than draws', () => {
  const chain = Float64Array.of(1, 2, 4);
  // Around the mean 7/3 the draws are -4/3, -1/3, 5/3: 42/9; lag 1 (4 - 5)/9; lag 2 -20/9.
  const actual = autocorrelation(chain, 10);
  assert.equal(actual.length, 3);
  [1, -1 / 42, -20 / 42].forEach((value, lag) => assertClose(actual[lag], value, `lag ${lag}`, 1e-14));
  assert.equal(autocorrelation(chain, 0).length, 1);
});

test('The running mean ends in the mean', () => {
  assert.deepEqual([...runningMean(Float64Array.of(2, 4, 9, 1))], [2, 3, 5, 4]);
});

test('The density of equal draws is one kernel of a tenth of their value times nine', () => {
  // Both spreads are 0, so the bandwidth is 0.9 |draw| n^(-1/5); 32 draws make the last factor 1/2.
  const { x, y } = density(new Float64Array(32).fill(2), 601);
  assertClose(x[0], 2 - 2.7, 'first point', 1e-14);
  assertClose(x[600], 2 + 2.7, 'last point', 1e-14);
  assertClose(y[300], 1 / (0.9 * Math.sqrt(2 * Math.PI)), 'peak', 1e-14);
});

test('A density of draws has the mass 1', () => {
  const { x, y } = density(Float64Array.from({ length: 200 }, (_, i) => Math.tan(i / 150)), 4001);
  const mass = y.reduce((sum, value) => sum + value, 0) * (x[1] - x[0]);
  assertClose(mass, 1, 'mass', 2e-3); // three bandwidths on either side leave out up to 0.0027 of one draw
});
