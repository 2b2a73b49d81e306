// Every system call of the built program made to fail in turn from outside, by strace.

#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>
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
constexpr int kStandardOutput = 1;
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
    ASSERT_EQ(reason, "");
    study_.Enlarge();
    whole_ = RunTraced(study_, GetParam());
    ASSERT_EQ(whole_.run.end, ProcessEnd{0}) << whole_.run.Text();
    const auto banner =
        std::find_if(whole_.calls.begin(), whole_.calls.end(), [](const TracedCall& traced) {
          return traced.name == "write" && traced.call.file == kStandardOutput;
        });
    ASSERT_NE(banner, whole_.calls.end());
    first_ = static_cast<std::size_t>(banner - whole_.calls.begin());
    ASSERT_GT(whole_.calls.size() - first_, 40U);
  }

  /// True for a call of the program. Those before the banner are the loader's, which looks for
  /// libraries; the sanitizers open pipes of their own and read what the system tells of the
  /// process.
  bool IsOfProgram(std::size_t index) const {
    const SystemCallReport& call = whole_.calls[index].call;
    const std::string_view path(call.path);
    return index >= first_ &&
           (call.file < 0 ? !path.starts_with('/')
                          : call.file <= kStandardError || path.starts_with(folder_));
  }

  /// Runs with a fault of call `index` of the whole run, and expects its answer.
  void ExpectAnswer(const FaultAnswers& answers, std::size_t index, int number,
                    std::string_view effect) {
    const TracedCall& call = whole_.calls[index];
    study_.RemoveOutput();
    const TracedResult result =
        RunTraced(study_, GetParam(), Injection{call.name, number, std::string(effect)});
    ASSERT_GT(result.calls.size(), index) << result.run.Text();
    ASSERT_TRUE(result.calls[index].isInjected) << "another call was hit";
    const OutputFiles files = study_.Output();
    if (effect == kInterrupted) {
      answers.ExpectWhole(result.run, files);
    } else if (effect == kPart && call.size > 1) {
      ExpectOneByteLess(answers, index, result.run, files);
    } else if (effect != kPart) {
      answers.ExpectAnswer(call.call, result.run, files);
    }
  }

  /// strace says that one byte was written, but nothing was: the run must go on with the next byte,
  /// so that one is missing.
  void ExpectOneByteLess(const FaultAnswers& answers, std::size_t index, const RunResult& result,
                         const OutputFiles& files) {
    const SystemCallReport& call = whole_.calls[index].call;
    const std::string name = NameOfOutput(call);
    OutputFiles expected = answers.Complete();
    if (!name.empty()) {
      expected.at(name).erase(Position(index), 1);
    }
    EXPECT_EQ(result.end, ProcessEnd{0}) << result.Text();
    EXPECT_EQ(files, expected);
    EXPECT_EQ(result.error.size() + (call.file == kStandardError ? 1 : 0), whole_.run.error.size());
  }

  /// Where in its file write `index` begins.
  std::size_t Position(std::size_t index) const {
    std::size_t position = 0;
    for (std::size_t i = 0; i < index; ++i) {
      const TracedCall& earlier = whole_.calls[i];
      if (earlier.name == "write" &&
          std::string_view(earlier.call.path) == whole_.calls[index].call.path) {
        position += earlier.size;
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
  std::string folder_ = std::filesystem::canonical(study_.Path());
  TracedResult whole_;
  std::size_t first_ = 0;
};

TEST_P(TracedFaultTest, EachFailingCallIsAnswered) {
  const FaultAnswers answers(GetParam(), whole_.run, study_.Output());
  std::size_t total = 0;
  for (std::size_t i = 0; i < whole_.calls.size(); ++i) {
    total += IsOfProgram(i) ? EffectsOn(whole_.calls[i]).size() : 0;
  }
  Sample sample(kSampledRuns, total);
  std::map<std::string, int> numbers;
  std::map<std::string, int> runs;
  for (std::size_t i = 0; i < whole_.calls.size(); ++i) {
    const std::string& name = whole_.calls[i].name;
    const int number = ++numbers[name];
    if (!IsOfProgram(i)) {
      continue;
    }
    for (const std::string_view effect : EffectsOn(whole_.calls[i])) {
      if (sample.Takes()) {
        SCOPED_TRACE(name + " " + std::to_string(number) + ", " + std::string(effect));
        ++runs[name];
        ExpectAnswer(answers, i, number, effect);
      }
    }
  }
  std::cout << sample.Text() << ":";
  for (const auto& [name, count] : runs) {
    std::cout << " " << name << " " << count;
  }
  std::cout << "\n";
}

INSTANTIATE_TEST_SUITE_P(Runs, TracedFaultTest,
                         testing::Values("analysis.xml", "gee.xml", "prediction.xml",
                                         "validation.xml", "batch.xml"),
                         [](const auto& definition) {
                           const std::string name = definition.param;
                           return name.substr(0, name.find('.'));
                         });

}  // namespace
}  // namespace Testing
