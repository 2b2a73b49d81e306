// Every allocation made to fail in turn in what the launcher does itself: checking, planning,
// reading chains, judging them, showing progress, recording. Each must be reported as what it is,
// and leave nothing behind; leaks are reported by the address sanitizer's leak check.

#include <gtest/gtest.h>

#include <filesystem>
#include <functional>
#include <new>
#include <string>
#include <vector>

#include "faults/counted_new.h"
#include "faults/fault_study.h"
#include "faults/sample.h"
#include "launcher/options.h"
#include "support/allocation_fault.h"
#include "support/raised.h"
#include "tools/chains/chain_definitions.h"
#include "tools/chains/chain_files.h"
#include "tools/chains/verdict_text.h"
#include "tools/check/definition_checker.h"
#include "tools/plan/run_plan.h"
#include "tools/run/progress.h"
#include "tools/run/run_lines.h"
#include "tools/run/run_record.h"
#include "tools/support/sha256.h"

namespace Testing {
namespace {

namespace fs = std::filesystem;
using Work = std::function<std::string()>;

constexpr std::size_t kSampledFaults = 300;

/// What a piece of work gave, or how it failed.
struct Ending {
  std::string result;
  bool isOutOfMemory = false;
  int allocations = 0;
};

/// A piece of work under a fault.
template <typename Fault>
Ending EndingWith(const Work& work, int failing) {
  OutputCapture capture;
  Ending ending;
  const Fault fault(failing);
  try {
    ending.result = work();
  } catch (const std::bad_alloc&) {
    ending.isOutOfMemory = true;
  } catch (const Vell::Exceptions::OutOfMemoryException&) {
    ending.isOutOfMemory = true;
  }
  ending.allocations = fault.Count();
  return ending;
}

template <typename Fault>
void ExpectEachFaultTold(const Work& work) {
  const Ending whole = EndingWith<Fault>(work, 0);
  EXPECT_FALSE(whole.isOutOfMemory);
  Sample sample(kSampledFaults, static_cast<std::size_t>(whole.allocations));
  for (int failing = 1; failing <= whole.allocations; ++failing) {
    if (sample.Takes()) {
      SCOPED_TRACE("allocation " + std::to_string(failing));
      EXPECT_TRUE(EndingWith<Fault>(work, failing).isOutOfMemory);
    }
  }
  EXPECT_EQ(EndingWith<Fault>(work, 0).result, whole.result);
}

/// Works in the folder of a study.
class LauncherMemoryTest : public testing::Test {
 protected:
  LauncherMemoryTest() : before_(fs::current_path()) { fs::current_path(study_.Path()); }
  ~LauncherMemoryTest() override { fs::current_path(before_); }

  static void ExpectFaultsTold(const Work& work) {
    ExpectEachFaultTold<CountedNew>(work);
    ExpectEachFaultTold<AllocationFault>(work);
  }

  static std::string Checked(const std::string& definition) {
    Hovar::DefinitionChecker checkup(Hovar::Describe::kData);
    checkup.Check(definition);
    return checkup.Found().Lines() + checkup.Description() + checkup.Found().Summary();
  }

  std::string With(const std::string& file, const std::string& from, const std::string& to) const {
    std::string text = study_.Read(file);
    const std::size_t place = text.find(from);
    EXPECT_NE(place, std::string::npos) << from;
    return text.replace(place, from.size(), to);
  }

  FaultStudy study_;

 private:
  fs::path before_;
};

TEST_F(LauncherMemoryTest, CheckingAGoodBatch) {
  EXPECT_NE(Checked("batch.xml").find("0 errors"), std::string::npos) << Checked("batch.xml");
  ExpectFaultsTold([] { return Checked("batch.xml"); });
}

TEST_F(LauncherMemoryTest, CheckingDefinitionsWithErrors) {
  const std::vector<std::pair<std::string, std::string>> changes = {
      {"<Analysis ", "<Analyses "},          {"<LogFile>", "<Log>"},
      {"</LogFile>", "</Logfile>"},          {"<Thinning>", "<Thinning>x"},
      {"<Folder>", "text<Folder>"},          {"<Folder>", "<Folder a=\"b\">"},
      {"<Folder>out<", "<Folder>none/out<"}, {"<Folder>out<", "<Folder>data.csv<"},
      {">analysis.log<", ">fitted.csv<"},    {">analysis.log<", ">..\\data.csv<"},
      {">data.csv<", ">none.csv<"},          {">data.csv<", ">.<"},
  };
  for (const auto& [from, to] : changes) {
    SCOPED_TRACE(to);
    study_.Write("d.xml", With("analysis.xml", from, to));
    ExpectFaultsTold([] { return Checked("d.xml"); });
  }
}

TEST_F(LauncherMemoryTest, CheckingDataWithPoorProxies) {
  // Z1 repeats X1, Z2 and Z3 are equal, Z4 is 0, and Z5 or Z6 is 1 minus the other.
  study_.Write("data.csv",
               "Key,Hospital,Y,P1,P2,Z1,Z2,Z3,Z4,Z5,Z6,X1,X2,X3,X4,X5,X6\n"
               "a,A,1,0,0,1,1,1,0,0,1,1,1,0,0,0,1\nb,A,0,0,0,0,1,1,0,1,0,0,0,1,0,1,1\n"
               "c,A,1,0,0,1,0,0,0,1,0,1,0,0,1,1,0\nd,B,0,0,0,0,0,0,0,1,0,0,1,1,1,0,0\n"
               "e,B,1,0,0,0,0,0,0,0,1,,1,0,0,0,0\nf,B,0,0,0,0,1,1,0,0,1,0,0,0,0,0,1\n"
               "g,B,0,0,0,0,0,0,0,1,0,0,1,0,1,1,1\nh,B,1,0,0,1,1,1,0,1,0,1,1,1,0,0,0\n");
  const std::string output = Checked("analysis.xml");
  for (const char* const words : {" repeats ", " equals ", " follows from ", " is 0 in all "}) {
    EXPECT_NE(output.find(words), std::string::npos) << output;
  }
  ExpectFaultsTold([] { return Checked("analysis.xml"); });
}

TEST_F(LauncherMemoryTest, CheckingDataWithErrors) {
  const std::string data = study_.Read("data.csv");
  const std::size_t header = data.find('\n') + 1;
  for (const std::string& text : std::vector<std::string>{
           "", data.substr(0, header - 1), data.substr(0, data.size() - 1), data + "a,b,1\n",
           data + "\"open,", data.substr(0, header) + "k,H,2" + data.substr(header),
           data + data.substr(header), data + "\n", "Key,Hospital,Y\nk,H,1\n"}) {
    SCOPED_TRACE(text.substr(text.size() - std::min<std::size_t>(text.size(), 40)));
    study_.Write("data.csv", text);
    ExpectFaultsTold([] { return Checked("analysis.xml"); });
  }
}

TEST_F(LauncherMemoryTest, CheckingModelsWithErrors) {
  const std::string coefficients = study_.Read("coefficients.csv");
  const std::string predictions = study_.Read("individual.csv");
  for (const std::string& text : std::vector<std::string>{
           "", coefficients.substr(0, coefficients.size() - 1), coefficients + "X,",
           coefficients.substr(0, coefficients.find('\n') + 1)}) {
    study_.Write("coefficients.csv", text);
    ExpectFaultsTold([] { return Checked("prediction.xml"); });
  }
  study_.Write("coefficients.csv", coefficients);
  for (const std::string& text : std::vector<std::string>{
           "", predictions.substr(0, predictions.size() - 1), predictions + "a,b,x\n",
           predictions.substr(0, predictions.find('\n') + 1)}) {
    study_.Write("individual.csv", text);
    ExpectFaultsTold([] { return Checked("validation.xml"); });
  }
}

TEST_F(LauncherMemoryTest, PlanningAndRecording) {
  study_.Write("run.lines", "");
  ExpectFaultsTold([] {
    const Hovar::RunPlan plan = Hovar::MakeRunPlan("batch.xml");
    const Hovar::RunRecord record(plan);
    Hovar::RunLines lines;
    Hovar::Progress progress(plan, 0);
    std::string shown;
    double now = 0;
    for (const char* line :
         {"Reading data file...", "Reading data...", "Hospital: A record: 0 / 6",
          "Warning: Y == 0 && P == 1 data in record: 5 - setting P equal to 0",
          "Regression analysis", "[P|X]", "Warning: Maximum number of iterations reached",
          "MCMC Analysis", "Burnin: 1 Intercept: 0.5 ",
          "Error: Matrix is not positive definite in the Cholesky decomposition",
          "Warning: Failed to converge", "Mcmc: 1 Intercept: 0.5 ", "Mcmc: 2 Intercept: 0.5 "}) {
      lines.Take(line);
      progress.Update(lines, ++now);
      shown += Hovar::ProgressLine(progress, now, 79) + "\n";
    }
    lines.End();
    // The record ends with times, which are not the same every time.
    return shown + std::to_string(record.Text(lines, 0).size() > 1000);
  });
}

TEST_F(LauncherMemoryTest, MakingChains) {
  ExpectFaultsTold([] {
    const std::optional<Hovar::ChainSet> set = Hovar::MakeChainSet("analysis.xml", 3);
    std::string text;
    for (const Hovar::ChainDefinition& chain : set.value().chains) {
      EXPECT_TRUE(Hovar::WriteChainDefinition(*set, chain));
      text += chain.text + Hovar::Sha256OfFile(chain.file).value_or("unread");
    }
    return text;
  });
}

TEST_F(LauncherMemoryTest, JudgingChains) {
  for (const int count : {3, 40}) {
    std::string chain = "Step,BetaYX[0],BetaYX[1]\n";
    for (int i = 1; i <= count; ++i) {
      chain += std::to_string(i) + "," + std::to_string(i * i % 7) + ".5,1\n";
    }
    study_.Write("Chain.csv", chain);
    ExpectFaultsTold([] {
      const std::optional<Hovar::ChainDraws> draws = Hovar::ReadChainFile("Chain.csv");
      return Hovar::VerdictText({draws.value(), *draws},
                                Hovar::ReadCoefficientNames("coefficients.csv"),
                                Hovar::Estimation::kIndependent);
    });
  }
}

TEST_F(LauncherMemoryTest, ReadingTheCommandLine) {
  for (const std::vector<std::string_view>& arguments :
       {std::vector<std::string_view>{"--json", "a long name of a record.json", "--keep", "d.xml"},
        {"--report", "a long name of a folder", "another long name of a folder"},
        {"--chains", "x", "d.xml"}}) {
    ExpectEachFaultTold<CountedNew>([&] {
      const std::optional<Hovar::Task> task = Hovar::ParseOptions(arguments);
      return task ? std::to_string(task->index()) : "refused";
    });
  }
}

}  // namespace
}  // namespace Testing
