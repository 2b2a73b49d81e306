// What a task of hovar_step costs at least on this machine: stand-alone kernels that share nothing
// with the program, know the data's shape and leave out whatever the answer does not need.
//
//     hovar_floor TASK DATAFILE POA PASSES SCORES
//
// TASK, DATAFILE, POA and SCORES are those of hovar_step, whose line of JSON this program's is
// like:
//   read   read(2) and one parse into packed cells
//   logit  column lists once, then PASSES passes; prior precision 1
//   gee    the same with the hospitals' sums; prior precision 0
//   cstat  sorting and counting
//   write  the text of seven numbers a record, and 20 ns a record for all else
//   mcmc   20 times a sweep, column lists and passes
// PASSES is the number of passes that the program took; 0 means as many as a tolerance of 1e-8
// takes.
//
// The kernels are compiled for the processor that they are built on (AVX-512, or AVX2 with BMI2 for
// reading; portable loops elsewhere), so build and measure on one machine.
//
// Results are printed for comparison with the program's; where it prints none (sweeps, numbers),
// a plain form runs after the measurement, and a difference ends the process with status 1.

#include <algorithm>
#include <bit>
#include <charconv>
#include <cstdio>
#include <cstdlib>
#include <string>
#include <string_view>
#include <vector>

#include "column_fit.h"
#include "packed_data.h"
#include "ranks_and_digits.h"
#include "sweep.h"
#include "task_report.h"

namespace {

using namespace std::literals;
using Hovar::Bench::Format;
using Hovar::Bench::IsTask;
using Hovar::Bench::ProcessorSecondsOf;
using Hovar::Bench::Quoted;
using Hovar::Bench::Scores;
using Hovar::Bench::TaskReport;
using Hovar::Floor::Coefficients;
using Hovar::Floor::Design;
using Hovar::Floor::PackedData;

constexpr int kMcmcIterations = 20;

struct Arguments {
  std::string task;
  std::string dataFile;
  std::int32_t poaCount;
  int passes;
  std::string scoresFile;
};

[[noreturn]] void Fail(const char* reason) {
  static_cast<void>(std::fprintf(stderr, "hovar_floor: %s\n", reason));
  std::exit(1);
}

/// [Y|Z] over all records.
Design DesignOfYGivenZ(const PackedData& data) {
  Design design;
  design.records = static_cast<std::size_t>(data.records);
  design.columns = static_cast<std::size_t>(data.columns);
  design.words = data.z.begin();
  design.responses.resize(design.records);
  for (std::size_t i = 0; i < design.records; ++i) {
    design.responses[i] = data.flags[i] & Hovar::Floor::kOutcome;
  }
  design.hospitalStart = data.hospitalStart;
  return design;
}

/// A model of X over the records that have none of the bits of `excluded`, without hospitals.
Design DesignOfX(const PackedData& data, std::uint8_t excluded, std::uint8_t response) {
  Design design;
  design.columns = static_cast<std::size_t>(data.columns);
  const auto records = static_cast<std::size_t>(data.records);
  design.ownWords.Grow(records, 0);
  design.words = design.ownWords.begin();
  design.responses.resize(records);
  for (std::size_t i = 0; i < records; ++i) {
    const std::uint8_t flags = data.flags[i];
    design.ownWords[design.records] = data.x[i];
    design.responses[design.records] = (flags & response) != 0 ? 1 : 0;
    design.records += (flags & excluded) == 0 ? 1 : 0;
  }
  return design;
}

std::string CellCounts(const PackedData& data) {
  long long y = 0;
  long long p = 0;
  long long z = 0;
  long long x = 0;
  long long missing = 0;
  for (std::size_t i = 0; i < static_cast<std::size_t>(data.records); ++i) {
    y += (data.flags[i] & Hovar::Floor::kOutcome) != 0 ? 1 : 0;
    p += (data.flags[i] & Hovar::Floor::kPresent) != 0 ? 1 : 0;
    missing += (data.flags[i] & Hovar::Floor::kPresentIsMissing) != 0 ? 1 : 0;
    z += std::popcount(data.z[i]);
    x += std::popcount(data.x[i]);
    missing += std::popcount(data.xMissing[i]);
  }
  std::string list = "[";
  for (const long long count : {y, p, z, x, missing}) {
    list += (list.size() > 1 ? ", " : "") + std::to_string(count);
  }
  return Quoted("set_cells", list + "]");
}

std::string RunFit(const PackedData& data, bool useGee, int passes, double& seconds) {
  Hovar::Floor::Fit fit;
  seconds = ProcessorSecondsOf([&] {
    fit = Hovar::Floor::FitDesign(DesignOfYGivenZ(data), useGee ? 0 : 1, useGee, passes);
  });
  std::string list = "[";
  for (std::size_t j = 0; j < static_cast<std::size_t>(data.columns); ++j) {
    list += (j > 0 ? ", \"" : "\"") + Format("%.8g", fit.beta[j]) + "\"";
  }
  std::string report =
      Quoted("coef", list + "]") + Quoted("iterations", std::to_string(fit.passes - 1));
  if (useGee) {
    report += Quoted("alpha", Format("%.10g", fit.alpha));
  }
  return report;
}

Scores ReadScores(const std::string& path, std::int32_t records) {
  Scores scores;
  if (!Hovar::Bench::ReadScores(scores, path, records)) {
    Fail("the file of scores is too short");
  }
  return scores;
}

void RunWrite(const Scores& scores, double& seconds) {
  constexpr std::size_t kNumbers = 7;
  constexpr std::size_t kTextSize = std::size_t{1} << 16;
  constexpr double kRestPerRecord = 20e-9;
  static char text[kTextSize + kNumbers * 32];
  seconds = ProcessorSecondsOf([&] {
    char* place = text;
    for (const double prediction : scores.predictions) {
      for (std::size_t i = 0; i < kNumbers; ++i) {
        place = Hovar::Floor::WriteSixDigits(place, prediction);
        *place++ = ',';
      }
      place = place < text + kTextSize ? place : text;
    }
  });
  seconds += kRestPerRecord * static_cast<double>(scores.predictions.size());
  for (const double prediction : scores.predictions) {
    char wanted[32];
    const char* const wantedEnd =
        std::to_chars(wanted, wanted + 32, prediction, std::chars_format::general, 6).ptr;
    const char* const end = Hovar::Floor::WriteSixDigits(text, prediction);
    if (std::string_view(text, static_cast<std::size_t>(end - text)) !=
        std::string_view(wanted, static_cast<std::size_t>(wantedEnd - wanted))) {
      Fail("a number's text is not that of the standard library");
    }
  }
}

void SetPriors(Hovar::Floor::SweepModel& model, const PackedData& data) {
  for (std::size_t j = 1; j < static_cast<std::size_t>(data.columns); ++j) {
    double set[2] = {};
    double known[2] = {};
    for (std::size_t i = 0; i < static_cast<std::size_t>(data.records); ++i) {
      const std::size_t z = data.z[i] >> j & 1;
      const bool isKnown = (data.xMissing[i] >> j & 1) == 0;
      known[z] += isKnown ? 1 : 0;
      set[z] += isKnown && (data.x[i] >> j & 1) != 0 ? 1 : 0;
    }
    model.prior[j] = {set[0] / known[0], set[1] / known[1]};
  }
}

PackedData CopyOf(const PackedData& data) {
  PackedData copy;
  const auto records = static_cast<std::size_t>(data.records);
  copy.records = data.records;
  copy.columns = data.columns;
  const auto copyArray = [records](auto& to, const auto& from) {
    to.Grow(records, 0);
    std::copy_n(from.begin(), records, to.begin());
  };
  copyArray(copy.z, data.z);
  copyArray(copy.x, data.x);
  copyArray(copy.xMissing, data.xMissing);
  copyArray(copy.flags, data.flags);
  return copy;
}

std::string RunMcmc(PackedData& data, int passes, double& seconds) {
  using namespace Hovar::Floor;
  SweepModel model;
  SetPriors(model, data);
  model.pGivenX = FitDesign(DesignOfX(data, kRecordHasMissing, kPresent), 1, false, 0).beta;
  PackedData plain = CopyOf(data);
  RandomWords random;
  int totalPasses = 0;
  seconds = ProcessorSecondsOf([&] {
    for (int i = 0; i < kMcmcIterations; ++i) {
      Sweep(data, model, random);
      const Fit fit = FitDesign(DesignOfX(data, kPresent, kOutcome), 1, false, passes);
      model.yGivenX = fit.beta;
      totalPasses += fit.passes;
    }
  });
  // One plain sweep from the first sweep's state and one quick one must agree in every cell.
  PackedData quick = CopyOf(plain);
  RandomWords plainRandom;
  RandomWords quickRandom;
  SweepPlainly(plain, model, plainRandom);
  Sweep(quick, model, quickRandom);
  for (std::size_t i = 0; i < static_cast<std::size_t>(data.records); ++i) {
    if (plain.x[i] != quick.x[i] || plain.flags[i] != quick.flags[i]) {
      Fail("a sweep drew another value than its plain form");
    }
  }
  return Quoted("s_per_iter", Format("%.6g", seconds / kMcmcIterations)) +
         Quoted("iterations", std::to_string(kMcmcIterations)) +
         Quoted("passes_per_iter", Format("%.3g", double{1} * totalPasses / kMcmcIterations));
}

std::string RunTask(const Arguments& arguments) {
  PackedData data;
  double seconds = ProcessorSecondsOf(
      [&] { data = Hovar::Floor::ReadPackedData(arguments.dataFile, arguments.poaCount); });
  std::string report;
  if (arguments.task == "read") {
    report = CellCounts(data);
  } else if (arguments.task == "logit" || arguments.task == "gee") {
    report = RunFit(data, arguments.task == "gee", arguments.passes, seconds);
  } else if (arguments.task == "cstat") {
    const Scores scores = ReadScores(arguments.scoresFile, data.records);
    double value = 0;
    seconds = ProcessorSecondsOf(
        [&] { value = Hovar::Floor::Concordance(scores.predictions, scores.responses); });
    report = Quoted("value", Format("%.12f", value));
  } else if (arguments.task == "write") {
    RunWrite(ReadScores(arguments.scoresFile, data.records), seconds);
  } else {
    report = RunMcmc(data, arguments.passes, seconds);
  }
  return TaskReport(arguments.task, {"floor", "1", data.records, data.columns}, seconds, report);
}

}  // namespace

int main(int argumentCount, char** arguments) {
  if (argumentCount != 6 || !IsTask(arguments[1])) {
    static_cast<void>(std::fprintf(
        stderr, "usage: hovar_floor read|logit|gee|cstat|write|mcmc DATAFILE POA PASSES SCORES\n"));
    return 2;
  }
  const std::string report =
      RunTask({arguments[1], arguments[2],
               static_cast<std::int32_t>(std::strtol(arguments[3], nullptr, 10)),
               static_cast<int>(std::strtol(arguments[4], nullptr, 10)), arguments[5]});
  std::printf("%s\n", report.c_str());
  return 0;
}
