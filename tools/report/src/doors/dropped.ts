// Files from a drop or from the two pickers.
//
// A dropped folder is read through a file system handle where the browser has them: in a page that was
// opened as a file, Chromium refuses to list a dropped folder through the older entries. Other browsers
// have only those.
import type { SourceFile } from '../model';

/** A file and its path with the name of the dropped folder in front. */
interface Found {
  path: string;
  file: File;
}

interface HandleLike {
  kind: 'file' | 'directory';
  name: string;
  getFile(): Promise<File>;
  values(): AsyncIterable<HandleLike>;
}

type ItemWithHandle = DataTransferItem & { getAsFileSystemHandle?: () => Promise<HandleLike | null> };

/** Must be called while the event is handled: items are gone afterwards. */
export function filesOfDrop(transfer: DataTransfer): Promise<SourceFile[]> {
  const items = [...transfer.items].filter((item) => item.kind === 'file').map((item: ItemWithHandle) => ({
    handle: item.getAsFileSystemHandle?.().catch(() => null) ?? Promise.resolve(null),
    entry: item.webkitGetAsEntry?.() ?? null,
    file: item.getAsFile(),
  }));
  return collect(items);
}

async function collect(
  items: { handle: Promise<HandleLike | null>; entry: FileSystemEntry | null; file: File | null }[],
): Promise<SourceFile[]> {
  const found: Found[] = [];
  for (const item of items) {
    const handle = await item.handle;
    if (handle) await walkHandle(handle, '', found);
    else if (item.entry?.isDirectory) await walkEntry(item.entry, '', found);
    else if (item.file) found.push({ path: item.file.name, file: item.file });
  }
  return byFolder(found);
}

async function walkHandle(handle: HandleLike, parent: string, found: Found[]): Promise<void> {
  const path = parent + handle.name;
  if (handle.kind === 'file') {
    found.push({ path, file: await handle.getFile() });
  } else {
    for await (const child of handle.values()) await walkHandle(child, `${path}/`, found);
  }
}

async function walkEntry(entry: FileSystemEntry, parent: string, found: Found[]): Promise<void> {
  const path = parent + entry.name;
  if (entry.isFile) {
    const file = await new Promise<File>((resolve, reject) => (entry as FileSystemFileEntry).file(resolve, reject));
    found.push({ path, file });
    return;
  }
  const reader = (entry as FileSystemDirectoryEntry).createReader();
  // A reader hands out a hundred at a time and then none.
  for (;;) {
    const batch = await new Promise<FileSystemEntry[]>((resolve, reject) => reader.readEntries(resolve, reject));
    if (batch.length === 0) return;
    for (const child of batch) await walkEntry(child, `${path}/`, found);
  }
}

export function filesOfPicker(files: Iterable<File>): SourceFile[] {
  return byFolder([...files].map((file) => ({ path: file.webkitRelativePath || file.name, file })));
}

/** Each folder at the top is one; files without a folder stand together in another. */
function byFolder(found: Found[]): SourceFile[] {
  const folders = new Map<string, number>();
  return found.map(({ path, file }) => {
    const slash = path.indexOf('/');
    const folderName = slash < 0 ? '' : path.slice(0, slash);
    const folder = folders.get(folderName) ?? folders.size;
    folders.set(folderName, folder);
    return { folder, folderName, path: path.slice(slash + 1), content: file };
  });
}
