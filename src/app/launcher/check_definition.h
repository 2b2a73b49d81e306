#pragma once

// The first half of a check: the grammar of one definition file, read by the program's own reader,
// and the plan of the run that it describes.

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "app/definitions.h"
#include "app/dispatch.h"
#include "app/launcher/check_findings.h"

namespace Hovar {

/// An element and what stands behind its start tag, up to the next tag.
struct DefinedValue {
  std::string element;      // below the root: "Output/LogFile"
  std::int64_t offset = 0;  // of the text
  std::string text;         // as it stands
};

/// What a run writes: its elements name it, its path is what the program opens.
struct PlannedOutput {
  std::string element;  // that names it
  std::string what;     // "log file"
  std::string path;
};

/// A definition file that follows the grammar, as one record for all kinds of run.
struct RunPlan {
  std::string definition;  // path of the definition file, as written
  RunKind kind = RunKind::kBatch;
  std::vector<DefinedValue> values;  // of all elements, in file order

  // Single runs. Texts that the kind of run does not have are empty.
  std::string data;
  std::int32_t poaCount = 0;
  std::string coefficients;           // read
  std::string individualPredictions;  // read
  std::string folder;
  std::string chainFolder;             // of an Analysis, within the output folder
  std::vector<PlannedOutput> outputs;  // in the order in which they are opened, the log first
  McmcSettings mcmc;
  AnalysisDefinition analysis;

  // Batches.
  std::vector<std::string> simulations;

  /// The first element of this name, or the definition's start where there is none.
  const DefinedValue& Value(std::string_view element) const;
  Place PlaceOfValue(std::string_view element) const;
  /// The place of the element's tag.
  Place PlaceOfTag(std::string_view element) const;
};

/// Reads a definition file, which exists, as the program does. A file that the program would not
/// read gives one error and no plan.
std::optional<RunPlan> ReadRunPlan(Findings& findings, const std::string& path);

/// Adds an error for an input file that is missing, a folder, or not readable, and answers whether
/// there was none. `what` is the noun for the file.
bool CheckInputFile(Findings& findings, const std::string& path, std::string_view what,
                    std::string_view file, Place place);

}  // namespace Hovar
