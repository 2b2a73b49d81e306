"""Which programs are compared for each task, and how each is called."""

import os
from dataclasses import dataclass

HERE = os.path.dirname(os.path.abspath(__file__))
# The interpreter that Debian's packages are installed for.
PYTHON = "/usr/bin/python3"
INDICATORS = "2"
RECORDS_PER_HOSPITAL = 250


@dataclass(frozen=True, order=True)
class Size:
    records: int
    variables: int  # besides the intercept

    @staticmethod
    def parse(name):
        records, _, variables = name.partition("x")
        return Size(int(records), int(variables))

    @property
    def name(self):
        return f"{self.records}x{self.variables}"

    @property
    def title(self):
        return f"{self.records:,} x {self.variables}"

    @property
    def hospitals(self):
        return max(1, self.records // RECORDS_PER_HOSPITAL)


SIZES = [Size(10_000, 30), Size(100_000, 60), Size(1_000_000, 60)]

TASKS = {
    "read": "Reading the data file into the data set, counts included",
    "logit": "Logistic fit of [Y|Z], prior precision 1",
    "gee": "GEE fit of [Y|Z], exchangeable, with both covariances",
    "cstat": "One C-statistic",
    "mcmc": "One MCMC iteration: sweep, fit and draw",
    "write": "Writing the individual predictions file",
    "analysis": "A whole Analysis with GEE and 30 MCMC iterations",
}

# What a row stands for.
PROGRAM, FLOOR, PACKAGE, BY_HAND, OTHER = "program", "floor", "package", "by hand", "other"


@dataclass(frozen=True)
class Peer:
    key: str        # stable, unique within the task
    kind: str
    command: tuple  # {folder}, {build}, {work} and {passes} are filled in
    problem: str = ""       # the reference answer to reach; the task's own unless given
    tolerance: float = 1e-5  # how far from it, relative to the largest coefficient
    largest: int = 10 ** 9  # not run with more records
    repeats: int = 1        # runs a round
    same_task: bool = True  # whether it counts as another way to the program's answer
    note: str = ""


def hovar(task):
    return Peer("hovar", PROGRAM,
                ("{build}/bench/hovar_step", task, "{folder}/data.csv", INDICATORS, "1",
                 "{folder}/scores.bin"), repeats=3)


def floor(task, note=""):
    return Peer("floor", FLOOR,
                ("{build}/bench/hovar_floor", task, "{folder}/data.csv", INDICATORS, "{passes}",
                 "{folder}/scores.bin"), repeats=3, note=note)


def by_hand(task, variant="dense", **options):
    return Peer(f"by hand, {variant}", BY_HAND,
                (PYTHON, "-B", f"{HERE}/peer_numpy.py", task, "{folder}", variant), **options)


def python(task, variant, **options):
    return Peer(variant, PACKAGE,
                (PYTHON, "-B", f"{HERE}/peer_python.py", task, "{folder}", variant), **options)


def r(task, variant, **options):
    return Peer(variant, PACKAGE,
                ("Rscript", "--vanilla", f"{HERE}/peer_r.R", task, "{folder}", variant,
                 INDICATORS), **options)


# These fit without the prior, so they solve another problem: its optimum is theirs to reach.
NO_PRIOR = {"problem": "logit without prior", "same_task": False,
            "note": "has no prior: fitted with precision 0"}
# These estimate the working correlation by formulas of their own, which moves the coefficients.
OWN_ALPHA = {"tolerance": 1e-3, "note": "estimates alpha in its own way, so compared loosely"}

PEERS = {
    "read": [hovar("read"), floor("read"), r("read", "fread"), python("read", "pandas")],
    "logit": [
        hovar("logit"), floor("logit"), by_hand("logit"), by_hand("logit", "sparse"),
        *(python("logit", f"sklearn:{solver}:{layout}")
          for solver in ("newton-cholesky", "newton-cg", "lbfgs")
          for layout in ("dense", "sparse")),
        python("logit", "statsmodels", **NO_PRIOR),
        r("logit", "glm", **NO_PRIOR),
        Peer("plink2", PACKAGE,
             (PYTHON, "-B", f"{HERE}/peer_plink.py", "logit", "{folder}", "plink2"),
             problem="logit without prior", same_task=False,
             note="has no prior; prints six digits; seconds without those of reading its files"),
    ],
    "gee": [hovar("gee"), floor("gee"), by_hand("gee"), python("gee", "statsmodels", **OWN_ALPHA),
            r("gee", "geepack", **OWN_ALPHA), r("gee", "gee", **OWN_ALPHA)],
    "cstat": [hovar("cstat"), floor("cstat"), by_hand("cstat", "argsort"),
              by_hand("cstat", "sorted", same_task=False,
                      note="another way: sorts the two groups apart"),
              python("cstat", "sklearn"), r("cstat", "pROC"),
              Peer("pairs", OTHER, ("{work}/pairwise_loop", "{folder}/scores.bin"),
                   largest=100_000, same_task=False, note="two nested loops in C++, -O2")],
    "mcmc": [hovar("mcmc"), floor("mcmc"), by_hand("mcmc"),
             r("mcmc", "jags", largest=10_000, note="the same model; slice sampling"),
             r("mcmc", "mice", largest=10_000, same_task=False,
               note="another model: each column given all others")],
    "write": [hovar("write"), floor("write"),
              r("write", "fwrite", note="its numbers already have six digits"),
              python("write", "pandas")],
    "analysis": [Peer("hovar", PROGRAM, ("{build}/bin/hovar", "{folder}/analysis.xml"))],
}

ANALYSIS_DEFINITION = """<?xml version="1.0" encoding="utf-8"?>
<Analysis xmlns:xsi="http://www.w3.org/2001/XMLSchema-instance">
  <Input>
    <Data>{folder}/data.csv</Data>
    <NumberOfPoaIndicators>{indicators}</NumberOfPoaIndicators>
  </Input>
  <Output>
    <Folder>{folder}/results</Folder>
    <RegressionCoefficients>coefficients.csv</RegressionCoefficients>
    <McmcSubFolder>mcmc</McmcSubFolder>
    <LogFile>analysis.log</LogFile>
  </Output>
  <Regression>
    <UseGeneralizedEstimatingEquations>true</UseGeneralizedEstimatingEquations>
    <LinearDependence>
      <Tolerance>1e-9</Tolerance>
    </LinearDependence>
    <Parameters>
      <Tolerance>1e-8</Tolerance>
      <MaxIterations>50</MaxIterations>
      <PriorPrecision>1</PriorPrecision>
    </Parameters>
    <ParametersMcmc>
      <Tolerance>1e-8</Tolerance>
      <MaxIterations>50</MaxIterations>
      <PriorPrecision>1</PriorPrecision>
    </ParametersMcmc>
  </Regression>
  <Mcmc>
    <Seed xsi:type="Vector">
      <Seed>
        <Element>362436069</Element>
        <Element>521288629</Element>
      </Seed>
    </Seed>
    <Thinning>1</Thinning>
    <Burnin>0</Burnin>
    <Steps>30</Steps>
  </Mcmc>
</Analysis>
"""
