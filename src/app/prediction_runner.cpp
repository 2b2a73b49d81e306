#include "app/prediction_runner.h"

#include "app/run_files.h"
#include "prediction/hospital_predictions.h"
#include "prediction/individual_predictions.h"
#include "prediction/prediction_files.h"

namespace Hovar {

PredictionRunner::PredictionRunner(Vell::XmlReader& reader)
    : definition_(ReadPredictionDefinition(reader)) {
  OpenRun(definition_.folder, definition_.logFile);
}

void PredictionRunner::Run() {
  DataSet dataSet;
  ReadDataFileAt(dataSet, definition_.data, definition_.numberOfPoaIndicators, KeyUse::kKeep);
  RegressionResults results;
  ReadCoefficientsFor(dataSet, results, definition_.regressionCoefficients);

  IndividualPredictions predictions;
  ComputeIndividualPredictions(predictions, dataSet, results, definition_.mcmc);
  WriteOutputFile(Vell::JoinPath(definition_.folder, definition_.individualPredictions),
                  [&](Vell::IO::TextWriter& writer) {
                    WriteIndividualPredictions(predictions, dataSet, definition_.data, writer);
                  });

  HospitalPredictions hospitalPredictions;
  ComputeHospitalPredictions(hospitalPredictions, dataSet, predictions);
  WriteOutputFile(Vell::JoinPath(definition_.folder, definition_.hospitalPredictions),
                  [&](Vell::IO::TextWriter& writer) {
                    WriteHospitalPredictions(hospitalPredictions, dataSet, writer);
                  });
}

}  // namespace Hovar
