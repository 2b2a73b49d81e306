#include "tools/plan/definition_file.h"

#include <algorithm>
#include <utility>

#include "app/definition/element_table.h"
#include "foundation/io/file_stream.h"
#include "messages/error_texts.h"
#include "tools/support/error_capture.h"
#include "tools/support/files.h"
#include "tools/support/inputs.h"
#include "tools/support/memory_stream.h"

namespace Hovar {
namespace {

using Vell::XmlReader;
using Vell::XmlTag;
using Vell::IO::FileStream;

std::string Text(const Vell::String& text) { return std::string(text.View()); }

// Each takes over the numbers of a definition; its files are found by their elements.

template <typename Definition>
void Store(DefinitionFile& file, const Definition& definition) {
  file.poaCount = definition.numberOfPoaIndicators;
  file.mcmc = definition.mcmc;
}

/// Reads what stands between the root's tags.
void ReadContent(DefinitionFile& file, XmlReader& reader) {
  switch (file.kind) {
    case RunKind::kAnalysis:
      file.analysis = ReadAnalysisDefinition(reader);
      Store(file, file.analysis);
      break;
    case RunKind::kPrediction:
      Store(file, ReadPredictionDefinition(reader));
      break;
    case RunKind::kValidation:
      Store(file, ReadValidationDefinition(reader));
      break;
    case RunKind::kBatch:
      ReadBatchDefinition(reader);
      break;
  }
}

std::string TypeOf(const XmlTag& tag) {
  for (const Vell::XmlAttribute& attribute : tag.attributes) {
    if (attribute.name.View() == "xsi:type") {
      return Text(attribute.value);
    }
  }
  return {};
}

/// Walks through a definition that follows the grammar and notes where its values stand.
void AddValues(DefinitionFile& file, XmlReader& reader) {
  std::vector<std::string> groups;
  for (ReadRootTag(reader);;) {
    const XmlTag tag = reader.ReadTag();
    if (tag.kind == XmlTag::Kind::kEnd) {
      if (groups.empty()) {
        return;
      }
      groups.pop_back();
      continue;
    }
    const std::string path = (groups.empty() ? "" : groups.back() + '/') + Text(tag.name);
    const std::int64_t offset = reader.Source().Tell();
    const std::string text = tag.isEmpty ? std::string() : Text(reader.ReadText());
    if (const ElementEntry* const entry = FindElement(file.kind, path)) {
      file.values.push_back({entry->element, offset, text, TypeOf(tag)});
    }
    if (!tag.isEmpty) {
      groups.push_back(path);
    }
  }
}

/// Notes a file or folder that an element names.
void AddFile(DefinitionFile& file, const ElementEntry& entry, const std::string& text) {
  const auto addOutput = [&](FileRole role, const std::string& folder, std::string_view name) {
    file.outputs.push_back({entry.element, role, JoinPath(folder, name)});
  };
  switch (entry.role) {
    case FileRole::kNone:
      return;
    case FileRole::kDefinition:
      file.simulations.push_back(text);
      return;
    case FileRole::kOutputFolder:
      file.folder = text;
      return;
    case FileRole::kChainFolder:
      file.chainFolder = JoinPath(file.folder, text);
      addOutput(FileRole::kChainSummary, file.chainFolder, "Summary.csv");
      addOutput(FileRole::kChain, file.chainFolder, "Chain.csv");
      return;
    default:
      break;
  }
  if (entry.IsOutput()) {
    addOutput(entry.role, file.folder, text);
  } else {
    file.inputs.push_back({entry.element, entry.role, text});
  }
}

void AddFiles(DefinitionFile& file) {
  for (const DefinedValue& value : file.values) {
    AddFile(file, EntryOf(value.element), value.text);
  }
  // Roles come in the order in which a run opens what it writes.
  std::stable_sort(file.outputs.begin(), file.outputs.end(),
                   [](const PlannedFile& a, const PlannedFile& b) { return a.role < b.role; });
  file.data = file.TextOf(Element::kData);
  file.coefficients = file.TextOf(Element::kInputRegressionCoefficients);
  file.individualPredictions = file.TextOf(Element::kInputIndividualPredictions);
}

void ReadGrammar(DefinitionFile& file, XmlReader& reader) {
  const XmlTag root = ReadRootTag(reader);
  file.kind = RunKindOf(root);
  ReadContent(file, reader);
  reader.ReadEndTag(root.name);
}

/// Calls `read` with a reader of the text. Result: the text of the error that it ended in, or
/// nothing; `stop` is then the offset of the byte that would have been read next.
template <typename Read>
std::optional<std::string> ErrorOfReading(const TextSource& text, std::int64_t& stop, Read read) {
  const auto readFrom = [&](const auto& stream, auto position) {
    XmlReader reader(stream);
    try {
      read(reader);
    } catch (const Vell::Exceptions::Exception&) {
      stop = position();
      throw;
    }
  };
  return ErrorOf([&] {
    if (text.Bytes().has_value()) {
      const auto stream = Vell::MakeShared<MemoryStream>(*text.Bytes(), text.Path());
      readFrom(stream, [&] { return stream->Tell(); });
    } else {
      const auto stream =
          Vell::MakeShared<FileStream>(Vell::String(std::string_view(text.Path())), kReadInput);
      readFrom(stream, [&] { return stream->TellOr(0); });
    }
  });
}

}  // namespace

const DefinedValue* DefinitionFile::Find(Element element) const {
  const auto found = std::find_if(values.begin(), values.end(), [element](const DefinedValue& v) {
    return v.element == element;
  });
  return found != values.end() ? &*found : nullptr;
}

std::string DefinitionFile::TextOf(Element element) const {
  const DefinedValue* const value = Find(element);
  return value != nullptr ? value->text : std::string();
}

Place DefinitionFile::PlaceOfValue(Element element) const {
  const DefinedValue* const value = Find(element);
  return value != nullptr ? PlaceOfValue(*value) : Place();
}

Place DefinitionFile::PlaceOfValue(const DefinedValue& value) const {
  return PlaceOf(text, value.offset);
}

Place DefinitionFile::PlaceOfTag(Element element) const {
  const DefinedValue* const value = Find(element);
  return value != nullptr ? PlaceOf(text, TagBefore(text, value->offset)) : Place();
}

DefinitionReading ReadDefinition(TextSource text) {
  DefinitionReading reading;
  DefinitionFile definition;
  definition.path = text.Path();
  std::optional<std::string> error = ErrorOfReading(
      text, reading.stop, [&](XmlReader& reader) { ReadGrammar(definition, reader); });
  if (!error.has_value()) {
    error = ErrorOfReading(text, reading.stop,
                           [&](XmlReader& reader) { AddValues(definition, reader); });
  }
  if (!error.has_value()) {
    AddFiles(definition);
    if (definition.outputs.empty() && definition.kind != RunKind::kBatch) {
      error = Messages::kErrors.ioException
                  .Text();  // a file, without bytes, that has changed between the two looks
    }
  }
  if (error.has_value()) {
    reading.error = *error;
    reading.text = std::move(text);
    return reading;
  }
  definition.text = std::move(text);
  reading.definition = std::move(definition);
  return reading;
}

DefinitionReading ReadDefinitionFile(const std::string& path) {
  return ReadDefinition({path, ReadSmallFile(path)});
}

}  // namespace Hovar
