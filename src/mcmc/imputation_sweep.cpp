#include "mcmc/imputation_sweep.h"

#include <cmath>
#include <cstdlib>

#include "foundation/exponential.h"
#include "foundation/random/random_generator.h"
#include "linalg/kernels/exponentials.h"
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

/// The same draws from two exponentials a record. With A = e^(x a) and B = e^(x b), setting X_j
/// multiplies A by e^(a_j) and B by e^(b_j), and the likelihoods are quotients of A, B, 1 + A and
/// 1 + B, so that a posterior is one quotient of products.
///
/// Such a posterior differs from the direct one by rounding only, some 1e-14. Where it lies so
/// close to the drawn number that this could turn the decision, and where a factor could leave the
/// range in which products neither overflow nor vanish, the direct form decides: every draw is the
/// same.
///
/// Records are gathered in batches, whose exponentials are computed together, and then drawn in
/// their order.
class SweepImputation {
 public:
  SweepImputation(DataSet& dataSet, const ImputationModel& model)
      : data_(dataSet),
        model_(model),
        direct_(dataSet, model),
        columns_(dataSet.variableCount),
        a_(kBatchSize),
        b_(kBatchSize) {
    records_.Reserve(kBatchSize);
    for (std::int32_t j = 0; j < dataSet.variableCount; ++j) {
      const double a = model.pGivenX[j];
      const double b = model.yGivenXWithoutP[j];
      columns_[j] = {Pair{a, b}, Pair{Vell::Exp(a), Vell::Exp(b)},
                     Pair{Vell::Exp(-a), Vell::Exp(-b)}};
    }
  }

  /// Records must come in ascending order.
  void Impute(std::int32_t record) {
    if (records_.Size() == kBatchSize) {
      Finish();
    }
    Gather(record);
  }

  /// Imputes the records that were gathered last.
  void Finish() {
    const auto size = static_cast<std::size_t>(records_.Size());
    Vell::ReplaceByExponentials(a_.Span().first(size));
    Vell::ReplaceByExponentials(b_.Span().first(size));
    const std::int32_t* missing = missing_.begin();
    for (std::int32_t i = 0; i < records_.Size(); ++i) {
      const GatheredRecord& record = records_[i];
      Draw(record, {missing, missing + record.missingCount}, Pair{a_[i], b_[i]});
      missing += record.missingCount;
    }
    records_.Truncate(0);
    missing_.Truncate(0);
  }

 private:
  static constexpr std::int32_t kBatchSize = 256;
  /// The bit of column 0 in the first word of a row. The column has no prior and is never drawn.
  static constexpr std::uint64_t kFirstColumn = 1;

  /// A number for a and one for b.
  using Pair = Vell::Lanes<2>::Real;

  struct Column {
    Pair coefficients;
    Pair factors;   // of A and B when the column's cell is set
    Pair inverses;  // and when it is cleared
  };

  struct GatheredRecord {
    std::int32_t record;
    std::int32_t missingCount;
    bool drawsP;
    /// A and B stay moderate whatever the missing cells become: a product of up to three factors
    /// neither overflows nor vanishes.
    bool isModerate;
  };

  /// Notes the missing cells of a record and computes the predictors x a and x b.
  void Gather(std::int32_t record) {
    const bool drawsP = data_.y.Get(record) && data_.p.IsMissing(record);
    const std::int32_t firstMissing = missing_.Size();
    const Vell::TernaryRow row = data_.x.Row(record);
    Pair predictors = {0, 0};
    double reachA = 0;
    double reachB = 0;
    for (std::int32_t word = 0; word < Vell::ColumnWordCount(row.columns); ++word) {
      auto [values, missing] = Vell::TernaryColumnWords(row, word);
      missing &= word == 0 ? ~kFirstColumn : ~std::uint64_t{0};
      const std::int32_t first = word * Vell::kColumnsPerWord;
      Vell::VisitBits(values,
                      [&](std::int32_t bit) { predictors += columns_[first + bit].coefficients; });
      Vell::VisitBits(missing, [&](std::int32_t bit) {
        missing_.Append(first + bit);
        reachA += std::fabs(columns_[first + bit].coefficients[0]);
        reachB += std::fabs(columns_[first + bit].coefficients[1]);
      });
    }
    const std::int32_t missingCount = missing_.Size() - firstMissing;
    if (missingCount == 0 && !drawsP) {
      return;  // the missing P of a record without the outcome stays 0
    }
    constexpr double kModerate = 200;  // e^200 to the third power is 1e260
    const bool isModerate = std::fabs(predictors[0]) + reachA <= kModerate &&
                            std::fabs(predictors[1]) + reachB <= kModerate;
    a_[records_.Size()] = predictors[0];
    b_[records_.Size()] = predictors[1];
    records_.Append({record, missingCount, drawsP, isModerate});
  }

  /// `now` is A and B of the record as it stands.
  void Draw(const GatheredRecord& gathered, std::span<const std::int32_t> missing, Pair now) {
    for (const std::int32_t j : missing) {
      DrawX(gathered, j, now);
    }
    if (gathered.drawsP) {
      const double present = now[0] * (1 + now[1]);
      data_.p.SetValue(gathered.record, Decide(present, now[1], gathered.isModerate, [&] {
                         return direct_.PosteriorOfP(gathered.record);
                       }));
    }
  }

  void DrawX(const GatheredRecord& gathered, std::int32_t j, Pair& now) {
    const std::int32_t record = gathered.record;
    const bool before = data_.x.Value(record, j);
    const Column& column = columns_[j];
    const Pair whenClear = before ? now * column.inverses : now;
    const Pair whenSet = before ? now : now * column.factors;
    const std::int32_t z = data_.z.Get(record, j) ? 1 : 0;
    const double prior = model_.priorTable[2 * (j - 1) + z];
    bool value = prior == 1;
    if (prior != 0 && prior != 1) {
      double set = prior * (1 + whenClear[0]);
      double clear = (1 - prior) * (1 + whenSet[0]);
      const bool outcome = data_.y.Get(record);
      if (data_.p.Value(record)) {
        RequireOutcome(outcome);
        set *= whenSet[0];
        clear *= whenClear[0];
      } else {
        set *= outcome ? (1 + whenClear[1]) * whenSet[1] : 1 + whenClear[1];
        clear *= outcome ? (1 + whenSet[1]) * whenClear[1] : 1 + whenSet[1];
      }
      constexpr double kSmallestPrior = 1e-15;
      const bool isCertain =
          gathered.isModerate && prior >= kSmallestPrior && prior <= 1 - kSmallestPrior;
      value = Decide(set, clear, isCertain, [&] { return direct_.PosteriorOfX(record, j, prior); });
    }
    data_.x.SetValue(record, j, value);
    now = value ? whenSet : whenClear;
  }

  /// Draws one word u and answers posterior > u, where the posterior is set / (set + clear).
  template <typename DirectPosterior>
  static bool Decide(double set, double clear, bool isCertain, DirectPosterior directPosterior) {
    constexpr double kUncertain = 1e-10;
    const double u = Vell::RandomGenerator::Uniform();
    const double total = set + clear;
    const double margin = set - u * total;
    if (isCertain && std::fabs(margin) > kUncertain * total) {
      return margin > 0;
    }
    return directPosterior() > u;
  }

  DataSet& data_;
  const ImputationModel& model_;
  DirectImputation direct_;
  Vell::GrowableArray<Column> columns_;
  // The batch.
  Vell::GrowableArray<GatheredRecord> records_;
  Vell::IndexVector missing_;  // of all records, one after the other
  Vell::Vector a_;             // A, by record
  Vell::Vector b_;             // B
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
  imputation.Finish();
}

}  // namespace Hovar
