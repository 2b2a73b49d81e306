#include "diagnostics/normal_quantile.h"

#include <gtest/gtest.h>

#include <cmath>
#include <utility>
#include <vector>

namespace Hovar {
namespace {

TEST(NormalQuantileTest, AgreesWithTheDistributionFunction) {
  for (const double p : {1e-300, 1e-20, 1e-10, 0.001, 0.05, 0.0749, 0.0751, 0.3, 0.5, 0.7, 0.925}) {
    const double q = NormalQuantile(p);
    EXPECT_NEAR(std::erfc(-q / std::sqrt(2.0)) / 2 / p, 1, 1e-12) << p;
  }
}

TEST(NormalQuantileTest, AgreesWithR) {
  // R: qnorm(c(1e-20, 1e-10, 0.01, 0.075, 0.3, 0.5, 0.9, 0.999))
  const std::vector<std::pair<double, double>> rows{
      {1e-20, -9.26234008979840517}, {1e-10, -6.36134090240405570}, {0.01, -2.32634787404084076},
      {0.075, -1.43953147093845568}, {0.3, -0.52440051270804067},   {0.5, 0},
      {0.9, 1.28155156554460081},    {0.999, 3.09023230616781319}};
  for (const auto& [p, q] : rows) {
    EXPECT_NEAR(NormalQuantile(p), q, 1e-14 * std::fabs(q)) << p;
  }
}

}  // namespace
}  // namespace Hovar
