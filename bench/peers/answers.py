"""Compares what a run answered with the reference that prepare.py left beside the data."""

import json
import os


def load_reference(folder):
    with open(os.path.join(folder, "reference.json"), encoding="ascii") as file:
        return json.load(file)


def coefficient_difference(measured, wanted):
    """The largest difference, relative to the largest coefficient."""
    if len(measured) != len(wanted):
        return float("inf")
    distance = max(abs(float(a) - b) for a, b in zip(measured, wanted))
    return distance / max(abs(b) for b in wanted)


def judge(peer, task, report, reference):
    """Returns whether the answer is the wanted one (None: it gave none) and words for the table."""
    if "set_cells" in report:
        same = report["set_cells"] == reference["set_cells"]
        return same, "same cells" if same else "OTHER CELLS"
    if "value" in report:
        distance = abs(float(report["value"]) - reference["cstat"])
        return distance < 1e-11, "same value" if distance < 1e-11 else f"differs by {distance:.0e}"
    if "coef" not in report:
        return None, ""
    problem = peer.problem or task
    distance = coefficient_difference(report["coef"], reference[problem])
    reached = distance <= peer.tolerance
    if not reached:
        words = f"misses the optimum by {distance:.0e}"
    elif distance <= 1e-5:
        words = "same optimum"
    else:
        words = f"optimum within {distance:.0e}"
    if "alpha" in report:
        words += f", alpha {float(report['alpha']):.4g}"
    return reached, words
