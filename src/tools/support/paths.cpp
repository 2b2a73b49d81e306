#include "tools/support/paths.h"

#include <algorithm>
#include <array>
#include <vector>

#include "foundation/io/platform/folders.h"
#include "foundation/io/platform/platform.h"
#include "tools/support/text.h"

namespace Hovar {
namespace {

namespace Platform = Vell::IO::Platform;

/// True for a path that begins with a drive: "C:\\data".
bool HasDrive(std::string_view path) noexcept { return path.size() >= 2 && path[1] == ':'; }

bool IsAbsolute(std::string_view path) noexcept {
  return (!path.empty() && IsSeparator(path[0])) || HasDrive(path);
}

std::string CurrentFolder() {
  std::array<char, 4096> folder;
  return Platform::CurrentFolder(folder.data(), folder.size()) ? folder.data() : "";
}

}  // namespace

std::string NormalPath(std::string_view path) {
  std::string whole(path);
  if (!IsAbsolute(path)) {
    whole = CurrentFolder() + '/' + whole;
  }
  std::vector<std::string_view> names;
  std::string_view rest = whole;
  while (!rest.empty()) {
    const std::size_t end = std::min(rest.find_first_of("/\\"), rest.size());
    const std::string_view name = rest.substr(0, end);
    if (name == ".." && !names.empty()) {
      names.pop_back();
    } else if (!name.empty() && name != "." && name != "..") {
      names.push_back(name);
    }
    rest.remove_prefix(std::min(end + 1, rest.size()));
  }
  std::string normal;
  for (const std::string_view name : names) {
    normal += normal.empty() && HasDrive(whole) ? "" : "/";
    normal += name;
  }
  return normal.empty() ? "/" : normal;
}

std::string_view WithoutEnd(std::string_view path) {
  return path.substr(0, path.find_last_not_of("/\\") + 1);
}

std::string BehindLinks(const std::string& path) {
  constexpr int kMostLinks = 40;  // more are a circle, for the system too
  std::string place = path;
  std::array<char, 4096> target;
  for (int i = 0; i < kMostLinks; ++i) {
    if (!Platform::LinkTarget(place.c_str(), target.data(), target.size())) {
      return place;
    }
    place = IsAbsolute(target.data()) ? target.data() : ParentOf(place) + '/' + target.data();
  }
  return "";
}

std::string ParentOf(std::string_view path) {
  path = WithoutEnd(path);
  const std::size_t separator = path.find_last_of("/\\");
  if (separator == std::string_view::npos) {
    return ".";
  }
  return std::string(path.substr(0, std::max<std::size_t>(separator, 1)));
}

std::string_view LastName(std::string_view path) {
  return path.substr(path.find_last_of("/\\") + 1);
}

bool DiffersInCaseOnly(const std::string& one, const std::string& other) {
  const std::string a = NormalPath(one);
  const std::string b = NormalPath(other);
  return a != b && LowerCase(a) == LowerCase(b);
}

}  // namespace Hovar
