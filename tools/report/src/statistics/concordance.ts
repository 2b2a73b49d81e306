// How well predictions tell records with an event from those without.

/**
 * The C-statistic: the share of pairs, one record with outcome 1 and one with 0, in which the first has
 * the larger prediction; a tie counts one half. It is -1 when there is no pair.
 *
 * The program counts pairs in the same way and without rounding: predictions are compared exactly,
 * zeros of both signs are equal, and a NaN is neither larger than nor equal to anything, but its record
 * still makes pairs. Records whose outcome is neither 0 nor 1 are left out.
 *
 * Both kinds are sorted apart and then walked together, so that the cost is that of sorting.
 */
export function cStatistic(predicted: Float64Array, observed: Float64Array): number {
  const events = predicted.filter((_, record) => observed[record] === 1).sort();
  const others = predicted.filter((_, record) => observed[record] === 0).sort();
  if (events.length === 0 || others.length === 0) return -1;
  // Twice the pairs won by the events so far; below 2^53 for up to a hundred million records.
  let score = 0;
  let smaller = 0;
  let notLarger = 0;
  for (let i = 0; i < events.length; i++) {
    const event = events[i];
    if (event !== event) break; // NaNs stand at the end
    while (smaller < others.length && others[smaller] < event) smaller++;
    while (notLarger < others.length && others[notLarger] <= event) notLarger++;
    score += smaller + notLarger;
  }
  return score / (2 * events.length * others.length);
}
