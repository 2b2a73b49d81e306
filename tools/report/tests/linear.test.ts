// Readers take time that grows with the length of a file and not with its square, whatever it holds.
import assert from 'node:assert/strict';
import { test } from 'node:test';
import { CsvParser } from '../src/read/csv';
import { identify } from '../src/read/identify';
import { checkWarning, describedRecords } from '../src/read/lines';
import { readDefinition, readDescription, readLog, readRunRecord } from '../src/read/texts';
import { visible } from '../src/view/visible';
import { xmlAttribute, xmlParts, xmlRoot } from '../src/read/xml';

const kOrigin = { folder: 0, folderName: '', path: '' };
const kSmall = 1 << 14;
const kTimes = 8;
/** Longer texts are cut before they are shown. */
const kSmallShown = 2000;
/** Linear work takes kTimes as long over kTimes as much, quadratic work 64 times. */
const kMostGrowth = 3 * kTimes;

/** Milliseconds of the processor that one call takes; the shortest of several, of calls that last long enough to be measured. */
async function duration(work: () => unknown): Promise<number> {
  let best = Infinity;
  for (let round = 0; round < 3; round++) {
    const begin = process.cpuUsage();
    let calls = 0;
    let spent = 0;
    do {
      await work();
      calls++;
      const { user, system } = process.cpuUsage(begin);
      spent = (user + system) / 1000;
    } while (spent < 15);
    best = Math.min(best, spent / calls);
  }
  return best;
}

async function assertLinear(make: (size: number) => string, work: (text: string) => unknown, size = kSmall): Promise<void> {
  const [small, large] = [make(size), make(kTimes * size)];
  let growth = Infinity;
  // On a busy machine a measurement can be off; quadratic work is off each time.
  for (let attempt = 0; attempt < 3 && growth >= kMostGrowth; attempt++) {
    growth = Math.min(growth, await duration(() => work(large)) / await duration(() => work(small)));
  }
  assert.ok(growth < kMostGrowth, `${kTimes} times as much takes ${growth.toFixed(0)} times as long`);
}

const repeated = (part: string, before = '', behind = '') => (size: number) => before + part.repeat(size / part.length) + behind;

const kXml: [string, (size: number) => string][] = [
  ['comments that begin', repeated('<!--')], ['comments that begin in the root', repeated('<!-- ', '<Batch>')],
  ['instructions that begin', repeated('<?', '<Batch>')], ['elements that are not closed', repeated('<Input>')],
  ['tags that break off', repeated('<Input ')], ['declarations that begin', repeated('<!D [')],
  ['brackets', repeated('[', '<!DOCTYPE ')], ['quotes', repeated('"', '<Batch ')], ['attributes', repeated('xsi:type="', '<Batch><a ', '>')],
  ['comments', repeated('<!-- a -->', '', '<')], ['comments and blanks', repeated('<!-- a -->\n \t', '', 'x')],
  ['entities', repeated('<!ENTITY a "&b;&b;">', '<!DOCTYPE a [', ']><Batch>&a;</Batch>')], ['signs that are no tag', repeated('< ')],
];
for (const [name, make] of kXml) {
  test(`XML of ${name} is read in linear time`, async () => {
    await assertLinear(make, (text) => readDefinition(new Blob([text]), kOrigin));
    await assertLinear(make, (text) => [xmlRoot(text), [...xmlParts(text)].length, xmlAttribute(text, 'xsi:type')]);
  });
}

const kLines: [string, (size: number) => string][] = [
  ['quotes with colons', repeated('": ', '"')], ['places of warnings', repeated(':1:1: warning: ', 'a')],
  ['places of warnings of outputs', repeated(':1:1: warning: ', 'a', ' would be overwritten')], ['colons and digits', repeated(':1')],
  ['digits', repeated('1', '"a": ')], ['digits before a warning', repeated('1', ':', ': warning: ')], ['blanks', repeated(' ')],
  ['line feeds', repeated('\n')], ['carriage returns', repeated('\r')], ['commas', repeated(', ', '"')], ['missing', repeated(', missing: ', '  P = 1: ')],
  ['semicolons', repeated('; ', '    "": ')], ['quotes', repeated('"')], ['a count', repeated('9', 'Number of records: ', 'x')],
  ['names', repeated('a', 'Number of ')],
];
for (const [name, make] of kLines) {
  test(`a text of ${name} is read in linear time`, async () => {
    await assertLinear(make, (text) => [describedRecords(text), checkWarning(text)]);
    await assertLinear(make, (text) => readLog(new Blob(['Eliminating columns:\n', text]), kOrigin));
    await assertLinear(make, (text) => readDescription(new Blob(['"a": 1 record, 1 hospital, 1 variable, 1 POA indicator\n', text]), kOrigin));
  });
}

test('nested JSON is read in linear time', async () => {
  await assertLinear((size) => `{"format":"hovar run record","a":${'['.repeat(size / 2)}${']'.repeat(size / 2)}}`,
    (text) => readRunRecord(new Blob([text]), kOrigin));
});

test('a table is read in linear time however its pieces fall, also with a quote that is never closed', async () => {
  for (const make of [repeated('"a""b",c\n'), repeated('"",', '"'), repeated('a'), repeated('\n'), repeated('a,b\n', '"'), repeated('""', '"')]) {
    await assertLinear(make, (text) => {
      const parser = new CsvParser();
      for (let at = 0; at < text.length; at += 1024) parser.push(text.slice(at, at + 1024));
    });
  }
});

test('names of marks, of right-to-left letters and of unseen characters are made visible in linear time', async () => {
  for (const part of ['\u0301', '\u05D0 ', '\u05D0', '\u202E', 'a\u0301', '\u200D', '\uD800', '\u05D0\u0301 a', ' ', '\n']) {
    await assertLinear(repeated(part, 'é'), visible, kSmallShown);
  }
});

test('what a file is, is known from 35 comments and from 6,000', async () => {
  for (const count of [35, 6000]) {
    assert.equal((await identify(new Blob([`${'<!-- -->'.repeat(count)}<Batch>`]))).kind, 'definition');
    assert.equal((await identify(new Blob([`${'<!-- -->\n'.repeat(count)}<Other>`]))).kind, 'unused');
  }
});
