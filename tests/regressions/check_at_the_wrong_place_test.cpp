// `hovar --check` named another place than that of the fault: half-read words such as "na" before
// it, the next line instead of an empty last value, a column after quotes, a long text or a later
// fault.

#include <gtest/gtest.h>

#include "blackbox/check_runs.h"

namespace Testing {
namespace {

Row Coefficients(const std::string& cells, const std::string& error) {
  return {cells,
          PredictionText(),
          {{"coefficients.csv", kCoefficientHeader + ("XIntercept,ZIntercept,,,,," + cells)}},
          error};
}

Row Predictions(const std::string& from, const std::string& to, const std::string& error) {
  return {
      to,
      ValidationText(),
      {{"individual.csv", Replaced(std::string(kIndividualHeader) + kIndividualRows, from, to)}},
      error};
}

TEST(RegressionTest, AHospitalThatBeginsLikeNanOrInfIsNoFault) {
  ExpectRows({Data("North", "1", kHeader + "b,North,2,0,1,1\n", "data.csv:2:9"),
              Data("Isala", "1", kHeader + "b,Isala,,0,1,1\n", "data.csv:2:9")});
}

TEST(RegressionTest, ATextInACellThatIsNotReadIsNoFault) {
  ExpectRows(
      {Coefficients("0,,NA,x,,,0,,,0,,,0,,\n", "coefficients.csv:2:33"),
       Predictions("0.75,0,0,0,1,0.3,1\nb", "0.75,NA,x,0,1,0.3,1\nb", "individual.csv:2:19")});
}

TEST(RegressionTest, AnEmptyLastPredictionIsFoundOnItsOwnLine) {
  // The number is then looked for in the key of the next line.
  ExpectRows({Predictions("0.3,1\nb,A", "0.3,\n2,A", "individual.csv:2:28")});
}

TEST(RegressionTest, TheFirstFaultOfALineComesFirst) {
  ExpectRows(
      {Predictions("0.9,0.75,0,0,0,1,0.3,1\nb", "x,0.75,0,0,0,1,0.3,\nb", "individual.csv:2:7")});
}

TEST(RegressionTest, ACommaOrALineFeedInQuotesIsTheFaultWhereItSeparatesAllTheSame) {
  const std::string record = "a,A,1,0,1,1\n";
  ExpectRows({Data("line feed", "1", "\"Key\n\",Hospital,Y,POA,Z,X\n" + record, "data.csv:1:1"),
              Data("comma", "1", "Key,Hospital,\"Y, or N\",POA,Z,X\n" + record, "data.csv:1:14")});
}

TEST(RegressionTest, ATagOrATextOfMoreThan4096BytesKeepsTheColumn) {
  const std::string text = AnalysisText();
  ExpectRows({Changed(text, "<Analysis>", "<Analysis a=\"" + std::string(5000, 'x') + "\" a=\"\">",
                      "d.xml:1:1"),
              Changed(text, "<Steps>0<", "<Steps>" + std::string(5000, '1') + "x<", "d.xml:37:8")});
}

}  // namespace
}  // namespace Testing
