// One hospital that records P far less often than the others: its observed counts are imputed for the most part.
import type { Report } from '../model';
import { count, kLongestName, percent, shorten } from '../view/format';

/** A hospital is far above the others with more than this share, and more than so many times the share of all. */
export const kLargeShare = 0.2;
export const kFarAbove = 2;
/** In fewer records than this a large share is easily one of chance. */
export const kFewestRecords = 20;

/** A sentence on the hospital in which P is missing most often, if it is far above the others. */
export function unevenMissingP(report: Report): string[] {
  const individual = report.individuals[0];
  if (!individual) return [];
  const overall = individual.missingP / individual.records;
  const far = individual.hospitals.filter(({ missingP, records }) => records >= kFewestRecords &&
    missingP / records > kLargeShare && missingP / records > kFarAbove * overall);
  if (far.length === 0) return [];
  const most = far.reduce((a, b) => (b.missingP / b.records > a.missingP / a.records ? b : a));
  return [`P is missing most often in ${shorten(most.id, kLongestName)}: ${count(most.missingP)} of ${count(most.records)} records ` +
    `(${percent(most.missingP / most.records)}).`];
}
