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
  return variable.removal == Removal::kNone || variable.removal == Removal::kDependentX;
}

/// Finds out on what the removed columns of Z depend.
class DependenceFinder {
 public:
  DependenceFinder(const Vell::BitMatrix& z, const std::vector<VariableCounts>& variables)
      : variables_(variables), counts_(Vell::CrossCounts(z)), basis_(1, 0) {
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
    // Of variables with the same two names the wrong one can be noted as removed. The columns that
    // stay may then be singular, and nothing is explained.
    ErrorOf([&] { factor_ = Vell::Cholesky(ofBasis); });
  }

  ProxyVerdict Judge(std::size_t variable) const {
    const std::int32_t column = ColumnOf(variable);
    for (std::size_t j = 0; j < variables_.size(); ++j) {
      if (IsIndependent(variables_[j]) && AreEqual(column, ColumnOf(j))) {
        return {ProxyFault::kEqual, {j}};
      }
    }
    return factor_.has_value() ? Combination(column) : ProxyVerdict{};
  }

 private:
  std::int32_t Basis(std::int32_t index) const noexcept {
    return basis_[static_cast<std::size_t>(index)];
  }

  /// Columns of 0 and 1 are equal when as many records have both as have each.
  bool AreEqual(std::int32_t a, std::int32_t b) const noexcept {
    return counts_(a, b) == counts_(a, a) && counts_(a, b) == counts_(b, b);
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

  const std::vector<VariableCounts>& variables_;
  Vell::Matrix counts_;
  std::vector<std::int32_t> basis_;  // columns that stay, the intercept first
  std::optional<Vell::SymmetricMatrix> factor_;
};

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
    if (variable.removal == Removal::kNone) {
      verdicts[j].fault = ImputationFault(variable);
      continue;
    }
    const bool isForZ =
        variable.removal == Removal::kZeroZ || variable.removal == Removal::kDependentZ;
    if (!isForZ || variable.xOnes == 0) {
      continue;
    }
    if (variable.zOnes == 0 || variable.zOnes == variable.records) {
      verdicts[j].fault = ProxyFault::kConstant;
      continue;
    }
    if (!finder.has_value()) {
      finder.emplace(z, variables);
    }
    verdicts[j] = finder->Judge(j);
  }
  return verdicts;
}

}  // namespace Hovar
