#include "app/dispatch.h"

#include <string_view>

#include "app/analysis_runner.h"
#include "app/batch_runner.h"
#include "app/prediction_runner.h"
#include "app/validation_runner.h"
#include "foundation/exceptions/exceptions.h"
#include "foundation/io/file_stream.h"
#include "foundation/xml/xml_reader.h"

namespace Hovar {
namespace {

RunnerHandle BuildRunner(RunKind kind, Vell::XmlReader& reader) {
  switch (kind) {
    case RunKind::kAnalysis:
      return Vell::MakeShared<AnalysisRunner>(reader);
    case RunKind::kPrediction:
      return Vell::MakeShared<PredictionRunner>(reader);
    case RunKind::kValidation:
      return Vell::MakeShared<ValidationRunner>(reader);
    case RunKind::kBatch:
      break;
  }
  return Vell::MakeShared<BatchRunner>(reader);
}

}  // namespace

Vell::XmlTag ReadRootTag(Vell::XmlReader& reader) {
  Vell::XmlTag root = reader.ReadTag();
  while (root.kind == Vell::XmlTag::Kind::kDeclaration) {
    root = reader.ReadTag();
  }
  return root;
}

RunKind RunKindOf(const Vell::XmlTag& root) {
  const std::string_view name = root.name;
  if (name == "Analysis") {
    return RunKind::kAnalysis;
  }
  if (name == "Prediction") {
    return RunKind::kPrediction;
  }
  if (name == "Validation") {
    return RunKind::kValidation;
  }
  if (name == "Batch") {
    return RunKind::kBatch;
  }
  throw Vell::Exceptions::Exception("Invalid definition file");
}

RunnerHandle DispatchDefinition(const Vell::String& path) {
  Vell::XmlReader reader(Vell::MakeShared<Vell::IO::FileStream>(path, Vell::IO::Mode::kReadText));
  const Vell::XmlTag root = ReadRootTag(reader);
  RunnerHandle runner = BuildRunner(RunKindOf(root), reader);
  reader.ReadEndTag(root.name);
  return runner;
}

}  // namespace Hovar
