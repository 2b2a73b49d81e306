// Files that stand in the page itself, as `hovar --report` writes them: for each one or more elements
//
//     <script type="text/hovar" data-folder="0" data-path="mcmc/Chain.csv" data-part="0">BASE64</script>
//
// in the order of their parts, one file behind the other, and one element `hovar-folders` with the names of the folders as JSON.
// The browser takes these elements for data and never runs them.
import type { SourceFile } from '../model';

const kSelector = 'script[type="text/hovar"]';

export const hasInlinedFiles = (page: Document): boolean => page.querySelector(kSelector) !== null;

/** How long the page may stop while it unpacks, but for a single part. */
const kLongestStretchMs = 40;
/** From here on bytes are put away at once, so that large files do not stand in the memory of the page. */
const kLargePart = 1 << 16;

/**
 * Decodes part by part, and takes each element out of the page so that its text is not kept twice. Part 0
 * begins a file, whatever its path: names that the page cannot tell apart, because they are no UTF-8 or differ
 * in their line ends, are those of several files all the same. `onShare` is told the share that is done, some
 * twenty times a second; what it returns is awaited, so that the page can draw.
 * Errors: Error when a part is missing.
 */
export async function inlinedFiles(
  page: Document, onShare: (share: number) => Promise<void>,
): Promise<SourceFile[]> {
  const names = folderNames(page);
  const elements = [...page.querySelectorAll<HTMLScriptElement>(kSelector)];
  const files: SourceFile[] = [];
  let parts: BlobPart[] = [];
  let pausedAt = performance.now();
  for (const [index, element] of elements.entries()) {
    const { folder: number = '0', path = '', part = '0' } = element.dataset;
    if (part === '0') parts = [];
    if (Number(part) !== parts.length) throw new Error(`part ${parts.length} of ${path} is missing`);
    const bytes = decodeBase64(element.text);
    element.remove();
    const small = bytes.length < kLargePart;
    parts.push(small ? bytes : new Blob([bytes]));
    const next = elements[index + 1];
    if ((next?.dataset.part ?? '0') === '0') {
      const folder = Number(number);
      const content = small && parts.length === 1 ? bytes : new Blob(parts);
      files.push({ folder, folderName: names[folder] ?? '', path: path.replaceAll('\\', '/'), content });
    }
    if (performance.now() - pausedAt > kLongestStretchMs) {
      await onShare((index + 1) / elements.length);
      pausedAt = performance.now();
    }
  }
  return files;
}

function folderNames(page: Document): string[] {
  const text = page.getElementById('hovar-folders')?.textContent;
  const names: unknown = text ? JSON.parse(text) : [];
  return Array.isArray(names) ? names.map(String) : [];
}

export function decodeBase64(text: string): Uint8Array<ArrayBuffer> {
  const modern = Uint8Array as unknown as { fromBase64?: (text: string) => Uint8Array<ArrayBuffer> };
  if (modern.fromBase64) return modern.fromBase64(text);
  const characters = atob(text);
  const bytes = new Uint8Array(characters.length);
  for (let i = 0; i < bytes.length; i++) bytes[i] = characters.charCodeAt(i);
  return bytes;
}
