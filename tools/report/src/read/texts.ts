// Readers of logs, definitions and run records.
import type { DataDescription, DefinitionDigest, LogDigest, Origin, RemovalStage, RunRecord } from '../model';

/** Files of text are small; a larger one is cut, so that nothing can fill the memory. */
const kLargestText = 16 << 20;
const kLargestEntry = 500;

async function textOf(blob: Blob): Promise<string> {
  const bytes = await blob.slice(0, kLargestText).arrayBuffer();
  try {
    return new TextDecoder('utf-8', { fatal: true }).decode(bytes);
  } catch {
    return new TextDecoder('windows-1252').decode(bytes);
  }
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
export async function readLog(blob: Blob, origin: Origin): Promise<LogDigest> {
  const digest: LogDigest = {
    origin, analysis: false, records: NaN, variables: NaN, hospitals: NaN, completeFirst: NaN,
    completeLast: NaN, removed: [], contradictions: 0, unfinishedFits: 0,
  };
  let removing = false;
  let stage: RemovalStage = 'notInCoefficients';
  for (const line of (await textOf(blob)).split(/\r?\n/)) {
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
  if (name === 'Number of records') digest.records = value;
  if (name === 'Number of variables') digest.variables = value;
  if (name === 'Number of hospitals') digest.hospitals = value;
  if (name === 'Number of non-missing records') {
    if (Number.isNaN(digest.completeFirst)) digest.completeFirst = value;
    digest.completeLast = value;
  }
}

/** Saved after a run, the output of the check names the run's own outputs, which a next run would overwrite. */
const kCheckWarning = /^.+?:\d+:\d+: warning: (?!.* would be overwritten)(.+)$/;

/**
 * The first description in what `hovar --check --data` prints. Shares are those of the printed percentages,
 * which have two decimals. A description without variables has none.
 */
export async function readDescription(blob: Blob, origin: Origin): Promise<DataDescription> {
  const missing = new Map<string, number>();
  const digest: DataDescription = { origin, records: NaN, missingP: NaN, missingX: [], warnings: [] };
  for (const line of (await textOf(blob)).split(/\r?\n/)) {
    const warning = kCheckWarning.exec(line);
    if (warning && Number.isNaN(digest.records)) digest.warnings.push(warning[1].slice(0, kLargestEntry));
    const records = /^".*": (\d+) records?, \d+ hospitals?, /.exec(line);
    if (records && !Number.isNaN(digest.records)) break;
    if (records) digest.records = Number(records[1]);
    if (Number.isNaN(digest.records)) continue;
    const p = /^ {2}P = 1: .*, missing: (\d+) \(/.exec(line);
    if (p) digest.missingP = Number(p[1]);
    const variable = /^ {4}(".*"): [^;"]*; [^;"]*; (\d+\.\d+) %$/.exec(line);
    if (variable) missing.set(variable[1], Number(variable[2]) / 100);
    const removed = /^ {4}(".*"): [ZX] [^"]*$/.exec(line);
    if (removed) missing.delete(removed[1]);
  }
  digest.missingX = [...missing.values()];
  return digest;
}

export async function readDefinition(blob: Blob, origin: Origin): Promise<DefinitionDigest> {
  const text = (await textOf(blob)).replace(/<!-{2}[^]*?-->/g, '').replace(/<\?[^]*?\?>/g, '');
  const root = /<(\w+)/.exec(text)?.[1] ?? '';
  const entries: [string, string][] = [];
  const groups: string[] = [];
  for (const match of text.matchAll(/<(\/?)([\w.:-]+)([^>]*?)(\/?)>([^<]*)/g)) {
    const [, closing, name, attributes, empty, content] = match;
    if (closing) {
      groups.pop();
      continue;
    }
    const path = [...groups.slice(1), name].join(' / ');
    const type = /xsi:type="([^"]*)"/.exec(attributes)?.[1];
    if (type) entries.push([path, type.slice(0, kLargestEntry)]);
    if (!empty) groups.push(name);
    if (content.trim()) entries.push([path, content.trim().slice(0, kLargestEntry)]);
  }
  return { origin, root, entries };
}

/** What `hovar --json` writes. All plain values are shown, whatever their names. */
export async function readRunRecord(blob: Blob, origin: Origin): Promise<RunRecord> {
  const record = JSON.parse(await textOf(blob)) as Record<string, unknown>;
  const entries: [string, string][] = [];
  const walk = (path: string, value: unknown): void => {
    if (value !== null && typeof value === 'object') {
      for (const [key, inner] of Object.entries(value)) walk(path ? `${path} / ${key}` : key, inner);
    } else if (entries.length < 200) {
      entries.push([path, String(value).slice(0, kLargestEntry)]);
    }
  };
  walk('', record);
  return {
    origin, entries, exitStatus: typeof record.exitStatus === 'number' ? record.exitStatus : NaN,
    error: typeof record.error === 'string' ? record.error.slice(0, kLargestEntry) : '', warnings: warningsOf(record.runs),
  };
}

function warningsOf(runs: unknown): RunRecord['warnings'] {
  const listOf = (value: unknown) => (Array.isArray(value) ? value : []) as Record<string, unknown>[];
  return listOf(runs).flatMap((run) => listOf(run?.warnings)).map((warning) => ({
    text: String(warning?.text ?? '').slice(0, kLargestEntry), fit: String(warning?.fit ?? '').slice(0, kLargestEntry),
    count: Number(warning?.count ?? 1),
  }));
}
