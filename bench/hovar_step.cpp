// Runs one step of the program on a data file and prints what it took as one line of JSON, so that
// a comparison of several programs can call it beside others:
//
//     hovar_step TASK DATAFILE POA LAMBDA SCORES
//
// TASK is one of
//   read   the data file into a complete data set
//   logit  the [Y|Z] fit, independent records, prior precision LAMBDA, tolerance 1e-8
//   gee    the [Y|Z] fit with generalized estimating equations, prior precision 0, both covariances
//   cstat  one C-statistic of the predictions in SCORES
//   write  the individual predictions file with the predictions in SCORES
//   mcmc   20 iterations of the hierarchical model, after the [P|X] fit and the [X|Z] tables
// POA is the number of present-on-admission indicators. SCORES is a binary file of n doubles
// (predictions) followed by n doubles (responses, 0 or 1); only cstat and write read it.
//
// compute_s is the processor time of the step alone, without loading what the step needs.

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <string>
#include <vector>

#include "app/run_files.h"
#include "foundation/exceptions/exceptions.h"
#include "foundation/io/log.h"
#include "mcmc/hb_model.h"
#include "prediction/c_statistic.h"
#include "prediction/prediction_files.h"
#include "quiet_output.h"
#include "regression/covariance.h"
#include "regression/logistic_regression.h"
#include "regression/regression_results.h"
#include "task_report.h"

namespace {

using Hovar::Bench::Format;
using Hovar::Bench::IsTask;
using Hovar::Bench::ProcessorSecondsOf;
using Hovar::Bench::QuietOutput;
using Hovar::Bench::Quoted;
using Hovar::Bench::TaskReport;

constexpr double kTolerance = 1e-8;
constexpr std::int32_t kMaxIterations = 100;
constexpr std::int32_t kMcmcIterations = 20;

struct Arguments {
  std::string task;
  std::string dataFile;
  std::int32_t poaCount;
  double lambda;
  std::string scoresFile;
};

struct Scores {
  Vell::Vector predictions;
  std::vector<bool> responses;
};

Scores ReadScores(const std::string& path, std::int32_t records) {
  Hovar::Bench::Scores read;
  if (!Hovar::Bench::ReadScores(read, path, records)) {
    static_cast<void>(std::fprintf(stderr, "hovar_step: %s does not hold two times %d doubles\n",
                                   path.c_str(), records));
    std::exit(2);
  }
  Scores scores;
  scores.predictions.Resize(records);
  std::copy(read.predictions.begin(), read.predictions.end(), scores.predictions.begin());
  for (const double response : read.responses) {
    scores.responses.push_back(response != 0);
  }
  return scores;
}

std::string CoefficientList(const Vell::Vector& beta) {
  std::string list = "[";
  for (const double coefficient : beta) {
    list += (list.size() > 1 ? ", \"" : "\"") + Format("%.8g", coefficient) + "\"";
  }
  return list + "]";
}

/// What a step reports besides its time.
std::string RunFit(const Hovar::DataSet& data, const Hovar::FitSettings& settings,
                   double& seconds) {
  Hovar::FitState state(settings);
  Vell::Vector beta;
  seconds = ProcessorSecondsOf([&] {
    Hovar::FitRows rows;
    rows.Collect(Hovar::RowsOfYGivenZ(data), data.hospitalSize);
    beta = Hovar::FitCoefficients(state, rows);
    Hovar::EstimatesOf(state, beta);
  });
  std::string report = Quoted("coef", CoefficientList(beta)) +
                       Quoted("iterations", std::to_string(state.iterationCount));
  if (settings.workingCorrelation == Hovar::WorkingCorrelation::kExchangeable) {
    report += Quoted("alpha", Format("%.10g", state.alpha));
  }
  return report;
}

std::string RunCStatistic(const Hovar::DataSet& data, const Scores& scores, double& seconds) {
  double value = 0;
  seconds = ProcessorSecondsOf([&] {
    value = Hovar::CStatistic(
        scores.predictions, data.recordCount,
        [&](std::int32_t i) { return scores.responses[static_cast<std::size_t>(i)]; },
        [](std::int32_t) { return true; });
  });
  return Quoted("value", Format("%.12f", value));
}

/// A folder that was not there before.
std::filesystem::path NewFolder() {
  std::string name = (std::filesystem::temp_directory_path() / "hovar_step_XXXXXX").string();
  if (mkdtemp(name.data()) == nullptr) {
    static_cast<void>(std::fprintf(stderr, "hovar_step: cannot make %s\n", name.c_str()));
    std::exit(2);
  }
  return name;
}

void RunWrite(const Arguments& arguments, const Hovar::DataSet& data, const Scores& scores,
              double& seconds) {
  Hovar::IndividualPredictions predictions;
  for (Vell::Vector* column :
       {&predictions.yGivenZ, &predictions.yGivenX, &predictions.yGivenXWithoutP,
        &predictions.yGivenXWithoutPMcmc, &predictions.pGivenX, &predictions.pGivenAll}) {
    *column = scores.predictions;
  }
  const std::filesystem::path folder = NewFolder();
  const Vell::String path((folder / "individual.csv").c_str());
  const Vell::String dataFile(arguments.dataFile.c_str());
  seconds = ProcessorSecondsOf([&] {
    Hovar::WriteOutputFile(path, [&](Vell::IO::TextWriter& writer) {
      Hovar::WriteIndividualPredictions(predictions, data, dataFile, writer);
    });
  });
  std::filesystem::remove_all(folder);
}

std::string RunMcmc(Hovar::DataSet& data, double lambda, double& seconds) {
  const Hovar::FitSettings fit{Hovar::WorkingCorrelation::kIndependent,
                               {kTolerance, kMaxIterations, lambda}};
  Hovar::RegressionResults results;
  results.xzTables.Resize(data.variableCount - 1);
  for (std::int32_t k = 1; k < data.variableCount; ++k) {
    results.xzTables[k - 1] = Hovar::ComputeXzTable(data, k);
  }
  const Hovar::LogisticRegression regression{data.hospitalSize, fit};
  const Vell::Vector pGivenX = Hovar::EstimateVector(regression.Fit(Hovar::RowsOfPGivenX(data)));
  const Vell::Vector prior = Hovar::PriorTable(results, data.variableCount);
  const std::filesystem::path folder = NewFolder();
  const Hovar::HBModelSettings settings{fit, {1, 0, kMcmcIterations}, Vell::String(folder.c_str())};
  Hovar::HBModel model(data, pGivenX, prior, settings);
  seconds = ProcessorSecondsOf([&] { model.Run(); });
  std::filesystem::remove_all(folder);
  return Quoted("s_per_iter", Format("%.6g", seconds / kMcmcIterations)) +
         Quoted("iterations", std::to_string(kMcmcIterations));
}

std::string RunStep(const Arguments& arguments) {
  Hovar::DataSet data;
  double seconds = ProcessorSecondsOf([&] {
    Hovar::ReadDataFileAt(data, Vell::String(arguments.dataFile.c_str()), arguments.poaCount,
                          arguments.task == "write" ? Hovar::KeyUse::kKeep : Hovar::KeyUse::kDrop);
  });
  std::string report;
  if (arguments.task == "logit") {
    report = RunFit(
        data,
        {Hovar::WorkingCorrelation::kIndependent, {kTolerance, kMaxIterations, arguments.lambda}},
        seconds);
  } else if (arguments.task == "gee") {
    report = RunFit(
        data, {Hovar::WorkingCorrelation::kExchangeable, {kTolerance, kMaxIterations, 0}}, seconds);
  } else if (arguments.task == "cstat") {
    report = RunCStatistic(data, ReadScores(arguments.scoresFile, data.recordCount), seconds);
  } else if (arguments.task == "write") {
    RunWrite(arguments, data, ReadScores(arguments.scoresFile, data.recordCount), seconds);
  } else if (arguments.task == "mcmc") {
    report = RunMcmc(data, arguments.lambda, seconds);
  }
  return TaskReport(arguments.task, {"hovar", HOVAR_VERSION, data.recordCount, data.variableCount},
                    seconds, report);
}

}  // namespace

int main(int argumentCount, char** arguments) {
  if (argumentCount != 6 || !IsTask(arguments[1])) {
    static_cast<void>(
        std::fprintf(stderr,
                     "usage: hovar_step read|logit|gee|cstat|write|mcmc DATAFILE POA LAMBDA "
                     "SCORES\n"));
    return 2;
  }
  try {
    std::string report;
    {
      const QuietOutput quiet;
      report = RunStep({arguments[1], arguments[2],
                        static_cast<std::int32_t>(std::strtol(arguments[3], nullptr, 10)),
                        std::strtod(arguments[4], nullptr), arguments[5]});
    }
    std::printf("%s\n", report.c_str());
    return 0;
  } catch (const Vell::Exceptions::Exception&) {
    return 1;  // its line stands on standard error
  }
}
