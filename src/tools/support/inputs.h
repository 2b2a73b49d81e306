#pragma once

// How the tools open their inputs: regular files only, and without waiting. A pipe would keep them
// waiting for its writer, and what is read from it would be missing from the run.

#include <cstdint>
#include <string>

#include "foundation/io/stream.h"

namespace Hovar {

/// The modes of a Vell::IO::FileStream for that.
inline constexpr std::uint32_t kReadInput =
    Vell::IO::Mode::kRead | Vell::IO::Mode::kText | Vell::IO::Mode::kRegular;
inline constexpr std::uint32_t kReadInputBytes =
    Vell::IO::Mode::kRead | Vell::IO::Mode::kBinary | Vell::IO::Mode::kRegular;

/// True when a path leads to a pipe, a socket, a device or a folder, where a regular file is
/// required. A line on standard error then says which.
bool RefuseIrregular(const std::string& path);

}  // namespace Hovar
