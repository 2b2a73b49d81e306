// Reads the individual predictions, which may have millions of lines, and keeps what the page shows:
// calibration by tenths, C-statistics and the sums of each hospital.
import { calibrationByTenths } from '../statistics/calibration';
import { cStatistic } from '../statistics/concordance';
import { kExpectations, kMostHospitals, kPredictionColumns, numberCell, plainNumber } from '../model';
import type { Calibration, CalibrationColumn, FileBytes, HospitalRow, IndividualDigest, Origin, PredictionColumn } from '../model';
import { csvRows, requireWidth } from './csv';

const kColumns = kPredictionColumns.length;
const kP = kPredictionColumns.indexOf('P');

/** The predictions by column, growing together. A missing P is NaN. */
class Predictions {
  size = 0;
  private columns = kPredictionColumns.map(() => new Float64Array(4096));

  add(cells: string[]): void {
    if (this.size === this.columns[0].length) {
      this.columns = this.columns.map((column) => {
        const larger = new Float64Array(2 * column.length);
        larger.set(column);
        return larger;
      });
    }
    for (let j = 0; j < kColumns; j++) {
      this.columns[j][this.size] = plainNumber(cells[2 + j]);
    }
    this.size++;
  }

  column(name: PredictionColumn): Float64Array {
    return this.columns[kPredictionColumns.indexOf(name)].subarray(0, this.size);
  }

  value(column: number, record: number): number {
    return this.columns[column][record];
  }
}

/** Sums of one hospital in the order of the columns; P counts where it is known. */
interface HospitalSums {
  records: number;
  knownP: number;
  sums: Float64Array;
}

export async function readIndividual(
  blob: FileBytes, origin: Origin, onBytes: (count: number) => void,
): Promise<IndividualDigest> {
  const predictions = new Predictions();
  const hospitals = new Map<string, HospitalSums>();
  let row = 0;
  for await (const rows of csvRows(blob, onBytes)) {
    for (const cells of rows) {
      if (++row === 1) continue;
      requireWidth(cells, 2 + kColumns, row);
      predictions.add(cells);
      addToHospital(hospitals, cells[1], predictions);
    }
  }
  let missingP = 0;
  let withoutOutcomeKnownP = 0;
  const y = predictions.column('Y');
  predictions.column('P').forEach((p, record) => {
    if (Number.isNaN(p)) missingP++;
    else if (y[record] === 0) withoutOutcomeKnownP++;
  });
  return {
    origin, records: predictions.size, missingP, withoutOutcomeKnownP,
    calibrations: kExpectations.map((pair) => calibrate(pair, predictions)),
    hospitals: hospitals.size > kMostHospitals ? [] : [...hospitals].map(([id, sums]) => hospitalRow(id, sums)),
  };
}

function addToHospital(hospitals: Map<string, HospitalSums>, id: string, predictions: Predictions): void {
  let hospital = hospitals.get(id);
  if (!hospital) {
    if (hospitals.size > kMostHospitals) return;
    hospital = { records: 0, knownP: 0, sums: new Float64Array(kColumns) };
    hospitals.set(id, hospital);
  }
  const record = predictions.size - 1;
  hospital.records++;
  for (let j = 0; j < kColumns; j++) {
    const value = predictions.value(j, record);
    if (j === kP && Number.isNaN(value)) continue;
    if (j === kP) hospital.knownP++;
    hospital.sums[j] += value;
  }
}

function hospitalRow(id: string, hospital: HospitalSums): HospitalRow {
  const means = Array.from(hospital.sums, (sum, j) => sum / (j === kP ? hospital.knownP : hospital.records));
  return {
    id, records: hospital.records, complete: NaN, completeP0: NaN, missingP: hospital.records - hospital.knownP,
    means: means.map((mean) => numberCell(Number.isNaN(mean) ? '' : String(Number(mean.toPrecision(6))))),
  };
}

/**
 * Expectations given P = 0 are compared among the records in which P may be 0: where P is known to be
 * 1, both sides are 0 by definition. Expectations of P are compared where P is known.
 */
function takesPart(pair: CalibrationColumn, p: number): boolean {
  if (pair.observed === 'E[Y|P=0]') return p !== 1;
  if (pair.observed === 'E[P|YPXZ]') return !Number.isNaN(p);
  return true;
}

function calibrate(pair: CalibrationColumn, predictions: Predictions): Calibration {
  const p = predictions.column('P');
  const allPredicted = predictions.column(pair.expected);
  const allObserved = predictions.column(pair.observed);
  const predicted = new Float64Array(predictions.size);
  const observed = new Float64Array(predictions.size);
  let records = 0;
  let sumPredicted = 0;
  let sumObserved = 0;
  for (let i = 0; i < predictions.size; i++) {
    if (!takesPart(pair, p[i])) continue;
    predicted[records] = allPredicted[i];
    observed[records] = allObserved[i];
    sumPredicted += allPredicted[i];
    sumObserved += allObserved[i];
    records++;
  }
  return {
    expected: pair.expected, observed: pair.observed, records,
    meanPredicted: sumPredicted / records, meanObserved: sumObserved / records,
    bins: records > 0 ? calibrationByTenths(predicted.subarray(0, records), observed.subarray(0, records)) : [],
    cStatistic: separation(pair, predictions),
  };
}

/** The C-statistic of records whose response is known; those with P = 0 for expectations given P = 0. */
function separation(pair: CalibrationColumn, predictions: Predictions): number {
  const p = predictions.column('P');
  const response = pair.observed === 'E[P|YPXZ]' ? p : predictions.column('Y');
  const all = predictions.column(pair.expected);
  const used: number[] = [];
  for (let i = 0; i < predictions.size; i++) {
    const known = pair.observed === 'E[Y|P=0]' ? p[i] === 0 : !Number.isNaN(response[i]);
    if (known) used.push(i);
  }
  const predicted = Float64Array.from(used, (i) => all[i]);
  return cStatistic(predicted, Float64Array.from(used, (i) => response[i]));
}
