"""Compares docs/messages.md with the tables of messages.

Usage: messages_test.py MESSAGE_LIST COMPILER, of which the first is the program that prints all messages, or
messages_test.py --write MESSAGE_LIST, which brings the tables of the document up to date. Each new row with a
second column then wants its text.

In the document a message is the code at the beginning of a "### " heading, or of a row of a table whose
first column is headed "line".
"""

import pathlib
import re
import subprocess
import sys
import unittest

ROOT = pathlib.Path(__file__).resolve().parents[2]
ENTRY = re.compile(r"^(?:### |\| )(`+)(.+?)\1")
SECTIONS = ["Errors", "Warnings", "Other lines", "Lines of the command hovar", "Findings of hovar --check",
            "Parts of findings", "Description by hovar --check --data"]


def described(text):
    """The messages of a document, by section, in their order."""
    messages, section, in_table = {}, "", False
    for line in text.splitlines():
        if line.startswith("## "):
            section = line[3:].replace("`", "").strip()
            continue
        in_table = line.startswith("| line |") or (in_table and line.startswith("|"))
        entry = ENTRY.match(line)
        if entry and (in_table or line.startswith("#")):
            messages.setdefault(section, []).append(entry[2].replace("\\|", "|").strip())
    return messages


def made(output):
    """The messages of the tables, by section."""
    messages = {}
    for line in output.splitlines():
        section, text = line.split("\t")
        messages.setdefault(section, []).append(text)
    return messages


def sort_key(text):
    """Letters and digits, without those of placeholders."""
    return re.sub(r"[^a-z0-9]", "", re.sub("<.*?>", "", text).casefold())


def code_of(text):
    """A message as code in a cell of a table."""
    fence = "``" if "`" in text else "`"
    return fence + text.replace("|", "\\|") + fence


def rewritten(text, messages):
    """The document with a row in the tables of lines for each message of a section, and no other."""
    lines, section, rows = [], "", None
    for line in [*text.splitlines(), ""]:
        if rows is not None and not line.startswith("|"):
            lines += [rows[message] for message in sorted(rows, key=sort_key)]
            rows = None
        entry = ENTRY.match(line)
        if rows is not None and entry:
            message = entry[2].replace("\\|", "|").strip()
            if message in rows:
                rows[message] = line
            continue
        if line.startswith("## "):
            section = line[3:].replace("`", "").strip()
        if line.startswith("| line |"):
            rows = {message: f"| {code_of(message)} |" + "  |" * (line.count("|") - 2)
                    for message in messages.get(section, [])}
        lines.append(line)
    return "\n".join(lines).rstrip("\n") + "\n"


def sources():
    for path in sorted((ROOT / "src").rglob("*")):
        if path.suffix in (".cpp", ".h"):
            yield path, path.read_text(encoding="utf-8")


class MessagesTest(unittest.TestCase):
    maxDiff = None
    message_list = ""

    def setUp(self):
        self.described = described((ROOT / "docs/messages.md").read_text(encoding="utf-8"))
        self.made = made(subprocess.run([self.message_list], text=True, capture_output=True, check=True).stdout)

    def test_sections(self):
        self.assertEqual(list(self.described), SECTIONS)
        self.assertEqual(sorted(self.made), sorted(SECTIONS))

    def test_every_message_is_described_and_every_description_has_its_message(self):
        for section in SECTIONS:
            with self.subTest(section=section):
                self.assertEqual(sorted(self.described[section]), sorted(self.made[section]))

    def test_every_description_is_written(self):
        rows = (ROOT / "docs/messages.md").read_text(encoding="utf-8").splitlines()
        self.assertEqual([row for row in rows if re.fullmatch(r"\| `+(?:\\\||[^|])*\| *\|", row)], [])

    def test_messages_stand_in_the_order_of_their_letters(self):
        for section in SECTIONS:
            with self.subTest(section=section):
                self.assertEqual(self.described[section], sorted(self.described[section], key=sort_key))

    def test_every_table_of_messages_is_in_the_list(self):
        tables = [name for _, text in sources()
                  for struct, name in re.findall(r"inline constexpr (\w+) (k\w+);", text)
                  if re.search(rf"struct {struct} {{\n(?:  //.*\n)*  (?:Messages::)?Pattern ", text)]
        listed = re.findall(r"\b(?:Hovar|Messages)::(k\w+)", (pathlib.Path(__file__).parent / "message_list.cpp").read_text())
        self.assertGreater(len(tables), 15)
        self.assertEqual(set(tables) - set(listed), set())

    def test_every_pattern_is_used(self):
        used = {member for _, text in sources() for member in re.findall(r"\bk\w+\.(\w+)", text)}
        declared = {member for _, text in sources()
                    for member in re.findall(r"^  (?:Messages::)?Pattern (\w+)\{", text, re.MULTILINE)}
        self.assertGreater(len(declared), 150)
        self.assertEqual(declared - used, set())

    def test_sentences_stand_in_tables_alone(self):
        for path, text in sources():
            if path.suffix == ".cpp":
                code = re.sub("//.*", "", text)
                with self.subTest(file=path.name):
                    self.assertNotRegex(code, r'(StandardOutput|StandardError|Log)\(\)\s*\.\s*Write\w*\(\s*"')
                    self.assertNotRegex(code, r'"hovar: |"(Error|Warning): ')
                    self.assertNotRegex(code, r'"[^"\n]*[a-z]{2} [^"\n]*\."')


class PartsTest(unittest.TestCase):
    compiler = ""

    def compiles(self, parts):
        source = ('#include "messages/pattern.h"\n'
                  "template <typename... Parts>\n"
                  "void Say(const Messages::PatternWithParts<sizeof...(Parts)>&, const Parts&...) {}\n"
                  'constexpr Messages::Pattern kKept{"kept <file> as <file>"};\n'
                  f"void F() {{ Say(kKept{parts}); }}\n")
        return subprocess.run([self.compiler, "-std=c++20", f"-I{ROOT / 'src'}", "-fsyntax-only", "-x", "c++", "-"],
                              input=source, text=True, capture_output=True, check=False).returncode == 0

    def test_only_a_message_with_all_its_parts_compiles(self):
        self.assertTrue(self.compiles(', "a", "b"'))
        self.assertFalse(self.compiles(', "a"'))
        self.assertFalse(self.compiles(', "a", "b", "c"'))
        self.assertFalse(self.compiles(""))


class DescribedTest(unittest.TestCase):
    def test_headings_and_tables_of_lines(self):
        self.assertEqual(described("## A `b`\n### `One`, text\n| line | |\n|---|---|\n| `P\\|X` | `no` |\n\n"
                                   "| other |\n|---|\n| `no` |\n"), {"A b": ["One", "P|X"]})

    def test_tables_are_brought_up_to_date(self):
        before = "## S\n\n| line | cause |\n|---|---|\n| `b` | why |\n| `gone` | x |\n\nend\n"
        after = "## S\n\n| line | cause |\n|---|---|\n| `a\\|z` |  |\n| `b` | why |\n\nend\n"
        self.assertEqual(rewritten(before, {"S": ["b", "a|z"]}), after)
        self.assertEqual(rewritten(after, {"S": ["b", "a|z"]}), after)

    def test_order_of_letters_passes_over_signs_and_placeholders(self):
        self.assertEqual(sorted(["b", "`A", "<z> a b"], key=sort_key), ["`A", "<z> a b", "b"])


if __name__ == "__main__":
    if sys.argv[1] == "--write":
        output = subprocess.run([sys.argv[2]], text=True, capture_output=True, check=True).stdout
        document = ROOT / "docs/messages.md"
        document.write_text(rewritten(document.read_text(encoding="utf-8"), made(output)), encoding="utf-8")
        sys.exit()
    MessagesTest.message_list = sys.argv[1]
    PartsTest.compiler = sys.argv[2]
    unittest.main(argv=sys.argv[:1])
