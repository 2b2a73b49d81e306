// How many of the cells that can be missing are: the X of each variable of the model, and P.
//
// That share, not the share of incomplete records, decides whether the intervals of the fifth block can
// be relied on. With ten cells a record, 10 % of the cells missing leave one record in three complete.
//
// The files of a run do not hold it. What they hold bounds it: an incomplete record lacks one cell at
// least and all of them at most, and the individual predictions say how many lack P. The description of
// `hovar --check --data` gives the share itself.
import type { Report } from '../model';
import { count, percent } from '../view/format';

/** Beyond this share intervals of simulated studies covered less often than promised; see docs/validation.md. */
export const kManyCells = 0.3;

export interface MissingCells {
  /** Cells that can be missing, of each record. */
  perRecord: number;
  /** Bounds of the share that is missing; the same when it is known. */
  least: number;
  most: number;
  known: boolean;
}

/**
 * `incomplete` of `records` records lack a value, both without the removed variables. Null when nothing
 * can be said; with none incomplete there is nothing to say.
 */
export function missingCells(report: Report, records: number, incomplete: number): MissingCells | null {
  const described = report.descriptions.find((one) => Number.isNaN(records) || one.records === records);
  if (described && described.missingX.length > 0 && described.missingP >= 0) {
    const perRecord = described.missingX.length + 1;
    const missing = described.missingX.reduce((sum, share) => sum + share, described.missingP / described.records);
    return { perRecord, least: missing / perRecord, most: missing / perRecord, known: true };
  }
  const perRecord = cellsPerRecord(report);
  if (!(incomplete > 0 && perRecord > 0)) return null;
  const individual = report.individuals.find((one) => one.records === records);
  const missingP = Math.min(individual?.missingP ?? incomplete, incomplete);
  return {
    perRecord, least: incomplete / (records * perRecord),
    most: (incomplete * (perRecord - 1) + missingP) / (records * perRecord), known: false,
  };
}

/** The variables of the model with the intercept, for P stands in place of the intercept's X. */
function cellsPerRecord(report: Report): number {
  const log = report.logs.find((candidate) => candidate.analysis) ?? report.logs[0];
  return log?.variables >= 1 ? log.variables : report.coefficients[0]?.xNames.length ?? NaN;
}

export function missingCellsTexts(cells: MissingCells | null): string[] {
  if (!cells) return [];
  const { perRecord, least, most, known } = cells;
  const which = perRecord > 1 ? `X of ${count(perRecord - 1)} variables, and P` : 'P';
  const texts = [known
    ? `${percent(least, 1)} of the cells are missing (${which}, in all records).`
    : `Between ${percent(least, 1)} and ${percent(most, 1)} of the cells are missing (${which}, in all records). These files do not ` +
      'say how many exactly.'];
  if (!known && most > kManyCells) {
    texts.push('Save what hovar --check --data DEFINITION prints as a file in this folder, and the page shows the share.');
  }
  if (most > kManyCells) {
    texts.push('In simulated studies with cells missing at random, 95 % intervals of the fifth block covered the truth 92 to ' +
      '96 % of the time with 5 to 30 % of the cells missing, and 86 to 92 % of the time with 40 %.');
  }
  return texts;
}
