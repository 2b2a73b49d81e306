#include "mcmc/imputation_sweep.h"

#include <cmath>
#include <cstdlib>

#include "foundation/exponential.h"
#include "foundation/random/random_generator.h"
#include "linalg/kernels/set_columns.h"

namespace Hovar {

double Logistic(double t) noexcept { return 1 / (Vell::Exp(-t) + 1); }

double LinearPredictor(const Vell::Vector& coefficients,
                       std::span<const std::int32_t> setColumns) noexcept {
  double sum = 0;
  for (const std::int32_t j : setColumns) {
    sum += coefficients[j];
  }
  return sum;
}

namespace {

/// 1 - logistic(t), with all digits where that is small.
double LogisticComplement(double t) noexcept { return 1 / (Vell::Exp(t) + 1); }

/// A condition present on admission implies the outcome; the reader lets nothing else in.
void RequireOutcome(bool outcome) noexcept {
  if (!outcome) {
    std::abort();
  }
}

/// The draws of one record as the model defines them: every posterior from the likelihoods of the
/// record with the cell set and with the cell clear.
class DirectImputation {
 public:
  DirectImputation(DataSet& dataSet, const ImputationModel& model)
      : data_(dataSet), model_(model), scratch_(dataSet.variableCount) {}

  /// The posterior probability that X_j = 1. Leaves the cell clear.
  double PosteriorOfX(std::int32_t record, std::int32_t j, double prior) {
    data_.x.SetValue(record, j, true);
    const double set = Likelihood(record) * prior;
    data_.x.SetValue(record, j, false);
    const double clear = Likelihood(record) * (1 - prior);
    return set / (clear + set);
  }

  /// The posterior probability that P = 1, given Y = 1.
  double PosteriorOfP(std::int32_t record) {
    const auto columns = Vell::SetColumns(data_.x.Row(record), scratch_.Span());
    const double present = Logistic(LinearPredictor(model_.pGivenX, columns));
    const double outcome = Logistic(LinearPredictor(model_.yGivenXWithoutP, columns));
    return present / (outcome * (1 - present) + present);
  }

 private:
  /// P(y | x, p) * P(p | x) of the record as it stands.
  double Likelihood(std::int32_t record) {
    const auto columns = Vell::SetColumns(data_.x.Row(record), scratch_.Span());
    const bool outcome = data_.y.Get(record);
    const double presentPredictor = LinearPredictor(model_.pGivenX, columns);
    if (data_.p.Value(record)) {
      RequireOutcome(outcome);
      return Logistic(presentPredictor);
    }
    const double outcomePredictor = LinearPredictor(model_.yGivenXWithoutP, columns);
    return (outcome ? Logistic(outcomePredictor) : LogisticComplement(outcomePredictor)) *
           LogisticComplement(presentPredictor);
  }

  DataSet& data_;
  const ImputationModel& model_;
  Vell::IndexVector scratch_;
};

/// e^beta for every coefficient.
Vell::Vector ExponentialsOf(const Vell::Vector& coefficients) {
  Vell::Vector result(coefficients);
  for (double& value : result) {
    value = Vell::Exp(value);
  }
  return result;
}

/// The same draws with two exponentials a record. With A = e^(x a) and B = e^(x b), setting X_j
/// multiplies A by e^(a_j) and B by e^(b_j), and the likelihoods are quotients of A, B, 1 + A and
/// 1 + B, so that a posterior is one quotient of products.
///
/// Such a posterior differs from the direct one by rounding only, some 1e-14. Where it lies so
/// close to the drawn number that this could turn the decision, and where a factor could leave the
/// range in which products neither overflow nor vanish, the direct form decides: every draw is the
/// same.
class SweepImputation {
 public:
  SweepImputation(DataSet& dataSet, const ImputationModel& model)
      : data_(dataSet),
        model_(model),
        direct_(dataSet, model),
        expOfA_(ExponentialsOf(model.pGivenX)),
        expOfB_(ExponentialsOf(model.yGivenXWithoutP)),
        missing_(dataSet.variableCount),
        scratch_(dataSet.variableCount) {}

  void Impute(std::int32_t record) {
    const auto missing = Vell::MissingColumns(data_.x.Row(record), missing_.Span());
    const bool drawsP = data_.y.Get(record) && data_.p.IsMissing(record);
    if (missing.empty() && !drawsP) {
      return;  // the missing P of a record without the outcome stays 0
    }
    BeginRecord(record, missing);
    for (const std::int32_t j : missing) {
      ImputeX(record, j);
    }
    if (drawsP) {
      const double quick = a_ * (1 + b_) / (b_ + a_ * (1 + b_));
      data_.p.SetValue(record,
                       Draw(quick, isModerate_, [&] { return direct_.PosteriorOfP(record); }));
    }
  }

 private:
  /// Computes A and B, and whether they stay moderate whatever the missing cells become.
  void BeginRecord(std::int32_t record, std::span<const std::int32_t> missing) {
    const auto columns = Vell::SetColumns(data_.x.Row(record), scratch_.Span());
    const double predictorA = LinearPredictor(model_.pGivenX, columns);
    const double predictorB = LinearPredictor(model_.yGivenXWithoutP, columns);
    double reachA = std::fabs(predictorA);
    double reachB = std::fabs(predictorB);
    for (const std::int32_t j : missing) {
      reachA += std::fabs(model_.pGivenX[j]);
      reachB += std::fabs(model_.yGivenXWithoutP[j]);
    }
    // A product has up to three factors: e^200 to the third power is 1e260.
    constexpr double kModerate = 200;
    isModerate_ = reachA <= kModerate && reachB <= kModerate;
    a_ = Vell::Exp(predictorA);
    b_ = Vell::Exp(predictorB);
  }

  void ImputeX(std::int32_t record, std::int32_t j) {
    const bool before = data_.x.Value(record, j);
    const double clearA = before ? a_ / expOfA_[j] : a_;
    const double clearB = before ? b_ / expOfB_[j] : b_;
    const double setA = before ? a_ : a_ * expOfA_[j];
    const double setB = before ? b_ : b_ * expOfB_[j];
    const std::int32_t z = data_.z.Get(record, j) ? 1 : 0;
    const double prior = model_.priorTable[2 * (j - 1) + z];
    bool value = prior == 1;
    if (prior != 0 && prior != 1) {
      double set = prior * (1 + clearA);
      double clear = (1 - prior) * (1 + setA);
      const bool outcome = data_.y.Get(record);
      if (data_.p.Value(record)) {
        RequireOutcome(outcome);
        set *= setA;
        clear *= clearA;
      } else {
        set *= outcome ? (1 + clearB) * setB : 1 + clearB;
        clear *= outcome ? (1 + setB) * clearB : 1 + setB;
      }
      constexpr double kSmallestPrior = 1e-15;
      const bool isCertain = isModerate_ && prior >= kSmallestPrior && prior <= 1 - kSmallestPrior;
      value = Draw(set / (set + clear), isCertain,
                   [&] { return direct_.PosteriorOfX(record, j, prior); });
    }
    data_.x.SetValue(record, j, value);
    a_ = value ? setA : clearA;
    b_ = value ? setB : clearB;
  }

  /// Draws one word u and answers posterior > u.
  template <typename DirectPosterior>
  static bool Draw(double quick, bool isCertain, DirectPosterior directPosterior) {
    constexpr double kUncertain = 1e-10;
    const double u = Vell::RandomGenerator::Uniform();
    if (isCertain && std::fabs(quick - u) > kUncertain) {
      return quick > u;
    }
    return directPosterior() > u;
  }

  DataSet& data_;
  const ImputationModel& model_;
  DirectImputation direct_;
  Vell::Vector expOfA_;
  Vell::Vector expOfB_;
  Vell::IndexVector missing_;
  Vell::IndexVector scratch_;
  double a_ = 0;
  double b_ = 0;
  bool isModerate_ = false;
};

}  // namespace

void PrepareImputation(DataSet& dataSet) {
  Vell::IndexVector scratch(dataSet.variableCount);
  for (std::int32_t i = 0; i < dataSet.recordCount; ++i) {
    if (!dataSet.recordHasMissing.Get(i)) {
      continue;
    }
    for (const std::int32_t j : Vell::MissingColumns(dataSet.x.Row(i), scratch.Span())) {
      dataSet.x.SetValue(i, j, false);
    }
    if (dataSet.p.IsMissing(i)) {
      dataSet.p.SetValue(i, false);
    }
  }
}

void RunImputationSweep(DataSet& dataSet, const ImputationModel& model) {
  SweepImputation imputation(dataSet, model);
  for (std::int32_t i = 0; i < dataSet.recordCount; ++i) {
    if (dataSet.recordHasMissing.Get(i)) {
      imputation.Impute(i);
    }
  }
}

}  // namespace Hovar
