// The verdict on chains by the table of cases that the command is tested with too, and what the page
// says of runs with generalized estimating equations.
import assert from 'node:assert/strict';
import { readFileSync } from 'node:fs';
import { test } from 'node:test';
import { groupChains } from '../src/analysis/chain_groups';
import { diagnose, verdictOf, type GroupDiagnostics } from '../src/analysis/diagnostics';
import { defaultExpectation, expectationNote, judgeHospitals, pairOf } from '../src/analysis/hospital_ratios';
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
  return { folder, folderName: `run${folder}`, path, content: new Blob([text]) };
}

const load = (...files: SourceFile[]): Promise<Report> => loadReport(files, () => {});
const judged = async (report: Report) =>
  Promise.all(groupChains(report).map((group) => diagnose(report, group, () => {})));

/** The report of a case: each chain in a folder of its own, beside its coefficients. */
async function caseReport(name: string, chains: number, gee: boolean): Promise<Report> {
  return load(...Array.from({ length: chains }, (_, k) => {
    const lines = kDraws.filter(([of, chain]) => of === name && Number(chain) === k + 1).map(([, , a, b], i) => `${i + 1},${a},${b}\n`);
    const text = `Step,BetaYX[0],BetaYX[1]\n${lines.join('')}`;
    return [source(k, 'mcmc/Chain.csv', text), source(k, 'coefficients.csv', coefficientText(kNames, gee, text))];
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
    not_fit_for_inference: group.draws > 0 ? /^Not fit for inference: / : /^No draws were asked for\..*not be fit for inference/,
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
  /** With a description by which 45 % of the cells are missing. */
  described?: boolean;
}

const kDescription = '"data.csv": 400 records, 2 hospitals, 1 variable, 1 POA indicator\n' +
  '  P = 1: 0 (0.00 % of the known), missing: 200 (50.00 %)\n    "ZA", "XA": 50.00 %; 50.00 %, 10.00 %, 90.00 %; 40.00 %\n';

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
  const chains = [0, 1, 2, 3].flatMap((k) => {
    const text = chainText({ draws: study.draws ?? 500, coefficients: 2, seed: k + 1 });
    return [source(0, `chain-${k}/Chain.csv`, text), source(0, `chain-${k}/coefficients.csv`, coefficientText(kNames, study.gee, text))];
  });
  const report = await load(source(0, 'coefficients.csv', coefficientText(kNames, study.gee)), ...chains, ...predictions(study),
    source(0, 'analysis.log', 'Number of records: 400\nEliminating Z zero columns\n'),
    ...study.described ? [source(0, 'data.txt', kDescription)] : []);
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
  const findings = await findingsOf({ gee: false, missingP: true, missingX: false, described: true });
  assert.deepEqual(findings.filter(({ level }) => level === 'good').map(({ question }) => question),
    ['Did the chains converge?', 'Did the run warn of anything?']);
  assert.match(finding(findings, /predict/).answer, /Predicted and observed rates agree\./);
  assert.match(textOf(findings), /intervals of the fifth block come out too narrow/);
  assert.doesNotMatch(textOf(findings), /not fit for inference/i);
});

test('with estimating equations and a missing P nothing is Good, and no statement contradicts another', async () => {
  const findings = await findingsOf({ gee: true, missingP: true, missingX: false, described: true });
  assert.equal(findings.length, 5);
  assert.deepEqual(findings.filter(({ level }) => level === 'good'), []);
  const text = textOf(findings);
  assert.doesNotMatch(text, /rates agree\.|converged|too narrow|^No\.$|^Yes/m);
  assert.match(finding(findings, /converge/).answer, /^Not fit for inference: /);
  const hospitals = finding(findings, /hospitals/);
  assert.equal(hospitals.level, 'act');
  assert.match(hospitals.answer, /^The ratios are not fit for inference\. As they stand: /);
  assert.match(hospitals.details[0], /P is missing in 200 records and was filled in by the fifth block, which is not fit, so neither are E\[P\|YPXZ\], the observed counts E\[Y\|P=0\], and E\[Y\|X,P=0\] with its C-statistic\./);
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
    assert.equal(/In 200 records an X was filled in .*, so neither are E\[P\|X\], and E\[Y\|X\] .* observed counts are not affected/.test(hospitals.details.join(' ')), missingX);
    assert.match(finding(findings, /predict/).answer, /Predicted and observed rates agree\./);
  }
});

test('without individual predictions the condition is named', async () => {
  const report = await load(source(0, 'coefficients.csv', coefficientText(kNames, true)),
    ...predictions({ gee: true, missingP: true, missingX: false }).slice(1));
  const found = hospitalFinding(judgeHospitals(report.hospitals[0], pairOf('E[Y|X,P=0]'), false), report);
  assert.equal(found?.level, 'act');
  assert.match(found?.details[0] ?? '', /200 records lack P or an X, filled in by .* Where P is missing, neither are .*observed counts E\[Y\|P=0\]/);
});

test('another expectation than those by P = 0 keeps its ratios', async () => {
  const report = await load(source(0, 'coefficients.csv', coefficientText(kNames, true)),
    ...predictions({ gee: true, missingP: true, missingX: false }));
  assert.equal(hospitalFinding(judgeHospitals(report.hospitals[0], pairOf('E[Y|X]'), false), report)?.level, 'plain');
  assert.equal(hospitalFinding(judgeHospitals(report.hospitals[0], pairOf('E[Y|X,P=0]-MCMC'), false), report)?.level, 'act');
});

test('with P and X missing the columns of both are named', async () => {
  const both = predictions({ gee: true, missingP: true, missingX: true });
  both[1] = source(0, 'hospital.csv', await new Blob([both[1].content]).text().then((text) => text.replaceAll(',200,100,100,', ',200,80,80,')));
  const report = await load(source(0, 'coefficients.csv', coefficientText(kNames, true)), ...both);
  // 240 records lack something, 200 of them P.
  assert.match(hospitalFinding(judgeHospitals(report.hospitals[0], pairOf('E[Y|X,P=0]'), false), report)?.details[0] ?? '',
    /P is missing in 200 records .* E\[P\|YPXZ\], the observed counts .* In 40 more records an X was filled in likewise, so neither are E\[P\|X\], and E\[Y\|X\]/);
});

test('the note of another expectation says what of it suffers, and calls only the preset one the expectation here', async () => {
  const report = await load(source(0, 'coefficients.csv', coefficientText(kNames, true)),
    ...predictions({ gee: true, missingP: true, missingX: false }));
  assert.match(expectationNote(report, 'E[Y|X,P=0]'), /So the fourth block, .* is the expectation here\. Where an X .* Where P is missing, E\[Y\|X,P=0\] and the observed E\[Y\|P=0\] are not fit either\.$/);
  for (const column of ['E[Y|Z]', 'E[Y|X]', 'E[P|X]'] as const) {
    assert.match(expectationNote(report, column), /^Chosen by hand; the default is E\[Y\|X,P=0\]\. The run used generalized/);
    assert.doesNotMatch(expectationNote(report, column), /is the expectation here|E\[Y\|P=0\]/);
  }
  assert.match(expectationNote(report, 'E[P|X]'), /Where an X is missing, E\[P\|X\] is not fit either\. Where P is missing, the observed E\[P\|YPXZ\] is not fit either\.$/);
  assert.doesNotMatch(expectationNote(report, 'E[Y|Z]'), /not fit either/);
  const found = hospitalFinding(judgeHospitals(report.hospitals[0], pairOf('E[P|X]'), false), report);
  assert.equal(found?.level, 'act');
});

test('predictions from the coefficients of a run without draws are not said to use draws', async () => {
  const report = await load(source(0, 'coefficients.csv', kWithoutDraws),
    ...predictions({ gee: true, missingP: true, missingX: false }), source(0, 'analysis.log', 'Number of records: 400\nEliminating Z zero columns\n'));
  const found = [hospitalFinding(judgeHospitals(report.hospitals[0], pairOf('E[Y|X,P=0]'), false), report), runFinding(report)];
  assert.deepEqual(found.map((one) => one?.level), ['act', 'act']);
  assert.match(found[1]?.answer ?? '', /predictions use the fifth block of a run with generalized estimating equations/);
  assert.doesNotMatch(found.flatMap((one) => [one?.answer, ...one?.details ?? []]).join(' '), /draws/);
});

test('a saved check shows how many warnings it gave, and the first of them', async () => {
  const warnings = Array.from({ length: 5 }, (_, i) => `data.csv:1:${i + 20}: warning: Cause ${i}.\n`).join('');
  const report = await load(source(0, 'analysis.log', 'Number of records: 9\nEliminating Z zero columns\n'),
    source(0, 'data.txt', `${warnings}"data.csv": 9 records, 3 hospitals, 0 variables, 1 POA indicator\n0 errors, 5 warnings\n`));
  const found = runFinding(report);
  assert.equal(found?.level, 'look');
  assert.match(found?.answer ?? '', /The check of the definition warned\.$/);
  assert.deepEqual(found?.details, [0, 1, 2].map((i) => `The check warned (${i + 1} of 5): Cause ${i}.`)
    .concat('2 more warnings of the check stand in its own file.'));
});

// Steps 0 leaves standard errors of 0.
const kWithoutDraws = coefficientText(kNames, true).replace(/,,[^,\n]*\n/g, ',,0\n').replace(/^(Variables.*),,0$/m, '$1');

test('both runs in one folder: each file is judged by its own coefficients', async () => {
  const text = chainText({ draws: 800, coefficients: 2, seed: 1 });
  const report = await load(source(0, 'coefficients.csv', coefficientText(kNames, false, text)), source(0, 'mcmc/Chain.csv', text),
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
  const texts = [1, 2].map((seed) => chainText({ draws: 800, coefficients: 2, seed }));
  const report = await load(...texts.flatMap((text, folder) =>
    [source(folder, 'coefficients.csv', coefficientText(kNames, folder === 1, text)), source(folder, 'mcmc/Chain.csv', text)]));
  const groups = await judged(report);
  assert.equal(groups.length, 2);
  const found = convergenceFinding(report, groups);
  assert.equal(found?.level, 'act');
  assert.match(found?.answer ?? '', /2 groups of chains that do not belong together\. Group 2: Not fit for inference/);
  assert.match(found?.details.join(' ') ?? '', /Group 1: No sign against it in this one chain/);
});
