#pragma once

#include <span>

namespace Vell {

/// Replaces each value x by e^x, several at a time: the same bits as Exp gives for one, whatever
/// the number of values and the processor.
void ReplaceByExponentials(std::span<double> values) noexcept;

}  // namespace Vell
