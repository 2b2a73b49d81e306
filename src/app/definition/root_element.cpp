#include "app/definition/root_element.h"

#include "foundation/exceptions/exceptions.h"
#include "messages/error_texts.h"

namespace Hovar {

std::string_view NameOf(RunKind kind) noexcept {
  switch (kind) {
    case RunKind::kAnalysis:
      return "Analysis";
    case RunKind::kPrediction:
      return "Prediction";
    case RunKind::kValidation:
      return "Validation";
    case RunKind::kBatch:
      break;
  }
  return "Batch";
}

Vell::XmlTag ReadRootTag(Vell::XmlReader& reader) {
  Vell::XmlTag root = reader.ReadTag();
  while (root.kind == Vell::XmlTag::Kind::kDeclaration) {
    root = reader.ReadTag();
  }
  return root;
}

RunKind RunKindOf(const Vell::XmlTag& root) {
  for (const RunKind kind :
       {RunKind::kAnalysis, RunKind::kPrediction, RunKind::kValidation, RunKind::kBatch}) {
    if (root.name.View() == NameOf(kind)) {
      return kind;
    }
  }
  throw Vell::Exceptions::Exception(Messages::kErrors.invalidDefinition);
}

}  // namespace Hovar
