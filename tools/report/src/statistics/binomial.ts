// The binomial and the beta distribution, for up to millions of trials.
//
// Probabilities are formed as C. Loader (2000), Fast and accurate computation of binomial
// probabilities, proposes: with d(n) = log n! - log(sqrt(2 pi n) (n / e)^n), the error of Stirling's
// formula, and D(x, m) = x log(x / m) + m - x,
//
//   P(k) = sqrt(n / (2 pi k (n - k))) exp(d(n) - d(k) - d(n - k) - D(k, np) - D(n - k, n(1 - p))),
//
// in which no large numbers cancel. k and n need not be whole numbers there, which serves the beta
// distribution.

/** d(n) for n > 0. From 16 on by the series in 1 / n, below it by steps of one up to there. */
export function stirlingError(n: number): number {
  let sum = 0;
  let m = n;
  for (; m < 16; m++) sum += (m + 0.5) * Math.log1p(1 / m) - 1;
  const r = 1 / (m * m);
  return sum + (1 / 12 - r * (1 / 360 - r * (1 / 1260 - r * (1 / 1680 - r * (1 / 1188))))) / m;
}

/** D(x, m) for x > 0 and m > 0, by a series where x and m are close. */
export function deviance(x: number, m: number): number {
  if (Math.abs(x - m) >= 0.1 * (x + m)) return x * Math.log(x / m) + m - x;
  const v = (x - m) / (x + m);
  let sum = (x - m) * v;
  let term = 2 * x * v;
  for (let j = 1; j < 100; j++) {
    term *= v * v;
    const next = sum + term / (2 * j + 1);
    if (next === sum) break;
    sum = next;
  }
  return sum;
}

/** The probability of k successes in n trials, 0 <= k <= n. `q` is 1 - p. */
export function binomialProbability(k: number, n: number, p: number, q = 1 - p): number {
  if (p === 0) return k === 0 ? 1 : 0;
  if (q === 0) return k === n ? 1 : 0;
  if (k === 0) return Math.exp(n * Math.log1p(-p));
  if (k === n) return Math.exp(n * Math.log(p));
  const exponent = stirlingError(n) - stirlingError(k) - stirlingError(n - k)
    - deviance(k, n * p) - deviance(n - k, n * q);
  return Math.sqrt(n / (2 * Math.PI * k * (n - k))) * Math.exp(exponent);
}

/**
 * The probability of a value below x in the beta distribution with shapes a and b, both > 0.
 *
 * x^a (1 - x)^b / (a B(a, b)) times a continued fraction, evaluated by the modified method of Lentz.
 * Source: W. H. Press et al., Numerical Recipes, 3rd ed. (2007), sections 5.2 and 6.4.
 */
export function betaDistribution(x: number, a: number, b: number): number {
  if (x <= 0) return 0;
  if (x >= 1) return 1;
  if (x > (a + 1) / (a + b + 2)) return 1 - betaSeries(1 - x, x, b, a);
  return betaSeries(x, 1 - x, a, b);
}

function betaSeries(x: number, y: number, a: number, b: number): number {
  const kTiny = 1e-300;
  const away = (value: number) => (Math.abs(value) < kTiny ? kTiny : value);
  let c = 1;
  let d = 1 / away(1 - ((a + b) * x) / (a + 1));
  let fraction = d;
  for (let m = 1; m < 100000; m++) {
    const even = (m * (b - m) * x) / ((a + 2 * m - 1) * (a + 2 * m));
    d = 1 / away(1 + even * d);
    c = away(1 + even / c);
    fraction *= d * c;
    const odd = (-(a + m) * (a + b + m) * x) / ((a + 2 * m) * (a + 2 * m + 1));
    d = 1 / away(1 + odd * d);
    c = away(1 + odd / c);
    fraction *= d * c;
    if (Math.abs(d * c - 1) < 1e-15) break;
  }
  return binomialProbability(a, a + b, x, y) * (b / (a + b)) * fraction;
}

/** The probability of at most k successes in n trials. */
export function binomialDistribution(k: number, n: number, p: number): number {
  if (k < 0) return 0;
  if (k >= n) return 1;
  return 1 - betaDistribution(p, k + 1, n - k);
}

/** The value below which a beta variable with shapes a and b lies with this probability. */
export function betaQuantile(probability: number, a: number, b: number): number {
  if (!(probability > 0)) return 0;
  if (!(probability < 1)) return 1;
  let low = 0;
  let high = 1;
  let x = a / (a + b);
  // Newton's method; a step that leaves the bracket is replaced by halving it.
  for (let step = 0; step < 200; step++) {
    const excess = betaDistribution(x, a, b) - probability;
    if (excess > 0) high = x;
    else low = x;
    const slope = (binomialProbability(a, a + b, x) * a * b) / ((a + b) * x * (1 - x));
    let next = x - excess / slope;
    if (!(next > low && next < high)) next = (low + high) / 2;
    if (Math.abs(next - x) <= 1e-15 * x) return next;
    x = next;
  }
  return x;
}
