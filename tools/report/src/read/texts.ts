// Readers of logs, definitions and run records.
import { kMostRecords } from '../model';
import { TableError } from './csv';
import { checkWarning, describedRecords, linesOf } from './lines';
import { xmlAttribute, xmlParts } from './xml';
import type { DataDescription, DefinitionDigest, FileBytes, LogDigest, Origin, RemovalStage, RunRecord } from '../model';

/** Files of text are small; a larger one is cut, so that nothing can fill the memory. */
const kLargestText = 16 << 20;
const kLargestEntry = 500;
/** More than a definition or a record of a run holds, its lists of runs apart. */
const kMostEntries = 2000;
/** The elements of a definition go four deep. */
const kDeepest = 16;

async function textOf(blob: FileBytes): Promise<string> {
  const bytes = await blob.slice(0, kLargestText).arrayBuffer();
  try {
    return new TextDecoder('utf-8', { fatal: true }).decode(bytes);
  } catch {
    return new TextDecoder('windows-1252').decode(bytes);
  }
}

/** Errors: TableError when no file can hold so many. */
function requireCount(name: string, value: number): number {
  if (value > kMostRecords) throw new TableError(`“${name}” is ${value}, and a run has at most ${kMostRecords.toLocaleString('en')} records`);
  return value;
}

const kStageLines = new Map<string, RemovalStage>([
  ['Eliminating Z zero columns', 'zeroZ'], ['Eliminating X zero columns', 'zeroX'],
  ['Eliminating dependent Z columns', 'dependentZ'], ['Eliminating dependent X columns P = 0', 'dependentX'],
]);
/** `Z name, X name`; a name with a comma is in quotes. */
const kRemovedLine = /^("(?:[^"]|"")*"|[^,]*), (.*)$/;

/**
 * In a batch the log of an earlier run also receives the lines of the later ones, so only the lines up
 * to a second count of records belong to the run.
 */
export async function readLog(blob: FileBytes, origin: Origin): Promise<LogDigest> {
  const digest: LogDigest = {
    origin, analysis: false, records: NaN, variables: NaN, hospitals: NaN, completeFirst: NaN,
    completeLast: NaN, removed: [], contradictions: 0, unfinishedFits: 0,
  };
  let removing = false;
  let stage: RemovalStage = 'notInCoefficients';
  for (const line of linesOf(await textOf(blob))) {
    const count = /^(Number of [^:]+): (-?\d+)$/.exec(line);
    if (count?.[1] === 'Number of records' && !Number.isNaN(digest.records)) break;
    if (count) {
      removing = false;
      addCount(digest, count[1], Number(count[2]));
    } else if (line === 'Eliminating columns:') {
      removing = true;
    } else if (line.startsWith('Warning: Y == 0 && P == 1')) {
      digest.contradictions++;
    } else if (line === 'Warning: Maximum number of iterations reached') {
      digest.unfinishedFits++;
    } else if (kStageLines.has(line)) {
      removing = false;
      digest.analysis = true;
      stage = kStageLines.get(line) ?? stage;
    } else if (removing && line !== '') {
      const [, z, x] = kRemovedLine.exec(line) ?? [line, line, line];
      digest.removed.push({ z, x, stage });
    }
  }
  return digest;
}

function addCount(digest: LogDigest, name: string, value: number): void {
  requireCount(name, value);
  if (name === 'Number of records') digest.records = value;
  if (name === 'Number of variables') digest.variables = value;
  if (name === 'Number of hospitals') digest.hospitals = value;
  if (name === 'Number of non-missing records') {
    if (Number.isNaN(digest.completeFirst)) digest.completeFirst = value;
    digest.completeLast = value;
  }
}

/** Saved after a run, the output of the check names the run's own outputs, which a next run would overwrite. */
const kOverwritten = ' would be overwritten';

/**
 * The first description in what `hovar --check --data` prints. Shares are those of the printed percentages,
 * which have two decimals. A description without variables has none.
 */
export async function readDescription(blob: FileBytes, origin: Origin): Promise<DataDescription> {
  const missing = new Map<string, number>();
  const digest: DataDescription = { origin, records: NaN, missingP: NaN, missingX: [], warnings: [] };
  for (const line of linesOf(await textOf(blob))) {
    const warning = Number.isNaN(digest.records) ? checkWarning(line) : '';
    if (warning !== '' && !warning.includes(kOverwritten) && digest.warnings.length < kMostEntries) {
      digest.warnings.push(warning.slice(0, kLargestEntry));
    }
    const records = describedRecords(line);
    if (!Number.isNaN(records) && !Number.isNaN(digest.records)) break;
    if (!Number.isNaN(records)) digest.records = requireCount('Number of records', records);
    if (Number.isNaN(digest.records)) continue;
    const p = /^ {2}P = 1: .*, missing: (\d+) \(/.exec(line);
    if (p) digest.missingP = requireCount('Missing P', Number(p[1]));
    const variable = /^ {4}(".*"): [^;"]*; [^;"]*; (\d+\.\d+) %$/.exec(line);
    if (variable) missing.set(variable[1], Number(variable[2]) / 100);
    const removed = /^ {4}(".*"): [ZX] [^"]*$/.exec(line);
    if (removed) missing.delete(removed[1]);
  }
  digest.missingX = [...missing.values()];
  return digest;
}

export async function readDefinition(blob: FileBytes, origin: Origin): Promise<DefinitionDigest> {
  const entries: [string, string][] = [];
  const groups: string[] = [];
  let root = '';
  let depth = 0;
  let content = '';
  const pathOf = (names: string[]) => names.slice(1).join(' / ');
  const add = (path: string, text: string) => {
    if (text !== '' && entries.length < kMostEntries) entries.push([path, text.slice(0, kLargestEntry)]);
  };
  for (const part of xmlParts(await textOf(blob))) {
    if (part.kind === 'text') {
      content += part.text;
      continue;
    }
    // Text belongs to the innermost element that is open.
    if (depth > 0 && depth <= kDeepest) add(pathOf(groups), content.trim());
    content = '';
    if (part.kind === 'close') {
      if (depth > 0 && depth-- <= kDeepest) groups.pop();
      continue;
    }
    const name = part.name.slice(0, kLargestEntry);
    root ||= name;
    if (depth < kDeepest) add(pathOf([...groups, name]), xmlAttribute(part.attributes, 'xsi:type') ?? '');
    if (part.kind === 'open' && ++depth <= kDeepest) groups.push(name);
  }
  return { origin, root, entries, cut: entries.length === kMostEntries };
}

/** What `hovar --json` writes. All plain values are shown, whatever their names. */
export async function readRunRecord(blob: FileBytes, origin: Origin): Promise<RunRecord> {
  const record = JSON.parse(await textOf(blob)) as Record<string, unknown>;
  const entries: [string, string][] = [];
  const walk = (path: string, value: unknown, depth: number): void => {
    if (entries.length === kMostEntries || depth > kDeepest) return;
    if (value !== null && typeof value === 'object') {
      for (const key of Object.keys(value)) {
        if (entries.length === kMostEntries) return;
        const inner = (value as Record<string, unknown>)[key];
        walk(path ? `${path} / ${key.slice(0, kLargestEntry)}` : key.slice(0, kLargestEntry), inner, depth + 1);
      }
    } else {
      entries.push([path, String(value).slice(0, kLargestEntry)]);
    }
  };
  walk('', record, 0);
  return {
    origin, entries, exitStatus: typeof record.exitStatus === 'number' ? record.exitStatus : NaN,
    error: typeof record.error === 'string' ? record.error.slice(0, kLargestEntry) : '', warnings: warningsOf(record.runs),
    definitions: definitionsOf(record.runs),
  };
}

const listOf = (value: unknown) => (Array.isArray(value) ? value : []) as Record<string, unknown>[];

/** The paths of the definitions that ran; none when there are too many to be kept, for a part would mislead. */
function definitionsOf(runs: unknown): string[] {
  const paths = listOf(runs).flatMap((run) => {
    const { path } = (run?.definition ?? {}) as Record<string, unknown>;
    return typeof path === 'string' && path.length <= kLargestEntry ? [path] : [];
  });
  return paths.length < kMostEntries ? paths : [];
}

function warningsOf(runs: unknown): RunRecord['warnings'] {
  return listOf(runs).flatMap((run) => listOf(run?.warnings)).slice(0, kMostEntries).map((warning) => ({
    text: String(warning?.text ?? '').slice(0, kLargestEntry), fit: String(warning?.fit ?? '').slice(0, kLargestEntry),
    count: Number(warning?.count ?? 1),
  }));
}
