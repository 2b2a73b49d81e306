#pragma once

// A check of one definition file and of all that it names.

#include <cstddef>
#include <map>
#include <set>
#include <string>
#include <string_view>
#include <vector>

#include "data/data_set.h"
#include "tools/check/findings.h"
#include "tools/check/outputs.h"
#include "tools/plan/definition_file.h"

namespace Hovar {

/// Whether a check also describes the data files.
enum class Describe { kNothing, kData };

class DefinitionChecker {
 public:
  explicit DefinitionChecker(Describe describe) : describe_(describe) {}

  /// Checks the definition that the user names. Changes nothing on disk.
  void Check(const std::string& definition);

  const Findings& Found() const noexcept { return findings_; }
  const std::string& Description() const noexcept { return description_; }

 private:
  void CheckDefinition(const std::string& path, std::string_view namedIn, Place place);
  void CheckBatch(const DefinitionFile& definition);
  void CheckSingleRun(const DefinitionFile& definition);
  void CheckInputs(const DefinitionFile& definition);
  void CheckAnalysisData(const DefinitionFile& definition, DataSet& dataSet);
  void CheckModelInputs(const DefinitionFile& definition, DataSet* dataSet);
  bool IsReadable(const DefinitionFile& definition, Element element);
  bool IsBeingChecked(const std::string& path) const;

  Describe describe_;
  Findings findings_;
  OutputCheck outputs_;
  std::string description_;
  std::set<std::string> described_;    // data files, with the number of indicators
  std::map<std::string, int> checks_;  // how often a definition was checked, by normal path
  // Whether an Analysis that was checked would use estimating equations, by the normal path of its
  // coefficient file.
  std::map<std::string, bool> hasClusteredDraws_;
  std::vector<std::string> batches_;  // those that are being checked, the outer ones first
};

}  // namespace Hovar
