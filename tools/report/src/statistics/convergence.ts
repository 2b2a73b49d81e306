// Did the chains converge, and how much do their draws tell?
//
// Several chains of the same length are compared as A. Vehtari, A. Gelman, D. Simpson, B. Carpenter,
// P.-C. Buerkner (2021) propose, Rank-normalization, folding, and localization: an improved R-hat for
// assessing convergence of MCMC, Bayesian Analysis 16, 667-718:
//
// - Each chain is split into halves (the middle draw of an odd number is left out), so that one chain
//   that drifts differs from itself.
// - Draws are replaced by the normal scores of their ranks among the draws of all chains, so that
//   heavy tails and infinite variances do no harm.
// - R-hat compares the variance between with that within the half chains: with n draws in each, W the
//   mean of their variances and B / n the variance of their means it is sqrt((B / n / W) + (n - 1) / n).
//   It is taken of the ranks and of the ranks of the distances from the median, which tell chains
//   that differ in spread; the larger one counts. It should be below 1.01.
// - The effective sample size is the number of draws over the autocorrelation time, the sum of
//   autocorrelations over all lags, which is estimated across chains and cut off by the initial
//   monotone sequence of C. J. Geyer (1992), Statistical Science 7, 473-483. "Bulk" is that of the
//   normal scores, "tail" the smaller one of those of the 5 % and the 95 % quantile. Each should be
//   above 400.
// - The Monte Carlo standard error of the mean is the standard deviation over the root of the
//   effective sample size of the draws themselves.
//
// The R package posterior is the reference, to the last quirk: what it reports as NA is NaN here
// (draws that are all equal, draws that are not numbers, fewer than three in a half chain). With two
// or three draws a chain it takes the halves for chains of one draw each and reports an R-hat; half a
// chain has no variance then, and R-hat is NaN here.
import { nextPowerOfTwo, transform } from './fourier';
import { mean, quantile, variance } from './moments';
import { normalQuantile } from './normal';
import { ascendingOrder } from './order';

/** What there is to know of one coefficient from the draws of all its chains. */
export interface ChainSummary {
  mean: number;
  /** Sample standard deviation, divisor n - 1. */
  sd: number;
  q025: number;
  median: number;
  q975: number;
  rhat: number;
  essBulk: number;
  essTail: number;
  mcseMean: number;
}

/** All draws, chain by chain. Errors: RangeError when the chains are not of the same length. */
function joined(chains: readonly Float64Array[]): Float64Array {
  if (chains.length === 0) return new Float64Array(0);
  const length = chains[0].length;
  if (chains.some((chain) => chain.length !== length)) {
    throw new RangeError('The chains are not of the same length');
  }
  const draws = new Float64Array(chains.length * length);
  chains.forEach((chain, c) => draws.set(chain, c * length));
  return draws;
}

/** The half chains one behind the other; a chain of one draw is kept whole. */
interface Halves {
  draws: Float64Array;
  /** How many there are and how long each is. */
  count: number;
  length: number;
}

function split(draws: Float64Array, chains: number): Halves {
  const whole = chains === 0 ? 0 : draws.length / chains;
  if (whole < 2) return { draws, count: chains, length: whole };
  const length = Math.floor(whole / 2);
  const halves = new Float64Array(2 * chains * length);
  for (let c = 0; c < chains; c++) {
    const end = (c + 1) * whole;
    halves.set(draws.subarray(c * whole, c * whole + length), 2 * c * length);
    halves.set(draws.subarray(end - length, end), (2 * c + 1) * length);
  }
  return { draws: halves, count: 2 * chains, length };
}

function part(halves: Halves, index: number): Float64Array {
  return halves.draws.subarray(index * halves.length, (index + 1) * halves.length);
}

function hasNaN(values: Float64Array): boolean {
  for (let i = 0; i < values.length; i++) if (values[i] !== values[i]) return true;
  return false;
}

/** True for draws of which nothing can be said: none, all as good as equal, or not all finite. */
function saysNothing(values: Float64Array): boolean {
  let low = Infinity;
  let high = -Infinity;
  for (let i = 0; i < values.length; i++) {
    if (!Number.isFinite(values[i])) return true;
    if (values[i] < low) low = values[i];
    if (values[i] > high) high = values[i];
  }
  return !(high - low >= Number.EPSILON);
}

/** The normal score of each rank among a number of draws, by twice the rank; kept, for it is asked often. */
let scores = { draws: 0, byTwiceRank: new Float64Array(0) };

function scoresFor(draws: number): Float64Array {
  if (scores.draws !== draws) {
    const byTwiceRank = new Float64Array(2 * draws + 1);
    for (let twice = 2; twice <= 2 * draws; twice++) {
      byTwiceRank[twice] = normalQuantile((twice / 2 - 0.375) / (draws + 0.25));
    }
    scores = { draws, byTwiceRank };
  }
  return scores.byTwiceRank;
}

/**
 * The half chains of the normal scores: the quantile of (r - 3/8) / (n + 1/4) for rank r of n. Ties
 * have their mean rank. The middle draws of chains of odd length have no rank.
 */
function normalScores(values: Float64Array, order: Uint32Array, chains: number): Halves {
  const whole = values.length / chains;
  const middle = whole > 1 && whole % 2 === 1 ? (whole - 1) / 2 : whole;
  const ranked = middle === whole ? order : order.filter((draw) => draw % whole !== middle);
  const n = ranked.length;
  const score = scoresFor(n);
  const result = new Float64Array(values.length);
  for (let first = 0; first < n; ) {
    const value = values[ranked[first]];
    let end = first + 1;
    while (end < n && values[ranked[end]] === value) end++;
    for (let i = first; i < end; i++) result[ranked[i]] = score[first + 1 + end];
    first = end;
  }
  return split(result, chains);
}

/** The order of distances from a centre, given the order of the values. */
function orderFrom(distances: Float64Array, values: Float64Array, order: Uint32Array, centre: number): Uint32Array {
  const n = order.length;
  let above = 0;
  while (above < n && values[order[above]] <= centre) above++;
  let below = above - 1;
  return order.map(() => {
    const takesBelow = above === n || (below >= 0 && distances[order[below]] <= distances[order[above]]);
    return takesBelow ? order[below--] : order[above++];
  });
}

function rhat(halves: Halves): number {
  const { count, length } = halves;
  if (saysNothing(halves.draws)) return NaN;
  const means = new Float64Array(count);
  let within = 0;
  for (let i = 0; i < count; i++) {
    means[i] = mean(part(halves, i));
    within += variance(part(halves, i)) / count;
  }
  const between = length * variance(means);
  return Math.sqrt((between / within + length - 1) / length);
}

/**
 * The sums of the autocovariances (divisor n) of the half chains, by lag.
 *
 * Two half chains share a transform, one as real and one as imaginary part. With F the transform of
 * such a pair, the power of both together at k is (|F(k)|^2 + |F(-k)|^2) / 2; the power of all
 * transformed back is the sum of the autocovariances.
 */
function autocovarianceSums(halves: Halves): Float64Array {
  const { count, length } = halves;
  const size = nextPowerOfTwo(2 * length);
  const power = new Float64Array(size);
  const re = new Float64Array(size);
  const im = new Float64Array(size);
  for (let i = 0; i < count; i += 2) {
    centre(re, part(halves, i));
    if (i + 1 < count) centre(im, part(halves, i + 1));
    else im.fill(0);
    transform(re, im);
    for (let k = 0; k < size; k++) {
      const mirrored = (size - k) & (size - 1);
      power[k] += (re[k] * re[k] + im[k] * im[k] + re[mirrored] * re[mirrored] + im[mirrored] * im[mirrored]) / 2;
    }
  }
  im.fill(0);
  transform(power, im);
  const sums = power.subarray(0, length);
  for (let lag = 0; lag < length; lag++) sums[lag] /= size * length;
  return sums;
}

/** Fills `target` with the values less their mean, then zeros. Equal values give exact zeros. */
function centre(target: Float64Array, values: Float64Array): void {
  target.fill(0);
  if (!(variance(values) > 0)) return;
  const middle = mean(values);
  for (let i = 0; i < values.length; i++) target[i] = values[i] - middle;
}

function effectiveSize(halves: Halves): number {
  const { count, length } = halves;
  if (length < 3 || saysNothing(halves.draws)) return NaN;
  const sums = autocovarianceSums(halves);
  const covariance = (lag: number) => sums[lag] / count;
  const withinVariance = (covariance(0) * length) / (length - 1);
  let total = covariance(0);
  if (count > 1) {
    const means = new Float64Array(count);
    for (let i = 0; i < count; i++) means[i] = mean(part(halves, i));
    total += variance(means);
  }
  const correlation = (lag: number) => 1 - (withinVariance - covariance(lag)) / total;

  // Geyer's pairs of neighbouring lags, as long as their sums are positive.
  const rho = new Float64Array(length);
  let even = 1;
  let odd = correlation(1);
  rho[0] = even;
  rho[1] = odd;
  let last = 0;
  while (last < length - 5 && even + odd > 0) {
    last += 2;
    even = correlation(last);
    odd = correlation(last + 1);
    if (even + odd >= 0) {
      rho[last] = even;
      rho[last + 1] = odd;
    }
  }
  if (even > 0) rho[last] = even;
  // Made to fall: no pair's sum is larger than the one before it.
  for (let lag = 2; lag <= last - 2; lag += 2) {
    if (rho[lag] + rho[lag + 1] > rho[lag - 2] + rho[lag - 1]) {
      rho[lag] = (rho[lag - 2] + rho[lag - 1]) / 2;
      rho[lag + 1] = rho[lag];
    }
  }
  // When not even one pair follows lag 0, posterior still counts lag 0 in the sum.
  let sum = last === 0 ? rho[0] : 0;
  for (let lag = 0; lag < last; lag++) sum += rho[lag];
  const draws = count * length;
  const time = Math.max(-1 + 2 * sum + rho[last], 1 / Math.log10(draws));
  return draws / time;
}

function essOfQuantile(draws: Float64Array, chains: number, limit: number): number {
  return effectiveSize(split(draws.map((draw) => (draw <= limit ? 1 : 0)), chains));
}

/** One coefficient's draws with what several of the figures need. */
class Draws {
  readonly values: Float64Array;
  private readonly complete: boolean;
  private ascending?: Uint32Array;
  private bulkScores?: Halves;

  constructor(private readonly chains: readonly Float64Array[]) {
    this.values = joined(chains);
    this.complete = !hasNaN(this.values);
  }

  quantile(probability: number): number {
    if (!this.complete) return NaN;
    const order = this.order();
    return quantile(order.length, (place) => this.values[order[place]], probability);
  }

  sd(): number {
    return Math.sqrt(variance(this.values));
  }

  rhat(): number {
    if (!this.complete) return NaN;
    const median = this.quantile(0.5);
    const distances = this.values.map((value) => Math.abs(value - median));
    if (hasNaN(distances)) return NaN;
    const order = orderFrom(distances, this.values, this.order(), median);
    return Math.max(rhat(this.scores()), rhat(normalScores(distances, order, this.chains.length)));
  }

  essBulk(): number {
    return this.complete ? effectiveSize(this.scores()) : NaN;
  }

  essTail(): number {
    if (saysNothing(this.values)) return NaN;
    const count = this.chains.length;
    return Math.min(
      essOfQuantile(this.values, count, this.quantile(0.05)),
      essOfQuantile(this.values, count, this.quantile(0.95)),
    );
  }

  mcseMean(): number {
    return this.sd() / Math.sqrt(effectiveSize(split(this.values, this.chains.length)));
  }

  private order(): Uint32Array {
    this.ascending ??= ascendingOrder(this.values);
    return this.ascending;
  }

  private scores(): Halves {
    this.bulkScores ??= normalScores(this.values, this.order(), this.chains.length);
    return this.bulkScores;
  }
}

/** The larger one of the R-hats of the ranks and of the folded ranks, of split chains. */
export function splitRhatRank(chains: readonly Float64Array[]): number {
  return new Draws(chains).rhat();
}

/** Effective sample size of the ranks: how well the centre of the distribution is known. */
export function essBulk(chains: readonly Float64Array[]): number {
  return new Draws(chains).essBulk();
}

/** Smaller effective sample size of the 5 % and the 95 % quantile. */
export function essTail(chains: readonly Float64Array[]): number {
  return new Draws(chains).essTail();
}

/** Monte Carlo standard error of the mean. */
export function mcseMean(chains: readonly Float64Array[]): number {
  return new Draws(chains).mcseMean();
}

/**
 * All figures of one coefficient at once. Quantiles are of type 7.
 * Errors: RangeError when the chains are not of the same length.
 */
export function summarise(chains: readonly Float64Array[]): ChainSummary {
  const draws = new Draws(chains);
  return {
    mean: mean(draws.values),
    sd: draws.sd(),
    q025: draws.quantile(0.025),
    median: draws.quantile(0.5),
    q975: draws.quantile(0.975),
    rhat: draws.rhat(),
    essBulk: draws.essBulk(),
    essTail: draws.essTail(),
    mcseMean: draws.mcseMean(),
  };
}

/**
 * The autocorrelations of one chain at lags 0 to maxLag, or to the last lag that it has (divisor n at
 * every lag). NaN for a chain of equal draws and for one with draws that are not finite.
 */
export function autocorrelation(chain: Float64Array, maxLag: number): Float64Array {
  const lags = Math.max(0, Math.min(Math.floor(maxLag) + 1, chain.length));
  if (lags === 0 || saysNothing(chain)) return new Float64Array(lags).fill(NaN);
  const sums = autocovarianceSums({ draws: chain, count: 1, length: chain.length });
  return sums.slice(0, lags).map((sum) => sum / sums[0]);
}

/** The mean of the first 1, 2, 3, ... draws. */
export function runningMean(chain: Float64Array): Float64Array {
  const means = new Float64Array(chain.length);
  let current = 0;
  for (let i = 0; i < chain.length; i++) {
    current += (chain[i] - current) / (i + 1);
    means[i] = current;
  }
  return means;
}
