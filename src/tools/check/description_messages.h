#pragma once

// The lines in which a check describes a data file.

#include "messages/pattern.h"

namespace Hovar {

struct DescriptionLines {
  Messages::Pattern completeRecords{"complete records: <number> (<share>), with P = 0: <number>"};
  Messages::Pattern contradictions{
      "Y = 0 and P = 1, P taken as 0: <number> (<share> of the records with Y = 0 and known P)"};
  Messages::Pattern emptyClasses{"empty [X|Z] classes:"};
  Messages::Pattern emptyWithoutZ{"<variable>: no record with Z = 0 and a known X"};
  Messages::Pattern emptyWithZ{"<variable>: no record with Z = 1 and a known X"};
  Messages::Pattern hiddenP{"P missing although an indicator is 1: <number>"};
  Messages::Pattern hospital{"<ID>, <records>"};
  Messages::Pattern incompleteHospitals{"hospitals without a complete record: <number>"};
  Messages::Pattern moreHospitals{"and <number>"};
  Messages::Pattern noEmptyClasses{"empty [X|Z] classes: none"};
  Messages::Pattern nothingRemoved{"removed by column elimination: none"};
  Messages::Pattern outcomes{"Y = 1: <number> (<share>)"};
  Messages::Pattern presentOnAdmission{
      "P = 1: <number> (<share> of the known), missing: <number> (<share>)"};
  Messages::Pattern removed{"removed by column elimination:"};
  Messages::Pattern removedForDependentX{
      "<variable>: X is 0, or depends on other variables, in the complete records with P = 0"};
  Messages::Pattern removedForDependentZ{"<variable>: Z depends on other variables"};
  Messages::Pattern removedForZeroX{"<variable>: X is 0 in all complete records"};
  Messages::Pattern removedForZeroZ{"<variable>: Z is 0 everywhere"};
  Messages::Pattern size{"<file>: <records>, <hospitals>, <variables>, <indicators>"};
  Messages::Pattern variable{"<variable>: <share>; <share>, <share>, <share>; <share>"};
  Messages::Pattern variables{
      "variables (Z, X): Z = 1; X = 1 of the known, where Z = 0, where Z = 1; X missing"};
};

inline constexpr DescriptionLines kDescriptionLines;

}  // namespace Hovar
