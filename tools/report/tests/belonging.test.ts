// What is put together belongs together: chains of one run, and predictions with the coefficients that they
// were made with.
import assert from 'node:assert/strict';
import { test } from 'node:test';
import { groupChains } from '../src/analysis/chain_groups';
import { namesOf } from '../src/analysis/definitions';
import { diagnose } from '../src/analysis/diagnostics';
import { geeDecisionText, predictionsUseGee } from '../src/analysis/estimating_equations';
import { defaultExpectation } from '../src/analysis/hospital_ratios';
import { convergenceFinding } from '../src/analysis/verdict';
import type { Report, SourceFile } from '../src/model';
import { loadReport } from '../src/read/load';
import { chainText, coefficientText, hospitalText } from './support/study';

const kNames = ['XIntercept', 'XA', 'XB'];
const source = (path: string, text: string, folderName = 'results', folder = 0): SourceFile => ({ folder, folderName, path, content: new Blob([text]) });
const load = (files: SourceFile[]): Promise<Report> => loadReport(files, () => {});

const definition = (folder: string, prior = '0.1', data = 'data.csv', seed = 1): string =>
  `<Analysis xmlns:xsi="u"><Input><Data>${data}</Data></Input><Output><Folder>${folder}</Folder><McmcSubFolder>mcmc</McmcSubFolder></Output>` +
  `<Regression><ParametersMcmc><PriorPrecision>${prior}</PriorPrecision></ParametersMcmc></Regression>` +
  `<Mcmc><Seed xsi:type="Vector"><Seed><Element>${seed}</Element></Seed></Seed></Mcmc></Analysis>`;

/** What a run of chain K leaves, as `hovar --chains` names it. */
function chainFiles(k: number, text = definition(`results\\chain-${k}`, '0.1', 'data.csv', k)): SourceFile[] {
  const draws = chainText({ draws: 400, coefficients: 3, seed: k });
  return [source(`chain-${k}/mcmc/Chain.csv`, draws), source(`chain-${k}/coefficients.csv`, coefficientText(kNames, false, draws)),
    source(`chain-${k}/chain-${k}.xml`, text)];
}

const batch = (...chains: number[]): string =>
  `<Batch><Simulations>${chains.map((k) => `<Simulation>results\\chain-${k}\\chain-${k}.xml</Simulation>`).join('')}</Simulations></Batch>`;
const record = (...chains: number[]): string =>
  JSON.stringify({ format: 'hovar run record', runs: chains.map((k) => ({ definition: { path: `results/chain-${k}/chain-${k}.xml` } })) });
const kSix = [1, 2, 3, 4, 5, 6].flatMap((k) => chainFiles(k));

const pathsOf = (report: Report) => groupChains(report).map((group) => group.chains.map((chain) => report.chains[chain].origin.path.slice(0, 7)));
const finding = async (report: Report) =>
  convergenceFinding(report, await Promise.all(groupChains(report).map((group) => diagnose(report, group, () => {}))));

for (const [what, file] of [['a batch', source('batch.xml', batch(1, 2, 3, 4))], ['a record of a run', source('run.json', record(1, 2, 3, 4))]] as const) {
  test(`of six chains those that ${what} does not name are left out and named`, async () => {
    const report = await load([...kSix, file]);
    assert.deepEqual(pathsOf(report), [['chain-1', 'chain-2', 'chain-3', 'chain-4']]);
    const { answer, details } = (await finding(report)) ?? { answer: '', details: [] };
    assert.match(answer, /4 chains|coefficients/);
    assert.ok(details.some((text) => /^Left out, because results\/(batch\.xml|run\.json) .*: results\/chain-5\/mcmc and results\/chain-6\/mcmc\.$/.test(text)), details.join('\n'));
  });
}

test('a record names its chains also behind thousands of warnings, and a batch of too many runs is no list', async () => {
  const long = JSON.parse(record(1, 2, 3, 4)) as { runs: Record<string, unknown>[] };
  long.runs[0].warnings = [{ text: 'w', records: Array.from({ length: 5000 }, (_, i) => i) }];
  assert.deepEqual(pathsOf(await load([...kSix, source('run.json', JSON.stringify(long))])), [['chain-1', 'chain-2', 'chain-3', 'chain-4']]);
  const many = batch(1, 2, ...Array.from({ length: 2000 }, () => 1), 3, 4, 5, 6);
  assert.deepEqual(pathsOf(await load([...kSix, source('batch.xml', many)])), [['chain-1', 'chain-2', 'chain-3', 'chain-4', 'chain-5', 'chain-6']]);
});

test('chains that nothing names, that each have a record, or that any list names stay', async () => {
  const all = [['chain-1', 'chain-2', 'chain-3', 'chain-4', 'chain-5', 'chain-6']];
  assert.deepEqual(pathsOf(await load(kSix)), all);
  assert.deepEqual(pathsOf(await load([...kSix, source('chain-1/run.json', record(1)), source('chain-2/run.json', record(2))])), all);
  assert.deepEqual(pathsOf(await load([...kSix, source('a.xml', batch(1, 2, 3, 4)), source('b.json', record(4, 5, 6))])), all);
  const other = '<Batch><Simulations><Simulation>other\\chain-1\\chain-1.xml</Simulation><Simulation>other\\chain-2\\chain-2.xml</Simulation></Simulations></Batch>';
  assert.deepEqual(pathsOf(await load([...kSix, source('a.xml', other)])), all);
});

test('chains whose definitions fit other models are judged apart, and the difference is named', async () => {
  const files = [1, 2].flatMap((k) => chainFiles(k)).concat(chainFiles(3, definition('results\\chain-3', '50')));
  const report = await load(files);
  assert.deepEqual(pathsOf(report), [['chain-1', 'chain-2'], ['chain-3']]);
  const { answer, details } = (await finding(report)) ?? { answer: '', details: [] };
  assert.match(answer, /2 groups of chains that do not belong together/);
  assert.ok(details.some((text) => text.includes('definitions differ: Regression / ParametersMcmc / PriorPrecision is “0.1” in results/chain-1/chain-1.xml and ' +
    '“50” in results/chain-3/chain-3.xml')), details.join('\n'));
});

test('the seed, the folder of the data and a missing definition keep no chains apart, another data file does', async () => {
  const moved = [...chainFiles(1), ...chainFiles(2, definition('results\\chain-2', '0.1', '/mnt/x/data.csv', 9)), ...chainFiles(3).slice(0, 2)];
  assert.deepEqual(pathsOf(await load(moved)), [['chain-1', 'chain-2', 'chain-3']]);
  const other = [...chainFiles(1), ...chainFiles(2, definition('results\\chain-2', '0.1', 'other.csv'))];
  assert.deepEqual(pathsOf(await load(other)), [['chain-1'], ['chain-2']]);
});

const prediction = (coefficients: string, folder = 'results'): string =>
  `<Prediction><Input><Data>d.csv</Data><RegressionCoefficients>${coefficients}</RegressionCoefficients></Input>` +
  `<Output><Folder>${folder}</Folder><HospitalPredictions>hospital.csv</HospitalPredictions></Output></Prediction>`;
const kHospitals = hospitalText(['H1', 'H2']);
const [kPlain, kGee] = [coefficientText(kNames), coefficientText(kNames, true)];

test('the definition of a prediction decides by which coefficients it was made, and not their nearness', async () => {
  const study = (text: string) => load([
    source('results/hospital.csv', kHospitals, 'study'), source('results/coefficients.csv', kPlain, 'study'),
    source('clustered/coefficients.csv', kGee, 'study'), source('prediction.xml', text, 'study')]);
  for (const [path, gee] of [
    ['clustered/coefficients.csv', true], ['clustered\\coefficients.csv', true], ['./results/../clustered//coefficients.csv', true], ['/home/me/study/clustered/coefficients.csv', true],
    ['results/coefficients.csv', false], ['results\\.\\coefficients.csv', false],
  ] as const) {
    const report = await study(prediction(path));
    assert.equal(predictionsUseGee(report), gee, path);
    assert.equal(geeDecisionText(report), '', path);
    assert.equal(defaultExpectation(report).column, gee ? 'E[Y|X,P=0]' : 'E[Y|X,P=0]-MCMC');
  }
});

test('where only the output folder is there, paths of the definition are followed from it', async () => {
  const near = [source('hospital.csv', kHospitals), source('coefficients.csv', kPlain), source('gee/coefficients.csv', kGee)];
  const decided = async (path: string, folder: string, ...more: SourceFile[]) =>
    predictionsUseGee(await load([...near, ...more, source('p.xml', prediction(path, folder))]));
  assert.equal(await decided('a/b/results/gee/coefficients.csv', 'a/b/results'), true);
  assert.equal(await decided('results/gee/coefficients.csv', 'results'), true);
  assert.equal(await decided('results/coefficients.csv', 'results'), false);
  // A folder beside, dropped with it.
  assert.equal(await decided('out/other/c.csv', 'out/results', source('c.csv', kGee, 'other', 1)), true);
});

test('where the named coefficients are not there the nearest decide, and the page says so', async () => {
  const report = await load([source('hospital.csv', kHospitals), source('coefficients.csv', kPlain), source('p.xml', prediction('elsewhere/c.csv'))]);
  assert.equal(predictionsUseGee(report), false);
  const text = 'results/p.xml takes the coefficients from “elsewhere/c.csv”, which is not among these files. Whether the run used generalized ' +
    'estimating equations was decided by the nearest coefficient file, results/coefficients.csv.';
  assert.equal(geeDecisionText(report), text);
  assert.ok(defaultExpectation(report).reason.endsWith(text));
});

test('without a definition the page says by which file it decided only where the files disagree', async () => {
  const files = [source('hospital.csv', kHospitals), source('coefficients.csv', kPlain)];
  assert.equal(geeDecisionText(await load(files)), '');
  const report = await load([...files, source('gee/coefficients.csv', kGee)]);
  assert.match(geeDecisionText(report), /^No definition among these files says which coefficients results\/hospital\.csv was made with\. .* nearest coefficient file, results\/coefficients\.csv\.$/);
});

test('paths are followed as far as they go', () => {
  const paths: [string, string[]][] = [
    ['a/b', ['a', 'b']], ['a\\b/', ['a', 'b']], ['./a//b', ['a', 'b']], ['a/../b', ['b']], ['../a', ['..', 'a']], ['../../a', ['..', '..', 'a']], ['', []], ['.', []],
  ];
  for (const [path, names] of paths) assert.deepEqual(namesOf(path), names, path);
});
