// `hovar --check` said that an output folder cannot be made although an earlier run of the same batch
// makes the one above.

#include <gtest/gtest.h>

#include "blackbox/check_runs.h"

namespace Testing {
namespace {

TEST(RegressionTest, AFolderThatAnEarlierRunMakesIsThere) {
  const std::string deep = Replaced(PredictionText(), "<Folder>out<", "<Folder>out/deep<");
  ExpectRows(
      {{"first", BatchText({"prediction.xml", "deep.xml"}), {{"deep.xml", deep}}, ""},
       {"last", BatchText({"deep.xml", "prediction.xml"}), {{"deep.xml", deep}}, "deep.xml:8:9"}});
}

}  // namespace
}  // namespace Testing
