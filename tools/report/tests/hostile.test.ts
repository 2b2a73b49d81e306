// Files that are meant to harm: refused in words, or read within bounds.
import assert from 'node:assert/strict';
import { test } from 'node:test';
import { judgeHospitals, pairOf } from '../src/analysis/hospital_ratios';
import { hospitalFinding, missingFinding } from '../src/analysis/verdict';
import type { EngineMessage } from '../src/engine';
import { runEngine } from '../src/engine';
import { plainNumber, type Report, type SourceFile } from '../src/model';
import { kLongestCell, kMostCells } from '../src/read/csv';
import { identify } from '../src/read/identify';
import { kMostOfAKind, loadReport } from '../src/read/load';
import { readDefinition, readRunRecord } from '../src/read/texts';
import { xmlParts } from '../src/read/xml';
import { chainText, hospitalText, kHospitalHeader, kIndividualHeader, kStatisticsText } from './support/study';

const kOrigin = { folder: 0, folderName: 'out', path: 'file' };
const source = (path: string, ...texts: BlobPart[]): SourceFile => ({ folder: 0, folderName: 'run', path, content: new Blob(texts) });
const load = (...sources: SourceFile[]): Promise<Report> => loadReport(sources, () => {});
const noteOf = async (...texts: BlobPart[]): Promise<string> => (await load(source('file', ...texts))).files[0].note;

const kRates = '0.1,0.1,0.1,0.1,0.1,0.1,0,0,0';
const kRow = (id: string, records: string, rates = kRates) => `${id},${records},1,1,${rates}\n`;

for (const records of ['1e15', '1e400', '2147483648', '-1', '0.5', 'nan', '0x10', '']) {
  test(`a hospital with ${records || 'an empty number of'} records is not judged, and the verdict says so`, async () => {
    const report = await load(source('h.csv', `${kHospitalHeader}\n${kRow('Absurd', records)}${kRow('Good', '100')}`));
    const judgement = judgeHospitals(report.hospitals[0], pairOf('E[Y|X,P=0]'), true);
    assert.deepEqual(judgement.ratios.map(({ position }) => position), ['unknown', 'inside']);
    assert.match(report.files[0].note, /number of records that no run writes/);
    const finding = hospitalFinding(judgement);
    assert.equal(finding?.level, 'act');
    assert.match(finding?.details[0] ?? '', /Not judged.*2,147,483,647.*: Absurd\./);
    assert.match(missingFinding(report)?.answer ?? '', /of 100 records/);
  });
}

test('rates that make more cases than records are not judged', async () => {
  const report = await load(source('h.csv', `${kHospitalHeader}\n${kRow('H', '100', '9,9,9,9e9,9e9,9e9,0,0,0')}`));
  assert.equal(judgeHospitals(report.hospitals[0], pairOf('E[Y|X,P=0]'), false).ratios[0].position, 'unknown');
});

test('hospitals that together have more records than a run can hold are refused in words', async () => {
  const rows = kRow('A', '2147483647') + kRow('B', '1');
  assert.match(await noteOf(`${kHospitalHeader}\n${rows}`), /have 2,147,483,648 records together, and a run has at most 2,147,483,647/);
});

test('a log and a description with numbers that no run has are refused in words', async () => {
  assert.match(await noteOf('Number of records: 9999999999999\n'), /“Number of records” is 9999999999999, and a run has at most 2,147,483,647/);
  assert.match(await noteOf('"d.csv": 99999999999 records, 1 hospital, 1 variable, 1 POA indicator\n'), /at most 2,147,483,647/);
});

test('numbers are decimal ones', () => {
  const numbers: [string, number][] = [['1e400', Infinity], ['-1.5', -1.5], [' 7 ', 7], ['0x10', NaN], ['0b1', NaN], ['0o7', NaN], ['', NaN], [' ', NaN], ['1_0', NaN], ['e', NaN]];
  for (const [text, expected] of numbers) assert.equal(plainNumber(text), expected, text);
});

test('a header of a million columns is refused in words', async () => {
  const header = ['Step', ...Array.from({ length: 1e6 }, (_, i) => `BetaYX[${i}]`)].join(',');
  assert.equal(await noteOf(`${header}\n`), 'row 1 has more than 50,000 cells');
  assert.ok(kMostCells > 46_340);
});

test('a chain of 40,000 columns and one row takes no memory for draws that it does not have', async () => {
  const columns = Array.from({ length: 40_000 }, (_, i) => `BetaYX[${i}]`);
  const before = process.memoryUsage().arrayBuffers;
  const report = await load(source('Chain.csv', `Step,${columns.join(',')}\n1${',0.5'.repeat(40_000)}\n`));
  assert.equal(report.chains[0].draws.length, 40_000);
  assert.ok(process.memoryUsage().arrayBuffers - before < 50e6);
});

test('a cell without an end is refused in words', async () => {
  const header = `${kIndividualHeader}\n`;
  assert.match(await noteOf(header, 'x'.repeat(kLongestCell + 1)), /row 2 has a cell of more than 1,048,576 characters/);
  assert.match(await noteOf(header, `"${'\n'.repeat(kLongestCell + 1)}`), /row 2 has a cell of more than 1,048,576 characters/);
});

test('more hospitals than the page can judge are refused in words', async () => {
  const many = Array.from({ length: 50_001 }, (_, i) => kRow(`H${i}`, '1')).join('');
  assert.equal(await noteOf(`${kHospitalHeader}\n${many}`), 'has more than 50,000 rows');
  const rows = Array.from({ length: 50_001 }, (_, i) => `R${i},H${i},0,0,0,0,0,0,0,0,0\n`).join('');
  const report = await load(source('i.csv', `${kIndividualHeader}\n${rows}`));
  assert.equal(report.files[0].note, 'has more than 50,000 hospitals, which are not shown');
  assert.equal(report.individuals[0].records, 50_001);
});

test('of a kind of file so many are read and the others named', async () => {
  const report = await load(...Array.from({ length: kMostOfAKind + 2 }, (_, i) => source(`c${i}.csv`, kStatisticsText)));
  assert.equal(report.cStatistics.length, kMostOfAKind);
  assert.deepEqual(report.files.slice(kMostOfAKind).map(({ kind, note }) => [kind, note]), Array(2).fill(['unused', 'left out: 200 files of this kind come before it']));
});

test('names of properties of objects are names like others', async () => {
  const names = ['__proto__', 'constructor', 'toString', 'hasOwnProperty', 'prototype', 'valueOf'];
  const report = await load(source('h.csv', hospitalText(names)),
    source('i.csv', `${kIndividualHeader}\n${names.map((name) => `R,${name},1,0,0,0,0,0,0,0,0`).join('\n')}\n`));
  assert.deepEqual(report.hospitals[0].rows.map((row) => row.id), names);
  assert.deepEqual(report.individuals[0].hospitals.map((row) => [row.id, row.records]), names.map((name) => [name, 1]));
  const record = await readRunRecord(new Blob(['{"format": "hovar run record", "__proto__": {"exitStatus": 7}, "constructor": "x"}']), kOrigin);
  assert.deepEqual(record.entries, [['format', 'hovar run record'], ['__proto__ / exitStatus', '7'], ['constructor', 'x']]);
  assert.ok(Number.isNaN(record.exitStatus));
  const definition = await readDefinition(new Blob(['<Analysis><__proto__><constructor>1</constructor></__proto__></Analysis>']), kOrigin);
  assert.deepEqual(definition.entries, [['__proto__ / constructor', '1']]);
});

test('deep nesting and long lists in a definition and in a record of a run end in time and within bounds', async () => {
  const deep = await readDefinition(new Blob([`<Analysis>${'<a>'.repeat(200_000)}x${'</a>'.repeat(200_000)}<b>y</b></Analysis>`]), kOrigin);
  assert.deepEqual(deep.entries, [['b', 'y']]);
  const wide = await readDefinition(new Blob(['<Batch>', '<a>1</a>'.repeat(100_000)]), kOrigin);
  assert.equal(wide.entries.length, 2000);
  const record = await readRunRecord(new Blob([`{"format": "hovar run record", "a": ${'{"a":'.repeat(100_000)}1${'}'.repeat(100_000)}, "b": [${'1,'.repeat(100_000)}1]}`]), kOrigin);
  assert.equal(record.entries.length, 2000);
  assert.ok(record.entries.every(([path]) => path.length < 100));
});

test('entities are shown as they are written', async () => {
  const text = '<!DOCTYPE Analysis [<!ENTITY a "<Output>x</Output>"><!-- don\'t ]> --><!ENTITY b SYSTEM "file:///etc/passwd">]><Analysis><Input>&a;&b;</Input></Analysis>';
  assert.equal((await identify(new Blob([text]))).kind, 'definition');
  assert.deepEqual((await readDefinition(new Blob([text]), kOrigin)).entries, [['Input', '&a;&b;']]);
});

test('XML is taken apart as written', () => {
  const parts = [...xmlParts('<?x <a> ?><a b="x>y"><!-- <c> -->t<d/>< <![CDATA[<e>]]></a><f')];
  assert.deepEqual(parts, [
    { kind: 'open', name: 'a', attributes: ' b="x>y"' }, { kind: 'text', text: 't' }, { kind: 'empty', name: 'd', attributes: '' },
    { kind: 'text', text: '<' }, { kind: 'text', text: ' ' }, { kind: 'close', name: 'a', attributes: '' },
  ]);
});

test('bytes that are zero, and files of one byte, are read or refused', async () => {
  const report = await load(source('a', '\0'), source('b', '\0'.repeat(100_000)), source('c', `Step,a\n1,\0\n`), source('d', '<'), source('e', '"'), source('f', '{'));
  assert.deepEqual(report.files.map(({ kind }) => kind), ['unused', 'unused', 'chain', 'unused', 'unused', 'unused']);
});

test('of a hundred thousand small files the page gets a few messages', async () => {
  const messages: EngineMessage[] = [];
  const begin = performance.now();
  await runEngine(Array.from({ length: 100_000 }, (_, i) => source(`f${i}`, 'x')), (message) => void messages.push(message));
  const mostProgress = (performance.now() - begin) / 50 + 1;
  assert.ok(messages.filter(({ type }) => type === 'progress').length <= mostProgress);
  assert.deepEqual(messages.slice(-2).map(({ type }) => type), ['report', 'diagnostics']);
});

test('a hospital of 2,147,483,647 records is judged', async () => {
  const report = await load(source('h.csv', `${kHospitalHeader}\n${kRow('H', '2147483647')}`), source('Chain.csv', chainText({ draws: 2, coefficients: 1, seed: 1 })));
  assert.equal(judgeHospitals(report.hospitals[0], pairOf('E[Y|X]'), false).ratios[0].position, 'inside');
});
