#include <cstdint>
#include <filesystem>

#include "app/run_files.h"
#include "benchmarks.h"
#include "foundation/random/random_generator.h"
#include "generated_data.h"
#include "mcmc/imputation_sweep.h"
#include "prediction/c_statistic.h"
#include "prediction/prediction_files.h"
#include "regression/logistic_regression.h"
#include "regression/regression_results.h"
#include "regression/row_source.h"

namespace Hovar::Bench {

namespace {

/// The current random words as predictions, multiples of 2^-32.
Vell::Vector UniformPredictions(std::int32_t records) {
  Vell::Vector predictions(records);
  for (double& prediction : predictions) {
    prediction = Vell::RandomGenerator::Uniform();
  }
  return predictions;
}

/// With the fits of the complete records, from whatever the sweep before left.
void Sweep(benchmark::State& state) {
  const GeneratedData& generated = DataOfSize(state.range(0), state.range(1));
  DataSet data;  // its values change
  ReadQuietly(data, generated.file);
  RegressionResults results;
  results.xzTables.Resize(data.variableCount - 1);
  for (std::int32_t k = 1; k < data.variableCount; ++k) {
    results.xzTables[k - 1] = ComputeXzTable(data, k);
  }
  const Vell::Vector priorTable = PriorTable(results, data.variableCount);
  const LogisticRegression regression{data.hospitalSize,
                                      {WorkingCorrelation::kIndependent, {1e-8, 100, 1.0}}};
  const Vell::Vector pGivenX = EstimateVector(regression.Fit(RowsOfPGivenX(data)));
  const Vell::Vector yGivenX = EstimateVector(regression.Fit(RowsOfYGivenXWithoutP(data)));
  const ImputationModel model{yGivenX, pGivenX, priorTable};
  PrepareImputation(data);
  for ([[maybe_unused]] auto iteration : state) {
    RunImputationSweep(data, model);
    benchmark::ClobberMemory();
  }
}

/// Of predictions that have nothing to do with Y.
void ComputeCStatistic(benchmark::State& state) {
  const DataSet& data = DataOfSize(state.range(0), state.range(1)).data;
  const Vell::Vector predictions = UniformPredictions(data.recordCount);
  for ([[maybe_unused]] auto iteration : state) {
    benchmark::DoNotOptimize(CStatistic(
        predictions, data.recordCount, [&data](std::int32_t i) { return data.y.Get(i); },
        [](std::int32_t) { return true; }));
  }
}

/// The file is created anew each time; the keys are read again from the data file.
void WritePredictions(benchmark::State& state) {
  const GeneratedData& generated = DataOfSize(state.range(0), state.range(1));
  IndividualPredictions predictions;
  for (Vell::Vector* column :
       {&predictions.yGivenZ, &predictions.yGivenX, &predictions.yGivenXWithoutP,
        &predictions.yGivenXWithoutPMcmc, &predictions.pGivenX, &predictions.pGivenAll}) {
    *column = UniformPredictions(generated.data.recordCount);
  }
  const std::filesystem::path output = ScratchFolder() / "predictions.csv";
  const Vell::String path(output.c_str());
  const Vell::String dataFile(generated.file.c_str());
  for ([[maybe_unused]] auto iteration : state) {
    WriteOutputFile(path, [&](Vell::IO::TextWriter& writer) {
      WriteIndividualPredictions(predictions, generated.data, dataFile, writer);
    });
  }
  state.SetBytesProcessed(state.iterations() *
                          static_cast<std::int64_t>(std::filesystem::file_size(output)));
}

}  // namespace

void RegisterPredictionBenchmarks() {
  RegisterOverSizes("sweep", Sweep);
  RegisterOverSizes("c_statistic", ComputeCStatistic);
  RegisterOverSizes("write_predictions", WritePredictions);
}

}  // namespace Hovar::Bench
