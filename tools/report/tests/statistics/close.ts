import assert from 'node:assert/strict';

/** A number as the reference files hold it: JSON has no NaN and no infinities. */
export type Stored = number | string;

export function stored(value: Stored): number {
  if (typeof value === 'number') return value;
  if (value === 'inf') return Infinity;
  if (value === '-inf') return -Infinity;
  assert.equal(value, 'nan');
  return NaN;
}

export function storedArray(values: readonly Stored[]): Float64Array {
  return Float64Array.from(values, stored);
}

/** Asserts that two numbers agree to `tolerance` of the larger one, or of 1 when both are smaller. */
export function assertClose(actual: number, expected: number, what: string, tolerance = 1e-10): void {
  const same = Object.is(actual, expected) || actual === expected;
  const scale = Math.max(1, Math.abs(expected));
  assert.ok(
    same || Math.abs(actual - expected) <= tolerance * scale, `${what}: ${actual}, expected ${expected}`,
  );
}

/** The same relative to the expected value, however small it is. */
export function assertRelative(actual: number, expected: number, what: string, tolerance = 1e-10): void {
  const same = Object.is(actual, expected) || actual === expected;
  assert.ok(
    same || Math.abs(actual - expected) <= tolerance * Math.abs(expected),
    `${what}: ${actual}, expected ${expected}`,
  );
}
