"""Tries every include from one layer of src into another: what a layer may see compiles, all else does not.

Usage: layers_test.py COMPILER FOLDER, where FOLDER holds a file for each layer: its name is the layer's, its
first line the layer's folder below src, the others are the include directories that its sources are compiled
with.
"""

import pathlib
import subprocess
import sys
import unittest

# What each layer links, as docs/architecture.md draws it. A layer also sees what these see.
LINKS = {
    "messages": [],
    "foundation": ["messages"],
    "linalg": ["foundation"],
    "data": ["linalg"],
    "regression": ["data"],
    "mcmc": ["regression"],
    "prediction": ["mcmc"],
    "profiling": ["diagnostics", "prediction"],
    "diagnostics": ["foundation"],
    "app_definition": ["mcmc"],
    "app": ["prediction", "app_definition"],
    "tools_support": ["foundation"],
    "tools_plan": ["app_definition", "tools_support"],
    "tools_run": ["tools_plan"],
    "tools_check": ["prediction", "tools_plan"],
    "tools_report": ["tools_support"],
    "tools_chains": ["diagnostics", "tools_report", "tools_run"],
    "launcher": ["tools_chains", "tools_check", "tools_report", "tools_run"],
}

SOURCE_FOLDER = pathlib.Path(__file__).resolve().parents[2] / "src"


def visible(layer):
    """The layers whose headers a source of this layer may include, itself among them."""
    seen = {layer}
    for lower in LINKS[layer]:
        seen |= visible(lower)
    return seen


class Layer:
    def __init__(self, path):
        self.folder, *self.include_directories = path.read_text().split("\n")
        self.include_directories = [directory for directory in self.include_directories if directory]

    def some_header(self):
        return f"{self.folder}/{sorted((SOURCE_FOLDER / self.folder).glob('**/*.h'))[0].relative_to(SOURCE_FOLDER / self.folder)}"

    def can_include(self, header, compiler):
        flags = [f"-I{directory}" for directory in self.include_directories]
        result = subprocess.run([compiler, "-std=c++20", *flags, "-E", "-x", "c++", "-o", "/dev/null", "-"],
                                input=f'#include "{header}"\n', text=True, capture_output=True, check=False)
        if result.returncode != 0 and f"{header}: No such file" not in result.stderr \
                and f"'{header}' file not found" not in result.stderr:
            raise AssertionError(f"{header} cannot be read for another reason: {result.stderr}")
        return result.returncode == 0


class LayersTest(unittest.TestCase):
    compiler = ""
    layers = {}

    def test_every_layer_is_in_the_table(self):
        self.assertEqual(sorted(self.layers), sorted(LINKS))

    def test_a_source_sees_its_own_layer_and_what_that_links_and_nothing_else(self):
        for name, layer in self.layers.items():
            for other_name, other in self.layers.items():
                with self.subTest(source=name, header=other_name):
                    self.assertEqual(layer.can_include(other.some_header(), self.compiler), other_name in visible(name))


if __name__ == "__main__":
    LayersTest.compiler = sys.argv[1]
    LayersTest.layers = {path.stem: Layer(path) for path in pathlib.Path(sys.argv[2]).glob("*.txt")}
    unittest.main(argv=sys.argv[:1])
