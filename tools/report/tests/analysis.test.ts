// What the page concludes: groups of chains, ratios of hospitals, the verdict.
import assert from 'node:assert/strict';
import { test } from 'node:test';
import { groupChains } from '../src/analysis/chain_groups';
import { diagnose } from '../src/analysis/diagnostics';
import { usesGee } from '../src/analysis/estimating_equations';
import { defaultExpectation, funnelCurves, heterogeneityText, judgeHospitals, pairOf } from '../src/analysis/hospital_ratios';
import { convergenceFinding, fitFinding, hospitalFinding, missingFinding, runFinding } from '../src/analysis/verdict';
import type { Report, SourceFile } from '../src/model';
import { loadReport } from '../src/read/load';
import { chainText, coefficientText, hospitalText, kHospitalHeader, kIndividualHeader, kStatisticsText, normalNumbers, type ChainShape } from './support/study';

const kNames = ['XIntercept', 'XA', 'XB'];

function source(folder: number, path: string, text: string): SourceFile {
  return { folder, folderName: `run${folder}`, path, content: new Blob([text]) };
}

const load = (...files: SourceFile[]): Promise<Report> => loadReport(files, () => {});

function chain(folder: number, shape: Partial<ChainShape> = {}, path = 'mcmc/Chain.csv'): SourceFile {
  return source(folder, path, chainText({ draws: 500, coefficients: 3, seed: folder + 1, ...shape }));
}

/** The coefficient file that the run of a chain writes. */
const ofChain = async (chainFile: SourceFile, path: string, names = kNames, gee = false): Promise<SourceFile> =>
  source(chainFile.folder, path, coefficientText(names, gee, await new Blob([chainFile.content]).text()));

const judged = async (report: Report) =>
  Promise.all(groupChains(report).map((group) => diagnose(report, group, () => {})));

test('chains of several folders with the same variables are judged together', async () => {
  const chains = [0, 1, 2].map((folder) => chain(folder));
  const report = await load(...chains, ...await Promise.all(chains.map((one) => ofChain(one, 'coefficients.csv'))));
  const groups = groupChains(report);
  assert.equal(groups.length, 1);
  assert.deepEqual(groups[0].chains, [0, 1, 2]);
  assert.deepEqual(groups[0].names, kNames);
  assert.equal(groups[0].note, '');
});

test('chains of different variables are judged apart', async () => {
  const report = await load(chain(0), await ofChain(chain(0), 'coefficients.csv'),
    chain(1), await ofChain(chain(1), 'coefficients.csv', ['XIntercept', 'XA', 'XOther']));
  assert.equal(groupChains(report).length, 2);
});

test('with different counts the columns get no names, and the note says why', async () => {
  const report = await load(chain(0), source(0, 'coefficients.csv', coefficientText([...kNames, 'XC'])));
  const [group] = groupChains(report);
  assert.deepEqual(group.names, []);
  assert.match(group.note, /Chain\.csv has 3 columns and run0\/coefficients\.csv has 4 rows/);
});

test('a chain takes its names from the nearest folder above', async () => {
  const report = await load(
    await ofChain(chain(0), 'coefficients.csv', ['X0', 'X1', 'X2']), await ofChain(chain(0), 'deep/c.csv'), chain(0, {}, 'deep/mcmc/Chain.csv'));
  assert.deepEqual(groupChains(report)[0].names, kNames);
});

test('a chain without a coefficient file joins the only group of its width', async () => {
  const report = await load(chain(0), await ofChain(chain(0), 'c.csv'),
    await ofChain(chain(1, { coefficients: 4 }), 'c.csv', [...kNames, 'XC']), chain(2), chain(1, { coefficients: 4 }));
  assert.deepEqual(groupChains(report).map((group) => group.columns.length), [3, 4]);
  assert.equal(groupChains(report)[0].chains.length, 2);
});

/** The definition of an Analysis as far as it concerns its chain. */
const definitionText = (folder: string, chains: string, gee: boolean): string =>
  `<Analysis>\n<Output>\n<Folder>${folder}</Folder>\n<McmcSubFolder>${chains}</McmcSubFolder>\n</Output>\n<Regression>\n` +
  `<UseGeneralizedEstimatingEquations>${gee}</UseGeneralizedEstimatingEquations>\n</Regression>\n</Analysis>\n`;

const [kSound, kUnsound] = [chain(0, {}, 'mf/Chain.csv'), chain(0, { seed: 8 }, 'mt/Chain.csv')];

test('two runs in one folder: each chain is joined to the file that holds its means', async () => {
  for (const [sound, unsound] of [['a_coef.csv', 'b_coef.csv'], ['b_coef.csv', 'a_coef.csv']]) {
    const groups = groupChains(await load(kSound, kUnsound, await ofChain(kSound, sound), await ofChain(kUnsound, unsound, kNames, true)));
    assert.deepEqual(groups.map((group) => [group.chains, group.gee, group.names, group.note]),
      [[[0], false, kNames, ''], [[1], true, kNames, '']]);
  }
});

test('means and block agree to the six digits written, whatever the size of the draws', async () => {
  // The mean of the draws as written is 1.25e-6. Of the draws before they were rounded, 0.3000004 and
  // -0.3 + 0.0000025 for example, it can be 0.5e-6 more, and not a thousandth.
  const draws = 'Step,BetaYX[0]\n1,0.3\n2,-0.2999975\n';
  const namesWith = async (estimate: string) => groupChains(await load(source(0, 'mcmc/Chain.csv', draws),
    source(0, 'c.csv', coefficientText(['XIntercept'], false, `Step,BetaYX[0]\n1,${estimate}\n`))))[0].names;
  for (const estimate of ['1.25e-06', '1.7e-06', '8e-07']) assert.deepEqual(await namesWith(estimate), ['XIntercept'], estimate);
  for (const estimate of ['0.001', '-2e-06', 'nan']) assert.deepEqual(await namesWith(estimate), [], estimate);
});

test('a coefficient file of another run than the chain gives no names, and the note says so', async () => {
  const [group] = groupChains(await load(kSound, await ofChain(kUnsound, 'coefficients.csv')));
  assert.deepEqual(group.names, []);
  assert.match(group.note, /^The means of the draws of run0\/mf\/Chain\.csv are not the fifth block of run0\/coefficients\.csv/);
  const [ofTwo] = groupChains(await load(kSound, await ofChain(kUnsound, 'a.csv'), await ofChain(kUnsound, 'b.csv', kNames, true)));
  assert.match(ofTwo.note, /not the fifth block of any of 2 coefficient files/);
  assert.equal(ofTwo.gee, true);
});

test('a chain is unfit too where the definition that names its folder has the flag', async () => {
  const geeWith = async (definition: string) => groupChains(await load(kSound, await ofChain(kSound, 'c.csv'),
    source(0, 'a.xml', definition)))[0].gee;
  assert.equal(await geeWith(definitionText('run0', 'mf', true)), true);
  assert.equal(await geeWith(definitionText('.\\out\\run0\\', 'mf', true)), true);
  assert.equal(await geeWith(definitionText('run0', 'mf', false)), false);
  assert.equal(await geeWith(definitionText('run0', 'mt', true)), false);
  assert.equal(await geeWith(definitionText('run1', 'mf', true)), false);
});

test('four independent chains have converged', async () => {
  const report = await load(...[0, 1, 2, 3].map((folder) => chain(folder)), await ofChain(chain(0), 'c.csv'));
  const finding = convergenceFinding(report, await judged(report));
  assert.equal(finding?.level, 'good');
  assert.match(finding?.answer ?? '', /^Yes\. In 4 chains all 3 coefficients/);
});

test('a chain that stays apart is named with what to do', async () => {
  const report = await load(...[0, 1, 2].map((folder) => chain(folder)), chain(3, { shift: 0.5 }), await ofChain(chain(0), 'c.csv'));
  const finding = convergenceFinding(report, await judged(report));
  assert.equal(finding?.level, 'act');
  assert.match(finding?.answer ?? '', /1 of 3 coefficients have R-hat above 1\.01/);
  assert.match(finding?.details.join(' ') ?? '', /XIntercept \(R-hat [1-9]/);
  assert.match(finding?.details.join(' ') ?? '', /raise Burnin and Steps/);
});

test('one chain is never called converged without a remark', async () => {
  const report = await load(chain(0, { draws: 4000 }));
  const finding = convergenceFinding(report, await judged(report));
  assert.equal(finding?.level, 'look');
  assert.match(finding?.details.join(' ') ?? '', /One chain cannot show/);
});

test('a chain that repeats the draws of another is told and not judged', async () => {
  const report = await load(chain(0, { seed: 9 }), chain(1, { seed: 9 }), chain(2));
  const [group] = await judged(report);
  assert.deepEqual(group.repeated, [[0, 1]]);
  assert.deepEqual(group.group.chains, [0, 2]);
  const [without] = await judged(await load(chain(0, { seed: 9 }), chain(2)));
  assert.deepEqual(group.summaries, without.summaries);
  assert.match(convergenceFinding(report, [group])?.details.join(' ') ?? '', /same draws as another.*: run1\/mcmc \(as run0\/mcmc\)/);
});

test('what stands on top of a folder comes first', async () => {
  const report = await load(source(0, 'chain-10/c.csv', coefficientText(kNames)), source(0, 'chain-9/c.csv', coefficientText(kNames)),
    source(0, 'coefficients.csv', coefficientText(kNames)));
  assert.deepEqual(report.coefficients.map((file) => file.origin.path), ['coefficients.csv', 'chain-9/c.csv', 'chain-10/c.csv']);
});

test('chains of different lengths are cut to the shortest', async () => {
  const report = await load(chain(0, { draws: 500 }), chain(1, { draws: 300 }));
  const [group] = await judged(report);
  assert.equal(group.draws, 300);
  assert.ok(group.cut);
});

test('a chain with its header alone cannot be judged', async () => {
  const report = await load(chain(0, { draws: 0 }));
  assert.match(convergenceFinding(report, await judged(report))?.answer ?? '', /^Cannot be judged: 0 kept draws a chain, and at least 8 are needed/);
});

test('the fifth block with ese and no mse tells of estimating equations and changes the expectation', async () => {
  const [plain, gee] = [await load(source(0, 'c', coefficientText(kNames))), await load(source(0, 'c', coefficientText(kNames, true)))];
  assert.equal(usesGee(plain.coefficients[0]), false);
  assert.equal(usesGee(gee.coefficients[0]), true);
  assert.equal(defaultExpectation(plain).column, 'E[Y|X,P=0]-MCMC');
  assert.equal(defaultExpectation(gee).column, 'E[Y|X,P=0]');
  assert.match(defaultExpectation(gee).reason, /fifth block .* not fit for inference\. So the fourth block, E\[Y\|X,P=0\], is the expectation here\.$/);
});

test('counts are records times means, and cases those that are not present on admission', async () => {
  const row = 'A,200,150,120,0.25,0.2,0.25,0.15,0.1,0.12,0.1,0.1,0.1';
  const report = await load(source(0, 'h', `${kHospitalHeader}\n${row}\n`));
  const inHospital = judgeHospitals(report.hospitals[0], pairOf('E[Y|X,P=0]-MCMC'), false).ratios[0];
  assert.equal(inHospital.observed, 30);
  assert.equal(inHospital.expected, 24);
  assert.equal(inHospital.ratio, 1.25);
  assert.equal(inHospital.cases, 180);
  const all = judgeHospitals(report.hospitals[0], pairOf('E[Y|X]'), false).ratios[0];
  assert.equal(all.observed, 50);
  assert.equal(all.expected, 50);
  assert.equal(all.cases, 200);
});

const kFiveRates = [0.1, 0.125, 0.14, 0.075, 0.06];
const hospitalRow = (rate: number, index: number): string => `${'abcde'[index]},1000,900,900,${rate},0.1,0.1,${rate},0.1,0.1,0,0,0`;

// 1000 records with 100 expected: the standard deviation is 9.5, so 100 +- 19 is inside, 125 outside
// 95 % and 140 outside 99.8 %.
test('hospitals are placed by their own limits', async () => {
  const report = await load(source(0, 'h', [kHospitalHeader, ...kFiveRates.map(hospitalRow), ''].join('\n')));
  const judgement = judgeHospitals(report.hospitals[0], pairOf('E[Y|X,P=0]-MCMC'), false);
  assert.deepEqual(judgement.ratios.map((ratio) => ratio.position), ['inside', 'above95', 'above998', 'below95', 'below998']);
  const finding = hospitalFinding(judgement);
  assert.equal(finding?.answer, '2 of 5 lie outside the 99.8 % limits, 2 more outside the 95 % limits.');
  assert.equal(finding?.details[0], 'More outcomes than expected, outside 99.8 %: c (1.40).');
});

// E = 100 of 1,000, so s^2 = 0.9 / 100 and w = 111.1. Ratios 1, 1.25, 1.4, 0.75, 0.6 have the mean 1:
// Q = 111.1 (0.0625 + 0.16 + 0.0625 + 0.16) = 49.4 on 4 degrees of freedom, tau2 = 45.4 / (4 x 111.1) =
// 0.102, tau = 0.32. Limits are then sqrt(1 + 0.102 / 0.009) = 3.5 times as wide: 95 % to 1 +- 0.65.
test('with the limits widened the verdict has the wider ones and says so', async () => {
  const report = await load(source(0, 'h', [kHospitalHeader, ...kFiveRates.map(hospitalRow), ''].join('\n')));
  const [chance, wider] = [false, true].map((adjusted) => judgeHospitals(report.hospitals[0], pairOf('E[Y|X,P=0]-MCMC'), adjusted));
  assert.ok(wider.ratios.every((ratio, i) => ratio.limits95.upper > chance.ratios[i].limits95.upper));
  assert.ok(wider.ratios.every((ratio) => ratio.position === 'inside'));
  assert.equal(hospitalFinding(wider)?.answer, 'None: all 5 lie within the widened 95 % limits.');
  assert.equal(hospitalFinding(wider)?.level, 'plain');
  assert.match(hospitalFinding(wider)?.details.join(' ') ?? '', /limits widened by tau .*if ratios vary by chance and by tau only/);
  for (const judgement of [chance, wider]) {
    assert.match(hospitalFinding(judgement)?.details.join(' ') ?? '',
      /differ by more than chance explains \(Cochran’s Q = 49\.4 on 4 degrees of freedom, p < 0\.001\)\. .* tau = 0\.32\./);
  }
});

test('where Q is not large no difference is claimed, and no agreement either', async () => {
  const report = await load(source(0, 'h', [kHospitalHeader, ...[0.1, 0.105, 0.095].map(hospitalRow), ''].join('\n')));
  const text = heterogeneityText(judgeHospitals(report.hospitals[0], pairOf('E[Y|X,P=0]-MCMC'), false));
  // Q = 111.1 x 2 x 0.05^2 = 0.556 on 2 degrees of freedom, p = exp(-0.278) = 0.757.
  assert.match(text, /^No more difference .* is shown .*Q = 0\.556 on 2 degrees of freedom, p = 0\.76\); that does not show that there is none\. .*tau = 0\.00\.$/);
});

test('a wide spread of the true ratios is not put down to chance', async () => {
  // 25 hospitals with 10 expected and true ratios exp(0.3 times a normal number). The mean of the squared
  // z-scores winsorised at 10 % is 1.30 here, which looks like chance.
  const normal = normalNumbers(4);
  const rates = Array.from({ length: 25 }, () => 0.01 * Math.exp(0.3 * normal()) + Math.sqrt(9.9) / 1000 * normal());
  const rows = rates.map((rate, i) => `h${i},1000,900,900,${rate},0.01,0.01,${rate},0.01,0.01,0,0,0`);
  const report = await load(source(0, 'h', [kHospitalHeader, ...rows, ''].join('\n')));
  assert.match(heterogeneityText(judgeHospitals(report.hospitals[0], pairOf('E[Y|X,P=0]-MCMC'), false)), /^The hospitals differ by more than chance/);
});

test('a hospital without expectation is not placed', async () => {
  const report = await load(source(0, 'h', `${kHospitalHeader}\nA,20,1,1,0,0,0,0,0,0,,0,0\n`));
  assert.equal(judgeHospitals(report.hospitals[0], pairOf('E[Y|X]'), false).ratios[0].position, 'unknown');
});

const kTiny = 'T,20,20,20,0,0,0,0,5e-324,5e-324,0,0,0';

test('an expectation so small that Q is not finite leaves the question open', async () => {
  const rows = [...kFiveRates.map(hospitalRow), kTiny.replace('20,0,0,0,0', '20,0.1,0,0,0.1')];
  const report = await load(source(0, 'h', [kHospitalHeader, ...rows, ''].join('\n')));
  const [chance, wider] = [false, true].map((widen) => judgeHospitals(report.hospitals[0], pairOf('E[Y|X,P=0]-MCMC'), widen));
  assert.match(heterogeneityText(chance), /^Whether the hospitals differ by more than chance cannot be told/);
  assert.equal(wider.adjusted, false);
  assert.deepEqual(wider.ratios, chance.ratios);
});

test('a number of records that no run writes gives no limits, and the file a remark', async () => {
  const many = '1e12,900,900,0.1,0.1,0.1,0.1,0.1,0.1,0,0,0';
  const rows = [...kFiveRates.map(hospitalRow), ...Array.from({ length: 25 }, (_, i) => `m${i},${many}`), `n,${many.replace('1e12', '1e15')}`];
  const report = await load(source(0, 'h', [kHospitalHeader, ...rows, ''].join('\n')));
  const started = performance.now();
  const judgement = judgeHospitals(report.hospitals[0], pairOf('E[Y|X,P=0]-MCMC'), true);
  funnelCurves(judgement);
  assert.ok(performance.now() - started < 500);
  assert.ok(judgement.ratios.slice(5).every(({ position }) => position === 'unknown'));
  // Q is that of the five others.
  assert.match(heterogeneityText(judgement), /Q = 49\.4 on 4 degrees of freedom/);
  assert.match(report.files[0].note, /number of records that no run writes/);
  const largest = await load(source(0, 'h', `${kHospitalHeader}\nA,2147483647,9,9,0.1,0.1,0.1,0.1,0.1,0.1,0,0,0\n`));
  assert.equal(largest.files[0].note, '');
  assert.equal(judgeHospitals(largest.hospitals[0], pairOf('E[Y|X,P=0]-MCMC'), false).ratios[0].position, 'inside');
});

test('C-statistics are put in words, and -1 is none', async () => {
  const report = await load(source(0, 's', kStatisticsText));
  assert.match(fitFinding(report, 'E[Y|X,P=0]-MCMC')?.answer ?? '', /modestly separates .*0\.660/);
  assert.match(fitFinding(report, 'E[P|X]')?.answer ?? '', /no pair of records/);
});

test('missing records are counted over hospitals', async () => {
  const report = await load(source(0, 'h', hospitalText(['A', 'B'])));
  const [records, complete] = [0, 1].map((what) => report.hospitals[0].rows.reduce((sum, row) => sum + (what === 0 ? row.records : row.complete), 0));
  assert.ok(missingFinding(report)?.answer.startsWith(`${records - complete} of ${records} records`));
});

// 1,000 records with 4 X and P. 700 incomplete, which lack 1 to 5 cells each: 700 to 3,500 of 5,000.
const kHalf = `${kHospitalHeader}\nA,600,180,100,0,0,0,0,0,0,0,0,0\nB,400,120,100,0,0,0,0,0,0,0,0,0\n`;
const kFive = coefficientText(['XIntercept', 'XA', 'XB', 'XC', 'XD']);
const descriptionOf = (...missing: number[]): string => ['"data.csv": 1000 records, 2 hospitals, 4 variables, 1 POA indicator',
  `  P = 1: 50 (5.26 % of the known), missing: ${10 * missing[0]} (${missing[0].toFixed(2)} %)`,
  ...missing.slice(1).map((share, i) => `    "Z${i}", "X${i}": 9.00 %; 8.00 %; ${share.toFixed(2)} %`), '0 errors, 0 warnings', ''].join('\n');

test('many incomplete records are no reason to warn: the missing cells are, and are bounded', async () => {
  const finding = missingFinding(await load(source(0, 'h', kHalf), source(0, 'c', kFive)));
  assert.equal(finding?.level, 'plain');
  assert.equal(finding?.answer, '700 of 1,000 records (70 %) lack a value somewhere and were filled in.');
  assert.match(finding?.details[0] ?? '', /^Between 14\.0 % and 70\.0 % of the cells are missing \(X of 4 variables, and P/);
  assert.match(finding?.details[1] ?? '', /hovar --check --data/);
  assert.match(finding?.details[2] ?? '', /86 to 92 % of the time with 40 %/);
});

test('individual predictions narrow the bound by the records that lack P', async () => {
  const rows = Array.from({ length: 1000 }, (_, i) => `r${i},A,0,0.1,0.1,0,0.1,0.1,${i < 300 ? '' : 0},0.1,0`);
  const finding = missingFinding(await load(source(0, 'h', kHalf), source(0, 'c', kFive), source(0, 'i', [kIndividualHeader, ...rows, ''].join('\n'))));
  // At most 700 x 4 + 300 = 3,100 of 5,000.
  assert.match(finding?.details[0] ?? '', /^Between 14\.0 % and 62\.0 % of the cells/);
});

test('with few incomplete records the bound alone shows that few cells are missing', async () => {
  const few = kHalf.replace('600,180', '600,540').replace('400,120', '400,360');
  const finding = missingFinding(await load(source(0, 'h', few), source(0, 'c', kFive)));
  assert.match(finding?.details.join(' ') ?? '', /^Between 2\.0 % and 10\.0 % of the cells/);
  assert.doesNotMatch(finding?.details.join(' ') ?? '', /simulated|--check/);
});

test('a description of the data gives the share of missing cells, which decides', async () => {
  const findingWith = async (...missing: number[]) =>
    missingFinding(await load(source(0, 'h', kHalf), source(0, 'c', kFive), source(0, 'd.txt', descriptionOf(...missing))));
  const some = await findingWith(20, 10, 30, 25, 15);
  assert.match(some?.details[0] ?? '', /^20\.0 % of the cells are missing/);
  assert.equal(some?.level, 'plain');
  const many = await findingWith(40, 38, 42, 41, 39);
  assert.match(many?.details[0] ?? '', /^40\.0 % of the cells are missing/);
  assert.equal(many?.level, 'look');
  assert.match(many?.answer ?? '', /Many cells are missing: intervals of the fifth block come out too narrow\.$/);
});

test('a description of other data is not taken for that of the run', async () => {
  const other = descriptionOf(40, 40, 40, 40, 40).replace('1000 records', '999 records');
  const finding = missingFinding(await load(source(0, 'h', kHalf), source(0, 'c', kFive), source(0, 'd.txt', other)));
  assert.match(finding?.details[0] ?? '', /^Between/);
});

test('a log alone bounds the missing cells', async () => {
  const report = await load(source(0, 'l', 'Number of records: 100\nNumber of variables: 6\nNumber of non-missing records: 60\nEliminating Z zero columns\n' +
    'Eliminating columns:\nZA, XA\nNumber of variables: 5\nNumber of non-missing records: 75\n'));
  // 25 incomplete records of 4 X and P: 25 to 125 of 500.
  assert.match(missingFinding(report)?.details.join(' ') ?? '', /Between 5\.0 % and 25\.0 % of the cells/);
});

test('with nothing missing nothing is said of cells', async () => {
  const all = kHalf.replace('600,180', '600,600').replace('400,120', '400,400');
  const finding = missingFinding(await load(source(0, 'h', all), source(0, 'c', kFive)));
  assert.equal(finding?.answer, 'None of the 1,000 records lacks a value.');
  assert.deepEqual(finding?.details, []);
});

test('each removed variable has its reason, and one removed for its Z the loss of X', async () => {
  const removal = (...pairs: string[]) => `Eliminating columns:\n${pairs.join('\n')}\nNumber of variables: 9\n`;
  const report = await load(source(0, 'l', `Number of records: 9\nEliminating Z zero columns\n${removal('ZNone, XNone')}` +
    `Eliminating X zero columns\n${removal('ZNever, XNever', 'ZNo, XNo')}Eliminating dependent Z columns\n${removal('ZTwin, XTwin')}` +
    `Eliminating dependent X columns P = 0\n${removal('ZSure, XSure')}`));
  assert.deepEqual(runFinding(report)?.details, [
    '1 variable was removed (ZNone with XNone): Z is 0 in every record. X goes with its Z, although it may be a risk factor itself; ' +
      'see docs/choosing-z.md.',
    '2 variables were removed (XNever and XNo): X is 0 in every complete record.',
    '1 variable was removed (ZTwin with XTwin): Z follows from the other variables in all records: it is always 1, equals another Z, ' +
      'or is a linear combination of several. X goes with its Z, although it may be a risk factor itself; see docs/choosing-z.md.',
    '1 variable was removed (XSure): X follows from the other variables in the complete records with P = 0: it is always 0 or always 1 ' +
      'there, equals another X, or is a linear combination of several.',
  ]);
});

const kZeroZ = 'Eliminating Z zero columns\n';
const removedAt = (stage: string) => `Number of records: 9\n${stage}Eliminating columns:\nZNone, XNone\nNumber of variables: 9\n`;

test('a variable that is removed for its Z is worth a look, one that is removed for its X a fact', async () => {
  const found = async (stage: string) => runFinding(await load(source(0, 'l', removedAt(stage))));
  assert.equal((await found('Eliminating X zero columns\n'))?.level, 'plain');
  assert.equal((await found('Eliminating dependent X columns P = 0\n'))?.level, 'plain');
  for (const stage of [kZeroZ, 'Eliminating dependent Z columns\n']) {
    assert.equal((await found(stage))?.level, 'look');
    assert.match((await found(stage))?.answer ?? '', /1 variable was removed for a Z that says nothing of its own/);
  }
});

const contradictingLog = (many: number, records: number) => `Number of records: ${records}\n` +
  `${'Warning: Y == 0 && P == 1 data in record: 3 - setting P equal to 0\n'.repeat(many)}${kZeroZ}`;

// Individual predictions of 300 records, of which 100 have Y = 0 and a known P, 100 lack P and 100 have Y = 1.
const kHundredKnown = `${kIndividualHeader}\n${Array.from({ length: 300 }, (_, i) =>
  `R${i},H,${i < 200 ? 0 : 1},0.5,0.5,0,0.5,0.5,${i >= 100 && i < 200 ? '' : 0},0,0\n`).join('')}`;

test('records with Y = 0 and P = 1 are to be acted on from 1 % of those with Y = 0 and known P', async () => {
  const one = await load(source(0, 'l', contradictingLog(1, 300)), source(0, 'i', kHundredKnown));
  assert.equal(runFinding(one)?.level, 'act');
  assert.match(runFinding(one)?.answer ?? '', new RegExp('In 1 record P is 1 \\(present on admission\\) although Y is 0; P was taken as 0\\. ' +
    'That is 1\\.0 % of the records with Y = 0 and known P, and from 1 % on a slip is not likely'));
});

test('without individual predictions the share is that of all records', async () => {
  const found = async (many: number) => runFinding(await load(source(0, 'l', contradictingLog(many, 300))));
  assert.equal((await found(2))?.level, 'plain');
  assert.deepEqual((await found(2))?.details, ['In 2 records P is 1 (present on admission) although Y is 0; P was taken as 0.']);
  assert.equal((await found(3))?.level, 'act');
  assert.match((await found(3))?.answer ?? '', /That is 1\.0 % of the records, and from 1 %/);
});

// Hospital A has `most` of 50 records without P, B has 2 of 150, and a tiny one has its one record without.
const unevenP = (most: number) => `${kIndividualHeader}\n${[['A', 50, most], ['B', 150, 2], ['C', 1, 1]].map(([id, records, missing]) =>
  Array.from({ length: Number(records) }, (_, i) => `R${i},${id},0,0.5,0.5,0,0.5,0.5,${i < Number(missing) ? '' : 0},0,0\n`).join('')).join('')}`;

test('a hospital in which P is missing far more often than elsewhere is named', async () => {
  const found = async (text: string) => missingFinding(await load(source(0, 'i', text)));
  const named = await found(unevenP(30));
  assert.equal(named?.level, 'look');
  assert.ok([named?.answer, ...named?.details ?? []].includes('P is missing most often in A: 30 of 50 records (60 %).'));
  // 20 % is not above 20 %. In the last one all are alike: 10 of 50 more are no more than twice the share of all.
  for (const text of [unevenP(10), `${kIndividualHeader}\n${Array.from({ length: 100 }, (_, i) =>
    `R${i},H${i % 2},0,0.5,0.5,0,0.5,0.5,${i < 60 ? '' : 0},0,0\n`).join('')}`]) {
    const other = await found(text);
    assert.equal(other?.level, 'plain');
    assert.doesNotMatch([other?.answer, ...other?.details ?? []].join(' '), /most often/);
  }
});

test('a fit that reached its limit is to be acted on', async () => {
  const report = await load(source(0, 'l', 'Number of records: 9\nEliminating Z zero columns\nWarning: Maximum number of iterations reached\n'));
  assert.equal(runFinding(report)?.level, 'act');
  assert.match(runFinding(report)?.answer ?? '', /^Yes: 1 fit stopped/);
});

test('a run that ended in an error is told first', async () => {
  const record = JSON.stringify({ format: 'hovar run record', exitStatus: 1, error: 'Variables mismatch', runs: [] });
  const report = await load(source(0, 'r.json', record), source(0, 'l', 'Number of records: 9\n'));
  assert.match(runFinding(report)?.answer ?? '', /^No: it ended with status 1 \(Variables mismatch\)/);
});

test('warnings are told with the fit that they followed', async () => {
  const record = JSON.stringify({ format: 'hovar run record', exitStatus: 0, runs: [{ warnings: [{ text: 'Slow', fit: '[Y|X]', count: 3 }] }] });
  const report = await load(source(0, 'r.json', record), source(0, 'l', 'Number of records: 9\n'));
  assert.deepEqual(runFinding(report)?.details, ['Slow after [Y|X], 3 times.']);
});
