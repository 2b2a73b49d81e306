#pragma once

// What a check says about a definition: its grammar, its values, and the files that it names as
// inputs.

#include "messages/pattern.h"

namespace Hovar {

/// Where the grammar is broken.
struct GrammarMessages {
  Messages::Pattern attributeTwice{"An attribute is given twice. Remove one of the two."};
  Messages::Pattern attributeWithoutQuotes{
      "An attribute's value does not stand in double quotes. Write name=\"value\"."};
  Messages::Pattern attributeWithoutValue{
      "An attribute of this tag has no value. Write name=\"value\"."};
  Messages::Pattern byteOrderMark{
      "The file begins with a byte order mark. Save it as UTF-8 without one."};
  Messages::Pattern declarationBlank{
      "A blank is required between the name of a declaration and ?>. Add one."};
  Messages::Pattern declarationEnd{"The declaration does not end with ?>. Close it."};
  Messages::Pattern dueBeforeEnd{"<tag> is due here, but the file ends. Complete the file."};
  Messages::Pattern dueCloseFirst{
      "<tag> is due here, but <tag> stands here. Close the element before the next one begins."};
  Messages::Pattern dueInOrder{
      "<tag> is due here, but <tag> stands here. Every element is required, in a fixed order and "
      "nothing between."};
  Messages::Pattern dueLetterByLetter{
      "<tag> is due here, but <tag> stands here. Names are compared letter by letter, capitals "
      "included."};
  Messages::Pattern emptyElement{
      "The element <tag> is empty. Write a start tag, its content and an end tag."};
  Messages::Pattern endsEarly{"The file ends before the definition does. Complete it."};
  Messages::Pattern flag{
      "The flag is <value>. Write true or false, in small letters and without blanks."};
  Messages::Pattern listEntry{
      "<tag> stands in the list of a batch. Write Simulation elements, each with the path of a "
      "definition file."};
  Messages::Pattern notANumber{
      "The value <value> of <tag> is no number. Write a number with a decimal point, such as "
      "1e-8."};
  Messages::Pattern notAWholeNumber{
      "The value <value> of <tag> is no whole number. Write digits alone."};
  Messages::Pattern notClosed{"The element <tag> is not closed before <tag>. Write its end tag."};
  Messages::Pattern notXml{
      "The file does not begin with a tag. Name a definition file, which is XML."};
  Messages::Pattern nulByte{
      "The file holds a NUL byte. Save it as UTF-8 or another text without NUL bytes."};
  Messages::Pattern otherError{"The program would end in <error>."};
  Messages::Pattern root{
      "The root element is <tag>. Write Analysis, Prediction, Validation or Batch."};
  Messages::Pattern seed{
      "A Seed is due here: <tag> with two elements, or <tag>. Write one of the two as it stands "
      "here."};
  Messages::Pattern tagGoesOn{
      "The tag of <tag> goes on behind its name. Remove what stands there: only the root and the "
      "outer Seed have attributes."};
  Messages::Pattern textBetweenTags{
      "Text stands where a tag is due. Remove it: only blanks and comments may stand between "
      "tags."};
};

inline constexpr GrammarMessages kGrammarMessages;

/// What would surprise in values that the program takes.
struct ValueMessages {
  Messages::Pattern carriageReturns{
      "The line ends with a carriage return and a line feed. Between tags that does no harm; in a "
      "path or a name it would belong to it. End lines with line feeds alone."};
  Messages::Pattern clockSeed{
      "The seed is taken from the clock, so the run cannot be repeated. Write a Seed of the type "
      "Vector with two numbers."};
  Messages::Pattern entity{
      "Entities such as &amp; are not decoded but belong to the name. Rename the file."};
  Messages::Pattern everyNoStep{"Every 0th step cannot be kept. Write 1 or more."};
  Messages::Pattern firstStep{
      "The first step is always made, so this does the same as 1. Write 1 or more."};
  Messages::Pattern integerOutside{
      "The number is outside its range and would be read as another one. Write one from "
      "-2147483648 to 2147483647."};
  Messages::Pattern negativeChain{
      "The chain would have a negative size. Write 1 or more for Thinning, 0 or more for Burnin "
      "and Steps."};
  Messages::Pattern negativeCount{
      "The count <number> is negative and does the same as none. Write 0 or more."};
  Messages::Pattern negativeThinning{
      "The thinning <number> is negative and has no meaning. Write 1 or more."};
  Messages::Pattern precision{"A precision is 0 or more and finite. Write 0 for no prior."};
  Messages::Pattern readAs{"The text <value> is read as <number>. Write a number, such as 1e-8."};
  Messages::Pattern seedHalfStill{
      "Half of the random generator stands still at this word, so random numbers would have 65536 "
      "different values only. Write another number."};
  Messages::Pattern seedStill{
      "The random generator stands still at this word, so all random numbers would be nearly 1, "
      "and nearly all missing values imputed as 0. Write another number."};
  Messages::Pattern seedWithoutEnd{
      "The random generator stands still at this word, so the run would never end: no normal "
      "number can be drawn. Write another number."};
  Messages::Pattern seedOutside{
      "The number is outside its range and would be read as another one. Write one from 0 to "
      "4294967295."};
  Messages::Pattern tolerance{
      "A tolerance is above 0 and finite; with this one the test does not work as meant. Write a "
      "small number, such as 1e-8."};
  Messages::Pattern tooFewDraws{
      "The chain keeps <draws>, too few for standard errors of the fifth block. Write at least "
      "twice the Thinning."};
  Messages::Pattern whiteSpace{
      "White space round the text belongs to the name. Write the name directly between the tags."};
};

inline constexpr ValueMessages kValueMessages;

/// Inputs, definitions of a batch among them, that are missing or are not what they should be.
struct InputMessages {
  Messages::Pattern batchInItself{
      "The batch would start <file> again within itself, until memory or open files run out. "
      "Remove it from the list."};
  Messages::Pattern cannotRead{"The <input> cannot be read. Ask for the right to read it."};
  Messages::Pattern definitionIsNoFile{
      "The <input> is no regular file. Name one: the program moves back in it while it reads, "
      "which a pipe does not allow."};
  Messages::Pattern definitionOverwritten{
      "The definition file <file> would be overwritten before by <run>, whose <output> it is. "
      "Give that another name."};
  Messages::Pattern isFolder{"The <input> is a folder. Name a file in it."};
  Messages::Pattern isLogOfRun{
      "The <input> is the log file of <run>, which runs before. Give one of the two another "
      "name."};
  Messages::Pattern isNoFile{
      "The <input> is no regular file. Name one: the program reads its input more than once."};
  Messages::Pattern missing{
      "The <input> does not exist. Correct the name, or the folder that you start in: paths are "
      "taken from there."};
  Messages::Pattern missingWithBlanks{
      "The <input> does not exist. Remove the white space around the name, which belongs to it."};
  Messages::Pattern unfitBurnin{
      "With Steps 0 the fifth block is made from the draws of the burn-in, which are not fit for "
      "inference with generalized estimating equations. Also write Burnin 0."};
  Messages::Pattern unfitCoefficients{
      "The coefficients come from generalized estimating equations. Not fit for inference are "
      "then <columns>. Name the coefficient file of an Analysis with false."};
  Messages::Pattern unfitDraws{
      "With generalized estimating equations the draws of the chain are not fit for inference, nor "
      "is what is made from them: <columns>. <remedy>"};
  Messages::Pattern writtenBefore{
      "The <input> is written before by <run> as its <output>. Check that this is meant."};
};

inline constexpr InputMessages kInputMessages;

}  // namespace Hovar
