// Chains: a table of every coefficient's diagnostics, and for one coefficient the drawings.
import { autocorrelation, runningMean } from '../statistics/convergence';
import { density } from '../statistics/density';
import { leftoverChains } from '../analysis/chain_runs';
import {
  chainName, columnDraws, kFewestDraws, kLargestRhat, kSmallestEss, reaches, type GroupDiagnostics, type Summary,
} from '../analysis/diagnostics';
import { kMadeFromDraws, kNoDraws, kUnfitDraws } from '../analysis/estimating_equations';
import { repeatedText } from '../analysis/verdict';
import { originText } from '../model';
import type { Report, SummaryFile } from '../model';
import { chart, legend, type Chart } from './chart';
import { button, choice, h, section, setText } from './dom';
import { count, fixed, kLongestName, list, number, plural, shorten } from './format';
import { lineChart } from './line_chart';
import { plot, Plot } from './plots';
import { dataTable, type Column } from './table';
import { seriesVariable } from './theme';

const kMostLags = 50;
const kDensityPoints = 256;
/** A list of more is slow and of no use. */
const kMostListed = 2000;
const kSource = 'A. Vehtari, A. Gelman, D. Simpson, B. Carpenter, P.-C. Bürkner, Rank-normalization, folding, and localization: An ' +
  'improved R-hat for assessing convergence of MCMC, Bayesian Analysis 16 (2021), 667–718';

interface Row {
  index: number;
  header: string;
  name: string;
  summary: Summary;
}

export function chainSection(report: Report, diagnostics: GroupDiagnostics[] | null): HTMLElement {
  const body = h('div', {});
  const shown = section('chains', 'Chains', 'Can the draws of the fifth block be relied on?', body);
  if (!diagnostics) {
    body.append(h('p', { class: 'note' }, 'The chains are being judged.'));
    return shown;
  }
  const show = (index: number) => body.replaceChildren(...groupParts(report, diagnostics[index]));
  if (diagnostics.length > 1) {
    body.before(h('div', { class: 'controls' }, choice('Chains', diagnostics.map(({ group }, index) => [String(index),
      `${plural(group.chains.length, 'chain')} of ${group.columns.length} coefficients, ${originText(report.chains[group.chains[0]].origin)}`]),
    '0', (value) => show(Number(value)))));
  }
  show(0);
  return shown;
}

function groupParts(report: Report, diagnostics: GroupDiagnostics): Node[] {
  const { group, draws, summaries } = diagnostics;
  const names = group.chains.map((chain) => chainName(report, chain));
  if (group.gee && draws === 0) {
    return [h('p', { class: 'note' }, `${kNoDraws} There is nothing to judge in ${list(names, 12)}.`), ...summaryTables(report)];
  }
  const left = leftoverChains(report).text;
  const parts: (Node | false)[] = [
    group.gee && h('p', { class: 'note strong' }, `${kUnfitDraws} ${kMadeFromDraws}`),
    h('p', { class: 'note' }, `${plural(group.chains.length, 'chain')} with ${plural(draws, 'kept draw')}${names.length > 1 ? ' each' : ''}: ${list(names, 12)}. ` +
      `Thresholds: R-hat at most ${kLargestRhat}, bulk and tail effective sample size (ESS) at least ${kSmallestEss}. Source: ${kSource}.`),
    left !== '' && h('p', { class: 'note strong' }, left),
    group.note !== '' && h('p', { class: 'note strong' }, group.note),
    diagnostics.repeated.length > 0 && h('p', { class: 'note strong' }, repeatedText(report, diagnostics)),
    diagnostics.cut && h('p', { class: 'note strong' }, `The chains differ in length; the first ${count(draws)} draws of each are judged.`),
  ];
  if (summaries.length === 0) {
    parts.push(h('p', { class: 'note strong' }, `There are too few draws to judge: at least ${kFewestDraws} a chain are needed.`));
  } else {
    const viewer = coefficientViewer(report, diagnostics, names);
    parts.push(tiles(diagnostics), viewer.element, diagnosticsTable(diagnostics, viewer.show));
  }
  parts.push(...summaryTables(report));
  return parts.filter((part): part is Node => part !== false);
}

const labelOf = ({ group }: GroupDiagnostics, index: number): string => {
  const column = shorten(group.columns[index], kLongestName);
  return group.names[index] === undefined ? column : `${shorten(group.names[index], kLongestName)} (${column})`;
};

function tiles(diagnostics: GroupDiagnostics): HTMLElement {
  const { summaries, group } = diagnostics;
  const tile = (title: string, value: (s: Summary) => number, worse: (a: number, b: number) => boolean, good: (v: number) => boolean, decimals: number) => {
    let worst = 0;
    summaries.forEach((summary, index) => {
      if (worse(value(summary), value(summaries[worst])) || Number.isNaN(value(summary))) worst = index;
    });
    const found = value(summaries[worst]);
    return h('div', { class: `tile ${good(found) && !group.gee ? 'good' : 'act'}` }, h('p', { class: 'tile-title' }, title),
      h('p', { class: 'tile-value' }, fixed(found, decimals)),
      h('p', { class: 'tile-note' }, `${group.gee ? 'not fit for inference' : good(found) ? 'reached' : 'not reached'}; ${labelOf(diagnostics, worst)}`));
  };
  const less = (a: number, b: number) => a < b;
  const more = (a: number, b: number) => a > b;
  return h('div', { class: 'tiles' },
    tile(`Largest R-hat (at most ${kLargestRhat})`, (s) => s.rhat, more, (v) => v <= kLargestRhat, 3),
    tile(`Smallest bulk ESS (at least ${kSmallestEss})`, (s) => s.essBulk, less, (v) => v >= kSmallestEss, 0),
    tile(`Smallest tail ESS (at least ${kSmallestEss})`, (s) => s.essTail, less, (v) => v >= kSmallestEss, 0));
}

/** The coefficient that most needs to be looked at. */
function worstOf(summaries: Summary[]): number {
  const badness = (s: Summary) => Math.max((Number.isNaN(s.rhat) ? 2 : s.rhat) - kLargestRhat, 0) * 1e6 + 1 / Math.max(Math.min(s.essBulk, s.essTail), 1e-3);
  return summaries.reduce((worst, s, index) => (badness(s) > badness(summaries[worst]) ? index : worst), 0);
}

function coefficientViewer(
  report: Report, diagnostics: GroupDiagnostics, names: string[],
): { element: HTMLElement; show(index: number, scroll: boolean): void } {
  const { group, draws, summaries } = diagnostics;
  let index = worstOf(summaries);
  const lines = () => columnDraws(report, group, index, draws);
  const label = () => labelOf(diagnostics, index);
  const steps = report.chains[group.chains[0]].steps.subarray(0, draws);
  const summary = h('p', { class: 'note', role: 'status' });

  const charts: Chart[] = [
    chart({ title: 'Trace', height: 260, half: true, caption: ['Should look like noise round one level, the same in every chain.'] }, (width) => lineChart({
      width, height: 260, steps, yLabel: 'log-odds', thin: true, label: `Trace of ${label()} in ${plural(names.length, 'chain')}`,
      lines: lines().map((values, i) => ({ name: names[i], values })),
    })),
    chart({ title: 'Density', height: 260, half: true, caption: ['Should be the same curve for every chain.'] }, (width) => drawDensity(label(), lines(), width)),
    chart({ title: 'Autocorrelation', height: 260, half: true, caption: ['Of draws so many apart. Should soon stay in the band, as independent draws do; slow decay calls for more Steps.'] },
      (width) => drawAutocorrelation(label(), lines(), width)),
    chart({ title: 'Running mean', height: 260, half: true, caption: ['Should settle, and on the same value in every chain.'] }, (width) => lineChart({
      width, height: 260, steps, yLabel: 'mean so far', thin: false, label: `Running mean of ${label()}`,
      lines: lines().map((values, i) => ({ name: names[i], values: runningMean(values) })),
    })),
  ];
  const all = summaries.length <= kMostListed;
  const select = choice(all ? 'Coefficient' : `Coefficient (the first ${count(kMostListed)}; the table below has all)`,
    summaries.slice(0, kMostListed).map((_, i) => [String(i), labelOf(diagnostics, i)]), String(index), (value) => show(Number(value), false));
  const step = (by: number) => show((index + by + summaries.length) % summaries.length, false);
  const element = h('div', { class: 'viewer' },
    h('h3', { tabindex: -1 }, 'One coefficient'),
    h('div', { class: 'controls' }, select, button('Previous', () => step(-1)), button('Next', () => step(1))),
    summary, legend(names.map((name, i) => ({ name, colour: seriesVariable(i) }))),
    h('div', { class: 'pair' }, ...charts.map((item) => item.element)));

  function show(next: number, scroll: boolean): void {
    index = next;
    const inner = select.querySelector('select');
    if (inner) inner.value = String(index);
    const s = summaries[index];
    setText(summary, `${label()}: mean ${number(s.mean)}, standard deviation ${number(s.sd)}, R-hat ${fixed(s.rhat, 3)}, ` +
      `ESS bulk ${fixed(s.essBulk, 0)}, tail ${fixed(s.essTail, 0)}. ${
        group.gee ? 'Not fit for inference.' : reaches(s) ? 'Reaches the thresholds.' : 'Does not reach the thresholds.'}`);
    for (const item of charts) item.update();
    if (scroll) {
      element.scrollIntoView({ block: 'start' });
      element.querySelector('h3')?.focus({ preventScroll: true });
    }
  }
  show(index, false);
  return { element, show };
}

function drawDensity(label: string, lines: Float64Array[], width: number): Element {
  const points = lines.flatMap((draws, chain) => {
    const { x, y } = density(draws, kDensityPoints);
    return Array.from(x, (value, i) => ({ chain, x: value, y: y[i] }));
  });
  return plot(`Density of ${label}`, {
    width, height: 260, marginLeft: 48, marginBottom: 46,
    x: { label: 'log-odds', labelAnchor: 'center', labelOffset: 36, labelArrow: 'none', ticks: 6 },
    y: { label: 'density', labelArrow: 'none', grid: true, ticks: 5, zero: true },
    marks: [Plot.ruleY([0], { stroke: 'var(--line)' }),
      Plot.line(points, { x: 'x', y: 'y', z: 'chain', stroke: (p) => seriesVariable(p.chain), strokeWidth: 1.75 })],
    color: { type: 'identity' },
  });
}

function drawAutocorrelation(label: string, lines: Float64Array[], width: number): Element {
  const lags = Math.min(kMostLags, lines[0].length - 2);
  const points = lines.flatMap((draws, chain) =>
    Array.from(autocorrelation(draws, lags), (value, lag) => ({ chain, lag, value })));
  const band = 1.96 / Math.sqrt(lines[0].length);
  const lowest = Math.min(-0.2, ...points.map((p) => p.value).filter(Number.isFinite));
  return plot(`Autocorrelation of ${label} up to lag ${lags}`, {
    width, height: 260, marginLeft: 48, marginBottom: 46,
    x: { label: 'lag, in kept draws', labelAnchor: 'center', labelOffset: 36, labelArrow: 'none', domain: [0, lags], ticks: 6 },
    y: { label: 'autocorrelation', labelArrow: 'none', domain: [lowest, 1], grid: true, ticks: 5 },
    marks: [
      Plot.rectY([0], { x1: 0, x2: lags, y1: -band, y2: band, fill: 'var(--muted)', fillOpacity: 0.16 }),
      Plot.ruleY([0], { stroke: 'var(--ink)' }),
      Plot.line(points, { x: 'lag', y: 'value', z: 'chain', stroke: (p) => seriesVariable(p.chain), strokeWidth: 1.5 }),
    ],
    color: { type: 'identity' },
  });
}

function diagnosticsTable(diagnostics: GroupDiagnostics, show: (index: number, scroll: boolean) => void): HTMLElement {
  const { group, summaries } = diagnostics;
  const rows: Row[] = summaries.map((summary, index) => ({ index, header: group.columns[index], name: group.names[index] ?? '', summary }));
  const value = (head: string, key: keyof Summary, text: (v: number) => string, extra: Partial<Column<Row>> = {}): Column<Row> => ({
    head, numeric: true, text: (r) => text(r.summary[key]), order: (r) => r.summary[key], ...extra,
  });
  const short = (v: number) => number(v, 4);
  const flag = (bad: (s: Summary) => boolean) => (r: Row) => (bad(r.summary) ? 'short' : '');
  const table = dataTable<Row>({
    caption: 'Coefficients of the chains', untitled: true, rows, csvName: 'chains.csv', rowName: ['coefficient', 'coefficients'],
    columns: [
      { head: 'Variable', text: (r) => r.name || r.header, free: true, node: (r) => button(r.name || r.header, () => show(r.index, true), { class: 'link', title: 'Show the drawings' }) },
      { head: 'Column', text: (r) => r.header, order: (r) => r.index },
      value('Mean', 'mean', short), value('SD', 'sd', short),
      value('2.5 %', 'q025', short, { group: 'Quantiles' }), value('50 %', 'median', short, { group: 'Quantiles' }), value('97.5 %', 'q975', short, { group: 'Quantiles' }),
      value('R-hat', 'rhat', (v) => fixed(v, 3), { hint: 'Rank-normalised split R-hat', className: flag((s) => !(s.rhat <= kLargestRhat)) }),
      value('bulk', 'essBulk', (v) => fixed(v, 0), { group: 'ESS', className: flag((s) => !(s.essBulk >= kSmallestEss)) }),
      value('tail', 'essTail', (v) => fixed(v, 0), { group: 'ESS', className: flag((s) => !(s.essTail >= kSmallestEss)) }),
      value('MCSE', 'mcseMean', (v) => number(v, 2), { hint: 'Monte Carlo standard error of the mean' }),
    ],
  });
  return h('div', { class: 'block' }, h('h3', {}, 'All coefficients'),
    h('p', { class: 'note' }, 'Over all chains together. Values short of a threshold are underlined. A variable’s name shows its drawings.'), table.element);
}

function summaryTables(report: Report): Node[] {
  return report.summaries.filter((file) => file.rows.length > 0).map((file) => {
    const table = dataTable<SummaryFile['rows'][number]>({
      caption: originText(file.origin), untitled: true, rows: file.rows, csvName: 'summary.csv',
      columns: [
        { head: 'Variable', text: (r) => r.variable, free: true },
        { head: 'Mean', numeric: true, text: (r) => r.mean.text, order: (r) => r.mean.value },
        { head: 'Variance', numeric: true, text: (r) => r.variance.text, order: (r) => r.variance.value },
        { head: 'Acceptance', numeric: true, text: (r) => r.acceptance.text, order: (r) => r.acceptance.value },
      ],
    });
    return h('details', { class: 'block' }, h('summary', {}, `Summary as written: ${originText(file.origin)}`), table.element);
  });
}
