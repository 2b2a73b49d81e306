#include "tools/check/check.h"

#include <new>

#include "foundation/exceptions/exceptions.h"
#include "foundation/exit_status.h"
#include "tools/support/error_capture.h"
#include "tools/support/message.h"
#include "tools/support/messages.h"
#include "tools/support/shown_path.h"
#include "tools/support/text_places.h"
#include "tools/support/unattended_input.h"

namespace Hovar {

int RunCheck(const CheckSettings& settings) {
  DetachUnattendedInput();  // as for the run
  DefinitionChecker checker(settings.describe);
  const Findings& found = checker.Found();
  try {
    const CapturedWriters silence;  // not all of the check is within a reader
    checker.Check(settings.definition);
  } catch (const Vell::Exceptions::OutOfMemoryException&) {
    throw std::bad_alloc();  // the exception's own line was not shown
  } catch (const UnreadableFile& file) {
    Print(found.Lines());  // there may be more to find, so they are not counted
    Say(kToolMessages.cannotRead, PastablePath(file.Path()));
    return kFailure;
  }
  const bool isPrinted = Print(found.Lines() + checker.Description() + found.Summary());
  const bool isGood = found.Errors() == 0 && (!settings.isStrict || found.Warnings() == 0);
  return isPrinted && isGood ? kSuccess : kFailure;
}

}  // namespace Hovar
