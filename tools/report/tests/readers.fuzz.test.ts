// A fuzz target for the readers: files put together at random from what runs write and from what they never
// do. Whatever they hold, the readers end, list every file, and never throw; what they take is within its bounds.
//
// The tests run a fixed sample. `npm run fuzz -- SECONDS` runs new ones for so long and prints the seed of a
// failure.
import assert from 'node:assert/strict';
import { test } from 'node:test';
import fc from 'fast-check';
import Papa from 'papaparse';
import { groupChains } from '../src/analysis/chain_groups';
import { diagnose } from '../src/analysis/diagnostics';
import { defaultExpectation, judgeHospitals, kPositionText, pairOf } from '../src/analysis/hospital_ratios';
import { convergenceFinding, fitFinding, hospitalFinding, missingFinding, runFinding } from '../src/analysis/verdict';
import { emptyReport, isRecordCount, type Report, type SourceFile } from '../src/model';
import { CsvParser, TableError } from '../src/read/csv';
import { deriveHospitals, loadReport } from '../src/read/load';
import { xmlParts } from '../src/read/xml';
import { visible } from '../src/view/visible';
import { chainText, coefficientText, hospitalText, kCoefficientHeader, kHospitalHeader, kIndividualHeader, kStatisticsText, summaryText } from './support/study';

const kSeconds = Number(process.env.FUZZ_SECONDS ?? 0);
const sample = (runs: number): fc.Parameters<unknown> => (kSeconds > 0
  ? { numRuns: 1e9, interruptAfterTimeLimit: kSeconds * 1000, markInterruptAsFailure: false } : { numRuns: runs, seed: 20 });

const kChain = chainText({ draws: 12, coefficients: 3, seed: 3 });
const kNames = ['XIntercept', 'XA', 'XB'];
const kWhole = [
  kChain, coefficientText(kNames, false, kChain), coefficientText(kNames, true), hospitalText(['H1', 'H2', 'H3']), summaryText(3), kStatisticsText,
  `${kIndividualHeader}\nR1,H1,0,0.1,0.1,0,0.1,0.1,,0.2,0.3\nR2,H2,1,0.2,0.3,1,0.1,0.5,0,0.2,0\n`,
  'Number of records: 12\nNumber of variables: 3\nEliminating Z zero columns\nEliminating columns:\n"Z, 1", X1\nNumber of non-missing records: 9\n',
  '"d.csv": 200 records, 3 hospitals, 4 variables, 1 POA indicator\n  P = 1: 12 (6 %), missing: 20 (10 %)\n    "ZA", "XA": 29.08 %; 24.50 %; 4.10 %\n',
  '<?xml version="1.0"?><!-- c --><Analysis xmlns:xsi="u"><Input><Data>d.csv</Data></Input><Output><Folder>run</Folder><McmcSubFolder>m</McmcSubFolder></Output>' +
    '<Regression><UseGeneralizedEstimatingEquations>true</UseGeneralizedEstimatingEquations></Regression></Analysis>',
  '<Prediction><Input><RegressionCoefficients>..\\c.csv</RegressionCoefficients></Input><Output><Folder>run</Folder><HospitalPredictions>h.csv</HospitalPredictions></Output></Prediction>',
  '<Batch><Simulations><Simulation>run/chain-1/chain-1.xml</Simulation><Simulation>run/chain-2/chain-2.xml</Simulation></Simulations></Batch>',
  '{"format": "hovar run record", "exitStatus": 0, "runs": [{"warnings": [{"text": "w", "fit": "f", "count": 2}], "definition": {"path": "a.xml"}}]}',
];
const kMarks = [
  'Step,BetaYX[0]\n', `${kCoefficientHeader}\n`, `${kHospitalHeader}\n`, `${kIndividualHeader}\n`, 'Number of records: ', 'Eliminating columns:\n', '": ', '1e400', '-1', '1e15',
  'nan', 'inf', '-inf', '0x10', '', ',', '\n', '\r\n', '"', '""', ';', ' ', '<', '>', '</', '/>', '<!--', '-->', '<?', '?>', '<!DOCTYPE a [', ']', '<Batch>', 'xsi:type="',
  '{"format": "hovar run record"', '[', '{', '}', '__proto__', 'constructor', '\0', '\u202E', '\uFEFF', ':1:1: warning: ', '%', '&amp;',
];

/** A whole file, one of which a part is missing, doubled or exchanged, or marks in any order. */
const content = fc.oneof(
  fc.constantFrom(...kWhole),
  fc.tuple(fc.constantFrom(...kWhole), fc.nat(), fc.nat(), fc.oneof(fc.constantFrom(...kMarks), fc.string({ unit: 'binary' }))).map(([text, from, length, part]) => {
    const at = from % (text.length + 1);
    return text.slice(0, at) + part + text.slice(at + (length % 30));
  }),
  fc.array(fc.oneof(fc.constantFrom(...kMarks), fc.string()), { maxLength: 60 }).map((parts) => parts.join('')),
);
const bytes = fc.oneof({ weight: 9, arbitrary: content }, { weight: 1, arbitrary: fc.uint8Array({ maxLength: 300 }).map((array) => Uint8Array.from(array)) });
const path = fc.oneof(
  fc.constantFrom('c.csv', 'h.csv', 'm/Chain.csv', 'chain-1/m/Chain.csv', 'chain-2/m/Chain.csv', 'chain-3/m/Chain.csv', 'chain-1/chain-1.xml', '__proto__', '..', '/', ''),
  fc.string({ unit: 'binary', maxLength: 20 }));
const files = fc.array(fc.record({ folder: fc.nat(1), path, part: bytes }), { maxLength: 8 });

function assertBounds(report: Report): void {
  for (const chain of report.chains) {
    assert.equal(chain.draws.length, Math.max(chain.columns.length, 0));
    for (const draws of chain.draws) assert.equal(draws.length, chain.steps.length);
  }
  for (const file of report.coefficients) {
    for (const block of file.blocks) for (const cells of [block.estimate, block.mse, block.ese]) assert.equal(cells.length, file.xNames.length);
  }
  for (const { entries } of [...report.definitions, ...report.runRecords]) assert.ok(entries.length <= 2000);
}

/** Everything that the page works out from a report. */
async function conclude(report: Report): Promise<void> {
  deriveHospitals(report);
  const groups = [];
  for (const group of groupChains(report)) groups.push(await diagnose(report, group, () => {}));
  const findings = [convergenceFinding(report, groups), missingFinding(report), runFinding(report), fitFinding(report, defaultExpectation(report).column)];
  for (const file of report.hospitals) {
    const judgement = judgeHospitals(file, pairOf(defaultExpectation(report).column), true);
    assert.ok(judgement.ratios.every(({ position, row }) => position in kPositionText && (position === 'unknown' || isRecordCount(row.records))));
    findings.push(hospitalFinding(judgement, report));
  }
  for (const finding of findings) if (finding) assert.ok([finding.answer, ...finding.details].every((text) => typeof text === 'string' && !/undefined|\[object/.test(text)));
}

test('whatever files hold, each is listed once and what is taken from them is whole', async () => {
  await fc.assert(fc.asyncProperty(files, async (parts) => {
    const sources: SourceFile[] = parts.map(({ folder, path: name, part }) => ({ folder, folderName: `run${folder || ''}`, path: name, content: new Blob([part]) }));
    const report = await loadReport(sources, () => {});
    assert.equal(report.files.length, sources.length);
    const read = Object.keys(emptyReport()).filter((key) => key !== 'files').reduce((sum, key) => sum + report[key as keyof Report].length, 0);
    assert.equal(read, report.files.filter(({ kind }) => kind !== 'unused').length);
    assertBounds(report);
    await conclude(report);
  }), sample(1500));
});

/** Rows in pieces of this length; null when the table is refused. */
function rowsInPieces(text: string, length: number): string[][] | null {
  const parser = new CsvParser();
  try {
    const rows: string[][] = [];
    for (let at = 0; at < text.length; at += length) rows.push(...parser.push(text.slice(at, at + length)));
    return [...rows, ...parser.finish()];
  } catch (error) {
    assert.ok(error instanceof TableError);
    return null;
  }
}

const cell = fc.oneof(fc.constantFrom('', '"', ',', '\n', '\r', 'a', '1.5', '""', ' '), fc.string({ unit: 'binary' }));
const table = fc.array(fc.array(cell, { minLength: 2, maxLength: 5 }), { minLength: 1, maxLength: 6 });

test('a table that is written as CSV is read back, in pieces of any length, and as Papa Parse reads it', () => {
  fc.assert(fc.property(table, fc.integer({ min: 1, max: 9 }), (rows, length) => {
    const text = rows.map((row) => `${row.map((one) => `"${one.replaceAll('"', '""')}"`).join(',')}\n`).join('');
    assert.deepEqual(rowsInPieces(text, length), rows);
    assert.deepEqual(Papa.parse(text.slice(0, -1), { delimiter: ',', newline: '\n' }).data, rows);
  }), sample(500));
});

test('any text is read alike in pieces of any length, and as Papa Parse reads it where it has no quotes', () => {
  const text = fc.array(fc.constantFrom('"', ',', '\n', '\r', 'a', 'bc', ' '), { maxLength: 40 }).map((parts) => parts.join(''));
  fc.assert(fc.property(text, fc.integer({ min: 1, max: 9 }), (written, length) => {
    assert.deepEqual(rowsInPieces(written, length), rowsInPieces(written, written.length + 1));
    const plain = `a${written.replaceAll('"', '')}`;
    const expected = Papa.parse(plain.endsWith('\n') ? plain.slice(0, -1) : plain, { delimiter: ',', newline: '\n' }).data;
    assert.deepEqual(rowsInPieces(plain, length), expected);
  }), sample(500));
});

test('XML that is written is taken apart as it was written, and any text ends', () => {
  const name = fc.stringMatching(/^[A-Za-z][\w.-]{0,5}$/);
  const node = fc.letrec<{ element: string }>((tie) => ({
    element: fc.tuple(name, fc.array(
      fc.oneof({ maxDepth: 4 }, fc.constantFrom('text', '<!-- <a> -->', '<?b <c> ?>', ''), tie('element')), { maxLength: 3 }))
      .map(([tag, inner]) => `<${tag} a="/>">${inner.join('')}</${tag}>`),
  })).element;
  fc.assert(fc.property(node, (text) => {
    const plain = text.replace(/<!-- <a> -->|<\?b <c> \?>/g, '');
    const again = [...xmlParts(text)].map((part) => (part.kind === 'text' ? part.text : part.kind === 'close' ? `</${part.name}>` : `<${part.name}${part.attributes}>`));
    assert.equal(again.join(''), plain);
  }), sample(300));
  fc.assert(fc.property(fc.array(fc.constantFrom(...kMarks), { maxLength: 60 }), (parts) => {
    const text = parts.join('');
    assert.ok([...xmlParts(text)].length <= text.length);
  }), sample(500));
});

test('nothing unseen is left in any text that is shown', () => {
  fc.assert(fc.property(fc.string({ unit: 'binary' }), (text) => {
    const shown = visible(text);
    assert.ok(!/[\p{Cc}\p{Zl}\p{Zp}\p{Cs}\u061C\u200B\u200E\u200F\u202A-\u202E\u2066\u2067\uFEFF]/u.test(shown));
    let open = 0;
    for (const character of shown) {
      if (character === '\u2068') open++;
      if (character === '\u2069') open--;
      assert.ok(open === 0 || open === 1);
    }
    assert.equal(open, 0);
  }), sample(1000));
});
