"""Which input files are valid, and the error line of those that are not.

`outcome(files, definition)` walks through a run as far as its input decides the end: it reads the
definition, the data file, the coefficient file and the individual predictions from `files` (names
to bytes) byte by byte, by the rules of the formats. It computes nothing; it shares no code with the
program and none with the other scripts, which take valid input for granted.

The result is a set of ends that are right: OK, NUMERIC (the input is valid, but not the full study
any more; exit status 0 or one of the errors of a computation) or the bytes of an error line (see
`mismatch` for one of them). There is more than one only where the rules leave the order of two
errors open.
"""
import functools
import re

OK = b"ok"
NUMERIC = b"numeric"
WHITESPACE = b" \t\r\n"
# What the formatted reads of the C library skip before a number.
C_SPACE = b" \t\n\v\f\r"
END = b"Unexpected end of stream"


class Failure(Exception):
    """The end of a run: its possible error lines."""

    def __init__(self, *lines):
        super().__init__(lines)
        self.lines = frozenset(lines)


def cannot_open(path):
    return b'File "' + path + b'" can not be opened'


def in_file(name):
    return b'Invalid input in file "' + name + b'": '


def mismatch(name, expected, begin):
    """The line says `current "..."` in place of `at N`, with as many bytes of the file, from N on, as
    were expected (fewer at its end)."""
    return in_file(name) + b'expected "%s" at %d' % (expected, begin)


class Stream:
    def __init__(self, content, name=b""):
        self.content = content
        self.name = name
        self.at = 0

    def peek(self):
        return self.content[self.at:self.at + 1]

    def read(self):
        byte = self.peek()
        self.at += len(byte)
        return byte

    def skip(self, among):
        while self.peek() and self.peek() in among:
            self.at += 1

    def until(self, delimiters):
        """Bytes up to a delimiter, which stays, or the end; none of them may be NUL."""
        start = self.at
        while self.peek() and self.peek() not in delimiters:
            if self.read() == b"\0":
                raise Failure(b"Invalid input string")
        return self.content[start:self.at]


# ---- Numbers, as the formatted reads of the C library take them in the C locale.

INTEGER = re.compile(rb"[+-]?[0-9]+")
REAL = re.compile(rb"[+-]?(?:nan|infinity|inf|0x(?:[0-9a-f]+\.?[0-9a-f]*|\.[0-9a-f]+)(?:p[+-]?[0-9]*)?"
                  rb"|(?:[0-9]+\.?[0-9]*|\.[0-9]+)(?:e[+-]?[0-9]*)?)", re.I)
# Starts of numbers that are none if nothing better follows.
INTEGER_START = re.compile(rb"[+-]?")
REAL_START = re.compile(rb"[+-]?(?:n(?:an?)?|i(?:nf?)?|inf(?:i(?:n(?:i(?:t(?:y)?)?)?)?)?|0x\.?|\.)?", re.I)


def scan(stream, number, start):
    """1 for a number, 0 for something else, -1 at the end of the file; moves as fscanf does."""
    stream.skip(C_SPACE)
    found = number.match(stream.content, stream.at)
    begun = start.match(stream.content, stream.at)
    if found and found.end() >= begun.end():
        stream.at = found.end()
        return 1
    stream.at = begun.end()
    return 0 if stream.peek() else -1


def scan_integer(stream):
    begin = stream.at
    result = scan(stream, INTEGER, INTEGER_START)
    return result, int(stream.content[begin:stream.at]) if result == 1 else 0


def scan_real(stream):
    return scan(stream, REAL, REAL_START)


# ---- XML

class Tag:
    def __init__(self):
        self.kind = "start"
        self.name = b""
        self.attributes = {}
        self.is_empty = False


class Xml:
    def __init__(self, content, name):
        self.stream = Stream(content, name)
        self.numbers = []

    def skip(self):
        """White space and comments."""
        s = self.stream
        while True:
            s.skip(WHITESPACE)
            if not s.content.startswith(b"<!--", s.at):
                return
            close = s.content.find(b"-->", s.at + 4)
            s.at = len(s.content) if close < 0 else close + 3

    def require(self, expected):
        byte = self.stream.read()
        if not byte:
            raise Failure(END)
        if byte != expected:
            raise Failure(mismatch(self.stream.name, expected, self.stream.at - 1))

    def tag(self):
        s = self.stream
        tag = Tag()
        self.skip()
        self.require(b"<")
        if s.peek() == b"?":
            s.read()
            tag.kind = "declaration"
        elif s.peek() == b"/":
            s.read()
            tag.kind = "end"
        tag.name = s.until(WHITESPACE + b">")
        s.skip(WHITESPACE)
        if tag.kind != "end":
            self.attributes(tag)
        if tag.kind == "declaration":
            self.require(b"?")
        elif tag.kind == "start" and s.peek() == b"/":
            s.read()
            tag.is_empty = True
        self.require(b">")
        return tag

    def attributes(self, tag):
        s = self.stream
        while True:
            s.skip(WHITESPACE)
            if s.peek() and s.peek() in b">/?":
                return
            name = s.until(WHITESPACE + b"=")
            s.skip(WHITESPACE)
            self.require(b"=")
            s.skip(WHITESPACE)
            self.require(b'"')
            value = s.until(b'"')
            self.require(b'"')
            if name in tag.attributes:
                raise Failure(b"Duplicate attributes not allowed in XML tag")
            tag.attributes[name] = value

    def named(self, name):
        """A tag's name, exactly as many bytes as it has, and the tag's end."""
        s = self.stream
        current = s.content[s.at:s.at + len(name)]
        s.at += len(current)
        if b"\0" in current:
            raise Failure(b"Invalid argument")
        if current != name:
            raise Failure(mismatch(s.name, name, s.at - len(current)))
        s.skip(WHITESPACE)
        self.require(b">")

    def start(self, name):
        self.skip()
        self.require(b"<")
        self.named(name)

    def end(self, name):
        self.skip()
        self.require(b"<")
        self.require(b"/")
        self.named(name)

    def text(self, name):
        self.start(name)
        value = self.stream.until(b"<")
        self.end(name)
        return value

    def flag(self, name):
        error = b'Invalid value in "UseGeneralizedEstimatingEquations" tag'
        self.start(name)
        value = self.stream.until(b"<")
        is_flag = value in (b"true", b"false")
        try:
            self.end(name)
        except Failure as failure:
            # Both the text and what follows it are wrong; either may be found first.
            raise failure if is_flag else Failure(error, *failure.lines)
        if not is_flag:
            raise Failure(error)
        return value == b"true"

    def number(self, name, scanner):
        self.start(name)
        begin = self.stream.at
        result = scanner(self.stream)
        self.numbers.append(self.stream.content[begin:self.stream.at].strip())
        value = 0
        if isinstance(result, tuple):
            result, value = result
        if result != 1:
            raise Failure(b"IO Exception" if result == 0 else END)
        self.end(name)
        return value

    def integer(self, name):
        return self.number(name, scan_integer)

    def real(self, name):
        self.number(name, scan_real)

    def seed(self):
        tag = self.tag()
        if tag.kind == "start" and tag.name == b"Seed":
            if b"xsi:type" not in tag.attributes:
                raise Failure(b"Attribute not found in XML tag")
            kind = tag.attributes[b"xsi:type"]
            if kind == b"Randomize" and tag.is_empty:
                return
            if kind == b"Vector" and not tag.is_empty:
                self.start(b"Seed")
                for _ in range(2):
                    self.start(b"Element")
                    if scan_integer(self.stream)[0] != 1:
                        raise Failure(END)
                    self.end(b"Element")
                self.end(b"Seed")
                self.end(b"Seed")
                return
        raise Failure(b"Invalid RandomGenerator XML input")

    def mcmc(self):
        self.start(b"Mcmc")
        self.seed()
        for name in (b"Thinning", b"Burnin", b"Steps"):
            self.integer(name)
        self.end(b"Mcmc")


class Definition:
    pass


def read_analysis(xml, d):
    xml.start(b"Input")
    d.data = xml.text(b"Data")
    d.indicators = xml.integer(b"NumberOfPoaIndicators")
    xml.end(b"Input")
    xml.start(b"Output")
    for name in (b"Folder", b"RegressionCoefficients", b"McmcSubFolder", b"LogFile"):
        xml.text(name)
    xml.end(b"Output")
    xml.start(b"Regression")
    xml.flag(b"UseGeneralizedEstimatingEquations")
    xml.start(b"LinearDependence")
    xml.real(b"Tolerance")
    xml.end(b"LinearDependence")
    for block in (b"Parameters", b"ParametersMcmc"):
        xml.start(block)
        xml.real(b"Tolerance")
        xml.integer(b"MaxIterations")
        xml.real(b"PriorPrecision")
        xml.end(block)
    xml.end(b"Regression")
    xml.mcmc()


def read_other(xml, d, outputs, has_predictions):
    xml.start(b"Input")
    d.data = xml.text(b"Data")
    d.indicators = xml.integer(b"NumberOfPoaIndicators")
    d.coefficients = xml.text(b"RegressionCoefficients")
    if has_predictions:
        d.predictions = xml.text(b"IndividualPredictions")
    xml.end(b"Input")
    xml.start(b"Output")
    for name in outputs:
        xml.text(name)
    xml.end(b"Output")
    xml.mcmc()


def read_batch(xml, d):
    d.list = []
    xml.start(b"Simulations")
    while True:
        tag = xml.tag()
        if tag.kind == "end" and tag.name == b"Simulations":
            return
        if tag.kind != "start" or tag.name != b"Simulation" or tag.is_empty:
            raise Failure(b"Invalid XML simulation")
        d.list.append(xml.stream.until(b"<"))
        xml.end(b"Simulation")


@functools.lru_cache(maxsize=64)
def read_definition(content, name):
    xml = Xml(content, name)
    root = xml.tag()
    while root.kind == "declaration":
        root = xml.tag()
    d = Definition()
    d.root = root.name
    d.numbers = xml.numbers
    if root.name == b"Analysis":
        read_analysis(xml, d)
    elif root.name == b"Prediction":
        read_other(xml, d, (b"Folder", b"IndividualPredictions", b"HospitalPredictions", b"LogFile"),
                   False)
    elif root.name == b"Validation":
        read_other(xml, d, (b"Folder", b"CStatistics", b"LogFile"), True)
    elif root.name == b"Batch":
        read_batch(xml, d)
    else:
        raise Failure(b"Invalid definition file")
    xml.end(root.name)
    return d


# ---- Tables

PLAIN_FIELD = re.compile(rb'[^",\n\0]*')
SPECIAL = re.compile(rb'["\0]')


def read_field(s):
    """One field by the rules of quotes; what ends it stays."""
    if s.peek() != b'"':
        begin = s.at
        s.at = PLAIN_FIELD.match(s.content, s.at).end()
        if s.peek() == b"\0":
            raise Failure(b"Invalid input string")
        if s.peek() == b'"':
            raise Failure(b"Invalid CSV format")
        return s.content[begin:s.at]
    s.read()
    field = bytearray()
    while True:
        byte = s.read()
        if byte == b"\0":
            raise Failure(b"Invalid input string")
        if not byte:
            raise Failure(b"Invalid CSV format")
        if byte != b'"':
            field += byte
            continue
        if s.peek() == b'"':
            field += s.read()
        elif not s.peek() or s.peek() in b",\n":
            return bytes(field)
        else:
            raise Failure(b"Invalid CSV format")


def read_past(s):
    """Through the next comma or line feed, whatever quotes there are."""
    while s.peek():
        if s.read() in b",\n":
            return


@functools.lru_cache(maxsize=64)
def measure(content):
    """Fewest and most fields of a line, and the lines that are ended."""
    s = Stream(content)
    counts = []
    while True:
        special = SPECIAL.search(content, s.at)
        if special is None:
            counts += [line.count(b",") + 1 for line in content[s.at:].split(b"\n")[:-1]]
            break
        start = content.rfind(b"\n", s.at, special.start()) + 1
        if start > s.at:
            counts += [line.count(b",") + 1 for line in content[s.at:start - 1].split(b"\n")]
            s.at = start
        fields = 0
        byte = b","
        while byte == b",":
            read_field(s)
            fields += 1
            byte = s.read()
        if not byte:
            break
        counts.append(fields)
    return (min(counts), max(counts), len(counts)) if counts else (0, 0, 0)


# ---- The data file

def read_binary(s):
    result, value = scan_integer(s)
    if result != 1:
        raise Failure(b"IO Exception" if result == 0 else END)
    if value not in (0, 1):
        raise Failure(b"Invalid input")
    read_past(s)


def read_ternary(s):
    s.skip(b" \t")
    if s.content.startswith(b"\r\n", s.at):
        s.read()
    if s.peek() and s.peek() not in b",\n":
        read_binary(s)
    else:
        read_past(s)


@functools.lru_cache(maxsize=64)
def read_data(content, indicators):
    """The names of the variables and the number of records."""
    fewest, most, lines = measure(content)
    if fewest != most:
        raise Failure(b"Variable number of fields")
    rest = fewest - indicators - 3
    if rest % 2:
        raise Failure(b"Wrong number of POA indicators in definition file")
    variables, records = rest // 2 + 1, lines - 1
    if variables < 0 or records < 0:
        raise Failure(b"Invalid argument")
    if variables == 0:
        raise Failure(b"Index out of range")
    s = Stream(content)
    for _ in range(3 + indicators):
        read_past(s)
    names = []
    for _ in range(2 * (variables - 1)):
        names.append(read_field(s))
        read_past(s)
    v = variables - 1
    plain = re.compile(rb'[^,\n"\0]*,([^,\n"\0]*),[01],' + rb"[01]?," * indicators + rb"[01]," * v +
                       rb"[01]?," * (v - 1) + rb"[01]?\n") if v > 0 else None
    hospitals = []
    for _ in range(records):
        line = plain.match(content, s.at) if plain else None
        if line:
            hospital, s.at = line.group(1), line.end()
        else:
            read_past(s)
            hospital = read_field(s)
            read_past(s)
            read_binary(s)
            for _ in range(indicators):
                read_ternary(s)
            for _ in range(v):
                read_binary(s)
            for _ in range(v):
                read_ternary(s)
        if not hospitals or hospitals[-1] != hospital:
            hospitals.append(hospital)
    if s.peek():
        raise Failure(b"Data wrong format")
    if len(set(hospitals)) < len(hospitals):
        raise Failure(b"Data must be grouped by hospital ID")
    return [b"ZIntercept"] + names[:v], [b"XIntercept"] + names[v:], records


# ---- The files that runs hand on

def read_value(s):
    if scan_real(s) != 1:
        raise Failure(END)
    read_past(s)


def after_header(content):
    """The content from its second line on, and the number of rows there."""
    rows = measure(content)[2] - 1
    if rows < 0:
        raise Failure(b"Invalid argument")
    s = Stream(content)
    s.at = content.find(b"\n") + 1
    return s, rows


@functools.lru_cache(maxsize=64)
def read_coefficients(content):
    s, rows = after_header(content)
    x_names, z_names = [], []
    for row in range(rows):
        for names in (x_names, z_names):
            names.append(read_field(s))
            read_past(s)
        for cell in range(4):
            if row > 0 and cell % 2:
                read_value(s)
            else:
                read_past(s)
        for _ in range(5):
            read_value(s)
            for _ in range(2):
                read_field(s)
                read_past(s)
    return x_names, z_names


@functools.lru_cache(maxsize=64)
def read_predictions(content):
    s, rows = after_header(content)
    for _ in range(rows):
        for is_value in (0, 0, 0, 1, 1, 0, 1, 1, 0, 1, 1):
            (read_value if is_value else read_past)(s)
    return rows


# ---- Runs

def opened(files, path):
    if path not in files:
        raise Failure(cannot_open(path))
    return files[path]


def run(files, path, study):
    d = read_definition(opened(files, path), path)
    if d.root == b"Batch":
        ends = [run(files, entry, study) for entry in d.list]
        return NUMERIC if NUMERIC in ends else OK
    z_names, x_names, records = read_data(opened(files, d.data), d.indicators)
    if d.root == b"Analysis":
        return OK if (d.numbers, records) == study else NUMERIC
    file_x, file_z = read_coefficients(opened(files, d.coefficients))
    matched = sum(x in file_x and z in file_z for x, z in zip(x_names, z_names))
    if matched != len(file_x):
        raise Failure(b"Variables mismatch")
    if d.root == b"Validation" and read_predictions(opened(files, d.predictions)) < records:
        raise Failure(b"Index out of range")
    return OK


def study_of(files, analysis, data):
    """What makes a full study, on which every computation succeeds."""
    d = read_definition(files[analysis], analysis)
    return d.numbers, read_data(files[data], d.indicators)[2]


def outcome(files, path, study):
    """`study` is the study_of the files before any damage."""
    try:
        return frozenset([run(files, path, study)])
    except Failure as failure:
        return failure.lines


def outcome_of(reader, *arguments):
    """The end of one reader alone."""
    try:
        reader(*arguments)
        return frozenset([OK])
    except Failure as failure:
        return failure.lines
