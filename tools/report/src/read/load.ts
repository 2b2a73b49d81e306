// Reads all files of a report. Runs in a worker; a browser that refuses workers runs it in the page.
import { emptyReport, kMostRecords, type FileEntry, type HospitalFile, type IndividualDigest, type Origin, type Report, type SourceFile } from '../model';
import { TableError } from './csv';
import { identify } from './identify';
import { readChain } from './chain_file';
import { readIndividual } from './individual_predictions';
import { readCStatistics, readCoefficients, readHospitals, readSummary } from './tables';
import { readDefinition, readDescription, readLog, readRunRecord } from './texts';

export type OnBytes = (count: number) => void | Promise<void>;

export async function loadReport(sources: SourceFile[], onBytes: OnBytes): Promise<Report> {
  const report = emptyReport();
  for (const source of inOrder(sources)) {
    const { kind, note } = await identify(source.blob);
    const entry: FileEntry = {
      folder: source.folder, folderName: source.folderName, path: source.path,
      bytes: source.blob.size, kind, note,
    };
    report.files.push(entry);
    let counted = 0;
    try {
      await readInto(report, entry, source.blob, (count) => {
        counted += count;
        return onBytes(count);
      });
    } catch (error) {
      entry.kind = 'unused';
      entry.note = error instanceof TableError ? error.message : `could not be read: ${String(error)}`;
    }
    await onBytes(source.blob.size - counted);
  }
  return report;
}

/** The files of a folder come before those of the folders in it: what stands on top is shown first. */
function inOrder(sources: SourceFile[]): SourceFile[] {
  const natural = new Intl.Collator('en', { numeric: true });
  const depth = (path: string) => path.split('/').length;
  return [...sources].sort((a, b) =>
    a.folder - b.folder || depth(a.path) - depth(b.path) || natural.compare(a.path, b.path));
}

async function readInto(report: Report, entry: FileEntry, blob: Blob, onBytes: OnBytes): Promise<void> {
  const origin: Origin = { folder: entry.folder, folderName: entry.folderName, path: entry.path };
  switch (entry.kind) {
    case 'coefficients': report.coefficients.push(await readCoefficients(blob, origin)); break;
    case 'chain': report.chains.push(await readChain(blob, origin, onBytes)); break;
    case 'summary': report.summaries.push(await readSummary(blob, origin)); break;
    case 'individual': report.individuals.push(await readIndividual(blob, origin, onBytes)); break;
    case 'hospitals': {
      const file = await readHospitals(blob, origin);
      report.hospitals.push(file);
      if (file.rows.some((row) => row.records > kMostRecords)) {
        entry.note = 'holds a number of records that no run writes; hospitals with so many are not judged';
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
