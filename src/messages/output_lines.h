#pragma once

// Every line that a run writes on standard output and in its log, but for the labels of the fits
// (kModelLabels) and of the C-statistics, which are what they are. The progress reader of the tools
// recognises a line by the pattern that it was written with.

#include <string_view>

#include "messages/pattern.h"

namespace Messages {

/// What each warning begins with, but for empiricalVariance.
inline constexpr std::string_view kWarningPrefix = "Warning: ";

/// Warnings of a run.
struct WarningLines {
  Pattern empiricalVariance{"Exception: Empirical variance"};
  Pattern iterationLimit{"Warning: Maximum number of iterations reached"};
  Pattern outcomeAbsent{
      "Warning: Y == 0 && P == 1 data in record: <record> - setting P equal to 0"};
};

inline constexpr WarningLines kWarnings;

/// Lines that tell what the program is doing, and what it found.
struct OutputLines {
  // The program.
  Pattern targetPlatform{"Target platform: 64-bit"};
  Pattern pressAnyButton{"Press any button to continue . . ."};
  // The data file.
  Pattern readingDataFile{"Reading data file..."};
  Pattern recordCount{"Number of records: <records>"};
  Pattern variableCount{"Number of variables: <variables>"};
  Pattern readingData{"Reading data..."};
  Pattern hospital{"Hospital: <ID> record: <record> / <records>"};
  Pattern hospitalCount{"Number of hospitals: <hospitals>"};
  Pattern countingComplete{"Counting non missing records:"};
  Pattern completeCount{"Number of non-missing records: <records>"};
  Pattern completeP0Count{"Number of non-missing records with P = 0: <records>"};
  // Column elimination.
  Pattern eliminatingZeroZ{"Eliminating Z zero columns"};
  Pattern eliminatingZeroX{"Eliminating X zero columns"};
  Pattern eliminatingDependentZ{"Eliminating dependent Z columns"};
  Pattern eliminatingDependentX{"Eliminating dependent X columns P = 0"};
  Pattern eliminatedColumns{"Eliminating columns:"};
  Pattern eliminatedColumn{"<Z name>, <X name>"};
  Pattern checkRank{"Check rank"};
  // Fits and sampler; the second of two with generalized estimating equations.
  Pattern regressionAnalysis{"Regression analysis"};
  Pattern regressionAnalysisGee{"Regression analysis GEE:"};
  Pattern mcmcAnalysis{"MCMC Analysis"};
  Pattern mcmcAnalysisGee{"MCMC Analysis GEE:"};
  Pattern burnin{"Burnin: <iteration> Intercept: <intercept> "};
  Pattern mcmc{"Mcmc: <iteration> Intercept: <intercept> "};
  Pattern phaseEnd{"\nMCMC: <iterations> iterations in <time> seconds\n"};
  // Predictions and C-statistics.
  Pattern individualPredictions{"Calculating individual predictions"};
  Pattern hospitalPredictions{"Calculating hospital-aggregated predictions"};
  Pattern pass{"<pass>/<passes>"};
  Pattern statisticOfYGivenZ{"Y|Z"};
  Pattern statisticOfYGivenX{"Y|X"};
  Pattern statisticOfPGivenX{"P|X"};
  Pattern statisticOfPGivenAll{"P|YPZX"};
};

inline constexpr OutputLines kLines;

}  // namespace Messages
