// Which chains are judged together, and what their columns are called.
//
// Chains belong together when they have the same number of coefficients with the same names, when both
// or neither come from generalized estimating equations, which draw from another distribution, and when
// their definitions fit the same model. Those that an earlier run has left are left out. Columns get their names from the rows of the chain's coefficient file by position: Chain.csv numbers them only.
import { coefficientsOf } from './chain_coefficients';
import { leftoverChains, modelDifference, modelKey } from './chain_runs';
import type { Report } from '../model';
import { originText } from '../model';

export interface ChainGroup {
  /** Indices into the report's chains. */
  chains: number[];
  /** Headers of the columns in the files. */
  columns: string[];
  /** Names of the variables; empty when they could not be joined. */
  names: string[];
  /** What a reader should know about the names; empty when all is well. */
  note: string;
  /** Whether the chains come from generalized estimating equations. */
  gee: boolean;
  /** Their model by their definitions; empty where none has one. */
  model: string;
}

interface Joined {
  chain: number;
  /** The same for chains whose definitions fit the same model; empty without a definition. */
  model: string;
  names: string[];
  note: string;
  gee: boolean;
}

export function groupChains(report: Report): ChainGroup[] {
  const left = leftoverChains(report).chains;
  const groups = new Map<string, ChainGroup>();
  const joined = report.chains.map((_, chain) => joinNames(report, chain)).filter(({ chain }) => !left.has(chain));
  const keyOf = (j: Joined) => JSON.stringify([j.gee, report.chains[j.chain].columns.length, j.names, j.model]);
  const without = (j: Joined) => Number(j.names.length === 0) + Number(j.model === '');
  // Chains with names and a definition first, so that those without find their group.
  for (const j of [...joined].sort((a, b) => without(a) - without(b) || a.chain - b.chain)) {
    const columns = report.chains[j.chain].columns;
    const alike = [...groups.values()].filter((group) => group.gee === j.gee && group.columns.length === columns.length &&
      (j.names.length === 0 || sameNames(j.names, group.names)) && (j.model === '' || j.model === group.model));
    const group = groups.get(keyOf(j)) ?? (without(j) > 0 && alike.length === 1 ? alike[0] : undefined);
    if (group) {
      group.chains.push(j.chain);
      if (j.note && !group.note.includes(j.note)) group.note = `${group.note} ${j.note}`.trim();
    } else {
      groups.set(keyOf(j), { chains: [j.chain], columns, names: j.names, note: j.note, gee: j.gee, model: j.model });
    }
  }
  for (const group of groups.values()) group.chains.sort((a, b) => a - b);
  return withDifferences(report, [...groups.values()].sort((a, b) => b.chains.length - a.chains.length || a.chains[0] - b.chains[0]));
}

const sameNames = (one: string[], other: string[]): boolean =>
  one.length === other.length && one.every((name, i) => name === other[i]);

/** Says of groups that only their definitions keep apart how these differ. */
function withDifferences(report: Report, groups: ChainGroup[]): ChainGroup[] {
  return groups.map((group) => {
    const other = groups.find((one) => one !== group && one.gee === group.gee && sameNames(one.names, group.names) &&
      one.columns.length === group.columns.length && one.model !== '' && group.model !== '' && one.model !== group.model);
    const note = other ? modelDifference(report, group.chains[0], other.chains[0]) : '';
    return { ...group, note: [group.note, note].filter(Boolean).join(' ') };
  });
}

function joinNames(report: Report, index: number): Joined {
  const chain = report.chains[index];
  const { file, note, gee } = coefficientsOf(chain, report);
  const model = modelKey(report, index);
  if (!file) return { chain: index, model, gee, names: [], note };
  if (file.xNames.length !== chain.columns.length) {
    return {
      chain: index, model, gee, names: [],
      note: `${originText(chain.origin)} has ${chain.columns.length} columns and ` +
        `${originText(file.origin)} has ${file.xNames.length} rows. They are joined by position, ` +
        'so with different counts the columns get no names.',
    };
  }
  return { chain: index, model, gee, names: file.xNames, note: '' };
}
