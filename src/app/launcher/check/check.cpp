#include "app/launcher/check/check.h"

#include <new>

#include "app/launcher/message.h"
#include "app/launcher/program_start.h"
#include "app/launcher/silent_reading.h"
#include "foundation/exceptions/exceptions.h"

namespace Hovar {

int RunCheck(const std::string& definition, bool isStrict, Describe describe) {
  DetachUnattendedInput();  // as for the run
  RunCheckup checkup(describe);
  try {
    const SilentWriters silence;  // not all of the check is within a reader
    checkup.Check(definition);
  } catch (const Vell::Exceptions::OutOfMemoryException&) {
    throw std::bad_alloc();  // the exception's own line was not shown
  }
  const Findings& found = checkup.Found();
  const bool isPrinted = Print(found.Lines() + checkup.Description() + found.Summary());
  const bool isGood = found.Errors() == 0 && (!isStrict || found.Warnings() == 0);
  return isPrinted && isGood ? 0 : 1;
}

}  // namespace Hovar
