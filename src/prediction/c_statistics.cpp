#include "prediction/c_statistics.h"

#include "foundation/io/csv_writer.h"
#include "foundation/io/standard_writers.h"
#include "mcmc/imputation_passes.h"
#include "messages/output_lines.h"
#include "prediction/c_statistic.h"

namespace Hovar {
namespace {

// The three kinds of comparison.

double AgainstOutcome(const DataSet& data, const Vell::Vector& predictions) {
  return CStatistic(
      predictions, data.recordCount, [&data](std::int32_t i) { return data.y.Get(i); },
      [](std::int32_t) { return true; });
}

double AgainstOutcomeWithoutP(const DataSet& data, const PredictionRanking& ranking) {
  return ranking
      .Count([&data](std::int32_t i) { return data.y.Get(i); },
             [&data](std::int32_t i) { return !data.p.Value(i); })
      .Statistic();
}

double AgainstPresentOnAdmission(const DataSet& data, const Vell::Vector& predictions) {
  return CStatistic(
      predictions, data.recordCount, [&data](std::int32_t i) { return data.p.Value(i); },
      [&data](std::int32_t i) { return !data.recordHasMissing.Get(i); });
}

}  // namespace

void ComputeCStatistics(CStatisticValues& result, DataSet& dataSet,
                        const RegressionResults& results, const IndividualPredictions& predictions,
                        const McmcSettings& settings) {
  Vell::IO::TextWriter& output = Vell::IO::StandardOutput();
  output.WriteMessage(Messages::kLines.statisticOfYGivenZ);
  result.yGivenZ = AgainstOutcome(dataSet, predictions.yGivenZ);
  output.WriteMessage(Messages::kLines.statisticOfYGivenX);
  result.yGivenX = AgainstOutcome(dataSet, predictions.yGivenX);
  output.WriteMessage(Messages::kLines.statisticOfPGivenX);
  result.pGivenX = AgainstPresentOnAdmission(dataSet, predictions.pGivenX);
  output.WriteMessage(Messages::kLines.statisticOfPGivenAll);
  result.pGivenAll = AgainstPresentOnAdmission(dataSet, predictions.pGivenAll);

  ImputationPasses passes(dataSet, results, settings);
  passes.RunBurnin();
  // Only P changes between the passes.
  const PredictionRanking withoutP(predictions.yGivenXWithoutP, dataSet.recordCount);
  const PredictionRanking withoutPMcmc(predictions.yGivenXWithoutPMcmc, dataSet.recordCount);
  for (std::int32_t pass = 0; pass < passes.Steps(); ++pass) {
    passes.Run(pass);
    result.yGivenXWithoutP += AgainstOutcomeWithoutP(dataSet, withoutP);
    result.yGivenXWithoutPMcmc += AgainstOutcomeWithoutP(dataSet, withoutPMcmc);
  }
  if (passes.Steps() > 0) {
    result.yGivenXWithoutP /= passes.Steps();
    result.yGivenXWithoutPMcmc /= passes.Steps();
  }
}

void WriteCStatistics(const CStatisticValues& result, Vell::IO::TextWriter& writer) {
  const auto writeLine = [&writer](std::string_view name, double value) {
    Vell::IO::WriteField(writer, name);
    writer.WriteLine(',', value);
  };
  writer.WriteLine("Estimate,C-Statistics");
  writeLine("E[Y|Z]", result.yGivenZ);
  writeLine("E[Y|X]", result.yGivenX);
  writeLine("E[Y|X,P=0]", result.yGivenXWithoutP);
  writeLine("E[Y|X,P=0]-MCMC", result.yGivenXWithoutPMcmc);
  writeLine("E[P|X]", result.pGivenX);
  writeLine("E[P|YPXZ]", result.pGivenAll);
}

}  // namespace Hovar
