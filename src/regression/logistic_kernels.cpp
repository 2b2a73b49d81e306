#include "regression/logistic_kernels.h"

#include <cstring>
#include <span>

#include "foundation/exponential.h"
#include "linalg/kernels/dispatch.h"

namespace Hovar {
namespace {

template <typename Real>
[[gnu::always_inline]] inline void Load(Real& lanes, const double* from) noexcept {
  std::memcpy(&lanes, from, sizeof lanes);
}

template <typename Real>
[[gnu::always_inline]] inline void Store(double* to, const Real& lanes) noexcept {
  std::memcpy(to, &lanes, sizeof lanes);
}

// Whole vectors are computed: the entries after the block's count hold what an earlier block left
// there, or zeros, and nobody reads what becomes of them.

/// Stores the weights of a block's records, and the residuals that Residual gives.
template <int kLanes, typename Residual>
[[gnu::always_inline]] inline void EvaluateTerms(RecordBlock& block) noexcept {
  using Real = typename Vell::Lanes<kLanes>::Real;
  for (std::int32_t i = 0; i < block.count; i += kLanes) {
    const auto at = static_cast<std::size_t>(i);
    Real up;
    Load(up, block.linearPredictor.data() + at);
    Real down = -up;
    Vell::ReplaceByExp<kLanes>(up);
    Vell::ReplaceByExp<kLanes>(down);
    const Real weight = 1.0 / (up + 2.0 + down);
    Store(block.weight.data() + at, weight);
    Real y;
    Load(y, block.response.data() + at);
    Real residual;
    Residual::Set(residual, y, up, down);
    Store(block.residual.data() + at, residual);
  }
}

struct IndependentResidual {
  template <typename Real>
  [[gnu::always_inline]] static void Set(Real& residual, const Real& y, const Real& up,
                                         const Real& down) noexcept {
    const Real magnitude = 1.0 / (1.0 + (y > 0.5 ? up : down));
    residual = y > 0.5 ? magnitude : -magnitude;
  }
};

struct ExchangeableResidual {
  template <typename Real>
  [[gnu::always_inline]] static void Set(Real& residual, const Real& y, const Real& /*up*/,
                                         const Real& down) noexcept {
    residual = y - 1.0 / (1.0 + down);
  }
};

struct IndependentTerms {
  RecordBlock& block;

  template <int kLanes>
  [[gnu::always_inline]] void operator()() const noexcept {
    EvaluateTerms<kLanes, IndependentResidual>(block);
  }
};

struct ExchangeableTerms {
  RecordBlock& block;
  PearsonBlock& terms;

  template <int kLanes>
  [[gnu::always_inline]] void operator()() const noexcept {
    EvaluateTerms<kLanes, ExchangeableResidual>(block);
    // Checked once, for all have one size: a check of every index would keep the loop scalar.
    const std::span deviations =
        std::span(terms.deviation).first(static_cast<std::size_t>(block.count));
    double* const deviation = deviations.data();
    double* const pearson = terms.pearson.data();
    const double* const weight = block.weight.data();
    const double* const residual = block.residual.data();
    for (std::size_t i = 0; i < deviations.size(); ++i) {
      deviation[i] = __builtin_sqrt(weight[i]);
      pearson[i] = residual[i] / deviation[i];
    }
  }
};

}  // namespace

void EvaluateIndependentTerms(RecordBlock& block) noexcept {
  Vell::RunVectorForm(IndependentTerms{block});
}

void EvaluateExchangeableTerms(RecordBlock& block, PearsonBlock& pearson) noexcept {
  Vell::RunVectorForm(ExchangeableTerms{block, pearson});
}

}  // namespace Hovar
