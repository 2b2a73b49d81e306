// Text from files as a reader can trust it. A name may hold characters that are not seen, that turn the
// direction of what stands beside it, or that lie over other lines; they are shown as what they are. Every
// text of the page goes through here on its way into an element (see dom.ts), and drawings do the same.

/** No text of the page is longer; what is cut stands in the file. */
const kLongestText = 20_000;

const kPlain = /^[ -~]*$/;
/** Controls, formats (marks of direction among them), ends of lines, halves of characters, and what is drawn as nothing. */
const kUnseen = /[\p{Cc}\p{Cf}\p{Zl}\p{Zp}\p{Cs}\p{Default_Ignorable_Code_Point}\u2800]/gu;
/** Joiners and variants of letters, which some scripts need. */
const kNeeded = /^[\u200C\u200D\uFE00-\uFE0F]$/;
/** More marks over one letter than any script has reach into the lines above. */
const kHeapedMarks = /(\p{M}{4})\p{M}+/gu;
/** Words that are written from right to left, with the blanks between them. */
const kRightToLeft = /[\u0590-\u08FF\uFB1D-\uFDFF\uFE70-\uFEFC\u{10800}-\u{10FFF}\u{1E800}-\u{1EFFF}][\u0590-\u08FF\uFB1D-\uFDFF\uFE70-\uFEFC\u{10800}-\u{10FFF}\u{1E800}-\u{1EFFF}\p{M}\u200C\u200D ]*/gu;

const kNames: ReadonlyMap<string, string> = new Map([['\n', '\\n'], ['\r', '\\r'], ['\t', '\\t']]);

/** As `hovar --check` writes control characters, and others by their number. */
function escaped(character: string): string {
  if (kNeeded.test(character)) return character;
  const code = character.codePointAt(0) ?? 0;
  const digits = code.toString(16);
  return kNames.get(character) ?? (code < 0x100 ? `\\x${digits.padStart(2, '0')}`
    : code < 0x10000 ? `\\u${digits.padStart(4, '0')}` : `\\u{${digits}}`);
}

/** A text with nothing hidden, in which words from right to left do not turn what stands around them. */
export function visible(text: string): string {
  const cut = text.length > kLongestText ? `${text.slice(0, kLongestText)}…` : text;
  if (kPlain.test(cut)) return cut;
  return cut.replace(kUnseen, escaped).replace(kHeapedMarks, '$1…')
    .replace(kRightToLeft, (words) => {
      const kept = words.trimEnd();
      return `\u2068${kept}\u2069${words.slice(kept.length)}`;
    });
}
