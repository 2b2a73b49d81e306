// The work that takes time, as a conversation: files in, then progress, the report and the diagnostics
// of its chains out. The same code answers from a worker and, where there is none, from the page.
import { groupChains } from './analysis/chain_groups';
import { diagnose, type GroupDiagnostics } from './analysis/diagnostics';
import { defaultExpectation, judgeHospitals, pairOf, type HospitalJudgement } from './analysis/hospital_ratios';
import { deriveHospitals, loadReport } from './read/load';
import { contentOf, type Report, type SourceFile } from './model';

export type EngineMessage =
  | { type: 'progress'; share: number; text: string }
  | { type: 'report'; report: Report; judgement: HospitalJudgement | null }
  | { type: 'diagnostics'; groups: GroupDiagnostics[] }
  | { type: 'failure'; text: string };

/** A reader of the page sees no more; a hundred thousand messages would keep it busy. */
const kProgressMs = 50;

type Post = (message: EngineMessage) => void | Promise<void>;

/** Passes on what is progress from time to time, and all the rest. */
function throttled(post: Post): Post {
  let last = -Infinity;
  return (message) => {
    if (message.type === 'progress') {
      if (performance.now() - last < kProgressMs) return undefined;
      last = performance.now();
    }
    return post(message);
  };
}

export async function runEngine(sources: SourceFile[], postAll: Post): Promise<void> {
  const post = throttled(postAll);
  try {
    const total = sources.reduce((sum, source) => sum + contentOf(source.content).size, 0);
    let done = 0;
    const report = await loadReport(sources, async (count) => {
      done += count;
      await post({ type: 'progress', share: done / Math.max(total, 1), text: `${megabytes(done)} of ${megabytes(total)} MB read` });
    });
    deriveHospitals(report);
    await post({ type: 'report', report, judgement: firstJudgement(report) });
    await post({ type: 'diagnostics', groups: await diagnoseAll(report, post) });
  } catch (error) {
    await post({ type: 'failure', text: String(error) });
  }
}

/** The hospitals as they are shown first; with thousands of them it takes a moment. */
function firstJudgement(report: Report): HospitalJudgement | null {
  const file = report.hospitals.find((candidate) => candidate.rows.length > 0);
  return file ? judgeHospitals(file, pairOf(defaultExpectation(report).column), false) : null;
}

async function diagnoseAll(report: Report, post: Post): Promise<GroupDiagnostics[]> {
  const groups = groupChains(report);
  const total = groups.reduce((sum, group) => sum + group.columns.length, 0);
  let done = 0;
  const diagnostics: GroupDiagnostics[] = [];
  for (const group of groups) {
    diagnostics.push(await diagnose(report, group, () =>
      post({ type: 'progress', share: ++done / total, text: `${done} of ${total} coefficients judged` })));
  }
  return diagnostics;
}

const megabytes = (bytes: number) => (bytes / 1e6).toFixed(bytes < 1e7 ? 1 : 0);

/** Answers the page from within a worker. */
export function serve(scope: {
  onmessage: ((event: MessageEvent<SourceFile[]>) => void) | null;
  postMessage(message: EngineMessage): void;
}): void {
  scope.onmessage = (event) => void runEngine(event.data, (message) => scope.postMessage(message));
}

/**
 * Starts the engine on files. `scriptText` is the page's own script, which a worker runs again: it
 * then finds no document and serves. Without workers the engine runs here and lets the page breathe
 * between two steps.
 */
export function startEngine(
  sources: SourceFile[], scriptText: string, onMessage: (message: EngineMessage) => void,
): void {
  let worker: Worker;
  try {
    worker = new Worker(workerAddress(scriptText));
  } catch {
    runHere(sources, onMessage);
    return;
  }
  let heard = false;
  worker.onmessage = (event: MessageEvent<EngineMessage>) => {
    heard = true;
    onMessage(event.data);
    if (event.data.type === 'diagnostics' || event.data.type === 'failure') worker.terminate();
  };
  worker.onerror = (event) => {
    worker.terminate();
    if (heard) onMessage({ type: 'failure', text: event.message || 'out of memory' });
    else runHere(sources, onMessage);
  };
  worker.postMessage(sources);
}

function runHere(sources: SourceFile[], onMessage: (message: EngineMessage) => void): void {
  void runEngine(sources, (message) => {
    onMessage(message);
    return new Promise((resolve) => setTimeout(resolve, 0));
  });
}

interface AddressPolicy {
  createScriptURL(address: string): string;
}

interface TrustedTypes {
  createPolicy(name: string, rules: AddressPolicy): AddressPolicy;
}

let addressPolicy: AddressPolicy | undefined;

/** The policy of the page allows one kind of script address: that of this worker. */
function workerAddress(scriptText: string): string {
  const address = URL.createObjectURL(new Blob([scriptText], { type: 'text/javascript' }));
  const trusted = (globalThis as { trustedTypes?: TrustedTypes }).trustedTypes;
  addressPolicy ??= trusted?.createPolicy('hovar-worker', { createScriptURL: (text) => text });
  return addressPolicy?.createScriptURL(address) ?? address;
}
