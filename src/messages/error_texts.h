#pragma once

// Every error that can end the program, as it is written behind "Error: ". An exception takes its
// text from here; a tool that calls the program's readers recognises an error by the same constant.

#include <string_view>

#include "messages/pattern.h"

namespace Messages {

/// What each error line begins with.
inline constexpr std::string_view kErrorPrefix = "Error: ";

/// docs/messages.md gives the causes of each.
struct ErrorTexts {
  // Streams, numbers and memory.
  Pattern fileOpen{"File \"<path>\" can not be opened"};
  Pattern indexOutOfRange{"Index out of range"};
  Pattern integerOverflow{"Integer overflow"};
  Pattern invalidArgument{"Invalid argument"};
  Pattern invalidCsvFormat{"Invalid CSV format"};
  Pattern invalidFormat{"Invalid format"};  // of a number
  Pattern invalidInputString{"Invalid input string"};
  Pattern invalidOpenMode{"Invalid open mode"};
  Pattern ioException{"IO Exception"};
  Pattern outOfMemory{"Out of memory"};
  Pattern unexpectedEnd{"Unexpected end of stream"};
  // The command line and the definition.
  Pattern attributeNotFound{"Attribute not found in XML tag"};
  Pattern duplicateAttributes{"Duplicate attributes not allowed in XML tag"};
  Pattern invalidBatch{"Invalid XML simulation"};
  Pattern invalidDefinition{"Invalid definition file"};
  Pattern invalidFlag{"Invalid value in \"UseGeneralizedEstimatingEquations\" tag"};
  Pattern invalidSeed{"Invalid RandomGenerator XML input"};
  Pattern mismatch{"Invalid input in file \"<file>\": expected \"<text>\", current \"<text>\""};
  Pattern startupDirectory{"Cannot determine startup directory"};
  Pattern wrongArgumentCount{"Wrong number of parameters in command line"};
  // The data file and the coefficient file.
  Pattern dataNotGrouped{"Data must be grouped by hospital ID"};
  Pattern dataWrongFormat{"Data wrong format"};
  Pattern invalidInput{"Invalid input"};  // a cell other than 0 and 1
  Pattern variableFieldCount{"Variable number of fields"};
  Pattern variablesMismatch{"Variables mismatch"};
  Pattern wrongIndicatorCount{"Wrong number of POA indicators in definition file"};
  // The fits and the linear algebra.
  Pattern dependentColumns{"Error in eliminating dependent columns"};
  Pattern negativeSingularValues{"Negative singular values in singular value decomposition"};
  Pattern notPositive{"Non positive matrix in Cholesky decomposition"};
  Pattern rankNotMaximal{"Rank is not maximal"};
  Pattern tooManyIterations{"Too many iterations in singular value decomposition"};
  Pattern xzTable{"Cannot compute XZ table"};
};

inline constexpr ErrorTexts kErrors;

}  // namespace Messages
