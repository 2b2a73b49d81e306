import assert from 'node:assert/strict';
import { test } from 'node:test';
import { csvRows, csvTable, TableError } from '../src/read/csv';

const kPieceBytes = 1 << 20;

async function rowsOf(blob: Blob): Promise<string[][]> {
  const rows: string[][] = [];
  for await (const some of csvRows(blob)) rows.push(...some);
  return rows;
}

test('a quoted field may hold commas, line feeds and doubled quotes', async () => {
  assert.deepEqual(await rowsOf(new Blob(['a,"b, ""c""\nd"\ne,f\n'])), [['a', 'b, "c"\nd'], ['e', 'f']]);
});

test('a line feed that is missing at the end of the file does no harm', async () => {
  assert.deepEqual(await rowsOf(new Blob(['a,b\n1,2'])), [['a', 'b'], ['1', '2']]);
  assert.deepEqual(await rowsOf(new Blob(['a,b\n1,2\n'])), [['a', 'b'], ['1', '2']]);
});

test('an empty file has no rows', async () => {
  assert.deepEqual(await rowsOf(new Blob([])), []);
});

// The end of the first piece falls on every byte of a row with quotes, line feeds and letters of two
// and three bytes.
test('rows are the same wherever a piece ends', async () => {
  const row = 'x,"é, ""€""\ny",z\n';
  const bytes = new TextEncoder().encode(row).length;
  for (let shift = 0; shift <= bytes; shift++) {
    const before = `${'p'.repeat(kPieceBytes - bytes + shift - 3)},,\n`;
    const rows = await rowsOf(new Blob([before, row, 'last,1,2\n']));
    assert.deepEqual(rows.slice(1), [['x', 'é, "€"\ny', 'z'], ['last', '1', '2']], `shift ${shift}`);
  }
});

test('bytes that are not UTF-8 are taken for Windows-1252', async () => {
  assert.deepEqual(await rowsOf(new Blob([Uint8Array.of(0x4d, 0xfc, 0x2c, 0x31, 0x0a)])), [['Mü', '1']]);
});

test('a carriage return stays in the last field of its row', async () => {
  assert.deepEqual(await rowsOf(new Blob(['a,b\r\n1,2\r\n'])), [['a', 'b\r'], ['1', '2\r']]);
});

test('a row of another width is an error that names the row', async () => {
  await assert.rejects(csvTable(new Blob(['a,b\n1,2\n1,2,3\n']), 9), (error: Error) =>
    error instanceof TableError && error.message === 'row 3 has 3 cells, the header 2');
});

test('a quote that is never closed is an error', async () => {
  await assert.rejects(csvTable(new Blob(['a,"b\n1,2\n']), 9), TableError);
});

test('all bytes are reported as read', async () => {
  let read = 0;
  const blob = new Blob(['a,b\n'.repeat(700_000)]);
  for await (const rows of csvRows(blob, (count) => { read += count; })) assert.ok(rows.length > 0);
  assert.equal(read, blob.size);
});
