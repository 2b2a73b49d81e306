#pragma once

#include "messages/pattern.h"

namespace Hovar {

/// What the report tool says on standard error.
struct ReportMessages {
  Messages::Pattern cannotReadFolder{"hovar: cannot read the folder <folder>"};
  Messages::Pattern cannotReadPage{"hovar: cannot read the page <file>"};
  // What a report leaves out.
  Messages::Pattern backslash{
      "hovar: left out <path>: a name with a backslash cannot be part of a path"};
  Messages::Pattern earlierChain{
      "hovar: left out <path>: an earlier run with more chains wrote it"};
  Messages::Pattern forbidden{"hovar: left out <folder>: you may not read it"};
  Messages::Pattern link{"hovar: left out <path>: a symbolic link"};
  Messages::Pattern noFile{"hovar: left out <path>: no regular file"};
  Messages::Pattern tooDeep{"hovar: left out <path>: more than four folders deep"};
  Messages::Pattern pageBehindBackslash{
      "hovar: the page <file> is not found, because each '\\' in it separates folders; install the "
      "command in a folder without one in its path"};
  Messages::Pattern notThePage{"hovar: this is not the page of a report: <file>"};
};

inline constexpr ReportMessages kReportMessages;

}  // namespace Hovar
