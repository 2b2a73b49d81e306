// `hovar --check` said "0 errors" of data with which the run then ended in an error.

#include <gtest/gtest.h>

#include "blackbox/check_runs.h"

namespace Testing {
namespace {

TEST(RegressionTest, KeysWithCommasThatLookLikeOtherRecordsAreFound) {
  // The program skips `"x`, takes the quote after the comma for the beginning of the
  // hospital's ID, and the one in the next line for its end: the hospitals are `,A,1` and a line
  // feed, then A.
  const std::string pair = "\"x,\",A,1\n\",1,0\",A,0\n";
  const std::string longer = "\"x,\",A,1\n\",1,0,C,1,2\",A,0\n";
  const auto row = [](const std::string& data, const std::string& error) {
    Row made = Data(data, "0", "Key,Hospital,Y\n" + data, error);
    made.files[1].second = std::string(kCoefficientHeader) + kModelRow;
    return made;
  };
  ExpectRows({
      row(pair, ""), row(pair + pair, "data.csv:2:1"),  // not grouped by hospital
      row(longer, "data.csv:2:1"),                      // bytes after the last record
      row("a,A,1\n" + longer, "data.csv:3:1"),          // the same
  });
}

TEST(RegressionTest, AClassThatIsEmptyIsFoundBesideAnotherVariableOfThatName) {
  // The X of one is 0 everywhere, so that it is removed, and the Z of the other is 1 wherever its X
  // is known, so that it has no [X|Z] table. The two stand in both orders.
  const auto fit = [](const std::string& data) {
    Row row = Fit(data, "", "data.csv:1:1");
    row.files[0].second = "Key,Hospital,Y,POA,Z,Z,X,X\n" + data;
    return row;
  };
  ExpectRows({
      fit("a,A,1,0,1,1,0,1\nb,A,0,0,0,1,0,0\nc,A,1,0,1,0,0,\nd,A,0,0,0,1,0,1\ne,A,1,0,0,1,0,0\n"),
      fit("a,A,1,0,1,1,1,0\nb,A,0,0,1,0,0,0\nc,A,1,0,0,1,,0\nd,A,0,0,1,0,1,0\ne,A,1,0,1,0,0,0\n"),
  });
}

}  // namespace
}  // namespace Testing
