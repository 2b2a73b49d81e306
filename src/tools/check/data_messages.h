#pragma once

// What a check says about tables, the data file above all, and about the columns of an Analysis.

#include "messages/pattern.h"

namespace Hovar {

/// Faults that every table can have.
struct TableMessages {
  Messages::Pattern byteOrderMark{
      "The file begins with a byte order mark, which becomes part of its first field. Save it as "
      "UTF-8 without one."};
  Messages::Pattern carriageReturnInField{
      "The line ends with a carriage return and a line feed. End lines with line feeds alone: on "
      "Linux the last field of the line keeps the carriage return."};
  Messages::Pattern carriageReturnInName{
      "The line ends with a carriage return and a line feed. End lines with line feeds alone: on "
      "Linux the last name of the header keeps the carriage return."};
  Messages::Pattern nulByte{"The file holds a NUL byte. Save it as text without NUL bytes."};
  Messages::Pattern openQuote{
      "A double quote is opened here and never closed. Close it, or remove it."};
  Messages::Pattern otherError{"The program would end here in <error>."};
  Messages::Pattern quoteWithinField{
      "A double quote stands within a field that does not begin with one. Remove it, or put quotes "
      "round the whole field and write each one inside twice."};
  Messages::Pattern quotes{
      "A double quote breaks the rules of CSV near here. Put quotes round the whole field and "
      "write each one inside twice; a key must not hold a comma."};
};

inline constexpr TableMessages kTableMessages;

/// A field and what it holds, for the sentences about it.
struct FieldParts {
  Messages::Pattern field{"Field <number>"};
  Messages::Pattern holds{"holds <text>"};
  Messages::Pattern holdsInQuotes{"holds <text> in double quotes"};
  Messages::Pattern isEmpty{"is empty"};
  Messages::Pattern namedField{"Field <number> (<name>)"};
};

inline constexpr FieldParts kFieldParts;

/// The data file.
struct DataMessages {
  Messages::Pattern cellMayBeMissing{
      "<field> <holds>. Write 0 or 1, or leave it empty where it is missing."};
  Messages::Pattern cellMayNotBeMissing{"<field> <holds>. Write 0 or 1; it may not be missing."};
  Messages::Pattern cellOfZ{
      "<field> <holds>. Write 0 or 1; it may not be missing. If this is no Z column, correct the "
      "number of indicators."};
  Messages::Pattern cellReadAs{
      "<field> <holds> and is read as <number>. Write 0 or 1, and nothing else in the field."};
  Messages::Pattern cellsReadAs{
      "<field> <holds> and is read as <number>; <cells> read otherwise than written. Write 0 or "
      "1, and nothing else in the field."};
  Messages::Pattern contradiction{
      "<record> has Y = 0 and P = 1; P would be taken as 0 there. See whether 1 means \"present on "
      "admission\" in the indicators."};
  Messages::Pattern contradictions{
      "<records> have Y = 0 and P = 1; P would be taken as 0 there. See whether 1 means \"present "
      "on admission\" in the indicators."};
  Messages::Pattern emptyFile{"The data file is empty. Give it a header and records."};
  Messages::Pattern emptyLine{"The line is empty. Remove it."};
  Messages::Pattern fieldCount{
      "The line has <fields>, the header has <number>. Give every line the same number of fields."};
  Messages::Pattern headerEnd{"The header does not end with a line feed. End every line with one."};
  Messages::Pattern hospitalAgain{
      "The hospital <ID> comes again after another one. Sort the records by hospital."};
  Messages::Pattern hospitalComma{
      "The hospital ID <ID> holds a comma or a line feed: a Validation of these predictions would "
      "take values from wrong columns. Use IDs without commas for data that are to be validated."};
  Messages::Pattern hospitalEmpty{
      "The hospital ID is empty; the <records> without one would count as one hospital. Give each "
      "record its hospital."};
  Messages::Pattern hospitalsEmpty{
      "The hospital ID is empty; the <records> without one would count as <number> hospitals. Give "
      "each record its hospital."};
  Messages::Pattern hospitalSimilar{
      "The hospital <ID> counts as another one than <ID>, from which it differs in blanks, capital "
      "letters or leading zeros alone. Write the ID of a hospital in one way."};
  Messages::Pattern hospitalsSimilar{
      "The hospital <ID> counts as another one than <ID>, from which it differs in blanks, capital "
      "letters or leading zeros alone (<number> such hospitals in all). Write the ID of a hospital "
      "in one way."};
  Messages::Pattern indicators{
      "The lines of <file> have <fields>; behind key, hospital, Y and <indicators> that leaves "
      "<number> for Z and X, which come in pairs. Correct the number of indicators."};
  Messages::Pattern lastLineEnd{"The last line does not end with a line feed. Add one."};
  Messages::Pattern negativeIndicators{
      "The number of POA indicators is <number>. Write 0 or more."};
  Messages::Pattern otherCells{
      "<cells> read otherwise than written, the first one here. Write 0 or 1, and nothing else in "
      "the field."};
  Messages::Pattern pairs{
      "With <indicators> the first pair of Z and X is <pair>, and the names of the pairs do not go "
      "together. With <number> they do, as in <pair>. Correct the number of indicators."};
  Messages::Pattern separator{
      "<field> holds a comma or a line feed, which separates here in spite of the quotes. Remove "
      "it."};
};

inline constexpr DataMessages kDataMessages;

/// The columns of an Analysis.
struct ColumnMessages {
  Messages::Pattern elimination{
      "Column elimination would end in <error>. Choose another tolerance, or remove dependent "
      "variables from <file>."};
  Messages::Pattern noCompleteRecord{
      "No record without missing values has P = 0, and an Analysis fits such records. Fill in "
      "missing values, or check the POA indicators."};
  Messages::Pattern tolerance{
      "With this tolerance all columns count as dependent. Write a small number, such as 1e-9."};
  Messages::Pattern tooManyVariables{
      "The file has more variables than column elimination can count. Remove those that are not "
      "needed."};
  Messages::Pattern xzTable{
      "No record with a known X of <name> has Z = <number>, so its [X|Z] table cannot be made. "
      "Remove the variable, or merge it with another one."};
};

inline constexpr ColumnMessages kColumnMessages;

}  // namespace Hovar
