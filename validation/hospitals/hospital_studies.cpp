// Judges the hospitals of simulated studies, whose truth is known, and prints how often the judgement is right,
// as lines "scenario,figure,value,standard error,count":
//
//     hovar_hospital_studies SCENARIO STUDIES COMPLETED FIRST [SEED]
//
//     hovar_hospital_studies sweeps COMPLETED
//
// SCENARIO is none, normal, outliers, missing or size; COMPLETED the completed studies of each, FIRST the
// number of the first study, so that runs can be shared out. Each study is analysed as the program does: [P|X] and
// the [X|Z] tables from complete records, [Y|X,P=0] by the hierarchical model's chain of 200 iterations after 30,
// every fifth kept. A standard error is that of a mean over studies, whose hospitals are not independent.

#include <unistd.h>

#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <map>
#include <sstream>

#include "foundation/exceptions/exceptions.h"
#include "foundation/random/random_generator.h"
#include "hospitals/generator.h"
#include "mcmc/hb_model.h"
#include "profiling/profile_summary.h"
#include "regression/logistic_regression.h"
#include "regression/regression_results.h"

namespace HospitalStudies {
namespace {

/// Figures, each a ratio of sums over hospitals, with the sums of every study for its standard error.
class Figures {
 public:
  void Add(const std::string& name, double value, double weight = 1) {
    Sums& sums = now_[name];
    sums.value += value * weight;
    sums.weight += weight;
  }
  void EndStudy() {
    for (const auto& [name, sums] : now_) {
      all_[name].push_back(sums);
    }
    now_.clear();
  }
  void Print(const std::string& scenario) const {
    for (const auto& [name, studies] : all_) {
      double value = 0;
      double weight = 0;
      for (const Sums& sums : studies) {
        value += sums.value;
        weight += sums.weight;
      }
      const double mean = value / weight;
      double squares = 0;
      for (const Sums& sums : studies) {
        const double rest = sums.value - mean * sums.weight;
        squares += rest * rest;
      }
      std::printf("%s,%s,%.5g,%.3g,%.0f\n", scenario.c_str(), name.c_str(), mean,
                  std::sqrt(squares) / weight, weight);
    }
  }

 private:
  struct Sums {
    double value = 0;
    double weight = 0;
  };
  std::map<std::string, Sums> now_;
  std::map<std::string, std::vector<Sums>> all_;
};

/// The draws of a chain file, without the numbers of the steps.
std::vector<std::vector<double>> ReadChain(const std::filesystem::path& path) {
  std::vector<std::vector<double>> draws;
  std::ifstream file(path);
  std::string line;
  std::getline(file, line);
  while (std::getline(file, line)) {
    std::istringstream cells(line);
    std::string cell;
    std::vector<double>& draw = draws.emplace_back();
    std::getline(cells, cell, ',');
    while (std::getline(cells, cell, ',')) {
      draw.push_back(std::stod(cell));
    }
  }
  return draws;
}

struct Analysis {
  Hovar::RegressionResults results;
  std::vector<std::vector<double>> draws;
};

Analysis Analyse(Hovar::DataSet& data, std::uint32_t number) {
  Vell::RandomGenerator::Seed(362436069 + number, 521288629);
  const Hovar::FitSettings fit{Hovar::WorkingCorrelation::kIndependent, {1e-8, 100, 0.001}};
  Analysis analysis;
  for (std::int32_t k = 1; k < data.variableCount; ++k) {
    analysis.results.xzTables.Append(Hovar::ComputeXzTable(data, k));
  }
  const Hovar::LogisticRegression regression{data.hospitalSize, fit};
  analysis.results.Block(Hovar::Model::kPGivenX) = regression.Fit(Hovar::RowsOfPGivenX(data));
  const Vell::Vector pGivenX =
      Hovar::EstimateVector(analysis.results.Block(Hovar::Model::kPGivenX));
  const Vell::Vector prior = Hovar::PriorTable(analysis.results, data.variableCount);
  const std::filesystem::path folder = std::filesystem::temp_directory_path() /
                                       ("hovar_hospital_studies_" + std::to_string(getpid()));
  const Hovar::HBModelSettings settings{fit, {5, 30, 200}, Vell::String(folder.c_str())};
  Hovar::HBModel model(data, pGivenX, prior, settings);
  model.Run();
  analysis.draws = ReadChain(folder / "Chain.csv");
  std::filesystem::remove_all(folder);
  return analysis;
}

Hovar::ProfileSummary Judge(Hovar::DataSet& data, const Analysis& analysis, std::int32_t completed,
                            std::uint32_t number) {
  constexpr std::int32_t kSweeps = 10;
  Hovar::ProfileSettings settings;
  settings.seed = {12345 + number, 6789};
  Hovar::CompletedStudies source(data, analysis.results, {settings.seed, kSweeps, 0});
  const std::vector<std::int32_t> uncertain = Hovar::CountUncertainEvents(data);
  Hovar::ProfileEvidence evidence(static_cast<std::size_t>(data.hospitalCount));
  Hovar::ProfileLayout layout;
  Hovar::CompletedStudy study;
  for (std::int32_t m = 1; m <= completed; ++m) {
    const auto draws = static_cast<std::int64_t>(analysis.draws.size());
    source.Draw(
        study, m,
        analysis.draws[static_cast<std::size_t>(Hovar::EvenlySpacedDraw(m, completed, draws))]);
    if (m == 1) {
      layout = Hovar::MakeProfileLayout(study, uncertain, settings);
    }
    Hovar::JudgeStudy(evidence, study, m, layout, settings);
  }
  return Hovar::SummariseProfile(evidence, layout, settings);
}

std::string BandOf(double expected) {
  return expected < 1    ? "below 1"
         : expected < 5  ? "1 to 5"
         : expected < 20 ? "5 to 20"
         : expected < 80 ? "20 to 80"
                         : "80 and more";
}

std::string BandOfProbability(double p) {
  return p < 0.025   ? "0 to 0.025"
         : p < 0.2   ? "0.025 to 0.2"
         : p < 0.5   ? "0.2 to 0.5"
         : p < 0.8   ? "0.5 to 0.8"
         : p < 0.975 ? "0.8 to 0.975"
                     : "0.975 to 1";
}

void AddHospital(Figures& figures, const Hovar::HospitalJudgement& judged, const Truth& truth,
                 const Scenario& scenario) {
  if (!(judged.ratio.cases > 0) || !(truth.cases > 0)) {
    return;
  }
  const std::string band = BandOf(truth.expected);
  const std::string missing = truth.missingShare > 0.3 ? "P missing often" : "P missing seldom";
  const auto covers = [](const Hovar::Interval& interval, double value) {
    return interval.lower <= value && value <= interval.upper ? 1.0 : 0.0;
  };
  const double covered = covers(judged.ratio.limits95, truth.theta);
  figures.Add("coverage 95 %: expected " + band, covered);
  figures.Add("coverage 99.8 %: expected " + band, covers(judged.ratio.limits998, truth.theta));
  figures.Add("coverage of shrunken intervals", covers(judged.shrunken.limits95, truth.shrunken));
  figures.Add("bias of O in events per expected event",
              (judged.ratio.observed - truth.events) / truth.expected, truth.expected);
  figures.Add("bias of E in events per expected event",
              (judged.ratio.expected - truth.expected) / truth.expected, truth.expected);
  const auto square = [](double x) { return x * x; };
  figures.Add("mean square error: raw", square(judged.ratio.ratio - truth.theta));
  figures.Add("mean square error: shrunken", square(judged.shrunken.ratio - truth.shrunken));
  const double aboveOne = judged.shrunken.aboveOne;
  const std::string probability = BandOfProbability(aboveOne);
  figures.Add("P(>1) stated: " + probability, aboveOne);
  figures.Add("P(>1) true: " + probability, truth.shrunken > 1 ? 1 : 0);
  if (!judged.isSmall) {
    figures.Add("flagged by limits: 95 %", judged.byLimits == Hovar::Flag::kNone ? 0 : 1);
    figures.Add("flagged by limits: 99.8 %", judged.byLimits == Hovar::Flag::kVeryHigh ||
                                                     judged.byLimits == Hovar::Flag::kVeryLow
                                                 ? 1
                                                 : 0);
    figures.Add("flagged by differences: 95 %", judged.byDifferences == Hovar::Flag::kNone ? 0 : 1);
    figures.Add("flagged by posterior: 95 %", judged.byPosterior == Hovar::Flag::kNone ? 0 : 1);
  }
  if (scenario.missingPOfSome > 0) {
    figures.Add("coverage 95 %: " + missing, covered);
    // The slope of log ratio on the true log ratio, through the origin: below 1 is drawn to 1.
    const double logTruth = std::log(truth.theta);
    if (judged.ratio.ratio > 0 && truth.expected >= 5) {
      figures.Add("log ratio per true log ratio: " + missing,
                  std::log(judged.ratio.ratio) / logTruth, truth.expected * square(logTruth));
    }
  }
}

const std::vector<Scenario> kScenarios = {
    {"none", 0, false, 0, 0, 0, 100},         {"normal", 0.25, false, 0, 0, 0, 100},
    {"outliers", 0.2, true, 0, 0, 0, 100},    {"missing", 0.25, false, 0.04, 0.6, 0.03, 100},
    {"size", 0, false, 0.04, 0.3, 0.03, 100},
};

void Run(const Scenario& scenario, int studies, std::int32_t completed, int first,
         std::uint64_t seed) {
  Figures figures;
  for (int k = first; k < first + studies; ++k) {
    std::mt19937_64 random(seed + 1000003 * static_cast<std::uint64_t>(k));
    SimulatedStudy study = Simulate(scenario, random);
    const auto number = static_cast<std::uint32_t>(k);
    const Analysis analysis = Analyse(study.data, number);
    const Hovar::ProfileSummary summary = Judge(study.data, analysis, completed, number);
    for (std::size_t h = 0; h < study.truth.size(); ++h) {
      AddHospital(figures, summary.hospitals[h], study.truth[h], scenario);
    }
    figures.Add("tau", summary.effects.tau);
    figures.Add("coverage of tau", summary.effects.tauLimits95.lower <= scenario.sd &&
                                           scenario.sd <= summary.effects.tauLimits95.upper
                                       ? 1
                                       : 0);
    figures.Add("test of tau = 0: below 0.05", summary.effects.tauP < 0.05 ? 1 : 0);
    figures.Add("test of tau = 0: below 0.01", summary.effects.tauP < 0.01 ? 1 : 0);
    figures.Add("test of volume: below 0.05", summary.effects.volumeP < 0.05 ? 1 : 0);
    figures.EndStudy();
  }
  figures.Print(scenario.name);
}

/// How many sweeps a completed study needs: what it has after B of them from cleared bits, as means over
/// completed studies of one study of the scenario "missing", in its hospitals that often lack P.
void RunSweeps(std::int32_t completed, std::uint64_t seed) {
  std::mt19937_64 random(seed);
  SimulatedStudy study = Simulate(kScenarios[3], random);
  const Analysis analysis = Analyse(study.data, 1);
  for (const std::int32_t sweeps : {0, 1, 2, 3, 5, 10, 20, 50}) {
    Hovar::CompletedStudies source(study.data, analysis.results, {{12345, 6789}, sweeps, 0});
    Figures figures;
    const std::string after = " after " + std::to_string(sweeps) + " sweeps";
    for (std::int32_t m = 1; m <= completed; ++m) {
      const auto draws = static_cast<std::int64_t>(analysis.draws.size());
      Hovar::CompletedStudy drawn;
      source.Draw(
          drawn, m,
          analysis.draws[static_cast<std::size_t>(Hovar::EvenlySpacedDraw(m, completed, draws))]);
      double observed = 0;
      double expected = 0;
      for (std::int32_t h = 9; h < drawn.HospitalCount(); h += 10) {
        for (const std::uint8_t y : drawn.Outcomes(h)) {
          observed += y;
        }
        for (const double p : drawn.Probabilities(h)) {
          expected += p;
        }
      }
      figures.Add("observed" + after, observed);
      figures.Add("expected" + after, expected);
      figures.EndStudy();
    }
    figures.Print("sweeps");
  }
}

}  // namespace
}  // namespace HospitalStudies

int main(int argumentCount, char** arguments) {
  const auto number = [&](int k) {
    return static_cast<int>(std::strtol(arguments[k], nullptr, 10));
  };
  if (argumentCount == 3 && std::string(arguments[1]) == "sweeps") {
    HospitalStudies::RunSweeps(number(2), 20191118);
    return 0;
  }
  for (const HospitalStudies::Scenario& scenario : HospitalStudies::kScenarios) {
    if (argumentCount >= 5 && scenario.name == arguments[1]) {
      const std::uint64_t seed =
          argumentCount > 5 ? static_cast<std::uint64_t>(number(5)) : 20191118;
      try {
        HospitalStudies::Run(scenario, number(2), number(3), number(4), seed);
        return 0;
      } catch (const Vell::Exceptions::Exception&) {
        return 1;  // its line stands on standard error
      }
    }
  }
  static_cast<void>(std::fprintf(stderr,
                                 "usage: hovar_hospital_studies none|normal|outliers|missing|size "
                                 "STUDIES COMPLETED FIRST [SEED]\n"));
  return 2;
}
