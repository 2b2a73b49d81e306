// Tells the files apart by what they hold: every table by its header, a log by its first line, a
// definition by its root.
import { kPredictionColumns, type FileBytes, type FileKind } from '../model';
import { csvHeader } from './csv';
import { describedRecords, linesOf } from './lines';
import { xmlRoot } from './xml';

const kHeadBytes = 1 << 16;
export const kBlockNames = ['[P|X]', '[Y|Z]', '[Y|X]', '[Y|X,P=0]', '[Y|X,P=0,MCMC]'];

const kRoots = ['Analysis', 'Prediction', 'Validation', 'Batch'];

export interface Identity {
  kind: FileKind;
  /** Why the file is not used; empty otherwise. */
  note: string;
}

export async function identify(blob: FileBytes): Promise<Identity> {
  if (blob.size === 0) return { kind: 'unused', note: 'empty file' };
  const head = new TextDecoder('windows-1252')
    .decode(await blob.slice(0, kHeadBytes).arrayBuffer()).replace(/^ï»¿/, '');
  const kind = kindOf(head, blob.size > kHeadBytes);
  return { kind, note: kind === 'unused' ? 'not a file of a run' : '' };
}

/** Files that are looked at together: each costs a message to the browser, and among many these would add up. */
const kTogether = 64;

/** The items in their order, each with what its file is. */
export async function* identified<Item extends { blob: FileBytes }>(items: Item[]): AsyncGenerator<[Item, Identity]> {
  for (let from = 0; from < items.length; from += kTogether) {
    const some = items.slice(from, from + kTogether);
    const identities = await Promise.all(some.map(({ blob }) => identify(blob).catch((error: unknown): Identity =>
      ({ kind: 'unused', note: `could not be read: ${String(error)}` }))));
    for (const [index, item] of some.entries()) yield [item, identities[index]];
  }
}

function kindOf(head: string, cut: boolean): FileKind {
  if (/^\s*\{\s*"format"\s*:\s*"hovar run record"/.test(head)) return 'runRecord';
  if (kRoots.includes(xmlRoot(head))) return 'definition';
  if (/^Number of records: -?\d+\r?\n/.test(head)) return 'log';
  // Findings may stand before the description.
  for (const line of linesOf(head)) if (!Number.isNaN(describedRecords(line))) return 'description';
  return kindOfHeader(csvHeader(head, cut));
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
