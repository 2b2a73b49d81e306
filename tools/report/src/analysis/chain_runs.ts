// Which chains are of one run with several chains: not those that a larger earlier run has left, and not
// those whose definitions fit another model.
import { chainFolderOf, folderOf, meet, namesOf, placeOf, valueOf } from './definitions';
import { originText } from '../model';
import type { DefinitionDigest, Origin, Report } from '../model';
import { list } from '../view/format';
import { chainName } from './diagnostics';

/** What the folder of chain K is called, and its definition with `.xml` behind it. */
const kChainName = /^chain-(\d{1,9})$/;

interface NumberedChain {
  chain: number;
  /** The folder in which the folders of the chains lie. */
  family: string[];
  number: string;
}

function numbered(report: Report): NumberedChain[] {
  return report.chains.flatMap(({ origin }, chain) => {
    const place = placeOf(origin);
    const at = place.map((name) => kChainName.test(name)).lastIndexOf(true);
    return at < 0 ? [] : [{ chain, family: place.slice(0, at), number: place[at] }];
  });
}

/** The definitions that one batch, or one record of a run, names. */
interface NamedRuns {
  origin: Origin;
  paths: string[][];
}

function namedRuns(report: Report): NamedRuns[] {
  const batches = report.definitions.filter(({ root, cut }) => root === 'Batch' && !cut).map(({ origin, entries }) => ({
    origin, paths: entries.filter(([path]) => path.endsWith('Simulation')).map(([, text]) => namesOf(text)),
  }));
  return [...batches, ...report.runRecords.map(({ origin, definitions }) => ({ origin, paths: definitions.map(namesOf) }))];
}

/** The chains of a family that the definitions are of, by their names. */
function chainsOf({ paths }: NamedRuns, family: string[]): Set<string> {
  const names = new Set<string>();
  for (const path of paths) {
    const name = (path[path.length - 1] ?? '').replace('.xml', '');
    const parents = path.slice(0, -1).filter((parent) => parent !== name);
    if (kChainName.test(name) && (family.length === 0 || parents.length === 0 || meet(parents, family))) names.add(name);
  }
  return names;
}

export interface Leftovers {
  chains: Set<number>;
  /** A sentence that names them; empty when there are none. */
  text: string;
}

/**
 * Chains beside others that a batch or a record names, and not named themselves. One named chain alone says
 * nothing of the others: each may have been run for itself.
 */
export function leftoverChains(report: Report): Leftovers {
  const runs = namedRuns(report);
  const chains = new Set<number>();
  let naming: Origin | undefined;
  for (const { chain, family, number } of runs.length > 0 ? numbered(report) : []) {
    const about = runs.map((one) => ({ origin: one.origin, names: chainsOf(one, family) }))
      .filter(({ origin, names }) => origin.folder === report.chains[chain].origin.folder && names.size > 1);
    if (about.length > 0 && about.every(({ names }) => !names.has(number))) {
      chains.add(chain);
      naming ??= about[0].origin;
    }
  }
  return {
    chains, text: naming === undefined ? '' : `Left out, because ${originText(naming)} does not name them, as they are left by an earlier ` +
      `run with more chains: ${list([...chains].map((chain) => chainName(report, chain)))}.`,
  };
}

/** The definition that a chain comes from: of those that name its folder, the nearest above. */
function definitionOf(report: Report, origin: Origin): DefinitionDigest | undefined {
  const place = placeOf({ ...origin, path: folderOf(origin.path) });
  const depth = (definition: DefinitionDigest) => folderOf(definition.origin.path).length;
  const naming = report.definitions.filter((definition) => definition.origin.folder === origin.folder &&
    definition.root === 'Analysis' && meet(chainFolderOf(definition), place));
  const above = naming.filter((definition) => folderOf(origin.path).startsWith(folderOf(definition.origin.path)));
  return above.sort((a, b) => depth(b) - depth(a))[0] ?? (naming.length === 1 ? naming[0] : undefined);
}

/** What of a definition decides from which distribution its chain draws; of the data file its name. */
function modelOf(definition: DefinitionDigest): [string, string][] {
  const entries = definition.entries.filter(([path]) => path.startsWith('Input / ') || path.startsWith('Regression / '));
  return entries.map(([path, text]) => [path, path === 'Input / Data' ? namesOf(text).pop() ?? '' : text]);
}

/** The same text for chains whose definitions fit the same model to the same data; empty without a definition. */
export function modelKey(report: Report, chain: number): string {
  const definition = definitionOf(report, report.chains[chain].origin);
  return definition ? JSON.stringify(modelOf(definition)) : '';
}

/** How the definitions of two chains differ, by the first element that does. */
export function modelDifference(report: Report, one: number, other: number): string {
  const [first, second] = [one, other].map((chain) => definitionOf(report, report.chains[chain].origin));
  if (!first || !second) return '';
  const entry = modelOf(first).find(([path, text]) => modelOf(second).every(([also, its]) => also !== path || its !== text));
  const element = entry?.[0] ?? '';
  return `The chains are judged apart, because their definitions differ: ${element || 'an element'} is “${entry?.[1] ?? ''}” in ` +
    `${originText(first.origin)} and “${element ? valueOf(second, element) : ''}” in ${originText(second.origin)}.`;
}
