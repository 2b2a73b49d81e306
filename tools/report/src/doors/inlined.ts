// Files that stand in the page itself, as `hovar --report` writes them: for each one or more elements
//
//     <script type="text/hovar" data-folder="0" data-path="mcmc/Chain.csv" data-part="0">BASE64</script>
//
// in the order of their parts, and one element `hovar-folders` with the names of the folders as JSON.
// The browser takes these elements for data and never runs them.
import type { SourceFile } from '../model';

const kSelector = 'script[type="text/hovar"]';

export const hasInlinedFiles = (page: Document): boolean => page.querySelector(kSelector) !== null;

/**
 * Decodes part by part, and takes each element out of the page so that its text is not kept twice.
 * `onShare` is told the share that is done; what it returns is awaited, so that the page can draw.
 */
export async function inlinedFiles(
  page: Document, onShare: (share: number) => Promise<void>,
): Promise<SourceFile[]> {
  const names = folderNames(page);
  const elements = [...page.querySelectorAll<HTMLScriptElement>(kSelector)];
  const parts = new Map<string, { folder: number; path: string; blobs: Blob[] }>();
  for (const [index, element] of elements.entries()) {
    const folder = Number(element.dataset.folder ?? 0);
    const path = (element.dataset.path ?? '').replace(/\\/g, '/');
    const key = JSON.stringify([folder, path]);
    const file = parts.get(key) ?? { folder, path, blobs: [] };
    parts.set(key, file);
    file.blobs.push(new Blob([decodeBase64(element.text)]));
    element.remove();
    await onShare((index + 1) / elements.length);
  }
  return [...parts.values()].map(({ folder, path, blobs }) => ({
    folder, folderName: names[folder] ?? '', path, blob: new Blob(blobs),
  }));
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
