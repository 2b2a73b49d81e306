// The upper tail of the chi-squared distribution, for up to thousands of degrees of freedom.
//
// With a = df / 2 and m = x / 2 it is the regularised incomplete gamma function Q(a, m). Below the mean
// 1 - Q is summed as a series, above it Q is a continued fraction, evaluated by the modified method of
// Lentz: W. H. Press et al., Numerical Recipes, 3rd ed. (2007), section 6.2. The factor in front,
// m^a exp(-m) / Gamma(a + 1), is formed as Loader proposes (see binomial.ts), so that large numbers do
// not cancel.
import { deviance, stirlingError } from './binomial';

/** P(X >= x) of a chi-squared variable with `degrees` > 0 degrees of freedom; NaN otherwise. */
export function chiSquaredTail(x: number, degrees: number): number {
  if (!(degrees > 0) || Number.isNaN(x)) return NaN;
  if (x <= 0) return 1;
  if (x === Infinity) return 0;
  const a = degrees / 2;
  const m = x / 2;
  const factor = Math.exp(-stirlingError(a) - deviance(a, m)) / Math.sqrt(2 * Math.PI * a);
  return m < a + 1 ? 1 - factor * lowerSeries(a, m) : factor * a * upperFraction(a, m);
}

/** 1 + m / (a + 1) + m^2 / ((a + 1) (a + 2)) + ... */
function lowerSeries(a: number, m: number): number {
  let term = 1;
  let sum = 1;
  for (let k = 1; k < 100000 && term > 1e-17 * sum; k++) {
    term *= m / (a + k);
    sum += term;
  }
  return sum;
}

/** 1 / (m + 1 - a - 1 (1 - a) / (m + 3 - a - 2 (2 - a) / (m + 5 - a - ...))) */
function upperFraction(a: number, m: number): number {
  const kTiny = 1e-300;
  const away = (value: number) => (Math.abs(value) < kTiny ? kTiny : value);
  let b = m + 1 - a;
  let c = 1 / kTiny;
  let d = 1 / away(b);
  let fraction = d;
  for (let k = 1; k < 100000; k++) {
    const numerator = -k * (k - a);
    b += 2;
    d = 1 / away(numerator * d + b);
    c = away(b + numerator / c);
    fraction *= d * c;
    if (Math.abs(d * c - 1) < 1e-15) break;
  }
  return fraction;
}
