// Reads all files of a report. Runs in a worker; a browser that refuses workers runs it in the page.
import { contentOf, emptyReport, isRecordCount, kMostHospitals, type FileBytes, type FileEntry, type FileKind, type HospitalFile, type IndividualDigest, type Origin, type Report, type SourceFile } from '../model';
import { TableError } from './csv';
import { identified } from './identify';
import { readChain } from './chain_file';
import { readIndividual } from './individual_predictions';
import { readCStatistics, readCoefficients, readHospitals, readSummary } from './tables';
import { readDefinition, readDescription, readLog, readRunRecord } from './texts';

export type OnBytes = (count: number) => void | Promise<void>;

/** More files of a kind than this are listed and not read: nobody can look at so many, and they would fill the page. */
export const kMostOfAKind = 200;

export async function loadReport(sources: SourceFile[], onBytes: OnBytes): Promise<Report> {
  const report = emptyReport();
  const read = new Map<FileKind, number>();
  const items = inOrder(sources).map((source) => ({ source, blob: contentOf(source.content) }));
  for await (const [{ source, blob }, { kind, note }] of identified(items)) {
    const entry: FileEntry = {
      folder: source.folder, folderName: source.folderName, path: source.path,
      bytes: blob.size, kind, note,
    };
    report.files.push(entry);
    const before = read.get(kind) ?? 0;
    read.set(kind, before + 1);
    let counted = 0;
    try {
      if (kind !== 'unused' && before >= kMostOfAKind) throw new TableError(`left out: ${kMostOfAKind} files of this kind come before it`);
      await readInto(report, entry, blob, (count) => {
        counted += count;
        return onBytes(count);
      });
    } catch (error) {
      entry.kind = 'unused';
      entry.note = error instanceof TableError ? error.message : `could not be read: ${String(error)}`;
    }
    await onBytes(blob.size - counted);
  }
  return report;
}

/** The files of a folder come before those of the folders in it: what stands on top is shown first. */
function inOrder(sources: SourceFile[]): SourceFile[] {
  const natural = new Intl.Collator('en', { numeric: true });
  const placed = sources.map((source) => ({ source, depth: source.path.split('/').length }));
  return placed.sort((a, b) => a.source.folder - b.source.folder || a.depth - b.depth || natural.compare(a.source.path, b.source.path))
    .map(({ source }) => source);
}

async function readInto(report: Report, entry: FileEntry, blob: FileBytes, onBytes: OnBytes): Promise<void> {
  const origin: Origin = { folder: entry.folder, folderName: entry.folderName, path: entry.path };
  switch (entry.kind) {
    case 'coefficients': report.coefficients.push(await readCoefficients(blob, origin)); break;
    case 'chain': report.chains.push(await readChain(blob, origin, onBytes)); break;
    case 'summary': report.summaries.push(await readSummary(blob, origin)); break;
    case 'individual': {
      const digest = await readIndividual(blob, origin, onBytes);
      report.individuals.push(digest);
      if (digest.hospitals.length === 0 && digest.records > 0) {
        entry.note = `has more than ${kMostHospitals.toLocaleString('en')} hospitals, which are not shown`;
      }
      break;
    }
    case 'hospitals': {
      const file = await readHospitals(blob, origin);
      report.hospitals.push(file);
      if (!file.rows.every((row) => isRecordCount(row.records))) {
        entry.note = 'holds a number of records that no run writes; its hospital is not judged';
      }
      break;
    }
    case 'cStatistics': report.cStatistics.push(await readCStatistics(blob, origin)); break;
    case 'log': report.logs.push(await readLog(blob, origin)); break;
    case 'definition': report.definitions.push(await readDefinition(blob, origin)); break;
    case 'runRecord': report.runRecords.push(await readRunRecord(blob, origin)); break;
    case 'description': report.descriptions.push(await readDescription(blob, origin)); break;
    case 'unused': break;
  }
}

/** The number of records without P of each hospital, where both files have the hospital with the same records. */
function addMissingP(file: HospitalFile, digest: IndividualDigest): void {
  const summed = new Map(digest.hospitals.map((row) => [row.id, row]));
  for (const row of file.rows) {
    const same = summed.get(row.id);
    if (Number.isNaN(row.missingP) && same?.records === row.records) row.missingP = same.missingP;
  }
}

/** What individual predictions say of hospitals: the missing P, and tables of hospitals that can be made from individual predictions where there is no file of them. */
export function deriveHospitals(report: Report): void {
  for (const digest of report.individuals) {
    const beside = report.hospitals.some((file) => file.origin.folder === digest.origin.folder);
    for (const file of report.hospitals) if (file.origin.folder === digest.origin.folder) addMissingP(file, digest);
    if (!beside) report.hospitals.push({ origin: digest.origin, derived: true, rows: digest.hospitals });
  }
}
