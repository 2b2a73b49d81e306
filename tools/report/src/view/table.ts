// A table that sorts by its headers, shows so many rows at a time, and can be saved as CSV.
import { button, h, setText, type Child } from './dom';
import { saveCsv, type CsvCell } from './download';
import { count } from './format';

const kRowsAtATime = 50;
/** "Show all" shows so many at most: the browser takes minutes to lay out a hundred thousand. */
const kMostRows = 10_000;

export interface Column<Row> {
  head: string;
  /** A word more for the header: what the column is. */
  hint?: string;
  /** A heading above this and the following columns with the same one. */
  group?: string;
  text(row: Row): string;
  /** What to sort by; the text where it is absent. NaN comes last. */
  order?(row: Row): number;
  numeric?: boolean;
  /** Text from a data file. */
  free?: boolean;
  /** What stands in the cell, where it is more than the text. */
  node?(row: Row): Child;
  className?(row: Row): string;
}

export interface DataTable<Row> {
  element: HTMLElement;
  setRows(rows: Row[]): void;
  setColumns(columns: Column<Row>[]): void;
}

export function dataTable<Row>(options: {
  caption: string;
  columns: Column<Row>[];
  rows: Row[];
  csvName?: string;
  rowName?: [string, string];
  /** No visible title, because a heading says it already. */
  untitled?: boolean;
  rowClass?(row: Row): string;
}): DataTable<Row> {
  let { columns, rows } = options;
  let sortColumn = -1;
  let descending = false;
  let shown = kRowsAtATime;

  const head = h('thead');
  const body = h('tbody');
  const status = h('p', { class: 'table-status', role: 'status' });
  const more = button('Show 50 more', () => show(shown + kRowsAtATime));
  const all = button('Show all', () => show(kMostRows));
  const save = options.csvName !== undefined &&
    button('Download as CSV', () => saveCsv(options.csvName ?? 'table.csv', csvRows(columns, sorted())));
  const table = h('table', { 'aria-label': options.caption }, head, body);
  const element = h('div', { class: 'data-table' }, !options.untitled && h('p', { class: 'table-title' }, options.caption),
    h('div', { class: 'table-scroll', tabindex: 0, role: 'region', 'aria-label': options.caption }, table),
    h('div', { class: 'table-foot' }, status, more, all, save));

  function show(limit: number): void {
    shown = limit;
    drawBody();
  }

  function sorted(): Row[] {
    const column = columns[sortColumn];
    if (!column) return rows;
    const natural = new Intl.Collator('en', { numeric: true });
    const sign = descending ? -1 : 1;
    return [...rows].sort((a, b) => {
      if (!column.order) return sign * natural.compare(column.text(a), column.text(b));
      const [x, y] = [column.order(a), column.order(b)];
      if (Number.isNaN(x) || Number.isNaN(y)) return Number(Number.isNaN(x)) - Number(Number.isNaN(y));
      return sign * (x - y || 0);
    });
  }

  function drawHead(): void {
    head.replaceChildren();
    if (columns.some((column) => column.group)) head.append(groupRow(columns));
    head.append(h('tr', {}, ...columns.map((column, index) => {
      const sortable = button(column.head, () => {
        descending = sortColumn === index && !descending;
        sortColumn = index;
        drawHead();
        drawBody();
        head.querySelectorAll<HTMLButtonElement>('th button')[index]?.focus();
      }, { title: column.hint });
      const direction = sortColumn === index ? (descending ? 'descending' : 'ascending') : 'none';
      return h('th', { scope: 'col', class: column.numeric ? 'num' : '', 'aria-sort': direction }, sortable);
    })));
  }

  function drawBody(): void {
    const ordered = sorted().slice(0, shown);
    body.replaceChildren(...ordered.map((row) => h('tr', { class: options.rowClass?.(row) ?? '' },
      ...columns.map((column, index) => h(index === 0 ? 'th' : 'td', {
        class: [column.numeric ? 'num' : '', column.className?.(row) ?? ''].join(' ').trim(),
        ...(index === 0 ? { scope: 'row' } : {}),
      }, column.node ? column.node(row) : column.text(row))))));
    const [one, many] = options.rowName ?? ['row', 'rows'];
    const hidden = rows.length > ordered.length;
    setText(status, hidden
      ? `${count(ordered.length)} of ${count(rows.length)} ${many}`
      : `${count(rows.length)} ${rows.length === 1 ? one : many}`);
    more.hidden = !hidden;
    all.hidden = !hidden || ordered.length >= kMostRows;
  }

  drawHead();
  drawBody();
  return {
    element,
    setRows(next) {
      rows = next;
      drawBody();
    },
    setColumns(next) {
      columns = next;
      drawHead();
      drawBody();
    },
  };
}

function groupRow<Row>(columns: Column<Row>[]): HTMLElement {
  const row = h('tr', { class: 'groups' });
  for (let start = 0; start < columns.length;) {
    let end = start + 1;
    while (end < columns.length && columns[end].group === columns[start].group) end++;
    row.append(columns[start].group
      ? h('th', { scope: 'colgroup', colspan: end - start }, columns[start].group ?? '')
      : h('td', { colspan: end - start }));
    start = end;
  }
  return row;
}

function csvRows<Row>(columns: Column<Row>[], rows: Row[]): CsvCell[][] {
  const head = columns.map((column) => ({
    text: column.group ? `${column.group} ${column.head}` : column.head, free: true,
  }));
  const cells = (row: Row) => columns.map((column) => ({ text: column.text(row), free: column.free ?? false }));
  return [head, ...rows.map(cells)];
}
