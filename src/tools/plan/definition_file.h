#pragma once

// A definition file as the command's tools look at it, read by the program's own reader: what the
// run reads and writes, and where in the file each value stands.

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "app/definition/definitions.h"
#include "app/definition/elements.h"
#include "app/definition/root_element.h"
#include "tools/support/text_places.h"

namespace Hovar {

/// An element and what stands behind its start tag, up to the next tag.
struct DefinedValue {
  Element element = Element::kInput;
  std::int64_t offset = 0;  // of the text
  std::string text;         // as it stands
  std::string type;         // the attribute xsi:type, or empty
};

/// A file that a run reads or writes.
struct PlannedFile {
  Element element = Element::kInput;  // that names it, or the folder that it lies in
  FileRole role = FileRole::kNone;
  std::string path;  // as the program opens it
};

/// A definition file that follows the grammar, as one record for all kinds of run.
struct DefinitionFile {
  std::string path;  // of the file, as written
  TextSource text;   // the bytes from which all the rest was read
  RunKind kind = RunKind::kBatch;
  std::vector<DefinedValue> values;  // of all elements, in file order

  // Single runs. Texts that the kind of run does not have are empty.
  std::string data;
  std::int32_t poaCount = 0;
  std::string coefficients;           // read
  std::string individualPredictions;  // read
  std::string folder;
  std::string chainFolder;           // of an Analysis, within the output folder
  std::vector<PlannedFile> inputs;   // the data file first
  std::vector<PlannedFile> outputs;  // in the order in which they are opened, the log first
  McmcSettings mcmc;
  AnalysisDefinition analysis;

  // Batches.
  std::vector<std::string> simulations;

  /// The first such element, or null where there is none.
  const DefinedValue* Find(Element element) const;
  /// The text of the first such element, or an empty one.
  std::string TextOf(Element element) const;
  /// The place of its text, or the definition's start.
  Place PlaceOfValue(Element element) const;
  Place PlaceOfValue(const DefinedValue& value) const;
  /// The place of the element's tag.
  Place PlaceOfTag(Element element) const;
};

/// What reading a definition file gave.
struct DefinitionReading {
  std::optional<DefinitionFile> definition;
  // Without a definition: the text of the error that the program would end in, the offset of the
  // byte that it would have read next, and the file.
  std::string error;
  std::int64_t stop = 0;
  TextSource text;
};

/// Reads a definition as the program does, without a word on the standard streams. A text without
/// bytes is the file itself: one that no tool keeps in memory (ReadSmallFile), such as a pipe.
/// Errors: OutOfMemoryException.
DefinitionReading ReadDefinition(TextSource text);

/// Reads a definition file, once if it can be kept in memory.
/// Errors: OutOfMemoryException.
DefinitionReading ReadDefinitionFile(const std::string& path);

}  // namespace Hovar
