// What the run says, in words. Each finding answers one question; the sections below show the evidence.
import { isRecordCount, type Calibration, type Report } from '../model';
import { missingCells, missingCellsTexts, kManyCells } from './missing_cells';
import { removalTexts, removedForZ } from './removed_variables';
import { count, fixed, kLongestName, list, number, percent, plural, shorten } from '../view/format';
import {
  chainName, isKnown, kFewestDraws, kLargestRhat, kSmallestEss, reaches, type GroupDiagnostics, type Summary, type Verdict,
} from './diagnostics';
import { hasUnfitDraws, kMadeFromDraws, kNoDraws, kRemedy, kUnfitDraws, predictionsUseGee, unfitColumns } from './estimating_equations';
import { leftoverChains } from './chain_runs';
import { unevenMissingP } from './missing_by_hospital';
import { contradictionsOf } from './contradictions';
import { heterogeneityText, refusedText, type HospitalJudgement, type HospitalRatio, type Position } from './hospital_ratios';

/** good: nothing to do. look: worth a look. act: not to be relied on as it is. plain: a fact. */
const kMostCheckWarnings = 3;

export type Level = 'good' | 'look' | 'act' | 'plain' | 'wait';

export interface Finding {
  question: string;
  level: Level;
  answer: string;
  details: string[];
  /** Section with the evidence. */
  section: string;
}

export function convergenceFinding(report: Report, groups: GroupDiagnostics[] | null): Finding | null {
  if (report.chains.length === 0) return null;
  const question = 'Did the chains converge?';
  if (!groups) return { question, level: 'wait', answer: 'The chains are being judged.', details: [], section: 'chains' };
  // A run with estimating equations that kept no draws has none to judge, which is how it should be.
  const kept = groups.filter(({ group, draws }) => !group.gee || draws > 0);
  const apart = [leftoverChains(report).text, ...new Set(groups.map(({ group }) => group.note))].filter(Boolean);
  if (kept.length === 0) {
    return {
      question, section: 'chains', level: 'plain', details: [],
      answer: `${kNoDraws} With generalized estimating equations they would not be fit for inference.`,
    };
  }
  const findings = kept.map((group) => judgeGroup(report, group));
  const worst = findings.find((f) => f.level === 'act') ?? findings.find((f) => f.level === 'look') ?? findings[0];
  if (findings.length === 1) return { question, section: 'chains', ...findings[0], details: [...findings[0].details, ...apart] };
  const group = (f: Judged) => `Group ${findings.indexOf(f) + 1}: ${f.answer}`;
  return {
    question, section: 'chains', level: worst.level,
    answer: `The folder holds ${findings.length} groups of chains that do not belong together. ${group(worst)}`,
    details: [...worst.details, ...findings.filter((f) => f !== worst).map(group), ...apart],
  };
}

type Judged = Pick<Finding, 'level' | 'answer' | 'details'>;

const kLevels: Record<Verdict, Level> = {
  not_fit_for_inference: 'act', not_converged: 'act', cannot_be_told: 'act', too_few_draws: 'look', no_sign_against: 'look', converged: 'good',
};

function judgeGroup(report: Report, diagnostics: GroupDiagnostics): Judged {
  const { summaries, verdict } = diagnostics;
  const level = kLevels[verdict];
  const answer = answerFor(diagnostics);
  if (verdict === 'not_fit_for_inference') {
    return { level, answer, details: [kMadeFromDraws, kRemedy, ...remarks(report, diagnostics)] };
  }
  const failing = summaries.map((summary, index) => ({ summary, index })).filter(({ summary }) => !reaches(summary));
  if (failing.length === 0) return { level, answer, details: remarks(report, diagnostics) };
  const name = (index: number) => shorten(diagnostics.group.names[index] ?? diagnostics.group.columns[index], kLongestName);
  const described = failing.sort((a, b) => severity(b.summary) - severity(a.summary)).map(({ summary, index }) => (isKnown(summary)
    ? `${name(index)} (R-hat ${fixed(summary.rhat, 3)}, ESS bulk ${fixed(summary.essBulk, 0)}, tail ${fixed(summary.essTail, 0)})`
    : `${name(index)} (cannot be judged)`));
  return {
    level, answer,
    details: [`Short of the thresholds: ${list(described, 5)}.`, adviceFor(diagnostics), ...remarks(report, diagnostics)],
  };
}

function answerFor({ verdict, group, draws, summaries }: GroupDiagnostics): string {
  const all = count(summaries.length);
  const number = (which: (summary: Summary) => boolean) => count(summaries.filter(which).length);
  switch (verdict) {
    case 'not_fit_for_inference': return kUnfitDraws;
    case 'not_converged':
      return `Not yet: ${number((s) => s.rhat > kLargestRhat)} of ${all} coefficients have R-hat above ${kLargestRhat}.`;
    case 'cannot_be_told':
      if (draws < kFewestDraws) return `Cannot be judged: ${plural(draws, 'kept draw')} a chain, and at least ${kFewestDraws} are needed.`;
      return `Cannot be judged: the draws of ${number((s) => !isKnown(s))} of ${all} coefficients are all the same or not finite.`;
    case 'too_few_draws':
      return `No sign against it, but there are too few effective draws: ${number((s) => !reaches(s))} of ${all} coefficients have an ` +
        `effective sample size below ${kSmallestEss}.`;
    case 'no_sign_against':
      return `No sign against it in this one chain: all ${all} coefficients have R-hat at most ${kLargestRhat} between its halves and ` +
        `effective sample sizes of ${kSmallestEss} or more.`;
    case 'converged':
      return `Yes. In ${plural(group.chains.length, 'chain')} all ${all} coefficients have R-hat at most ${kLargestRhat} and ` +
        `bulk and tail effective sample sizes of ${kSmallestEss} or more.`;
  }
}

function severity(summary: Summary): number {
  if (!isKnown(summary)) return summary.rhat > kLargestRhat ? Infinity : 500;
  const ess = Math.min(summary.essBulk, summary.essTail);
  return (summary.rhat > kLargestRhat ? 1000 * summary.rhat : 0) + 1 / Math.max(ess, 1e-3);
}

function adviceFor(diagnostics: GroupDiagnostics): string {
  if (diagnostics.verdict === 'cannot_be_told') return 'What to do: look at Steps, Thinning and the chain files.';
  const smallest = Math.min(...diagnostics.summaries.map((s) => Math.min(s.essBulk, s.essTail)));
  const factor = Math.ceil(kSmallestEss / Math.max(smallest, 1));
  const total = diagnostics.draws * diagnostics.group.chains.length;
  const steps = Number.isFinite(factor) && factor > 1
    ? `At this rate about ${factor} times as many kept draws are needed as the ${count(total)} here: raise Steps.`
    : 'Raise Steps.';
  return diagnostics.verdict === 'not_converged'
    ? `What to do: raise Burnin and Steps and run again; if R-hat stays above ${kLargestRhat}, look at the traces below for a ` +
      `trend or for chains that stay apart. ${steps}`
    : `What to do: ${steps.charAt(0).toLowerCase()}${steps.slice(1)}`;
}

export function repeatedText(report: Report, { repeated }: GroupDiagnostics): string {
  const pairs = repeated.map(([first, later]) => `${chainName(report, later)} (as ${chainName(report, first)})`);
  return `Not judged, because these hold the same draws as another, from the same seed or the same folder: ${list(pairs)}.`;
}

function remarks(report: Report, diagnostics: GroupDiagnostics): string[] {
  const { group, cut, repeated, draws } = diagnostics;
  const result: string[] = [];
  if (group.chains.length === 1 && !group.gee) {
    result.push('One chain cannot show that chains from different starts agree. Run several, with different seeds ' +
      '(hovar --chains 4 definition.xml), and drop all their folders here.');
  }
  if (repeated.length > 0) result.push(repeatedText(report, diagnostics));
  if (cut) result.push(`The chains differ in length; the first ${count(draws)} draws of each are judged.`);
  return result;
}

/** What the ratios say; with estimating equations preceded by what of them is wrong. */
export function hospitalFinding(judgement: HospitalJudgement | null, report?: Report): Finding | null {
  const found = judgement && ratioFinding(judgement);
  const unfit = report && unfitColumns(report);
  if (!found || !unfit) return found;
  const wrong = judgement !== null && judgement.pair.observed !== 'Y' && (unfit.observed || judgement.pair.expected === 'E[Y|X,P=0]-MCMC');
  return wrong
    ? { ...found, level: 'act', answer: `The ratios are not fit for inference. As they stand: ${found.answer}`, details: [unfit.text, kRemedy, ...found.details] }
    : { ...found, details: [...found.details, unfit.text] };
}

function ratioFinding(judgement: HospitalJudgement): Finding {
  const at = (...positions: Position[]) => judgement.ratios.filter((ratio) => positions.includes(ratio.position));
  const known = judgement.ratios.filter((ratio) => ratio.position !== 'unknown');
  const far = at('above998', 'below998');
  const near = at('above95', 'below95');
  const widened = judgement.adjusted ? 'widened ' : '';
  const details: string[] = [];
  const line = (text: string, found: HospitalRatio[]) => {
    if (found.length > 0) details.push(`${text}: ${list(sortedRatios(found), 12)}.`);
  };
  line('More outcomes than expected, outside 99.8 %', at('above998'));
  line('Fewer than expected, outside 99.8 %', at('below998'));
  line('More than expected, outside 95 % only', at('above95'));
  line('Fewer than expected, outside 95 % only', at('below95'));
  const chance95 = fixed(0.05 * known.length, known.length < 20 ? 1 : 0);
  const chance998 = number(0.002 * known.length, 2);
  const byWhat = judgement.adjusted ? 'With the limits widened by tau (box in the section Hospitals), about' : 'By chance alone about';
  details.push(`${byWhat} ${chance95} of ${count(known.length)} hospitals lie outside 95 % and ${chance998} outside 99.8 %` +
    `${judgement.adjusted ? ' if ratios vary by chance and by tau only' : ''}. Expectation: ${judgement.pair.expected}.`);
  if (judgement.heterogeneity) details.push(heterogeneityText(judgement));
  const refused = refusedText(judgement.ratios);
  if (refused) details.unshift(refused);
  return {
    question: 'Which hospitals stand out?', section: 'hospitals',
    level: refused ? 'act' : far.length > 0 ? 'look' : 'plain',
    answer: far.length + near.length === 0
      ? `None: all ${count(known.length)} lie within the ${widened}95 % limits.`
      : `${count(far.length)} of ${count(known.length)} ${far.length === 1 ? 'lies' : 'lie'} outside the ${widened}99.8 % limits, ` +
        `${count(near.length)} more outside the ${widened}95 % limits.`,
    details,
  };
}

function sortedRatios(ratios: HospitalRatio[]): string[] {
  return [...ratios].sort((a, b) => Math.abs(Math.log(b.ratio || 1e-9)) - Math.abs(Math.log(a.ratio || 1e-9)))
    .map((ratio) => `${shorten(ratio.row.id, kLongestName)} (${fixed(ratio.ratio, 2)})`);
}

/** An adverb for a C-statistic of at least 0.5. */
export function separationWord(value: number): string {
  if (value < 0.6) return 'barely';
  if (value < 0.7) return 'modestly';
  if (value < 0.8) return 'clearly';
  if (value < 0.9) return 'strongly';
  return 'very strongly';
}

export function fitFinding(report: Report, expected: string): Finding | null {
  const statistic = (name: string) => report.cStatistics[0]?.rows.find((row) => row.estimate === name)?.value.value ??
    report.individuals[0]?.calibrations.find((calibration) => calibration.expected === name)?.cStatistic;
  const value = statistic(expected);
  const calibration = report.individuals[0]?.calibrations.find((c) => c.expected === expected);
  if (value === undefined && !calibration) return null;
  const details: string[] = [];
  const others = ['E[Y|Z]', 'E[Y|X]', 'E[P|X]'].map((name) => ({ name, value: statistic(name) }))
    .filter((entry) => entry.value !== undefined);
  if (others.length > 0) {
    details.push(`C-statistics of the other models: ${list(others.map((o) => `${o.name} ${fixed(o.value ?? NaN, 3)}`))}. 0.5 is a coin, 1 is perfect.`);
  }
  const [calibrated, sentence] = calibration ? calibrationSentence(calibration) : [true, ''];
  if (sentence) details.push(sentence);
  const separated = value === undefined ? '' :
    value < 0 ? 'There is no pair of records to compare.' :
      value < 0.5 ? `${expected} orders records with and without the outcome worse than chance would (C-statistic ${fixed(value, 3)}).` :
        `${expected} ${separationWord(value)} separates records with the outcome from those without (C-statistic ${fixed(value, 3)}).`;
  const unfit = unfitColumns(report);
  const isWrong = unfit !== null && calibration?.observed === 'E[Y|P=0]' && (unfit.observed || expected === 'E[Y|X,P=0]-MCMC');
  if (unfit) details.push(unfit.text);
  const agreement = !calibration ? '' : isWrong
    ? ' Whether predicted and observed rates agree cannot be told.' : calibrated
    ? ' Predicted and observed rates agree.' : ' Predicted and observed rates differ in places.';
  return {
    question: 'How well do the models predict?', section: 'calibration',
    level: isWrong ? 'act' : !calibrated || (value !== undefined && value >= 0 && value < 0.5) ? 'look' : 'plain',
    answer: `${separated}${agreement}`.trim(), details,
  };
}

/** With ten intervals of 95 %, one miss is within chance. */
function calibrationSentence(calibration: Calibration): [boolean, string] {
  const missed = calibration.bins.filter((bin) => bin.meanPredicted < bin.lower || bin.meanPredicted > bin.upper);
  const total = `${count(calibration.meanObserved * calibration.records)} observed, ` +
    `${count(calibration.meanPredicted * calibration.records)} expected`;
  const ratio = calibration.meanObserved / calibration.meanPredicted;
  const good = missed.length <= 1 && Math.abs(ratio - 1) < 0.05;
  return [good, `Over all records: ${total} (ratio ${fixed(ratio, 2)}). In ${missed.length} of ${calibration.bins.length} groups of ` +
    'risk the mean prediction lies outside the 95 % interval of the observed rate.'];
}

export function missingFinding(report: Report): Finding | null {
  const log = report.logs.find((candidate) => candidate.analysis) ?? report.logs[0];
  const hospitals = report.hospitals.find((file) => !file.derived);
  const details: string[] = [];
  let records = NaN;
  let complete = NaN;
  if (hospitals) {
    const rows = hospitals.rows.filter((row) => isRecordCount(row.records));
    records = rows.reduce((sum, row) => sum + row.records, 0);
    complete = rows.reduce((sum, row) => sum + row.complete, 0);
  } else if (log) {
    records = log.records;
    complete = log.completeLast;
  }
  const individual = report.individuals[0];
  if (individual) {
    details.push(`Present on admission (P) is missing in ${count(individual.missingP)} of ${count(individual.records)} records ` +
      `(${percent(individual.missingP / individual.records, 1)}).`);
  }
  if (log && log.completeFirst !== log.completeLast && !Number.isNaN(log.completeFirst)) {
    details.push(`${count(log.completeFirst)} records were complete as read; without the removed variables ${count(log.completeLast)} are.`);
  }
  const uneven = unevenMissingP(report);
  details.push(...uneven);
  const cells = missingCells(report, records, records - complete);
  details.unshift(...missingCellsTexts(cells));
  if (Number.isNaN(complete) && details.length === 0) return null;
  const answers = [
    Number.isNaN(records - complete) ? '' : records === complete ? `None of the ${count(records)} records lacks a value.`
      : `${count(records - complete)} of ${count(records)} records (${percent(1 - complete / records)}) lack a value somewhere and were filled in.`,
    cells && cells.least > kManyCells && !predictionsUseGee(report) ? 'Many cells are missing: intervals of the fifth block come out too narrow.' : '',
  ].filter(Boolean);
  return {
    question: 'How much was missing?', section: hospitals ? 'hospitals' : 'run', level: (cells && cells.least > kManyCells) || uneven.length > 0 ? 'look' : 'plain',
    answer: answers.length > 0 ? answers.join(' ') : details.shift() ?? '',
    details,
  };
}

/** What records of runs tell beyond the logs: which fit a warning followed, and how often. */
function recordedWarnings(report: Report): string[] {
  const warnings = report.runRecords.flatMap((record) => record.warnings)
    .filter((warning) => !warning.text.startsWith('Warning: Y == 0 && P == 1'));
  const texts = warnings.map(({ text, fit, count: times }) =>
    `${text.replace(/^Warning: /, '')}${fit ? ` after ${fit}` : ''}${times > 1 ? `, ${count(times)} times` : ''}.`);
  return [...new Set(texts)].slice(0, 8);
}

export function runFinding(report: Report): Finding | null {
  const failed = report.runRecords.find((record) => record.exitStatus > 0);
  if (failed) {
    return {
      question: 'Did the run end well?', section: 'run', level: 'act', details: [],
      answer: `No: it ended with status ${failed.exitStatus}${failed.error ? ` (${failed.error})` : ''}. Files may be those of an earlier run.`,
    };
  }
  if (report.logs.length === 0) return null;
  const log = report.logs.find((candidate) => candidate.analysis) ?? report.logs[0];
  const unfinished = Math.max(...report.logs.map((candidate) => candidate.unfinishedFits));
  const contradictions = contradictionsOf(report, log);
  const forZ = removedForZ(log);
  const checked = checkTexts(report);
  const unfit = hasUnfitDraws(report) || predictionsUseGee(report);
  const act = [
    unfinished > 0 && `${plural(unfinished, 'fit')} stopped at the largest number of iterations, so the estimates are not those of the model. ` +
      'Raise MaxIterations, or PriorPrecision where a variable decides the outcome alone.',
    contradictions.isMany && `${contradictions.text} ${contradictions.advice}`,
    unfit && unfitText(report),
  ].filter((text) => text !== false);
  const look = [
    forZ > 0 && `${plural(forZ, 'variable was', 'variables were')} removed for a Z that says nothing of its own, and the X with it.`,
    checked.length > 0 && 'The check of the definition warned.',
  ].filter((text) => text !== false);
  const details = [
    ...removalTexts(log), contradictions.isMany ? '' : contradictions.text, ...recordedWarnings(report), ...checked,
    ...(hasUnfitDraws(report) ? [kMadeFromDraws] : []), ...(unfit ? [kRemedy] : []),
  ].filter(Boolean);
  const ended = unfinished > 0 ? 'Yes:' : 'The fits came to their end.';
  const plain = details.length > 0 ? 'The fits came to their end. The log tells of changes to the data.' : 'No.';
  return {
    question: 'Did the run warn of anything?', section: 'run',
    level: act.length > 0 ? 'act' : look.length > 0 ? 'look' : details.length > 0 ? 'plain' : 'good',
    answer: act.length + look.length > 0 ? [ended, ...act, ...look].join(' ') : plain,
    details,
  };
}

function unfitText(report: Report): string {
  return hasUnfitDraws(report)
    ? 'With generalized estimating equations the draws of the chain are not fit for inference.'
    : 'The predictions use the fifth block of a run with generalized estimating equations, which is not fit for inference.';
}

/** What a saved `hovar --check --data` warned of. */
function checkTexts(report: Report): string[] {
  const warnings = [...new Set(report.descriptions.flatMap((description) => description.warnings))];
  const shown = warnings.slice(0, kMostCheckWarnings).map((text, i) => `The check warned (${i + 1} of ${warnings.length}): ${text}`);
  const rest = warnings.length - shown.length;
  return rest > 0 ? [...shown, `${plural(rest, 'more warning of the check stands', 'more warnings of the check stand')} in its own file.`] : shown;
}
