// The page in Chromium, over the files of real runs: the examples of the project, in the folder that
// EXAMPLES names (quickstart/results, gee/results and results-clustered, and unfit/results, where the chain and
// the predictions come from generalized estimating equations).
import assert from 'node:assert/strict';
import { mkdirSync, readFileSync, readdirSync, writeFileSync } from 'node:fs';
import { join } from 'node:path';
import { after, before, test } from 'node:test';
import type { Browser, ElementHandle } from 'puppeteer-core';
import { pathToFileURL } from 'node:url';
import Papa from 'papaparse';
import { inlineFolders } from '../support/inline';
import {
  chooseIn, drop, kPageFile, kScratch, openPage, tableOf, textOf, untilDone, withBrowser, type Watched,
} from '../support/browser';
import { freshFolder, kHospitalHeader, normalNumbers, six, write } from '../support/study';

const kExamples = process.env.EXAMPLES ?? join(kScratch, 'examples');
const kQuickstart = join(kExamples, 'quickstart/results');
const kGee = join(kExamples, 'unfit/results');
const kBoth = [join(kExamples, 'gee/results'), join(kExamples, 'gee/results-clustered')];
const kShots = join(kScratch, 'screenshots');

let browser: Browser;
let closed: Promise<void>;
let finish: () => void;

before(async () => {
  mkdirSync(kShots, { recursive: true });
  await new Promise<void>((ready) => {
    closed = withBrowser(async (opened) => {
      browser = opened;
      ready();
      await new Promise<void>((resolve) => { finish = resolve; });
    });
  });
});

after(async () => {
  finish();
  await closed;
});

const csvOf = (folder: string, name: string): string[][] =>
  (Papa.parse(readFileSync(join(folder, name), 'utf8').trimEnd(), { delimiter: ',' }).data as string[][]);

async function dropped(...folders: string[]): Promise<Watched> {
  const watched = await openPage(browser);
  await drop(watched.page, folders);
  await untilDone(watched.page);
  return watched;
}

function assertClean(watched: Watched): void {
  assert.deepEqual(watched.complaints, []);
  assert.deepEqual(watched.requests, []);
}

async function closeClean(watched: Watched): Promise<void> {
  assertClean(watched);
  await watched.page.close();
}

let shared: Promise<Watched> | undefined;

/** One page over the quick start for the tests that only read it; lists that they change they set first. */
function quickstart(): Promise<Watched> {
  shared ??= dropped(kQuickstart);
  return shared;
}

test('a folder dropped on the page opened as a file is read, without an error or a request', async () => {
  const watched = await dropped(kQuickstart);
  const sections = await watched.page.$$eval('#report > section', (all) => all.map((section) => section.id));
  assert.deepEqual(sections, ['verdict', 'hospitals', 'calibration', 'coefficients', 'chains', 'run']);
  const files = await tableOf(watched.page, 'Files');
  assert.equal(files.length - 1, 9);
  assert.ok(files.slice(1).every((row) => row[1] !== 'not used'));
  await closeClean(watched);
});

test('the hospital table has the rates of the file and their multiples', async () => {
  const watched = await quickstart();
  await chooseIn(watched.page, 'hospitals', 'Expectation', 'E[Y|X,P=0]-MCMC');
  const [, ...file] = csvOf(kQuickstart, 'hospital.csv');
  const [header, ...shown] = await tableOf(watched.page, 'Hospitals with observed and expected outcomes');
  const withoutP = csvOf(kQuickstart, 'individual.csv').filter((row) => row[8] === '').map((row) => row[1]);
  assert.equal(header[3], 'P missing');
  assert.equal(shown.length, file.length);
  for (const [i, row] of file.entries()) {
    const [id, records, complete, , , , , observed, , expected] = row;
    const cells = shown[i];
    assert.deepEqual([cells[0], cells[1], cells[2], cells[10], cells[11]], [id, records, complete, observed, expected]);
    assert.equal(Number(cells[3]), withoutP.filter((hospital) => hospital === id).length);
    const [o, e] = [Number(records) * Number(observed), Number(records) * Number(expected)];
    assert.deepEqual([cells[4], cells[5], cells[6]], [o.toFixed(1), e.toFixed(1), (o / e).toFixed(2)]);
    assert.ok(Number(cells[7]) <= o / e && o / e <= Number(cells[8]) + 0.005, `interval of ${id}`);
  }
  assertClean(watched);
});

test('another expectation shows its own columns', async () => {
  const watched = await quickstart();
  await chooseIn(watched.page, 'hospitals', 'Expectation', 'E[Y|Z]');
  const [header, ...shown] = await tableOf(watched.page, 'Hospitals with observed and expected outcomes');
  assert.deepEqual(header.slice(10), ['Y', 'E[Y|Z]']);
  const [, ...file] = csvOf(kQuickstart, 'hospital.csv');
  assert.deepEqual(shown.map((row) => row.slice(10)), file.map((row) => [row[4], row[5]]));
  assertClean(watched);
});

test('the coefficient table has the estimates and standard errors of the file', async () => {
  for (const [folder, error] of [[kQuickstart, 0], [kGee, 1]] as const) {
    const watched = await dropped(folder);
    const [, ...file] = csvOf(folder, 'coefficients.csv');
    const [, ...shown] = await tableOf(watched.page, 'Coefficients of the five fits');
    assert.deepEqual(shown.map((row) => row[0]), file.map((row) => row[0]));
    for (const [i, row] of file.entries()) {
      for (let block = 0; block < 5; block++) {
        const [estimate, standardError] = [row[6 + 3 * block], row[7 + 3 * block + error]];
        assert.deepEqual(shown[i].slice(1 + 4 * block, 3 + 4 * block), [estimate, standardError]);
        const lower = Number(estimate) - 1.959963984540054 * Number(standardError);
        assert.ok(Math.abs(Number(shown[i][3 + 4 * block]) - lower) <= 0.005 * Math.abs(lower) + 1e-9);
      }
    }
    await closeClean(watched);
  }
});

test('the summary is shown as written and agrees with what the page computes from the chain', async () => {
  const watched = await quickstart();
  const file = csvOf(kQuickstart, 'mcmc/Summary.csv');
  assert.deepEqual(await tableOf(watched.page, 'results/mcmc/Summary.csv'), file);
  const [, ...shown] = await tableOf(watched.page, 'Coefficients of the chains');
  const names = csvOf(kQuickstart, 'coefficients.csv').slice(1).map((row) => row[0]);
  assert.deepEqual(shown.map((row) => row[0]), names);
  for (const [i, [variable, mean, variance]] of file.slice(2).entries()) {
    assert.equal(shown[i][1], variable);
    assert.ok(Math.abs(Number(shown[i][2]) - Number(mean)) <= 1e-4 * Math.max(1, Math.abs(Number(mean))), variable);
    assert.ok(Math.abs(Number(shown[i][3]) - Math.sqrt(Number(variance))) <= 1e-3 * Math.sqrt(Number(variance)), variable);
  }
  assertClean(watched);
});

test('C-statistics are those of the file, and the page finds the same from known values', async () => {
  const watched = await quickstart();
  const [, ...file] = csvOf(kQuickstart, 'cstatistics.csv');
  const [, ...shown] = await tableOf(watched.page, 'C-statistics');
  assert.deepEqual(shown.map((row) => [row[0], row[2]]), file);
  // Y is always known, so these two are the same calculation from numbers of six digits.
  for (const row of shown.slice(0, 2)) assert.ok(Math.abs(Number(row[2]) - Number(row[3])) < 2e-5, row.join(' '));
  assertClean(watched);
});

test('a statistic that is 1 by design is not put in words', async () => {
  // E[P|YPXZ] of a known P is P itself.
  const watched = await quickstart();
  const [, ...shown] = await tableOf(watched.page, 'C-statistics');
  const words = new Map(shown.map((row) => [row[0], row[row.length - 1]]));
  assert.equal(words.get('E[P|YPXZ]'), '');
  assert.notEqual(words.get('E[P|X]'), '');
  assertClean(watched);
});

test('the calibration counts every record', async () => {
  const watched = await quickstart();
  await chooseIn(watched.page, 'calibration', 'Prediction', 'E[Y|X]');
  const [, ...shown] = await tableOf(watched.page, 'The same in numbers: tenths of the records by prediction');
  const [, ...file] = csvOf(kQuickstart, 'individual.csv');
  const counts = shown.map((row) => Number(row[1].replace(',', '')));
  assert.equal(counts.reduce((sum, count) => sum + count, 0), file.length);
  const observed = shown.reduce((sum, row, i) => sum + counts[i] * Number(row[3]), 0);
  assert.ok(Math.abs(observed - file.reduce((sum, row) => sum + Number(row[2]), 0)) < 0.5);
  assertClean(watched);
});

test('with estimating equations the fourth block is the expectation, and the page says why', async () => {
  const watched = await dropped(kGee);
  const chosen = await watched.page.$eval('#hospitals select', (select) => (select as HTMLSelectElement).value);
  assert.equal(chosen, 'E[Y|X,P=0]');
  assert.match(await textOf(watched.page, '#hospitals'), /fifth block .* not fit for inference\. So the fourth block/);
  assert.match(await textOf(watched.page, '#coefficients'), /fifth block is not fit for inference/);
  await closeClean(watched);
});

test('with estimating equations no label is Good, and no statement contradicts another', async () => {
  const watched = await dropped(kGee);
  const text = await textOf(watched.page, '#verdict');
  assert.match(text, /Not fit for inference: with generalized estimating equations/);
  assert.match(text, /The ratios are not fit for inference/);
  assert.match(text, /P is missing in 24 records and was filled in by the fifth block, which is not fit, so neither are .* observed counts E\[Y\|P=0\]/);
  assert.doesNotMatch(text, /\bGood\b|rates agree\.|converged/);
  assert.equal(await watched.page.$$eval('.tile.good', (tiles) => tiles.length), 0);
  assert.match(await textOf(watched.page, '#calibration'), /so neither are .* observed counts/);
  assert.doesNotMatch(await textOf(watched.page, '#chains'), /Reaches the thresholds|Does not reach/);
  await closeClean(watched);
});

test('with both runs dropped the predictions are those of the run without estimating equations', async () => {
  const watched = await dropped(...kBoth);
  assert.equal(await watched.page.$eval('#hospitals select', (select) => (select as HTMLSelectElement).value), 'E[Y|X,P=0]-MCMC');
  const text = await textOf(watched.page, '#verdict');
  assert.doesNotMatch(text, /not fit for inference/i);
  assert.match(text, /\bGood\b/);
  await closeClean(watched);
});

test('a page with the files in it shows the same as dropped files, also in small parts', async () => {
  const inlined = join(kScratch, 'inlined.html');
  inlineFolders(kPageFile, [kQuickstart], inlined, 1000);
  const watched = await openPage(browser, inlined);
  await untilDone(watched.page);
  const same = await dropped(kQuickstart);
  for (const label of ['Hospitals with observed and expected outcomes', 'Coefficients of the five fits', 'Coefficients of the chains', 'Files']) {
    assert.deepEqual(await tableOf(watched.page, label), await tableOf(same.page, label));
  }
  assert.equal(await watched.page.$$eval('script[type="text/hovar"]', (all) => all.length), 0);
  await closeClean(watched);
  await closeClean(same);
});

test('a picked folder and picked files are read', async () => {
  const names = readdirSync(kQuickstart, { recursive: true, withFileTypes: true }).filter((e) => e.isFile())
    .map((e) => join(e.parentPath, e.name));
  for (const [input, paths] of [['#folder-input', [kQuickstart]], ['#files-input', names]] as const) {
    const watched = await openPage(browser);
    const element = (await watched.page.$(input)) as ElementHandle<HTMLInputElement> | null;
    await element?.uploadFile(...paths);
    await untilDone(watched.page);
    assert.equal((await tableOf(watched.page, 'Files')).length - 1, 9, input);
    assert.equal((await tableOf(watched.page, 'Coefficients of the chains'))[1][0], 'XIntercept', input);
    await closeClean(watched as Watched);
  }
});

// Other browsers list a dropped folder through entries alone. Chromium lists entries only for a page that
// comes from an address; it stands in here without any server.
test('a dropped folder is read through entries where there are no handles', async () => {
  const page = await browser.newPage();
  await page.setRequestInterception(true);
  page.on('request', (request) => {
    if (request.url() === 'http://report.invalid/') void request.respond({ contentType: 'text/html', body: readFileSync(kPageFile) });
    else void request.continue();
  });
  await page.evaluateOnNewDocument(() => { Reflect.deleteProperty(DataTransferItem.prototype, 'getAsFileSystemHandle'); });
  await page.goto('http://report.invalid/');
  await drop(page, [kQuickstart]);
  await untilDone(page);
  assert.equal((await tableOf(page, 'Files')).length - 1, 9);
  await page.close();
});

test('a browser without workers shows the same', async () => {
  const page = await browser.newPage();
  await page.evaluateOnNewDocument(() => { Object.assign(window, { Worker: undefined }); });
  await page.goto(pathToFileURL(kPageFile).href);
  await drop(page, [kQuickstart]);
  await untilDone(page);
  const watched = await dropped(kQuickstart);
  for (const label of ['Hospitals with observed and expected outcomes', 'Coefficients of the chains']) {
    assert.deepEqual(await tableOf(page, label), await tableOf(watched.page, label));
  }
  await page.close();
  await closeClean(watched);
});

test('a second drop replaces the first', async () => {
  const watched = await dropped(kQuickstart);
  await drop(watched.page, [kGee]);
  await watched.page.waitForFunction(() => document.querySelectorAll('#coefficients tbody tr').length === 7);
  await untilDone(watched.page);
  assert.equal((await tableOf(watched.page, 'Coefficients of the chains')).length - 1, 7);
  await closeClean(watched);
});

test('search narrows the table and rings the hospital; sorting works from the keyboard', async () => {
  const watched = await quickstart();
  const { page } = watched;
  await page.type('#hospitals input[type="search"]', 'h000');
  assert.equal((await tableOf(page, 'Hospitals with observed and expected outcomes')).length - 1, 9);
  await page.type('#hospitals input[type="search"]', '2');
  const one = await tableOf(page, 'Hospitals with observed and expected outcomes');
  assert.deepEqual(one.slice(1).map((row) => row[0]), ['H0002']);
  await page.$eval('#hospitals input[type="search"]', (input) => {
    (input as HTMLInputElement).value = '';
    input.dispatchEvent(new Event('input'));
  });
  const ratio = (await page.$$('#hospitals thead tr:last-child button'))[5];
  await ratio.focus();
  await page.keyboard.press('Enter');
  await page.keyboard.press('Enter');
  const sorted = (await tableOf(page, 'Hospitals with observed and expected outcomes')).slice(1).map((row) => Number(row[5]));
  assert.deepEqual(sorted, [...sorted].sort((a, b) => b - a));
  assert.equal(await page.$eval('#hospitals thead tr:last-child th:nth-child(6)', (th) => th.getAttribute('aria-sort')), 'descending');
  assertClean(watched);
});

test('everything that acts can be reached by the Tab key and has a name', async () => {
  const watched = await dropped(kQuickstart);
  const { page } = watched;
  const problems = await page.evaluate(() => {
    const nameOf = (e: Element) => e.getAttribute('aria-label') || e.textContent?.trim() || e.closest('label')?.textContent?.trim() || '';
    const visible = (e: Element) => (e as HTMLElement).offsetParent !== null;
    const acting = [...document.querySelectorAll('button, a, select, input, summary, [tabindex="0"]')].filter(visible);
    const drawings = [...document.querySelectorAll('svg[role="img"], .plot svg, .plot [role="img"]')].filter((e) => !e.parentElement?.closest('svg') && !e.closest('.plot [role="img"] *'));
    return [
      ...acting.filter((e) => (e as HTMLElement).tabIndex < 0 || nameOf(e) === '').map((e) => e.outerHTML.slice(0, 80)),
      ...drawings.filter((e) => !e.getAttribute('aria-label')).map((e) => `no text: ${e.outerHTML.slice(0, 80)}`),
    ];
  });
  assert.deepEqual(problems, []);
  await page.evaluate(() => (document.activeElement as HTMLElement | null)?.blur());
  await page.keyboard.press('Tab');
  assert.equal(await page.evaluate(() => document.activeElement?.className), 'skip');
  await page.keyboard.press('Enter');
  assert.equal(await page.evaluate(() => document.activeElement?.id), 'content');
  await closeClean(watched);
});

test('headings follow each other without a gap and every section is named', async () => {
  const watched = await quickstart();
  const levels = await watched.page.$$eval('#report h1, #report h2, #report h3', (all) => all.map((heading) => Number(heading.tagName[1])));
  levels.forEach((level, i) => assert.ok(i === 0 || level <= levels[i - 1] + 1, levels.join(' ')));
  assert.equal(await watched.page.$$eval('#report > section:not([aria-labelledby])', (all) => all.length), 0);
  assertClean(watched);
});

test('an Analysis alone and a Prediction alone show what they have', async () => {
  const only = (names: string[]) => names.map((name) => join(kQuickstart, name));
  const analysis = await dropped(...only(['coefficients.csv', 'mcmc', 'analysis.log']));
  assert.deepEqual(await analysis.page.$$eval('#report > section', (all) => all.map((s) => s.id)), ['verdict', 'coefficients', 'chains', 'run']);
  await closeClean(analysis);
  const prediction = await dropped(...only(['individual.csv', 'hospital.csv', 'prediction.log']));
  assert.deepEqual(await prediction.page.$$eval('#report > section', (all) => all.map((s) => s.id)), ['verdict', 'hospitals', 'calibration', 'run']);
  await closeClean(prediction);
});

test('individual predictions alone give the hospitals of the hospital file', async () => {
  const watched = await dropped(join(kQuickstart, 'individual.csv'));
  const [, ...shown] = await tableOf(watched.page, 'Hospitals with observed and expected outcomes');
  const [, ...file] = csvOf(kQuickstart, 'hospital.csv');
  for (const [i, row] of shown.entries()) {
    assert.equal(row[0], file[i][0]);
    assert.ok(Math.abs(Number(row[9]) - Number(file[i][7])) < 2e-6, row.join(' '));
    assert.ok(Math.abs(Number(row[10]) - Number(file[i][9])) < 2e-6, row.join(' '));
  }
  await closeClean(watched);
});

/** Forty hospitals, most near 1; three that differ, and two tiny ones with many outcomes. */
function writeOutliers(): string {
  const folder = join(freshFolder(join(kScratch, 'outliers')), 'results');
  const normal = normalNumbers(12);
  const row = (id: string, records: number, ratio: number) => {
    const [observed, expected] = [Math.max(0, 0.05 * ratio), 0.05].map(six);
    return `${id},${records},${records},${records},${observed},${expected},${expected},${observed},${expected},${expected},0,0,0`;
  };
  const usual = Array.from({ length: 35 }, (_, i) => {
    const records = 200 + 40 * i;
    return row(`H${i + 1}`, records, 1 + 0.2 * normal() + normal() * Math.sqrt(0.95 / (0.05 * records)));
  });
  write(folder, 'hospital.csv', [kHospitalHeader, ...usual, row('Far', 1500, 1.9), row('Farther', 900, 2.2), row('Low', 1300, 0.35),
    row('Tiny', 5, 8), row('Smallest', 4, 5), ''].join('\n'));
  return folder;
}

const kHospitals = 'Hospitals with observed and expected outcomes';
const kWarnOrBad = /--(warn|bad)/;

/** Positions in the table, coloured bars of the caterpillar, the verdict on hospitals. */
async function judgedAs(page: Watched['page']): Promise<{ outside: number; coloured: number; verdict: string }> {
  const outside = (await tableOf(page, kHospitals)).slice(1).filter((row) => row[8] !== 'within 95 %').length;
  const colours = await page.$$eval('#hospitals svg[aria-label^="Caterpillar"] g[aria-label="rule"] line', (lines) =>
    lines.map((line) => line.getAttribute('stroke') ?? ''));
  const verdict = await page.$$eval('#verdict .finding', (all) =>
    (all as HTMLElement[]).find((finding) => finding.innerText.startsWith('Which hospitals'))?.innerText ?? '');
  return { outside, coloured: colours.filter((colour) => kWarnOrBad.test(colour)).length, verdict };
}

test('the box that widens the limits governs drawings, table and verdict', async () => {
  const watched = await dropped(writeOutliers());
  const { page } = watched;
  const tick = () => page.$eval('#hospitals input[type="checkbox"]', (box) => (box as HTMLInputElement).click());
  await page.waitForSelector('#hospitals svg[aria-label^="Caterpillar"] g[aria-label="rule"] line');
  const chance = await judgedAs(page);
  assert.equal(chance.coloured, chance.outside);
  assert.doesNotMatch(chance.verdict, /widened/);
  assert.match(await textOf(page, '#hospitals'), /differ by more than chance explains .*The limits are those of chance alone/s);
  await tick();
  const wide = await judgedAs(page);
  assert.ok(wide.outside < chance.outside, `${wide.outside} of ${chance.outside}`);
  assert.equal(wide.coloured, wide.outside);
  const [, far, near] = /(\d+) of 40 lies? outside the widened 99\.8 % limits, (\d+) more/.exec(wide.verdict) ?? [];
  assert.equal(Number(far) + Number(near), wide.outside, wide.verdict);
  assert.match(await textOf(page, '#hospitals'), /limits are widened by tau .*drawings, table and verdict follow/);
  await page.$eval('#hospitals', (section) => section.scrollIntoView());
  await (await page.$('#hospitals'))?.screenshot({ path: join(kShots, 'outliers-widened.png') });
  await (await page.$('#verdict'))?.screenshot({ path: join(kShots, 'outliers-verdict-widened.png') });
  await tick();
  assert.deepEqual(await judgedAs(page), chance);
  await (await page.$('#hospitals'))?.screenshot({ path: join(kShots, 'outliers.png') });
  await closeClean(watched);
});

test('what leaves the drawing at the top has an arrow there', async () => {
  const watched = await dropped(writeOutliers());
  const { page } = watched;
  await page.waitForSelector('#hospitals svg[aria-label^="Caterpillar"] g[aria-label="rule"] line');
  const drawing = (name: string) => page.$eval(`#hospitals svg[aria-label^="${name}"]`, (svg) => ({
    label: svg.getAttribute('aria-label') ?? '',
    arrows: [...svg.querySelectorAll('g.beyond text')].length,
    points: [...svg.querySelectorAll('g[aria-label="dot"] path')].length,
    above: [...svg.querySelectorAll('path, line')].filter((shape) => shape.getBoundingClientRect().bottom < svg.getBoundingClientRect().top).length,
  }));
  for (const name of ['Funnel', 'Caterpillar']) {
    const [title, arrows] = await page.$eval(`#hospitals svg[aria-label^="${name}"]`, (svg) => [
      Math.max(...[...svg.querySelectorAll('text')].filter((text) => text.textContent?.includes('Observed / expected'))
        .map((text) => text.getBoundingClientRect().bottom)),
      Math.min(...[...svg.querySelectorAll('g.beyond text')].map((text) => text.getBoundingClientRect().top)),
    ]);
    assert.ok(title <= arrows, `${name}: the arrows begin at ${arrows}, the title of the axis ends at ${title}`);
  }
  const table = (await tableOf(page, kHospitals)).slice(1);
  assert.deepEqual(table.filter((row) => Number(row[5]) > 4).map((row) => row[0]), ['Tiny', 'Smallest']);
  const [funnel, caterpillar] = [await drawing('Funnel'), await drawing('Caterpillar')];
  assert.match(funnel.label, /2 ratios beyond the upper edge, marked by arrows/);
  // Both stand at nearly the same expected number and share an arrow.
  assert.deepEqual([funnel.arrows, funnel.points, funnel.above], [1, 40, 0]);
  assert.match(caterpillar.label, /2 intervals beyond the upper edge, marked by arrows/);
  assert.deepEqual([caterpillar.arrows, caterpillar.points, caterpillar.above], [2, 40, 0]);
  assert.match(await textOf(page, '#hospitals'), /An arrow at the upper edge: the interval goes on beyond/);
  await closeClean(watched);
  const none = await quickstart();
  assert.equal(await none.page.$$eval('#hospitals svg[aria-label^="Funnel"] g.beyond text', (all) => all.length), 0);
});

test('one chain is counted as one', async () => {
  const watched = await quickstart();
  assert.match(await textOf(watched.page, '#chains'), /^1 chain with [\d,]+ kept draws: /m);
  assert.doesNotMatch(await textOf(watched.page, '#chains'), /1 chain with .* each/);
  assertClean(watched);
});

test('a ratio of 1 is explained by all patients together', async () => {
  const watched = await quickstart();
  const lead = await textOf(watched.page, '#hospitals .lead');
  assert.match(lead, /1 is what the hospital’s patients would have had with the outcomes of all patients taken together\./);
  assert.match(lead, /two ratios do not compare two hospitals/);
  assertClean(watched);
});

test('a description of the data dropped with the folder gives the missing cells', async () => {
  const file = join(freshFolder(join(kScratch, 'described')), 'data.txt');
  writeFileSync(file, '"data.csv": 5000 records, 25 hospitals, 2 variables, 2 POA indicators\n' +
    '  P = 1: 257 (5.43 % of the known), missing: 500 (10.00 %)\n    "ZA", "XA": 29.08 %; 24.50 %; 4.00 %\n    "ZB", "XB": 6.62 %; 6.36 %; 7.00 %\n');
  const without = await quickstart();
  assert.match(await textOf(without.page, '#verdict'), /Between 3\.\d % and 3\d\.\d % of the cells are missing \(X of 10 variables, and P/);
  const watched = await dropped(kQuickstart, file);
  assert.match(await textOf(watched.page, '#verdict'), /\b7\.0 % of the cells are missing \(X of 2 variables, and P/);
  assert.ok((await tableOf(watched.page, 'Files')).some((row) => row[0] === 'data.txt' && row[1] === 'description of the data'));
  await closeClean(watched);
});

test('a table is saved as CSV', async () => {
  const watched = await quickstart();
  const folder = freshFolder(join(kScratch, 'downloads'));
  const session = await watched.page.createCDPSession();
  await session.send('Browser.setDownloadBehavior', { behavior: 'allow', downloadPath: folder });
  await watched.page.evaluate(() => {
    const buttons = [...document.querySelectorAll<HTMLElement>('#hospitals .table-foot button')];
    buttons.find((button) => button.textContent === 'Download as CSV')?.click();
  });
  for (let tries = 0; !readdirSync(folder).includes('hospitals.csv'); tries++) {
    assert.ok(tries < 100, 'no download');
    await new Promise((resolve) => setTimeout(resolve, 100));
  }
  const [, ...saved] = csvOf(folder, 'hospitals.csv');
  const [, ...shown] = await tableOf(watched.page, 'Hospitals with observed and expected outcomes');
  assert.equal(saved.length, csvOf(kQuickstart, 'hospital.csv').length - 1);
  assert.deepEqual(saved, shown);
  assertClean(watched);
});

test('prints in light colours with every drawing made', async () => {
  const watched = await dropped(kQuickstart);
  await watched.page.emulateMediaFeatures([{ name: 'prefers-color-scheme', value: 'dark' }]);
  await watched.page.evaluate(() => {
    addEventListener('beforeprint', () => {
      document.body.dataset.printed = [getComputedStyle(document.documentElement).getPropertyValue('--paper').trim(),
        [...document.querySelectorAll('.plot')].filter((plot) => plot.childElementCount === 0).length].join(' ');
    });
  });
  const pdf = await watched.page.pdf({ path: join(kShots, 'print.pdf'), preferCSSPageSize: true, printBackground: true });
  assert.ok(pdf.length > 20_000);
  assert.equal(await watched.page.evaluate(() => document.body.dataset.printed), '#ffffff 0');
  await closeClean(watched);
});

for (const [name, width, scheme] of [['light', 1280, 'light'], ['dark', 1280, 'dark'], ['narrow', 390, 'light']] as const) {
  test(`nothing sticks out of a ${name} screen; pictures are taken`, async () => {
    for (const [study, folder] of [['quickstart', kQuickstart], ['gee', kGee]] as const) {
      const watched = await openPage(browser);
      const { page } = watched;
      await page.setViewport({ width, height: 900 });
      await page.emulateMediaFeatures([{ name: 'prefers-color-scheme', value: scheme }, { name: 'prefers-reduced-motion', value: 'reduce' }]);
      if (study === 'quickstart') await page.screenshot({ path: join(kShots, `${name}-empty.png`) });
      await drop(page, [folder]);
      await untilDone(page);
      for (const section of await page.$$('#report > section')) {
        await section.evaluate((element) => element.scrollIntoView());
        await page.evaluate(() => new Promise((resolve) => requestAnimationFrame(() => requestAnimationFrame(resolve))));
        const id = await section.evaluate((element) => element.id);
        await section.screenshot({ path: join(kShots, `${name}-${study}-${id}.png`) });
      }
      const [content, screen] = await page.evaluate(() => [document.documentElement.scrollWidth, innerWidth]);
      assert.ok(content <= screen, `${study}: ${content} of ${screen} pixels`);
      await closeClean(watched);
    }
  });
}
