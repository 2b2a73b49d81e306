// Tells the files apart by what they hold: every table by its header, a log by its first line, a
// definition by its root.
import Papa from 'papaparse';
import { kPredictionColumns, type FileKind } from '../model';

const kHeadBytes = 1 << 16;
export const kBlockNames = ['[P|X]', '[Y|Z]', '[Y|X]', '[Y|X,P=0]', '[Y|X,P=0,MCMC]'];

/** A definition's root may stand behind declarations and comments. */
const kRoot = /^\s*(?:<\?[^]*?\?>\s*|<![^]*?>\s*)*<(Analysis|Prediction|Validation|Batch)[\s/>]/;

/** The line that begins a description of the data; findings may stand before it. */
const kDescription = /^".*": \d+ records?, \d+ hospitals?, \d+ variables?, \d+ POA indicators?\r?$/m;

export async function identify(blob: Blob): Promise<{ kind: FileKind; note: string }> {
  if (blob.size === 0) return { kind: 'unused', note: 'empty file' };
  const head = new TextDecoder('windows-1252')
    .decode(await blob.slice(0, kHeadBytes).arrayBuffer()).replace(/^ï»¿/, '');
  const kind = kindOf(head);
  return { kind, note: kind === 'unused' ? 'not a file of a run' : '' };
}

function kindOf(head: string): FileKind {
  if (/^\s*\{\s*"format"\s*:\s*"hovar run record"/.test(head)) return 'runRecord';
  if (kRoot.test(head)) return 'definition';
  if (/^Number of records: -?\d+\r?\n/.test(head)) return 'log';
  if (kDescription.test(head)) return 'description';
  const row = (Papa.parse(head, { delimiter: ',', newline: '\n', preview: 1 }).data[0] ?? []) as string[];
  return kindOfHeader(row);
}

export function kindOfHeader(row: string[]): FileKind {
  const begins = (...cells: string[]) => cells.every((cell, i) => row[i] === cell);
  if (row.length === 21 && begins('Variables Names', '', '[X|Z]') &&
      kBlockNames.every((name, b) => row[6 + 3 * b] === name)) {
    return 'coefficients';
  }
  if (row[0] === 'Step' && row.slice(1).every((cell) => /^\w+(\[\d+\])?$/.test(cell))) return 'chain';
  if (row.length === 4 && begins('Variable', 'Mean', 'Variance', 'Acceptance')) return 'summary';
  if (row.length === 11 && begins('Key', 'Hospital ID', ...kPredictionColumns)) return 'individual';
  if (row.length === 13 && begins('Hospital ID', 'Nr. records', 'Nr. non missing records',
    'Nr. non missing records P=0', ...kPredictionColumns)) {
    return 'hospitals';
  }
  if (row.length === 2 && begins('Estimate', 'C-Statistics')) return 'cStatistics';
  return 'unused';
}
