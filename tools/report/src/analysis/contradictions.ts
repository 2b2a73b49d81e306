// Records with Y = 0 and P = 1: what was present on admission is part of the outcome, so the program takes P
// as 0. A slip does that to a few records in a thousand; an indicator that means something else does it to
// many. The bound is that of `hovar --check`, see docs/checking.md.
import type { LogDigest, Report } from '../model';
import { count, percent } from '../view/format';

/** From this share on. */
export const kManyContradictions = 0.01;

export interface Contradictions {
  isMany: boolean;
  /** A sentence; empty when there are none. */
  text: string;
  advice: string;
}

/**
 * The share is of the records with Y = 0 and a known P where individual predictions count these, else of all
 * records, which is smaller.
 */
export function contradictionsOf(report: Report, log: LogDigest): Contradictions {
  const individual = report.individuals.find((digest) => digest.records === log.records);
  const share = log.contradictions / (individual?.withoutOutcomeKnownP ?? log.records);
  const which = individual ? 'records with Y = 0 and known P' : 'records';
  const records = log.contradictions === 1 ? '1 record' : `${count(log.contradictions)} records`;
  return {
    isMany: log.contradictions > 0 && share >= kManyContradictions,
    text: log.contradictions > 0 ? `In ${records} P is 1 (present on admission) although Y is 0; P was taken as 0.` : '',
    advice: `That is ${percent(share, 1)} of the ${which}, and from ${percent(kManyContradictions)} on a slip is not likely: see whether ` +
      '1 means “present on admission” in the indicators.',
  };
}
