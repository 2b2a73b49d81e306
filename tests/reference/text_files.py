"""Paths, number text, and the comma-separated dialect of all tables.

Bytes are handled as Latin-1 text, so every byte is one character and comes back unchanged.
"""
import re

INTEGER = re.compile(r"[ \t\n\v\f\r]*([+-]?\d+)")
REAL = re.compile(r"[ \t\n\v\f\r]*([+-]?(?:nan|inf|(?:\d+\.?\d*|\.\d+)(?:[eE][+-]?\d+)?))")


def system_path(path):
    """The path for the operating system: a backslash separates like a slash."""
    return path.replace("\\", "/")


def join(folder, name):
    return folder + "\\" + name


def read_text(path):
    with open(system_path(path), encoding="latin-1", newline="") as f:
        return f.read()


def open_for_writing(path):
    return open(system_path(path), "w", encoding="latin-1", newline="")


def lg(value):
    """The text of printf's %lg; a NaN is `nan` whatever its sign."""
    return "%g" % value


def quoted(text):
    """A text cell as it is written."""
    if '"' in text:
        return '"' + text.replace('"', '""') + '"'
    if "," in text or "\n" in text:
        return '"' + text + '"'
    return text


class CsvReader:
    """Walks one table, cell by cell. A well-formed table is assumed; anything else asserts."""

    def __init__(self, text):
        self.text = text
        self.at = 0

    def at_end(self):
        return self.at >= len(self.text)

    def field(self):
        """One cell with its quotes resolved; the separator or line feed after it stays."""
        if self.at_end():
            return ""
        text = self.text
        if text[self.at] != '"':
            start = self.at
            while self.at < len(text) and text[self.at] not in ",\n":
                assert text[self.at] not in '"\0'
                self.at += 1
            return text[start:self.at]
        self.at += 1
        parts = []
        while True:
            close = text.index('"', self.at)
            parts.append(text[self.at:close])
            self.at = close + 1
            if text[self.at:self.at + 1] != '"':
                break
            parts.append('"')
            self.at += 1
        assert self.at_end() or text[self.at] in ",\n"
        return "".join(parts)

    def skip(self):
        """Moves past the next comma or line feed; quotes mean nothing here."""
        while not self.at_end():
            self.at += 1
            if self.text[self.at - 1] in ",\n":
                return

    def skip_line(self):
        end = self.text.find("\n", self.at)
        self.at = len(self.text) if end < 0 else end + 1

    def next_field(self):
        """`field` and the one character after it; returns the cell and that character."""
        cell = self.field()
        following = self.text[self.at:self.at + 1]
        self.at += len(following)
        return cell, following

    def number(self, pattern, convert):
        found = pattern.match(self.text, self.at)
        assert found, "no number at %d: %r" % (self.at, self.text[self.at:self.at + 20])
        self.at = found.end()
        value = convert(found.group(1))
        self.skip()
        return value

    def real(self):
        return self.number(REAL, float)

    def bit(self):
        value = self.number(INTEGER, int)
        assert value in (0, 1)
        return value

    def ternary(self):
        """0, 1 or None for a cell that holds nothing but blanks and tabs."""
        while self.text[self.at:self.at + 1] in (" ", "\t"):
            self.at += 1
        here = self.at + (self.text[self.at:self.at + 2] == "\r\n")
        if here >= len(self.text) or self.text[here] in ",\n":
            self.skip()
            return None
        return self.bit()


def measure(text):
    """Smallest and largest number of cells of a line, and the number of ended lines."""
    reader = CsvReader(text)
    counts = []
    cells = 0
    while True:
        _, following = reader.next_field()
        if following == "":
            break
        cells += 1
        if following == "\n":
            counts.append(cells)
            cells = 0
    return (min(counts), max(counts), len(counts)) if counts else (0, 0, 0)
