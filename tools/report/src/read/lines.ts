// Lines of text files, and the lines of `hovar --check --data` that the page knows.

/** The lines of a text, without the line feeds or carriage returns with line feeds that end them. */
export function* linesOf(text: string): Generator<string> {
  for (let from = 0; from <= text.length;) {
    const found = text.indexOf('\n', from);
    const end = found < 0 ? text.length : found;
    yield text.slice(from, end > from && found >= 0 && text[end - 1] === '\r' ? end - 1 : end);
    from = end + 1;
  }
}

const kCounts = /^(\d+) records?, \d+ hospitals?, \d+ variables?, \d+ POA indicators?$/;

/** The number of records in the line that begins a description of the data; NaN for another line. */
export function describedRecords(line: string): number {
  const end = line.startsWith('"') ? line.lastIndexOf('": ') : -1;
  const counts = end < 1 ? null : kCounts.exec(line.slice(end + 3));
  return counts ? Number(counts[1]) : NaN;
}

const isDigit = (code: number): boolean => code >= 48 && code <= 57;

/** The place before `:` and digits that end before `end`; -1 when none do. */
function beforeNumber(line: string, end: number): number {
  let at = end - 1;
  while (at >= 0 && isDigit(line.charCodeAt(at))) at--;
  return at < end - 1 && line[at] === ':' ? at : -1;
}

/** What the check warns of in a line `FILE:LINE:COLUMN: warning: TEXT`; empty for another line. */
export function checkWarning(line: string): string {
  const mark = ': warning: ';
  for (let at = line.indexOf(mark); at >= 0; at = line.indexOf(mark, at + 1)) {
    const place = beforeNumber(line, at);
    if (place > 0 && beforeNumber(line, place) > 0) return line.slice(at + mark.length);
  }
  return '';
}
