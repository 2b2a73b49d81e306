// Which coefficient file was written with a chain.
//
// The fifth block of the file holds the means of the chain's kept draws. Both are written with six
// significant digits, so the means of the draws as written agree with the block but for what rounding
// does: one unit in the sixth digit of the estimate, and half a unit of the largest draw.
import { chainFolderOf, folderOf, meet, placeOf, valueOf } from './definitions';
import { usesGee } from './estimating_equations';
import type { ChainFile, CoefficientFile, DefinitionDigest, Origin, Report } from '../model';
import { originText } from '../model';

export interface ChainCoefficients {
  /** The file that the chain belongs to; undefined when there is none, or none agrees. */
  file?: CoefficientFile;
  /** Why there are no names; empty with a file. */
  note: string;
  /** Whether the chain comes from generalized estimating equations, by any of the files that can tell. */
  gee: boolean;
}

/** One unit in the sixth significant digit of a number. */
const unitOf = (value: number) => (value === 0 ? 0 : 10 ** (Math.floor(Math.log10(Math.abs(value))) - 5));

interface ColumnMean {
  mean: number;
  /** Of the sizes of the draws. */
  largest: number;
}

const meansOfChains = new WeakMap<ChainFile, ColumnMean[]>();

/** Formed once for a chain, for it may be compared with many files. */
function meansOf(chain: ChainFile): ColumnMean[] {
  const known = meansOfChains.get(chain) ?? chain.draws.map((draws) => {
    let [sum, largest] = [0, 0];
    for (const draw of draws) {
      sum += draw;
      largest = Math.max(largest, Math.abs(draw));
    }
    return { mean: sum / draws.length, largest };
  });
  meansOfChains.set(chain, known);
  return known;
}

function agrees(chain: ChainFile, file: CoefficientFile): boolean {
  const estimates = file.blocks[file.blocks.length - 1].estimate;
  return estimates.length === chain.columns.length && meansOf(chain).every(({ mean, largest }, j) => {
    const { value } = estimates[j];
    // A draw that is no finite number leaves no mean, in the file either.
    if (!Number.isFinite(mean) || !Number.isFinite(value)) return Number.isFinite(mean) === Number.isFinite(value);
    return Math.abs(mean - value) <= (unitOf(value) + unitOf(largest) / 2) * (1 + 1e-9);
  });
}

/** The files that can be the chain's: of the folders above it, the nearest first; else the only one of its folder. */
function candidates(origin: Origin, files: CoefficientFile[]): CoefficientFile[] {
  const length = (file: CoefficientFile) => folderOf(file.origin.path).length;
  const same = files.filter((file) => file.origin.folder === origin.folder);
  const above = same.filter((file) => folderOf(origin.path).startsWith(folderOf(file.origin.path)));
  if (above.length > 0) return above.sort((a, b) => length(b) - length(a));
  return same.length === 1 ? same : [];
}

/** Whether the definition has the flag true and names the folder of the chain as its own. */
function definesWithGee(definition: DefinitionDigest, origin: Origin): boolean {
  return valueOf(definition, 'UseGeneralizedEstimatingEquations') === 'true' &&
    meet(chainFolderOf(definition), placeOf({ ...origin, path: folderOf(origin.path) }));
}

export function coefficientsOf(chain: ChainFile, report: Report): ChainCoefficients {
  const defined = report.definitions.some((definition) =>
    definition.origin.folder === chain.origin.folder && definesWithGee(definition, chain.origin));
  const near = candidates(chain.origin, report.coefficients);
  if (near.length === 0) return withoutOwn(report, defined);
  const wide = near.filter((file) => file.xNames.length === chain.columns.length);
  // A chain without draws has no means to compare.
  const file = chain.steps.length === 0 ? near[0] : wide.find((one) => agrees(chain, one)) ?? (wide.length === 0 ? near[0] : undefined);
  if (file) return { file, note: '', gee: defined || usesGee(file) };
  const names = near.length === 1 ? originText(near[0].origin) : `any of ${near.length} coefficient files`;
  return {
    note: `The means of the draws of ${originText(chain.origin)} are not the fifth block of ${names}, ` +
      'as after one of the two was written anew by another run. So the columns get no names.',
    gee: defined || near.some(usesGee),
  };
}

/** Of a chain whose own coefficient file is not there: the only one of all gives the names. */
function withoutOwn(report: Report, defined: boolean): ChainCoefficients {
  const file = report.coefficients.length === 1 ? report.coefficients[0] : undefined;
  const flagged = report.definitions.some(({ entries }) => entries.some(([path, text]) =>
    path.endsWith('UseGeneralizedEstimatingEquations') && text === 'true'));
  return {
    file,
    note: file ? '' : 'There is no coefficient file beside the chain, so its columns have no names.',
    gee: defined || (report.coefficients.length > 0 ? report.coefficients.some(usesGee) : flagged),
  };
}
