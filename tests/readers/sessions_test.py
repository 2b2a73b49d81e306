"""Runs the sessions of docs/readers.md again: they must print what the page says.

Called by run.sh with the folder of the quick start's copy, in which they are run.
"""

import doctest
import os
import re
import subprocess
import sys
import unittest
from pathlib import Path

sys.dont_write_bytecode = True
FOLDER = Path(sys.argv.pop())
PAGE = (Path(__file__).resolve().parents[2] / "docs" / "readers.md").read_text(encoding="utf-8")


def blocks(language):
    return re.findall(rf"^```{language}\n(.*?)^```$", PAGE, re.MULTILINE | re.DOTALL)


class Sessions(unittest.TestCase):
    maxDiff = None

    def test_the_session_in_r(self):
        [block] = blocks("r-session")
        commands = [line[2:] for line in block.splitlines() if line.startswith(("> ", "+ "))]
        run = subprocess.run(["R", "--quiet", "--no-save"], input="\n".join(commands) + "\n", cwd=FOLDER,
                             capture_output=True, encoding="utf-8")
        # R has one prompt more, at which the input ends. The page has no blanks at ends of lines.
        printed = [line.rstrip() for line in run.stdout.splitlines()]
        self.assertEqual(printed, block.splitlines() + [">"], run.stderr)

    def test_the_session_in_python(self):
        [block] = blocks("pycon")
        os.chdir(FOLDER)
        sys.path.insert(0, "../../share/hovar")
        test = doctest.DocTestParser().get_doctest(block, {}, "docs/readers.md", None, 0)
        self.assertGreater(len(test.examples), 5)
        printed = []
        runner = doctest.DocTestRunner(verbose=False, optionflags=doctest.NORMALIZE_WHITESPACE)
        results = runner.run(test, out=printed.append)
        self.assertEqual(results.failed, 0, "".join(printed))


if __name__ == "__main__":
    unittest.main()
