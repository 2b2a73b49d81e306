// The order of numbers, found without comparing them.

/** Places of the values in ascending order, and the bits that are sorted. */
interface Scratch {
  values: Float64Array;
  digits: Uint16Array;
  from: Uint32Array;
  counts: Uint32Array;
}

const kDigitValues = 65536;
const kDigits = 4;

let scratch: Scratch = newScratch(0);

function newScratch(size: number): Scratch {
  const values = new Float64Array(size);
  return {
    values,
    digits: new Uint16Array(values.buffer),
    from: new Uint32Array(size),
    counts: new Uint32Array(kDigitValues),
  };
}

/**
 * The indices of the values in ascending order; equal values stay in the order in which they stand.
 * There must be no NaN. A zero with a minus sign comes before one without.
 *
 * A radix sort over the bits of the numbers, 16 at a time. Bits of positive numbers are in the order
 * of the numbers already but for the sign, those of negative ones in the opposite order.
 */
export function ascendingOrder(values: Float64Array): Uint32Array {
  const n = values.length;
  if (scratch.from.length < n) scratch = newScratch(n);
  const { digits, counts } = scratch;
  scratch.values.set(values);
  for (let i = 0; i < n; i++) {
    const flip = digits[4 * i + 3] >= 0x8000 ? 0xffff : 0;
    for (let d = 0; d < 3; d++) digits[4 * i + d] ^= flip;
    digits[4 * i + 3] ^= flip || 0x8000;
  }
  let from: Uint32Array = scratch.from;
  let to: Uint32Array = new Uint32Array(n);
  for (let i = 0; i < n; i++) from[i] = i;
  for (let d = 0; d < kDigits; d++) {
    counts.fill(0);
    for (let i = 0; i < n; i++) counts[digits[4 * i + d]]++;
    let places = 0;
    for (let value = 0; value < kDigitValues; value++) {
      const count = counts[value];
      counts[value] = places;
      places += count;
    }
    for (let i = 0; i < n; i++) to[counts[digits[4 * from[i] + d]]++] = from[i];
    [from, to] = [to, from];
  }
  // After an even number of passes the result stands where the indices began.
  return from.slice(0, n);
}
