#pragma once

// The studies that runs under faults are made on, and what such a run may leave behind.

#include <gtest/gtest.h>

#include <array>
#include <map>
#include <string>

#include "support/files.h"

namespace Testing {

/// The definitions of the study, for test suites that are instantiated with each of them.
inline constexpr std::array kStudyDefinitions = {"analysis.xml", "gee.xml", "prediction.xml",
                                                 "validation.xml", "batch.xml"};

/// The name of such an instance: the definition's without its ending.
inline std::string NameOfStudyRun(const testing::TestParamInfo<const char*>& definition) {
  const std::string name = definition.param;
  return name.substr(0, name.find('.'));
}

/// The files that a run wrote, by name, below `out/`.
using OutputFiles = std::map<std::string, std::string>;

/// A folder with the study of tests/reference/data/damage: analysis.xml, gee.xml, prediction.xml,
/// validation.xml and batch.xml, which runs all but gee.xml, with their input. All write below
/// out/.
class FaultStudy : public ScratchFolder {
 public:
  FaultStudy();

  /// Makes the keys so long that data, predictions and what is written with them do not fit into a
  /// stream's block: they are read and written in parts, and reading again is a seek.
  void Enlarge();

  OutputFiles Output() const;
  void RemoveOutput() const;
};

/// Expects of the files that a run left when it was broken off: each is the beginning of the
/// complete one; log lines are whole; and when a log of a later run of the batch was begun, all
/// files of the earlier runs are complete.
void ExpectBrokenOff(const OutputFiles& files, const OutputFiles& complete);

}  // namespace Testing
