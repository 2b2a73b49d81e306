#pragma once

#include "messages/pattern.h"

namespace Hovar {

/// What the chains tool says on standard error.
struct ChainMessages {
  Messages::Pattern cannotReadDraws{"hovar: cannot read the draws of <chain> in <file>"};
  Messages::Pattern chainDone{"<chain>: done in <time>"};
  Messages::Pattern chainEndedWithStatus{"<chain>: ended with status <status>"};
  Messages::Pattern chainFailed{"hovar: <chain> failed; its output is in <file>"};
  Messages::Pattern earlierChain{
      "hovar: not collected: <folder>, which an earlier run with more chains wrote"};
  Messages::Pattern noChainList{"hovar: <file> is no number of chains and stays as it is"};
  Messages::Pattern fileOfRun{
      "hovar: --chains would write over <file>, a file of the run; nothing was written"};
  Messages::Pattern otherDefinition{"hovar: <chain> was run with another definition; run it again"};
  Messages::Pattern otherFits{
      "hovar: <chain> has other fits than <chain>, so their data differ; run both again"};
  Messages::Pattern otherValue{
      "hovar: <chain> was run with <element> <value> instead of <value>; run it again"};
  Messages::Pattern copyTooLarge{
      "hovar: <file> is too large for --chains: with the folder and the seed of <chain> it has "
      "more "
      "than 16 MiB"};
  Messages::Pattern needsAnalysis{
      "hovar: --chains needs the definition of an Analysis, which <file> is not"};
  Messages::Pattern firstWordStandsStill{
      "hovar: the random generator stands still at the first word of the seed of <file>, so no "
      "normal number can be drawn; give it another one"};
  Messages::Pattern secondWordStandsStill{
      "hovar: half of the random generator stands still at the second word of the seed of <file>, "
      "in every chain; give it another one"};
  Messages::Pattern seedFromClock{
      "hovar: the seed of <file> is taken from the clock, so the chains could not be repeated; "
      "give it two fixed words (a Seed of the type Vector)"};
  Messages::Pattern stopped{"hovar: stopped"};
};

inline constexpr ChainMessages kChainMessages;

/// The lines of the verdict, on standard output.
struct VerdictLines {
  // The draws of generalized estimating equations.
  Messages::Pattern notFitFirst{
      "The draws are not fit for inference, whatever the figures below are: with generalized"};
  Messages::Pattern notFitSecond{
      "estimating equations they have the inverse of the covariance that they should have."};
  Messages::Pattern notFitColumns{"Neither is what is made from them: <columns>."};
  // The head.
  Messages::Pattern counts{"<chains> of <draws>, <coefficients>."};
  Messages::Pattern countsAndThresholds{
      "<chains> of <draws>, <coefficients>. A coefficient passes with R-hat at most <number> and "
      "effective"};
  Messages::Pattern thresholds{
      "sample sizes in bulk and tails of at least <number> (Vehtari et al., Bayesian Analysis 16, "
      "2021)."};
  Messages::Pattern cutDraw{"The chains differ in length; of each the first <draw> is judged."};
  Messages::Pattern cutDraws{"The chains differ in length; of each the first <draws> are judged."};
  Messages::Pattern ownNames{
      "The coefficient file has another number of rows, so the columns' own names stand here."};
  Messages::Pattern repeated{"Not judged: <chain> holds the same draws as <chain>."};
  // The verdicts.
  Messages::Pattern cannotBeTold{
      "Whether the chains have converged cannot be told: <share> do not pass."};
  Messages::Pattern chainsAgree{"The chains agree, but <share> have too few effective draws."};
  Messages::Pattern converged{
      "The chains have converged. Largest R-hat: <number> (<name>); smallest effective sample "
      "size: <number> (<name>)."};
  Messages::Pattern figures{
      "Largest R-hat: <number> (<name>); smallest effective sample size: <number> (<name>)."};
  Messages::Pattern nothingToJudge{"There is nothing to judge."};
  Messages::Pattern noDraws{"No draws were kept, so there is nothing to judge in <chains>."};
  Messages::Pattern noSign{
      "There is no sign against convergence, but <share> have too few effective draws."};
  Messages::Pattern noSignInOne{
      "There is no sign against convergence in this one chain. Largest R-hat: <number> (<name>); "
      "smallest effective sample size: <number> (<name>)."};
  Messages::Pattern notConverged{"The chains have NOT converged: <share> do not pass."};
  // The coefficients that miss a threshold.
  Messages::Pattern coefficient{
      "<name>: R-hat <number>, effective sample size <number> in the bulk, <number> in the tails"};
  Messages::Pattern coefficientUnknown{"<name>: cannot be judged"};
  Messages::Pattern moreCoefficients{"and <number> more"};
  // What to do.
  Messages::Pattern aboveFirst{
      "An R-hat above <number> means that the chains, or the halves of a chain, do not draw from "
      "the"};
  Messages::Pattern aboveSecond{
      "same distribution yet. Raise Burnin and Steps, to twice as many at least, and run again."};
  Messages::Pattern moreSteps{"Raise Steps to about <number> times as many and run again."};
  Messages::Pattern oneChain{
      "One chain can only be compared with itself; run at least four to trust this."};
  Messages::Pattern unknownFirst{
      "A coefficient cannot be judged when fewer than <draws> were kept per chain, or when its"};
  Messages::Pattern unknownSecond{
      "draws are all the same or not finite. Look at Steps, Thinning and the chain files."};
};

inline constexpr VerdictLines kVerdictLines;

}  // namespace Hovar
