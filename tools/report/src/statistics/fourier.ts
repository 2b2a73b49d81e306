// The discrete Fourier transform of complex numbers, for lengths that are powers of two. It makes
// autocovariances cheap: n log n operations instead of n squared.

/** Angles and the order of reading for one length; made once and kept. */
interface Plan {
  cosines: Float64Array;
  sines: Float64Array;
  reversed: Uint32Array;
}

const plans = new Map<number, Plan>();

function planFor(length: number): Plan {
  const known = plans.get(length);
  if (known) return known;
  const half = length >> 1;
  const plan: Plan = {
    cosines: new Float64Array(half),
    sines: new Float64Array(half),
    reversed: new Uint32Array(length),
  };
  for (let i = 0; i < half; i++) {
    plan.cosines[i] = Math.cos((2 * Math.PI * i) / length);
    plan.sines[i] = Math.sin((2 * Math.PI * i) / length);
  }
  for (let i = 1; i < length; i++) {
    plan.reversed[i] = (plan.reversed[i >> 1] >> 1) | (i & 1 ? half : 0);
  }
  plans.set(length, plan);
  return plan;
}

/** The smallest power of two that is at least `length`. */
export function nextPowerOfTwo(length: number): number {
  let power = 1;
  while (power < length) power *= 2;
  return power;
}

/**
 * Replaces re + i im by its transform, sum over t of x[t] exp(-2 pi i k t / length).
 *
 * Both arrays have the same length, a power of two.
 * Source: J. W. Cooley, J. W. Tukey (1965), Mathematics of Computation 19, 297-301.
 */
export function transform(re: Float64Array, im: Float64Array): void {
  const length = re.length;
  const { cosines, sines, reversed } = planFor(length);
  for (let i = 0; i < length; i++) {
    const j = reversed[i];
    if (i < j) {
      const x = re[i];
      re[i] = re[j];
      re[j] = x;
      const y = im[i];
      im[i] = im[j];
      im[j] = y;
    }
  }
  for (let size = 2, step = length >> 1; size <= length; size *= 2, step >>= 1) {
    const half = size >> 1;
    for (let start = 0; start < length; start += size) {
      for (let k = 0, angle = 0; k < half; k++, angle += step) {
        const c = cosines[angle];
        const s = sines[angle];
        const low = start + k;
        const high = low + half;
        const x = re[high] * c + im[high] * s;
        const y = im[high] * c - re[high] * s;
        re[high] = re[low] - x;
        im[high] = im[low] - y;
        re[low] += x;
        im[low] += y;
      }
    }
  }
}
