// Tables as CSV files to keep.

export interface CsvCell {
  text: string;
  /** Text that comes from a data file. */
  free: boolean;
}

/**
 * A spreadsheet takes a cell that begins like a formula for one and runs it. Text cells that begin so
 * get an apostrophe in front, the mark for text in spreadsheets. Cells of numbers stay as they are.
 */
export function markFormula(text: string): string {
  return /^[=+\-@\t\r\n\uFF1D\uFF0B\uFF0D\uFF20]/.test(text) ? `'${text}` : text;
}

export function csvText(rows: CsvCell[][]): string {
  const field = ({ text, free }: CsvCell) => {
    const marked = free ? markFormula(text) : text;
    return /[",\n\r]/.test(marked) ? `"${marked.replace(/"/g, '""')}"` : marked;
  };
  return rows.map((row) => `${row.map(field).join(',')}\n`).join('');
}

export function saveCsv(name: string, rows: CsvCell[][]): void {
  const address = URL.createObjectURL(new Blob([csvText(rows)], { type: 'text/csv' }));
  const link = document.createElement('a');
  link.href = address;
  link.download = name;
  link.click();
  setTimeout(() => URL.revokeObjectURL(address), 60_000);
}
