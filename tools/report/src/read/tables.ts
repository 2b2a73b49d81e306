// Readers of the small tables: coefficients, summary, hospitals, C-statistics.
import { numberCell } from '../model';
import type { CStatisticFile, CoefficientFile, HospitalFile, HospitalRow, Origin, SummaryFile } from '../model';
import { csvTable } from './csv';
import { kBlockNames } from './identify';

export async function readCoefficients(blob: Blob, origin: Origin): Promise<CoefficientFile> {
  const rows = (await csvTable(blob)).slice(1);
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

export async function readSummary(blob: Blob, origin: Origin): Promise<SummaryFile> {
  const rows = (await csvTable(blob)).slice(1);
  return {
    origin,
    rows: rows.map(([variable, mean, variance, acceptance]) => ({
      variable, mean: numberCell(mean), variance: numberCell(variance), acceptance: numberCell(acceptance),
    })),
  };
}

export async function readHospitals(blob: Blob, origin: Origin): Promise<HospitalFile> {
  const rows = (await csvTable(blob)).slice(1);
  return { origin, derived: false, rows: rows.map(hospitalRow) };
}

function hospitalRow(row: string[]): HospitalRow {
  const [id, records, complete, completeP0, ...means] = row;
  return {
    id, records: Number(records), complete: Number(complete), completeP0: Number(completeP0), missingP: NaN,
    means: means.map(numberCell),
  };
}

export async function readCStatistics(blob: Blob, origin: Origin): Promise<CStatisticFile> {
  const rows = (await csvTable(blob)).slice(1);
  return { origin, rows: rows.map(([estimate, value]) => ({ estimate, value: numberCell(value) })) };
}
