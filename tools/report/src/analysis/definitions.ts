// What definitions say of the files of a report: which definition a file comes from, and where the files
// lie that it names.
//
// A definition's paths are relative to the working folder of its run, which the page does not know. It
// knows where the outputs of the definition lie now, and so where the others lie from there.
import type { DefinitionDigest, Origin, Report } from '../model';

/** The names of a path, whichever way its separators lean, with `.` and `..` followed as far as they go. */
export function namesOf(path: string): string[] {
  const names: string[] = [];
  for (const name of path.replaceAll('\\', '/').split('/')) {
    if (name === '' || name === '.') continue;
    if (name === '..' && names.length > 0 && names[names.length - 1] !== '..') names.pop();
    else names.push(name);
  }
  return names;
}

export const folderOf = (path: string) => path.slice(0, path.lastIndexOf('/') + 1);

/** The names of a file's path with the name of its folder in front. */
export const placeOf = ({ folderName, path }: Origin): string[] => [...namesOf(folderName), ...namesOf(path)];

const sameNames = (one: string[], other: string[]): boolean =>
  one.length === other.length && one.every((name, i) => name === other[i]);

/** Whether one path ends with all the names of the other, as paths from two starting folders do. */
export function meet(one: string[], other: string[]): boolean {
  const length = Math.min(one.length, other.length);
  return length > 0 && sameNames(one.slice(-length), other.slice(-length));
}

/** The text of the element whose path ends so; empty when there is none. */
export const valueOf = ({ entries }: DefinitionDigest, name: string): string =>
  entries.find(([element]) => element.endsWith(name))?.[1] ?? '';

/** Where the definition puts its chain. */
export const chainFolderOf = (definition: DefinitionDigest): string[] =>
  namesOf(`${valueOf(definition, 'Output / Folder')}/${valueOf(definition, 'McmcSubFolder')}`);

const kPredictions = ['Output / IndividualPredictions', 'Output / HospitalPredictions', 'Output / CStatistics'];

/** What the definition calls the file with this origin, as names of a path; null when it does not write it. */
function outputAt(definition: DefinitionDigest, origin: Origin): string[] | null {
  const folder = valueOf(definition, 'Output / Folder');
  const outputs = kPredictions.map((element) => valueOf(definition, element)).filter((name) => name !== '')
    .map((name) => namesOf(`${folder}/${name}`));
  return outputs.find((output) => meet(output, placeOf(origin))) ?? null;
}

/**
 * Where a path of a definition lies among the files of the page, when `output`, another of its paths, is the
 * file at `place`. Null when it lies outside.
 */
function fromOutput(path: string[], output: string[], place: string[]): string[] | null {
  const beyond = output.length - place.length;
  if (beyond < 0) {
    // The page has the working folder too.
    return namesOf([...place.slice(0, -beyond), ...path].join('/'));
  }
  return sameNames(path.slice(0, beyond), output.slice(0, beyond)) ? path.slice(beyond) : null;
}

const isAbsolute = (path: string): boolean => path.startsWith('/') || path.startsWith('\\') || path[1] === ':';

/** Of an absolute path the page may know the last names only; the file with the most of them is it. */
function fileAt<File extends { origin: Origin }>(path: string, output: string[], place: string[], files: File[]): File | undefined {
  const wanted = fromOutput(namesOf(path), output, place);
  const same = files.find(({ origin }) => wanted !== null && sameNames(placeOf(origin), wanted));
  if (same || !isAbsolute(path)) return same;
  const length = ({ origin }: File) => placeOf(origin).length;
  return files.filter(({ origin }) => placeOf(origin).length > 1 && meet(placeOf(origin), namesOf(path)))
    .sort((a, b) => length(b) - length(a))[0];
}

export interface NamedFile<File> {
  definition: DefinitionDigest;
  /** The path as the definition has it. */
  path: string;
  /** The file, when it is among those of the page. */
  file: File | undefined;
}

/** The coefficient files that the definitions of a file of predictions name. */
export function namedCoefficients<File extends { origin: Origin }>(
  report: Report, origin: Origin, files: File[],
): NamedFile<File>[] {
  return report.definitions.flatMap((definition) => {
    const path = valueOf(definition, 'Input / RegressionCoefficients');
    const output = definition.origin.folder === origin.folder && path !== '' ? outputAt(definition, origin) : null;
    if (!output) return [];
    return [{ definition, path, file: fileAt(path, output, placeOf(origin), files) }];
  });
}
