// Writes a page with files in it, by the form that src/doors/inlined.ts describes.
import { readFileSync, readdirSync, writeFileSync } from 'node:fs';
import { basename, join, relative } from 'node:path';

const kMark = '<!-- hovar:files -->';
const attribute = (text: string) => text.replace(/&/g, '&amp;').replace(/"/g, '&quot;').replace(/</g, '&lt;').replace(/>/g, '&gt;');

export function inlineFolders(page: string, folders: string[], output: string, partBytes = 3 << 20): void {
  const names = JSON.stringify(folders.map((folder) => basename(folder))).replace(/</g, '\\u003c');
  const elements = [`<script type="application/json" id="hovar-folders">${names}</script>`];
  folders.forEach((folder, index) => {
    for (const entry of readdirSync(folder, { recursive: true, withFileTypes: true })) {
      if (!entry.isFile()) continue;
      const file = join(entry.parentPath, entry.name);
      const bytes = readFileSync(file);
      for (let part = 0; part === 0 || part * partBytes < bytes.length; part++) {
        const piece = bytes.subarray(part * partBytes, (part + 1) * partBytes).toString('base64');
        elements.push(`<script type="text/hovar" data-folder="${index}" data-path="${attribute(relative(folder, file))}" data-part="${part}">${piece}</script>`);
      }
    }
  });
  writeFileSync(output, readFileSync(page, 'utf8').replace(kMark, () => elements.join('\n')));
}
