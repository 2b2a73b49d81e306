#include <cstdint>
#include <filesystem>

#include "app/run_files.h"
#include "benchmarks.h"
#include "generated_data.h"
#include "linalg/kernels/cross_counts.h"
#include "linalg/svd.h"
#include "quiet_output.h"

namespace Hovar::Bench {

namespace {

/// From the file, which the system holds in memory, into a complete data set.
void ReadFile(benchmark::State& state) {
  const GeneratedData& generated = DataOfSize(state.range(0), state.range(1));
  const Vell::String path(generated.file.c_str());
  const QuietOutput quiet;
  for ([[maybe_unused]] auto iteration : state) {
    DataSet data;
    ReadDataFileAt(data, path, kIndicators);
    benchmark::DoNotOptimize(data.completeCount);
  }
  state.SetBytesProcessed(state.iterations() *
                          static_cast<std::int64_t>(std::filesystem::file_size(generated.file)));
}

void CountZ(benchmark::State& state) {
  const DataSet& data = DataOfSize(state.range(0), state.range(1)).data;
  for ([[maybe_unused]] auto iteration : state) {
    const Vell::Matrix counts = Vell::CrossCounts(data.z);
    benchmark::DoNotOptimize(counts(0, 0));
  }
}

/// Of the complete records with P = 0, as column elimination takes them.
void CountX(benchmark::State& state) {
  const DataSet& data = DataOfSize(state.range(0), state.range(1)).data;
  for ([[maybe_unused]] auto iteration : state) {
    const Vell::Matrix counts =
        Vell::CrossCounts(data.x, [&data](std::int32_t i) { return data.IsCompleteWithoutP(i); });
    benchmark::DoNotOptimize(counts(0, 0));
  }
}

/// Of the cross counts of Z; range(0) is the number of variables.
void DecomposeCounts(benchmark::State& state) {
  const Vell::Matrix counts = Vell::CrossCounts(DataOfSize(20'000, state.range(0)).data.z);
  for ([[maybe_unused]] auto iteration : state) {
    Vell::SvdResult result;
    result.tolerance = 1e-10;
    Vell::Decompose(result, counts);
    benchmark::DoNotOptimize(result.largestValue);
  }
  state.SetComplexityN(state.range(0));
}

}  // namespace

void RegisterDataBenchmarks() {
  RegisterOverSizes("read", ReadFile);
  RegisterOverSizes("cross_counts_z", CountZ);
  RegisterOverSizes("cross_counts_x", CountX);
  benchmark::RegisterBenchmark("svd/by_columns", DecomposeCounts)
      ->Unit(benchmark::kMillisecond)
      ->ArgName("variables")
      ->Arg(15)
      ->Arg(30)
      ->Arg(60)
      ->Arg(120)
      ->Arg(240)
      ->Complexity();
}

}  // namespace Hovar::Bench
