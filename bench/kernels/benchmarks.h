#pragma once

// The groups of benchmarks, and how they are run over sizes.

#include <benchmark/benchmark.h>

#include <string>

namespace Hovar::Bench {

/// Registers a benchmark three times, under NAME/...:
///
///   sizes       10,000 x 30, 100,000 x 60 and 1,000,000 x 60
///   by_records  60 variables, the records doubled from 25,000 to 400,000
///   by_columns  20,000 records, the variables doubled from 15 to 240
///
/// The latter two end with the order of growth that fits best. `run` takes the records from
/// range(0) and the variables from range(1).
template <typename Run>
void RegisterOverSizes(const std::string& name, Run run);

/// Reading, cross counts, SVD.
void RegisterDataBenchmarks();
/// One Newton pass and whole fits, independent and with generalized estimating equations.
void RegisterFitBenchmarks();
/// One imputation sweep, one C-statistic, writing predictions.
void RegisterPredictionBenchmarks();

template <typename Run>
void RegisterOverSizes(const std::string& name, Run run) {
  const auto configure = [](benchmark::internal::Benchmark* benchmark) {
    benchmark->Unit(benchmark::kMillisecond)->ArgNames({"records", "variables"});
    return benchmark;
  };
  configure(benchmark::RegisterBenchmark((name + "/sizes").c_str(), run))
      ->Args({10'000, 30})
      ->Args({100'000, 60})
      ->Args({1'000'000, 60});

  const auto byRecords = [run](benchmark::State& state) {
    run(state);
    state.SetComplexityN(state.range(0));
  };
  auto* records =
      configure(benchmark::RegisterBenchmark((name + "/by_records").c_str(), byRecords));
  for (std::int64_t n = 25'000; n <= 400'000; n *= 2) {
    records->Args({n, 60});
  }
  records->Complexity();

  const auto byColumns = [run](benchmark::State& state) {
    run(state);
    state.SetComplexityN(state.range(1));
  };
  auto* columns =
      configure(benchmark::RegisterBenchmark((name + "/by_columns").c_str(), byColumns));
  for (std::int64_t variables = 15; variables <= 240; variables *= 2) {
    columns->Args({20'000, variables});
  }
  columns->Complexity();
}

}  // namespace Hovar::Bench
