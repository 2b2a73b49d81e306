// Judges chains: one summary per coefficient, over all chains of a group, and a verdict. The command
// has the same rules in src/diagnostics/chain_verdict.h; the tests of both read one table of cases,
// tests/reference/data/verdicts.csv. docs/chains.md describes the rules.
//
// Thresholds: A. Vehtari, A. Gelman, D. Simpson, B. Carpenter, P.-C. Buerkner, Rank-normalization,
// folding, and localization: An improved R-hat for assessing convergence of MCMC, Bayesian Analysis
// 16 (2021), 667-718.
import type { ChainSummary } from '../statistics/convergence';
import { summarise } from '../statistics/convergence';
import { shortPath, type ChainFile, type Report } from '../model';
import type { ChainGroup } from './chain_groups';

export const kLargestRhat = 1.01;
export const kSmallestEss = 400;
/** Fewer draws in a chain say nothing: halves of a chain need some autocorrelations each. */
export const kFewestDraws = 8;

/** The figures of one coefficient. */
export type Summary = ChainSummary;

/** The first one that applies, in this order. */
export type Verdict =
  /** Estimating equations, whatever the figures are. */
  | 'not_fit_for_inference'
  /** The R-hat of a coefficient is above the threshold. */
  | 'not_converged'
  /** Too few draws, or a coefficient without figures, or none. */
  | 'cannot_be_told'
  /** An effective sample size is below the threshold. */
  | 'too_few_draws'
  /** All pass, but there is one chain only. */
  | 'no_sign_against'
  /** All pass in several chains. */
  | 'converged';

export interface GroupDiagnostics {
  verdict: Verdict;
  /** With the chains that are judged. A chain that repeats the draws of another is not among them. */
  group: ChainGroup;
  /** Draws of each chain that are judged: those of the shortest chain. */
  draws: number;
  /** True when chains were cut to the shortest. */
  cut: boolean;
  /** Chains that were left out, each behind the judged one whose draws it repeats. */
  repeated: [number, number][];
  /** One per coefficient; empty when there are too few draws. */
  summaries: Summary[];
}

/** The draws of a column in every chain of the group, all of one length. */
export function columnDraws(report: Report, group: ChainGroup, column: number, draws: number): Float64Array[] {
  return group.chains.map((chain) => report.chains[chain].draws[column].subarray(0, draws));
}

/** Judges a group. `onColumn` is called after each coefficient. */
export async function diagnose(
  report: Report, all: ChainGroup, onColumn: () => void | Promise<void>,
): Promise<GroupDiagnostics> {
  const repeated = repeatedChains(report, all);
  const group = { ...all, chains: all.chains.filter((chain) => repeated.every(([, later]) => later !== chain)) };
  const lengths = group.chains.map((chain) => report.chains[chain].steps.length);
  const draws = Math.min(...lengths);
  const summaries: Summary[] = [];
  for (let column = 0; column < group.columns.length && draws >= kFewestDraws; column++) {
    summaries.push(summarise(columnDraws(report, group, column, draws)));
    await onColumn();
  }
  return {
    verdict: verdictOf(summaries, group.chains.length, group.gee),
    group, draws, cut: lengths.some((length) => length !== draws),
    repeated, summaries,
  };
}

/** The verdict that the figures of so many chains give. */
export function verdictOf(summaries: Summary[], chains: number, gee: boolean): Verdict {
  if (gee) return 'not_fit_for_inference';
  if (summaries.some((summary) => summary.rhat > kLargestRhat)) return 'not_converged';
  if (summaries.length === 0 || !summaries.every(isKnown)) return 'cannot_be_told';
  if (!summaries.every(reaches)) return 'too_few_draws';
  return chains > 1 ? 'converged' : 'no_sign_against';
}

/**
 * The same seed, or the same folder twice, gives the same draws, as far as the shorter chain goes.
 * Judged together they would seem to agree and to tell twice as much. The longest one counts, the
 * first of several.
 */
function repeatedChains(report: Report, group: ChainGroup): [number, number][] {
  const length = (chain: number) => report.chains[chain].steps.length;
  return group.chains.flatMap((chain): [number, number][] => {
    const counting = group.chains.filter((other) => other === chain || sameDraws(report.chains[other], report.chains[chain]))
      .reduce((longest, other) => (length(other) > length(longest) ? other : longest));
    return counting === chain ? [] : [[counting, chain]];
  });
}

function sameDraws(one: ChainFile, other: ChainFile): boolean {
  const common = Math.min(one.steps.length, other.steps.length);
  return common > 0 && one.draws.length > 0 && one.draws.every((draws, j) =>
    draws.subarray(0, common).every((draw, i) => draw === other.draws[j][i] || (Number.isNaN(draw) && Number.isNaN(other.draws[j][i]))));
}

/** The folder of a chain, which is what a reader knows it by. */
export function chainName(report: Report, chain: number): string {
  const { origin } = report.chains[chain];
  const folder = origin.path.split('/').slice(0, -1).join('/');
  return shortPath([origin.folderName, folder].filter(Boolean).join('/') || origin.path, 120);
}

/** Whether a coefficient reaches the thresholds. A constant column has no R-hat and does not. */
export function reaches(summary: Summary): boolean {
  return summary.rhat <= kLargestRhat && summary.essBulk >= kSmallestEss && summary.essTail >= kSmallestEss;
}

export function isKnown(summary: Summary): boolean {
  return ![summary.rhat, summary.essBulk, summary.essTail].some(Number.isNaN);
}
