// `hovar --check --data` counted complete records once. Removing a variable can make more records
// complete, in which another variable then is 1 and stays.

#include <gtest/gtest.h>

#include "blackbox/check_runs.h"

namespace Testing {
namespace {

TEST(RegressionTest, ARecordThatARemovalCompletesCounts) {
  // ZB is 0 everywhere. Record b, the only one with XA = 1, is complete without XB.
  const TinyStudy study;
  study.Write("data.csv",
              "Key,Hospital,Y,POA,ZA,ZB,XA,XB\n"
              "a,A,1,0,1,0,0,0\nb,A,0,0,0,0,1,\nc,A,0,0,1,0,0,1\nd,A,1,0,0,0,0,0\n"
              "e,A,0,0,1,0,1,\n");
  study.Write("d.xml", WithValues(QuietAnalysis(), {{"PriorPrecision", "1"}}));
  const std::string output = CheckDefinition(study, {"--data", "d.xml"}).output;
  EXPECT_NE(output.find("  removed by column elimination:\n"
                        "    \"ZB\", \"XB\": Z is 0 everywhere\n"
                        "  empty [X|Z] classes:"),
            std::string::npos)
      << output;
  RunHovar(study, {"d.xml"});
  const std::string log = study.Read("out/analysis.log");
  EXPECT_NE(log.find("\nZB, XB\n"), std::string::npos) << log;
  EXPECT_EQ(log.find("ZA, XA"), std::string::npos) << log;
}

}  // namespace
}  // namespace Testing
