// Which hospitals have more or fewer events than expected, beyond what chance does?
//
// A funnel plot shows observed / expected against the size of a hospital, with limits that a hospital
// without peculiarities passes with a chosen probability only: D. J. Spiegelhalter (2005), Funnel plots
// for comparing institutional performance, Statistics in Medicine 24, 1185-1202.
//
// Limits. With n records and expectation E the events are taken as binomial with probability E / n.
// Let r be the smallest number with P(R <= r) >= p, and a = (P(R <= r) - p) / P(R = r), the share of
// its probability that is too much. The limit at p is (r - a) / E: a number of events between r - 1 and
// r, so that the limits are smooth in n and E although events are counted. A lower limit is kept between
// 0 and 1 and an upper one is at least 1: with an expectation of a few hundredths of an event no event
// at all is so likely that the formula gives less, and a hospital that is as expected must lie inside.
// That probabilities differ between the records of a hospital is left out; it makes the true
// distribution a little narrower, so the limits err to the wide side.
//
// Differences between hospitals. Hospitals differ for reasons that the models do not know, so that more
// than expected may fall outside. For each of I hospitals let y = O / E, s^2 = (1 - E / n) / E and
// w = 1 / s^2. Cochran's statistic is
//
//   Q = sum of w (y - ybar)^2,   ybar = sum of w y / sum of w,
//
// which without differences is about chi-squared with I - 1 degrees of freedom: W. G. Cochran (1954), The
// combination of estimates from different experiments, Biometrics 10, 101-129. The variance between
// hospitals beyond chance is estimated by the method of moments,
//
//   tau2 = (Q - (I - 1)) / (sum of w - sum of w^2 / sum of w),   at least 0:
//
// R. DerSimonian, N. Laird (1986), Meta-analysis in clinical trials, Controlled Clinical Trials 7, 177-188.
// s^2 is the variance of chance in a hospital that is as expected. It is formed from the expected count
// and not from the observed one: a hospital with few events by chance would otherwise seem to be known
// precisely and pull ybar down, and one with none would have no variance. z-scores are not winsorised:
// that makes Q too small where chance alone is at work.
//
// tau2 is added to s^2 (additive random effects) as in D. J. Spiegelhalter (2005), Handling
// over-dispersion of performance indicators, Quality and Safety in Health Care 14, 347-351: the exact
// limits are moved away from 1 by the factor sqrt((s^2 + tau2) / s^2), so that they stay exact when tau2
// is 0.
import { betaQuantile, binomialDistribution, binomialProbability } from './binomial';
import { chiSquaredTail } from './chi_squared';

/** The methods in a few words, for a reader. */
export const kLimitsMethod = 'exact binomial limits, interpolated (Spiegelhalter 2005)';
export const kWideningMethod =
  'between-hospital variance of DerSimonian and Laird (1986), added to that of chance (Spiegelhalter 2005)';
export const kIntervalMethod = 'exact binomial interval (Clopper and Pearson 1934)';

export interface Limits {
  lower: number;
  upper: number;
}

export interface HospitalCounts {
  observed: number;
  expected: number;
  /** Records. */
  cases: number;
}

export interface Heterogeneity {
  /** Cochran's Q. */
  q: number;
  /** Its degrees of freedom: hospitals that count, less one. */
  degrees: number;
  /** Probability of a Q as large by chance alone, by the chi-squared distribution. */
  pValue: number;
  /** Variance of O / E between hospitals beyond chance, at least 0. */
  tau2: number;
}

const kNoLimits: Limits = { lower: NaN, upper: NaN };

/**
 * The limits of observed / expected between which a hospital without peculiarities lies with
 * probability `level`. NaN without records or expectation.
 */
export function funnelLimits(cases: number, expected: number, level: number): Limits {
  const n = Math.round(cases);
  if (!(n > 0 && expected > 0)) return kNoLimits;
  const p = Math.min(1, expected / n);
  const tail = (1 - level) / 2;
  return {
    lower: Math.min(1, Math.max(0, interpolatedQuantile(tail, n, p) / expected)),
    upper: Math.max(1, interpolatedQuantile(1 - tail, n, p) / expected),
  };
}

/** r - a of the comment above. */
function interpolatedQuantile(probability: number, n: number, p: number): number {
  if (p === 1) return n;
  const fromMean = probability < 0.5 ? -1 : 1;
  const guess = n * p + fromMean * 2 * Math.sqrt(n * p * (1 - p));
  let r = Math.min(n, Math.max(0, Math.round(guess)));
  let upTo = binomialDistribution(r, n, p);
  let at = binomialProbability(r, n, p);
  while (upTo < probability && r < n) {
    r++;
    at = binomialProbability(r, n, p);
    upTo += at;
  }
  while (r > 0 && upTo - at >= probability) {
    upTo -= at;
    r--;
    at = binomialProbability(r, n, p);
  }
  return r - (upTo - probability) / at;
}

/** The variance of O / E of a hospital in which nothing is peculiar. */
function chanceVariance(cases: number, expected: number): number {
  return (1 - expected / cases) / expected;
}

/**
 * How much more hospitals differ than chance makes them differ. Hospitals without expectation, and
 * those in which every record is expected to have an event, say nothing and are left out. Null with
 * fewer than two others.
 */
export function heterogeneity(hospitals: readonly HospitalCounts[]): Heterogeneity | null {
  const used = hospitals.filter(({ expected, cases }) => expected > 0 && expected < cases);
  if (used.length < 2) return null;
  const weights = used.map(({ cases, expected }) => 1 / chanceVariance(cases, expected));
  const ratios = used.map(({ observed, expected }) => observed / expected);
  const sum = sumOf(weights);
  const mean = sumOf(ratios.map((ratio, i) => weights[i] * ratio)) / sum;
  const q = sumOf(ratios.map((ratio, i) => weights[i] * (ratio - mean) ** 2));
  const degrees = used.length - 1;
  const sumOfSquares = sumOf(weights.map((weight) => weight * weight));
  const tau2 = Math.max(0, (q - degrees) / (sum - sumOfSquares / sum));
  return { q, degrees, pValue: chiSquaredTail(q, degrees), tau2 };
}

function sumOf(values: readonly number[]): number {
  return values.reduce((sum, value) => sum + value, 0);
}

/** Funnel limits, widened by the variance between hospitals. */
export function adjustedLimits(
  cases: number, expected: number, level: number, { tau2 }: Pick<Heterogeneity, 'tau2'>,
): Limits {
  const { lower, upper } = funnelLimits(cases, expected, level);
  const variance = chanceVariance(cases, expected);
  if (!(tau2 > 0 && variance > 0)) return { lower, upper };
  const factor = Math.sqrt((variance + tau2) / variance);
  return { lower: Math.max(0, 1 - (1 - lower) * factor), upper: 1 + (upper - 1) * factor };
}

/**
 * An interval for observed / expected that covers the hospital's true ratio with probability `level`
 * at least. `observed` need not be a whole number, as when missing values were imputed: the quantiles
 * of the beta distribution that give the bounds go over it smoothly. NaN without records or
 * expectation.
 *
 * Source: C. J. Clopper, E. S. Pearson (1934), The use of confidence or fiducial limits illustrated in
 * the case of the binomial, Biometrika 26, 404-413.
 */
export function observedToExpectedInterval(
  observed: number, expected: number, cases: number, level: number,
): Limits {
  const n = Math.round(cases);
  if (!(n > 0 && expected > 0 && observed >= 0)) return kNoLimits;
  const events = Math.min(observed, n);
  const tail = (1 - level) / 2;
  const lower = events > 0 ? betaQuantile(tail, events, n - events + 1) : 0;
  const upper = events < n ? betaQuantile(1 - tail, events + 1, n - events) : 1;
  return { lower: (lower * n) / expected, upper: (upper * n) / expected };
}
