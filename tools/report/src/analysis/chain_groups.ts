// Which chains are judged together, and what their columns are called.
//
// Chains belong together when they have the same number of coefficients with the same names, and both
// or neither come from generalized estimating equations, which draw from another distribution. Columns
// get their names from the rows of the chain's coefficient file by position: Chain.csv numbers them only.
import { coefficientsOf } from './chain_coefficients';
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
}

interface Joined {
  chain: number;
  names: string[];
  note: string;
  gee: boolean;
}

export function groupChains(report: Report): ChainGroup[] {
  const groups = new Map<string, ChainGroup>();
  const joined = report.chains.map((_, chain) => joinNames(report, chain));
  const keyOf = (j: Joined) => JSON.stringify([j.gee, report.chains[j.chain].columns.length, ...j.names]);
  // Chains with names first, so that those without find their group.
  for (const j of [...joined].sort((a, b) => b.names.length - a.names.length || a.chain - b.chain)) {
    const columns = report.chains[j.chain].columns;
    const alike = [...groups.values()].filter((group) => group.gee === j.gee && group.columns.length === columns.length);
    const group = j.names.length === 0 && alike.length === 1 ? alike[0] : groups.get(keyOf(j));
    if (group) {
      group.chains.push(j.chain);
      if (j.note && !group.note.includes(j.note)) group.note = `${group.note} ${j.note}`.trim();
    } else {
      groups.set(keyOf(j), { chains: [j.chain], columns, names: j.names, note: j.note, gee: j.gee });
    }
  }
  for (const group of groups.values()) group.chains.sort((a, b) => a - b);
  return [...groups.values()].sort((a, b) => b.chains.length - a.chains.length || a.chains[0] - b.chains[0]);
}

function joinNames(report: Report, index: number): Joined {
  const chain = report.chains[index];
  const { file, note, gee } = coefficientsOf(chain, report);
  if (!file) return { chain: index, gee, names: [], note };
  if (file.xNames.length !== chain.columns.length) {
    return {
      chain: index, gee, names: [],
      note: `${originText(chain.origin)} has ${chain.columns.length} columns and ` +
        `${originText(file.origin)} has ${file.xNames.length} rows. They are joined by position, ` +
        'so with different counts the columns get no names.',
    };
  }
  return { chain: index, gee, names: file.xNames, note: '' };
}
