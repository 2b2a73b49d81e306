// A batch that names itself nested until the stack was used up, and died of a signal.

#include <gtest/gtest.h>

#include "blackbox/runs.h"
#include "blackbox/tiny_study.h"

namespace Testing {
namespace {

TEST(RegressionTest, ABatchThatNamesItselfEndsInOutOfMemory) {
  const TinyStudy study;
  study.Write("self.xml", BatchText({"self.xml"}));
  ExpectError(RunHovar(study, {"self.xml"}), "Out of memory");
}

}  // namespace
}  // namespace Testing
