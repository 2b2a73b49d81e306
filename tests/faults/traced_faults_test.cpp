// Every system call of the built program made to fail in turn from outside, by strace.

#include <gtest/gtest.h>

#include <algorithm>
#include <iostream>
#include <map>
#include <string_view>
#include <vector>

#include "faults/fault_answers.h"
#include "faults/fault_study.h"
#include "faults/sample.h"
#include "faults/traced_run.h"

namespace Testing {
namespace {

constexpr std::size_t kSampledRuns = 60;
// The share of faults that may hit a call of the sanitizers instead.
constexpr double kMissedShare = HOVAR_IS_SANITIZED != 0 ? 0.2 : 0;
constexpr int kStandardError = 2;

constexpr std::string_view kInterrupted = "error=EINTR";
constexpr std::string_view kPart = "retval=1";  // only the first byte is taken
constexpr std::string_view kNothing = "retval=0";

std::vector<std::string_view> EffectsOn(const TracedCall& call) {
  std::vector<std::string_view> effects = {"error=EIO", "error=ENOSPC", kInterrupted};
  if (call.name == "write") {
    effects.insert(effects.end(), {kPart, kNothing});
  }
  return effects;
}

class TracedFaultTest : public testing::TestWithParam<const char*> {
 protected:
  void SetUp() override {
    const std::string reason = WhyNothingCanBeTraced();
    ASSERT_TRUE(reason.empty()) << reason;
    study_.Enlarge();
    whole_ = RunTraced(study_, GetParam());
    ASSERT_EQ(whole_.run.end, ProcessEnd{0}) << whole_.run.Text();
    ASSERT_GT(std::count_if(whole_.calls.begin(), whole_.calls.end(),
                            [](const TracedCall& call) { return call.isOfProgram; }),
              40);
  }

  /// Runs with a fault and expects the answer to it. False when no call of the program was hit: how
  /// many calls the sanitizers make varies.
  bool IsAnswered(const FaultAnswers& answers, const Injection& injection) {
    study_.RemoveOutput();
    const TracedResult result = RunTraced(study_, GetParam(), injection);
    const auto hit = std::find_if(result.calls.begin(), result.calls.end(),
                                  [](const TracedCall& call) { return call.isInjected; });
    if (hit == result.calls.end() || !hit->isOfProgram) {
      return false;
    }
    const OutputFiles files = study_.Output();
    if (injection.effect == kInterrupted) {
      answers.ExpectWhole(result.run, files);
    } else if (injection.effect != kPart) {
      answers.ExpectAnswer(hit->call, result.run, files);
    } else if (hit->size > 1) {
      ExpectOneByteLess(answers, result, static_cast<std::size_t>(hit - result.calls.begin()),
                        files);
    }
    return true;
  }

  /// strace says that one byte was written, but nothing was: the run must go on with the next byte,
  /// so that one is missing.
  void ExpectOneByteLess(const FaultAnswers& answers, const TracedResult& result, std::size_t index,
                         const OutputFiles& files) {
    const SystemCallReport& call = result.calls[index].call;
    const std::string name = NameOfOutput(call);
    OutputFiles expected = answers.Complete();
    if (!name.empty()) {
      expected.at(name).erase(PositionOf(result.calls, index), 1);
    }
    EXPECT_EQ(result.run.end, ProcessEnd{0}) << result.run.Text();
    EXPECT_EQ(files, expected);
    EXPECT_EQ(result.run.error.size() + (call.file == kStandardError ? 1 : 0),
              whole_.run.error.size());
  }

  /// Where in its file write `index` begins.
  static std::size_t PositionOf(const std::vector<TracedCall>& calls, std::size_t index) {
    std::size_t position = 0;
    for (std::size_t i = 0; i < index; ++i) {
      if (calls[i].name == "write" &&
          std::string_view(calls[i].call.path) == calls[index].call.path) {
        position += calls[i].size;
      }
    }
    return position;
  }

  /// The name below out/; empty for a standard stream.
  static std::string NameOfOutput(const SystemCallReport& call) {
    const std::string path(call.path);
    const std::string folder = "/out/";
    const std::size_t begin = path.rfind(folder);
    return call.file <= kStandardError ? "" : path.substr(begin + folder.size());
  }

  FaultStudy study_;
  TracedResult whole_;
};

TEST_P(TracedFaultTest, EachFailingCallIsAnswered) {
  const FaultAnswers answers(GetParam(), whole_.run, study_.Output());
  std::size_t total = 0;
  for (const TracedCall& call : whole_.calls) {
    total += call.isOfProgram ? EffectsOn(call).size() : 0;
  }
  Sample sample(kSampledRuns, total);
  std::map<std::string, int> numbers;
  std::map<std::string, int> runs;
  int missed = 0;
  for (const TracedCall& call : whole_.calls) {
    const int number = ++numbers[call.name];
    if (!call.isOfProgram) {
      continue;
    }
    for (const std::string_view effect : EffectsOn(call)) {
      if (sample.Takes()) {
        SCOPED_TRACE(call.name + " " + std::to_string(number) + ", " + std::string(effect));
        ++runs[call.name];
        missed += IsAnswered(answers, {call.name, number, std::string(effect)}) ? 0 : 1;
      }
    }
  }
  std::cout << sample.Text() << ":";
  int all = 0;
  for (const auto& [name, count] : runs) {
    all += count;
    std::cout << " " << name << " " << count;
  }
  std::cout << ", " << missed << " missed\n";
  EXPECT_LE(missed, kMissedShare * all);
}

INSTANTIATE_TEST_SUITE_P(Runs, TracedFaultTest, testing::ValuesIn(kStudyDefinitions),
                         NameOfStudyRun);

}  // namespace
}  // namespace Testing
