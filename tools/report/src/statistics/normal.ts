// Quantiles of the normal distribution.
//
// Source: M. J. Wichura (1988), Algorithm AS 241: The percentage points of the normal distribution,
// Applied Statistics 37, 477-484; the form PPND16, with a relative error of about 1e-16.

/** Coefficients of numerator and denominator, from the highest power down. */
type Fraction = readonly [readonly number[], readonly number[]];

const kCentre: Fraction = [
  [
    2509.0809287301226727, 33430.575583588128105, 67265.770927008700853, 45921.953931549871457,
    13731.693765509461125, 1971.5909503065514427, 133.14166789178437745, 3.387132872796366608,
  ],
  [
    5226.495278852854561, 28729.085735721942674, 39307.89580009271061, 21213.794301586595867,
    5394.1960214247511077, 687.1870074920579083, 42.313330701600911252, 1,
  ],
];
const kShoulder: Fraction = [
  [
    7.7454501427834140764e-4, 0.0227238449892691845833, 0.24178072517745061177,
    1.27045825245236838258, 3.64784832476320460504, 5.7694972214606914055, 4.6303378461565452959,
    1.42343711074968357734,
  ],
  [
    1.05075007164441684324e-9, 5.475938084995344946e-4, 0.0151986665636164571966,
    0.14810397642748007459, 0.68976733498510000455, 1.6763848301838038494, 2.05319162663775882187,
    1,
  ],
];
const kTail: Fraction = [
  [
    2.01033439929228813265e-7, 2.71155556874348757815e-5, 0.0012426609473880784386,
    0.026532189526576123093, 0.29656057182850489123, 1.7848265399172913358, 5.4637849111641143699,
    6.6579046435011037772,
  ],
  [
    2.04426310338993978564e-15, 1.4215117583164458887e-7, 1.8463183175100546818e-5,
    7.868691311456132591e-4, 0.0148753612908506148525, 0.13692988092273580531,
    0.59983220655588793769, 1,
  ],
];

function horner(coefficients: readonly number[], x: number): number {
  let value = 0;
  for (let i = 0; i < coefficients.length; i++) value = value * x + coefficients[i];
  return value;
}

function ratio([numerator, denominator]: Fraction, x: number): number {
  return horner(numerator, x) / horner(denominator, x);
}

/** The value below which a standard normal variable lies with this probability; NaN outside [0, 1]. */
export function normalQuantile(probability: number): number {
  if (!(probability >= 0 && probability <= 1)) return NaN;
  const fromCentre = probability - 0.5;
  if (Math.abs(fromCentre) <= 0.425) {
    return fromCentre * ratio(kCentre, 0.180625 - fromCentre * fromCentre);
  }
  const tail = fromCentre < 0 ? probability : 1 - probability;
  if (tail === 0) return fromCentre < 0 ? -Infinity : Infinity;
  const r = Math.sqrt(-Math.log(tail));
  const distance = r <= 5 ? ratio(kShoulder, r - 1.6) : ratio(kTail, r - 5);
  return fromCentre < 0 ? -distance : distance;
}
