#include "mcmc/imputation_sweep.h"

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

/// The cells of one record that take part in its imputation.
class RecordImputation {
 public:
  RecordImputation(DataSet& dataSet, const ImputationModel& model)
      : data_(dataSet),
        model_(model),
        missing_(dataSet.variableCount),
        scratch_(dataSet.variableCount) {}

  void Impute(std::int32_t record) {
    record_ = record;
    for (const std::int32_t j : Vell::MissingColumns(data_.x.Row(record), missing_.Span())) {
      data_.x.SetValue(record, j, DrawX(j));
    }
    if (data_.y.Get(record) && data_.p.IsMissing(record)) {
      data_.p.SetValue(record, DrawP());
    }
  }

 private:
  bool DrawX(std::int32_t j) {
    const std::int32_t z = data_.z.Get(record_, j) ? 1 : 0;
    const double prior = model_.priorTable[2 * (j - 1) + z];
    if (prior == 0 || prior == 1) {
      return prior == 1;
    }
    data_.x.SetValue(record_, j, true);
    const double set = Likelihood() * prior;
    data_.x.SetValue(record_, j, false);
    const double clear = Likelihood() * (1 - prior);
    return set / (clear + set) > Vell::RandomGenerator::Uniform();
  }

  bool DrawP() {
    const auto columns = Vell::SetColumns(data_.x.Row(record_), scratch_.Span());
    const double present = Logistic(LinearPredictor(model_.pGivenX, columns));
    const double outcome = Logistic(LinearPredictor(model_.yGivenXWithoutP, columns));
    const double posterior = present / (outcome * (1 - present) + present);
    return posterior > Vell::RandomGenerator::Uniform();
  }

  /// P(y | x, p) * P(p | x) of the record as it stands.
  double Likelihood() {
    const auto columns = Vell::SetColumns(data_.x.Row(record_), scratch_.Span());
    const bool outcome = data_.y.Get(record_);
    const double presentPredictor = LinearPredictor(model_.pGivenX, columns);
    if (data_.p.Value(record_)) {
      if (!outcome) {
        std::abort();
      }
      return Logistic(presentPredictor);
    }
    const double outcomePredictor = LinearPredictor(model_.yGivenXWithoutP, columns);
    return (outcome ? Logistic(outcomePredictor) : LogisticComplement(outcomePredictor)) *
           LogisticComplement(presentPredictor);
  }

  DataSet& data_;
  const ImputationModel& model_;
  std::int32_t record_ = 0;
  Vell::IndexVector missing_;
  Vell::IndexVector scratch_;
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
  RecordImputation imputation(dataSet, model);
  for (std::int32_t i = 0; i < dataSet.recordCount; ++i) {
    if (dataSet.recordHasMissing.Get(i)) {
      imputation.Impute(i);
    }
  }
}

}  // namespace Hovar
