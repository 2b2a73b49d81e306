#!/usr/bin/env python3
"""Checks that docs/messages.md has every message of the program, and none that it has not.

    tools/check_messages.py [--list | --missing] [--root FOLDER]

Messages are found where they are made. In src/ these are

  - what is thrown: `throw SomeException("text")`, shown as "Error: text";
  - the two exceptions with a text of their own, which they hand to `WriteErrorLine`;
  - what is written with `WriteLine` or `Write` on StandardOutput(), StandardError() or Log().

Parts that are not literals become a placeholder, written <so> in the document; constants, functions
that return literals, and the two sides of a `?:` are followed. A throw or a use of a writer that
this script does not understand is a fault of its own, so that no message can slip through.

The launcher puts its lines together more freely, with `+` and `?:`. There every text of two words or
more must be a line of the document or a part of one, and each line of the document's sections
about the launcher must be made of its literals.

In the document a message is the code at the beginning of a `### ` heading, or of a row of a table
whose first column is headed "line". Each section's messages are in the order of their letters and
digits. Ends with status 1 at a fault.
"""

import argparse
import itertools
import re
import sys
from pathlib import Path

DOCUMENT = "docs/messages.md"
LAUNCHER_FOLDERS = ("src/tools/", "src/launcher/")
LAUNCHER_SECTION = "Lines of the command hovar"
LAUNCHER_SECTIONS = {LAUNCHER_SECTION, "Findings of hovar --check",
                     "Description by hovar --check --data"}

# Stands for a part of a message that is not known before the program runs.
PART = "\0"

# These hold other messages, or are the answer to an option and no message.
FRAMES = {PART, "Error: " + PART}
ANSWERS = {"kHelpText", "kVersionText"}

# In the source, but never shown: text and reason.
NEVER_SHOWN = {
    "[Y|X,P=0,MCMC]": "the fifth label heads a column only; sampling has a line of its own",
    "Burnin: " + PART: "the model of this program adds the intercept",
    "Mcmc: " + PART: "the model of this program adds the intercept",
}

# Literals of the launcher that look like messages and are none: names that stand in lines.
NO_MESSAGES = {"file of C-statistics", "file of hospital predictions",
               "file of individual predictions", "hovar run record", "summary of the chain"}

WRITERS = {"StandardOutput", "StandardError", "Log"}
WRITING = {"Write", "WriteLine"}
NOT_WRITING = {"Attach", "AttachFile", "Clear", "Close", "Target"}
OWN_TEXT = {"FileOpenException", "MatchException"}
SILENT = re.compile(r"throw std :: bad_alloc \( \) ;")  # the launcher catches it and says so

TOKEN = re.compile(
    r"""(?P<space>\s+|//[^\n]*|/\*.*?\*/|\#[^\n]*)
      | R"(?P<mark>[^(\s]*)\((?P<raw>.*?)\)(?P=mark)"
      | (?:u8|[uUL])?"(?P<string>(?:\\.|[^"\\\n])*)"
      | '(?P<char>(?:\\.|[^'\\\n])+)'
      | (?P<word>[A-Za-z_]\w*)
      | (?P<number>\.?\d(?:[\w.]|'\w|[eEpP][+-])*)
      | (?P<sign>::|->|\.\.\.|[=!<>+]=|<<|.)""",
    re.VERBOSE | re.DOTALL,
)
ESCAPES = {"n": "\n", "t": "\t", "r": "\r", "0": "\0", "f": "\f", "v": "\v", "a": "\a", "b": "\b"}
CLOSING = {"(": ")", "[": "]", "{": "}"}

# How the launcher handles texts.
COMPARING = {"==", "!=", "<", ">"}
MAKING_STRINGS = {"string", "string_view", "String"}
SAYING = {"Say", "Fail", "Print", "Add", "AddError", "AddWarning"}


class Token:
    def __init__(self, kind, text, line):
        self.kind, self.text, self.line, self.used = kind, text, line, False

    def is_text(self):
        return self.kind == "text"


def decode(text):
    return re.sub(r"\\(.)", lambda match: ESCAPES.get(match[1], match[1]), text)


def tokens_of(source):
    tokens, line = [], 1
    for match in TOKEN.finditer(source):
        if match["raw"] is not None:
            tokens.append(Token("text", match["raw"], line))
        elif match["string"] is not None:
            tokens.append(Token("text", decode(match["string"]), line))
        elif match["char"] is not None:
            tokens.append(Token("text", decode(match["char"]), line))
        elif match["space"] is None:
            kind = "word" if match["word"] else "other"
            tokens.append(Token(kind, match[0], line))
        line += match[0].count("\n")
    return tokens


def end_of_group(tokens, start):
    """The index of the bracket that closes the one at `start`."""
    depth = 0
    for i in range(start, len(tokens)):
        if tokens[i].kind == "other" and tokens[i].text in CLOSING:
            depth += 1
        elif tokens[i].kind == "other" and tokens[i].text in CLOSING.values():
            depth -= 1
            if depth == 0:
                return i
    raise ValueError(f"line {tokens[start].line}: bracket without an end")


def split_at(tokens, separators):
    """The runs of tokens between separators that stand outside of brackets."""
    parts, i = [[]], 0
    while i < len(tokens):
        if tokens[i].kind == "other" and tokens[i].text in CLOSING:
            end = end_of_group(tokens, i)
            parts[-1] += tokens[i : end + 1]
            i = end + 1
            continue
        if tokens[i].kind == "other" and tokens[i].text in separators:
            parts.append([])
        else:
            parts[-1].append(tokens[i])
        i += 1
    return parts


class Source:
    """The messages of the sources below a folder."""

    def __init__(self, root):
        self.faults = []
        self.messages = {}  # text, with PART for its placeholders: where it is made
        self.lines = {}  # of the launcher, whole or in part: text: where
        self.launcher_literals = set()
        self.files = {}
        for path in sorted((root / "src").rglob("*")):
            if path.suffix in (".cpp", ".h", ".in"):
                name = path.relative_to(root).as_posix()
                self.files[name] = tokens_of(path.read_text(encoding="utf-8"))
        self.constants = {}
        for tokens in self.files.values():
            self.find_constants(tokens)
        for name, tokens in self.files.items():
            self.find_thrown(name, tokens)
            self.find_written(name, tokens)
        for name, tokens in self.files.items():
            if name.startswith(LAUNCHER_FOLDERS):
                self.find_lines(name, tokens)

    def fault(self, name, token, text):
        self.faults.append(f"{name}:{token.line}: {text}")

    def find_constants(self, tokens):
        """Named texts: kName = "a" "b"; and kName = {"a", "b"};"""
        for i, token in enumerate(tokens):
            if token.kind != "word" or not re.fullmatch(r"k[A-Z]\w*", token.text):
                continue
            following = i + 1
            if following < len(tokens) and tokens[following].text == "[":
                following = end_of_group(tokens, following) + 1
            if following >= len(tokens) or tokens[following].text not in ("=", "{"):
                continue
            value = split_at(tokens[following:], {";"})[0]
            texts = [t for t in value if t.is_text()]
            if not texts:
                continue
            inner = [t for t in value if t.text not in ("=", "{", "}") or t.is_text()]
            parts = [part for part in split_at(inner, {","}) if part]
            if all(t.is_text() for part in parts for t in part):
                self.constants[token.text] = ["".join(t.text for t in part) for part in parts]
                if token.text in ANSWERS:
                    for text in texts:
                        text.used = True

    def texts_returned(self, function):
        """The literals that a function returns, or None when it is not one that returns literals."""
        for tokens in self.files.values():
            for i, token in enumerate(tokens[:-1]):
                if token.text != function or tokens[i + 1].text != "(":
                    continue
                after = end_of_group(tokens, i + 1) + 1
                while after < len(tokens) and tokens[after].text in ("const", "noexcept"):
                    after += 1
                if after >= len(tokens) or tokens[after].text != "{":
                    continue
                body = tokens[after : end_of_group(tokens, after)]
                found = []
                for j, word in enumerate(body):
                    if word.text == "return" and word.kind == "word":
                        value = self.alternatives(split_at(body[j + 1 :], {";"})[0])
                        if value is None or any(PART in text for text in value):
                            return None
                        found += value
                return found or None
        return None

    def alternatives(self, tokens):
        """The texts that an expression may give, or None when it holds texts in another way."""
        if tokens and all(t.is_text() for t in tokens):
            return ["".join(t.text for t in tokens)]
        choices = split_at(tokens, {"?"})
        if len(choices) == 2:
            sides = split_at(choices[1], {":"})
            if len(sides) == 2:
                values = [self.alternatives(side) for side in sides]
                return None if None in values else values[0] + values[1]
        if any(t.is_text() for t in tokens):
            return None
        for i, token in enumerate(tokens):
            if token.kind != "word":
                continue
            if token.text in self.constants:
                return self.constants[token.text]
            if i + 1 < len(tokens) and tokens[i + 1].text == "(":
                returned = self.texts_returned(token.text)
                if returned is not None:
                    return returned
        return [PART]

    def add(self, name, token, prefix, arguments):
        """Adds the messages that a call with these arguments can write."""
        parts = []
        for argument in arguments:
            values = self.alternatives(argument)
            if values is None:
                self.fault(name, token, "a text that check_messages.py cannot follow")
                return
            parts.append(values)
        for argument in arguments:
            for each in argument:
                each.used = True
        for combination in itertools.product(*parts):
            for line in (prefix + "".join(combination)).split("\n"):
                text = normalised(line)
                if text and text not in FRAMES and text not in NEVER_SHOWN:
                    self.messages.setdefault(text, f"{name}:{token.line}")

    def find_thrown(self, name, tokens):
        for i, token in enumerate(tokens):
            if token.kind == "word" and token.text == "WriteErrorLine":
                end = end_of_group(tokens, i + 1)
                inner = tokens[i + 2 : end]
                if end + 1 < len(tokens) and tokens[end + 1].text == ";":  # a call
                    self.add(name, token, "Error: ", split_at(inner, {","}))
                continue
            if token.kind != "word" or token.text != "throw" or tokens[i + 1].text == ";":
                continue
            if SILENT.match(" ".join(t.text for t in tokens[i : i + 7])):
                continue
            opening = next((j for j in range(i, len(tokens)) if tokens[j].text in "(;{"), None)
            classes = [t.text for t in tokens[i + 1 : opening] if t.text.endswith("Exception")]
            if opening is None or tokens[opening].text != "(" or len(classes) != 1:
                self.fault(name, token, "a throw that check_messages.py does not understand")
                continue
            if classes[0] in OWN_TEXT:
                continue
            arguments = split_at(tokens[opening + 1 : end_of_group(tokens, opening)], {","})
            if self.alternatives(arguments[0]) == [PART] or len(arguments) != 1:
                self.fault(name, token, "the text of an exception must be a literal")
                continue
            self.add(name, token, "Error: ", arguments)

    def find_written(self, name, tokens):
        aliases = set()
        for i, token in enumerate(tokens):
            if token.kind != "word":
                continue
            if token.text in WRITERS and [t.text for t in tokens[i + 1 : i + 3]] == ["(", ")"]:
                after = i + 3
                before = i - 1
                while tokens[before].text in ("::", "IO", "Vell"):
                    before -= 1
                if tokens[after].text == ";" and tokens[before].text == "=":
                    aliases.add(tokens[before - 1].text)
                elif tokens[before].text == "&" and tokens[after].text in ("noexcept", "{", ";"):
                    pass  # its declaration
                else:
                    self.use_writer(name, tokens, token, after)
            elif token.text in aliases and tokens[i + 1].text != "=":
                self.use_writer(name, tokens, token, i + 1)

    def use_writer(self, name, tokens, token, dot):
        member = tokens[dot + 1].text if tokens[dot].text == "." else None
        if member in WRITING:
            inner = tokens[dot + 3 : end_of_group(tokens, dot + 2)]
            self.add(name, token, "", split_at(inner, {","}))
        elif member not in NOT_WRITING:
            self.fault(name, token, f"a use of {token.text} that check_messages.py does not know")

    def find_lines(self, name, tokens):
        """The texts that a file of the launcher puts together, whole or in part."""
        for i, token in enumerate(tokens):
            if not token.is_text():
                continue
            self.launcher_literals.update(
                normalised(line) for line in joined_text(tokens, i).split("\n") if line.strip())
            if token.used or (i > 0 and tokens[i - 1].text == "case"):  # a label and no text
                continue
            start, end = bounds_of_expression(tokens, i)
            expression = tokens[start:end]
            for each in expression:
                each.used = True
            if any(t.text in COMPARING for t in expression if t.kind == "other"):
                if not any(t.text == "?" for t in expression if t.kind == "other"):
                    continue
            is_said = start > 1 and tokens[start - 1].text == "(" and tokens[start - 2].text in SAYING
            for text in texts_of(expression):
                for line in text.split("\n"):
                    line = re.sub(PART + "+", PART, normalised(line)).strip(PART + " ")
                    if is_sentence(line, is_said):
                        self.lines.setdefault(line, f"{name}:{token.line}")


def joined_text(tokens, first):
    """The literals that stand side by side from here on."""
    text = ""
    while first < len(tokens) and tokens[first].is_text():
        text += tokens[first].text
        first += 1
    return text


def is_other(token, *texts):
    return token.kind == "other" and token.text in texts


def bounds_of_expression(tokens, at):
    """The widest row of tokens round `at` that makes one text."""
    start, end = at, at
    while True:
        depth = 0
        while start > 0:  # to the left, up to what cannot belong to it
            token = tokens[start - 1]
            if is_other(token, ")", "]", "}"):
                depth += 1
            elif is_other(token, "(", "[", "{"):
                if depth == 0:
                    break
                depth -= 1
            elif depth == 0 and (is_other(token, ",", ";", "=", "+=", "<<") or token.text == "return"):
                break
            start -= 1
        while end < len(tokens):
            if is_other(tokens[end], "(", "[", "{"):
                end = end_of_group(tokens, end) + 1
            elif is_other(tokens[end], ")", "]", "}", ",", ";"):
                break
            else:
                end += 1
        # Out of brackets that only group, or only make a string of a text.
        if start < 2 or end >= len(tokens) or not is_other(tokens[start - 1], "("):
            return start, end
        before = tokens[start - 2]
        groups = before.kind == "other" and before.text not in (")", "]", ">")
        if not (groups or before.text in MAKING_STRINGS) or not is_other(tokens[end], ")"):
            return start, end
        start, end = start - 1, end + 1


def texts_of(tokens):
    """The texts that an expression of strings may give, with PART for what is not a literal."""
    choice = split_at(tokens, {"?"})
    if len(choice) > 1:
        rest = tokens[len(choice[0]) + 1 :]
        depth, i = 0, 0
        while i < len(rest):  # the ":" of this "?", not of one within
            if is_other(rest[i], *CLOSING):
                i = end_of_group(rest, i)
            elif is_other(rest[i], "?"):
                depth += 1
            elif is_other(rest[i], ":"):
                if depth == 0:
                    break
                depth -= 1
            i += 1
        return texts_of(rest[:i]) + texts_of(rest[i + 1 :])
    parts = []
    for operand in split_at(tokens, {"+"}):
        if operand and all(t.is_text() for t in operand):
            parts.append(["".join(t.text for t in operand)])
        elif operand and is_other(operand[0], "(") and end_of_group(operand, 0) == len(operand) - 1:
            parts.append(texts_of(operand[1:-1]))
        elif makes_string(operand):
            opening = next(i for i, t in enumerate(operand) if is_other(t, "("))
            parts.append(texts_of(operand[opening + 1 : -1]))
        else:
            parts.append([PART])
    return ["".join(combination) for combination in itertools.product(*parts)]


def makes_string(operand):
    """Whether this is std::string(...), with one argument that holds a literal."""
    opening = next((i for i, t in enumerate(operand) if is_other(t, "(")), None)
    return (opening is not None and opening > 0 and operand[opening - 1].text in MAKING_STRINGS
            and end_of_group(operand, opening) == len(operand) - 1
            and any(t.is_text() for t in operand[opening:])
            and len(split_at(operand[opening + 1 : -1], {","})) == 1)


def is_sentence(line, is_said):
    """Whether a text is a line, or a part of one, that somebody must be able to look up."""
    words = re.findall(r"[A-Za-z]{2,}", line)
    if len(words) < 2 or " " not in line or line in NO_MESSAGES or re.search(r"<!--|=\"$|@", line):
        return False
    is_name = PART not in line and re.fullmatch(r"[a-z -]+", line) and len(words) < 4
    return is_said or not is_name


def normalised(text):
    """Without blanks at the ends, and with parts in angle brackets taken for placeholders."""
    text = re.sub(r"<(?:[A-Za-z][^<>]*|\.\.\.)>", PART, text)
    return re.sub(r"\s+", " ", text).strip()


def sort_key(text):
    return re.sub(r"[^a-z0-9]", "", text.replace(PART, "").casefold())


def shown(text):
    return text.replace(PART, "<...>")


class Document:
    """The messages of the document."""

    ENTRY = re.compile(r"^(?:### |\| )(`+)(.+?)\1")

    def __init__(self, path):
        self.faults = []
        self.messages = {}  # text: line
        self.launcher_lines = {}
        section, previous, in_table = "", "", False
        for number, line in enumerate(path.read_text(encoding="utf-8").splitlines(), 1):
            if line.startswith("## "):
                section, previous = line[3:].replace("`", "").strip(), ""
                continue
            in_table = line.startswith("| line |") or (in_table and line.startswith("|"))
            match = self.ENTRY.match(line)
            if not match or (line.startswith("|") and not in_table):
                continue
            written = match[2].replace("\\|", "|").strip()
            text = normalised(written)
            where = self.launcher_lines if section in LAUNCHER_SECTIONS else self.messages
            if text in where:
                self.faults.append(f"{DOCUMENT}:{number}: {written} stands there twice")
            where[text] = number
            key = sort_key(text)
            if previous and key < previous:
                self.faults.append(f"{DOCUMENT}:{number}: {written} is out of order")
            previous = key


def is_made_of(text, literals):
    """Whether a text is a row of literals, with or without blanks between them."""
    reached = {0}
    for i in range(len(text)):
        if i not in reached:
            continue
        if text[i] == " ":
            reached.add(i + 1)
        reached.update(i + len(literal) for literal in literals if text.startswith(literal, i))
    return len(text) in reached


def faults_of(root):
    source, document = Source(root), Document(root / DOCUMENT)
    faults = source.faults + document.faults
    known = set(document.messages) | set(document.launcher_lines)
    for text, where in sorted(source.messages.items()):
        if text not in known:
            faults.append(f"missing in {DOCUMENT}: `{shown(text)}`, see {where}")
    for text, number in document.messages.items():
        if text not in source.messages:
            faults.append(f"{DOCUMENT}:{number}: the program has no message `{shown(text)}`")
    for text, where in sorted(source.lines.items()):
        if not any(text in line for line in known):
            faults.append(
                f"missing in {DOCUMENT}, section \"{LAUNCHER_SECTION}\": "
                f"a line with `{shown(text)}`, see {where}")
    literals = {piece.strip() for text in source.launcher_literals for piece in text.split(PART)}
    literals.discard("")
    for line, number in document.launcher_lines.items():
        if line in source.messages:
            continue
        if not all(is_made_of(piece.strip(), literals) for piece in line.split(PART)):
            faults.append(f"{DOCUMENT}:{number}: the launcher has no line `{shown(line)}`")
    return source, faults


def main():
    parser = argparse.ArgumentParser(description="Compares docs/messages.md with the sources.")
    parser.add_argument("--list", action="store_true", help="print the messages of the sources")
    parser.add_argument("--missing", action="store_true",
                        help="print what is missing, in order, as rows for a table of the document")
    parser.add_argument("--root", type=Path, default=Path(__file__).resolve().parent.parent)
    arguments = parser.parse_args()
    source, faults = faults_of(arguments.root)
    if arguments.list:
        for text, where in sorted({**source.messages, **source.lines}.items()):
            print(f"{shown(text)}    ({where})")
        return 0
    if arguments.missing:
        missing = [fault.split("`")[1] for fault in faults if fault.startswith("missing")]
        for text in sorted(missing, key=lambda text: sort_key(normalised(text))):
            print("| `" + text.replace("|", "\\|") + "` | |")
        return 0
    for fault in faults:
        print(fault, file=sys.stderr)
    if not faults:
        print(f"{len(source.messages)} messages and {len(source.lines)} texts of the launcher "
              f"are described in {DOCUMENT}")
    return 1 if faults else 0


if __name__ == "__main__":
    sys.exit(main())
