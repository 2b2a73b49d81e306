#pragma once

#include "messages/pattern.h"

namespace Hovar {

/// What a watched run says on standard error.
struct RunMessages {
  Messages::Pattern cannotMoveAside{"hovar: cannot move <file> aside"};
  Messages::Pattern cannotReadLines{"hovar: cannot read what the program writes"};
  Messages::Pattern cannotStart{"hovar: cannot start <file>"};
  Messages::Pattern done{"hovar: done, <warnings>; output in <file>"};
  Messages::Pattern endedWithStatus{"hovar: the program ended with status <status>"};
  Messages::Pattern inputChanged{
      "hovar: <file> changed during the run; the record has its hash from before"};
  Messages::Pattern kept{"hovar: kept <file> as <file>"};
  Messages::Pattern linesAreOfRun{
      "hovar: the program's lines cannot be written to <file>, a file of the run itself"};
  Messages::Pattern notDone{"hovar: not done, <warnings>; output in <file>"};
  Messages::Pattern outlivesCommand{
      "hovar: the system does not end the program with this command; if the command is killed, end "
      "the program too"};
  Messages::Pattern recordFailed{"hovar: the record could not be written: <file>: <reason>"};
  Messages::Pattern recordIsOfRun{
      "hovar: the record cannot be written to <file>, a file of the run itself"};
  Messages::Pattern recordKept{
      "hovar: <file> could not be replaced: <reason>; the record is in <file>"};
  Messages::Pattern runCompleteRecordFailed{
      "hovar: the run is complete; its record could not be written: <file>: <reason>"};
  Messages::Pattern wouldMoveInput{
      "hovar: --keep would move <file> aside, which is an input too; nothing was run"};
};

inline constexpr RunMessages kRunMessages;

}  // namespace Hovar
