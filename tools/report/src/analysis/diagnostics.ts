// Judges chains: one summary per coefficient, over all chains of a group.
//
// Thresholds: A. Vehtari, A. Gelman, D. Simpson, B. Carpenter, P.-C. Buerkner, Rank-normalization,
// folding, and localization: An improved R-hat for assessing convergence of MCMC, Bayesian Analysis
// 16 (2021), 667-718.
import { summarise } from '../statistics/convergence';
import type { Report } from '../model';
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
  group: ChainGroup;
  /** Draws of each chain that are judged: those of the shortest chain. */
  draws: number;
  /** True when chains were cut to the shortest. */
  cut: boolean;
  /** Pairs of chains (positions in the group) with the same draws. */
  identical: [number, number][];
  /** One per coefficient; empty when there are too few draws. */
  summaries: Summary[];
}

/** The draws of a column in every chain of the group, all of one length. */
export function columnDraws(report: Report, group: ChainGroup, column: number, draws: number): Float64Array[] {
  return group.chains.map((chain) => report.chains[chain].draws[column].subarray(0, draws));
}

export async function diagnose(
  report: Report, group: ChainGroup, onColumn: () => void | Promise<void>,
): Promise<GroupDiagnostics> {
  const lengths = group.chains.map((chain) => report.chains[chain].steps.length);
  const draws = Math.min(...lengths);
  const summaries: Summary[] = [];
  for (let column = 0; column < group.columns.length && draws >= kFewestDraws; column++) {
    summaries.push(summarise(columnDraws(report, group, column, draws)));
    await onColumn();
  }
  return {
    group, draws, cut: lengths.some((length) => length !== draws),
    identical: identicalPairs(report, group), summaries,
  };
}

function identicalPairs(report: Report, group: ChainGroup): [number, number][] {
  const pairs: [number, number][] = [];
  for (let a = 0; a < group.chains.length; a++) {
    for (let b = a + 1; b < group.chains.length; b++) {
      const [first, second] = [report.chains[group.chains[a]], report.chains[group.chains[b]]];
      const same = first.draws.length > 0 && first.steps.length > 0 && first.draws.every((draws, j) =>
        draws.length === second.draws[j].length && draws.every((draw, i) => draw === second.draws[j][i]));
      if (same) pairs.push([a, b]);
    }
  }
  return pairs;
}

/** Whether a coefficient reaches the thresholds. A constant column has no R-hat and does not. */
export function reaches(summary: Summary): boolean {
  return summary.rhat <= kLargestRhat && summary.essBulk >= kSmallestEss && summary.essTail >= kSmallestEss;
}
