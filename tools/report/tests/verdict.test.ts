// The verdict on chains by the table of cases that the command is tested with too, and what the page
// says of runs with generalized estimating equations.
import assert from 'node:assert/strict';
import { readFileSync } from 'node:fs';
import { test } from 'node:test';
import { groupChains } from '../src/analysis/chain_groups';
import { diagnose, verdictOf, type GroupDiagnostics } from '../src/analysis/diagnostics';
import { defaultExpectation, judgeHospitals, pairOf } from '../src/analysis/hospital_ratios';
import {
  convergenceFinding, fitFinding, hospitalFinding, missingFinding, runFinding, type Finding,
} from '../src/analysis/verdict';
import type { Report, SourceFile } from '../src/model';
import { loadReport } from '../src/read/load';
import { chainText, coefficientText, kHospitalHeader, kIndividualHeader, kStatisticsText } from './support/study';

// npm test starts in tools/report. The script is tests/reference/verdicts.R.
const rowsOf = (name: string) => readFileSync(`../../tests/reference/data/${name}`, 'utf8').trimEnd().split('\n').slice(1)
  .map((line) => line.split(','));
const kDraws = rowsOf('verdict_draws.csv');
const kNames = ['XIntercept', 'XA'];

function source(folder: number, path: string, text: string): SourceFile {
  return { folder, folderName: `run${folder}`, path, blob: new Blob([text]) };
}

const load = (...files: SourceFile[]): Promise<Report> => loadReport(files, () => {});
const judged = async (report: Report) =>
  Promise.all(groupChains(report).map((group) => diagnose(report, group, () => {})));

/** The report of a case: each chain in a folder of its own, beside its coefficients. */
async function caseReport(name: string, chains: number, gee: boolean): Promise<Report> {
  return load(...Array.from({ length: chains }, (_, k) => {
    const lines = kDraws.filter(([of, chain]) => of === name && Number(chain) === k + 1).map(([, , a, b], i) => `${i + 1},${a},${b}\n`);
    return [
      source(k, 'mcmc/Chain.csv', `Step,BetaYX[0],BetaYX[1]\n${lines.join('')}`), source(k, 'coefficients.csv', coefficientText(kNames, gee)),
    ];
  }).flat());
}

for (const [name, gee, lengths, verdict, chains, draws, cut, repeated] of rowsOf('verdicts.csv')) {
  test(`the verdict on chains of the table: ${name}`, async () => {
    const report = await caseReport(name, lengths.split(' ').length, gee === 'true');
    assert.deepEqual(report.chains.map((chain) => chain.steps.length), lengths.split(' ').map(Number));
    const groups = await judged(report);
    assert.equal(groups.length, 1);
    const [group] = groups;
    assert.equal(group.verdict, verdict);
    assert.deepEqual(group.group.chains.map((chain) => chain + 1), chains.split(' ').map(Number));
    assert.equal(group.draws, Number(draws));
    assert.equal(group.cut, cut === 'true');
    assert.equal(group.repeated.map(([first, later]) => `${later + 1}=${first + 1}`).join(' '), repeated);
    assertSentenceFits(report, group);
  });
}

/** The words of the finding fit the verdict, and only one label is Good. */
function assertSentenceFits(report: Report, group: GroupDiagnostics): void {
  const finding = convergenceFinding(report, [group]);
  const words = {
    not_fit_for_inference: group.draws > 0 ? /^Not fit for inference: / : /^There are none: .*not be fit for inference/,
    not_converged: /^Not yet: /, cannot_be_told: /^Cannot be judged: /, too_few_draws: /^No sign against it, but /,
    no_sign_against: /^No sign against it in this one chain: /, converged: /^Yes\. /,
  };
  assert.match(finding?.answer ?? '', words[group.verdict]);
  assert.equal(finding?.level === 'good', group.verdict === 'converged');
  const details = finding?.details.join(' ') ?? '';
  if (group.cut && group.verdict !== 'not_fit_for_inference') assert.match(details, /differ in length; the first \d+ draws/);
  if (group.repeated.length > 0) assert.match(details, /Not judged, because these hold the same draws/);
  if (group.verdict === 'not_fit_for_inference') assert.doesNotMatch(`${finding?.answer} ${details}`, /converged|agree\b|raise Steps/i);
}

test('the thresholds are met inclusively', () => {
  const of = (rhat: number, essBulk: number, essTail: number) =>
    verdictOf([{ rhat, essBulk, essTail, mean: 0, sd: 1, q025: 0, median: 0, q975: 0, mcseMean: 0 }], 4, false);
  assert.equal(of(1.01, 400, 400), 'converged');
  assert.equal(of(1.0101, 400, 400), 'not_converged');
  assert.equal(of(1.01, 399.9, 400), 'too_few_draws');
  assert.equal(of(1.01, 400, 399.9), 'too_few_draws');
  assert.equal(of(NaN, 400, 400), 'cannot_be_told');
  assert.equal(of(1.5, 400, NaN), 'not_converged');
});

interface Study {
  gee: boolean;
  missingP: boolean;
  missingX: boolean;
  draws?: number;
}

/** Individual predictions that agree with what is observed: of 10 records with risk 0.1 one has Y. */
function predictions({ missingP, missingX }: Study): SourceFile[] {
  const lines = Array.from({ length: 400 }, (_, i) => {
    const y = i % 10 === 0 ? 1 : 0;
    return `R${i},H${Math.floor(i / 200)},${y},0.1,0.1,${y},0.1,0.1,${missingP && i % 2 === 1 ? '' : 0},0,0\n`;
  });
  const complete = missingP || missingX ? 100 : 200;
  const rows = ['H0', 'H1'].map((id) => `${id},200,${complete},${complete},0.1,0.1,0.1,0.1,0.1,0.1,0,0,0\n`);
  return [
    source(0, 'individual.csv', `${kIndividualHeader}\n${lines.join('')}`), source(0, 'hospital.csv', `${kHospitalHeader}\n${rows.join('')}`),
    source(0, 'cstatistics.csv', kStatisticsText),
  ];
}

/** All findings of a study of several good chains, with the log of a run without warnings. */
async function findingsOf(study: Study): Promise<Finding[]> {
  const chains = [0, 1, 2, 3].map((k) => source(0, `chain-${k}/Chain.csv`, chainText({ draws: study.draws ?? 500, coefficients: 2, seed: k + 1 })));
  const report = await load(source(0, 'coefficients.csv', coefficientText(kNames, study.gee)), ...chains, ...predictions(study),
    source(0, 'analysis.log', 'Number of records: 400\nEliminating Z zero columns\n'));
  const { column } = defaultExpectation(report);
  const findings = [
    convergenceFinding(report, await judged(report)), hospitalFinding(judgeHospitals(report.hospitals[0], pairOf(column), false), report),
    fitFinding(report, column), missingFinding(report), runFinding(report),
  ];
  return findings.filter((finding) => finding !== null);
}

const finding = (findings: Finding[], question: RegExp): Finding => {
  const found = findings.find((candidate) => question.test(candidate.question));
  assert.ok(found);
  return found;
};
const textOf = (findings: Finding[]) => findings.flatMap(({ answer, details }) => [answer, ...details]).join('\n');

test('a study without estimating equations is Good, and nothing is called unfit', async () => {
  const findings = await findingsOf({ gee: false, missingP: true, missingX: false });
  assert.deepEqual(findings.filter(({ level }) => level === 'good').map(({ question }) => question),
    ['Did the chains converge?', 'Did the run warn of anything?']);
  assert.match(finding(findings, /predict/).answer, /Predicted and observed rates agree\./);
  assert.match(textOf(findings), /intervals of the fifth block come out too narrow/);
  assert.doesNotMatch(textOf(findings), /not fit for inference/i);
});

test('with estimating equations and a missing P nothing is Good, and no statement contradicts another', async () => {
  const findings = await findingsOf({ gee: true, missingP: true, missingX: false });
  assert.equal(findings.length, 5);
  assert.deepEqual(findings.filter(({ level }) => level === 'good'), []);
  const text = textOf(findings);
  assert.doesNotMatch(text, /rates agree\.|converged|too narrow|^No\.$|^Yes/m);
  assert.match(finding(findings, /converge/).answer, /^Not fit for inference: /);
  const hospitals = finding(findings, /hospitals/);
  assert.equal(hospitals.level, 'act');
  assert.match(hospitals.answer, /^The ratios are not fit for inference\. As they stand: /);
  assert.match(hospitals.details[0], /neither are the observed counts, E\[Y\|P=0\]: P is missing in 200 records/);
  assert.match(finding(findings, /predict/).answer, /Whether predicted and observed rates agree cannot be told\.$/);
  assert.match(finding(findings, /warn/).answer, /not fit for inference/);
  assert.match(text, /take counts and expectations from a run with false/);
});

test('with estimating equations and every P known the observed counts are not called wrong', async () => {
  for (const missingX of [false, true]) {
    const findings = await findingsOf({ gee: true, missingP: false, missingX });
    assert.deepEqual(findings.filter(({ level }) => level === 'good'), []);
    const hospitals = finding(findings, /hospitals/);
    assert.match(hospitals.answer, /within the 95 % limits/);
    assert.match(hospitals.details.join(' '), /E\[Y\|X,P=0\]-MCMC is not fit for inference\./);
    assert.equal(/In 200 records an X was filled in .* observed counts are not affected/.test(hospitals.details.join(' ')), missingX);
    assert.match(finding(findings, /predict/).answer, /Predicted and observed rates agree\./);
  }
});

test('without individual predictions the condition is named', async () => {
  const report = await load(source(0, 'coefficients.csv', coefficientText(kNames, true)),
    ...predictions({ gee: true, missingP: true, missingX: false }).slice(1));
  const found = hospitalFinding(judgeHospitals(report.hospitals[0], pairOf('E[Y|X,P=0]'), false), report);
  assert.equal(found?.level, 'act');
  assert.match(found?.details[0] ?? '', /observed counts, E\[Y\|P=0\], where P is missing: 200 records lack P or an X/);
});

test('another expectation than those by P = 0 keeps its ratios', async () => {
  const report = await load(source(0, 'coefficients.csv', coefficientText(kNames, true)),
    ...predictions({ gee: true, missingP: true, missingX: false }));
  assert.equal(hospitalFinding(judgeHospitals(report.hospitals[0], pairOf('E[Y|X]'), false), report)?.level, 'plain');
  assert.equal(hospitalFinding(judgeHospitals(report.hospitals[0], pairOf('E[Y|X,P=0]-MCMC'), false), report)?.level, 'act');
});

// Steps 0 leaves standard errors of 0.
const kWithoutDraws = coefficientText(kNames, true).replace(/,,[^,\n]*\n/g, ',,0\n').replace(/^(Variables.*),,0$/m, '$1');

test('both runs in one folder: each file is judged by its own coefficients', async () => {
  const report = await load(source(0, 'coefficients.csv', coefficientText(kNames)),
    source(0, 'mcmc/Chain.csv', chainText({ draws: 800, coefficients: 2, seed: 1 })),
    source(0, 'clustered/coefficients.csv', kWithoutDraws), source(0, 'clustered/mcmc/Chain.csv', 'Step,BetaYX[0],BetaYX[1]\n'),
    source(0, 'analysis.log', 'Number of records: 400\nEliminating Z zero columns\n'),
    ...predictions({ gee: false, missingP: true, missingX: false }));
  assert.equal(defaultExpectation(report).column, 'E[Y|X,P=0]-MCMC');
  const groups = await judged(report);
  assert.deepEqual(groups.map(({ verdict }) => verdict), ['no_sign_against', 'not_fit_for_inference']);
  assert.match(convergenceFinding(report, groups)?.answer ?? '', /^No sign against it in this one chain/);
  assert.equal(runFinding(report)?.level, 'good');
  assert.match(fitFinding(report, 'E[Y|X,P=0]-MCMC')?.answer ?? '', /Predicted and observed rates agree\./);
});

test('chains with and without estimating equations are not judged together, and the unfit ones come first', async () => {
  const report = await load(source(0, 'coefficients.csv', coefficientText(kNames)), source(1, 'coefficients.csv', coefficientText(kNames, true)),
    ...[0, 1].map((folder) => source(folder, 'mcmc/Chain.csv', chainText({ draws: 800, coefficients: 2, seed: folder + 1 }))));
  const groups = await judged(report);
  assert.equal(groups.length, 2);
  const found = convergenceFinding(report, groups);
  assert.equal(found?.level, 'act');
  assert.match(found?.answer ?? '', /2 groups of chains that do not belong together\. Group 2: Not fit for inference/);
  assert.match(found?.details.join(' ') ?? '', /Group 1: No sign against it in this one chain/);
});
