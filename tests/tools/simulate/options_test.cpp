// The command line of the data generator.

#include <gtest/gtest.h>

#include "studies.h"

namespace Hovar::Simulate {
namespace {

TEST(OptionsTest, NoArgumentsGiveTheDefaults) {
  const CommandLine line = Parse({});
  EXPECT_EQ(line.fault, "");
  EXPECT_FALSE(line.helpWanted);
  EXPECT_EQ(line.options.records, 5000);
  EXPECT_EQ(line.options.missingX, 0.0);
  EXPECT_FALSE(line.options.zeroColumn);
}

TEST(OptionsTest, EveryOptionIsRead) {
  const CommandLine line = Parse({"--records",
                                  "2147483646",
                                  "--hospitals",
                                  "7",
                                  "--variables",
                                  "60",
                                  "--indicators",
                                  "3",
                                  "--missing-x",
                                  "0.25",
                                  "--missing-p",
                                  "1e-3",
                                  "--hospital-effect",
                                  "1.5",
                                  "--warnings",
                                  "4",
                                  "--zero-column",
                                  "--dependent-column",
                                  "--seed",
                                  "18446744073709551615",
                                  "--output",
                                  "a b.csv"});
  EXPECT_EQ(line.fault, "");
  EXPECT_EQ(line.options.records, 2147483646);
  EXPECT_EQ(line.options.hospitals, 7);
  EXPECT_EQ(line.options.variables, 60);
  EXPECT_EQ(line.options.indicators, 3);
  EXPECT_EQ(line.options.missingX, 0.25);
  EXPECT_EQ(line.options.missingP, 0.001);
  EXPECT_EQ(line.options.hospitalEffect, 1.5);
  EXPECT_EQ(line.options.warnings, 4);
  EXPECT_TRUE(line.options.zeroColumn);
  EXPECT_TRUE(line.options.dependentColumn);
  EXPECT_EQ(line.options.seed, 18446744073709551615ULL);
  EXPECT_EQ(line.options.output, "a b.csv");
}

TEST(OptionsTest, HelpNamesEveryOption) {
  EXPECT_TRUE(Parse({"--help"}).helpWanted);
  for (const std::string_view name :
       {"--records", "--hospitals", "--variables", "--indicators", "--missing-x", "--missing-p",
        "--hospital-effect", "--warnings", "--zero-column", "--dependent-column", "--seed",
        "--output", "--help"}) {
    EXPECT_NE(HelpText().find(name), std::string_view::npos) << name;
  }
}

TEST(OptionsTest, FaultsAreTold) {
  struct Case {
    std::vector<std::string_view> arguments;
    std::string_view expected;  // Part of the fault.
  };
  const std::vector<Case> cases = {
      // Not an option, or without its value.
      {{"--rows", "5"}, "unknown option '--rows'"},
      {{"data.csv"}, "unknown option 'data.csv'"},
      {{""}, "unknown option ''"},
      {{"--rows"}, "unknown option '--rows'"},
      {{"--seed"}, "--seed needs a value"},
      {{"--output", ""}, "--output takes the name of a file"},
      // Not a number, or not all of it.
      {{"--records", "abc"}, "--records takes a whole number from 1 to 2147483646, not 'abc'"},
      {{"--records", "10x"}, "not '10x'"},
      {{"--records", "1e3"}, "not '1e3'"},
      {{"--records", ""}, "not ''"},
      {{"--missing-x", "nan"}, "not 'nan'"},
      {{"--missing-x", "0,5"}, "not '0,5'"},
      // Out of range.
      {{"--records", "0"}, "not '0'"},
      {{"--records", "2147483647"}, "not '2147483647'"},
      {{"--records", "99999999999999999999"}, "not '99999999999999999999'"},
      {{"--hospitals", "-1"}, "not '-1'"},
      {{"--variables", "-1"}, "not '-1'"},
      {{"--indicators", "1001"}, "not '1001'"},
      {{"--missing-x", "1"}, "not '1'"},
      {{"--missing-p", "-0.1"}, "not '-0.1'"},
      {{"--hospital-effect", "inf"}, "not 'inf'"},
      {{"--seed", "-1"}, "not '-1'"},
      // In range each, but not together.
      {{"--records", "10", "--hospitals", "11"}, "more hospitals than records"},
      {{"--records", "30", "--warnings", "31"}, "more warnings than records"},
      {{"--indicators", "0", "--warnings", "1"}, "at least one indicator"},
      {{"--indicators", "0", "--missing-p", "0.1"}, "at least one indicator"},
      {{"--variables", "0", "--zero-column"}, "at least 1 variables"},
      {{"--variables", "4", "--zero-column", "--dependent-column"}, "at least 5 variables"},
  };
  for (const Case& c : cases) {
    const CommandLine line = Parse(c.arguments);
    EXPECT_NE(line.fault.find(c.expected), std::string::npos)
        << c.expected << " in: " << line.fault;
  }
}

}  // namespace
}  // namespace Hovar::Simulate
