// What the page knows of the files that it was given. Everything here can be sent from the worker
// that reads to the page that draws.
//
// Numbers of small tables are kept as the text of the file beside their value, so that the page can
// show them to the last digit as written.

/** A file as a door hands it over. `path` is relative to its folder and has slashes. */
export interface SourceFile {
  folder: number;
  folderName: string;
  path: string;
  /** Bytes of a small file that the page holds: as a Blob each would cost messages to the browser. */
  content: Blob | Uint8Array<ArrayBuffer>;
}

/** What is read of a file, whichever way it came: the part of a Blob that the readers use. */
export interface FileBytes {
  readonly size: number;
  slice(start: number, end: number): { arrayBuffer(): Promise<ArrayBuffer> };
}

export function contentOf(content: SourceFile['content']): FileBytes {
  if (content instanceof Blob) return content;
  return {
    size: content.length,
    slice: (start, end) => ({ arrayBuffer: () => Promise.resolve(content.slice(start, end).buffer) }),
  };
}

export type FileKind =
  | 'coefficients' | 'chain' | 'summary' | 'individual' | 'hospitals' | 'cStatistics'
  | 'log' | 'definition' | 'runRecord' | 'description' | 'unused';

export interface FileEntry {
  folder: number;
  folderName: string;
  path: string;
  bytes: number;
  kind: FileKind;
  /** Why the file is not used, or what was odd in it; empty otherwise. */
  note: string;
}

/** Where a table came from. */
export interface Origin {
  folder: number;
  folderName: string;
  path: string;
}

export interface NumberCell {
  text: string;
  /** NaN for an empty cell and for text that is no number. */
  value: number;
}

/** One of the five fits: a cell per variable. */
export interface CoefficientBlock {
  name: string;
  estimate: NumberCell[];
  mse: NumberCell[];
  ese: NumberCell[];
}

export interface CoefficientFile {
  origin: Origin;
  xNames: string[];
  zNames: string[];
  blocks: CoefficientBlock[];
}

export interface ChainFile {
  origin: Origin;
  /** Headers of the columns without `Step`. */
  columns: string[];
  steps: Float64Array;
  /** One array per column, a number per kept draw. */
  draws: Float64Array[];
}

export interface SummaryRow {
  variable: string;
  mean: NumberCell;
  variance: NumberCell;
  acceptance: NumberCell;
}

export interface SummaryFile {
  origin: Origin;
  rows: SummaryRow[];
}

/** The nine columns that individual and hospital predictions share, in the order of the files. */
export const kPredictionColumns = [
  'Y', 'E[Y|Z]', 'E[Y|X]', 'E[Y|P=0]', 'E[Y|X,P=0]', 'E[Y|X,P=0]-MCMC', 'P', 'E[P|X]', 'E[P|YPXZ]',
] as const;
export type PredictionColumn = (typeof kPredictionColumns)[number];

/** The program counts records in 32 bits with a sign. */
export const kMostRecords = 2 ** 31 - 1;

export interface HospitalRow {
  id: string;
  records: number;
  /** Complete records; NaN when the row was made from individual predictions. */
  complete: number;
  completeP0: number;
  /** Records without P; NaN where no individual predictions tell. */
  missingP: number;
  /** Means over the hospital's records, in the order of kPredictionColumns. */
  means: NumberCell[];
}

export interface HospitalFile {
  origin: Origin;
  /** True when the rows were summed up here from individual predictions. */
  derived: boolean;
  rows: HospitalRow[];
}

/** A column of expectations and the column that it is an expectation of. */
export interface CalibrationColumn {
  expected: PredictionColumn;
  observed: PredictionColumn;
}

export interface CalibrationBin {
  count: number;
  meanPredicted: number;
  observedRate: number;
  lower: number;
  upper: number;
}

export interface Calibration extends CalibrationColumn {
  records: number;
  meanPredicted: number;
  meanObserved: number;
  bins: CalibrationBin[];
  /** From the individual predictions; NaN when there is no pair to compare. */
  cStatistic: number;
}

export interface IndividualDigest {
  origin: Origin;
  records: number;
  missingP: number;
  /** Records with Y = 0 and a known P. */
  withoutOutcomeKnownP: number;
  calibrations: Calibration[];
  hospitals: HospitalRow[];
}

export interface CStatisticFile {
  origin: Origin;
  rows: { estimate: string; value: NumberCell }[];
}

/** The stages of column elimination; the last one is the removal of what a coefficient file does not have. */
export type RemovalStage = 'zeroZ' | 'zeroX' | 'dependentZ' | 'dependentX' | 'notInCoefficients';

export interface RemovedVariable {
  z: string;
  x: string;
  stage: RemovalStage;
}

export interface LogDigest {
  origin: Origin;
  /** True for the log of an Analysis. */
  analysis: boolean;
  records: number;
  /** After the last removal, with the intercept. */
  variables: number;
  hospitals: number;
  /** Complete records as read and after the last removal of variables. */
  completeFirst: number;
  completeLast: number;
  removed: RemovedVariable[];
  /** Records with Y = 0 and P = 1. */
  contradictions: number;
  /** Fits that reached their largest number of iterations. */
  unfinishedFits: number;
}

/** What `hovar --check --data` says of one data file. */
export interface DataDescription {
  origin: Origin;
  records: number;
  missingP: number;
  /** Share of records in which X is missing, for each variable that column elimination leaves. */
  missingX: number[];
  /** What the check warned of, in its order, without earlier outputs that a next run would overwrite. */
  warnings: string[];
}

export interface DefinitionDigest {
  origin: Origin;
  root: string;
  /** Element name and text, in the order of the file. */
  entries: [string, string][];
  /** True when there are more entries than are kept. */
  cut: boolean;
}

export interface RunRecord {
  origin: Origin;
  /** NaN when the record does not say. */
  exitStatus: number;
  error: string;
  warnings: { text: string; fit: string; count: number }[];
  /** Paths of the definitions that ran, as recorded. */
  definitions: string[];
  entries: [string, string][];
}

export interface Report {
  files: FileEntry[];
  coefficients: CoefficientFile[];
  chains: ChainFile[];
  summaries: SummaryFile[];
  hospitals: HospitalFile[];
  individuals: IndividualDigest[];
  cStatistics: CStatisticFile[];
  logs: LogDigest[];
  definitions: DefinitionDigest[];
  runRecords: RunRecord[];
  descriptions: DataDescription[];
}

export function emptyReport(): Report {
  return {
    files: [], coefficients: [], chains: [], summaries: [], hospitals: [], individuals: [],
    cStatistics: [], logs: [], definitions: [], runRecords: [], descriptions: [],
  };
}

/** Whether a number can be one of records: whole, and not more than the program can count. */
export const isRecordCount = (value: number): boolean => Number.isInteger(value) && value >= 0 && value <= kMostRecords;

/** More hospitals than this are not judged: no study has them, and judging them would take minutes. */
export const kMostHospitals = 50_000;

/** A decimal number; NaN for other text, for an empty one, and for numbers to another base. */
export function plainNumber(text: string): number {
  const plain = text.trim();
  const second = plain.charCodeAt(1) | 32;
  return plain === '' || second === 120 || second === 98 || second === 111 ? NaN : Number(plain);
}

/** The text of a cell and its number, as the program writes numbers. */
export function numberCell(text: string): NumberCell {
  const plain = text.trim();
  if (plain === 'inf') return { text, value: Infinity };
  if (plain === '-inf') return { text, value: -Infinity };
  return { text, value: plainNumber(plain) };
}

/** A path of at most so many characters; the middle of a longer one is left out. */
export const shortPath = (text: string, length = 300): string =>
  text.length <= length ? text : `${text.slice(0, length / 2)}…${text.slice(-length / 2)}`;

/** "folder/path" of a file for a reader. */
export function originText(origin: Origin): string {
  return shortPath(origin.folderName ? `${origin.folderName}/${origin.path}` : origin.path);
}

/** The columns of expectations with what was observed of them. */
export const kExpectations: readonly (CalibrationColumn & { title: string })[] = [
  { expected: 'E[Y|X,P=0]-MCMC', observed: 'E[Y|P=0]', title: 'outcomes that arose in hospital' },
  { expected: 'E[Y|X,P=0]', observed: 'E[Y|P=0]', title: 'outcomes that arose in hospital' },
  { expected: 'E[Y|X]', observed: 'Y', title: 'outcomes' },
  { expected: 'E[Y|Z]', observed: 'Y', title: 'outcomes' },
  { expected: 'E[P|X]', observed: 'E[P|YPXZ]', title: 'conditions present on admission' },
];
