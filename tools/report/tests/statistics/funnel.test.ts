// Against R (tests/reference/funnel.R), and by properties.
import assert from 'node:assert/strict';
import { test } from 'node:test';
import { betaDistribution, betaQuantile, binomialDistribution, binomialProbability } from '../../src/statistics/binomial';
import { adjustedLimits, funnelLimits, heterogeneity, observedToExpectedInterval } from '../../src/statistics/funnel';
import { chiSquaredTail } from '../../src/statistics/chi_squared';
import reference from '../reference/funnel.json';
import { randomNumbers } from '../support/study';
import { assertClose, assertRelative } from './close';

const kLevels = [0.95, 0.998];

test('Limits are those of R', () => {
  for (const one of reference.limits) {
    const actual = funnelLimits(one.cases, one.expected, one.level);
    // Where one event more or less is likely at the limit, the rounding of the probabilities counts.
    const what = `${one.cases} cases, ${one.expected} expected, level ${one.level}`;
    assertClose(actual.lower, one.lower, `lower limit of ${what}`, 1e-9);
    assertClose(actual.upper, one.upper, `upper limit of ${what}`, 1e-9);
  }
});

test('Tails of the chi-squared distribution are those of R', () => {
  for (const { x, degrees, tail } of reference.tails) {
    assertRelative(chiSquaredTail(x, degrees), tail, `${x} on ${degrees} degrees of freedom`, 1e-11);
  }
});

test('Tails of the chi-squared distribution by hand', () => {
  // With two degrees of freedom it is exp(-x / 2).
  for (const x of [0.001, 1, 3.99, 4.01, 60]) assertRelative(chiSquaredTail(x, 2), Math.exp(-x / 2), `x = ${x}`, 1e-13);
  assert.equal(chiSquaredTail(0, 3), 1);
  assert.equal(chiSquaredTail(Infinity, 3), 0);
  assert.ok(Number.isNaN(chiSquaredTail(1, 0)));
  assert.ok(Number.isNaN(chiSquaredTail(NaN, 3)));
});

test('Intervals are those of R', () => {
  for (const one of reference.intervals) {
    const actual = observedToExpectedInterval(one.observed, one.expected, one.cases, one.level);
    const what = `${one.observed} of ${one.cases}, level ${one.level}`;
    assertRelative(actual.lower, one.lower, `lower bound of ${what}`, 1e-10);
    assertRelative(actual.upper, one.upper, `upper bound of ${what}`, 1e-10);
  }
});

reference.studies.forEach(({ hospitals, result }, index) => {
  test(`Q, its p-value and tau2 of study ${index} are those of metafor`, () => {
    const actual = heterogeneity(hospitals);
    assert.ok(actual);
    assert.equal(actual.degrees, result.degrees);
    assertRelative(actual.q, result.q, 'Q', 1e-12);
    assertRelative(actual.pValue, result.pValue, 'p', 1e-10);
    assertRelative(actual.tau2, result.tau2, 'tau2', 1e-11);
    const { cases, expected } = hospitals[0];
    const limits = adjustedLimits(cases, expected, 0.998, actual);
    assertClose(limits.lower, result.lower, 'lower limit', 1e-10);
    assertClose(limits.upper, result.upper, 'upper limit', 1e-10);
  });
});

test('A limit by hand: two cases with one expected', () => {
  // P(R <= 0, 1, 2) = 1/4, 3/4, 1. At 0.25 r = 0 and nothing is too much; at 0.75 r = 1. At 0.1 the
  // limit lies below 0; at 0.9 it is 2 - 0.1 / 0.25.
  assert.deepEqual(funnelLimits(2, 1, 0.5), { lower: 0, upper: 1 });
  assert.equal(funnelLimits(2, 1, 0.8).lower, 0);
  assertClose(funnelLimits(2, 1, 0.8).upper, 1.6, 'upper', 1e-14);
});

test('A hospital that is as expected lies inside, however small its expectation', () => {
  // P(R = 0) = 0.9997 is above 0.975 and 0.999 alike.
  assert.deepEqual(funnelLimits(1, 0.0003, 0.998), { lower: 0, upper: 1 });
  for (const expected of [0.001, 0.02, 0.0254, 0.1, 1, 4.9, 4.99]) {
    for (const level of kLevels) {
      const { lower, upper } = funnelLimits(5, expected, level);
      assert.ok(0 <= lower && lower <= 1 && upper >= 1, `${expected} expected, level ${level}`);
    }
  }
});

test('Limits are smooth: a little more expectation moves them a little', () => {
  for (const level of kLevels) {
    let before = funnelLimits(120, 3, level);
    for (let expected = 3.001; expected < 12; expected += 0.001) {
      const now = funnelLimits(120, expected, level);
      assert.ok(Math.abs(now.upper - before.upper) < 2e-3, `upper limit jumps at ${expected}`);
      assert.ok(Math.abs(now.lower - before.lower) < 2e-3, `lower limit jumps at ${expected}`);
      before = now;
    }
  }
});

test('Wider levels give wider limits, all around 1', () => {
  for (const [cases, expected] of [[30, 0.4], [30, 4], [800, 90], [800, 700]]) {
    const [inner, outer] = kLevels.map((level) => funnelLimits(cases, expected, level));
    assert.ok(outer.lower <= inner.lower && inner.lower < 1 && 1 < inner.upper && inner.upper < outer.upper);
  }
});

test('Without expectation or records there are no limits', () => {
  for (const [cases, expected] of [[0, 1], [10, 0], [10, NaN], [NaN, 1], [10, -1]]) {
    assert.ok(Number.isNaN(funnelLimits(cases, expected, 0.95).lower));
    assert.ok(Number.isNaN(adjustedLimits(cases, expected, 0.95, { tau2: 0.1 }).upper));
    assert.ok(Number.isNaN(observedToExpectedInterval(1, expected, cases, 0.95).upper));
  }
});

test('When every record must have an event, so it must be', () => {
  assert.deepEqual(funnelLimits(12, 12, 0.95), { lower: 1, upper: 1 });
  assert.deepEqual(adjustedLimits(12, 12, 0.95, { tau2: 0.1 }), { lower: 1, upper: 1 });
});

test('Hospitals as chance makes them need no adjustment', () => {
  const hospitals = [-1, -0.5, 0, 0.5, 1].map((z) => ({ observed: 100 + z * 9, expected: 100, cases: 1000 }));
  const result = heterogeneity(hospitals);
  assert.equal(result?.tau2, 0);
  assert.deepEqual(adjustedLimits(1000, 100, 0.95, result ?? { tau2: NaN }), funnelLimits(1000, 100, 0.95));
});

test('Differences between hospitals by hand', () => {
  // E = 100 of 200, so s^2 = 0.5 / 100 and w = 200. O / E of 0.8, 0.9, 1, 1.1, 1.2 has the mean 1:
  // Q = 200 (0.04 + 0.01 + 0 + 0.01 + 0.04) = 20 on 4 degrees of freedom; the tail of 20 on 4 is
  // exp(-10) (1 + 10); tau2 = (20 - 4) / (1000 - 200) = 0.02.
  const hospitals = [80, 90, 100, 110, 120].map((observed) => ({ observed, expected: 100, cases: 200 }));
  const result = heterogeneity(hospitals);
  assertClose(result?.q ?? NaN, 20, 'Q', 1e-12);
  assert.equal(result?.degrees, 4);
  assertRelative(result?.pValue ?? NaN, 11 * Math.exp(-10), 'p', 1e-11);
  assertClose(result?.tau2 ?? NaN, 0.02, 'tau2', 1e-13);
});

test('Q is about the weighted mean, so a shift of all hospitals alike is no difference between them', () => {
  const result = heterogeneity([100, 200, 400].map((expected) => ({ observed: 1.3 * expected, expected, cases: 10 * expected })));
  assertClose(result?.q ?? NaN, 0, 'Q', 1e-12);
  assertClose(result?.pValue ?? NaN, 1, 'p', 1e-12);
});

// Events as chance makes them, 5 to 50 expected, in 2,000 studies: the share of studies with p < 0.05 has
// a standard error of 0.5 %, so it lies within 3 and 7 % unless the p-value is wrong.
test('Without differences between hospitals one study in twenty has p below 0.05', () => {
  const random = randomNumbers(8);
  let small = 0;
  for (let study = 0; study < 2000; study++) {
    const hospitals = Array.from({ length: 25 }, () => {
      const cases = Math.round(100 + 900 * random());
      let observed = 0;
      for (let i = 0; i < cases; i++) if (random() < 0.05) observed++;
      return { observed, expected: 0.05 * cases, cases };
    });
    if ((heterogeneity(hospitals)?.pValue ?? NaN) < 0.05) small++;
  }
  assert.ok(small >= 60 && small <= 140, `${small} of 2000`);
});

test('Fewer than two hospitals say nothing of differences between them', () => {
  const one = { observed: 3, expected: 1, cases: 9 };
  for (const hospitals of [[], [one], [one, { observed: 0, expected: 0, cases: 4 }, { observed: 2, expected: 2, cases: 2 }]]) {
    assert.equal(heterogeneity(hospitals), null);
  }
});

test('Probabilities of a binomial variable add up', () => {
  for (const [n, p] of [[1, 0.5], [17, 0.03], [300, 0.4], [2500, 0.999]]) {
    let sum = 0;
    for (let k = 0; k <= n; k++) {
      sum += binomialProbability(k, n, p);
      assertClose(binomialDistribution(k, n, p), sum, `P(R <= ${k}), n = ${n}, p = ${p}`, 1e-12);
    }
    assertClose(sum, 1, 'sum', 1e-12);
  }
});

test('A beta quantile leads back to its probability', () => {
  for (const [a, b] of [[0.2, 300.8], [1, 1], [2.5, 0.7], [40, 8000], [5e5, 5e5]]) {
    for (const p of [1e-6, 0.001, 0.3, 0.999]) {
      assertRelative(betaDistribution(betaQuantile(p, a, b), a, b), p, `shapes ${a}, ${b}`, 1e-9);
    }
  }
});
