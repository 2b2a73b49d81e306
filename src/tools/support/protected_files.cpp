#include "tools/support/protected_files.h"

namespace Hovar {

void ProtectedFiles::Add(const std::string& path) {
  paths_.push_back(path);
  files_.Set(path, path);
}

void ProtectedFiles::LookAgain() {
  for (const std::string& path : paths_) {
    files_.Set(path, path);
  }
}

const std::string* ProtectedFiles::Find(const std::string& path) const {
  using Vell::IO::Platform::KindOf;
  using Vell::IO::Platform::PathKind;
  return KindOf(path.c_str()) == PathKind::kOther ? nullptr : files_.Find(path);
}

std::string TakeNumberedName(const std::string& path, const ProtectedFiles& files,
                             const std::function<bool(const std::string& name)>& take) {
  using Vell::IO::Platform::IsTaken;
  constexpr int kMostNumbers = 1'000'000;
  for (int number = 1; number < kMostNumbers; ++number) {
    std::string name = path;
    name.append(".").append(std::to_string(number));
    const std::optional<bool> isTaken = IsTaken(name.c_str());
    if (!isTaken) {
      break;
    }
    if (*isTaken || files.Find(name) != nullptr) {
      continue;
    }
    if (take(name)) {
      return name;
    }
    if (IsTaken(name.c_str()) != true) {
      break;
    }
  }
  return {};
}

}  // namespace Hovar
