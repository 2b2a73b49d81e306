#pragma once

// A definition file as the launcher's tools look at it, read by the program's own reader: what the
// run reads and writes, and where in the file each value stands.

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "app/definition/definitions.h"
#include "app/definition/root_element.h"
#include "tools/support/text_places.h"

namespace Hovar {

/// An element and what stands behind its start tag, up to the next tag.
struct DefinedValue {
  std::string element;      // below the root: "Output/LogFile"
  std::int64_t offset = 0;  // of the text
  std::string text;         // as it stands
  std::string type;         // the attribute xsi:type, or empty
};

/// What a run writes: its elements name it, its path is what the program opens.
struct PlannedOutput {
  std::string element;  // that names it
  std::string what;     // "log file"
  std::string path;
};

/// A definition file that follows the grammar, as one record for all kinds of run.
struct DefinitionFile {
  std::string path;  // of the file, as written
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

/// What reading a definition file gave.
struct DefinitionReading {
  std::optional<DefinitionFile> definition;
  // Without a definition: the text of the error that the program would end in, and the offset of
  // the byte that it would have read next.
  std::string error;
  std::int64_t stop = 0;
};

/// Reads a definition file as the program does, without a word on the standard streams.
/// Errors: OutOfMemoryException.
DefinitionReading ReadDefinitionFile(const std::string& path);

}  // namespace Hovar
