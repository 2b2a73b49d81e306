// Why variables were removed from the model, as far as the log says: the stage of column elimination.
import type { LogDigest, RemovalStage, RemovedVariable } from '../model';
import { kLongestName, list, plural, shorten } from '../view/format';

/** What the stage looks for. It does not say which of several cases it met. */
export const kRemovalReason: Record<RemovalStage, string> = {
  zeroZ: 'Z is 0 in every record',
  zeroX: 'X is 0 in every complete record',
  dependentZ: 'Z follows from the other variables in all records: it is always 1, equals another Z, or is a linear ' +
    'combination of several',
  dependentX: 'X follows from the other variables in the complete records with P = 0: it is always 0 or always 1 there, ' +
    'equals another X, or is a linear combination of several',
  notInCoefficients: 'not in the coefficient file',
};

const kStages = Object.keys(kRemovalReason) as RemovalStage[];
const kByZ: readonly RemovalStage[] = ['zeroZ', 'dependentZ'];

/** How many variables were removed for their Z. */
export const removedForZ = (log: LogDigest): number => log.removed.filter(({ stage }) => kByZ.includes(stage)).length;

/** One sentence for each stage that removed something. */
export function removalTexts(log: LogDigest): string[] {
  return kStages.flatMap((stage) => {
    const removed = log.removed.filter((variable) => variable.stage === stage);
    if (removed.length === 0) return [];
    const head = `${plural(removed.length, 'variable was', 'variables were')} removed (${list(removed.map(nameOf))}): ${kRemovalReason[stage]}.`;
    return [kByZ.includes(stage)
      ? `${head} X goes with its Z, although it may be a risk factor itself; see docs/choosing-z.md.`
      : head];
  });
}

function nameOf({ z, x, stage }: RemovedVariable): string {
  const xName = shorten(x, kLongestName);
  return kByZ.includes(stage) ? `${shorten(z, kLongestName)} with ${xName}` : xName;
}
