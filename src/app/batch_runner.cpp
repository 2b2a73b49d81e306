#include "app/batch_runner.h"

#include "app/dispatch.h"

namespace Hovar {

BatchRunner::BatchRunner(Vell::XmlReader& reader) : definition_(ReadBatchDefinition(reader)) {}

void BatchRunner::Run() {
  for (const Vell::String& path : definition_) {
    DispatchDefinition(path)->Run();
  }
}

}  // namespace Hovar
