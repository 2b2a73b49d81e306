"""Reads every folder of folders.csv with share/hovar/hovar.py: the chains, the error and the warnings
must be those of the table. Called by run.sh with the folder in which make_folders.py has made them, and
with one in which the command has run three chains and then two."""

import csv
import sys
import unittest
import warnings
from pathlib import Path

sys.dont_write_bytecode = True
HERE = Path(__file__).resolve().parent
sys.path.insert(0, str(HERE.parents[1] / "share" / "hovar"))
import hovar  # noqa: E402

COMMAND = Path(sys.argv.pop())
FOLDERS = Path(sys.argv.pop())


class Folders(unittest.TestCase):
    def check(self, row, folder):
        chains, error = "", ""
        with warnings.catch_warnings(record=True) as caught:
            warnings.simplefilter("always")
            try:
                draws = hovar.chains(folder)
                chains = ",".join(f"{first:.0f}"[:6] for first in draws.xs(1, level="step").iloc[:, 0])
            except (OSError, ValueError) as fault:
                error = str(fault)
        told = [str(one.message) for one in caught]
        self.assertEqual(chains, row["chains"], error)
        self.assertEqual(bool(error), bool(row["error"]), error)
        self.assertIn(row["error"], error)
        self.assertEqual(len(told), 1 if row["warning"] else 0, told)
        self.assertIn(row["warning"], "".join(told))
        self.assertTrue((error + "".join(told)).isprintable(), error)
        # At the line that called the reader, and not within it.
        self.assertEqual({one.filename for one in caught} - {__file__}, set())

    def test_every_folder_of_the_table(self):
        with open(HERE / "folders.csv", encoding="utf-8", newline="") as table:
            rows = list(csv.DictReader(table))
        self.assertGreater(len(rows), 40)
        for number, row in enumerate(rows, start=1):
            with self.subTest(row["case"]):
                self.check(row, FOLDERS / str(number) / row["folder"])

    def test_all_chains_are_read_when_they_are_asked_for(self):
        with open(HERE / "folders.csv", encoding="utf-8", newline="") as table:
            cases = [row["case"] for row in csv.DictReader(table)]
        folder = FOLDERS / str(1 + cases.index("chains left from a command with more"))
        with warnings.catch_warnings():
            warnings.simplefilter("error")
            draws = hovar.chains(folder, all_chains=True)
        self.assertEqual(list(draws.xs(1, level="step").iloc[:, 0]), [1, 2, 3, 10])

    def test_a_chain_left_by_the_command_is_named_and_left_out(self):
        with self.assertWarnsRegex(UserWarning, "left out chain-3 of an earlier run"):
            two = hovar.chains(COMMAND)
        with warnings.catch_warnings():
            warnings.simplefilter("error")
            three = hovar.chains(COMMAND, all_chains=True)
        self.assertEqual((len(two), len(three)), (20, 30))
        self.assertTrue(two.equals(three.loc[:2]))

    def test_every_reader_names_the_file_that_it_cannot_read(self):
        for reader in (hovar.coefficients, hovar.tables, hovar.predictions, hovar.c_statistics,
                       hovar.summary):
            for kind, said in (("pipe", "is not a file of data but a device"), ("empty", "is empty"),
                               ("folder", "is not a file of data but a folder"),
                               ("missing", "there is no such file")):
                with self.subTest(reader=reader.__name__, kind=kind):
                    if (reader, kind) == (hovar.summary, "empty"):
                        continue  # a run without steps leaves such a file
                    with self.assertRaisesRegex((OSError, ValueError), f"{kind}.*{said}"):
                        reader(FOLDERS / "kinds" / kind)


if __name__ == "__main__":
    unittest.main()
