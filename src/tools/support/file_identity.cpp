#include "tools/support/file_identity.h"

#include <array>
#include <string_view>
#include <vector>

#include "tools/support/paths.h"

namespace Hovar {
namespace {

namespace Platform = Vell::IO::Platform;

std::string Folded(const std::string& name) {
  std::array<char, 4096> folded;
  return Platform::FoldName(name.c_str(), folded.data(), folded.size()) ? folded.data() : name;
}

/// True for what names no entry of a folder but a folder itself.
bool IsDots(std::string_view name) noexcept { return name.empty() || name == "." || name == ".."; }

/// A path in two parts: a folder that exists, and the names from there on.
struct SplitPath {
  std::string folder;
  std::vector<std::string> names;  // the last one first
};

SplitPath Split(const std::string& path) {
  SplitPath split{path, {}};
  do {
    split.names.emplace_back(LastName(WithoutEnd(split.folder)));
    const std::string parent = ParentOf(split.folder);
    const std::string behind = BehindLinks(parent);  // a link may lead to a folder to be made
    split.folder = behind.empty() ? parent : behind;
  } while (!Platform::StampOf(split.folder.c_str()) &&
           WithoutEnd(split.folder) != WithoutEnd(ParentOf(split.folder)));
  return split;
}

/// The names without "." and "..", as they are once all folders are there; ".." where they lead out of
/// the folder.
std::vector<std::string> WithoutDots(const std::vector<std::string>& lastFirst) {
  std::vector<std::string> names;
  for (auto name = lastFirst.rbegin(); name != lastFirst.rend(); ++name) {
    if (*name == ".." && !names.empty() && names.back() != "..") {
      names.pop_back();
    } else if (!name->empty() && *name != ".") {
      names.push_back(*name);
    }
  }
  return names;
}

}  // namespace

FileIdentity IdentityOf(const std::string& path) {
  const std::string behind = BehindLinks(path);
  const std::string& end = behind.empty() ? path : behind;
  const auto idOf = [](const std::string& existing) {
    const auto stamp = Platform::StampOf(existing.c_str());
    return stamp ? std::optional(stamp->id) : std::nullopt;
  };
  FileIdentity identity{idOf(end), {}};
  if (identity.file && IsDots(LastName(WithoutEnd(end)))) {
    identity.place.folder = *identity.file;
    return identity;
  }
  const SplitPath split = Split(end);
  const std::vector<std::string> names = WithoutDots(split.names);
  std::string rest;
  for (const std::string& name : names) {
    rest += (rest.empty() ? "" : "/") + name;
  }
  const std::optional<Platform::FileId> folder = idOf(split.folder);
  if (names.size() != split.names.size() && folder) {
    // The names that are left may be there, beside a folder that is not.
    return IdentityOf(split.folder + '/' + (rest.empty() ? "." : rest));
  }
  identity.place.folder = folder.value_or(Platform::FileId());
  for (const std::string& name : names) {
    identity.place.names += (identity.place.names.empty() ? "" : "/") + Folded(name);
  }
  return identity;
}

bool IsSameFile(const std::string& one, const std::string& other) {
  const FileIdentity first = IdentityOf(one);
  const FileIdentity second = IdentityOf(other);
  return (first.file && first.file == second.file) || first.place == second.place;
}

}  // namespace Hovar
