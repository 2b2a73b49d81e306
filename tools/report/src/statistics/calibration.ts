// Do predicted probabilities come true? Records are put into ten groups of rising predictions, and
// what was predicted is compared with what was observed in each.
import { normalQuantile } from './normal';

/** How records are grouped and what the interval is, for a reader. */
export const kCalibrationMethod =
  'tenths of the records by their prediction; Wilson 95 % intervals of the observed rate';

export interface CalibrationGroup {
  count: number;
  meanPredicted: number;
  observedRate: number;
  /** Wilson 95 % interval of the observed rate. */
  lower: number;
  upper: number;
}

const kGroups = 10;

/**
 * The groups in ascending order of predictions. Records whose prediction or outcome is NaN are left
 * out.
 *
 * Records with the same prediction stay together, so that their order in the file does not matter:
 * such a block belongs to the tenth in which its middle lies. Hence groups may be of unequal size, and
 * there are fewer than ten where a block is large. Outcomes may lie between 0 and 1, as imputed ones
 * do; the interval then takes them as counted in part.
 */
export function calibrationByTenths(predicted: Float64Array, observed: Float64Array): CalibrationGroup[] {
  const known = (record: number) => predicted[record] === predicted[record] && observed[record] === observed[record];
  const sorted = predicted.filter((_, record) => known(record)).sort();
  const largest = largestOfTenths(sorted);
  const sums = Array.from({ length: kGroups }, () => ({ count: 0, predicted: 0, observed: 0 }));
  for (let record = 0; record < predicted.length; record++) {
    if (!known(record)) continue;
    let group = 0;
    while (predicted[record] > largest[group]) group++;
    sums[group].count++;
    sums[group].predicted += predicted[record];
    sums[group].observed += observed[record];
  }
  return sums.filter(({ count }) => count > 0).map((sum) => {
    const observedRate = sum.observed / sum.count;
    return {
      count: sum.count, meanPredicted: sum.predicted / sum.count, observedRate,
      ...wilsonInterval(observedRate, sum.count, 0.95),
    };
  });
}

/** The largest prediction of each tenth; of an empty one that of the tenth before it. */
function largestOfTenths(sorted: Float64Array): Float64Array {
  const n = sorted.length;
  const largest = new Float64Array(kGroups).fill(-Infinity);
  for (let first = 0; first < n; ) {
    let end = first + 1;
    while (end < n && sorted[end] === sorted[first]) end++;
    const tenth = Math.floor((kGroups * (first + end)) / (2 * n));
    largest.fill(sorted[first], tenth);
    first = end;
  }
  return largest;
}

/**
 * The rates that a test by the normal approximation would not reject, given the observed one.
 *
 * Source: E. B. Wilson (1927), Probable inference, the law of succession, and statistical inference,
 * Journal of the American Statistical Association 22, 209-212.
 */
export function wilsonInterval(rate: number, count: number, level: number): { lower: number; upper: number } {
  const z = normalQuantile((1 + level) / 2);
  const share = (z * z) / count;
  const centre = rate + share / 2;
  const half = z * Math.sqrt((rate * (1 - rate) + share / 4) / count);
  return {
    lower: Math.max(0, (centre - half) / (1 + share)),
    upper: Math.min(1, (centre + half) / (1 + share)),
  };
}
