"""What the peers in Python share: their arguments, their clock and their line of JSON."""

import json
import os
import sys
import time

import numpy as np


class Task:
    """One call PEER.py TASK FOLDER VARIANT; the clock counts processor seconds."""

    def __init__(self, peer, version):
        self.name, self.folder, self.variant = sys.argv[1:4]
        self.peer = peer
        self.version = version
        self.start = 0.0
        self.seconds = 0.0
        self.shape = (0, 0)

    def load(self, name, kind=None):
        array = np.load(os.path.join(self.folder, name + ".npy"))
        if array.ndim == 2:
            self.shape = array.shape
        elif self.shape[0] == 0:
            self.shape = (len(array), 0)
        return array if kind is None else array.astype(kind)

    def scores(self):
        """Predictions and outcomes."""
        values = np.fromfile(os.path.join(self.folder, "scores.bin"))
        half = len(values) // 2
        self.shape = (half, self.shape[1])
        return values[:half], values[half:]

    def path(self, name):
        return os.path.join(self.folder, name)

    def __enter__(self):
        self.start = time.process_time()
        return self

    def __exit__(self, *unused):
        self.seconds = time.process_time() - self.start

    def report(self, coef=None, **more):
        line = {"task": self.name, "peer": self.peer, "version": self.version,
                "n": int(self.shape[0]), "p": int(self.shape[1]),
                "compute_s": round(self.seconds, 6)}
        if coef is not None:
            line["coef"] = ["%.8g" % value for value in coef]
        print(json.dumps(line | more))
