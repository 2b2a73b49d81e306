// Judges the hospitals of a data file over completed studies and prints what each part took as a line
// of JSON, the last one of its output:
//
//     hovar_profile DATAFILE POA STUDIES SWEEPS
//
// The coefficients of [P|X] and [Y|X,P=0] are those of fits to the complete records; the draws of
// the latter are normal about them with the fit's standard errors, so no chain is needed.
//
// Times are those of the processor. "sampling" draws the completed studies, "judging" is JudgeStudy; its
// parts are measured in a study of their own: cumulants, tails, the model's fits and grid, and the
// posterior distributions of the hospitals' ratios.

#include <sys/resource.h>

#include <cstdio>
#include <cstdlib>
#include <ctime>
#include <functional>
#include <string>
#include <vector>

#include "app/run_files.h"
#include "foundation/exceptions/exceptions.h"
#include "foundation/random/random_generator.h"
#include "profiling/profile_summary.h"
#include "profiling/ratio_tails.h"
#include "profiling/study_tables.h"
#include "regression/logistic_regression.h"
#include "regression/regression_results.h"

namespace {

double ProcessorSeconds() { return static_cast<double>(std::clock()) / CLOCKS_PER_SEC; }

double SecondsOf(const std::function<void()>& step) {
  const double start = ProcessorSeconds();
  step();
  return ProcessorSeconds() - start;
}

/// The fits that the studies need.
Hovar::RegressionResults FitModels(const Hovar::DataSet& data) {
  const Hovar::FitSettings fit{Hovar::WorkingCorrelation::kIndependent, {1e-8, 100, 1}};
  Hovar::RegressionResults results;
  results.xzTables.Resize(data.variableCount - 1);
  for (std::int32_t k = 1; k < data.variableCount; ++k) {
    results.xzTables[k - 1] = Hovar::ComputeXzTable(data, k);
  }
  const Hovar::LogisticRegression regression{data.hospitalSize, fit};
  results.Block(Hovar::Model::kPGivenX) = regression.Fit(Hovar::RowsOfPGivenX(data));
  results.Block(Hovar::Model::kYGivenXWithoutPMcmc) =
      regression.Fit(Hovar::RowsOfYGivenXWithoutP(data));
  return results;
}

std::vector<double> DrawCoefficients(const Hovar::RegressionResults& results, std::int32_t study) {
  Vell::RandomGenerator::Seed(static_cast<std::uint32_t>(study), 12345);
  std::vector<double> draw;
  for (const auto& estimate : results.Block(Hovar::Model::kYGivenXWithoutPMcmc)) {
    const double error = estimate.modelStandardError > 0 ? estimate.modelStandardError : 0;
    draw.push_back(estimate.estimate + error * Vell::RandomGenerator::Normal());
  }
  return draw;
}

/// The parts of the judgement of one study, each by itself.
std::string PartsOf(const Hovar::CompletedStudy& study, const Hovar::ProfileLayout& layout) {
  const auto count = static_cast<std::size_t>(study.HospitalCount());
  Hovar::StudyTables tables(count);
  Hovar::TailComputation computation;
  Hovar::TailTable tail;
  std::vector<Hovar::CumulantTable> cumulants(count);
  std::vector<double> risks;
  const auto forEach = [&](const auto& part) {
    for (std::size_t h = 0; h < count; ++h) {
      part(h, Hovar::GatherCases(risks, study, static_cast<std::int32_t>(h)));
    }
  };
  const double tabulating = SecondsOf([&] {
    forEach([&](std::size_t h, const Hovar::HospitalCases& cases) {
      Hovar::TabulateCumulants(cumulants[h], layout.etaGrids[h], risks);
      tables.Set(h, cumulants[h], layout.etaGrids[h], risks, cases.observed);
    });
  });
  const double tails = SecondsOf([&] {
    forEach([&](std::size_t h, const Hovar::HospitalCases& cases) {
      computation.Compute(tail, layout.etaGrids[h], cumulants[h], risks,
                          static_cast<std::int64_t>(cases.observed));
    });
  });
  Hovar::EffectEvidence effects;
  Hovar::HyperPosterior posterior;
  const double model = SecondsOf([&] {
    posterior =
        Hovar::AddEffects(effects, tables.Outcomes(), layout.tauGrid, layout.start,
                          Hovar::MeanModel::kPlain, tables.LogCases(), tables.MeanLogOdds());
  });
  const double ratios = SecondsOf([&] {
    for (std::size_t h = 0; h < count; ++h) {
      Hovar::JudgeShrunken(tables.Outcomes()[h], posterior, layout.ratioGrids[h], {});
    }
  });
  char text[256];
  static_cast<void>(std::snprintf(text, sizeof text,
                                  ", \"cumulants_s\": %.4g, \"tails_s\": %.4g, \"model_s\": %.4g, "
                                  "\"ratios_s\": %.4g, \"grid_points\": %zu",
                                  tabulating, tails, model, ratios, posterior.points.size()));
  return text;
}

void Run(const std::string& file, std::int32_t poaCount, std::int32_t studies,
         std::int32_t sweeps) {
  Hovar::DataSet data;
  Hovar::ReadDataFileAt(data, Vell::String(file.c_str()), poaCount);
  const Hovar::RegressionResults results = FitModels(data);
  Hovar::ProfileSettings settings;
  settings.seed = {362436069, 521288629};
  Hovar::CompletedStudies source(data, results, {settings.seed, sweeps, 0});
  const std::vector<std::int32_t> uncertain = Hovar::CountUncertainEvents(data);
  Hovar::ProfileEvidence evidence(static_cast<std::size_t>(data.hospitalCount));
  Hovar::ProfileLayout layout;
  Hovar::CompletedStudy study;
  double sampling = 0;
  double preparing = 0;
  double judging = 0;
  for (std::int32_t m = 1; m <= studies; ++m) {
    const std::vector<double> draw = DrawCoefficients(results, m);
    sampling += SecondsOf([&] { source.Draw(study, m, draw); });
    if (m == 1) {
      preparing = SecondsOf([&] { layout = MakeProfileLayout(study, uncertain, settings); });
    }
    judging += SecondsOf([&] { JudgeStudy(evidence, study, m, layout, settings); });
  }
  Hovar::ProfileSummary summary;
  const double summing = SecondsOf([&] { summary = SummariseProfile(evidence, layout, settings); });
  rusage usage{};
  getrusage(RUSAGE_SELF, &usage);
  const std::string parts = PartsOf(study, layout);
  std::printf(
      "{\"n\": %d, \"p\": %d, \"hospitals\": %d, \"studies\": %d, \"sweeps\": %d, "
      "\"total_s\": %.4g, \"sampling_s\": %.4g, \"preparing_s\": %.4g, \"judging_s\": %.4g, "
      "\"summing_s\": %.4g, \"peak_mib\": %.1f, \"tau\": %.4f%s}\n",
      data.recordCount, data.variableCount, data.hospitalCount, studies, sweeps,
      sampling + preparing + judging + summing, sampling, preparing, judging, summing,
      static_cast<double>(usage.ru_maxrss) / 1024, summary.effects.tau, parts.c_str());
}

}  // namespace

int main(int argumentCount, char** arguments) {
  if (argumentCount != 5) {
    static_cast<void>(std::fprintf(stderr, "usage: hovar_profile DATAFILE POA STUDIES SWEEPS\n"));
    return 2;
  }
  const auto number = [&](int k) {
    return static_cast<std::int32_t>(std::strtol(arguments[k], nullptr, 10));
  };
  try {
    Run(arguments[1], number(2), number(3), number(4));
    return 0;
  } catch (const Vell::Exceptions::Exception&) {
    return 1;  // its line stands on standard error
  }
}
