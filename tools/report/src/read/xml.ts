// Reads XML from left to right. Every step moves on and a mark that is missing ends the reading, so the
// work is that of the length, whatever the text holds. Entities are not expanded and nothing is loaded.

export type XmlPart =
  | { kind: 'open' | 'empty' | 'close'; name: string; attributes: string }
  | { kind: 'text'; text: string };

const isBlank = (code: number): boolean => code === 32 || (code >= 9 && code <= 13);

function isNameCharacter(code: number): boolean {
  return (code >= 97 && code <= 122) || (code >= 65 && code <= 90) || (code >= 48 && code <= 58) ||
    code === 95 || code === 46 || code === 45;
}

/** The place behind the mark, or the end of the text when there is none. */
function behind(text: string, mark: string, from: number): number {
  const found = text.indexOf(mark, from);
  return found < 0 ? text.length : found + mark.length;
}

function nameEnd(text: string, from: number): number {
  let end = from;
  while (end < text.length && isNameCharacter(text.charCodeAt(end))) end++;
  return end;
}

/** The place of the `>` of a tag, quoted values passed over, or the end of the text. */
function tagEnd(text: string, from: number): number {
  for (let at = from; at < text.length; at++) {
    const character = text[at];
    if (character === '>') return at;
    if (character === '"' || character === "'") at = behind(text, character, at + 1) - 1;
  }
  return text.length;
}

/** In two halves, because the whole mark must not stand in the script of a page. */
const beginsComment = (text: string, at: number): boolean => text.startsWith('<!', at) && text.startsWith('--', at + 2);

/** The place behind a declaration such as DOCTYPE, with what it holds between brackets. */
function declarationEnd(text: string, from: number): number {
  let depth = 0;
  for (let at = from; at < text.length; at++) {
    const character = text[at];
    if (character === '[') depth++;
    else if (character === ']') depth--;
    else if (character === '>' && depth <= 0) return at + 1;
    else if (character === '"' || character === "'") at = behind(text, character, at + 1) - 1;
    else if (beginsComment(text, at)) at = behind(text, '-->', at + 4) - 1;
  }
  return text.length;
}

/** The place behind a comment, an instruction or a declaration that begins here; -1 when none does. */
function asideEnd(text: string, at: number): number {
  if (beginsComment(text, at)) return behind(text, '-->', at + 4);
  if (text.startsWith('<?', at)) return behind(text, '?>', at + 2);
  if (text.startsWith('<!', at)) return declarationEnd(text, at + 2);
  return -1;
}

/** The name of the root element; empty when something else stands before it. */
export function xmlRoot(text: string): string {
  let at = 0;
  for (;;) {
    while (at < text.length && isBlank(text.charCodeAt(at))) at++;
    const end = asideEnd(text, at);
    if (end < 0) break;
    at = end;
  }
  if (text[at] !== '<') return '';
  const end = nameEnd(text, at + 1);
  const next = text.charCodeAt(end);
  return isBlank(next) || next === 47 || next === 62 ? text.slice(at + 1, end) : '';
}

/** Tags and the text between them, without comments, instructions and declarations. */
export function* xmlParts(text: string): Generator<XmlPart> {
  for (let at = 0; at < text.length;) {
    if (text[at] !== '<') {
      const next = text.indexOf('<', at);
      const end = next < 0 ? text.length : next;
      yield { kind: 'text', text: text.slice(at, end) };
      at = end;
      continue;
    }
    const aside = asideEnd(text, at);
    if (aside >= 0) {
      at = aside;
      continue;
    }
    const closing = text[at + 1] === '/';
    const begin = at + (closing ? 2 : 1);
    const end = nameEnd(text, begin);
    if (end === begin) {
      yield { kind: 'text', text: '<' };
      at++;
      continue;
    }
    const close = tagEnd(text, end);
    if (close === text.length) return;  // the tag breaks off
    const empty = text[close - 1] === '/';
    yield {
      kind: closing ? 'close' : empty ? 'empty' : 'open', name: text.slice(begin, end),
      attributes: text.slice(end, empty ? Math.max(end, close - 1) : close),
    };
    at = close + 1;
  }
}

/** The value of an attribute, as written between its quotes; undefined when there is none. */
export function xmlAttribute(attributes: string, name: string): string | undefined {
  for (const quote of ['"', "'"]) {
    const begin = attributes.indexOf(`${name}=${quote}`);
    const from = begin + name.length + 2;
    const end = begin < 0 ? -1 : attributes.indexOf(quote, from);
    if (end >= 0) return attributes.slice(from, end);
  }
  return undefined;
}
