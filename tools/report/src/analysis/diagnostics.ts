// Judges chains: one summary per coefficient, over all chains of a group.
//
// Thresholds: A. Vehtari, A. Gelman, D. Simpson, B. Carpenter, P.-C. Buerkner, Rank-normalization,
// folding, and localization: An improved R-hat for assessing convergence of MCMC, Bayesian Analysis
// 16 (2021), 667-718.
import { summarise } from '../statistics/convergence';
import type { ChainFile, Report } from '../model';
import type { ChainGroup } from './chain_groups';

export const kLargestRhat = 1.01;
export const kSmallestEss = 400;
/** Fewer draws in a chain say nothing: halves of a chain need some autocorrelations each. */
export const kFewestDraws = 8;

export interface Summary {
  mean: number;
  sd: number;
  q025: number;
  median: number;
  q975: number;
  rhat: number;
  essBulk: number;
  essTail: number;
  mcseMean: number;
}

export interface GroupDiagnostics {
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
    group, draws, cut: lengths.some((length) => length !== draws),
    repeated, summaries,
  };
}

/**
 * The same seed, or the same folder twice, gives the same draws. Judged together they would seem to
 * agree and to tell twice as much.
 */
function repeatedChains(report: Report, group: ChainGroup): [number, number][] {
  const pairs: [number, number][] = [];
  const kept: number[] = [];
  for (const chain of group.chains) {
    const first = kept.find((earlier) => sameDraws(report.chains[earlier], report.chains[chain]));
    if (first === undefined) kept.push(chain);
    else pairs.push([first, chain]);
  }
  return pairs;
}

function sameDraws(one: ChainFile, other: ChainFile): boolean {
  return one.steps.length > 0 && one.draws.length > 0 && one.steps.length === other.steps.length &&
    one.draws.every((draws, j) => draws.every((draw, i) => Object.is(draw, other.draws[j][i])));
}

/** The folder of a chain, which is what a reader knows it by. */
export function chainName(report: Report, chain: number): string {
  const { origin } = report.chains[chain];
  const folder = origin.path.split('/').slice(0, -1).join('/');
  return [origin.folderName, folder].filter(Boolean).join('/') || origin.path;
}

/** Whether a coefficient reaches the thresholds. A constant column has no R-hat and does not. */
export function reaches(summary: Summary): boolean {
  return summary.rhat <= kLargestRhat && summary.essBulk >= kSmallestEss && summary.essTail >= kSmallestEss;
}
