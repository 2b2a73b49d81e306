#pragma once

// What a check says about the files that an Analysis or a Prediction wrote.

#include "messages/pattern.h"

namespace Hovar {

struct ModelMessages {
  Messages::Pattern complete{"The file has no complete line. Use it as the program wrote it."};
  Messages::Pattern fewerLines{
      "The file has <lines> for the <records> of <file>. Use the predictions of the same data; "
      "each line ends with a line feed."};
  Messages::Pattern fieldCount{
      "The line has <fields> of <number>. Use the file as the program wrote it."};
  Messages::Pattern interceptMissing{
      "The row of the intercept is missing, so all models would predict without an intercept, and "
      "missing values of <name> would count as 0. Use the file as the program wrote it."};
  Messages::Pattern lastLineEnd{
      "The last line does not end with a line feed, so its variable is lost. Add a line feed."};
  Messages::Pattern moreLines{
      "The file has <lines> for the <records> of <file>; the others are not used. Use the "
      "predictions of the same data."};
  Messages::Pattern noLine{
      "No complete line stands behind the header, so all predictions would be one half. Use the "
      "file as the program wrote it."};
  Messages::Pattern numberDue{
      "<field> <holds> where a number is due. Use the file as the program wrote it."};
  Messages::Pattern numberReadAs{
      "<field> <holds> and is read as <number>. Use the file as the program wrote it."};
  Messages::Pattern numbersReadAs{
      "<field> <holds> and is read as <number>; <cells> read otherwise than written. Use the file "
      "as the program wrote it."};
  Messages::Pattern otherIntercept{
      "The coefficients of <name> would serve for <name> of the data: variables are matched by "
      "position. Use the file as the program wrote it."};
  Messages::Pattern otherNumbers{
      "<cells> read otherwise than written, the first one here. Use the file as the program wrote "
      "it."};
  Messages::Pattern otherOrder{
      "The coefficients of <name> would serve for <name> of the data: variables are matched by "
      "position. Bring the columns of the data into the order of the coefficient file."};
  Messages::Pattern otherRecord{
      "The line is that of record <key> of hospital <ID>, and would serve for record <key> of "
      "hospital <ID> of the data: lines and records are matched by position. Use the predictions "
      "of the same data."};
  Messages::Pattern quotedComma{
      "A key or hospital ID holds a comma, which separates here in spite of the quotes: values "
      "would be taken from wrong columns. Use IDs without commas."};
  Messages::Pattern quotedLineFeed{
      "A key or hospital ID holds a line feed, which separates here in spite of the quotes: values "
      "would be taken from wrong columns. Use IDs without line feeds."};
  Messages::Pattern variables{
      "The data have <variables> of the <number> in the coefficient file. Use the coefficient file "
      "of an Analysis of the same variables."};
  Messages::Pattern variablesMissing{
      "The data have <variables> of the <number> in the coefficient file; missing: <names>. Use "
      "the coefficient file of an Analysis of the same variables."};
  Messages::Pattern wrongLine{
      "The line has <fields> instead of <number>: values behind it would be taken from wrong "
      "columns. Use the file as the program wrote it."};
  Messages::Pattern wrongLines{
      "The line has <fields> instead of <number> (<number> such lines in all): values behind it "
      "would be taken from wrong columns. Use the file as the program wrote it."};
};

inline constexpr ModelMessages kModelMessages;

}  // namespace Hovar
