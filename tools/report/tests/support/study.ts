// Writes folders of files as a run leaves them, from seeded random numbers, so that tests can choose
// sizes and texts. Nothing here is computed by the program; only the form of the files is its own.
import { mkdirSync, rmSync, writeFileSync, openSync, writeSync, closeSync } from 'node:fs';
import { join } from 'node:path';

/** Numbers from 0 to 1 that are the same for the same seed (mulberry32). */
export function randomNumbers(seed: number): () => number {
  let state = seed >>> 0;
  return () => {
    state = (state + 0x6d2b79f5) >>> 0;
    let t = Math.imul(state ^ (state >>> 15), state | 1);
    t = (t + Math.imul(t ^ (t >>> 7), t | 61)) ^ t;
    return ((t ^ (t >>> 14)) >>> 0) / 4294967296;
  };
}

export function normalNumbers(seed: number): () => number {
  const uniform = randomNumbers(seed);
  return () => Math.sqrt(-2 * Math.log(1 - uniform())) * Math.cos(2 * Math.PI * uniform());
}

export const six = (value: number): string => String(Number(value.toPrecision(6)));
export const field = (text: string): string => (/[",\n]/.test(text) ? `"${text.replace(/"/g, '""')}"` : text);

export function freshFolder(path: string): string {
  rmSync(path, { recursive: true, force: true });
  mkdirSync(path, { recursive: true });
  return path;
}

export interface ChainShape {
  draws: number;
  coefficients: number;
  seed: number;
  thinning?: number;
  /** Added to every draw of the first coefficient. */
  shift?: number;
  /** Correlation of successive draws. */
  memory?: number;
}

export function chainText(shape: ChainShape): string {
  const normal = normalNumbers(shape.seed);
  const memory = shape.memory ?? 0;
  const lines = [`Step,${Array.from({ length: shape.coefficients }, (_, j) => `BetaYX[${j}]`).join(',')}`];
  const state = new Float64Array(shape.coefficients).map(() => normal());
  for (let k = 1; k <= shape.draws; k++) {
    const cells = [String(k * (shape.thinning ?? 1))];
    for (let j = 0; j < shape.coefficients; j++) {
      state[j] = memory * state[j] + Math.sqrt(1 - memory * memory) * normal();
      cells.push(six(state[j] * 0.1 + (j === 0 ? shape.shift ?? 0 : 0)));
    }
    lines.push(cells.join(','));
  }
  return `${lines.join('\n')}\n`;
}

export function summaryText(coefficients: number): string {
  const rows = Array.from({ length: coefficients }, (_, j) => `BetaYX[${j}],${six(0.01 * j - 0.3)},${six(0.01 + j / 1000)},1`);
  return `Variable,Mean,Variance,Acceptance\nImputeData,0,0,0\n${rows.join('\n')}\n`;
}

export const kCoefficientHeader = 'Variables Names,,[X|Z],,,,[P|X],mse,ese,[Y|Z],mse,ese,[Y|X],mse,ese,"[Y|X,P=0]",mse,ese,"[Y|X,P=0,MCMC]",mse,ese';

/** The means of the draws of a Chain.csv, six digits each. */
function meansOf(chain: string): string[] {
  const rows = chain.trimEnd().split('\n').slice(1).map((line) => line.split(',').slice(1).map(Number));
  return (rows[0] ?? []).map((_, j) => six(rows.reduce((sum, row) => sum + row[j], 0) / rows.length));
}

/**
 * With `gee`, standard errors stand as a run with generalized estimating equations writes them; with a
 * `chain`, the text of a Chain.csv, the fifth block is that of its run.
 */
export function coefficientText(names: string[], gee = false, chain = '', seed = 5): string {
  const normal = normalNumbers(seed);
  const means = meansOf(chain);
  const rows = names.map((name, i) => {
    const table = i === 0 ? ['', '', '', ''] : ['0.98', '0.02', '0.3', '0.7'];
    const blocks = Array.from({ length: 5 }, (_, b) => {
      const error = six(0.05 + Math.abs(normal()) / 10);
      const errors = !gee ? [error, ''] : b === 4 ? ['', error] : [error, six(Number(error) * 1.1)];
      const estimate = six(normal());
      return [b === 4 ? means[i] ?? estimate : estimate, ...errors];
    });
    return [field(name), field(`Z of ${name}`), ...table, ...blocks.flat()].join(',');
  });
  return `${kCoefficientHeader}\n${rows.join('\n')}\n`;
}

export const kHospitalHeader = 'Hospital ID,Nr. records,Nr. non missing records,Nr. non missing records P=0,Y,E[Y|Z],E[Y|X],E[Y|P=0],"E[Y|X,P=0]","E[Y|X,P=0]-MCMC",P,E[P|X],E[P|YPXZ]';

export function hospitalText(ids: string[], seed = 7): string {
  const random = randomNumbers(seed);
  const rows = ids.map((id) => {
    const records = 20 + Math.floor(random() * 400);
    const rates = [0.15, 0.15, 0.15, 0.1, 0.1, 0.1, 0.05, 0.05, 0.05].map((rate) => six(rate * (0.6 + 0.8 * random())));
    return [field(id), records, Math.floor(records * 0.8), Math.floor(records * 0.7), ...rates].join(',');
  });
  return `${kHospitalHeader}\n${rows.join('\n')}\n`;
}

export const kIndividualHeader = 'Key,Hospital ID,Y,E[Y|Z],E[Y|X],E[Y|P=0],"E[Y|X,P=0]","E[Y|X,P=0]-MCMC",P,E[P|X],E[P|YPXZ]';

/** Individual predictions that are calibrated by construction, streamed to a file. */
export function writeIndividual(path: string, records: number, hospitals: number, seed = 9): void {
  const random = randomNumbers(seed);
  const file = openSync(path, 'w');
  let lines = [kIndividualHeader];
  for (let i = 0; i < records; i++) {
    const risk = 0.02 + 0.3 * random() ** 3;
    const y = random() < risk ? 1 : 0;
    const missing = random() < 0.05;
    const p = y === 1 && random() < 0.3 ? 1 : 0;
    const known = missing ? (y === 1 ? 0.3 : 0) : p;
    const expected = six(risk * 0.7 * (1 - known));
    lines.push(`R${i},H${Math.floor(i / Math.ceil(records / hospitals))},${y},${six(risk)},${six(risk)},${six(y * (1 - known))},` +
      `${expected},${expected},${missing ? '' : p},${six(risk * 0.3)},${known}`);
    if (lines.length === 20_000) {
      writeSync(file, `${lines.join('\n')}\n`);
      lines = [];
    }
  }
  writeSync(file, lines.length > 0 ? `${lines.join('\n')}\n` : '');
  closeSync(file);
}

export const kStatisticsText = 'Estimate,C-Statistics\nE[Y|Z],0.612345\nE[Y|X],0.7\n"E[Y|X,P=0]",0.65\n"E[Y|X,P=0]-MCMC",0.66\nE[P|X],-1\nE[P|YPXZ],1\n';

export function write(folder: string, name: string, text: string): void {
  const path = join(folder, name);
  mkdirSync(join(path, '..'), { recursive: true });
  writeFileSync(path, text);
}
