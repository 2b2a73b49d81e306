#include "tools/check/output_inputs.h"

#include <vector>

#include "tools/check/output_messages.h"
#include "tools/plan/file_nouns.h"
#include "tools/support/file_identity.h"
#include "tools/support/message.h"
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

}  // namespace

std::string Subject(const PlannedFile& output) {
  return std::string(NounOf(output.role)) + ' ' + Quoted(ShownPath(output.path));
}

bool WarnOfInputs(Findings& findings, const DefinitionFile& definition, const PlannedFile& output) {
  const bool isLog = &output == &definition.outputs.front();
  bool isInput = false;
  for (const PlannedFile& input : InputsOf(definition)) {
    const Place place = definition.PlaceOfValue(output.element);
    if (IsSameFile(output.path, input.path)) {
      isInput = true;
      if (isLog && input.path != definition.path) {
        findings.AddError(
            definition.path, place,
            Filled(kOutputMessages.emptiesInput, Subject(output), NounOf(input.role)));
      } else {
        findings.AddWarning(
            definition.path, place,
            Filled(kOutputMessages.overwritesInput, Subject(output), NounOf(input.role)),
            Weight::kFiles);
      }
    } else if (DiffersInCaseOnly(output.path, input.path)) {
      findings.AddWarning(definition.path, place,
                          Filled(kOutputMessages.caseOfInput, Subject(output), NounOf(input.role)),
                          Weight::kHarmless);
    }
  }
  return isInput;
}

}  // namespace Hovar
