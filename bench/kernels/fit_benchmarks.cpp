#include "benchmarks.h"
#include "generated_data.h"
#include "regression/exchangeable_score.h"
#include "regression/independent_score.h"
#include "regression/logistic_regression.h"
#include "regression/newton.h"
#include "regression/row_source.h"

namespace Hovar::Bench {

namespace {

constexpr double kTolerance = 1e-8;
constexpr std::int32_t kMaxIterations = 100;

using enum WorkingCorrelation;

/// One pass over [Y|Z] and its step, from `columns` coefficients that are not 0.
template <typename Score>
void RunPasses(benchmark::State& state, FitState& fit, std::int32_t columns, Score score) {
  Vell::Vector beta(columns);
  for (std::int32_t j = 0; j < beta.Size(); ++j) {
    beta[j] = j == 0 ? -2.5 : 0.25;
  }
  for ([[maybe_unused]] auto iteration : state) {
    fit.iterationCount = 0;
    const Vell::Vector stepped = FitNewton(fit, beta, score);
    benchmark::DoNotOptimize(stepped[0]);
  }
}

FitRows RowsOf(const benchmark::State& state) {
  const DataSet& data = DataOfSize(state.range(0), state.range(1)).data;
  FitRows rows;
  rows.Collect(RowsOfYGivenZ(data), data.hospitalSize);
  return rows;
}

void RunIndependentPass(benchmark::State& state) {
  const FitRows rows = RowsOf(state);
  FitState fit({kIndependent, {kTolerance, 1, 1.0}});
  RunPasses(state, fit, rows.ColumnCount(), IndependentScore(rows));
}

void RunExchangeablePass(benchmark::State& state) {
  const FitRows rows = RowsOf(state);
  FitState fit({kExchangeable, {kTolerance, 1, 1.0}});
  RunPasses(state, fit, rows.ColumnCount(), ExchangeableScore(fit, rows));
}

/// The whole fit of [Y|Z], gathering of the records and covariances included.
void RunFit(benchmark::State& state, const LogisticRegression& regression, const DataSet& data) {
  for ([[maybe_unused]] auto iteration : state) {
    const CoefficientEstimates estimates = regression.Fit(RowsOfYGivenZ(data));
    benchmark::DoNotOptimize(&estimates);
    benchmark::ClobberMemory();
  }
}

void RunIndependentFit(benchmark::State& state) {
  const DataSet& data = DataOfSize(state.range(0), state.range(1)).data;
  RunFit(state, {data.hospitalSize, {kIndependent, {kTolerance, kMaxIterations, 1.0}}}, data);
}

void RunExchangeableFit(benchmark::State& state) {
  const DataSet& data = DataOfSize(state.range(0), state.range(1)).data;
  RunFit(state, {data.hospitalSize, {kExchangeable, {kTolerance, kMaxIterations, 0.0}}}, data);
}

}  // namespace

void RegisterFitBenchmarks() {
  RegisterOverSizes("newton_pass", RunIndependentPass);
  RegisterOverSizes("newton_pass_gee", RunExchangeablePass);
  RegisterOverSizes("fit", RunIndependentFit);
  RegisterOverSizes("fit_gee", RunExchangeableFit);
}

}  // namespace Hovar::Bench
