// Against R and its package pROC (tests/reference/calibration.R), and by properties.
import assert from 'node:assert/strict';
import { test } from 'node:test';
import { calibrationByTenths, wilsonInterval } from '../../src/statistics/calibration';
import { cStatistic } from '../../src/statistics/concordance';
import reference from '../reference/calibration.json';
import { assertClose } from './close';

reference.forEach((study, index) => {
  const predicted = Float64Array.from(study.predicted);
  const observed = Float64Array.from(study.observed);

  test(`Groups of study ${index} are those of R`, () => {
    const groups = calibrationByTenths(predicted, observed);
    assert.equal(groups.length, study.groups.length);
    groups.forEach((group, i) => {
      assert.equal(group.count, study.groups[i].count);
      for (const figure of ['meanPredicted', 'observedRate', 'lower', 'upper'] as const) {
        assertClose(group[figure], study.groups[i][figure], `${figure} of group ${i}`, 1e-12);
      }
    });
  });

  test(`The C-statistic of study ${index} is that of pROC`, () => {
    assertClose(cStatistic(predicted, observed), study.cStatistic, 'C-statistic', 1e-14);
  });

  test(`The order of records in study ${index} does not matter`, () => {
    const [before, after] = [calibrationByTenths(predicted, observed),
      calibrationByTenths(predicted.slice().reverse(), observed.slice().reverse())];
    before.forEach((group, i) => {
      assert.equal(after[i].count, group.count);
      assertClose(after[i].observedRate, group.observedRate, `observed rate of group ${i}`, 1e-14);
    });
  });
});

test('Records of unknown prediction or outcome are left out', () => {
  const groups = calibrationByTenths(Float64Array.of(NaN, 0.2, 0.4), Float64Array.of(1, NaN, 0.25));
  assert.equal(groups.length, 1);
  assert.equal(groups[0].count, 1);
  assert.equal(groups[0].meanPredicted, 0.4);
  assert.equal(groups[0].observedRate, 0.25);
  assert.deepEqual(calibrationByTenths(new Float64Array(0), new Float64Array(0)), []);
});

test('Infinite predictions have groups too', () => {
  const groups = calibrationByTenths(Float64Array.of(-Infinity, Infinity, 0.5), Float64Array.of(0, 1, 0));
  assert.deepEqual(groups.map(({ observedRate }) => observedRate), [0, 0, 1]);
});

test('The Wilson interval of no event in ten', () => {
  // With rate 0 the bounds are 0 and z^2 / (n + z^2): 3.841459 / 13.841459.
  const { lower, upper } = wilsonInterval(0, 10, 0.95);
  assertClose(lower, 0, 'lower', 1e-16);
  assertClose(upper, 0.2775328, 'upper', 1e-7);
});

test('C-statistics by hand', () => {
  const table: [string, number[], number[], number][] = [
    ['perfect separation', [0.1, 0.2, 0.8], [0, 0, 1], 1],
    ['perfectly reversed', [0.9, 0.2, 0.1], [0, 0, 1], 0],
    ['all tied', [0.4, 0.4, 0.4], [0, 1, 0], 0.5],
    ['zeros of both signs tie', [0, -0], [1, 0], 0.5],
    ['infinities tie with themselves', [Infinity, Infinity, -Infinity], [1, 0, 0], 0.75],
    ['a NaN with an event never wins', [NaN, 0.5, 0.1], [1, 1, 0], 0.5],
    ['a NaN without an event never loses', [0.5, NaN, 0.1], [1, 0, 0], 0.5],
    ['two NaNs do not tie', [NaN, NaN], [1, 0], 0],
    ['no event', [0.3, 0.4], [0, 0], -1],
    ['only events', [0.3, 0.4], [1, 1], -1],
    ['no record', [], [], -1],
    ['unknown and partial outcomes are left out', [0.9, 0.1, 0.5, 0.2], [NaN, 0.5, 1, 0], 1],
  ];
  for (const [name, predicted, observed, expected] of table) {
    assert.equal(cStatistic(Float64Array.from(predicted), Float64Array.from(observed)), expected, name);
  }
});

test('The C-statistic is the count over all pairs, for any numbers', () => {
  const values = [NaN, -Infinity, -1, -0, 0, 1e-320, 0.25, 0.5, 1, Infinity];
  let state = 12345;
  const draw = (count: number) => {
    state = (Math.imul(state, 1103515245) + 12345) >>> 0;
    return (state >>> 8) % count;
  };
  for (let round = 0; round < 300; round++) {
    const size = 2 + draw(30);
    const predicted = Float64Array.from({ length: size }, () => values[draw(values.length)]);
    const observed = Float64Array.from({ length: size }, () => draw(2));
    let [score, pairs] = [0, 0];
    for (let i = 0; i < size; i++) {
      for (let j = 0; j < size; j++) {
        if (observed[i] !== 1 || observed[j] !== 0) continue;
        pairs++;
        if (predicted[i] > predicted[j]) score += 2;
        else if (predicted[i] === predicted[j]) score += 1;
      }
    }
    const expected = pairs > 0 ? score / (2 * pairs) : -1;
    assert.equal(cStatistic(predicted, observed), expected, `${predicted} against ${observed}`);
  }
});
