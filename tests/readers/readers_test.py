"""Reads the files of the examples with share/hovar/hovar.py and compares them with each other, with
the data file and with their own text. Called by run.sh with the folder of the runs."""

import math
import sys
import tempfile
import types
import unittest
from pathlib import Path
from unittest import mock

sys.dont_write_bytecode = True
sys.path.insert(0, str(Path(__file__).resolve().parents[2] / "share" / "hovar"))
import hovar  # noqa: E402
import numpy as np  # noqa: E402
import pandas as pd  # noqa: E402

RUN = Path(sys.argv.pop())
QUICKSTART = RUN / "quickstart"
COEFFICIENTS = QUICKSTART / "results" / "coefficients.csv"
THREE = [QUICKSTART / "several" / name for name in ("chain-1", "chain-2", "chain-10")]


def written(text):
    with tempfile.NamedTemporaryFile("wb", suffix=".csv", dir=RUN, delete=False) as file:
        file.write(text.encode("utf-8", "surrogateescape"))
    return file.name


class Chains(unittest.TestCase):
    def test_one_chain_has_the_draws_of_its_file(self):
        chains = hovar.chains(QUICKSTART / "results", COEFFICIENTS)
        self.assertEqual(list(chains.columns[:2]), ["XIntercept", "XEmergency"])
        lines = (QUICKSTART / "results" / "mcmc" / "Chain.csv").read_text().splitlines()[1:]
        self.assertEqual(len(chains), len(lines))
        for row, line in zip(chains.itertuples(), lines):
            step, *draws = line.split(",")
            self.assertEqual(row.Index, (1, int(step)))
            self.assertEqual(list(row[1:]), [float(draw) for draw in draws])

    def test_means_and_variances_are_those_of_the_summary_and_of_the_fifth_block(self):
        chains = hovar.chains(QUICKSTART / "results", COEFFICIENTS)
        summary = hovar.summary(QUICKSTART / "results" / "mcmc" / "Summary.csv")
        self.assertEqual(list(summary.index[:2]), ["ImputeData", "BetaYX[0]"])
        np.testing.assert_allclose(chains.mean(), summary["Mean"][1:], rtol=1e-5, atol=1e-6)
        np.testing.assert_allclose(chains.var(), summary["Variance"][1:], rtol=1e-5)
        estimates = hovar.coefficients(COEFFICIENTS)
        fifth = estimates[estimates["model"] == "[Y|X,P=0,MCMC]"]
        self.assertEqual(list(fifth["variable"]), list(chains.columns))
        np.testing.assert_allclose(chains.mean(), fifth["estimate"], rtol=1e-5, atol=1e-6)
        np.testing.assert_allclose(chains.std(), fifth["mse"], rtol=1e-5)
        self.assertTrue(estimates["ese"].isna().all())

    def test_without_a_coefficient_file_columns_keep_their_names(self):
        columns = hovar.chains(QUICKSTART / "results").columns
        self.assertEqual([columns[0], columns[10]], ["BetaYX[0]", "BetaYX[10]"])

    def test_several_chains_stand_in_the_order_of_their_numbers(self):
        together = hovar.chains(QUICKSTART / "several", COEFFICIENTS)
        pd.testing.assert_frame_equal(together, hovar.chains(THREE, COEFFICIENTS))
        for number, folder in enumerate(THREE, start=1):
            alone = hovar.chains(folder, COEFFICIENTS)
            pd.testing.assert_frame_equal(together.loc[number], alone.loc[1])
        self.assertFalse(together.loc[1].equals(together.loc[2]))

    def test_chains_that_do_not_fit_are_refused(self):
        with self.assertRaisesRegex(ValueError, "other columns or other steps"):
            hovar.chains([QUICKSTART / "results", RUN / "gee" / "results"])
        with self.assertRaisesRegex(ValueError, "11 variables"):
            hovar.chains(RUN / "gee" / "results", COEFFICIENTS)
        with self.assertRaisesRegex(ValueError, "8 files named Chain.csv"):
            hovar.chains(RUN)
        with tempfile.TemporaryDirectory() as empty:
            with self.assertRaisesRegex(ValueError, "0 files named Chain.csv"):
                hovar.chains(empty)

    def test_a_run_without_steps_has_no_draws_and_no_summary(self):
        self.assertEqual(hovar.chains(QUICKSTART / "no_steps", COEFFICIENTS).shape, (0, 11))
        self.assertIsNone(hovar.summary(QUICKSTART / "no_steps" / "mcmc" / "Summary.csv"))

    def inference_data(self, version):
        """What ArviZ is asked for; a stand-in answers because Debian has no package of it."""
        calls = []
        arviz = types.ModuleType("arviz")
        arviz.__version__ = version
        arviz.from_dict = lambda *arguments, **named: calls.append((arguments, named))
        with mock.patch.dict(sys.modules, arviz=arviz):
            hovar.inference_data(hovar.chains(THREE, COEFFICIENTS))
        return calls

    def test_arviz_gets_chains_by_draws(self):
        [(arguments, named)] = self.inference_data("0.17.1")
        self.assertEqual((arguments, list(named)), ((), ["posterior"]))
        posterior = named["posterior"]
        chains = hovar.chains(THREE, COEFFICIENTS)
        self.assertEqual(list(posterior), list(chains.columns))
        self.assertEqual(posterior["XTestC"].shape, (3, 100))
        np.testing.assert_array_equal(posterior["XTestC"][1], chains["XTestC"].loc[2])
        [((groups,), named)] = self.inference_data("1.0.0")
        self.assertEqual((list(groups), named), (["posterior"], {}))
        np.testing.assert_array_equal(groups["posterior"]["XTestC"], posterior["XTestC"])


class Tables(unittest.TestCase):
    data = pd.read_csv(QUICKSTART / "data.csv")

    def test_the_tables_are_the_shares_of_x_in_the_data(self):
        tables = hovar.tables(COEFFICIENTS).set_index("variable")
        self.assertTrue(tables.loc["XIntercept"][1:].isna().all())
        known = self.data.dropna(subset=["XEmergency"])
        shares = known.groupby("ZEmergency")["XEmergency"].mean()
        row = tables.loc["XEmergency"]
        self.assertEqual(row["z_variable"], "ZEmergency")
        np.testing.assert_allclose([row["x1_z0"], row["x1_z1"]], shares, rtol=1e-5)
        np.testing.assert_allclose([row["x0_z0"], row["x0_z1"]], 1 - shares, rtol=1e-5)

    def test_with_gee_the_standard_errors_stand_where_they_belong(self):
        estimates = hovar.coefficients(RUN / "gee" / "drawn" / "coefficients.csv")
        fifth = estimates["model"] == "[Y|X,P=0,MCMC]"
        self.assertTrue(estimates["mse"][fifth].isna().all())
        self.assertTrue((estimates["ese"] > 0).all())
        self.assertTrue((estimates["mse"][~fifth] > 0).all())
        self.assertEqual(len(estimates), 5 * fifth.sum())

    def test_hospital_predictions_are_the_means_of_individual_ones(self):
        individual = hovar.predictions(QUICKSTART / "results" / "individual.csv")
        hospitals = hovar.predictions(QUICKSTART / "results" / "hospital.csv").set_index("Hospital ID")
        for column in range(3):
            self.assertEqual(list(individual.iloc[:, column]), list(self.data.iloc[:, column]))
        means = individual.drop(columns="Key").groupby("Hospital ID").mean()
        np.testing.assert_allclose(hospitals[means.columns], means.loc[hospitals.index], atol=1e-5)
        counts = individual["Hospital ID"].value_counts()
        self.assertEqual(list(hospitals["Nr. records"]), list(counts[hospitals.index]))

    def test_the_c_statistic_is_that_of_the_individual_predictions(self):
        individual = hovar.predictions(QUICKSTART / "results" / "individual.csv")
        statistics = hovar.c_statistics(QUICKSTART / "results" / "cstatistics.csv")
        events, others = (individual["E[Y|Z]"][individual["Y"] == y].to_numpy() for y in (1, 0))
        pairs = np.sign(events[:, None] - others[None, :])
        self.assertEqual(len(statistics), 6)
        self.assertAlmostEqual(statistics["E[Y|Z]"], (pairs.mean() + 1) / 2, delta=1e-6)

    def test_a_c_statistic_without_pairs_is_nan(self):
        statistics = hovar.c_statistics(
            written('Estimate,C-Statistics\nE[Y|Z],0.75\n"E[Y|X,P=0]",-1\n'))
        self.assertEqual(statistics["E[Y|Z]"], 0.75)
        self.assertTrue(math.isnan(statistics["E[Y|X,P=0]"]))

    def test_odd_cells_are_read_as_they_are_meant(self):
        table = hovar.predictions(written(
            "Key,Hospital ID,P\nNA,007,nan\n\"a \"\"b\"\"\",NA,inf\n c ,\"x,\ny\",\n#d,NULL,-inf\n"
            "'e',1e3,1e-05\nf\r,nan\udcff,0.1\n"))
        self.assertEqual(list(table["Key"]), ["NA", 'a "b"', " c ", "#d", "'e'", "f\r"])
        self.assertEqual(
            list(table["Hospital ID"]), ["007", "NA", "x,\ny", "NULL", "1e3", "nan\udcff"])
        np.testing.assert_array_equal(table["P"], [math.nan, math.inf, math.nan, -math.inf, 1e-05, 0.1])

    def test_odd_names_of_variables_are_read_as_they_are_meant(self):
        lines = COEFFICIENTS.read_text().splitlines()
        numbers = "," + lines[2].split(",", 2)[2] + "\n"
        file = written(lines[0] + "\n" + lines[1] + "\nXä,Z1" + numbers + '"X,""\n",NA' + numbers
                       + "Xä,Z3" + numbers + "X4\r,Z4" + numbers)
        tables = hovar.tables(file)
        self.assertEqual(list(tables["variable"]), ["XIntercept", "Xä", 'X,"\n', "Xä", "X4"])
        self.assertEqual(list(tables["z_variable"]), ["ZIntercept", "Z1", "NA", "Z3", "Z4"])
        with tempfile.TemporaryDirectory() as folder:
            header = "Step," + ",".join(f"BetaYX[{i}]" for i in range(5))
            Path(folder, "Chain.csv").write_text(header + "\n5,1,2,3,4,5\n")
            chains = hovar.chains(folder, file)
        self.assertEqual(list(chains.columns), ["XIntercept", "Xä", 'X,"\n', "Xä.1", "X4"])
        self.assertEqual(list(chains.loc[(1, 5)]), [1, 2, 3, 4, 5])


if __name__ == "__main__":
    unittest.main()
