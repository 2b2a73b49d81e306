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

RunnerHandle BuildRunner(std::string_view root, Vell::XmlReader& reader) {
  if (root == "Analysis") {
    return Vell::MakeShared<AnalysisRunner>(reader);
  }
  if (root == "Prediction") {
    return Vell::MakeShared<PredictionRunner>(reader);
  }
  if (root == "Validation") {
    return Vell::MakeShared<ValidationRunner>(reader);
  }
  if (root == "Batch") {
    return Vell::MakeShared<BatchRunner>(reader);
  }
  throw Vell::Exceptions::Exception("Invalid definition file");
}

}  // namespace

RunnerHandle DispatchDefinition(const Vell::String& path) {
  Vell::XmlReader reader(Vell::MakeShared<Vell::IO::FileStream>(path, Vell::IO::Mode::kReadText));
  Vell::XmlTag root = reader.ReadTag();
  while (root.kind == Vell::XmlTag::Kind::kDeclaration) {
    root = reader.ReadTag();
  }
  RunnerHandle runner = BuildRunner(root.name, reader);
  reader.ReadEndTag(root.name);
  return runner;
}

}  // namespace Hovar
