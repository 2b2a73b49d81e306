"""Makes the folders of folders.csv, each below FOLDER with the number of its row: called by run.sh.

    make_folders.py FOLDER
"""

import csv
import os
import subprocess
import sys
from pathlib import Path

PRELUDE = """
set -eu
chain() {  # FOLDER NUMBER: makes a chain whose first draw is this number
  mkdir -p "$1/mcmc"
  printf 'Step,BetaYX[0]\\n1,%s\\n2,0.5\\n' "$2" > "$1/mcmc/Chain.csv"
}
count() {  # COUNT: writes chains.json as the command does
  echo "{\\"chains\\": $1}" > chains.json
}
"""

folders = Path(sys.argv[1])
with open(Path(__file__).parent / "folders.csv", encoding="utf-8", newline="") as table:
    for number, row in enumerate(csv.DictReader(table), start=1):
        folder = folders / str(number)
        os.makedirs(folder)
        subprocess.run(["sh", "-c", PRELUDE + row["setup"]], cwd=folder, check=True)
