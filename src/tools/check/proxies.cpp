#include "tools/check/proxies.h"

#include <algorithm>
#include <cmath>
#include <optional>

#include "linalg/cholesky.h"
#include "linalg/kernels/cross_counts.h"
#include "linalg/symmetric_matrix.h"
#include "tools/support/error_capture.h"

namespace Hovar {
namespace {

/// A residual sum of squares that counts as 0, in parts of the column's own, and a weight that
/// does.
constexpr double kRounding = 1e-6;

/// The column of Z that belongs to a variable; column 0 is the intercept.
std::int32_t ColumnOf(std::size_t variable) noexcept {
  return static_cast<std::int32_t>(variable) + 1;
}

bool IsCopy(const VariableCounts& variable) noexcept {
  const XzClass without = XzClassOf(variable, false);
  const XzClass with = XzClassOf(variable, true);
  return without.IsSettled() && without.ones == 0 && with.missing == 0 && with.known > 0 &&
         with.ones == with.known;
}

ProxyFault ImputationFault(const VariableCounts& variable) noexcept {
  if (variable.IsEmptyWithZ() || variable.IsEmptyWithoutZ()) {
    return ProxyFault::kNone;  // an error, which says more
  }
  if (IsCopy(variable)) {
    return ProxyFault::kCopy;
  }
  const bool isSettled =
      XzClassOf(variable, false).IsSettled() || XzClassOf(variable, true).IsSettled();
  return isSettled ? ProxyFault::kSettledClass : ProxyFault::kNone;
}

/// True when the column was still there after the elimination of Z, so that others depend on it.
bool IsIndependent(const VariableCounts& variable) noexcept {
  return !variable.eliminated.has_value() ||
         variable.eliminated->stage == EliminationStage::kDependentX;
}

/// True when the variable was removed because of its Z although some known X is 1.
bool IsLostWithZ(const VariableCounts& variable) noexcept {
  const EliminationStage stage = variable.eliminated->stage;
  return (stage == EliminationStage::kZeroZ || stage == EliminationStage::kDependentZ) &&
         variable.xOnes > 0;
}

/// Finds out on what the removed columns of Z depend.
class DependenceFinder {
 public:
  DependenceFinder(const Vell::BitMatrix& z, const std::vector<VariableCounts>& variables)
      : counts_(Vell::CrossCounts(z)), basis_(1, 0) {
    for (std::size_t j = 0; j < variables.size(); ++j) {
      if (IsIndependent(variables[j])) {
        basis_.push_back(ColumnOf(j));
      }
    }
    const auto order = static_cast<std::int32_t>(basis_.size());
    Vell::SymmetricMatrix ofBasis(order);
    for (std::int32_t i = 0; i < order; ++i) {
      for (std::int32_t j = 0; j <= i; ++j) {
        ofBasis(i, j) = counts_(Basis(i), Basis(j));
      }
    }
    // With a tolerance below the rounding errors, dependent columns can stay. They have no factor,
    // and nothing is explained.
    ErrorOf([&] { factor_ = Vell::Cholesky(ofBasis); });
  }

  ProxyVerdict Judge(std::int32_t column) const {
    ProxyVerdict verdict = factor_.has_value() ? Combination(column) : ProxyVerdict{};
    // A coarse tolerance can remove both of two equal columns.
    for (std::int32_t j = 1; verdict.fault == ProxyFault::kNearlyDependent && j < column; ++j) {
      if (AreEqualColumns(counts_, column, j)) {
        verdict = {ProxyFault::kEqual, {static_cast<std::size_t>(j) - 1}};
      }
    }
    return verdict;
  }

 private:
  std::int32_t Basis(std::int32_t index) const noexcept {
    return basis_[static_cast<std::size_t>(index)];
  }

  /// Least squares of a column on those that stay.
  ProxyVerdict Combination(std::int32_t column) const {
    Vell::Vector products(factor_->Order());
    for (std::int32_t i = 0; i < products.Size(); ++i) {
      products[i] = counts_(Basis(i), column);
    }
    const Vell::Vector weights = Vell::CholeskySolve(*factor_, products);
    double residual = counts_(column, column);
    ProxyVerdict verdict{ProxyFault::kDependent, {}};
    for (std::int32_t i = 0; i < products.Size(); ++i) {
      residual -= weights[i] * products[i];
      if (i > 0 && std::fabs(weights[i]) > kRounding) {
        verdict.others.push_back(static_cast<std::size_t>(Basis(i) - 1));
      }
    }
    if (!(residual <= kRounding * counts_(column, column))) {
      return {ProxyFault::kNearlyDependent, {}};
    }
    return verdict;
  }

  Vell::Matrix counts_;
  std::vector<std::int32_t> basis_;  // columns that stay, the intercept first
  std::optional<Vell::SymmetricMatrix> factor_;
};

/// The verdict on a variable that was removed because of its Z. `finder` gives the finder, which is
/// made when it is first needed.
template <typename Finder>
ProxyVerdict EliminationVerdict(const EliminatedVariable& eliminated, Finder finder) {
  switch (eliminated.reason) {
    case EliminationReason::kZero:
    case EliminationReason::kConstant:
      return {ProxyFault::kConstant, {}};
    case EliminationReason::kEqual:
      return {ProxyFault::kEqual, {static_cast<std::size_t>(eliminated.equalColumn) - 1}};
    case EliminationReason::kDependent:
      return finder().Judge(eliminated.column);
  }
  return {};
}

}  // namespace

XzClass XzClassOf(const VariableCounts& variable, bool z) noexcept {
  if (z) {
    return {variable.zOnesWithKnownX, variable.xOnesWithZ,
            variable.zOnes - variable.zOnesWithKnownX};
  }
  const std::int32_t known = variable.records - variable.xMissing - variable.zOnesWithKnownX;
  return {known, variable.xOnes - variable.xOnesWithZ, variable.records - variable.zOnes - known};
}

std::vector<ProxyVerdict> JudgeProxies(const Vell::BitMatrix& z,
                                       const std::vector<VariableCounts>& variables) {
  std::vector<ProxyVerdict> verdicts(variables.size());
  std::optional<DependenceFinder> finder;
  for (std::size_t j = 0; j < variables.size(); ++j) {
    const VariableCounts& variable = variables[j];
    if (!variable.eliminated.has_value()) {
      verdicts[j].fault = ImputationFault(variable);
    } else if (IsLostWithZ(variable)) {
      verdicts[j] = EliminationVerdict(*variable.eliminated, [&]() -> const DependenceFinder& {
        return finder.has_value() ? *finder : finder.emplace(z, variables);
      });
    }
  }
  return verdicts;
}

}  // namespace Hovar
