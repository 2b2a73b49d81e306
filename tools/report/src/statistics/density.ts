// The density of draws, estimated with a Gaussian kernel.
import { quantile, variance } from './moments';

/** The rule by which `density` chooses the width of its kernel, for a reader. */
export const kBandwidthRule = "Silverman's rule of thumb";

/**
 * The bandwidth 0.9 min(sd, IQR / 1.34) n^(-1/5). Where both spreads are 0 the distance of the draws
 * from 0 takes their place, or 1, so that there is always something to draw.
 *
 * Source: B. W. Silverman (1986), Density Estimation for Statistics and Data Analysis, (3.31).
 */
function bandwidth(sorted: Float64Array): number {
  const sd = sorted.length > 1 ? Math.sqrt(variance(sorted)) : 0;
  const at = (probability: number) => quantile(sorted.length, (place) => sorted[place], probability);
  const range = at(0.75) - at(0.25);
  const spread = Math.min(sd, range / 1.34) || sd || Math.abs(sorted[0]) || 1;
  return 0.9 * spread * sorted.length ** -0.2;
}

/**
 * The estimated density at equally spaced points, from three bandwidths below the smallest to three
 * above the largest draw. Draws that are not finite are left out; without any draw the result is
 * empty.
 *
 * Every draw adds its kernel to the grid from the nearest point outwards. On a grid of step d the
 * ratio of neighbouring kernel values changes by the constant factor exp(-d^2 / h^2), so that it takes
 * two multiplications a point and no further exponential.
 */
export function density(draws: Float64Array, points = 512): { x: Float64Array; y: Float64Array } {
  const sorted = draws.filter((draw) => Number.isFinite(draw)).sort();
  const n = sorted.length;
  if (n === 0 || points < 2) return { x: new Float64Array(0), y: new Float64Array(0) };
  const h = bandwidth(sorted);
  const low = sorted[0] - 3 * h;
  const step = (sorted[n - 1] + 3 * h - low) / (points - 1);
  const x = Float64Array.from({ length: points }, (_, i) => low + i * step);
  const y = new Float64Array(points);
  const d = step / h;
  const bend = Math.exp(-d * d);
  const scale = 1 / (n * h * Math.sqrt(2 * Math.PI));
  for (let i = 0; i < n; i++) {
    const nearest = Math.min(points - 1, Math.max(0, Math.round((sorted[i] - low) / step)));
    const u = (x[nearest] - sorted[i]) / h;
    const peak = scale * Math.exp((-u * u) / 2);
    y[nearest] += peak;
    spread(y, nearest, 1, peak, Math.exp(-d * (d / 2 + u)), bend);
    spread(y, nearest, -1, peak, Math.exp(-d * (d / 2 - u)), bend);
  }
  return { x, y };
}

/** Adds falling kernel values on one side of a point until they no longer matter. */
function spread(
  y: Float64Array, from: number, direction: 1 | -1, peak: number, firstRatio: number, bend: number,
): void {
  const negligible = peak * 1e-16;
  let value = peak * firstRatio;
  let ratio = firstRatio * bend;
  for (let i = from + direction; i >= 0 && i < y.length && value > negligible; i += direction) {
    y[i] += value;
    value *= ratio;
    ratio *= bend;
  }
}
