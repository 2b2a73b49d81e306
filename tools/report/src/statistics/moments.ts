// Means, standard deviations and quantiles, exact enough to be compared with R.

/** The mean, summed twice so that rounding of the first sum is taken out; NaN when empty. */
export function mean(values: Float64Array): number {
  const n = values.length;
  if (n === 0) return NaN;
  let sum = 0;
  for (let i = 0; i < n; i++) sum += values[i];
  const first = sum / n;
  if (!Number.isFinite(first)) return first;
  let rest = 0;
  for (let i = 0; i < n; i++) rest += values[i] - first;
  return first + rest / n;
}

/** The sample variance (divisor n - 1), exactly 0 for equal values; NaN for fewer than two. */
export function variance(values: Float64Array): number {
  if (values.length < 2) return NaN;
  let equal = true;
  for (let i = 1; i < values.length && equal; i++) equal = values[i] === values[0];
  if (equal) return Number.isFinite(values[0]) ? 0 : NaN;
  const centre = mean(values);
  let sum = 0;
  for (let i = 0; i < values.length; i++) sum += (values[i] - centre) * (values[i] - centre);
  return sum / (values.length - 1);
}

/**
 * A quantile of `count` values, given by their place in ascending order from 0: linear between order
 * statistics, type 7 of R. J. Hyndman, Y. Fan (1996), The American Statistician 50, 361-365. NaN when
 * there are no values.
 */
export function quantile(count: number, valueAt: (place: number) => number, probability: number): number {
  if (count === 0) return NaN;
  // Counted from 1, as R does, for the same rounding.
  const index = 1 + (count - 1) * probability;
  const below = Math.floor(index);
  const low = valueAt(below - 1);
  const high = valueAt(Math.ceil(index) - 1);
  if (index === below || high === low) return low;
  const share = index - below;
  return (1 - share) * low + share * high;
}
