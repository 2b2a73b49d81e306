#pragma once

// The grammar of definition files: every element that a definition holds, in the order in which it
// is read. docs/definitions.md describes the elements; the schema for editors is made from here.
//
// A definition holds the rows of its kind of run in this order, each where its path says, and
// nothing else. CONTRIBUTING.md says what else a new element needs.

#include <array>
#include <string_view>

#include "app/definition/elements.h"

namespace Hovar {

/// A root element.
struct RootEntry {
  RunKind kind;
  std::string_view name;
  std::string_view annotation;
};

/// The four root elements, one for each kind of run.
inline constexpr std::array<RootEntry, 4> kRoots = {{
    {RunKind::kAnalysis, "Analysis",
     "Fits the models to a data file and writes the coefficients, the chain of the sampler, its "
     "summary and a log."},
    {RunKind::kPrediction, "Prediction",
     "Predicts for each patient and each hospital of a data file with the coefficients of an "
     "Analysis."},
    {RunKind::kValidation, "Validation", "Writes C-statistics of individual predictions."},
    {RunKind::kBatch, "Batch",
     "Runs other definitions one after the other; the first error ends it."},
}};

/// A form of the seed: a value of the attribute xsi:type.
struct SeedForm {
  std::string_view type;
  std::string_view annotation;
};

/// The two forms that RandomGenerator::ReadXml reads.
inline constexpr SeedForm kFixedSeed = {
    "Vector", "A fixed seed of two numbers. A run with it can be repeated to the last byte."};
inline constexpr SeedForm kClockSeed = {
    "Randomize",
    "A seed from the clock, in seconds; the run cannot be repeated. Write it as an empty element: "
    "<Seed xsi:type=\"Randomize\" />."};

namespace ElementRows {

inline constexpr RunKinds kA(RunKind::kAnalysis);
inline constexpr RunKinds kP(RunKind::kPrediction);
inline constexpr RunKinds kV(RunKind::kValidation);
inline constexpr RunKinds kPV(RunKind::kPrediction, RunKind::kValidation);
inline constexpr RunKinds kAPV(RunKind::kAnalysis, RunKind::kPrediction, RunKind::kValidation);
inline constexpr RunKinds kB(RunKind::kBatch);

// Of the two groups of fit settings.
inline constexpr std::string_view kTolerance =
    "Relative tolerance of convergence, without a unit, for example 1e-8: a fit stops when its "
    "next step changes no coefficient by more than this times the largest one (absolute values).";
inline constexpr std::string_view kMaxIterations =
    "Limit on the Newton steps of a fit, 1 or more. Reaching it gives a warning in the log, not an "
    "error.";
inline constexpr std::string_view kPriorPrecision =
    "Precision of the normal prior with mean 0 on each coefficient, the intercept's too: the "
    "inverse of its variance, in 1 / (log-odds squared), 0 or more. 0 means no prior.";

}  // namespace ElementRows

/// All elements, in the order in which a definition holds them; a group comes before its elements.
/// An element that means something else from kind to kind has a row for each meaning.
inline constexpr auto kElements = [] {
  using namespace ElementRows;  // NOLINT(google-build-using-namespace): the rows' own names
  using enum Element;
  using Type = ElementType;
  using Role = FileRole;
  return std::to_array<ElementEntry>({
      {kInput, kA, "Input", Type::kGroup, Role::kNone, "", "What the Analysis reads."},
      {kInput, kP, "Input", Type::kGroup, Role::kNone, "", "What the Prediction reads."},
      {kInput, kV, "Input", Type::kGroup, Role::kNone, "", "What the Validation reads."},
      {kData, kA, "Input/Data", Type::kPath, Role::kData, "data.csv",
       "Data file to read: comma-separated, a header line, one line per record, records of one "
       "hospital together."},
      {kData, kP, "Input/Data", Type::kPath, Role::kData, "data.csv",
       "Data file to read, with the variables in the order of the Analysis's data file."},
      {kData, kV, "Input/Data", Type::kPath, Role::kData, "data.csv",
       "Data file to read, the one that the predictions were made for."},
      {kNumberOfPoaIndicators, kA, "Input/NumberOfPoaIndicators", Type::kCount, Role::kNone, "2",
       "Number of present-on-admission columns in the data file, 0 or more; they stand behind "
       "key, hospital and Y."},
      {kNumberOfPoaIndicators, kPV, "Input/NumberOfPoaIndicators", Type::kCount, Role::kNone, "2",
       "Number of present-on-admission columns in the data file, 0 or more."},
      {kInputRegressionCoefficients, kPV, "Input/RegressionCoefficients", Type::kPath,
       Role::kCoefficients, "results/coefficients.csv",
       "Coefficient file that an Analysis wrote. The path is used as written, not within the "
       "output folder."},
      {kInputIndividualPredictions, kV, "Input/IndividualPredictions", Type::kPath,
       Role::kIndividualPredictions, "results/individual.csv",
       "Individual predictions that a Prediction wrote for the same data file. The path is used as "
       "written, not within the output folder."},

      {kOutput, kA, "Output", Type::kGroup, Role::kNone, "",
       "What the Analysis writes; files of the same names are overwritten."},
      {kOutput, kP, "Output", Type::kGroup, Role::kNone, "",
       "What the Prediction writes; files of the same names are overwritten."},
      {kOutput, kV, "Output", Type::kGroup, Role::kNone, "",
       "What the Validation writes; files of the same names are overwritten."},
      {kFolder, kAPV, "Output/Folder", Type::kPath, Role::kOutputFolder, "results",
       "Folder for all output files. It is made if its parent exists; write a point for the folder "
       "that you start in."},
      {kRegressionCoefficients, kA, "Output/RegressionCoefficients", Type::kName,
       Role::kCoefficients, "coefficients.csv",
       "Coefficient file to write in the output folder; a Prediction and a Validation read it."},
      {kMcmcSubFolder, kA, "Output/McmcSubFolder", Type::kName, Role::kChainFolder, "mcmc",
       "Folder within the output folder for Chain.csv and Summary.csv. It is made when sampling "
       "starts."},
      {kIndividualPredictions, kP, "Output/IndividualPredictions", Type::kName,
       Role::kIndividualPredictions, "individual.csv",
       "File to write in the output folder, one line per record; a Validation reads it."},
      {kHospitalPredictions, kP, "Output/HospitalPredictions", Type::kName,
       Role::kHospitalPredictions, "hospital.csv",
       "File to write in the output folder, one line per hospital."},
      {kCStatistics, kV, "Output/CStatistics", Type::kName, Role::kCStatistics, "cstatistics.csv",
       "C-statistics file to write in the output folder, six values."},
      {kLogFile, kAPV, "Output/LogFile", Type::kName, Role::kLog, "run.log",
       "Log file to write in the output folder. It is emptied before the data are read; give every "
       "run of a batch its own."},

      {kRegression, kA, "Regression", Type::kGroup, Role::kNone, "", "How the models are fitted."},
      {kUseGeneralizedEstimatingEquations, kA, "Regression/UseGeneralizedEstimatingEquations",
       Type::kFlag, Role::kNone, "false",
       "true clusters the records by hospital (generalized estimating equations with an "
       "exchangeable correlation), false takes them as independent. With true the draws of the "
       "chain are not fit for inference, nor are the fifth block, E[Y|X,P=0]-MCMC and, where P is "
       "missing, the observed E[Y|P=0] of a Prediction. Take counts and expectations from a run "
       "with false, and standard errors of the four fits from a run with true and Steps 0."},
      {kLinearDependence, kA, "Regression/LinearDependence", Type::kGroup, Role::kNone, "",
       "How columns that depend on others are found and removed."},
      {kLinearDependenceTolerance, kA, "Regression/LinearDependence/Tolerance",
       Type::kSmallTolerance, Role::kNone, "1e-9",
       "A singular value of the counts of columns is taken as zero when it is at most this times "
       "the largest one; without a unit, small, for example 1e-9."},
      {kParameters, kA, "Regression/Parameters", Type::kFitSettings, Role::kNone, "",
       "Settings of the four fits [P|X], [Y|Z], [Y|X] and [Y|X,P=0]."},
      {kParametersTolerance, kA, "Regression/Parameters/Tolerance", Type::kSmallTolerance,
       Role::kNone, "1e-8", kTolerance},
      {kParametersMaxIterations, kA, "Regression/Parameters/MaxIterations", Type::kPositiveCount,
       Role::kNone, "50", kMaxIterations},
      {kParametersPriorPrecision, kA, "Regression/Parameters/PriorPrecision", Type::kPrecision,
       Role::kNone, "0.1", kPriorPrecision},
      {kParametersMcmc, kA, "Regression/ParametersMcmc", Type::kFitSettings, Role::kNone, "",
       "Settings of the fit that each iteration of the sampler makes."},
      {kParametersMcmcTolerance, kA, "Regression/ParametersMcmc/Tolerance", Type::kSmallTolerance,
       Role::kNone, "1e-8", kTolerance},
      {kParametersMcmcMaxIterations, kA, "Regression/ParametersMcmc/MaxIterations",
       Type::kPositiveCount, Role::kNone, "50", kMaxIterations},
      {kParametersMcmcPriorPrecision, kA, "Regression/ParametersMcmc/PriorPrecision",
       Type::kPrecision, Role::kNone, "0.1", kPriorPrecision},

      {kMcmc, kA, "Mcmc", Type::kSampling, Role::kNone, "",
       "Random numbers and the length of the chain."},
      {kMcmc, kPV, "Mcmc", Type::kSampling, Role::kNone, "",
       "Random numbers and the number of imputation passes."},
      {kSeed, kAPV, "Mcmc/Seed", Type::kSeedSource, Role::kNone, "",
       "Start of the random numbers: with xsi:type=\"Vector\" two fixed numbers, with "
       "xsi:type=\"Randomize\" the clock."},
      {kSeedVector, kAPV, "Mcmc/Seed/Seed", Type::kSeedWords, Role::kNone, "",
       "The two numbers of a fixed seed."},
      {kSeedWord, kAPV, "Mcmc/Seed/Seed/Element", Type::kSeedWord, Role::kNone, "362436069",
       "One of the two numbers of a fixed seed, from 0 to 4294967295; both are used, in this "
       "order. 0 means the same as 1.",
       Occurrence::kTwice},
      {kThinning, kAPV, "Mcmc/Thinning", Type::kPositiveCount, Role::kNone, "5",
       "Every n-th step of the chain of an Analysis is kept, 1 or more. A Prediction or Validation "
       "must have it and does not use it."},
      {kBurnin, kAPV, "Mcmc/Burnin", Type::kCount, Role::kNone, "100",
       "Number of iterations (Analysis) or imputation passes (Prediction, Validation) that are "
       "made first and not used, 0 or more."},
      {kSteps, kAPV, "Mcmc/Steps", Type::kCount, Role::kNone, "500",
       "Number of iterations of the main phase (Analysis) or of imputation passes that are "
       "averaged (Prediction, Validation), 0 or more."},

      {kSimulations, kB, "Simulations", Type::kGroup, Role::kNone, "",
       "The definitions to run, in this order; there may be none."},
      {kSimulation, kB, "Simulations/Simulation", Type::kPath, Role::kDefinition, "analysis.xml",
       "Path of another definition file, relative to the folder that hovar is started in. It may "
       "be a Batch, but not this one itself.",
       Occurrence::kAnyNumber},
  });
}();

/// The row of an element, the first one where they differ from kind to kind; path, type and role
/// do not.
constexpr const ElementEntry& EntryOf(Element element) noexcept {
  std::size_t row = 0;
  while (kElements[row].element != element) {
    ++row;
  }
  return kElements[row];
}

/// The row of the element at a path below the root of a kind of run ("Output/LogFile"), or null.
/// Cost: one comparison a row.
constexpr const ElementEntry* FindElement(RunKind kind, std::string_view path) noexcept {
  for (const ElementEntry& entry : kElements) {
    if (entry.kinds.Contains(kind) && entry.path == path) {
      return &entry;
    }
  }
  return nullptr;
}

}  // namespace Hovar
