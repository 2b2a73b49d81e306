#pragma once

// Definition files describe a run entirely. The grammar is strict and positional: every element is
// required, in the order of element_table.h, without attributes (but for the root's, which mean
// nothing, and Seed's). Here are the records into which they are read; a field is named after its
// element, of which element_table.h gives the meaning, the unit and the range. Input paths are used
// as written; output names lie in the output folder.

#include <cstdint>

#include "foundation/growable_array.h"
#include "foundation/string.h"
#include "foundation/xml/xml_reader.h"
#include "mcmc/mcmc_settings.h"
#include "regression/fit_settings.h"

namespace Hovar {

/// What an Analysis reads, writes and does.
struct AnalysisDefinition {
  Vell::String data;
  std::int32_t numberOfPoaIndicators = 0;
  Vell::String folder;
  Vell::String regressionCoefficients;
  Vell::String mcmcSubFolder;
  Vell::String logFile;
  WorkingCorrelation useGeneralizedEstimatingEquations = WorkingCorrelation::kIndependent;
  double linearDependenceTolerance = 0;
  RegressionParameters parameters;
  RegressionParameters parametersMcmc;
  McmcSettings mcmc;
};

/// True when the fits take the records of a hospital as alike.
inline bool UsesEstimatingEquations(const AnalysisDefinition& definition) noexcept {
  return definition.useGeneralizedEstimatingEquations == WorkingCorrelation::kExchangeable;
}

/// What a Prediction reads, writes and does.
struct PredictionDefinition {
  Vell::String data;
  std::int32_t numberOfPoaIndicators = 0;
  Vell::String regressionCoefficients;
  Vell::String folder;
  Vell::String individualPredictions;
  Vell::String hospitalPredictions;
  Vell::String logFile;
  McmcSettings mcmc;
};

/// What a Validation reads, writes and does.
struct ValidationDefinition {
  Vell::String data;
  std::int32_t numberOfPoaIndicators = 0;
  Vell::String regressionCoefficients;
  Vell::String individualPredictions;
  Vell::String folder;
  Vell::String cStatistics;
  Vell::String logFile;
  McmcSettings mcmc;
};

/// Paths of further definition files, in file order.
using BatchDefinition = Vell::GrowableArray<Vell::String>;

// Each reads the content of a root element whose start tag has been read, up to but not including
// its end tag. The Seed element seeds the random generator at once. Texts are taken as they stand,
// also empty ones, and numbers as they are read, also negative ones and NaNs: what makes no sense
// shows when it is used.
// Errors: those of XmlReader and of RandomGenerator::ReadXml; Exception "Invalid value in
//         "UseGeneralizedEstimatingEquations" tag" for a flag other than true or false; Exception
//         "Invalid XML simulation" for anything but Simulation elements in the list of a batch.
AnalysisDefinition ReadAnalysisDefinition(Vell::XmlReader& reader);
PredictionDefinition ReadPredictionDefinition(Vell::XmlReader& reader);
ValidationDefinition ReadValidationDefinition(Vell::XmlReader& reader);
BatchDefinition ReadBatchDefinition(Vell::XmlReader& reader);

}  // namespace Hovar
