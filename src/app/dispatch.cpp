#include "app/dispatch.h"

#include "app/analysis_runner.h"
#include "app/batch_runner.h"
#include "app/definition/root_element.h"
#include "app/prediction_runner.h"
#include "app/validation_runner.h"
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

RunnerHandle DispatchDefinition(const Vell::String& path) {
  Vell::XmlReader reader(Vell::MakeShared<Vell::IO::FileStream>(path, Vell::IO::Mode::kReadText));
  const Vell::XmlTag root = ReadRootTag(reader);
  RunnerHandle runner = BuildRunner(RunKindOf(root), reader);
  reader.ReadEndTag(root.name);
  return runner;
}

}  // namespace Hovar
