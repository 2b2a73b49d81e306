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
  for (let i = 0; i < values.length; i++) sum += (values[i] - centre) ** 2;
  return sum / (values.length - 1);
}

/**
 * A quantile of values in ascending order: linear between order statistics, type 7 of R. J. Hyndman,
 * Y. Fan (1996), The American Statistician 50, 361-365. NaN when there are no values.
 */
export function quantile(sorted: Float64Array, probability: number): number {
  if (sorted.length === 0) return NaN;
  const index = 1 + (sorted.length - 1) * probability;
  const below = Math.floor(index);
  const low = sorted[below - 1];
  const high = sorted[Math.ceil(index) - 1];
  if (index === below || high === low) return low;
  const share = index - below;
  return (1 - share) * low + share * high;
}
