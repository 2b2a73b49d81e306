// hovar_bench times the program's innermost steps over generated data, with Google Benchmark:
//
//     tools/install_packages.sh libbenchmark-dev
//     cmake --preset bench && cmake --build --preset bench --target hovar_bench
//     build/bench/bench/hovar_bench --benchmark_filter='fit/sizes|newton_pass/'
//
// A name is STEP/SERIES, STEP one of
//
//     read cross_counts_z cross_counts_x svd newton_pass newton_pass_gee fit fit_gee sweep
//     c_statistic write_predictions
//
// and SERIES one of sizes, by_records, by_columns (svd has the last one only); see benchmarks.h.
// Without a filter everything runs, which takes several minutes, 700 MB for files in the system's
// temporary folder and as much memory as the largest data set and the smaller ones together. For
// figures to compare, pin the process (taskset -c 0), and ask for repetitions:
// --benchmark_repetitions=5 --benchmark_report_aggregates_only.
//
// Debian's package says that the library was built as DEBUG; that concerns the library, not the
// program.
//
// The column CPU is the processor time of one step. What a step needs (its data, the gathered rows
// of a pass, the coefficients of a sweep) is made before the clock starts.

#include <benchmark/benchmark.h>

#include "benchmarks.h"
#include "foundation/exceptions/exceptions.h"
#include "generated_data.h"

int main(int argumentCount, char** arguments) {
  benchmark::Initialize(&argumentCount, arguments);
  if (benchmark::ReportUnrecognizedArguments(argumentCount, arguments)) {
    return 2;
  }
  Hovar::Bench::RegisterDataBenchmarks();
  Hovar::Bench::RegisterFitBenchmarks();
  Hovar::Bench::RegisterPredictionBenchmarks();
  int status = 0;
  try {
    benchmark::RunSpecifiedBenchmarks();
  } catch (const Vell::Exceptions::Exception&) {
    status = 1;  // its line stands on standard error
  }
  benchmark::Shutdown();
  Hovar::Bench::RemoveScratchFolder();
  return status;
}
