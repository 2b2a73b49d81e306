#include "tools/check/output_inputs.h"

#include <vector>

#include "tools/plan/file_nouns.h"
#include "tools/support/paths.h"
#include "tools/support/shown_path.h"

namespace Hovar {
namespace {

/// What a run reads, its definition among it.
std::vector<PlannedFile> InputsOf(const DefinitionFile& definition) {
  std::vector<PlannedFile> inputs;
  for (const PlannedFile& input : definition.inputs) {
    if (input.role == FileRole::kData) {
      inputs.push_back(input);
      inputs.push_back({input.element, FileRole::kDefinition, definition.path});
    } else if (!input.path.empty()) {
      inputs.push_back(input);
    }
  }
  return inputs;
}

std::string Noun(const PlannedFile& file) { return std::string(NounOf(file.role)); }

}  // namespace

std::string Subject(const PlannedFile& output) {
  return "The " + Noun(output) + ' ' + Quoted(ShownPath(output.path));
}

bool WarnOfInputs(Findings& findings, const DefinitionFile& definition, const PlannedFile& output) {
  const bool isLog = &output == &definition.outputs.front();
  bool isInput = false;
  for (const PlannedFile& input : InputsOf(definition)) {
    const Place place = definition.PlaceOfValue(output.element);
    if (IsSameFile(output.path, input.path)) {
      isInput = true;
      const std::string text = Subject(output) + " is the " + Noun(input) + " of this run";
      if (isLog && input.path != definition.path) {
        findings.AddError(definition.path, place,
                          text + ", which is emptied before it is read. Give it another name.");
      } else {
        findings.AddWarning(definition.path, place,
                            text + ", which would be overwritten. Give it another name.",
                            Weight::kFiles);
      }
    } else if (DiffersInCaseOnly(output.path, input.path)) {
      findings.AddWarning(definition.path, place,
                          Subject(output) + " differs from the " + Noun(input) +
                              " in capital letters alone: on Windows they are one file. Give it "
                              "another name.",
                          Weight::kHarmless);
    }
  }
  return isInput;
}

}  // namespace Hovar
