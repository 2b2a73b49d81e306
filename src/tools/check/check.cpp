#include "tools/check/check.h"

#include <new>

#include "foundation/exceptions/exceptions.h"
#include "tools/support/error_capture.h"
#include "tools/support/message.h"
#include "tools/support/unattended_input.h"

namespace Hovar {

int RunCheck(const CheckSettings& settings) {
  DetachUnattendedInput();  // as for the run
  DefinitionChecker checker(settings.describe);
  try {
    const CapturedWriters silence;  // not all of the check is within a reader
    checker.Check(settings.definition);
  } catch (const Vell::Exceptions::OutOfMemoryException&) {
    throw std::bad_alloc();  // the exception's own line was not shown
  }
  const Findings& found = checker.Found();
  const bool isPrinted = Print(found.Lines() + checker.Description() + found.Summary());
  const bool isGood = found.Errors() == 0 && (!settings.isStrict || found.Warnings() == 0);
  return isPrinted && isGood ? 0 : 1;
}

}  // namespace Hovar
