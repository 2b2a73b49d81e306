#include "app/analysis_runner.h"

#include "app/run_files.h"
#include "data/column_elimination.h"
#include "mcmc/mcmc_stage.h"
#include "regression/coefficient_file.h"
#include "regression/regression_analysis.h"

namespace Hovar {

AnalysisRunner::AnalysisRunner(Vell::XmlReader& reader)
    : definition_(ReadAnalysisDefinition(reader)) {
  OpenRun(definition_.folder, definition_.logFile);
}

void AnalysisRunner::Run() {
  DataSet dataSet;
  ReadDataFileAt(dataSet, definition_.data, definition_.numberOfPoaIndicators);
  EliminateColumns(dataSet, definition_.linearDependenceTolerance);

  RegressionResults results;
  const WorkingCorrelation correlation = definition_.useGeneralizedEstimatingEquations;
  RunRegressionAnalysis(results, dataSet, {correlation, definition_.parameters});
  RunMcmcStage(results, dataSet,
               {{correlation, definition_.parametersMcmc},
                definition_.mcmc,
                Vell::JoinPath(definition_.folder, definition_.mcmcSubFolder)});

  WriteOutputFile(Vell::JoinPath(definition_.folder, definition_.regressionCoefficients),
                  [&](Vell::IO::TextWriter& writer) { WriteCoefficientFile(results, writer); });
}

}  // namespace Hovar
