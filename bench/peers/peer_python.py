"""Packages for Python: scikit-learn, statsmodels and pandas.

The intercept is a column of the design and is penalised like the others, so that scikit-learn
solves the program's problem; statsmodels fits without a penalty. Tolerances are set so that the
coefficients agree with those of a full Newton's method to seven digits or so.
"""

import sys
import warnings

from peer_common import Task

# Stopping tolerances of scikit-learn's solvers, on their own scales.
SOLVER_TOLERANCE = {"newton-cholesky": 1e-9, "newton-cg": 1e-9, "lbfgs": 1e-9}


def run_scikit_learn(task):
    import scipy.sparse
    import sklearn
    from sklearn.linear_model import LogisticRegression
    from sklearn.metrics import roc_auc_score

    task.version = sklearn.__version__
    if task.name == "cstat":
        task.peer = "scikit-learn roc_auc_score"
        predictions, outcomes = task.scores()
        with task:
            value = roc_auc_score(outcomes, predictions)
        task.report(value="%.12f" % value)
        return
    solver, _, layout = task.variant.removeprefix("sklearn:").partition(":")
    task.peer = f"scikit-learn {solver}, {layout}"
    design, y = task.load("z", float), task.load("y")
    if layout == "sparse":
        design = scipy.sparse.csr_matrix(design)
    model = LogisticRegression(C=1.0, fit_intercept=False, solver=solver, max_iter=10000,
                               tol=SOLVER_TOLERANCE[solver])
    with task:
        model.fit(design, y)
    task.report(model.coef_[0], iterations=int(model.n_iter_[0]))


def run_statsmodels(task):
    import statsmodels
    import statsmodels.api as sm

    task.version = statsmodels.__version__
    design, y = task.load("z", float), task.load("y", float)
    if task.name == "logit":
        task.peer = "statsmodels Logit"
        with task:
            result = sm.Logit(y, design).fit(method="newton", maxiter=100, tol=1e-10, disp=0)
        task.report(result.params)
    else:
        task.peer = "statsmodels GEE"
        hospital = task.load("hospital")
        with task:
            model = sm.GEE(y, design, groups=hospital, family=sm.families.Binomial(),
                           cov_struct=sm.cov_struct.Exchangeable())
            result = model.fit(maxiter=100, ctol=1e-8)
        task.report(result.params, alpha=float(model.cov_struct.dep_params))


def run_pandas(task):
    import pandas as pd

    task.version = pd.__version__
    if task.name == "read":
        task.peer = "pandas read_csv"
        with task:
            frame = pd.read_csv(task.path("data.csv"))
        task.shape = frame.shape
        task.report()
    else:
        task.peer = "pandas to_csv"
        frame = pd.read_csv(task.path("predictions.csv"), dtype={"P": "Int8"})
        task.shape = frame.shape
        with task:
            frame.to_csv(task.path("written.csv"), index=False, float_format="%.6g")
        task.report()


def main():
    warnings.filterwarnings("ignore")
    task = Task("", "")
    package = task.variant.partition(":")[0]
    {"sklearn": run_scikit_learn, "statsmodels": run_statsmodels, "pandas": run_pandas}[package](
        task)


if len(sys.argv) != 4:
    sys.exit("usage: peer_python.py TASK FOLDER sklearn[:SOLVER:LAYOUT]|statsmodels|pandas")
main()
