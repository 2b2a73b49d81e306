// Numbers and lists as text.

/** Up to `digits` significant digits; "not available" for what is no number. */
export function number(value: number, digits = 3): string {
  if (Number.isNaN(value)) return 'not available';
  if (!Number.isFinite(value)) return value > 0 ? 'infinite' : '-infinite';
  if (value === 0) return '0';
  const size = Math.abs(value);
  if (size < 1e-4 || size >= 1e7) return value.toExponential(digits - 1);
  return String(Number(value.toPrecision(digits)));
}

/** A fixed number of decimals, for columns that are compared. */
export function fixed(value: number, decimals: number): string {
  if (!Number.isFinite(value)) return number(value);
  return value.toFixed(decimals);
}

export function count(value: number): string {
  return Number.isNaN(value) ? 'not available' : Math.round(value).toLocaleString('en');
}

export function percent(share: number, decimals = 0): string {
  return Number.isNaN(share) ? 'not available' : `${(100 * share).toFixed(decimals)} %`;
}

/** "1 hospital", "3 hospitals". */
export function plural(value: number, one: string, many = `${one}s`): string {
  return `${count(value)} ${value === 1 ? one : many}`;
}

/** "a, b and c", at most `most` of them. */
export function list(items: string[], most = 8): string {
  const shown = items.slice(0, most);
  if (items.length > most) return `${shown.join(', ')} and ${items.length - most} more`;
  if (shown.length < 2) return shown.join('');
  return `${shown.slice(0, -1).join(', ')} and ${shown[shown.length - 1]}`;
}

/** Names in sentences are cut here, so that one cannot push the sentence out of sight. */
export const kLongestName = 80;

export function shorten(text: string, length: number): string {
  return text.length <= length ? text : `${text.slice(0, length - 1)}…`;
}

export function bytes(size: number): string {
  if (size < 1000) return `${size} B`;
  if (size < 1e6) return `${(size / 1e3).toFixed(1)} kB`;
  return `${(size / 1e6).toFixed(1)} MB`;
}
