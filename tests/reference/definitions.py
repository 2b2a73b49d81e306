"""Definition files, read into plain objects with one attribute for each element."""
import re
import time
from types import SimpleNamespace

from text_files import read_text

TOKEN = re.compile(r"<(/?)([^\s>]+)([^>]*?)(/?)>([^<]*)")


class Elements:
    """The tags of a file in order, comments and declarations left out."""

    def __init__(self, text):
        text = re.sub(r"<!--.*?-->", "", text, flags=re.S)
        text = re.sub(r"<\?.*?\?>", "", text, flags=re.S)
        self.tags = TOKEN.findall(text)
        self.at = 0

    def next(self):
        self.at += 1
        return self.tags[self.at - 1]

    def start(self, name):
        tag = self.next()
        assert tag[:2] == ("", name), "expected <%s>, found %r" % (name, tag)
        return tag

    def end(self, name):
        tag = self.next()
        assert tag[:2] == ("/", name), "expected </%s>, found %r" % (name, tag)

    def text(self, name):
        value = self.start(name)[4]
        self.end(name)
        return value

    def integer(self, name):
        return int(self.text(name))

    def real(self, name):
        return float(self.text(name))


def read_parameters(elements, name):
    elements.start(name)
    parameters = SimpleNamespace(
        tolerance=elements.real("Tolerance"),
        max_iterations=elements.integer("MaxIterations"),
        prior_precision=elements.real("PriorPrecision"))
    elements.end(name)
    return parameters


def read_mcmc(elements, generator):
    """Run lengths; the generator is seeded while its element is read."""
    elements.start("Mcmc")
    kind = re.search(r'xsi:type\s*=\s*"([^"]*)"', elements.start("Seed")[2]).group(1)
    if kind == "Randomize":
        now = int(time.time())
        generator.seed(now, now)
    else:
        assert kind == "Vector"
        elements.start("Seed")
        generator.seed(elements.integer("Element"), elements.integer("Element"))
        elements.end("Seed")
        elements.end("Seed")
    settings = SimpleNamespace(
        thinning=elements.integer("Thinning"),
        burnin=elements.integer("Burnin"),
        steps=elements.integer("Steps"))
    elements.end("Mcmc")
    return settings


def read_group(elements, definition, name, fields):
    elements.start(name)
    for field, tag, kind in fields:
        setattr(definition, field, getattr(elements, kind)(tag))
    elements.end(name)


DATA = [("data", "Data", "text"), ("indicators", "NumberOfPoaIndicators", "integer")]


def read_analysis(elements, definition, generator):
    read_group(elements, definition, "Input", DATA)
    read_group(elements, definition, "Output", [
        ("folder", "Folder", "text"), ("coefficients", "RegressionCoefficients", "text"),
        ("mcmc_folder", "McmcSubFolder", "text"), ("log_file", "LogFile", "text")])
    elements.start("Regression")
    flag = elements.text("UseGeneralizedEstimatingEquations")
    assert flag in ("true", "false")
    definition.use_gee = flag == "true"
    read_group(elements, definition, "LinearDependence", [("dependence", "Tolerance", "real")])
    definition.parameters = read_parameters(elements, "Parameters")
    definition.parameters_mcmc = read_parameters(elements, "ParametersMcmc")
    elements.end("Regression")
    definition.mcmc = read_mcmc(elements, generator)


def read_prediction(elements, definition, generator):
    read_group(elements, definition, "Input",
               DATA + [("coefficients", "RegressionCoefficients", "text")])
    read_group(elements, definition, "Output", [
        ("folder", "Folder", "text"), ("individual", "IndividualPredictions", "text"),
        ("hospital", "HospitalPredictions", "text"), ("log_file", "LogFile", "text")])
    definition.mcmc = read_mcmc(elements, generator)


def read_validation(elements, definition, generator):
    read_group(elements, definition, "Input",
               DATA + [("coefficients", "RegressionCoefficients", "text"),
                       ("individual", "IndividualPredictions", "text")])
    read_group(elements, definition, "Output", [
        ("folder", "Folder", "text"), ("c_statistics", "CStatistics", "text"),
        ("log_file", "LogFile", "text")])
    definition.mcmc = read_mcmc(elements, generator)


def read_batch(elements, definition, _):
    elements.start("Simulations")
    definition.simulations = []
    while elements.tags[elements.at][:2] == ("", "Simulation"):
        definition.simulations.append(elements.text("Simulation"))
    elements.end("Simulations")


READERS = {"Analysis": read_analysis, "Prediction": read_prediction,
           "Validation": read_validation, "Batch": read_batch}


def read_definition(path, generator):
    elements = Elements(read_text(path))
    root = elements.next()[1]
    definition = SimpleNamespace(kind=root)
    READERS[root](elements, definition, generator)
    elements.end(root)
    return definition
