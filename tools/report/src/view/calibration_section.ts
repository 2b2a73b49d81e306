// Calibration by tenths, and how well the predictions separate.
import { kCalibrationMethod } from '../statistics/calibration';
import { unfitColumns } from '../analysis/estimating_equations';
import { defaultExpectation } from '../analysis/hospital_ratios';
import { separationWord } from '../analysis/verdict';
import { originText } from '../model';
import type { Calibration, CalibrationBin, IndividualDigest, Report } from '../model';
import { chart } from './chart';
import { choice, h, section, setText, type Child } from './dom';
import { count, fixed, number, percent } from './format';
import { plot, Plot } from './plots';
import { dataTable, type Column } from './table';

/** Smallest share of the records that a drawn group has. */
const kSmallestDrawn = 0.01;

const kQuestions: ReadonlyMap<string, string> = new Map([
  ['E[Y|Z]', 'outcome, from Z'], ['E[Y|X]', 'outcome, from X'],
  ['E[Y|X,P=0]', 'outcome in hospital, records with P = 0'], ['E[Y|X,P=0]-MCMC', 'the same, by the fifth block'],
  ['E[P|X]', 'present on admission, from X'], ['E[P|YPXZ]', 'present on admission, where P is known: 1 by design'],
]);

export function calibrationSection(report: Report): HTMLElement {
  return section('calibration', 'Calibration and separation',
    'Do predicted and observed rates agree, and do those with the outcome have the higher predictions?',
    ...(report.individuals.length > 0 ? calibrationParts(report) : [
      h('p', { class: 'note' }, 'There are no individual predictions here, so calibration cannot be shown.')]),
    statisticsTable(report));
}

function calibrationParts(report: Report): Child[] {
  let digest: IndividualDigest = report.individuals[0];
  let name: string = defaultExpectation(report).column;
  const current = (): Calibration => digest.calibrations.find((c) => c.expected === name) ?? digest.calibrations[0];
  const note = h('p', { class: 'note' });
  const drawing = chart({
    title: 'Observed rate against mean prediction', height: 380, half: true,
    caption: [`On the diagonal prediction and observation agree. Method: ${kCalibrationMethod}. Records with the same prediction stay in ` +
      'one group, so groups can differ in size; those with less than 1 % of the records stand in the table only.'],
  }, (width) => drawCalibration(current(), width));
  const table = dataTable<CalibrationBin & { tenth: number }>({
    caption: 'The same in numbers: tenths of the records by prediction', columns: binColumns(), rows: numbered(current()),
    csvName: 'calibration.csv', rowName: ['group', 'groups'],
  });
  const refresh = () => {
    table.setRows(numbered(current()));
    drawing.update();
    const unfit = current().observed === 'E[Y|P=0]' ? unfitColumns(report) : null;
    setText(note, [noteOf(current()), unfit?.text].filter(Boolean).join(' '));
  };
  refresh();
  const files = report.individuals.length > 1 && choice('File', report.individuals.map((candidate, index) =>
    [String(index), originText(candidate.origin)]), '0', (value) => {
    digest = report.individuals[Number(value)];
    refresh();
  });
  return [
    h('div', { class: 'controls' }, files, choice('Prediction', digest.calibrations.map((c) => [c.expected, c.expected]), name, (value) => {
      name = value;
      refresh();
    })),
    note, h('div', { class: 'pair beside' }, drawing.element, table.element),
  ];
}

function noteOf(calibration: Calibration): string {
  const records = `${count(calibration.records)} records`;
  if (calibration.observed === 'E[Y|P=0]') {
    return `Observed is E[Y|P=0], the outcome as far as it arose in hospital. ${records}: those with P known to be 1 are left out, ` +
      'for prediction and observation are both 0 there.';
  }
  if (calibration.observed === 'E[P|YPXZ]') return `Observed is P, in the ${records} in which it is known.`;
  return `Observed is Y, in all ${records}.`;
}

const numbered = (calibration: Calibration) => calibration.bins.map((bin, index) => ({ ...bin, tenth: index + 1 }));

function binColumns(): Column<CalibrationBin & { tenth: number }>[] {
  return [
    { head: 'Group', numeric: true, text: (b) => String(b.tenth), order: (b) => b.tenth },
    { head: 'Records', numeric: true, text: (b) => count(b.count), order: (b) => b.count },
    { head: 'Predicted', hint: 'Mean prediction', numeric: true, text: (b) => fixed(b.meanPredicted, 4), order: (b) => b.meanPredicted },
    { head: 'Observed', hint: 'Observed rate', numeric: true, text: (b) => fixed(b.observedRate, 4), order: (b) => b.observedRate },
    { head: 'From', group: '95 % interval', numeric: true, text: (b) => fixed(b.lower, 4), order: (b) => b.lower },
    { head: 'to', group: '95 % interval', numeric: true, text: (b) => fixed(b.upper, 4), order: (b) => b.upper },
  ];
}

function drawCalibration(calibration: Calibration, width: number): Element {
  // A group of a few records has an interval that would leave no room for the others.
  const bins = calibration.bins.filter((bin) => bin.count >= kSmallestDrawn * calibration.records);
  const top = 1.06 * Math.max(0.01, ...bins.map((bin) => Math.max(bin.upper, bin.meanPredicted)));
  const tip = (b: CalibrationBin) => `${count(b.count)} records\npredicted ${percent(b.meanPredicted, 1)}\n` +
    `observed ${percent(b.observedRate, 1)} (${percent(b.lower, 1)} to ${percent(b.upper, 1)})`;
  return plot(`Calibration of ${calibration.expected} in ${bins.length} groups`, {
    width, height: 380, marginLeft: 52, marginBottom: 46,
    x: { label: 'Mean prediction', labelAnchor: 'center', labelOffset: 36, labelArrow: 'none', domain: [0, top], tickFormat: '.0%', grid: true, ticks: 6 },
    y: { label: 'Observed rate', labelArrow: 'none', domain: [0, top], tickFormat: '.0%', grid: true, ticks: 6 },
    marks: [
      Plot.line([[0, 0], [top, top]], { stroke: 'var(--muted)', strokeDasharray: '5,4' }),
      Plot.ruleX(bins, { x: 'meanPredicted', y1: 'lower', y2: 'upper', stroke: 'var(--accent)', strokeWidth: 2 }),
      Plot.dot(bins, { x: 'meanPredicted', y: 'observedRate', fill: 'var(--accent)', r: 4 }),
      Plot.tip(bins, Plot.pointer({ x: 'meanPredicted', y: 'observedRate', title: tip, fill: 'var(--paper)', stroke: 'var(--line)' })),
    ],
  });
}

function inWords(value: number): string {
  if (!(value >= 0)) return 'no pair to compare';
  return value < 0.5 ? 'orders worse than chance' : `${separationWord(value)} separates`;
}

interface StatisticRow {
  estimate: string;
  text: string;
  value: number;
  computed: number;
}

function statisticsTable(report: Report): HTMLElement {
  const file = report.cStatistics[0];
  const computedOf = (name: string) =>
    report.individuals[0]?.calibrations.find((c) => c.expected === name)?.cStatistic ?? NaN;
  const rows: StatisticRow[] = file
    ? file.rows.map(({ estimate, value }) => ({ estimate, text: value.text, value: value.value, computed: computedOf(estimate) }))
    : (report.individuals[0]?.calibrations ?? []).map((c) => ({ estimate: c.expected, text: '', value: c.cStatistic, computed: c.cStatistic }));
  const columns: Column<StatisticRow>[] = [
    { head: 'Prediction', text: (r) => r.estimate, free: true },
    { head: 'Question', text: (r) => kQuestions.get(r.estimate) ?? '' },
    ...(file ? [{ head: 'C-statistic', numeric: true, text: (r: StatisticRow) => r.text, order: (r: StatisticRow) => r.value }] : []),
    ...(report.individuals.length > 0 ? [{
      head: 'Known values only', hint: 'From the individual predictions; for E[Y|X,P=0] among records with P known to be 0',
      numeric: true, text: (r: StatisticRow) => (Number.isNaN(r.computed) ? '' : number(r.computed, 6)), order: (r: StatisticRow) => r.computed,
    }] : []),
    { head: 'In words', text: (r) => (r.estimate === 'E[P|YPXZ]' ? '' : inWords(r.value)) },
  ];
  const table = dataTable<StatisticRow>({ caption: 'C-statistics', untitled: true, columns, rows, csvName: 'c-statistics.csv' });
  return h('div', { class: 'block' }, h('h3', {}, 'C-statistics'),
    h('p', { class: 'note' }, file
      ? `From ${originText(file.origin)}. 0.5 is a coin, 1 is perfect separation, -1 means that there was no pair to compare. `
      : 'There is no C-statistics file here; these were computed in the page from the individual predictions, among known values of P. ',
    'The predictions are checked on the data at hand; on the data that they were fitted to this flatters them a little.'),
    table.element);
}
