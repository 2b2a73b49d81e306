#include "sweep.h"

#include <bit>
#include <cmath>

namespace Hovar::Floor {

namespace {

constexpr std::size_t kBytes = sizeof(std::uint64_t);

/// A and B of a word, as products of one entry for each byte. The two stand side by side, so that a
/// processor with registers of two doubles makes both products at once.
class PairTables {
 public:
  struct Pair {
    double a;
    double b;
  };

  explicit PairTables(const SweepModel& model) {
    for (std::size_t byte = 0; byte < kBytes; ++byte) {
      std::array<Pair, 256>& table = tables_[byte];
      table[0] = {1, 1};
      for (std::size_t bit = 0; bit < 8; ++bit) {
        const double factorA = std::exp(model.pGivenX[8 * byte + bit]);
        const double factorB = std::exp(model.yGivenX[8 * byte + bit]);
        for (std::size_t i = 0; i < std::size_t{1} << bit; ++i) {
          table[i + (std::size_t{1} << bit)] = {table[i].a * factorA, table[i].b * factorB};
        }
      }
    }
  }

  Pair Of(std::uint64_t word) const noexcept {
    Pair product = tables_[0][word & 0xFF];
    for (std::size_t byte = 1; byte < kBytes; ++byte) {
      const Pair& factor = tables_[byte][word >> 8 * byte & 0xFF];
      product.a *= factor.a;
      product.b *= factor.b;
    }
    return product;
  }

 private:
  std::array<std::array<Pair, 256>, kBytes> tables_;
};

/// What a cell multiplies A and B with: [value before][value to be].
struct CellFactors {
  double a[2][2];
  double b[2][2];
  double prior[2];  // by Z
};

double SumOver(std::uint64_t word, const Coefficients& coefficients) noexcept {
  double sum = 0;
  for (; word != 0; word &= word - 1) {
    sum += coefficients[static_cast<std::size_t>(std::countr_zero(word))];
  }
  return sum;
}

double Logistic(double t) noexcept { return 1 / (std::exp(-t) + 1); }

double Likelihood(std::uint64_t word, std::uint8_t flags, const SweepModel& model) noexcept {
  const double present = SumOver(word, model.pGivenX);
  if ((flags & kPresent) != 0) {
    return Logistic(present);
  }
  const double outcome = SumOver(word, model.yGivenX);
  return Logistic((flags & kOutcome) != 0 ? outcome : -outcome) * Logistic(-present);
}

double PosteriorOfX(std::uint64_t word, std::uint64_t bit, double prior, std::uint8_t flags,
                    const SweepModel& model) noexcept {
  const double set = Likelihood(word | bit, flags, model) * prior;
  const double clear = Likelihood(word & ~bit, flags, model) * (1 - prior);
  return set / (clear + set);
}

double PosteriorOfP(std::uint64_t word, const SweepModel& model) noexcept {
  const double present = Logistic(SumOver(word, model.pGivenX));
  const double outcome = Logistic(SumOver(word, model.yGivenX));
  return present / (outcome * (1 - present) + present);
}

/// S > u (S + C), or nothing certain when the two sides are equal but for rounding.
enum class Decision { kClear, kSet, kUncertain };

Decision Decide(double set, double clear, double u) noexcept {
  const double sum = set + clear;
  const double difference = set - u * sum;
  if (std::fabs(difference) > 1e-10 * sum) [[likely]] {
    return difference > 0 ? Decision::kSet : Decision::kClear;
  }
  return Decision::kUncertain;
}

class Sweeper {
 public:
  Sweeper(const SweepModel& model, std::size_t columns, RandomWords& random)
      : model_(model), tables_(model), random_(random) {
    for (std::size_t j = 0; j < columns; ++j) {
      const double a = std::exp(model.pGivenX[j]);
      const double b = std::exp(model.yGivenX[j]);
      factors_[j] = {
          {{1, a}, {1 / a, 1}}, {{1, b}, {1 / b, 1}}, {model.prior[j][0], model.prior[j][1]}};
    }
  }

  void Impute(PackedData& data, std::size_t record) {
    const std::uint8_t flags = data.flags[record];
    const PairTables::Pair pair = tables_.Of(data.x[record]);
    a_ = pair.a;
    b_ = pair.b;
    if ((flags & kPresent) != 0) {
      ImputeCells<true, true>(data, record);
    } else if ((flags & kOutcome) != 0) {
      ImputeCells<false, true>(data, record);
    } else {
      ImputeCells<false, false>(data, record);
    }
    if ((flags & kPresentIsMissing) != 0 && (flags & kOutcome) != 0) {
      ImputeP(data, record);
    }
  }

 private:
  template <bool kIsPresent, bool kHasOutcome>
  void ImputeCells(PackedData& data, std::size_t record) {
    std::uint64_t word = data.x[record];
    const std::uint64_t z = data.z[record];
    for (std::uint64_t missing = data.xMissing[record]; missing != 0; missing &= missing - 1) {
      const auto j = static_cast<std::size_t>(std::countr_zero(missing));
      const std::size_t before = word >> j & 1;
      const CellFactors& factors = factors_[j];
      const double a[2] = {a_ * factors.a[before][0], a_ * factors.a[before][1]};
      const double b[2] = {b_ * factors.b[before][0], b_ * factors.b[before][1]};
      const double prior = factors.prior[z >> j & 1];
      bool value = prior == 1;
      if (prior != 0 && prior != 1) {
        double set = prior * (1 + a[0]);
        double clear = (1 - prior) * (1 + a[1]);
        if constexpr (kIsPresent) {
          set *= a[1];
          clear *= a[0];
        } else {
          set *= 1 + b[0];
          clear *= 1 + b[1];
          if constexpr (kHasOutcome) {
            set *= b[1];
            clear *= b[0];
          }
        }
        const double u = random_.Uniform();
        const Decision decision = Decide(set, clear, u);
        value = decision == Decision::kUncertain ? PosteriorOfX(word, std::uint64_t{1} << j, prior,
                                                                data.flags[record], model_) > u
                                                 : decision == Decision::kSet;
      }
      word = (word & ~(std::uint64_t{1} << j)) | std::uint64_t{value} << j;
      a_ = value ? a[1] : a[0];
      b_ = value ? b[1] : b[0];
    }
    data.x[record] = word;
  }

  void ImputeP(PackedData& data, std::size_t record) {
    const double u = random_.Uniform();
    const Decision decision = Decide(a_ * (1 + b_), b_, u);
    const bool value = decision == Decision::kUncertain ? PosteriorOfP(data.x[record], model_) > u
                                                        : decision == Decision::kSet;
    data.flags[record] =
        static_cast<std::uint8_t>((data.flags[record] & ~kPresent) | (value ? kPresent : 0));
  }

  const SweepModel& model_;
  PairTables tables_;
  std::array<CellFactors, kMaxColumns> factors_{};
  RandomWords& random_;
  double a_ = 0;
  double b_ = 0;
};

}  // namespace

void Sweep(PackedData& data, const SweepModel& model, RandomWords& random) {
  Sweeper sweeper(model, static_cast<std::size_t>(data.columns), random);
  for (std::size_t i = 0; i < static_cast<std::size_t>(data.records); ++i) {
    if ((data.flags[i] & kRecordHasMissing) != 0) {
      sweeper.Impute(data, i);
    }
  }
}

void SweepPlainly(PackedData& data, const SweepModel& model, RandomWords& random) {
  for (std::size_t i = 0; i < static_cast<std::size_t>(data.records); ++i) {
    std::uint64_t& word = data.x[i];
    std::uint8_t& flags = data.flags[i];
    for (std::uint64_t missing = data.xMissing[i]; missing != 0; missing &= missing - 1) {
      const auto j = static_cast<std::size_t>(std::countr_zero(missing));
      const std::uint64_t bit = std::uint64_t{1} << j;
      const double prior = model.prior[j][data.z[i] >> j & 1];
      const bool value = prior == 0 || prior == 1
                             ? prior == 1
                             : PosteriorOfX(word, bit, prior, flags, model) > random.Uniform();
      word = value ? word | bit : word & ~bit;
    }
    if ((flags & kPresentIsMissing) != 0 && (flags & kOutcome) != 0) {
      const bool value = PosteriorOfP(word, model) > random.Uniform();
      flags = static_cast<std::uint8_t>((flags & ~kPresent) | (value ? kPresent : 0));
    }
  }
}

}  // namespace Hovar::Floor
