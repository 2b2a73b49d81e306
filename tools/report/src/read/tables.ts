// Readers of the small tables: coefficients, summary, hospitals, C-statistics.
import { isRecordCount, kMostHospitals, kMostRecords, numberCell, plainNumber } from '../model';
import type { CStatisticFile, CoefficientFile, FileBytes, HospitalFile, HospitalRow, Origin, SummaryFile } from '../model';
import { csvTable, kMostCells, TableError } from './csv';
import { kBlockNames } from './identify';

export async function readCoefficients(blob: FileBytes, origin: Origin): Promise<CoefficientFile> {
  const rows = (await csvTable(blob, kMostCells)).slice(1);
  const column = (index: number) => rows.map((row) => numberCell(row[index]));
  return {
    origin,
    xNames: rows.map((row) => row[0]),
    zNames: rows.map((row) => row[1]),
    blocks: kBlockNames.map((name, b) => ({
      name, estimate: column(6 + 3 * b), mse: column(7 + 3 * b), ese: column(8 + 3 * b),
    })),
  };
}

export async function readSummary(blob: FileBytes, origin: Origin): Promise<SummaryFile> {
  const rows = (await csvTable(blob, kMostCells)).slice(1);
  return {
    origin,
    rows: rows.map(([variable, mean, variance, acceptance]) => ({
      variable, mean: numberCell(mean), variance: numberCell(variance), acceptance: numberCell(acceptance),
    })),
  };
}

export async function readHospitals(blob: FileBytes, origin: Origin): Promise<HospitalFile> {
  const rows = (await csvTable(blob, kMostHospitals)).slice(1);
  const hospitals = rows.map(hospitalRow);
  const records = hospitals.reduce((sum, row) => sum + (isRecordCount(row.records) ? row.records : 0), 0);
  if (!isRecordCount(records)) {
    throw new TableError(`its hospitals have ${records.toLocaleString('en')} records together, and a run has at most ${kMostRecords.toLocaleString('en')}`);
  }
  return { origin, derived: false, rows: hospitals };
}

function hospitalRow(row: string[]): HospitalRow {
  const [id, records, complete, completeP0, ...means] = row;
  return {
    id, records: plainNumber(records), complete: plainNumber(complete), completeP0: plainNumber(completeP0), missingP: NaN,
    means: means.map(numberCell),
  };
}

export async function readCStatistics(blob: FileBytes, origin: Origin): Promise<CStatisticFile> {
  const rows = (await csvTable(blob, kMostCells)).slice(1);
  return { origin, rows: rows.map(([estimate, value]) => ({ estimate, value: numberCell(value) })) };
}
