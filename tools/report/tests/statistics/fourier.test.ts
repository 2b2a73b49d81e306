// The transform against its definition.
import assert from 'node:assert/strict';
import { test } from 'node:test';
import { nextPowerOfTwo, transform } from '../../src/statistics/fourier';
import { ascendingOrder } from '../../src/statistics/order';
import { assertClose } from './close';

for (let length = 1; length <= 256; length *= 2) {
  test(`A transform of ${length} numbers is the sum that defines it`, () => {
    const x = Float64Array.from({ length }, (_, t) => Math.sin(t * t + 1));
    const y = Float64Array.from({ length }, (_, t) => Math.cos(3 * t * t));
    const [re, im] = [x.slice(), y.slice()];
    transform(re, im);
    for (let k = 0; k < length; k++) {
      let [sumX, sumY] = [0, 0];
      for (let t = 0; t < length; t++) {
        const angle = (-2 * Math.PI * ((k * t) % length)) / length;
        sumX += x[t] * Math.cos(angle) - y[t] * Math.sin(angle);
        sumY += x[t] * Math.sin(angle) + y[t] * Math.cos(angle);
      }
      assertClose(re[k], sumX, `real part ${k}`, 1e-12);
      assertClose(im[k], sumY, `imaginary part ${k}`, 1e-12);
    }
  });
}

test('The next power of two', () => {
  assert.deepEqual([1, 2, 3, 4, 5, 1024, 1025].map(nextPowerOfTwo), [1, 2, 4, 4, 8, 1024, 2048]);
});

test('The order ascends, with equal values as they stand', () => {
  const values = Float64Array.of(
    1, -1, 0, 1e-310, -1e-310, Infinity, -Infinity, 1.5, -1.5, 1, 1e300, -1e300, -1, 2 ** -1074, 0.1 + 0.2, 0.3,
  );
  const expected = [...values.keys()].sort((a, b) => values[a] - values[b] || a - b);
  // Infinity less itself is not a number, but each infinity stands here once.
  assert.deepEqual([...ascendingOrder(values)], expected);
  assert.deepEqual([...ascendingOrder(Float64Array.of(0, -0, 0))], [1, 0, 2]);
  assert.deepEqual([...ascendingOrder(Float64Array.of())], []);
});
