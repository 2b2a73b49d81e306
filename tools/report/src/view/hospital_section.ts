// Hospitals: funnel, caterpillar and table over one expectation.
import {
  defaultExpectation, expectationNote, funnelCurves, heterogeneityText, isTold, judgeHospitals, kPositionText, meanOf, pairOf,
  type HospitalJudgement, type HospitalRatio, type Position,
} from '../analysis/hospital_ratios';
import { kIntervalMethod, kLimitsMethod, kWideningMethod } from '../statistics/funnel';
import { kExpectations, kPredictionColumns, originText } from '../model';
import type { HospitalFile, PredictionColumn, Report } from '../model';
import { chart, legend, type Chart } from './chart';
import { checkbox, choice, h, section, setText } from './dom';
import { count, fixed, kLongestName, plural, shorten } from './format';
import { cloud, plot, Plot } from './plots';
import { dataTable, type Column } from './table';
import { visible } from './visible';

/** More hospitals than this are drawn without a symbol each, and their intervals as a band. */
const kMostSymbols = 1200;
const kMostLabels = 14;
/** Above the drawings: the name of the axis, and below it the arrows at the edge. */
const kTop = 36;

const kColours: Record<Position, string> = {
  above998: 'var(--bad)', below998: 'var(--bad)', above95: 'var(--warn)', below95: 'var(--warn)',
  inside: 'var(--muted)', unknown: 'var(--muted)',
};
const kSymbols: Record<Position, Plot.SymbolType> = {
  above998: 'diamond', below998: 'diamond', above95: 'triangle', below95: 'triangle2',
  inside: 'circle', unknown: 'circle',
};

/**
 * `first` is the judgement of the first file that has hospitals, by the default expectation. `onWiden` is
 * called when the reader chooses between limits of chance alone and widened ones.
 */
export function hospitalSection(
  report: Report, first: HospitalJudgement, onWiden: (adjusted: boolean) => void,
): HTMLElement {
  const preset = defaultExpectation(report);
  const choices = report.hospitals.filter((candidate) => candidate.rows.length > 0);
  let file = choices[0];
  let column: PredictionColumn = preset.column;
  let adjusted = false;
  let searched = '';
  let judgement = first;

  const reason = h('p', { class: 'note' });
  const spread = h('p', { class: 'note', role: 'status' });
  const found = h('p', { class: 'note', role: 'status' });
  const funnel = funnelChart(() => judgement, () => searched);
  const caterpillar = caterpillarChart(() => judgement, () => searched);
  const table = dataTable<HospitalRatio>({
    caption: 'Hospitals with observed and expected outcomes', columns: columnsOf(column, file), rows: judgement.ratios,
    csvName: 'hospitals.csv', rowName: ['hospital', 'hospitals'], rowClass: (row) => row.position,
  });

  function refresh(): void {
    judgement = judgeHospitals(file, pairOf(column), adjusted);
    table.setColumns(columnsOf(column, file));
    search(searched);
    explain();
    funnel.update();
    caterpillar.update();
  }

  function search(text: string): void {
    searched = text;
    const matching = matches(judgement.ratios, text);
    table.setRows(matching);
    setText(found, text === '' ? '' : matching.length === 0 ? `No hospital ID holds “${shorten(text, kLongestName)}”.`
      : `${count(matching.length)} of ${count(judgement.ratios.length)} hospitals, ringed in the plots.`);
  }

  function explain(): void {
    setText(reason, expectationNote(report, column));
    setText(spread, spreadText(judgement));
  }

  const searchBox = h('input', {
    type: 'search', placeholder: 'Hospital ID', autocomplete: 'off', spellcheck: 'false',
    oninput: () => {
      search(searchBox.value);
      funnel.update();
      caterpillar.update();
    },
  });
  const files = choices.length > 1 && choice('File', choices.map((candidate, index) =>
    [String(index), originText(candidate.origin)]), '0', (value) => {
    file = choices[Number(value)];
    refresh();
  });
  explain();
  return section('hospitals', 'Hospitals',
    'Observed over expected outcomes. 1 is what the hospital’s patients would have had with the outcomes of all patients taken ' +
      'together. A ratio compares a hospital with the expectation for its own patients; two ratios do not compare two hospitals.',
    h('div', { class: 'controls' }, files,
      choice('Expectation', kExpectations.map((pair) => [pair.expected, `${pair.expected} (against ${pair.observed})`]), column,
        (value) => {
          column = value as PredictionColumn;
          refresh();
        }),
      checkbox('Widen the limits for differences between hospitals', false, (checked) => {
        adjusted = checked;
        refresh();
        onWiden(adjusted);
      }),
      h('label', { class: 'control' }, h('span', {}, 'Find'), searchBox)),
    reason, spread, found,
    legend([
      { name: 'within the 95 % limits', colour: kColours.inside, shape: 'circle' },
      { name: 'outside 95 %', colour: kColours.above95, shape: 'triangle' },
      { name: 'outside 99.8 %', colour: kColours.above998, shape: 'diamond' },
    ]),
    h('div', { class: 'pair' }, funnel.element, caterpillar.element),
    table.element);
}

const matches = (ratios: HospitalRatio[], text: string): HospitalRatio[] =>
  text === '' ? ratios : ratios.filter((ratio) => ratio.row.id.toLowerCase().includes(text.toLowerCase()));

function spreadText(judgement: HospitalJudgement): string {
  if (!judgement.heterogeneity) return '';
  if (!isTold(judgement.heterogeneity)) return heterogeneityText(judgement);
  const limits = judgement.heterogeneity.tau2 === 0
    ? 'With tau = 0 the box that widens the limits leaves them as they are.'
    : judgement.adjusted
      ? `The limits are widened by tau (${kWideningMethod}); drawings, table and verdict follow.`
      : 'The limits are those of chance alone. The box widens them by tau, for drawings, table and verdict.';
  return `${heterogeneityText(judgement)} ${limits}`;
}

function columnsOf(column: PredictionColumn, file: HospitalFile): Column<HospitalRatio>[] {
  const pair = pairOf(column);
  const cell = (name: PredictionColumn) => (ratio: HospitalRatio) => ratio.row.means[kPredictionColumns.indexOf(name)].text;
  const counts: Column<HospitalRatio>[] = [
    { head: 'Hospital', text: (r) => r.row.id, free: true, node: (r) => h('span', { class: 'name' }, r.row.id) },
    { head: 'Records', numeric: true, text: (r) => String(r.row.records), order: (r) => r.row.records },
  ];
  const complete: Column<HospitalRatio>[] = file.derived ? [] : [
    { head: 'Complete', hint: 'Records without a missing value', numeric: true, text: (r) => String(r.row.complete), order: (r) => r.row.complete },
  ];
  const missing: Column<HospitalRatio>[] = file.rows.every((row) => Number.isNaN(row.missingP)) ? [] : [
    { head: 'P missing', hint: 'Records without P', numeric: true,
      text: (r) => (Number.isNaN(r.row.missingP) ? '' : String(r.row.missingP)), order: (r) => r.row.missingP },
  ];
  return [...counts, ...complete, ...missing,
    { head: 'Observed', hint: `Records x ${pair.observed}`, numeric: true, text: (r) => fixed(r.observed, 1), order: (r) => r.observed },
    { head: 'Expected', hint: `Records x ${pair.expected}`, numeric: true, text: (r) => fixed(r.expected, 1), order: (r) => r.expected },
    { head: 'O/E', hint: 'Observed over expected', numeric: true, text: (r) => fixed(r.ratio, 2), order: (r) => r.ratio },
    { head: 'From', group: '95 % interval', numeric: true, text: (r) => fixed(r.interval.lower, 2), order: (r) => r.interval.lower },
    { head: 'to', group: '95 % interval', numeric: true, text: (r) => fixed(r.interval.upper, 2), order: (r) => r.interval.upper },
    { head: 'Position', hint: 'Against the limits of the funnel', text: (r) => kPositionText[r.position],
      order: (r) => ['below998', 'below95', 'inside', 'above95', 'above998', 'unknown'].indexOf(r.position),
      node: (r) => h('span', { class: `position ${r.position}` }, kPositionText[r.position]) },
    { head: pair.observed, group: 'Rates as in the file', numeric: true, text: cell(pair.observed), order: (r) => meanOf(r.row, pair.observed) },
    { head: pair.expected, group: 'Rates as in the file', numeric: true, text: cell(pair.expected), order: (r) => meanOf(r.row, pair.expected) },
  ];
}

interface Drawn extends HospitalRatio {
  label: string;
  tip: string;
}

function drawable(judgement: HospitalJudgement): Drawn[] {
  return judgement.ratios.filter((ratio) => ratio.position !== 'unknown').map((ratio) => ({
    ...ratio,
    label: visible(shorten(ratio.row.id, 18)),
    tip: `${visible(shorten(ratio.row.id, 60))}\n${fixed(ratio.observed, 1)} observed, ${fixed(ratio.expected, 1)} expected\n` +
      `O/E ${fixed(ratio.ratio, 2)} (${fixed(ratio.interval.lower, 2)} to ${fixed(ratio.interval.upper, 2)})\n${kPositionText[ratio.position]}`,
  }));
}

/**
 * Those outside 99.8 % get their names, the farthest first, where there is room: `place` gives the
 * pixels of a point. Among thousands only those searched for do.
 */
function labelled(drawn: Drawn[], searched: string, place: (d: Drawn) => [number, number]): Drawn[] {
  const ringed = searched === '' ? [] : (matches(drawn, searched) as Drawn[]);
  const far = drawn.length > kMostSymbols ? [] : drawn.filter((d) => d.position === 'above998' || d.position === 'below998')
    .sort((a, b) => Math.abs(b.ratio - 1) * Math.sqrt(b.expected) - Math.abs(a.ratio - 1) * Math.sqrt(a.expected));
  const kept: { item: Drawn; x: number; y: number }[] = [];
  for (const item of new Set([...ringed, ...far])) {
    const [x, y] = place(item);
    const free = kept.every((other) => Math.abs(other.y - y) > 13 ||
      (other.x < x ? x - other.x > 14 + 7 * other.item.label.length : other.x - x > 14 + 7 * item.label.length));
    if (free && kept.length < kMostLabels) kept.push({ item, x, y });
  }
  return kept.map(({ item }) => item);
}

/**
 * The largest ratio that is drawn at its place. A few far larger ones (fewer than one in twenty), as of
 * tiny hospitals, stand at the edge, so that they do not flatten the others.
 */
function drawnTop(drawn: Drawn[]): number {
  const ratios = drawn.map((d) => d.ratio);
  const usual = Math.max(3, 1.5 * quantile(ratios, 0.95));
  return 1.08 * Math.min(usual, Math.max(2, ...ratios));
}

/**
 * Arrows at the upper edge for what goes on beyond it: one for each, or, where these stand closer than an
 * arrow is wide, one for several. `share` gives the place across the drawing from 0 to 1.
 */
function edgeArrows(beyond: Drawn[], x: string, top: number, width: number, share: (d: Drawn) => number): Plot.Text {
  const places = new Map(beyond.map((d) => [Math.round((share(d) * width) / 7), d]));
  return Plot.text([...places.values()], {
    x, y: () => top, text: () => '↑', dy: -9, fontSize: 14, fontWeight: 700, fill: 'var(--ink)', className: 'beyond',
  });
}

function funnelChart(judgement: () => HospitalJudgement, searched: () => string): Chart {
  return chart({
    title: 'Funnel: does the ratio differ from 1 by more than chance?', height: 400, half: true,
    caption: [`Limits: ${kLimitsMethod}. Curves are for cases of average risk; each hospital is judged by its own limits, which is what ` +
      'colour, symbol and table tell. An arrow at the upper edge: the ratio is larger. The table below has the numbers.'],
  }, (width) => {
    const current = judgement();
    const drawn = drawable(current);
    const curves = funnelCurves(current);
    const top = drawnTop(drawn);
    const clip = (value: number) => Math.min(value, top);
    const beyond = drawn.filter((d) => d.ratio > top);
    const rings = searched() === '' ? [] : matches(drawn, searched());
    const outside = drawn.filter((d) => d.position !== 'inside').length;
    const right = Math.max(1, ...curves.map((c) => c.expected));
    const place = (d: Drawn): [number, number] => [(d.expected / right) * (width - 100), (1 - clip(d.ratio) / top) * (354 - kTop)];
    return plot(`Funnel plot of ${drawn.length} hospitals, ${outside} outside the 95 % limits${beyondText(beyond.length, 'ratio')}`, {
      width, height: 400, marginTop: kTop, marginLeft: 44, marginBottom: 46, marginRight: 56,
      x: { label: 'Expected outcomes', labelAnchor: 'center', labelOffset: 36, labelArrow: 'none', domain: [0, right], ticks: width < 500 ? 5 : 8 },
      y: { label: 'Observed / expected', labelArrow: 'none', domain: [0, top], grid: true },
      marks: [
        Plot.areaY(curves, { x: 'expected', y1: (c) => c.limits998.lower, y2: (c) => clip(c.limits998.upper), fill: 'var(--muted)', fillOpacity: 0.08 }),
        Plot.areaY(curves, { x: 'expected', y1: (c) => c.limits95.lower, y2: (c) => clip(c.limits95.upper), fill: 'var(--muted)', fillOpacity: 0.1 }),
        ...(['lower', 'upper'] as const).flatMap((side) => [
          Plot.line(curves, { x: 'expected', y: (c) => c.limits998[side], stroke: 'var(--bad)', strokeWidth: 1.25, clip: true }),
          Plot.line(curves, { x: 'expected', y: (c) => c.limits95[side], stroke: 'var(--warn)', strokeWidth: 1.25, strokeDasharray: '5,4', clip: true }),
        ]),
        Plot.ruleY([1], { stroke: 'var(--ink)', strokeWidth: 1 }),
        ...points(drawn, 'expected', top, drawn.length > 500 ? 2.5 : 4),
        edgeArrows(beyond, 'expected', top, width, (d) => d.expected / right),
        Plot.dot(rings, { x: 'expected', y: (d) => clip(d.ratio), r: 9, stroke: 'var(--accent)', strokeWidth: 2.5 }),
        Plot.text(labelled(drawn, searched(), place), { x: 'expected', y: (d) => clip(d.ratio), text: 'label', dx: 8, textAnchor: 'start', fill: 'var(--ink)', stroke: 'var(--paper)', strokeWidth: 4 }),
        Plot.text(lastOf(curves), { x: 'expected', y: (c) => c.limits998.upper, text: () => '99.8 %', dx: 4, dy: -4, textAnchor: 'start', fill: 'var(--bad)' }),
        Plot.text(lastOf(curves), { x: 'expected', y: (c) => c.limits95.upper, text: () => '95 %', dx: 4, dy: 6, textAnchor: 'start', fill: 'var(--warn)' }),
        Plot.tip(drawn, Plot.pointer({ x: 'expected', y: (d) => clip(d.ratio), title: 'tip', fill: 'var(--paper)', stroke: 'var(--line)' })),
      ],
      color: { type: 'identity' }, symbol: { type: 'identity' } as Plot.ScaleOptions,
    });
  });
}

/** For the description of a drawing. */
const beyondText = (many: number, what: string): string =>
  many > 0 ? `; ${plural(many, what)} beyond the upper edge, marked by arrows` : '';

/** A ratio above `top` stands there. */
function points(all: Drawn[], x: string, top: number, r: number): Plot.Dot[] {
  const drawn = all.map((d) => ({ ...d, y: Math.min(d.ratio, top) }));
  if (drawn.length > kMostSymbols) {
    const layers: Position[][] = [['inside'], ['above95', 'below95'], ['above998', 'below998']];
    return layers.map((layer) => cloud(drawn.filter((d) => layer.includes(d.position)), { x, y: 'y', colour: kColours[layer[0]], r: 1.8 }));
  }
  return [Plot.dot(drawn, {
    x, y: 'y', stroke: (d: Drawn) => kColours[d.position], fill: (d: Drawn) => kColours[d.position], fillOpacity: 0.55,
    symbol: (d: Drawn) => kSymbols[d.position], r,
  })];
}

const lastOf = <T>(items: T[]): T[] => items.slice(-1);

function caterpillarChart(judgement: () => HospitalJudgement, searched: () => string): Chart {
  return chart({
    title: 'Caterpillar: ratios in order, with 95 % intervals', height: 400, half: true,
    caption: [`Intervals: ${kIntervalMethod}. ` + 'An interval that leaves out 1 says that the ratio differs from 1, ' +
      'hospital by hospital; among many, some do so by chance. The intervals are wider than the interpolated limits of the funnel, so ' +
      'a hospital just outside the limits can have an interval that includes 1. An arrow at the upper edge: the interval goes on beyond. Colours are those ' +
      'of the funnel.'],
  }, (width) => {
    const drawn = drawable(judgement()).sort((a, b) => a.ratio - b.ratio);
    const ranked = drawn.map((d, index) => ({ ...d, rank: index + 1 }));
    const top = Math.max(drawnTop(drawn), Math.min(quantile(drawn.map((d) => d.interval.upper), 0.9), 8));
    const clipped = (d: Drawn) => Math.min(d.interval.upper, top);
    const lower = (d: Drawn) => Math.min(d.interval.lower, top);
    const beyond = ranked.filter((d) => d.interval.upper > top);
    const rings = searched() === '' ? [] : matches(ranked, searched());
    const wide = drawn.length > kMostSymbols;
    return plot(`Caterpillar plot: observed over expected of ${drawn.length} hospitals in order, with 95 % intervals${beyondText(beyond.length, 'interval')}`, {
      width, height: 400, marginTop: kTop, marginLeft: 44, marginBottom: 46, marginRight: 16,
      x: { label: 'Hospitals by rank', labelAnchor: 'center', labelOffset: 36, labelArrow: 'none', domain: [0, Math.max(ranked.length, 1) + 1], ticks: Math.min(8, Math.max(ranked.length, 1)), tickFormat: (v: number) => (Number.isInteger(v) && v > 0 ? String(v) : '') },
      y: { label: 'Observed / expected', labelArrow: 'none', domain: [0, top], grid: true },
      marks: [
        Plot.ruleY([1], { stroke: 'var(--ink)' }),
        wide
          ? Plot.areaY(ranked, { x: 'rank', y1: lower, y2: clipped, fill: 'var(--muted)', fillOpacity: 0.3 })
          : Plot.ruleX(ranked, { x: 'rank', y1: lower, y2: clipped, stroke: (d) => kColours[d.position as Position], strokeWidth: drawn.length > 200 ? 1 : 2 }),
        ...points(ranked, 'rank', top, drawn.length > 200 ? 1.8 : 3.4),
        edgeArrows(beyond, 'rank', top, width, (d) => (d as typeof ranked[number]).rank / (ranked.length + 1)),
        Plot.dot(rings, { x: 'rank', y: (d) => Math.min(d.ratio, top), r: 9, stroke: 'var(--accent)', strokeWidth: 2.5 }),
        Plot.tip(ranked, Plot.pointer({ x: 'rank', y: (d) => Math.min(d.ratio, top), title: 'tip', fill: 'var(--paper)', stroke: 'var(--line)' })),
      ],
      color: { type: 'identity' }, symbol: { type: 'identity' } as Plot.ScaleOptions,
    });
  });
}

function quantile(values: number[], share: number): number {
  const sorted = values.filter(Number.isFinite).sort((a, b) => a - b);
  return sorted[Math.floor(share * (sorted.length - 1))] ?? 1;
}

