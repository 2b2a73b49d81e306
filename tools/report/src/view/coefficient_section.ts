// The five fits side by side.
import { usesGee } from '../analysis/estimating_equations';
import { originText } from '../model';
import type { CoefficientBlock, CoefficientFile, Report } from '../model';
import { chart } from './chart';
import { choice, h, section, setText } from './dom';
import { number, shorten } from './format';
import { plot, Plot } from './plots';
import { dataTable, type Column } from './table';
import { visible } from './visible';

/** The 97.5 % point of the normal distribution. */
const kNormal = 1.959963984540054;
const kMeanings = ['present on admission, from X', 'outcome, from Z', 'outcome, from X', 'outcome in hospital, complete records',
  'the same, missing values filled in'];

/** A drawing of more is slow, and nobody looks through it. */
const kMostDrawn = 500;

interface Estimate {
  block: number;
  variable: number;
  estimate: number;
  lower: number;
  upper: number;
}

/** The empirical standard error where there is one, for it holds under clustering. */
export function standardError(block: CoefficientBlock, variable: number): { text: string; value: number; kind: string } {
  const { mse, ese } = block;
  if (ese[variable].text.trim() !== '') return { ...ese[variable], kind: 'ese' };
  return { ...mse[variable], kind: 'mse' };
}

export function coefficientSection(report: Report): HTMLElement {
  let file = report.coefficients[0];
  let odds = false;
  const note = h('p', { class: 'note' });
  const drawing = chart({
    title: 'Log-odds ratios of the five fits, with 95 % intervals', height: 240, smallest: 760,
    caption: ['To the right of 0 the odds are higher with the finding. The intercepts stand in the table only. Arrows at the edge mark ' +
      `intervals that go on. With more than ${kMostDrawn} variables the first ${kMostDrawn} are drawn.`],
  }, (width) => drawFits(file, width));
  const table = dataTable<number>({
    caption: 'Coefficients of the five fits', columns: columnsOf(file, odds), rows: variablesOf(file), csvName: 'coefficients.csv',
    rowName: ['variable', 'variables'],
  });
  const refresh = () => {
    table.setColumns(columnsOf(file, odds));
    table.setRows(variablesOf(file));
    drawing.update();
    setText(note, noteOf(file));
  };
  refresh();
  const files = report.coefficients.length > 1 && choice('File', report.coefficients.map((candidate, index) =>
    [String(index), originText(candidate.origin)]), '0', (value) => {
    file = report.coefficients[Number(value)];
    refresh();
  });
  return section('coefficients', 'Coefficients', 'What each finding adds to the odds, by each of the five fits.',
    h('div', { class: 'controls' }, files, choice('Table shows', [['log', 'log-odds, as in the file'], ['odds', 'odds ratios']], 'log', (value) => {
      odds = value === 'odds';
      refresh();
    })),
    h('dl', { class: 'meanings' }, ...file.blocks.flatMap((block, b) => [h('dt', {}, block.name), h('dd', {}, kMeanings[b])])),
    note, drawing.element, table.element);
}

const variablesOf = (file: CoefficientFile): number[] => file.xNames.map((_, index) => index);

function noteOf(file: CoefficientFile): string {
  const intervals = 'Intervals are the estimate and 1.96 standard errors to each side';
  return usesGee(file)
    ? `${intervals}, by the empirical standard error (ese), for the run used generalized estimating equations. The fifth block is not fit ` +
      'for inference in such a run: its draws are far too wide. It is left out of the drawing; use the fourth.'
    : `${intervals}, by the model-based standard error (mse).`;
}

function columnsOf(file: CoefficientFile, odds: boolean): Column<number>[] {
  const names: Column<number> = {
    head: 'Variable', text: (i) => file.xNames[i], free: true,
    node: (i) => h('span', { class: 'name', title: `Z: ${file.zNames[i]}` }, file.xNames[i]),
  };
  return [names, ...file.blocks.flatMap((block) => blockColumns(block, odds))];
}

function blockColumns(block: CoefficientBlock, odds: boolean): Column<number>[] {
  const shown = (value: number) => (Number.isNaN(value) ? '' : number(odds ? Math.exp(value) : value));
  const bound = (side: number) => (i: number) => block.estimate[i].value + side * kNormal * standardError(block, i).value;
  const estimate: Column<number> = {
    head: odds ? 'OR' : 'estimate', group: block.name, numeric: true, order: (i) => block.estimate[i].value, className: () => 'first',
    text: (i) => (odds ? shown(block.estimate[i].value) : block.estimate[i].text),
  };
  const error: Column<number> = {
    head: standardError(block, 0).kind, group: block.name, numeric: true, hint: 'Standard error',
    text: (i) => standardError(block, i).text, order: (i) => standardError(block, i).value,
  };
  const interval: Column<number>[] = [
    { head: 'from', group: block.name, numeric: true, text: (i) => shown(bound(-1)(i)), order: bound(-1) },
    { head: 'to', group: block.name, numeric: true, text: (i) => shown(bound(1)(i)), order: bound(1) },
  ];
  return odds ? [estimate, ...interval] : [estimate, error, ...interval];
}

function drawFits(file: CoefficientFile, width: number): Element {
  const drawnBlocks = usesGee(file) ? file.blocks.slice(0, -1) : file.blocks;
  const drawn = variablesOf(file).slice(1, kMostDrawn + 1);
  const estimates: Estimate[] = drawnBlocks.flatMap((block, b) => block.estimate.slice(1, kMostDrawn + 1).map((cell, i) => {
    const half = kNormal * standardError(block, i + 1).value;
    return { block: b, variable: i + 1, estimate: cell.value, lower: cell.value - half, upper: cell.value + half };
  }));
  const [left, right] = drawnDomain(estimates);
  const clip = (value: number) => Math.min(Math.max(value, left), right);
  const label = (index: number) => visible(shorten(file.xNames[index], 26));
  const longest = Math.max(0, ...drawn.map((index) => label(index).length));
  const edges = estimates.flatMap((e) => [
    ...(e.upper > right ? [{ ...e, at: right, symbol: '›' }] : []), ...(e.lower < left ? [{ ...e, at: left, symbol: '‹' }] : []),
  ]);
  const tip = (e: Estimate) => `${visible(shorten(file.xNames[e.variable], 60))}, ${drawnBlocks[e.block].name}\n${number(e.estimate)} ` +
    `(${number(e.lower)} to ${number(e.upper)})\nodds ratio ${number(Math.exp(e.estimate))}`;
  return plot(`Estimates and intervals of ${drawn.length} variables in ${drawnBlocks.length} fits`, {
    width, height: 80 + 20 * drawn.length, marginLeft: 16 + 7 * longest, marginTop: 30, marginBottom: 46,
    fx: { domain: drawnBlocks.map((_, b) => b), label: null, tickFormat: (b: number) => drawnBlocks[b].name, padding: 0.08 },
    x: { domain: [left, right], label: 'log-odds', labelAnchor: 'center', labelOffset: 36, labelArrow: 'none', ticks: 4, grid: true },
    y: { domain: drawn, label: null, tickFormat: label, tickSize: 0, type: 'band' },
    marks: [
      Plot.ruleX([0], { stroke: 'var(--muted)' }),
      Plot.ruleY(estimates, { fx: 'block', y: 'variable', x1: (e) => clip(e.lower), x2: (e) => clip(e.upper), stroke: 'var(--accent)', strokeWidth: 2 }),
      Plot.dot(estimates.filter((e) => e.estimate === clip(e.estimate)), { fx: 'block', y: 'variable', x: 'estimate', fill: 'var(--accent)', r: 3.5 }),
      Plot.text(edges, { fx: 'block', y: 'variable', x: 'at', text: 'symbol', fontSize: 14, fill: 'var(--ink)' }),
      Plot.tip(estimates, Plot.pointerY({ fx: 'block', y: 'variable', x: 'estimate', title: tip, fill: 'var(--paper)', stroke: 'var(--line)' })),
    ],
  });
}

/** Room for all but the widest intervals, which a coefficient that decides the outcome alone can have. */
function drawnDomain(estimates: Estimate[]): [number, number] {
  const finite = estimates.filter((e) => Number.isFinite(e.estimate));
  const widths = finite.map((e) => e.upper - e.lower).filter(Number.isFinite).sort((a, b) => a - b);
  const usual = 1.5 * (widths[Math.floor(0.9 * (widths.length - 1))] ?? 1);
  const low = finite.map((e) => Math.max(Number.isFinite(e.lower) ? e.lower : e.estimate, e.estimate - usual));
  const high = finite.map((e) => Math.min(Number.isFinite(e.upper) ? e.upper : e.estimate, e.estimate + usual));
  return [Math.min(-0.5, ...low) - 0.05, Math.max(0.5, ...high) + 0.05];
}
