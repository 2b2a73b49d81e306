#pragma once

#include <span>

namespace Vell {

/// Replaces each value x by e^x: the bits of Exp, several values at a time.
void ReplaceByExponentials(std::span<double> values) noexcept;

}  // namespace Vell
