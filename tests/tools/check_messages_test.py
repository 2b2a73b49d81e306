"""Tests of tools/check_messages.py on small sources and documents."""

import sys
import tempfile
import unittest
from pathlib import Path

sys.path.insert(0, str(Path(__file__).resolve().parents[2] / "tools"))
sys.dont_write_bytecode = True
import check_messages  # noqa: E402


def faults(sources, document):
    """The faults of a project with these sources, by name, and lines of the document."""
    with tempfile.TemporaryDirectory() as folder:
        root = Path(folder)
        for name, text in sources.items():
            path = root / "src" / name
            path.parent.mkdir(parents=True, exist_ok=True)
            path.write_text(text, encoding="utf-8")
        (root / "docs").mkdir()
        (root / "docs/messages.md").write_text("\n".join(document) + "\n", encoding="utf-8")
        return check_messages.faults_of(root)[1]


class CheckMessagesTest(unittest.TestCase):
    def assert_agree(self, code, *document):
        self.assertEqual(faults({"a.cpp": code}, document), [])

    def assert_fault(self, expected, code, *document):
        found = faults({"a.cpp": code}, document)
        self.assertEqual(len(found), 1, found)
        self.assertIn(expected, found[0])

    def test_thrown_text_is_an_error_line(self):
        self.assert_agree('throw Vell::Exception("No data");', "### `Error: No data`")
        self.assert_fault("missing in docs/messages.md: `Error: No data`, see src/a.cpp:2",
                          '\nthrow IOException("No data");')

    def test_text_that_the_source_lacks(self):
        self.assert_fault("docs/messages.md:1: the program has no message `Error: Gone`",
                          "", "### `Error: Gone`")

    def test_adjacent_literals_and_escapes(self):
        self.assert_agree('throw Exception("Bad \\"x\\"" /* why */ " tag");',
                          '### `Error: Bad "x" tag`')

    def test_comments_and_includes_are_no_code(self):
        self.assert_agree('// throw Exception("a b");\n/* throw IOException("c"); */\n'
                          '#include "x.h"\n')

    def test_text_of_a_variable_cannot_be_followed(self):
        self.assert_fault("must be a literal", "throw Exception(text);")
        self.assert_fault("cannot follow", 'throw Exception(Join("a", b));')

    def test_unknown_throw(self):
        self.assert_fault("does not understand", "throw problem;")

    def test_rethrow_has_no_text(self):
        self.assert_agree("catch (const Exception&) { throw; }")

    def test_variable_parts_are_placeholders(self):
        self.assert_agree('IO::StandardOutput().WriteLine("Step ", i, " of ", Count(x, y));',
                          "| line | meaning |", "|---|---|", "| `Step <step> of <steps>` | |")

    def test_lines_and_blanks_at_their_ends(self):
        self.assert_agree("Log().WriteLine(\"\\nFirst: \", i, ' ', \"\\nSecond\\n\");",
                          "### `First: <number>`", "### `Second`")

    def test_both_sides_of_a_choice(self):
        code = 'StandardOutput().WriteLine(cold ? "Burn: " : "Run: ", i);'
        self.assert_agree(code, "### `Burn: <step>`", "### `Run: <step>`")
        self.assert_fault("missing in docs/messages.md: `Run: <...>`", code, "### `Burn: <step>`")

    def test_constants_and_functions(self):
        code = ('constexpr std::array<std::string_view, 2> kLabels = {"[A|B]", "[C]"};\n'
                'std::string_view End(bool g) noexcept { return g ? " G:" : ""; }\n'
                "void F() { StandardOutput().WriteLine(kLabels[n], End(x)); }")
        self.assert_agree(code, "### `[A|B]`", "### `[A|B] G:`", "### `[C]`", "### `[C] G:`")

    def test_writers_by_another_name(self):
        code = 'IO::TextWriter& output = Vell::IO::StandardOutput();\noutput.WriteLine("Y");'
        self.assert_agree(code, "### `Y`")
        self.assert_fault("a use of output", code + "\nHelp(output);", "### `Y`")

    def test_unknown_use_of_a_writer(self):
        self.assert_fault("a use of StandardError", "Print(StandardError(), text);")

    def test_own_texts_of_exceptions(self):
        self.assert_agree('E::E(const char* p) { WriteErrorLine("File ", p, " lost"); }\n'
                          "void F() { throw FileOpenException(path); }",
                          "### `Error: File <path> lost`")

    def test_order_and_doubles(self):
        code = 'throw IOException("A"); throw IOException("B");'
        self.assert_fault("Error: A is out of order", code, "### `Error: B`", "### `Error: A`")
        self.assert_agree(code, "### `Error: B`", "## Next", "### `Error: A`")
        self.assert_fault("twice", code, "### `Error: A`", "### `Error: A`", "### `Error: B`")

    def test_rows_of_other_tables_are_no_messages(self):
        self.assert_agree("", "| last line | cause |", "|---|---|", "| `Anything` | |")


class LauncherTest(unittest.TestCase):
    SECTION = "## " + check_messages.LAUNCHER_SECTION

    def launcher_faults(self, code, *lines):
        return faults({"tools/a.cpp": code}, [self.SECTION, *lines])

    def test_lines_made_of_literals(self):
        code = 'line.Append("hovar: "); Fail("cannot start ", file); Append(", status ");'
        self.assertEqual(self.launcher_faults(code, "### `hovar: cannot start <file>, status <n>`"),
                         [])

    def test_missing_line_is_named(self):
        found = self.launcher_faults('Fail("cannot stop the program");')
        self.assertEqual(len(found), 1)
        self.assertIn("a line with `cannot stop the program`, see src/tools/a.cpp:1",
                      found[0])

    def test_line_that_the_launcher_lacks(self):
        found = self.launcher_faults('Fail("cannot start ", file);', "### `hovar: cannot start <f>`")
        self.assertEqual(len(found), 1)
        self.assertIn("the launcher has no line `hovar: cannot start <...>`", found[0])

    def assert_texts(self, code, *texts):
        found = self.launcher_faults(code)
        self.assertEqual([fault.split("`")[1] for fault in found], sorted(texts), found)

    def test_texts_are_put_together(self):
        self.assert_texts('text = "The value " + Quoted(value) + " of " + Tag(name, "x") + " is bad. "\n'
                          '"Write " + std::to_string(n) + " or more.\\n";',
                          "The value <...> of <...> is bad. Write <...> or more.")

    def test_choices_within_a_text(self):
        self.assert_texts('Add(place, Name() + (full ? " is full" : a ? " is open" : " ends") +\n'
                          '    std::string(b ? "; close it" : "; leave it"));',
                          "ends; close it", "ends; leave it", "is full; close it",
                          "is full; leave it", "is open; close it", "is open; leave it")

    def test_comparisons_and_names_are_no_messages(self):
        self.assert_texts('if (text == "No such thing here") { what = "log file"; }\n'
                          'return isLog ? "log file" : "file of the chain";',
                          "file of the chain")

    def test_what_is_said_is_a_message(self):
        self.assert_texts('Say("out of memory");', "out of memory")

    def test_labels_of_a_choice_are_no_part_of_its_texts(self):
        self.assert_texts("switch (c) {\n  case '=':\n    return {place, \"A value is missing.\"};\n"
                          "  case '\"':\n    return {place, \"Write name=\\\"value\\\".\"};\n}",
                          "A value is missing.", 'Write name="value".')

    def test_lines_that_the_program_writes_may_be_read(self):
        found = self.launcher_faults('const lines[] = {"Reading data file...", "None at all"};\n'
                                     'StandardOutput().WriteLine("Reading data file...");',
                                     "### `None at all`", "### `Reading data file...`")
        self.assertEqual(found, [])

    def test_answers_and_single_words_are_no_messages(self):
        self.assertEqual(self.launcher_faults(
            'constexpr char kHelpText[] =\n"Usage: hovar X\\n"\n"More help\\n";\n'
            'if (option == "--help") {}'), [])


if __name__ == "__main__":
    unittest.main()
