#pragma once

// What is wrong with the Z of a variable. Besides Y and P, imputation uses nothing but Z for a
// missing X, and a variable whose Z has no information of its own is removed with its X. Here are
// the facts; proxy_warnings.h has the sentences.

#include <cstddef>
#include <cstdint>
#include <vector>

#include "linalg/bit_matrix.h"
#include "tools/check/columns.h"

namespace Hovar {

/// The records with one value of Z: a row of the [X|Z] table and what is imputed from it.
struct XzClass {
  std::int32_t known = 0;    // records in which X is known
  std::int32_t ones = 0;     // of these, X = 1
  std::int32_t missing = 0;  // records in which X is missing

  /// True when all known X are equal, so that every missing one would be imputed as they are.
  bool IsSettled() const noexcept {
    return missing > 0 && known > 0 && (ones == 0 || ones == known);
  }
};

XzClass XzClassOf(const VariableCounts& variable, bool z) noexcept;

enum class ProxyFault {
  kNone,
  kCopy,            // X wherever it is known, and 0 where it is missing
  kSettledClass,    // one value of Z, or both, settle X
  kConstant,        // removed: the same in all records
  kEqual,           // removed: the Z of another variable
  kDependent,       // removed: a linear combination of other Z columns and the intercept
  kNearlyDependent  // removed: so only within the tolerance of the definition
};

struct ProxyVerdict {
  ProxyFault fault = ProxyFault::kNone;
  /// The variables, by their index, to which kEqual (one) and kDependent point.
  std::vector<std::size_t> others;
};

/// One verdict for each variable: its strongest fault. Faults of imputation are found in variables
/// that stay in the model, those of removal in variables that are removed for their Z although some
/// known X is 1. `z` has the intercept and then all columns of the file, in the order of
/// `variables`, in which CheckColumns has noted the removals.
/// Cost: nothing but arithmetic on the counts, unless a Z was removed as dependent; then one pass
/// over `z` for the cross counts of its V columns, V^3 / 6 multiplications and V^2 for each such Z.
/// Errors: "Out of memory".
std::vector<ProxyVerdict> JudgeProxies(const Vell::BitMatrix& z,
                                       const std::vector<VariableCounts>& variables);

}  // namespace Hovar
