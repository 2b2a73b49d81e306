#include "app/validation_runner.h"

#include "app/run_files.h"
#include "foundation/io/file_stream.h"
#include "prediction/c_statistics.h"
#include "prediction/prediction_files.h"

namespace Hovar {

ValidationRunner::ValidationRunner(Vell::XmlReader& reader)
    : definition_(ReadValidationDefinition(reader)) {
  OpenRun(definition_.folder, definition_.logFile);
}

void ValidationRunner::Run() {
  DataSet dataSet;
  ReadDataFileAt(dataSet, definition_.data, definition_.numberOfPoaIndicators);
  RegressionResults results;
  ReadCoefficientsFor(dataSet, results, definition_.regressionCoefficients);

  IndividualPredictions predictions;
  {
    Vell::IO::FileStream stream(definition_.individualPredictions, Vell::IO::Mode::kReadText);
    ReadIndividualPredictions(predictions, stream);
  }

  CStatisticValues values;
  ComputeCStatistics(values, dataSet, results, predictions, definition_.mcmc);
  WriteOutputFile(Vell::JoinPath(definition_.folder, definition_.cStatistics),
                  [&](Vell::IO::TextWriter& writer) { WriteCStatistics(values, writer); });
}

}  // namespace Hovar
