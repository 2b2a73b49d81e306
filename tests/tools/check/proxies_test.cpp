#include "tools/check/proxies.h"

#include <gtest/gtest.h>

#include <string>
#include <string_view>
#include <vector>

#include "support/data_sets.h"
#include "support/seeded_random.h"

namespace {

using Hovar::CountExtent;
using Hovar::ProxyFault;
using Hovar::ProxyVerdict;
using Hovar::VariableCounts;
using Hovar::XzClass;

std::vector<VariableCounts> Counts(const Hovar::DataSet& data) {
  return Hovar::CountVariables(data, CountExtent::kAllRecords);
}

/// Judges a data set as the Analysis with this tolerance would take it.
std::vector<ProxyVerdict> Judge(Hovar::DataSet data, double tolerance = 1e-9) {
  std::vector<VariableCounts> variables = Counts(data);
  const Vell::BitMatrix z = data.z;
  Hovar::Findings findings;
  Hovar::DefinitionFile definition;
  definition.analysis.linearDependenceTolerance = tolerance;
  Hovar::CheckColumns(findings, definition, data, variables);
  return Hovar::JudgeProxies(z, variables);
}

/// The faults of the variables of a data set, "kind" or "kind: others" with numbers from 1.
std::vector<std::string> Faults(const std::string& text, double tolerance = 1e-9) {
  std::vector<std::string> faults;
  for (const ProxyVerdict& verdict : Judge(Testing::MakeDataSet(text), tolerance)) {
    const char* const kNames[] = {"none",  "copy",      "settled", "constant",
                                  "equal", "dependent", "nearly"};
    faults.emplace_back(kNames[static_cast<int>(verdict.fault)]);
    for (const std::size_t other : verdict.others) {
      faults.back() += " " + std::to_string(other + 1);
    }
  }
  return faults;
}

using Texts = std::vector<std::string>;

void ExpectClass(const XzClass& xz, int known, int ones, int missing) {
  EXPECT_EQ(xz.known, known);
  EXPECT_EQ(xz.ones, ones);
  EXPECT_EQ(xz.missing, missing);
}

TEST(XzClassTest, CountedByHand) {
  const Hovar::DataSet data = Testing::MakeDataSet(
      "A 1 0 1 1\n"
      "A 1 0 1 *\n"  // the value bit of a missing cell is no X = 1
      "A 0 0 1 0\n"
      "A 0 0 1 1\n"
      "A 0 0 0 1\n"
      "A 0 0 0 .\n"
      "A 0 0 0 *\n");
  const VariableCounts variable = Counts(data).at(0);
  ExpectClass(Hovar::XzClassOf(variable, true), 3, 2, 1);
  ExpectClass(Hovar::XzClassOf(variable, false), 1, 1, 2);
}

/// Random cells, a quarter of X missing with the value bit set.
Hovar::DataSet RandomCells(int columns) {
  Testing::SeededRandom random(static_cast<std::uint64_t>(columns));
  const auto cells = [&](std::string_view kinds) {
    std::string text(static_cast<std::size_t>(columns), ' ');
    for (char& cell : text) {
      cell = kinds[static_cast<std::size_t>(
          random.Integer(0, static_cast<std::int32_t>(kinds.size()) - 1))];
    }
    return text;
  };
  std::string text;
  for (int i = 0; i < 40; ++i) {
    text += "A 1 0 " + cells("01") + ' ' + cells("01.*") + '\n';
  }
  return Testing::MakeDataSet(text);
}

/// Counted by one cell after the other.
XzClass PlainClass(const Hovar::DataSet& data, std::int32_t column, bool z) {
  XzClass xz;
  for (std::int32_t i = 0; i < data.recordCount; ++i) {
    if (data.z.Get(i, column) == z) {
      const bool isMissing = data.x.IsMissing(i, column);
      ++(isMissing ? xz.missing : xz.known);
      xz.ones += !isMissing && data.x.Value(i, column) ? 1 : 0;
    }
  }
  return xz;
}

TEST(XzClassTest, TheSameAsCellByCell) {
  for (const int columns : {1, 63, 64, 65, 130}) {
    const Hovar::DataSet data = RandomCells(columns);
    const std::vector<VariableCounts> variables = Counts(data);
    for (int j = 1; j <= columns; ++j) {
      SCOPED_TRACE(std::to_string(columns) + " columns, column " + std::to_string(j));
      for (const bool z : {false, true}) {
        const XzClass wanted = PlainClass(data, j, z);
        ExpectClass(Hovar::XzClassOf(variables.at(static_cast<std::size_t>(j - 1)), z),
                    wanted.known, wanted.ones, wanted.missing);
      }
    }
  }
}

TEST(XzClassTest, IsSettledByEqualKnownValuesBesideMissingOnes) {
  EXPECT_TRUE((XzClass{4, 0, 1}.IsSettled()));
  EXPECT_TRUE((XzClass{4, 4, 1}.IsSettled()));
  EXPECT_FALSE((XzClass{4, 1, 1}.IsSettled()));
  EXPECT_FALSE((XzClass{4, 3, 1}.IsSettled()));
  EXPECT_FALSE((XzClass{4, 0, 0}.IsSettled()));
  EXPECT_FALSE((XzClass{4, 4, 0}.IsSettled()));
  EXPECT_FALSE((XzClass{0, 0, 1}.IsSettled()));
}

/// Records of one variable in which Z tells X, but for those that are added.
std::string Telling(const std::string& more) {
  return "A 1 0 1 1\nA 0 0 1 1\nA 1 0 0 0\nA 0 0 0 0\n" + more;
}

TEST(ProxyFaultTest, Copies) {
  EXPECT_EQ(Faults(Telling("A 1 0 0 .\n")), Texts{"copy"});
  EXPECT_EQ(Faults(Telling("")), Texts{"none"}) << "nothing is imputed";
  EXPECT_EQ(Faults(Telling("A 1 0 0 .\nA 1 0 1 .\n")), Texts{"settled"}) << "Z knows more";
  EXPECT_EQ(Faults(Telling("A 1 0 0 .\nA 1 0 1 0\n")), Texts{"settled"}) << "Z errs above";
  EXPECT_EQ(Faults(Telling("A 1 0 0 .\nA 1 0 0 1\n")), Texts{"none"}) << "Z errs below";
}

TEST(ProxyFaultTest, SettledClasses) {
  EXPECT_EQ(Faults(Telling("A 1 0 1 .\n")), Texts{"settled"});
  EXPECT_EQ(Faults(Telling("A 1 0 1 .\nA 1 0 0 1\n")), Texts{"settled"});
  EXPECT_EQ(Faults(Telling("A 1 0 1 .\nA 1 0 1 0\n")), Texts{"none"});
  EXPECT_EQ(Faults(Telling("A 1 0 0 .\nA 1 0 1 .\nA 1 0 0 1\nA 1 0 1 0\n")), Texts{"none"});
  // Z is 1 where X is 0.
  EXPECT_EQ(Faults("A 1 0 1 0\nA 0 0 1 0\nA 1 0 0 1\nA 0 0 0 1\nA 1 0 0 .\n"), Texts{"settled"});
}

TEST(ProxyFaultTest, AClassThatIsEmptyHasAnErrorOfItsOwn) {
  EXPECT_EQ(Faults("A 1 0 0 1\nA 0 0 0 0\nA 1 0 1 .\n"), Texts{"none"});
  EXPECT_EQ(Faults("A 1 0 0 0\nA 0 0 0 0\nA 1 0 0 .\nA 1 0 1 .\n"), Texts{"none"});
}

TEST(ProxyFaultTest, VariablesThatAreRemovedForTheirXImputeNothing) {
  // X1 is 1 in no complete record, so it goes; its Z would be a copy.
  const std::string records = "A 1 0 00 .0\nA 0 0 00 01\nA 1 0 01 00\nA 0 0 01 01\n";
  EXPECT_EQ(Faults(records + "A 1 . 10 11\n"), (Texts{"none", "none"}));
  EXPECT_EQ(Faults(records + "A 1 0 10 11\n"), (Texts{"copy", "none"}));
}

TEST(ProxyFaultTest, ConstantColumns) {
  EXPECT_EQ(Faults("A 1 0 01 11\nA 0 0 00 01\nA 1 0 01 10\nA 0 0 00 00\n"),
            (Texts{"constant", "none"}));
  EXPECT_EQ(Faults("A 1 0 11 11\nA 0 0 10 01\nA 1 0 11 10\nA 0 0 10 00\n"),
            (Texts{"constant", "none"}));
  EXPECT_EQ(Faults("A 1 0 11 11\nA 0 0 00 01\nA 1 0 01 10\nA 0 0 00 00\n"),
            (Texts{"none", "none"}));
  EXPECT_EQ(Faults("A 1 0 01 01\nA 0 0 00 01\nA 1 0 01 00\nA 0 0 00 .0\n"), (Texts{"none", "none"}))
      << "no X is lost";
}

TEST(ProxyFaultTest, EqualColumns) {
  const std::string records = "A 1 0 11 10\nA 0 0 11 01\nA 1 0 00 11\nA 0 0 00 00\n";
  const Texts faults = Faults(records);
  EXPECT_TRUE(faults == (Texts{"equal 2", "none"}) || faults == (Texts{"none", "equal 1"}))
      << faults[0] << ", " << faults[1];
  EXPECT_EQ(Faults(records + "A 1 0 10 01\n"), (Texts{"none", "none"}));
  // The second X is always 0. It may be the one that goes, and is no loss then.
  const Texts lost = Faults("A 1 0 11 10\nA 0 0 11 00\nA 1 0 00 10\nA 0 0 00 00\n");
  EXPECT_EQ(lost[1], "none");
}

TEST(ProxyFaultTest, LinearCombinations) {
  // Z4 is half the sum of the others.
  const std::string half =
      "A 1 0 0000 1000\nA 0 0 1101 0100\nA 1 0 1011 0010\nA 0 0 0111 0001\nA 1 0 0000 0000\n"
      "A 0 0 1101 1001\nA 0 0 1011 0101\nA 1 0 0111 1111\n";
  EXPECT_EQ(Faults(half), (Texts{"none", "none", "none", "dependent 1 2 3"}));
  EXPECT_EQ(Faults(half + "A 1 0 0001 1010\n"), (Texts{"none", "none", "none", "none"}));
  // The third variable goes later, because X3 is always 1; the elimination of Z knew its Z.
  EXPECT_EQ(Faults("A 1 0 0000 1010\nA 0 0 1101 0110\nA 1 0 1011 0010\nA 0 0 0111 0011\n"
                   "A 1 0 0000 0010\nA 0 0 1101 1011\nA 0 0 1011 0111\nA 1 0 0111 1111\n"),
            (Texts{"none", "none", "none", "dependent 1 2 3"}));
  // Z2 = 1 - Z1, and either may go.
  const Texts faults = Faults("A 1 0 10 11\nA 0 0 10 01\nA 1 0 01 10\nA 0 0 01 00\n");
  EXPECT_TRUE(faults == (Texts{"dependent 2", "none"}) || faults == (Texts{"none", "dependent 1"}))
      << faults[0] << ", " << faults[1];
}

TEST(ProxyFaultTest, DependentWithinTheToleranceAlone) {
  // The counts of the intercept and of both Z, (40 4 3; 4 4 0; 3 0 3), have the singular values
  // 0.065 and 0.0904 times the largest (numpy), and without Z2 the smaller is 0.08806 times it.
  std::string text;
  for (int i = 0; i < 40; ++i) {
    text += std::string("A ") + (i % 2 == 0 ? '0' : '1') + " 0 " +
            (i < 4   ? "10"
             : i < 7 ? "01"
                     : "00") +
            (i % 2 == 0 ? " 1" : " 0") + (i / 2 % 2 == 0 ? "1\n" : "0\n");
  }
  const Texts faults = Faults(text, 0.08);
  EXPECT_TRUE(faults == (Texts{"nearly", "none"}) || faults == (Texts{"none", "nearly"}))
      << faults[0] << ", " << faults[1];
  EXPECT_EQ(Faults(text), (Texts{"none", "none"}));
}

TEST(ProxyFaultTest, VariablesOfTheSameTwoNamesAreToldApartByTheirColumns) {
  // The first one goes because its Z is constant, and its names are still found in the data.
  Hovar::DataSet data =
      Testing::MakeDataSet("A 1 0 01 11\nA 0 0 00 01\nA 1 0 01 10\nA 0 0 00 00\n");
  data.zNames[2] = data.zNames[1];
  data.xNames[2] = data.xNames[1];
  const std::vector<ProxyVerdict> verdicts = Judge(std::move(data));
  EXPECT_EQ(verdicts.at(0).fault, ProxyFault::kConstant);
  EXPECT_EQ(verdicts.at(1).fault, ProxyFault::kNone);
}

TEST(ProxyFaultTest, ANameWithALineBreakIsNoObstacle) {
  Hovar::DataSet data =
      Testing::MakeDataSet("A 1 0 01 11\nA 0 0 00 01\nA 1 0 01 10\nA 0 0 00 00\n");
  data.zNames[1] = Vell::String("Z\n1");
  EXPECT_EQ(Judge(std::move(data)).at(0).fault, ProxyFault::kConstant);
}

TEST(ProxyFaultTest, NoVariables) { EXPECT_TRUE(Faults("A 1 0 - -\nA 0 0 - -\n").empty()); }

}  // namespace
