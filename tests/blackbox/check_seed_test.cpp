// `hovar --check` warns of seeds at which the random generator stands still.

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "check_runs.h"
#include "launcher_runs.h"

namespace Testing {
namespace {

std::string WithSeed(const std::string& definition, const std::string& first,
                     const std::string& second) {
  return Replaced(Replaced(definition, "<Element>3<", "<Element>" + first + "<"), "<Element>5<",
                  "<Element>" + second + "<");
}

/// A prediction of one record with one variable, with passes of imputation.
Warning SeededPrediction(const std::string& record, const std::string& first,
                         const std::string& second, const std::string& place,
                         const std::string& words) {
  Warning row = Records(record, place, words);
  row.definition = WithSeed(WithChain(row.definition, "1", "1", "4"), first, second);
  return row;
}

TEST(CheckSeedTest, SeedsThatMakePoorRandomNumbers) {
  const std::string ones =
      "so all random numbers would be nearly 1, and nearly all missing values ";
  const std::string coarse = "so random numbers would have 65536 different values only. ";
  std::vector<Warning> rows = {
      SeededPrediction("a,A,1,0,1,\n", "2422800383", "5", "d.xml:16:10", ones),
      SeededPrediction("a,A,1,,1,1\n", "2422800383", "5", "d.xml:16:10", ones),
      SeededPrediction("a,A,1,,1,1\n", "2422800383", "1179647999", "d.xml:16:10", ones),
      SeededPrediction("a,A,1,,1,1\n", "3", "1179647999", "d.xml:17:10", coarse),
  };
  for (const char* word : {"1179647999", "2359295998", "3538943997", " 01179647999\n"}) {
    rows.push_back({WithSeed(QuietAnalysis(), "3", word), {}, "d.xml:32:10", coarse});
  }
  ExpectWarnings(rows);
  // Y is 1 and P unknown. All coefficients are 0, so P is 1 with probability 2/3, in all four
  // passes 0 with probability 1/81 by another seed; E[P|YPXZ], the last column, is its mean.
  const TinyStudy study;
  WriteFiles(study, rows[1]);
  ASSERT_EQ(RunHovar(study, {"d.xml"}).exitStatus, 0);
  const std::string predicted = study.Read("out/predicted.csv");
  EXPECT_TRUE(predicted.ends_with(",0\n")) << predicted;
}

TEST(CheckSeedTest, SeedsThatDoNoHarm) {
  // Nothing is drawn where nothing is missing, nor for a P without the outcome.
  std::vector<Warning> rows = {
      SeededPrediction("a,A,1,0,1,1\n", "2422800383", "1179647999", "", ""),
      SeededPrediction("a,A,0,,1,1\n", "2422800383", "1179647999", "", ""),
      {WithSeed(QuietAnalysis(), "0", "0"), {}, "", ""},
      {WithSeed(QuietAnalysis(), "1179647999", "2422800383"), {}, "", ""},
      {WithSeed(QuietAnalysis(), "2422800382", "1179648000"), {}, "", ""},
  };
  Warning withoutPasses = Records("a,A,1,,1,1\n", "", "");  // Burnin and Steps 0
  withoutPasses.definition = WithSeed(withoutPasses.definition, "2422800383", "5");
  rows.push_back(withoutPasses);
  for (const Warning& row : rows) {
    SCOPED_TRACE(row.definition);
    const TinyStudy study;
    WriteFiles(study, row);
    EXPECT_EQ(ExpectAgreement(study), "0 errors, 0 warnings\n");
  }
}

}  // namespace
}  // namespace Testing
