#pragma once

#include "messages/pattern.h"

namespace Hovar {

/// What the command itself says on standard error, before or without a tool.
struct LauncherMessages {
  Messages::Pattern collectAndJobs{"hovar: --collect does not go with --jobs"};
  Messages::Pattern definitionMissing{"hovar: the DEFINITION is missing"};
  Messages::Pattern endedByFault{"hovar: ended by a fault of its own"};
  Messages::Pattern givenTwice{"hovar: <option> is given twice"};
  Messages::Pattern moreDefinitions{"hovar: more than one DEFINITION is given"};
  Messages::Pattern needs{"hovar: <option> needs a <value>"};
  Messages::Pattern needsFolder{"hovar: --report needs a FOLDER"};
  Messages::Pattern needsNumber{"hovar: <option> needs a number from 1 to <number>"};
  Messages::Pattern needsPath{
      "hovar: <option> needs a <value>, and <word> looks like an option; write ./<word> if it is a "
      "name"};
  Messages::Pattern noOption{"hovar: there is no option <option>"};
  Messages::Pattern notWithChains{"hovar: <option> does not go with --chains"};
  Messages::Pattern notWithCheck{"hovar: <option> does not go with --check"};
  Messages::Pattern notWithReport{"hovar: <option> does not go with --report"};
  Messages::Pattern notWithRun{"hovar: <option> does not go with a single run"};
  Messages::Pattern onlyAbove{"hovar: --only needs a number from 1 to the number of chains"};
  Messages::Pattern onlyAndOthers{"hovar: --only does not go with --jobs or --collect"};
  Messages::Pattern outOfMemory{"hovar: out of memory"};
  Messages::Pattern seeHelp{"hovar: see hovar --help"};
  Messages::Pattern takesNoValue{"hovar: <option> takes no value"};
};

inline constexpr LauncherMessages kLauncherMessages;

}  // namespace Hovar
