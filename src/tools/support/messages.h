#pragma once

#include "messages/pattern.h"

namespace Hovar {

/// What more than one tool says on standard error.
struct ToolMessages {
  Messages::Pattern cannotPrint{"hovar: cannot write to standard output"};
  Messages::Pattern cannotRead{"hovar: cannot read <file>"};
  Messages::Pattern cannotWrite{"hovar: cannot write <file>"};
  Messages::Pattern noInstallation{
      "hovar: cannot find its own installation: the system does not say where this command is, "
      "which takes /proc on Linux"};
  Messages::Pattern notRegular{"hovar: <file> is <kind>; a regular file is required"};
  Messages::Pattern cannotWriteBecause{"hovar: cannot write <file>: <reason>"};
  Messages::Pattern wouldReplacePage{
      "hovar: <file> is no report of hovar, so it is not replaced; give the report another name, "
      "or "
      "one that ends with .html"};
  Messages::Pattern wouldReplaceRecord{
      "hovar: <file> is no record of a run, so it is not replaced; give the record another name, "
      "or "
      "one that ends with .json"};
};

/// Why a file could not be written.
struct WriteReasons {
  Messages::Pattern diskFull{"the disk is full"};
  Messages::Pattern changed{"something else was written there meanwhile"};
  Messages::Pattern fileOfRun{"it is a file of the run itself"};
  Messages::Pattern isFolder{"it is a folder"};
  Messages::Pattern isNoFile{"it is no regular file"};
  Messages::Pattern nobodyReads{"nobody reads the pipe"};
  Messages::Pattern noFolder{"its folder does not exist"};
  Messages::Pattern notAllowed{"you may not write there"};
  Messages::Pattern sizeLimit{"it would exceed the limit on the size of files"};
  Messages::Pattern unknown{"the system reports an error"};
};

inline constexpr WriteReasons kWriteReasons;

inline constexpr ToolMessages kToolMessages;

}  // namespace Hovar
