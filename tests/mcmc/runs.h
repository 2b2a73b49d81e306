#pragma once

#include <regex>
#include <string>

namespace Testing {

/// Standard output with the elapsed seconds of each phase replaced by T.
inline std::string WithoutSeconds(const std::string& output) {
  return std::regex_replace(
      output, std::regex("(\nMCMC: -?[0-9]+ iterations in )[0-9.e+-]+( seconds\n\n)"), "$1T$2");
}

/// The line that ends a phase, as WithoutSeconds leaves it.
inline std::string PhaseLine(int iterations) {
  return "\nMCMC: " + std::to_string(iterations) + " iterations in T seconds\n\n";
}

inline constexpr const char* kSummaryHeader = "Variable,Mean,Variance,Acceptance\n";

}  // namespace Testing
