// The discrete Fourier transform of complex numbers, for lengths that are powers of two. It makes
// autocovariances cheap: n log n operations instead of n squared.

/** What transforms of one length share; made once and kept. */
interface Plan {
  /** Where each number stands after its index was written backwards in bits. */
  reversed: Uint32Array;
  /** For each quarter q = 1, 4, 16, ... (or 2, 8, 32, ...) the factors of its double stage. */
  stages: { quarter: number; factors: Float64Array }[];
}

const plans = new Map<number, Plan>();

function planFor(length: number): Plan {
  const known = plans.get(length);
  if (known) return known;
  const reversed = new Uint32Array(length);
  for (let i = 1; i < length; i++) {
    reversed[i] = (reversed[i >> 1] >> 1) | (i & 1 ? length >> 1 : 0);
  }
  const stages = [];
  for (let quarter = hasOddPower(length) ? 2 : 1; 4 * quarter <= length; quarter *= 4) {
    const factors = new Float64Array(4 * quarter);
    for (let k = 0; k < quarter; k++) {
      const angle = (Math.PI * k) / (2 * quarter);
      factors.set([Math.cos(2 * angle), Math.sin(2 * angle), Math.cos(angle), Math.sin(angle)], 4 * k);
    }
    stages.push({ quarter, factors });
  }
  const plan = { reversed, stages };
  plans.set(length, plan);
  return plan;
}

function hasOddPower(length: number): boolean {
  return Math.log2(length) % 2 === 1;
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
 * Both arrays have the same length, a power of two. Two stages of the transform, which join halves
 * to quarters' doubles and these to whole blocks, are done in one pass over the numbers.
 * Source: J. W. Cooley, J. W. Tukey (1965), Mathematics of Computation 19, 297-301.
 */
export function transform(re: Float64Array, im: Float64Array): void {
  const { reversed, stages } = planFor(re.length);
  reorder(re, reversed);
  reorder(im, reversed);
  if (hasOddPower(re.length)) joinNeighbours(re, im);
  for (const { quarter, factors } of stages) doubleStage(re, im, quarter, factors);
}

function reorder(values: Float64Array, reversed: Uint32Array): void {
  for (let i = 0; i < values.length; i++) {
    const j = reversed[i];
    if (i < j) {
      const value = values[i];
      values[i] = values[j];
      values[j] = value;
    }
  }
}

/** The stage of blocks of two, whose factor is 1. */
function joinNeighbours(re: Float64Array, im: Float64Array): void {
  for (let i = 0; i < re.length; i += 2) {
    const [x, y] = [re[i + 1], im[i + 1]];
    re[i + 1] = re[i] - x;
    im[i + 1] = im[i] - y;
    re[i] += x;
    im[i] += y;
  }
}

/**
 * The stages of blocks of 2q and of 4q. With w = exp(-i pi k / (2q)) the first one joins a, b and c, d
 * of the four quarters with the factor w^2, the second one the results with w and -i w.
 */
function doubleStage(re: Float64Array, im: Float64Array, quarter: number, factors: Float64Array): void {
  const length = re.length;
  for (let start = 0; start < length; start += 4 * quarter) {
    for (let k = 0; k < quarter; k++) {
      const a = start + k;
      const b = a + quarter;
      const c = b + quarter;
      const d = c + quarter;
      const c1 = factors[4 * k];
      const s1 = factors[4 * k + 1];
      const c2 = factors[4 * k + 2];
      const s2 = factors[4 * k + 3];

      const bx = re[b] * c1 + im[b] * s1;
      const by = im[b] * c1 - re[b] * s1;
      const dx = re[d] * c1 + im[d] * s1;
      const dy = im[d] * c1 - re[d] * s1;
      const ax = re[a];
      const ay = im[a];
      const cx = re[c];
      const cy = im[c];

      const sumX = cx + dx;
      const sumY = cy + dy;
      const restX = cx - dx;
      const restY = cy - dy;
      const ux = sumX * c2 + sumY * s2;
      const uy = sumY * c2 - sumX * s2;
      const vx = restY * c2 - restX * s2;
      const vy = -restX * c2 - restY * s2;

      re[a] = ax + bx + ux;
      im[a] = ay + by + uy;
      re[c] = ax + bx - ux;
      im[c] = ay + by - uy;
      re[b] = ax - bx + vx;
      im[b] = ay - by + vy;
      re[d] = ax - bx - vx;
      im[d] = ay - by - vy;
    }
  }
}
