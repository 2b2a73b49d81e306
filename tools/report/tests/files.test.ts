// Files are known by their contents, and read into what the page shows.
import assert from 'node:assert/strict';
import { test } from 'node:test';
import type { SourceFile } from '../src/model';
import { decodeBase64 } from '../src/doors/inlined';
import { identify } from '../src/read/identify';
import { readIndividual } from '../src/read/individual_predictions';
import { deriveHospitals, loadReport } from '../src/read/load';
import { readDefinition, readDescription, readLog, readRunRecord } from '../src/read/texts';
import { chainText, coefficientText, hospitalText, kHospitalHeader, kIndividualHeader, kStatisticsText, summaryText } from './support/study';

const kOrigin = { folder: 0, folderName: 'out', path: 'file' };
const source = (path: string, text: string, folder = 0): SourceFile => ({ folder, folderName: `run${folder}`, path, content: new Blob([text]) });

const kinds: [string, string][] = [
  [coefficientText(['XIntercept', 'XA']), 'coefficients'],
  [chainText({ draws: 3, coefficients: 2, seed: 1 }), 'chain'],
  ['Step\n', 'chain'],
  [summaryText(2), 'summary'],
  [`${kIndividualHeader}\n`, 'individual'],
  [hospitalText(['H1']), 'hospitals'],
  [kStatisticsText, 'cStatistics'],
  ['Number of records: 12\nNumber of variables: 3\n', 'log'],
  ['<?xml version="1.0"?>\n<!-- mine -->\n<Analysis xmlns:xsi="x">\n</Analysis>', 'definition'],
  ['<Batch>\n</Batch>', 'definition'],
  ['{\n  "format": "hovar run record",\n  "formatVersion": 1}', 'runRecord'],
  // Not of a run: a data file, a page, another XML file, a header with a column more.
  ['Key,Hospital ID,Y,POA1,ZA,XA\nR1,H1,0,0,0,0\n', 'unused'],
  ['<html><body></body></html>', 'unused'],
  [`${kIndividualHeader},More\n`, 'unused'],
  ['{"version": "1"}', 'unused'],
  ['', 'unused'],
];
for (const [text, kind] of kinds) {
  test(`"${text.slice(0, 30).replace(/\n/g, ' ')}" is ${kind}`, async () => {
    assert.equal((await identify(new Blob([text]))).kind, kind);
  });
}

test('a byte order mark does not hide what a file is', async () => {
  assert.equal((await identify(new Blob(['\uFEFF', '{"format": "hovar run record"}']))).kind, 'runRecord');
});

test('a file that breaks off is listed with the reason and the others are read', async () => {
  const report = await loadReport([
    source('coefficients.csv', `${coefficientText(['XIntercept', 'XA'])}XB,ZB,1\n`), source('cstatistics.csv', kStatisticsText),
    source('record.json', '{"format": "hovar run record", '),
  ], () => {});
  assert.deepEqual(report.files.map((file) => [file.path, file.kind]),
    [['coefficients.csv', 'unused'], ['cstatistics.csv', 'cStatistics'], ['record.json', 'unused']]);
  assert.equal(report.files[0].note, 'row 4 has 3 cells, the header 21');
  assert.match(report.files[2].note, /^could not be read: SyntaxError/);
});

test('a chain is read by column', async () => {
  const report = await loadReport([source('Chain.csv', 'Step,BetaYX[0],BetaYX[1]\n2,0.5,-1e-05\n4,nan,3\n')], () => {});
  assert.deepEqual([...report.chains[0].steps], [2, 4]);
  assert.deepEqual(report.chains[0].draws.map((draws) => [...draws]), [[0.5, NaN], [-1e-5, 3]]);
});

// Four records of two hospitals:   Y  Z    X    Y|P=0  X,P=0  MCMC  P  P|X  P|YPXZ
const kFour = `${kIndividualHeader}
a,"H, 1",1,0.5,0.4,0,0,0,1,0.2,1
b,"H, 1",0,0.1,0.2,0,0.1,0.3,0,0.1,0
c,H2,1,0.9,0.6,0.6,0.2,0.4,,0.3,0.4
d,H2,0,0.3,0.4,0,0.3,0.1,0,0.2,0
`;

test('individual predictions are summed by hospital, P where it is known', async () => {
  const digest = await readIndividual(new Blob([kFour]), kOrigin, () => {});
  assert.equal(digest.records, 4);
  assert.equal(digest.missingP, 1);
  assert.equal(digest.withoutOutcomeKnownP, 2);
  assert.deepEqual(digest.hospitals.map((row) => row.missingP), [0, 1]);
  assert.deepEqual(digest.hospitals.map((row) => [row.id, row.records, ...row.means.map((mean) => mean.value)]), [
    ['H, 1', 2, 0.5, 0.3, 0.3, 0, 0.05, 0.15, 0.5, 0.15, 0.5],
    ['H2', 2, 0.5, 0.6, 0.5, 0.3, 0.25, 0.25, 0, 0.25, 0.2],
  ]);
});

test('calibration leaves out known P = 1 for outcomes in hospital and missing P for P', async () => {
  const digest = await readIndividual(new Blob([kFour]), kOrigin, () => {});
  const of = (name: string) => digest.calibrations.find((c) => c.expected === name);
  assert.equal(of('E[Y|X]')?.records, 4);
  assert.equal(of('E[Y|X]')?.meanPredicted, 1.6 / 4);
  assert.equal(of('E[Y|X]')?.meanObserved, 0.5);
  assert.equal(of('E[Y|X,P=0]')?.records, 3);
  assert.ok(Math.abs((of('E[Y|X,P=0]')?.meanPredicted ?? 0) - 0.2) < 1e-15);
  assert.equal(of('E[Y|X,P=0]')?.meanObserved, 0.6 / 3);
  assert.equal(of('E[P|X]')?.records, 3);
});

test('C-statistics are over pairs of known responses', async () => {
  const digest = await readIndividual(new Blob([kFour]), kOrigin, () => {});
  const of = (name: string) => digest.calibrations.find((c) => c.expected === name)?.cStatistic;
  // Y: positives a 0.4, c 0.6 against negatives b 0.2, d 0.4: 1, 1/2, 1, 1 of four pairs.
  assert.equal(of('E[Y|X]'), 3.5 / 4);
  // P: positive a 0.2 against b 0.1, d 0.2: 1 and 1/2 of two pairs.
  assert.equal(of('E[P|X]'), 0.75);
});

test('hospitals are made from individual predictions only where their folder has no file of them', async () => {
  const report = await loadReport([
    source('individual.csv', kFour), source('hospital.csv', hospitalText(['A', 'B'])), source('individual.csv', kFour, 1),
  ], () => {});
  deriveHospitals(report);
  assert.deepEqual(report.hospitals.map((file) => [file.origin.folder, file.derived, file.rows.length]), [[0, false, 2], [1, true, 2]]);
});

test('the hospitals of a file get their missing P from individual predictions of the same folder', async () => {
  const row = (id: string, records: number) => `${id},${records},1,1,0.5,0.5,0.5,0,0,0,0.5,0.2,0.5`;
  const text = [kHospitalHeader, row('"H, 1"', 2), row('H2', 2), row('H3', 5), ''].join('\n');
  const report = await loadReport([
    source('individual.csv', kFour), source('hospital.csv', text), source('hospital.csv', text, 1),
  ], () => {});
  deriveHospitals(report);
  assert.deepEqual(report.hospitals.map((file) => file.rows.map(({ missingP }) => missingP)), [[0, 1, NaN], [NaN, NaN, NaN]]);
});

const kLog = `Number of records: 100
Number of variables: 5
Number of hospitals: 7
Warning: Y == 0 && P == 1 data in record: 3 - setting P equal to 0
Counting non missing records:
Number of non-missing records: 60
Number of non-missing records with P = 0: 50
Eliminating Z zero columns
Eliminating X zero columns
Eliminating columns:
ZNever, XNever
"Z, odd", XOdd
Number of variables: 3
Counting non missing records:
Number of non-missing records: 64
Number of non-missing records with P = 0: 52
Eliminating dependent Z columns
Warning: Maximum number of iterations reached
Number of records: 999
Warning: Maximum number of iterations reached
`;

test('a log is read up to the run that follows in a batch', async () => {
  const log = await readLog(new Blob([kLog]), kOrigin);
  assert.deepEqual({ ...log, origin: null }, {
    origin: null, analysis: true, records: 100, variables: 3, hospitals: 7, completeFirst: 60, completeLast: 64,
    removed: [{ z: 'ZNever', x: 'XNever', stage: 'zeroX' }, { z: '"Z, odd"', x: 'XOdd', stage: 'zeroX' }], contradictions: 1, unfinishedFits: 1,
  });
});

test('a log says in which stage a variable was removed, and that of a Prediction that it is not in the coefficients', async () => {
  const stages = ['Eliminating Z zero columns', 'Eliminating X zero columns', 'Eliminating dependent Z columns', 'Eliminating dependent X columns P = 0'];
  const removal = (i: number) => `Eliminating columns:\nZ${i}, X${i}\nNumber of variables: 9\n`;
  const analysis = await readLog(new Blob([`Number of records: 9\n${stages.map((line, i) => `${line}\n${removal(i)}`).join('')}`]), kOrigin);
  assert.deepEqual(analysis.removed.map(({ x, stage }) => [x, stage]),
    [['X0', 'zeroZ'], ['X1', 'zeroX'], ['X2', 'dependentZ'], ['X3', 'dependentX']]);
  const prediction = await readLog(new Blob([`Number of records: 9\n${removal(7)}`]), kOrigin);
  assert.deepEqual(prediction.removed, [{ z: 'Z7', x: 'X7', stage: 'notInCoefficients' }]);
});

// As hovar --check --data prints it, with a finding before it.
const kDescription = `C:\\d, old\\data.csv:1:24: warning: 3 records have Y = 0 and P = 1; P would be taken as 0 there.
data.csv:1:20: warning: "ZTwice" equals "ZA" in all 200 records.
analysis.xml:10:29: warning: The coefficient file "c.csv" exists and would be overwritten. Use --keep to move it aside.
analysis.xml:9:14: warning: 4 files of an earlier run would be overwritten in "results": "c.csv" and 3 more.
"data.csv": 200 records, 3 hospitals, 4 variables, 1 POA indicator
  Y = 1: 30 (15.00 %)
  P = 1: 12 (6.67 % of the known), missing: 20 (10.00 %)
  complete records: 150 (75.00 %), with P = 0: 140
  hospitals without a complete record: 0
  variables (Z, X): Z = 1; X = 1 of the known, where Z = 0, where Z = 1; X missing
    "ZA", "XA": 29.08 %; 24.50 %, 1.59 %, 79.84 %; 4.10 %
    "Z; ""B""", "XB": 6.62 %; 6.36 %, 0.25 %, 92.45 %; 40.00 %
    "ZNever", "XNever": 2.94 %; 0.00 %, 0.00 %, -; 50.00 %
    "ZTwice", "XTwice": 29.08 %; 24.00 %, 1.00 %, 78.00 %; 60.00 %
  removed by column elimination:
    "ZNever", "XNever": X is 0 in all complete records
    "ZTwice", "XTwice": Z depends on other variables
  empty [X|Z] classes:
    "ZA", "XA": no record with Z = 1 and a known X
"other.csv": 7 records, 1 hospital, 1 variable, 1 POA indicator
  P = 1: 1 (20.00 % of the known), missing: 2 (28.57 %)
0 errors, 4 warnings
`;

test('a saved check gives its warnings, without those of outputs that a next run would overwrite', async () => {
  const digest = await readDescription(new Blob([kDescription]), kOrigin);
  assert.deepEqual(digest.warnings, [
    '3 records have Y = 0 and P = 1; P would be taken as 0 there.', '"ZTwice" equals "ZA" in all 200 records.',
  ]);
});

test('the missing shares of a description without the shares by Z are read too', async () => {
  const older = kDescription.replace(', where Z = 0, where Z = 1', '').replace(/(; [\d.]+ %), [^;\n]*;/g, '$1;');
  assert.match(older, /"ZA", "XA": 29\.08 %; 24\.50 %; 4\.10 %\n/);
  assert.equal((await readDescription(new Blob([older]), kOrigin)).missingX.length, 2);
});

test('a description of the data gives the missing cells of the variables that stay', async () => {
  assert.equal((await identify(new Blob([kDescription]))).kind, 'description');
  const digest = await readDescription(new Blob([kDescription]), kOrigin);
  assert.deepEqual([digest.records, digest.missingP, digest.missingX.map((share) => share.toFixed(4))], [200, 20, ['0.0410', '0.4000']]);
});

test('a definition gives its elements with their groups', async () => {
  const text = '<?xml version="1.0"?><!-- <Old>1</Old> --><Analysis xmlns:xsi="u"><Input><Data>d.csv</Data></Input>' +
    '<Mcmc><Seed xsi:type="Vector"><Seed><Element>7</Element></Seed></Seed><Steps>5</Steps></Mcmc></Analysis>';
  const digest = await readDefinition(new Blob([text]), kOrigin);
  assert.equal(digest.root, 'Analysis');
  assert.deepEqual(digest.entries, [
    ['Input / Data', 'd.csv'], ['Mcmc / Seed', 'Vector'], ['Mcmc / Seed / Seed / Element', '7'], ['Mcmc / Steps', '5'],
  ]);
});

test('a record of a run gives its plain values, its status and its warnings', async () => {
  const text = JSON.stringify({
    format: 'hovar run record', data: { sha256: 'ab' }, exitStatus: 1, error: 'IO Exception', host: null,
    runs: [{ kind: 'Analysis', warnings: [{ text: 'w', fit: '[Y|X]', count: 3, records: [1, 2] }] }],
  });
  const record = await readRunRecord(new Blob([text]), kOrigin);
  assert.deepEqual(record.entries.slice(0, 3), [['format', 'hovar run record'], ['data / sha256', 'ab'], ['exitStatus', '1']]);
  assert.equal(record.exitStatus, 1);
  assert.equal(record.error, 'IO Exception');
  assert.deepEqual(record.warnings, [{ text: 'w', fit: '[Y|X]', count: 3 }]);
});

test('base64 gives the bytes back', () => {
  const bytes = Uint8Array.from({ length: 256 }, (_, i) => i);
  assert.deepEqual([...decodeBase64(Buffer.from(bytes).toString('base64'))], [...bytes]);
});
