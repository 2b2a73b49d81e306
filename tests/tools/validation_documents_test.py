"""Tests of validation/document.py, and of what it has written into the documents."""

import json
import re
import subprocess
import sys
import tempfile
import unittest
from pathlib import Path

ROOT = Path(__file__).resolve().parents[2]
WRITER = ROOT / "validation" / "document.py"
TABLE = re.compile(r"<!-- table (\w+) -->\n(.*?)<!-- end -->", re.S)
DOCUMENTS = ("validation.md", "choosing-z.md")

LISTS = """<!-- table run -->
| script | checks | failed | runs of the program | processor seconds |
|---|---|---|---|---|
| recovery | 2 | 0 | 10 | 5 |
| choosing_z | 1 | 0 | 1 | 1 |
| c_statistics | 1 | 0 | 20 | 6 |
| all | 4 | 0 | 31 | 12 |
<!-- end -->
<!-- table checks -->
| script | check | outcome | figures |
|---|---|---|---|
| recovery | first | passed | \\|z\\| 1 |
| recovery | second | passed | |
| choosing_z | old | passed | |
| c_statistics | third | passed | |
<!-- end -->
"""


def tables(text):
    return {match[1]: match[2] for match in TABLE.finditer(text)}


def cells(table):
    return [[cell.strip() for cell in re.split(r"(?<!\\)\|", line)[1:-1]]
            for line in table.splitlines()]


class RunTest(unittest.TestCase):
    def test_an_unknown_comparison_is_refused_with_the_list_of_all(self):
        for name in ("wrong", "document", "fits_gee fits_logistic"):
            done = subprocess.run(
                ["sh", str(ROOT / "validation" / "run.sh"), "--program", "/bin/false", "--only", name],
                stdout=subprocess.PIPE, stderr=subprocess.PIPE, encoding="utf-8", check=False)
            self.assertEqual(done.returncode, 2)
            self.assertEqual(done.stdout, "")
            listed = re.findall(r"^  (\w+)$", done.stderr, re.M)
            scripts = {path.stem for path in (ROOT / "validation").glob("*.py")
                       if "__main__" in path.read_text(encoding="utf-8")}
            self.assertEqual(set(listed), scripts - {"document", "hospitals"})

    def test_a_comparison_without_a_name_is_refused(self):
        for arguments in (["--only", ""], ["--only"]):
            done = subprocess.run(
                ["sh", str(ROOT / "validation" / "run.sh"), "--program", "/bin/false", *arguments],
                stdout=subprocess.PIPE, stderr=subprocess.PIPE, encoding="utf-8", check=False)
            self.assertEqual(done.returncode, 2)
            self.assertTrue(done.stdout.startswith("Runs every comparison"), done.stdout)


class WriterTest(unittest.TestCase):
    def write(self, first, second, item, arguments=("--only", "choosing_z")):
        with tempfile.TemporaryDirectory() as folder:
            place = Path(folder)
            (place / "choosing_z.json").write_text(json.dumps(item), encoding="utf-8")
            (place / "a.md").write_text(first, encoding="utf-8")
            (place / "b.md").write_text(second, encoding="utf-8")
            done = subprocess.run(
                [sys.executable, "-B", str(WRITER), *arguments, folder, str(place / "a.md"),
                 str(place / "b.md")], stdout=subprocess.PIPE, encoding="utf-8", check=False)
            return (done.returncode, done.stdout, (place / "a.md").read_text(encoding="utf-8"),
                    (place / "b.md").read_text(encoding="utf-8"))

    ITEM = {"item": "choosing_z", "quick": False, "runs": 7, "seconds": 3.4,
            "checks": [{"name": "new | old", "passed": True, "detail": "x"},
                       {"name": "worse", "passed": False, "detail": ""}],
            "tables": {"both": {"header": ["a", "b"], "rows": [["1", "2"]]}}}
    EMPTY = "<!-- table both -->\n<!-- end -->\n"

    def test_one_item_in_two_documents(self):
        status, output, first, second = self.write(
            LISTS + self.EMPTY + "<!-- table other -->\nkept\n<!-- end -->\n",
            "Text.\n" + self.EMPTY + "More.\n", self.ITEM)
        self.assertEqual((status, output), (0, ""))
        table = "| a | b |\n|---|---|\n| 1 | 2 |\n"
        self.assertEqual(second, "Text.\n<!-- table both -->\n" + table + "<!-- end -->\nMore.\n")
        found = tables(first)
        self.assertEqual(found["both"], table)
        self.assertEqual(found["other"], "kept\n")
        self.assertEqual(cells(found["run"])[2:],
                         [["recovery", "2", "0", "10", "5"], ["choosing_z", "2", "1", "7", "3"],
                          ["c_statistics", "1", "0", "20", "6"], ["all", "5", "1", "37", "14"]])
        self.assertEqual(cells(found["checks"])[2:],
                         [["recovery", "first", "passed", "\\|z\\| 1"],
                          ["recovery", "second", "passed", ""],
                          ["choosing_z", "new \\| old", "passed", "x"],
                          ["choosing_z", "worse", "**failed**", ""],
                          ["c_statistics", "third", "passed", ""]])

    def test_a_second_time_changes_nothing(self):
        _, _, first, second = self.write(LISTS + self.EMPTY, self.EMPTY, self.ITEM)
        self.assertEqual(self.write(first, second, self.ITEM), (0, "", first, second))

    def test_a_table_without_a_place(self):
        status, output, _, _ = self.write(LISTS, "", self.ITEM)
        self.assertEqual((status, output), (1, "document: no place for table both\n"))


class DocumentsTest(unittest.TestCase):
    def setUp(self):
        self.found = {name: tables((ROOT / "docs" / name).read_text(encoding="utf-8"))
                      for name in DOCUMENTS}

    def test_a_table_is_the_same_wherever_it_stands(self):
        shared = set(self.found["validation.md"]) & set(self.found["choosing-z.md"])
        self.assertIn("choosing_z_removed", shared)
        for name in shared:
            self.assertEqual(self.found["validation.md"][name], self.found["choosing-z.md"][name])

    def test_the_summary_of_choosing_z_is_that_of_its_figures(self):
        rows = cells(self.found["validation.md"]["choosing_z"])[2:]
        figures = {tuple(row[:3]): row for row in rows}
        summary = cells(self.found["choosing-z.md"]["choosing_z_summary"])
        rates = [re.match(r"\d+", head)[0] for head in summary[0][3:6]]
        self.assertEqual(len(summary), 2 + 6)
        for setting, kind, whole, *estimates in summary[2:]:
            wanted = [figures[setting, "any", "0"][4]]
            wanted += [figures[setting, kind, rate][4] for rate in rates]
            wanted.append(figures[setting, kind, rates[-1]][8])
            for text, figure in zip([whole, *estimates], wanted, strict=True):
                self.assertEqual(text == "", figure == "")
                if text:
                    self.assertLess(abs(float(text) - float(figure)), 0.0056)


if __name__ == "__main__":
    unittest.main()
