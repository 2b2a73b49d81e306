// Reads CSV tables of any size in pieces, so that a file of many megabytes is never one string. A field
// that begins with a quote ends with one, and two within it are one; everything else ends at a comma or
// a line feed. Every character is looked at once, wherever pieces end.

import type { FileBytes } from '../model';

const kPieceBytes = 1 << 20;

/** More cells than a row of any run has: 46,340 variables are the most that the program takes. */
export const kMostCells = 50_000;
/** Names and numbers are shorter by far. Without the bound a quote that is never closed takes all memory. */
export const kLongestCell = 1 << 20;

/** What is wrong in a table, in words for the list of files. */
export class TableError extends Error {}

const kComma = 44;
const kLineFeed = 10;

/** Takes a table in pieces and gives its rows. */
export class CsvParser {
  private row: string[] = [];
  private cell = '';
  /** `closed` is behind a quote that ends a quoted field unless another one follows. */
  private state: 'begin' | 'plain' | 'quoted' | 'closed' = 'begin';
  private rows: string[][] = [];
  private count = 0;

  /** The rows that this piece completes. Errors: TableError. */
  push(text: string): string[][] {
    for (let at = 0; at < text.length;) {
      switch (this.state) {
        case 'begin': at = this.begin(text, at); break;
        case 'plain': at = this.plain(text, at); break;
        case 'quoted': at = this.quoted(text, at); break;
        case 'closed': at = this.closed(text, at); break;
      }
    }
    const rows = this.rows;
    this.rows = [];
    return rows;
  }

  /** The last row, where no line feed ends it. Errors: TableError. */
  finish(): string[][] {
    if (this.state === 'quoted') throw new TableError(`row ${this.count + 1}: a quote is not closed`);
    if (this.state === 'begin' && this.row.length === 0) return [];
    this.endCell();
    return [this.row];
  }

  private begin(text: string, at: number): number {
    const quoted = text[at] === '"';
    this.state = quoted ? 'quoted' : 'plain';
    return quoted ? at + 1 : at;
  }

  private plain(text: string, from: number): number {
    let at = from;
    while (at < text.length && text.charCodeAt(at) !== kComma && text.charCodeAt(at) !== kLineFeed) at++;
    this.add(text.slice(from, at));
    return at < text.length ? this.end(text, at) : at;
  }

  private quoted(text: string, from: number): number {
    const found = text.indexOf('"', from);
    this.add(text.slice(from, found < 0 ? text.length : found));
    if (found < 0) return text.length;
    this.state = 'closed';
    return found + 1;
  }

  private closed(text: string, at: number): number {
    const code = text.charCodeAt(at);
    if (code === kComma || code === kLineFeed) return this.end(text, at);
    if (text[at] !== '"' && text[at] !== '\r') throw new TableError(`row ${this.count + 1}: text follows a closing quote`);
    this.add(text[at]);
    this.state = text[at] === '"' ? 'quoted' : 'plain';
    return at + 1;
  }

  private add(text: string): void {
    this.cell += text;
    if (this.cell.length > kLongestCell) {
      throw new TableError(`row ${this.count + 1} has a cell of more than ${kLongestCell.toLocaleString('en')} characters`);
    }
  }

  private endCell(): void {
    if (this.row.length === kMostCells) {
      throw new TableError(`row ${this.count + 1} has more than ${kMostCells.toLocaleString('en')} cells`);
    }
    this.row.push(this.cell);
    this.cell = '';
    this.state = 'begin';
  }

  /** Ends the cell at a comma, the row at a line feed too. */
  private end(text: string, at: number): number {
    this.endCell();
    if (text.charCodeAt(at) === kLineFeed) {
      this.rows.push(this.row);
      this.row = [];
      this.count++;
    }
    return at + 1;
  }
}

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
 * Errors: TableError.
 */
export async function* csvRows(
  blob: FileBytes, onBytes: (count: number) => void = () => {},
): AsyncGenerator<string[][]> {
  const text = new TextPieces();
  const parser = new CsvParser();
  for (let start = 0; start < blob.size; start += kPieceBytes) {
    const end = Math.min(start + kPieceBytes, blob.size);
    const last = end === blob.size;
    const rows = parser.push(text.decode(new Uint8Array(await blob.slice(start, end).arrayBuffer()), last));
    if (last) rows.push(...parser.finish());
    onBytes(end - start);
    if (rows.length > 0) yield rows;
  }
}

/** The first row of a table, of which `head` is the beginning; `cut` says that more follows. */
export function csvHeader(head: string, cut: boolean): string[] {
  const parser = new CsvParser();
  const end = head.indexOf('\n');
  try {
    // A quoted field may hold line feeds, so the row can end behind the first one.
    const first = (end < 0 ? undefined : parser.push(head.slice(0, end + 1))[0]) ?? parser.push(head.slice(end + 1))[0];
    if (first) return first;
    const row = parser.finish()[0] ?? [];
    return cut ? row.slice(0, -1) : row;
  } catch {
    return [];
  }
}

/** All rows of a small table, each as long as its header, `most` of them at most besides it. Errors: TableError. */
export async function csvTable(blob: FileBytes, most: number): Promise<string[][]> {
  const table: string[][] = [];
  for await (const rows of csvRows(blob)) {
    for (const row of rows) {
      table.push(row);
      requireWidth(row, table[0].length, table.length);
    }
    if (table.length > most + 1) throw new TableError(`has more than ${most.toLocaleString('en')} rows`);
  }
  return table;
}

export function requireWidth(row: string[], width: number, number: number): void {
  if (row.length !== width) {
    throw new TableError(`row ${number} has ${row.length} cells, the header ${width}`);
  }
}
