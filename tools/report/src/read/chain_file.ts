// Reads Chain.csv into one array per column.
import { plainNumber, type ChainFile, type FileBytes, type Origin } from '../model';
import { csvRows, requireWidth } from './csv';

/** A column that grows by doubling, from little: a header can promise many columns. */
class Column {
  private values = new Float64Array(16);
  private size = 0;

  add(value: number): void {
    if (this.size === this.values.length) {
      const larger = new Float64Array(2 * this.size);
      larger.set(this.values);
      this.values = larger;
    }
    this.values[this.size++] = value;
  }

  take(): Float64Array {
    return this.values.slice(0, this.size);
  }
}

export async function readChain(
  blob: FileBytes, origin: Origin, onBytes: (count: number) => void,
): Promise<ChainFile> {
  let header: string[] | null = null;
  let columns: Column[] = [];
  let row = 1;
  for await (const rows of csvRows(blob, onBytes)) {
    for (const cells of rows) {
      if (!header) {
        header = cells;
        columns = cells.map(() => new Column());
        continue;
      }
      requireWidth(cells, header.length, ++row);
      for (let j = 0; j < cells.length; j++) columns[j].add(plainNumber(cells[j]));
    }
  }
  const [steps, ...draws] = columns.map((column) => column.take());
  return { origin, columns: (header ?? ['Step']).slice(1), steps: steps ?? new Float64Array(), draws };
}
