// The page in Chromium over files that are large, broken or meant to harm.
import assert from 'node:assert/strict';
import { mkdirSync, readFileSync, writeFileSync } from 'node:fs';
import { join } from 'node:path';
import { test } from 'node:test';
import { pathToFileURL } from 'node:url';
import type { Page } from 'puppeteer-core';
import { inlineFolders } from '../support/inline';
import { chooseIn, drop, kPageFile, kScratch, openPage, tableOf, textOf, untilDone, withBrowser } from '../support/browser';
import {
  chainText, coefficientText, field, freshFolder, hospitalText, kHospitalHeader, kIndividualHeader, kStatisticsText, summaryText, write, writeIndividual,
} from '../support/study';

const kShots = join(kScratch, 'screenshots');
mkdirSync(kShots, { recursive: true });

const kAttacks = [
  '<script>window.harmed=1</script>', '<img src=x onerror="window.harmed=1">', '"><svg onload=window.harmed=1>',
  "javascript:window.harmed=1", '</script><script>window.harmed=1</script>', '<!--<script>', '=HYPERLINK("http://example.com";"x")',
  '{{constructor.constructor("window.harmed=1")()}}', '${window.harmed=1}', '<iframe srcdoc="<script>parent.harmed=1</script>">',
  '<style>*{display:none}</style>', '\u202Egnp.exe',
];

function writeAttacks(folder: string): void {
  const rows = '0,0.1,0.1,0,0.1,0.1,0,0.1,0';
  const chain = chainText({ draws: 200, coefficients: kAttacks.length + 1, seed: 1 });
  write(folder, 'coefficients.csv', coefficientText(['XIntercept', ...kAttacks], false, chain));
  write(folder, 'mcmc/Chain.csv', chain);
  write(folder, 'mcmc/Summary.csv', `Variable,Mean,Variance,Acceptance\n${kAttacks.map((a) => `${field(a)},${field(a)},1,${field(a)}`).join('\n')}\n`);
  write(folder, 'hospital.csv', hospitalText(kAttacks));
  write(folder, 'individual.csv', `${kIndividualHeader}\n${kAttacks.map((a) => `${field(a)},${field(a)},${rows}`).join('\n')}\n`);
  write(folder, 'cstatistics.csv', `Estimate,C-Statistics\n${kAttacks.map((a) => `${field(a)},${field(a)}`).join('\n')}\n`);
  write(folder, 'analysis.log', `Number of records: 9\nEliminating Z zero columns\nEliminating columns:\n${kAttacks.join('\n')}\nNumber of variables: 2\n`);
  write(folder, 'analysis.xml', `<Analysis><Input><Data>${kAttacks.join(' ').replace(/</g, '<x>').replace(/--/g, '')}</Data></Input></Analysis>`);
  write(folder, 'record.json', JSON.stringify({
    format: 'hovar run record', ...Object.fromEntries(kAttacks.map((a) => [a, a])),
    runs: [{ warnings: kAttacks.map((a) => ({ text: a, fit: a, count: 1 })) }],
  }));
  write(folder, '<img src=x onerror=window.harmed=1>.csv', 'a,b\n');
  write(folder, 'broken.csv', `${kHospitalHeader}\n<b>x</b>,1\n`);
}

test('markup and script in every text cell are shown as text and nothing runs', async () => {
  const folder = join(freshFolder(join(kScratch, 'attack')), '<svg onload=window.harmed=1>');
  writeAttacks(folder);
  const inlined = join(kScratch, 'attack.html');
  inlineFolders(kPageFile, [folder], inlined);
  await withBrowser(async (browser) => {
    for (const file of [kPageFile, inlined]) {
      const watched = await openPage(browser, file);
      if (file === kPageFile) await drop(watched.page, [folder]);
      await untilDone(watched.page);
      for (const label of ['Hospitals with observed and expected outcomes', 'Coefficients of the five fits', 'Coefficients of the chains']) {
        const cells = (await tableOf(watched.page, label)).map((row) => row[0]);
        for (const attack of kAttacks) assert.ok(cells.includes(attack.replace('\u202E', '\\u202e')), `${label}: ${attack}`);
      }
      // Every drawing is made and every list chosen from, then the page is looked over.
      await watched.page.evaluate(async () => {
        for (const details of document.querySelectorAll('details')) details.open = true;
        for (const section of document.querySelectorAll('#report > section')) {
          section.scrollIntoView();
          await new Promise((resolve) => setTimeout(resolve, 100));
        }
        for (const button of document.querySelectorAll<HTMLElement>('#chains .viewer button')) button.click();
      });
      const found = await watched.page.evaluate(() => ({
        harmed: 'harmed' in window,
        elements: document.querySelectorAll('#report script, #report img, #report iframe, #report [onerror], #report [onload], #report b, a[href^="javascript"]').length,
        styles: [...document.querySelectorAll('#report style')].filter((style) => style.textContent?.includes('display:none')).length,
        hidden: getComputedStyle(document.body).display,
      }));
      assert.deepEqual(found, { harmed: false, elements: 0, styles: 0, hidden: 'block' });
      assert.deepEqual(watched.complaints, []);
      assert.deepEqual(watched.requests, []);
      await watched.page.close();
    }
  });
});

test('the policy of the page stops script, markup and requests', async () => {
  await withBrowser(async (browser) => {
    const { page, requests } = await openPage(browser);
    const stopped = await page.evaluate(async () => {
      const result: Record<string, boolean> = {};
      const script = document.createElement('script');
      try {
        script.textContent = 'window.harmed = 1';
        document.body.append(script);
      } catch { /* refused at once */ }
      result.script = !('harmed' in window);
      try {
        document.body.insertAdjacentHTML('beforeend', '<b>x</b>');
        result.markup = false;
      } catch {
        result.markup = true;
      }
      result.fetch = await fetch('https://example.com/').then(() => false, () => true);
      result.picture = await new Promise<boolean>((resolve) => {
        const image = new Image();
        image.onload = () => resolve(false);
        image.onerror = () => resolve(true);
        image.src = 'https://example.com/x.png';
      });
      return result;
    });
    assert.deepEqual(stopped, { script: true, markup: true, fetch: true, picture: true });
    assert.deepEqual(requests.filter((address) => !address.startsWith('https://example.com/')), []);
  });
});

test('files that are no results, and an empty folder, are told so', async () => {
  const folder = freshFolder(join(kScratch, 'other'));
  write(folder, 'letter.txt', 'Dear all\n');
  write(folder, 'Summary.csv', '');
  await withBrowser(async (browser) => {
    const watched = await openPage(browser);
    await drop(watched.page, [folder]);
    await untilDone(watched.page);
    assert.match(await textOf(watched.page, '#verdict'), /None of these files is one that Hovar writes/);
    assert.deepEqual((await tableOf(watched.page, 'Files')).slice(1).map((row) => row[3]), ['not a file of a run', 'empty file']);
    const empty = await openPage(browser);
    await drop(empty.page, [freshFolder(join(kScratch, 'empty'))]);
    await assert.rejects(untilDone(empty.page), /there are no files in it/);
    assert.deepEqual([...watched.complaints, ...empty.complaints], []);
  });
});

const kNames = (count: number) => ['XIntercept', ...Array.from({ length: count - 1 }, (_, i) => `XVariable${i + 1}`)];

test('four chains, one of which stays apart, are judged together with their names', async () => {
  const folders = [1, 2, 3, 4].map((chain) => {
    const folder = freshFolder(join(kScratch, `chains/chain${chain}`));
    const text = chainText({ draws: 1000, coefficients: 8, seed: chain, shift: chain === 4 ? 0.1 : 0, memory: 0.3 });
    write(folder, 'coefficients.csv', coefficientText(kNames(8), false, text));
    write(folder, 'mcmc/Chain.csv', text);
    write(folder, 'mcmc/Summary.csv', summaryText(8));
    return folder;
  });
  await withBrowser(async (browser) => {
    const watched = await openPage(browser);
    await drop(watched.page, folders);
    await untilDone(watched.page);
    assert.match(await textOf(watched.page, '#verdict'), /Not yet: 1 of 8 coefficients have R.hat above 1\.01/);
    assert.match(await textOf(watched.page, '#verdict'), /XIntercept \(R.hat 1\.\d+/);
    assert.match(await textOf(watched.page, '#chains'), /4 chains with 1,000 kept draws each: chain1\/mcmc, chain2\/mcmc, chain3\/mcmc and chain4\/mcmc/);
    assert.deepEqual((await tableOf(watched.page, 'Coefficients of the chains')).slice(1).map((row) => row[0]), kNames(8));
    await watched.page.emulateMediaFeatures([{ name: 'prefers-reduced-motion', value: 'reduce' }]);
    await (await watched.page.$('#chains'))?.evaluate((element) => element.scrollIntoView());
    await new Promise((resolve) => setTimeout(resolve, 300));
    await (await watched.page.$('#chains'))?.screenshot({ path: join(kShots, 'light-four-chains.png') });
    assert.deepEqual(watched.complaints, []);
  });
});

test('chain and coefficient file of different counts are not joined, and the page says so', async () => {
  const folder = freshFolder(join(kScratch, 'counts'));
  write(folder, 'coefficients.csv', coefficientText(kNames(5)));
  write(folder, 'mcmc/Chain.csv', chainText({ draws: 100, coefficients: 4, seed: 1 }));
  await withBrowser(async (browser) => {
    const watched = await openPage(browser);
    await drop(watched.page, [folder]);
    await untilDone(watched.page);
    assert.match(await textOf(watched.page, '#chains'), /Chain\.csv has 4 columns and counts\/coefficients\.csv has 5 rows/);
    assert.deepEqual((await tableOf(watched.page, 'Coefficients of the chains')).slice(1).map((row) => row[0]),
      [0, 1, 2, 3].map((i) => `BetaYX[${i}]`));
  });
});

/**
 * The longest pause that a page may make that takes so long in all. Were files read in the page itself,
 * one pause would be most of the time. On a busy machine both grow alike.
 */
const allowedPauseMs = (done: number): number => Math.max(2000, done / 6);

/** Runs in the page: notes the longest time in which it did nothing else. */
function watchPauses(): void {
  const beat = window as unknown as { longest: number; started: number };
  let last = performance.now();
  beat.longest = 0;
  beat.started = last;
  const tick = (): void => {
    const now = performance.now();
    beat.longest = Math.max(beat.longest, now - last);
    last = now;
    setTimeout(tick, 0);
  };
  tick();
}

const pausesOf = (page: Page): Promise<{ done: number; longest: number }> => page.evaluate(() => {
  const beat = window as unknown as { longest: number; started: number };
  return { done: performance.now() - beat.started, longest: beat.longest };
});

test('a million records, 5,000 hospitals and chains of 4 x 10,000 x 60 do not freeze the page', async () => {
  const folder = freshFolder(join(kScratch, 'large'));
  writeIndividual(join(folder, 'individual.csv'), 1_000_000, 5000);
  write(folder, 'hospital.csv', hospitalText(Array.from({ length: 5000 }, (_, i) => `H${i}`)));
  write(folder, 'coefficients.csv', coefficientText(kNames(60)));
  write(folder, 'cstatistics.csv', kStatisticsText);
  for (const chain of [1, 2, 3, 4]) {
    const text = chainText({ draws: 10_000, coefficients: 60, seed: chain, memory: 0.2 });
    write(folder, `chain${chain}/Chain.csv`, text);
    write(folder, `chain${chain}/coefficients.csv`, coefficientText(kNames(60), false, text));
  }
  await withBrowser(async (browser) => {
    const watched = await openPage(browser);
    const { page } = watched;
    await page.evaluate(watchPauses);
    await drop(page, [folder]);
    await page.waitForSelector('#hospitals', { timeout: 120_000 });
    const shown = await page.evaluate(() => performance.now() - (window as unknown as { started: number }).started);
    await untilDone(page, 120_000);
    const { done, longest } = await pausesOf(page);
    console.log(`first sections after ${(shown / 1000).toFixed(1)} s, everything after ${(done / 1000).toFixed(1)} s, longest pause ${Math.round(longest)} ms`);
    assert.ok(longest < allowedPauseMs(done), `longest pause ${longest} ms`);
    assert.equal((await tableOf(page, 'Coefficients of the chains')).length - 1, 60);
    assert.match(await textOf(page, '#calibration'), /950,\d\d\d records|9\d\d,\d\d\d records/);
    await page.$eval('#hospitals', (element) => element.scrollIntoView());
    await new Promise((resolve) => setTimeout(resolve, 500));
    await page.screenshot({ path: join(kShots, 'light-large.png') });
    assert.deepEqual(watched.complaints, []);
    assert.deepEqual(watched.requests, []);
  });
});

/** A page with files whose paths are given as bytes, as `hovar --report` writes them. */
function pageWithFiles(name: string, files: { path: Buffer; parts: string[] }[]): string {
  const [before, after] = readFileSync(kPageFile, 'utf8').split('<!-- hovar:files -->');
  const elements = files.flatMap(({ path, parts }) => parts.map((part, i) => Buffer.concat([
    Buffer.from('<script type="text/hovar" data-folder="0" data-path="'), path,
    Buffer.from(`" data-part="${i}">${Buffer.from(part).toString('base64')}</script>\n`)])));
  const output = join(kScratch, name);
  const names = '<script type="application/json" id="hovar-folders">["results"]</script>\n';
  writeFileSync(output, Buffer.concat([Buffer.from(before), ...elements, Buffer.from(names), Buffer.from(after)]));
  return output;
}

test('files whose names the page cannot tell apart stay files of their own', async () => {
  const names = ['inv\xff.csv', 'inv\xfe.csv', 'a\nb.csv', 'a\r\nb.csv', 'a\rb.csv'].map((name) => Buffer.from(name, 'latin1'));
  const rows = (id: string) => [`${kHospitalHeader}\n`, `${id},100,90,80,0.1,0.1,0.1,0.1,0.1,0.1,0,0,0\n`];
  await withBrowser(async (browser) => {
    const watched = await openPage(browser, pageWithFiles('names.html', names.map((path, i) => ({ path, parts: rows(`H${i}`) }))));
    await untilDone(watched.page);
    const files = (await tableOf(watched.page, 'Files')).slice(1);
    assert.deepEqual(files.map((row) => row[1]), names.map(() => 'hospital predictions'));
    assert.deepEqual(files.map((row) => row[0]).sort(), ['a\\nb.csv', 'a\\nb.csv', 'a\\nb.csv', 'inv\uFFFD.csv', 'inv\uFFFD.csv'].map((name) => `results/${name}`).sort());
    const ids = new Set<string>();
    for (let i = 0; i < names.length; i++) {
      await chooseIn(watched.page, 'hospitals', 'File', String(i));
      const rowsShown = (await tableOf(watched.page, 'Hospitals with observed and expected outcomes')).slice(1);
      assert.equal(rowsShown.length, 1);
      ids.add(rowsShown[0][0]);
    }
    assert.deepEqual([...ids].sort(), ['H0', 'H1', 'H2', 'H3', 'H4']);
    assert.deepEqual(watched.complaints, []);
  });
});

test('a page in which a part of a file is missing says so', async () => {
  await withBrowser(async (browser) => {
    const file = pageWithFiles('missing.html', [{ path: Buffer.from('c.csv'), parts: ['a', 'b', 'c'] }]);
    writeFileSync(file, readFileSync(file, 'utf8').replace(/<script[^>]*data-part="1">[^<]*<\/script>\n/, ''));
    const watched = await openPage(browser, file);
    await assert.rejects(untilDone(watched.page), /part 1 of c\.csv is missing/);
  });
});

/** Far more than on an idle machine (7 s); with a pause of 4 ms for each file it would be 400 s and more. */
const kMostUnpackingMs = 120_000;

test('a hundred thousand files in the page are unpacked without freezing it', async () => {
  const files = Array.from({ length: 100_000 }, (_, i) => ({ path: Buffer.from(`f${i}.csv`), parts: ['a,b\n1,2\n'] }));
  const file = pageWithFiles('many.html', files);
  await withBrowser(async (browser) => {
    const page = await browser.newPage();
    await page.evaluateOnNewDocument(watchPauses);
    await page.goto(pathToFileURL(file).href, { timeout: kMostUnpackingMs });
    await untilDone(page, kMostUnpackingMs);
    const { done, longest } = await pausesOf(page);
    console.log(`100,000 files after ${(done / 1000).toFixed(1)} s, longest pause ${Math.round(longest)} ms`);
    assert.ok(done < kMostUnpackingMs && longest < allowedPauseMs(done), `${done} ms, longest pause ${longest} ms`);
    assert.match(await textOf(page, '#verdict'), /0 of 100,000 files used/);
  });
});

test('names that hide or turn what stands around them are shown as what they are', async () => {
  const folder = freshFolder(join(kScratch, 'unseen'));
  const names = ['\u202Egnp.exe', 'a\u200Bb', 'x\u2066y', '\x1b[2J\x07', 'tab\there', '\u05D0\u05D1', `z${'\u0335'.repeat(200)}`, `long${'g'.repeat(100_000)}`];
  write(folder, 'hospital.csv', hospitalText(names));
  // The browser hands out no dropped file with such a name, but a page can hold one.
  const inlined = pageWithFiles('unseen.html', [{ path: Buffer.from('\u202Evsc.csv'), parts: ['a,b\n'] }]);
  await withBrowser(async (browser) => {
    const watched = await openPage(browser);
    await drop(watched.page, [folder]);
    await untilDone(watched.page);
    const cells = (await tableOf(watched.page, 'Hospitals with observed and expected outcomes')).slice(1).map((row) => row[0]);
    assert.deepEqual(cells.slice(0, 7), ['\\u202egnp.exe', 'a\\u200bb', 'x\\u2066y', '\\x1b[2J\\x07', 'tab\\there', '\u2068\u05D0\u05D1\u2069', `z${'\u0335'.repeat(4)}…`]);
    assert.ok(cells[7].length < 20_010);
    const { text, attributes, title } = await watched.page.evaluate(() => ({
      text: document.querySelector('main')?.textContent ?? '', title: document.title,
      attributes: [...document.querySelectorAll('#report *')].flatMap((element) => [...element.attributes].map(({ value }) => value)).join(''),
    }));
    const page = await openPage(browser, inlined);
    await untilDone(page.page);
    assert.deepEqual((await tableOf(page.page, 'Files')).slice(1).map((row) => row[0]), ['results/\\u202evsc.csv']);
    for (const shown of [text, attributes, title]) assert.ok(!/[\u202E\u200B\u2066\x1b\x07]/.test(shown));
    assert.deepEqual(watched.complaints, []);
  });
});

test('files with numbers and widths that no run has are shown within bounds and without an error', async () => {
  const folder = freshFolder(join(kScratch, 'absurd'));
  const absurd = ['1e400', '-1e400', 'inf', '-inf', 'nan', '', '1e308', '-1e308', '5e-324'];
  write(folder, 'hospital.csv', `${kHospitalHeader}\n${absurd.map((value) => `${field(value)},100,90,80,${Array(9).fill(value).join(',')}`).join('\n')}\n` +
    '__proto__,1e15,1,1,0.1,0.1,0.1,0.1,0.1,0.1,0,0,0\nconstructor,100,1,1,0.1,0.1,0.1,0.1,0.1,0.1,0,0,0\n');
  write(folder, 'individual.csv', `${kIndividualHeader}\n${absurd.map((value) => `R,${field(value)},${Array(9).fill(value).join(',')}`).join('\n')}\n`);
  write(folder, 'cstatistics.csv', `Estimate,C-Statistics\n${['__proto__', 'constructor', 'toString', ...absurd].map((value) => `${value},${value}`).join('\n')}\n`);
  const draws = Array.from({ length: 40 }, (_, i) => `${i},${absurd.map((value) => value || '0').join(',')}`).join('\n');
  write(folder, 'mcmc/Chain.csv', `Step,${absurd.map((_, i) => `BetaYX[${i}]`).join(',')}\n${draws}\n`);
  const many = Array.from({ length: 20_000 }, (_, i) => `X${i}`);
  write(folder, 'coefficients.csv', coefficientText(many));
  write(folder, 'comments.xml', `${'<!-- -->'.repeat(35)}<Analysi`);
  write(folder, 'many.xml', `<Batch>${'<a>1</a>'.repeat(100_000)}</Batch>`);
  await withBrowser(async (browser) => {
    const watched = await openPage(browser);
    await drop(watched.page, [folder]);
    await untilDone(watched.page);
    await watched.page.evaluate(async () => {
      for (const details of document.querySelectorAll('details')) details.open = true;
      for (const section of document.querySelectorAll('#report > section')) {
        section.scrollIntoView();
        await new Promise((resolve) => setTimeout(resolve, 150));
      }
    });
    assert.match(await textOf(watched.page, '#verdict'), /Not judged, .*: __proto__\./);
    const statistics = (await tableOf(watched.page, 'C-statistics')).slice(1);
    assert.deepEqual(statistics.slice(0, 3).map((row) => row[1]), ['', '', '']);
    const elements = await watched.page.evaluate(() => document.querySelectorAll('*').length);
    assert.ok(elements < 60_000, `${elements} elements`);
    assert.deepEqual(watched.complaints, []);
  });
});
