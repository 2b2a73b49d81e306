// What ran: definitions, logs, records of runs, and which file was taken for what.
import { kRemovalReason } from '../analysis/removed_variables';
import { originText } from '../model';
import type { FileEntry, FileKind, LogDigest, Report } from '../model';
import { h, section, type Child } from './dom';
import { bytes, count, kLongestName, shorten } from './format';
import { dataTable } from './table';

export const kKindText: Record<FileKind, string> = {
  coefficients: 'coefficients', chain: 'chain', summary: 'summary of a chain', individual: 'individual predictions',
  hospitals: 'hospital predictions', cStatistics: 'C-statistics', log: 'log', definition: 'definition', runRecord: 'record of a run', description: 'description of the data',
  unused: 'not used',
};

/** More stand in the file itself. */
const kMostFacts = 200;

export function runSection(report: Report): HTMLElement {
  return section('run', 'Run and files', 'What was run, and which files this page was made from.',
    ...report.logs.map(logBlock), ...report.definitions.map((d) => factsBlock(`${d.root}: ${originText(d.origin)}`, d.entries)),
    ...report.runRecords.map((r) => factsBlock(`Record of the run: ${originText(r.origin)}`, r.entries)), filesTable(report.files));
}

function logBlock(log: LogDigest): Child {
  const facts: [string, string][] = [
    ['Records', count(log.records)], ['Hospitals', count(log.hospitals)], ['Variables, with the intercept', count(log.variables)],
    ['Complete records as read', count(log.completeFirst)], ['Complete records in the end', count(log.completeLast)],
    ['Removed variables (Z, X)', removedText(log) || 'none'],
    ['Records with Y = 0 and P = 1', count(log.contradictions)],
    ['Fits that stopped at the largest number of iterations', count(log.unfinishedFits)],
  ];
  return factsBlock(`Log: ${originText(log.origin)}`, facts);
}

function removedText({ removed }: LogDigest): string {
  const shown = removed.slice(0, kMostFacts).map(({ z, x, stage }) =>
    `${shorten(z, kLongestName)}, ${shorten(x, kLongestName)}: ${kRemovalReason[stage]}`);
  return `${shown.join('; ')}${removed.length > shown.length ? ` and ${count(removed.length - shown.length)} more` : ''}`;
}

function factsBlock(title: string, facts: [string, string][]): HTMLElement {
  const rest = facts.length - kMostFacts;
  return h('details', { class: 'block' }, h('summary', {}, title),
    h('dl', { class: 'facts' }, ...facts.slice(0, kMostFacts).flatMap(([name, text]) => [h('dt', {}, name), h('dd', {}, text)])),
    rest > 0 && h('p', { class: 'note' }, `${count(rest)} more in the file.`));
}

function filesTable(files: FileEntry[]): HTMLElement {
  const table = dataTable<FileEntry>({
    caption: 'Files', untitled: true, rows: files, rowName: ['file', 'files'],
    columns: [
      { head: 'File', text: (f) => originText(f), free: true, node: (f) => h('span', { class: 'path' }, originText(f)) },
      { head: 'Taken for', text: (f) => kKindText[f.kind] },
      { head: 'Size', numeric: true, text: (f) => bytes(f.bytes), order: (f) => f.bytes },
      { head: 'Remark', text: (f) => f.note, free: true },
    ],
  });
  return h('div', { class: 'block' }, h('h3', {}, 'Files'), table.element);
}
