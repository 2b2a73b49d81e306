// Observed over expected of each hospital, with its interval and where it lies in the funnel.
//
// The files hold means; times the number of records they are counts. Where the expectation is of what
// arose in hospital, a record with P = 1 cannot add to it, so the cases are the records that remain:
// records x (1 - E[P|YPXZ]), rounded.
import {
  adjustedLimits, funnelLimits, heterogeneity, observedToExpectedInterval, type Heterogeneity,
} from '../statistics/funnel';
import { isRecordCount, kExpectations, kMostRecords, kPredictionColumns } from '../model';
import { count, fixed, kLongestName, list, number, plural, shorten } from '../view/format';
import { geeDecisionText, runUsesGee, unfitColumns, unfitExpectation } from './estimating_equations';
import type { CalibrationColumn, HospitalFile, HospitalRow, PredictionColumn, Report } from '../model';

export type Position = 'above998' | 'above95' | 'inside' | 'below95' | 'below998' | 'unknown';

export const kPositionText: Record<Position, string> = {
  above998: 'above 99.8 %', above95: 'above 95 %', inside: 'within 95 %',
  below95: 'below 95 %', below998: 'below 99.8 %', unknown: 'not known',
};

/** A Q that chance exceeds with a smaller probability is put down to differences between hospitals. */
const kLargestP = 0.05;

export interface Limits {
  lower: number;
  upper: number;
}

export interface HospitalRatio {
  row: HospitalRow;
  /** Counts, not rates. */
  observed: number;
  expected: number;
  cases: number;
  ratio: number;
  /** 95 % interval of the ratio. */
  interval: Limits;
  limits95: Limits;
  limits998: Limits;
  position: Position;
}

export interface HospitalJudgement {
  pair: CalibrationColumn;
  ratios: HospitalRatio[];
  /** How much more the hospitals differ than chance lets them; null with fewer than two. */
  heterogeneity: Heterogeneity | null;
  /** True when the limits are widened by the variance between hospitals. */
  adjusted: boolean;
}

export const meanOf = (row: HospitalRow, column: PredictionColumn): number =>
  row.means[kPredictionColumns.indexOf(column)].value;

export const pairOf = (expected: PredictionColumn): CalibrationColumn =>
  kExpectations.find((pair) => pair.expected === expected) ?? kExpectations[0];

export function defaultExpectation(report: Report): { column: PredictionColumn; reason: string } {
  const preset = presetExpectation(report);
  return { ...preset, reason: [preset.reason, geeDecisionText(report)].filter(Boolean).join(' ') };
}

function presetExpectation(report: Report): { column: PredictionColumn; reason: string } {
  if (runUsesGee(report)) {
    return {
      column: 'E[Y|X,P=0]',
      reason: `${kUnfitBlock} So the fourth block, E[Y|X,P=0], is the expectation here.${unfitOf(report, pairOf('E[Y|X,P=0]'))}`,
    };
  }
  return {
    column: 'E[Y|X,P=0]-MCMC',
    reason: 'E[Y|X,P=0]-MCMC has learned from all records, with missing values filled in; E[Y|X,P=0] has learned ' +
      'from the complete records alone and misleads when these are not like the others.',
  };
}

const kUnfitBlock = 'The run used generalized estimating equations. The fifth block and the expectation made from it, ' +
  'E[Y|X,P=0]-MCMC, are then not fit for inference.';

function unfitOf(report: Report, pair: CalibrationColumn): string {
  const unfit = unfitColumns(report);
  return unfit ? unfitExpectation(unfit, pair) : '';
}

/** Why an expectation is preset, or what is to be known about another one that the reader chose. */
export function expectationNote(report: Report, column: PredictionColumn): string {
  const preset = defaultExpectation(report);
  if (column === preset.column) return preset.reason;
  const reason = runUsesGee(report) ? `${kUnfitBlock}${unfitOf(report, pairOf(column))}` : preset.reason;
  return `Chosen by hand; the default is ${preset.column}. ${reason}`;
}

export function judgeHospitals(file: HospitalFile, pair: CalibrationColumn, widen: boolean): HospitalJudgement {
  const counted = file.rows.map((row) => countsOf(row, pair));
  const between = heterogeneity(counted.filter(isCountable));
  const adjusted = widen && (between === null || isTold(between));
  const ratios = counted.map((counts) => {
    if (!(counts.expected > 0) || !isCountable(counts)) return unknown(counts);
    const limits = (level: 0.95 | 0.998) => adjusted && between
      ? adjustedLimits(counts.cases, counts.expected, level, between)
      : funnelLimits(counts.cases, counts.expected, level);
    const ratio = counts.observed / counts.expected;
    const [limits95, limits998] = [limits(0.95), limits(0.998)];
    return {
      ...counts, ratio, limits95, limits998,
      interval: observedToExpectedInterval(counts.observed, counts.expected, counts.cases, 0.95),
      position: positionOf(ratio, limits95, limits998),
    };
  });
  return { pair, ratios, heterogeneity: between, adjusted };
}

/**
 * No run writes more records, and the limits of so many cases would take minutes. Nor are there more cases than
 * records, but for the six digits of the rates.
 */
const isCountable = ({ row, cases }: Counts): boolean => isRecordCount(row.records) && !(cases > 1.001 * row.records + 1);

/** The hospitals whose numbers of records no file can hold, in words; empty when there are none. */
export function refusedText(ratios: readonly HospitalRatio[]): string {
  const refused = ratios.filter(({ row }) => !isRecordCount(row.records)).map(({ row }) => shorten(row.id, kLongestName));
  return refused.length === 0 ? '' : `Not judged, for the number of records is none, or more than the ${count(kMostRecords)} that a run ` +
    `can hold: ${list(refused)}.`;
}

/** False where an expectation so near 0 that its reciprocal is infinite leaves no Q. */
export const isTold = ({ q, tau2 }: Heterogeneity): boolean => Number.isFinite(q) && Number.isFinite(tau2);

/**
 * Whether the hospitals differ by more than chance, in words. A Q that is not large is no proof that they
 * do not differ, and the text does not say so.
 */
export function heterogeneityText({ heterogeneity: between }: HospitalJudgement): string {
  if (!between) return '';
  if (!isTold(between)) {
    return 'Whether the hospitals differ by more than chance cannot be told: a hospital expects so little that Cochran’s Q is not finite.';
  }
  const { q, degrees, pValue, tau2 } = between;
  const test = `Cochran’s Q = ${number(q)} on ${plural(degrees, 'degree')} of freedom, ` +
    `p ${pValue < 0.001 ? '< 0.001' : `= ${fixed(pValue, pValue < 0.1 ? 3 : 2)}`}`;
  const spread = `The estimated standard deviation of the ratio between hospitals is tau = ${fixed(Math.sqrt(tau2), 2)}.`;
  return pValue < kLargestP
    ? `The hospitals differ by more than chance explains (${test}). ${spread}`
    : `No more difference between the hospitals is shown than chance explains (${test}); that does not show that there ` +
      `is none. ${spread}`;
}

interface Counts {
  row: HospitalRow;
  observed: number;
  expected: number;
  cases: number;
}

function countsOf(row: HospitalRow, pair: CalibrationColumn): Counts {
  const observed = row.records * meanOf(row, pair.observed);
  const expected = row.records * meanOf(row, pair.expected);
  const atRisk = pair.observed === 'E[Y|P=0]' ? row.records * (1 - meanOf(row, 'E[P|YPXZ]')) : row.records;
  // Six digits of the means must not leave fewer cases than outcomes.
  const cases = Math.max(Math.round(atRisk), Math.ceil(observed - 1e-3), Math.ceil(expected));
  return { row, observed, expected, cases };
}

function unknown(counts: Counts): HospitalRatio {
  const none = { lower: NaN, upper: NaN };
  return { ...counts, ratio: NaN, interval: none, limits95: none, limits998: none, position: 'unknown' };
}

function positionOf(ratio: number, limits95: Limits, limits998: Limits): Position {
  if (Number.isNaN(ratio)) return 'unknown';
  if (ratio > limits998.upper) return 'above998';
  if (ratio < limits998.lower) return 'below998';
  if (ratio > limits95.upper) return 'above95';
  if (ratio < limits95.lower) return 'below95';
  return 'inside';
}

export interface FunnelCurve {
  expected: number;
  limits95: Limits;
  limits998: Limits;
}

/**
 * The limits as curves over the expected count, for a hospital whose cases have the mean risk of all.
 * A hospital is judged by its own limits, which differ a little from these when its risk does.
 */
export function funnelCurves(judgement: HospitalJudgement, points = 120): FunnelCurve[] {
  const known = judgement.ratios.filter((ratio) => ratio.position !== 'unknown');
  if (known.length === 0) return [];
  const sum = (value: (ratio: HospitalRatio) => number) => known.reduce((total, ratio) => total + value(ratio), 0);
  const risk = sum((ratio) => ratio.expected) / Math.max(sum((ratio) => ratio.cases), 1);
  const largest = Math.max(...known.map((ratio) => ratio.expected));
  const smallest = Math.min(...known.map((ratio) => ratio.expected));
  const from = Math.max(Math.min(smallest, largest / 50) * 0.8, 0.05);
  // Whole numbers of cases, all of the same risk, give a smooth curve.
  const caseCounts = Array.from({ length: points }, (_, i) =>
    Math.max(1, Math.round(from * (largest * 1.03 / from) ** (i / (points - 1)) / risk)));
  return [...new Set(caseCounts)].map((cases) => {
    const expected = cases * risk;
    const limits = (level: 0.95 | 0.998) => judgement.adjusted && judgement.heterogeneity
      ? adjustedLimits(cases, expected, level, judgement.heterogeneity)
      : funnelLimits(cases, expected, level);
    return { expected, limits95: limits(0.95), limits998: limits(0.998) };
  });
}
