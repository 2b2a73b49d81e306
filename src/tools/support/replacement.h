#pragma once

// Which files the command may replace by its own. A page or a record is written over an earlier one
// again and again; a table or a text that somebody named by mistake is lost for ever.

#include <string>
#include <string_view>

namespace Hovar {

/// What the command writes under a name that its user chose.
enum class OwnOutput { kRecord, kReportPage };

/// True when an output of this kind may take the place of what is at the path: nothing, no regular file,
/// a file that hovar wrote as such an output, an empty file (a record only, since a report may read
/// it), or one whose name ends as those of such outputs: .json; .html or .htm. A line on standard error
/// says so otherwise.
bool MayReplace(const std::string& path, OwnOutput kind);

/// True for a file that hovar wrote as such an output. Only its first bytes are read.
bool IsOwnOutput(const std::string& path, OwnOutput kind);

/// True when a file begins with these bytes, at least kOwnOutputHead of them or all, and is such an
/// output.
bool BeginsOwnOutput(std::string_view head, OwnOutput kind) noexcept;
inline constexpr std::size_t kOwnOutputHead = 4096;

}  // namespace Hovar
