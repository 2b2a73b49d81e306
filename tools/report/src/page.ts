// Puts the report together: the doors, the progress, then the sections as their contents arrive.
import { filesOfDrop, filesOfPicker } from './doors/dropped';
import { hasInlinedFiles, inlinedFiles } from './doors/inlined';
import type { GroupDiagnostics } from './analysis/diagnostics';
import { judgeHospitals, type HospitalJudgement } from './analysis/hospital_ratios';
import {
  convergenceFinding, fitFinding, hospitalFinding, missingFinding, runFinding, type Finding,
} from './analysis/verdict';
import { startEngine, type EngineMessage } from './engine';
import type { Report, SourceFile } from './model';
import { calibrationSection } from './view/calibration_section';
import { chainSection } from './view/chain_section';
import { startCharts } from './view/chart';
import { coefficientSection } from './view/coefficient_section';
import { byId, h, setText } from './view/dom';
import { count, kLongestName, list, plural, shorten } from './view/format';
import { hospitalSection } from './view/hospital_section';
import { runSection } from './view/run_section';
import { startTheme } from './view/theme';
import { verdictSection } from './view/verdict_section';
import { visible } from './view/visible';

/** Lets the browser draw and answer to its user between two steps. */
const breathe = (): Promise<void> => new Promise((resolve) => setTimeout(resolve, 0));

/** Counts the loads, so that messages of an earlier one are not taken for those of the latest. */
let latestLoad = 0;

export function startPage(scriptText: string): void {
  startTheme(byId('theme'));
  startCharts();
  connectDoors((files) => void load(files, scriptText));
  if (hasInlinedFiles(document)) void loadInlined(scriptText);
}

async function loadInlined(scriptText: string): Promise<void> {
  byId('doors').hidden = true;
  try {
    await load(inlinedFiles(document, (share) => {
      showProgress('Unpacking the files of this page', share);
      return breathe();
    }), scriptText);
  } catch (error) {
    showFailure(String(error));
  }
}

function connectDoors(take: (files: SourceFile[] | Promise<SourceFile[]>) => void): void {
  const folderInput = byId<HTMLInputElement>('folder-input');
  const filesInput = byId<HTMLInputElement>('files-input');
  byId('pick-folder').addEventListener('click', () => folderInput.click());
  byId('pick-files').addEventListener('click', () => filesInput.click());
  for (const input of [folderInput, filesInput]) {
    input.addEventListener('change', () => {
      take(filesOfPicker(input.files ?? []));
      input.value = '';
    });
  }
  addEventListener('dragover', (event) => {
    event.preventDefault();
    document.body.classList.add('dragging');
  });
  addEventListener('dragleave', (event) => {
    if (!event.relatedTarget) document.body.classList.remove('dragging');
  });
  addEventListener('drop', (event) => {
    event.preventDefault();
    document.body.classList.remove('dragging');
    if (event.dataTransfer) take(filesOfDrop(event.dataTransfer));
  });
}

async function load(files: SourceFile[] | Promise<SourceFile[]>, scriptText: string): Promise<void> {
  const ticket = ++latestLoad;
  byId('failure').hidden = true;
  let report: Report | null = null;
  // Messages wait for each other: a report is laid out in several steps.
  let handled = Promise.resolve();
  showProgress('Looking for files', 0);
  try {
    const sources = await files;
    if (sources.length === 0) throw new Error('there are no files in it');
    startEngine(sources, scriptText, (message) => {
      handled = handled.then(async () => {
        if (ticket === latestLoad) report = await receive(message, report);
      }).catch((error) => showFailure(`The report could not be laid out: ${String(error)}`));
    });
  } catch (error) {
    showFailure(`The files could not be read: ${error instanceof Error ? error.message : String(error)}`);
  }
}

async function receive(message: EngineMessage, report: Report | null): Promise<Report | null> {
  switch (message.type) {
    case 'progress': showProgress(message.text, message.share); break;
    case 'report':
      await showReport(message.report, message.judgement);
      return message.report;
    case 'diagnostics':
      byId('loading').hidden = true;
      if (report) showDiagnostics(report, message.groups);
      document.body.dataset.state = 'done';
      break;
    case 'failure': showFailure(`The files could not be read: ${message.text}`); break;
  }
  return report;
}

function showProgress(text: string, share: number): void {
  document.body.dataset.state = 'loading';
  byId('loading').hidden = false;
  setText(byId('loading-text'), text);
  byId<HTMLProgressElement>('loading-bar').value = share;
}

function showFailure(text: string): void {
  byId('loading').hidden = true;
  setText(byId('failure'), text);
  byId('failure').hidden = false;
  document.body.dataset.state = 'failed';
}

/** What the verdict is made from besides the report. */
let judgement: HospitalJudgement | null = null;
let groups: GroupDiagnostics[] | null = null;

async function showReport(report: Report, firstJudgement: HospitalJudgement | null): Promise<void> {
  const place = byId('report');
  const add = async (section: HTMLElement): Promise<void> => {
    place.append(section);
    await breathe();
  };
  byId('doors').hidden = true;
  place.replaceChildren();
  judgement = firstJudgement;
  groups = null;
  if (judgement) await add(hospitalSection(report, judgement, (adjusted) => judgeAgain(report, adjusted)));
  place.prepend(verdict(report));
  if (report.individuals.length > 0 || report.cStatistics.length > 0) await add(calibrationSection(report));
  if (report.coefficients.some((file) => file.xNames.length > 0)) await add(coefficientSection(report));
  if (report.chains.length > 0) await add(chainSection(report, null));
  await add(runSection(report));
  document.title = visible(`Hovar report: ${folderNames(report)}`);
  showNavigation();
}

function showDiagnostics(report: Report, diagnostics: GroupDiagnostics[]): void {
  groups = diagnostics;
  document.getElementById('verdict')?.replaceWith(verdict(report));
  document.getElementById('chains')?.replaceWith(chainSection(report, diagnostics));
}

/** The verdict speaks of the first file and its expectation, by the limits that the reader chose. */
function judgeAgain(report: Report, adjusted: boolean): void {
  const file = report.hospitals.find((candidate) => candidate.rows.length > 0);
  if (!judgement || !file) return;
  judgement = judgeHospitals(file, judgement.pair, adjusted);
  document.getElementById('verdict')?.replaceWith(verdict(report));
}

function folderNames(report: Report): string {
  const names = [...new Set(report.files.map((file) => file.folderName).filter(Boolean))];
  return names.length > 0 ? list(names.map((name) => shorten(name, kLongestName)), 6) : 'picked files';
}

function verdict(report: Report): HTMLElement {
  const findings: (Finding | null)[] = [
    convergenceFinding(report, groups), hospitalFinding(judgement, report),
    fitFinding(report, judgement?.pair.expected ?? 'E[Y|X,P=0]-MCMC'), missingFinding(report), runFinding(report),
  ];
  const used = report.files.filter((file) => file.kind !== 'unused').length;
  const about = `${folderNames(report)}: ${count(used)} of ${plural(report.files.length, 'file')} used.`;
  const present = findings.filter((finding): finding is Finding => finding !== null);
  if (used === 0) {
    present.push({
      question: 'Is this the output of a run?', level: 'act', section: 'run', details: [],
      answer: 'None of these files is one that Hovar writes. Drop the folder that the definition names under Folder.',
    });
  }
  return verdictSection(present, about);
}

function showNavigation(): void {
  const nav = byId('sections');
  nav.replaceChildren(...[...document.querySelectorAll('#report > section')].map((section) =>
    h('a', { href: `#${section.id}` }, section.querySelector('h2')?.textContent ?? '')));
  nav.hidden = false;
}
