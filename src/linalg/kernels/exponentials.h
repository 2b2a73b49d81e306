#pragma once

// The vectorised form of foundation/exponential.h, which has the method and its error.

#include <span>

namespace Vell {

/// Replaces each value x by e^x, several at a time: the same bits as Exp gives for one, whatever
/// the number of values and the processor. Infinities and NaNs are as Exp treats them; no errors.
void ReplaceByExponentials(std::span<double> values) noexcept;

}  // namespace Vell
