/// The model that the records of a synthetic data file are drawn from.
///
/// A record belongs to a hospital h and has, for every variable j, a cell Z_j (a rough sign, always
/// known) and a cell X_j (the finding itself, which may be missing from the file):
///
///   Z_j ~ Bernoulli(zPrevalence_j),   X_j | Z_j = z ~ Bernoulli(xGivenZ0_j or xGivenZ1_j)
///   P   ~ Bernoulli(logistic(poaIntercept + sum_j X_j * poaCoefficient_j))
///   Y   = 1 where P = 1 (what was present on admission did occur), elsewhere
///   Y   ~ Bernoulli(logistic(outcomeIntercept + effect_h + sum_j X_j * outcomeCoefficient_j))
///
/// The ranges are those of hospital quality data: Z_j is 1 in 1 to 15 % of the records, every tenth
/// variable in 20 to 50 %; X_j is 1 in 0.2 to 2 % of the records with Z_j = 0 and in 60 to 95 % of
/// those with Z_j = 1. With 60 variables a record has about six set X cells. An average patient of
/// an average hospital has P = 1 with 5 % and otherwise Y = 1 with 10 %.
///
/// Two things can be planted for column elimination to find. A "never seen" variable has X = 0
/// everywhere, but an ordinary Z. And four variables depend on one another: three tests a, b, c and
/// a variable d, "confirmed". Either all four are 0, or exactly two of the tests are 1 and d is 1,
/// so that 2d = a + b + c in every record. The weight of d in this one relation is twice that of
/// the others. Its Z cells are drawn after the X cells, each from its own X cell alone; with the
/// probabilities by Bayes' rule this gives each of the four variables the tables of an ordinary
/// one, and Z cells without any exact relation.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "options.h"

namespace Hovar::Simulate {

/// A covariate: its distribution in Z and X, and its log-odds in the two logistic models.
struct Variable {
  std::string name;  ///< Without the Z or X that the column names put in front.
  double zPrevalence = 0.0;
  double xGivenZ0 = 0.0;
  double xGivenZ1 = 0.0;
  double outcomeCoefficient = 0.0;
  double poaCoefficient = 0.0;

  /// P(X = 1).
  double XPrevalence() const;
  /// P(Z = 1 | X = 0) and P(Z = 1 | X = 1) by Bayes' rule.
  double ZGivenX0() const;
  double ZGivenX1() const;
};

/// The variables with 2d = a + b + c, in the order d, a, b, c from the variable `first` on.
struct DependentGroup {
  static constexpr std::size_t kSize = 4;
  std::size_t first = 0;
  /// The chances that a and b, a and c, b and c are the two tests that are 1. The rest is the
  /// chance of none.
  std::array<double, 3> pairs{};
};

struct Hospital {
  std::int32_t size = 0;  ///< Records.
  double effect = 0.0;    ///< Log-odds added to every record's outcome.
};

struct StudyModel {
  std::vector<Variable> variables;  ///< In the order of the columns.
  std::vector<Hospital> hospitals;  ///< In the order of the file; together they have all records.
  double outcomeIntercept = 0.0;
  double poaIntercept = 0.0;
  std::optional<std::size_t> neverSeen;     ///< The variable whose X is always 0.
  std::optional<DependentGroup> dependent;  ///< Always the last four variables.
};

/// 1 / (1 + e^-logOdds).
double Logistic(double logOdds);

/// Draws a model for the options, by their seed. Variables and hospitals are drawn independently.
///
/// Small files: below 1000 records with a known X the lowest prevalence is raised until 10 records
/// with Z = 1 and a known X can be expected, so that a variable lacks one of its [X|Z] classes with
/// a chance below 5 in 100,000. This takes 20 records at least. Each pair of a dependent group is
/// expected 10 times or more from 250 records on.
/// Memory: by the number of variables and hospitals; the number of records does not matter.
StudyModel DrawStudyModel(const Options& options);

}  // namespace Hovar::Simulate
