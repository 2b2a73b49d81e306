"""SVG plots with fixed bytes for equal figures: no date, no random ids, text as text."""
import os

import matplotlib

matplotlib.use("svg")
matplotlib.rcParams.update({"svg.hashsalt": "hovar", "svg.fonttype": "none", "font.size": 9,
                            "axes.spines.top": False, "axes.spines.right": False})
import matplotlib.pyplot as plt  # noqa: E402  (after the choice of the backend)


def save(figure, folder, name):
    figure.tight_layout()
    figure.savefig(os.path.join(folder, name), format="svg", metadata={"Date": None})
    plt.close(figure)
