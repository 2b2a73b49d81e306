// One rule: with generalized estimating equations the draws of the chain have the inverse of the
// covariance that they should have, so they and what is made from them are not fit for inference. The
// reason is in docs/limits.md. Which files of a report does this concern?
import { folderOf, namedCoefficients, valueOf } from './definitions';
import { isRecordCount, originText, shortPath } from '../model';
import type { CalibrationColumn, CoefficientFile, Origin, Report } from '../model';
import { plural } from '../view/format';

export const kUnfitDraws = 'Not fit for inference: with generalized estimating equations the draws have the inverse of the covariance ' +
  'that they should have, whatever the figures of the chains are.';
export const kNoDraws = 'No draws were asked for.';
export const kRemedy = 'What to do: take counts and expectations from a run with false, and standard errors of the four fits from a run ' +
  'with true and Steps 0.';

/**
 * With generalized estimating equations the fifth block has its standard error under `ese` and none
 * under `mse`.
 */
export function usesGee(file: CoefficientFile): boolean {
  const fifth = file.blocks[file.blocks.length - 1];
  const filled = (cells: { text: string }[]) => cells.some((cell) => cell.text.trim() !== '');
  return filled(fifth.ese) && !filled(fifth.mse);
}

/** The coefficient file in the nearest folder above, else the only one of the folder or of all. */
export function coefficientsBeside(origin: Origin, files: CoefficientFile[]): CoefficientFile | undefined {
  const same = files.filter((file) => file.origin.folder === origin.folder);
  const above = same.filter((file) => folderOf(origin.path).startsWith(folderOf(file.origin.path)));
  const length = (file: CoefficientFile) => folderOf(file.origin.path).length;
  const nearest = above.sort((a, b) => length(b) - length(a))[0];
  if (nearest) return nearest;
  if (same.length === 1) return same[0];
  return files.length === 1 ? files[0] : undefined;
}

interface Decision {
  gee: boolean;
  /** By which file, where it is not the one that a definition names; empty otherwise. */
  note: string;
}

/**
 * Whether a file comes from a run with the flag: by the coefficient file that the definition of its run names, else
 * by the nearest one, else by all there is.
 */
function decide(report: Report, origin: Origin): Decision {
  const named = namedCoefficients(report, origin, report.coefficients);
  const found = named.flatMap(({ file }) => file ?? []);
  if (found.length > 0) return { gee: found.some(usesGee), note: '' };
  const beside = coefficientsBeside(origin, report.coefficients);
  const gee = beside ? usesGee(beside) : report.coefficients.length > 0 ? report.coefficients.some(usesGee)
    : report.definitions.some((definition) => valueOf(definition, 'UseGeneralizedEstimatingEquations') === 'true');
  const differ = report.coefficients.some(usesGee) && !report.coefficients.every(usesGee);
  if (report.coefficients.length === 0 || (named.length === 0 && !differ)) return { gee, note: '' };
  const why = named.length > 0
    ? `${originText(named[0].definition.origin)} takes the coefficients from “${shortPath(named[0].path)}”, which is not among these files.`
    : `No definition among these files says which coefficients ${originText(origin)} was made with.`;
  const by = beside ? `by the nearest coefficient file, ${originText(beside.origin)}` : 'by all coefficient files together';
  return { gee, note: `${why} Whether the run used generalized estimating equations was decided ${by}.` };
}

export const madeWithGee = (report: Report, origin: Origin): boolean => decide(report, origin).gee;

const shownPredictions = (report: Report) => report.hospitals[0] ?? report.individuals[0] ?? report.cStatistics[0];

/** Whether the predictions that the page shows first come from such a run; false when there are none. */
export function predictionsUseGee(report: Report): boolean {
  const shown = shownPredictions(report);
  return shown !== undefined && madeWithGee(report, shown.origin);
}

/** By which file that was decided, where it is not the one that a definition names; empty otherwise. */
export function geeDecisionText(report: Report): string {
  const shown = shownPredictions(report);
  return shown ? decide(report, shown.origin).note : '';
}

/** Whether the predictions, and without predictions whether any coefficients do. */
export function runUsesGee(report: Report): boolean {
  return shownPredictions(report) ? predictionsUseGee(report) : report.coefficients.some(usesGee);
}

/** Whether draws of such a run were kept: in a chain, or as the fifth block of its coefficients. */
export function hasUnfitDraws(report: Report): boolean {
  const drawn = (file: CoefficientFile) => file.blocks[file.blocks.length - 1].ese.some((cell) => Number(cell.text) !== 0);
  return report.chains.some((chain) => chain.steps.length > 0 && madeWithGee(report, chain.origin)) ||
    report.coefficients.some((file) => usesGee(file) && drawn(file));
}

/** What is wrong with the columns of predictions: with those that average over imputed values too. */
export interface UnfitColumns {
  /** A sentence that names the columns. */
  text: string;
  /** Whether the observed columns, E[Y|P=0] and E[P|YPXZ], are or may be wrong. */
  observed: boolean;
  /** Whether an X was or may have been imputed, so that the expectations given X are off. */
  byX: boolean;
}

const kFilled = 'filled in by the fifth block, which is not fit';
const kByP = 'E[P|YPXZ], the observed counts E[Y|P=0], and E[Y|X,P=0] with its C-statistic';
const kByX = 'E[P|X], and E[Y|X] and E[Y|X,P=0] with their C-statistics';

/** Null when the predictions come from a run without the flag. */
export function unfitColumns(report: Report): UnfitColumns | null {
  if (!predictionsUseGee(report)) return null;
  const hospitals = report.hospitals.find((file) => !file.derived);
  const incomplete = hospitals?.rows.reduce((sum, row) => sum + (isRecordCount(row.records) ? row.records - row.complete : 0), 0) ?? NaN;
  const missingP = incomplete === 0 ? 0 : report.individuals[0]?.missingP ?? NaN;
  // Records that lack P may lack an X too, which these files do not show.
  const missingX = incomplete - missingP;
  const head = 'With generalized estimating equations E[Y|X,P=0]-MCMC is not fit for inference.';
  if (Number.isNaN(missingP)) {
    const some = incomplete > 0 ? ` ${plural(incomplete, 'record lacks', 'records lack')} P or an X, ${kFilled}.` : '';
    return { text: `${head}${some} Where P is missing, neither are ${kByP}; where an X is missing, neither are ${kByX}.`, observed: true, byX: true };
  }
  if (missingP > 0) {
    const x = missingX > 0 ? ` In ${plural(missingX, 'more record')} an X was filled in likewise, so neither are ${kByX}.`
      : ` Where an X is missing too, neither are ${kByX}.`;
    return {
      text: `${head} P is missing in ${plural(missingP, 'record')} and was ${kFilled}, so neither are ${kByP}.${x}`,
      observed: true, byX: true,
    };
  }
  const other = incomplete > 0
    ? ` In ${plural(incomplete, 'record')} an X was ${kFilled}, so neither are ${kByX}. The observed counts are not affected, for every P is known.`
    : '';
  return { text: `${head}${other}`, observed: false, byX: !(incomplete === 0) };
}

/** For a sentence on chains. */
export const kMadeFromDraws = `Neither is what is made from them: the fifth block and E[Y|X,P=0]-MCMC; where P is missing, also ${kByP}; ` +
  `where an X is missing, also ${kByX}.`;

const kGivenX = ['E[Y|X]', 'E[P|X]', 'E[Y|X,P=0]'];

/** What is wrong with one expectation and what it is compared with; empty when nothing is. */
export function unfitExpectation(unfit: UnfitColumns, { expected, observed }: CalibrationColumn): string {
  const both = expected === 'E[Y|X,P=0]';  // it counts a record as far as its P is 0
  const byP = unfit.observed && observed !== 'Y'
    ? ` Where P is missing, ${both ? `${expected} and ` : ''}the observed ${observed} ${both ? 'are' : 'is'} not fit either.` : '';
  const byX = unfit.byX && kGivenX.includes(expected) ? ` Where an X is missing, ${expected} is not fit either.` : '';
  return byX + byP;
}
