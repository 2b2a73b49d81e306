// Reads CSV tables of any size in pieces. The rules of CSV are Papa Parse's; this file owns where
// the pieces begin and end, so that a file of many megabytes is never one string.
import Papa from 'papaparse';

const kPieceBytes = 1 << 20;

/** What is wrong in a table, in words for the list of files. */
export class TableError extends Error {}

/**
 * Decodes pieces of bytes. Names are bytes without a declared character set: UTF-8 is assumed until a
 * piece shows that it cannot be, and Windows-1252 from there on.
 */
class TextPieces {
  private utf8 = new TextDecoder('utf-8', { fatal: true });
  private western: TextDecoder | null = null;

  decode(bytes: Uint8Array, last: boolean): string {
    if (!this.western) {
      try {
        return this.utf8.decode(bytes, { stream: !last });
      } catch {
        this.western = new TextDecoder('windows-1252');
      }
    }
    return this.western.decode(bytes, { stream: !last });
  }
}

/**
 * The rows of a table, some thousand at a time. A line feed ends a row; one that is missing behind the
 * last row does no harm. `onBytes` is told how many bytes have been read since the last call.
 */
export async function* csvRows(
  blob: Blob, onBytes: (count: number) => void = () => {},
): AsyncGenerator<string[][]> {
  const text = new TextPieces();
  const parser = () => new Papa.Parser({ delimiter: ',', newline: '\n', quoteChar: '"' });
  let rest = '';
  for (let start = 0; start < blob.size; start += kPieceBytes) {
    const end = Math.min(start + kPieceBytes, blob.size);
    const last = end === blob.size;
    rest += text.decode(new Uint8Array(await blob.slice(start, end).arrayBuffer()), last);
    const result = parser().parse(rest, 0, !last);
    // A quoted field that the piece cuts off is an error only at the end of the file.
    if (result.errors.length > 0 && last) throw new TableError(result.errors[0].message);
    const rows: string[][] = result.data;
    rest = last ? '' : rest.slice(result.meta.cursor);
    if (last && rows.length > 0 && rows[rows.length - 1].join('') === '') rows.pop();
    onBytes(end - start);
    if (rows.length > 0) yield rows;
  }
}

/** All rows of a small table, each as long as its header. */
export async function csvTable(blob: Blob): Promise<string[][]> {
  const table: string[][] = [];
  for await (const rows of csvRows(blob)) for (const row of rows) table.push(row);
  for (let i = 1; i < table.length; i++) requireWidth(table[i], table[0].length, i + 1);
  return table;
}

export function requireWidth(row: string[], width: number, number: number): void {
  if (row.length !== width) {
    throw new TableError(`row ${number} has ${row.length} cells, the header ${width}`);
  }
}
