// Whole studies against files that an independent implementation made; every byte is compared.

#include <gtest/gtest.h>

#include <clocale>
#include <cstdlib>
#include <map>

#include "runs.h"

namespace Testing {
namespace {

using Files = std::map<std::string, std::string>;

constexpr const char* kBatchFiles[] = {"analysis.log",   "prediction.log",   "validation.log",
                                       "individual.csv", "coefficients.csv", "hospital.csv",
                                       "cstatistics.csv"};

/// A study of the reference data in a folder of its own.
class StudyCopy : public ScratchFolder {
 public:
  explicit StudyCopy(const std::string& name) : source_(ReferenceFile(name)) {
    for (const auto& entry : std::filesystem::directory_iterator(source_)) {
      if (entry.is_regular_file()) {
        std::filesystem::copy(entry.path(), Path());
      }
    }
  }

  /// Runs a definition and returns its standard output without the elapsed seconds.
  std::string Run(const std::string& definition,
                  const std::vector<std::pair<std::string, std::string>>& environment = {}) const {
    Command command = HovarIn(*this, {definition});
    command.environment = environment;
    const ProcessResult result = RunProcess(command);
    EXPECT_EQ(result.exitStatus, 0) << definition;
    EXPECT_EQ(result.error, "") << definition;
    return WithoutSeconds(result.output);
  }

  /// Everything below out/.
  Files Output() const {
    Files files;
    for (const std::string& name : FilesBelow(*this)) {
      if (name.starts_with("out/")) {
        files[name.substr(4)] = Read(name);
      }
    }
    return files;
  }

  std::string Expected(const std::string& name) const {
    return ReadFile(source_ / "expected" / name);
  }

  /// What the batch of an analysis, a prediction and a validation must leave below out/.
  Files ExpectedOfBatch() const {
    Files files;
    for (const char* name : kBatchFiles) {
      files[name] = Expected(name);
    }
    for (const char* name : {"Chain.csv", "Summary.csv"}) {
      files[std::string("mcmc/") + name] = Expected(name);
    }
    return files;
  }

 private:
  std::filesystem::path source_;
};

class WholeStudyTest : public testing::TestWithParam<std::string> {};

TEST_P(WholeStudyTest, TheBatchWritesTheExpectedFiles) {
  const StudyCopy study(GetParam());
  EXPECT_EQ(study.Run("batch.xml"), study.Expected("stdout.txt"));
  EXPECT_EQ(study.Output(), study.ExpectedOfBatch());
}

TEST_P(WholeStudyTest, EachDefinitionAloneWritesTheSameFilesAndItsOwnLog) {
  const StudyCopy study(GetParam());
  Files expected;
  for (const std::string name : {"analysis", "prediction", "validation"}) {
    EXPECT_EQ(study.Run(name + ".xml"), study.Expected("alone/" + name + ".stdout.txt"));
    expected[name + ".log"] = study.Expected("alone/" + name + ".log");
  }
  for (const char* name :
       {"individual.csv", "coefficients.csv", "hospital.csv", "cstatistics.csv"}) {
    expected[name] = study.Expected(name);
  }
  for (const char* name : {"Chain.csv", "Summary.csv"}) {
    expected[std::string("mcmc/") + name] = study.Expected(name);
  }
  EXPECT_EQ(study.Output(), expected);
}

TEST_P(WholeStudyTest, ASecondRunGivesTheSameBytes) {
  const StudyCopy study(GetParam());
  const std::string output = study.Run("batch.xml");
  const Files files = study.Output();
  EXPECT_EQ(study.Run("batch.xml"), output);
  EXPECT_EQ(study.Output(), files);
}

/// The name of an installed locale that writes a comma for the decimal point; empty without one.
std::string DecimalCommaLocale() {
  std::string found;
  for (const char* name : {"de_DE.UTF-8", "de_DE.utf8", "fr_FR.UTF-8", "nl_NL.UTF-8", "de_DE"}) {
    if (std::setlocale(LC_NUMERIC, name) != nullptr &&
        std::string(std::localeconv()->decimal_point) == ",") {
      found = name;
      break;
    }
  }
  std::setlocale(LC_NUMERIC, "C");
  return found;
}

TEST_P(WholeStudyTest, TheTimeZoneChangesNothing) {
  for (const char* zone : {"Pacific/Auckland", "America/St_Johns"}) {
    const StudyCopy study(GetParam());
    EXPECT_EQ(study.Run("batch.xml", {{"TZ", zone}}), study.Expected("stdout.txt"));
    EXPECT_EQ(study.Output()["cstatistics.csv"], study.Expected("cstatistics.csv"));
  }
}

TEST_P(WholeStudyTest, ALocaleWithADecimalCommaChangesNothing) {
  std::vector<std::pair<std::string, std::string>> environment;
  std::string locale = DecimalCommaLocale();
  const ScratchFolder locales;
  if (locale.empty()) {
    // None is installed: make one.
    locale = "de_DE.UTF-8";
    const std::string make =
        "localedef -i de_DE -f UTF-8 " + locales.File(locale) + " >/dev/null 2>&1";
    if (std::system(make.c_str()) != 0) {
      GTEST_SKIP() << "no locale with a decimal comma can be had (package locales)";
    }
    environment.emplace_back("LOCPATH", locales.Path().string());
  }
  environment.emplace_back("LC_ALL", locale);
  environment.emplace_back("LANG", locale);
  const StudyCopy study(GetParam());
  EXPECT_EQ(study.Run("batch.xml", environment), study.Expected("stdout.txt"));
  for (const char* name : kBatchFiles) {
    EXPECT_EQ(study.Output()[name], study.Expected(name)) << name;
  }
}

INSTANTIATE_TEST_SUITE_P(Studies, WholeStudyTest, testing::Values("study_plain", "study_gee"),
                         [](const auto& study) { return study.param; });

// Data on which a method has no proper answer, but the program a documented one.
class FaultStudyTest : public testing::TestWithParam<std::string> {};

TEST_P(FaultStudyTest, TheBatchEndsAsDocumented) {
  const StudyCopy study("faults/" + GetParam());
  const ProcessResult result = RunHovar(study, {"batch.xml"});
  EXPECT_EQ(WithoutSeconds(result.output), study.Expected("stdout.txt"));
  EXPECT_EQ(result.error, study.Expected("stderr.txt"));
  EXPECT_EQ(result.exitStatus, 0) << "signal " << result.signal;
  EXPECT_EQ(study.Output(), study.ExpectedOfBatch());
}

INSTANTIATE_TEST_SUITE_P(Studies, FaultStudyTest,
                         testing::Values("separation", "separation_with_prior", "all_respond",
                                         "none_responds", "one_record", "one_record_gee",
                                         "one_hospital", "one_hospital_gee", "empirical_variance",
                                         "single_records_gee", "infinite_correlation",
                                         "correlation_not_a_number",
                                         "hospital_without_usable_records"),
                         [](const auto& study) { return study.param; });

// A coefficient file that somebody changed by hand, of which the data still have as many variables.
class ChangedModelTest : public testing::TestWithParam<std::string> {};

TEST_P(ChangedModelTest, PredictionAndValidationEndAsDocumented) {
  const StudyCopy study("faults/" + GetParam());
  const ProcessResult result = RunHovar(study, {"batch.xml"});
  EXPECT_EQ(result.output, study.Expected("stdout.txt"));
  EXPECT_EQ(result.error, "");
  EXPECT_EQ(result.exitStatus, 0) << "signal " << result.signal;
  Files expected;
  for (const char* name :
       {"prediction.log", "validation.log", "individual.csv", "hospital.csv", "cstatistics.csv"}) {
    expected[name] = study.Expected(name);
  }
  EXPECT_EQ(study.Output(), expected);
}

INSTANTIATE_TEST_SUITE_P(Studies, ChangedModelTest,
                         testing::Values("no_intercept_row", "no_intercept_row_one_variable"),
                         [](const auto& study) { return study.param; });

constexpr const char* kTwoAnalysesFiles[] = {
    "first.log",  "first_coefficients.csv",  "first/Chain.csv",  "first/Summary.csv",
    "second.log", "second_coefficients.csv", "second/Chain.csv", "second/Summary.csv"};

TEST(TwoAnalysesTest, TheBatchWritesTheExpectedFiles) {
  const StudyCopy study("two_analyses");
  EXPECT_EQ(study.Run("batch.xml"), study.Expected("batch/stdout.txt"));
  Files expected;
  for (const char* name : kTwoAnalysesFiles) {
    expected[name] = study.Expected(std::string("batch/") + name);
  }
  EXPECT_EQ(study.Output(), expected);
}

TEST(TwoAnalysesTest, TheSecondAloneWritesItsExpectedFiles) {
  const StudyCopy study("two_analyses");
  EXPECT_EQ(study.Run("second.xml"), study.Expected("second_alone/stdout.txt"));
  Files expected;
  for (const char* name :
       {"second.log", "second_coefficients.csv", "second/Chain.csv", "second/Summary.csv"}) {
    expected[name] = study.Expected(std::string("second_alone/") + name);
  }
  EXPECT_EQ(study.Output(), expected);
}

// The first chain leaves one normal deviate of its last pair to the second one.
TEST(TwoAnalysesTest, TheSecondChainOfTheBatchIsAnotherThanItsOwn) {
  const StudyCopy batch("two_analyses");
  batch.Run("batch.xml");
  const StudyCopy alone("two_analyses");
  alone.Run("second.xml");
  EXPECT_NE(batch.Read("out/second/Chain.csv"), alone.Read("out/second/Chain.csv"));
}

}  // namespace
}  // namespace Testing
