#include "app/batch_runner.h"

#include "app/dispatch.h"
#include "foundation/exceptions/exceptions.h"
#include "foundation/io/platform/stack.h"
#include "messages/error_texts.h"

namespace Hovar {

BatchRunner::BatchRunner(Vell::XmlReader& reader) : definition_(ReadBatchDefinition(reader)) {}

void BatchRunner::Run() {
  for (const Vell::String& path : definition_) {
    // Nothing limits the depth of batches but the memory that nesting takes, which is the stack's.
    if (Vell::IO::Platform::StackIsNearlyUsed()) {
      throw Vell::Exceptions::OutOfMemoryException(Messages::kErrors.outOfMemory);
    }
    DispatchDefinition(path)->Run();
  }
}

}  // namespace Hovar
