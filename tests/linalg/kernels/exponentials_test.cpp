#include "linalg/kernels/exponentials.h"

#include <gtest/gtest.h>

#include <bit>
#include <limits>
#include <vector>

#include "foundation/exponential.h"
#include "support/seeded_random.h"
#include "support/width_limit.h"

namespace {

TEST(ExponentialsTest, EveryWidthAndPlaceGivesTheBitsOfASingleExponential) {
  constexpr double kInfinity = std::numeric_limits<double>::infinity();
  Testing::SeededRandom random(3);
  SCOPED_TRACE(random.Text());
  for (const Vell::VectorWidth width :
       {Vell::VectorWidth::kPortable, Vell::VectorWidth::kAvx2, Vell::VectorWidth::kAvx512}) {
    const Testing::WidthLimit limit(width);
    for (std::size_t count = 0; count < 40; ++count) {
      std::vector<double> values;
      for (std::size_t i = 0; i < count; ++i) {
        values.push_back(i == 5 ? kInfinity : i == 17 ? -kInfinity : random.Real(-760, 760));
      }
      // One more follows and must stay.
      std::vector<double> results = values;
      results.push_back(0.5);
      Vell::ReplaceByExponentials(std::span(results).first(count));
      EXPECT_EQ(results.back(), 0.5);
      for (std::size_t i = 0; i < count; ++i) {
        ASSERT_EQ(std::bit_cast<std::uint64_t>(results[i]),
                  std::bit_cast<std::uint64_t>(Vell::Exp(values[i])))
            << values[i];
      }
    }
  }
}

}  // namespace
