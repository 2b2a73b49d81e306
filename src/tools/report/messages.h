#pragma once

#include "messages/pattern.h"

namespace Hovar {

/// What the report tool says on standard error.
struct ReportMessages {
  Messages::Pattern cannotReadFolder{"hovar: cannot read the folder <folder>"};
  Messages::Pattern cannotReadPage{"hovar: cannot read the page <file>"};
  Messages::Pattern notThePage{"hovar: this is not the page of a report: <file>"};
};

inline constexpr ReportMessages kReportMessages;

}  // namespace Hovar
